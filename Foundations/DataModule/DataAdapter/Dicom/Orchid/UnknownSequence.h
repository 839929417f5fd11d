#pragma once
// Sequences that arrive as UN. A private sequence re-encoded by a toolkit that lacks its
// dictionary becomes a UN element of defined length whose value still holds the items, in
// implicit VR little endian whatever the file's encoding (PS3.5 section 6.2.2), with defined or
// undefined lengths.

#include <memory>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Read the value of element as the items of a sequence of the same tag. A value left in its file
// is read there, and values longer than options.keepInFileAbove inside it stay in that file as
// regions of it; a value in memory is read from memory. Null when the bytes are not a sound run
// of items; result then says why and where (offsets are the file's, or the value's in memory).
std::unique_ptr<DicomDataSetSequenceElement> ReadValueAsSequence(const DicomDataSetElement& element,
                                                                 const DicomReadOptions& options,
                                                                 DicomReadResult& result);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
