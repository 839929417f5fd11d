#pragma once
// A referenced instance, as given by --reference and as stored in a packed file.

#include <string>
#include <string_view>
#include <vector>

namespace Dicapsule {

struct ReferenceRecord {
    std::string study_instance_uid;   // never empty
    std::string series_instance_uid;  // never empty
    std::string sop_instance_uid;     // never empty
    std::string sop_class_uid;        // may be empty

    bool operator==(const ReferenceRecord&) const = default;
};

// "Study:Series:Instance[:Class]": split at ":", exactly 3 or 4 fields, the first three not empty.
// Returns false (leaving `record` unspecified) when the text is not of that form.
bool parse_reference(std::string_view text, ReferenceRecord& record);

// The stored text of a reference list: entries joined by "^", each "Study:Series:Instance" with
// ":Class" appended only when the class is not empty.
std::string FormatReferences(const std::vector<ReferenceRecord>& references);

// The reverse of FormatReferences: an empty text gives an empty list; false when any entry is
// malformed (then `references` is left empty).
bool ParseReferences(std::string_view text, std::vector<ReferenceRecord>& references);

}  // namespace Dicapsule
