// The file data controllers: which class gets which controller, and what each one completes.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/DicomFileDataControllerFactory.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/EncapsulatedPDFDicomFileDataController.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/ImageDicomFileDataControllers.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Controllers/RawDataDicomFileDataController.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/InstanceDataRowFactory.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <typeinfo>

namespace {

namespace dm = Lumivale::DataModule;
namespace dcm = Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
using dm::SOPClass;

// The root the build was configured with, and the clock before any test ran: the run's stamp is
// read from the clock at its first use, so it lies between this and the end of the test.
const std::string kRoot = DICAPSULE_EXPECTED_UID_ROOT;
const std::time_t kProcessStart = std::time(nullptr);

// A local date and time as seconds since the epoch.
std::time_t Seconds(const dm::date_time& value) {
    std::tm fields{};
    fields.tm_year = value.year - 1900;
    fields.tm_mon = value.month - 1;
    fields.tm_mday = value.day;
    fields.tm_hour = value.hour;
    fields.tm_min = value.minute;
    fields.tm_sec = value.second;
    fields.tm_isdst = -1;
    return std::mktime(&fields);
}

// A registered class (raw data), the classes found by category, and classes without a controller.
TEST(ControllerFactory, EachClassGetsItsController) {
    struct Case {
        const char* id;
        SOPClass::Enum sopClass;
        const std::type_info* controller;  // nullptr: no controller
    };
    const Case cases[] = {
        {"raw", SOPClass::RawData, &typeid(dcm::RawDataDicomFileDataController)},
        {"SC", SOPClass::SecondaryCaptureImage, &typeid(dcm::ScImageDicomFileDataController)},
        {"SC multi-frame", SOPClass::MultiFrameTrueColorSecondaryCaptureImage, &typeid(dcm::ScImageDicomFileDataController)},
        {"MR", SOPClass::MRImage, &typeid(dcm::GeneralImageDicomFileDataController)},
        {"SR", SOPClass::BasicTextSR, nullptr},
        {"unknown", SOPClass::unknown, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const auto controller = dcm::DicomFileDataControllerFactory::Create(c.sopClass);
        ASSERT_EQ(controller != nullptr, c.controller != nullptr);
        if (!controller) continue;
        EXPECT_EQ(typeid(*controller), *c.controller);
        EXPECT_EQ(controller->SopClass(), c.sopClass);
        EXPECT_TRUE(controller->Accepts(c.sopClass));
    }
}

TEST(Controllers, OtherClassesAreLeftUnchanged) {
    const struct Case { const char* id; SOPClass::Enum controllerClass; SOPClass::Enum instanceClass; } cases[] = {
        {"raw on pdf", SOPClass::RawData, SOPClass::EncapsulatedPDF},
        {"IO on DX", SOPClass::DigitalIntraOralXRayImageForPresentation, SOPClass::DigitalXRayImageForPresentation},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const auto controller = dcm::DicomFileDataControllerFactory::Create(c.controllerClass);
        const auto instance = dm::CreateInstanceDataRow(c.instanceClass);
        instance->instance_number.Set(5);
        ASSERT_TRUE(controller->PrepareForWriting(*instance));
        EXPECT_TRUE(instance->sop_instance_uid.IsEmpty());
        EXPECT_TRUE(instance->transfer_syntax.IsEmpty());
        EXPECT_TRUE(instance->content_date_time.IsEmpty());
        EXPECT_EQ(instance->instance_number.ValueOr(0), 5);
    }
}

TEST(Controllers, RawDataPreparation) {
    struct Case { const char* id; bool numberFixed; bool uidGiven; };
    for (const Case c : {Case{"defaults", false, false}, Case{"user number and uid", true, true}}) {
        SCOPED_TRACE(c.id);
        dm::RawDataDataRow raw;
        raw.instance_number.Set(4);
        raw.instance_number_fixed = c.numberFixed;
        if (c.uidGiven) raw.sop_instance_uid.Set("1.2.3.4");
        ASSERT_TRUE(dcm::RawDataDicomFileDataController().PrepareForWriting(raw));
        EXPECT_EQ(raw.instance_number.IsSet(), c.numberFixed);
        const std::time_t stamped = Seconds(raw.content_date_time.Value());
        EXPECT_GE(stamped, kProcessStart);
        EXPECT_LE(stamped, std::time(nullptr));
        EXPECT_TRUE(raw.creator_version_uid.Value().starts_with(kRoot + ".50.")) << raw.creator_version_uid.Value();
        EXPECT_FALSE(raw.sop_instance_uid.IsEmpty());
        if (c.uidGiven) {
            EXPECT_EQ(raw.sop_instance_uid.Value(), "1.2.3.4");
        }
        EXPECT_EQ(raw.media_storage_sop_instance_uid, raw.sop_instance_uid);
        EXPECT_EQ(raw.transfer_syntax.Value(), dm::TransferSyntax::ExplicitVRLittleEndian);
        dcm::DicomDataControllerErrors errors;
        EXPECT_TRUE(dcm::RawDataDicomFileDataController().CheckForWriting(raw, errors));
        EXPECT_TRUE(errors.empty());
    }
}

TEST(Controllers, DocumentAndImageDefaultsFillOnlyEmptyAttributes) {
    dm::EncapsulatedDocumentDataRow pdf;
    pdf.burned_in_annotation.Set("YES");
    ASSERT_TRUE(dcm::EncapsulatedPDFDicomFileDataController().PrepareForWriting(pdf));
    EXPECT_EQ(pdf.instance_number.ValueOr(0), 1);
    EXPECT_EQ(pdf.burned_in_annotation.Value(), "YES");
    EXPECT_EQ(pdf.mime_type.Value(), "application/pdf");
    dcm::DicomDataControllerErrors errors;
    EXPECT_FALSE(dcm::EncapsulatedPDFDicomFileDataController().CheckForWriting(pdf, errors));  // no document bytes
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].tag, dcm::Tags::EncapsulatedDocument);

    dm::ImageInstanceDataRow cr(SOPClass::ComputedRadiographyImage);
    cr.burned_in_annotation.Set("YES");
    ASSERT_TRUE(dcm::CrImageDicomFileDataController(SOPClass::ComputedRadiographyImage).PrepareForWriting(cr));
    EXPECT_EQ(cr.burned_in_annotation.Value(), "YES");
    EXPECT_EQ(cr.photometric_interpretation.Value(), dm::PhotometricInterpretation::MONOCHROME2);
    EXPECT_FALSE(cr.image_type.IsEmpty());
}

}  // namespace
