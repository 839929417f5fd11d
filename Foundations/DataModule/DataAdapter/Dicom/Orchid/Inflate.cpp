#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Inflate.h"

#include <zlib.h>

#include <algorithm>
#include <vector>

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/OpenFile.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr const char* kModule = "Module DicomDataStream";
constexpr std::size_t kChunk = 64 * 1024;
// Negative window bits select raw deflate data, as the transfer syntax stores them.
constexpr int kRawDeflateWindowBits = -MAX_WBITS;

// Owns a zlib inflation state.
class Inflater {
public:
    Inflater() { ready_ = inflateInit2(&stream_, kRawDeflateWindowBits) == Z_OK; }
    ~Inflater() {
        if (ready_) inflateEnd(&stream_);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    bool Ready() const { return ready_; }
    z_stream& Stream() { return stream_; }

private:
    z_stream stream_{};
    bool ready_ = false;
};

}  // namespace

bool InflateRawDeflate(const InflateInput& input, const InflateOutput& output) {
    Inflater inflater;
    if (!inflater.Ready()) {
        LV_TRACE(kModule, "%s", "The inflater cannot be set up");
        return false;
    }
    z_stream& stream = inflater.Stream();
    std::vector<std::uint8_t> in(kChunk);
    std::vector<std::uint8_t> out(kChunk);
    std::uint64_t consumed = 0;
    for (;;) {
        if (stream.avail_in == 0) {
            const std::size_t got = input(in.data(), in.size());
            if (got == 0) {
                LV_TRACE(kModule, "Deflated data set ends before its deflate stream, after %llu bytes",
                         static_cast<unsigned long long>(consumed));
                return false;
            }
            stream.next_in = in.data();
            stream.avail_in = static_cast<uInt>(got);
            consumed += got;
        }
        stream.next_out = out.data();
        stream.avail_out = static_cast<uInt>(out.size());
        const int status = inflate(&stream, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
            LV_TRACE(kModule, "Deflated data set does not inflate near byte %llu: %s",
                     static_cast<unsigned long long>(consumed - stream.avail_in), stream.msg ? stream.msg : "zlib error");
            return false;
        }
        const std::size_t produced = out.size() - stream.avail_out;
        if (produced > 0 && !output(out.data(), produced)) return false;
        if (status == Z_STREAM_END) return true;
    }
}

struct InflateReader::State {
    Inflater inflater;
};

InflateReader::InflateReader(std::shared_ptr<const Portability::OpenFile> file, std::uint64_t start)
    : state_(std::make_unique<State>()), file_(std::move(file)), at_(start) {
    if (!state_->inflater.Ready() || !file_ || start > file_->Size()) {
        LV_TRACE(kModule, "%s", "The inflater cannot be set up");
        failed_ = true;
    }
}

InflateReader::~InflateReader() = default;

std::size_t InflateReader::Read(std::uint8_t* data, std::size_t size) {
    z_stream& stream = state_->inflater.Stream();
    std::size_t done = 0;
    while (done < size && !finished_ && !failed_) {
        if (stream.avail_in == 0) {
            const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(kChunk, file_->Size() - at_));
            in_.resize(count);
            if (count == 0 || !file_->ReadAt(in_.data(), count, at_)) {
                LV_TRACE(kModule, "Deflated data set ends before its deflate stream, after %llu inflated bytes",
                         static_cast<unsigned long long>(produced_));
                failed_ = true;
                break;
            }
            at_ += count;
            stream.next_in = in_.data();
            stream.avail_in = static_cast<uInt>(count);
        }
        const auto want = static_cast<uInt>(std::min<std::size_t>(size - done, kChunk));
        stream.next_out = data + done;
        stream.avail_out = want;
        const int status = inflate(&stream, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
            LV_TRACE(kModule, "Deflated data set does not inflate after %llu inflated bytes: %s",
                     static_cast<unsigned long long>(produced_), stream.msg ? stream.msg : "zlib error");
            failed_ = true;
            break;
        }
        const std::size_t produced = want - stream.avail_out;
        done += produced;
        produced_ += produced;
        finished_ = status == Z_STREAM_END;
    }
    return done;
}

bool InflateReader::ReadExactly(std::uint8_t* data, std::size_t size) { return Read(data, size) == size; }

bool InflateReader::Discard(std::uint64_t count) {
    std::vector<std::uint8_t> sink(static_cast<std::size_t>(std::min<std::uint64_t>(count, kChunk)));
    while (count > 0) {
        const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(count, sink.size()));
        const std::size_t got = Read(sink.data(), want);
        if (got == 0) return false;
        count -= got;
    }
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
