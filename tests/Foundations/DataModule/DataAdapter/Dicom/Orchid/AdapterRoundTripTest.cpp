// Rows -> file -> rows through the DICOM file adapter, and the file meta group it writes.

#include "AdapterSampleRows.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Portability/Misc/Utf8Path.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include "Portability/Misc/win32/PosixFiles.h"  // open() by wide path
#endif
#include <fcntl.h>
#include <unistd.h>

namespace {

namespace dm = Lumivale::DataModule;
namespace da = Lumivale::DataModule::DataAdapterModule;
namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

class AdapterRoundTrip : public ::testing::Test {
protected:
    std::filesystem::path Path(const char* name) const { return scratch_.path / name; }
    std::shared_ptr<Portability::OpenFile> Open(const char* name) const {
        return Portability::OpenFile::Open(Portability::Utf8FromPath(Path(name)));
    }

    // Write the instance and read it back into read_set; the read instance, or null.
    dm::InstanceDataRow* WriteAndRead(dm::PatientDataSet& set, dm::InstanceDataRow& instance,
                                      const da::DicomFileReadOptions& options = {}) {
        if (!da::DicomFileDataAdapter().Write(set, instance, Path("out.dcm"))) return nullptr;
        dm::InstanceDataRow* read = nullptr;
        return da::DicomFileDataAdapter().Read(Path("out.dcm"), read_set, options, read) ? read : nullptr;
    }

