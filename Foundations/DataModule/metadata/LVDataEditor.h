#pragma once
// Applies an edition operation to an instance row and its patient, study, series and equipment.

#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/metadata/DicomXmlDataSet.h"

#include <string>
#include <string_view>

namespace Lumivale::DataModule::DataConverterModule {

// Writes what an edition names into the rows: attributes of the row attribute table into their
// members, Specific Character Set (Instance scope) into the instance's character set, any other
// valid attribute into the scope's row as an extra element (sequences as encoded items, see
// SequenceItemEncoding.h).
class LVDataEditor {
public:
    // Apply the text of one "operation" element. The instance must be a raw-data, encapsulated
    // PDF or image instance linked to a series with its study, patient and equipment in the set;
    // otherwise nothing is read and false is returned. False on the first attribute that cannot be
    // applied (rows keep what was applied before it); the reason is in error() and the debug trace.
    bool ApplyEdition(PatientDataSet& set, InstanceDataRow& instance, std::string_view edition_text);
    // Apply an "operation" element of a parsed document, read in place (same rules as ApplyEdition).
    bool ApplyOperation(PatientDataSet& set, InstanceDataRow& instance, const pugi::xml_node& operation);
    // Apply an operation already read.
    bool Apply(PatientDataSet& set, InstanceDataRow& instance, const DicomXmlDataSet& edition);
    // Why the last call failed ("" after success).
    const std::string& error() const noexcept { return error_; }

private:
    bool Fail(std::string reason);
    bool ApplyScope(DataRow& row, RowKind kind, InstanceDataRow& instance, const DicomXmlItem& content);
    bool ApplyElement(DataRow& row, RowKind kind, InstanceDataRow& instance, const DicomXmlElement& element);
    bool ApplySequence(DataRow& row, RowKind kind, const DicomXmlSequenceElement& sequence);

    std::string error_;
};

}  // namespace Lumivale::DataModule::DataConverterModule
