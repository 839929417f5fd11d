#include "app/OperationMessages.h"

#include "app/QuotedPath.h"
#include "Foundations/LVCodec/module/ThumbnailIcon.h"

#include <boost/filesystem/operations.hpp>

#include "Portability/Misc/TemporaryFile.h"

namespace Dicapsule {

namespace {

// What a pack failure adds when the output's directory is missing.
std::string MissingDirectoryNote(const boost::filesystem::path& output) {
    const boost::filesystem::path directory = output.parent_path();
    boost::system::error_code error;
    if (directory.empty() || boost::filesystem::exists(directory, error)) return "";
    return " The directory " + QuotedPath(directory.string()) + " does not exist.";
}

// Unpack's message when the payload cannot be taken out of its file.
std::string ExtractFailure(const std::string& input) {
    return "Could not extract the packed file from the input file " + QuotedPath(input) + ".";
}

// Unpack's message when a directory target would take a name that could lead out of it.
std::string NotPlainName(const std::string& which, const std::string& name, const std::string& how,
                         const std::string& input) {
    return "The " + which + " " + QuotedPath(name) + " " + how + " the input file " + QuotedPath(input) +
           " is not a plain file name; use the --output option.";
}

}  // namespace

std::string ConversionFailure(ConversionResult result, const ConversionRequest& request) {
    const std::string thumbnail = request.thumbnail ? QuotedPath(*request.thumbnail) + " " : "";
    switch (result) {
        case ConversionResult::written:
            return "";
        case ConversionResult::metadata_unusable:
            return "The metadata file " + QuotedPath(request.metadata) + " either doesn't exist or is ill-formed.";
        case ConversionResult::thumbnail_not_loaded:
            return request.thumbnail ? "Could not load the thumbnail file " + QuotedPath(*request.thumbnail) + "."
                                     : "Could not load the thumbnail file.";
        case ConversionResult::thumbnail_not_inserted:
            return "Could not insert the thumbnail file " + thumbnail + "into the output Dicom file.";
        case ConversionResult::imaging_module_unavailable:
            return "Could not load the imaging module " + QuotedPath(Lumivale::Imaging::ImagingModuleName()) + ".";
        case ConversionResult::output_not_written:
            return "Could not write the output Dicom file " + QuotedPath(request.output) + "." +
                   MissingDirectoryNote(request.output);
        default:
            return "Could not create the output Dicom file";
    }
}

std::string PayloadReadFailure(PayloadReadResult result, const std::string& input, PayloadReader reader) {
    switch (result) {
        case PayloadReadResult::load_failed:
            return "Could not load the input file " + QuotedPath(input) + ".";
        case PayloadReadResult::not_packed:
            return "The input file " + QuotedPath(input) +
                   " misses Dicapsule custom data. It seems it hasn't been created by Dicapsule.";
        case PayloadReadResult::bad_part:
            return "The input file " + QuotedPath(input) + " holds malformed facts of a part of a packed file.";
        case PayloadReadResult::bad_reference_text:
            return "Could not parse one of the reference strings of the input file " + QuotedPath(input) + ".";
        case PayloadReadResult::name_too_long:
        case PayloadReadResult::command_line_too_long:
        case PayloadReadResult::references_too_long:
            return StoredTextTooLong(result, input);
        default:
            return reader == PayloadReader::unpack
                       ? ExtractFailure(input)
                       : "Could not get the info of the input file " + QuotedPath(input) + ".";
    }
}

std::string UnpackWriteFailure(Portability::WriteFailure failure, const std::string& input,
                               const boost::filesystem::path& output) {
    const std::string quoted = QuotedPath(output.string());
    switch (failure) {
        case Portability::WriteFailure::target_exists:
            return AlreadyExists(output);
        case Portability::WriteFailure::source:
            return ExtractFailure(input);
        case Portability::WriteFailure::no_space:
            return "Could not write " + quoted + ". Its file system is full.";
        case Portability::WriteFailure::read_only:
            return "Could not open " + quoted + ". Its file system is read-only.";
        default:
            return "Could not open " + quoted + "." + MissingDirectoryNote(output);
    }
}

std::string InputUnreadable(const std::string& input) { return "Could not read " + QuotedPath(input) + "."; }

std::string PartsWithoutFileNames(const std::string& input, std::uint64_t size, std::size_t parts,
                                  const std::string& output) {
    const std::string target = output.empty() ? "the standard output" : QuotedPath(output);
    return "The input file " + QuotedPath(input) + " (" + std::to_string(size) + " bytes) is packed into " +
           std::to_string(parts) + " files: use the --output or --Output option rather than " + target + ".";
}

std::string PartMismatch(const std::string& input, unsigned index, const std::string& path) {
    return "Part " + std::to_string(index) + " of the packed file of the input file " + QuotedPath(input) + ", in " +
           QuotedPath(path) + ", does not match its SHA-256 digest.";
}

std::string PartSetFailure(const PartSetCheck& check, const std::vector<FoundPart>& parts, unsigned count,
                           const std::string& input) {
    const std::string of = " of the packed file of the input file " + QuotedPath(input);
    switch (check.problem) {
        case PartSetProblem::missing:
            return "Part " + std::to_string(check.index) + " of " + std::to_string(count) + of + " was not found.";
        case PartSetProblem::duplicated:
            return "Part " + std::to_string(check.index) + of + " is held twice, by " +
                   QuotedPath(parts[check.first].path) + " and " + QuotedPath(parts[check.second].path) + ".";
        default:
            return "The parts" + of + " do not agree on its size or layout (part " + std::to_string(check.index) + ").";
    }
}

std::string ForeignPart(const std::string& other, const std::string& input) {
    return "The input file " + QuotedPath(other) + " is not a part of the packed file of the input file " +
           QuotedPath(input) + ".";
}

std::string WholeWithOthers(const std::string& input) {
    return "The input file " + QuotedPath(input) + " holds a whole packed file: give it alone.";
}

std::string AlreadyExists(const boost::filesystem::path& output) {
    return QuotedPath(output.string()) + " already exists. Use the --force option to overwrite it.";
}

std::string NotValid(std::string_view value, std::string_view what) {
    return "\"" + std::string(value) + "\" is not a valid " + std::string(what) + ".";
}

std::string OptionRequired(std::string_view option) { return "The --" + std::string(option) + " option is required."; }

std::string OperationMissing() { return "The operation is missing."; }

std::string OriginalNameWithOutput() { return "The --use-original-name and --output options are incompatible."; }

std::string HackWithoutThumbnail() {
    return "The --thumbnail option must be used when using the --hackforbmpacs option.";
}

std::string PackInputFailure(Portability::InputFile::Status status, const std::string& input, std::uint64_t size,
                             std::uint64_t limit) {
    switch (status) {
        case Portability::InputFile::Status::too_large:
            return "The input file " + QuotedPath(input) + " is too large to be packed (" + std::to_string(size) +
                   " bytes): a DICOM value holds at most " + std::to_string(limit) + " bytes.";
        case Portability::InputFile::Status::no_temporary_space:
            return InputUnreadable(input) + " The temporary directory " + QuotedPath(Portability::TemporaryDirectory()) +
                   " is full.";
        default:
            return InputUnreadable(input);
    }
}

std::string NotADocument(const std::string& input) {
    return "The input file " + QuotedPath(input) + " is not a PDF, CDA, STL, OBJ or MTL document.";
}

std::string InvalidUidRoot(const std::string& root, std::string_view variable) {
    return "The UID root " + QuotedPath(root) + " in " + std::string(variable) + " is not valid.";
}

std::string InputChanged(const std::string& input) {
    return "The input file " + QuotedPath(input) + " changed while it was being packed.";
}

std::string StoredTextTooLong(PayloadReadResult result, const std::string& input) {
    const auto message = [&](const char* what, std::uint64_t limit) {
        return "The input file " + QuotedPath(input) + " stores " + what + " longer than " + std::to_string(limit) +
               " bytes.";
    };
    switch (result) {
        case PayloadReadResult::name_too_long: return message("a name", kMaxStoredNameBytes);
        case PayloadReadResult::command_line_too_long: return message("a command line", kMaxCommandLineBytes);
        case PayloadReadResult::references_too_long: return message("a references text", kMaxReferencesBytes);
        default: return {};
    }
}

std::string DigestMismatch(const std::string& input) {
    return "The packed file of the input file " + QuotedPath(input) + " does not match its SHA-256 digest.";
}

std::string StandardOutputFailure() { return "Could not write to the standard output."; }

std::string StoredNameNotPlain(const std::string& name, const std::string& input) {
    return NotPlainName("original file name", name, "stored in", input);
}

std::string DerivedNameNotPlain(const std::string& name, const std::string& input) {
    return NotPlainName("output file name", name, "derived from", input);
}

}  // namespace Dicapsule
