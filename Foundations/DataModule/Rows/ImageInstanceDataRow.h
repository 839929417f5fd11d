#pragma once
// The instance row of image storage classes (DX, IO, CT, VL, CR, secondary capture and others).

#include "Foundations/DataModule/Enumerations/Laterality.h"
#include "Foundations/DataModule/Enumerations/PhotometricInterpretation.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"

#include <string>

namespace Lumivale::DataModule {

// An image instance: the General Image and Image Pixel attributes the image controllers adjust.
class ImageInstanceDataRow : public InstanceDataRow {
public:
    explicit ImageInstanceDataRow(SOPClass::Enum sop_class_value) : InstanceDataRow(sop_class_value) {}

    MultiCodedWStringDataType<unsigned int> image_type;           // (0008,0008) Image Type
    MultiCodedWStringDataType<unsigned int> patient_orientation;  // (0020,0020) Patient Orientation
    LateralityDataType image_laterality;                          // (0020,0062) Image Laterality
    BasicDataType<std::string> burned_in_annotation;              // (0028,0301) Burned In Annotation
    BasicDataType<std::string> lossy_image_compression;           // (0028,2110) Lossy Image Compression
    PhotometricInterpretationDataType photometric_interpretation; // (0028,0004) Photometric Interpretation
    BasicDataType<std::string> presentation_lut_shape;            // (2050,0020) Presentation LUT Shape
    MultiCodedWStringDataType<unsigned int> pixel_spacing;        // (0028,0030) Pixel Spacing
};

}  // namespace Lumivale::DataModule
