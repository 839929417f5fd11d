#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomDataControllerError.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr std::size_t kNameColumn = 50;
constexpr std::string_view kEllipsis = "...";

// Pad with spaces to the column, or cut so that the text with "..." just fills it.
std::string FitToColumn(std::string_view name) {
    if (name.size() > kNameColumn) return std::string(name.substr(0, kNameColumn - kEllipsis.size())) + std::string(kEllipsis);
    std::string fitted(name);
    fitted.resize(kNameColumn, ' ');
    return fitted;
}

}  // namespace

std::string DicomDataControllerError::Description(std::string_view indent) const {
    std::string line(indent);
    line += TagText(tag);
    line += FitToColumn(EntryByTag(tag).name);
    if (!text.empty()) line += "\"" + text + "\"";
    return line;
}

std::string DescribeErrors(const DicomDataControllerErrors& errors, std::string_view indent) {
    std::string lines;
    for (const DicomDataControllerError& error : errors) lines += error.Description(indent) + "\n";
    return lines;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
