#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr const char* kModule = "Module DicomDataStream";
constexpr std::uint16_t kItemGroup = 0xFFFE;
constexpr std::uint16_t kItemElement = 0xE000;
constexpr std::uint16_t kItemDelimitationElement = 0xE00D;
constexpr std::uint16_t kSequenceDelimitationElement = 0xE0DD;
constexpr std::uint16_t kMetaGroup = 0x0002;
// What a read holds for each element it reports besides its value: the node, its tag and links.
constexpr std::uint64_t kHeldPerElement = 256;

void KeepUnitOrder(std::uint8_t*, std::uint64_t, unsigned) noexcept {}

void SwapUnitOrder(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept {
    SwapUnitsInPlace(data, size, unitSize);
}

std::string Hex4(std::uint16_t value) { return Portability::TraceFormat("%04X", value); }

DicomElementKind KindOfTag(std::uint16_t group, std::uint16_t element) noexcept {
    if (group != kItemGroup) return DicomElementKind::Element;
    switch (element) {
        case kItemElement: return DicomElementKind::Item;
        case kItemDelimitationElement: return DicomElementKind::ItemDelimitation;
        case kSequenceDelimitationElement: return DicomElementKind::SequenceDelimitation;
        default: return DicomElementKind::Element;
    }
}

bool IsNesting(DicomElementKind kind) noexcept {
    return kind == DicomElementKind::Sequence || kind == DicomElementKind::Item;
}

}  // namespace

DicomDataStream::DicomDataStream() : readOrder_(KeepUnitOrder), writeOrder_(KeepUnitOrder) {}

void DicomDataStream::SetEncoding(StreamEncoding encoding) noexcept {
    encoding_ = encoding;
    const bool swap = encoding == StreamEncoding::ExplicitBigEndian;
    readOrder_ = swap ? SwapUnitOrder : KeepUnitOrder;
    writeOrder_ = readOrder_;
}

void DicomDataStream::ResetReadState() noexcept {
    insideEncapsulatedPixelData_ = false;
    pendingEnds_.clear();
    openNesting_ = 0;
    implicitScopes_.clear();
    skipping_ = false;
    skipUntil_ = 0;
    heldBytes_ = 0;
    result_ = {};
    filledLaterOffsets_.clear();
}

bool DicomDataStream::Fail(DicomReadStatus status, std::uint64_t offset, Tag tag) {
    if (result_) result_ = {status, offset, tag};
    return false;
}

std::string_view DicomReadStatusDescription(DicomReadStatus status) noexcept {
    switch (status) {
        case DicomReadStatus::Success: return "No error";
        case DicomReadStatus::FileNotOpened: return "The file cannot be opened";
        case DicomReadStatus::NotDicom:
            return "Not a DICOM file: no \"DICM\" prefix, and the first group is neither 0002 nor 0008";
        case DicomReadStatus::NotInflated: return "The deflated data set does not inflate";
        case DicomReadStatus::TruncatedHeader: return "Truncated element header";
        case DicomReadStatus::ValuePastEnd: return "Value runs past the end of the data";
        case DicomReadStatus::LengthPastContainer: return "Length runs past its container";
        case DicomReadStatus::CrossesContainerEnd: return "Element crosses the end of its item or sequence";
        case DicomReadStatus::EndsInsideSequence: return "Data ends inside open sequences or items";
        case DicomReadStatus::NestingTooDeep: return "Sequences nest deeper than the read allows";
        case DicomReadStatus::TooMuchHeld: return "Values beyond what the read may hold in memory";
        case DicomReadStatus::ValueUnreadable: return "Value cannot be read";
        case DicomReadStatus::ElementRejected: return "Element not accepted by the data set";
        case DicomReadStatus::DelimitationRejected: return "Delimitation not accepted";
        case DicomReadStatus::SourceFailed: return "Reading stopped";
        case DicomReadStatus::UnknownNotItems: return "UN value is not a run of items";
        case DicomReadStatus::UnknownOutsideFile: return "UN value lies outside its file";
        case DicomReadStatus::UnknownNotHeld: return "UN value of a deflated data set cannot be held";
        case DicomReadStatus::UnknownUnreachable: return "UN value cannot be reached";
    }
    return "Unknown read status";
}

