#include "Foundations/DataModule/Rows/EncapsulatedDocumentDataRow.h"
#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/TestMode.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"
#include "Foundations/DataModule/Values/UIDDataType.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace Lumivale::DataModule;

const date_time kStamp{2015, 5, 21, 16, 20, 55, 0};
// The root the build was configured with.
const std::string kRoot = DICAPSULE_EXPECTED_UID_ROOT;

TEST(UidComposition, ComponentsAndSkippingRules) {
    struct Case { const char* id; std::uint32_t machine; std::uint32_t process; std::uint32_t counter; const char* tail;
        const char* expected; } const cases[] = {
        {"all components", 845147831, 6676, 32, "", "1.2.3.50.845147831.20150521162055.6676.32"},
        {"no machine number", 0, 6676, 1, "", "1.2.3.50.20150521162055.6676.1"},
        {"no process id", 7, 0, 1, "", "1.2.3.50.7.20150521162055.1"},
        {"counter wrapped to 0", 7, 9, 0, "", "1.2.3.50.7.20150521162055.9"},
        {"tail replaces the rest", 7, 9, 1, "7.0.0.0", "1.2.3.50.7.0.0.0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const FixedIdentitySource identity(kStamp, c.process, c.machine);
        InstanceCounter counter(c.counter);
        UIDGenerator generator(identity, counter);
        EXPECT_EQ(generator.Generate("1.2.3", 50, c.tail), c.expected);
    }
}

TEST(UidComposition, SameSecondDiffersOnlyInTheCounter) {
    const FixedIdentitySource identity(date_time{2015, 5, 21, 16, 20, 55, 999}, 12, 34);
    InstanceCounter counter;
    UIDGenerator generator(identity, counter);
    EXPECT_EQ(generator.Generate("1.2", 10, ""), "1.2.10.34.20150521162055.12.1");
    EXPECT_EQ(generator.Generate("1.2", 10, ""), "1.2.10.34.20150521162055.12.2");
    InstanceCounter last(0xFFFFFFFFu);
    EXPECT_EQ(last.Next(), 0xFFFFFFFFu);
    EXPECT_EQ(last.Next(), 0u);
    EXPECT_EQ(last.Next(), 1u);
}

TEST(UidComposition, ProcessWideGeneratorMakesValidUidsUnderTheRoot) {
    const std::string first = GenerateUid(UidKind::Instance);
    const std::string second = GenerateUid(UidKind::Instance);
    EXPECT_TRUE(IsValidUid(first)) << first;
    EXPECT_NE(first, second);
    EXPECT_EQ(first.rfind(kRoot + ".30.", 0), 0u) << first;
    EXPECT_EQ(TestModeInstanceUid(), kRoot + ".50.845147831.20150521162055.6676.32");
}

// The CLI suite turns test mode on with an empty variable; without the variable it is off.
TEST(TestMode, OffWithoutTheVariable) {
    TestEnvironment::Unset("CONVERTIX_TESTMODE");
    EXPECT_FALSE(IsTestModeOn());
    EXPECT_FALSE(ApplyTestModeIfOn(nullptr, nullptr, nullptr));
}

TEST(TestMode, RunStampsBecomeZeroAndRawDataGetsTheFixedUid) {
    const date_time other{2020, 1, 2, 3, 4, 5, 0};
    PatientDataSet data_set;
    auto& raw = static_cast<RawDataDataRow&>(data_set.AddInstanceChain(SOPClass::RawData));
    PatientDataRow& patient = *data_set.FirstPatient();
    StudyDataRow& study = *data_set.FirstStudy();
    patient.creation_date_time.Set(kStamp);
    study.study_date_time.Set(other);
    raw.instance_creation_date_time.Set(kStamp);
    raw.sop_instance_uid.Set("1.2.3.4");

    ApplyTestModeToRows(&patient, &study, &raw, kStamp);
    EXPECT_EQ(patient.creation_date_time.Value(), ZeroDateTime());
    EXPECT_TRUE(patient.creation_date_time.IsSet());
    EXPECT_EQ(study.study_date_time.Value(), other) << "a date that is not the run's stamp stays";
    EXPECT_EQ(raw.instance_creation_date_time.Value(), ZeroDateTime());
    EXPECT_EQ(raw.sop_instance_uid.Value(), TestModeInstanceUid());

    EncapsulatedDocumentDataRow pdf;
    pdf.instance_creation_date_time.Set(kStamp);
    pdf.sop_instance_uid.Set("1.2.3.4");
    ApplyTestModeToRows(nullptr, nullptr, &pdf, kStamp);
    EXPECT_EQ(pdf.instance_creation_date_time.Value(), ZeroDateTime());
    EXPECT_EQ(pdf.sop_instance_uid.Value(), "1.2.3.4") << "only raw data instances get the fixed UID";
}

}  // namespace
