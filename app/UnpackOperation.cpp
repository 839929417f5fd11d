#include "app/BackgroundDigests.h"
#include "app/OperationMessages.h"
#include "app/Operations.h"
#include "app/Payload.h"
#include "app/ProgressLine.h"
#include "app/StreamArguments.h"
#include "app/UnpackOutputName.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/Sha256.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <variant>
#include <vector>

namespace Dicapsule {

namespace {

namespace fs = boost::filesystem;
namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

// Copy the content into the writer: straight from the packed file when it stayed there. With a
// digest, the bytes as written are fed to it.
bool WriteContent(const Lumivale::DataModule::ByteBuffer& content, Portability::AtomicFileWriter& writer,
                  Portability::Sha256* digest) {
    if (const Lumivale::DataModule::FileRegion* region = content.Region()) {
        // A region of a deflated data set is inflated again, straight into the output.
        return dcm::CopyRegionToFile(dcm::FileRegion{*region}, writer, false, digest);
    }
    const auto bytes = content.MemoryBytes();
    if (digest) digest->Update(bytes.data(), bytes.size());
    return writer.Write(bytes.data(), bytes.size());
}

// The content written matches the recorded digest.
bool Matches(Portability::Sha256& digest, const std::string& recorded) {
    Portability::Sha256::Digest result{};
    return digest.Finish(result) && Portability::ToHex(result) == recorded;
}

// The content as stored matches the recorded digest: a pass of its own, for outputs that cannot
// take back what they were sent (the standard output, devices, FIFOs).
bool StoredContentMatches(const Lumivale::DataModule::ByteBuffer& content, const std::string& recorded) {
    std::string digest;
    return ContentSha256(content, digest) && digest == recorded;
}

// The writer of an unpack's output. Without --force an existing output is refused now, and the
// last step refuses one that appeared since; a device, FIFO or descriptor (/dev/null,
// /dev/stdout) is written through, never replaced.
Portability::AtomicFileWriter OutputWriter(const fs::path& output, bool force) {
    boost::system::error_code error;
    const fs::file_type type = fs::status(output, error).type();
    if (!force && type != fs::status_unknown && type != fs::file_not_found &&
        !Portability::IsWrittenThrough(output.string())) {
        throw std::runtime_error(AlreadyExists(output));
    }
    return Portability::AtomicFileWriter(output.string(), force ? Portability::ExistingTarget::replace
                                                                : Portability::ExistingTarget::refuse);
}

// A part of a split payload, found for the set of the first input.
struct PartEntry {
    FoundPart found;
    Lumivale::DataModule::ByteBuffer content;
};

PartEntry EntryOf(const PayloadFacts& facts, const std::string& path) {
    return {{*facts.part, facts.content.Length(), path, facts.sha256}, facts.content};
}

// The other parts of the first input's set: those given, each of which must belong to it, or else
// the DICOM files of the input's directory that do, whatever their names (the rest is skipped
// unread beyond its header).
void CollectParts(const UnpackRecord& record, const PartFacts& first, std::vector<PartEntry>& parts) {
    const std::string input = record.input.string();
    for (const fs::path& other : record.other_inputs) {
        PayloadFacts facts;
        const PayloadReadResult result = read_payload(other.string(), true, facts);
        if (result != PayloadReadResult::success) {
            throw std::runtime_error(PayloadReadFailure(result, other.string(), PayloadReader::unpack));
        }
        if (!facts.part || facts.part->set_uid != first.set_uid) throw std::runtime_error(ForeignPart(other.string(), input));
        parts.push_back(EntryOf(facts, other.string()));
    }
    if (!record.other_inputs.empty() || IsStandardStream(record.input)) return;
    const fs::path directory = record.input.has_parent_path() ? record.input.parent_path() : fs::path(".");
    boost::system::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
        boost::system::error_code ignored;
        if (!fs::is_regular_file(it->status(ignored)) || fs::equivalent(it->path(), record.input, ignored)) continue;
        PayloadFacts facts;
        if (read_payload(it->path().string(), true, facts) != PayloadReadResult::success || !facts.part ||
            facts.part->set_uid != first.set_uid) {
            continue;
        }
        parts.push_back(EntryOf(facts, it->path().string()));
    }
}

// The payload of parts (in order) written to the standard output, or a file written through, its
// digests checked first; or into writer, checked as it is written (the whole digest from the
// bytes written, each part's on a thread of its own from its file).
void WriteParts(const std::vector<PartEntry>& parts, const std::string& input, bool verify,
                Portability::AtomicFileWriter* writer) {
    std::vector<Lumivale::DataModule::ByteBuffer> contents;
    for (const PartEntry& part : parts) contents.push_back(part.content);
    std::optional<BackgroundDigests> partDigests;
    if (verify) partDigests.emplace(contents);
    Portability::Sha256 whole;
    const auto checkDigests = [&] {
        if (!partDigests) return;
        if (!partDigests->Wait()) throw std::runtime_error(PayloadReadFailure(PayloadReadResult::load_failed, input, PayloadReader::unpack));
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (partDigests->Digests()[i] != parts[i].found.sha256) {
                throw std::runtime_error(PartMismatch(input, parts[i].found.facts.index, parts[i].found.path));
            }
        }
        if (!Matches(whole, parts.front().found.facts.total_sha256)) throw std::runtime_error(DigestMismatch(input));
    };
    if (writer == nullptr || Portability::IsWrittenThrough(writer->target())) {
        if (verify) {
            for (const auto& content : contents) {
                const auto hash = [&whole](std::uint8_t* bytes, std::size_t size) {
                    whole.Update(bytes, size);
                    return true;
                };
                const Lumivale::DataModule::FileRegion* region = content.Region();
                if (region == nullptr || !dcm::ReadRegionInChunks(dcm::FileRegion{*region}, hash)) {
                    throw std::runtime_error(PayloadReadFailure(PayloadReadResult::load_failed, input, PayloadReader::unpack));
                }
            }
            checkDigests();
        }
        for (const auto& content : contents) {
            if (writer == nullptr && !WriteStandardOutput(content)) throw std::runtime_error(StandardOutputFailure());
            if (writer != nullptr && !WriteContent(content, *writer, nullptr)) return;
        }
        return;
    }
    for (const auto& content : contents) {
        if (!WriteContent(content, *writer, verify ? &whole : nullptr)) return;
    }
    checkDigests();
}

