#pragma once
// The Modality (0008,0060) defined terms.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct Modality {
    enum Enum : std::uint32_t {
        unknown = 0, AR, ASMT, AU, BDUS, BI, BMD, CR, CT, CTPROTOCOL, DG, DOC, DX, ECG, EPS, ES, FID, GM, HC, HD,
        IO, IOL, IVOCT, IVUS, KER, KO, LEN, LS, MG, MR, M3D, NM, OAM, OCT, OP, OPM, OPT, OPTBSV, OPTENF, OPV, OSS,
        OT, PLAN, PR, PT, PX, REG, RESP, RF, RG, RTDOSE, RTIMAGE, RTPLAN, RTRECORD, RTSTRUCT, RWV, SEG, SM, SMR,
        SR, SRF, STAIN, TG, US, VA, XA, XC,
        // Retired terms.
        AS, CD, CF, CP, CS, DD, DF, DM, DS, EC, FA, FS, LP, MA, MS, OPR, ST, VF,
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = VF + 1;
};

// Term table of Modality (row i is member i).
template <>
struct CodedStringTraits<Modality::Enum> : TableCodedStringTraits<Modality::Enum> {
    static std::span<const CodedTerm> Table();
};

// The Modality attribute value.
using ModalityDataType = CodedStringDataType<Modality::Enum>;

}  // namespace Lumivale::DataModule
