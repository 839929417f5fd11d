// Loads arbitrary bytes as a pack's --metadata file: the signature decides between the DICOM path
// (rows of the source's patient and study) and the edition document path.

#include <cstddef>
#include <cstdint>

#include "Foundations/DataModule/metadata/MetadataReader.h"
#include "fuzz/FuzzInputFile.h"

namespace dm = Lumivale::DataModule;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DicapsuleFuzz::FuzzInputFile input(data, size, "metadata", ".src");
    dm::PatientDataSet set;
    dm::MetadataRows rows;
    dm::LoadMetadata(set, input.Path(), dm::date_time{2024, 2, 29, 12, 30, 45, 0}, dm::SOPClass::RawData, rows);
    return 0;
}
