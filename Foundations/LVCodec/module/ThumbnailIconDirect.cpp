// InsertThumbnailIcon over the linked codecs: the Windows build, and the module's own body.
#include "Foundations/LVCodec/module/ThumbnailIcon.h"

#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/icon/IconImageBuilder.h"

#include <utility>

namespace Lumivale::Imaging {

ThumbnailIconResult InsertThumbnailIcon(const std::string& path, DataModule::IconImageRecord& record) {
    LVImage image;
    if (!LoadThumbnail(path, image)) return ThumbnailIconResult::not_loaded;
    // The icon keeps the thumbnail's own size and depth: the builder's reduction is switched off
    // for the build and restored afterwards, whatever the outcome.
    const bool reduce = std::exchange(record.reduce, false);
    // The image is not needed once its pixels are in the icon: the builder may give it back as it copies.
    const bool inserted = SetIconImage(record, std::move(image));
    record.reduce = reduce;
    return inserted ? ThumbnailIconResult::inserted : ThumbnailIconResult::not_inserted;
}

std::string ImagingModuleName() { return {}; }  // linked in: never unavailable

}  // namespace Lumivale::Imaging
