#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"

#ifdef _WIN32
#include "Portability/Misc/win32/PosixFiles.h"
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cerrno>
#include <string>

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/TemporaryFile.h"
#include "Portability/Misc/Utf8Path.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::uint64_t kCopyChunk = 1u << 20;

bool ReadFully(int descriptor, std::uint8_t* data, std::uint64_t size, std::uint64_t offset) {
    while (size > 0) {
        const ssize_t got = ::pread(descriptor, data, static_cast<std::size_t>(std::min(size, kCopyChunk)),
                                    static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        data += got;
        size -= static_cast<std::uint64_t>(got);
        offset += static_cast<std::uint64_t>(got);
    }
    return true;
}

bool RegionIsInside(const FileRegion& region) {
    return region.source && region.offset <= region.source->Size() &&
           region.length <= region.source->Size() - region.offset;
}

}  // namespace

RegionSource::RegionSource(std::filesystem::path path, int descriptor, std::uint64_t size)
    : path_(std::move(path)), descriptor_(descriptor), size_(size) {}

RegionSource::~RegionSource() { ::close(descriptor_); }

std::shared_ptr<RegionSource> RegionSource::OpenTemporary() {
    std::string path;
    const int descriptor = Portability::CreateTemporaryFile(path);
    if (descriptor < 0) return nullptr;
    return std::shared_ptr<RegionSource>(new RegionSource(Portability::PathFromUtf8(path), descriptor, 0));
}

bool RegionSource::Append(const std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::pwrite(descriptor_, data, size, static_cast<off_t>(size_));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        data += written;
        size -= static_cast<std::size_t>(written);
        size_ += static_cast<std::uint64_t>(written);
    }
    return true;
}

std::shared_ptr<RegionSource> RegionSource::Open(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(descriptor);
        return nullptr;
    }
    return std::shared_ptr<RegionSource>(new RegionSource(path, descriptor, static_cast<std::uint64_t>(info.st_size)));
}

void SwapUnitsInPlace(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept {
    if (unitSize < 2) return;
    for (std::uint64_t i = 0; i + unitSize <= size; i += unitSize) std::reverse(data + i, data + i + unitSize);
}

bool LoadRegion(const FileRegion& region, std::vector<std::uint8_t>& out) {
    if (!RegionIsInside(region)) return false;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(region.length));
    if (!ReadFully(region.source->Descriptor(), bytes.data(), region.length, region.offset)) return false;
    if (region.bigEndian) SwapUnitsInPlace(bytes.data(), region.length, region.unitSize);
    out = std::move(bytes);
    return true;
}

bool CopyRegionToFile(const FileRegion& region, Portability::AtomicFileWriter& out, bool swapUnits) {
    if (!RegionIsInside(region)) return false;
    if (!swapUnits) return out.CopyFrom(region.source->Descriptor(), region.offset, region.length);
    // Chunks are a multiple of every unit size, so swapping never splits a unit.
    std::vector<std::uint8_t> chunk(static_cast<std::size_t>(std::min(region.length, kCopyChunk)));
    for (std::uint64_t done = 0; done < region.length;) {
        const std::uint64_t size = std::min<std::uint64_t>(region.length - done, chunk.size());
        if (!ReadFully(region.source->Descriptor(), chunk.data(), size, region.offset + done)) return false;
        SwapUnitsInPlace(chunk.data(), size, region.unitSize);
        if (!out.Write(chunk.data(), static_cast<std::size_t>(size))) {
            LV_TRACE("Module DicomDataStream", "Write failed while copying %llu bytes from %s",
                     static_cast<unsigned long long>(region.length), Portability::Utf8FromPath(region.source->Path()).c_str());
            return false;
        }
        done += size;
    }
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
