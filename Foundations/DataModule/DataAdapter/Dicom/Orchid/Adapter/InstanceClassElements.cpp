#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/InstanceClassElements.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/CustomDataSequence.h"
#include "Foundations/DataModule/Enumerations/DocumentClass.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"

#include <exception>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

using dcm::Tag;
namespace Tags = dcm::Tags;
using VR = dcm::ValueRepresentation;

// Inserts text elements, remembering whether every one could be written.
class ElementWriter {
public:
    ElementWriter(dcm::DicomDataSet& dataSet, const MultiCharSetDataType& charset) : dataSet_(dataSet), charset_(charset) {}
    void Text(Tag tag, VR vr, std::string_view utf8) {
        auto element = MakeTextElement(tag, vr, utf8, charset_);
        ok_ = ok_ && element && dataSet_.Insert(std::move(element));
    }
    void Wide(Tag tag, VR vr, const std::u16string& wide) {
        const std::optional<std::string> utf8 = TryToUtf8(wide);
        if (utf8) Text(tag, vr, *utf8);
        ok_ = ok_ && utf8;
    }
    bool Ok() const { return ok_; }

private:
    dcm::DicomDataSet& dataSet_;
    const MultiCharSetDataType& charset_;
    bool ok_ = true;
};

// Reads text elements that are present.
class ElementReader {
public:
    ElementReader(const dcm::DicomDataSet& dataSet, const MultiCharSetDataType& charset) : dataSet_(dataSet), charset_(charset) {}
    bool Text(Tag tag, std::string& utf8) const {
        const auto* element = dataSet_.Find(tag);
        return element && FetchElementText(*element, charset_, utf8) && !utf8.empty();
    }

private:
    const dcm::DicomDataSet& dataSet_;
    const MultiCharSetDataType& charset_;
};

void InsertImage(ElementWriter& out, const ImageInstanceDataRow& image) {
    if (!image.image_type.IsEmpty()) out.Wide(Tags::ImageType, VR::CS, image.image_type.Text());
    if (!image.patient_orientation.IsEmpty()) out.Wide(Tags::PatientOrientation, VR::CS, image.patient_orientation.Text());
    if (image.image_laterality.IsSet()) out.Text(Tags::ImageLaterality, VR::CS, image.image_laterality.Term());
    if (image.photometric_interpretation.IsSet()) {
        out.Text(Tags::PhotometricInterpretation, VR::CS, image.photometric_interpretation.Term());
    }
    if (!image.pixel_spacing.IsEmpty()) out.Wide(Tags::PixelSpacing, VR::DS, image.pixel_spacing.Text());
    if (image.burned_in_annotation.IsSet()) out.Text(Tags::BurnedInAnnotation, VR::CS, image.burned_in_annotation.Value());
    if (image.lossy_image_compression.IsSet()) {
        out.Text(Tags::LossyImageCompression, VR::CS, image.lossy_image_compression.Value());
    }
    if (image.presentation_lut_shape.IsSet()) out.Text(Tags::PresentationLUTShape, VR::CS, image.presentation_lut_shape.Value());
}

void ReadImage(const ElementReader& in, ImageInstanceDataRow& image) {
    std::string text;
    if (in.Text(Tags::ImageType, text) && IsValidUtf8(text)) image.image_type.SetFromText(FromUtf8(text));
    if (in.Text(Tags::PatientOrientation, text) && IsValidUtf8(text)) image.patient_orientation.SetFromText(FromUtf8(text));
    if (in.Text(Tags::ImageLaterality, text)) image.image_laterality.SetFromTerm(text);
    if (in.Text(Tags::PhotometricInterpretation, text)) image.photometric_interpretation.SetFromTerm(text);
    if (in.Text(Tags::PixelSpacing, text) && IsValidUtf8(text)) image.pixel_spacing.SetFromText(FromUtf8(text));
    if (in.Text(Tags::BurnedInAnnotation, text)) image.burned_in_annotation.Set(text);
    if (in.Text(Tags::LossyImageCompression, text)) image.lossy_image_compression.Set(text);
    if (in.Text(Tags::PresentationLUTShape, text)) image.presentation_lut_shape.Set(text);
}

// An empty sequence: a type 2 attribute the tool has no value for.
bool InsertEmptySequence(dcm::DicomDataSet& dataSet, Tag tag) {
    return dataSet.Insert(std::make_unique<dcm::DicomDataSetSequenceElement>(tag));
}

// The units of a 3D model's coordinates: millimetres, as the STL, OBJ and MTL classes assume.
bool InsertMillimetreUnits(dcm::DicomDataSet& dataSet) {
    return InsertCodeSequence(dataSet, Tags::MeasurementUnitsCodeSequence, "mm", "UCUM", "mm");
}

