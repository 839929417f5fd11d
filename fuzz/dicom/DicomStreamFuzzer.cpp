// Reads arbitrary bytes as a DICOM file into a tree; a tree with a meta group that can be written
// must survive read -> write -> read -> write unchanged (fuzz/dicom/DicomRoundTrip.h).

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "fuzz/dicom/DicomRoundTrip.h"

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DicomMemoryDataStream input(std::span<const std::uint8_t>(data, size));
    DicomDataSet dataSet;
    DicomDataSetFillCallback fill(dataSet);
    std::vector<std::uint8_t> first;
    if (!ReadFileContent(input, fill) || !DicapsuleFuzz::WriteToMemory(dataSet, first)) return 0;

    DicomMemoryDataStream again(first);
    DicomDataSet reread;
    DicomDataSetFillCallback refill(reread);
    if (!ReadFileContent(again, refill)) std::abort();
    DicapsuleFuzz::RequireSameOutput(reread, first);
    return 0;
}
