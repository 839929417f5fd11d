// Reading element streams: handler events, length rules, file layouts and hostile input.

#include <gtest/gtest.h>

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

// Records each event as "kind gggg,eeee VR [e] value" (lengths and offsets left out).
class EventRecorder : public DicomDataStream::CallbackHandler {
public:
    bool ElementRead(DicomDataSetElement& r) override {
        std::string value(r.value.Bytes().begin(), r.value.Bytes().end());
        events.push_back(Portability::TraceFormat("%d %04X,%04X %s%s ", static_cast<int>(r.kind), r.group, r.element,
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
    const Bytes meta = Element(kExplicit, 0x0002, 0x0010, "UI", Text(std::string("1.2.840.10008.1.2.2\0", 20)));
    struct Case {
        const char* id;
        Bytes file;
        bool ok;
        std::size_t count;
    };
    const Case cases[] = {
        {"meta group first without preamble", Cat({meta}), true, 1},
        {"other first group", Element(kImplicit, 0x0010, 0x0010, "PN", "DOE^"), false, 0},
        {"empty", Bytes{}, false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        DicomMemoryDataStream stream(c.file);
        DicomDataSet dataSet;
        DicomDataSetFillCallback fill(dataSet);
        EXPECT_EQ(ReadFileContent(stream, fill), c.ok);
        EXPECT_EQ(dataSet.Count(), c.count);
    }
}

TEST(DataStreamRead, HostileInputFailsCleanly) {
    Bytes deep;
    for (int i = 0; i < 200; ++i) {
        deep = Cat({deep, Header(kExplicit, 0x0008, 0x1032, "SQ", kUndefined), Item(kExplicit, kUndefined)});
    }
    // Each failure says what went wrong, where, and in which element, for the layer that reports it.
    struct Case {
        const char* id;
        Bytes bytes;
        const char* failure;
    };
    const Case cases[] = {
        {"truncated header", Bytes{0x10, 0x00, 0x10}, "Truncated element header at offset 0"},
        {"truncated length", Cat({TagBytes(kExplicit, 0x0010, 0x0010), Text("PN"), Bytes{4}}),
         "Truncated element header at offset 0"},
        {"value longer than the file", Cat({Header(kExplicit, 0x0010, 0x0010, "LO", 0xFFF0), Text("AB")}),
         "Value length 65520 exceeds the 2 bytes left at offset 0 in TAG(0010,0010)"},
        {"huge OB length", Cat({Header(kExplicit, 0x0009, 0x1107, "OB", 0xFFFFFFF0), Text("AB")}),
         "Value length 4294967280 exceeds the 2 bytes left at offset 0 in TAG(0009,1107)"},
        {"sequence past the end", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", 64), Item(kExplicit, 0)}),
         "Length 64 runs past its container at offset 0 in TAG(0008,1032)"},
        {"item past its sequence", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", 8), Item(kExplicit, 10),
                                        Element(kExplicit, 0x0010, 0x0010, "PN", "AB")}),
         "Length 10 runs past its container at offset 12 in TAG(FFFE,E000)"},
        {"element crosses its item end", Cat({Header(kExplicit, 0x0008, 0x1032, "SQ", kUndefined), Item(kExplicit, 4),
                                              Element(kExplicit, 0x0010, 0x0010, "PN", "ABCD")}),
         "Element crosses the end of its item or sequence at offset 32"},
        {"too deep", deep, "Nesting deeper than 64 sequences at offset 1280 in TAG(0008,1032)"},
        {"stray item delimitation", ItemEnd(kExplicit),
         "Element not accepted by the data set at offset 0 in TAG(FFFE,E00D)"},
        {"item outside a sequence", Cat({Item(kExplicit, kUndefined), ItemEnd(kExplicit)}),
         "Element not accepted by the data set at offset 0 in TAG(FFFE,E000)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        DicomMemoryDataStream stream(c.bytes);
        stream.SetEncoding(kExplicit);
        DicomDataSet dataSet;
        DicomDataSetFillCallback fill(dataSet);
        EXPECT_FALSE(stream.ReadElements(fill));
        EXPECT_FALSE(stream.ReadResult());
        EXPECT_EQ(stream.ReadResult().Text(), c.failure);
    }
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
