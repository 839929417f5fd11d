#pragma once
// Collects the debug trace lines written while it is alive.

#include "Portability/Misc/DebugTrace.h"

#include <string>
#include <vector>

class TraceCapture {
public:
    TraceCapture() {
        previous_ = Portability::SetTraceSink([this](const Portability::TraceLine& l) { lines.emplace_back(l.text); });
    }
    ~TraceCapture() { Portability::SetTraceSink(previous_); }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    bool Has(const std::string& text) const {
        for (const std::string& line : lines)
            if (line == text) return true;
        return false;
    }
    std::vector<std::string> lines;

private:
    Portability::TraceSink previous_;
};
