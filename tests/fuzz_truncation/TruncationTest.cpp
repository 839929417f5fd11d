// Every sample file cut at every byte offset (offsets sampled around the structure of big files)
// goes through the readers of hostile input. Each reader must refuse a prefix cleanly or read what
// the whole file says; the sanitizer build turns any overrun into a failure (the samples and
// corpora, which assert nothing else, are replayed there alone).

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>

#include "TestFiles.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"
#include "Foundations/DataModule/metadata/MetadataReader.h"
#include "Foundations/LVCodec/bmp/LVImageCodec_BMP.h"
#include "Foundations/LVCodec/dicom/DicomImageReader.h"
#include "Foundations/LVCodec/pnm/PnmWrapper.h"
#include "app/Payload.h"

namespace {

namespace fs = std::filesystem;
namespace codec = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
namespace dm = Lumivale::DataModule;
using Bytes = std::vector<std::uint8_t>;

const fs::path kSource = DICAPSULE_SOURCE_DIR;

// Readers a sample goes through.
enum Reader : unsigned {
    kStream = 1,        // data stream over memory, into a tree
    kFile = 2,          // file stream, and the payload reader with and without content
    kMetadata = 4,      // the --metadata loader on a file
    kDicomImage = 8,    // DICOM image reader, main image and icon
    kBmp = 16,          // BMP reader
    kPnm = 32,          // Netpbm reader
    kEdition = 64,      // edition document text
};

using TestFiles::ReadBytes;
using TestFiles::WriteBytes;

// Memory-backed when there is /dev/shm: thousands of prefixes are written.
struct ScratchDirectory : TestFiles::ScratchDirectory {
    ScratchDirectory()
        : TestFiles::ScratchDirectory("dicapsule-truncation",
                                      fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) {}
};

// Offsets where an element's header, value or end lies, from a read of the whole file.
class BoundaryCollector : public codec::DicomDataStream::CallbackHandler {
public:
    std::set<std::uint64_t> offsets;
    bool ElementRead(codec::DicomDataSetElement& record) override {
        offsets.insert({record.headerPosition, record.valuePosition});
        if (record.valueLength != 0xFFFFFFFFu) offsets.insert(record.valuePosition + record.valueLength);
        return true;
    }
};

// Every length below the file's for files up to denseLimit bytes; for bigger ones the first and
// last KiB, 16 bytes either side of every element boundary and a sparse stride in between.
std::vector<std::size_t> PrefixLengths(const Bytes& whole, std::size_t denseLimit) {
    std::set<std::size_t> lengths;
    const std::size_t size = whole.size();
    if (size <= denseLimit) {
        for (std::size_t n = 0; n < size; ++n) lengths.insert(n);
        return {lengths.begin(), lengths.end()};
    }
    for (std::size_t n = 0; n < 1024; ++n) lengths.insert({n, size - 1 - n});
    for (std::size_t n = 0; n < size; n += 4093) lengths.insert(n);
    codec::DicomMemoryDataStream stream(whole);
    BoundaryCollector boundaries;
    codec::ReadFileContent(stream, boundaries);
    for (const std::uint64_t at : boundaries.offsets) {
        for (std::uint64_t n = at > 16 ? at - 16 : 0; n <= at + 16 && n < size; ++n) lengths.insert(n);
    }
    return {lengths.begin(), lengths.end()};
}

// What the payload reader finds in a whole file.
struct WholePayload { bool found = false; Dicapsule::PayloadFacts facts; Bytes content; };

// Hands one prefix to each chosen reader. The payload reader, when it succeeds on a prefix of a
// file whose payload it reads, must give the whole file's facts.
void ReadPrefix(std::span<const std::uint8_t> prefix, unsigned readers, const fs::path& file, const WholePayload& whole) {
    if (readers & kStream) {
        codec::DicomMemoryDataStream stream(prefix);
        codec::DicomDataSet tree;
        codec::DicomDataSetFillCallback fill(tree);
        codec::ReadFileContent(stream, fill);
    }
    if (readers & (kFile | kMetadata)) WriteBytes(file, prefix);
    if (readers & kFile) {
        codec::DicomDataSet tree;
        codec::ReadDicomFile(file, tree);
        for (const bool wantContent : {true, false}) {
            Dicapsule::PayloadFacts facts;
            if (Dicapsule::read_payload(file.string(), wantContent, facts) != Dicapsule::PayloadReadResult::success ||
                !whole.found)
                continue;
            EXPECT_EQ(facts.name, whole.facts.name);
            EXPECT_EQ(facts.command_line, whole.facts.command_line);
            EXPECT_EQ(facts.references, whole.facts.references);
            Bytes content;
            EXPECT_TRUE(!wantContent || (facts.content.ReadAll(content) && content == whole.content));
        }
    }
    const dm::date_time stamp{2024, 3, 5, 10, 0, 0, 0};
    if (readers & kMetadata) {
        dm::PatientDataSet set;
        dm::MetadataRows rows;
        dm::LoadMetadata(set, file.string(), stamp, dm::SOPClass::RawData, rows);
    }
    Lumivale::Imaging::LVImageMemory image;
    if (readers & kDicomImage) {
        Lumivale::Imaging::DecodeDicom(prefix, false, 0, "prefix", image);
        Lumivale::Imaging::DecodeDicom(prefix, true, 0, "prefix", image);
    }
    if (readers & kBmp) Lumivale::Imaging::DecodeBmp(prefix, image);
    if (readers & kPnm) Lumivale::Imaging::DecodePnm(prefix, image);
    if (readers & kEdition) {
        const std::string_view text(reinterpret_cast<const char*>(prefix.data()), prefix.size());
        dm::PatientDataSet set;
        dm::MetadataRows rows;
        dm::BuildRowsFromEditionDocument(set, text, stamp, dm::SOPClass::RawData, rows);
    }
}

// Reads the prefixes of bytes through the readers; returns what the whole file's payload is.
WholePayload ReadEveryPrefix(const Bytes& bytes, unsigned readers, const fs::path& file, std::size_t denseLimit) {
    WholePayload whole;
    if (readers & kFile) {
        WriteBytes(file, bytes);
        whole.found =
            Dicapsule::read_payload(file.string(), true, whole.facts) == Dicapsule::PayloadReadResult::success &&
            whole.facts.content.ReadAll(whole.content);
    }
    for (const std::size_t length : PrefixLengths(bytes, denseLimit)) {
        SCOPED_TRACE("prefix of " + std::to_string(length) + " bytes");
        ReadPrefix(std::span(bytes).first(length), readers, file, whole);
        if (::testing::Test::HasFailure()) break;
    }
    return whole;
}

TEST(Truncation, PackedFilesGivePayloadOrCleanFailure) {
    const ScratchDirectory scratch;
    Bytes big(96 * 1024);  // above the 64 KiB from which the payload stays in the file
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    WriteBytes(scratch.path / "big.bin", big);
    const struct Case { const char* id; fs::path payload; std::string options; std::size_t denseLimit; } cases[] = {
        {"report with icon and reference", kSource / "examples/report.pdf",
         "-t \"" + (kSource / "examples/thumbnail.png").string() + "\" -r 1.2.3:1.2.3.4:1.2.3.4.5:1.2.9", 4096},
        {"payload kept in the file", scratch.path / "big.bin", "", 4096},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const fs::path packed = scratch.path / "packed.dcm";
        const std::string command = "\"" + std::string(DICAPSULE_TOOL) + "\" pack -i \"" + c.payload.string() +
                                    "\" -m \"" + (kSource / "examples/metadata.xml").string() + "\" -o \"" +
                                    packed.string() + "\" -f " + c.options;
#ifdef _WIN32
        // cmd /c drops the first and the last quote of a line that starts with one.
        ASSERT_EQ(std::system(("\"" + command + "\"").c_str()), 0) << command;
#else
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
#endif
        const WholePayload whole = ReadEveryPrefix(ReadBytes(packed), kStream | kFile | kMetadata | kDicomImage,
                                                   scratch.path / "prefix.dcm", c.denseLimit);
        EXPECT_TRUE(whole.found);
        EXPECT_EQ(whole.facts.name, c.payload.filename().string());
        EXPECT_TRUE(whole.content == ReadBytes(c.payload));
    }
}

TEST(CrashOnlyTruncation, SamplesAndCorporaGiveCleanFailures) {
    const ScratchDirectory scratch;
    struct Case {
        const char* id;
        fs::path path;  // a file, or a directory whose files are all taken
        unsigned readers;
    };
    const Case cases[] = {
        {"edition document example", kSource / "examples/metadata.xml", kEdition | kMetadata},
        {"report example", kSource / "examples/report.pdf", kMetadata},
        {"file reader corpus", kSource / "fuzz/dicom/corpus/dicom_file_fuzzer", kStream | kDicomImage},
        {"stream corpus", kSource / "fuzz/dicom/corpus/dicom_stream_fuzzer", kStream},
        {"payload corpus", kSource / "fuzz/app/corpus/payload_fuzzer", kFile},
        {"metadata corpus", kSource / "fuzz/metadata/corpus/metadata_source_fuzzer", kMetadata},
        {"edition corpus", kSource / "fuzz/metadata/corpus/edition_document_fuzzer", kEdition},
        {"DICOM image corpus", kSource / "fuzz/imaging/corpus/fuzz_dicom_image", kDicomImage | kStream},
        {"BMP corpus", kSource / "fuzz/imaging/corpus/fuzz_bmp", kBmp},
        {"Netpbm corpus", kSource / "fuzz/imaging/corpus/fuzz_pnm", kPnm},
    };
    // The corpora share many seeds: each distinct content is read once, by every reader that wants
    // it. Contents are keyed as strings: GCC 12 at -O3 sees a bogus overread in comparing vectors.
    std::map<std::string, std::pair<std::string, unsigned>> samples;
    for (const Case& c : cases) {
        std::vector<fs::path> files{c.path};
        if (fs::is_directory(c.path)) {
            files.clear();
            for (const auto& entry : fs::directory_iterator(c.path)) files.push_back(entry.path());
        }
        EXPECT_FALSE(files.empty()) << c.id;
        for (const fs::path& file : files) {
            const Bytes bytes = ReadBytes(file);
            ASSERT_FALSE(bytes.empty()) << "no sample at " << file;
            auto& sample = samples[std::string(bytes.begin(), bytes.end())];
            if (sample.first.empty()) sample.first = std::string(c.id) + ": " + file.filename().string();
            sample.second |= c.readers;
        }
    }
    for (const auto& [content, sample] : samples) {
        SCOPED_TRACE(sample.first);
        ReadEveryPrefix(Bytes(content.begin(), content.end()), sample.second, scratch.path / "prefix", 64 * 1024);
    }
}

}  // namespace
