#include "Foundations/LVCodec/LVImageCodecRegistry.h"

#include "Foundations/LVCodec/bmp/LVImageCodec_BMP.h"
#include "Foundations/LVCodec/dicom/LVImageCodec_Dicom.h"
#include "Foundations/LVCodec/jpeg/LVImageCodec_LibJpeg.h"
#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"
#include "Foundations/LVCodec/openjpeg/LVImageCodec_OpenJpeg2000.h"
#include "Foundations/LVCodec/png/LVImageCodec_LibPNG.h"
#include "Foundations/LVCodec/pnm/LVImageCodec_PNM.h"
#include "Foundations/LVCodec/tiff/LVImageCodec_LibTiff.h"
#include "Portability/Misc/Utf8Path.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <strings.h>
#include <vector>

namespace Lumivale::Imaging {

namespace {

const LVImageCodec_LibTiff kTiff;
const LVImageCodec_LibJpeg kJpeg;
const LVImageCodec_OpenJpeg2000 kJpeg2000;
const LVImageCodec_LibPNG kPng;
const LVImageCodec_BMP kBmp;
const LVImageCodec_Dicom kDicom;
const LVImageCodec_PNM kPnm;
const LVImageCodec_JPEGLS kJpegLs;
const LVImageCodec_Default kDefault;

// Order matters only for signatures: JPEG (FF D8) precedes JPEG-LS (FF D8 FF F7) and claims its files.
// The default codec is no member: it is what an unknown format identifier finds.
constexpr std::array<const LVImageCodec*, 8> kRegistry = {&kTiff, &kJpeg,  &kJpeg2000, &kPng,
                                                          &kBmp,  &kDicom, &kPnm,      &kJpegLs};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool MatchesSignature(std::FILE* file, const LVImageSignature& signature) {
    if (std::fseek(file, static_cast<long>(signature.offset), SEEK_SET) != 0) return false;
    std::vector<std::uint8_t> read(signature.length);
    return std::fread(read.data(), 1, read.size(), file) == read.size() &&
           std::memcmp(read.data(), signature.bytes, read.size()) == 0;
}

}  // namespace

std::span<const LVImageCodec* const> ImageCodecRegistry() { return kRegistry; }

const LVImageCodec* FindCodecByExtension(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos) return nullptr;
    const std::string extension(path.substr(dot + 1));
    for (const LVImageCodec* codec : kRegistry)
        for (const char* const* known = codec->Extensions(); known && *known; ++known)
            if (strcasecmp(extension.c_str(), *known) == 0) return codec;
    return nullptr;
}

const LVImageCodec* FindCodecBySignature(const std::string& path) {
    const std::unique_ptr<std::FILE, FileCloser> file(Portability::OpenUtf8File(path, "rb"));
    if (!file) return nullptr;
    for (const LVImageCodec* codec : kRegistry)
        for (const LVImageSignature* s = codec->Signatures(); s && s->length != 0; ++s)
            if (MatchesSignature(file.get(), *s)) return codec;
    return nullptr;
}

const LVImageCodec& FindCodecById(unsigned id) {
    for (const LVImageCodec* codec : kRegistry)
        if (codec->FormatId() == id) return *codec;
    return kDefault;
}

}  // namespace Lumivale::Imaging
