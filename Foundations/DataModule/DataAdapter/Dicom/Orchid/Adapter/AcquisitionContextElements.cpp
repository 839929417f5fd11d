#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/AcquisitionContextElements.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"

#include <exception>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

bool InsertText(dcm::DicomDataSet& item, Tag tag, VR vr, std::string_view utf8, const MultiCharSetDataType& charset) {
    auto element = MakeTextElement(tag, vr, utf8, charset);
    return element && item.Insert(std::move(element));
}

bool InsertWide(dcm::DicomDataSet& item, Tag tag, VR vr, const WStringDataType& wide, const MultiCharSetDataType& charset) {
    if (wide.IsEmpty()) return true;
    const std::optional<std::string> utf8 = TryToUtf8(wide.Value());
    return utf8 && InsertText(item, tag, vr, *utf8, charset);
}

bool InsertConcept(dcm::DicomDataSet& item, Tag sequenceTag, const CodedConcept& coded,
                   const MultiCharSetDataType& charset) {
    if (coded.code_value.IsEmpty()) return true;
    auto sequence = std::make_unique<dcm::DicomDataSetSequenceElement>(sequenceTag);
    dcm::DicomDataSet& code = sequence->AppendItem();
    const bool written = InsertText(code, Tags::CodeValue, VR::SH, coded.code_value.Value(), charset) &&
                         InsertText(code, Tags::CodingSchemeDesignator, VR::SH, coded.coding_scheme_designator.Value(), charset) &&
                         InsertWide(code, Tags::CodeMeaning, VR::LO, coded.code_meaning, charset);
    return written && item.Insert(std::move(sequence));
}

bool InsertItem(dcm::DicomDataSet& item, const AcquisitionContextItem& entry, const MultiCharSetDataType& charset) {
    if (entry.value_type.IsSet() && !InsertText(item, Tags::ValueType, VR::CS, entry.value_type.Value(), charset)) return false;
    if (entry.numeric_value.IsSet() && !InsertText(item, Tags::NumericValue, VR::DS, entry.numeric_value.Text(), charset)) {
        return false;
    }
    return InsertConcept(item, Tags::ConceptNameCodeSequence, entry.concept_name, charset) &&
           InsertWide(item, Tags::TextValue, VR::UT, entry.text_value, charset) &&
           InsertConcept(item, Tags::ConceptCodeSequence, entry.concept_code, charset);
}

}  // namespace

bool InsertAcquisitionContext(dcm::DicomDataSet& dataSet, const std::vector<AcquisitionContextItem>& items,
                              const MultiCharSetDataType& charset) {
        auto sequence = std::make_unique<dcm::DicomDataSetSequenceElement>(Tags::AcquisitionContextSequence);
    for (const AcquisitionContextItem& entry : items) {
        if (!InsertItem(sequence->AppendItem(), entry, charset)) return false;
    }
    return dataSet.Insert(std::move(sequence));
}

}  // namespace Lumivale::DataModule::DataAdapterModule
