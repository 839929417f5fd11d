#include "Foundations/LVCodec/tiff/TiffWrapper.h"

#include "Foundations/LVBuffer2DTools/LVOrientation.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Utf8Path.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include <tiffio.h>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module TIFF";
// No single libtiff allocation may exceed 256 MiB, whatever a hostile header claims.
constexpr tmsize_t kMaxSingleAllocation = tmsize_t{1} << 28;

int TraceLibtiffMessage(TIFF*, void*, const char* module, const char* format, va_list arguments) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    LV_TRACE(kModule, "libtiff %s: %s", module ? module : "", text);
    return 1;  // handled: libtiff must not print to stderr
}

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

struct OptionsDeleter {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

TiffHandle OpenTiff(const std::string& path) {
    const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
    if (!options) return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TraceLibtiffMessage, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TraceLibtiffMessage, nullptr);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxSingleAllocation);
    // "m": read strips and tiles as they are needed instead of mapping the whole file, whose pages
    // would otherwise count in the process's memory beside the decoded picture.
#ifdef _WIN32
    return TiffHandle(TIFFOpenWExt(Portability::PathFromUtf8(path).c_str(), "rm", options.get()));
#else
    return TiffHandle(TIFFOpenExt(path.c_str(), "rm", options.get()));
#endif
}

// Number of pages (image file directories) of an open file.
unsigned TiffGetPages(TIFF* tiff) {
    const tdir_t pages = TIFFNumberOfDirectories(tiff);
    LV_TRACE(kModule, "TiffGetPages : %u", static_cast<unsigned>(pages));
    return pages;
}

struct PageLayout {
    std::uint32_t width = 0, height = 0;
    std::uint16_t samples = 1, bits = 1, photometric = 0, planar = PLANARCONFIG_CONTIG, format = SAMPLEFORMAT_UINT;
    std::uint16_t extraSamples = 0;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    bool tiled = false;
    std::uint32_t chunkWidth = 0, chunkHeight = 0;  // tile or strip geometry
};

PageLayout ReadLayout(TIFF* tiff) {
    PageLayout page;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &page.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &page.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &page.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &page.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &page.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &page.format);
    std::uint16_t* extraTypes = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &page.extraSamples, &extraTypes);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &page.orientation);
    if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &page.photometric)) page.photometric = 0xFFFF;
    page.tiled = TIFFIsTiled(tiff) != 0;
    if (page.tiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &page.chunkWidth);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &page.chunkHeight);
    } else {
        page.chunkWidth = page.width;
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &page.chunkHeight);
        page.chunkHeight = std::min(page.chunkHeight, page.height);
    }
    return page;
}

bool IsDirectlyReadable(const PageLayout& page) {
    const bool grey = page.photometric == PHOTOMETRIC_MINISBLACK || page.photometric == PHOTOMETRIC_MINISWHITE;
    const bool rgb = page.photometric == PHOTOMETRIC_RGB;
    return (page.bits == 8 || page.bits == 16) && page.format == SAMPLEFORMAT_UINT && page.chunkWidth > 0 &&
           page.chunkHeight > 0 && ((grey && page.samples <= 2) || (rgb && (page.samples == 3 || page.samples == 4)));
}

// Copy one decoded strip or tile (chunk) at (x0, y0) into the planes.
void StoreChunk(const std::vector<std::uint8_t>& chunk, const PageLayout& page, std::uint32_t x0, std::uint32_t y0,
                unsigned firstPlane, unsigned planesInChunk, const LVOrientedWriter& out) {
    const unsigned bytes = page.bits / 8;
    const std::uint32_t rows = std::min(page.chunkHeight, page.height - y0);
    const std::uint32_t columns = std::min(page.chunkWidth, page.width - x0);
    const bool invert = page.photometric == PHOTOMETRIC_MINISWHITE;
    const std::int64_t maximum = (std::int64_t{1} << page.bits) - 1;
    for (std::uint32_t r = 0; r < rows; ++r)
        for (std::uint32_t c = 0; c < columns; ++c)
            for (unsigned s = 0; s < planesInChunk; ++s) {
                const std::size_t at = ((std::size_t{r} * page.chunkWidth + c) * planesInChunk + s) * bytes;
                std::int64_t v = chunk[at];
                if (bytes == 2) {
                    std::uint16_t wide;
                    std::memcpy(&wide, &chunk[at], 2);
                    v = wide;
                }
                const unsigned plane = firstPlane + s;
                if (invert && plane == 0) v = maximum - v;
                out.WriteSample(plane, static_cast<std::int32_t>(x0 + c), static_cast<std::int32_t>(y0 + r), v);
            }
}

// Allocate the image at the page's upright size.
bool AllocateUpright(const PageLayout& page, unsigned planes, unsigned bits, LVImageMemory& image) {
    const LVOrientation orientation(page.orientation);
    return orientation.SwapsAxes() ? AllocateImage(image, page.height, page.width, planes, bits, kModule)
                                   : AllocateImage(image, page.width, page.height, planes, bits, kModule);
}

