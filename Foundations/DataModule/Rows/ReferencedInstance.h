#pragma once
// An instance that another instance refers to (an item of the Referenced Instance Sequence).

#include <string>

namespace Lumivale::DataModule {

struct ReferencedInstance {
    std::string sop_class_uid;     // (0008,1150) Referenced SOP Class UID; empty when not known
    std::string sop_instance_uid;  // (0008,1155) Referenced SOP Instance UID
};

}  // namespace Lumivale::DataModule
