#include "app/Payload.h"

#include "app/DocumentPayload.h"
#include "app/QuotedPath.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Sha256.h"

#include <charconv>
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
                   const std::string& command_line, const std::vector<ReferenceRecord>& references, bool digest,
                   const std::optional<PartFacts>& part) {
    store.SetText(std::string(kPackedFileNameKey), name);
    store.SetBytes(std::string(kPackedFileContentKey), content);
    store.SetText(std::string(kCommandLineKey), command_line);
    if (!references.empty()) store.SetText(std::string(kInstanceReferencesKey), FormatReferences(references));
    if (digest) store.SetDigestOf(std::string(kPackedFileSha256Key), std::string(kPackedFileContentKey));
    if (!part) return;
    store.SetText(std::string(kPartIndexKey), std::to_string(part->index));
    store.SetText(std::string(kPartCountKey), std::to_string(part->count));
    store.SetText(std::string(kPartOffsetKey), std::to_string(part->offset));
    store.SetText(std::string(kTotalSizeKey), std::to_string(part->total_size));
    store.SetText(std::string(kPartSetUidKey), part->set_uid);
    if (digest) store.SetFilledLater(std::string(kTotalSha256Key), kSha256HexDigits);
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

// The longest number or UID text of a part's facts.
constexpr std::uint64_t kMaxPartTextBytes = 64;

// A part's number: decimal digits only, within the type.
template <typename Number>
bool ParsePartNumber(const std::string& text, Number& out) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), out);
    return error == std::errc() && end == text.data() + text.size();
}

// The facts of a part, when the store holds them (all but the whole digest, which --no-digest leaves out).
PayloadReadResult ExtractPart(const CustomDataStore& store, std::optional<PartFacts>& part) {
    if (!store.Contains(kPartIndexKey)) return PayloadReadResult::success;
    std::string index, count, offset, total;
    PartFacts facts;
    for (const auto& [key, text] : {std::pair{kPartIndexKey, &index}, std::pair{kPartCountKey, &count},
                                    std::pair{kPartOffsetKey, &offset}, std::pair{kTotalSizeKey, &total},
                                    std::pair{kPartSetUidKey, &facts.set_uid}}) {
        if (ReadStoredText(store, key, kMaxPartTextBytes, PayloadReadResult::bad_part, *text) !=
            PayloadReadResult::success) {
            return PayloadReadResult::bad_part;
        }
    }
    if (store.Contains(kTotalSha256Key) &&
        ReadStoredText(store, kTotalSha256Key, kMaxDigestTextBytes, PayloadReadResult::text_unreadable,
                       facts.total_sha256) != PayloadReadResult::success) {
        return PayloadReadResult::text_unreadable;
    }
    if (!ParsePartNumber(index, facts.index) || !ParsePartNumber(count, facts.count) ||
        !ParsePartNumber(offset, facts.offset) || !ParsePartNumber(total, facts.total_size) || facts.index == 0 ||
        facts.index > facts.count || facts.set_uid.empty()) {
        return PayloadReadResult::bad_part;
    }
    part = std::move(facts);
    return PayloadReadResult::success;
}

}  // namespace

bool ContentSha256(const ByteBuffer& content, std::string& hex, const std::atomic<bool>* stop) {
    Portability::Sha256 digest;
    if (const Lumivale::DataModule::FileRegion* region = content.Region()) {
        const auto hash = [&digest, stop](std::uint8_t* bytes, std::size_t size) {
            digest.Update(bytes, size);
            return stop == nullptr || !*stop;
        };
        if (!dcm::ReadRegionInChunks(dcm::FileRegion{*region}, hash)) return false;
    } else {
        const auto bytes = content.MemoryBytes();
        digest.Update(bytes.data(), bytes.size());
    }
    Portability::Sha256::Digest result{};
    if (!digest.Finish(result)) return false;
    hex = Portability::ToHex(result);
    return true;
}