    TestFiles::ScratchDirectory scratch_{"adapter"};
    dm::PatientDataSet read_set;  // released before the folder: its values may hold the packed file open
};

TEST_F(AdapterRoundTrip, EveryNamedAttributeComesBack) {
    dm::PatientDataSet set;
    auto& raw = set.AddInstanceChain(dm::SOPClass::RawData);
    ASSERT_TRUE(AdapterTesting::FillAllNamedAttributes(set, raw));
    dm::InstanceDataRow* read = WriteAndRead(set, raw);
    ASSERT_NE(read, nullptr);
    for (const dm::RowKind kind : dm::kAllRowKinds) {
        for (const dm::RowAttribute& attribute : dm::RowAttributesOf(kind)) {
            SCOPED_TRACE(attribute.keyword);
            const std::string sample(AdapterTesting::SampleOf(attribute.keyword));
            const auto written = attribute.get(*AdapterTesting::ChainRow(set, raw, kind));
            // The raw data controller stamps these when it writes; every other entry keeps its sample.
            const bool stamped = attribute.keyword == "ContentDate" || attribute.keyword == "ContentTime" ||
                                 attribute.keyword == "CreatorVersionUID";
            EXPECT_EQ(written.value_or("<unset>"), stamped ? written.value_or("") : sample);
            EXPECT_EQ(attribute.get(*AdapterTesting::ChainRow(read_set, *read, kind)), written);
        }
    }
    // The fixed instance number survives the raw data controller.
    EXPECT_EQ(read->instance_number.ValueOr(0), 3);
}

std::string Text(const dcm::DicomDataSet& set, dcm::Tag tag) {
    std::string text;
    if (const auto* element = set.Find(tag)) da::FetchElementText(*element, dm::MultiCharSetDataType{}, text);
    return text;
}

std::uint32_t U32At(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return bytes[at] | (bytes[at + 1] << 8) | (bytes[at + 2] << 16) | (std::uint32_t{bytes[at + 3]} << 24);
}

TEST_F(AdapterRoundTrip, MetaGroupOfEveryClass) {
    namespace Tags = dcm::Tags;
    for (const dm::SOPClass::Enum sopClass : {dm::SOPClass::RawData, dm::SOPClass::EncapsulatedPDF, dm::SOPClass::CTImage,
                                              dm::SOPClass::SecondaryCaptureImage, dm::SOPClass::BasicTextSR}) {
        SCOPED_TRACE(static_cast<int>(sopClass));
        dm::PatientDataSet set;
        dm::InstanceDataRow& instance = set.AddInstanceChain(sopClass);
        if (auto* pdf = dynamic_cast<dm::EncapsulatedDocumentDataRow*>(&instance)) {
            pdf->encapsulated_document = dm::ByteBuffer::CopyOf(std::vector<std::uint8_t>{'%', 'P', 'D', 'F'});
        }
        ASSERT_TRUE(da::DicomFileDataAdapter().Write(set, instance, Path("out.dcm")));
        const std::vector<std::uint8_t> bytes = TestFiles::ReadBytes(Path("out.dcm"));
        dcm::DicomDataSet tree;
        ASSERT_TRUE(dcm::ReadDicomFile(Path("out.dcm"), tree));
        ASSERT_GT(bytes.size(), 144u);
        EXPECT_EQ(std::string(bytes.begin() + 128, bytes.begin() + 132), "DICM");
        // (0002,0000) counts the bytes from the end of its own element to the first data set element.
        std::size_t at = 144;
        while (at + 8 <= bytes.size() && bytes[at] == 0x02 && bytes[at + 1] == 0x00) {
            const std::string vr(bytes.begin() + at + 4, bytes.begin() + at + 6);
            const bool longLength = vr == "OB" || vr == "UN" || vr == "SQ";
            at += longLength ? 12 + U32At(bytes, at + 8) : 8 + (bytes[at + 6] | (bytes[at + 7] << 8));
        }
        EXPECT_EQ(U32At(bytes, 140), at - 144);
        // Explicit VR little endian after the meta group: the VR letters follow the first tag.
        EXPECT_TRUE(std::isupper(bytes[at + 4]) && std::isupper(bytes[at + 5]));
        EXPECT_EQ(Text(tree, Tags::TransferSyntaxUID), "1.2.840.10008.1.2.1");
        EXPECT_EQ(Text(tree, Tags::MediaStorageSOPClassUID), Text(tree, Tags::SOPClassUID));
        EXPECT_EQ(Text(tree, Tags::MediaStorageSOPClassUID), instance.sop_class.Term());
        EXPECT_EQ(Text(tree, Tags::MediaStorageSOPInstanceUID), Text(tree, Tags::SOPInstanceUID));
        EXPECT_EQ(Text(tree, Tags::ImplementationVersionName), "DCAPS");
        EXPECT_TRUE(Text(tree, Tags::ImplementationClassUID).ends_with(".50.7.0.0.0"));
        std::vector<std::uint8_t> version;
        ASSERT_TRUE(tree.Find(Tags::FileMetaInformationVersion)->value.Load(version));
        EXPECT_EQ(version, (std::vector<std::uint8_t>{0x00, 0x01}));
    }
}

std::vector<std::uint8_t> AllBytes(const dm::ByteBuffer& buffer) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(buffer.ReadAll(bytes));
    return bytes;
}

