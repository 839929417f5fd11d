#pragma once
// The encoding engine: reads DICOM data elements from a byte source and hands each one to a
// handler, and writes a data set tree, in one of the three stream encodings.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomEncodingRules.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/FileRegion.h"
#include "Portability/Misc/Sha256.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Deepest nesting of sequences that a read accepts by default; writers of metadata refuse deeper input.
inline constexpr unsigned kMaxSequenceDepth = 64;

// How values are read.
struct DicomReadOptions {
    // Values longer than this stay in the source file (when the source is a file) and are loaded
    // or copied only when wanted. Pixel data and overlay data always stay in the file.
    std::uint64_t keepInFileAbove = std::uint64_t{1} << 20;
    // Deepest nesting of sequences accepted; deeper input fails the read.
    unsigned maxSequenceDepth = kMaxSequenceDepth;
    // Bytes a read may hold in memory: the values it loads and a fixed share per element it
    // reports. A read that would hold more fails, so what a file declares cannot grow memory.
    std::uint64_t maxHeldBytes = std::uint64_t{64} << 20;
    // When not 0, the elements of every other private (odd) group are skipped unread and never
    // reported, sequences with all they hold; 0 reports every group.
    std::uint16_t onlyPrivateGroup = 0;
};

// Values of an inflated data set up to this length are loaded while reading; longer ones stay
// regions of the deflated file, inflated again when wanted.
inline constexpr std::uint64_t kInflatedLoadAtMost = 64 * 1024;

// Why a read failed, or that it did not.
enum class DicomReadStatus : std::uint8_t {
    Success,
    FileNotOpened,         // the file could not be opened
    NotDicom,              // no "DICM" prefix, and the first group is neither the meta group nor 0008
    NotInflated,           // the deflated data set does not inflate
    TruncatedHeader,       // the data end inside an element header
    ValuePastEnd,          // a value runs past the end of the data
    LengthPastContainer,   // a sequence or item is longer than what holds it
    CrossesContainerEnd,   // an element runs across the end of its item or sequence
    EndsInsideSequence,    // the data end while sequences or items are open
    NestingTooDeep,        // sequences nest deeper than the read allows
    TooMuchHeld,           // the values read would hold more memory than the read allows
    ValueUnreadable,       // the source failed while a value was read
    ElementRejected,       // the data set refused an element (an item outside a sequence, for one)
    DelimitationRejected,  // the data set refused the end of a sequence or item of defined length
    SourceFailed,          // the source stopped without a reason of its own
    UnknownNotItems,       // a UN value does not hold a run of items
    UnknownOutsideFile,    // a UN value kept in its file lies beyond the file's end
    UnknownNotHeld,        // a UN value of a deflated data set is too long to be loaded
    UnknownUnreachable,    // the file of a UN value cannot be read
};

// The status's description, one sentence without a final period ("Value runs past the end of the data").
std::string_view DicomReadStatusDescription(DicomReadStatus status) noexcept;

// How a read ended: on failure, why and where, for the layer that reports it (as an XML parser's
// result carries its status and offset). Only the first failure of a read is kept.
struct DicomReadResult {
    DicomReadStatus status = DicomReadStatus::Success;
    std::uint64_t offset = 0;              // stream offset of the element (or position) concerned
    Tag tag{};                             // the element's tag; (0000,0000) when none was concerned

    explicit operator bool() const noexcept { return status == DicomReadStatus::Success; }
    // True when the source is no DICOM data at all (or could not be opened), rather than DICOM
    // data damaged at offset.
    bool NotDicom() const noexcept;
    // The status's description, " at offset N" and, when a tag is known, " in TAG(GGGG,EEEE)".
    std::string Text() const;
};

// Reads and writes elements over an abstract byte source or sink.
class DicomDataStream {
public:
    // Receives every element read, including synthetic delimitations of defined-length sequences and items.
    class CallbackHandler {
    public:
        virtual ~CallbackHandler() = default;
        // One element read; the handler may move the record's value out. Return false to stop reading.
        virtual bool ElementRead(DicomDataSetElement& record) = 0;
    };

    DicomDataStream();
    virtual ~DicomDataStream() = default;
    DicomDataStream(const DicomDataStream&) = delete;
    DicomDataStream& operator=(const DicomDataStream&) = delete;

    // Release the byte source or sink.
    virtual void Close() = 0;
    // Go to an absolute offset (reading); false past the end.
    virtual bool SetPosition(std::uint64_t position) = 0;
    // Move forward by count bytes (reading); false past the end.
    virtual bool Skip(std::uint64_t count) = 0;
    // Append raw bytes (writing).
    virtual bool WriteRaw(const void* data, std::uint64_t size) = 0;
    // Read raw bytes (reading); false when fewer remain.
    virtual bool ReadRaw(void* data, std::uint64_t size) = 0;
    // True when no byte remains to be read.
    virtual bool AtEnd() const = 0;
    // Current offset: of reading, or bytes written so far.
    virtual std::uint64_t Position() const = 0;
    // Total byte count of the source being read.
    virtual std::uint64_t Size() const = 0;
    // The file that read values may stay in, or null when values must be loaded.
    virtual std::shared_ptr<const Portability::OpenFile> ValueSource() const { return nullptr; }
    // When the stream reads the inflation of deflate data of ValueSource(): where those data begin.
    virtual std::optional<std::uint64_t> ValueDeflatedFrom() const { return std::nullopt; }
    // Append a file region's bytes, in the unit order of the current encoding; with a digest, the
    // bytes as written are fed to it too.
    virtual bool WriteRegion(const FileRegion& region, Portability::Sha256* digest);
    // Replace what remains to be read (raw deflate data) by its inflation and go to its first
    // byte; false when it does not inflate or the stream cannot hold it.
    virtual bool InflateRemainder() = 0;

