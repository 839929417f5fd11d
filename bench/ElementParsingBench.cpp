// Element parsing: a data set of a few hundred elements, with nested sequences, read back from
// memory in each encoding and from a file through ReadDicomFile.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetFillCallback.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomMemoryDataStream.h"

namespace {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

constexpr std::size_t kTopLevelElements = 300;
constexpr std::size_t kSequences = 4;
constexpr std::size_t kItemsPerSequence = 3;
constexpr std::size_t kElementsPerItem = 10;

std::vector<std::uint8_t> Text(std::string_view text, std::uint8_t pad) {
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    if (bytes.size() % 2 != 0) bytes.push_back(pad);
    return bytes;
}

// A plausible value of the VR, or no value for the VRs the sample leaves out.
bool SampleValue(ValueRepresentation vr, std::vector<std::uint8_t>& out) {
    switch (vr) {
        case VR::AE: case VR::CS: case VR::LO: case VR::SH: case VR::LT: case VR::ST:
            out = Text("SAMPLE VALUE", ' '); return true;
        case VR::PN: out = Text("Doe^Jane^^Dr", ' '); return true;
        case VR::DA: out = Text("20240229", ' '); return true;
        case VR::TM: out = Text("235959.123456", ' '); return true;
        case VR::DT: out = Text("20240229235959", ' '); return true;
        case VR::DS: out = Text("-12.5\\3.25", ' '); return true;
        case VR::IS: out = Text("1024", ' '); return true;
        case VR::AS: out = Text("042Y", ' '); return true;
        case VR::UI: out = Text("1.2.826.0.1.3680043.2.1125.1", '\0'); return true;
        case VR::US: case VR::SS: out = {0x34, 0x12}; return true;
        case VR::UL: case VR::SL: case VR::FL: case VR::AT: out = {0x78, 0x56, 0x34, 0x12}; return true;
        case VR::FD: out.assign(8, 0x3F); return true;
        default: return false;
    }
}

// Standard dictionary rows with a sample value from group 0008 on, skipping group lengths and
// the repeating groups.
std::vector<const DictionaryEntry*> ElementRows(std::size_t count, std::uint32_t firstValue) {
    std::vector<const DictionaryEntry*> rows;
    std::vector<std::uint8_t> ignored;
    for (std::uint32_t value = firstValue; value < DictionaryEntryCount() && rows.size() < count; ++value) {
        const DictionaryEntry& row = EntryByValue(value);
        const std::uint16_t group = row.tag.group;
        if (!row.standard || group < 0x0008 || row.tag.element == 0 || group >= 0x5000) continue;
        if (SampleValue(row.vr, ignored)) rows.push_back(&row);
    }
    return rows;
}

void InsertElements(DicomDataSet& set, const std::vector<const DictionaryEntry*>& rows) {
    for (const DictionaryEntry* row : rows) {
        std::vector<std::uint8_t> bytes;
        SampleValue(row->vr, bytes);
        set.Insert(std::make_unique<DicomDataSetElement>(row->tag, row->vr, std::move(bytes)));
    }
}

DicomDataSet SampleDataSet() {
    DicomDataSet set;
    InsertElements(set, ElementRows(kTopLevelElements, 1));
    const std::vector<const DictionaryEntry*> itemRows = ElementRows(kElementsPerItem, 2000);
    std::size_t added = 0;
    for (std::uint32_t value = 1; value < DictionaryEntryCount() && added < kSequences; ++value) {
        const DictionaryEntry& row = EntryByValue(value);
        if (row.vr != VR::SQ || !row.standard || set.Find(row.tag) != nullptr) continue;
        auto sequence = std::make_unique<DicomDataSetSequenceElement>(row.tag);
        for (std::size_t i = 0; i < kItemsPerSequence; ++i) InsertElements(sequence->AppendItem(), itemRows);
        set.Insert(std::move(sequence));
        ++added;
    }
    return set;
}

// The sample preceded by a file meta group, as in a Part 10 file.
DicomDataSet SampleFile() {
    DicomDataSet set = SampleDataSet();
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0000}, VR::UL, std::vector<std::uint8_t>(4, 0)));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0001}, VR::OB, std::vector<std::uint8_t>{0, 1}));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0002}, VR::UI, Text("1.2.840.10008.5.1.4.1.1.66", '\0')));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0003}, VR::UI, Text("1.2.826.0.1.3680043.2.1125.2", '\0')));
    set.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0010}, VR::UI, Text("1.2.840.10008.1.2.1", '\0')));
    return set;
}

std::size_t ElementCount() { return kTopLevelElements + kSequences * (1 + kItemsPerSequence * kElementsPerItem); }

std::vector<std::uint8_t> Encoded(StreamEncoding encoding) {
    DicomMemoryDataStream sink;
    sink.SetEncoding(encoding);
    sink.WriteDataSet(SampleDataSet());
    return sink.Bytes();
}

// The stream copies its source bytes on construction; that copy is part of each iteration,
// as it is of every read from memory.
void BM_ReadDataSetFromMemory(benchmark::State& state) {
    const auto encoding = static_cast<StreamEncoding>(state.range(0));
    const std::vector<std::uint8_t> bytes = Encoded(encoding);
    for (auto _ : state) {
        DicomMemoryDataStream stream(bytes);
        stream.SetEncoding(encoding);
        DicomDataSet set;
        DicomDataSetFillCallback fill(set);
        if (!stream.ReadElements(fill)) state.SkipWithError("the sample data set did not read back");
        benchmark::DoNotOptimize(set.Count());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ElementCount()));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(BM_ReadDataSetFromMemory)
    ->ArgName("encoding")
    ->Arg(static_cast<int>(StreamEncoding::ImplicitLittleEndian))
    ->Arg(static_cast<int>(StreamEncoding::ExplicitLittleEndian))
    ->Arg(static_cast<int>(StreamEncoding::ExplicitBigEndian));

// The whole file path: open, preamble and meta group, data set, close (page cache warm).
void BM_ReadDicomFile(benchmark::State& state) {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("dicapsule-microbench-" + std::to_string(getpid()) + ".dcm");
    if (!WriteDicomFile(path, SampleFile())) {
        state.SkipWithError("cannot write the sample file");
        return;
    }
    for (auto _ : state) {
        DicomDataSet set;
        if (!ReadDicomFile(path, set)) state.SkipWithError("the sample file did not read back");
        benchmark::DoNotOptimize(set.Count());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ElementCount()));
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}
BENCHMARK(BM_ReadDicomFile);

}  // namespace
