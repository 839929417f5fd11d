#include "Foundations/LVCodec/pnm/PnmWrapper.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/SourceCursor.h"
#include "Portability/Misc/DebugTrace.h"

#include <bit>
#include <cctype>
#include <climits>
#include <optional>
#include <string>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module PNM";
constexpr unsigned kPamMaxMaxval = 65535;

struct PnmHeader {
    char format = 0;  // '1' .. '7'
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t depth = 1;
    std::uint64_t maxval = 1;
};

// Cursor over the file with the Netpbm header conventions (whitespace, '#' comments).
class PnmCursor {
public:
    explicit PnmCursor(const ImageSource& source) : in_(source) {}
    std::uint64_t Remaining() const { return in_.Remaining(); }
    // The next size bytes of a binary raster (valid until the next read), null when they cannot be read.
    const std::uint8_t* Take(std::uint64_t size) { return in_.Take(size); }

    std::optional<char> GetChar() {
        const std::uint8_t* c = in_.Take(1);
        if (!c) {
            LV_TRACE(kModule, "EOF / read error reading a byte");
            return std::nullopt;
        }
        return static_cast<char>(*c);
    }

    // Skip whitespace and comments, then read an unsigned decimal; saturates at UINT_MAX.
    std::optional<std::uint64_t> GetUnsigned(bool& tooLarge) {
        std::optional<char> c;
        while (true) {
            c = GetChar();
            if (!c) return std::nullopt;
            if (*c == '#') {
                while (c && *c != '\n' && *c != '\r') c = GetChar();
                if (!c) return std::nullopt;
            } else if (!std::isspace(static_cast<unsigned char>(*c))) {
                break;
            }
        }
        if (!std::isdigit(static_cast<unsigned char>(*c))) {
            LV_TRACE(kModule, "Junk in file where an unsigned integer should be");
            return std::nullopt;
        }
        std::uint64_t value = 0;
        tooLarge = false;
        while (true) {
            value = value * 10 + static_cast<std::uint64_t>(*c - '0');
            if (value > UINT_MAX) {
                tooLarge = true;
                value = UINT_MAX;
            }
            const std::uint8_t* next = in_.Peek(1);
            if (!next || !std::isdigit(*next)) break;
            c = GetChar();
        }
        return value;
    }

    // Read one line of a PAM header (without the end of line); false at end of file.
    bool GetLine(std::string& line) {
        if (in_.AtEnd()) return false;
        line.clear();
        while (const std::uint8_t* c = in_.Take(1)) {
            if (*c == '\n') break;
            line.push_back(static_cast<char>(*c));
        }
        return true;
    }

private:
    SourceCursor in_;
};

bool ReadMagic(PnmCursor& in, PnmHeader& header) {
    if (in.Remaining() < 2) {
        LV_TRACE(kModule, "Error reading magic number from Netpbm image stream.  Most often, this means your input "
                          "file is empty.");
        return false;
    }
    const char p = *in.GetChar();
    const char format = *in.GetChar();
    if (p != 'P' || format < '1' || format > '7') {
        LV_TRACE(kModule, "bad magic number - not a ppm, pgm, or pbm file");
        return false;
    }
    header.format = format;
    return true;
}

bool ReadClassicHeader(PnmCursor& in, PnmHeader& header) {
    bool tooLarge = false;
    const auto width = in.GetUnsigned(tooLarge);
    if (!width) return false;
    if (tooLarge) {
        LV_TRACE(kModule, "Number of columns in header is too large.");
        return false;
    }
    const auto height = in.GetUnsigned(tooLarge);
    if (!height) return false;
    header.width = *width;
    header.height = *height;
    header.depth = (header.format == '3' || header.format == '6') ? 3 : 1;
    header.maxval = 1;
    if (header.format != '1' && header.format != '4') {
        const auto maxval = in.GetUnsigned(tooLarge);
        if (!maxval) return false;
        header.maxval = *maxval;
    }
    // One whitespace byte separates the header from a binary raster.
    if (header.format >= '4') return static_cast<bool>(in.GetChar());
    return true;
}

