// Applies arbitrary text as an edition document to the rows of a new raw data instance.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Foundations/DataModule/metadata/MetadataReader.h"

namespace dm = Lumivale::DataModule;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    dm::PatientDataSet set;
    dm::MetadataRows rows;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    dm::BuildRowsFromEditionDocument(set, text, dm::date_time{2024, 2, 29, 12, 30, 45, 0}, dm::SOPClass::RawData, rows);
    return 0;
}
