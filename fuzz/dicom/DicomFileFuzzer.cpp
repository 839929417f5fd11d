// Reads arbitrary bytes as a DICOM file from disk, as unpack and info do: the file stream (values
// that stay in the file, read-ahead refills) and then the rows built from the tree, keeping every
// element that no row holds.

#include <cstddef>
#include <cstdint>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "fuzz/FuzzInputFile.h"

namespace adapter = Lumivale::DataModule::DataAdapterModule;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DicapsuleFuzz::FuzzInputFile input(data, size, "dicom-file", ".dcm");
    if (!input.Written()) return 0;
    // Small thresholds so that short fuzz inputs also exercise values left in the file.
    adapter::DicomCodecModule::DicomReadOptions readOptions;
    readOptions.keepInFileAbove = 16;
    adapter::DicomCodecModule::DicomDataSet dataSet;
    if (!adapter::DicomCodecModule::ReadDicomFile(input.Path(), dataSet, readOptions)) return 0;

    adapter::DicomFileReadOptions rowOptions;
    rowOptions.keepInFileAbove = 16;
    rowOptions.keepOtherElements = true;
    Lumivale::DataModule::PatientDataSet set;
    Lumivale::DataModule::InstanceDataRow* instance = nullptr;
    adapter::ReadInstanceDataSet(dataSet, set, rowOptions, instance);
    return 0;
}
