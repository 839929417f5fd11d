#pragma once
// Sequences that a row holds as stored items (see the metadata reader's item encoding: explicit VR
// little endian, text in UTF-8) turned into data set nodes written like every other sequence, with
// their text in the instance's Specific Character Set.

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/ExtraElements.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Lumivale::DataModule::DataAdapterModule {

// The sequence of this tag whose items are `items`: read into a tree (at most kMaxSequenceDepth
// levels, so that whatever is written reads back), each text value re-encoded from UTF-8 into
// charset. Null, with a trace line naming the element, when the items do not read or a text
// cannot be written in charset.
std::unique_ptr<DicomCodecModule::DicomDataSetElement> MakeExtraSequence(DicomCodecModule::Tag tag,
                                                                         std::span<const std::uint8_t> items,
                                                                         const MultiCharSetDataType& charset);

// Whether a text value among the stored items (nested sequences included) goes beyond ASCII; false
// for items that do not read, which MakeExtraSequence then refuses.
bool StoredItemsHoldTextBeyondAscii(Tag tag, std::span<const std::uint8_t> items);

}  // namespace Lumivale::DataModule::DataAdapterModule
