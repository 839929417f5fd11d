#include "Foundations/LVCodec/dicom/DicomImageReader.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomEncodingRules.h"
#include "Foundations/LVCodec/ByteReader.h"
#include "Portability/Misc/DebugTrace.h"

#include <cstdlib>
#include <cstring>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module DICOM image";
constexpr std::uint64_t kPreambleSize = 128;
constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;
constexpr unsigned kMaxDepth = 16;

namespace Codec = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
using Codec::Tag;
namespace Tags = Codec::Tags;

// True when the explicit header of this VR, whose 16-bit length field holds shortField, has two
// reserved bytes and a 32-bit length (the codec's VR table decides, tolerance included).
bool IsLongVr(const char* vr, std::uint16_t shortField) {
    return Codec::ReadsLongLengthField(Codec::VRFromCode(std::string_view(vr, 2)), shortField);
}

struct ElementHeader {
    Tag tag;
    char vr[3] = {};
    std::uint32_t length = 0;
    std::uint64_t valueOffset = 0;
};

class DataSetParser {
public:
    DataSetParser(const ByteReader& in, bool explicitVr) : in_(in), explicit_(explicitVr) {}

    // Parse elements from pos until end or an item delimiter; attributes of interest go to target.
    bool ParseDataSet(std::uint64_t& pos, std::uint64_t end, unsigned depth, DicomPixelAttributes* target,
                      DicomImageFile& file) {
        if (depth > kMaxDepth) return Fail(pos, Tag{}, "nesting too deep");
        while (pos < end) {
            ElementHeader header;
            if (!ReadHeader(pos, header)) return false;
            if (header.tag == Tags::ItemDelimitationItem) {
                pos = header.valueOffset;
                return true;
            }
            const bool undefined = header.length == kUndefinedLength;
            if (header.tag == Tags::PixelData && undefined) {
                if (!ReadFragments(header, pos, target)) return false;
                continue;
            }
            const bool sequence = std::strcmp(header.vr, "SQ") == 0 || (!explicit_ && undefined) ||
                                   header.tag == Tags::IconImageSequence;
            if (sequence) {
                DicomPixelAttributes* itemTarget =
                    header.tag == Tags::IconImageSequence && depth == 0 ? &file.icon : nullptr;
                if (!ParseSequence(header, pos, depth, itemTarget, file)) return false;
                continue;
            }
            if (undefined || !in_.Has(header.valueOffset, header.length))
                return Fail(pos, header.tag, "value length beyond the end of the file");
            if (target) Store(header, *target);
            if (header.tag == Tags::PixelData && target) {
                target->has_pixel_data = header.length > 0;
                target->pixel_data = {in_.At(header.valueOffset), header.length};
            }
            pos = header.valueOffset + header.length;
        }
        return true;
    }

private:
    bool Fail(std::uint64_t pos, Tag tag, const char* why) {
        LV_TRACE(kModule, "Cannot parse at offset %llu, TAG%s: %s", static_cast<unsigned long long>(pos),
                 Codec::TagText(tag).c_str(), why);
        return false;
    }

    bool ReadHeader(std::uint64_t pos, ElementHeader& header) {
        if (!in_.Has(pos, 8)) return Fail(pos, Tag{}, "truncated element header");
        header.tag = Tag{in_.Le16(pos), in_.Le16(pos + 2)};
        const bool delimiter = header.tag.group == 0xFFFE;
        if (explicit_ && !delimiter) {
            header.vr[0] = static_cast<char>(in_.At(pos + 4)[0]);
            header.vr[1] = static_cast<char>(in_.At(pos + 4)[1]);
            if (IsLongVr(header.vr, in_.Le16(pos + 6))) {
                if (!in_.Has(pos, 12)) return Fail(pos, header.tag, "truncated element header");
                header.length = in_.Le32(pos + 8);
                header.valueOffset = pos + 12;
                return true;
            }
            header.length = in_.Le16(pos + 6);
            header.valueOffset = pos + 8;
            return true;
        }
        header.length = in_.Le32(pos + 4);
        header.valueOffset = pos + 8;
        return true;
    }

    bool ParseSequence(const ElementHeader& header, std::uint64_t& pos, unsigned depth,
                       DicomPixelAttributes* firstItemTarget, DicomImageFile& file) {
        const bool undefined = header.length == kUndefinedLength;
        if (!undefined && !in_.Has(header.valueOffset, header.length))
            return Fail(pos, header.tag, "sequence beyond the end of the file");
        const std::uint64_t end = undefined ? in_.Size() : header.valueOffset + header.length;
        pos = header.valueOffset;
        bool firstItem = true;
        while (pos < end) {
            ElementHeader item;
            const bool saved = explicit_;
            explicit_ = false;  // item and delimiter headers are tag + 32-bit length in every syntax
            const bool read = ReadHeader(pos, item);
            explicit_ = saved;
            if (!read) return false;
            if (item.tag == Tags::SequenceDelimitationItem) {
                pos = item.valueOffset;
                return true;
            }
            if (item.tag != Tags::Item) return Fail(pos, item.tag, "expected an item");
            DicomPixelAttributes* target = firstItem ? firstItemTarget : nullptr;
            if (target) file.has_icon = true;
            firstItem = false;
            pos = item.valueOffset;
            if (item.length == kUndefinedLength) {
                if (!ParseDataSet(pos, end, depth + 1, target, file)) return false;
            } else {
                if (!in_.Has(pos, item.length)) return Fail(pos, item.tag, "item beyond the end of the file");
                std::uint64_t itemPos = pos;
                if (!ParseDataSet(itemPos, pos + item.length, depth + 1, target, file)) return false;
                pos += item.length;
            }
        }
        return !undefined || Fail(pos, header.tag, "sequence without delimiter");
    }

