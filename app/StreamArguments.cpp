#include "app/StreamArguments.h"

#include "Portability/Misc/Progress.h"
#include "Portability/Misc/StandardStreams.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Dicapsule {

bool IsStandardStream(const boost::filesystem::path& path) { return path.string() == kStandardStreamArgument; }

Portability::InputFile::Status OpenInput(const boost::filesystem::path& path, Portability::InputFile& input,
                                         std::uint64_t max_size) {
    if (IsStandardStream(path)) return input.OpenStandardInput(std::string(kStandardInputName), max_size);
    return input.Open(path.string(), max_size);
}

bool WriteStandardOutput(const Lumivale::DataModule::ByteBuffer& content) {
    const Lumivale::DataModule::FileRegion* region = content.Region();
    if (region == nullptr) {
        const auto bytes = content.MemoryBytes();
        return Portability::WriteStandardOutput(bytes.data(), bytes.size());
    }
    if (!region->IsInsideFile()) return false;
    constexpr std::uint64_t kStep = 1u << 20;
    std::vector<char> chunk(static_cast<std::size_t>(std::min(region->length, kStep)));
    for (std::uint64_t done = 0; done < region->length;) {
        const std::uint64_t size = std::min<std::uint64_t>(region->length - done, chunk.size());
        if (!region->file->ReadAt(chunk.data(), size, region->offset + done) ||
            !Portability::WriteStandardOutput(chunk.data(), static_cast<std::size_t>(size))) {
            return false;
        }
        done += size;
        Portability::ReportProgress(size);
    }
    return true;
}

}  // namespace Dicapsule
