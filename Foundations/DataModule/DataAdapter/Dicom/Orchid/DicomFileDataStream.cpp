#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"


#include <algorithm>
#include <cstdio>
#include <cstring>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Utf8Path.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr const char* kModule = "Module DicomDataStream";
constexpr std::size_t kBufferSize = 64 * 1024;
// Bytes kept from the previous buffer of an inflated data set, so that a peek can step back.
constexpr std::size_t kInflatedLookBack = 16;
// The size an inflated data set is taken to have: unknown until read, larger than any length.
constexpr std::uint64_t kUnknownInflatedSize = std::uint64_t{1} << 62;

}  // namespace

DicomFileDataStream::~DicomFileDataStream() { Close(); }

bool DicomFileDataStream::OpenForReading(const std::filesystem::path& path) {
    Close();
    source_ = Portability::OpenFile::Open(Portability::Utf8FromPath(path));
    if (!source_) LV_TRACE(kModule, "Cannot open %s for reading", Portability::Utf8FromPath(path).c_str());
    return source_ != nullptr;
}

void DicomFileDataStream::OpenForReading(std::shared_ptr<const Portability::OpenFile> file) {
    Close();
    source_ = std::move(file);
}

bool DicomFileDataStream::OpenForWriting(const std::filesystem::path& path, Portability::ExistingTarget existing) {
    Close();
    writer_.emplace(Portability::Utf8FromPath(path), existing);
    if (writer_->Open()) return true;
    LV_TRACE(kModule, "Cannot create a temporary file beside %s", Portability::Utf8FromPath(path).c_str());
    writer_.reset();
    return false;
}

bool DicomFileDataStream::WriteAt(std::uint64_t offset, const void* data, std::size_t size) {
    return writer_ && Flush() && writer_->WriteAt(offset, data, size);
}

bool DicomFileDataStream::Commit() {
    if (!writer_) return false;
    const bool committed = Flush() && writer_->Commit();
    if (!committed) LV_TRACE(kModule, "Cannot complete writing %s", writer_->target().c_str());
    writer_.reset();
    return committed;
}

void DicomFileDataStream::Close() {
    writer_.reset();  // an uncommitted write is discarded with its temporary file
    source_.reset();
    inflater_.reset();
    buffer_.clear();
    bufferStart_ = position_ = 0;
    ResetReadState();
}

std::uint64_t DicomFileDataStream::Size() const {
    if (inflater_) return kUnknownInflatedSize;
    return source_ ? source_->Size() : position_;
}

std::optional<std::uint64_t> DicomFileDataStream::ValueDeflatedFrom() const {
    if (inflater_) return deflatedFrom_;
    return std::nullopt;
}

bool DicomFileDataStream::AtEnd() const {
    // The deflate stream tells its end only when asked for more.
    if (inflater_) return position_ >= bufferStart_ + buffer_.size() && !RefillInflated();
    return !source_ || position_ >= source_->Size();
}

bool DicomFileDataStream::SetPosition(std::uint64_t position) {
    if (inflater_) {
        // Forward, or back within the buffer: what was inflated before it is gone.
        if (position < bufferStart_) return false;
        const std::uint64_t end = bufferStart_ + buffer_.size();
        if (position > end && !Skip(position - position_)) return false;
        position_ = position;
        return true;
    }
    if (!source_ || position > source_->Size()) return false;
    position_ = position;
    return true;
}

bool DicomFileDataStream::Skip(std::uint64_t count) {
    if (inflater_) {
        const std::uint64_t end = bufferStart_ + buffer_.size();
        if (count <= end - position_) {
            position_ += count;
            return true;
        }
        // Past the buffer: the bytes in between are inflated and thrown away.
        if (!inflater_->Discard(count - (end - position_))) return false;
        position_ += count;
        buffer_.clear();
        bufferStart_ = position_;
        return true;
    }
    if (!source_ || count > source_->Size() - position_) return false;
    position_ += count;
    return true;
}

bool DicomFileDataStream::RefillInflated() const {
    // Called with position_ at the end of the buffer: its last bytes stay for a step back.
    const std::size_t keep = std::min(buffer_.size(), kInflatedLookBack);
    std::copy(buffer_.end() - static_cast<std::ptrdiff_t>(keep), buffer_.end(), buffer_.begin());
    bufferStart_ = position_ - keep;
    buffer_.resize(keep + kBufferSize);
    const std::size_t got = inflater_->Read(buffer_.data() + keep, kBufferSize);
    buffer_.resize(keep + got);
    return got > 0;
}

