#pragma once
// The raw element record: what the stream reads about one element and what the writer needs.

#include <cstdint>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomEncodingRules.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomValue.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Core/Tag.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"

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
    DicomDataSetElement(Tag tag, ValueRepresentation vr, std::vector<std::uint8_t> bytes = {});
    virtual ~DicomDataSetElement() = default;
    DicomDataSetElement(const DicomDataSetElement&) = delete;
    DicomDataSetElement& operator=(const DicomDataSetElement&) = delete;
    DicomDataSetElement(DicomDataSetElement&&) = default;
    DicomDataSetElement& operator=(DicomDataSetElement&&) = default;

    // Replace the value with bytes in memory and set the value length to their count.
    void SetValue(std::vector<std::uint8_t> bytes);
    // Bytes this node takes when written in the encoding (header plus even value length).
    virtual std::uint64_t EncodedSize(StreamEncoding encoding) const;
    // Reset every field to its default, dropping the value.
    void Clear() noexcept;

    DicomElementKind kind = DicomElementKind::Element;      // element, sequence, item or delimitation
    std::uint64_t headerPosition = 0;                       // stream offset of the tag (elements read)
    std::uint64_t valuePosition = 0;                        // stream offset of the first value byte
    Tag tag;                                                // the element's tag
    ValueRepresentation vr = ValueRepresentation::Unknown;  // VR as read or set
    std::uint32_t valueLength = 0;                          // length field; kUndefinedLength if undefined
    bool encapsulated = false;                              // part of encapsulated pixel data
    DicomValue value;                                       // absent for values skipped while reading
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
