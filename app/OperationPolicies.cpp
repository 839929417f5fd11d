#include "app/OperationPolicies.h"

#include "app/CommandLineGrammar.h"
#include "app/OperationMessages.h"
#include "app/Operations.h"
#include "app/SharedOptions.h"
#include "app/StreamArguments.h"
#include "cmdline/UsageError.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace Dicapsule {

namespace po = boost::program_options;
using LibCommandLineOperation::UsageError;

namespace {

std::optional<std::string> OptionalText(const po::variables_map& values, const char* name) {
    if (!values.count(name)) return std::nullopt;
    return values[name].as<std::string>();
}

bool SwitchSet(const po::variables_map& values, const char* name) {
    return values.count(name) && values[name].as<bool>();
}

boost::filesystem::path RequiredInput(const po::variables_map& values) {
    const std::optional<std::string> input = OptionalText(values, "input");
    if (!input) throw UsageError(OptionRequired("input"));
    return PathFromUtf8(*input);
}

}  // namespace

std::vector<LibCommon::OptionGroup> PackOperationPolicy::describe() {
    return {Options::Input(),         Options::Metadata(),   Options::PackOutput(), Options::Encoding(),
            Options::Force(),         Options::HackForBmPacs(), Options::Identifier(), Options::Reference(),
            Options::Modality(),      Options::Thumbnail(),     Options::Name(),      Options::NoDigest(),
            Options::PackClass()};
}

PackRecord PackOperationPolicy::make_record(const po::variables_map& values) {
    PackRecord record;
    if (const auto thumbnail = OptionalText(values, "thumbnail")) record.thumbnail = PathFromUtf8(*thumbnail);
    record.modality = OptionalText(values, "Modality");

    const std::optional<std::string> metadata = OptionalText(values, "metadata");
    if (!metadata) throw UsageError(OptionRequired("metadata"));
    record.metadata = TextFromUtf8(*metadata);  // a path or the document itself

    if (values.count("reference")) {
        record.references = ParseReferenceOptions(values["reference"].as<std::vector<std::string>>());
    }
    record.input = RequiredInput(values);
    if (const auto name = OptionalText(values, "name")) record.name = TextFromUtf8(*name);
    if (const auto identifier = OptionalText(values, "Identifier")) record.identifier = ParseIdentifier(*identifier);
    // The standard input has no name of its own: a derived output is named after the stored name.
    const boost::filesystem::path naming =
        IsStandardStream(record.input) ? PathFromUtf8(record.name.value_or(std::string(kStandardInputName))) : record.input;
    record.output = ResolvePackOutput(OptionalText(values, "output"), values["Output"].as<std::string>(), naming);

    record.hackforbmpacs = SwitchSet(values, "hackforbmpacs");
    if (record.hackforbmpacs && !record.thumbnail) {
        // An ordinary error on purpose: reported without the usage text.
        throw std::runtime_error(HackWithoutThumbnail());
    }
    record.force = SwitchSet(values, "force");
    record.digest = !SwitchSet(values, "no-digest");
    if (const auto encoding = OptionalText(values, "encoding")) record.encoding = ParseEncodingOption(*encoding);
    if (const auto packClass = OptionalText(values, "class")) record.pack_class = ParsePackClassOption(*packClass);
    return record;
}

void PackOperationPolicy::execute(int argc, const char* const argv[], const PackRecord& record) {
    pack(argc, argv, record);
}

std::vector<LibCommon::OptionGroup> InfoOperationPolicy::describe() { return {Options::Input(), Options::Format()}; }

InfoRecord InfoOperationPolicy::make_record(const po::variables_map& values) {
    InfoRecord record{RequiredInput(values)};
    record.format = ParseFormatOption(values["format"].as<std::string>());
    return record;
}

void InfoOperationPolicy::execute(int, const char* const[], const InfoRecord& record) { info(record); }

std::vector<LibCommon::OptionGroup> UnpackOperationPolicy::describe() {
    return {Options::UnpackInput(), Options::UnpackOutput(), Options::Force(), Options::NoVerify()};
}

UnpackRecord UnpackOperationPolicy::make_record(const po::variables_map& values) {
    UnpackRecord record;
    const std::optional<std::string> output = OptionalText(values, "output");
    const bool use_original_name = SwitchSet(values, "use-original-name");
    if (use_original_name && output) throw UsageError(OriginalNameWithOutput());
    if (output) {
        record.target = OutputFile{PathFromUtf8(*output)};
    } else {
        record.target = OutputDirectory{PathFromUtf8(values["Output"].as<std::string>()), use_original_name};
    }
    if (!values.count("input")) throw UsageError("The --input option is required.");
    const auto inputs = values["input"].as<std::vector<std::string>>();
    record.input = PathFromUtf8(inputs.front());
    for (std::size_t i = 1; i < inputs.size(); ++i) record.other_inputs.push_back(PathFromUtf8(inputs[i]));
    record.force = SwitchSet(values, "force");
    record.verify = !SwitchSet(values, "no-verify");
    return record;
}

void UnpackOperationPolicy::execute(int, const char* const[], const UnpackRecord& record) { unpack(record); }

}  // namespace Dicapsule