struct PamValue {
    const char* key;
    std::uint64_t* target;
    bool seen;
};

bool ParsePamValue(const std::string& key, const std::string& text, std::uint64_t& value) {
    if (text.empty()) {
        LV_TRACE(kModule, "Missing value for %s in PAM file header.", key.c_str());
        return false;
    }
    if (text[0] == '-') {
        LV_TRACE(kModule, "Negative value for %s in PAM file header: '%s'", key.c_str(), text.c_str());
        return false;
    }
    std::uint64_t v = 0;
    for (const char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) {
            LV_TRACE(kModule, "Non-numeric value for %s in PAM file header: '%s'", key.c_str(), text.c_str());
            return false;
        }
        v = v * 10 + static_cast<std::uint64_t>(c - '0');
        if (v > INT_MAX) {
            LV_TRACE(kModule, "Too-large value for %s in PAM file header: '%s'", key.c_str(), text.c_str());
            return false;
        }
    }
    value = v;
    return true;
}

bool ReadPamHeader(PnmCursor& in, PnmHeader& header) {
    PamValue values[] = {{"WIDTH", &header.width, false},
                         {"HEIGHT", &header.height, false},
                         {"DEPTH", &header.depth, false},
                         {"MAXVAL", &header.maxval, false}};
    std::string line;
    while (true) {
        if (!in.GetLine(line)) {
            LV_TRACE(kModule, "EOF or error reading file while trying to read the PAM header");
            return false;
        }
        const std::size_t start = line.find_first_not_of(" \t\r");
        if (start == std::string::npos || line[start] == '#') continue;
        const std::size_t keyEnd = line.find_first_of(" \t\r", start);
        const std::string key = line.substr(start, keyEnd == std::string::npos ? std::string::npos : keyEnd - start);
        if (key == "ENDHDR") break;
        std::string value;
        if (keyEnd != std::string::npos) {
            const std::size_t valueStart = line.find_first_not_of(" \t\r", keyEnd);
            if (valueStart != std::string::npos)
                value = line.substr(valueStart, line.find_last_not_of(" \t\r") + 1 - valueStart);
        }
        for (PamValue& v : values) {
            if (key != v.key) continue;
            if (!ParsePamValue(key, value, *v.target)) return false;
            v.seen = true;
        }
    }
    for (const PamValue& v : values)
        if (!v.seen) {
            LV_TRACE(kModule, "No %s header line in PAM header", v.key);
            return false;
        }
    if (header.depth == 0) {
        LV_TRACE(kModule, "DEPTH value is zero in PAM header");
        return false;
    }
    if (header.maxval > kPamMaxMaxval) {
        LV_TRACE(kModule, "MAXVAL value (%lu) in PAM header is greater than %u", static_cast<unsigned long>(header.maxval),
                 kPamMaxMaxval);
        return false;
    }
    return true;
}

// Bits per output sample and whether samples are rescaled to fill them.
unsigned OutputBits(std::uint64_t maxval, bool& rescale) {
    if (maxval <= 255) {
        rescale = maxval != 255;
        return 8;
    }
    if (std::has_single_bit(maxval + 1)) {
        rescale = false;
        return static_cast<unsigned>(std::bit_width(maxval));
    }
    rescale = true;
    return 16;
}

bool CheckHeader(const PnmHeader& header) {
    if (header.width == 0 || header.width > kPnmMaxSide) {
        LV_TRACE(kModule, "image width (%u) too large to be processed", static_cast<unsigned>(header.width));
        return false;
    }
    if (header.height == 0 || header.height > kPnmMaxSide) {
        LV_TRACE(kModule, "image height (%u) too large to be processed", static_cast<unsigned>(header.height));
        return false;
    }
    if (header.maxval == 0 || header.maxval > kPamMaxMaxval) {
        LV_TRACE(kModule, "maxval %llu out of range", static_cast<unsigned long long>(header.maxval));
        return false;
    }
    if (header.depth > 4) {
        LV_TRACE(kModule, "Unsupported depth %llu", static_cast<unsigned long long>(header.depth));
        return false;
    }
    return true;
}

