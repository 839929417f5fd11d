#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

namespace Lumivale::Imaging {

bool LVImageMemory::LoadFromFile(const std::string&, unsigned) { return false; }

bool LVImageMemory::SaveToFile(const std::string&, unsigned, unsigned, unsigned) { return false; }

bool LVImageMemory::Allocate(std::int32_t width, std::int32_t height, unsigned planes, unsigned bits) {
    frameCount_ = 1;
    return buffer_.Allocate(width, height, planes, bits);
}

}  // namespace Lumivale::Imaging
