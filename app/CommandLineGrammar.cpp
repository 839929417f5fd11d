#include "app/CommandLineGrammar.h"

#include "app/OperationMessages.h"
#include "cmdline/UsageError.h"
#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/Common/TextUtils.h"

#include <climits>
#include <cstdlib>

namespace Dicapsule {

using LibCommandLineOperation::UsageError;
using Lumivale::DataModule::OutputEncoding;

namespace {

std::optional<std::string> UnlessEmpty(const std::string& field) {
    return field.empty() ? std::nullopt : std::optional<std::string>(field);
}

// atoi's reading, clamped to 32 bits instead of overflowing.
std::int32_t LeadingInteger(const std::string& text) {
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (value > INT32_MAX) return INT32_MAX;
    if (value < INT32_MIN) return INT32_MIN;
    return static_cast<std::int32_t>(value);
}

}  // namespace

IdentifierFields ParseIdentifier(const std::string& value) {
    const std::vector<std::string> fields = Lumivale::DataModule::SplitKeepingEmpty(value, ':');
    if (fields.size() > 4) throw UsageError(NotValid(value, "identifier string"));
    IdentifierFields identifier;
    identifier.study_instance_uid = UnlessEmpty(fields[0]);
    if (fields.size() > 1) identifier.series_instance_uid = UnlessEmpty(fields[1]);
    if (fields.size() > 2) identifier.sop_instance_uid = UnlessEmpty(fields[2]);
    if (fields.size() > 3 && !fields[3].empty()) identifier.instance_number = LeadingInteger(fields[3]);
    return identifier;
}

std::vector<ReferenceRecord> ParseReferenceOptions(const std::vector<std::string>& values) {
    std::vector<ReferenceRecord> references;
    for (const std::string& value : values) {
        ReferenceRecord record;
        if (!parse_reference(value, record)) throw UsageError(NotValid(value, "reference string"));
        references.push_back(std::move(record));
    }
    return references;
}

OutputEncoding::Enum ParseEncodingOption(const std::string& value) {
    OutputEncoding::Enum encoding = Lumivale::DataModule::OutputEncodingFromWord(value);
    if (encoding == OutputEncoding::unknown) encoding = Lumivale::DataModule::OutputEncodingFromTerm(value);
    if (encoding == OutputEncoding::unknown) throw UsageError(NotValid(value, "encoding"));
    return encoding;
}

InfoFormat ParseFormatOption(const std::string& value) {
    if (value == "xml") return InfoFormat::xml;
    if (value == "json") return InfoFormat::json;
    throw UsageError(NotValid(value, "format"));
}

PackClass ParsePackClassOption(const std::string& value) {
    if (value == "raw") return PackClass::raw;
    if (value == "document") return PackClass::document;
    if (value == "auto") return PackClass::automatic;
    throw UsageError(NotValid(value, "class"));
}

std::string TextFromUtf8(const std::string& utf8) {
    Lumivale::DataModule::FromUtf8(utf8);  // validates
    return utf8;
}

boost::filesystem::path PathFromUtf8(const std::string& utf8) {
    Lumivale::DataModule::FromUtf8(utf8);  // validates; file-system paths are UTF-8 on this platform
    return boost::filesystem::path(utf8);
}

boost::filesystem::path ResolvePackOutput(const std::optional<std::string>& output, const std::string& directory,
                                          const boost::filesystem::path& input) {
    if (output) return PathFromUtf8(*output);
    std::string name = input.filename().string();
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos && dot != 0) name.erase(dot);  // a leading dot starts a name, not an extension
    return PathFromUtf8(directory) / (name + ".dcm");
}

}  // namespace Dicapsule
