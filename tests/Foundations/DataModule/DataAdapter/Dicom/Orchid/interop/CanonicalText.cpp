#include "CanonicalText.h"

#include <cstdint>
#include <vector>

#include "Portability/Misc/DebugTrace.h"

namespace DicomInterop {
namespace {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

// Values up to this size are printed in full; longer ones as a digest to keep dumps readable.
constexpr std::size_t kHexLimit = 64;

std::string Hex(const std::vector<std::uint8_t>& bytes) {
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) out += Portability::TraceFormat("%02x", byte);
    return out;
}

// FNV-1a: a fixed, dependency-free digest, identical on every run and platform.
std::uint64_t Fnv1a64(const std::vector<std::uint8_t>& bytes) {
    std::uint64_t hash = 0xcbf29ce484222325ull;
    for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001b3ull;
    return hash;
}

std::string ValueText(const DicomDataSetElement& node) {
    const auto* pixels = dynamic_cast<const DicomDataSetFrameContainerElement*>(&node);
    if (pixels && pixels->encapsulated) {
        std::string out = Portability::TraceFormat("frames=%zu", pixels->FrameCount());
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < pixels->FrameCount(); ++i) {
            if (!pixels->Frame(i)->Load(bytes)) return out + " <unreadable>";
            out += " " + Hex(bytes);
        }
        return out;
    }
    const DicomValue& value = pixels ? pixels->NativeValue() : node.value;
    std::vector<std::uint8_t> bytes;
    if (!value.Load(bytes)) return "<unreadable>";
    const std::string length = std::to_string(bytes.size());
    if (bytes.size() <= kHexLimit) return length + " " + Hex(bytes);
    return length + Portability::TraceFormat(" fnv1a64=%016llx", static_cast<unsigned long long>(Fnv1a64(bytes)));
}

}  // namespace

std::string CanonicalText(const DicomDataSet& dataSet, int depth) {
    std::string out;
    for (const auto& [tag, node] : dataSet) {
        const std::string vr(VRCode(WireVR(node->vr)));
        out += Portability::TraceFormat("%d (%04X,%04X) %s ", depth, node->tag.group, node->tag.element, vr.c_str());
        const auto* sequence = dynamic_cast<const DicomDataSetSequenceElement*>(node.get());
        if (!sequence) {
            out += ValueText(*node) + "\n";
            continue;
        }
        out += Portability::TraceFormat("items=%zu\n", sequence->ItemCount());
        for (const auto& item : sequence->Items()) {
            out += std::to_string(depth + 1) + (item ? " item\n" : " empty-slot\n");
            if (item) out += CanonicalText(*item, depth + 1);
        }
    }
    return out;
}

}  // namespace DicomInterop
