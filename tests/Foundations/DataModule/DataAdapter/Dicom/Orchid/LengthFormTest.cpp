// Explicit-VR length fields: the standard forms of every VR, written and read in both byte
// orders, and the tolerance for writers that gave the newer VRs and UT a 16-bit length.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "DicomBytes.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using namespace DicomTestBytes;
constexpr StreamEncoding kLittle = StreamEncoding::ExplicitLittleEndian;
constexpr StreamEncoding kBig = StreamEncoding::ExplicitBigEndian;

// Every VR the standard defines apart from SQ, whose items have their own tests.
constexpr std::string_view kAllVrs[] = {"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FD", "FL", "IS", "LO",
                                        "LT", "OB", "OD", "OF", "OL", "OV", "OW", "PN", "SH", "SL", "SS",
                                        "ST", "SV", "TM", "UC", "UI", "UL", "UN", "UR", "US", "UT", "UV"};
// The long-form VRs that some writers gave a 16-bit length; the others long VRs never had one.
constexpr std::string_view kTolerated[] = {"OD", "OL", "OV", "SV", "UC", "UR", "UT", "UV"};
bool Tolerated(std::string_view vr) {
    return std::find(std::begin(kTolerated), std::end(kTolerated), vr) != std::end(kTolerated);
}

// Eight value bytes: a whole number of units for every VR.
const Bytes kValue{'1', '2', '3', '4', '5', '6', '7', '8'};

bool ReadOne(const Bytes& bytes, StreamEncoding enc, DicomDataSet& set) {
    DicomMemoryDataStream stream(bytes);
    stream.SetEncoding(enc);
    DicomDataSetFillCallback fill(set);
    return stream.ReadElements(fill);
}

std::string Id(StreamEncoding enc, std::string_view vr) { return std::string(vr) + (enc == kBig ? " big" : " little"); }

TEST(ExplicitLengthForm, EveryVrIsWrittenInItsStandardFormAndReadBack) {
    for (const StreamEncoding enc : {kLittle, kBig}) {
        for (const std::string_view vr : kAllVrs) {
            SCOPED_TRACE(Id(enc, vr));
            DicomDataSet set;
            set.Insert(std::make_unique<DicomDataSetElement>(0x0011, 0x1010, VRFromCode(vr), kValue));
            DicomMemoryDataStream out;
            out.SetEncoding(enc);
            ASSERT_TRUE(out.WriteDataSet(set));
            // The builder's header is the standard one; a big-endian value has its units reversed.
            const Bytes expectedHeader = Header(enc, 0x0011, 0x1010, vr, Len(kValue));
            const Bytes written = out.Bytes();
            ASSERT_EQ(written.size(), expectedHeader.size() + kValue.size());
            EXPECT_EQ(Bytes(written.begin(), written.begin() + static_cast<long>(expectedHeader.size())), expectedHeader);
            EXPECT_EQ(set.EncodedSize(enc), written.size());

            DicomDataSet back;
            ASSERT_TRUE(ReadOne(written, enc, back));
            const DicomDataSetElement* element = back.Find(0x00111010);
            ASSERT_NE(element, nullptr);
            EXPECT_EQ(element->vr, VRFromCode(vr));
            EXPECT_EQ(Bytes(element->value.Bytes().begin(), element->value.Bytes().end()), kValue);
        }
    }
}

// A 16-bit field of 8 followed by the value: read as the length itself for the tolerated VRs and
// the short VRs; for OB, OF, OW and UN it is the reserved word, so the element cannot be read.
TEST(ExplicitLengthForm, ShortFieldIsTheLengthOnlyWhereWritersUsedIt) {
    for (const StreamEncoding enc : {kLittle, kBig}) {
        for (const std::string_view vr : kAllVrs) {
            SCOPED_TRACE(Id(enc, vr));
            const Bytes bytes = Cat({ShortHeader(enc, 0x0011, 0x1010, vr, 8), kValue,
                                     Element(enc, 0x0011, 0x1020, "LO", "AFTER ")});
            DicomDataSet set;
            const bool read = ReadOne(bytes, enc, set);
            if (LongForm(vr) && !Tolerated(vr)) {
                EXPECT_TRUE(!read || set.Find(0x00111020) == nullptr);
                continue;
            }
            ASSERT_TRUE(read);
            ASSERT_NE(set.Find(0x00111010), nullptr);
            EXPECT_EQ(set.Find(0x00111010)->valueLength, 8u);
            ASSERT_NE(set.Find(0x00111020), nullptr);
        }
    }
}

// For a tolerated VR a zero 16-bit field is the reserved word: the 32-bit length follows, even
// when that length is 0 or does not fit 16 bits.
TEST(ExplicitLengthForm, ZeroShortFieldOfATolerantVrIsReserved) {
    struct Case {
        const char* id;
        std::uint32_t length;
    };
    const Case cases[] = {{"empty", 0}, {"eight bytes", 8}, {"past 16 bits", 70000}};
    for (const StreamEncoding enc : {kLittle, kBig}) {
        for (const std::string_view vr : kTolerated) {
            for (const Case& c : cases) {
                SCOPED_TRACE(Id(enc, vr) + " " + c.id);
                const Bytes value(c.length, 0x41);
                const Bytes bytes = Cat({Header(enc, 0x0011, 0x1010, vr, c.length), value,
                                         Element(enc, 0x0011, 0x1020, "LO", "AFTER ")});
                DicomDataSet set;
                ASSERT_TRUE(ReadOne(bytes, enc, set));
                ASSERT_NE(set.Find(0x00111010), nullptr);
                EXPECT_EQ(set.Find(0x00111010)->valueLength, c.length);
                EXPECT_NE(set.Find(0x00111020), nullptr);
            }
        }
    }
}

// A value that a 16-bit field cannot hold is written with the 32-bit length for the long VRs and
// refused for the short ones, rather than written with a wrapped length.
TEST(ExplicitLengthForm, LongValuesNeedTheLongForm) {
    struct Case {
        std::string_view vr;
        bool writable;
    };
    const Case cases[] = {{"UR", true}, {"UC", true}, {"OD", true}, {"UT", true}, {"LT", false}, {"LO", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.vr));
        DicomDataSet set;
        set.Insert(std::make_unique<DicomDataSetElement>(0x0011, 0x1010, VRFromCode(c.vr), Bytes(70000, 0x41)));
        DicomMemoryDataStream out;
        out.SetEncoding(kLittle);
        EXPECT_EQ(out.WriteDataSet(set), c.writable);
        if (!c.writable) continue;
        DicomDataSet back;
        ASSERT_TRUE(ReadOne(out.Bytes(), kLittle, back));
        EXPECT_EQ(back.Find(0x00111010)->valueLength, 70000u);
    }
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
