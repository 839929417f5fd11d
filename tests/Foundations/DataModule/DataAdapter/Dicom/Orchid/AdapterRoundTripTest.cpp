// Rows -> file -> rows through the DICOM file adapter.

#include "AdapterSampleRows.h"

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace {

namespace dm = Lumivale::DataModule;
namespace da = Lumivale::DataModule::DataAdapterModule;
namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

class AdapterRoundTrip : public ::testing::Test {
protected:
    void SetUp() override {
        directory_ = std::filesystem::temp_directory_path() /
                     ("adapter-" + std::to_string(::getpid()) + "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(directory_);
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::filesystem::path Path(const char* name) const { return directory_ / name; }

    // Write the instance and read it back into read_set; the read instance, or null.
    dm::InstanceDataRow* WriteAndRead(dm::PatientDataSet& set, dm::InstanceDataRow& instance,
                                      const da::DicomFileReadOptions& options = {}) {
        if (!da::DicomFileDataAdapter().Write(set, instance, Path("out.dcm"))) return nullptr;
        dm::InstanceDataRow* read = nullptr;
        return da::DicomFileDataAdapter().Read(Path("out.dcm"), read_set, options, read) ? read : nullptr;
    }

    dm::PatientDataSet read_set;
    std::filesystem::path directory_;
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
            const dm::DataRow* written = AdapterTesting::ChainRow(set, raw, kind);
            EXPECT_TRUE(attribute.is_set(*written));
            EXPECT_EQ(attribute.get(*AdapterTesting::ChainRow(read_set, *read, kind)), attribute.get(*written));
        }
    }
    // The fixed instance number survives the raw data controller.
    EXPECT_EQ(read->instance_number.ValueOr(0), 3);
}

TEST_F(AdapterRoundTrip, TextThroughCharacterSets) {
    struct Case {
        const char* id;
        const char* charset;
        const char* name;
        bool writable;
    };
    const Case cases[] = {
        {"latin1", "ISO_IR 100", "Buc^J\xC3\xA9r\xC3\xB4me", true},
        {"greek", "ISO_IR 126", "\xCE\x94\xCE\xB9\xCE\xBF\xCE\xBD\xCF\x85\xCF\x83\xCE\xB9\xCE\xBF\xCF\x82", true},
        {"japanese-iso2022", "\\ISO 2022 IR 87",
         "Yamada^Tarou=\xE5\xB1\xB1\xE7\x94\xB0^\xE5\xA4\xAA\xE9\x83\x8E=\xE3\x82\x84\xE3\x81\xBE\xE3\x81\xA0^\xE3\x81\x9F\xE3\x82\x8D\xE3\x81\x86",
         true},
        {"korean-iso2022", "\\ISO 2022 IR 149", "Hong^Gildong=\xE6\xB4\xAA^\xE5\x90\x89\xE6\xB4\x9E=\xED\x99\x8D^\xEA\xB8\xB8\xEB\x8F\x99",
         true},
        {"utf8", "ISO_IR 192", "Wang^XiaoDong=\xE7\x8E\x8B^\xE5\xB0\x8F\xE6\x9D\xB1", true},
        {"default-refuses-accent", "", "Buc^J\xC3\xA9r\xC3\xB4me", false},
        {"latin1-refuses-kanji", "ISO_IR 100", "\xE5\xB1\xB1\xE7\x94\xB0", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        dm::PatientDataSet set;
        dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
        raw.specific_character_set = dm::MultiCharSetDataType::FromText(c.charset);
        const dm::RowAttribute* name = dm::FindRowAttribute(dm::RowKind::Patient, {0x0010, 0x0010});
        const dm::RowAttribute* comments = dm::FindRowAttribute(dm::RowKind::Patient, {0x0010, 0x4000});
        dm::DataRow* patient = AdapterTesting::ChainRow(set, raw, dm::RowKind::Patient);
        ASSERT_TRUE(name->set(*patient, c.name));
        ASSERT_TRUE(comments->set(*patient, std::string(c.name) + "\\free text"));
        std::filesystem::remove(Path("out.dcm"));
        read_set = dm::PatientDataSet();
        dm::InstanceDataRow* read = WriteAndRead(set, raw);
        if (!c.writable) {
            EXPECT_EQ(read, nullptr);
            EXPECT_FALSE(std::filesystem::exists(Path("out.dcm")));
            continue;
        }
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(read->specific_character_set, raw.specific_character_set);
        const dm::DataRow* readPatient = AdapterTesting::ChainRow(read_set, *read, dm::RowKind::Patient);
        EXPECT_EQ(name->get(*readPatient), std::optional<std::string>(c.name));
        EXPECT_EQ(comments->get(*readPatient), comments->get(*patient));
    }
}

// A file of length bytes whose byte i is (i * 7) & 0xFF.
void WritePatternFile(const std::filesystem::path& path, std::size_t length) {
    std::ofstream out(path, std::ios::binary);
    for (std::size_t i = 0; i < length; ++i) out.put(static_cast<char>((i * 7) & 0xFF));
}

std::vector<std::uint8_t> AllBytes(const dm::ByteBuffer& buffer) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(buffer.ReadAll(bytes));
    return bytes;
}

TEST_F(AdapterRoundTrip, CustomDataValuesKeepTheirBytesAndLengths) {
    WritePatternFile(Path("payload.bin"), 100001);
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
        {"small region", dm::ByteBuffer::OfFileRegion({Path("payload.bin"), 3, 7}), false},
        {"large odd region", dm::ByteBuffer::OfFileRegion({Path("payload.bin"), 0, 100001}), true},
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

TEST_F(AdapterRoundTrip, PayloadBeyondA32BitLengthIsRefusedBeforeWriting) {
    {
        const int descriptor = ::open(Path("huge.bin").c_str(), O_CREAT | O_WRONLY, 0600);
        ASSERT_GE(descriptor, 0);
        ASSERT_EQ(::ftruncate(descriptor, 0xFFFFFFFFll), 0);  // sparse: nothing is stored
        ::close(descriptor);
    }
    struct Case {
        const char* id;
        std::uint64_t length;
    };
    // 0xFFFFFFFF pads to 2^32; 0xFFFFFFF0 fits itself but not inside its item and sequence.
    for (const Case c : {Case{"odd maximum", 0xFFFFFFFFull}, Case{"item overflow", 0xFFFFFFF0ull}}) {
        SCOPED_TRACE(c.id);
        dm::PatientDataSet set;
        dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
        raw.custom_data.SetBytes("Dicapsule.PackedFile.Content", dm::ByteBuffer::OfFileRegion({Path("huge.bin"), 0, c.length}));
        EXPECT_FALSE(da::DicomFileDataAdapter().Write(set, raw, Path("out.dcm")));
        EXPECT_FALSE(std::filesystem::exists(Path("out.dcm")));
    }
}

// A 3 x 2 icon: one serialised 8-bit plane, or three 16-bit planes with padded lines.
dm::IconImageRecord MakeIcon(unsigned samples, unsigned bits) {
    dm::IconImageRecord icon;
    const unsigned sampleBytes = bits / 8;
    icon.samples_per_pixel = static_cast<std::uint16_t>(samples);
    icon.photometric_interpretation = samples == 1 ? dm::PhotometricInterpretation::MONOCHROME2 : dm::PhotometricInterpretation::RGB;
    icon.rows = 2;
    icon.columns = 3;
    icon.bits_allocated = static_cast<std::uint16_t>(bits);
    icon.bits_stored = static_cast<std::uint16_t>(bits);
    icon.high_bit = static_cast<std::uint16_t>(bits - 1);
    icon.pixel_representation = 0;
    if (samples > 1) icon.planar_configuration = 0;
    const unsigned stride = samples == 1 ? 3 * sampleBytes : 3 * sampleBytes + 2;
    icon.pixel_description = {2, 3, stride, bits, bits, samples, 0};
    for (unsigned p = 0; p < samples; ++p) {
        std::vector<std::uint8_t> plane(2 * stride, 0xEE);
        for (unsigned r = 0; r < 2; ++r)
            for (unsigned i = 0; i < 3 * sampleBytes; ++i) plane[r * stride + i] = static_cast<std::uint8_t>(p * 64 + r * 16 + i);
        icon.pixel_data[p] = dm::ByteBuffer::Adopt(std::move(plane));
    }
    icon.is_set = true;
    return icon;
}

TEST_F(AdapterRoundTrip, IconImageAndItsTopLevelDuplicate) {
    struct Case {
        const char* id;
        unsigned samples, bits;
        bool duplicate;
        std::vector<std::uint8_t> pixels;  // interleaved Pixel Data
    };
    const Case cases[] = {
        {"grey 8-bit", 1, 8, false, {0, 1, 2, 16, 17, 18}},
        {"rgb 16-bit duplicated", 3, 16, true,
         {0, 1, 64, 65, 128, 129, 2, 3, 66, 67, 130, 131, 4, 5, 68, 69, 132, 133,
          16, 17, 80, 81, 144, 145, 18, 19, 82, 83, 146, 147, 20, 21, 84, 85, 148, 149}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        dm::PatientDataSet set;
        dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
        raw.icon_image = MakeIcon(c.samples, c.bits);
        raw.duplicate_icon_as_image = c.duplicate;
        read_set = dm::PatientDataSet();
        dm::InstanceDataRow* read = WriteAndRead(set, raw);
        ASSERT_NE(read, nullptr);
        ASSERT_TRUE(read->icon_image.is_set);
        EXPECT_EQ(read->icon_image.samples_per_pixel, raw.icon_image.samples_per_pixel);
        EXPECT_EQ(read->icon_image.photometric_interpretation, raw.icon_image.photometric_interpretation);
        EXPECT_EQ(read->icon_image.high_bit, raw.icon_image.high_bit);
        EXPECT_EQ(read->icon_image.planar_configuration, raw.icon_image.planar_configuration);
        EXPECT_EQ(AllBytes(read->icon_image.pixel_data.at(0)), c.pixels);

        dcm::DicomDataSet tree;
        ASSERT_TRUE(dcm::ReadDicomFile(Path("out.dcm"), tree));
        const auto* pixelData = tree.Find(dcm::kPixelDataTag);
        EXPECT_EQ(pixelData != nullptr, c.duplicate);
        EXPECT_EQ(tree.Find(dcm::Tag::Rows) != nullptr, c.duplicate);
        if (pixelData) {
            EXPECT_EQ(pixelData->vr, c.bits > 8 ? dcm::VR::OW : dcm::VR::OB);
        }
    }
}

}  // namespace
