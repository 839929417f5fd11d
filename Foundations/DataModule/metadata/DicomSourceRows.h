#pragma once
// Reading a DICOM metadata source into rows: the named attributes of the patient, study, series,
// equipment and instance, with text decoded from the file's Specific Character Set (ISO 2022 code
// extensions included), so that it can be written again in any output character set.

#include "Foundations/DataModule/Rows/PatientDataSet.h"

#include <functional>
#include <memory>

#include "Portability/Misc/OpenFile.h"

namespace Lumivale::DataModule {

// Reads a DICOM Part 10 file into one linked chain of rows added to the set; false when the file
// is not a readable DICOM file.
using DicomRowsReader = std::function<bool(const std::shared_ptr<const Portability::OpenFile>& file, PatientDataSet& set)>;

// This library's reader: every attribute of the row attribute table that the file holds (values
// that do not fit their member are left out and traced), and the file's Specific Character Set on
// the instance row.
bool ReadDicomSourceRows(const std::shared_ptr<const Portability::OpenFile>& file, PatientDataSet& set);

}  // namespace Lumivale::DataModule
