#pragma once
// The named attributes and extra elements of the data rows as elements of a data set, both ways,
// with the text of every attribute encoded in the instance's Specific Character Set.

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"

#include <span>

namespace Lumivale::DataModule::DataAdapterModule {

// An attribute the instance must carry even when the rows hold no value for it (written empty).
struct RequiredAttribute {
    DicomCodecModule::Tag tag;
    DicomCodecModule::ValueRepresentation vr;
};

// Insert the set members of a row, each through the row attribute table. False (with a trace line
// naming the tag) when a value cannot be encoded in charset.
bool InsertRowAttributes(DicomCodecModule::DicomDataSet& dataSet, RowKind kind, const DataRow& row,
                         const MultiCharSetDataType& charset);
// Insert a row's extra elements: text through charset where it applies, raw bytes as they are.
// False when a text cannot be written in its VR.
bool InsertExtraElements(DicomCodecModule::DicomDataSet& dataSet, const ExtraElementList& extras,
                         const MultiCharSetDataType& charset);
// Insert an empty element for each required attribute the data set lacks.
void InsertMissingRequiredAttributes(DicomCodecModule::DicomDataSet& dataSet);

// Set the members of a row from the data set's elements (decoded through charset). Values that do
// not decode or do not fit a member are traced and left out.
void ReadRowAttributes(const DicomCodecModule::DicomDataSet& dataSet, RowKind kind, DataRow& row,
                       const MultiCharSetDataType& charset);
// True when some row attribute table, or the program itself, handles the element's tag.
bool IsHandledTag(DicomCodecModule::Tag tag) noexcept;
// Copy the top-level elements no row member holds into extras (text VRs decoded, others as bytes
// of at most maxBytes); the meta group, group lengths, private groups, sequences and pixel data are left out.
void ReadExtraElements(const DicomCodecModule::DicomDataSet& dataSet, const MultiCharSetDataType& charset,
                       std::uint64_t maxBytes, ExtraElementList& extras);

}  // namespace Lumivale::DataModule::DataAdapterModule