    // Where the values marked to be filled later start in the output, in the order written.
    const std::vector<std::uint64_t>& FilledLaterOffsets() const noexcept { return filledLaterOffsets_; }

    // Read elements until the end of the source; false on a malformed input or when the handler stops.
    bool ReadElements(CallbackHandler& handler);
    // Read elements while the next tag's group is 0x0002 (the file meta group).
    bool ReadMetaElements(CallbackHandler& handler, std::vector<std::uint8_t>& transferSyntax);
    // Write every element of a data set in tag order, sequences and items with defined lengths.
    bool WriteDataSet(const DicomDataSet& dataSet);
    // Write one node (element, sequence or pixel data).
    bool WriteNode(const DicomDataSetElement& node);
    // Write a (0002,0000)-style group length element holding value.
    bool WriteGroupLength(std::uint16_t group, std::uint32_t value);
    // Peek the group of the next tag without moving; false when fewer than 2 bytes remain.
    bool PeekGroup(std::uint16_t& group);

    // Change the encoding used from now on.
    void SetEncoding(StreamEncoding encoding) noexcept;
    // The current encoding.
    StreamEncoding Encoding() const noexcept { return encoding_; }
    // Change the reading options.
    void SetReadOptions(const DicomReadOptions& options) noexcept { options_ = options; }
    // Forget the nesting state and the failure of a previous read.
    void ResetReadState() noexcept;
    // How the reads so far went: the first failure, or success.
    const DicomReadResult& ReadResult() const noexcept { return result_; }
    // Record a failure of reading (the first one wins) and return false.
    bool Fail(DicomReadStatus status, std::uint64_t offset, Tag tag = {});

private:
    struct PendingEnd {
        std::uint64_t offset;     // stream offset where the sequence or item ends (even)
        std::uint64_t rawEnd;     // start plus length, odd when the writer left out the pad byte
        DicomElementKind kind;    // the delimitation due there
    };
    struct ImplicitScope {
        unsigned nesting;           // nesting depth outside the UN element
        StreamEncoding outer;       // the encoding to return to after its sequence delimitation
    };
    using UnitOrder = void (*)(std::uint8_t* data, std::uint64_t size, unsigned unitSize) noexcept;

    bool ReadLoop(CallbackHandler& handler, bool metaGroupOnly, std::vector<std::uint8_t>* transferSyntax);
    bool EmitPendingEnds(CallbackHandler& handler, DicomDataSetElement& record);
    bool ReadElement(DicomDataSetElement& record, bool& skipped);
    bool SkipsGroup(std::uint16_t group) const noexcept;
    bool SkipValue(const DicomDataSetElement& record);
    bool Hold(std::uint64_t bytes, const DicomDataSetElement& record);
    bool ReadHeader(DicomDataSetElement& record);
    bool ReadLength(DicomDataSetElement& record);
    bool OpenNested(DicomDataSetElement& record);
    bool ReadValue(DicomDataSetElement& record);
    bool KeepInFile(DicomDataSetElement& record);
    void TrackDelimitation(const DicomDataSetElement& record) noexcept;
    void EnterImplicitScope();
    bool ReadU16(std::uint16_t& value);
    bool ReadU32(std::uint32_t& value);
    bool ReadUnits(std::uint8_t* data, std::uint64_t size, unsigned unitSize);

    bool WriteHeader(std::uint16_t group, std::uint16_t element, ValueRepresentation vr, std::uint64_t length);
    bool WriteTagAndLength(std::uint16_t group, std::uint16_t element, std::uint32_t length);
    bool WriteSequence(const DicomDataSetSequenceElement& sequence);
    bool WritePixelData(const DicomDataSetFrameContainerElement& pixelData);
    bool WriteValue(const DicomValue& value, ValueRepresentation vr);
    bool WriteValueBytes(const DicomValue& value, ValueRepresentation vr, Portability::Sha256* digest);
    bool WriteU16(std::uint16_t value);
    bool WriteU32(std::uint32_t value);
    bool WriteUnits(const std::uint8_t* data, std::uint64_t size, unsigned unitSize);

    StreamEncoding encoding_ = StreamEncoding::ImplicitLittleEndian;
    UnitOrder readOrder_;
    UnitOrder writeOrder_;
    DicomReadOptions options_;
    bool insideEncapsulatedPixelData_ = false;
    std::vector<PendingEnd> pendingEnds_;
    std::vector<ImplicitScope> implicitScopes_;  // open UN elements of undefined length
    unsigned openNesting_ = 0;
    bool skipping_ = false;       // inside a skipped sequence
    unsigned skipUntil_ = 0;      // nesting depth at which the skipped sequence closes
    std::uint64_t heldBytes_ = 0;
    DicomReadResult result_;
    std::string markedDigest_;  // hex SHA-256 of the last value written that was marked for digest
    std::vector<std::uint64_t> filledLaterOffsets_;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
