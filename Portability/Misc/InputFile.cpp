#include "Portability/Misc/InputFile.h"

#include <utility>

namespace Portability {

InputFile::InputFile() = default;
InputFile::~InputFile() = default;

InputFile::Status InputFile::Open(const std::string& path, std::uint64_t max_size) {
    file_.reset();
    size_ = 0;
    // A regular file is read where it is, through the descriptor opened here: renaming or replacing
    // the file meanwhile cannot change what is read.
    if (std::shared_ptr<OpenFile> file = OpenFile::Open(path)) {
        // One byte read proves the permission is real (some file systems grant the open only).
        unsigned char probe = 0;
        if (file->Size() > 0 && !file->ReadAt(&probe, 1, 0)) return Status::unreadable;
        size_ = file->Size();
        if (size_ > max_size) return Status::too_large;
        file_ = std::move(file);
        return Status::opened;
    }
    return CopyStream(path, max_size);
}

}  // namespace Portability
