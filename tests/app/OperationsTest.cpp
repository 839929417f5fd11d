// The record builders: the command line as a user types it, and the record or the error it gives;
// the reference texts of --reference; and the texts the operations build: quoted paths, unpack
// output names, the info document.

#include "app/CommandLine.h"
#include "app/InfoDocument.h"
#include "app/OperationMessages.h"
#include "app/OperationPolicies.h"
#include "app/QuotedPath.h"
#include "app/ReferenceRecord.h"
#include "app/UnpackOutputName.h"
#include "app/XmlText.h"
#include "cmdline/UsageError.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Dicapsule;

template <class Operation>
typename Operation::Record Parse(std::initializer_list<const char*> words) {
    std::vector<const char*> argv{"dicapsule"};
    argv.insert(argv.end(), words);
    return Operation::parse(static_cast<int>(argv.size()), argv.data());
}

// The message of the failure, prefixed "usage: " for usage errors; "" when parsing succeeds.
template <class Operation>
std::string Failure(std::initializer_list<const char*> words) {
    try {
        Parse<Operation>(words);
        return "";
    } catch (const LibCommandLineOperation::UsageError& error) {
        return std::string("usage: ") + error.what();
    } catch (const std::exception& error) {
        return error.what();
    }
}

// The CLI suite checks each message; here the order of the checks when several fail.
TEST(PackRecord, ChecksRunInOrderAndReportTheFirstFailure) {
    const struct { const char* id; std::initializer_list<const char*> words; const char* message; } cases[] = {
        {"metadata before input", {"pack", "-r", "bad"}, "usage: The --metadata option is required."},
        {"reference before input", {"pack", "-m", "m", "-r", "1.2::1.4"}, "usage: \"1.2::1.4\" is not a valid reference string."},
        {"hack before encoding", {"pack", "-m", "m", "-i", "a", "--hackforbmpacs", "-e", "x"},
         "The --thumbnail option must be used when using the --hackforbmpacs option."},
        {"bad utf-8 thumbnail first", {"pack", "-t", "\xFF"}, "Cannot decode UTF-8 string."},
        {"class word", {"pack", "-m", "m", "-i", "a", "-c", "Document"}, "usage: \"Document\" is not a valid class."},
        {"valid", {"pack", "-m", "m", "-i", "a", "-t", "t.png", "--hackforbmpacs", "-e", "WESTERN"}, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(Failure<PackOperation>(c.words), c.message) << c.id;
}

TEST(PackRecord, IdentifierFields) {
    const struct { const char* value; IdentifierFields expected; } cases[] = {
        {":::", {}},
        {"::5", {std::nullopt, std::nullopt, "5", 1}},
        {":::x", {std::nullopt, std::nullopt, std::nullopt, 0}},
        {":::  -12abc", {std::nullopt, std::nullopt, std::nullopt, -12}},
        {":::99999999999", {std::nullopt, std::nullopt, std::nullopt, 2147483647}},
        {"1.2", {"1.2", std::nullopt, std::nullopt, 1}},
        {"1.2:1.3:1.4:", {"1.2", "1.3", "1.4", 1}},
        {"1.2::1.4:3", {"1.2", std::nullopt, "1.4", 3}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Parse<PackOperation>({"pack", "-m", "m", "-i", "a", "-I", c.value}).identifier, c.expected) << c.value;
}

TEST(PackRecord, OutputPath) {
    const struct { std::initializer_list<const char*> words; const char* expected; } cases[] = {
        {{"pack", "-m", "m", "-i", "dir/a.pdf", "-O", "out"}, "out/a.dcm"},
        {{"pack", "-m", "m", "-i", "a.tar.gz"}, "./a.tar.dcm"},
        {{"pack", "-m", "m", "-i", "README"}, "./README.dcm"},
        {{"pack", "-m", "m", "-i", ".profile"}, "./.profile.dcm"},
        {{"pack", "-m", "m", "-i", "a.pdf", "-o", "x.bin", "-O", "ignored"}, "x.bin"},
        {{"pack", "-m", "m", "-i", "a.pdf", "--output", "y"}, "y"},
    };
    // Compared in the generic form: Windows joins with its own separator.
    for (const auto& c : cases) EXPECT_EQ(Parse<PackOperation>(c.words).output.generic_string(), c.expected);
}

// The CLI suite sees every value take effect; here what it cannot see: a stray word is ignored and the
// texts are kept as typed.
TEST(PackRecord, CollectsEveryValue) {
    const PackRecord record = Parse<PackOperation>({"pack", "stray", "-m", "<orchid/>", "-i", "in.bin", "-r", "4:5:6:",
                                                    "-M", "io", "-e", " Unicode ", "-t", "t.jpg"});
    EXPECT_EQ(record.metadata, "<orchid/>");
    EXPECT_EQ(record.input.string(), "in.bin");
    EXPECT_EQ(record.references, (std::vector<ReferenceRecord>{{"4", "5", "6", ""}}));
    EXPECT_EQ(record.modality, "io");
    EXPECT_EQ(record.encoding, Lumivale::DataModule::OutputEncoding::unicode);
    EXPECT_FALSE(record.force || record.hackforbmpacs);
    EXPECT_EQ(record.pack_class, PackClass::raw);
    EXPECT_EQ(Parse<PackOperation>({"pack", "-m", "m", "-i", "a", "--class", "auto"}).pack_class, PackClass::automatic);
    EXPECT_EQ(Parse<PackOperation>({"pack", "-m", "m", "-i", "a", "-c", "document"}).pack_class, PackClass::document);
}

TEST(UnpackRecord, OutputTargets) {
    EXPECT_EQ(Failure<UnpackOperation>({"unpack", "-u", "-o", "y.bin"}),
              "usage: The --use-original-name and --output options are incompatible.");

    const UnpackRecord to_file = Parse<UnpackOperation>({"unpack", "-i", "x.dcm", "-o", "y", "-O", "d", "-f"});
    EXPECT_EQ(std::get<OutputFile>(to_file.target), OutputFile{"y"});
    EXPECT_TRUE(to_file.force);

    const UnpackRecord by_default = Parse<UnpackOperation>({"unpack", "-i", "x.dcm"});
    EXPECT_EQ(std::get<OutputDirectory>(by_default.target), (OutputDirectory{".", false}));
    EXPECT_FALSE(by_default.force);

    const UnpackRecord original = Parse<UnpackOperation>({"unpack", "-i", "x.dcm", "-u", "-O", "out"});
    EXPECT_EQ(std::get<OutputDirectory>(original.target), (OutputDirectory{"out", true}));
}

TEST(ReferenceText, GrammarOfOneReference) {
    const struct { const char* text; bool valid; ReferenceRecord record; } cases[] = {
        {"1.2:1.3:1.4", true, {"1.2", "1.3", "1.4", ""}},
        {"1.2:1.3:1.4:", true, {"1.2", "1.3", "1.4", ""}},
        {"1.2:1.3:1.4:1.5", true, {"1.2", "1.3", "1.4", "1.5"}},
        {"1.2::1.4", false, {}}, {":1.3:1.4", false, {}}, {"1.2:1.3:", false, {}},
        {"1.2:1.3", false, {}},  {"a:b:c:d:e", false, {}}, {"", false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        ReferenceRecord record;
        EXPECT_EQ(parse_reference(c.text, record), c.valid);
        if (c.valid) {
            EXPECT_EQ(record, c.record);
        }
    }
}

TEST(ReferenceText, ListRoundTripsAndDropsEmptyClass) {
    const std::vector<ReferenceRecord> references{{"1.2.3", "1.2.3.4", "1.2.3.4.5", ""},
                                                  {"1.2.3", "1.2.3.4", "1.2.3.4.6", "1.2.3.9"}};
    const std::string text = FormatReferences(references);
    EXPECT_EQ(text, "1.2.3:1.2.3.4:1.2.3.4.5^1.2.3:1.2.3.4:1.2.3.4.6:1.2.3.9");
    std::vector<ReferenceRecord> parsed;
    ASSERT_TRUE(ParseReferences(text, parsed));
    EXPECT_EQ(parsed, references);

    EXPECT_TRUE(ParseReferences("", parsed));
    EXPECT_TRUE(parsed.empty());
    parsed = references;
    EXPECT_FALSE(ParseReferences("1:2:3^1:2", parsed));
    EXPECT_TRUE(parsed.empty());
}

TEST(QuotedPath, EscapesQuotesAndAmpersands) {
    EXPECT_EQ(QuotedPath("a.dcm"), "\"a.dcm\"");
    EXPECT_EQ(QuotedPath(""), "\"\"");
    EXPECT_EQ(QuotedPath("R&D \"x\".pdf"), "\"R&&D &\"x&\".pdf\"");
}

TEST(UnpackOutputName, NamingRules) {
    const struct { const char* id; std::variant<OutputFile, OutputDirectory> target; const char* input;
        const char* original; const char* expected; } cases[] = {
        {"derived in dir", OutputDirectory{"out", false}, "in/x.y.dcm", "a.tar.gz", "out/x.y.gz"},
        {"no extension", OutputDirectory{".", false}, "x.dcm", "README", "./x"},
        {"explicit file ignores bad name", OutputFile{"y"}, "x.dcm", "../evil", "y"},
        {"extension of a name with backslashes", OutputDirectory{"out", false}, "x.dcm", "a\\b.pdf", "out/x.pdf"},
        {"extension of the last component only", OutputDirectory{"out", false}, "x.dcm", "a.d/b", "out/x"},
        {"extension of a climbing name", OutputDirectory{"out", false}, "x.dcm", "../evil.sh", "out/x.sh"},
        {"no extension after a separator", OutputDirectory{"out", false}, "x.dcm", "/etc/passwd", "out/x"},
    };
    // Compared in the generic form: Windows joins with its own separator.
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(ResolveUnpackOutput(c.target, c.input, c.original).generic_string(), c.expected);
    }
}

TEST(UnpackOutputName, StoredNamesThatWouldLeaveTheDirectoryAreRefused) {
    const std::string names[] = {"", ".", "..", "../evil.sh", "a/b.pdf", "a\\b.pdf", std::string("a\0b", 3), "/etc/passwd"};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(IsPlainFileName(name));
        EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", true}, "x.dcm", name), std::runtime_error);
    }
    // Without -u only the extension is taken, and the name made from it must still be plain.
    EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", false}, "x.dcm", std::string("a.b\0c", 5)), std::runtime_error);
    EXPECT_TRUE(IsPlainFileName("..report.pdf"));
    // A name derived from the input's own name must be plain too: "..." gives "..".
    EXPECT_THROW(ResolveUnpackOutput(OutputDirectory{"out", false}, "in/...", "README"), std::runtime_error);
    // The two refusals word for word (the CLI suite checks only their common end).
    const auto refusal = [](const OutputDirectory& target, const char* input, const std::string& name) {
        try {
            ResolveUnpackOutput(target, input, name);
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(refusal({"out", true}, "x.dcm", "../evil.sh"),
              "The original file name \"../evil.sh\" stored in the input file \"x.dcm\" is not a plain file name; use "
              "the --output option.");
    EXPECT_EQ(refusal({"out", false}, "in/...", "README"),
              "The output file name \"..\" derived from the input file \"in/...\" is not a plain file name; use the "
              "--output option.");
}

// The three reports of a failure; the CLI suite sees the first two, nothing the tool throws is the third.
TEST(ReportFailure, EachKindOfFailureIsWrittenWithItsPrefix) {
    const struct { const char* id; std::exception_ptr failure; std::string expected; } cases[] = {
        {"usage error", std::make_exception_ptr(LibCommandLineOperation::Detail::OperationUsageError<InfoOperation>("Bad.")),
         "Usage error: Bad.\n\nUsage:\n  prog info -i INPUT_FILE [OPTION]...\n\n"},
        {"operational error", std::make_exception_ptr(std::runtime_error("Could not read \"a\".")),
         "Error: Could not read \"a\".\n"},
        {"anything else", std::make_exception_ptr(42), "Unknown error.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        std::ostringstream err;
        EXPECT_EQ(ReportFailure(c.failure, "prog", err), 1);
        EXPECT_EQ(err.str().substr(0, c.expected.size()), c.expected);
    }
}

// The engine's results that the CLI suite cannot provoke (a thumbnail that loads but cannot be
// inserted, an unexpected failure), and the variants without a thumbnail path, word for word.
TEST(ConversionFailure, MessagePerResult) {
    ConversionRequest with;
    with.metadata = "m&.xml";
    with.thumbnail = "t \"1\".png";
    with.output = "no-such-dir/x.dcm";
    ConversionRequest without;
    without.output = "x.dcm";
    const struct { ConversionResult result; const ConversionRequest& request; const char* expected; } cases[] = {
        {ConversionResult::written, with, ""},
        {ConversionResult::metadata_unusable, with, "The metadata file \"m&&.xml\" either doesn't exist or is ill-formed."},
        {ConversionResult::thumbnail_not_loaded, with, "Could not load the thumbnail file \"t &\"1&\".png\"."},
        {ConversionResult::thumbnail_not_loaded, without, "Could not load the thumbnail file."},
        {ConversionResult::thumbnail_not_inserted, with,
         "Could not insert the thumbnail file \"t &\"1&\".png\" into the output Dicom file."},
        {ConversionResult::thumbnail_not_inserted, without, "Could not insert the thumbnail file into the output Dicom file."},
        {ConversionResult::output_not_written, with,
         "Could not write the output Dicom file \"no-such-dir/x.dcm\". The directory \"no-such-dir\" does not exist."},
        {ConversionResult::output_not_written, without, "Could not write the output Dicom file \"x.dcm\"."},
        {ConversionResult::unexpected, with, "Could not create the output Dicom file"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(ConversionFailure(c.result, c.request), c.expected);
    }
}

// Every reader outcome of unpack and info, word for word; the CLI suite reaches all but the text
// that cannot be read back from its file, which takes a failing disk.
TEST(PayloadReadFailure, MessagePerOutcomeAndOperation) {
    using enum PayloadReadResult;
    const struct { PayloadReadResult result; PayloadReader reader; const char* expected; } cases[] = {
        {load_failed, PayloadReader::unpack, "Could not load the input file \"R&&D &\"1&\".dcm\"."},
        {load_failed, PayloadReader::info, "Could not load the input file \"R&&D &\"1&\".dcm\"."},
        {not_packed, PayloadReader::unpack, "The input file \"R&&D &\"1&\".dcm\" misses Dicapsule custom data. "
                                            "It seems it hasn't been created by Dicapsule."},
        {not_packed, PayloadReader::info, "The input file \"R&&D &\"1&\".dcm\" misses Dicapsule custom data. "
                                          "It seems it hasn't been created by Dicapsule."},
        {bad_reference_text, PayloadReader::unpack,
         "Could not parse one of the reference strings of the input file \"R&&D &\"1&\".dcm\"."},
        {bad_reference_text, PayloadReader::info,
         "Could not parse one of the reference strings of the input file \"R&&D &\"1&\".dcm\"."},
        {text_unreadable, PayloadReader::unpack, "Could not extract the packed file from the input file \"R&&D &\"1&\".dcm\"."},
        {text_unreadable, PayloadReader::info, "Could not get the info of the input file \"R&&D &\"1&\".dcm\"."},
        {bad_part, PayloadReader::unpack,
         "The input file \"R&&D &\"1&\".dcm\" holds malformed facts of a part of a packed file."},
        {bad_part, PayloadReader::info,
         "The input file \"R&&D &\"1&\".dcm\" holds malformed facts of a part of a packed file."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(PayloadReadFailure(c.result, "R&D \"1\".dcm", c.reader), c.expected);
    }
}

// An input too large to pack takes a file of 4 GiB, which the CLI suite does not make.
TEST(PackInputFailure, MessagePerStatus) {
    using enum Portability::InputFile::Status;
    const struct { Portability::InputFile::Status status; std::string expected; } cases[] = {
        {too_large, "The input file \"big.bin\" is too large to be packed (5000000000 bytes): a DICOM value holds "
                    "at most 4278190078 bytes."},
        {unreadable, "Could not read \"big.bin\"."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(PackInputFailure(c.status, "big.bin", 5000000000u, kMaxPayloadBytes), c.expected);
    }
}

// The CLI suite checks the document with references; here one without, and the escaping of "<".
TEST(InfoDocument, LayoutAndEscaping) {
    PayloadFacts facts;
    facts.name = "a&b.pdf";
    facts.command_line = "pack -i \"my file.pdf\" -m <m>";
    facts.size = 12;
    std::ostringstream none;
    WriteInfoDocument(none, facts);
    EXPECT_EQ(none.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<orchid type=\"Dicapsule\">\n"
              "\t<parameters originalname=\"a&amp;b.pdf\" commandline=\"pack -i &quot;my file.pdf&quot; -m &lt;m>\" size=\"12\" />\n"
              "</orchid>\n");
}

// What XML 1.0 cannot carry becomes U+FFFD, one per offending byte or code point; the rest stays.
TEST(XmlSafeText, ReplacesOnlyWhatXmlCannotCarry) {
    const std::string R = "\xEF\xBF\xBD";
    const struct { const char* id; std::string text; std::string expected; } cases[] = {
        {"allowed controls and markup", "a\t\n\r<&>\"'", "a\t\n\r<&>\"'"},
        {"other controls and NUL", std::string("\x01\x00\x1F\x7F", 4), R + R + R + "\x7F"},
        {"two, three and four bytes", "\xC3\xA9\xE5\xB1\xB1\xF0\x9F\x98\x80", "\xC3\xA9\xE5\xB1\xB1\xF0\x9F\x98\x80"},
        {"overlong slash", "\xC0\xAF", R + R},
        {"overlong three bytes", "\xE0\x80\xAF", R + R + R},
        {"surrogate", "\xED\xA0\x80x", R + R + R + "x"},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", R + R + R + R},
        {"cut sequence at the end", "a\xE5\xB1", "a" + R + R},
        {"non-characters U+FFFE and U+FFFF", "\xEF\xBF\xBE\xEF\xBF\xBF", R + R},
        {"replacement character kept", R, R},
    };
    for (const auto& c : cases) EXPECT_EQ(XmlSafeText(c.text), c.expected) << c.id;
}

}  // namespace
