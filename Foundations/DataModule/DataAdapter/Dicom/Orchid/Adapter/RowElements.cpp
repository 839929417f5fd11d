#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/RowElements.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ExtraSequence.h"
#include "Portability/Misc/DebugTrace.h"

#include <variant>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

constexpr const char* kModule = "Module DicomFileDataAdapter";

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

constexpr RequiredAttribute kRequired[] = {
    {Tags::StudyDate, VR::DA},           {Tags::ContentDate, VR::DA},       {Tags::StudyTime, VR::TM},
    {Tags::ContentTime, VR::TM},         {Tags::AccessionNumber, VR::SH},   {Tags::Modality, VR::CS},
    {Tags::Manufacturer, VR::LO},        {Tags::ReferringPhysicianName, VR::PN},
    {Tags::PatientName, VR::PN},         {Tags::PatientID, VR::LO},         {Tags::PatientBirthDate, VR::DA},
    {Tags::PatientSex, VR::CS},          {Tags::StudyInstanceUID, VR::UI},  {Tags::SeriesInstanceUID, VR::UI},
    {Tags::StudyID, VR::SH},             {Tags::SeriesNumber, VR::IS},      {Tags::InstanceNumber, VR::IS},
};

// Tags the adapter writes itself, outside the row attribute tables.
constexpr Tag kProgramTags[] = {
    Tags::SpecificCharacterSet, Tags::SOPClassUID, Tags::AcquisitionContextSequence, Tags::IconImageSequence,
    Tags::SamplesPerPixel, Tags::PhotometricInterpretation, Tags::Rows, Tags::Columns, Tags::PlanarConfiguration,
    Tags::BitsAllocated, Tags::BitsStored, Tags::HighBit, Tags::PixelRepresentation,
};

}  // namespace


bool InsertRowAttributes(dcm::DicomDataSet& dataSet, RowKind kind, const DataRow& row,
                         const MultiCharSetDataType& charset) {
    for (const RowAttribute& attribute : RowAttributesOf(kind)) {
        const std::optional<std::string> text = attribute.get(row);
        if (!text) continue;
        const dcm::Tag tag = attribute.tag;
        auto element = MakeTextElement(tag, attribute.vr, *text, charset);
        if (!element) {
            LV_TRACE(kModule, "%s %s cannot be written in the character set \"%s\"", TagText(tag).c_str(),
                     std::string(attribute.keyword).c_str(), charset.ToText().c_str());
            return false;
        }
        dataSet.Insert(std::move(element));
    }
    return true;
}

bool InsertExtraElements(dcm::DicomDataSet& dataSet, const ExtraElementList& extras, const MultiCharSetDataType& charset) {
    for (const auto& [tag, extra] : extras) {
        const VR vr = extra.vr;
        std::unique_ptr<dcm::DicomDataSetElement> element;
        if (const auto* text = std::get_if<std::string>(&extra.value)) {
            element = MakeTextElement(tag, vr, *text, charset);
        } else if (vr == VR::SQ) {
            element = MakeExtraSequence(tag, std::get<std::vector<std::uint8_t>>(extra.value), charset);
        } else {
            const auto& bytes = std::get<std::vector<std::uint8_t>>(extra.value);
            element = std::make_unique<dcm::DicomDataSetElement>(tag, vr, bytes);
        }
        if (!element) {
            LV_TRACE(kModule, "Extra element %s cannot be written as %s", TagText(tag).c_str(), std::string(dcm::VRCode(vr)).c_str());
            return false;
        }
        dataSet.Insert(std::move(element));
    }
    return true;
}

void InsertMissingRequiredAttributes(dcm::DicomDataSet& dataSet) {
    for (const RequiredAttribute& required : kRequired) {
        if (!dataSet.Find(required.tag)) {
            dataSet.Insert(std::make_unique<dcm::DicomDataSetElement>(required.tag, required.vr));
        }
    }
}

void ReadRowAttributes(const dcm::DicomDataSet& dataSet, RowKind kind, DataRow& row, const MultiCharSetDataType& charset) {
    for (const RowAttribute& attribute : RowAttributesOf(kind)) {
        const dcm::Tag tag = attribute.tag;
        const auto* element = dataSet.Find(tag);
        if (!element) continue;
        std::string text;
        if (!FetchElementText(*element, charset, text) || !attribute.set(row, text)) {
            LV_TRACE(kModule, "%s %s: value not usable, left out", TagText(tag).c_str(), std::string(attribute.keyword).c_str());
        }
    }
}

bool IsHandledTag(dcm::Tag tag) noexcept {
    if (RowKindOfTag(tag)) return true;
    for (const Tag programTag : kProgramTags) {
        if (programTag == tag) return true;
    }
    return false;
}

void ReadExtraElements(const dcm::DicomDataSet& dataSet, const MultiCharSetDataType& charset, std::uint64_t maxBytes,
                       ExtraElementList& extras) {
    for (const auto& [tag, node] : dataSet) {
        // Private groups stay behind: their meaning belongs to the source's makers.
        const bool privateGroup = node->tag.group % 2 == 1;
        if (node->tag.group == 0x0002 || node->tag.element == 0 || privateGroup || IsHandledTag(tag) ||
            node->kind != dcm::DicomElementKind::Element || tag == dcm::Tags::PixelData || node->vr == VR::SQ) {
            continue;
        }
        const VR vr = dcm::WireVR(node->vr);
        std::string text;
        if (dcm::VRIsCharacterData(node->vr) && FetchElementText(*node, charset, text)) {
            extras.SetText(tag, vr, std::move(text));
            continue;
        }
        std::vector<std::uint8_t> bytes;
        if (node->value.Size() <= maxBytes && node->value.Load(bytes)) extras.SetBytes(tag, vr, std::move(bytes));
    }
}

}  // namespace Lumivale::DataModule::DataAdapterModule
