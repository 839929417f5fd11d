#include "app/Payload.h"

#include "app/DocumentPayload.h"

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

// A text value, whole: a long one stays in the packed file until it is read here. False when the
// key is absent or its bytes cannot be read.
bool ReadStoredText(const CustomDataStore& store, std::string_view key, std::string& out) {
    const Lumivale::DataModule::CustomDataValue* value = store.Find(key);
    if (value == nullptr) return false;
    if (const auto* text = std::get_if<std::string>(value)) {
        out = *text;
        return true;
    }
    std::vector<std::uint8_t> bytes;
    if (!std::get<ByteBuffer>(*value).ReadAll(bytes)) return false;
    out.assign(bytes.begin(), bytes.end());
    return true;
}

// The facts of a store; a document's store may lack the name.
PayloadReadResult ExtractFacts(const CustomDataStore& store, bool want_content, bool name_required, PayloadFacts& facts) {
    if ((name_required && store.IsValueEmpty(kPackedFileNameKey)) || store.IsValueEmpty(kPackedFileContentKey)) {
        return PayloadReadResult::not_packed;
    }
    PayloadFacts read;
    if (store.Contains(kPackedFileNameKey) && !ReadStoredText(store, kPackedFileNameKey, read.name)) {
        return PayloadReadResult::text_unreadable;
    }
    if (store.Contains(kCommandLineKey) && !ReadStoredText(store, kCommandLineKey, read.command_line)) {
        return PayloadReadResult::text_unreadable;
    }
    if (want_content) {
        const ByteBuffer* content = store.GetBytes(kPackedFileContentKey);
        if (content == nullptr) return PayloadReadResult::not_packed;
        read.content = *content;
    }
    std::string references;
    if (store.Contains(kInstanceReferencesKey)) {
        if (!ReadStoredText(store, kInstanceReferencesKey, references)) return PayloadReadResult::text_unreadable;
        if (!ParseReferences(references, read.references)) return PayloadReadResult::bad_reference_text;
    }
    facts = std::move(read);
    return PayloadReadResult::success;
}

}  // namespace

PayloadReadResult ExtractPayload(const CustomDataStore& store, bool want_content, PayloadFacts& facts) {
    return ExtractFacts(store, want_content, true, facts);
}

PayloadReadResult ExtractDocumentPayload(const Lumivale::DataModule::EncapsulatedDocumentDataRow& document,
                                         bool want_content, PayloadFacts& facts) {
    ByteBuffer content;
    switch (DocumentContent(document, content)) {
        case DocumentContentResult::found: break;
        case DocumentContentResult::missing: return PayloadReadResult::not_packed;
        case DocumentContentResult::bad_length:
        case DocumentContentResult::unreadable: return PayloadReadResult::bad_document;
    }
    // The document takes the content's place, so that the facts read as a raw data instance's do.
    CustomDataStore store = document.custom_data;
    store.SetBytes(std::string(kPackedFileContentKey), content);
    const PayloadReadResult result = ExtractFacts(store, want_content, false, facts);
    if (result == PayloadReadResult::success) facts.document_extension = DocumentExtension(document);
    return result;
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
    if (const auto* document = dynamic_cast<const Lumivale::DataModule::EncapsulatedDocumentDataRow*>(instance)) {
        return ExtractDocumentPayload(*document, want_content, facts);
    }
    const auto* raw = dynamic_cast<const Lumivale::DataModule::RawDataDataRow*>(instance);
    if (raw == nullptr) return PayloadReadResult::not_packed;
    return ExtractPayload(raw->custom_data, want_content, facts);
}

}  // namespace Dicapsule
