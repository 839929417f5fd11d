#pragma once
// Inflating the data set of the Deflated Explicit VR Little Endian transfer syntax: raw deflate
// data (RFC 1951, without zlib header), streamed chunk by chunk so that no value is held whole.

#include <cstddef>
#include <cstdint>
#include <functional>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Gives up to `size` further input bytes into `data` and returns their count: 0 at the end.
using InflateInput = std::function<std::size_t(std::uint8_t* data, std::size_t size)>;
// Takes `size` inflated bytes; false stops the inflation.
using InflateOutput = std::function<bool(const std::uint8_t* data, std::size_t size)>;

// Inflate everything `input` gives into `output`. False, with a trace line, when the data are not
// raw deflate data, end before the deflate stream does, or `output` refuses bytes. Bytes after the
// end of the deflate stream are ignored.
bool InflateRawDeflate(const InflateInput& input, const InflateOutput& output);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
