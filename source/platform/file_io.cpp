#include "platform/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#include "platform/prompts.h"

namespace platform {

namespace {

constexpr FileCalls SystemCalls{::read, ::fsync};
const FileCalls* calls = &SystemCalls;

// Linux follows no more links than this in one path.
constexpr int MaxLinkHops = 40;

// Closes a descriptor when it goes out of scope.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }

 private:
  int fd_;
};

FileContents failed(ReadFailure failure, std::string reason) {
  FileContents file;
  file.failure = failure;
  file.reason = std::move(reason);
  return file;
}

// Why a file of this kind is not read, or nothing when it is a regular file of a size we read.
std::optional<FileContents> refusal(const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return failed(ReadFailure::NotAFile, std::strerror(EISDIR));
  if (!S_ISREG(status.st_mode)) return failed(ReadFailure::NotAFile, "Not a regular file");
  if (static_cast<uint64_t>(status.st_size) > MaxWholeFileBytes) {
    return failed(ReadFailure::TooLarge, std::strerror(EFBIG));
  }
  return std::nullopt;
}

// Reads to the end of the file; nothing when every byte came in, else why not.
std::optional<FileContents> readAll(int fd, std::size_t sizeHint, std::vector<uint8_t>& bytes) {
  try {
    bytes.reserve(sizeHint);
    std::array<uint8_t, 65536> block;
    for (;;) {
      const ssize_t n = calls->read(fd, block.data(), block.size());
      if (n == 0) return std::nullopt;
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) return failed(ReadFailure::ReadError, std::strerror(errno));
      // A file in /proc tells no size, and may grow as it is read.
      if (bytes.size() + static_cast<std::size_t>(n) > MaxWholeFileBytes) {
        return failed(ReadFailure::TooLarge, std::strerror(EFBIG));
      }
      bytes.insert(bytes.end(), block.begin(), block.begin() + n);
    }
  } catch (const std::bad_alloc&) {
    return failed(ReadFailure::TooLarge, std::strerror(ENOMEM));
  }
}

// A fresh partial file for a save, which is the save's own: one left by a
// save that was cut short goes first, and the new one is created where no
// name stands, so that a link planted in its place is never followed. It
// takes the permissions of the file it will replace.
int createPartial(const std::string& partial, const std::string& target) {
  ::unlink(partial.c_str());
  const int fd = ::open(partial.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  struct stat old {};
  if (fd >= 0 && ::stat(target.c_str(), &old) == 0 && S_ISREG(old.st_mode)) ::fchmod(fd, old.st_mode & 07777);
  return fd;
}

// Writes and syncs the partial file; false when any byte may be missing.
bool fillAndSync(int fd, const std::function<bool(std::FILE*)>& fill) {
  std::FILE* file = ::fdopen(fd, "w+b");
  if (file == nullptr) {
    ::close(fd);
    return false;
  }
  bool written = fill(file);
  written = std::fflush(file) == 0 && std::ferror(file) == 0 && written;
  written = written && calls->fsync(fd) == 0;
  return std::fclose(file) == 0 && written;
}

// The rename is on the disk once the folder that holds the file is synced. A
// file system that cannot sync a folder has the new file in place all the same.
void syncFolderOf(const std::string& file) {
  const std::filesystem::path folder = std::filesystem::path(file).parent_path();
  const Descriptor fd(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.get() >= 0) calls->fsync(fd.get());
}

}  // namespace

FileContents ReadWholeFile(const std::string& path) {
  // Only a regular file is opened: opening a device or a pipe can wait or do things.
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return failed(ReadFailure::CannotOpen, std::strerror(errno));
  if (auto refused = refusal(status)) return std::move(*refused);
  const Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (fd.get() < 0) return failed(ReadFailure::CannotOpen, std::strerror(errno));
  // What was opened may not be what was looked at a moment before.
  if (::fstat(fd.get(), &status) != 0) return failed(ReadFailure::ReadError, std::strerror(errno));
  if (auto refused = refusal(status)) return std::move(*refused);
  FileContents file;
  if (auto broken = readAll(fd.get(), static_cast<std::size_t>(status.st_size), file.bytes)) return std::move(*broken);
  return file;
}

std::string CannotReadText(const std::string& path, const FileContents& file) {
  return "Could not read the file " + path + ": " + file.reason + ".";
}

std::optional<std::vector<uint8_t>> ReadFileOrSay(const std::string& path, const LoaderMessage& cannotOpen) {
  FileContents file = ReadWholeFile(path);
  if (file.ok()) return std::move(file.bytes);
  if (file.failure == ReadFailure::CannotOpen) {
    ShowMessageBox(cannotOpen.text, cannotOpen.title, cannotOpen.style);
  } else {
    ShowMessageBox(CannotReadText(path, file), cannotOpen.title, MB_ICONSTOP);
  }
  return std::nullopt;
}

std::optional<std::string> SaveTarget(const std::string& path) {
  namespace fs = std::filesystem;
  fs::path at = path;
  for (int hop = 0; hop <= MaxLinkHops; ++hop) {
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(at, error))) return at.string();
    const fs::path link = fs::read_symlink(at, error);
    if (error) return std::nullopt;
    at = link.is_absolute() ? link : at.parent_path() / link;
  }
  return std::nullopt;
}

bool SaveFileSafely(const std::string& path, const std::function<bool(std::FILE*)>& fill) {
  const auto target = SaveTarget(path);
  if (!target) return false;
  const std::string partial = *target + ".partial";
  const int fd = createPartial(partial, *target);
  if (fd < 0) return false;
  if (!fillAndSync(fd, fill) || ::rename(partial.c_str(), target->c_str()) != 0) {
    ::unlink(partial.c_str());
    return false;
  }
  syncFolderOf(*target);
  return true;
}

bool WriteFileSafely(const std::string& path, std::span<const uint8_t> bytes) {
  return SaveFileSafely(path, [&](std::FILE* file) {
    return bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  });
}

bool CanWriteFile(const std::string& path) {
  struct stat status {};
  const bool existed = ::lstat(path.c_str(), &status) == 0;
  // O_NONBLOCK: a pipe with no reader is refused at once rather than waited on.
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  if (fd < 0) return false;
  ::close(fd);
  if (!existed) ::unlink(path.c_str());
  return true;
}

void installFileCalls(const FileCalls* replacement) { calls = replacement != nullptr ? replacement : &SystemCalls; }

}  // namespace platform
