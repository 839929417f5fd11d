#pragma once
// The C entry of the imaging module (dicapsule_imaging), between the tool and the module built
// from the same sources by the same compiler: the record crosses as the C++ type it is.

#include "Foundations/DataModule/Rows/IconImageRecord.h"
#include "Portability/Misc/DebugTrace.h"

extern "C" {

// Receives the module's trace lines, so that they reach the tool's own sink.
typedef void (*DicapsuleTraceForward)(const Portability::TraceLine* line);

// InsertThumbnailIcon inside the module: the ThumbnailIconResult as an int.
typedef int (*DicapsuleInsertThumbnailIcon)(const char* path, Lumivale::DataModule::IconImageRecord* record,
                                            DicapsuleTraceForward trace);
}

namespace Lumivale::Imaging {

inline constexpr const char* kImagingModuleEntry = "dicapsule_insert_thumbnail_icon";

}  // namespace Lumivale::Imaging
