#pragma once
// The value holder of a data element: nothing, bytes in memory (owned or shared), or a region of a file.

#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The SHA-256 of the value marked for digest, written in its place as 64 lower-case hexadecimal
// characters by the stream that wrote the marked value before it.
struct DigestOfMarkedValue {
    static constexpr std::uint64_t kSize = 64;
};

// Owns an element's value. Memory bytes are in little-endian unit order; a file region keeps the
// byte order of its source and is loaded or copied only when asked.
class DicomValue {
public:
    DicomValue() = default;
    // A value held in memory.
    explicit DicomValue(std::vector<std::uint8_t> bytes) : holder_(std::move(bytes)) {}
    // A value left in a file.
    explicit DicomValue(FileRegion region) : holder_(std::move(region)) {}
    // A value sharing the memory bytes of a buffer of the data model, so that large pixel data is
    // written from the record that holds it rather than from a copy. Only memory buffers: the
    // value of a file-region buffer reads as empty.
    explicit DicomValue(ByteBuffer shared) : holder_(std::move(shared)) {}
    // The digest of the marked value, known only once that value is written.
    explicit DicomValue(DigestOfMarkedValue digest) : holder_(digest) {}

    // True when there is no value (skipped, or never set).
    bool IsAbsent() const noexcept { return std::holds_alternative<std::monostate>(holder_); }
    // True when the bytes are in memory.
    bool IsInMemory() const noexcept {
        return std::holds_alternative<std::vector<std::uint8_t>>(holder_) || std::holds_alternative<ByteBuffer>(holder_);
    }
    // Byte count of the value (0 when absent).
    std::uint64_t Size() const noexcept;
    // The bytes in memory, or an empty span for other holders.
    std::span<const std::uint8_t> Bytes() const noexcept;
    // The owned memory bytes for editing, or null when the value is not owned memory.
    std::vector<std::uint8_t>* MutableBytes() noexcept { return std::get_if<std::vector<std::uint8_t>>(&holder_); }
    // The file region, or null when the value is not in a file.
    const FileRegion* Region() const noexcept { return std::get_if<FileRegion>(&holder_); }

    // Replace the value with bytes in memory.
    void SetBytes(std::vector<std::uint8_t> bytes) { holder_ = std::move(bytes); }
    // Replace the value with a file region.
    void SetRegion(FileRegion region) { holder_ = std::move(region); }
    // Drop the value.
    void Reset() noexcept {
        holder_ = std::monostate{};
        digested_ = false;
        filledLater_ = false;
    }
    // Have the writer hash this value's bytes as written, for a later DigestOfMarkedValue.
    void MarkForDigest() noexcept { digested_ = true; }
    // True when the writer hashes this value.
    bool IsMarkedForDigest() const noexcept { return digested_; }
    // Have the writer note where this value starts in its output: its bytes are a placeholder that
    // the caller overwrites, with bytes of the same length, before the file is committed.
    void MarkFilledLater() noexcept { filledLater_ = true; }
    bool IsFilledLater() const noexcept { return filledLater_; }
    // True for the placeholder of a digest.
    bool IsDigestOfMarked() const noexcept { return std::holds_alternative<DigestOfMarkedValue>(holder_); }
    // Copy the value's bytes into out (loading a region); false when a region cannot be read.
    bool Load(std::vector<std::uint8_t>& out) const;

private:
    std::variant<std::monostate, std::vector<std::uint8_t>, FileRegion, ByteBuffer, DigestOfMarkedValue> holder_;
    bool digested_ = false;
    bool filledLater_ = false;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
