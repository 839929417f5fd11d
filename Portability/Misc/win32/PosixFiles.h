#pragma once
// The few POSIX file calls the readers use, on the Windows C runtime: files open by wide path in
// binary mode, and pread reads at an offset without moving the descriptor's file position.
// Include instead of <fcntl.h>, <sys/stat.h> and <unistd.h> in Windows builds.

#ifndef _WIN32
#error "PosixFiles.h is for Windows builds only"
#endif

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>

// Handles are never inherited by child processes.
#ifndef O_CLOEXEC
#define O_CLOEXEC _O_NOINHERIT
#endif

// Open a file named by a wide path (std::filesystem::path::c_str() on Windows), always binary;
// mode gives the permissions of a file that O_CREAT makes. A file opened for reading only shares
// deletion, so that temporary files marked for deletion on close can be opened again.
int open(const wchar_t* path, int flags, int mode = _S_IREAD | _S_IWRITE);

// Read up to size bytes at offset; the count read, 0 at the end of the file, -1 on failure.
ssize_t pread(int descriptor, void* data, std::size_t size, std::int64_t offset);

// Write up to size bytes at offset; the count written, -1 on failure.
ssize_t pwrite(int descriptor, const void* data, std::size_t size, std::int64_t offset);
