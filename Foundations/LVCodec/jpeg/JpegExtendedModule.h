#pragma once
// The C interface of the extended JPEG module, a shared library loaded only when a 12-bit or
// lossless stream is met: its decoders bring dependencies that would slow every process start.

#include <cstddef>
#include <cstdint>

extern "C" {

// One stream to decode and where to put its samples.
struct DicapsuleJpegRequest {
    const std::uint8_t* bytes;  // the JPEG stream
    std::size_t size;
    unsigned precision;         // from the frame header: 1-byte samples up to 8 bits, else 2-byte
    unsigned components;        // 1 or 3
    std::uint32_t width;
    std::uint32_t height;
    int colour;                 // 0: as the markers suggest (lossless: as stored), 1: RGB as stored, 2: YCbCr to RGB
    std::uint8_t* out;          // width * height * components samples, pixel-interleaved, native byte order
    std::size_t outSize;        // bytes at out
};

// Decode the request; 1 on success, 0 on failure with a reason in message (NUL-terminated).
typedef int (*DicapsuleDecodeJpegFunction)(const DicapsuleJpegRequest* request, char* message,
                                           std::size_t messageSize);
}

namespace Lumivale::Imaging {

// Name of the module's entry point.
inline constexpr const char* kJpegModuleEntry = "dicapsule_decode_jpeg_extended";

}  // namespace Lumivale::Imaging
