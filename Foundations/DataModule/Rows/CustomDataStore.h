#pragma once
// The custom data of an instance: named values, each a text or a byte buffer, kept in byte-wise
// key order (the order they are written to the file in).

#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <variant>

namespace Lumivale::DataModule {

// One stored value: a narrow text or a byte buffer (which may refer to a file region).
using CustomDataValue = std::variant<std::string, ByteBuffer>;

// Ordered map from key to value; keys compare byte by byte (as unsigned bytes).
class CustomDataStore {
public:
    // Set a key to a text value, replacing any value.
    void SetText(std::string key, std::string text);
    // Set a key to a byte buffer value, replacing any value.
    void SetBytes(std::string key, ByteBuffer bytes);
    // Set a key to the SHA-256 of another key's value as the file will hold it: 64 lower-case
    // hexadecimal characters, computed by the writer while it writes that value (written in the
    // store's key order, the other key must sort before this one). Until then the key holds a
    // placeholder text of the same length.
    void SetDigestOf(std::string key, std::string digestedKey);
    // Set a key to a placeholder text of size '0' characters whose place in the written file the
    // writer reports, for the caller to overwrite before the file is committed.
    void SetFilledLater(std::string key, std::size_t size);
    // True when the key holds such a placeholder.
    bool IsFilledLater(std::string_view key) const { return filledLater_.contains(key); }
    // The key whose digest the key stands for, or nullptr when it holds a value of its own.
    const std::string* DigestSource(std::string_view key) const;
    // The value of a key, or nullptr.
    const CustomDataValue* Find(std::string_view key) const;
    // True when the key is present.
    bool Contains(std::string_view key) const { return Find(key) != nullptr; }
    // The value as text: a text value, or the bytes of an in-memory buffer; false when the key is
    // absent or its bytes are a file region.
    bool GetText(std::string_view key, std::string& out) const;
    // The byte buffer of a key, or nullptr when absent or a text.
    const ByteBuffer* GetBytes(std::string_view key) const;
    // True when the key is absent or its value is empty (a text of length 0, no buffer, or a buffer of length 0).
    bool IsValueEmpty(std::string_view key) const;
    // Length in bytes of a key's value (0 when absent).
    std::uint64_t ValueLength(std::string_view key) const;
    // Remove a key; false when it was absent.
    bool Erase(std::string_view key);
    // Number of keys.
    std::size_t Size() const noexcept { return values_.size(); }
    // True when there is no key.
    bool IsEmpty() const noexcept { return values_.empty(); }
    // The entries in key order (iterators over key/value pairs).
    auto begin() const noexcept { return values_.begin(); }
    auto end() const noexcept { return values_.end(); }

private:
    // std::less<> on strings compares with char_traits<char>, which orders as unsigned bytes.
    std::map<std::string, CustomDataValue, std::less<>> values_;
    std::map<std::string, std::string, std::less<>> digests_;  // digest key -> digested key
    std::set<std::string, std::less<>> filledLater_;
};

}  // namespace Lumivale::DataModule
