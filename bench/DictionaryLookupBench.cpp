// Data dictionary lookups: by tag number (every element read) and by keyword (metadata documents).

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"

namespace {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

// Every row of the dictionary, in enumeration order (which is not tag order, so the searches
// do not run over the table in sequence).
std::vector<const DictionaryEntry*> AllEntries() {
    std::vector<const DictionaryEntry*> entries;
    for (std::uint32_t value = 1; value < DictionaryEntryCount(); ++value) {
        entries.push_back(&EntryByValue(value));
    }
    return entries;
}

// Look up each key in turn, starting over at the end, one lookup per iteration.
template <typename Key, typename Lookup>
void LookUpInTurn(benchmark::State& state, const std::vector<Key>& keys, Lookup lookup) {
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&lookup(keys[next]));
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

constexpr auto kByTag = [](Tag tag) -> const DictionaryEntry& { return EntryByTag(tag); };
constexpr auto kByKeyword = [](const std::string& keyword) -> const DictionaryEntry& { return EntryByKeyword(keyword); };

void BM_EntryByTag_Known(benchmark::State& state) {
    std::vector<Tag> tags;
    for (const DictionaryEntry* entry : AllEntries()) tags.push_back(entry->tag);
    LookUpInTurn(state, tags, kByTag);
}
BENCHMARK(BM_EntryByTag_Known);

// Private and unlisted tags miss the table: the reader asks for them in every vendor file.
void BM_EntryByTag_Unknown(benchmark::State& state) {
    std::vector<Tag> tags;
    for (std::uint16_t group = 0x0011; group < 0x0100; group += 2) tags.push_back(Tag{group, 0x1010});
    LookUpInTurn(state, tags, kByTag);
}
BENCHMARK(BM_EntryByTag_Unknown);

// Overlay groups 6002..60FE fold onto the rows of group 6000.
void BM_EntryByTag_RepeatedOverlayGroup(benchmark::State& state) {
    std::uint16_t group = 0x6002;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&EntryByTag(Tag{group, 0x3000}));
        group = group == 0x60FE ? 0x6002 : static_cast<std::uint16_t>(group + 2);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EntryByTag_RepeatedOverlayGroup);

void BM_EntryByKeyword_Known(benchmark::State& state) {
    std::vector<std::string> keywords;
    for (const DictionaryEntry* entry : AllEntries()) {
        if (!entry->keyword.empty()) keywords.emplace_back(entry->keyword);
    }
    LookUpInTurn(state, keywords, kByKeyword);
}
BENCHMARK(BM_EntryByKeyword_Known);

void BM_EntryByKeyword_Unknown(benchmark::State& state) {
    const std::vector<std::string> keywords = {"PatientsName", "StudyInstanceUid", "Zzz", "A", "orchid_customdatakey"};
    LookUpInTurn(state, keywords, kByKeyword);
}
BENCHMARK(BM_EntryByKeyword_Unknown);

}  // namespace
