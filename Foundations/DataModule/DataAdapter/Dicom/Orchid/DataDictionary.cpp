#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionary.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr DictionaryEntry kRows[] = {
#define DICAPSULE_DICTIONARY_ROWS
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionaryTable.inc"
#undef DICAPSULE_DICTIONARY_ROWS
};
constexpr std::size_t kRowCount = std::size(kRows);

// Sorted views of the one table (enumeration values ordered by tag and by keyword), written by
// the same generator run, so lookups are binary searches over constant data.
constexpr std::uint32_t kTagOrder[] = {
#define DICAPSULE_DICTIONARY_TAG_ORDER
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionaryTable.inc"
#undef DICAPSULE_DICTIONARY_TAG_ORDER
};
constexpr std::uint32_t kKeywordOrder[] = {
#define DICAPSULE_DICTIONARY_KEYWORD_ORDER
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DataDictionaryTable.inc"
#undef DICAPSULE_DICTIONARY_KEYWORD_ORDER
};
static_assert(std::size(kTagOrder) == kRowCount);

constexpr bool IndexesAreSorted() {
    for (std::size_t i = 1; i < std::size(kTagOrder); ++i) {
        if (kRows[kTagOrder[i - 1]].tag >= kRows[kTagOrder[i]].tag) return false;
    }
    for (std::size_t i = 1; i < std::size(kKeywordOrder); ++i) {
        if (kRows[kKeywordOrder[i - 1]].keyword >= kRows[kKeywordOrder[i]].keyword) return false;
    }
    return true;
}
static_assert(IndexesAreSorted(), "tags and keywords must be unique and the generated orders sorted");

constexpr bool RowsAreInValueOrder() {
    for (std::size_t i = 0; i < kRowCount; ++i) {
        if (kRows[i].value != i) return false;
    }
    return true;
}
static_assert(RowsAreInValueOrder(), "dictionary rows must be indexed by their enumeration value");
static_assert(kRows[4346].tag == Tag{0xFFFE, 0xE000} && kRows[4349].tag == Tag{0x0009, 0x0000} &&
              kRows[4350].tag == Tag{0x0009, 0x0011});

constexpr std::uint16_t kOverlayGroupBase = 0x6000;

// The tag numbers in tag order, beside kTagOrder: a lookup searches one contiguous array.
constexpr auto kSortedTagNumbers = [] {
    std::array<std::uint32_t, std::size(kTagOrder)> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = kRows[kTagOrder[i]].tag.Number();
    return numbers;
}();

const DictionaryEntry* FindExact(Tag tag) noexcept {
    const std::uint32_t number = tag.Number();
    const auto it = std::lower_bound(kSortedTagNumbers.begin(), kSortedTagNumbers.end(), number);
    if (it == kSortedTagNumbers.end() || *it != number) return nullptr;
    return &kRows[kTagOrder[it - kSortedTagNumbers.begin()]];
}

// Overlay attributes repeat in the even groups 6000..60FE; the table holds them once, under 6000.
bool IsRepeatedOverlayGroup(std::uint16_t group) noexcept {
    return group > kOverlayGroupBase && group <= 0x60FE && (group % 2) == 0;
}

}  // namespace

std::uint32_t DictionaryEntryCount() noexcept { return static_cast<std::uint32_t>(kRowCount); }

const DictionaryEntry& EntryByValue(std::uint32_t value) noexcept {
    return value < kRowCount ? kRows[value] : kRows[0];
}

const DictionaryEntry& EntryByTag(Tag tag) noexcept {
    if (const DictionaryEntry* entry = FindExact(tag)) return *entry;
    if (IsRepeatedOverlayGroup(tag.group)) {
        if (const DictionaryEntry* entry = FindExact(Tag{kOverlayGroupBase, tag.element})) return *entry;
    }
    return kRows[0];
}

const DictionaryEntry& EntryByKeyword(std::string_view keyword) noexcept {
    if (keyword.empty()) return kRows[0];
    const auto it = std::lower_bound(std::begin(kKeywordOrder), std::end(kKeywordOrder), keyword,
                                     [](std::uint32_t value, std::string_view k) { return kRows[value].keyword < k; });
    return it != std::end(kKeywordOrder) && kRows[*it].keyword == keyword ? kRows[*it] : kRows[0];
}

ValueRepresentation TagVR(Tag tag) noexcept { return EntryByTag(tag).vr; }

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