// The document element: its bytes, or the region of the file that holds them (never loaded, so
// that the writer copies it file to file), and its length.
bool InsertDocumentBytes(dcm::DicomDataSet& dataSet, const ByteBuffer& document) {
    const std::uint64_t length = document.Length();
    if (dcm::EvenLength(length) > kMaxDicomValueLength) return false;
        auto element = std::make_unique<dcm::DicomDataSetElement>(Tags::EncapsulatedDocument, VR::OB);
    if (const FileRegion* region = document.Region()) {
        if (!region->IsInsideFile()) return false;
        element->valueLength = static_cast<std::uint32_t>(length);
        element->value.SetRegion(dcm::FileRegion{*region});
    } else {
        const auto bytes = document.MemoryBytes();
        element->SetValue(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    }
    return dataSet.Insert(std::move(element)) &&
           dataSet.Insert(MakeUnsignedLongElement(Tags::EncapsulatedDocumentLength, static_cast<std::uint32_t>(length)));
}

bool InsertDocument(dcm::DicomDataSet& dataSet, ElementWriter& out, const EncapsulatedDocumentDataRow& document) {
    if (document.mime_type.IsSet()) out.Text(Tags::MIMETypeOfEncapsulatedDocument, VR::LO, document.mime_type.Value());
    out.Wide(Tags::DocumentTitle, VR::ST, document.document_title.Value());
    if (document.burned_in_annotation.IsSet()) out.Text(Tags::BurnedInAnnotation, VR::CS, document.burned_in_annotation.Value());
    if (document.conversion_type.IsSet()) out.Text(Tags::ConversionType, VR::CS, document.conversion_type.Value());
    if (!document.hl7_instance_identifier.empty()) {
        out.Text(Tags::HL7InstanceIdentifier, VR::ST, document.hl7_instance_identifier);
    }
    if (!InsertEmptySequence(dataSet, Tags::ConceptNameCodeSequence)) return false;
    const EncapsulatedDocumentClass* documentClass = EncapsulatedDocumentClassOf(document.sop_class.ValueOr(SOPClass::unknown));
    if (documentClass && documentClass->is_model) {
        out.Text(Tags::FrameOfReferenceUID, VR::UI, document.frame_of_reference_uid.ValueOr({}));
        out.Text(Tags::PositionReferenceIndicator, VR::LO, {});
        if (!InsertMillimetreUnits(dataSet)) return false;
    }
    return InsertDocumentBytes(dataSet, document.encapsulated_document);
}

void ReadDocument(const dcm::DicomDataSet& dataSet, const ElementReader& in, EncapsulatedDocumentDataRow& document) {
    std::string text;
    if (in.Text(Tags::MIMETypeOfEncapsulatedDocument, text)) document.mime_type.Set(text);
    if (in.Text(Tags::DocumentTitle, text) && IsValidUtf8(text)) document.document_title.Set(FromUtf8(text));
    if (in.Text(Tags::BurnedInAnnotation, text)) document.burned_in_annotation.Set(text);
    if (in.Text(Tags::ConversionType, text)) document.conversion_type.Set(text);
    if (in.Text(Tags::HL7InstanceIdentifier, text)) document.hl7_instance_identifier = text;
    if (in.Text(Tags::FrameOfReferenceUID, text)) document.frame_of_reference_uid.Set(text);
    std::uint32_t length = 0;
    if (const auto* element = dataSet.Find(Tags::EncapsulatedDocumentLength); element && FetchUnsignedLong(*element, length)) {
        document.encapsulated_document_length = length;
    }
    // A document kept in its file stays there: only the caller that wants its bytes reads them.
    const auto* element = dataSet.Find(Tags::EncapsulatedDocument);
    if (element == nullptr) return;
    if (const dcm::FileRegion* region = element->value.Region()) {
        document.encapsulated_document = ByteBuffer::OfFileRegion(FileRegion{region->file, region->offset, region->length});
    } else {
        document.encapsulated_document = ByteBuffer::CopyOf(element->value.Bytes());
    }
}

}  // namespace

bool InsertInstanceClassElements(dcm::DicomDataSet& dataSet, const InstanceDataRow& instance,
                                 const MultiCharSetDataType& charset) {
    ElementWriter out(dataSet, charset);
    if (const auto* image = dynamic_cast<const ImageInstanceDataRow*>(&instance)) InsertImage(out, *image);
    if (const auto* document = dynamic_cast<const EncapsulatedDocumentDataRow*>(&instance);
        document && !InsertDocument(dataSet, out, *document)) {
        return false;
    }
    return out.Ok();
}

void ReadInstanceClassElements(const dcm::DicomDataSet& dataSet, InstanceDataRow& instance,
                               const MultiCharSetDataType& charset) {
    const ElementReader in(dataSet, charset);
    if (auto* image = dynamic_cast<ImageInstanceDataRow*>(&instance)) ReadImage(in, *image);
    if (auto* document = dynamic_cast<EncapsulatedDocumentDataRow*>(&instance)) ReadDocument(dataSet, in, *document);
}

}  // namespace Lumivale::DataModule::DataAdapterModule
