// No file given to a loader can crash Velmora, and no save can lose the old
// file: the reader of whole files and the safe save, through every loader and
// every save that uses them, and through velmora-render as a child process.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "generator/raw_files.h"
#include "generator/setup_files.h"
#include "platform/file_io.h"
#include "render/render.h"
#include "support/generator_fixture.h"
#include "support/render_child.h"
#include "support/scratch_folder.h"
#include "support/song_bench.h"

namespace {

namespace fs = std::filesystem;
using platform::ReadFailure;
using platform::ScriptedPrompts;

// ---- helpers ----

std::vector<uint8_t> bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}


// A folder of the test's own, gone at its end.
struct Scratch : ScratchFolder {
  Scratch() : ScratchFolder("safety") {}
};

// File calls a test scripts: reads that fail with EIO once some have gone
// through, and syncs logged by the name of what they synced, which may fail.
struct FileCallScript {
  int readsBeforeFailure = -1;  // -1: no read fails
  bool syncFails = false;
  std::vector<std::string> synced;
};
FileCallScript script;

ssize_t scriptedRead(int fd, void* buffer, std::size_t count) {
  if (script.readsBeforeFailure == 0) {
    errno = EIO;
    return -1;
  }
  if (script.readsBeforeFailure > 0) --script.readsBeforeFailure;
  return ::read(fd, buffer, count);
}

int scriptedSync(int fd) {
  std::error_code error;
  script.synced.push_back(fs::read_symlink("/proc/self/fd/" + std::to_string(fd), error).string());
  if (script.syncFails) {
    errno = EIO;
    return -1;
  }
  return ::fsync(fd);
}

constexpr platform::FileCalls ScriptedCalls{scriptedRead, scriptedSync};

// Installs the scripted calls with a fresh script for the life of the object.
struct ScriptedFileCalls {
  ScriptedFileCalls() {
    script = {};
    platform::installFileCalls(&ScriptedCalls);
  }
  ~ScriptedFileCalls() { platform::installFileCalls(nullptr); }
  ScriptedFileCalls(const ScriptedFileCalls&) = delete;
  ScriptedFileCalls& operator=(const ScriptedFileCalls&) = delete;
};

// A folder as the system names an open file in it.
std::string realFolder(const fs::path& path) { return fs::weakly_canonical(path).string(); }

// ---- the reader ----

TEST(ReadWholeFile, GivesEveryByteOfAFileLargerThanOneRead) {
  const Scratch scratch;
  std::vector<uint8_t> bytes(200000);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7);
  writeBytes(scratch.path("big"), bytes);
  const auto file = platform::ReadWholeFile(scratch.path("big"));
  ASSERT_TRUE(file.ok()) << file.reason;
  EXPECT_EQ(file.bytes, bytes);
}

// How the reader failed on a file, and the reason it gave; it gives no bytes then.
using Failure = std::pair<ReadFailure, std::string>;
Failure failureOf(const std::string& path) {
  const auto file = platform::ReadWholeFile(path);
  EXPECT_TRUE(file.bytes.empty());
  return {file.failure, file.reason};
}

TEST(ReadWholeFile, AMissingFileCannotBeOpened) {
  EXPECT_EQ(failureOf("/no/such/folder/x.mid"), Failure(ReadFailure::CannotOpen, "No such file or directory"));
}

TEST(ReadWholeFile, RefusesAFolderSayingItIsADirectory) {
  const Scratch scratch;
  EXPECT_EQ(failureOf(scratch.root.string()), Failure(ReadFailure::NotAFile, "Is a directory"));
}

TEST(ReadWholeFile, RefusesADeviceThatWouldNeverEnd) {
  EXPECT_EQ(failureOf("/dev/zero"), Failure(ReadFailure::NotAFile, "Not a regular file"));
}

