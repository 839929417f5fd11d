// A private sequence that arrives as UN: its value read as implicit VR little endian items.

#include "DicomBytes.h"
#include "TestFiles.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/UnknownSequence.h"
#include "Portability/Misc/Utf8Path.h"

#include <gtest/gtest.h>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using namespace DicomTestBytes;

constexpr StreamEncoding kImplicit = StreamEncoding::ImplicitLittleEndian;

// One custom data item: creator, key and a value of valueLength bytes of 0x5A.
Bytes ItemContent(std::string_view key, std::size_t valueLength) {
    return Cat({Element(kImplicit, 0x0009, 0x0011, "LO", "IvraDentalPrivate "),
                Element(kImplicit, 0x0009, 0x11A1, "LO", key),
                Element(kImplicit, 0x0009, 0x11A3, "UN", Bytes(valueLength, 0x5A))});
}

Bytes DefinedItem(const Bytes& content) { return Cat({Item(kImplicit, Len(content)), content}); }
Bytes UndefinedItem(const Bytes& content) { return Cat({Item(kImplicit, kUndefined), content, ItemEnd(kImplicit)}); }

TEST(UnknownSequence, ItemsOfEitherLengthFormFromMemoryOrFile) {
    const Bytes first = ItemContent("Dicapsule.PackedFile.Content", 2000);
    const Bytes second = ItemContent("Dicapsule.PackedFile.Name", 6);
    // A nested sequence of undefined length inside an item, as another writer may leave one.
    const Bytes nested = Cat({ItemContent("Nested", 2), Header(kImplicit, 0x0009, 0x11B0, "UN", kUndefined),
                              UndefinedItem(ItemContent("Inner", 4)), SequenceEnd(kImplicit)});
    struct Case {
        const char* id;
        Bytes value;
        std::size_t items;
        std::string secondKey;
    };
    const Case cases[] = {
        {"defined lengths", Cat({DefinedItem(first), DefinedItem(second)}), 2, "Dicapsule.PackedFile.Name"},
        {"undefined lengths", Cat({UndefinedItem(first), UndefinedItem(second)}), 2, "Dicapsule.PackedFile.Name"},
        {"mixed, with a nested sequence", Cat({UndefinedItem(first), DefinedItem(nested)}), 2, "Nested"},
        {"no item", Bytes{}, 0, ""},
    };
    TestFiles::ScratchDirectory scratch{"unknown-sequence"};
    for (const Case& c : cases) {
        for (const bool inFile : {false, true}) {
            SCOPED_TRACE(std::string(c.id) + (inFile ? " in a file" : " in memory"));
            constexpr std::uint64_t kLead = 100;  // the value starts inside the file, not at its start
            DicomDataSetElement element(Tag{0x0009, 0x11A0}, ValueRepresentation::UN);
            if (inFile) {
                TestFiles::WriteBytes(scratch.path / "value.bin", Cat({Bytes(kLead, 0xEE), c.value, Bytes(50, 0xEE)}));
                auto file = Portability::OpenFile::Open(Portability::Utf8FromPath(scratch.path / "value.bin"));
                ASSERT_NE(file, nullptr);
                element.value.SetRegion(FileRegion{{file, kLead, c.value.size()}});
            } else {
                element.value.SetBytes(c.value);
            }
            DicomReadOptions options;
            options.keepInFileAbove = 1000;
            DicomReadResult result;
            const auto sequence = ReadValueAsSequence(element, options, result);
            ASSERT_NE(sequence, nullptr) << result.Text();
            EXPECT_EQ(sequence->tag, Tags::Orchid_CustomDataSequence);
            ASSERT_EQ(sequence->ItemCount(), c.items);
            if (c.items == 0) continue;
            const DicomDataSetElement* value = sequence->Items()[0]->Find(Tag{0x0009, 0x11A3});
            ASSERT_NE(value, nullptr);
            EXPECT_EQ(value->value.Size(), 2000u);
            // Long values stay in the file, at their offset in it; in memory there is no file to stay in.
            ASSERT_EQ(value->value.Region() != nullptr, inFile);
            if (inFile) {
                EXPECT_EQ(value->value.Region()->offset, kLead + 8 + 8 + 18 + 8 + 28 + 8);
            }
            std::vector<std::uint8_t> key;
            ASSERT_TRUE(sequence->Items()[1]->Find(Tag{0x0009, 0x11A1})->value.Load(key));
            EXPECT_EQ(std::string(key.begin(), key.end()), c.secondKey);
        }
    }
}

TEST(UnknownSequence, BytesThatAreNotItemsAreRefused) {
    const Bytes item = ItemContent("Keys", 4);  // even lengths throughout: no pad byte to step over
    using enum DicomReadStatus;
    const struct {
        const char* id;
        Bytes value;
        DicomReadStatus status;
    } cases[] = {
        {"not an item", Element(kImplicit, 0x0010, 0x0010, "PN", "DOE^J "), ElementRejected},
        {"item longer than the value", Cat({Item(kImplicit, Len(item) + 8), item}), LengthPastContainer},
        {"undefined item never closed", Cat({Item(kImplicit, kUndefined), item}), EndsInsideSequence},
        {"cut header", Bytes{0xFE, 0xFF, 0x00}, TruncatedHeader},
        {"stray sequence delimitation", Cat({DefinedItem(item), SequenceEnd(kImplicit)}), UnknownNotItems},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        DicomDataSetElement element(Tag{0x0009, 0x11A0}, ValueRepresentation::UN);
        element.value.SetBytes(c.value);
        DicomReadResult result;
        EXPECT_EQ(ReadValueAsSequence(element, {}, result), nullptr);
        EXPECT_EQ(result.status, c.status);
    }
}

}  // namespace
}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
