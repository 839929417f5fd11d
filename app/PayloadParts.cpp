#include "app/PayloadParts.h"

#include <algorithm>

namespace Dicapsule {

std::vector<PayloadPart> PlanParts(std::uint64_t total, std::uint64_t limit) {
    if (total <= limit) return {{0, total}};
    const std::uint64_t step = limit / kPartAlignment * kPartAlignment;
    std::vector<PayloadPart> parts;
    parts.reserve(static_cast<std::size_t>(total / step + 1));
    for (std::uint64_t offset = 0; offset < total; offset += step) parts.push_back({offset, std::min(step, total - offset)});
    return parts;
}

std::string PartFileName(const std::string& path, unsigned index) {
    if (index <= 1) return path;
    const std::string suffix = "." + std::to_string(index);
    constexpr std::size_t kExtension = 4;  // ".dcm"
    if (path.size() > kExtension) {
        std::string tail = path.substr(path.size() - kExtension);
        std::transform(tail.begin(), tail.end(), tail.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
        const char before = path[path.size() - kExtension - 1];
        if (tail == ".dcm" && before != '/' && before != '\\') {
            return path.substr(0, path.size() - kExtension) + suffix + path.substr(path.size() - kExtension);
        }
    }
    return path + suffix;
}

PartSetCheck CheckPartSet(std::vector<FoundPart>& parts) {
    std::stable_sort(parts.begin(), parts.end(),
                     [](const FoundPart& a, const FoundPart& b) { return a.facts.index < b.facts.index; });
    if (parts.empty()) return {PartSetProblem::missing, 1};
    const PartFacts& first = parts.front().facts;
    std::uint64_t expected = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const PartFacts& facts = parts[i].facts;
        if (i > 0 && facts.index == parts[i - 1].facts.index) return {PartSetProblem::duplicated, facts.index, i - 1, i};
        if (facts.index != i + 1) return {PartSetProblem::missing, static_cast<unsigned>(i + 1)};
        if (facts.count != first.count || facts.total_size != first.total_size ||
            facts.total_sha256 != first.total_sha256 || facts.index > facts.count || facts.offset != expected ||
            parts[i].length > facts.total_size - facts.offset) {
            return {PartSetProblem::inconsistent, facts.index};
        }
        expected += parts[i].length;
    }
    if (parts.size() < first.count) return {PartSetProblem::missing, static_cast<unsigned>(parts.size() + 1)};
    if (expected != first.total_size) return {PartSetProblem::inconsistent, parts.back().facts.index};
    return {};
}

}  // namespace Dicapsule
