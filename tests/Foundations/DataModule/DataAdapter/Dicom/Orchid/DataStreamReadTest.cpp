// Reading element streams: handler events, length rules, file layouts and hostile input; and the
// explicit-VR length fields: the standard forms of every VR, written and read in both byte orders,
// and the tolerance for writers that gave the newer VRs and UT a 16-bit length.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "DicomBytes.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using namespace DicomTestBytes;
constexpr StreamEncoding kImplicit = StreamEncoding::ImplicitLittleEndian;
constexpr StreamEncoding kExplicit = StreamEncoding::ExplicitLittleEndian;
constexpr StreamEncoding kBig = StreamEncoding::ExplicitBigEndian;

// Reads the stream's elements of the given encoding into set.
bool ReadInto(DicomMemoryDataStream& stream, StreamEncoding enc, DicomDataSet& set) {
    stream.SetEncoding(enc);
    DicomDataSetFillCallback fill(set);
    return stream.ReadElements(fill);
}

// Records each event as "kind gggg,eeee VR [e] value" (lengths and offsets left out).
class EventRecorder : public DicomDataStream::CallbackHandler {
public:
    bool ElementRead(DicomDataSetElement& r) override {
        std::string value(r.value.Bytes().begin(), r.value.Bytes().end());
        events.push_back(Portability::TraceFormat("%d %04X,%04X %s%s ", static_cast<int>(r.kind), r.tag.group, r.tag.element,
                                                  std::string(VRCode(r.vr)).c_str(), r.encapsulated ? " e" : "") +
                         value);
        return true;
    }
    std::vector<std::string> events;
};

bool ReadEvents(const Bytes& bytes, StreamEncoding enc, EventRecorder& recorder) {
    DicomMemoryDataStream stream(bytes);
    stream.SetEncoding(enc);
    return stream.ReadElements(recorder);
}

TEST(DataStreamRead, OddLengthIsTracedAndOddSequenceEndClosesAtTheNextEvenOffset) {
    std::vector<std::string> trace;
    const auto previous = Portability::SetTraceSink([&](const Portability::TraceLine& l) { trace.emplace_back(l.text); });
    const Bytes odd = Element(kExplicit, 0x0010, 0x0020, "LO", "ABC");  // 11 bytes, no pad
    const Bytes item = Cat({Item(kExplicit, Len(odd)), odd});
    const Bytes bytes = Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", Len(item)), item, Bytes{0},
                             Element(kExplicit, 0x0010, 0x0010, "PN", "AB")});
    EventRecorder recorder;
    EXPECT_TRUE(ReadEvents(bytes, kExplicit, recorder));
    Portability::SetTraceSink(previous);
    ASSERT_EQ(recorder.events.size(), 6u);
    EXPECT_EQ(recorder.events[4], "3 FFFE,E0DD  ");
    EXPECT_EQ(recorder.events[5], "0 0010,0010 PN AB");
    const std::vector<std::string> expected{"Odd value length 19 when deserializing TAG(0008,1032)",
                                            "Odd value length 11 when deserializing TAG(FFFE,E000)",
                                            "Odd value length 3 when deserializing TAG(0010,0020)"};
    EXPECT_EQ(trace, expected);
}

TEST(DataStreamRead, EncapsulatedPixelDataIsPositionedNotLoaded) {
    const Bytes bytes = Cat({Header(kExplicit, 0x7FE0, 0x0010, "OB", kUndefined), Item(kExplicit, 0),
                             Item(kExplicit, 4), Bytes{1, 2, 3, 4}, SequenceEnd(kExplicit),
                             Element(kExplicit, 0xFFFC, 0xFFFC, "OB", Bytes{0, 0})});
    EventRecorder recorder;
    ASSERT_TRUE(ReadEvents(bytes, kExplicit, recorder));
    const std::vector<std::string> expected{"0 7FE0,0010 OB ",  "2 FFFE,E000  e ", "4 FFFE,E00D  ",
                                            "2 FFFE,E000  e ",  "4 FFFE,E00D  ",   "3 FFFE,E0DD  e ",
                                            std::string("0 FFFC,FFFC OB \0\0", 17)};
    EXPECT_EQ(recorder.events, expected);
}

