// Large values kept in their file land on a 4096-byte boundary of the written file, through padding
// in the meta group; small values get no padding. (The meta group length and the peers' view of
// padded files are checked end to end in tests/cli/test_payload_alignment.py.)

#include <gtest/gtest.h>

#include <algorithm>

#include "DicomBytes.h"
#include "TestFiles.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueAlignment.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using namespace DicomTestBytes;
namespace fs = std::filesystem;
using VR = ValueRepresentation;

// Bytes that do not repeat within a few megabytes, so that their first occurrence is the value.
Bytes Distinct(std::size_t size) {
    Bytes out(size);
    std::uint32_t state = 0x9E3779B9u;
    for (auto& byte : out) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return out;
}

// A meta group, a text of `filler` bytes, then a private value of `payload` bytes left in a file.
DicomDataSet Sample(std::shared_ptr<Portability::OpenFile> source, std::size_t filler) {
    DicomDataSet set;
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0000}, VR::UL, Bytes{0, 0, 0, 0}));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0001}, VR::OB, Bytes{0, 1}));
    set.Insert(Node(Tags::TransferSyntaxUID, std::string_view("1.2.840.10008.1.2.1\0", 20)));
    set.Insert(Node(Tags::PatientName, std::string(filler, 'A')));
    auto value = std::make_unique<DicomDataSetElement>(Tag{0x0009, 0x11A3}, VR::UN);
    const std::uint64_t size = source->Size();
    value->valueLength = static_cast<std::uint32_t>(size);
    value->value.SetRegion(FileRegion{{std::move(source), 0, size}});
    set.Insert(std::move(value));
    return set;
}

TEST(ValueAlignment, LargeValuesStartOnABlockSmallOnesAreNotPadded) {
    const TestFiles::ScratchDirectory dir("value-alignment");
    const std::size_t payloads[] = {1000, 65534, 65536, 65537, 65536 + 4096, 300001, kLargeValueBlockMinimum + 2};
    const std::size_t fillers[] = {0, 2, 4000, 4080, 4094, 9000};
    for (const std::size_t payload : payloads) {
        const Bytes content = Distinct(payload);
        auto source = Portability::OpenFile::OpenTemporary();
        ASSERT_TRUE(source && source->Append(content.data(), content.size()));
        for (const std::size_t filler : fillers) {
            SCOPED_TRACE("payload " + std::to_string(payload) + ", filler " + std::to_string(filler));
            DicomDataSet set = Sample(source, filler);
            ASSERT_TRUE(AlignLargeValue(set, StreamEncoding::ExplicitLittleEndian, "1.2.3.4"));
            const fs::path path = dir.path / "aligned.dcm";
            ASSERT_TRUE(WriteDicomFile(path, set));
            const Bytes file = TestFiles::ReadBytes(path);
            const auto found = std::search(file.begin(), file.end(), content.begin(), content.begin() + 64);
            ASSERT_NE(found, file.end());
            const auto offset = static_cast<std::uint64_t>(found - file.begin());
            ASSERT_GE(static_cast<std::size_t>(file.end() - found), content.size());
            EXPECT_TRUE(std::equal(content.begin(), content.end(), found));

            const bool large = payload >= kAlignedValueMinimum;
            EXPECT_TRUE(!large || offset % ValueBlockSize(payload) == 0);
            EXPECT_TRUE(large || set.Find(Tags::PrivateInformation) == nullptr);
            EXPECT_EQ(LargeValueFileOffset(set, StreamEncoding::ExplicitLittleEndian), large ? std::optional(offset) : std::nullopt);

            // Aligning again (a data set padded before) lands on the same place.
            ASSERT_TRUE(AlignLargeValue(set, StreamEncoding::ExplicitLittleEndian, "1.2.3.4"));
            EXPECT_EQ(LargeValueFileOffset(set, StreamEncoding::ExplicitLittleEndian, 1), offset);
        }
    }
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
