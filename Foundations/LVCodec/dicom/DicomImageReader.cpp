#include "Foundations/LVCodec/dicom/DicomImageReader.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"
#include "Portability/Misc/DebugTrace.h"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace Lumivale::Imaging {

namespace {

namespace Codec = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
namespace Tags = Codec::Tags;
using Codec::DicomDataSetElement;
using Kind = Codec::DicomElementKind;

constexpr const char* kModule = "Module DICOM image";
constexpr std::uint64_t kPreambleSize = 128;
// Nesting of sequences the reader follows: an icon is one level down, and nothing deeper is wanted.
constexpr unsigned kMaxDepth = 16;

std::string TrimmedText(const DicomDataSetElement& record) {
    const std::span<const std::uint8_t> bytes = record.value.Bytes();
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    return std::string(text);
}

bool IsSupportedSyntax(const std::string& syntax) {
    return syntax != "1.2.840.10008.1.2.2" && syntax != "1.2.840.10008.1.2.1.99";
}

// Takes the element events of the codec's stream: the transfer syntax, the pixel attributes of
// the top level and of the first Icon Image Sequence item, and where their pixel data lie in the
// bytes read (the stream reads them in place and leaves pixel data unloaded).
class PixelAttributeCollector : public Codec::DicomDataStream::CallbackHandler {
public:
    PixelAttributeCollector(std::span<const std::uint8_t> bytes, DicomImageFile& file)
        : bytes_(bytes), file_(file), targets_{&file.main} {}

    bool ElementRead(DicomDataSetElement& record) override {
        switch (record.kind) {
            case Kind::Sequence: return OpenSequence(record);
            case Kind::Item: return record.encapsulated ? AddFragment(record) : OpenItem();
            case Kind::ItemDelimitation:
                if (targets_.size() > 1) targets_.pop_back();
                return true;
            case Kind::SequenceDelimitation: return CloseSequence();
            case Kind::Element: return Store(record);
        }
        return false;
    }

private:
    struct OpenSequenceState {
        DicomPixelAttributes* firstItemTarget;  // the icon record for the top level's icon sequence
        bool itemSeen;
    };

    bool OpenSequence(const DicomDataSetElement& record) {
        const bool icon = record.tag == Tags::IconImageSequence && targets_.size() == 1;
        sequences_.push_back({icon ? &file_.icon : nullptr, false});
        return true;
    }

    bool OpenItem() {
        if (sequences_.empty()) return false;
        OpenSequenceState& sequence = sequences_.back();
        DicomPixelAttributes* target = sequence.itemSeen ? nullptr : sequence.firstItemTarget;
        if (target) file_.has_icon = true;
        sequence.itemSeen = true;
        targets_.push_back(target);
        return true;
    }

    bool CloseSequence() {
        if (!inPixelData_) {
            if (!sequences_.empty()) sequences_.pop_back();
            return true;
        }
        if (fragmentTarget_) {
            fragmentTarget_->encapsulated = true;
            fragmentTarget_->has_pixel_data = fragmentTarget_->fragments.size() > 1;
        }
        inPixelData_ = false;
        fragmentTarget_ = nullptr;
        return true;
    }

    bool AddFragment(const DicomDataSetElement& record) {
        if (fragmentTarget_) fragmentTarget_->fragments.push_back(ValueBytes(record));
        return true;
    }

    std::span<const std::uint8_t> ValueBytes(const DicomDataSetElement& record) const {
        return bytes_.subspan(record.valuePosition, record.valueLength);
    }

    bool Store(const DicomDataSetElement& record) {
        if (record.tag == Tags::TransferSyntaxUID) {
            file_.transfer_syntax = TrimmedText(record);
            if (IsSupportedSyntax(file_.transfer_syntax)) return true;
            LV_TRACE(kModule, "Unsupported transfer syntax %s", file_.transfer_syntax.c_str());
            return false;
        }
        DicomPixelAttributes* target = targets_.back();
        if (record.tag == Tags::PixelData) {
            if (record.valueLength == Codec::kUndefinedLength) {
                // Its fragments follow, up to a sequence delimitation; each is kept for this level.
                inPixelData_ = true;
                fragmentTarget_ = target;
            } else if (target) {
                target->has_pixel_data = record.valueLength > 0;
                target->pixel_data = ValueBytes(record);
            }
            return true;
        }
        if (target) StoreAttribute(record, *target);
        return true;
    }

    static void StoreAttribute(const DicomDataSetElement& record, DicomPixelAttributes& target) {
        const std::span<const std::uint8_t> value = record.value.Bytes();
        const std::uint16_t us = value.size() >= 2 ? static_cast<std::uint16_t>(value[0] | (value[1] << 8)) : 0;
        switch (record.tag.Number()) {
            case Tags::SamplesPerPixel.Number(): target.samples_per_pixel = us; break;
            case Tags::PlanarConfiguration.Number(): target.planar_configuration = us; break;
            case Tags::Rows.Number(): target.rows = us; break;
            case Tags::Columns.Number(): target.columns = us; break;
            case Tags::BitsAllocated.Number(): target.bits_allocated = us; break;
            case Tags::BitsStored.Number(): target.bits_stored = us; break;
            case Tags::PixelRepresentation.Number(): target.pixel_representation = us; break;
            case Tags::PhotometricInterpretation.Number(): target.photometric_interpretation = TrimmedText(record); break;
            case Tags::NumberOfFrames.Number(): {
                const long frames = std::strtol(TrimmedText(record).c_str(), nullptr, 10);
                target.number_of_frames = frames > 0 ? static_cast<std::uint64_t>(frames) : 1;
                break;
            }
            default: break;
        }
    }

    std::span<const std::uint8_t> bytes_;
    DicomImageFile& file_;
    std::vector<DicomPixelAttributes*> targets_;  // per open data set, the top level first; null: not wanted
    std::vector<OpenSequenceState> sequences_;
    bool inPixelData_ = false;
    DicomPixelAttributes* fragmentTarget_ = nullptr;  // while encapsulated pixel data of a wanted level is read
};

}  // namespace

bool ReadDicomImageFile(std::span<const std::uint8_t> bytes, DicomImageFile& file) {
    if (bytes.size() < kPreambleSize + 4 || std::memcmp(bytes.data() + kPreambleSize, "DICM", 4) != 0) {
        LV_TRACE(kModule, "No DICM prefix");
        return false;
    }
    Codec::DicomMemoryDataStream stream(Codec::kInPlaceBytes, bytes);
    Codec::DicomReadOptions options;
    options.maxSequenceDepth = kMaxDepth;
    stream.SetReadOptions(options);
    PixelAttributeCollector collector(bytes, file);
    if (Codec::ReadFileContent(stream, collector)) return true;
    if (const Codec::DicomReadResult& result = stream.ReadResult(); !result) {
        LV_TRACE(kModule, "Cannot parse: %s", result.Text().c_str());
    }
    return false;
}

}  // namespace Lumivale::Imaging
