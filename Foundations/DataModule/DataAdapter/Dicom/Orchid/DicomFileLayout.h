#pragma once
// The DICOM file layout over any DicomDataStream: optional 128-byte preamble and "DICM", the file
// meta group in explicit VR little endian, then the data set in the transfer syntax's encoding.

#include <string_view>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The data set encoding of a transfer syntax UID: implicit VR LE for "1.2.840.10008.1.2", explicit
// VR BE for "1.2.840.10008.1.2.2", explicit VR LE for every other UID (trailing NUL/space ignored).
StreamEncoding EncodingOfTransferSyntax(std::string_view uid) noexcept;
// True for Deflated Explicit VR Little Endian, "1.2.840.10008.1.2.1.99" (trailing NUL/space ignored).
bool IsDeflatedTransferSyntax(std::string_view uid) noexcept;
// The encoding named by the data set's (0002,0010); explicit VR little endian without one.
StreamEncoding EncodingOfDataSet(const DicomDataSet& dataSet);

// Read the preamble and meta group (handing meta elements to handler) and leave the stream at the
// data set in its encoding; a deflated data set is inflated first. Files without preamble must start with group 0x0002 or 0x0008; a bare
// data set is explicit VR little endian when its first element carries a VR, implicit otherwise.
bool ReadFileHeader(DicomDataStream& stream, DicomDataStream::CallbackHandler& handler);
// Read a whole file: header, then every element of the data set.
bool ReadFileContent(DicomDataStream& stream, DicomDataStream::CallbackHandler& handler);

// Write the preamble, "DICM" and the group 0x0002 elements in explicit VR little endian, when the
// data set holds group 0x0002; (0002,0000) is written with the byte count of the group's other elements.
bool WriteFileHeader(DicomDataStream& stream, const DicomDataSet& dataSet);
// Write a whole file: header, then the other elements in the stream's configured encoding. A data
// set whose (0002,0010) names the deflated syntax is refused: the writer does not deflate.
bool WriteFileContent(DicomDataStream& stream, const DicomDataSet& dataSet);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
