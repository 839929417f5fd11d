#include "Foundations/LVCodec/dicom/DicomImageReader.h"

#include "Foundations/LVCodec/ByteReader.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/dicom/DicomRleDecoder.h"
#include "Foundations/LVCodec/jpeg/JpegDecoder.h"
#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"
#include "Foundations/LVCodec/openjpeg/openjpeg_wrapper.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>
#include <string_view>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module DICOM image";

bool IsNativeSyntax(std::string_view syntax) {
    return syntax.empty() || syntax == "1.2.840.10008.1.2" || syntax == "1.2.840.10008.1.2.1";
}
// Baseline, extended (12-bit), lossless (process 14) and lossless SV1.
bool IsJpegSyntax(std::string_view syntax) {
    return syntax == "1.2.840.10008.1.2.4.50" || syntax == "1.2.840.10008.1.2.4.51" ||
           syntax == "1.2.840.10008.1.2.4.57" || syntax == "1.2.840.10008.1.2.4.70";
}
bool IsJpegLsSyntax(std::string_view syntax) {
    return syntax == "1.2.840.10008.1.2.4.80" || syntax == "1.2.840.10008.1.2.4.81";
}
bool IsJpeg2000Syntax(std::string_view syntax) {
    return syntax == "1.2.840.10008.1.2.4.90" || syntax == "1.2.840.10008.1.2.4.91";
}
bool IsRleSyntax(std::string_view syntax) { return syntax == "1.2.840.10008.1.2.5"; }

// Lossless encoders often code 12 stored bits at a precision of 16; the icon then keeps the
// data set's Bits Stored, as long as every sample fits in it.
void NarrowToBitsStored(LVBuffer2D& out, std::uint64_t bitsStored) {
    if (bitsStored == 0 || bitsStored >= out.Bits()) return;
    const std::int64_t limit = std::int64_t{1} << bitsStored;
    for (unsigned p = 0; p < out.Planes(); ++p)
        for (std::int32_t y = 0; y < out.Height(); ++y)
            for (std::int32_t x = 0; x < out.Width(); ++x)
                if (out.Sample(p, x, y) >= limit) return;
    out.SetSignificantBits(static_cast<unsigned>(bitsStored));
}

// DICOM states how a colour JPEG was stored; libjpeg would otherwise guess from its markers.
JpegColour ColourOf(const std::string& photometric) {
    if (photometric == "RGB") return JpegColour::Rgb;
    if (photometric == "YBR_FULL" || photometric == "YBR_FULL_422") return JpegColour::Ybr;
    return JpegColour::Guess;
}

// The bytes of one frame of encapsulated pixel data: through the offset table when it has one,
// otherwise all fragments for a single frame, or one fragment per frame.
std::vector<std::uint8_t> FrameFragments(const DicomPixelAttributes& a, unsigned frame) {
    std::vector<std::uint8_t> bytes;
    const auto& fragments = a.fragments;
    if (fragments.size() < 2) return bytes;
    if (a.number_of_frames <= 1) {
        for (std::size_t i = 1; i < fragments.size(); ++i) bytes.insert(bytes.end(), fragments[i].begin(), fragments[i].end());
        return bytes;
    }
    if (frame + 1u < fragments.size()) bytes.assign(fragments[frame + 1u].begin(), fragments[frame + 1u].end());
    return bytes;
}

bool DecodeNative(const DicomPixelAttributes& a, unsigned frame, LVImageMemory& image) {
    const std::uint64_t bytesPerSample = a.bits_allocated / 8;
    const std::uint64_t frameBytes = a.rows * a.columns * a.samples_per_pixel * bytesPerSample;
    if ((a.bits_allocated != 8 && a.bits_allocated != 16) || a.bits_stored == 0 || a.bits_stored > a.bits_allocated ||
        (a.samples_per_pixel != 1 && a.samples_per_pixel != 3)) {
        LV_TRACE(kModule, "Unsupported native layout: %llu samples, %llu/%llu bits",
                 static_cast<unsigned long long>(a.samples_per_pixel), static_cast<unsigned long long>(a.bits_stored),
                 static_cast<unsigned long long>(a.bits_allocated));
        return false;
    }
    if (frame >= a.number_of_frames || a.pixel_data.size() < frameBytes * (frame + 1u)) {
        LV_TRACE(kModule, "Pixel data holds no frame %u", frame);
        return false;
    }
    const unsigned planes = static_cast<unsigned>(a.samples_per_pixel);
    if (!AllocateImage(image, a.columns, a.rows, planes, static_cast<unsigned>(a.bits_stored), kModule)) return false;
    LVBuffer2D& out = image.Buffer();
    const bool isSigned = a.pixel_representation == 1;
    const ByteReader in(a.pixel_data.subspan(frameBytes * frame, frameBytes));
    const std::uint64_t mask = (std::uint64_t{1} << a.bits_stored) - 1;
    const std::uint64_t signBit = std::uint64_t{1} << (a.bits_stored - 1);
    const bool invert = a.photometric_interpretation == "MONOCHROME1";
    for (unsigned p = 0; p < planes; ++p)
        for (std::int32_t y = 0; y < out.Height(); ++y)
            for (std::int32_t x = 0; x < out.Width(); ++x) {
                const std::uint64_t pixel = static_cast<std::uint64_t>(y) * a.columns + static_cast<std::uint64_t>(x);
                const std::uint64_t index = a.planar_configuration == 1 ? p * a.rows * a.columns + pixel
                                                                       : pixel * planes + p;
                std::uint64_t raw = 0;
                in.Le(index * bytesPerSample, static_cast<unsigned>(bytesPerSample), raw);
                raw &= mask;
                if (isSigned) raw ^= signBit;  // two's complement + 2^(bits - 1), as ShiftSignedIntoUnsignedRange
                auto v = static_cast<std::int64_t>(raw);
                if (invert) v = static_cast<std::int64_t>(mask) - v;
                out.SetSample(p, x, y, v);
            }
    return true;
}

