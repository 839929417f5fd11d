#pragma once
// Golden pixels written beside each generated test image: a text line "planes width height
// bytes-per-sample", then the planes one after the other, samples little-endian.

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace Lumivale::Imaging {

struct Golden {
    unsigned planes = 0, bytes = 0;
    std::int32_t width = 0, height = 0;
    std::vector<std::uint8_t> samples;
    // Sample p of pixel (x, y).
    std::int64_t At(unsigned p, std::int32_t x, std::int32_t y) const {
        const std::size_t i = ((std::size_t{p} * height + y) * width + x) * bytes;
        return bytes == 2 ? samples[i] | samples[i + 1] << 8 : samples[i];
    }
};

// Read the golden file at path; false when it is missing or its size does not match its header.
inline bool ReadGolden(const std::string& path, Golden& golden) {
    std::ifstream in(path, std::ios::binary);
    std::string header;
    if (!std::getline(in, header)) return false;
    std::istringstream(header) >> golden.planes >> golden.width >> golden.height >> golden.bytes;
    golden.samples.assign(std::istreambuf_iterator<char>(in), {});
    return golden.samples.size() == std::size_t{golden.planes} * golden.width * golden.height * golden.bytes;
}

}  // namespace Lumivale::Imaging
