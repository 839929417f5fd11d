#pragma once
// A scratch file for data that has no file of its own (a piped input, an inflated data set):
// created empty in the temporary directory, open for reading and writing, and gone when its last
// descriptor closes, even when the process is killed (where the platform allows).

#include <string>

namespace Portability {

// A descriptor open for reading and writing, and in reopenPath a UTF-8 path that opens the same
// file again while the descriptor stays open; -1 when no file can be made.
int CreateTemporaryFile(std::string& reopenPath);

// The directory scratch files are made in (UTF-8): $TMPDIR or /tmp; the user's temporary folder
// on Windows.
std::string TemporaryDirectory();

}  // namespace Portability
