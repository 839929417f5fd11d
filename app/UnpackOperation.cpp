#include "app/Operations.h"
#include "app/Payload.h"
#include "app/ProgressLine.h"
#include "app/QuotedPath.h"
#include "app/StreamArguments.h"
#include "app/UnpackOutputName.h"
#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/Sha256.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <variant>

namespace Dicapsule {

namespace {

namespace fs = boost::filesystem;

std::string ReadFailure(PayloadReadResult result, const std::string& input) {
    switch (result) {
        case PayloadReadResult::load_failed:
            return "Could not load the input file " + QuotedPath(input) + ".";
        case PayloadReadResult::not_packed:
            return "The input file " + QuotedPath(input) +
                   " misses Dicapsule custom data. It seems it hasn't been created by Dicapsule.";
        case PayloadReadResult::bad_reference_text:
            return "Could not parse one of the reference strings of the input file " + QuotedPath(input) + ".";
        default:
            return "Could not extract the packed file from the input file " + QuotedPath(input) + ".";
    }
}

// Copy the content into the writer: straight from the packed file when it stayed there. With a
// digest, the bytes as written are fed to it.
bool WriteContent(const Lumivale::DataModule::ByteBuffer& content, Portability::AtomicFileWriter& writer,
                  Portability::Sha256* digest) {
    if (const Lumivale::DataModule::FileRegion* region = content.Region()) {
        return region->IsInsideFile() &&
               writer.CopyFrom(region->file->Descriptor(), region->offset, region->length, digest) &&
               region->file->Unchanged();
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

}  // namespace

void unpack(const UnpackRecord& record) {
    const std::string input = record.input.string();
    ProgressLine progress;  // a piped input first, of a size not known until its end
    Portability::InputFile file;
    PayloadFacts facts;
    const PayloadReadResult result = OpenInput(record.input, file, UINT64_MAX) == Portability::InputFile::Status::opened
                                         ? read_payload(file.File(), true, facts)
                                         : PayloadReadResult::load_failed;
    if (result != PayloadReadResult::success) throw std::runtime_error(ReadFailure(result, input));
    progress.Restart(facts.content.Length());

    if (const auto* explicitFile = std::get_if<OutputFile>(&record.target);
        explicitFile && IsStandardStream(explicitFile->path)) {
        if (!WriteStandardOutput(facts.content)) {
            throw std::runtime_error("Could not write to the standard output.");
        }
        return;
    }
    // The standard input has no name of its own: a derived output is named as if it were "stdin".
    const fs::path naming = IsStandardStream(record.input) ? fs::path(std::string(kStandardInputName)) : record.input;
    const fs::path output = ResolveUnpackOutput(record.target, naming, facts.name);
    const std::string exists = QuotedPath(output.string()) + " already exists. Use the --force option to overwrite it.";
    boost::system::error_code error;
    const fs::file_type type = fs::status(output, error).type();
    if (!record.force && type != fs::status_unknown && type != fs::file_not_found) throw std::runtime_error(exists);

    // Without --force the last step refuses an output that appeared since the check above.
    Portability::AtomicFileWriter writer(output.string(), record.force ? Portability::ExistingTarget::replace
                                                                       : Portability::ExistingTarget::refuse);
    // Files packed without a digest (by earlier versions, or other writers) have nothing to check.
    const bool verify = record.verify && !facts.sha256.empty();
    Portability::Sha256 digest;
    const bool written = writer.Open() && WriteContent(facts.content, writer, verify ? &digest : nullptr) &&
                         writer.size() == facts.content.Length();
    // A mismatch leaves nothing behind: the writer is dropped without taking the output's name.
    if (written && verify && !Matches(digest, facts.sha256)) {
        throw std::runtime_error("The packed file of the input file " + QuotedPath(input) +
                                 " does not match its SHA-256 digest.");
    }
    if (!written || !writer.Commit()) {
        if (writer.failure() == Portability::WriteFailure::target_exists) throw std::runtime_error(exists);
        std::string message = "Could not open " + QuotedPath(output.string()) + ".";
        const fs::path directory = output.parent_path();
        if (!directory.empty() && !fs::exists(directory, error)) {
            message += " The directory " + QuotedPath(directory.string()) + " does not exist.";
        }
        throw std::runtime_error(message);
    }
}

}  // namespace Dicapsule
