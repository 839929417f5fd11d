#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/AcquisitionContextElements.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/CustomDataSequence.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/FileMetaInformation.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/IconImageElements.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/InstanceClassElements.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ReferencedInstanceElements.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/RowElements.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataControllerFactory.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueAlignment.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Utf8Path.h"

#include <array>
#include <utility>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

constexpr const char* kModule = "Module DicomFileDataAdapter";

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

// The rows of one instance's chain; missing links are null.
struct RowChain {
    const PatientDataRow* patient = nullptr;
    const StudyDataRow* study = nullptr;
    const SeriesDataRow* series = nullptr;
    const EquipmentDataRow* equipment = nullptr;

    std::array<std::pair<RowKind, const DataRow*>, 4> Rows() const {
        return {{{RowKind::Patient, patient}, {RowKind::Study, study}, {RowKind::Series, series},
                 {RowKind::Equipment, equipment}}};
    }
};

RowChain ChainOf(const PatientDataSet& set, const InstanceDataRow& instance) {
    RowChain chain;
    chain.series = set.SeriesOf(instance);
    if (chain.series) {
        chain.study = set.StudyOf(*chain.series);
        chain.equipment = set.EquipmentOf(*chain.series);
    }
    if (chain.study) chain.patient = set.PatientOf(*chain.study);
    return chain;
}

// The class's own controller, or the base one for classes without a controller.
std::unique_ptr<dcm::DicomFileDataController> ControllerFor(SOPClass::Enum sopClass) {
    auto controller = dcm::DicomFileDataControllerFactory::Create(sopClass);
    return controller ? std::move(controller) : std::make_unique<dcm::DicomFileDataController>(sopClass);
}

bool PrepareInstance(dcm::DicomFileDataController& controller, InstanceDataRow& instance) {
    if (!controller.PrepareForWriting(instance)) {
        LV_TRACE(kModule, "%s", "The file data controller could not complete the instance");
        return false;
    }
    dcm::DicomDataControllerErrors errors;
    if (!controller.CheckForWriting(instance, errors)) {
        LV_TRACE(kModule, "The instance misses attributes:\n%s", dcm::DescribeErrors(errors, "  ").c_str());
        return false;
    }
    return true;
}

bool InsertRows(dcm::DicomDataSet& dataSet, const RowChain& chain, const InstanceDataRow& instance,
                const MultiCharSetDataType& charset) {
    auto rows = chain.Rows();
    // Extra elements first: a named member of the same tag, inserted after, replaces one.
    for (const auto& [kind, row] : rows) {
        if (row && !InsertExtraElements(dataSet, row->extra_elements, charset)) return false;
    }
    if (!InsertExtraElements(dataSet, instance.extra_elements, charset)) return false;
    for (const auto& [kind, row] : rows) {
        if (row && !InsertRowAttributes(dataSet, kind, *row, charset)) return false;
    }
    return InsertRowAttributes(dataSet, RowKind::Instance, instance, charset);
}

bool InsertSopCommon(dcm::DicomDataSet& dataSet, const InstanceDataRow& instance, const MultiCharSetDataType& charset) {
    // The default repertoire alone is written by leaving the attribute out: it is Type 1C, and an
    // empty value would claim an extended character set without naming one.
    const std::string terms = charset.IsEmpty() ? std::string() : charset.ToText();
    if (!terms.empty()) {
        dataSet.Insert(MakeTextElement(Tags::SpecificCharacterSet, VR::CS, terms, charset));
    }
    auto sopClass = MakeTextElement(Tags::SOPClassUID, VR::UI, instance.sop_class.Term(), charset);
    return sopClass && dataSet.Insert(std::move(sopClass));
}

// True for the body parts that come in pairs, whose side the series must state.
bool IsPairedBodyPart(BodyPart::Enum part) noexcept {
    switch (part) {
        case BodyPart::ANKLE: case BodyPart::ARM: case BodyPart::BREAST: case BodyPart::CLAVICLE:
        case BodyPart::ELBOW: case BodyPart::EXTREMITY: case BodyPart::FOOT: case BodyPart::HAND:
        case BodyPart::HIP: case BodyPart::KNEE: case BodyPart::LEG: case BodyPart::SHOULDER:
        case BodyPart::TMJ: return true;
        default: return false;
    }
}

// Laterality (0020,0060) is Type 2C: required, empty when the side is unknown, for a paired body
// part. A body part known to be unpaired needs none, and an empty one there would be wrong. With
// no body part examined the side is unknown and validators require the attribute, so it stays.
void InsertLateralityWhenRequired(dcm::DicomDataSet& dataSet, const RowChain& chain) {
    const bool bodyPartKnown = chain.series && chain.series->body_part_examined.IsSet();
    const bool required = !bodyPartKnown || IsPairedBodyPart(chain.series->body_part_examined.Value());
    if (required && !dataSet.Find(Tags::Laterality)) {
        dataSet.Insert(std::make_unique<dcm::DicomDataSetElement>(Tags::Laterality, VR::CS));
    }
}