namespace {

// The facts of a store; a document's store may lack the name.
PayloadReadResult ExtractFacts(const CustomDataStore& store, bool want_content, bool name_required, PayloadFacts& facts) {
    if ((name_required && store.IsValueEmpty(kPackedFileNameKey)) || !store.Contains(kPackedFileContentKey)) {
        return PayloadReadResult::not_packed;
    }
    PayloadFacts read;
    PayloadReadResult text = PayloadReadResult::success;
    if (store.Contains(kPackedFileNameKey)) {
        text = ReadStoredText(store, kPackedFileNameKey, kMaxStoredNameBytes, PayloadReadResult::name_too_long,
                              read.name);
        if (text != PayloadReadResult::success) return text;
    }
    if (store.Contains(kCommandLineKey)) {
        text = ReadStoredText(store, kCommandLineKey, kMaxCommandLineBytes, PayloadReadResult::command_line_too_long,
                              read.command_line);
        if (text != PayloadReadResult::success) return text;
    }
    read.size = store.ValueLength(kPackedFileContentKey);
    if (want_content) {
        const ByteBuffer* content = store.GetBytes(kPackedFileContentKey);
        if (content == nullptr) return PayloadReadResult::not_packed;
        read.content = *content;
    }
    // Kept as stored: a damaged digest then fails the check like a damaged content.
    // A digest is 64 characters: a much longer value is damage, refused unread.
    if (store.Contains(kPackedFileSha256Key)) {
        text = ReadStoredText(store, kPackedFileSha256Key, kMaxDigestTextBytes, PayloadReadResult::text_unreadable,
                              read.sha256);
        if (text != PayloadReadResult::success) return text;
    }
    std::string references;
    if (store.Contains(kInstanceReferencesKey)) {
        text = ReadStoredText(store, kInstanceReferencesKey, kMaxReferencesBytes, PayloadReadResult::references_too_long,
                              references);
        if (text != PayloadReadResult::success) return text;
        if (!ParseReferences(references, read.references)) return PayloadReadResult::bad_reference_text;
    }
    text = ExtractPart(store, read.part);
    if (text != PayloadReadResult::success) return text;
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

namespace {

namespace dm = Lumivale::DataModule;

// A named attribute of a row as DICOM text; empty when the row or the value is missing.
std::string AttributeText(dm::RowKind kind, const dm::DataRow* row, std::string_view keyword) {
    if (row == nullptr) return {};
    for (const dm::RowAttribute& attribute : dm::RowAttributesOf(kind)) {
        if (attribute.keyword == keyword) return attribute.get(*row).value_or(std::string());
    }
    return {};
}

PackedInstance DescribeInstance(const dm::PatientDataSet& set, const dm::InstanceDataRow& instance) {
    const dm::SeriesDataRow* series = set.SeriesOf(instance);
    const dm::StudyDataRow* study = series ? set.StudyOf(*series) : nullptr;
    const dm::PatientDataRow* patient = study ? set.PatientOf(*study) : nullptr;
    PackedInstance described;
    described.sop_class_uid = instance.sop_class.IsEmpty() ? std::string() : instance.sop_class.Term();
    described.sop_instance_uid = instance.sop_instance_uid.ValueOr({});
    described.study_instance_uid = study ? study->study_instance_uid.ValueOr({}) : std::string();
    described.series_instance_uid = series ? series->series_instance_uid.ValueOr({}) : std::string();
    described.patient_id = AttributeText(dm::RowKind::Patient, patient, "PatientID");
    described.patient_name = AttributeText(dm::RowKind::Patient, patient, "PatientName");
    described.transfer_syntax_uid = instance.transfer_syntax.IsEmpty() ? std::string() : instance.transfer_syntax.Term();
    return described;
}

}  // namespace

PayloadReadResult read_payload(const std::string& path, bool want_content, PayloadFacts& facts) {
    const std::shared_ptr<const Portability::OpenFile> file = Portability::OpenFile::Open(path);
    if (!file) return PayloadReadResult::load_failed;
    return read_payload(file, want_content, facts);
}

PayloadReadResult read_payload(const std::shared_ptr<const Portability::OpenFile>& file, bool want_content,
                               PayloadFacts& facts) {
    namespace adapter = dm::DataAdapterModule;
    adapter::DicomFileReadOptions options;
    if (!want_content) options.unwantedCustomDataKeys.insert(std::string(kPackedFileContentKey));

    dm::PatientDataSet set;
    dm::InstanceDataRow* instance = nullptr;
    dcm::DicomReadResult read;
    if (!adapter::ReadDicomFileIntoRows(file, set, options, instance, read)) {
        // The adapter traced where the file failed; what matters here is which kind of input it was.
        LV_TRACE("Module Payload", "Not loaded: %s", read ? "a DICOM file without a readable instance"
                                                     : read.NotDicom() ? "not a DICOM file"
                                                                       : "a damaged DICOM file");
        return PayloadReadResult::load_failed;
    }
    PayloadReadResult result = PayloadReadResult::not_packed;
    if (const auto* document = dynamic_cast<const dm::EncapsulatedDocumentDataRow*>(instance)) {
        result = ExtractDocumentPayload(*document, want_content, facts);
    } else if (const auto* raw = dynamic_cast<const dm::RawDataDataRow*>(instance)) {
        result = ExtractPayload(raw->custom_data, want_content, facts);
    }
    if (result == PayloadReadResult::success) facts.instance = DescribeInstance(set, *instance);
    return result;
}

}  // namespace Dicapsule
