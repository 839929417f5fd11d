#include "Foundations/DataModule/Enumerations/BodyPart.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

constexpr std::array<CodedTerm, BodyPart::count> kBodyPartTerms = {{
    {"", "Unknown Body Part"},
    {"ABDOMEN", "Abdomen"},
    {"ANKLE", "Ankle joint"},
    {"ARM", "Arm"},
    {"BREAST", "Breast"},
    {"CHEST", "Chest"},
    {"CLAVICLE", "Clavicle"},
    {"COCCYX", "Coccyx"},
    {"CSPINE", "Cervical spine"},
    {"ELBOW", "Elbow"},
    {"EXTREMITY", "Extremity"},
    {"FOOT", "Foot"},
    {"HAND", "Hand"},
    {"HEAD", "Head"},
    {"HEART", "Heart"},
    {"HIP", "Hip"},
    {"JAW", "Jaw region"},
    {"KNEE", "Knee"},
    {"LEG", "Leg"},
    {"LSPINE", "Lumbar spine"},
    {"NECK", "Neck"},
    {"PELVIS", "Pelvis"},
    {"SHOULDER", "Shoulder"},
    {"SKULL", "Skull"},
    {"SSPINE", "Sacrum"},
    {"TMJ", "Temporomandibular joint"},
    {"TSPINE", "Thoracic spine"},
    {"WHOLEBODY", "Entire body"},
}};

}  // namespace

std::span<const CodedTerm> CodedStringTraits<BodyPart::Enum>::Table() { return kBodyPartTerms; }

}  // namespace Lumivale::DataModule
