#include "app/Operations.h"

#include <stdexcept>

namespace Dicapsule {

// The bodies land one by one; until then each operation says plainly that it cannot run.

void pack(int, const char* const[], const PackRecord&) {
    throw std::runtime_error("The pack operation is not available yet.");
}

void unpack(const UnpackRecord&) { throw std::runtime_error("The unpack operation is not available yet."); }

void info(const InfoRecord&) { throw std::runtime_error("The info operation is not available yet."); }

}  // namespace Dicapsule
