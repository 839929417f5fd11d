// InsertThumbnailIcon through the imaging module, loaded on the first thumbnail of the process.
#include "Foundations/LVCodec/module/ThumbnailIcon.h"
#include "Foundations/LVCodec/module/ThumbnailIconModule.h"

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/ExternalLibrary.h"
#include "dicapsule_imagingIdentity.h"

namespace Lumivale::Imaging {

namespace {

void ForwardTrace(const Portability::TraceLine* line) {
    Portability::Trace(line->module, line->file, line->line, line->text);
}

Portability::ExternalLibrary& Library() {
    static Portability::ExternalLibrary library;
    return library;
}

DicapsuleInsertThumbnailIcon LoadEntry() {
    static const DicapsuleInsertThumbnailIcon entry = [] {
        Portability::ExternalLibrary& library = Library();
        if (!library.OpenModule(kImagingModule)) return DicapsuleInsertThumbnailIcon{};
        return reinterpret_cast<DicapsuleInsertThumbnailIcon>(library.Symbol(kImagingModuleEntry));
    }();
    return entry;
}

}  // namespace

ThumbnailIconResult InsertThumbnailIcon(const std::string& path, DataModule::IconImageRecord& record) {
    const DicapsuleInsertThumbnailIcon insert = LoadEntry();
    if (insert == nullptr) {
        LV_TRACE("Module Imaging", "%s", "The imaging module is not available: no thumbnail can be read");
        return ThumbnailIconResult::module_unavailable;
    }
    return static_cast<ThumbnailIconResult>(insert(path.c_str(), &record, ForwardTrace));
}

std::string ImagingModuleName() {
    const std::string& refused = Library().refused();
    return refused.empty() ? std::string(kImagingModule.file_name) : refused;
}

}  // namespace Lumivale::Imaging
