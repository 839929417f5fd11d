// Reads arbitrary bytes as a DICOM file into a tree; when that succeeds and the tree has a meta
// group, writes it in the encoding it was read in, reads the output again and requires the same
// tree size. (Without a meta group the output may start with a group a file cannot start with.)

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DicomMemoryDataStream input(std::span<const std::uint8_t>(data, size));
    DicomDataSet dataSet;
    DicomDataSetFillCallback fill(dataSet);
    if (!ReadFileContent(input, fill) || dataSet.Count() == 0 || dataSet.begin()->second->group != 0x0002) return 0;

    DicomMemoryDataStream output;
    output.SetEncoding(EncodingOfDataSet(dataSet));
    // Values skipped while reading (pixel data) cannot be written back from memory; that is a clean failure.
    if (!WriteFileContent(output, dataSet)) return 0;
    DicomMemoryDataStream again(output.Bytes());
    DicomDataSet reread;
    DicomDataSetFillCallback refill(reread);
    if (!ReadFileContent(again, refill) || reread.Count() != dataSet.Count()) std::abort();
    return 0;
}
