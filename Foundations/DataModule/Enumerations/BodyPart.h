#pragma once
// Body Part Examined (0018,0015) defined terms: the common anatomic regions.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct BodyPart {
    enum Enum : std::uint32_t {
        unknown = 0, ABDOMEN, ANKLE, ARM, BREAST, CHEST, CLAVICLE, COCCYX, CSPINE, ELBOW, EXTREMITY, FOOT, HAND,
        HEAD, HEART, HIP, JAW, KNEE, LEG, LSPINE, NECK, PELVIS, SHOULDER, SKULL, SSPINE, TMJ, TSPINE, WHOLEBODY,
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = WHOLEBODY + 1;
};

// Term table of BodyPart (row i is member i).
template <>
struct CodedStringTraits<BodyPart::Enum> : TableCodedStringTraits<BodyPart::Enum> {
    static std::span<const CodedTerm> Table();
};

// The Body Part Examined attribute value.
using BodyPartDataType = CodedStringDataType<BodyPart::Enum>;

}  // namespace Lumivale::DataModule