// Read every sample into the planes, in raster order (pixel by pixel, then sample by sample).
template <typename NextSample>
bool ReadRaster(const PnmHeader& header, LVImageMemory& image, NextSample next) {
    bool rescale = false;
    const unsigned bits = OutputBits(header.maxval, rescale);
    const std::uint64_t outMax = (std::uint64_t{1} << (bits > 8 ? 16 : 8)) - 1;
    const LVBuffer2D& out = image.Buffer();
    for (std::int32_t y = 0; y < out.Height(); ++y)
        for (std::int32_t x = 0; x < out.Width(); ++x)
            for (unsigned p = 0; p < header.depth; ++p) {
                std::uint64_t v = 0;
                if (!next(v)) return false;
                if (v > header.maxval) v = header.maxval;
                if (rescale) v = (v * outMax + header.maxval / 2) / header.maxval;
                out.SetSample(p, x, y, static_cast<std::int64_t>(v));
            }
    return true;
}

}  // namespace

bool DecodePnm(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    return DecodePnm(MemoryImageSource(bytes), image);
}

bool DecodePnm(const ImageSource& source, LVImageMemory& image) {
    PnmCursor in(source);
    PnmHeader header;
    if (!ReadMagic(in, header)) return false;
    if (!(header.format == '7' ? ReadPamHeader(in, header) : ReadClassicHeader(in, header))) return false;
    if (!CheckHeader(header)) return false;

    const std::uint64_t samples = header.width * header.height * header.depth;
    const bool bitmap = header.format == '1' || header.format == '4';
    const bool ascii = header.format <= '3';
    const unsigned sampleBytes = header.maxval > 255 ? 2 : 1;
    const std::uint64_t rowBits = header.width;
    const std::uint64_t needed = header.format == '4' ? (rowBits + 7) / 8 * header.height
                                 : ascii              ? samples  // at least one character per sample
                                                      : samples * sampleBytes;
    if (needed > in.Remaining()) {
        LV_TRACE(kModule, "Raster of %llu bytes expected, %llu left", static_cast<unsigned long long>(needed),
                 static_cast<unsigned long long>(in.Remaining()));
        return false;
    }
    bool rescale = false;
    if (!AllocateImage(image, header.width, header.height, static_cast<unsigned>(header.depth),
                       OutputBits(bitmap ? 255 : header.maxval, rescale), kModule))
        return false;

    if (header.format == '1') {
        header.maxval = 255;
        return ReadRaster(header, image, [&](std::uint64_t& v) {
            std::optional<char> c;
            do {
                c = in.GetChar();
                if (c && *c == '#')
                    while (c && *c != '\n') c = in.GetChar();
            } while (c && *c != '0' && *c != '1');
            if (!c) return false;
            v = *c == '1' ? 0 : 255;
            return true;
        });
    }
    if (header.format == '4') {
        header.maxval = 255;
        std::uint64_t x = 0;
        const std::uint8_t* row = nullptr;
        return ReadRaster(header, image, [&](std::uint64_t& v) {
            if (x == 0 && !(row = in.Take((rowBits + 7) / 8))) return false;
            v = (row[x / 8] >> (7 - x % 8)) & 1 ? 0 : 255;
            x = (x + 1) % header.width;
            return true;
        });
    }
    if (ascii) {
        return ReadRaster(header, image, [&](std::uint64_t& v) {
            bool tooLarge = false;
            const auto value = in.GetUnsigned(tooLarge);
            if (!value) return false;
            v = *value;
            return true;
        });
    }
    // Rows are read one at a time into the planes.
    const std::uint64_t rowBytes = header.width * header.depth * sampleBytes;
    const std::uint8_t* row = nullptr;
    std::uint64_t at = 0;
    return ReadRaster(header, image, [&](std::uint64_t& v) {
        if (at == 0 && !(row = in.Take(rowBytes))) return false;
        v = sampleBytes == 2 ? (std::uint64_t{row[at]} << 8 | row[at + 1]) : row[at];
        at = (at + sampleBytes) % rowBytes;
        return true;
    });
}

}  // namespace Lumivale::Imaging