// Unpack a payload split into parts, from the first input's facts.
void UnpackParts(const UnpackRecord& record, const PayloadFacts& facts) {
    const std::string input = record.input.string();
    if (!facts.part) throw std::runtime_error(WholeWithOthers(input));
    std::vector<PartEntry> parts{EntryOf(facts, input)};
    CollectParts(record, *facts.part, parts);
    std::vector<FoundPart> found;
    for (const PartEntry& part : parts) found.push_back(part.found);
    const PartSetCheck check = CheckPartSet(found);
    if (check.problem != PartSetProblem::none) {
        throw std::runtime_error(PartSetFailure(check, found, facts.part->count, input));
    }
    std::stable_sort(parts.begin(), parts.end(),
                     [](const PartEntry& a, const PartEntry& b) { return a.found.facts.index < b.found.facts.index; });
    // Files packed without a digest have nothing to check.
    const bool verify = record.verify && !facts.part->total_sha256.empty();

    if (const auto* explicitFile = std::get_if<OutputFile>(&record.target);
        explicitFile && IsStandardStream(explicitFile->path)) {
        WriteParts(parts, input, verify, nullptr);
        return;
    }
    const fs::path output = ResolveUnpackOutput(record.target, record.input, facts.name);
    Portability::AtomicFileWriter writer = OutputWriter(output, record.force);
    if (writer.Open()) WriteParts(parts, input, verify, &writer);
    if (writer.failure() != Portability::WriteFailure::none || writer.size() != facts.part->total_size ||
        !writer.Commit()) {
        throw std::runtime_error(UnpackWriteFailure(writer.failure(), input, output));
    }
}

}  // namespace

void unpack(const UnpackRecord& record) {
    const std::string input = record.input.string();
    ProgressLine progress;  // a piped input first, of a size not known until its end
    Portability::InputFile file;
    PayloadFacts facts;
    const PayloadReadResult result = OpenInput(record.input, file, UINT64_MAX) == Portability::InputFile::Status::opened
                                         ? read_payload(file.File(), true, facts)
                                         : PayloadReadResult::load_failed;
    if (result != PayloadReadResult::success) throw std::runtime_error(PayloadReadFailure(result, input, PayloadReader::unpack));
    if (facts.part || !record.other_inputs.empty()) {
        progress.Restart(facts.part ? facts.part->total_size : 0);
        UnpackParts(record, facts);
        return;
    }
    progress.Restart(facts.content.Length());
    // Files packed without a digest (by earlier versions, or other writers) have nothing to check.
    const bool verify = record.verify && !facts.sha256.empty();

    if (const auto* explicitFile = std::get_if<OutputFile>(&record.target);
        explicitFile && IsStandardStream(explicitFile->path)) {
        if (verify && !StoredContentMatches(facts.content, facts.sha256)) {
            throw std::runtime_error(DigestMismatch(input));
        }
        if (!WriteStandardOutput(facts.content)) {
            throw std::runtime_error(StandardOutputFailure());
        }
        return;
    }
    // The standard input has no name of its own: a derived output is named as if it were "stdin".
    const fs::path naming = IsStandardStream(record.input) ? fs::path(std::string(kStandardInputName)) : record.input;
    // A document stored without a name (other toolkits store none) is named after the input, with
    // the extension of its MIME type.
    const std::string name = facts.name.empty() ? naming.stem().string() + facts.document_extension : facts.name;
    const fs::path output = ResolveUnpackOutput(record.target, naming, name);
    Portability::AtomicFileWriter writer = OutputWriter(output, record.force);
    // A file is checked as it is written, and a mismatch leaves nothing behind: the writer is
    // dropped without taking the output's name. What is written through is checked first.
    const bool checkFirst = verify && Portability::IsWrittenThrough(output.string());
    if (checkFirst && !StoredContentMatches(facts.content, facts.sha256)) {
        throw std::runtime_error(DigestMismatch(input));
    }
    const bool checkWhileWriting = verify && !checkFirst;
    Portability::Sha256 digest;
    const bool written = writer.Open() && WriteContent(facts.content, writer, checkWhileWriting ? &digest : nullptr) &&
                         writer.size() == facts.content.Length();
    if (written && checkWhileWriting && !Matches(digest, facts.sha256)) throw std::runtime_error(DigestMismatch(input));
    if (!written || !writer.Commit()) {
        throw std::runtime_error(UnpackWriteFailure(writer.failure(), input, output));
    }
}

}  // namespace Dicapsule
