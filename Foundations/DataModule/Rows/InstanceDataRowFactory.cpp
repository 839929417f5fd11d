#include "Foundations/DataModule/Rows/InstanceDataRowFactory.h"

#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"

namespace Lumivale::DataModule {

std::unique_ptr<InstanceDataRow> CreateInstanceDataRow(SOPClass::Enum sop_class) {
    switch (CategoryOf(sop_class)) {
        case SOPClassCategory::RawData:
            return std::make_unique<RawDataDataRow>();
        case SOPClassCategory::Image:
        case SOPClassCategory::SecondaryCaptureImage:
            return std::make_unique<ImageInstanceDataRow>(sop_class);
        case SOPClassCategory::EncapsulatedDocument:
            return std::make_unique<EncapsulatedDocumentDataRow>(sop_class);
        case SOPClassCategory::Other:
            break;
    }
    return std::make_unique<InstanceDataRow>(sop_class);
}

}  // namespace Lumivale::DataModule