TEST(ReadWholeFile, RefusesAPipeWithoutWaitingForAWriter) {
  const Scratch scratch;
  ASSERT_EQ(::mkfifo(scratch.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(failureOf(scratch.path("pipe")), Failure(ReadFailure::NotAFile, "Not a regular file"));
}

TEST(ReadWholeFile, AFileWhoseReadFailsGivesTheSystemsReason) {
  // /proc/self/mem is a regular file whose first page is never mapped.
  if (!fs::exists("/proc/self/mem")) GTEST_SKIP() << "no /proc here";
  EXPECT_EQ(failureOf("/proc/self/mem"), Failure(ReadFailure::ReadError, "Input/output error"));
}

TEST(ReadWholeFile, AReadThatFailsMidwayGivesTheSystemsReason) {
  const Scratch scratch;
  writeBytes(scratch.path("half"), std::vector<uint8_t>(100000, 1));
  const ScriptedFileCalls calls;
  script.readsBeforeFailure = 1;
  EXPECT_EQ(failureOf(scratch.path("half")), Failure(ReadFailure::ReadError, "Input/output error"));
}

// ---- the song ----

class SongFileSafety : public SongBench {
 protected:
  // A song of one note on track 0, with a file name and a title of its own.
  void keepASong() {
    install(0,
            {MidiEvent{0, 0x90, 60, 90, 0, nullptr, 0, 0, 0, 0}, MidiEvent{60, 0x90, 60, 0, 0, nullptr, 0, 0, 0, 0}});
    SongDirty = 0;  // no question comes first
    SongFilePath = path("kept.mid");
    SongTitle = path("kept.mid");
    ShowSongTitle();
  }
  void expectTheSongKept() {
    EXPECT_NE(Tracks[0].events, nullptr);
    EXPECT_EQ(Tracks[0].count, 2u);
    EXPECT_EQ(SongFilePath, path("kept.mid"));
    EXPECT_EQ(frame.songTitle, path("kept.mid"));
  }
  void expectBox(const std::string& text) {
    ASSERT_FALSE(prompts.shown().empty());
    const auto& box = prompts.shown().back();
    EXPECT_EQ(box.text, text);
    EXPECT_EQ(box.title, "Error");
    EXPECT_EQ(box.style, platform::MB_ICONSTOP);
  }
};

TEST_F(SongFileSafety, AFolderGivenAsASongSaysWhyAndKeepsTheSong) {
  keepASong();
  EXPECT_FALSE(LoadSong(folder.string()));
  expectBox("Could not read the file " + folder.string() + ": Is a directory.");
  expectTheSongKept();
}

TEST_F(SongFileSafety, ASongWhoseReadFailsMidwaySaysWhyAndKeepsTheSong) {
  keepASong();
  const ScriptedFileCalls calls;
  script.readsBeforeFailure = 1;
  const std::string file = corpus("format1_two_tracks.mid");
  EXPECT_FALSE(LoadSong(file));
  expectBox("Could not read the file " + file + ": Input/output error.");
  expectTheSongKept();
}

TEST_F(SongFileSafety, AMissingSongStillSaysInvalidFileFormatAndKeepsTheSong) {
  keepASong();
  EXPECT_FALSE(LoadSong(path("nowhere.mid")));
  expectBox("Invalid file format");
  expectTheSongKept();
}

TEST_F(SongFileSafety, ADeviceChosenInTheOpenDialogLeavesTheSongAndItsTitle) {
  keepASong();
  prompts.planFile("/dev/zero");
  OpenSongDialog();
  expectBox("Could not read the file /dev/zero: Not a regular file.");
  expectTheSongKept();
}

// ---- the set-up, the banks and the curves ----

class SetupFileSafety : public GeneratorBench {
 protected:
  void expectBox(const std::string& text, const std::string& title = "Velmora") {
    ASSERT_EQ(prompts.shown().size(), 1u);
    EXPECT_EQ(prompts.shown()[0].text, text);
    EXPECT_EQ(prompts.shown()[0].title, title);
    EXPECT_EQ(prompts.shown()[0].style, platform::MB_ICONSTOP);
  }
  Scratch scratch;
};

TEST_F(SetupFileSafety, AFolderGivenAsASetUpSaysWhyAndKeepsTheSetUp) {
  Seed = 77;
  const int32_t length = FunctionLength.load();
  EXPECT_EQ(LoadParameterFile(nullptr, scratch.root.string()), 0);
  expectBox("Could not read the file " + scratch.root.string() + ": Is a directory.");
  EXPECT_EQ(Seed.load(), 77);
  EXPECT_EQ(FunctionLength.load(), length);
}

TEST_F(SetupFileSafety, ASetUpWhoseReadFailsMidwaySaysWhyAndKeepsTheSetUp) {
  ASSERT_EQ(SaveParameterFile(scratch.path("s.vlm")), 1);
  Seed = 77;
  const ScriptedFileCalls calls;
  script.readsBeforeFailure = 1;
  EXPECT_EQ(LoadParameterFile(nullptr, scratch.path("s.vlm")), 0);
  expectBox("Could not read the file " + scratch.path("s.vlm") + ": Input/output error.");
  EXPECT_EQ(Seed.load(), 77);
}

TEST_F(SetupFileSafety, AMissingSetUpStillSaysCouldNotOpenFile) {
  EXPECT_EQ(LoadParameterFile(nullptr, scratch.path("missing.vlm")), 0);
  expectBox("Could not open file.");
}

TEST_F(SetupFileSafety, AFolderOrAFailingReadGivenAsABankKeepsTheBankInItsSlot) {
  ASSERT_EQ(AllocateBank(nullptr, 3, 16), 1);
  const Bank* bank = BankSlots[3].get();
  prompts.planFile(scratch.root.string());
  EXPECT_EQ(ReadBankFile(nullptr, 3), 0);
  EXPECT_EQ(prompts.shown().back().text, "Could not read the file " + scratch.root.string() + ": Is a directory.");
  EXPECT_EQ(BankSlots[3].get(), bank);

  ASSERT_EQ(SaveParameterFile(scratch.path("b.vlm")), 1);
  const ScriptedFileCalls calls;
  script.readsBeforeFailure = 1;
  prompts.planFile(scratch.path("b.vlm"));
  EXPECT_EQ(ReadBankFile(nullptr, 3), 0);
  EXPECT_EQ(prompts.shown().back().text, "Could not read the file " + scratch.path("b.vlm") + ": Input/output error.");
  EXPECT_EQ(BankSlots[3].get(), bank);
  BankSlots[3].reset();
}

TEST_F(SetupFileSafety, AFolderGivenAsACurveKeepsTheCurve) {
  std::array<int8_t, 4> curve{1, 2, 3, 4};
  EXPECT_EQ(LoadFunctionFile(scratch.root.string(), curve), 0);
  expectBox("Could not read the file " + scratch.root.string() + ": Is a directory.");
  EXPECT_EQ(curve, (std::array<int8_t, 4>{1, 2, 3, 4}));
}

TEST_F(SetupFileSafety, AWeightTableWhoseReadFailsMidwayKeepsTheTable) {
  writeBytes(scratch.path("w.bin"), {5, 0, 6, 0});
  std::array<Weight, 2> table{};
  table[0] = static_cast<int16_t>(9);
  table[1] = static_cast<int16_t>(8);
  const ScriptedFileCalls calls;
  script.readsBeforeFailure = 1;
  EXPECT_EQ(LoadDistributionFile(scratch.path("w.bin"), table), 0);
  expectBox("Could not read the file " + scratch.path("w.bin") + ": Input/output error.");
  EXPECT_EQ(table[0].load(), 9);
  EXPECT_EQ(table[1].load(), 8);
}

// ---- saving ----

TEST(SaveFileSafely, SyncsTheNewFileBeforeTheRenameAndTheFolderAfterIt) {
  const Scratch scratch;
  const ScriptedFileCalls calls;
  ASSERT_TRUE(platform::WriteFileSafely(scratch.path("f"), std::vector<uint8_t>{1, 2}));
  const std::string folder = realFolder(scratch.root);
  EXPECT_EQ(script.synced, (std::vector<std::string>{folder + "/f.partial", folder}));
  EXPECT_EQ(bytesOf(scratch.path("f")), (std::vector<uint8_t>{1, 2}));
}

TEST(SaveFileSafely, ASyncThatFailsLeavesTheOldFileAndNoPartial) {
  const Scratch scratch;
  writeBytes(scratch.path("f"), {7});
  const ScriptedFileCalls calls;
  script.syncFails = true;
  EXPECT_FALSE(platform::WriteFileSafely(scratch.path("f"), std::vector<uint8_t>{1, 2}));
  EXPECT_EQ(bytesOf(scratch.path("f")), (std::vector<uint8_t>{7}));
  EXPECT_FALSE(fs::exists(scratch.path("f.partial")));
}

TEST(SaveFileSafely, ASaveThroughAChainOfLinksReplacesTheLastTargetAndKeepsTheLinks) {
  const Scratch scratch;
  fs::create_directory(scratch.path("real"));
  writeBytes(scratch.path("real/f"), {7});
  fs::create_symlink("real/f", scratch.path("second"));  // relative to the link's folder
  fs::create_symlink(scratch.path("second"), scratch.path("first"));
  ASSERT_TRUE(platform::WriteFileSafely(scratch.path("first"), std::vector<uint8_t>{1, 2}));
  EXPECT_TRUE(fs::is_symlink(scratch.path("first")));
  EXPECT_TRUE(fs::is_symlink(scratch.path("second")));
  EXPECT_EQ(bytesOf(scratch.path("real/f")), (std::vector<uint8_t>{1, 2}));
  EXPECT_FALSE(fs::exists(scratch.path("real/f.partial")));
  EXPECT_FALSE(fs::exists(scratch.path("first.partial")));
}

TEST(SaveFileSafely, ALinkThatLoopsIsNoPlaceToSave) {
  const Scratch scratch;
  fs::create_symlink(scratch.path("b"), scratch.path("a"));
  fs::create_symlink(scratch.path("a"), scratch.path("b"));
  EXPECT_FALSE(platform::WriteFileSafely(scratch.path("a"), std::vector<uint8_t>{1}));
  EXPECT_TRUE(fs::is_symlink(scratch.path("a")));
}

TEST(SaveFileSafely, TheNewFileKeepsTheOldFilesPermissions) {
  const Scratch scratch;
  writeBytes(scratch.path("f"), {7});
  fs::permissions(scratch.path("f"), fs::perms::owner_read | fs::perms::owner_write);
  ASSERT_TRUE(platform::WriteFileSafely(scratch.path("f"), std::vector<uint8_t>{1}));
  EXPECT_EQ(fs::status(scratch.path("f")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

// Each of the program's saves, run on a path: WriteSong and SaveParameterFile.
class EverySave : public SongBench, public ::testing::WithParamInterface<bool> {
 protected:
  bool song() const { return GetParam(); }
  bool save(const std::string& target) { return song() ? WriteSong(target) == 1 : SaveParameterFile(target) == 1; }
  // Something is saved: the song's first bytes are "MThd", a set-up's "VLhd".
  bool isSaved(const std::string& target) const {
    const auto bytes = bytesOf(target);
    return bytes.size() > 4 && std::string(bytes.begin(), bytes.begin() + 4) == (song() ? "MThd" : "VLhd");
  }
};

TEST_P(EverySave, GoesThroughTheSafeSaveWithItsTwoSyncs) {
  const ScriptedFileCalls calls;
  ASSERT_TRUE(save(path("x")));
  const std::string at = realFolder(folder);
  EXPECT_EQ(script.synced, (std::vector<std::string>{at + "/x.partial", at}));
  EXPECT_TRUE(isSaved(path("x")));
}

TEST_P(EverySave, OverASymbolicLinkWritesItsTargetAndKeepsTheLink) {
  writeBytes(path("target"), {1, 2, 3});
  fs::create_symlink("target", path("link"));
  ASSERT_TRUE(save(path("link")));
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(fs::read_symlink(path("link")), "target");
  EXPECT_TRUE(isSaved(path("target")));
  EXPECT_FALSE(fs::exists(path("target.partial")));
  EXPECT_FALSE(fs::exists(path("link.partial")));
}

TEST_P(EverySave, RemovesAPartialLeftByASaveThatWasCutShort) {
  writeBytes(path("x.partial"), {9, 9, 9});
  ASSERT_TRUE(save(path("x")));
  EXPECT_FALSE(fs::exists(path("x.partial")));
  EXPECT_TRUE(isSaved(path("x")));
}

TEST_P(EverySave, NeverFollowsALinkPlantedAsThePartial) {
  writeBytes(path("victim"), {4, 5, 6});
  fs::create_symlink(path("victim"), path("x.partial"));
  ASSERT_TRUE(save(path("x")));
  EXPECT_EQ(bytesOf(path("victim")), (std::vector<uint8_t>{4, 5, 6}));
  EXPECT_FALSE(fs::is_symlink(path("x")));
  EXPECT_FALSE(fs::exists(fs::symlink_status(path("x.partial"))));
  EXPECT_TRUE(isSaved(path("x")));
}

INSTANTIATE_TEST_SUITE_P(SongAndSetUp, EverySave, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& save) { return save.param ? "Song" : "SetUp"; });

// ---- velmora-render ----

TEST(RenderFiles, AFolderOrAFailingReadIsOneClearLine) {
  const Scratch scratch;
  RenderOptions options;
  std::string error;
  options.song = scratch.root.string();
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot read the MIDI file '" + options.song + "': Is a directory");
  options = {};
  error.clear();
  options.params = scratch.root.string();
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot read the parameter file '" + options.params + "': Is a directory");

  writeBytes(scratch.path("s.mid"), {'M', 'T', 'h', 'd'});
  const ScriptedFileCalls calls;
  script.readsBeforeFailure = 1;
  options = {};
  error.clear();
  options.song = scratch.path("s.mid");
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot read the MIDI file '" + options.song + "': Input/output error");
}

TEST(RenderFiles, AWavInAMissingFolderCannotBeWrittenAndIsNoDevicesFault) {
  const Scratch scratch;
  RenderOptions options;
  options.seconds = 1;
  options.wav = scratch.path("missing/x.wav");
  std::string error;
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot write the WAV file '" + options.wav + "'");
  EXPECT_FALSE(fs::exists(scratch.path("missing")));
}

TEST(RenderFiles, TheCheckOfAWavLeavesNoFileBehind) {
  const Scratch scratch;
  EXPECT_TRUE(platform::CanWriteFile(scratch.path("x.wav")));
  EXPECT_FALSE(fs::exists(scratch.path("x.wav")));
  EXPECT_FALSE(platform::CanWriteFile(scratch.root.string())) << "a folder";
}

TEST(RenderFiles, TheProgramGivenAFolderExitsWithStatus1AndSaysWhy) {
  const Scratch scratch;
  const std::string folder = scratch.root.string();
  auto finished = runRender(scratch.root.string(), "--song " + quoted(folder));
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.said, "velmora-render: cannot read the MIDI file '" + folder + "': Is a directory\n");
  finished = runRender(scratch.root.string(), "--params " + quoted(folder));
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.said, "velmora-render: cannot read the parameter file '" + folder + "': Is a directory\n");
}

TEST(RenderFiles, TheProgramGivenAWavInAMissingFolderExitsWithStatus1AndSaysWhy) {
  const Scratch scratch;
  const std::string wav = scratch.path("missing/x.wav");
  const auto finished = runRender(scratch.root.string(), "--seconds 1 --wav " + quoted(wav));
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.said, "velmora-render: cannot write the WAV file '" + wav + "'\n");
}

}  // namespace
