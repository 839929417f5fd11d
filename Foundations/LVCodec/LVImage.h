#pragma once
// The loadable image: an in-memory image that loads itself through the codec registry.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <string>

namespace Lumivale::Imaging {

// An image loaded from a file by the codec its extension (or signature) selects.
class LVImage : public LVImageMemory {
public:
    // Load with both option words 0.
    bool LoadFromFile(const std::string& path, unsigned loadFlags) override;
    // Load: loadFlags kLoadBySignature picks the codec by content, kLoadThumbnail asks for the embedded thumbnail.
    virtual bool LoadFromFile(const std::string& path, unsigned frame, unsigned codecOption, unsigned loadFlags);
};

}  // namespace Lumivale::Imaging