bool DicomReadResult::NotDicom() const noexcept {
    return status == DicomReadStatus::FileNotOpened || status == DicomReadStatus::NotDicom;
}

std::string DicomReadResult::Text() const {
    std::string text = std::string(DicomReadStatusDescription(status)) + " at offset " + std::to_string(offset);
    if (tag != Tag{}) text += " in TAG" + TagText(tag);
    return text;
}

// ---------------------------------------------------------------- reading

bool DicomDataStream::ReadUnits(std::uint8_t* data, std::uint64_t size, unsigned unitSize) {
    if (!ReadRaw(data, size)) return false;
    readOrder_(data, size, unitSize);
    return true;
}

bool DicomDataStream::ReadU16(std::uint16_t& value) {
    std::array<std::uint8_t, 2> bytes{};
    if (!ReadUnits(bytes.data(), 2, 2)) return false;
    value = static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
    return true;
}

bool DicomDataStream::ReadU32(std::uint32_t& value) {
    std::array<std::uint8_t, 4> bytes{};
    if (!ReadUnits(bytes.data(), 4, 4)) return false;
    value = std::uint32_t{bytes[0]} | (std::uint32_t{bytes[1]} << 8) | (std::uint32_t{bytes[2]} << 16) |
            (std::uint32_t{bytes[3]} << 24);
    return true;
}

bool DicomDataStream::PeekGroup(std::uint16_t& group) {
    const std::uint64_t start = Position();
    const bool read = ReadU16(group);
    return SetPosition(start) && read;
}

bool DicomDataStream::ReadHeader(DicomDataSetElement& record) {
    record.headerPosition = Position();
    if (!ReadU16(record.tag.group) || !ReadU16(record.tag.element)) return false;
    record.kind = KindOfTag(record.tag.group, record.tag.element);
    if (record.kind != DicomElementKind::Element) return true;  // items and delimitations have no VR
    if (IsExplicit(encoding_)) {
        std::array<char, 2> code{};
        if (!ReadRaw(code.data(), code.size())) return false;
        record.vr = VRFromCode(std::string_view(code.data(), code.size()));
    } else {
        record.vr = EntryByTag(record.tag).vr;
    }
    if (record.vr == ValueRepresentation::SQ) record.kind = DicomElementKind::Sequence;
    return true;
}

bool DicomDataStream::ReadLength(DicomDataSetElement& record) {
    if (record.kind == DicomElementKind::Item || !IsExplicit(encoding_)) return ReadU32(record.valueLength);
    if (record.kind != DicomElementKind::Element && record.kind != DicomElementKind::Sequence) {
        record.valueLength = 0;  // delimitations: the length field carries nothing
        return Skip(4);
    }
    std::uint16_t shortLength = 0;
    if (!ReadU16(shortLength)) return false;
    if (ReadsLongLengthField(record.vr, shortLength)) return ReadU32(record.valueLength);
    record.valueLength = shortLength;
    return true;
}

bool DicomDataStream::OpenNested(DicomDataSetElement& record) {
    if (++openNesting_ > 2 * options_.maxSequenceDepth) {
        return Fail(DicomReadStatus::NestingTooDeep, record.headerPosition, record.tag);
    }
    if (record.valueLength == kUndefinedLength || !IsNesting(record.kind)) return true;
    const std::uint64_t rawEnd = Position() + record.valueLength;
    const std::uint64_t end = EvenLength(rawEnd);
    const std::uint64_t limit = pendingEnds_.empty() ? EvenLength(Size()) : pendingEnds_.back().offset;
    if (end > limit) {
        return Fail(DicomReadStatus::LengthPastContainer, record.headerPosition, record.tag);
    }
    const std::size_t depth = pendingEnds_.size();
    pendingEnds_.push_back({end, rawEnd, record.kind == DicomElementKind::Sequence ? DicomElementKind::SequenceDelimitation
                                                                           : DicomElementKind::ItemDelimitation});
    return pendingEnds_.size() == depth + 1;
}

