#include "app/ReferenceRecord.h"

#include "Foundations/DataModule/Common/TextUtils.h"

namespace Dicapsule {

using Lumivale::DataModule::SplitKeepingEmpty;

bool parse_reference(std::string_view text, ReferenceRecord& record) {
    const std::vector<std::string> fields = SplitKeepingEmpty(text, ':');
    if (fields.size() != 3 && fields.size() != 4) return false;
    if (fields[0].empty() || fields[1].empty() || fields[2].empty()) return false;
    record = ReferenceRecord{fields[0], fields[1], fields[2], fields.size() == 4 ? fields[3] : std::string()};
    return true;
}

std::string FormatReferences(const std::vector<ReferenceRecord>& references) {
    std::string text;
    for (const ReferenceRecord& reference : references) {
        if (!text.empty()) text += '^';
        text += reference.study_instance_uid + ':' + reference.series_instance_uid + ':' + reference.sop_instance_uid;
        if (!reference.sop_class_uid.empty()) text += ':' + reference.sop_class_uid;
    }
    return text;
}

bool ParseReferences(std::string_view text, std::vector<ReferenceRecord>& references) {
    references.clear();
    if (text.empty()) return true;
    std::vector<ReferenceRecord> parsed;
    for (const std::string& entry : SplitKeepingEmpty(text, '^')) {
        ReferenceRecord record;
        if (!parse_reference(entry, record)) return false;
        parsed.push_back(std::move(record));
    }
    references = std::move(parsed);
    return true;
}

}  // namespace Dicapsule
