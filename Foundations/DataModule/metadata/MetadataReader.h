#pragma once
// Loading the --metadata source of a pack into the five rows of the new instance. The source is
// a DICOM file (its patient and study are taken over; series, equipment and instance are new) or
// an edition document (new rows filled by its edition operations; see docs/metadata-format.md).

#include "Foundations/DataModule/Enumerations/SOPClass.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Values/DateTime.h"
#include "Foundations/DataModule/metadata/DicomSourceRows.h"

#include <optional>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// The identifiers of the instance a DICOM source is: what a new instance made from it refers to.
struct SourceInstanceUids {
    std::string study_instance_uid;
    std::string series_instance_uid;
    std::string sop_instance_uid;
    std::string sop_class_uid;  // empty when the source's class is not one this library knows
};

// The rows of the new instance, each linked to its parent.
struct MetadataRows {
    PatientDataRow* patient = nullptr;
    StudyDataRow* study = nullptr;
    SeriesDataRow* series = nullptr;
    EquipmentDataRow* equipment = nullptr;
    InstanceDataRow* instance = nullptr;
    // Set when the source is a DICOM instance with a study, series and SOP instance UID.
    std::optional<SourceInstanceUids> source_instance;
};

// Load the source into set and point rows at the new chain; the instance row is of instance_class
// and new rows are stamped with stamp. The source is a file path (UTF-8), or, when it names no
// existing file and its first non-blank character is "<", the document text itself. False on any
// failure, with the reason in the debug trace; rows made before the failure stay in set.
bool LoadMetadata(PatientDataSet& set, const std::string& source_utf8, const date_time& stamp,
                  SOPClass::Enum instance_class, MetadataRows& rows);

// The same with the reader of DICOM sources chosen by the caller.
bool LoadMetadata(PatientDataSet& set, const std::string& source_utf8, const date_time& stamp,
                  SOPClass::Enum instance_class, MetadataRows& rows, const DicomRowsReader& read_dicom);

// The DICOM path over rows already read: the first patient, its first study, that study's first
// series and its equipment are taken from source; patient and study are copied into set with a new
// series (new UID, stamped, series number 1), a new equipment (manufacturer, institution, station,
// model and serial number copied) and a new instance (new UID, the source's Specific Character Set).
// The source's own instance, when it has complete identifiers, is named in rows.source_instance.
bool BuildRowsFromDicomSource(PatientDataSet& set, const PatientDataSet& source, const date_time& stamp,
                              SOPClass::Enum instance_class, MetadataRows& rows);

// The XML path over a document's text: new stamped rows (series modality "OT"), then every
// "operation" of type "edition" applied in order.
bool BuildRowsFromEditionDocument(PatientDataSet& set, std::string_view document_text, const date_time& stamp,
                                  SOPClass::Enum instance_class, MetadataRows& rows);

}  // namespace Lumivale::DataModule
