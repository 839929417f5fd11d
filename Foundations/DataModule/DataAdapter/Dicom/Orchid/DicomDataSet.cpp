#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

DicomDataSetElement::DicomDataSetElement(Tag tag_, ValueRepresentation vr_, std::vector<std::uint8_t> bytes)
    : tag(tag_), vr(vr_) {
    SetValue(std::move(bytes));
}

void DicomDataSetElement::SetValue(std::vector<std::uint8_t> bytes) {
    valueLength = static_cast<std::uint32_t>(bytes.size());
    value.SetBytes(std::move(bytes));
}

std::uint64_t DicomDataSetElement::EncodedSize(StreamEncoding encoding) const {
    return ElementHeaderSize(vr, encoding) + EvenLength(value.Size());
}

void DicomDataSetElement::Clear() noexcept { *this = DicomDataSetElement(); }

bool DicomDataSet::Insert(std::unique_ptr<DicomDataSetElement> node) {
    if (!node) return false;
    const Tag tag = node->tag;
    elements_.insert_or_assign(tag, std::move(node));
    return true;
}

DicomDataSetElement* DicomDataSet::Find(Tag tag) noexcept {
    const auto it = elements_.find(tag);
    return it == elements_.end() ? nullptr : it->second.get();
}

const DicomDataSetElement* DicomDataSet::Find(Tag tag) const noexcept {
    const auto it = elements_.find(tag);
    return it == elements_.end() ? nullptr : it->second.get();
}

bool DicomDataSet::Remove(Tag tag) { return elements_.erase(tag) != 0; }

std::unique_ptr<DicomDataSetElement> DicomDataSet::Release(Tag tag) {
    const auto it = elements_.find(tag);
    if (it == elements_.end()) return nullptr;
    std::unique_ptr<DicomDataSetElement> node = std::move(it->second);
    elements_.erase(it);
    return node;
}

std::uint64_t DicomDataSet::EncodedSize(StreamEncoding encoding) const {
    std::uint64_t size = 0;
    for (const auto& [tag, node] : elements_) size += node->EncodedSize(encoding);
    return size;
}

DicomDataSetSequenceElement::DicomDataSetSequenceElement(Tag tag_) {
    kind = DicomElementKind::Sequence;
    tag = tag_;
    vr = ValueRepresentation::SQ;
    valueLength = kUndefinedLength;
}

DicomDataSetSequenceElement::DicomDataSetSequenceElement(DicomDataSetElement&& record)
    : DicomDataSetElement(std::move(record)) {
    kind = DicomElementKind::Sequence;
    vr = ValueRepresentation::SQ;
    value.Reset();
}

DicomDataSet& DicomDataSetSequenceElement::AppendItem() {
    items_.push_back(std::make_unique<DicomDataSet>());
    return *items_.back();
}

void DicomDataSetSequenceElement::AppendEmptySlot() { items_.push_back(nullptr); }

DicomDataSet* DicomDataSetSequenceElement::Item(std::size_t index) noexcept {
    return index < items_.size() ? items_[index].get() : nullptr;
}

std::uint64_t DicomDataSetSequenceElement::ContentSize(StreamEncoding encoding) const {
    std::uint64_t size = 0;
    for (const auto& item : items_) {
        if (item) size += kItemHeaderSize + item->EncodedSize(encoding);
    }
    return size;
}

std::uint64_t DicomDataSetSequenceElement::EncodedSize(StreamEncoding encoding) const {
    return ElementHeaderSize(ValueRepresentation::SQ, encoding) + ContentSize(encoding);
}

DicomDataSetFrameContainerElement::DicomDataSetFrameContainerElement(ValueRepresentation vr_, bool encapsulatedFrames) {
    tag = Tags::PixelData;
    vr = vr_;
    encapsulated = encapsulatedFrames;
    valueLength = encapsulatedFrames ? kUndefinedLength : 0;
}

DicomDataSetFrameContainerElement::DicomDataSetFrameContainerElement(DicomDataSetElement&& record)
    : DicomDataSetElement(std::move(record)) {
    encapsulated = valueLength == kUndefinedLength;
}

const DicomValue* DicomDataSetFrameContainerElement::Frame(std::size_t index) const noexcept {
    return index < frames_.size() ? &frames_[index] : nullptr;
}

void DicomDataSetFrameContainerElement::AppendFrame(DicomValue frame) { frames_.push_back(std::move(frame)); }

const DicomValue& DicomDataSetFrameContainerElement::NativeValue() const noexcept {
    return frames_.empty() ? value : frames_.front();
}

std::uint64_t DicomDataSetFrameContainerElement::EncodedSize(StreamEncoding encoding) const {
    const std::uint64_t header = ElementHeaderSize(vr, encoding);
    if (!encapsulated) return header + EvenLength(NativeValue().Size());
    // Empty offset table item, one item per frame, closing sequence delimitation.
    std::uint64_t size = header + kItemHeaderSize + kItemHeaderSize;
    for (const DicomValue& frame : frames_) size += kItemHeaderSize + EvenLength(frame.Size());
    return size;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