bool DicomFileDataStream::Refill() {
    const std::uint64_t want = std::min<std::uint64_t>(kBufferSize, source_->Size() - position_);
    buffer_.resize(static_cast<std::size_t>(want));
    bufferStart_ = position_;
    return source_->ReadAt(buffer_.data(), buffer_.size(), position_);
}

bool DicomFileDataStream::ReadRaw(void* data, std::uint64_t size) {
    if (!source_ || size > Size() - position_) return false;
    auto* out = static_cast<std::uint8_t*>(data);
    while (size > 0) {
        const bool buffered = position_ >= bufferStart_ && position_ < bufferStart_ + buffer_.size();
        if (!buffered && !(inflater_ ? RefillInflated() : Refill())) return false;
        const auto offset = static_cast<std::size_t>(position_ - bufferStart_);
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, buffer_.size() - offset));
        std::memcpy(out, buffer_.data() + offset, count);
        out += count;
        size -= count;
        position_ += count;
    }
    return true;
}

bool DicomFileDataStream::Flush() {
    if (!writer_) return false;
    const bool written = writer_->Write(buffer_.data(), buffer_.size());
    buffer_.clear();
    return written;
}

bool DicomFileDataStream::WriteRaw(const void* data, std::uint64_t size) {
    if (!writer_) return false;
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    if (buffer_.size() + size > kBufferSize && !Flush()) return false;
    if (size >= kBufferSize) {
        if (!writer_->Write(bytes, static_cast<std::size_t>(size))) return false;
    } else {
        buffer_.insert(buffer_.end(), bytes, bytes + size);
    }
    position_ += size;
    return true;
}

bool DicomFileDataStream::WriteRegion(const FileRegion& region, Portability::Sha256* digest) {
    if (!Flush()) return false;
    const bool bigEndian = Encoding() == StreamEncoding::ExplicitBigEndian;
    const bool swap = region.bigEndian != bigEndian && region.unitSize > 1;
    if (!CopyRegionToFile(region, *writer_, swap, digest)) return false;
    position_ += region.length;
    return true;
}

bool DicomFileDataStream::InflateRemainder() {
    if (!source_ || inflater_) return false;
    deflatedFrom_ = position_;
    inflater_ = std::make_unique<InflateReader>(source_, deflatedFrom_);
    buffer_.clear();
    bufferStart_ = position_ = 0;
    if (!inflater_->Failed()) return true;
    inflater_.reset();
    return false;
}

DicomReadResult ReadDicomFile(const std::filesystem::path& path, DicomDataSet& dataSet, const DicomReadOptions& options) {
    std::shared_ptr<const Portability::OpenFile> file = Portability::OpenFile::Open(Portability::Utf8FromPath(path));
    if (!file) {
        dataSet = DicomDataSet();
        return {DicomReadStatus::FileNotOpened};
    }
    return ReadDicomFile(std::move(file), dataSet, options);
}

DicomReadResult ReadDicomFile(std::shared_ptr<const Portability::OpenFile> file, DicomDataSet& dataSet,
                              const DicomReadOptions& options) {
    dataSet = DicomDataSet();
    if (!file) return {DicomReadStatus::FileNotOpened};
    DicomFileDataStream stream;
    stream.SetReadOptions(options);
    DicomDataSetFillCallback fill(dataSet);
    stream.OpenForReading(std::move(file));
    if (ReadFileContent(stream, fill)) return {};
    DicomReadResult result = stream.ReadResult();
    // A source that failed gave no reason of its own.
    if (result) result = {DicomReadStatus::SourceFailed, stream.Position()};
    return result;
}

bool WriteDicomFile(const std::filesystem::path& path, const DicomDataSet& dataSet, StreamEncoding encoding,
                    Portability::ExistingTarget existing) {
    DicomFileDataStream stream;
    if (!stream.OpenForWriting(path, existing)) return false;
    stream.SetEncoding(encoding);
    return WriteFileContent(stream, dataSet) && stream.Commit();
}

bool WriteDicomFileUncommitted(const std::filesystem::path& path, const DicomDataSet& dataSet, StreamEncoding encoding,
                               Portability::ExistingTarget existing, DicomFileDataStream& stream) {
    if (!stream.OpenForWriting(path, existing)) return false;
    stream.SetEncoding(encoding);
    if (WriteFileContent(stream, dataSet)) return true;
    stream.Close();
    return false;
}

bool WriteDicomFile(const std::filesystem::path& path, const DicomDataSet& dataSet) {
    return WriteDicomFile(path, dataSet, EncodingOfDataSet(dataSet));
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
