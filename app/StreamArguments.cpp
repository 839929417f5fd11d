#include "app/StreamArguments.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/StandardStreams.h"

#include <string>

namespace Dicapsule {

bool IsStandardStream(const boost::filesystem::path& path) { return path.string() == kStandardStreamArgument; }

Portability::InputFile::Status OpenInput(const boost::filesystem::path& path, Portability::InputFile& input,
                                         std::uint64_t max_size) {
    if (IsStandardStream(path)) return input.OpenStandardInput(std::string(kStandardInputName), max_size);
    return input.Open(path.string(), max_size);
}

bool WriteStandardOutput(const Lumivale::DataModule::ByteBuffer& content) {
    namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
    const Lumivale::DataModule::FileRegion* region = content.Region();
    if (region == nullptr) {
        const auto bytes = content.MemoryBytes();
        return Portability::WriteStandardOutput(bytes.data(), bytes.size());
    }
    // A region of a deflated data set is inflated again as it is written.
    return dcm::ReadRegionInChunks(dcm::FileRegion{*region}, [](std::uint8_t* bytes, std::size_t size) {
        if (!Portability::WriteStandardOutput(bytes, size)) return false;
        Portability::ReportProgress(size);
        return true;
    });
}

}  // namespace Dicapsule
