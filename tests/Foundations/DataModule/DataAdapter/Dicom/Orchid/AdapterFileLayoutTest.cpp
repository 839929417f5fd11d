// What the adapter puts in the file: meta group, private creators, custom data items, required attributes.

#include "AdapterSampleRows.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/Rows/EncapsulatedPdfDataRow.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace dm = Lumivale::DataModule;
namespace da = Lumivale::DataModule::DataAdapterModule;
namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
using dcm::Tag;

std::string Text(const dcm::DicomDataSet& set, std::uint32_t tag) {
    std::string text;
    const auto* element = set.Find(tag);
    if (element) da::FetchElementText(*element, dm::MultiCharSetDataType{}, text);
    return text;
}
std::string Text(const dcm::DicomDataSet& set, Tag tag) { return Text(set, dcm::TagNumber(tag)); }

struct WrittenFile {
    std::filesystem::path path;
    std::vector<std::uint8_t> bytes;
    dcm::DicomDataSet tree;
};

WrittenFile WriteInstance(dm::PatientDataSet& set, dm::InstanceDataRow& instance) {
    WrittenFile file;
    file.path = std::filesystem::temp_directory_path() / ("layout-" + std::to_string(::getpid()) + ".dcm");
    EXPECT_TRUE(da::DicomFileDataAdapter().Write(set, instance, file.path));
    std::ifstream in(file.path, std::ios::binary);
    file.bytes.assign(std::istreambuf_iterator<char>(in), {});
    EXPECT_TRUE(dcm::ReadDicomFile(file.path, file.tree));
    std::filesystem::remove(file.path);
    return file;
}

std::uint32_t U32At(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return bytes[at] | (bytes[at + 1] << 8) | (bytes[at + 2] << 16) | (std::uint32_t{bytes[at + 3]} << 24);
}

TEST(AdapterFileLayout, MetaGroupOfEveryClass) {
    for (const dm::SOPClass::Enum sopClass : {dm::SOPClass::RawData, dm::SOPClass::EncapsulatedPDF, dm::SOPClass::CTImage,
                                              dm::SOPClass::SecondaryCaptureImage, dm::SOPClass::BasicTextSR}) {
        SCOPED_TRACE(static_cast<int>(sopClass));
        dm::PatientDataSet set;
        dm::InstanceDataRow& instance = set.AddInstanceChain(sopClass);
        if (auto* pdf = dynamic_cast<dm::EncapsulatedPdfDataRow*>(&instance)) {
            pdf->encapsulated_document = dm::ByteBuffer::CopyOf(std::vector<std::uint8_t>{'%', 'P', 'D', 'F'});
        }
        const WrittenFile file = WriteInstance(set, instance);
        ASSERT_GT(file.bytes.size(), 144u);
        EXPECT_EQ(std::string(file.bytes.begin() + 128, file.bytes.begin() + 132), "DICM");
        // (0002,0000) counts the bytes from the end of its own element to the first data set element.
        std::size_t at = 144;
        while (at + 8 <= file.bytes.size() && file.bytes[at] == 0x02 && file.bytes[at + 1] == 0x00) {
            const std::string vr(file.bytes.begin() + at + 4, file.bytes.begin() + at + 6);
            const bool longLength = vr == "OB" || vr == "UN" || vr == "SQ";
            at += longLength ? 12 + U32At(file.bytes, at + 8) : 8 + (file.bytes[at + 6] | (file.bytes[at + 7] << 8));
        }
        EXPECT_EQ(U32At(file.bytes, 140), at - 144);
        EXPECT_EQ(Text(file.tree, Tag::TransferSyntaxUID), "1.2.840.10008.1.2.1");
        EXPECT_EQ(Text(file.tree, Tag::MediaStorageSOPClassUID), Text(file.tree, Tag::SOPClassUID));
        EXPECT_EQ(Text(file.tree, Tag::MediaStorageSOPClassUID), instance.sop_class.Term());
        EXPECT_EQ(Text(file.tree, Tag::MediaStorageSOPInstanceUID), Text(file.tree, Tag::SOPInstanceUID));
        EXPECT_EQ(Text(file.tree, Tag::ImplementationVersionName), "DCAPS");
        const std::string implementation = Text(file.tree, Tag::ImplementationClassUID);
        EXPECT_TRUE(implementation.ends_with(".50.7.0.0.0")) << implementation;
        std::vector<std::uint8_t> version;
        ASSERT_TRUE(file.tree.Find(Tag::FileMetaInformationVersion)->value.Load(version));
        EXPECT_EQ(version, (std::vector<std::uint8_t>{0x00, 0x01}));
        // Explicit VR little endian after the meta group: the VR letters follow the first tag.
        EXPECT_TRUE(std::isupper(file.bytes[at + 4]) && std::isupper(file.bytes[at + 5]));
    }
}

TEST(AdapterFileLayout, RawDataInstanceCarriesItsModules) {
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    raw.custom_data.SetText("zz", "last");
    raw.custom_data.SetText("Dicapsule.A", "first");
    const WrittenFile file = WriteInstance(set, raw);
    // Type 1 and 2 attributes are present even when the rows leave them unset.
    for (const Tag tag : {Tag::PatientName, Tag::PatientID, Tag::PatientBirthDate, Tag::PatientSex, Tag::StudyDate,
                          Tag::StudyTime, Tag::ReferringPhysicianName, Tag::StudyID, Tag::AccessionNumber,
                          Tag::StudyInstanceUID, Tag::Modality, Tag::SeriesInstanceUID, Tag::SeriesNumber, Tag::Laterality,
                          Tag::Manufacturer, Tag::AcquisitionContextSequence, Tag::InstanceNumber, Tag::ContentDate,
                          Tag::ContentTime, Tag::CreatorVersionUID, Tag::SOPClassUID, Tag::SOPInstanceUID}) {
        EXPECT_NE(file.tree.Find(tag), nullptr) << dcm::TagKeyword(tag);
    }
    EXPECT_EQ(Text(file.tree, Tag::Orchid_PrivateCreatorID), "IvraDentalPrivate");
    const auto* sequence = dynamic_cast<const dcm::DicomDataSetSequenceElement*>(file.tree.Find(Tag::Orchid_CustomDataSequence));
    ASSERT_NE(sequence, nullptr);
    std::vector<std::string> keys;
    for (const auto& item : sequence->Items()) {
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(Text(*item, Tag::Orchid_PrivateCreatorID), "IvraDentalPrivate");
        keys.push_back(Text(*item, Tag::Orchid_CustomDataKey));
        const auto* value = item->Find(Tag::Orchid_CustomDataValue);
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(value->vr, dcm::VR::UN);
        EXPECT_EQ(std::stoull(Text(*item, Tag::Orchid_CustomDataLength)), raw.custom_data.ValueLength(keys.back()));
        EXPECT_EQ(value->value.Size() % 2, 0u);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"Dicapsule.A", "Dicapsule.CommandLine", "Dicapsule.PackedFile.Content",
                                              "Dicapsule.PackedFile.Name", "zz"}));
}

}  // namespace
