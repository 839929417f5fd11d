#pragma once
// SOP classes; the term of a member is its UID.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct SOPClass {
    enum Enum : std::uint32_t {
        unknown = 0,
        Verification = 1,
        MediaStorageDirectory = 2,
        BasicTextSR = 3,
        EnhancedSR = 4,
        ComprehensiveSR = 5,
        KeyObjectSelectionDocument = 6,
        GrayscaleSoftcopyPresentationState = 7,
        MRImage = 8,
        EnhancedMRImage = 9,
        NuclearMedicineImage = 10,
        UltrasoundImage = 11,
        UltrasoundMultiFrameImage = 12,
        XRayAngiographicImage = 13,
        XRayRadiofluoroscopicImage = 14,
        DigitalMammographyXRayImageForPresentation = 15,
        DigitalMammographyXRayImageForProcessing = 16,
        DigitalXRayImageForProcessing = 17,
        DigitalIntraOralXRayImageForProcessing = 18,
        DigitalXRayImageForPresentation = 19,
        DigitalIntraOralXRayImageForPresentation = 20,
        CTImage = 21,
        EnhancedCTImage = 22,
        VLPhotographicImage = 23,
        ComputedRadiographyImage = 24,
        SecondaryCaptureImage = 25,
        MultiFrameGrayscaleByteSecondaryCaptureImage = 26,
        MultiFrameTrueColorSecondaryCaptureImage = 27,
        RawData = 28,
        MultiFrameGrayscaleWordSecondaryCaptureImage = 29,
        EncapsulatedPDF = 30,
        MultiFrameSingleBitSecondaryCaptureImage = 31,
        VLEndoscopicImage = 32,
        VLMicroscopicImage = 33,
        VLSlideCoordinatesMicroscopicImage = 34,
        OphthalmicPhotography8BitImage = 35,
        EncapsulatedCDA = 36,
        PositronEmissionTomographyImage = 37,
        RTImage = 38,
        RTDose = 39,
        RTStructureSet = 40,
        RTPlan = 41,
        SpatialRegistration = 42,
        Segmentation = 43,
        EncapsulatedSTL = 44,
        EncapsulatedOBJ = 45,
        EncapsulatedMTL = 46,
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = EncapsulatedMTL + 1;
};

// What kind of instance a SOP class describes.
enum class SOPClassCategory : std::uint8_t {
    Other,                  // not a stored instance of a kind the tool builds (and unknown)
    Image,                  // an image storage class
    SecondaryCaptureImage,  // one of the secondary capture image classes
    RawData,                // Raw Data Storage
    EncapsulatedDocument,   // Encapsulated PDF, CDA, STL, OBJ and MTL
};

// The category of a SOP class (Other for unknown and out-of-range values).
SOPClassCategory CategoryOf(SOPClass::Enum sop_class);

// UID table of SOPClass (row i is member i).
template <>
struct CodedStringTraits<SOPClass::Enum> : TableCodedStringTraits<SOPClass::Enum> {
    static std::span<const CodedTerm> Table();
};

// A SOP Class UID value.
using SOPClassDataType = CodedStringDataType<SOPClass::Enum>;

}  // namespace Lumivale::DataModule
