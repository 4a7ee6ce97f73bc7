#pragma once
// A folder of the running test's own under the system's temporary folder,
// empty at the start and gone at the end.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

struct ScratchFolder {
  explicit ScratchFolder(const std::string& kind)
      : root(std::filesystem::temp_directory_path() /
             ("velmora-" + kind + "-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name())) {
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root);
  }
  ~ScratchFolder() { std::filesystem::remove_all(root); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  std::string path(const std::string& name) const { return (root / name).string(); }
  std::filesystem::path root;
};
