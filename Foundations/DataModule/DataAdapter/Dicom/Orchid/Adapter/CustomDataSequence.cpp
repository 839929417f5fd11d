#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/CustomDataSequence.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/OrchidDataElementCodec.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/UnknownSequence.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Utf8Path.h"

#include <string_view>
#include <variant>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

constexpr const char* kModule = "Module DicomFileDataAdapter";
constexpr std::uint16_t kPrivateGroup = 0x0009;
// The creator that older files of the same makers carry for the custom data block.
constexpr std::string_view kLegacyCreator = "ORCHID";
// Element numbers of the custom data attributes inside their private block.
constexpr std::uint16_t kSequenceOffset = 0xA0;
constexpr std::uint16_t kKeyOffset = 0xA1;
constexpr std::uint16_t kLengthOffset = 0xA2;
constexpr std::uint16_t kValueOffset = 0xA3;
constexpr std::uint16_t kOurBlock = 0x11;

using VR = dcm::ValueRepresentation;

dcm::Tag PrivateTag(std::uint16_t block, std::uint16_t offset) {
    return dcm::Tag{kPrivateGroup, static_cast<std::uint16_t>((block << 8) | offset)};
}

// The value element of one store entry: bytes in memory, or the region of its file.
std::unique_ptr<dcm::DicomDataSetElement> MakeValueElement(const CustomDataValue& value) {
    auto element = std::make_unique<dcm::DicomDataSetElement>(PrivateTag(kOurBlock, kValueOffset), VR::UN);
    if (const auto* text = std::get_if<std::string>(&value)) {
        element->SetValue(std::vector<std::uint8_t>(text->begin(), text->end()));
        return element;
    }
    const ByteBuffer& bytes = std::get<ByteBuffer>(value);
    const FileRegion* region = bytes.Region();
    if (region == nullptr) {
        const auto memory = bytes.MemoryBytes();
        element->SetValue(std::vector<std::uint8_t>(memory.begin(), memory.end()));
        return element;
    }
    if (!region->IsInsideFile()) {
        LV_TRACE(kModule, "Custom data value in %s is not readable for %llu bytes",
                 region->file ? region->file->Path().c_str() : "(no file)", static_cast<unsigned long long>(region->length));
        return nullptr;
    }
    element->valueLength = static_cast<std::uint32_t>(region->length);
    element->value.SetRegion(dcm::FileRegion{*region});
    return element;
}

std::uint64_t ValueLength(const CustomDataValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return text->size();
    return std::get<ByteBuffer>(value).Length();
}

// What an item's value is to the digests of the store.
enum class DigestRole { none, digested, digest };

bool AppendItem(dcm::DicomDataSetSequenceElement& sequence, const std::string& key, const CustomDataValue& value,
                DigestRole role, bool filledLater) {
    const std::uint64_t length = ValueLength(value);
    if (dcm::EvenLength(length) > kMaxDicomValueLength) {
        LV_TRACE(kModule, "Custom data value \"%s\" of %llu bytes exceeds a DICOM length", key.c_str(),
                 static_cast<unsigned long long>(length));
        return false;
    }
    auto keyElement = MakeTextElement(PrivateTag(kOurBlock, kKeyOffset), VR::LO, {}, MultiCharSetDataType{});
    // The key is written as its bytes: keys are program names, not text of the character set.
    dcm::OrchidDataElementCodec(keyElement.get()).StoreCharacters(key);
    auto valueElement = MakeValueElement(value);
    if (!valueElement) return false;
    if (role == DigestRole::digested) valueElement->value.MarkForDigest();
    if (role == DigestRole::digest) valueElement->value = dcm::DicomValue(dcm::DigestOfMarkedValue{});
    if (filledLater) valueElement->value.MarkFilledLater();
    dcm::DicomDataSet& item = sequence.AppendItem();
    item.Insert(MakePrivateCreatorElement());
    item.Insert(std::move(keyElement));
    item.Insert(MakeUnsignedLongElement(PrivateTag(kOurBlock, kLengthOffset), static_cast<std::uint32_t>(length)));
    item.Insert(std::move(valueElement));
    return item.EncodedSize(dcm::StreamEncoding::ExplicitLittleEndian) < kMaxDicomValueLength;
}

// The block (high byte of the element number) whose creator in dataSet names our private dictionary.
bool FindOurBlock(const dcm::DicomDataSet& dataSet, std::uint16_t& block) {
    for (std::uint16_t candidate = 0x10; candidate <= 0xFF; ++candidate) {
        const auto* creator = dataSet.Find(dcm::Tag{kPrivateGroup, candidate});
        std::string name;
        if (creator && dcm::OrchidDataElementCodec(creator).FetchCharacters(name) &&
            (name == dcm::kPrivateCreator || name == kLegacyCreator)) {
            block = candidate;
            return true;
        }
    }
    return false;
}

