#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

DicomDataSet* DicomDataSetFillCallback::CurrentSet() noexcept {
    return items_.empty() ? &root_ : items_.back();
}

bool DicomDataSetFillCallback::InsertElement(DicomDataSetElement& record) {
    DicomDataSet* target = CurrentSet();
    if (!target) return false;  // an element inside a pixel data fragment cannot happen on a sound stream
    if (record.TagNumber() == kPixelDataTag && target == &root_) {
        auto node = std::make_unique<DicomDataSetFrameContainerElement>(std::move(record));
        pixelData_ = node->encapsulated ? node.get() : nullptr;
        offsetTableSeen_ = false;
        return target->Insert(std::move(node));
    }
    return target->Insert(std::make_unique<DicomDataSetElement>(std::move(record)));
}

bool DicomDataSetFillCallback::InsertSequence(DicomDataSetElement& record) {
    DicomDataSet* target = CurrentSet();
    if (!target) return false;
    auto node = std::make_unique<DicomDataSetSequenceElement>(std::move(record));
    DicomDataSetSequenceElement* sequence = node.get();
    if (!target->Insert(std::move(node))) return false;
    sequences_.push_back(sequence);
    return true;
}

bool DicomDataSetFillCallback::OpenItem(DicomDataSetElement& record) {
    if (record.encapsulated) {
        // The first item of encapsulated pixel data is the offset table; the others are fragments.
        if (pixelData_ && offsetTableSeen_) pixelData_->AppendFrame(std::move(record.value));
        offsetTableSeen_ = true;
        items_.push_back(nullptr);
        return true;
    }
    if (sequences_.empty()) return false;
    DicomDataSet& item = sequences_.back()->AppendItem();
    item.SetItemHeaderPosition(record.headerPosition);
    items_.push_back(&item);
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
            if (sequences_.empty()) return false;
            sequences_.pop_back();
            return true;
        case DicomElementKind::ItemDelimitation:
            if (items_.empty()) return false;
            items_.pop_back();
            return true;
    }
    return false;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
