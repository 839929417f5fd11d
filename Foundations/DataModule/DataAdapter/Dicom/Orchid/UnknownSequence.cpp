#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/UnknownSequence.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::uint16_t kItemGroup = 0xFFFE;
constexpr std::uint16_t kSequenceDelimitationElement = 0xE0DD;

// A file stream that sees only [begin, end) of its file: it starts at begin and ends at end, with
// offsets still those of the file, so that values kept in the file are regions of it.
class WindowDataStream : public DicomFileDataStream {
public:
    WindowDataStream(std::shared_ptr<const Portability::OpenFile> file, std::uint64_t begin, std::uint64_t end)
        : end_(end) {
        OpenForReading(std::move(file));
        opened_ = DicomFileDataStream::SetPosition(begin);
    }
    bool Opened() const noexcept { return opened_; }

    bool SetPosition(std::uint64_t position) override {
        return position <= end_ && DicomFileDataStream::SetPosition(position);
    }
    bool Skip(std::uint64_t count) override {
        return count <= end_ - Position() && DicomFileDataStream::Skip(count);
    }
    bool ReadRaw(void* data, std::uint64_t size) override {
        return size <= end_ - Position() && DicomFileDataStream::ReadRaw(data, size);
    }
    bool AtEnd() const override { return Position() >= end_; }
    std::uint64_t Size() const override { return end_; }
    bool InflateRemainder() override { return false; }

private:
    std::uint64_t end_;
    bool opened_ = false;
};

// The items of the stream as the content of a sequence of record's tag: the fill callback sees a
// sequence opened before them and closed after them.
std::unique_ptr<DicomDataSetSequenceElement> ReadItems(DicomDataStream& stream, const DicomDataSetElement& element,
                                                       const DicomReadOptions& options, DicomReadResult& result) {
    stream.SetEncoding(StreamEncoding::ImplicitLittleEndian);
    stream.SetReadOptions(options);
    stream.ResetReadState();
    DicomDataSet root;
    DicomDataSetFillCallback fill(root);
    DicomDataSetElement edge;
    edge.kind = DicomElementKind::Sequence;
    edge.tag.group = element.tag.group;
    edge.tag.element = element.tag.element;
    edge.vr = ValueRepresentation::SQ;
    edge.valueLength = kUndefinedLength;
    edge.headerPosition = element.headerPosition;
    const bool opened = fill.ElementRead(edge);
    const bool read = opened && stream.ReadElements(fill);
    edge.Clear();
    edge.kind = DicomElementKind::SequenceDelimitation;
    edge.tag.group = kItemGroup;
    edge.tag.element = kSequenceDelimitationElement;
    if (!read || !fill.ElementRead(edge)) {
        result = stream.ReadResult() ? DicomReadResult{DicomReadStatus::UnknownNotItems, element.valuePosition,
                                                       element.tag}
                                     : stream.ReadResult();
        LV_TRACE("Module DicomDataStream", "%s", result.Text().c_str());
        return nullptr;
    }
    auto node = root.Release(element.tag);
    auto* sequence = dynamic_cast<DicomDataSetSequenceElement*>(node.get());
    if (sequence == nullptr) return nullptr;
    node.release();
    return std::unique_ptr<DicomDataSetSequenceElement>(sequence);
}

}  // namespace

std::unique_ptr<DicomDataSetSequenceElement> ReadValueAsSequence(const DicomDataSetElement& element,
                                                                 const DicomReadOptions& options,
                                                                 DicomReadResult& result) {
    result = {};
    if (const FileRegion* region = element.value.Region()) {
        if (!region->IsInsideFile()) {
            result = {DicomReadStatus::UnknownOutsideFile, element.valuePosition, element.tag};
            return nullptr;
        }
        if (region->deflatedFrom) {
            // Its bytes exist only inflated: loaded whole, within what a read may hold.
            std::vector<std::uint8_t> bytes;
            if (region->length > options.maxHeldBytes || !LoadRegion(*region, bytes)) {
                result = {DicomReadStatus::UnknownNotHeld, element.valuePosition, element.tag};
                LV_TRACE("Module DicomDataStream", "%s", result.Text().c_str());
                return nullptr;
            }
            DicomMemoryDataStream stream(bytes);
            return ReadItems(stream, element, options, result);
        }
        WindowDataStream stream(region->file, region->offset, region->offset + region->length);
        if (!stream.Opened()) {
            result = {DicomReadStatus::UnknownUnreachable, region->offset, element.tag};
            return nullptr;
        }
        return ReadItems(stream, element, options, result);
    }
    DicomMemoryDataStream stream(element.value.Bytes());
    return ReadItems(stream, element, options, result);
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