// Every data set holding elements of our private block names its creator.
void InsertPrivateCreatorWhenNeeded(dcm::DicomDataSet& dataSet) {
    for (const auto& [tag, node] : dataSet) {
        if (node->tag.group == 0x0009 && (node->tag.element >> 8) == 0x11) {
            dataSet.Insert(MakePrivateCreatorElement());
            return;
        }
    }
}

// The custom data of the instance kinds that carry one: raw data and encapsulated documents.
CustomDataStore* CustomDataOf(InstanceDataRow& instance) {
    if (auto* raw = dynamic_cast<RawDataDataRow*>(&instance)) return &raw->custom_data;
    if (auto* document = dynamic_cast<EncapsulatedDocumentDataRow*>(&instance)) return &document->custom_data;
    return nullptr;
}

const CustomDataStore* CustomDataOf(const InstanceDataRow& instance) {
    return CustomDataOf(const_cast<InstanceDataRow&>(instance));
}

bool InsertInstanceParts(dcm::DicomDataSet& dataSet, const InstanceDataRow& instance, const MultiCharSetDataType& charset) {
    const bool document = CategoryOf(instance.sop_class.Value()) == SOPClassCategory::EncapsulatedDocument;
    if (!InsertInstanceClassElements(dataSet, instance, charset)) {
        LV_TRACE(kModule, "%s", "An attribute of the instance class cannot be written");
        return false;
    }
    if (!document && !InsertAcquisitionContext(dataSet, instance.acquisition_context, charset)) return false;
    if (!InsertReferencedInstances(dataSet, instance.referenced_instances)) return false;
    if (const CustomDataStore* store = CustomDataOf(instance); store && !InsertCustomData(dataSet, *store)) return false;
    return InsertIconImage(dataSet, instance.icon_image, instance.duplicate_icon_as_image);
}

std::string ElementText(const dcm::DicomDataSet& dataSet, Tag tag, const MultiCharSetDataType& charset = {}) {
    std::string text;
    const auto* element = dataSet.Find(tag);
    if (element) FetchElementText(*element, charset, text);
    return text;
}

void ReadChainRows(const dcm::DicomDataSet& dataSet, PatientDataSet& set, InstanceDataRow& instance,
                   const MultiCharSetDataType& charset) {
    SeriesDataRow* series = set.SeriesOf(instance);
    StudyDataRow* study = series ? set.StudyOf(*series) : nullptr;
    PatientDataRow* patient = study ? set.PatientOf(*study) : nullptr;
    EquipmentDataRow* equipment = series ? set.EquipmentOf(*series) : nullptr;
    const std::pair<RowKind, DataRow*> rows[] = {{RowKind::Patient, patient}, {RowKind::Study, study},
                                                 {RowKind::Series, series}, {RowKind::Equipment, equipment},
                                                 {RowKind::Instance, &instance}};
    for (const auto& [kind, row] : rows) {
        if (row) ReadRowAttributes(dataSet, kind, *row, charset);
    }
}

}  // namespace

bool BuildInstanceDataSet(const PatientDataSet& set, InstanceDataRow& instance, dcm::DicomDataSet& dataSet) {
    dataSet = dcm::DicomDataSet();
    const auto controller = ControllerFor(instance.sop_class.ValueOr(SOPClass::unknown));
    if (!PrepareInstance(*controller, instance)) return false;
    const RowChain chain = ChainOf(set, instance);
    const MultiCharSetDataType& charset = instance.specific_character_set;
    if (!InsertRows(dataSet, chain, instance, charset)) return false;
    InsertMissingRequiredAttributes(dataSet);
    InsertLateralityWhenRequired(dataSet, chain);
    if (!InsertSopCommon(dataSet, instance, charset) || !InsertInstanceParts(dataSet, instance, charset)) return false;
    InsertPrivateCreatorWhenNeeded(dataSet);
    if (!InsertFileMetaInformation(dataSet, instance)) {
        LV_TRACE(kModule, "%s", "The file meta information cannot be made");
        return false;
    }
    return controller->Release(instance);
}

bool ReadInstanceDataSet(const dcm::DicomDataSet& dataSet, PatientDataSet& set, const DicomFileReadOptions& options,
                         InstanceDataRow*& instance) {
    instance = nullptr;
    std::string sopClassUid = ElementText(dataSet, Tags::SOPClassUID);
    if (sopClassUid.empty()) sopClassUid = ElementText(dataSet, Tags::MediaStorageSOPClassUID);
    const auto sopClass = CodedStringTraits<SOPClass::Enum>::FromTerm(sopClassUid);
    InstanceDataRow& row = set.AddInstanceChain(sopClass);
    MultiCharSetDataType charset;
    if (dataSet.Find(Tags::SpecificCharacterSet)) {
        charset = MultiCharSetDataType::FromText(ElementText(dataSet, Tags::SpecificCharacterSet));
        row.specific_character_set = charset;
    }
    ReadChainRows(dataSet, set, row, charset);
    if (const std::string syntax = ElementText(dataSet, Tags::TransferSyntaxUID); !syntax.empty()) {
        row.transfer_syntax.SetFromTerm(syntax);
    }
    row.media_storage_sop_instance_uid.Set(ElementText(dataSet, Tags::MediaStorageSOPInstanceUID));
    ReadInstanceClassElements(dataSet, row, charset);
    const auto controller = ControllerFor(sopClass);
    if (!controller->PrepareAfterReading(row)) return false;
    if (CustomDataStore* store = CustomDataOf(row)) {
        const CustomDataReadRules rules{options.keepInFileAbove, options.unwantedCustomDataKeys};
        ReadCustomData(dataSet, rules, *store);  // an instance of another program may have none
    }
    ReadIconImage(dataSet, row.icon_image);
    if (options.keepOtherElements) ReadExtraElements(dataSet, charset, options.keepInFileAbove, row.extra_elements);
    if (!controller->FinishReading(row)) return false;
    instance = &row;
    return true;
}

