#pragma once
// What the fuzz targets of the file loaders share: the input as a file that
// the real loaders open by its path, prompts that answer every box quietly,
// and the check that stops a run when a loader breaks its word.

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "platform/prompts.h"

namespace fuzz {

// Stops the run, so that libFuzzer keeps the input as a crash.
[[noreturn]] inline void Fail(const char* what) {
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

inline void Require(bool holds, const char* what) {
  if (!holds) Fail(what);
}

// The input as an anonymous file in memory: the loaders open it by its
// /proc/self/fd path as they would any file, and nothing reaches a disk.
class InputFile {
 public:
  InputFile() : fd_(memfd_create("velmora-fuzz-input", MFD_CLOEXEC)) {
    if (fd_ < 0) Fail(std::strerror(errno));
    path_ = "/proc/self/fd/" + std::to_string(fd_);
  }
  ~InputFile() { ::close(fd_); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // Makes the file hold exactly these bytes and returns its path.
  const std::string& hold(const uint8_t* data, std::size_t size) {
    if (::ftruncate(fd_, 0) != 0) Fail(std::strerror(errno));
    std::size_t done = 0;
    while (done < size) {
      const ssize_t wrote = ::pwrite(fd_, data + done, size - done, static_cast<off_t>(done));
      if (wrote < 0 && errno == EINTR) continue;
      if (wrote <= 0) Fail(std::strerror(errno));
      done += static_cast<std::size_t>(wrote);
    }
    return path_;
  }

 private:
  int fd_;
  std::string path_;
};

// Answers every box with its safest button and keeps nothing but the last
// text. A file chooser opens the one path offered, once; saving is always
// cancelled, so that no loader's dialog ever writes a file.
class QuietPrompts final : public platform::Prompts {
 public:
  int messageBox(const std::string& text, const std::string&, uint32_t style) override {
    ++boxes;
    last = text;
    switch (style & 0xF) {
      case platform::MB_YESNO:
        return platform::IDNO;
      case platform::MB_YESNOCANCEL:
        return platform::IDCANCEL;
      default:
        return platform::IDOK;
    }
  }
  std::optional<std::string> openFileName(const platform::FileDialog&) override {
    std::optional<std::string> path;
    path.swap(offered_);
    return path;
  }
  std::optional<std::string> saveFileName(const platform::FileDialog&) override { return std::nullopt; }
  void beginWaitCursor() override { ++waitDepth_; }
  void endWaitCursor() override { --waitDepth_; }

  // The next open file chooser answers with this path.
  void offer(const std::string& path) { offered_ = path; }
  // Forgets the last run; a wait cursor left shown, or one ended twice, stops the run.
  void reset() {
    Require(waitDepth_ == 0, "a wait cursor was not ended exactly once");
    boxes = 0;
    last.clear();
    offered_.reset();
  }

  int boxes = 0;
  std::string last;

 private:
  std::optional<std::string> offered_;
  int waitDepth_ = 0;
};

}  // namespace fuzz
