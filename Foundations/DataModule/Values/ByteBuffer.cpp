#include "Foundations/DataModule/Values/ByteBuffer.h"

#include "Portability/Misc/DebugTrace.h"

#include <cstring>
#include <limits>
#include <new>

namespace Lumivale::DataModule {

namespace {

// Largest length a memory buffer may have on this platform.
constexpr std::uint64_t kMaxMemoryLength = std::numeric_limits<std::size_t>::max() / 2;

// The region's bytes, checked against the file's size before anything is allocated.
bool ReadFileRegion(const FileRegion& region, std::vector<std::uint8_t>& out) {
    if (!region.IsInsideFile()) {
        LV_TRACE("Module DataModule", "File region [%llu, +%llu) is not inside %s",
                 static_cast<unsigned long long>(region.offset), static_cast<unsigned long long>(region.length),
                 region.file ? region.file->Path().c_str() : "(no file)");
        return false;
    }
    if (region.deflatedFrom) {
        LV_TRACE("Module DataModule", "File region [%llu, +%llu) of %s is in a deflated data set",
                 static_cast<unsigned long long>(region.offset), static_cast<unsigned long long>(region.length),
                 region.file->Path().c_str());
        return false;
    }
    try {
        out.assign(static_cast<std::size_t>(region.length), 0);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (!region.file->ReadAt(out.data(), region.length, region.offset)) {
        LV_TRACE("Module DataModule", "File region of %s cannot be read", region.file->Path().c_str());
        out.clear();
        return false;
    }
    return true;
}

}  // namespace

ByteBuffer ByteBuffer::CopyOf(std::span<const std::uint8_t> bytes) {
    ByteBuffer buffer = Allocate(bytes.size());
    if (!bytes.empty() && buffer.HasBuffer()) std::memcpy(buffer.MutableBytes().data(), bytes.data(), bytes.size());
    return buffer;
}

ByteBuffer ByteBuffer::Adopt(std::vector<std::uint8_t> bytes) {
    MemoryBytesRecord memory;
    memory.owned = std::move(bytes);
    memory.bytes = memory.owned.data();
    memory.length = memory.owned.size();
    memory.owns_bytes = true;
    return ByteBuffer(std::make_shared<Record>(std::move(memory)));
}

ByteBuffer ByteBuffer::Allocate(std::uint64_t length) {
    if (length > kMaxMemoryLength) {
        LV_TRACE("Module DataModule", "Refused a byte buffer of %llu bytes", static_cast<unsigned long long>(length));
        return {};
    }
    // Allocation failure is an outcome here, not an exception: hostile lengths reach this point.
    try {
        return Adopt(std::vector<std::uint8_t>(static_cast<std::size_t>(length)));
    } catch (const std::bad_alloc&) {
        LV_TRACE("Module DataModule", "Out of memory for a byte buffer of %llu bytes",
                 static_cast<unsigned long long>(length));
        return {};
    }
}

ByteBuffer ByteBuffer::Borrow(const std::uint8_t* bytes, std::uint64_t length) {
    MemoryBytesRecord memory;
    memory.bytes = bytes;
    memory.length = bytes == nullptr ? 0 : length;
    return ByteBuffer(std::make_shared<Record>(std::move(memory)));
}

ByteBuffer ByteBuffer::OfFileRegion(FileRegion region) {
    return ByteBuffer(std::make_shared<Record>(std::move(region)));
}

std::uint64_t ByteBuffer::Length() const noexcept {
    if (!record_) return 0;
    if (const auto* memory = std::get_if<MemoryBytesRecord>(record_.get())) return memory->length;
    return std::get<FileRegion>(*record_).length;
}

bool ByteBuffer::IsInMemory() const noexcept {
    return record_ && std::holds_alternative<MemoryBytesRecord>(*record_);
}

bool ByteBuffer::IsFileRegion() const noexcept { return record_ && std::holds_alternative<FileRegion>(*record_); }

bool ByteBuffer::OwnsBytes() const noexcept {
    const auto* memory = record_ ? std::get_if<MemoryBytesRecord>(record_.get()) : nullptr;
    return memory != nullptr && memory->owns_bytes;
}

std::span<const std::uint8_t> ByteBuffer::MemoryBytes() const noexcept {
    const auto* memory = record_ ? std::get_if<MemoryBytesRecord>(record_.get()) : nullptr;
    if (memory == nullptr || memory->bytes == nullptr) return {};
    return {memory->bytes, static_cast<std::size_t>(memory->length)};
}

std::span<std::uint8_t> ByteBuffer::MutableBytes() noexcept {
    auto* memory = record_ ? std::get_if<MemoryBytesRecord>(record_.get()) : nullptr;
    if (memory == nullptr || !memory->owns_bytes) return {};
    return {memory->owned.data(), memory->owned.size()};
}

const FileRegion* ByteBuffer::Region() const noexcept {
    return record_ ? std::get_if<FileRegion>(record_.get()) : nullptr;
}

bool ByteBuffer::ReadAll(std::vector<std::uint8_t>& out) const {
    if (Length() > kMaxMemoryLength) return false;
    if (const FileRegion* region = Region()) return ReadFileRegion(*region, out);
    const std::span<const std::uint8_t> bytes = MemoryBytes();
    out.assign(bytes.begin(), bytes.end());
    return true;
}

bool ByteBuffer::ReadText(std::string& out) const {
    if (IsFileRegion()) return false;
    const std::span<const std::uint8_t> bytes = MemoryBytes();
    out.assign(bytes.begin(), bytes.end());
    return true;
}

}  // namespace Lumivale::DataModule
