#pragma once
// The operation bodies. Each returns normally on success and throws std::runtime_error with the
// complete user message on failure.

#include "app/OptionRecords.h"

namespace Dicapsule {

void pack(int argc, const char* const argv[], const PackRecord& record);
void unpack(const UnpackRecord& record);
void info(const InfoRecord& record);

}  // namespace Dicapsule
