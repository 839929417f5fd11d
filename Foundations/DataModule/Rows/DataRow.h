#pragma once
// What every data row has: its extra elements and a creation stamp.

#include "Foundations/DataModule/Rows/ExtraElements.h"
#include "Foundations/DataModule/Values/DateTime.h"

namespace Lumivale::DataModule {

// Base of the patient, study, series, equipment and instance rows.
class DataRow {
public:
    DataRow() = default;
    DataRow(const DataRow&) = default;
    DataRow& operator=(const DataRow&) = default;
    virtual ~DataRow() = default;

    // Elements set by tag without a named member (written after the named ones, in tag order).
    ExtraElementList extra_elements;
    // When the tool made this row (the run's stamp); empty for rows read from a file. Not written.
    DateTimeDataType creation_date_time;
};

}  // namespace Lumivale::DataModule
