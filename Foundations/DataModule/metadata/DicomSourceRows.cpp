#include "Foundations/DataModule/metadata/DicomSourceRows.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataAdapter.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule {

bool ReadDicomSourceRows(const std::shared_ptr<const Portability::OpenFile>& file, PatientDataSet& set) {
    // The file adapter reads the rows exactly as it reads packed files: text decoded through the
    // source's Specific Character Set, unreadable values left out with a trace line.
    DataAdapterModule::DicomFileReadOptions options;
    InstanceDataRow* instance = nullptr;
    DataAdapterModule::DicomCodecModule::DicomReadResult read;
    const bool rows = DataAdapterModule::ReadDicomFileIntoRows(file, set, options, instance, read);
    if (!rows && read) {
        LV_TRACE("Module MetadataReader", "%s", "The DICOM source holds no instance whose rows can be read");
    }
    return rows;
}

}  // namespace Lumivale::DataModule
