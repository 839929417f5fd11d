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
    boost::system::error_code error;
    const fs::file_type type = fs::status(output, error).type();
    // A device, FIFO or descriptor (/dev/null, /dev/stdout) is written through, never replaced.
    if (!record.force && type != fs::status_unknown && type != fs::file_not_found &&
        !Portability::IsWrittenThrough(output.string())) {
        throw std::runtime_error(AlreadyExists(output));
    }

    // Without --force the last step refuses an output that appeared since the check above.
    Portability::AtomicFileWriter writer(output.string(), record.force ? Portability::ExistingTarget::replace
                                                                       : Portability::ExistingTarget::refuse);
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
