#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/FileMetaInformation.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

constexpr std::uint8_t kMetaVersion[] = {0x00, 0x01};

bool InsertUid(dcm::DicomDataSet& dataSet, Tag tag, std::string_view uid) {
    if (uid.empty()) return false;
    return dataSet.Insert(MakeTextElement(tag, VR::UI, uid, MultiCharSetDataType{}));
}

}  // namespace

std::string ImplementationClassUid() { return GenerateUid(UidKind::Version, kImplementationVersion); }

bool InsertFileMetaInformation(dcm::DicomDataSet& dataSet, const InstanceDataRow& instance) {
    const std::string sopClass = instance.sop_class.Term();
    const std::string& sopInstance = instance.media_storage_sop_instance_uid.IsSet()
                                         ? instance.media_storage_sop_instance_uid.Value()
                                         : instance.sop_instance_uid.Value();
    const std::string syntax = instance.transfer_syntax.Term();
    if (!InsertUid(dataSet, Tags::MediaStorageSOPClassUID, sopClass) ||
        !InsertUid(dataSet, Tags::MediaStorageSOPInstanceUID, sopInstance) ||
        !InsertUid(dataSet, Tags::TransferSyntaxUID, syntax) ||
        !InsertUid(dataSet, Tags::ImplementationClassUID, ImplementationClassUid())) {
        return false;
    }
    auto version = std::make_unique<dcm::DicomDataSetElement>(
        Tags::FileMetaInformationVersion, VR::OB, std::vector<std::uint8_t>(std::begin(kMetaVersion), std::end(kMetaVersion)));
    dataSet.Insert(std::move(version));
    dataSet.Insert(MakeTextElement(Tags::ImplementationVersionName, VR::SH, kImplementationVersionName,
                                   MultiCharSetDataType{}));
    std::uint64_t groupLength = 0;
    for (const auto& [tag, node] : dataSet) {
        if (node->tag.group == 0x0002 && node->tag.element != 0) groupLength += node->EncodedSize(dcm::StreamEncoding::ExplicitLittleEndian);
    }
    // The writer recomputes this value; holding the right one keeps the tree truthful on its own.
    return dataSet.Insert(MakeUnsignedLongElement(Tags::GroupLength_0002,
                                                  static_cast<std::uint32_t>(groupLength)));
}

}  // namespace Lumivale::DataModule::DataAdapterModule
