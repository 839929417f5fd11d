#pragma once
// The controllers of image storage classes. Each gives the image attributes of the instance row
// that are still empty the defaults of its class, then does the base preparation.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataController.h"
#include "Foundations/DataModule/Enumerations/Laterality.h"
#include "Foundations/DataModule/Enumerations/PhotometricInterpretation.h"

#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// What an image controller accepts and which defaults it gives (empty texts and unknown members give none).
struct ImageControllerProfile {
    bool (*accepts)(SOPClass::Enum sopClass) noexcept;  // the classes the controller works on
    std::u16string_view imageType;                      // (0008,0008), values separated by "\"
    Laterality::Enum imageLaterality;                   // (0020,0062)
    std::string_view burnedInAnnotation;                // (0028,0301)
    PhotometricInterpretation::Enum photometric;        // (0028,0004)
    std::string_view lossyImageCompression;             // (0028,2110)
    std::string_view presentationLutShape;              // (2050,0020)
};

// Shared behaviour of the image controllers, driven by a profile.
class ImageDicomFileDataController : public DicomFileDataController {
public:
    ImageDicomFileDataController(SOPClass::Enum sopClass, const ImageControllerProfile& profile) noexcept
        : DicomFileDataController(sopClass), profile_(&profile) {}

    bool PrepareForWriting(InstanceDataRow& instance) override;
    bool Accepts(SOPClass::Enum sopClass) const noexcept override { return profile_->accepts(sopClass); }

private:
    const ImageControllerProfile* profile_;
};

// Digital X-ray images (SOP classes 19 and 20).
class DxImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit DxImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

// Intra-oral X-ray images (SOP class 20).
class IoImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit IoImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

// CT images (SOP class 21).
class CtImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit CtImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

// Visible light photographs (SOP class 23).
class VlImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit VlImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

// Computed radiography images (SOP class 24).
class CrImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit CrImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

// Secondary capture images (every secondary capture class).
class ScImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit ScImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

// Image classes without a controller of their own.
class GeneralImageDicomFileDataController : public ImageDicomFileDataController {
public:
    explicit GeneralImageDicomFileDataController(SOPClass::Enum sopClass) noexcept;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
