#include "app/InfoJson.h"

#include <nlohmann/json.hpp>

namespace Dicapsule {

void WriteInfoJson(std::ostream& out, const PayloadFacts& facts) {
    // Keys stay in the order written here.
    using Json = nlohmann::ordered_json;
    Json references = Json::array();
    for (const ReferenceRecord& reference : facts.references) {
        Json entry = {{"studyinstanceuid", reference.study_instance_uid},
                      {"seriesinstanceuid", reference.series_instance_uid},
                      {"sopinstanceuid", reference.sop_instance_uid}};
        if (!reference.sop_class_uid.empty()) entry["sopclassuid"] = reference.sop_class_uid;
        references.push_back(std::move(entry));
    }
    const PackedInstance& instance = facts.instance;
    // A part tells of the whole payload it belongs to.
    Json object = {{"originalname", facts.name},
                   {"commandline", facts.command_line},
                   {"size", facts.part ? facts.part->total_size : facts.size}};
    const std::string& sha256 = facts.part ? facts.part->total_sha256 : facts.sha256;
    if (!sha256.empty()) object["sha256"] = sha256;
    if (facts.part) {
        object["part"] = facts.part->index;
        object["parts"] = facts.part->count;
    }
    object["references"] = std::move(references);
    object["instance"] = {{"SOPClassUID", instance.sop_class_uid},
                          {"SOPInstanceUID", instance.sop_instance_uid},
                          {"StudyInstanceUID", instance.study_instance_uid},
                          {"SeriesInstanceUID", instance.series_instance_uid},
                          {"PatientID", instance.patient_id},
                          {"PatientName", instance.patient_name},
                          {"TransferSyntaxUID", instance.transfer_syntax_uid}};
    out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace Dicapsule
