#pragma once
// Block worker that copies each source block into its destination block.

#include "Foundations/BufferTools/Blocks.h"

namespace Lumivale::BufferTools {

// Copies samples; source and destination must share plane count and bytes per sample.
class CopyBlocks : public LVBlocks2D {
public:
    // Copy one block row by row.
    bool Process(const LVBuffer2D& source, LVBuffer2D& destination, unsigned index) override;
};

}  // namespace Lumivale::BufferTools
