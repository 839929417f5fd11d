#pragma once
// Files to remove if the process is interrupted. While an Entry lives, SIGINT, SIGTERM or SIGHUP
// removes its file before the signal ends the process as it would have without us (signals the
// process ignores stay ignored). SIGKILL cannot be caught: only unnamed files survive nothing.

#include <string>

namespace Portability::InterruptCleanup {

class Entry {
public:
    // No file.
    Entry() = default;
    // Arm removal of path (which need not exist yet). Paths longer than PATH_MAX, or more than a
    // few files at once, are not armed: the entry then does nothing.
    explicit Entry(const std::string& path);
    ~Entry();
    Entry(Entry&& other) noexcept;
    Entry& operator=(Entry&& other) noexcept;
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    // True when the path is armed.
    bool Armed() const noexcept { return slot_ >= 0; }

private:
    void Release() noexcept;
    int slot_ = -1;
};

}  // namespace Portability::InterruptCleanup
