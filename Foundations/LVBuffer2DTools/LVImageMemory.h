#pragma once
// In-memory image: an owning pixel buffer plus the file-level facts the codecs report. The
// loadable LVImage (image codec library) derives from it and adds loading through the codecs.

#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"

#include <string>

namespace Lumivale::Imaging {

// An image held in memory.
class LVImageMemory {
public:
    LVImageMemory() = default;
    LVImageMemory(const LVImageMemory&) = delete;
    LVImageMemory& operator=(const LVImageMemory&) = delete;
    // Frees the pixel buffer.
    virtual ~LVImageMemory() = default;

    // Load from a file; the in-memory base knows no codec and fails.
    virtual bool LoadFromFile(const std::string& path, unsigned loadFlags);
    // Save to a file; the in-memory base knows no codec and fails.
    virtual bool SaveToFile(const std::string& path, unsigned frame, unsigned codecOption, unsigned saveFlags);

    // Allocate an unsigned image of the given geometry (default alignment) and reset the file facts.
    bool Allocate(std::int32_t width, std::int32_t height, unsigned planes, unsigned bits);
    // The pixel buffer.
    LVBuffer2D& Buffer() { return buffer_; }
    // The pixel buffer, read only.
    const LVBuffer2D& Buffer() const { return buffer_; }
    // Number of frames (pages) in the file the image came from; 1 when unknown.
    unsigned FrameCount() const { return frameCount_; }
    // Record the number of frames of the source file.
    void SetFrameCount(unsigned count) { frameCount_ = count; }

private:
    LVBuffer2D buffer_;
    unsigned frameCount_ = 1;
};

}  // namespace Lumivale::Imaging
