#include "app/ConversionEngine.h"
#include "app/OperationMessages.h"
#include "app/Operations.h"
#include "app/Payload.h"
#include "app/QuotedPath.h"
#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/Enumerations/Modality.h"
#include "Foundations/DataModule/Values/UIDDataType.h"
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
constexpr const char* kProductVersion = "2.0.10";

namespace fs = boost::filesystem;

// True when something (file, directory, anything) already answers to path; a symbolic link is
// followed unless told otherwise.
bool Exists(const fs::path& path, bool follow = true) {
    boost::system::error_code error;
    const fs::file_type type = (follow ? fs::status(path, error) : fs::symlink_status(path, error)).type();
    return type != fs::status_unknown && type != fs::file_not_found;
}

// The input opened for the whole run, so that a missing or unreadable input fails here, before
// the metadata and thumbnail are loaded; the payload then travels as a region of it.
Lumivale::DataModule::ByteBuffer OpenPayload(const fs::path& input, Portability::InputFile& file) {
    switch (file.Open(input.string(), kMaxPayloadBytes)) {
        case Portability::InputFile::Status::opened:
            break;
        case Portability::InputFile::Status::too_large:
            throw std::runtime_error("The input file " + QuotedPath(input.string()) + " is too large to be packed (" +
                                     std::to_string(file.Size()) + " bytes): a DICOM value holds at most " +
                                     std::to_string(kMaxPayloadBytes) + " bytes.");
        default:
            throw std::runtime_error("Could not read " + QuotedPath(input.string()) + ".");
    }
    return Lumivale::DataModule::ByteBuffer::OfFileRegion({file.File(), 0, file.Size()});
}

// A modality given on the command line must be one of the defined terms (case and blanks aside).
void RequireKnownModality(const std::optional<std::string>& modality) {
    namespace dm = Lumivale::DataModule;
    if (modality && dm::CodedStringTraits<dm::Modality::Enum>::FromTerm(dm::ToUpperAscii(dm::TrimBlanks(*modality))) ==
                        dm::Modality::unknown) {
        throw std::runtime_error("\"" + *modality + "\" is not a valid modality.");
    }
}

void RequireValidUid(const std::string& uid) {
    if (!Lumivale::DataModule::IsValidUid(uid)) throw std::runtime_error("\"" + uid + "\" is not a valid UID.");
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

std::string AlreadyExists(const fs::path& output) {
    return QuotedPath(output.string()) + " already exists. Use the --force option to overwrite it.";
}

}  // namespace

void pack(int argc, const char* const argv[], const PackRecord& record) {
    if (!record.force && Exists(record.output)) throw std::runtime_error(AlreadyExists(record.output));
    RequireValidUids(record.identifier, record.references);
    RequireKnownModality(record.modality);

    Portability::InputFile input;
    ConversionRequest request;
    request.content = OpenPayload(record.input, input);
    request.command_line = RecordCommandLine(argc, argv);
    request.original_name = record.input.filename().string();
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
    request.replace_existing = record.force;

    const ConversionResult result = convert(request);
    // Without --force the write refuses whatever took the name since the check above (a dangling
    // symbolic link included, which that check follows and cannot see).
    if (result == ConversionResult::output_not_written && !record.force && Exists(record.output, false)) {
        throw std::runtime_error(AlreadyExists(record.output));
    }
    if (result != ConversionResult::written) throw std::runtime_error(ConversionFailure(result, request));
}

}  // namespace Dicapsule