TEST_F(AdapterRoundTrip, CustomDataValuesKeepTheirBytesAndLengths) {
    std::vector<std::uint8_t> pattern(100001);
    for (std::size_t i = 0; i < pattern.size(); ++i) pattern[i] = static_cast<std::uint8_t>(i * 7);
    TestFiles::WriteBytes(Path("payload.bin"), pattern);
    struct Case {
        const char* key;
        dm::CustomDataValue value;
        bool staysInFile;  // read back as a region of the packed file
    };
    const Case cases[] = {
        {"empty text", std::string(), false},
        {"one zero byte", dm::ByteBuffer::CopyOf(std::vector<std::uint8_t>{0x00}), false},
        {"odd text", std::string("abc"), false},
        {"even bytes", dm::ByteBuffer::CopyOf(std::vector<std::uint8_t>{1, 2, 0, 4}), false},
        {"small region", dm::ByteBuffer::OfFileRegion({Open("payload.bin"), 3, 7}), false},
        {"large odd region", dm::ByteBuffer::OfFileRegion({Open("payload.bin"), 0, 100001}), true},
        {"\xC3\xA9 key above ASCII", std::string("last"), false},
    };
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    raw.custom_data = dm::CustomDataStore();
    for (const Case& c : cases) {
        if (const auto* text = std::get_if<std::string>(&c.value)) raw.custom_data.SetText(c.key, *text);
        else raw.custom_data.SetBytes(c.key, std::get<dm::ByteBuffer>(c.value));
    }
    auto* read = dynamic_cast<dm::RawDataDataRow*>(WriteAndRead(set, raw));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->custom_data.Size(), std::size(cases));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        const dm::ByteBuffer* value = read->custom_data.GetBytes(c.key);
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(value->IsFileRegion(), c.staysInFile);
        EXPECT_EQ(value->Length(), raw.custom_data.ValueLength(c.key));
        std::vector<std::uint8_t> expected;
        if (const auto* text = std::get_if<std::string>(&c.value)) expected.assign(text->begin(), text->end());
        else expected = AllBytes(std::get<dm::ByteBuffer>(c.value));
        EXPECT_EQ(AllBytes(*value), expected);
    }
}

TEST_F(AdapterRoundTrip, UnwantedKeysAreLeftInTheFile) {
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    da::DicomFileReadOptions options;
    options.unwantedCustomDataKeys.insert("Dicapsule.PackedFile.Content");
    auto* read = dynamic_cast<dm::RawDataDataRow*>(WriteAndRead(set, raw, options));
    ASSERT_NE(read, nullptr);
    const dm::ByteBuffer* content = read->custom_data.GetBytes("Dicapsule.PackedFile.Content");
    ASSERT_NE(content, nullptr);
    EXPECT_TRUE(content->IsFileRegion());
    EXPECT_EQ(content->Length(), 7u);
    std::string name;
    EXPECT_TRUE(read->custom_data.GetText("Dicapsule.PackedFile.Name", name));
    EXPECT_EQ(name, "report.pdf");
}

// A value filled in after the write: nothing is named until the commit, the reported offset is
// where the placeholder stands (after a large value, with odd and even neighbours), and the value
// read back is the one filled in.
TEST_F(AdapterRoundTrip, ValueFilledLaterIsWrittenAtItsReportedOffsetBeforeTheCommit) {
    TestFiles::WriteBytes(Path("payload.bin"), std::vector<std::uint8_t>(70001, 0x5A));
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    raw.custom_data.SetBytes("Dicapsule.PackedFile.Content", dm::ByteBuffer::OfFileRegion({Open("payload.bin"), 0, 70001}));
    raw.custom_data.SetText("Dicapsule.PackedFile.Odd", "odd");
    raw.custom_data.SetFilledLater("Dicapsule.PackedFile.Later", 64);
    raw.custom_data.SetText("Dicapsule.PackedFile.Zlast", "zz");
    dcm::DicomFileDataStream stream;
    ASSERT_TRUE(da::DicomFileDataAdapter().WriteUncommitted(set, raw, Path("out.dcm"), Portability::ExistingTarget::refuse,
                                                            stream));
    EXPECT_FALSE(std::filesystem::exists(Path("out.dcm")));
    ASSERT_EQ(stream.FilledLaterOffsets().size(), 1u);
    const std::string filled(64, 'f');
    ASSERT_TRUE(stream.WriteAt(stream.FilledLaterOffsets().front(), filled.data(), filled.size()));
    EXPECT_FALSE(stream.WriteAt(std::filesystem::file_size(Path("payload.bin")) * 4, filled.data(), filled.size()));
    ASSERT_TRUE(stream.Commit());
    dm::InstanceDataRow* read = nullptr;
    ASSERT_TRUE(da::DicomFileDataAdapter().Read(Path("out.dcm"), read_set, {}, read));
    const auto& store = dynamic_cast<dm::RawDataDataRow*>(read)->custom_data;
    for (const auto& [key, text] : {std::pair{"Dicapsule.PackedFile.Later", filled}, std::pair{"Dicapsule.PackedFile.Odd", std::string("odd")},
                                    std::pair{"Dicapsule.PackedFile.Zlast", std::string("zz")}}) {
        SCOPED_TRACE(key);
        std::string value;
        EXPECT_TRUE(store.GetText(key, value));
        EXPECT_EQ(value, text);
    }
}