    bool ReadFragments(const ElementHeader& header, std::uint64_t& pos, DicomPixelAttributes* target) {
        pos = header.valueOffset;
        while (true) {
            if (!in_.Has(pos, 8)) return Fail(pos, header.tag, "truncated fragment");
            const Tag tag{in_.Le16(pos), in_.Le16(pos + 2)};
            const std::uint32_t length = in_.Le32(pos + 4);
            pos += 8;
            if (tag == Tags::SequenceDelimitationItem) break;
            if (tag != Tags::Item || !in_.Has(pos, length)) return Fail(pos, tag, "bad fragment");
            if (target) target->fragments.emplace_back(in_.At(pos), length);
            pos += length;
        }
        if (target) {
            target->encapsulated = true;
            target->has_pixel_data = target->fragments.size() > 1;
        }
        return true;
    }

    void Store(const ElementHeader& header, DicomPixelAttributes& target) {
        const std::uint64_t at = header.valueOffset;
        const std::uint16_t us = header.length >= 2 ? in_.Le16(at) : 0;
        switch (header.tag.Number()) {
            case Tags::SamplesPerPixel.Number(): target.samples_per_pixel = us; break;
            case Tags::PlanarConfiguration.Number(): target.planar_configuration = us; break;
            case Tags::Rows.Number(): target.rows = us; break;
            case Tags::Columns.Number(): target.columns = us; break;
            case Tags::BitsAllocated.Number(): target.bits_allocated = us; break;
            case Tags::BitsStored.Number(): target.bits_stored = us; break;
            case Tags::PixelRepresentation.Number(): target.pixel_representation = us; break;
            case Tags::PhotometricInterpretation.Number(): target.photometric_interpretation = Text(header); break;
            case Tags::NumberOfFrames.Number(): {
                const long frames = std::strtol(Text(header).c_str(), nullptr, 10);
                target.number_of_frames = frames > 0 ? static_cast<std::uint64_t>(frames) : 1;
                break;
            }
            default: break;
        }
    }

    std::string Text(const ElementHeader& header) const {
        std::string text(reinterpret_cast<const char*>(in_.At(header.valueOffset)), header.length);
        while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
        while (!text.empty() && text.front() == ' ') text.erase(0, 1);
        return text;
    }

    const ByteReader& in_;
    bool explicit_;
};

// Meta group: explicit little endian elements of group 0002 right after "DICM".
bool ReadMetaGroup(const ByteReader& in, std::uint64_t& pos, DicomImageFile& file) {
    while (in.Has(pos, 8) && in.Le16(pos) == 0x0002) {
        const Tag tag{in.Le16(pos), in.Le16(pos + 2)};
        const char vr[2] = {static_cast<char>(in.At(pos + 4)[0]), static_cast<char>(in.At(pos + 4)[1])};
        const bool longForm = IsLongVr(vr, in.Le16(pos + 6));
        if (longForm && !in.Has(pos, 12)) return false;
        const std::uint64_t length = longForm ? in.Le32(pos + 8) : in.Le16(pos + 6);
        const std::uint64_t value = pos + (longForm ? 12 : 8);
        if (!in.Has(value, length)) {
            LV_TRACE(kModule, "Meta element TAG(0002,%04X) beyond the end of the file", static_cast<unsigned>(tag.element));
            return false;
        }
        if (tag == Tags::TransferSyntaxUID) {
            file.transfer_syntax.assign(reinterpret_cast<const char*>(in.At(value)), length);
            while (!file.transfer_syntax.empty() &&
                   (file.transfer_syntax.back() == '\0' || file.transfer_syntax.back() == ' '))
                file.transfer_syntax.pop_back();
        }
        pos = value + length;
    }
    return true;
}

}  // namespace

bool ReadDicomImageFile(std::span<const std::uint8_t> bytes, DicomImageFile& file) {
    const ByteReader in(bytes);
    if (!in.Has(kPreambleSize, 4) || std::memcmp(in.At(kPreambleSize), "DICM", 4) != 0) {
        LV_TRACE(kModule, "No DICM prefix");
        return false;
    }
    std::uint64_t pos = kPreambleSize + 4;
    if (!ReadMetaGroup(in, pos, file)) return false;
    if (file.transfer_syntax == "1.2.840.10008.1.2.2" || file.transfer_syntax == "1.2.840.10008.1.2.1.99") {
        LV_TRACE(kModule, "Unsupported transfer syntax %s", file.transfer_syntax.c_str());
        return false;
    }
    DataSetParser parser(in, file.transfer_syntax != "1.2.840.10008.1.2");
    return parser.ParseDataSet(pos, in.Size(), 0, &file.main, file);
}

}  // namespace Lumivale::Imaging
