#pragma once
// The data set tree: elements ordered by tag, sequences of item data sets, pixel data frames.

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetElement.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// A data set (the root of a file, or one item of a sequence); owns its element nodes.
class DicomDataSet {
public:
    using ElementMap = std::map<Tag, std::unique_ptr<DicomDataSetElement>>;

    // Insert a node, replacing (and destroying) any node with the same tag; false for null.
    bool Insert(std::unique_ptr<DicomDataSetElement> node);
    // The node with this tag, or null.
    DicomDataSetElement* Find(Tag tag) noexcept;
    // The node with this tag, or null.
    const DicomDataSetElement* Find(Tag tag) const noexcept;
    // Remove and destroy the node with this tag; false when there was none.
    bool Remove(Tag tag);
    // Remove the node with this tag and hand it over; null when there was none.
    std::unique_ptr<DicomDataSetElement> Release(Tag tag);
    // Number of nodes.
    std::size_t Count() const noexcept { return elements_.size(); }
    // The nodes in ascending tag order.
    const ElementMap& Elements() const noexcept { return elements_; }
    ElementMap::const_iterator begin() const noexcept { return elements_.begin(); }
    ElementMap::const_iterator end() const noexcept { return elements_.end(); }
    // Sum of the encoded sizes of the nodes (the length of an item holding this set).
    std::uint64_t EncodedSize(StreamEncoding encoding) const;

private:
    ElementMap elements_;
};

// A sequence element: an ordered list of items, each an owned data set or an empty slot.
class DicomDataSetSequenceElement : public DicomDataSetElement {
public:
    // An empty sequence of this tag (VR SQ, undefined length until written).
    explicit DicomDataSetSequenceElement(Tag tag);
    // A sequence node made from a record read by the stream (the value is dropped).
    explicit DicomDataSetSequenceElement(DicomDataSetElement&& record);

    // Append a new empty item and return it.
    DicomDataSet& AppendItem();
    // Append an empty slot (skipped when sizes are computed and when written).
    void AppendEmptySlot();
    // The items in order; null entries are empty slots.
    const std::vector<std::unique_ptr<DicomDataSet>>& Items() const noexcept { return items_; }
    // Item i, or null for an empty slot or an index past the end.
    DicomDataSet* Item(std::size_t index) noexcept;
    // Number of entries, empty slots included.
    std::size_t ItemCount() const noexcept { return items_.size(); }
    // The value length written for this sequence: the sum of 8 + item size over its items.
    std::uint64_t ContentSize(StreamEncoding encoding) const;
    std::uint64_t EncodedSize(StreamEncoding encoding) const override;

private:
    std::vector<std::unique_ptr<DicomDataSet>> items_;
};

// The pixel data element (7FE0,0010): its frames in order, each one value.
class DicomDataSetFrameContainerElement : public DicomDataSetElement {
public:
    // Pixel data of this VR; encapsulated pixel data is written as one fragment per frame.
    DicomDataSetFrameContainerElement(ValueRepresentation vr, bool encapsulatedFrames);
    // A pixel data node made from a record read by the stream (its value, if any, is kept).
    explicit DicomDataSetFrameContainerElement(DicomDataSetElement&& record);

    // Number of frames.
    std::size_t FrameCount() const noexcept { return frames_.size(); }
    // Frame i, or null past the last frame.
    const DicomValue* Frame(std::size_t index) const noexcept;
    // Append a frame.
    void AppendFrame(DicomValue frame);
    // The bytes written for native pixel data: frame 0, or the element's own value when there are no frames.
    const DicomValue& NativeValue() const noexcept;
    std::uint64_t EncodedSize(StreamEncoding encoding) const override;

private:
    std::vector<DicomValue> frames_;
};

// True for the tags whose values the reader leaves in the file: pixel data and overlay data (60xx,3000).
constexpr bool IsBulkPixelTag(Tag tag) noexcept {
    return tag == Tags::PixelData || ((tag.group & 0xFF00) == 0x6000 && tag.element == 0x3000);
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
