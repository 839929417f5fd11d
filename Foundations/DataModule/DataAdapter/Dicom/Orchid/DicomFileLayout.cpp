#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"

#include <array>
#include <cstring>

#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr const char* kModule = "Module DicomDataStream";
constexpr std::uint64_t kPreambleSize = 128;
constexpr std::array<char, 4> kPrefix{'D', 'I', 'C', 'M'};
constexpr std::uint16_t kMetaGroup = 0x0002;
constexpr std::uint16_t kFirstDataSetGroup = 0x0008;

bool HasPrefix(DicomDataStream& stream) {
    std::array<char, 4> prefix{};
    return stream.Size() >= kPreambleSize + prefix.size() && stream.SetPosition(kPreambleSize) &&
           stream.ReadRaw(prefix.data(), prefix.size()) && prefix == kPrefix;
}

bool IsMetaNode(const DicomDataSetElement& node) noexcept { return node.tag.group == kMetaGroup; }

// A data set without preamble and meta group names no transfer syntax: its first element tells.
// In explicit VR the two bytes after the tag spell a VR; in implicit VR they are the low half of a
// length, which for a first element of group 0x0008 never spells one.
bool StartsWithExplicitVR(DicomDataStream& stream) {
    std::array<char, 2> code{};
    return stream.SetPosition(4) && stream.ReadRaw(code.data(), code.size()) &&
           VRFromCode(std::string_view(code.data(), code.size())) != ValueRepresentation::Unknown;
}

// Passes every element on except group 0x0002 elements at the top level once an element of
// another group came: the file meta group is only at the start, and a later copy of its elements
// would override it (its transfer syntax would then no longer say how the data set was read).
class LateMetaElementFilter : public DicomDataStream::CallbackHandler {
public:
    explicit LateMetaElementFilter(DicomDataStream::CallbackHandler& next) : next_(next) {}

    bool ElementRead(DicomDataSetElement& record) override {
        if (depth_ == 0 && record.kind == DicomElementKind::Element && !record.encapsulated) {
            if (IsMetaNode(record) && dataSetBegun_) {
                LV_TRACE(kModule, "Group 0002 element TAG(%04X,%04X) after the file meta group ignored",
                         record.tag.group, record.tag.element);
                return true;
            }
            dataSetBegun_ = dataSetBegun_ || !IsMetaNode(record);
        }
        if (record.kind == DicomElementKind::Sequence) ++depth_;
        if (record.kind == DicomElementKind::SequenceDelimitation && !record.encapsulated && depth_ > 0) --depth_;
        return next_.ElementRead(record);
    }

private:
    DicomDataStream::CallbackHandler& next_;
    unsigned depth_ = 0;         // sequences open around the current element
    bool dataSetBegun_ = false;  // a top-level element of another group was read
};

}  // namespace

StreamEncoding EncodingOfTransferSyntax(std::string_view uid) noexcept {
    while (!uid.empty() && (uid.back() == '\0' || uid.back() == ' ')) uid.remove_suffix(1);
    if (uid == "1.2.840.10008.1.2") return StreamEncoding::ImplicitLittleEndian;
    if (uid == "1.2.840.10008.1.2.2") return StreamEncoding::ExplicitBigEndian;
    return StreamEncoding::ExplicitLittleEndian;
}

bool IsDeflatedTransferSyntax(std::string_view uid) noexcept {
    while (!uid.empty() && (uid.back() == '\0' || uid.back() == ' ')) uid.remove_suffix(1);
    return uid == "1.2.840.10008.1.2.1.99";
}

StreamEncoding EncodingOfDataSet(const DicomDataSet& dataSet) {
    const DicomDataSetElement* syntax = dataSet.Find(Tags::TransferSyntaxUID);
    std::vector<std::uint8_t> uid;
    if (!syntax || !syntax->value.Load(uid)) return StreamEncoding::ExplicitLittleEndian;
    return EncodingOfTransferSyntax(std::string_view(reinterpret_cast<const char*>(uid.data()), uid.size()));
}

