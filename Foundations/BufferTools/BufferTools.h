#pragma once
// Whole-buffer operations. BufferTools is the interface the imaging code calls; BufferToolsBlocks
// is its block-based flavour, which runs copies and table applications as block tasks.

#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"
#include "Foundations/LVBuffer2DTools/LVLut.h"

#include <cstdint>

namespace Lumivale::BufferTools {

using Imaging::LVBuffer2D;
using Imaging::LVLut;

// Buffer operations of one flavour.
class BufferTools {
public:
    virtual ~BufferTools() = default;
    // Copy source into destination (same geometry, planes and sample width).
    virtual bool Copy(const LVBuffer2D& source, LVBuffer2D& destination) = 0;
    // Map every sample of source through lut into destination (same geometry and planes).
    virtual bool ApplyLut(const LVBuffer2D& source, LVBuffer2D& destination, const LVLut& lut) = 0;
    // Resample source into destination's geometry (same planes); each output sample averages the source area it covers.
    virtual bool Resize(const LVBuffer2D& source, LVBuffer2D& destination) = 0;
    // Smallest and largest sample over every plane of source.
    virtual bool Range(const LVBuffer2D& source, std::int64_t& minimum, std::int64_t& maximum) = 0;
};

// The block-based flavour: copies and table applications run as parallel block tasks.
class BufferToolsBlocks : public BufferTools {
public:
    // Copy in parallel blocks.
    bool Copy(const LVBuffer2D& source, LVBuffer2D& destination) override;
    // Apply the table in parallel blocks.
    bool ApplyLut(const LVBuffer2D& source, LVBuffer2D& destination, const LVLut& lut) override;
    // Box-filter resampling.
    bool Resize(const LVBuffer2D& source, LVBuffer2D& destination) override;
    // Scan every sample.
    bool Range(const LVBuffer2D& source, std::int64_t& minimum, std::int64_t& maximum) override;
};

// Copy source into destination with a CopyBlocks task over automatic blocks.
bool CopyBuffer(BufferTools& tools, const LVBuffer2D& source, LVBuffer2D& destination, bool parallel);
// Apply lut from source into destination with an ApplyLUTBlocks task over automatic blocks, in parallel.
bool ApplyLUTBuffer(BufferTools& tools, const LVBuffer2D& source, LVBuffer2D& destination, const LVLut& lut);

}  // namespace Lumivale::BufferTools
