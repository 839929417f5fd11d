#include "Foundations/DataModule/DataAdapter/Dicom/Core/Tag.h"

#include <cstdio>
#include <ostream>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

std::string TagText(Tag tag) {
    char text[12];
    std::snprintf(text, sizeof text, "(%04X,%04X)", static_cast<unsigned>(tag.group), static_cast<unsigned>(tag.element));
    return text;
}

std::ostream& operator<<(std::ostream& out, Tag tag) { return out << TagText(tag); }

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
