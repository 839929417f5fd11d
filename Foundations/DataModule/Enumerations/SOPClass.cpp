#include "Foundations/DataModule/Enumerations/SOPClass.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

struct SOPClassRow {
    CodedTerm coded;
    SOPClassCategory category;
};

using C = SOPClassCategory;

constexpr std::array<SOPClassRow, SOPClass::count> kSOPClassRows = {{
    {{"", "Unknown SOP Class"}, C::Other},
    {{"1.2.840.10008.1.1", "Verification SOP Class"}, C::Other},
    {{"1.2.840.10008.1.3.10", "Media Storage Directory Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.88.11", "Basic Text SR Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.88.22", "Enhanced SR Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.88.33", "Comprehensive SR Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.88.59", "Key Object Selection Document Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.11.1", "Grayscale Softcopy Presentation State Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.4", "MR Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.4.1", "Enhanced MR Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.20", "Nuclear Medicine Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.6.1", "Ultrasound Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.3.1", "Ultrasound Multi-frame Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.12.1", "X-Ray Angiographic Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.12.2", "X-Ray Radiofluoroscopic Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1.2", "Digital Mammography X-Ray Image Storage - For Presentation"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1.2.1", "Digital Mammography X-Ray Image Storage - For Processing"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1.1.1", "Digital X-Ray Image Storage - For Processing"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1.3.1", "Digital Intra-Oral X-Ray Image Storage - For Processing"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1.1", "Digital X-Ray Image Storage - For Presentation"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1.3", "Digital Intra-Oral X-Ray Image Storage - For Presentation"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.2", "CT Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.2.1", "Enhanced CT Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.77.1.4", "VL Photographic Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.1", "Computed Radiography Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.7", "Secondary Capture Image Storage"}, C::SecondaryCaptureImage},
    {{"1.2.840.10008.5.1.4.1.1.7.2", "Multi-frame Grayscale Byte Secondary Capture Image Storage"},
     C::SecondaryCaptureImage},
    {{"1.2.840.10008.5.1.4.1.1.7.4", "Multi-frame True Color Secondary Capture Image Storage"},
     C::SecondaryCaptureImage},
    {{"1.2.840.10008.5.1.4.1.1.66", "Raw Data Storage"}, C::RawData},
    {{"1.2.840.10008.5.1.4.1.1.7.3", "Multi-frame Grayscale Word Secondary Capture Image Storage"},
     C::SecondaryCaptureImage},
    {{"1.2.840.10008.5.1.4.1.1.104.1", "Encapsulated PDF Storage"}, C::EncapsulatedDocument},
    {{"1.2.840.10008.5.1.4.1.1.7.1", "Multi-frame Single Bit Secondary Capture Image Storage"},
     C::SecondaryCaptureImage},
    {{"1.2.840.10008.5.1.4.1.1.77.1.1", "VL Endoscopic Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.77.1.2", "VL Microscopic Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.77.1.3", "VL Slide-Coordinates Microscopic Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.77.1.5.1", "Ophthalmic Photography 8 Bit Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.104.2", "Encapsulated CDA Storage"}, C::EncapsulatedDocument},
    {{"1.2.840.10008.5.1.4.1.1.128", "Positron Emission Tomography Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.481.1", "RT Image Storage"}, C::Image},
    {{"1.2.840.10008.5.1.4.1.1.481.2", "RT Dose Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.481.3", "RT Structure Set Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.481.5", "RT Plan Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.66.1", "Spatial Registration Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.66.4", "Segmentation Storage"}, C::Other},
    {{"1.2.840.10008.5.1.4.1.1.104.3", "Encapsulated STL Storage"}, C::EncapsulatedDocument},
    {{"1.2.840.10008.5.1.4.1.1.104.4", "Encapsulated OBJ Storage"}, C::EncapsulatedDocument},
    {{"1.2.840.10008.5.1.4.1.1.104.5", "Encapsulated MTL Storage"}, C::EncapsulatedDocument},
}};

// The term table derived from the rows above, so that the UIDs are written once.
constexpr std::array<CodedTerm, SOPClass::count> kSOPClassTerms = [] {
    std::array<CodedTerm, SOPClass::count> terms{};
    for (std::size_t i = 0; i < terms.size(); ++i) terms[i] = kSOPClassRows[i].coded;
    return terms;
}();

static_assert(kSOPClassTerms[SOPClass::RawData].term == "1.2.840.10008.5.1.4.1.1.66");
static_assert(kSOPClassTerms[SOPClass::EncapsulatedPDF].term == "1.2.840.10008.5.1.4.1.1.104.1");
static_assert(kSOPClassTerms[SOPClass::EncapsulatedMTL].term == "1.2.840.10008.5.1.4.1.1.104.5");

}  // namespace

SOPClassCategory CategoryOf(SOPClass::Enum sop_class) {
    return sop_class < kSOPClassRows.size() ? kSOPClassRows[sop_class].category : SOPClassCategory::Other;
}

std::span<const CodedTerm> CodedStringTraits<SOPClass::Enum>::Table() { return kSOPClassTerms; }

}  // namespace Lumivale::DataModule
