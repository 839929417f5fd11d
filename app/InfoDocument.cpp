#include "app/InfoDocument.h"

#include "app/XmlText.h"

#include <pugixml.hpp>

namespace Dicapsule {

void WriteInfoDocument(std::ostream& out, const std::string& original_name, const std::string& command_line,
                       const std::vector<ReferenceRecord>& references) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    declaration.append_attribute("standalone") = "yes";

    pugi::xml_node orchid = document.append_child("orchid");
    orchid.append_attribute("type") = "Dicapsule";
    pugi::xml_node parameters = orchid.append_child("parameters");
    parameters.append_attribute("originalname") = XmlSafeText(original_name).c_str();
    parameters.append_attribute("commandline") = XmlSafeText(command_line).c_str();

    if (!references.empty()) {
        pugi::xml_node list = orchid.append_child("references");
        for (const ReferenceRecord& reference : references) {
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
