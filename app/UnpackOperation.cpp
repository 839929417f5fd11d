#include "app/Operations.h"
#include "app/Payload.h"
#include "app/QuotedPath.h"
#include "app/UnpackOutputName.h"
#include "Portability/Misc/AtomicFileWriter.h"

#include <boost/filesystem/operations.hpp>

#include <stdexcept>

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
        return region->IsInsideFile() && writer.CopyFrom(region->file->Descriptor(), region->offset, region->length);
    }
    const auto bytes = content.MemoryBytes();
    return writer.Write(bytes.data(), bytes.size());
}

}  // namespace

void unpack(const UnpackRecord& record) {
    const std::string input = record.input.string();
    PayloadFacts facts;
    const PayloadReadResult result = read_payload(input, true, facts);
    if (result != PayloadReadResult::success) throw std::runtime_error(ReadFailure(result, input));

    // A document stored without a name (other toolkits store none) is named after the input, with
    // the extension of its MIME type.
    const std::string name = facts.name.empty() ? record.input.stem().string() + facts.document_extension : facts.name;
    const fs::path output = ResolveUnpackOutput(record.target, record.input, name);
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