bool DicomDataStream::KeepInFile(DicomDataSetElement& record) {
    const std::uint64_t length = record.valueLength;
    if (length > Size() - Position()) {
        return Fail(DicomReadStatus::ValuePastEnd, record.headerPosition, record.tag);
    }
    if (auto source = ValueSource()) {
        record.value.SetRegion(FileRegion{{std::move(source), Position(), length, ValueDeflatedFrom()},
                                          encoding_ == StreamEncoding::ExplicitBigEndian, VRUnitSize(record.vr)});
    }
    return Skip(length);
}

bool DicomDataStream::SkipsGroup(std::uint16_t group) const noexcept {
    return options_.onlyPrivateGroup != 0 && group % 2 == 1 && group != options_.onlyPrivateGroup && group != kItemGroup;
}

bool DicomDataStream::SkipValue(const DicomDataSetElement& record) {
    if (record.valueLength > Size() - Position() || !Skip(record.valueLength)) {
        return Fail(DicomReadStatus::ValuePastEnd, record.headerPosition, record.tag);
    }
    return true;
}

bool DicomDataStream::Hold(std::uint64_t bytes, const DicomDataSetElement& record) {
    heldBytes_ += bytes;
    if (heldBytes_ <= options_.maxHeldBytes) return true;
    return Fail(DicomReadStatus::TooMuchHeld, record.headerPosition, record.tag);
}

bool DicomDataStream::ReadValue(DicomDataSetElement& record) {
    record.valuePosition = Position();
    if (record.valueLength == kUndefinedLength || record.kind == DicomElementKind::Sequence) return true;
    if (record.valueLength == 0) {
        if (insideEncapsulatedPixelData_) {
            if (record.kind == DicomElementKind::SequenceDelimitation) insideEncapsulatedPixelData_ = false;
            record.encapsulated = record.kind != DicomElementKind::Element;
        }
        return true;
    }
    if (record.kind == DicomElementKind::Item) {
        if (!insideEncapsulatedPixelData_) return true;  // the item's elements follow
        record.encapsulated = true;
        return KeepInFile(record);
    }
    if (record.valueLength > Size() - Position()) {
        return Fail(DicomReadStatus::ValuePastEnd, record.headerPosition, record.tag);
    }
    // An inflated data set is read once, forward: its short values are loaded now rather than
    // inflated again, however little keepInFileAbove asks to load.
    const std::uint64_t loadAtMost =
        ValueDeflatedFrom() ? std::max(options_.keepInFileAbove, kInflatedLoadAtMost) : options_.keepInFileAbove;
    if (IsBulkPixelTag(record.tag) || (record.valueLength > loadAtMost && ValueSource())) {
        return KeepInFile(record);
    }
    if (!Hold(record.valueLength, record)) return false;
    std::vector<std::uint8_t> bytes(record.valueLength);
    const unsigned unit = VRUnitSize(record.vr);
    // Whole units are put in host order; a trailing partial unit of a malformed value stays as read.
    const std::uint64_t whole = bytes.size() - bytes.size() % unit;
    if (!ReadUnits(bytes.data(), whole, unit) || !ReadRaw(bytes.data() + whole, bytes.size() - whole)) {
        return Fail(DicomReadStatus::ValueUnreadable, record.headerPosition, record.tag);
    }
    if (record.vr == ValueRepresentation::UI && bytes.back() == ' ') bytes.back() = 0;
    record.value.SetBytes(std::move(bytes));
    return true;
}

