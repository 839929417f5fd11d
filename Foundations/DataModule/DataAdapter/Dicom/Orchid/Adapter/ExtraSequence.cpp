#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ExtraSequence.h"

#include "Foundations/DataModule/Common/TextUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"
#include "Portability/Misc/DebugTrace.h"

#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

constexpr const char* kModule = "Module DicomFileDataAdapter";

using VR = dcm::ValueRepresentation;

void PutU16(std::vector<std::uint8_t>& out, std::uint16_t value) {
    out.push_back(static_cast<std::uint8_t>(value & 0xFF));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}

// The stored UTF-8 text of an element, without the space that padded it to even length.
std::string StoredText(const dcm::DicomDataSetElement& element) {
    const auto bytes = element.value.Bytes();
    std::string text(bytes.begin(), bytes.end());
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    return text;
}

// Re-encode the text of every item of the sequence, nested sequences included.
bool EncodeItemText(dcm::DicomDataSetSequenceElement& sequence, const MultiCharSetDataType& charset) {
    for (const auto& item : sequence.Items()) {
        if (!item) continue;
        std::vector<std::unique_ptr<dcm::DicomDataSetElement>> encoded;
        for (const auto& [tag, node] : *item) {
            if (auto* nested = dynamic_cast<dcm::DicomDataSetSequenceElement*>(node.get())) {
                if (!EncodeItemText(*nested, charset)) return false;
                continue;
            }
            if (!dcm::VRCharacterSetApplies(node->vr)) continue;
            auto element = MakeTextElement(tag, node->vr, StoredText(*node), charset);
            if (!element) {
                LV_TRACE(kModule, "TAG(%04X,%04X) in a sequence item cannot be written in the character set \"%s\"",
                         node->tag.group, node->tag.element, charset.ToText().c_str());
                return false;
            }
            encoded.push_back(std::move(element));
        }
        for (auto& element : encoded) item->Insert(std::move(element));
    }
    return true;
}

// Whether a text value of the items, nested sequences included, goes beyond ASCII.
bool ItemTextBeyondAscii(const dcm::DicomDataSetSequenceElement& sequence) {
    for (const auto& item : sequence.Items()) {
        if (!item) continue;
        for (const auto& [tag, node] : *item) {
            if (const auto* nested = dynamic_cast<const dcm::DicomDataSetSequenceElement*>(node.get())) {
                if (ItemTextBeyondAscii(*nested)) return true;
            } else if (dcm::VRCharacterSetApplies(node->vr)) {
                const auto bytes = node->value.Bytes();
                if (!IsAscii(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()))) return true;
            }
        }
    }
    return false;
}

// The items behind a sequence header of defined length, read as the file reader would; null (the
// reader's reason in `why`) when they do not read.
std::unique_ptr<dcm::DicomDataSetElement> ReadStoredItems(dcm::Tag tag, std::span<const std::uint8_t> items,
                                                          std::string& why) {
    std::vector<std::uint8_t> bytes;
    PutU16(bytes, tag.group);
    PutU16(bytes, tag.element);
    bytes.insert(bytes.end(), {'S', 'Q', 0, 0});
    const auto length = static_cast<std::uint32_t>(items.size());
    PutU16(bytes, static_cast<std::uint16_t>(length & 0xFFFF));
    PutU16(bytes, static_cast<std::uint16_t>(length >> 16));
    bytes.insert(bytes.end(), items.begin(), items.end());

    dcm::DicomMemoryDataStream stream(bytes);
    stream.SetEncoding(dcm::StreamEncoding::ExplicitLittleEndian);
    dcm::DicomDataSet read;
    dcm::DicomDataSetFillCallback fill(read);
    if (items.size() >= dcm::kUndefinedLength || !stream.ReadElements(fill)) {
        why = stream.ReadResult().Text();
        return nullptr;
    }
    return read.Release(tag);
}

}  // namespace

std::unique_ptr<dcm::DicomDataSetElement> MakeExtraSequence(dcm::Tag tag, std::span<const std::uint8_t> items,
                                                            const MultiCharSetDataType& charset) {
    std::string why;
    std::unique_ptr<dcm::DicomDataSetElement> node = ReadStoredItems(tag, items, why);
    if (!node) {
        LV_TRACE(kModule, "The items of sequence TAG%s do not read back: %s", TagText(tag).c_str(), why.c_str());
        return nullptr;
    }
    auto* sequence = dynamic_cast<dcm::DicomDataSetSequenceElement*>(node.get());
    if (!sequence || !EncodeItemText(*sequence, charset)) return nullptr;
    return node;
}

bool StoredItemsHoldTextBeyondAscii(Tag tag, std::span<const std::uint8_t> items) {
    std::string why;
    const std::unique_ptr<dcm::DicomDataSetElement> node =
        ReadStoredItems(tag, items, why);
    const auto* sequence = dynamic_cast<const dcm::DicomDataSetSequenceElement*>(node.get());
    return sequence != nullptr && ItemTextBeyondAscii(*sequence);
}

}  // namespace Lumivale::DataModule::DataAdapterModule
