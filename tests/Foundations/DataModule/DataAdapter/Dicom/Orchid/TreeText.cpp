#include "TreeText.h"

#include <cstring>

#include "Portability/Misc/DebugTrace.h"

namespace DicomTestTree {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

namespace {

std::string ValueText(const DicomDataSetElement& node) {
    std::vector<std::uint8_t> bytes;
    const auto* pixels = dynamic_cast<const DicomDataSetFrameContainerElement*>(&node);
    const DicomValue& value = pixels && !pixels->encapsulated ? pixels->NativeValue() : node.value;
    if (!value.Load(bytes)) return "<unreadable>";
    const VR vr = node.vr;
    if (VRIsCharacterData(vr)) {
        std::string text(bytes.begin(), bytes.end());
        while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
        return text;
    }
    std::string out;
    const auto number = [&](std::size_t at) -> std::string {
        switch (vr) {
            case VR::US: case VR::XS: case VR::SW: { std::uint16_t v; std::memcpy(&v, &bytes[at], 2); return std::to_string(v); }
            case VR::SS: { std::int16_t v; std::memcpy(&v, &bytes[at], 2); return std::to_string(v); }
            case VR::UL: { std::uint32_t v; std::memcpy(&v, &bytes[at], 4); return std::to_string(v); }
            case VR::SL: { std::int32_t v; std::memcpy(&v, &bytes[at], 4); return std::to_string(v); }
            case VR::FL: { float v; std::memcpy(&v, &bytes[at], 4); return Portability::TraceFormat("%g", v); }
            case VR::FD: { double v; std::memcpy(&v, &bytes[at], 8); return Portability::TraceFormat("%g", v); }
            default: return Portability::TraceFormat("%02x", bytes[at]);
        }
    };
    const bool numeric = VRIsNumeric(vr);
    const unsigned unit = numeric ? VRUnitSize(vr) : 1;
    for (std::size_t at = 0; at + unit <= bytes.size(); at += unit) {
        if (numeric && at != 0) out += '\\';
        out += number(at);
    }
    return out;
}

}  // namespace

std::string TreeText(const DicomDataSet& dataSet, bool withMeta, int depth) {
    std::string out;
    const std::string indent(static_cast<std::size_t>(depth) * 2, ' ');
    for (const auto& [tag, node] : dataSet) {
        if (!withMeta && node->group == 0x0002) continue;
        out += indent + Portability::TraceFormat("(%04X,%04X) %s", node->group, node->element,
                                                 std::string(VRCode(WireVR(node->vr))).c_str());
        if (const auto* sequence = dynamic_cast<const DicomDataSetSequenceElement*>(node.get())) {
            out += "\n";
            for (const auto& item : sequence->Items()) {
                out += indent + "  item\n";
                if (item) out += TreeText(*item, withMeta, depth + 2);
            }
            continue;
        }
        if (const auto* pixels = dynamic_cast<const DicomDataSetFrameContainerElement*>(node.get())) {
            if (pixels->encapsulated) out += Portability::TraceFormat(" frames=%zu", pixels->FrameCount());
        }
        out += " " + ValueText(*node) + "\n";
    }
    return out;
}

}  // namespace DicomTestTree
