#include "Foundations/LVCodec/ImageFile.h"

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/OpenFile.h"

#include <limits>

namespace Lumivale::Imaging {

std::shared_ptr<Portability::OpenFile> OpenImageFile(const std::string& path, const char* module) {
    std::shared_ptr<Portability::OpenFile> file = Portability::OpenFile::Open(path);
    if (!file) {
        LV_TRACE(module, "Cannot open %s", path.c_str());
        return nullptr;
    }
    if (file->Size() > kMaxImageFileBytes) {
        LV_TRACE(module, "Cannot read %s: size %llu", path.c_str(), static_cast<unsigned long long>(file->Size()));
        return nullptr;
    }
    return file;
}

bool ReadImageFile(const std::string& path, std::vector<std::uint8_t>& bytes, const char* module) {
    const std::shared_ptr<Portability::OpenFile> file = OpenImageFile(path, module);
    if (!file) return false;
    bytes.resize(static_cast<std::size_t>(file->Size()));
    if (!file->ReadAt(bytes.data(), bytes.size(), 0)) {
        LV_TRACE(module, "Cannot read %s", path.c_str());
        return false;
    }
    return true;
}

bool IsSaneGeometry(std::uint64_t width, std::uint64_t height) {
    constexpr std::uint64_t kMaxSide = std::numeric_limits<std::int32_t>::max();
    if (width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide && width * height <= kMaxImagePixels) {
        return true;
    }
    LV_TRACE("Module LVCodec", "Refusing image of %llu x %llu pixels: the limit is %llu pixels",
             static_cast<unsigned long long>(width), static_cast<unsigned long long>(height),
             static_cast<unsigned long long>(kMaxImagePixels));
    return false;
}

bool AllocateImage(LVImageMemory& image, std::uint64_t width, std::uint64_t height, unsigned planes, unsigned bits,
                   const char* module) {
    if (!IsSaneGeometry(width, height)) return false;
    if (!image.Allocate(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), planes, bits)) {
        LV_TRACE(module, "Cannot allocate %llu x %llu x %u samples of %u bits", static_cast<unsigned long long>(width),
                 static_cast<unsigned long long>(height), planes, bits);
        return false;
    }
    return true;
}

void ShiftSignedIntoUnsignedRange(LVBuffer2D& out, unsigned bits) {
    const std::int64_t half = std::int64_t{1} << (bits - 1);
    const std::int64_t mask = (half << 1) - 1;
    const bool wasSigned = !out.Type().isUnsigned;
    for (unsigned p = 0; p < out.Planes(); ++p)
        for (std::int32_t y = 0; y < out.Height(); ++y)
            for (std::int32_t x = 0; x < out.Width(); ++x) {
                const std::int64_t v = out.Sample(p, x, y);
                out.SetSample(p, x, y, wasSigned ? v + half : (v & mask) ^ half);
            }
    out.SetUnsigned(true);
}

}  // namespace Lumivale::Imaging
