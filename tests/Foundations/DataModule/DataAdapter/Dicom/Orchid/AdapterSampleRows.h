#pragma once
// Typical rows of a packed instance, shared by the adapter tests and the interoperability tool.

#include "Foundations/DataModule/Rows/PatientDataSet.h"
#include "Foundations/DataModule/Rows/RawDataDataRow.h"
#include "Foundations/DataModule/Rows/RowAttributes.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace AdapterTesting {

// The sample DICOM text of a named row attribute (every keyword has one), or "".
std::string_view SampleOf(std::string_view keyword);

// Set every named attribute of the chain's rows to its sample text; false when one is refused.
bool FillAllNamedAttributes(Lumivale::DataModule::PatientDataSet& set, Lumivale::DataModule::InstanceDataRow& instance);

// A linked chain with a raw data instance holding a few typical demographics and custom data.
Lumivale::DataModule::RawDataDataRow& AddTypicalRawDataChain(Lumivale::DataModule::PatientDataSet& set);

// The row of a kind in the instance's chain (the instance itself for RowKind::Instance).
Lumivale::DataModule::DataRow* ChainRow(const Lumivale::DataModule::PatientDataSet& set,
                                        Lumivale::DataModule::InstanceDataRow& instance,
                                        Lumivale::DataModule::RowKind kind);

// Give the instance an RGB icon of three planes, each a line stride of `stride` bytes, as the
// thumbnail builder leaves them, and ask for its top-level duplicate.
void AttachRgbIcon(Lumivale::DataModule::InstanceDataRow& instance, std::uint16_t columns, std::uint16_t rows, std::uint16_t bits,
                   std::uint32_t stride, std::vector<std::vector<std::uint8_t>> planes);

}  // namespace AdapterTesting
