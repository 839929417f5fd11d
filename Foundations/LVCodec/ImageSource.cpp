#include "Foundations/LVCodec/ImageSource.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/OpenFile.h"

#include <cstring>

namespace Lumivale::Imaging {

bool MemoryImageSource::ReadAt(std::uint8_t* data, std::uint64_t size, std::uint64_t offset) const {
    if (!Has(offset, size)) return false;
    if (size > 0) std::memcpy(data, bytes_.data() + offset, static_cast<std::size_t>(size));
    return true;
}

std::unique_ptr<FileImageSource> FileImageSource::Open(const std::string& path, const char* module) {
    std::shared_ptr<Portability::OpenFile> file = OpenImageFile(path, module);
    if (!file) return nullptr;
    return std::unique_ptr<FileImageSource>(new FileImageSource(std::move(file), module));
}

FileImageSource::FileImageSource(std::shared_ptr<Portability::OpenFile> file, const char* module)
    : file_(std::move(file)), module_(module) {}

std::uint64_t FileImageSource::Size() const { return file_->Size(); }

bool FileImageSource::ReadAt(std::uint8_t* data, std::uint64_t size, std::uint64_t offset) const {
    if (!Has(offset, size)) return false;
    if (file_->ReadAt(data, size, offset)) return true;
    LV_TRACE(module_, "Cannot read %s", file_->Path().c_str());
    return false;
}

}  // namespace Lumivale::Imaging
