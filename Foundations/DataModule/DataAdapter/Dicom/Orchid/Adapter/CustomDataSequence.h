#pragma once
// The custom data store in a file: the private sequence (0009,11A0), one item per key in key
// order, each item holding the private creator, Key (LO), Length (UL, the value's true length)
// and Value (UN, padded to even). A value that is a file region is written from its file without
// being loaded, and a large value read back stays in the file it was read from.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/Rows/CustomDataStore.h"

#include <cstdint>
#include <set>
#include <string>

namespace Lumivale::DataModule::DataAdapterModule {

// The largest value length a 32-bit DICOM length field can carry once padded to even.
inline constexpr std::uint64_t kMaxDicomValueLength = 0xFFFFFFFEull;

// How the values of the sequence are read.
struct CustomDataReadRules {
    // Values longer than this stay in the file as a file region; shorter ones are loaded.
    std::uint64_t loadAtMost = 64 * 1024;
    // Keys whose values the caller does not need: they stay in the file whatever their length.
    std::set<std::string, std::less<>> unwantedKeys;
};

// Put the store into dataSet as the custom data sequence (nothing when the store is empty), with
// the private creator at top level. False, with dataSet unchanged, when a value cannot be had
// (a file region that cannot be opened or is shorter than stated) or when a value, an item or the
// sequence would not fit a 32-bit DICOM length.
bool InsertCustomData(DicomCodecModule::DicomDataSet& dataSet, const CustomDataStore& store);

// Fill store from the custom data sequence of dataSet, found through its private creator; items
// end at the first empty key. False when the data set has no custom data sequence.
bool ReadCustomData(const DicomCodecModule::DicomDataSet& dataSet, const CustomDataReadRules& rules,
                    CustomDataStore& store);

// The private creator element (0009,0011) "IvraDentalPrivate".
std::unique_ptr<DicomCodecModule::DicomDataSetElement> MakePrivateCreatorElement();

}  // namespace Lumivale::DataModule::DataAdapterModule
