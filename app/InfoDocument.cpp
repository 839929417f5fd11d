#include "app/InfoDocument.h"

#include "app/XmlText.h"

#include <pugixml.hpp>

#include <cstdint>
#include <string>

namespace Dicapsule {

void WriteInfoDocument(std::ostream& out, const PayloadFacts& facts) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    declaration.append_attribute("standalone") = "yes";

    pugi::xml_node orchid = document.append_child("orchid");
    orchid.append_attribute("type") = "Dicapsule";
    pugi::xml_node parameters = orchid.append_child("parameters");
    parameters.append_attribute("originalname") = XmlSafeText(facts.name).c_str();
    parameters.append_attribute("commandline") = XmlSafeText(facts.command_line).c_str();
    // A part tells of the whole payload it belongs to.
    const std::uint64_t size = facts.part ? facts.part->total_size : facts.size;
    const std::string& sha256 = facts.part ? facts.part->total_sha256 : facts.sha256;
    parameters.append_attribute("size") = std::to_string(size).c_str();
    if (!sha256.empty()) parameters.append_attribute("sha256") = XmlSafeText(sha256).c_str();
    if (facts.part) {
        parameters.append_attribute("part") = std::to_string(facts.part->index).c_str();
        parameters.append_attribute("parts") = std::to_string(facts.part->count).c_str();
    }

    if (!facts.references.empty()) {
        pugi::xml_node list = orchid.append_child("references");
        for (const ReferenceRecord& reference : facts.references) {
            pugi::xml_node node = list.append_child("reference");
            node.append_attribute("studyinstanceuid") = XmlSafeText(reference.study_instance_uid).c_str();
            node.append_attribute("seriesinstanceuid") = XmlSafeText(reference.series_instance_uid).c_str();
            node.append_attribute("sopinstanceuid") = XmlSafeText(reference.sop_instance_uid).c_str();
            if (!reference.sop_class_uid.empty()) {
                node.append_attribute("sopclassuid") = XmlSafeText(reference.sop_class_uid).c_str();
            }
        }
    }
    document.save(out, "\t", pugi::format_default, pugi::encoding_utf8);
}

}  // namespace Dicapsule
