#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/InstanceClassElements.h"

#include "Foundations/DataModule/Common/StringConversionUtils.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/ElementText.h"
#include "Foundations/DataModule/Rows/EncapsulatedPdfDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"

#include <exception>

namespace Lumivale::DataModule::DataAdapterModule {
namespace {

using dcm::Tag;
using dcm::TagNumber;
using VR = dcm::ValueRepresentation;

// Inserts text elements, remembering whether every one could be written.
class ElementWriter {
public:
    ElementWriter(dcm::DicomDataSet& dataSet, const MultiCharSetDataType& charset) : dataSet_(dataSet), charset_(charset) {}
    void Text(Tag tag, VR vr, std::string_view utf8) {
        auto element = MakeTextElement(TagNumber(tag), vr, utf8, charset_);
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
    if (!image.image_type.IsEmpty()) out.Wide(Tag::ImageType, VR::CS, image.image_type.Text());
    if (!image.patient_orientation.IsEmpty()) out.Wide(Tag::PatientOrientation, VR::CS, image.patient_orientation.Text());
    if (image.image_laterality.IsSet()) out.Text(Tag::ImageLaterality, VR::CS, image.image_laterality.Term());
    if (image.photometric_interpretation.IsSet()) {
        out.Text(Tag::PhotometricInterpretation, VR::CS, image.photometric_interpretation.Term());
    }
    if (!image.pixel_spacing.IsEmpty()) out.Wide(Tag::PixelSpacing, VR::DS, image.pixel_spacing.Text());
    if (image.burned_in_annotation.IsSet()) out.Text(Tag::BurnedInAnnotation, VR::CS, image.burned_in_annotation.Value());
    if (image.lossy_image_compression.IsSet()) {
        out.Text(Tag::LossyImageCompression, VR::CS, image.lossy_image_compression.Value());
    }
    if (image.presentation_lut_shape.IsSet()) out.Text(Tag::PresentationLUTShape, VR::CS, image.presentation_lut_shape.Value());
}

void ReadImage(const ElementReader& in, ImageInstanceDataRow& image) {
    std::string text;
    if (in.Text(Tag::ImageType, text) && IsValidUtf8(text)) image.image_type.SetFromText(FromUtf8(text));
    if (in.Text(Tag::PatientOrientation, text) && IsValidUtf8(text)) image.patient_orientation.SetFromText(FromUtf8(text));
    if (in.Text(Tag::ImageLaterality, text)) image.image_laterality.SetFromTerm(text);
    if (in.Text(Tag::PhotometricInterpretation, text)) image.photometric_interpretation.SetFromTerm(text);
    if (in.Text(Tag::PixelSpacing, text) && IsValidUtf8(text)) image.pixel_spacing.SetFromText(FromUtf8(text));
    if (in.Text(Tag::BurnedInAnnotation, text)) image.burned_in_annotation.Set(text);
    if (in.Text(Tag::LossyImageCompression, text)) image.lossy_image_compression.Set(text);
    if (in.Text(Tag::PresentationLUTShape, text)) image.presentation_lut_shape.Set(text);
}

bool InsertDocument(dcm::DicomDataSet& dataSet, ElementWriter& out, const EncapsulatedPdfDataRow& pdf) {
    if (pdf.mime_type.IsSet()) out.Text(Tag::MIMETypeOfEncapsulatedDocument, VR::LO, pdf.mime_type.Value());
    out.Wide(Tag::DocumentTitle, VR::ST, pdf.document_title.Value());
    if (pdf.burned_in_annotation.IsSet()) out.Text(Tag::BurnedInAnnotation, VR::CS, pdf.burned_in_annotation.Value());
    std::vector<std::uint8_t> bytes;
    if (pdf.encapsulated_document.HasBuffer() && !pdf.encapsulated_document.ReadAll(bytes)) return false;
    const std::uint32_t tag = TagNumber(Tag::EncapsulatedDocument);
    return dataSet.Insert(std::make_unique<dcm::DicomDataSetElement>(dcm::TagGroup(tag), dcm::TagElement(tag), VR::OB,
                                                                     std::move(bytes)));
}

void ReadDocument(const dcm::DicomDataSet& dataSet, const ElementReader& in, EncapsulatedPdfDataRow& pdf) {
    std::string text;
    if (in.Text(Tag::MIMETypeOfEncapsulatedDocument, text)) pdf.mime_type.Set(text);
    if (in.Text(Tag::DocumentTitle, text) && IsValidUtf8(text)) pdf.document_title.Set(FromUtf8(text));
    if (in.Text(Tag::BurnedInAnnotation, text)) pdf.burned_in_annotation.Set(text);
    std::vector<std::uint8_t> bytes;
    if (const auto* document = dataSet.Find(Tag::EncapsulatedDocument); document && document->value.Load(bytes)) {
        pdf.encapsulated_document = ByteBuffer::Adopt(std::move(bytes));
    }
}

}  // namespace

bool InsertInstanceClassElements(dcm::DicomDataSet& dataSet, const InstanceDataRow& instance,
                                 const MultiCharSetDataType& charset) {
    ElementWriter out(dataSet, charset);
    if (const auto* image = dynamic_cast<const ImageInstanceDataRow*>(&instance)) InsertImage(out, *image);
    if (const auto* pdf = dynamic_cast<const EncapsulatedPdfDataRow*>(&instance); pdf && !InsertDocument(dataSet, out, *pdf)) {
        return false;
    }
    return out.Ok();
}

void ReadInstanceClassElements(const dcm::DicomDataSet& dataSet, InstanceDataRow& instance,
                               const MultiCharSetDataType& charset) {
    const ElementReader in(dataSet, charset);
    if (auto* image = dynamic_cast<ImageInstanceDataRow*>(&instance)) ReadImage(in, *image);
    if (auto* pdf = dynamic_cast<EncapsulatedPdfDataRow*>(&instance)) ReadDocument(dataSet, in, *pdf);
}

}  // namespace Lumivale::DataModule::DataAdapterModule