bool DecodeRle(const DicomPixelAttributes& a, std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    if ((a.bits_allocated != 8 && a.bits_allocated != 16) || a.bits_stored == 0 || a.bits_stored > a.bits_allocated ||
        (a.samples_per_pixel != 1 && a.samples_per_pixel != 3) || a.photometric_interpretation.starts_with("YBR")) {
        LV_TRACE(kModule, "Unsupported RLE layout: %llu samples of %llu/%llu bits, %s",
                 static_cast<unsigned long long>(a.samples_per_pixel), static_cast<unsigned long long>(a.bits_stored),
                 static_cast<unsigned long long>(a.bits_allocated), a.photometric_interpretation.c_str());
        return false;
    }
    if (!AllocateImage(image, a.columns, a.rows, static_cast<unsigned>(a.samples_per_pixel),
                       static_cast<unsigned>(a.bits_stored), kModule))
        return false;
    if (!DecodeDicomRle(bytes, image.Buffer())) return false;
    if (a.bits_stored < a.bits_allocated) {  // bits above Bits Stored carry no value
        const std::int64_t mask = (std::int64_t{1} << a.bits_stored) - 1;
        LVBuffer2D& out = image.Buffer();
        for (unsigned p = 0; p < out.Planes(); ++p)
            for (std::int32_t y = 0; y < out.Height(); ++y)
                for (std::int32_t x = 0; x < out.Width(); ++x) out.SetSample(p, x, y, out.Sample(p, x, y) & mask);
    }
    return true;
}

bool DecodeEncapsulated(const DicomPixelAttributes& a, const std::string& syntax, unsigned frame,
                        const std::string& source, LVImageMemory& image) {
    const std::vector<std::uint8_t> bytes = FrameFragments(a, frame);
    bool decoded = false;
    if (IsJpegSyntax(syntax)) {
        decoded = DecodeJpeg(bytes, image, {ColourOf(a.photometric_interpretation), false});
        if (!decoded) {
            LV_TRACE(kModule, "Cannot decode : jpg pixels %s", source.c_str());
            return false;
        }
    } else if (IsJpegLsSyntax(syntax)) {
        decoded = DecodeJpegLs(bytes, image);
    } else if (IsJpeg2000Syntax(syntax)) {
        decoded = DecodeJpeg2000(bytes, image);
    } else if (IsRleSyntax(syntax)) {
        decoded = DecodeRle(a, bytes, image);
    } else {
        LV_TRACE(kModule, "Unsupported compression %s", syntax.c_str());
        return false;
    }
    if (!decoded) return false;
    if (a.pixel_representation == 1 && a.bits_stored >= 2 && a.bits_stored <= 16)
        ShiftSignedIntoUnsignedRange(image.Buffer(), static_cast<unsigned>(a.bits_stored));
    NarrowToBitsStored(image.Buffer(), a.bits_stored);
    return true;
}

}  // namespace

bool DecodeDicomPixels(const DicomPixelAttributes& attributes, const std::string& transferSyntax, unsigned frame,
                       const std::string& source, LVImageMemory& image) {
    const std::string& pi = attributes.photometric_interpretation;
    if (pi == "PALETTE COLOR" || (!pi.empty() && pi != "MONOCHROME1" && pi != "MONOCHROME2" && pi != "RGB" &&
                                  !(attributes.encapsulated && pi.starts_with("YBR")))) {
        LV_TRACE(kModule, "Cannot decode : photometric_interpretation %s", pi.c_str());
        return false;
    }
    if (!attributes.has_pixel_data) {
        LV_TRACE(kModule, "%s has no pixel data", source.c_str());
        return false;
    }
    if (!IsNativeSyntax(transferSyntax)) LV_TRACE(kModule, "has compression : %s", transferSyntax.c_str());
    if (attributes.encapsulated) return DecodeEncapsulated(attributes, transferSyntax, frame, source, image);
    return DecodeNative(attributes, frame, image);
}

bool DecodeDicom(std::span<const std::uint8_t> bytes, bool thumbnail, unsigned frame, const std::string& source,
                 LVImageMemory& image) {
    DicomImageFile file;
    if (!ReadDicomImageFile(bytes, file)) return false;
    if (!thumbnail) return DecodeDicomPixels(file.main, file.transfer_syntax, frame, source, image);
    const DicomPixelAttributes& icon = file.icon;
    if (!file.has_icon || icon.rows == 0 || icon.columns == 0 || icon.bits_allocated == 0 || icon.bits_stored == 0 ||
        icon.samples_per_pixel == 0 || !icon.has_pixel_data) {
        LV_TRACE(kModule, "%s does not embed a thumbnail", source.c_str());
        return false;
    }
    return DecodeDicomPixels(icon, file.transfer_syntax, 0, source, image);
}

}  // namespace Lumivale::Imaging
