#pragma once
// Makes the instance row that fits a SOP class.

#include "Foundations/DataModule/Rows/InstanceDataRow.h"

#include <memory>

namespace Lumivale::DataModule {

// A new instance row for the class: RawDataDataRow for Raw Data, EncapsulatedDocumentDataRow for
// the Encapsulated Document classes, ImageInstanceDataRow for image classes, a plain InstanceDataRow otherwise.
std::unique_ptr<InstanceDataRow> CreateInstanceDataRow(SOPClass::Enum sop_class);

}  // namespace Lumivale::DataModule
