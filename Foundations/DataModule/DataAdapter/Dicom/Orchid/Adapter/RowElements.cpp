#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/RowElements.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ExtraSequence.h"
#include "Portability/Misc/DebugTrace.h"

#include <variant>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

constexpr const char* kModule = "Module DicomFileDataAdapter";

using dcm::Tag;
using dcm::TagNumber;
using VR = dcm::ValueRepresentation;

constexpr RequiredAttribute kRequired[] = {
    {Tag::StudyDate, VR::DA},           {Tag::ContentDate, VR::DA},       {Tag::StudyTime, VR::TM},
    {Tag::ContentTime, VR::TM},         {Tag::AccessionNumber, VR::SH},   {Tag::Modality, VR::CS},
    {Tag::Manufacturer, VR::LO},        {Tag::ReferringPhysicianName, VR::PN},
    {Tag::PatientName, VR::PN},         {Tag::PatientID, VR::LO},         {Tag::PatientBirthDate, VR::DA},
    {Tag::PatientSex, VR::CS},          {Tag::StudyInstanceUID, VR::UI},  {Tag::SeriesInstanceUID, VR::UI},
    {Tag::StudyID, VR::SH},             {Tag::SeriesNumber, VR::IS},      {Tag::InstanceNumber, VR::IS},
};

// Tags the adapter writes itself, outside the row attribute tables.
constexpr Tag kProgramTags[] = {
    Tag::SpecificCharacterSet, Tag::SOPClassUID, Tag::AcquisitionContextSequence, Tag::IconImageSequence,
    Tag::SamplesPerPixel, Tag::PhotometricInterpretation, Tag::Rows, Tag::Columns, Tag::PlanarConfiguration,
    Tag::BitsAllocated, Tag::BitsStored, Tag::HighBit, Tag::PixelRepresentation,
};

std::string TagText(std::uint32_t tag) {
    return Portability::TraceFormat("(%04X,%04X)", dcm::TagGroup(tag), dcm::TagElement(tag));
}

}  // namespace


bool InsertRowAttributes(dcm::DicomDataSet& dataSet, RowKind kind, const DataRow& row,
                         const MultiCharSetDataType& charset) {
    for (const RowAttribute& attribute : RowAttributesOf(kind)) {
        const std::optional<std::string> text = attribute.get(row);
        if (!text) continue;
        const std::uint32_t tag = dcm::MakeTagNumber(attribute.tag.group, attribute.tag.element);
        auto element = MakeTextElement(tag, dcm::VRFromCode(attribute.vr), *text, charset);
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
    for (const auto& [elementTag, extra] : extras) {
        const std::uint32_t tag = dcm::MakeTagNumber(elementTag.group, elementTag.element);
        const VR vr = dcm::VRFromCode(extra.vr);
        std::unique_ptr<dcm::DicomDataSetElement> element;
        if (const auto* text = std::get_if<std::string>(&extra.value)) {
            element = MakeTextElement(tag, vr, *text, charset);
        } else if (vr == VR::SQ) {
            element = MakeExtraSequence(tag, std::get<std::vector<std::uint8_t>>(extra.value), charset);
        } else {
            const auto& bytes = std::get<std::vector<std::uint8_t>>(extra.value);
            element = std::make_unique<dcm::DicomDataSetElement>(elementTag.group, elementTag.element, vr, bytes);
        }
        if (!element) {
            LV_TRACE(kModule, "Extra element %s cannot be written as %s", TagText(tag).c_str(), extra.vr.c_str());
            return false;
        }
        dataSet.Insert(std::move(element));
    }
    return true;
}

void InsertMissingRequiredAttributes(dcm::DicomDataSet& dataSet) {
    for (const RequiredAttribute& required : kRequired) {
        const std::uint32_t tag = TagNumber(required.tag);
        if (!dataSet.Find(tag)) {
            dataSet.Insert(std::make_unique<dcm::DicomDataSetElement>(dcm::TagGroup(tag), dcm::TagElement(tag), required.vr));
        }
    }
}

void ReadRowAttributes(const dcm::DicomDataSet& dataSet, RowKind kind, DataRow& row, const MultiCharSetDataType& charset) {
    for (const RowAttribute& attribute : RowAttributesOf(kind)) {
        const std::uint32_t tag = dcm::MakeTagNumber(attribute.tag.group, attribute.tag.element);
        const auto* element = dataSet.Find(tag);
        if (!element) continue;
        std::string text;
        if (!FetchElementText(*element, charset, text) || !attribute.set(row, text)) {
            LV_TRACE(kModule, "%s %s: value not usable, left out", TagText(tag).c_str(), std::string(attribute.keyword).c_str());
        }
    }
}

bool IsHandledTag(std::uint32_t tag) noexcept {
    const ElementTag elementTag{dcm::TagGroup(tag), dcm::TagElement(tag)};
    if (RowKindOfTag(elementTag)) return true;
    for (const Tag programTag : kProgramTags) {
        if (TagNumber(programTag) == tag) return true;
    }
    return false;
}

void ReadExtraElements(const dcm::DicomDataSet& dataSet, const MultiCharSetDataType& charset, std::uint64_t maxBytes,
                       ExtraElementList& extras) {
    for (const auto& [tag, node] : dataSet) {
        // Private groups stay behind: their meaning belongs to the source's makers.
        const bool privateGroup = node->group % 2 == 1;
        if (node->group == 0x0002 || node->element == 0 || privateGroup || IsHandledTag(tag) ||
            node->kind != dcm::DicomElementKind::Element || tag == dcm::kPixelDataTag || node->vr == VR::SQ) {
            continue;
        }
        const std::string code(dcm::VRCode(dcm::WireVR(node->vr)));
        const ElementTag elementTag{node->group, node->element};
        std::string text;
        if (dcm::VRIsCharacterData(node->vr) && FetchElementText(*node, charset, text)) {
            extras.SetText(elementTag, code, std::move(text));
            continue;
        }
        std::vector<std::uint8_t> bytes;
        if (node->value.Size() <= maxBytes && node->value.Load(bytes)) extras.SetBytes(elementTag, code, std::move(bytes));
    }
}

}  // namespace Lumivale::DataModule::DataAdapterModule
