#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueAlignment.h"

#include <memory>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr const char* kModule = "Module DicomDataStream";
// Explicit VR header sizes: short form (UI) and long form (OB).
constexpr std::uint64_t kShortHeader = 8;
constexpr std::uint64_t kLongHeader = 12;

// A sink that only counts: it notes where the first large value kept in its file would start,
// without reading that value.
class OffsetProbe final : public DicomDataStream {
public:
    explicit OffsetProbe(std::uint64_t minimum) : minimum_(minimum) {}

    void Close() override {}
    bool InflateRemainder() override { return false; }
    bool SetPosition(std::uint64_t) override { return false; }
    bool Skip(std::uint64_t) override { return false; }
    bool ReadRaw(void*, std::uint64_t) override { return false; }
    bool AtEnd() const override { return true; }
    std::uint64_t Position() const override { return position_; }
    std::uint64_t Size() const override { return position_; }
    bool WriteRaw(const void*, std::uint64_t size) override {
        position_ += size;
        return true;
    }
    bool WriteRegion(const FileRegion& region, Portability::Sha256*) override {
        if (!found_ && region.length >= minimum_) {
            found_ = position_;
            length_ = region.length;
        }
        position_ += region.length;
        return true;
    }

    std::optional<std::uint64_t> Found() const { return found_; }
    std::uint64_t FoundLength() const { return length_; }

private:
    std::uint64_t minimum_;
    std::uint64_t position_ = 0;
    std::optional<std::uint64_t> found_;
    std::uint64_t length_ = 0;
};

void RemovePadding(DicomDataSet& dataSet) {
    dataSet.Remove(Tags::PrivateInformationCreatorUID);
    dataSet.Remove(Tags::PrivateInformation);
}

}  // namespace

std::optional<std::uint64_t> LargeValueFileOffset(const DicomDataSet& dataSet, StreamEncoding encoding,
                                                  std::uint64_t minimum) {
    OffsetProbe probe(minimum);
    probe.SetEncoding(encoding);
    if (!WriteFileContent(probe, dataSet)) return std::nullopt;
    return probe.Found();
}

bool AlignLargeValue(DicomDataSet& dataSet, StreamEncoding encoding, std::string_view creatorUid,
                     std::uint64_t minimum) {
    RemovePadding(dataSet);
    OffsetProbe probe(minimum);
    probe.SetEncoding(encoding);
    const std::optional<std::uint64_t> unpadded =
        WriteFileContent(probe, dataSet) ? probe.Found() : std::nullopt;
    const std::uint64_t block = ValueBlockSize(probe.FoundLength());
    if (!unpadded || *unpadded % block == 0) return true;
    if (dataSet.Find(Tags::TransferSyntaxUID) == nullptr || creatorUid.empty()) {
        LV_TRACE(kModule, "%s", "No file meta group to pad: the large value stays where it falls");
        return false;
    }
    // Every element has an even length, so the distance left is even and a zero-filled OB fills it.
    const std::uint64_t creatorSize = kShortHeader + EvenLength(creatorUid.size());
    const std::uint64_t fixed = *unpadded + creatorSize + kLongHeader;
    const std::uint64_t padding = (block - fixed % block) % block;
    dataSet.Insert(std::make_unique<DicomDataSetElement>(
        Tags::PrivateInformationCreatorUID, ValueRepresentation::UI, std::vector<std::uint8_t>(creatorUid.begin(), creatorUid.end())));
    dataSet.Insert(std::make_unique<DicomDataSetElement>(Tags::PrivateInformation, ValueRepresentation::OB,
                                                         std::vector<std::uint8_t>(padding, 0)));
    const std::optional<std::uint64_t> padded = LargeValueFileOffset(dataSet, encoding, minimum);
    if (padded && *padded % block == 0) return true;
    LV_TRACE(kModule, "%s", "Padding the file meta group did not align the large value");
    RemovePadding(dataSet);
    return false;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
