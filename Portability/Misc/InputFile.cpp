#include "Portability/Misc/InputFile.h"

#include <utility>

namespace Portability {

InputFile::InputFile() = default;
InputFile::~InputFile() = default;

InputFile::Status InputFile::Keep(std::shared_ptr<OpenFile> file, std::uint64_t max_size) {
    // One byte read proves the permission is real (some file systems grant the open only).
    unsigned char probe = 0;
    if (file->Size() > 0 && !file->ReadAt(&probe, 1, 0)) return Status::unreadable;
    size_ = file->Size();
    if (size_ > max_size) return Status::too_large;
    // Read later through this descriptor: renaming or replacing the file meanwhile cannot change
    // what is read.
    file_ = std::move(file);
    return Status::opened;
}

}  // namespace Portability
