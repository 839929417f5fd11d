#include "app/SharedOptions.h"

#include "Foundations/DataModule/CharSet/OutputEncoding.h"
#include "Foundations/DataModule/Common/TextUtils.h"

#include <boost/program_options/value_semantic.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace Dicapsule::Options {

namespace po = boost::program_options;

namespace {

LibCommon::OptionDescription Text(const char* names, const char* help) {
    return boost::make_shared<po::option_description>(names, po::value<std::string>(), help);
}

LibCommon::OptionDescription Switch(const char* names, const char* help) {
    return boost::make_shared<po::option_description>(names, po::bool_switch(), help);
}

LibCommon::OptionDescription OutputDirectory(const char* help) {
    return boost::make_shared<po::option_description>("Output,O", po::value<std::string>()->default_value("."), help);
}

const LibCommon::OptionDescription& OutputFile() {
    static const auto option = Text("output,o", "Path to the output file.");
    return option;
}

// "- WORD     (term)" for each encoding, the words upper-case and padded to one column.
std::string EncodingValueLines() {
    constexpr std::size_t kWordColumn = 8;
    std::string lines;
    for (const Lumivale::DataModule::OutputEncodingRow& row : Lumivale::DataModule::OutputEncodingRows()) {
        std::string word = Lumivale::DataModule::ToUpperAscii(row.word);
        word.resize(std::max(word.size(), kWordColumn), ' ');
        lines += "- " + word + " (" + std::string(row.helpTerm) + ")\n";
    }
    return lines;
}

}  // namespace

const LibCommon::OptionGroup& Input() {
    static const LibCommon::OptionGroup group{Text("input,i", "Input filename for the operation.")};
    return group;
}

const LibCommon::OptionGroup& UnpackInput() {
    static const LibCommon::OptionGroup group{boost::make_shared<po::option_description>(
        "input,i", po::value<std::vector<std::string>>(),
        "Input filename for the operation. A payload packed into several files is restored from any one of "
        "them when the others are in the same directory, or from all of them, each given with --input.")};
    return group;
}

const LibCommon::OptionGroup& Metadata() {
    static const LibCommon::OptionGroup group{Text(
        "metadata,m",
        "Metadata filename or stream for the operation.\n"
        "Used for providing additional required demographics information (i.e. patient, study, series, and "
        "equipment) in order to ensure proper compliance to the DICOM Standard.\n"
        "Might be either an existing DICOM Part 10 compliant file, from which, Patient, Study and optionally "
        "Series and Equipment information will be extracted, or an XML file or string which schema shall conform "
        "to ConvertixToFp edition operation specifications.\n"
        "Note: It is expected that a minimum set of attributes will be provided.")};
    return group;
}

const LibCommon::OptionGroup& PackOutput() {
    static const LibCommon::OptionGroup group{
        OutputFile(),
        OutputDirectory("Path to the directory where the output file will be created.\n"
                        "Output file basename (without extension) will be the input file's one. Extension will be "
                        "\".dcm\"."),
    };
    return group;
}

const LibCommon::OptionGroup& UnpackOutput() {
    static const LibCommon::OptionGroup group{
        OutputFile(),
        OutputDirectory("Path to the directory where the output file will be created.\n"
                        "Output file basename (without extension) will be the input file's one. Extension will be "
                        "the one of the original file that has been packed."),
        Switch("use-original-name,u",
               "Use the basename (with extension) of the original file that has been packed as output filename.\n"
               "Condition: --Output parameter used"),
    };
    return group;
}

const LibCommon::OptionGroup& Encoding() {
    static const std::string help =
        "Specifies the output file character set according to the given encoding value.\n"
        "Enumerated values:\n" +
        EncodingValueLines() +
        "Note: by default the output file is encoded in the same character set than the metadata file one's, if "
        "it is DICOM Part 10 compliant, or as clearly specified in the given XML file or stream, if any.";
    static const LibCommon::OptionGroup group{Text("encoding,e", help.c_str())};
    return group;
}

const LibCommon::OptionGroup& Force() {
    static const LibCommon::OptionGroup group{
        Switch("force,f", "Recreate the output file if it already exists.\nNote: an error is raised otherwise.")};
    return group;
}

const LibCommon::OptionGroup& NoDigest() {
    static const LibCommon::OptionGroup group{Switch(
        "no-digest",
        "Do not record the SHA-256 digest of the packed file.\n"
        "Note: by default it is recorded, and unpack checks the packed file against it.")};
    return group;
}

