// Reads arbitrary bytes as the start of a DICOM file: preamble, "DICM", the file meta group and
// the choice of the data set encoding. A header that is accepted must leave the stream inside the
// input and hand over only group 0x0002 elements.

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
    DicomDataSet meta;
    DicomDataSetFillCallback fill(meta);
    if (!ReadFileHeader(input, fill)) return 0;
    if (input.Position() > size) std::abort();
    for (const auto& [tag, element] : meta) {
        if (element->tag.group != 0x0002) std::abort();
    }
    return 0;
}
