#pragma once
// Image codec interface: a stateless singleton per file format, listed in the codec registry.

#include <cstdint>
#include <string>

namespace Lumivale::Imaging {

class LVImage;

// Bytes a file must hold at a given offset to be recognised by a codec.
struct LVImageSignature {
    std::uint32_t offset = 0;             // byte offset from the start of the file
    std::uint32_t length = 0;             // number of bytes compared; 0 ends a list
    const std::uint8_t* bytes = nullptr;  // the expected bytes
};

// Format identifiers of the registered codecs.
enum class LVImageFormat : unsigned {
    Jpeg = 0, Jpeg2000 = 1, Tiff = 2, Png = 3, Bmp = 4, Dicom = 5, Pnm = 6, JpegLs = 7, Unknown = 8
};

// Capability bit: the codec can decode.
inline constexpr unsigned kCodecCanDecode = 2;
// Capabilities every real codec reports.
inline constexpr unsigned kCodecAllCapabilities = 7;

// Load flag: load the file's embedded thumbnail instead of its main image.
inline constexpr unsigned kLoadThumbnail = 1;
// Load flag: choose the codec by the file's first bytes instead of its extension.
inline constexpr unsigned kLoadBySignature = 4;

// An image file format.
class LVImageCodec {
public:
    virtual ~LVImageCodec() = default;
    // Display name, e.g. "JPEG".
    virtual const char* Name() const = 0;
    // Format identifier.
    virtual unsigned FormatId() const = 0;
    // Capability bits (kCodecCanDecode and others); 0 for the default codec.
    virtual unsigned Capabilities() const { return kCodecAllCapabilities; }
    // Null-terminated list of lower-case extensions without the dot.
    virtual const char* const* Extensions() const = 0;
    // Decode the file at path into image: frame picks the frame (or page) where a format has several,
    // codecOption is a second option word no codec of this program reads, loadFlags are kLoad* bits.
    virtual bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                        unsigned loadFlags) const = 0;
    // Encode image to path; no codec of this program encodes through this entry.
    virtual bool Encode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                        unsigned saveFlags) const;
    // Save image to path with one format word; not supported by these codecs.
    virtual bool Save(LVImage& image, const std::string& path, unsigned word) const;
    // True for codecs whose files carry a DICOM data set beside the pixels (the DICOM codec only).
    virtual bool CarriesDataSet() const { return false; }
    // Decode the thumbnail embedded in the file at path; false when the format has none.
    virtual bool DecodeThumbnail(LVImage& image, const std::string& path) const;
    // List of signatures ended by a record of length 0, or null.
    virtual const LVImageSignature* Signatures() const { return nullptr; }
};

// Fallback codec stored after the registry's terminator: recognises and decodes nothing.
class LVImageCodec_Default : public LVImageCodec {
public:
    // "Unknown".
    const char* Name() const override { return "Unknown"; }
    // 8.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Unknown); }
    // No capabilities.
    unsigned Capabilities() const override { return 0; }
    // No extensions.
    const char* const* Extensions() const override;
    // Always fails.
    bool Decode(LVImage&, const std::string&, unsigned, unsigned, unsigned) const override { return false; }
};

}  // namespace Lumivale::Imaging
