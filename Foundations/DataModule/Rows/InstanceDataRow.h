#pragma once
// The instance row: SOP Common, Acquisition Context and the attributes every instance kind shares,
// plus the icon image. SOP-class kinds derive from it (see InstanceDataRowFactory.h).

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/Enumerations/SOPClass.h"
#include "Foundations/DataModule/Enumerations/TransferSyntax.h"
#include "Foundations/DataModule/Rows/AcquisitionContext.h"
#include "Foundations/DataModule/Rows/DataRow.h"
#include "Foundations/DataModule/Rows/IconImageRecord.h"
#include "Foundations/DataModule/Rows/ReferencedInstance.h"
#include "Foundations/DataModule/Values/NumberDataType.h"
#include "Foundations/DataModule/Values/UIDDataType.h"

#include <vector>

namespace Lumivale::DataModule {

// One instance of any SOP class.
class InstanceDataRow : public DataRow {
public:
    // An instance of the given class.
    explicit InstanceDataRow(SOPClass::Enum sop_class_value = SOPClass::unknown) {
        if (sop_class_value != SOPClass::unknown) sop_class.Set(sop_class_value);
    }

    SOPClassDataType sop_class;                       // (0008,0016) SOP Class UID, type 1
    UIDDataType sop_instance_uid;                     // (0008,0018) SOP Instance UID, type 1
    UIDDataType media_storage_sop_instance_uid;       // (0002,0003) Media Storage SOP Instance UID
    TransferSyntaxDataType transfer_syntax;           // (0002,0010) Transfer Syntax UID
    DateTimeDataType instance_creation_date_time;     // (0008,0012) + (0008,0013) Instance Creation Date/Time, type 3
    UIDDataType instance_creator_uid;                 // (0008,0014) Instance Creator UID, type 3
    IntegerDataType instance_number;                  // (0020,0013) Instance Number, type 2 or 3
    bool instance_number_fixed = false;               // set by the user: the controllers keep it
    DateTimeDataType content_date_time;               // (0008,0023) + (0008,0033) Content Date/Time
    DateTimeDataType acquisition_date_time;           // (0008,002A) Acquisition DateTime, type 3
    std::vector<AcquisitionContextItem> acquisition_context;  // (0040,0555) Acquisition Context Sequence, type 2
    std::vector<ReferencedInstance> referenced_instances;     // (0008,114A) Referenced Instance Sequence, type 3
    IconImageRecord icon_image;                       // (0088,0200) Icon Image Sequence
    bool duplicate_icon_as_image = false;             // also write the icon as the instance's own image pixels
    MultiCharSetDataType specific_character_set;      // (0008,0005) Specific Character Set, type 1C
};

}  // namespace Lumivale::DataModule
