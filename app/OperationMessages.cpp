#include "app/OperationMessages.h"

#include "app/QuotedPath.h"
#include "Foundations/LVCodec/module/ThumbnailIcon.h"

#include <boost/filesystem/operations.hpp>

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
        case PayloadReadResult::bad_reference_text:
            return "Could not parse one of the reference strings of the input file " + QuotedPath(input) + ".";
        case PayloadReadResult::name_too_long:
        case PayloadReadResult::command_line_too_long:
        case PayloadReadResult::references_too_long:
            return StoredTextTooLongMessage(result, input);
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

std::string AlreadyExists(const boost::filesystem::path& output) {
    return QuotedPath(output.string()) + " already exists. Use the --force option to overwrite it.";
}

}  // namespace Dicapsule
