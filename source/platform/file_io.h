#pragma once
// Whole files in and out, for every loader and every save.
//
// Reading takes all of a regular file or says why it could not: a folder, a
// device or a pipe is refused before a byte is read, and a read that fails
// halfway gives the system's reason, never an exception.
//
// Saving writes a new file beside the target, syncs it to the disk and only
// then renames it over the target, so that a failure, a crash or a power cut
// leaves the old file or the new one, never a mix. A save to a symbolic link
// replaces the file the links lead to and keeps the links.
//
// The reads and syncs go through the file calls, which a test may replace to
// make a read fail midway or to see what was synced. UI thread only.

#include <sys/types.h>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform {

// No file larger than this is read: none of ours comes near it.
inline constexpr std::size_t MaxWholeFileBytes = std::size_t{1} << 30;

enum class ReadFailure {
  None,
  CannotOpen,  // missing, or not ours to read
  NotAFile,    // a folder, a device, a pipe or a socket
  TooLarge,
  ReadError,  // the file opened, and a read failed
};

struct FileContents {
  std::vector<uint8_t> bytes;
  ReadFailure failure = ReadFailure::None;
  std::string reason;  // the system's words for a failure: "Is a directory", "Input/output error"
  bool ok() const { return failure == ReadFailure::None; }
  bool operator==(const FileContents&) const = default;
};

FileContents ReadWholeFile(const std::string& path);

// What a loader says in a box when its file cannot be opened.
struct LoaderMessage {
  std::string text;
  std::string title;
  uint32_t style = 0;
};

// A loader's read: the file's bytes, or nothing after a box that says why. A
// file that cannot be opened gets the loader's own words; any other failure
// "Could not read the file PATH: REASON." under the same title.
std::optional<std::vector<uint8_t>> ReadFileOrSay(const std::string& path, const LoaderMessage& cannotOpen);
std::string CannotReadText(const std::string& path, const FileContents& file);

// Saves a file through fill, which is handed an empty file of the save's own
// and tells whether it wrote everything. True once the new file has taken the
// target's place; false leaves the old file as it was.
bool SaveFileSafely(const std::string& path, const std::function<bool(std::FILE*)>& fill);
bool WriteFileSafely(const std::string& path, std::span<const uint8_t> bytes);

// Where a save to path goes: the end of its chain of symbolic links, or
// nothing for a chain that loops or cannot be read.
std::optional<std::string> SaveTarget(const std::string& path);

// True when a file could be created or written at path; one created to find
// out is taken away again.
bool CanWriteFile(const std::string& path);

// The system calls that the reads and saves make.
struct FileCalls {
  ssize_t (*read)(int fd, void* buffer, std::size_t count);
  int (*fsync)(int fd);
};
// Replaces the calls until the next install; nullptr puts the system's back.
void installFileCalls(const FileCalls* calls);

}  // namespace platform
