#pragma once
// Transfer syntaxes; the term of a member is its UID.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct TransferSyntax {
    enum Enum : std::uint32_t {
        unknown = 0,
        ImplicitVRLittleEndian = 1,            // 1.2.840.10008.1.2
        ExplicitVRLittleEndian = 2,            // 1.2.840.10008.1.2.1, what the file controllers write
        DeflatedExplicitVRLittleEndian = 3,    // 1.2.840.10008.1.2.1.99
        ExplicitVRBigEndian = 4,               // 1.2.840.10008.1.2.2
        JPEGBaseline = 5,                      // 1.2.840.10008.1.2.4.50
        JPEGExtended = 6,                      // .51
        JPEGExtended35 = 7,                    // .52
        JPEGSpectralSelection68 = 8,           // .53
        JPEGSpectralSelection79 = 9,           // .54
        JPEGFullProgression1012 = 10,          // .55 (.56 has no member of its own)
        JPEGLossless = 11,                     // .57
        JPEGLossless15 = 12,                   // .58
        JPEGExtendedHierarchical1618 = 13,     // .59
        JPEGExtendedHierarchical1719 = 14,     // .60
        JPEGSpectralHierarchical2022 = 15,     // .61
        JPEGSpectralHierarchical2123 = 16,     // .62
        JPEGFullProgressionHierarchical2426 = 17,  // .63
        JPEGFullProgressionHierarchical2527 = 18,  // .64
        JPEGLosslessHierarchical28 = 19,       // .65
        JPEGLosslessHierarchical29 = 20,       // .66
        JPEGLosslessSV1 = 21,                  // .70
        JPEGLSLossless = 22,                   // .80
        JPEGLSNearLossless = 23,               // .81
        JPEG2000Lossless = 24,                 // .90
        JPEG2000 = 25,                         // .91
        JPEG2000MCLossless = 26,               // .92
        JPEG2000MC = 27,                       // .93
        JPIPReferenced = 28,                   // .94
        JPIPReferencedDeflate = 29,            // .95
        MPEG2MainProfileMainLevel = 30,        // .100
        MPEG2MainProfileHighLevel = 31,        // .101
        MPEG4HighProfileLevel41 = 32,          // .102
        MPEG4BDCompatibleHighProfileLevel41 = 33,  // .103
        MPEG4HighProfileLevel422D = 34,        // .104
        MPEG4HighProfileLevel423D = 35,        // .105
        MPEG4StereoHighProfileLevel42 = 36,    // .106
        RLELossless = 37,                      // 1.2.840.10008.1.2.5
        RFC2557MIMEEncapsulation = 38,         // 1.2.840.10008.1.2.6.1
        XMLEncoding = 39,                      // 1.2.840.10008.1.2.6.2
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = XMLEncoding + 1;
};

// UID table of TransferSyntax (row i is member i).
template <>
struct CodedStringTraits<TransferSyntax::Enum> : TableCodedStringTraits<TransferSyntax::Enum> {
    static std::span<const CodedTerm> Table();
};

// A Transfer Syntax UID value.
using TransferSyntaxDataType = CodedStringDataType<TransferSyntax::Enum>;

}  // namespace Lumivale::DataModule
