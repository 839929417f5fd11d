// The extended JPEG module: 12-bit DCT and lossless JPEG through the decoders of DCMTK's JPEG
// library (libjpeg builds of 8, 12 and 16 bits with the lossless extension), public interface only.
#include "Foundations/LVCodec/jpeg/JpegExtendedModule.h"

#include <cstdio>
#include <limits>
#include <memory>

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmjpeg/djcparam.h"
#include "dcmtk/dcmjpeg/djdijg12.h"
#include "dcmtk/dcmjpeg/djdijg16.h"
#include "dcmtk/dcmjpeg/djdijg8.h"

namespace {

E_DecompressionColorSpaceConversion ColourConversion(int colour) {
    // The caller's choice for DICOM (by Photometric Interpretation); for plain files the markers
    // decide lossy streams, and lossless colour is kept as stored.
    return colour == 0 ? EDC_guessLossyOnly : EDC_photometricInterpretation;
}

std::unique_ptr<DJDecoder> MakeDecoder(const DJCodecParameter& parameters, unsigned precision, bool ybr) {
    if (precision > 12) return std::make_unique<DJDecompressIJG16Bit>(parameters, ybr);
    if (precision > 8) return std::make_unique<DJDecompressIJG12Bit>(parameters, ybr);
    return std::make_unique<DJDecompressIJG8Bit>(parameters, ybr);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int dicapsule_decode_jpeg_extended(
    const DicapsuleJpegRequest* request, char* message, std::size_t messageSize) {
    const DicapsuleJpegRequest& r = *request;
    const unsigned bytes = r.precision > 8 ? 2 : 1;
    const unsigned long long needed = 1ULL * r.width * r.height * r.components * bytes;
    if (needed > r.outSize || r.outSize > std::numeric_limits<Uint32>::max() ||
        r.size > std::numeric_limits<Uint32>::max()) {
        std::snprintf(message, messageSize, "output of %zu bytes does not fit the frame", r.outSize);
        return 0;
    }
    const DJCodecParameter parameters(ECC_lossyYCbCr, ColourConversion(r.colour), EUC_never, EPC_colorByPixel);
    const std::unique_ptr<DJDecoder> decoder = MakeDecoder(parameters, r.precision, r.colour == 2);
    if (decoder->bytesPerSample() != bytes) {
        std::snprintf(message, messageSize, "decoder gives %u-byte samples", decoder->bytesPerSample());
        return 0;
    }
    // The decoder takes its input through a non-const pointer but only reads it.
    auto* input = const_cast<Uint8*>(r.bytes);
    OFCondition status = decoder->init();
    if (status.good())
        status = decoder->decode(input, static_cast<Uint32>(r.size), r.out, static_cast<Uint32>(r.outSize), OFFalse);
    if (status.bad()) {
        std::snprintf(message, messageSize, "%s", status.text());
        return 0;
    }
    return 1;
}
