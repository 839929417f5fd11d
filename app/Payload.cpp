#include "app/Payload.h"

#include "app/QuotedPath.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Portability/Misc/Utf8Path.h"

#include <cstdint>
#include <variant>
#include <vector>

namespace Dicapsule {

using Lumivale::DataModule::ByteBuffer;
using Lumivale::DataModule::CustomDataStore;
namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

std::string RecordCommandLine(int argc, const char* const argv[]) {
    std::string line;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (i > 1) line += ' ';
        if (argument.find(' ') != std::string_view::npos) {
            line += '"';
            line += argument;
            line += '"';
        } else {
            line += argument;
        }
    }
    return line;
}

void store_payload(CustomDataStore& store, const ByteBuffer& content, const std::string& name,
                   const std::string& command_line, const std::vector<ReferenceRecord>& references) {
    store.SetText(std::string(kPackedFileNameKey), name);
    store.SetBytes(std::string(kPackedFileContentKey), content);
    store.SetText(std::string(kCommandLineKey), command_line);
    if (!references.empty()) store.SetText(std::string(kInstanceReferencesKey), FormatReferences(references));
}

namespace {

// A text value, whole: a long one stays in the packed file (or its deflated data set) until it is
// read here, and one longer than limit is refused unread.
PayloadReadResult ReadStoredText(const CustomDataStore& store, std::string_view key, std::uint64_t limit,
                                 PayloadReadResult tooLong, std::string& out) {
    const Lumivale::DataModule::CustomDataValue* value = store.Find(key);
    if (value == nullptr) return PayloadReadResult::text_unreadable;
    if (const auto* text = std::get_if<std::string>(value)) {
        if (text->size() > limit) return tooLong;
        out = *text;
        return PayloadReadResult::success;
    }
    const ByteBuffer& buffer = std::get<ByteBuffer>(*value);
    if (buffer.Length() > limit) return tooLong;
    std::vector<std::uint8_t> bytes;
    if (const Lumivale::DataModule::FileRegion* region = buffer.Region()) {
        if (!dcm::LoadRegion(dcm::FileRegion{*region}, bytes)) return PayloadReadResult::text_unreadable;
    } else if (!buffer.ReadAll(bytes)) {
        return PayloadReadResult::text_unreadable;
    }
    out.assign(bytes.begin(), bytes.end());
    return PayloadReadResult::success;
}

}  // namespace

std::string StoredTextTooLongMessage(PayloadReadResult result, const std::string& input) {
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

PayloadReadResult ExtractPayload(const CustomDataStore& store, bool want_content, PayloadFacts& facts) {
    if (store.IsValueEmpty(kPackedFileNameKey) || store.IsValueEmpty(kPackedFileContentKey)) {
        return PayloadReadResult::not_packed;
    }
    PayloadFacts read;
    PayloadReadResult text =
        ReadStoredText(store, kPackedFileNameKey, kMaxStoredNameBytes, PayloadReadResult::name_too_long, read.name);
    if (text != PayloadReadResult::success) return text;
    if (store.Contains(kCommandLineKey)) {
        text = ReadStoredText(store, kCommandLineKey, kMaxCommandLineBytes, PayloadReadResult::command_line_too_long,
                              read.command_line);
        if (text != PayloadReadResult::success) return text;
    }
    if (want_content) {
        const ByteBuffer* content = store.GetBytes(kPackedFileContentKey);
        if (content == nullptr) return PayloadReadResult::not_packed;
        read.content = *content;
    }
    std::string references;
    if (store.Contains(kInstanceReferencesKey)) {
        text = ReadStoredText(store, kInstanceReferencesKey, kMaxReferencesBytes, PayloadReadResult::references_too_long,
                              references);
        if (text != PayloadReadResult::success) return text;
        if (!ParseReferences(references, read.references)) return PayloadReadResult::bad_reference_text;
    }
    facts = std::move(read);
    return PayloadReadResult::success;
}

}  // namespace Dicapsule

namespace Dicapsule {

PayloadReadResult read_payload(const std::string& path, bool want_content, PayloadFacts& facts) {
    namespace adapter = Lumivale::DataModule::DataAdapterModule;
    adapter::DicomFileReadOptions options;
    if (!want_content) options.unwantedCustomDataKeys.insert(std::string(kPackedFileContentKey));

    Lumivale::DataModule::PatientDataSet set;
    Lumivale::DataModule::InstanceDataRow* instance = nullptr;
    if (!adapter::DicomFileDataAdapter().Read(Portability::PathFromUtf8(path), set, options, instance)) return PayloadReadResult::load_failed;
    const auto* raw = dynamic_cast<const Lumivale::DataModule::RawDataDataRow*>(instance);
    if (raw == nullptr) return PayloadReadResult::not_packed;
    return ExtractPayload(raw->custom_data, want_content, facts);
}

}  // namespace Dicapsule
