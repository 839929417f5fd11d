#include "Foundations/DataModule/metadata/DicomSourceRows.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/OrchidDataElementCodec.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"
#include "Portability/Misc/DebugTrace.h"

#include <exception>

namespace Lumivale::DataModule {

namespace {

namespace Codec = DataAdapterModule::DicomCodecModule;

constexpr const char* kTraceModule = "Module DicomSourceRows";

// The element's value as UTF-8 DICOM text: decoded through the character set when it applies to the VR.
bool ElementText(Codec::DicomDataSetElement& element, const MultiCharSetDataType& charset, std::string& text) {
    Codec::OrchidDataElementCodec codec(&element);
    if (!Codec::VRCharacterSetApplies(element.vr)) return codec.FetchCharacters(text);
    std::u16string wide;
    if (!codec.FetchText(wide, charset)) return false;
    try {
        text = ToUtf8(wide);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

void FillRow(Codec::DicomDataSet& data_set, RowKind kind, DataRow& row, const MultiCharSetDataType& charset) {
    for (const RowAttribute& attribute : RowAttributesOf(kind)) {
        Codec::DicomDataSetElement* element = data_set.Find(Codec::MakeTagNumber(attribute.tag.group, attribute.tag.element));
        if (element == nullptr || element->kind != Codec::DicomElementKind::Element) continue;
        std::string text;
        if (!ElementText(*element, charset, text) || !attribute.set(row, text)) {
            LV_TRACE(kTraceModule, "Value of %.*s (%04X,%04X) left out: not readable or not valid",
                     static_cast<int>(attribute.keyword.size()), attribute.keyword.data(), attribute.tag.group,
                     attribute.tag.element);
        }
    }
}

}  // namespace

bool ReadDicomSourceRows(const std::filesystem::path& path, PatientDataSet& set) {
    Codec::DicomDataSet data_set;
    if (!Codec::ReadDicomFile(path, data_set)) return false;
    MultiCharSetDataType charset;
    if (Codec::DicomDataSetElement* element = data_set.Find(Codec::MakeTagNumber(0x0008, 0x0005))) {
        std::string terms;
        if (Codec::OrchidDataElementCodec(element).FetchCharacters(terms)) charset = MultiCharSetDataType::FromText(terms);
    }
    std::string class_uid;
    if (Codec::DicomDataSetElement* element = data_set.Find(Codec::MakeTagNumber(0x0008, 0x0016))) {
        Codec::OrchidDataElementCodec(element).FetchUID(class_uid);
    }
    InstanceDataRow& instance = set.AddInstanceChain(CodedStringTraits<SOPClass::Enum>::FromTerm(class_uid));
    SeriesDataRow& series = *set.SeriesOf(instance);
    StudyDataRow& study = *set.StudyOf(series);
    FillRow(data_set, RowKind::Patient, *set.PatientOf(study), charset);
    FillRow(data_set, RowKind::Study, study, charset);
    FillRow(data_set, RowKind::Series, series, charset);
    FillRow(data_set, RowKind::Equipment, *set.EquipmentOf(series), charset);
    FillRow(data_set, RowKind::Instance, instance, charset);
    instance.specific_character_set = charset;
    return true;
}

}  // namespace Lumivale::DataModule
