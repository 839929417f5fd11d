#pragma once
// The raw element record: what the stream reads about one element and what the writer needs.

#include <cstdint>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomEncodingRules.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomValue.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueRepresentation.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// What an element header stands for, decided from its tag and VR.
enum class DicomElementKind : std::uint8_t {
    Element = 0,               // an ordinary element
    Sequence = 1,              // VR SQ, or UN/unknown with undefined length
    Item = 2,                  // (FFFE,E000)
    SequenceDelimitation = 3,  // (FFFE,E0DD)
    ItemDelimitation = 4,      // (FFFE,E00D)
};

// One data element: header fields, positions in the source stream and the value.
class DicomDataSetElement {
public:
    DicomDataSetElement() = default;
    // An element of the given tag and VR with a value in memory (length = byte count).
    DicomDataSetElement(std::uint16_t group, std::uint16_t element, ValueRepresentation vr,
                        std::vector<std::uint8_t> bytes = {});
    virtual ~DicomDataSetElement() = default;
    DicomDataSetElement(const DicomDataSetElement&) = delete;
    DicomDataSetElement& operator=(const DicomDataSetElement&) = delete;
    DicomDataSetElement(DicomDataSetElement&&) = default;
    DicomDataSetElement& operator=(DicomDataSetElement&&) = default;

    // The tag number: group in the high half, element number in the low half.
    std::uint32_t TagNumber() const noexcept { return (std::uint32_t{group} << 16) | element; }
    // Replace the value with bytes in memory and set the value length to their count.
    void SetValue(std::vector<std::uint8_t> bytes);
    // Bytes this node takes when written in the encoding (header plus even value length).
    virtual std::uint64_t EncodedSize(StreamEncoding encoding) const;
    // Reset every field to its default, dropping the value.
    void Clear() noexcept;

    DicomElementKind kind = DicomElementKind::Element;      // element, sequence, item or delimitation
    std::uint64_t headerPosition = 0;                       // stream offset of the tag (elements read)
    std::uint64_t valuePosition = 0;                        // stream offset of the first value byte
    std::uint16_t group = 0;                                // tag group
    std::uint16_t element = 0;                              // tag element number
    ValueRepresentation vr = ValueRepresentation::Unknown;  // VR as read or set
    std::uint32_t valueLength = 0;                          // length field; kUndefinedLength if undefined
    bool encapsulated = false;                              // part of encapsulated pixel data
    DicomValue value;                                       // absent for values skipped while reading
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
