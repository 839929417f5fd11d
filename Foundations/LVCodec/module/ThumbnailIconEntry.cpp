// The exported entry of the imaging module. Its trace lines go back to the tool: the module holds
// its own copy of the trace sink, which the tool never installs.
#include "Foundations/LVCodec/module/ThumbnailIcon.h"
#include "Foundations/LVCodec/module/ThumbnailIconModule.h"

extern "C" __attribute__((visibility("default"))) int dicapsule_insert_thumbnail_icon(
    const char* path, Lumivale::DataModule::IconImageRecord* record, DicapsuleTraceForward trace) {
    if (trace != nullptr)
        Portability::SetTraceSink([trace](const Portability::TraceLine& line) { trace(&line); });
    try {
        return static_cast<int>(Lumivale::Imaging::InsertThumbnailIcon(path, *record));
    } catch (...) {
        // Exceptions do not cross the C entry; allocation failures end as a thumbnail not loaded.
        return static_cast<int>(Lumivale::Imaging::ThumbnailIconResult::not_loaded);
    }
}
