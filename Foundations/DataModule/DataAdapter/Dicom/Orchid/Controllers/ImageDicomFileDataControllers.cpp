#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/ImageDicomFileDataControllers.h"

#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

using PI = PhotometricInterpretation;

constexpr bool IsDx(SOPClass::Enum c) noexcept {
    return c == SOPClass::DigitalXRayImageForPresentation || c == SOPClass::DigitalIntraOralXRayImageForPresentation;
}
constexpr bool IsIo(SOPClass::Enum c) noexcept { return c == SOPClass::DigitalIntraOralXRayImageForPresentation; }
constexpr bool IsCt(SOPClass::Enum c) noexcept { return c == SOPClass::CTImage; }
constexpr bool IsVl(SOPClass::Enum c) noexcept { return c == SOPClass::VLPhotographicImage; }
constexpr bool IsCr(SOPClass::Enum c) noexcept { return c == SOPClass::ComputedRadiographyImage; }
bool IsSc(SOPClass::Enum c) noexcept { return CategoryOf(c) == SOPClassCategory::SecondaryCaptureImage; }
bool IsImage(SOPClass::Enum c) noexcept { return CategoryOf(c) == SOPClassCategory::Image; }

// Projection radiographs are original primary images, shown as stored (IDENTITY), not lossy-compressed.
constexpr ImageControllerProfile kDxProfile{IsDx, u"ORIGINAL\\PRIMARY", Laterality::U, "NO", PI::MONOCHROME2, "00", "IDENTITY"};
constexpr ImageControllerProfile kIoProfile{IsIo, u"ORIGINAL\\PRIMARY", Laterality::U, "NO", PI::MONOCHROME2, "00", "IDENTITY"};
constexpr ImageControllerProfile kCtProfile{IsCt, u"ORIGINAL\\PRIMARY\\AXIAL", Laterality::unknown, "NO", PI::MONOCHROME2, "00", {}};
constexpr ImageControllerProfile kVlProfile{IsVl, u"ORIGINAL\\PRIMARY", Laterality::unknown, "NO", PI::unknown, {}, {}};
constexpr ImageControllerProfile kCrProfile{IsCr, u"ORIGINAL\\PRIMARY", Laterality::unknown, "NO", PI::MONOCHROME2, "00", {}};
constexpr ImageControllerProfile kScProfile{IsSc, u"DERIVED\\SECONDARY", Laterality::unknown, "NO", PI::unknown, {}, {}};
constexpr ImageControllerProfile kGeneralProfile{IsImage, u"ORIGINAL\\PRIMARY", Laterality::unknown, {}, PI::unknown, {}, {}};

void SetTextIfEmpty(BasicDataType<std::string>& value, std::string_view text) {
    if (value.IsEmpty() && !text.empty()) value.Set(std::string(text));
}

}  // namespace

bool ImageDicomFileDataController::PrepareForWriting(InstanceDataRow& instance) {
    auto* image = dynamic_cast<ImageInstanceDataRow*>(&instance);
    if (!AcceptsInstance(instance) || image == nullptr) return true;
    const ImageControllerProfile& p = *profile_;
    if (image->image_type.IsEmpty() && !p.imageType.empty()) image->image_type.SetFromText(p.imageType);
    if (image->image_laterality.IsEmpty() && p.imageLaterality != Laterality::unknown) {
        image->image_laterality.Set(p.imageLaterality);
    }
    SetTextIfEmpty(image->burned_in_annotation, p.burnedInAnnotation);
    if (image->photometric_interpretation.IsEmpty() && p.photometric != PI::unknown) {
        image->photometric_interpretation.Set(p.photometric);
    }
    SetTextIfEmpty(image->lossy_image_compression, p.lossyImageCompression);
    SetTextIfEmpty(image->presentation_lut_shape, p.presentationLutShape);
    return DicomFileDataController::PrepareForWriting(instance);
}

DxImageDicomFileDataController::DxImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kDxProfile) {}
IoImageDicomFileDataController::IoImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kIoProfile) {}
CtImageDicomFileDataController::CtImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kCtProfile) {}
VlImageDicomFileDataController::VlImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kVlProfile) {}
CrImageDicomFileDataController::CrImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kCrProfile) {}
ScImageDicomFileDataController::ScImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kScProfile) {}
GeneralImageDicomFileDataController::GeneralImageDicomFileDataController(SOPClass::Enum c) noexcept
    : ImageDicomFileDataController(c, kGeneralProfile) {}

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
