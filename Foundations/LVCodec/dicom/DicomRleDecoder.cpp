#include "Foundations/LVCodec/dicom/DicomRleDecoder.h"

#include "Foundations/LVCodec/ByteReader.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module DICOM image";
constexpr std::uint64_t kHeaderSize = 64;
constexpr std::uint64_t kMaxSegments = 15;

// Where the bytes of one segment go: byte `byteIndex` of every sample of one plane, row by row.
class SegmentSink {
public:
    SegmentSink(const LVBuffer2D& out, unsigned plane, unsigned byteIndex)
        : out_(out), plane_(plane), bytes_(out.Type().BytesPerSample()), offset_(byteIndex) {}
    // Room left, in bytes.
    std::uint64_t Left() const { return total_ - written_; }
    // Append count copies of value (count <= Left()).
    void Repeat(std::uint8_t value, std::uint64_t count) {
        for (; count > 0; --count) Put(value);
    }
    // Append count bytes (count <= Left()).
    void Copy(const std::uint8_t* from, std::uint64_t count) {
        for (std::uint64_t i = 0; i < count; ++i) Put(from[i]);
    }

private:
    void Put(std::uint8_t value) {
        const auto width = static_cast<std::uint64_t>(out_.Width());
        const auto y = static_cast<std::int32_t>(written_ / width);
        const std::uint64_t x = written_ % width;
        out_.Row(plane_, y)[x * bytes_ + offset_] = value;
        ++written_;
    }

    const LVBuffer2D& out_;
    unsigned plane_;
    unsigned bytes_;
    unsigned offset_;
    std::uint64_t written_ = 0;
    std::uint64_t total_ = static_cast<std::uint64_t>(out_.Width()) * static_cast<std::uint64_t>(out_.Height());
};

// PackBits: a header byte n of 0..127 is followed by n + 1 literal bytes, one of -1..-127 by a byte
// repeated 1 - n times; -128 is skipped. Decoding stops when the plane is full (encoders may pad).
bool DecodeSegment(std::span<const std::uint8_t> segment, SegmentSink& sink) {
    std::size_t pos = 0;
    while (sink.Left() > 0) {
        if (pos >= segment.size()) return false;
        const auto n = static_cast<std::int8_t>(segment[pos++]);
        if (n >= 0) {
            const std::uint64_t count = static_cast<std::uint64_t>(n) + 1;
            if (count > segment.size() - pos || count > sink.Left()) return false;
            sink.Copy(segment.data() + pos, count);
            pos += count;
        } else if (n != -128) {
            const std::uint64_t count = 1 - static_cast<std::int64_t>(n);
            if (pos >= segment.size() || count > sink.Left()) return false;
            sink.Repeat(segment[pos++], count);
        }
    }
    return true;
}

}  // namespace

bool DecodeDicomRle(std::span<const std::uint8_t> frame, const LVBuffer2D& out) {
    const ByteReader in(frame);
    const unsigned bytes = out.Type().BytesPerSample();
    const std::uint64_t expected = std::uint64_t{out.Planes()} * bytes;
    std::uint64_t segments = 0;
    if (!out.IsValid() || !in.Le(0, 4, segments) || segments != expected || segments > kMaxSegments ||
        !in.Has(0, kHeaderSize)) {
        LV_TRACE(kModule, "RLE header: %llu segments for %u samples of %u bytes", static_cast<unsigned long long>(segments),
                 out.Planes(), bytes);
        return false;
    }
    for (unsigned s = 0; s < segments; ++s) {
        const std::uint64_t start = in.Le32(4 + 4 * s);
        const std::uint64_t end = s + 1 < segments ? in.Le32(4 + 4 * (s + 1)) : frame.size();
        if (start < kHeaderSize || end < start || end > frame.size()) {
            LV_TRACE(kModule, "RLE segment %u at %llu..%llu outside the frame", s, static_cast<unsigned long long>(start),
                     static_cast<unsigned long long>(end));
            return false;
        }
        // Segment s holds byte (s % bytes) of sample s / bytes, most significant first.
        const unsigned significance = bytes - 1 - s % bytes;
        const unsigned byteIndex = std::endian::native == std::endian::little ? significance : bytes - 1 - significance;
        SegmentSink sink(out, s / bytes, byteIndex);
        if (!DecodeSegment(frame.subspan(start, end - start), sink)) {
            LV_TRACE(kModule, "RLE segment %u does not fill its plane", s);
            return false;
        }
    }
    return true;
}

}  // namespace Lumivale::Imaging
