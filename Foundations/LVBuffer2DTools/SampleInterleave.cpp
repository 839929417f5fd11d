#include "Foundations/LVBuffer2DTools/SampleInterleave.h"

// These loops run over every sample of a multi-megapixel thumbnail. Stride-3 shuffles only pay off
// with AVX2 byte permutes, so g++ builds an AVX2 clone beside the baseline one and picks it at load
// time; this file is compiled with loop vectorisation on (see CMakeLists.txt).
// (Windows executables cannot pick a clone at load time: they get the baseline loop.)
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(_WIN32)
#define LV_SHUFFLE_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define LV_SHUFFLE_CLONES
#endif

namespace Lumivale::Imaging {

LV_SHUFFLE_CLONES
void InterleaveThreePlanes(const std::uint8_t* __restrict first, const std::uint8_t* __restrict second,
                           const std::uint8_t* __restrict third, std::uint8_t* __restrict out,
                           std::size_t width) noexcept {
    for (std::size_t x = 0; x < width; ++x) {
        out[3 * x] = first[x];
        out[3 * x + 1] = second[x];
        out[3 * x + 2] = third[x];
    }
}

LV_SHUFFLE_CLONES
void SplitIntoThreePlanes(const std::uint8_t* __restrict pixels, std::uint8_t* __restrict first,
                          std::uint8_t* __restrict second, std::uint8_t* __restrict third,
                          std::size_t width) noexcept {
    for (std::size_t x = 0; x < width; ++x) {
        first[x] = pixels[3 * x];
        second[x] = pixels[3 * x + 1];
        third[x] = pixels[3 * x + 2];
    }
}

}  // namespace Lumivale::Imaging
