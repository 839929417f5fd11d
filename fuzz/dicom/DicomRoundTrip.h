#pragma once
// The invariant of the DICOM fuzz targets: a tree that was read and can be written is written
// again unchanged after being read back (read -> write -> read -> write gives the same bytes), so
// the reader and the writer agree on every element they accept.

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"

namespace DicapsuleFuzz {

// The tree as a file in memory, in the encoding it names. False without a meta group (the output
// could start with a group a file cannot start with) or when it cannot be written (values skipped
// while reading from memory, pixel data, have nothing to be written from: a clean failure).
inline bool WriteToMemory(const Lumivale::DataModule::DataAdapterModule::DicomCodecModule::DicomDataSet& dataSet,
                          std::vector<std::uint8_t>& bytes) {
    using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
    if (dataSet.Count() == 0 || dataSet.begin()->second->tag.group != 0x0002) return false;
    DicomMemoryDataStream output;
    output.SetEncoding(EncodingOfDataSet(dataSet));
    if (!WriteFileContent(output, dataSet)) return false;
    bytes = output.Bytes();
    return true;
}

// The second half of the round trip: the tree read back from the first output must be written
// as the same bytes.
inline void RequireSameOutput(const Lumivale::DataModule::DataAdapterModule::DicomCodecModule::DicomDataSet& reread,
                              const std::vector<std::uint8_t>& first) {
    std::vector<std::uint8_t> second;
    if (!WriteToMemory(reread, second) || second != first) std::abort();
}

}  // namespace DicapsuleFuzz
