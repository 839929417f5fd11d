// The data set tree's sizes and the writer: exact bytes, and write/read round trips through files.

#include <gtest/gtest.h>

#include <sstream>

#include "DicomBytes.h"
#include "TestFiles.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomSinkDataStream.h"
#include "interop/CanonicalText.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using namespace DicomTestBytes;
namespace fs = std::filesystem;
constexpr StreamEncoding kImplicit = StreamEncoding::ImplicitLittleEndian;
constexpr StreamEncoding kExplicit = StreamEncoding::ExplicitLittleEndian;

std::unique_ptr<DicomDataSetSequenceElement> Sequence(Tag tag) {
    return std::make_unique<DicomDataSetSequenceElement>(tag);
}

TEST(DataSetTree, InsertReplacesAndSizesFollowTheEncoding) {
    DicomDataSet set;
    EXPECT_TRUE(set.Insert(Node(Tags::PatientName, "FIRST")));
    EXPECT_TRUE(set.Insert(Node(Tags::PatientName, "SECOND")));
    EXPECT_FALSE(set.Insert(nullptr));
    ASSERT_EQ(set.Count(), 1u);
    EXPECT_EQ(set.Find(Tags::PatientName)->value.Size(), 6u);

    auto sequence = Sequence(Tags::ReferencedImageSequence);
    EXPECT_EQ(sequence->EncodedSize(kImplicit), 8u);
    EXPECT_EQ(sequence->EncodedSize(kExplicit), 12u);
    sequence->AppendItem().Insert(Node(Tags::ReferencedSOPInstanceUID, "1.2.3"));  // 8 + 6 (padded)
    sequence->AppendEmptySlot();
    EXPECT_EQ(sequence->EncodedSize(kImplicit), 8u + 8u + 14u);
    EXPECT_EQ(sequence->EncodedSize(kExplicit), 12u + 8u + 14u);

    DicomDataSetFrameContainerElement pixels(VR::OB, true);
    pixels.AppendFrame(DicomValue(Bytes{1, 2, 3}));
    EXPECT_EQ(pixels.EncodedSize(kExplicit), 12u + 8u + (8u + 4u) + 8u);
    EXPECT_EQ(pixels.Frame(1), nullptr);
    EXPECT_TRUE(set.Remove(Tags::PatientName));
    EXPECT_FALSE(set.Remove(Tags::PatientName));
}

// Odd values are padded: a UID with NUL, text with a space, a pixel fragment with a zero byte.
TEST(DataSetWrite, BytesOfSequencesPaddingAndPixelFragments) {
    DicomDataSet set;
    set.Insert(Node(Tags::SOPInstanceUID, "1.2.3"));
    auto sequence = Sequence(Tags::ReferencedImageSequence);
    sequence->AppendEmptySlot();
    sequence->AppendItem().Insert(Node(Tags::Modality, "CT"));
    set.Insert(std::move(sequence));
    set.Insert(Node(Tags::PatientID, "ID7"));
    auto pixels = std::make_unique<DicomDataSetFrameContainerElement>(VR::OB, true);
    pixels->AppendFrame(DicomValue(Bytes{9, 8, 7}));
    set.Insert(std::move(pixels));

    DicomMemoryDataStream stream;
    stream.SetEncoding(kExplicit);
    ASSERT_TRUE(stream.WriteDataSet(set));
    const Bytes modality = Element(kExplicit, 0x0008, 0x0060, "CS", "CT");
    const Bytes expected = Cat({
        Element(kExplicit, 0x0008, 0x0018, "UI", Bytes{'1', '.', '2', '.', '3', 0}),
        Header(kExplicit, 0x0008, 0x1140, "SQ", 8 + Len(modality)), Item(kExplicit, Len(modality)), modality,
        Element(kExplicit, 0x0010, 0x0020, "LO", "ID7 "),
        Header(kExplicit, 0x7FE0, 0x0010, "OB", kUndefined), Item(kExplicit, 0), Item(kExplicit, 4), Bytes{9, 8, 7, 0},
        SequenceEnd(kExplicit),
    });
    EXPECT_EQ(stream.Bytes(), expected);
    EXPECT_EQ(set.EncodedSize(kExplicit), expected.size());
}

// The canonical text of a data set without its meta group lines.
std::string WithoutMeta(const DicomDataSet& set) {
    std::istringstream lines(DicomInterop::CanonicalText(set));
    std::string text;
    for (std::string line; std::getline(lines, line);) text += line.starts_with("0 (0002,") ? "" : line + "\n";
    return text;
}

// A data set with a meta group, nested sequences, private attributes, numbers and pixel data; values
// have even lengths, so that what is read back equals what was written.
DicomDataSet SampleDataSet(std::string_view transferSyntax) {
    DicomDataSet set;
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0000}, VR::UL, Bytes{0, 0, 0, 0}));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0001}, VR::OB, Bytes{0, 1}));
    set.Insert(Node(Tags::TransferSyntaxUID, transferSyntax));
    set.Insert(Node(Tags::PatientName, "DOE^JANE"));
    set.Insert(Node(Tags::Orchid_PrivateCreatorID, std::string(kPrivateCreator) + " "));
    auto custom = Sequence(Tags::Orchid_CustomDataSequence);
    DicomDataSet& item = custom->AppendItem();
    item.Insert(Node(Tags::Orchid_CustomDataKey, "Dicapsule.PackedFile.Name "));
    item.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0009, 0x11A3}, VR::UN, Bytes(300, 0xAB)));
    auto inner = Sequence(Tags::ReferencedImageSequence);
    inner->AppendItem().Insert(Node(Tags::ReferencedSOPInstanceUID, "1.2.840.10"));
    item.Insert(std::move(inner));
    set.Insert(std::move(custom));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0028, 0x0010}, VR::US, Bytes{0x34, 0x12}));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0070, 0x1A07}, VR::OD, Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    auto pixels = std::make_unique<DicomDataSetFrameContainerElement>(VR::OB, false);
    pixels->AppendFrame(DicomValue(Bytes{1, 2, 3, 4}));
    set.Insert(std::move(pixels));
    return set;
}