bool ReadDicomFileIntoRows(const std::shared_ptr<const Portability::OpenFile>& file, PatientDataSet& set,
                           const DicomFileReadOptions& options, InstanceDataRow*& instance,
                           dcm::DicomReadResult& read) {
    instance = nullptr;
    dcm::DicomDataSet dataSet;
    dcm::DicomReadOptions readOptions;
    // With unwanted keys every value is left in the file and only the wanted ones are loaded, so
    // that an unwanted value is never read, however short.
    readOptions.keepInFileAbove = options.unwantedCustomDataKeys.empty() ? options.keepInFileAbove : 0;
    // No row holds private data other than the custom data block: the rest is skipped unread.
    readOptions.onlyPrivateGroup = Tags::Orchid_PrivateCreatorID.group;
    read = dcm::ReadDicomFile(file, dataSet, readOptions);
    if (!read) {
        LV_TRACE(kModule, "%s %s: %s", file ? file->Path().c_str() : "(no file)",
                 read.NotDicom() ? "is not a DICOM file" : "is a damaged DICOM file", read.Text().c_str());
        return false;
    }
    return ReadInstanceDataSet(dataSet, set, options, instance);
}

bool DicomFileDataAdapter::Write(const PatientDataSet& set, InstanceDataRow& instance, const std::filesystem::path& path,
                                 Portability::ExistingTarget existing) {
    dcm::DicomDataSet dataSet;
    if (!BuildInstanceDataSet(set, instance, dataSet)) return false;
    // A large payload starts on a block boundary so that it can be cloned rather than copied; a
    // file where that fails is still complete and valid, only copied the ordinary way.
    dcm::AlignLargeValue(dataSet, dcm::StreamEncoding::ExplicitLittleEndian, ImplementationClassUid());
    if (!dcm::WriteDicomFile(path, dataSet, dcm::StreamEncoding::ExplicitLittleEndian, existing)) {
        LV_TRACE(kModule, "Writing %s failed", Portability::Utf8FromPath(path).c_str());
        return false;
    }
    return true;
}

bool DicomFileDataAdapter::WriteUncommitted(const PatientDataSet& set, InstanceDataRow& instance,
                                            const std::filesystem::path& path, Portability::ExistingTarget existing,
                                            dcm::DicomFileDataStream& stream) {
    dcm::DicomDataSet dataSet;
    if (!BuildInstanceDataSet(set, instance, dataSet)) return false;
    dcm::AlignLargeValue(dataSet, dcm::StreamEncoding::ExplicitLittleEndian, ImplementationClassUid());
    if (!dcm::WriteDicomFileUncommitted(path, dataSet, dcm::StreamEncoding::ExplicitLittleEndian, existing, stream)) {
        LV_TRACE(kModule, "Writing %s failed", Portability::Utf8FromPath(path).c_str());
        return false;
    }
    return true;
}

bool DicomFileDataAdapter::Write(const PatientDataSet& set, InstanceDataRow& instance, const dcm::ByteSink& sink) {
    dcm::DicomDataSet dataSet;
    if (!BuildInstanceDataSet(set, instance, dataSet)) return false;
    // Aligned as a file would be, so that both outputs are the same bytes.
    dcm::AlignLargeValue(dataSet, dcm::StreamEncoding::ExplicitLittleEndian, ImplementationClassUid());
    if (!dcm::WriteDicomStream(dataSet, dcm::StreamEncoding::ExplicitLittleEndian, sink)) {
        LV_TRACE(kModule, "%s", "Writing the instance as a stream failed");
        return false;
    }
    return true;
}

bool DicomFileDataAdapter::Read(const std::filesystem::path& path, PatientDataSet& set,
                                const DicomFileReadOptions& options, InstanceDataRow*& instance) {
    const std::string name = Portability::Utf8FromPath(path);
    const std::shared_ptr<const Portability::OpenFile> file = Portability::OpenFile::Open(name);
    if (!file) {
        instance = nullptr;
        LV_TRACE(kModule, "%s cannot be opened", name.c_str());
        return false;
    }
    dcm::DicomReadResult read;
    return ReadDicomFileIntoRows(file, set, options, instance, read);
}

}  // namespace Lumivale::DataModule::DataAdapterModule
