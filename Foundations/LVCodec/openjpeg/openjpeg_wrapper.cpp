#include "Foundations/LVCodec/openjpeg/openjpeg_wrapper.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <openjpeg.h>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module JPEG2000";
constexpr std::uint8_t kCodestreamMagic[] = {0xFF, 0x4F, 0xFF, 0x51};

struct MemorySource {
    std::span<const std::uint8_t> bytes;
    std::uint64_t position = 0;
};

OPJ_SIZE_T ReadMemory(void* out, OPJ_SIZE_T length, void* user) {
    auto* source = static_cast<MemorySource*>(user);
    const std::uint64_t left = source->bytes.size() - source->position;
    if (left == 0) return static_cast<OPJ_SIZE_T>(-1);
    const std::uint64_t count = std::min<std::uint64_t>(length, left);
    std::memcpy(out, source->bytes.data() + source->position, count);
    source->position += count;
    return count;
}

OPJ_OFF_T SkipMemory(OPJ_OFF_T count, void* user) {
    auto* source = static_cast<MemorySource*>(user);
    const std::uint64_t left = source->bytes.size() - source->position;
    if (count < 0) return -1;
    const std::uint64_t skipped = std::min<std::uint64_t>(static_cast<std::uint64_t>(count), left);
    source->position += skipped;
    return static_cast<OPJ_OFF_T>(skipped);
}

OPJ_BOOL SeekMemory(OPJ_OFF_T position, void* user) {
    auto* source = static_cast<MemorySource*>(user);
    if (position < 0 || static_cast<std::uint64_t>(position) > source->bytes.size()) return OPJ_FALSE;
    source->position = static_cast<std::uint64_t>(position);
    return OPJ_TRUE;
}

void TraceError(const char* message, void*) { LV_TRACE(kModule, "openjpeg: %s", message); }

struct CodecDeleter {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct StreamDeleter {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct ImageDeleter {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};

bool CheckComponents(const opj_image_t& decoded) {
    if (decoded.numcomps < 1 || decoded.numcomps > 4 || decoded.comps == nullptr) {
        LV_TRACE(kModule, "Unsupported component count %u", decoded.numcomps);
        return false;
    }
    const opj_image_comp_t& first = decoded.comps[0];
    for (OPJ_UINT32 c = 0; c < decoded.numcomps; ++c) {
        const opj_image_comp_t& comp = decoded.comps[c];
        if (comp.data == nullptr || comp.w != first.w || comp.h != first.h || comp.prec != first.prec ||
            comp.prec < 1 || comp.prec > 16 || comp.sgnd != first.sgnd) {
            LV_TRACE(kModule, "Unsupported component %u: %u x %u, %u bits, signed %u", c, comp.w, comp.h, comp.prec,
                     comp.sgnd);
            return false;
        }
    }
    return true;
}

bool StoreComponents(const opj_image_t& decoded, LVImageMemory& image) {
    const opj_image_comp_t& first = decoded.comps[0];
    const unsigned bits = first.prec <= 8 ? 8 : first.prec;
    if (!AllocateImage(image, first.w, first.h, decoded.numcomps, bits, kModule)) return false;
    LVBuffer2D& out = image.Buffer();
    out.SetUnsigned(first.sgnd == 0);  // signed components keep their values; callers shift them
    const std::int64_t minimum = first.sgnd ? -(std::int64_t{1} << (first.prec - 1)) : 0;
    const std::int64_t maximum = first.sgnd ? (std::int64_t{1} << (first.prec - 1)) - 1 : out.Type().MaxValue();
    for (unsigned p = 0; p < decoded.numcomps; ++p) {
        const OPJ_INT32* data = decoded.comps[p].data;
        for (std::int32_t y = 0; y < out.Height(); ++y)
            for (std::int32_t x = 0; x < out.Width(); ++x) {
                const std::int64_t v = data[static_cast<std::size_t>(y) * first.w + static_cast<std::size_t>(x)];
                out.SetSample(p, x, y, std::clamp<std::int64_t>(v, minimum, maximum));
            }
    }
    return true;
}

}  // namespace

bool DecodeJpeg2000(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    const bool codestream = bytes.size() >= 4 && std::memcmp(bytes.data(), kCodestreamMagic, 4) == 0;
    const std::unique_ptr<opj_codec_t, CodecDeleter> codec(opj_create_decompress(codestream ? OPJ_CODEC_J2K
                                                                                            : OPJ_CODEC_JP2));
    MemorySource source{bytes, 0};
    const std::unique_ptr<opj_stream_t, StreamDeleter> stream(opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_TRUE));
    if (!codec || !stream) return false;
    opj_stream_set_user_data(stream.get(), &source, nullptr);
    opj_stream_set_user_data_length(stream.get(), bytes.size());
    opj_stream_set_read_function(stream.get(), ReadMemory);
    opj_stream_set_skip_function(stream.get(), SkipMemory);
    opj_stream_set_seek_function(stream.get(), SeekMemory);
    opj_set_error_handler(codec.get(), TraceError, nullptr);
    opj_set_warning_handler(codec.get(), TraceError, nullptr);

    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* header = nullptr;
    if (!opj_setup_decoder(codec.get(), &parameters) || !opj_read_header(stream.get(), codec.get(), &header)) {
        opj_image_destroy(header);
        LV_TRACE(kModule, "Cannot read the JPEG 2000 header");
        return false;
    }
    const std::unique_ptr<opj_image_t, ImageDeleter> decoded(header);
    if (!IsSaneGeometry(std::uint64_t{decoded->x1} - decoded->x0, std::uint64_t{decoded->y1} - decoded->y0) ||
        decoded->x1 < decoded->x0 || decoded->y1 < decoded->y0 || decoded->numcomps > 4) {
        LV_TRACE(kModule, "Refusing JPEG 2000 image of %u x %u pixels", decoded->x1 - decoded->x0,
                 decoded->y1 - decoded->y0);
        return false;
    }
    if (!opj_decode(codec.get(), stream.get(), decoded.get()) || !opj_end_decompress(codec.get(), stream.get())) {
        LV_TRACE(kModule, "Cannot decode the JPEG 2000 image");
        return false;
    }
    return CheckComponents(*decoded) && StoreComponents(*decoded, image);
}

}  // namespace Lumivale::Imaging