bool DicomDataStream::ReadElement(DicomDataSetElement& record, bool& skipped) {
    record.Clear();
    skipped = skipping_;
    if (!ReadHeader(record) || !ReadLength(record)) {
        Fail(DicomReadStatus::TruncatedHeader, record.headerPosition);
        record.Clear();
        return false;
    }
    // The content of a UN element of undefined length is implicit VR little endian whatever the
    // stream's encoding, up to and including its sequence delimitation.
    const bool implicitContent = record.kind == DicomElementKind::Element && record.vr == ValueRepresentation::UN &&
                                 record.valueLength == kUndefinedLength && IsExplicit(encoding_);
    if (record.kind == DicomElementKind::Element && record.valueLength == kUndefinedLength) {
        if (record.tag == Tags::PixelData) {
            insideEncapsulatedPixelData_ = true;
        } else {
            // UN or unknown VR with undefined length holds items; so does any other element
            // wrongly given an undefined length, which has no other readable form.
            record.kind = DicomElementKind::Sequence;
            record.vr = ValueRepresentation::SQ;
        }
    }
    if (record.valueLength != kUndefinedLength && record.valueLength % 2 != 0) {
        LV_TRACE(kModule, "Odd value length %s when deserializing TAG(%s,%s)",
                 std::to_string(record.valueLength).c_str(), Hex4(record.tag.group).c_str(), Hex4(record.tag.element).c_str());
    }
    const bool opens = IsNesting(record.kind) || (record.kind == DicomElementKind::Element && insideEncapsulatedPixelData_ &&
                                                  record.valueLength == kUndefinedLength);
    if (!skipping_ && SkipsGroup(record.tag.group) && !insideEncapsulatedPixelData_) {
        skipped = true;
        // A value or a sequence of defined length is stepped over whole; one of undefined length
        // is read through, its elements unreported, until its delimitation.
        if (record.valueLength != kUndefinedLength) return SkipValue(record);
        skipping_ = true;
        skipUntil_ = openNesting_;
    }
    const bool valueSkipped = skipping_ && record.kind == DicomElementKind::Element && record.valueLength != kUndefinedLength;
    if ((opens && !OpenNested(record)) || (valueSkipped ? !SkipValue(record) : !ReadValue(record))) {
        record.Clear();
        return false;
    }
    if (implicitContent) EnterImplicitScope();
    TrackDelimitation(record);
    return skipped || Hold(kHeldPerElement, record);
}

void DicomDataStream::EnterImplicitScope() {
    implicitScopes_.push_back({openNesting_ - 1, encoding_});
    SetEncoding(StreamEncoding::ImplicitLittleEndian);
}

void DicomDataStream::TrackDelimitation(const DicomDataSetElement& record) noexcept {
    const bool closes = record.kind == DicomElementKind::ItemDelimitation ||
                        record.kind == DicomElementKind::SequenceDelimitation;
    if (closes && openNesting_ > 0) --openNesting_;
    if (closes && skipping_ && openNesting_ == skipUntil_) skipping_ = false;
    if (record.kind == DicomElementKind::SequenceDelimitation && !implicitScopes_.empty() &&
        implicitScopes_.back().nesting == openNesting_) {
        SetEncoding(implicitScopes_.back().outer);
        implicitScopes_.pop_back();
    }
}

bool DicomDataStream::EmitPendingEnds(CallbackHandler& handler, DicomDataSetElement& record) {
    while (!pendingEnds_.empty() && Position() >= pendingEnds_.back().rawEnd) {
        // An odd length closes at the next even offset: step over the pad byte when it is there.
        if (Position() < pendingEnds_.back().offset && !AtEnd() && !Skip(1)) return false;
        if (Position() > pendingEnds_.back().offset) {
            return Fail(DicomReadStatus::CrossesContainerEnd, Position());
        }
        record.Clear();
        record.kind = pendingEnds_.back().kind;
        record.tag.group = kItemGroup;
        record.tag.element = record.kind == DicomElementKind::ItemDelimitation ? kItemDelimitationElement
                                                                           : kSequenceDelimitationElement;
        record.headerPosition = record.valuePosition = Position();
        pendingEnds_.pop_back();
        const bool skipped = skipping_;
        TrackDelimitation(record);
        if (!skipped && !handler.ElementRead(record)) {
            return Fail(DicomReadStatus::DelimitationRejected, record.headerPosition);
        }
    }
    return true;
}

bool DicomDataStream::ReadLoop(CallbackHandler& handler, bool metaGroupOnly, std::vector<std::uint8_t>* transferSyntax) {
    DicomDataSetElement record;
    for (;;) {
        if (!EmitPendingEnds(handler, record)) return false;
        if (AtEnd()) {
            // A sequence or item still open means the file was cut short, not a complete data set.
            if (openNesting_ == 0) return true;
            return Fail(DicomReadStatus::EndsInsideSequence, Position());
        }
        if (metaGroupOnly && pendingEnds_.empty()) {
            std::uint16_t group = 0;
            if (!PeekGroup(group) || group != kMetaGroup) return true;
        }
        bool skipped = false;
        if (!ReadElement(record, skipped)) return false;
        if (skipped) continue;
        if (transferSyntax && record.tag == Tags::TransferSyntaxUID) record.value.Load(*transferSyntax);
        if (!handler.ElementRead(record)) {
            return Fail(DicomReadStatus::ElementRejected, record.headerPosition, record.tag);
        }
    }
}

