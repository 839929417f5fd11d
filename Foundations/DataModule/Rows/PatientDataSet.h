#pragma once
// A patient data set: the tables "Patients", "Studies", "Series", "Equipments" and "Instances",
// and the relations patient -> studies, study -> series, series -> instances (one to many) and
// series <-> equipment (one to one).

#include "Foundations/DataModule/Rows/DataRelations.h"
#include "Foundations/DataModule/Rows/DataTable.h"
#include "Foundations/DataModule/Rows/EquipmentDataRow.h"
#include "Foundations/DataModule/Rows/InstanceDataRow.h"
#include "Foundations/DataModule/Rows/PatientDataRow.h"
#include "Foundations/DataModule/Rows/SeriesDataRow.h"
#include "Foundations/DataModule/Rows/StudyDataRow.h"

#include <memory>
#include <vector>

namespace Lumivale::DataModule {

// The rows of one or more patients and how they hang together. Owns every row.
class PatientDataSet {
public:
    PatientDataSet() = default;
    PatientDataSet(PatientDataSet&&) noexcept = default;
    PatientDataSet& operator=(PatientDataSet&&) noexcept = default;

    // The five tables.
    const DataTable<PatientDataRow>& Patients() const noexcept { return patients_; }
    const DataTable<StudyDataRow>& Studies() const noexcept { return studies_; }
    const DataTable<SeriesDataRow>& Series() const noexcept { return series_; }
    const DataTable<EquipmentDataRow>& Equipments() const noexcept { return equipments_; }
    const DataTable<InstanceDataRow>& Instances() const noexcept { return instances_; }

    // New empty rows, owned by the set and not yet linked.
    PatientDataRow& AddPatient();
    StudyDataRow& AddStudy();
    SeriesDataRow& AddSeries();
    EquipmentDataRow& AddEquipment();
    // A new instance row of the kind that fits the class (see CreateInstanceDataRow).
    InstanceDataRow& AddInstance(SOPClass::Enum sop_class);
    // Take ownership of an instance row made elsewhere.
    InstanceDataRow& AddInstance(std::unique_ptr<InstanceDataRow> row);
    // A patient, study, series with its equipment and one instance of the class, all linked.
    InstanceDataRow& AddInstanceChain(SOPClass::Enum sop_class);

    // Links; false (nothing linked) when either row is not in this set. A child already linked
    // elsewhere moves; a series or equipment already paired is released from its old partner.
    bool Link(PatientDataRow& patient, StudyDataRow& study);
    bool Link(StudyDataRow& study, SeriesDataRow& series);
    bool Link(SeriesDataRow& series, InstanceDataRow& instance);
    bool Link(SeriesDataRow& series, EquipmentDataRow& equipment);

    // Queries: the related rows, or nullptr / an empty list when there are none.
    std::vector<StudyDataRow*> StudiesOf(const PatientDataRow& patient) const { return patient_studies_.ChildrenOf(patient); }
    StudyDataRow* FirstStudyOf(const PatientDataRow& patient) const { return patient_studies_.FirstChildOf(patient); }
    PatientDataRow* PatientOf(const StudyDataRow& study) const { return patient_studies_.ParentOf(study); }
    std::vector<SeriesDataRow*> SeriesOf(const StudyDataRow& study) const { return study_series_.ChildrenOf(study); }
    SeriesDataRow* FirstSeriesOf(const StudyDataRow& study) const { return study_series_.FirstChildOf(study); }
    StudyDataRow* StudyOf(const SeriesDataRow& series) const { return study_series_.ParentOf(series); }
    InstanceDataRow* FirstInstanceOf(const SeriesDataRow& series) const { return series_instances_.FirstChildOf(series); }
    SeriesDataRow* SeriesOf(const InstanceDataRow& instance) const { return series_instances_.ParentOf(instance); }
    EquipmentDataRow* EquipmentOf(const SeriesDataRow& series) const { return series_equipment_.RightOf(series); }
    SeriesDataRow* SeriesOf(const EquipmentDataRow& equipment) const { return series_equipment_.LeftOf(equipment); }

    // The first row of each table, or nullptr: the single chain of a packed file.
    PatientDataRow* FirstPatient() const { return patients_.Size() ? &patients_.At(0) : nullptr; }
    StudyDataRow* FirstStudy() const { return studies_.Size() ? &studies_.At(0) : nullptr; }
    SeriesDataRow* FirstSeries() const { return series_.Size() ? &series_.At(0) : nullptr; }
    EquipmentDataRow* FirstEquipment() const { return equipments_.Size() ? &equipments_.At(0) : nullptr; }

private:
    DataTable<PatientDataRow> patients_{"Patients"};
    DataTable<StudyDataRow> studies_{"Studies"};
    DataTable<SeriesDataRow> series_{"Series"};
    DataTable<EquipmentDataRow> equipments_{"Equipments"};
    DataTable<InstanceDataRow> instances_{"Instances"};

    OneToManyRelation<PatientDataRow, StudyDataRow> patient_studies_;
    OneToManyRelation<StudyDataRow, SeriesDataRow> study_series_;
    OneToManyRelation<SeriesDataRow, InstanceDataRow> series_instances_;
    OneToOneRelation<SeriesDataRow, EquipmentDataRow> series_equipment_;
};

}  // namespace Lumivale::DataModule
