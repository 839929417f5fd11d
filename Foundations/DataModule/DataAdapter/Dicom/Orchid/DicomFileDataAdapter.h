#pragma once
// The DICOM file adapter: one instance with its series, study, patient and equipment rows becomes
// a data set tree and a Part 10 file (explicit VR little endian), and a file becomes such rows.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomSinkDataStream.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Portability/Misc/AtomicFileWriter.h"

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace Lumivale::DataModule::DataAdapterModule {

// How a file is read into rows.
struct DicomFileReadOptions {
    // Custom data values longer than this stay in the file as a file region; shorter ones are loaded.
    std::uint64_t keepInFileAbove = 64 * 1024;
    // Custom data keys the caller does not need: their values are never read (they stay in the file).
    std::set<std::string, std::less<>> unwantedCustomDataKeys;
    // Also copy the top-level elements no row member holds into the instance row's extra elements.
    bool keepOtherElements = false;
};

// Writes and reads instances as DICOM files.
class DicomFileDataAdapter {
public:
    // Write the instance (which must be in set, linked to its series) to path, replacing path only
    // when the whole file was written. The SOP class controller completes the instance first. False
    // when the controller fails or finds a type 1 attribute missing, a text cannot be encoded in the
    // instance's character set, a length would not fit a 32-bit DICOM length, or writing fails
    // (with ExistingTarget::refuse, also when a file appeared at path while writing).
    bool Write(const PatientDataSet& set, InstanceDataRow& instance, const std::filesystem::path& path,
               Portability::ExistingTarget existing = Portability::ExistingTarget::replace);

    // Write the instance as Write does into stream, left uncommitted (WriteDicomFileUncommitted):
    // the caller fills in the custom data values set to be filled later and commits it.
    bool WriteUncommitted(const PatientDataSet& set, InstanceDataRow& instance, const std::filesystem::path& path,
                          Portability::ExistingTarget existing, DicomCodecModule::DicomFileDataStream& stream);

    // Write the instance as Write does, the same bytes handed in order to sink instead of a file.
    bool Write(const PatientDataSet& set, InstanceDataRow& instance, const DicomCodecModule::ByteSink& sink);

    // Read path into a new patient, study, series, equipment and instance chain of set; instance
    // points at the new instance row. False (instance null) when the file cannot be read as DICOM.
    bool Read(const std::filesystem::path& path, PatientDataSet& set, const DicomFileReadOptions& options,
              InstanceDataRow*& instance);
};

// Build the data set tree of an instance as Write does, without writing it.
bool BuildInstanceDataSet(const PatientDataSet& set, InstanceDataRow& instance, DicomCodecModule::DicomDataSet& dataSet);

// Read a data set tree into a new chain of rows of set, as Read does.
bool ReadInstanceDataSet(const DicomCodecModule::DicomDataSet& dataSet, PatientDataSet& set,
                         const DicomFileReadOptions& options, InstanceDataRow*& instance);

// Read a DICOM file into a new chain of rows (the metadata reader's entry): as Read. read says how
// the file's read ended: a failure of it tells a file that is no DICOM data from one damaged at an
// offset; it is a success when the file was read but its rows were not.
bool ReadDicomFileIntoRows(const std::shared_ptr<const Portability::OpenFile>& file, PatientDataSet& set,
                           const DicomFileReadOptions& options, InstanceDataRow*& instance,
                           DicomCodecModule::DicomReadResult& read);

}  // namespace Lumivale::DataModule::DataAdapterModule
