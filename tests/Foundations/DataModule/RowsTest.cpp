#include "Foundations/DataModule/Rows/EncapsulatedPdfDataRow.h"
#include "Foundations/DataModule/Rows/ImageInstanceDataRow.h"
#include "Foundations/DataModule/Rows/InstanceDataRowFactory.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"

#include <gtest/gtest.h>

namespace {

using namespace Lumivale::DataModule;

TEST(InstanceRowFactory, RowKindFollowsTheSOPClass) {
    struct Case {
        SOPClass::Enum sop_class;
        bool raw;
        bool pdf;
        bool image;
    } const cases[] = {
        {SOPClass::RawData, true, false, false},
        {SOPClass::EncapsulatedPDF, false, true, false},
        {SOPClass::CTImage, false, false, true},
        {SOPClass::MultiFrameTrueColorSecondaryCaptureImage, false, false, true},
        {SOPClass::BasicTextSR, false, false, false},
        {SOPClass::unknown, false, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sop_class);
        const auto row = CreateInstanceDataRow(c.sop_class);
        EXPECT_EQ(dynamic_cast<RawDataDataRow*>(row.get()) != nullptr, c.raw);
        EXPECT_EQ(dynamic_cast<EncapsulatedPdfDataRow*>(row.get()) != nullptr, c.pdf);
        EXPECT_EQ(dynamic_cast<ImageInstanceDataRow*>(row.get()) != nullptr, c.image);
        EXPECT_EQ(row->sop_class.IsSet(), c.sop_class != SOPClass::unknown);
        EXPECT_EQ(row->sop_class.Value(), c.sop_class);
    }
}

TEST(PatientDataSetLinks, LinkMoveAndQuery) {
    PatientDataSet data_set;
    InstanceDataRow& instance = data_set.AddInstanceChain(SOPClass::RawData);
    PatientDataRow& patient = *data_set.FirstPatient();
    StudyDataRow& study = *data_set.FirstStudy();
    SeriesDataRow& series = *data_set.FirstSeries();
    EquipmentDataRow& equipment = *data_set.FirstEquipment();
    EXPECT_EQ(data_set.FirstStudyOf(patient), &study);
    EXPECT_EQ(data_set.PatientOf(study), &patient);
    EXPECT_EQ(data_set.FirstSeriesOf(study), &series);
    EXPECT_EQ(data_set.FirstInstanceOf(series), &instance);
    EXPECT_EQ(data_set.SeriesOf(instance), &series);
    EXPECT_EQ(data_set.EquipmentOf(series), &equipment);
    EXPECT_EQ(data_set.SeriesOf(equipment), &series);

    // A second study keeps link order; moving the first study to another patient updates both sides.
    StudyDataRow& second = data_set.AddStudy();
    ASSERT_TRUE(data_set.Link(patient, second));
    EXPECT_EQ(data_set.StudiesOf(patient), (std::vector<StudyDataRow*>{&study, &second}));
    PatientDataRow& other_patient = data_set.AddPatient();
    ASSERT_TRUE(data_set.Link(other_patient, study));
    EXPECT_EQ(data_set.StudiesOf(patient), (std::vector<StudyDataRow*>{&second}));
    EXPECT_EQ(data_set.PatientOf(study), &other_patient);

    // Pairing the series with new equipment releases the old equipment.
    EquipmentDataRow& new_equipment = data_set.AddEquipment();
    ASSERT_TRUE(data_set.Link(series, new_equipment));
    EXPECT_EQ(data_set.EquipmentOf(series), &new_equipment);
    EXPECT_EQ(data_set.SeriesOf(equipment), nullptr);

    // Rows of another data set are refused.
    PatientDataSet foreign;
    EXPECT_FALSE(data_set.Link(foreign.AddPatient(), study));
    EXPECT_EQ(data_set.PatientOf(study), &other_patient);
    EXPECT_EQ(data_set.FirstStudyOf(foreign.AddPatient()), nullptr);

    // Moving the data set keeps rows and links.
    const PatientDataSet moved = std::move(data_set);
    EXPECT_EQ(moved.FirstInstanceOf(series), &instance);
}

TEST(CustomData, ByteWiseOrderAndEmptiness) {
    CustomDataStore store;
    store.SetText("b", "text");
    store.SetText("\xC3\xA9", "high byte sorts last");
    store.SetText("B", "upper case sorts first");
    store.SetBytes("a", ByteBuffer::CopyOf(std::vector<std::uint8_t>{1, 2}));
    std::string keys;
    for (const auto& [key, value] : store) keys += key + ",";
    EXPECT_EQ(keys, "B,a,b,\xC3\xA9,");

    const std::vector<std::uint8_t> empty_payload;
    store.SetBytes("empty", ByteBuffer::Borrow(empty_payload.data(), 0));
    store.SetBytes("none", ByteBuffer());
    store.SetText("blank", "");
    for (const char* key : {"empty", "none", "blank", "missing"}) {
        SCOPED_TRACE(key);
        EXPECT_TRUE(store.IsValueEmpty(key));
    }
    EXPECT_FALSE(store.IsValueEmpty("a"));
    EXPECT_EQ(store.ValueLength("b"), 4u);

    std::string text;
    ASSERT_TRUE(store.GetText("a", text)) << "in-memory bytes read as text";
    EXPECT_EQ(text, std::string("\x01\x02", 2));
    EXPECT_EQ(store.GetBytes("b"), nullptr);
    store.SetText("a", "replaced");
    EXPECT_EQ(store.GetBytes("a"), nullptr);
    EXPECT_TRUE(store.Erase("a"));
    EXPECT_FALSE(store.Erase("a"));
    EXPECT_FALSE(store.Contains("a"));
}

TEST(ExtraElements, OnePerTagInTagOrder) {
    ExtraElementList list;
    EXPECT_TRUE(list.SetText({0x0010, 0x2160}, "SH", "first"));
    EXPECT_TRUE(list.SetBytes({0x0009, 0x1001}, "OB", {1, 2, 3}));
    EXPECT_TRUE(list.SetText({0x0010, 0x2160}, "SH", "second"));
    EXPECT_FALSE(list.SetText({0x0010, 0x1000}, "sh", "bad VR"));
    EXPECT_FALSE(list.SetText({0x0010, 0x1000}, "LOX", "bad VR"));
    ASSERT_EQ(list.Size(), 2u);
    EXPECT_EQ(list.begin()->first, (ElementTag{0x0009, 0x1001}));
    const ExtraElement* element = list.Find({0x0010, 0x2160});
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(std::get<std::string>(element->value), "second");
    EXPECT_FALSE(list.Find({0x0009, 0x1001})->IsText());
}

}  // namespace
