// Reads arbitrary bytes as a DICOM file from disk, as unpack and info do: the file stream (values
// that stay in the file, read-ahead refills) and then the rows built from the tree, keeping every
// element that no row holds. A tree that was read must survive read -> write -> read -> write
// unchanged (fuzz/dicom/DicomRoundTrip.h), with its values taken from the file.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "fuzz/FuzzInputFile.h"
#include "fuzz/dicom/DicomRoundTrip.h"

namespace adapter = Lumivale::DataModule::DataAdapterModule;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DicapsuleFuzz::FuzzInputFile input(data, size, "dicom-file", ".dcm");
    // Small thresholds so that short fuzz inputs also exercise values left in the file.
    adapter::DicomCodecModule::DicomReadOptions readOptions;
    readOptions.keepInFileAbove = 16;
    adapter::DicomCodecModule::DicomDataSet dataSet;
    if (!adapter::DicomCodecModule::ReadDicomFile(input.Path(), dataSet, readOptions)) return 0;
    std::vector<std::uint8_t> first;
    if (DicapsuleFuzz::WriteToMemory(dataSet, first)) {
        // Read back from a file too, so that values left in the file (pixel data) come back.
        const DicapsuleFuzz::FuzzInputFile written(first.data(), first.size(), "dicom-file-again", ".dcm");
        adapter::DicomCodecModule::DicomDataSet reread;
        if (!adapter::DicomCodecModule::ReadDicomFile(written.Path(), reread, readOptions)) std::abort();
        DicapsuleFuzz::RequireSameOutput(reread, first);
    }

    adapter::DicomFileReadOptions rowOptions;
    rowOptions.keepInFileAbove = 16;
    rowOptions.keepOtherElements = true;
    Lumivale::DataModule::PatientDataSet set;
    Lumivale::DataModule::InstanceDataRow* instance = nullptr;
    adapter::ReadInstanceDataSet(dataSet, set, rowOptions, instance);
    return 0;
}
