#include "app/ConversionEngine.h"
#include "app/DocumentType.h"
#include "app/OperationMessages.h"
#include "app/Operations.h"
#include "app/PackParts.h"
#include "app/Payload.h"
#include "app/ProgressLine.h"
#include "app/StreamArguments.h"
#include "app/Version.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/Enumerations/Modality.h"
#include "Foundations/DataModule/Uid/OrganisationUidRoot.h"
#include "Foundations/DataModule/Values/UIDDataType.h"
#include "Foundations/LVCodec/module/ThumbnailIcon.h"
#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/InputFile.h"
#include "Portability/Misc/Utf8Path.h"

#include <boost/filesystem/operations.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace Dicapsule {

namespace {

constexpr const char* kProductName = "Dicapsule";

namespace fs = boost::filesystem;

// True when something (file, directory, anything) already answers to path; a symbolic link is
// followed unless told otherwise. A device, FIFO or descriptor (/dev/null, /dev/stdout) does not
// count: it is written through, never replaced.
bool Exists(const fs::path& path, bool follow = true) {
    if (Portability::IsWrittenThrough(path.string())) return false;
    boost::system::error_code error;
    const fs::file_type type = (follow ? fs::status(path, error) : fs::symlink_status(path, error)).type();
    return type != fs::status_unknown && type != fs::file_not_found;
}

// The input opened for the whole run, so that a missing or unreadable input fails here, before
// the metadata and thumbnail are loaded; the payload then travels as a region of it.
// A document is one value: its payload is refused beyond kMaxPayloadBytes; a raw payload beyond
// it is split into parts.
Lumivale::DataModule::ByteBuffer OpenPayload(const fs::path& input, Portability::InputFile& file, bool oneValue) {
    const Portability::InputFile::Status status = OpenInput(input, file, oneValue ? kMaxPayloadBytes : UINT64_MAX);
    if (status != Portability::InputFile::Status::opened) {
        throw std::runtime_error(PackInputFailure(status, input.string(), file.Size(), kMaxPayloadBytes));
    }
    return Lumivale::DataModule::ByteBuffer::OfFileRegion({file.File(), 0, file.Size()});
}

// A modality given on the command line must be one of the defined terms (case and blanks aside).
void RequireKnownModality(const std::optional<std::string>& modality) {
    namespace dm = Lumivale::DataModule;
    if (modality && dm::CodedStringTraits<dm::Modality::Enum>::FromTerm(dm::ToUpperAscii(dm::TrimBlanks(*modality))) ==
                        dm::Modality::unknown) {
        throw std::runtime_error(NotValid(*modality, "modality"));
    }
}

void RequireValidUid(const std::string& uid) {
    if (!Lumivale::DataModule::IsValidUid(uid)) throw std::runtime_error(NotValid(uid, "UID"));
}

// The UIDs of --Identifier and --reference land in the instance as they are: both are checked alike.
void RequireValidUids(const IdentifierFields& identifier, const std::vector<ReferenceRecord>& references) {
    for (const auto* uid : {&identifier.study_instance_uid, &identifier.series_instance_uid,
                            &identifier.sop_instance_uid}) {
        if (*uid) RequireValidUid(**uid);
    }
    for (const ReferenceRecord& reference : references) {
        for (const std::string* uid : {&reference.study_instance_uid, &reference.series_instance_uid,
                                       &reference.sop_instance_uid, &reference.sop_class_uid}) {
            if (!uid->empty()) RequireValidUid(*uid);
        }
    }
}

// The document class of the payload for --class document and auto; none for raw, and none for
// auto when the payload is of no such class. The name stored for the payload gives the extension.
std::optional<DetectedDocument> ChooseDocumentClass(PackClass packClass, const fs::path& input, const std::string& name,
                                                   const Lumivale::DataModule::ByteBuffer& content) {
    if (packClass == PackClass::raw) return std::nullopt;
    std::optional<DetectedDocument> document = DetectDocument(content, name);
    if (!document && packClass == PackClass::document) {
        throw std::runtime_error(NotADocument(input.string()));
    }
    return document;
}

// A site's own UID root, taken before anything is read or written.
void TakeUidRoot() {
    std::string refused;
    if (!Lumivale::DataModule::TakeUidRootFromEnvironment(refused)) {
        throw std::runtime_error(InvalidUidRoot(refused, Lumivale::DataModule::kUidRootVariable));
    }
}

// The name stored for the payload: --name, else the input's file name ("stdin" for the standard input).
std::string OriginalName(const PackRecord& record) {
    if (record.name) return *record.name;
    if (IsStandardStream(record.input)) return std::string(kStandardInputName);
    return record.input.filename().string();
}

}  // namespace

void pack(int argc, const char* const argv[], const PackRecord& record) {
    TakeUidRoot();
    const bool toStandardOutput = IsStandardStream(record.output);
    if (!toStandardOutput && !record.force && Exists(record.output)) throw std::runtime_error(AlreadyExists(record.output));
    RequireValidUids(record.identifier, record.references);
    RequireKnownModality(record.modality);

    ProgressLine progress;  // a piped input first, of a size not known until its end
    Portability::InputFile input;
    ConversionRequest request;
    request.content = OpenPayload(record.input, input, record.pack_class == PackClass::document);
    progress.Restart(input.Size());
    const std::vector<PayloadPart> plan = PlanParts(input.Size(), kMaxPayloadBytes);
    if (plan.size() > 1 && (toStandardOutput || Portability::IsWrittenThrough(record.output.string()))) {
        throw std::runtime_error(PartsWithoutFileNames(record.input.string(), input.Size(), plan.size(),
                                                       toStandardOutput ? std::string() : record.output.string()));
    }
    request.command_line = RecordCommandLine(argc, argv);
    request.original_name = OriginalName(record);
    // Parts are raw data instances, whatever the payload's class.
    if (plan.size() == 1) {
        request.document = ChooseDocumentClass(record.pack_class, record.input, request.original_name, request.content);
    }
    request.references = record.references;
    request.metadata = record.metadata;
    request.identifier = record.identifier;
    request.modality = record.modality;
    request.encoding = record.encoding;
    request.product_name = kProductName;
    request.product_version = kProductVersion;
    if (record.thumbnail) request.thumbnail = record.thumbnail->string();
    request.hackforbmpacs = record.hackforbmpacs;
    request.output = record.output.string();
    request.to_standard_output = toStandardOutput;
    request.replace_existing = record.force;
    request.digest = record.digest;
    if (plan.size() > 1) {
        PackParts(record, std::move(request), plan, input);
        return;
    }

    const ConversionResult result = convert(request);
    // The write refuses a payload whose file changed while it was copied; say so rather than blame the output.
    if (result == ConversionResult::output_not_written && !input.File()->Unchanged()) {
        throw std::runtime_error(InputChanged(record.input.string()));
    }
    // Without --force the write refuses whatever took the name since the check above (a dangling
    // symbolic link included, which that check follows and cannot see).
    if (result == ConversionResult::output_not_written && !toStandardOutput && !record.force &&
        Exists(record.output, false)) {
        throw std::runtime_error(AlreadyExists(record.output));
    }
    if (result != ConversionResult::written) throw std::runtime_error(ConversionFailure(result, request));
}

}  // namespace Dicapsule
