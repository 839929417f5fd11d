#include "cmdline/OptionList.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace LibCommon {

namespace {

constexpr unsigned kLineLength = 80;
constexpr unsigned kMinDescriptionLength = 40;

std::string Folded(const std::string& text) {
    std::string folded = text;
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return folded;
}

}  // namespace

boost::program_options::options_description MakeOptionList(const std::vector<OptionGroup>& groups) {
    std::vector<std::pair<std::string, OptionDescription>> keyed;
    for (const OptionGroup& group : groups) {
        for (const OptionDescription& option : group) keyed.emplace_back(Folded(option->format_name()), option);
    }
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });

    boost::program_options::options_description list("Options", kLineLength, kMinDescriptionLength);
    for (const auto& entry : keyed) list.add(entry.second);
    return list;
}

}  // namespace LibCommon
