#include "Foundations/DataModule/metadata/LVDataEditor.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/metadata/ElementTextCheck.h"
#include "Foundations/DataModule/metadata/SequenceItemEncoding.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>

namespace Lumivale::DataModule::DataConverterModule {

namespace {

constexpr const char* kTraceModule = "Module LVDataEditor";

namespace Codec = DataAdapterModule::DicomCodecModule;


// Tags an edition may not set: the file meta group, group lengths, the tool's private group, item
// delimiters, and the attributes the file writer makes itself (SOP Class UID, the Acquisition
// Context and Icon Image Sequences, Pixel Data).
struct ReservedTag {
    Tag tag;
    std::string_view reason;
};
constexpr ReservedTag kReservedTags[] = {
    {Codec::Tags::SOPClassUID, "the SOP class is the instance's own"},
    {Codec::Tags::AcquisitionContextSequence, "the acquisition context is written by the tool"},
    {Codec::Tags::IconImageSequence, "the icon image comes from --thumbnail"},
    {Codec::Tags::PixelData, "pixel data cannot be edited"},
};

// Why an edition may not set the tag, or "" when it may.
std::string_view ReservedReason(Tag tag) {
    if (tag.group <= 0x0002) return "the file meta group is written by the tool";
    if (tag.element == 0x0000) return "group lengths are computed by the writer";
    if (tag.group == 0x0009) return "group 0009 holds the tool's own private attributes";
    if (tag.group == 0xFFFE) return "item tags are not attributes";
    const auto found = std::find_if(std::begin(kReservedTags), std::end(kReservedTags),
                                    [tag](const ReservedTag& r) { return r.tag == tag; });
    return found == std::end(kReservedTags) ? std::string_view{} : found->reason;
}

bool IsEditableInstance(InstanceDataRow& instance) {
    return dynamic_cast<RawDataDataRow*>(&instance) != nullptr ||
           dynamic_cast<EncapsulatedDocumentDataRow*>(&instance) != nullptr ||
           dynamic_cast<ImageInstanceDataRow*>(&instance) != nullptr;
}

// Every set position of the character set must be a term the tool knows.
bool HasOnlyKnownTerms(const MultiCharSetDataType& value) {
    for (std::size_t i = 0; i < value.Count(); ++i) {
        if (!value.IsEmpty(i) && value.Get(i) == CharSet::Unknown) return false;
    }
    return true;
}

}  // namespace

bool LVDataEditor::Fail(std::string reason) {
    error_ = std::move(reason);
    LV_TRACE(kTraceModule, "Edition not applied: %s", error_.c_str());
    return false;
}

bool LVDataEditor::ApplyEdition(PatientDataSet& set, InstanceDataRow& instance, std::string_view edition_text) {
    error_.clear();
    if (!IsEditableInstance(instance)) return Fail("the instance is not a raw-data, PDF or image instance");
    DicomXmlDataSet edition;
    if (!edition.Parse(edition_text)) return Fail(edition.error());
    return Apply(set, instance, edition);
}

bool LVDataEditor::ApplyOperation(PatientDataSet& set, InstanceDataRow& instance, const pugi::xml_node& operation) {
    error_.clear();
    if (!IsEditableInstance(instance)) return Fail("the instance is not a raw-data, PDF or image instance");
    DicomXmlDataSet edition;
    if (!edition.Read(operation)) return Fail(edition.error());
    return Apply(set, instance, edition);
}

bool LVDataEditor::Apply(PatientDataSet& set, InstanceDataRow& instance, const DicomXmlDataSet& edition) {
    error_.clear();
    if (!IsEditableInstance(instance)) return Fail("the instance is not a raw-data, PDF or image instance");
    SeriesDataRow* series = set.SeriesOf(instance);
    StudyDataRow* study = series ? set.StudyOf(*series) : nullptr;
    PatientDataRow* patient = study ? set.PatientOf(*study) : nullptr;
    EquipmentDataRow* equipment = series ? set.EquipmentOf(*series) : nullptr;
    if (!series || !study || !patient || !equipment) return Fail("the instance is not linked to all four parent rows");
    for (const DicomXmlScope& scope : edition.Scopes()) {
        DataRow* row = nullptr;
        switch (scope.kind) {
            case RowKind::Patient: row = patient; break;
            case RowKind::Study: row = study; break;
            case RowKind::Series: row = series; break;
            case RowKind::Equipment: row = equipment; break;
            case RowKind::Instance: row = &instance; break;
        }
        if (!ApplyScope(*row, scope.kind, instance, scope.content)) return false;
    }
    return true;
}

bool LVDataEditor::ApplyScope(DataRow& row, RowKind kind, InstanceDataRow& instance, const DicomXmlItem& content) {
    for (const DicomXmlElement& element : content.elements) {
        if (!ApplyElement(row, kind, instance, element)) return false;
    }
    for (const DicomXmlSequenceElement& sequence : content.sequences) {
        if (!ApplySequence(row, kind, sequence)) return false;
    }
    return true;
}

bool LVDataEditor::ApplyElement(DataRow& row, RowKind kind, InstanceDataRow& instance, const DicomXmlElement& element) {
    const std::string where = element.name + " " + TagText(element.tag) + " in " + std::string(RowKindName(kind));
    if (element.tag == Codec::Tags::SpecificCharacterSet) {
        if (kind != RowKind::Instance) return Fail(where + ": the character set belongs to the Instance scope");
        const MultiCharSetDataType character_set = MultiCharSetDataType::FromText(element.value);
        if (!HasOnlyKnownTerms(character_set)) return Fail(where + ": unknown character set \"" + element.value + "\"");
        instance.specific_character_set = character_set;
        return true;
    }
    if (const RowAttribute* attribute = FindRowAttribute(kind, element.tag)) {
        if (element.vr != attribute->vr) {
            return Fail(where + ": VR " + std::string(Codec::VRCode(element.vr)) + " given, " +
                        std::string(Codec::VRCode(attribute->vr)) + " expected");
        }
        if (!attribute->set(row, element.value)) return Fail(where + ": \"" + element.value + "\" is not a valid value");
        return true;
    }
    if (const auto owner = RowKindOfTag(element.tag)) {
        return Fail(where + ": the attribute belongs to the " + std::string(RowKindName(*owner)) + " scope");
    }
    if (const std::string_view reason = ReservedReason(element.tag); !reason.empty()) return Fail(where + ": " + std::string(reason));
    if (!IsValidElementText(element.vr, element.value)) {
        return Fail(where + ": \"" + element.value + "\" is not a valid " + std::string(Codec::VRCode(element.vr)) + " value");
    }
    if (!row.extra_elements.SetText(element.tag, element.vr, element.value)) return Fail(where + ": not stored");
    return true;
}

bool LVDataEditor::ApplySequence(DataRow& row, RowKind kind, const DicomXmlSequenceElement& sequence) {
    const std::string where = sequence.name + " " + TagText(sequence.tag) + " in " + std::string(RowKindName(kind));
    if (const auto owner = RowKindOfTag(sequence.tag)) {
        return Fail(where + ": the attribute belongs to the " + std::string(RowKindName(*owner)) + " scope");
    }
    if (const std::string_view reason = ReservedReason(sequence.tag); !reason.empty()) return Fail(where + ": " + std::string(reason));
    std::vector<std::uint8_t> bytes;
    std::string reason;
    if (!EncodeSequenceItems(sequence.items, bytes, reason)) return Fail(where + ": " + reason);
    if (!row.extra_elements.SetBytes(sequence.tag, ValueRepresentation::SQ, std::move(bytes))) return Fail(where + ": not stored");
    return true;
}

}  // namespace Lumivale::DataModule::DataConverterModule
