#pragma once
// Golden pixels written beside each generated test image: a text line "planes width height
// bytes-per-sample", then the planes one after the other, samples little-endian; and cut copies
// of those images.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace Lumivale::Imaging {

struct Golden {
    unsigned planes = 0, bytes = 0;
    std::int32_t width = 0, height = 0;
    std::vector<std::uint8_t> samples;
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

// Writes copies of directory/file cut short (by one byte, to 3/4, 1/2 and 1/5, to 200 and 20
// bytes) beside it, under a name with the same extension, and hands each path to load: a reader
// must refuse or decode them, never crash or read out of bounds.
template <class Load>
void LoadCutCopies(const std::string& directory, const std::string& file, Load load) {
    std::ifstream in(directory + "/" + file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    ASSERT_FALSE(bytes.empty());
    const std::string cut = directory + "/cut_" + file;
    const std::size_t size = bytes.size();
    for (const std::size_t keep : {size - 1, size * 3 / 4, size / 2, size / 5, std::size_t{200}, std::size_t{20}}) {
        std::ofstream(cut, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(std::min(keep, size)));
        load(cut);
    }
    std::remove(cut.c_str());
}

}  // namespace Lumivale::Imaging
