#pragma once
// Values that stay in their source file: an open read-only file shared by the values that refer
// to it, a region of it, and the helpers that load a region or copy it into another file.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "Portability/Misc/AtomicFileWriter.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// A file opened for reading, kept open as long as a value refers to it.
class RegionSource {
public:
    // Open path for reading; null when it cannot be opened.
    static std::shared_ptr<RegionSource> Open(const std::filesystem::path& path);
    // An empty unnamed file in the temporary directory, removed when closed; filled with Append
    // before values refer to it. Its Path() opens it again while it is open.
    // Null when none can be made.
    static std::shared_ptr<RegionSource> OpenTemporary();
    ~RegionSource();
    RegionSource(const RegionSource&) = delete;
    RegionSource& operator=(const RegionSource&) = delete;

    // The file's path as opened.
    const std::filesystem::path& Path() const noexcept { return path_; }
    // The POSIX descriptor, valid while this object lives.
    int Descriptor() const noexcept { return descriptor_; }
    // The file's size in bytes when it was opened (or as appended to).
    std::uint64_t Size() const noexcept { return size_; }
    // Append bytes to a file made by OpenTemporary; false when they cannot all be written.
    bool Append(const std::uint8_t* data, std::size_t size);

private:
    RegionSource(std::filesystem::path path, int descriptor, std::uint64_t size);
    std::filesystem::path path_;
    int descriptor_;
    std::uint64_t size_;
};

// A value left in its source file.
struct FileRegion {
    std::shared_ptr<const RegionSource> source;  // the file holding the bytes
    std::uint64_t offset = 0;                    // first byte of the value
    std::uint64_t length = 0;                    // byte count
    bool bigEndian = false;                      // the bytes are in big-endian unit order
    unsigned unitSize = 1;                       // unit size of the VR, for byte swapping
};

// Read the whole region into out (replacing its content), in little-endian unit order.
bool LoadRegion(const FileRegion& region, std::vector<std::uint8_t>& out);

// Append the region's bytes to out, swapping units when swapUnits is set: copied file to file
// when no swap is needed, through a chunk buffer otherwise.
bool CopyRegionToFile(const FileRegion& region, Portability::AtomicFileWriter& out, bool swapUnits);

// Reverse the bytes of each unit of unitSize bytes in data (size a multiple of the unit).
void SwapUnitsInPlace(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept;

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