// The toolkit suite reads real files of every layout; here what must be refused or read without a preamble.
TEST(DataStreamRead, FileLayouts) {
    using enum DicomReadStatus;
    const Bytes meta = Element(kExplicit, 0x0002, 0x0010, "UI", Text(std::string("1.2.840.10008.1.2.2\0", 20)));
    const struct Case { const char* id; Bytes file; DicomReadStatus status; std::size_t count; } cases[] = {
        {"meta group first without preamble", Cat({meta}), Success, 1},
        {"other first group", Element(kImplicit, 0x0010, 0x0010, "PN", "DOE^"), NotDicom, 0},
        {"empty", Bytes{}, NotDicom, 0},
        {"one byte", Bytes{0x08}, NotDicom, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        DicomMemoryDataStream stream(c.file);
        DicomDataSet dataSet;
        DicomDataSetFillCallback fill(dataSet);
        EXPECT_EQ(ReadFileContent(stream, fill), c.status == Success);
        EXPECT_EQ(stream.ReadResult().status, c.status);
        EXPECT_EQ(stream.ReadResult().NotDicom(), c.status == NotDicom);
        EXPECT_EQ(dataSet.Count(), c.count);
    }
}

TEST(DataStreamRead, HostileInputFailsCleanly) {
    using enum DicomReadStatus;
    Bytes deep;
    for (int i = 0; i < 200; ++i) {
        deep = Cat({deep, Header(kExplicit, 0x0008, 0x1032, "SQ", kUndefined), Item(kExplicit, kUndefined)});
    }
    // Each failure says what went wrong, where, and in which element (0,0: none), for the layer that reports it.
    const struct Case {
        const char* id;
        Bytes bytes;
        DicomReadStatus status;
        std::uint64_t offset;
        std::uint16_t group, element;
    } cases[] = {
        {"truncated header", Bytes{0x10, 0x00, 0x10}, TruncatedHeader, 0, 0, 0},
        {"truncated length", Cat({TagBytes(kExplicit, 0x0010, 0x0010), Text("PN"), Bytes{4}}), TruncatedHeader, 0, 0,
         0},
        {"value longer than the file", Cat({Header(kExplicit, 0x0010, 0x0010, "LO", 0xFFF0), Text("AB")}), ValuePastEnd,
         0, 0x0010, 0x0010},
        {"huge OB length", Cat({Header(kExplicit, 0x0009, 0x1107, "OB", 0xFFFFFFF0), Text("AB")}), ValuePastEnd, 0,
         0x0009, 0x1107},
        {"sequence past the end", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", 64), Item(kExplicit, 0)}),
         LengthPastContainer, 0, 0x0008, 0x1032},
        {"item past its sequence", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", 8), Item(kExplicit, 10),
                                        Element(kExplicit, 0x0010, 0x0010, "PN", "AB")}),
         LengthPastContainer, 12, 0xFFFE, 0xE000},
        {"element crosses its item end", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", kUndefined), Item(kExplicit, 4),
                                              Element(kExplicit, 0x0010, 0x0010, "PN", "ABCD")}),
         CrossesContainerEnd, 32, 0, 0},
        {"open sequence at the end", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", kUndefined), Item(kExplicit, 0)}),
         EndsInsideSequence, 20, 0, 0},
        {"too deep", deep, NestingTooDeep, 1280, 0x0008, 0x1032},
        {"stray item delimitation", ItemEnd(kExplicit), ElementRejected, 0, 0xFFFE, 0xE00D},
        {"item outside a sequence", Cat({Item(kExplicit, kUndefined), ItemEnd(kExplicit)}), ElementRejected, 0, 0xFFFE,
         0xE000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        DicomMemoryDataStream stream(c.bytes);
        DicomDataSet dataSet;
        EXPECT_FALSE(ReadInto(stream, kExplicit, dataSet));
        const DicomReadResult& result = stream.ReadResult();
        EXPECT_EQ(result.status, c.status);
        EXPECT_FALSE(result.NotDicom());
        EXPECT_EQ(result.offset, c.offset);
        EXPECT_EQ(result.tag, (Tag{c.group, c.element}));
    }
}

