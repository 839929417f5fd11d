#include "Foundations/DataModule/Rows/PatientDataSet.h"

#include "Foundations/DataModule/Rows/InstanceDataRowFactory.h"

namespace Lumivale::DataModule {

PatientDataRow& PatientDataSet::AddPatient() { return patients_.Add(std::make_unique<PatientDataRow>()); }

StudyDataRow& PatientDataSet::AddStudy() { return studies_.Add(std::make_unique<StudyDataRow>()); }

SeriesDataRow& PatientDataSet::AddSeries() { return series_.Add(std::make_unique<SeriesDataRow>()); }

EquipmentDataRow& PatientDataSet::AddEquipment() { return equipments_.Add(std::make_unique<EquipmentDataRow>()); }

InstanceDataRow& PatientDataSet::AddInstance(SOPClass::Enum sop_class) {
    return instances_.Add(CreateInstanceDataRow(sop_class));
}

InstanceDataRow& PatientDataSet::AddInstance(std::unique_ptr<InstanceDataRow> row) {
    return instances_.Add(std::move(row));
}

InstanceDataRow& PatientDataSet::AddInstanceChain(SOPClass::Enum sop_class) {
    PatientDataRow& patient = AddPatient();
    StudyDataRow& study = AddStudy();
    SeriesDataRow& series = AddSeries();
    EquipmentDataRow& equipment = AddEquipment();
    InstanceDataRow& instance = AddInstance(sop_class);
    Link(patient, study);
    Link(study, series);
    Link(series, equipment);
    Link(series, instance);
    return instance;
}

bool PatientDataSet::Link(PatientDataRow& patient, StudyDataRow& study) {
    if (!patients_.Contains(patient) || !studies_.Contains(study)) return false;
    patient_studies_.Link(patient, study);
    return true;
}

bool PatientDataSet::Link(StudyDataRow& study, SeriesDataRow& series) {
    if (!studies_.Contains(study) || !series_.Contains(series)) return false;
    study_series_.Link(study, series);
    return true;
}

bool PatientDataSet::Link(SeriesDataRow& series, InstanceDataRow& instance) {
    if (!series_.Contains(series) || !instances_.Contains(instance)) return false;
    series_instances_.Link(series, instance);
    return true;
}

bool PatientDataSet::Link(SeriesDataRow& series, EquipmentDataRow& equipment) {
    if (!series_.Contains(series) || !equipments_.Contains(equipment)) return false;
    series_equipment_.Link(series, equipment);
    return true;
}

}  // namespace Lumivale::DataModule
