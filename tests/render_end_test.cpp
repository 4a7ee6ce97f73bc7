// How velmora-render ends: seeds the random source cannot take are refused
// before the run, and a run interrupted by a signal ends every note, resets
// the controllers and writes what it made.

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>
#include <vector>

#include "generator/bank.h"
#include "generator/generator_tick.h"
#include "generator/setup_files.h"
#include "platform/file_io.h"
#include "random/trandom.h"
#include "render/render.h"
#include "support/render_child.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;

struct Folder {
  Folder() : root(fs::temp_directory_path() / ("velmora-render-end-" + std::to_string(::getpid()))) {
    fs::remove_all(root);
    fs::create_directories(root);
  }
  ~Folder() { fs::remove_all(root); }
  std::string path(const std::string& name) const { return (root / name).string(); }
  fs::path root;
};

TEST(RenderSeeds, TheRandomSourcesRangeIsTakenAndOnePastEachEndIsRefused) {
  std::string error;
  for (const char* seed : {"-54780", "2147428874", "0"}) {
    const auto options = ParseRenderArguments({"--seed", seed}, error);
    ASSERT_TRUE(options) << seed;
    EXPECT_EQ(*options->seed, std::stoll(seed));
  }
  for (const char* seed : {"-54781", "2147428875", "-2147483648"}) {
    EXPECT_FALSE(ParseRenderArguments({"--seed", seed}, error)) << seed;
    EXPECT_EQ(error, std::string("--seed takes a whole number from -54780 to 2147428874 (the random source's range), "
                                 "not '") + seed + "'");
  }
}

TEST(RenderSeeds, ASeedPastEitherEndExitsWithStatus2BeforeTheRun) {
  const Folder folder;
  const std::string log = folder.path("log");
  for (const char* seed : {"-54781", "2147428875"}) {
    const Finished finished = runRender(folder.root.string(), std::string("--seconds 5 --seed ") + seed + " --log " + log);
    EXPECT_EQ(finished.status, 2) << seed;
    EXPECT_EQ(finished.said, std::string("velmora-render: --seed takes a whole number from -54780 to 2147428874 (the "
                                         "random source's range), not '") + seed + "'\n");
    EXPECT_FALSE(fs::exists(log)) << "nothing ran";
  }
}

TEST(RenderSeeds, ASetUpFilesSeedPastTheRangeIsRefusedWithStatus2AndAnotherGivenRuns) {
  const Folder folder;
  GeneratorStartUp();
  Seed = -60000;
  const std::string setUp = folder.path("bad-seed.vlm");
  ASSERT_TRUE(platform::WriteFileSafely(setUp, ParameterFileBytes()));
  Seed = 0;
  const std::string log = folder.path("log");
  Finished finished = runRender(folder.root.string(), "--seconds 2 --params " + quoted(setUp) + " --log " + log);
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.said, "velmora-render: the set-up file '" + setUp +
                               "' has the seed -60000, which the random source cannot take: give one from -54780 to "
                               "2147428874 with --seed\n");
  EXPECT_EQ(finished.said.find("INTERNAL ERROR"), std::string::npos);
  EXPECT_EQ(fs::file_size(log), 0u) << "the run did not begin";

  finished = runRender(folder.root.string(), "--seconds 2 --seed 5 --params " + quoted(setUp) + " --log " + log);
  EXPECT_EQ(finished.status, 0) << finished.said;
  EXPECT_GT(fs::file_size(log), 0u);
}

// One line of the log: the pass, the clock's time, the message's bytes.
struct Line {
  std::vector<unsigned> bytes;
};

std::vector<Line> readLog(const std::string& path) {
  std::vector<Line> lines;
  std::ifstream file(path);
  std::string text;
  while (std::getline(file, text)) {
    std::istringstream in(text);
    unsigned pass = 0, now = 0;
    in >> pass >> now;
    Line line;
    std::string byte;
    while (in >> byte) line.bytes.push_back(static_cast<unsigned>(std::stoul(byte, nullptr, 16)));
    lines.push_back(line);
  }
  return lines;
}

TEST(RenderInterrupted, SIGTERMMidRunEndsEveryNoteResetsTheControllersAndWritesTheLogAndTheTake) {
  const Folder folder;
  const std::string log = folder.path("log");
  const std::string take = folder.path("take.mid");
  // The loopback (output 1 of the standard devices) in real time, for a minute.
  std::vector<std::string> arguments{VELMORA_RENDER, "--realtime", "--out", "1", "--seconds", "60", "--tempo", "240",
                                     "--log",        log,          "--midi", take};
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  ASSERT_EQ(posix_spawn(&child, VELMORA_RENDER, nullptr, nullptr, argv.data(), environ), 0);
  // Until notes sound: the log grows as the generator plays.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while ((!fs::exists(log) || fs::file_size(log) < 200) && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  ASSERT_EQ(kill(child, SIGTERM), 0);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status)) << "ended by its own hand, not by the signal";
  EXPECT_EQ(WEXITSTATUS(status), 128 + SIGTERM);

  // Every note that sounded has its note-off, and the controllers' resets close the log.
  const auto lines = readLog(log);
  ASSERT_GT(lines.size(), 128u);
  std::map<unsigned, int> sounding;  // channel and key -> notes on
  std::size_t lastNote = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto& b = lines[i].bytes;
    if (b.size() != 3 || (b[0] & 0xF0) != 0x90) continue;
    lastNote = i;
    const unsigned note = (b[0] & 0x0F) << 8 | b[1];
    sounding[note] = b[2] != 0 ? 1 : 0;
  }
  for (const auto& [note, on] : sounding) EXPECT_EQ(on, 0) << "channel " << (note >> 8) << " key " << (note & 0xFF);
  std::size_t resets = 0;
  for (std::size_t i = lastNote + 1; i < lines.size(); ++i) {
    const auto& b = lines[i].bytes;
    if (b.size() == 3 && (b[0] & 0xF0) == 0xB0 && b[1] == 121) ++resets;
  }
  EXPECT_EQ(resets, 16u) << "Reset All Controllers on every channel, after the last note-off";
  EXPECT_TRUE(fs::exists(take)) << "the take was kept and written";
  EXPECT_GT(fs::file_size(take), 22u);
}

}  // namespace