const LibCommon::OptionGroup& NoVerify() {
    static const LibCommon::OptionGroup group{Switch(
        "no-verify",
        "Do not check the packed file against its recorded SHA-256 digest.\n"
        "Note: by default a packed file that does not match its digest is not written.")};
    return group;
}

const LibCommon::OptionGroup& HackForBmPacs() {
    static const LibCommon::OptionGroup group{Switch(
        "hackforbmpacs",
        "A mean for \"duplicating\" the thumbnail within the regular DICOM image pixel attributes in order to "
        "bypass Brightmoor PACS limitations.\n"
        "Condition: --thumbnail option used")};
    return group;
}

const LibCommon::OptionGroup& Identifier() {
    static const LibCommon::OptionGroup group{Text(
        "Identifier,I",
        "String containing the hierarchical list of \"UID's\" of the instance to create, in the form:\n"
        "\"[StudyInstanceUID]:[SeriesInstanceUID]:[SOPInstanceUID]:[InstanceNumber]\"\n"
        "Note: All values in this list are optional. Only ':' characters are required. Nevertheless, trailing ':' "
        "characters may be omitted.\n"
        "If absent, such information shall be extracted either from the given metadata or automatically "
        "generated.\n"
        "Such list is necessary for performing a direct C-MOVE DICOM request on such referenced instance.\n"
        "Note: It is assumed that the Patient ID is provided thru the metadata.\n"
        "Note: 'InstanceNumber' is optional. '1' is assumed if not provided.")};
    return group;
}

const LibCommon::OptionGroup& Reference() {
    static const LibCommon::OptionGroup group{boost::make_shared<po::option_description>(
        "reference,r", po::value<std::vector<std::string>>(),
        "String containing the hierarchical list of \"UID's\" of a referenced instance, in the form:\n"
        "\"StudyInstanceUID:SeriesInstanceUID:SOPInstanceUID:[SOPClassUID]\"\n"
        "Note: SOPClassUID is optional in this list In such case, trailing ':' character may be omitted.\n"
        "If absent, such information shall be extracted from the given metadata.\n"
        "Such list is necessary for performing a direct C-MOVE DICOM request on such referenced instance.\n"
        "Note: It is assumed that the Patient ID is provided thru the metadata. \n"
        "Note: This parameter can be multiple.\n"
        "Note: 'SOPClassUID' is optional.")};
    return group;
}

const LibCommon::OptionGroup& Modality() {
    static const LibCommon::OptionGroup group{Text(
        "Modality,M",
        "Override the DICOM Modality (0008,0060) attribute standard value defined in the metadata file.\n"
        "Note: Such attribute may be useful for later Query filtering from PACS.")};
    return group;
}

const LibCommon::OptionGroup& Thumbnail() {
    static const LibCommon::OptionGroup group{Text(
        "thumbnail,t",
        "Thumbnail filename for the operation.\n"
        "Might be used for specifying Icon Image Sequence (0088,0200) attribute content.\n"
        "Supported file formats: JPEG, PNG, TIF, BMP")};
    return group;
}

const LibCommon::OptionGroup& Name() {
    static const LibCommon::OptionGroup group{Text(
        "name",
        "Original file name stored with the packed file, in place of the input file's name (\"stdin\" "
        "when the input is the standard input).")};
    return group;
}

const LibCommon::OptionGroup& Format() {
    static const LibCommon::OptionGroup group{boost::make_shared<po::option_description>(
        "format", po::value<std::string>()->default_value("xml"),
        "Output format: \"xml\" (an XML document) or \"json\" (one JSON object).")};
    return group;
}

const LibCommon::OptionGroup& PackClass() {
    static const LibCommon::OptionGroup group{Text(
        "class,c",
        "Specifies the SOP class of the output file.\n"
        "Enumerated values:\n"
        "- raw      (Raw Data Storage; default)\n"
        "- document (Encapsulated PDF, CDA, STL, OBJ or MTL)\n"
        "- auto     (document when possible, raw otherwise)\n"
        "Note: PDF, CDA and binary STL files are recognised by their content, OBJ and MTL files by their "
        "extension. An ASCII STL file is not a DICOM STL document.")};
    return group;
}

}  // namespace Dicapsule::Options