TEST(DataSetWrite, RoundTripsInEveryEncodingAndCopiesValuesLeftInTheFile) {
    const TestFiles::ScratchDirectory scratch("dicom-codec-test");
    struct Case { const char* id; std::string_view syntax; };
    const Case cases[] = {{"implicit", std::string_view("1.2.840.10008.1.2\0", 18)},
                          {"explicit little", std::string_view("1.2.840.10008.1.2.1\0", 20)},
                          {"explicit big", std::string_view("1.2.840.10008.1.2.2\0", 20)}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const DicomDataSet original = SampleDataSet(c.syntax);
        const fs::path first = scratch.path / "first.dcm", second = scratch.path / "second.dcm";
        ASSERT_TRUE(WriteDicomFile(first, original));
        DicomDataSet read;
        DicomReadOptions keepLargeInFile;
        keepLargeInFile.keepInFileAbove = 100;
        ASSERT_TRUE(ReadDicomFile(first, read, keepLargeInFile));
        std::vector<std::uint8_t> groupLength;
        ASSERT_TRUE(read.Find(Tag{0x0002, 0x0000})->value.Load(groupLength));
        EXPECT_EQ(groupLength, Number(kExplicit, 14 + 8 + static_cast<std::uint32_t>(EvenLength(c.syntax.size())), 4));
        EXPECT_EQ(WithoutMeta(read), WithoutMeta(original));
        const auto* payload = read.Find(Tags::Orchid_CustomDataSequence);
        ASSERT_NE(payload, nullptr);
        // The written copy must carry the file-held values (payload, pixel data) byte for byte.
        ASSERT_TRUE(WriteDicomFile(second, read));
        DicomDataSet again;
        ASSERT_TRUE(ReadDicomFile(second, again));
        EXPECT_EQ(DicomInterop::CanonicalText(again), DicomInterop::CanonicalText(read));
        EXPECT_EQ(fs::file_size(first), fs::file_size(second));
    }
}

TEST(DataSetWrite, FailedWriteLeavesTheTargetUntouched) {
    const TestFiles::ScratchDirectory scratch("dicom-codec-test");
    const fs::path target = scratch.path / "out.dcm";
    std::ofstream(target) << "previous";
    DicomDataSet set;
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0010, 0x0010}, VR::PN, Bytes(70000, 'A')));  // too long for 16 bits
    EXPECT_FALSE(WriteDicomFile(target, set, kExplicit));
    EXPECT_EQ(TestFiles::ReadText(target), "previous");
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.path), fs::directory_iterator()), 1);
}

// A stream into a sink gives the bytes of the file, values left in a file included (in chunks,
// their units in the output's order), and stops when the sink refuses.
TEST(DataSetWrite, SinkGetsTheBytesOfTheFile) {
    const TestFiles::ScratchDirectory scratch("sink-write");
    Bytes words(3u << 20);  // more than one chunk of a region
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    auto source = Portability::OpenFile::OpenTemporary();
    ASSERT_TRUE(source && source->Append(words.data(), words.size()));
    const struct {
        const char* id;
        bool bigEndian;
        std::size_t refuseAfter;  // calls the sink takes; 0: all
    } cases[] = {{"little-endian", false, 0}, {"big-endian", true, 0}, {"refused", false, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        DicomDataSet set;
        set.Insert(Node(Tags::TransferSyntaxUID, std::string_view("1.2.840.10008.1.2.1\0", 20)));
        set.Insert(Node(Tags::PatientName, "DOE^JANE"));
        auto pixels = std::make_unique<DicomDataSetElement>(Tag{0x7FE0, 0x0010}, VR::OW);
        pixels->valueLength = static_cast<std::uint32_t>(words.size());
        FileRegion region{{source, 0, words.size()}};
        region.bigEndian = c.bigEndian;
        region.unitSize = 2;
        pixels->value.SetRegion(region);
        set.Insert(std::move(pixels));

        Bytes streamed;
        std::size_t calls = 0;
        const bool written = WriteDicomStream(set, kExplicit, [&](const void* data, std::size_t size) {
            if (c.refuseAfter != 0 && ++calls > c.refuseAfter) return false;
            streamed.insert(streamed.end(), static_cast<const std::uint8_t*>(data),
                            static_cast<const std::uint8_t*>(data) + size);
            return true;
        });
        ASSERT_EQ(written, c.refuseAfter == 0);
        if (!written) continue;
        ASSERT_TRUE(WriteDicomFile(scratch.path / "file.dcm", set, kExplicit));
        EXPECT_EQ(streamed, TestFiles::ReadBytes(scratch.path / "file.dcm"));
        ASSERT_GE(streamed.size(), words.size());
        const std::uint8_t* value = streamed.data() + streamed.size() - words.size();
        EXPECT_EQ(value[0], words[c.bigEndian ? 1 : 0]);
        EXPECT_EQ(value[words.size() - 1], words[words.size() - (c.bigEndian ? 2 : 1)]);
    }
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