bool DicomDataStream::ReadElements(CallbackHandler& handler) { return ReadLoop(handler, false, nullptr); }

bool DicomDataStream::ReadMetaElements(CallbackHandler& handler, std::vector<std::uint8_t>& transferSyntax) {
    return ReadLoop(handler, true, &transferSyntax);
}

// ---------------------------------------------------------------- writing

bool DicomDataStream::WriteUnits(const std::uint8_t* data, std::uint64_t size, unsigned unitSize) {
    if (writeOrder_ == KeepUnitOrder || unitSize < 2) return WriteRaw(data, size);
    std::vector<std::uint8_t> ordered(data, data + size);
    writeOrder_(ordered.data(), ordered.size(), unitSize);
    return WriteRaw(ordered.data(), ordered.size());
}

bool DicomDataStream::WriteU16(std::uint16_t value) {
    const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
    return WriteUnits(bytes.data(), 2, 2);
}

bool DicomDataStream::WriteU32(std::uint32_t value) {
    const std::array<std::uint8_t, 4> bytes{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                                            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
    return WriteUnits(bytes.data(), 4, 4);
}

bool DicomDataStream::WriteTagAndLength(std::uint16_t group, std::uint16_t element, std::uint32_t length) {
    return WriteU16(group) && WriteU16(element) && WriteU32(length);
}

bool DicomDataStream::WriteHeader(std::uint16_t group, std::uint16_t element, ValueRepresentation vr,
                                  std::uint64_t length) {
    if (length > kUndefinedLength) return false;
    const auto length32 = static_cast<std::uint32_t>(length);
    if (!IsExplicit(encoding_)) return WriteTagAndLength(group, element, length32);
    const ValueRepresentation wire = WireVR(vr);
    const std::string_view code = VRCode(wire);
    if (!WriteU16(group) || !WriteU16(element) || !WriteRaw(code.data(), code.size())) return false;
    if (HasLongLengthField(wire)) return WriteU16(0) && WriteU32(length32);
    // Only the short-form VRs come here: their values must fit the 16-bit field.
    if (length > 0xFFFF) {
        LV_TRACE(kModule, "Value of TAG(%s,%s) too long for a %s length field", Hex4(group).c_str(),
                 Hex4(element).c_str(), std::string(code).c_str());
        return false;
    }
    return WriteU16(static_cast<std::uint16_t>(length));
}

bool DicomDataStream::WriteRegion(const FileRegion& region, Portability::Sha256* digest) {
    std::vector<std::uint8_t> bytes;
    if (!LoadRegion(region, bytes)) return false;
    writeOrder_(bytes.data(), bytes.size(), region.unitSize);
    if (digest) digest->Update(bytes.data(), bytes.size());
    return WriteRaw(bytes.data(), bytes.size());
}

bool DicomDataStream::WriteValueBytes(const DicomValue& value, ValueRepresentation vr, Portability::Sha256* digest) {
    const std::uint64_t size = value.Size();
    if (const FileRegion* region = value.Region()) return WriteRegion(*region, digest);
    const auto bytes = value.Bytes();
    const unsigned unit = VRUnitSize(vr);
    const std::uint64_t whole = size - size % unit;
    if (digest == nullptr || writeOrder_ == KeepUnitOrder || unit < 2) {
        if (digest) digest->Update(bytes.data(), bytes.size());
        return WriteUnits(bytes.data(), whole, unit) && WriteRaw(bytes.data() + whole, size - whole);
    }
    std::vector<std::uint8_t> ordered(bytes.begin(), bytes.end());
    writeOrder_(ordered.data(), whole, unit);
    digest->Update(ordered.data(), ordered.size());
    return WriteRaw(ordered.data(), ordered.size());
}

bool DicomDataStream::WriteValue(const DicomValue& value, ValueRepresentation vr) {
    const std::uint64_t size = value.Size();
    if (value.IsFilledLater()) filledLaterOffsets_.push_back(Position());
    if (value.IsDigestOfMarked()) {
        if (markedDigest_.size() != DigestOfMarkedValue::kSize) {
            LV_TRACE(kModule, "%s", "A digest is due before the value it digests was written");
            return false;
        }
        if (!WriteRaw(markedDigest_.data(), markedDigest_.size())) return false;
    } else if (value.IsMarkedForDigest()) {
        Portability::Sha256 digest;
        Portability::Sha256::Digest result{};
        if (!WriteValueBytes(value, vr, &digest) || !digest.Finish(result)) return false;
        markedDigest_ = Portability::ToHex(result);
    } else if (!WriteValueBytes(value, vr, nullptr)) {
        return false;
    }
    if (size % 2 == 0) return true;
    const std::uint8_t pad = VRPadsToEven(vr) ? VRPadByte(vr) : 0;
    return WriteRaw(&pad, 1);
}

bool DicomDataStream::WriteSequence(const DicomDataSetSequenceElement& sequence) {
    if (!WriteHeader(sequence.tag.group, sequence.tag.element, ValueRepresentation::SQ, sequence.ContentSize(encoding_))) {
        return false;
    }
    for (const auto& item : sequence.Items()) {
        if (!item) continue;
        const std::uint64_t length = item->EncodedSize(encoding_);
        if (length >= kUndefinedLength) return false;
        if (!WriteTagAndLength(kItemGroup, kItemElement, static_cast<std::uint32_t>(length)) || !WriteDataSet(*item)) {
            return false;
        }
    }
    return true;
}

bool DicomDataStream::WritePixelData(const DicomDataSetFrameContainerElement& pixelData) {
    if (!pixelData.encapsulated) {
        const DicomValue& value = pixelData.NativeValue();
        if (value.IsAbsent() && pixelData.valueLength != 0) return false;  // bytes were never loaded
        return WriteHeader(pixelData.tag.group, pixelData.tag.element, pixelData.vr, EvenLength(value.Size())) &&
               WriteValue(value, pixelData.vr);
    }
    if (!WriteHeader(pixelData.tag.group, pixelData.tag.element, pixelData.vr, kUndefinedLength) ||
        !WriteTagAndLength(kItemGroup, kItemElement, 0)) {
        return false;
    }
    for (std::size_t i = 0; i < pixelData.FrameCount(); ++i) {
        const DicomValue& frame = *pixelData.Frame(i);
        const std::uint64_t length = EvenLength(frame.Size());
        if (length >= kUndefinedLength || !WriteTagAndLength(kItemGroup, kItemElement, static_cast<std::uint32_t>(length)) ||
            !WriteValue(frame, ValueRepresentation::OB)) {
            return false;
        }
    }
    return WriteTagAndLength(kItemGroup, kSequenceDelimitationElement, 0);
}

bool DicomDataStream::WriteNode(const DicomDataSetElement& node) {
    if (const auto* sequence = dynamic_cast<const DicomDataSetSequenceElement*>(&node)) return WriteSequence(*sequence);
    if (const auto* pixels = dynamic_cast<const DicomDataSetFrameContainerElement*>(&node)) return WritePixelData(*pixels);
    if (node.kind != DicomElementKind::Element || node.tag.group == kItemGroup) return false;
    const bool valueMissing = node.value.IsAbsent() && node.valueLength != 0 && node.valueLength != kUndefinedLength;
    if (valueMissing) {
        LV_TRACE(kModule, "TAG(%s,%s) has no value to write", Hex4(node.tag.group).c_str(), Hex4(node.tag.element).c_str());
        return false;
    }
    return WriteHeader(node.tag.group, node.tag.element, node.vr, EvenLength(node.value.Size())) && WriteValue(node.value, node.vr);
}

bool DicomDataStream::WriteGroupLength(std::uint16_t group, std::uint32_t value) {
    const std::array<std::uint8_t, 4> bytes{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                                            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
    return WriteHeader(group, 0x0000, ValueRepresentation::UL, 4) && WriteUnits(bytes.data(), 4, 4);
}

bool DicomDataStream::WriteDataSet(const DicomDataSet& dataSet) {
    for (const auto& [tag, node] : dataSet) {
        if (!WriteNode(*node)) return false;
    }
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
