#pragma once
// Problems a file data controller finds in an instance: each names the attribute by tag and may
// carry a text; the list prints one line per problem.

#include "Foundations/DataModule/DataAdapter/Dicom/Core/Tag.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Why an attribute is reported.
enum class DicomDataControllerErrorCode : std::uint8_t {
    MissingAttribute,  // a type 1 attribute has no value
    InvalidValue,      // the value cannot be written
};

// One problem with one attribute.
struct DicomDataControllerError {
    Tag tag;  // the attribute concerned
    DicomDataControllerErrorCode code = DicomDataControllerErrorCode::MissingAttribute;
    std::string text;       // optional detail, printed between double quotes

    // indent, "(gggg,eeee)", the dictionary name fitted to 50 columns, then "\"text\"" when there is a text.
    std::string Description(std::string_view indent = {}) const;
};

// The problems found in one instance, in the order they were found.
using DicomDataControllerErrors = std::vector<DicomDataControllerError>;

// The descriptions of every entry, one per line (each line ends with "\n").
std::string DescribeErrors(const DicomDataControllerErrors& errors, std::string_view indent = {});

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
