#pragma once
// The one entry of the imaging layer that the tool calls: a thumbnail file made into the instance's
// icon. On Linux the image codecs, and the libraries behind them, live in a module that is loaded
// only by this call, so that a run without a thumbnail never loads them; elsewhere they are linked in.

#include "Foundations/DataModule/Rows/IconImageRecord.h"

#include <string>

namespace Lumivale::Imaging {

enum class ThumbnailIconResult {
    inserted,
    not_loaded,          // the picture could not be read
    not_inserted,        // the picture could not be made into the icon
    module_unavailable,  // no usable imaging module: see ImagingModuleName()
};

// Load the thumbnail at path (UTF-8; the codec chosen by extension) and fill record from it at the
// thumbnail's own size and depth (record.reduce is left as it was given).
ThumbnailIconResult InsertThumbnailIcon(const std::string& path, DataModule::IconImageRecord& record);

// After module_unavailable: the imaging module file that was found and refused, else the module's
// file name (nothing was found where it is installed).
std::string ImagingModuleName();

}  // namespace Lumivale::Imaging