TEST_F(AdapterRoundTrip, PayloadBeyondA32BitLengthIsRefusedBeforeWriting) {
    {
        const int descriptor = ::open(Path("huge.bin").c_str(), O_CREAT | O_WRONLY, 0600);
        ASSERT_GE(descriptor, 0);
        ASSERT_EQ(::ftruncate(descriptor, 0xFFFFFFFFll), 0);  // sparse: nothing is stored
        ::close(descriptor);
    }
    struct Case { const char* id; std::uint64_t length; };
    // 0xFFFFFFFF pads to 2^32; 0xFFFFFFF0 fits itself but not inside its item and sequence.
    for (const Case c : {Case{"odd maximum", 0xFFFFFFFFull}, Case{"item overflow", 0xFFFFFFF0ull}}) {
        SCOPED_TRACE(c.id);
        dm::PatientDataSet set;
        dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
        raw.custom_data.SetBytes("Dicapsule.PackedFile.Content", dm::ByteBuffer::OfFileRegion({Open("huge.bin"), 0, c.length}));
        EXPECT_FALSE(da::DicomFileDataAdapter().Write(set, raw, Path("out.dcm")));
        EXPECT_FALSE(std::filesystem::exists(Path("out.dcm")));
    }
}

// The CLI suite packs 8- and 16-bit grey and 8-bit colour icons; here 16-bit colour planes with padded lines.
TEST_F(AdapterRoundTrip, IconImageAndItsTopLevelDuplicate) {
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    // A 3 x 2 RGB icon of three 16-bit planes, each line padded with two bytes.
    std::vector<std::vector<std::uint8_t>> planes(3, std::vector<std::uint8_t>(2 * 8, 0xEE));
    for (unsigned p = 0; p < 3; ++p)
        for (unsigned r = 0; r < 2; ++r)
            for (unsigned i = 0; i < 6; ++i) planes[p][r * 8 + i] = static_cast<std::uint8_t>(p * 64 + r * 16 + i);
    AdapterTesting::AttachRgbIcon(raw, 3, 2, 16, 8, std::move(planes));
    dm::InstanceDataRow* read = WriteAndRead(set, raw);
    ASSERT_NE(read, nullptr);
    ASSERT_TRUE(read->icon_image.is_set);
    EXPECT_EQ(read->icon_image.samples_per_pixel, 3);
    EXPECT_EQ(read->icon_image.photometric_interpretation, dm::PhotometricInterpretation::RGB);
    EXPECT_EQ(read->icon_image.high_bit, 15);
    EXPECT_EQ(read->icon_image.planar_configuration, 0);
    const std::vector<std::uint8_t> interleaved = {0,  1,  64, 65, 128, 129, 2,  3,  66, 67, 130, 131, 4,  5,  68, 69, 132, 133,
                                                   16, 17, 80, 81, 144, 145, 18, 19, 82, 83, 146, 147, 20, 21, 84, 85, 148, 149};
    EXPECT_EQ(AllBytes(read->icon_image.pixel_data.at(0)), interleaved);
    dcm::DicomDataSet tree;
    ASSERT_TRUE(dcm::ReadDicomFile(Path("out.dcm"), tree));
    ASSERT_NE(tree.Find(dcm::Tags::PixelData), nullptr);
    EXPECT_EQ(tree.Find(dcm::Tags::PixelData)->vr, dcm::VR::OW);
    EXPECT_NE(tree.Find(dcm::Tags::Rows), nullptr);
}

}  // namespace