bool ReadFileHeader(DicomDataStream& stream, DicomDataStream::CallbackHandler& handler) {
    stream.ResetReadState();
    stream.SetEncoding(StreamEncoding::ImplicitLittleEndian);
    std::uint16_t firstGroup = 0;
    // Data too short to hold a group number are no DICOM data.
    if (!stream.SetPosition(0) || !stream.PeekGroup(firstGroup)) return stream.Fail(DicomReadStatus::NotDicom, 0);
    if (HasPrefix(stream)) {
        stream.SetEncoding(StreamEncoding::ExplicitLittleEndian);
        std::vector<std::uint8_t> transferSyntax;
        if (!stream.ReadMetaElements(handler, transferSyntax)) return false;
        const std::string_view uid(reinterpret_cast<const char*>(transferSyntax.data()), transferSyntax.size());
        stream.SetEncoding(transferSyntax.empty() ? StreamEncoding::ExplicitLittleEndian : EncodingOfTransferSyntax(uid));
        if (!IsDeflatedTransferSyntax(uid)) return true;
        // The data set is deflated explicit VR little endian: read on from its inflation.
        return stream.InflateRemainder() || stream.Fail(DicomReadStatus::NotInflated, stream.Position());
    }
    if (firstGroup != kMetaGroup && firstGroup != kFirstDataSetGroup) {
        LV_TRACE(kModule, "No \"DICM\" prefix and first group %04X", firstGroup);
        return stream.Fail(DicomReadStatus::NotDicom, 0);
    }
    const bool isExplicit = firstGroup == kMetaGroup || StartsWithExplicitVR(stream);
    stream.SetEncoding(isExplicit ? StreamEncoding::ExplicitLittleEndian : StreamEncoding::ImplicitLittleEndian);
    return stream.SetPosition(0);
}

bool ReadFileContent(DicomDataStream& stream, DicomDataStream::CallbackHandler& handler) {
    LateMetaElementFilter filter(handler);
    return ReadFileHeader(stream, handler) && stream.ReadElements(filter);
}

bool WriteFileHeader(DicomDataStream& stream, const DicomDataSet& dataSet) {
    if (dataSet.Count() == 0 || !IsMetaNode(*dataSet.begin()->second)) return true;
    const std::array<std::uint8_t, kPreambleSize> preamble{};
    if (!stream.WriteRaw(preamble.data(), preamble.size()) || !stream.WriteRaw(kPrefix.data(), kPrefix.size())) {
        return false;
    }
    const StreamEncoding configured = stream.Encoding();
    stream.SetEncoding(StreamEncoding::ExplicitLittleEndian);
    std::uint64_t groupLength = 0;
    for (const auto& [tag, node] : dataSet) {
        if (IsMetaNode(*node) && node->tag.element != 0) groupLength += node->EncodedSize(StreamEncoding::ExplicitLittleEndian);
    }
    bool written = groupLength <= 0xFFFFFFFFu;
    for (auto it = dataSet.begin(); written && it != dataSet.end() && IsMetaNode(*it->second); ++it) {
        written = it->second->tag.element == 0 ? stream.WriteGroupLength(kMetaGroup, static_cast<std::uint32_t>(groupLength))
                                           : stream.WriteNode(*it->second);
    }
    stream.SetEncoding(configured);
    return written;
}

bool WriteFileContent(DicomDataStream& stream, const DicomDataSet& dataSet) {
    // The writer does not deflate: a data set that names the deflated syntax (one read from such
    // a file) would be written as a file that claims what it is not.
    const DicomDataSetElement* syntax = dataSet.Find(Tags::TransferSyntaxUID);
    std::vector<std::uint8_t> uid;
    if (syntax && syntax->value.Load(uid) &&
        IsDeflatedTransferSyntax(std::string_view(reinterpret_cast<const char*>(uid.data()), uid.size()))) {
        LV_TRACE(kModule, "%s", "A data set of the deflated transfer syntax cannot be written");
        return false;
    }
    if (!WriteFileHeader(stream, dataSet)) return false;
    for (const auto& [tag, node] : dataSet) {
        if (!IsMetaNode(*node) && !stream.WriteNode(*node)) return false;
    }
    return true;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
