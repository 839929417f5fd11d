#include "Foundations/DataModule/Rows/CustomDataStore.h"

namespace Lumivale::DataModule {

void CustomDataStore::SetText(std::string key, std::string text) {
    digests_.erase(key);
    filledLater_.erase(key);
    values_.insert_or_assign(std::move(key), CustomDataValue(std::move(text)));
}

void CustomDataStore::SetBytes(std::string key, ByteBuffer bytes) {
    digests_.erase(key);
    filledLater_.erase(key);
    values_.insert_or_assign(std::move(key), CustomDataValue(std::move(bytes)));
}

void CustomDataStore::SetDigestOf(std::string key, std::string digestedKey) {
    constexpr std::size_t kHexDigits = 64;
    filledLater_.erase(key);
    values_.insert_or_assign(key, CustomDataValue(std::string(kHexDigits, '0')));
    digests_.insert_or_assign(std::move(key), std::move(digestedKey));
}

void CustomDataStore::SetFilledLater(std::string key, std::size_t size) {
    digests_.erase(key);
    values_.insert_or_assign(key, CustomDataValue(std::string(size, '0')));
    filledLater_.insert(std::move(key));
}

const std::string* CustomDataStore::DigestSource(std::string_view key) const {
    const auto it = digests_.find(key);
    return it == digests_.end() ? nullptr : &it->second;
}

const CustomDataValue* CustomDataStore::Find(std::string_view key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? nullptr : &found->second;
}

bool CustomDataStore::GetText(std::string_view key, std::string& out) const {
    const CustomDataValue* value = Find(key);
    if (value == nullptr) return false;
    if (const auto* text = std::get_if<std::string>(value)) {
        out = *text;
        return true;
    }
    return std::get<ByteBuffer>(*value).ReadText(out);
}

const ByteBuffer* CustomDataStore::GetBytes(std::string_view key) const {
    const CustomDataValue* value = Find(key);
    return value == nullptr ? nullptr : std::get_if<ByteBuffer>(value);
}

std::uint64_t CustomDataStore::ValueLength(std::string_view key) const {
    const CustomDataValue* value = Find(key);
    if (value == nullptr) return 0;
    if (const auto* text = std::get_if<std::string>(value)) return text->size();
    return std::get<ByteBuffer>(*value).Length();
}

bool CustomDataStore::IsValueEmpty(std::string_view key) const { return ValueLength(key) == 0; }

bool CustomDataStore::Erase(std::string_view key) {
    const auto found = values_.find(key);
    if (found == values_.end()) return false;
    values_.erase(found);
    if (const auto digest = digests_.find(key); digest != digests_.end()) digests_.erase(digest);
    if (const auto later = filledLater_.find(key); later != filledLater_.end()) filledLater_.erase(later);
    return true;
}

}  // namespace Lumivale::DataModule
