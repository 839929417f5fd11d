#pragma once
// Block worker that maps each source sample through a look-up table into the destination.

#include "Foundations/BufferTools/Blocks.h"
#include "Foundations/LVBuffer2DTools/LVLut.h"

namespace Lumivale::BufferTools {

// Applies one table to every plane; the table must outlive the worker.
class ApplyLUTBlocks : public LVBlocks2D {
public:
    // Worker applying lut.
    explicit ApplyLUTBlocks(const Imaging::LVLut& lut) : lut_(lut) {}
    // Map one block sample by sample.
    bool Process(const LVBuffer2D& source, LVBuffer2D& destination, unsigned index) override;

private:
    const Imaging::LVLut& lut_;
};

}  // namespace Lumivale::BufferTools