// The text is derived from the status, with the offset and, when there is one, the tag.
TEST(DataStreamRead, ResultTextNamesStatusOffsetAndTag) {
    EXPECT_EQ((DicomReadResult{DicomReadStatus::ValuePastEnd, 118, {0x0010, 0x4000}}).Text(),
              "Value runs past the end of the data at offset 118 in TAG(0010,4000)");
    EXPECT_EQ((DicomReadResult{DicomReadStatus::TruncatedHeader, 7}).Text(), "Truncated element header at offset 7");
}

TEST(DataStreamRead, OtherPrivateGroupsAreSkippedUnreported) {
    const Bytes name = Element(kExplicit, 0x0010, 0x0010, "PN", "AB");
    const Bytes ours = Element(kExplicit, 0x0009, 0x1001, "LO", "OK");
    const Bytes nested = Cat({Header(kExplicit, 0x0011, 0x1002, "SQ", kUndefined), Item(kExplicit, kUndefined),
                              Element(kExplicit, 0x0010, 0x0020, "LO", "ID"), ItemEnd(kExplicit),
                              Item(kExplicit, 10), Element(kExplicit, 0x0011, 0x1003, "LO", "XY"),
                              SequenceEnd(kExplicit)});
    const struct Case { const char* id; Bytes bytes; std::vector<std::string> events; } cases[] = {
        {"defined-length element", Cat({Element(kExplicit, 0x0011, 0x1001, "OB", "JUNK"), name}), {"0 0010,0010 PN AB"}},
        {"undefined-length sequence with its items",
         Cat({ours, nested, name}), {"0 0009,1001 LO OK", "0 0010,0010 PN AB"}},
        {"defined-length sequence", Cat({Header(kExplicit, 0x0013, 0x1000, "SQ", 8), Item(kExplicit, 0), name}),
         {"0 0010,0010 PN AB"}},
        {"undefined-length UN", Cat({Header(kExplicit, 0x0011, 0x1004, "UN", kUndefined), SequenceEnd(kExplicit), name}),
         {"0 0010,0010 PN AB"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        DicomMemoryDataStream stream(c.bytes);
        stream.SetEncoding(kExplicit);
        stream.SetReadOptions({.onlyPrivateGroup = 0x0009});
        EventRecorder recorder;
        EXPECT_TRUE(stream.ReadElements(recorder)) << stream.ReadResult().Text();
        EXPECT_EQ(recorder.events, c.events);
    }
}

TEST(DataStreamRead, HeldBytesAreBounded) {
    // Each element costs a fixed 256 bytes besides the value it loads.
    const Bytes value = Element(kExplicit, 0x0010, 0x4000, "LT", std::string(100, 'x'));
    DicomMemoryDataStream stream(Cat({value, Element(kExplicit, 0x0010, 0x0010, "PN", "AB"), value}));
    stream.SetEncoding(kExplicit);
    stream.SetReadOptions({.maxHeldBytes = 2 * 256 + 100 + 2});
    DicomDataSet dataSet;
    EXPECT_FALSE(ReadInto(stream, kExplicit, dataSet));
    EXPECT_EQ(stream.ReadResult().status, DicomReadStatus::TooMuchHeld);
    EXPECT_EQ(stream.ReadResult().offset, 118u);
    EXPECT_EQ(stream.ReadResult().tag.element, 0x4000);
}

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
    return ReadInto(stream, enc, set);
}

std::string Id(StreamEncoding enc, std::string_view vr) { return std::string(vr) + (enc == kBig ? " big" : " little"); }

TEST(ExplicitLengthForm, EveryVrIsWrittenInItsStandardFormAndReadBack) {
    for (const StreamEncoding enc : {kExplicit, kBig}) {
        for (const std::string_view vr : kAllVrs) {
            SCOPED_TRACE(Id(enc, vr));
            DicomDataSet set;
            set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0011, 0x1010}, VRFromCode(vr), kValue));
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
            const DicomDataSetElement* element = back.Find(Tag{0x0011, 0x1010});
            ASSERT_NE(element, nullptr);
            EXPECT_EQ(element->vr, VRFromCode(vr));
            EXPECT_EQ(Bytes(element->value.Bytes().begin(), element->value.Bytes().end()), kValue);
        }
    }
}

