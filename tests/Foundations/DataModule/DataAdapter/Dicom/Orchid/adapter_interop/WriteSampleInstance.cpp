// Writes a typical packed raw data instance with the file adapter, for the toolkit checks:
//   write_sample_instance OUTPUT [--icon] [--charset TEXT] [--payload FILE]

#include "../AdapterSampleRows.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"

#include <cstdio>
#include <filesystem>
#include <string_view>

namespace dm = Lumivale::DataModule;

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT [--icon] [--charset TEXT] [--payload FILE]\n", argv[0]);
        return 2;
    }
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    for (int i = 2; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "--icon") {
            // A 4 x 2 icon with its planes kept apart, each a single grey level.
            AdapterTesting::AttachRgbIcon(raw, 4, 2, 8, 4, {std::vector<std::uint8_t>(8, 0), std::vector<std::uint8_t>(8, 100),
                                                           std::vector<std::uint8_t>(8, 200)});
        }
        if (option == "--charset" && i + 1 < argc) raw.specific_character_set = dm::MultiCharSetDataType::FromText(argv[++i]);
        if (option == "--payload" && i + 1 < argc) {
            const auto payload = Portability::OpenFile::Open(argv[++i]);
            if (!payload) return 1;
            raw.custom_data.SetBytes("Dicapsule.PackedFile.Content", dm::ByteBuffer::OfFileRegion({payload, 0, payload->Size()}));
        }
    }
    return dm::DataAdapterModule::DicomFileDataAdapter().Write(set, raw, argv[1]) ? 0 : 1;
}
