#include "Foundations/LVCodec/dicom/DicomImageReader.h"

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

constexpr std::uint32_t Tag(std::uint16_t group, std::uint16_t element) {
    return (std::uint32_t{group} << 16) | element;
}
constexpr std::uint32_t kTransferSyntaxUid = Tag(0x0002, 0x0010);
constexpr std::uint32_t kSamplesPerPixel = Tag(0x0028, 0x0002);
constexpr std::uint32_t kPhotometricInterpretation = Tag(0x0028, 0x0004);
constexpr std::uint32_t kPlanarConfiguration = Tag(0x0028, 0x0006);
constexpr std::uint32_t kNumberOfFrames = Tag(0x0028, 0x0008);
constexpr std::uint32_t kRows = Tag(0x0028, 0x0010);
constexpr std::uint32_t kColumns = Tag(0x0028, 0x0011);
constexpr std::uint32_t kBitsAllocated = Tag(0x0028, 0x0100);
constexpr std::uint32_t kBitsStored = Tag(0x0028, 0x0101);
constexpr std::uint32_t kPixelRepresentation = Tag(0x0028, 0x0103);
constexpr std::uint32_t kIconImageSequence = Tag(0x0088, 0x0200);
constexpr std::uint32_t kPixelData = Tag(0x7FE0, 0x0010);
constexpr std::uint32_t kItem = Tag(0xFFFE, 0xE000);
constexpr std::uint32_t kItemDelimitation = Tag(0xFFFE, 0xE00D);
constexpr std::uint32_t kSequenceDelimitation = Tag(0xFFFE, 0xE0DD);

// True when the explicit header of this VR, whose 16-bit length field holds shortField, has two
// reserved bytes and a 32-bit length (the codec's VR table decides, tolerance included).
bool IsLongVr(const char* vr, std::uint16_t shortField) {
    namespace Codec = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
    return Codec::ReadsLongLengthField(Codec::VRFromCode(std::string_view(vr, 2)), shortField);
}

struct ElementHeader {
    std::uint32_t tag = 0;
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
        if (depth > kMaxDepth) return Fail(pos, 0, "nesting too deep");
        while (pos < end) {
            ElementHeader header;
            if (!ReadHeader(pos, header)) return false;
            if (header.tag == kItemDelimitation) {
                pos = header.valueOffset;
                return true;
            }
            const bool undefined = header.length == kUndefinedLength;
            if (header.tag == kPixelData && undefined) {
                if (!ReadFragments(header, pos, target)) return false;
                continue;
            }
            const bool sequence = std::strcmp(header.vr, "SQ") == 0 || (!explicit_ && undefined) ||
                                   header.tag == kIconImageSequence;
            if (sequence) {
                DicomPixelAttributes* itemTarget =
                    header.tag == kIconImageSequence && depth == 0 ? &file.icon : nullptr;
                if (!ParseSequence(header, pos, depth, itemTarget, file)) return false;
                continue;
            }
            if (undefined || !in_.Has(header.valueOffset, header.length))
                return Fail(pos, header.tag, "value length beyond the end of the file");
            if (target) Store(header, *target);
            if (header.tag == kPixelData && target) {
                target->has_pixel_data = header.length > 0;
                target->pixel_data = {in_.At(header.valueOffset), header.length};
            }
            pos = header.valueOffset + header.length;
        }
        return true;
    }

private:
    bool Fail(std::uint64_t pos, std::uint32_t tag, const char* why) {
        LV_TRACE(kModule, "Cannot parse at offset %llu, TAG(%04X,%04X): %s", static_cast<unsigned long long>(pos),
                 tag >> 16, tag & 0xFFFF, why);
        return false;
    }

    bool ReadHeader(std::uint64_t pos, ElementHeader& header) {
        if (!in_.Has(pos, 8)) return Fail(pos, 0, "truncated element header");
        header.tag = Tag(in_.Le16(pos), in_.Le16(pos + 2));
        const bool delimiter = (header.tag >> 16) == 0xFFFE;
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
            if (item.tag == kSequenceDelimitation) {
                pos = item.valueOffset;
                return true;
            }
            if (item.tag != kItem) return Fail(pos, item.tag, "expected an item");
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
            const std::uint32_t tag = Tag(in_.Le16(pos), in_.Le16(pos + 2));
            const std::uint32_t length = in_.Le32(pos + 4);
            pos += 8;
            if (tag == kSequenceDelimitation) break;
            if (tag != kItem || !in_.Has(pos, length)) return Fail(pos, tag, "bad fragment");
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
        switch (header.tag) {
            case kSamplesPerPixel: target.samples_per_pixel = us; break;
            case kPlanarConfiguration: target.planar_configuration = us; break;
            case kRows: target.rows = us; break;
            case kColumns: target.columns = us; break;
            case kBitsAllocated: target.bits_allocated = us; break;
            case kBitsStored: target.bits_stored = us; break;
            case kPixelRepresentation: target.pixel_representation = us; break;
            case kPhotometricInterpretation: target.photometric_interpretation = Text(header); break;
            case kNumberOfFrames: {
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
        const std::uint32_t tag = Tag(in.Le16(pos), in.Le16(pos + 2));
        const char vr[2] = {static_cast<char>(in.At(pos + 4)[0]), static_cast<char>(in.At(pos + 4)[1])};
        const bool longForm = IsLongVr(vr, in.Le16(pos + 6));
        if (longForm && !in.Has(pos, 12)) return false;
        const std::uint64_t length = longForm ? in.Le32(pos + 8) : in.Le16(pos + 6);
        const std::uint64_t value = pos + (longForm ? 12 : 8);
        if (!in.Has(value, length)) {
            LV_TRACE(kModule, "Meta element TAG(0002,%04X) beyond the end of the file", tag & 0xFFFF);
            return false;
        }
        if (tag == kTransferSyntaxUid) {
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