// A 16-bit field of 8 followed by the value: read as the length itself for the tolerated VRs and
// the short VRs; for OB, OF, OW and UN it is the reserved word, so the element cannot be read.
TEST(ExplicitLengthForm, ShortFieldIsTheLengthOnlyWhereWritersUsedIt) {
    for (const StreamEncoding enc : {kExplicit, kBig}) {
        for (const std::string_view vr : kAllVrs) {
            SCOPED_TRACE(Id(enc, vr));
            const Bytes bytes = Cat({ShortHeader(enc, 0x0011, 0x1010, vr, 8), kValue,
                                     Element(enc, 0x0011, 0x1020, "LO", "AFTER ")});
            DicomDataSet set;
            const bool read = ReadOne(bytes, enc, set);
            if (LongForm(vr) && !Tolerated(vr)) {
                EXPECT_FALSE(read);
                continue;
            }
            ASSERT_TRUE(read);
            ASSERT_NE(set.Find(Tag{0x0011, 0x1010}), nullptr);
            EXPECT_EQ(set.Find(Tag{0x0011, 0x1010})->valueLength, 8u);
            ASSERT_NE(set.Find(Tag{0x0011, 0x1020}), nullptr);
        }
    }
}

// For a tolerated VR a zero 16-bit field is the reserved word: the 32-bit length follows, even
// when that length is 0 or does not fit 16 bits.
TEST(ExplicitLengthForm, ZeroShortFieldOfATolerantVrIsReserved) {
    struct Case { const char* id; std::uint32_t length; };
    const Case cases[] = {{"empty", 0}, {"eight bytes", 8}, {"past 16 bits", 70000}};
    for (const StreamEncoding enc : {kExplicit, kBig}) {
        for (const std::string_view vr : kTolerated) {
            for (const Case& c : cases) {
                SCOPED_TRACE(Id(enc, vr) + " " + c.id);
                const Bytes value(c.length, 0x41);
                const Bytes bytes = Cat({Header(enc, 0x0011, 0x1010, vr, c.length), value,
                                         Element(enc, 0x0011, 0x1020, "LO", "AFTER ")});
                DicomDataSet set;
                ASSERT_TRUE(ReadOne(bytes, enc, set));
                ASSERT_NE(set.Find(Tag{0x0011, 0x1010}), nullptr);
                EXPECT_EQ(set.Find(Tag{0x0011, 0x1010})->valueLength, c.length);
                EXPECT_NE(set.Find(Tag{0x0011, 0x1020}), nullptr);
            }
        }
    }
}

// A value that a 16-bit field cannot hold is written with the 32-bit length for the long VRs and
// refused for the short ones, rather than written with a wrapped length.
TEST(ExplicitLengthForm, LongValuesNeedTheLongForm) {
    struct Case { std::string_view vr; bool writable; };
    const Case cases[] = {{"UR", true}, {"UC", true}, {"OD", true}, {"UT", true}, {"LT", false}, {"LO", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.vr));
        DicomDataSet set;
        set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0011, 0x1010}, VRFromCode(c.vr), Bytes(70000, 0x41)));
        DicomMemoryDataStream out;
        out.SetEncoding(kExplicit);
        EXPECT_EQ(out.WriteDataSet(set), c.writable);
        if (!c.writable) continue;
        DicomDataSet back;
        ASSERT_TRUE(ReadOne(out.Bytes(), kExplicit, back));
        EXPECT_EQ(back.Find(Tag{0x0011, 0x1010})->valueLength, 70000u);
    }
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