bool ReadDirect(TIFF* tiff, const PageLayout& page, LVImageMemory& image) {
    if (!AllocateUpright(page, page.samples, page.bits, image)) return false;
    const LVOrientedWriter writer(image.Buffer(), LVOrientation(page.orientation));
    const bool contiguous = page.planar == PLANARCONFIG_CONTIG;
    const unsigned planesInChunk = contiguous ? page.samples : 1;
    const tmsize_t chunkSize = page.tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff);
    const std::uint64_t needed =
        std::uint64_t{page.chunkWidth} * page.chunkHeight * planesInChunk * (page.bits / 8);
    if (chunkSize <= 0 || needed > static_cast<std::uint64_t>(kMaxSingleAllocation)) return false;
    std::vector<std::uint8_t> chunk(std::max<std::uint64_t>(needed, static_cast<std::uint64_t>(chunkSize)));
    for (unsigned plane = 0; plane < (contiguous ? 1u : page.samples); ++plane)
        for (std::uint32_t y = 0; y < page.height; y += page.chunkHeight)
            for (std::uint32_t x = 0; x < page.width; x += page.chunkWidth) {
                const auto sample = static_cast<std::uint16_t>(plane);
                const tmsize_t read =
                    page.tiled ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, sample), chunk.data(),
                                                     static_cast<tmsize_t>(chunk.size()))
                               : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, y, sample), chunk.data(),
                                                      static_cast<tmsize_t>(chunk.size()));
                if (read < 0) return false;
                StoreChunk(chunk, page, x, y, plane, planesInChunk, writer);
            }
    return true;
}

// The orientation libtiff's RGBA reader must be asked for to leave the rows as stored: it only
// flips, and treats each of 5 to 8 like the one of 1 to 4 that has row 0 on the same side.
std::uint16_t StoredOrderRequest(std::uint16_t orientation) {
    switch (orientation) {
        case ORIENTATION_TOPRIGHT: case ORIENTATION_RIGHTTOP: return ORIENTATION_TOPRIGHT;
        case ORIENTATION_BOTRIGHT: case ORIENTATION_RIGHTBOT: return ORIENTATION_BOTRIGHT;
        case ORIENTATION_BOTLEFT: case ORIENTATION_LEFTBOT: return ORIENTATION_BOTLEFT;
        default: return ORIENTATION_TOPLEFT;
    }
}

// libtiff's RGBA reader state, ended on every path out.
struct RgbaReader {
    TIFFRGBAImage image{};
    bool begun = false;
    ~RgbaReader() {
        if (begun) TIFFRGBAImageEnd(&image);
    }
};

// Any other layout (palette, 1-bit, YCbCr, CMYK...) through libtiff's 8-bit RGBA conversion, one
// strip or tile row at a time, so the RGBA raster never holds more than one run of rows.
bool ReadThroughRgba(TIFF* tiff, const PageLayout& page, LVImageMemory& image) {
    const unsigned planes = page.extraSamples > 0 ? 4 : 3;
    if (!AllocateUpright(page, planes, 8, image)) return false;
    RgbaReader reader;
    char message[1024] = {};
    if (!TIFFRGBAImageOK(tiff, message) || !TIFFRGBAImageBegin(&reader.image, tiff, 0, message)) {
        LV_TRACE(kModule, "libtiff RGBA: %s", message);
        return false;
    }
    reader.begun = true;
    reader.image.req_orientation = StoredOrderRequest(page.orientation);
    const std::uint32_t run = std::max<std::uint32_t>(1, std::min(page.chunkHeight, page.height));
    std::vector<std::uint32_t> raster(std::size_t{page.width} * run);
    const LVOrientedWriter writer(image.Buffer(), LVOrientation(page.orientation));
    std::vector<std::uint8_t> row(std::size_t{page.width} * planes);
    for (std::uint32_t y0 = 0; y0 < page.height; y0 += run) {
        const std::uint32_t rows = std::min(run, page.height - y0);
        reader.image.row_offset = static_cast<int>(y0);
        reader.image.col_offset = 0;
        if (!TIFFRGBAImageGet(&reader.image, raster.data(), page.width, rows)) return false;
        for (std::uint32_t r = 0; r < rows; ++r) {
            const std::uint32_t* pixels = raster.data() + std::size_t{r} * page.width;
            std::uint8_t* red = row.data();
            std::uint8_t* green = red + page.width;
            std::uint8_t* blue = green + page.width;
            std::uint8_t* alpha = blue + page.width;
            for (std::uint32_t x = 0; x < page.width; ++x) {
                red[x] = static_cast<std::uint8_t>(TIFFGetR(pixels[x]));
                green[x] = static_cast<std::uint8_t>(TIFFGetG(pixels[x]));
                blue[x] = static_cast<std::uint8_t>(TIFFGetB(pixels[x]));
                if (planes == 4) alpha[x] = static_cast<std::uint8_t>(TIFFGetA(pixels[x]));
            }
            for (unsigned p = 0; p < planes; ++p)
                writer.WriteRow(p, static_cast<std::int32_t>(y0 + r), row.data() + std::size_t{p} * page.width);
        }
    }
    return true;
}

}  // namespace

bool DecodeTiffFile(const std::string& path, unsigned frame, LVImageMemory& image) {
    const TiffHandle tiff = OpenTiff(path);
    if (!tiff) {
        LV_TRACE(kModule, "Cannot open %s", path.c_str());
        return false;
    }
    const unsigned pages = TiffGetPages(tiff.get());
    if (frame >= pages || !TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(frame))) {
        LV_TRACE(kModule, "Can't set frame %u of input file %s", frame, path.c_str());
        return false;
    }
    const PageLayout page = ReadLayout(tiff.get());
    if (!IsSaneGeometry(page.width, page.height)) {
        LV_TRACE(kModule, "Refusing TIFF page of %u x %u pixels", page.width, page.height);
        return false;
    }
    const bool ok = IsDirectlyReadable(page) ? ReadDirect(tiff.get(), page, image)
                                             : ReadThroughRgba(tiff.get(), page, image);
    if (ok) image.SetFrameCount(pages);
    return ok;
}

}  // namespace Lumivale::Imaging
