#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ReferencedInstanceElements.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"


namespace Lumivale::DataModule::DataAdapterModule {
namespace {

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

bool InsertUid(dcm::DicomDataSet& item, Tag tag, const std::string& uid) {
    auto element = MakeTextElement(tag, VR::UI, uid, MultiCharSetDataType());
    return element && item.Insert(std::move(element));
}

// Every item says why it is referenced: the packed file refers to it. The code is local to this
// product (a "99" coding scheme), since the standard's purposes of reference describe images.
bool InsertPurposeOfReference(dcm::DicomDataSet& item) {
    return InsertCodeSequence(item, Tags::PurposeOfReferenceCodeSequence, "PACKEDREF", "99DCAPS",
                              "Referenced by the packed file");
}

}  // namespace

bool InsertReferencedInstances(dcm::DicomDataSet& dataSet, const std::vector<ReferencedInstance>& references) {
        auto sequence = std::make_unique<dcm::DicomDataSetSequenceElement>(Tags::ReferencedInstanceSequence);
    for (const ReferencedInstance& reference : references) {
        // An item must name the SOP class (Type 1); a reference without one stays in the custom data only.
        if (reference.sop_class_uid.empty()) continue;
        dcm::DicomDataSet& item = sequence->AppendItem();
        if (!InsertUid(item, Tags::ReferencedSOPClassUID, reference.sop_class_uid) ||
            !InsertUid(item, Tags::ReferencedSOPInstanceUID, reference.sop_instance_uid) ||
            !InsertPurposeOfReference(item)) {
            return false;
        }
    }
    return sequence->ItemCount() == 0 || dataSet.Insert(std::move(sequence));
}

}  // namespace Lumivale::DataModule::DataAdapterModule
