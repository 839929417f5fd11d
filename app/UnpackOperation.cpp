#include "app/OperationMessages.h"
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
    if (result != PayloadReadResult::success) throw std::runtime_error(PayloadReadFailure(result, input, PayloadReader::unpack));

    const fs::path output = ResolveUnpackOutput(record.target, record.input, facts.name);
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
