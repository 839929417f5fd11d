// Writes a typical packed raw data instance with the file adapter, for the toolkit checks:
//   write_sample_instance OUTPUT [--icon] [--charset TEXT] [--payload FILE]

#include "../AdapterSampleRows.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"

#include <cstdio>
#include <filesystem>
#include <string_view>

namespace dm = Lumivale::DataModule;

namespace {

// A 4 x 2 RGB icon with its planes kept apart, as the thumbnail builder leaves them.
void AttachIcon(dm::InstanceDataRow& instance) {
    dm::IconImageRecord& icon = instance.icon_image;
    icon.samples_per_pixel = 3;
    icon.photometric_interpretation = dm::PhotometricInterpretation::RGB;
    icon.rows = 2;
    icon.columns = 4;
    icon.bits_allocated = icon.bits_stored = 8;
    icon.high_bit = 7;
    icon.pixel_representation = 0;
    icon.planar_configuration = 0;
    icon.pixel_description = {2, 4, 4, 8, 8, 3, 0};
    for (unsigned p = 0; p < 3; ++p) icon.pixel_data[p] = dm::ByteBuffer::Adopt(std::vector<std::uint8_t>(8, static_cast<std::uint8_t>(p * 100)));
    icon.is_set = true;
    instance.duplicate_icon_as_image = true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT [--icon] [--charset TEXT] [--payload FILE]\n", argv[0]);
        return 2;
    }
    dm::PatientDataSet set;
    dm::RawDataDataRow& raw = AdapterTesting::AddTypicalRawDataChain(set);
    for (int i = 2; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "--icon") AttachIcon(raw);
        if (option == "--charset" && i + 1 < argc) raw.specific_character_set = dm::MultiCharSetDataType::FromText(argv[++i]);
        if (option == "--payload" && i + 1 < argc) {
            const std::filesystem::path payload = argv[++i];
            raw.custom_data.SetBytes("Dicapsule.PackedFile.Content",
                                     dm::ByteBuffer::OfFileRegion({payload, 0, std::filesystem::file_size(payload)}));
        }
    }
    return dm::DataAdapterModule::DicomFileDataAdapter().Write(set, raw, argv[1]) ? 0 : 1;
}
