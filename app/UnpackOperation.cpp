#include "app/Operations.h"
#include "app/Payload.h"
#include "app/ProgressLine.h"
#include "app/QuotedPath.h"
#include "app/StreamArguments.h"
#include "app/UnpackOutputName.h"
#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/Progress.h"

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

// Copy the content into the writer: straight from the packed file when it stayed there.
bool WriteContent(const Lumivale::DataModule::ByteBuffer& content, Portability::AtomicFileWriter& writer) {
    if (const Lumivale::DataModule::FileRegion* region = content.Region()) {
        if (!region->IsInsideFile()) return false;
        // In steps reported as progress, each a multiple of the block size so that a clone stays possible.
        constexpr std::uint64_t kStep = 64u << 20;
        for (std::uint64_t done = 0; done < region->length;) {
            const std::uint64_t size = std::min(region->length - done, kStep);
            if (!writer.CopyFrom(region->file->Descriptor(), region->offset + done, size)) return false;
            done += size;
            Portability::ReportProgress(size);
        }
        return true;
    }
    const auto bytes = content.MemoryBytes();
    return writer.Write(bytes.data(), bytes.size());
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
    if (!writer.Open() || !WriteContent(facts.content, writer) || writer.size() != facts.content.Length() ||
        !writer.Commit()) {
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