// A value of the store from the Value element, cut to the recorded length.
bool ReadValue(const dcm::DicomDataSetElement& element, std::uint64_t length, bool wanted,
               const CustomDataReadRules& rules, ByteBuffer& out) {
    if (const dcm::FileRegion* region = element.value.Region(); region && (!wanted || length > rules.loadAtMost)) {
        FileRegion cut = *region;  // an inflated region stays one
        cut.length = length;
        out = ByteBuffer::OfFileRegion(std::move(cut));
        return true;
    }
    std::vector<std::uint8_t> bytes;
    if (!element.value.Load(bytes)) return false;
    bytes.resize(static_cast<std::size_t>(length));
    out = ByteBuffer::Adopt(std::move(bytes));
    return true;
}

bool ReadItem(const dcm::DicomDataSet& item, std::uint16_t block, const CustomDataReadRules& rules,
              CustomDataStore& store, bool& ended) {
    const auto* keyElement = item.Find(PrivateTag(block, kKeyOffset));
    std::string key;
    if (!keyElement || !dcm::OrchidDataElementCodec(keyElement).FetchCharacters(key) ||
        key.empty()) {
        ended = true;
        return true;
    }
    const auto* valueElement = item.Find(PrivateTag(block, kValueOffset));
    const std::uint64_t stored = valueElement ? valueElement->value.Size() : 0;
    std::uint32_t length = static_cast<std::uint32_t>(stored);
    if (const auto* lengthElement = item.Find(PrivateTag(block, kLengthOffset))) FetchUnsignedLong(*lengthElement, length);
    if (length > stored) {
        LV_TRACE(kModule, "Custom data \"%s\" claims %u bytes but holds %llu", key.c_str(), length,
                 static_cast<unsigned long long>(stored));
        return false;
    }
    ByteBuffer value;
    if (valueElement && !ReadValue(*valueElement, length, !rules.unwantedKeys.contains(key), rules, value)) return false;
    store.SetBytes(std::move(key), std::move(value));
    return true;
}

}  // namespace

std::unique_ptr<dcm::DicomDataSetElement> MakePrivateCreatorElement() {
    return MakeTextElement(dcm::Tags::Orchid_PrivateCreatorID, VR::LO, dcm::kPrivateCreator,
                           MultiCharSetDataType{});
}

bool InsertCustomData(dcm::DicomDataSet& dataSet, const CustomDataStore& store) {
    if (store.IsEmpty()) return true;
    auto sequence = std::make_unique<dcm::DicomDataSetSequenceElement>(PrivateTag(kOurBlock, kSequenceOffset));
    // One digest at most: the writer keeps the digest of the last value it was told to hash.
    const std::string* digested = nullptr;
    for (const auto& [key, value] : store) {
        if (const std::string* source = store.DigestSource(key)) {
            if (digested != nullptr || *source >= key || !store.Contains(*source)) {
                LV_TRACE(kModule, "Custom data digest \"%s\" cannot follow \"%s\"", key.c_str(), source->c_str());
                return false;
            }
            digested = source;
        }
    }
    for (const auto& [key, value] : store) {
        const DigestRole role = store.DigestSource(key) ? DigestRole::digest
                                : (digested && *digested == key) ? DigestRole::digested
                                                                 : DigestRole::none;
        if (!AppendItem(*sequence, key, value, role, store.IsFilledLater(key))) return false;
    }
    if (sequence->ContentSize(dcm::StreamEncoding::ExplicitLittleEndian) > kMaxDicomValueLength) {
        LV_TRACE(kModule, "%s", "Custom data too long for a DICOM sequence length");
        return false;
    }
    dataSet.Insert(MakePrivateCreatorElement());
    return dataSet.Insert(std::move(sequence));
}

bool ReadCustomData(const dcm::DicomDataSet& dataSet, const CustomDataReadRules& rules, CustomDataStore& store) {
    std::uint16_t block = 0;
    if (!FindOurBlock(dataSet, block)) return false;
    const dcm::DicomDataSetElement* node = dataSet.Find(PrivateTag(block, kSequenceOffset));
    const auto* sequence = dynamic_cast<const dcm::DicomDataSetSequenceElement*>(node);
    // Re-encoded without our dictionary, the sequence arrives as a UN value holding its items.
    std::unique_ptr<dcm::DicomDataSetSequenceElement> parsed;
    if (sequence == nullptr && node != nullptr && node->kind == dcm::DicomElementKind::Element) {
        dcm::DicomReadOptions options;
        options.keepInFileAbove = rules.loadAtMost;
        dcm::DicomReadResult result;
        parsed = dcm::ReadValueAsSequence(*node, options, result);
        sequence = parsed.get();
    }
    if (sequence == nullptr) return false;
    bool ended = false;
    for (const auto& item : sequence->Items()) {
        if (!item) continue;
        // Items written by other toolkits may place our creator in another block of the item.
        std::uint16_t itemBlock = block;
        FindOurBlock(*item, itemBlock);
        if (!ReadItem(*item, itemBlock, rules, store, ended)) return false;
        if (ended) break;
    }
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule
