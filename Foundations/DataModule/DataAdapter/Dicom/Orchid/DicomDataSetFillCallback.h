#pragma once
// Builds a data set tree from the element events of a DicomDataStream read.

#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Inserts each element read into the innermost open item (or the root), opens and closes
// sequences and items on their events, and attaches encapsulated pixel fragments as frames.
class DicomDataSetFillCallback : public DicomDataStream::CallbackHandler {
public:
    // Fill root; the root keeps whatever was built when reading stops.
    explicit DicomDataSetFillCallback(DicomDataSet& root) : root_(root) {}

    bool ElementRead(DicomDataSetElement& record) override;

private:
    DicomDataSet* CurrentSet() noexcept;
    bool InBareSequence() const noexcept;
    bool ReplacesOpenNode(const DicomDataSet& target, Tag tag) const noexcept;
    bool InsertElement(DicomDataSetElement& record);
    bool InsertSequence(DicomDataSetElement& record);
    bool OpenItem(DicomDataSetElement& record);

    DicomDataSet& root_;
    std::vector<DicomDataSetSequenceElement*> sequences_;
    std::vector<DicomDataSet*> items_;  // null entries stand for pixel data fragments
    std::vector<bool> openItems_;       // open sequences (false) and items (true), innermost last
    DicomDataSetFrameContainerElement* pixelData_ = nullptr;
    bool offsetTableSeen_ = false;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
