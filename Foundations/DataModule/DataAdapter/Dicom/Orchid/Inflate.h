#pragma once
// Inflating the data set of the Deflated Explicit VR Little Endian transfer syntax: raw deflate
// data (RFC 1951, without zlib header), streamed chunk by chunk so that no value is held whole.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Portability {
class OpenFile;
}

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Gives up to `size` further input bytes into `data` and returns their count: 0 at the end.
using InflateInput = std::function<std::size_t(std::uint8_t* data, std::size_t size)>;
// Takes `size` inflated bytes; false stops the inflation.
using InflateOutput = std::function<bool(const std::uint8_t* data, std::size_t size)>;

// Inflate everything `input` gives into `output`. False, with a trace line, when the data are not
// raw deflate data, end before the deflate stream does, or `output` refuses bytes. Bytes after the
// end of the deflate stream are ignored.
bool InflateRawDeflate(const InflateInput& input, const InflateOutput& output);

// Pulls the inflation of raw deflate data that begins at an offset of an open file, a chunk at a
// time: memory stays at two 64 KiB buffers and zlib's window whatever the data inflate to.
class InflateReader {
public:
    InflateReader(std::shared_ptr<const Portability::OpenFile> file, std::uint64_t start);
    ~InflateReader();
    InflateReader(const InflateReader&) = delete;
    InflateReader& operator=(const InflateReader&) = delete;

    // Up to size inflated bytes into data; their count, 0 at the end of the deflate stream or on a
    // failure (traced; Failed tells).
    std::size_t Read(std::uint8_t* data, std::size_t size);
    // Read exactly size bytes; false when the inflation ends or fails first.
    bool ReadExactly(std::uint8_t* data, std::size_t size);
    // Throw away count inflated bytes; false when the inflation ends or fails first.
    bool Discard(std::uint64_t count);
    // Inflated bytes handed out or discarded so far.
    std::uint64_t Produced() const noexcept { return produced_; }
    // True once the deflate stream ended.
    bool Finished() const noexcept { return finished_; }
    // True when the data do not inflate or the file cannot be read.
    bool Failed() const noexcept { return failed_; }

private:
    struct State;
    std::unique_ptr<State> state_;
    std::shared_ptr<const Portability::OpenFile> file_;
    std::uint64_t at_;  // file offset of the next compressed byte to read
    std::vector<std::uint8_t> in_;
    std::uint64_t produced_ = 0;
    bool finished_ = false;
    bool failed_ = false;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
