#include "Foundations/DataModule/Enumerations/DocumentClass.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <string>

namespace Lumivale::DataModule {

namespace {

constexpr EncapsulatedDocumentClass kClasses[] = {
    {SOPClass::EncapsulatedPDF, "application/pdf", ".pdf", Modality::DOC, false},
    {SOPClass::EncapsulatedCDA, "text/XML", ".xml", Modality::DOC, false},
    {SOPClass::EncapsulatedSTL, "model/stl", ".stl", Modality::M3D, true},
    {SOPClass::EncapsulatedOBJ, "model/obj", ".obj", Modality::M3D, true},
    {SOPClass::EncapsulatedMTL, "model/mtl", ".mtl", Modality::M3D, true},
};

}  // namespace

std::span<const EncapsulatedDocumentClass> EncapsulatedDocumentClasses() { return kClasses; }

const EncapsulatedDocumentClass* EncapsulatedDocumentClassOf(SOPClass::Enum sop_class) {
    for (const EncapsulatedDocumentClass& documentClass : kClasses) {
        if (documentClass.sop_class == sop_class) return &documentClass;
    }
    return nullptr;
}

const EncapsulatedDocumentClass* EncapsulatedDocumentClassOfMimeType(std::string_view mime_type) {
    const std::string wanted = ToUpperAscii(TrimBlanks(mime_type));
    for (const EncapsulatedDocumentClass& documentClass : kClasses) {
        if (ToUpperAscii(documentClass.mime_type) == wanted) return &documentClass;
    }
    return nullptr;
}

}  // namespace Lumivale::DataModule
