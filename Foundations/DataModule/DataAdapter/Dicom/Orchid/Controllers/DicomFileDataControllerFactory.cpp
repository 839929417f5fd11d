#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataControllerFactory.h"

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/EncapsulatedPDFDicomFileDataController.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/ImageDicomFileDataControllers.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/RawDataDicomFileDataController.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

template <typename Controller>
std::unique_ptr<DicomFileDataController> MakeForClass(SOPClass::Enum sopClass) {
    return std::make_unique<Controller>(sopClass);
}

template <typename Controller>
std::unique_ptr<DicomFileDataController> MakeFixed(SOPClass::Enum) {
    return std::make_unique<Controller>();
}

struct Registration {
    SOPClass::Enum sopClass;
    DicomFileDataControllerFactory::Creator creator;
};

// Classes with a controller of their own; the other image, secondary capture and Encapsulated
// Document classes are found by category.
constexpr Registration kRegistrations[] = {
    {SOPClass::DigitalXRayImageForPresentation, MakeForClass<DxImageDicomFileDataController>},
    {SOPClass::DigitalIntraOralXRayImageForPresentation, MakeForClass<IoImageDicomFileDataController>},
    {SOPClass::CTImage, MakeForClass<CtImageDicomFileDataController>},
    {SOPClass::VLPhotographicImage, MakeForClass<VlImageDicomFileDataController>},
    {SOPClass::ComputedRadiographyImage, MakeForClass<CrImageDicomFileDataController>},
    {SOPClass::RawData, MakeFixed<RawDataDicomFileDataController>},
};

}  // namespace

DicomFileDataControllerFactory::Creator DicomFileDataControllerFactory::CreatorOf(SOPClass::Enum sopClass) noexcept {
    for (const Registration& registration : kRegistrations) {
        if (registration.sopClass == sopClass) return registration.creator;
    }
    switch (CategoryOf(sopClass)) {
        case SOPClassCategory::SecondaryCaptureImage: return MakeForClass<ScImageDicomFileDataController>;
        case SOPClassCategory::Image: return MakeForClass<GeneralImageDicomFileDataController>;
        case SOPClassCategory::EncapsulatedDocument: return MakeForClass<EncapsulatedPDFDicomFileDataController>;
        default: return nullptr;
    }
}

std::unique_ptr<DicomFileDataController> DicomFileDataControllerFactory::Create(SOPClass::Enum sopClass) {
    const Creator creator = CreatorOf(sopClass);
    return creator ? creator(sopClass) : nullptr;
}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
