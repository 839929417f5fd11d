#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

DicomDataSet* DicomDataSetFillCallback::CurrentSet() noexcept {
    return items_.empty() ? &root_ : items_.back();
}

bool DicomDataSetFillCallback::InBareSequence() const noexcept {
    // Elements belong in items; only items and the sequence's end may follow a sequence header.
    return !openItems_.empty() && !openItems_.back();
}

bool DicomDataSetFillCallback::ReplacesOpenNode(const DicomDataSet& target, Tag tag) const noexcept {
    // A repeated tag would destroy a sequence still taking items, or the pixel data still taking
    // fragments, while this callback points at it: such a stream is malformed and refused.
    const DicomDataSetElement* existing = target.Find(tag);
    if (!existing) return false;
    if (existing == pixelData_) return true;
    for (const DicomDataSetSequenceElement* open : sequences_) {
        if (existing == open) return true;
    }
    return false;
}

bool DicomDataSetFillCallback::InsertElement(DicomDataSetElement& record) {
    DicomDataSet* target = CurrentSet();
    if (!target) return false;  // an element inside a pixel data fragment cannot happen on a sound stream
    if (InBareSequence() || ReplacesOpenNode(*target, record.tag)) return false;
    if (record.tag == Tags::PixelData && target == &root_) {
        auto node = std::make_unique<DicomDataSetFrameContainerElement>(std::move(record));
        pixelData_ = node->encapsulated ? node.get() : nullptr;
        offsetTableSeen_ = false;
        return target->Insert(std::move(node));
    }
    return target->Insert(std::make_unique<DicomDataSetElement>(std::move(record)));
}

bool DicomDataSetFillCallback::InsertSequence(DicomDataSetElement& record) {
    DicomDataSet* target = CurrentSet();
    if (!target || InBareSequence() || ReplacesOpenNode(*target, record.tag)) return false;
    auto node = std::make_unique<DicomDataSetSequenceElement>(std::move(record));
    DicomDataSetSequenceElement* sequence = node.get();
    if (!target->Insert(std::move(node))) return false;
    sequences_.push_back(sequence);
    openItems_.push_back(false);
    return true;
}

bool DicomDataSetFillCallback::OpenItem(DicomDataSetElement& record) {
    if (record.encapsulated) {
        // The first item of encapsulated pixel data is the offset table; the others are fragments.
        if (pixelData_ && offsetTableSeen_) pixelData_->AppendFrame(std::move(record.value));
        offsetTableSeen_ = true;
        items_.push_back(nullptr);
        openItems_.push_back(true);
        return true;
    }
    if (sequences_.empty() || !InBareSequence()) return false;  // an item belongs straight in a sequence
    items_.push_back(&sequences_.back()->AppendItem());
    openItems_.push_back(true);
    return true;
}

bool DicomDataSetFillCallback::ElementRead(DicomDataSetElement& record) {
    switch (record.kind) {
        case DicomElementKind::Element: return InsertElement(record);
        case DicomElementKind::Sequence: return InsertSequence(record);
        case DicomElementKind::Item: return OpenItem(record);
        case DicomElementKind::SequenceDelimitation:
            if (record.encapsulated) {
                pixelData_ = nullptr;
                return true;
            }
            if (sequences_.empty() || !InBareSequence()) return false;  // an item is still open
            sequences_.pop_back();
            openItems_.pop_back();
            return true;
        case DicomElementKind::ItemDelimitation:
            if (items_.empty() || openItems_.empty() || !openItems_.back()) return false;
            items_.pop_back();
            openItems_.pop_back();
            return true;
    }
    return false;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
