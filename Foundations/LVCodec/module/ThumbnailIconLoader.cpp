// InsertThumbnailIcon through the imaging module, loaded on the first thumbnail of the process.
#include "Foundations/LVCodec/module/ThumbnailIcon.h"
#include "Foundations/LVCodec/module/ThumbnailIconModule.h"

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/ExternalLibrary.h"

namespace Lumivale::Imaging {

namespace {

void ForwardTrace(const Portability::TraceLine* line) {
    Portability::Trace(line->module, line->file, line->line, line->text);
}

DicapsuleInsertThumbnailIcon LoadEntry() {
    static Portability::ExternalLibrary library;
    static const DicapsuleInsertThumbnailIcon entry = [] {
        if (!library.OpenModule(DICAPSULE_IMAGING_MODULE_FILE, DICAPSULE_IMAGING_MODULE_BUILD_PATH))
            return DicapsuleInsertThumbnailIcon{};
        return reinterpret_cast<DicapsuleInsertThumbnailIcon>(library.Symbol(kImagingModuleEntry));
    }();
    return entry;
}

}  // namespace

ThumbnailIconResult InsertThumbnailIcon(const std::string& path, DataModule::IconImageRecord& record) {
    const DicapsuleInsertThumbnailIcon insert = LoadEntry();
    if (insert == nullptr) {
        LV_TRACE("Module Imaging", "%s", "The imaging module is not available: no thumbnail can be read");
        return ThumbnailIconResult::not_loaded;
    }
    return static_cast<ThumbnailIconResult>(insert(path.c_str(), &record, ForwardTrace));
}

}  // namespace Lumivale::Imaging
