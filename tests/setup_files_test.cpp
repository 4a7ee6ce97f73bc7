#include "generator/setup_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "generator/boards.h"
#include "generator/byte_io.h"
#include "generator/raw_files.h"
#include "midi/live_devices.h"
#include "platform/file_io.h"
#include "song/song_tempo.h"
#include "support/generator_fixture.h"
#include "support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

class SetupFilesTest : public GeneratorBench {
 protected:
  std::string path(const char* name) const { return scratch.path(name); }
  static void write(const std::string& p, const std::vector<uint8_t>& bytes) {
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  static std::vector<uint8_t> words(std::initializer_list<uint16_t> values) {
    ByteWriter out;
    for (uint16_t v : values) out.put(v);
    return out.bytes();
  }
  ScratchFolder scratch{"files"};
};

uint32_t le32(const std::vector<uint8_t>& b, std::size_t at) {
  return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}
int16_t le16(const std::vector<uint8_t>& b, std::size_t at) { return static_cast<int16_t>(b[at] | b[at + 1] << 8); }

TEST_F(SetupFilesTest, AParameterFileOf128StepsIs4934BytesWithEveryFieldInItsPlace) {
  constexpr std::size_t N = 128;
  FunctionsFilters = 0x2AB;
  Overlap = 1;
  FunctionsRate = 17;
  LiveBank.noteWeights[5] = 11;
  LiveBank.voiceWeights[32] = 7;
  LiveBank.noteMin = 3;
  LiveBank.lengthMax = 99;
  LiveBank.channelMask = 0x8001;
  LiveBank.timeControl = 241;
  LiveBank.boardCurves[9][127] = 126;
  LiveBank.boardFlags = 0x205;
  SetSongTempo(600000);
  Seed = -7;
  IntervalMode = 1;
  FromNote = 61;
  IntervalMin = 36;
  IntervalMax = 96;
  Mirror = 1;
  const auto bytes = ParameterFileBytes();
  ASSERT_EQ(bytes.size(), 4934u);
  EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "VLhd");
  EXPECT_EQ(le32(bytes, 4), 128u);
  EXPECT_EQ(static_cast<int8_t>(bytes[8 + 5 * N]), 52) << "Min Notes, element 0";
  EXPECT_EQ(le32(bytes, 8 + 10 * N), 0x2ABu);
  EXPECT_EQ(le32(bytes, 12 + 10 * N), 1u);
  EXPECT_EQ(le32(bytes, 16 + 10 * N), 17u);
  EXPECT_EQ(le16(bytes, 20 + 10 * N + 2 * 5), 11);
  EXPECT_EQ(le16(bytes, 976 + 10 * N + 2 * 32), 7);
  EXPECT_EQ(le16(bytes, 1042 + 10 * N), 3) << "noteMin first of the bounds";
  EXPECT_EQ(le16(bytes, 1042 + 10 * N + 18), 99) << "lengthMax last";
  EXPECT_EQ(le16(bytes, 1062 + 10 * N), static_cast<int16_t>(0x8001));
  EXPECT_EQ(le16(bytes, 1064 + 10 * N), 241);
  EXPECT_EQ(le16(bytes, 1066 + 10 * N + 2 * (9 * 128 + 127)), 126);
  EXPECT_EQ(le32(bytes, 3626 + 10 * N), 0x205u);
  EXPECT_EQ(le32(bytes, 3630 + 10 * N), 600000u);
  EXPECT_EQ(le32(bytes, 3634 + 10 * N), 120u);
  EXPECT_EQ(static_cast<int32_t>(le32(bytes, 3638 + 10 * N)), -7);
  EXPECT_EQ(le32(bytes, 3642 + 10 * N), 1u);
  EXPECT_EQ(le16(bytes, 3646 + 10 * N), 61);
  EXPECT_EQ(le16(bytes, 3648 + 10 * N), 36);
  EXPECT_EQ(le16(bytes, 3650 + 10 * N), 96);
  EXPECT_EQ(le16(bytes, 3652 + 10 * N), 1);
}

TEST_F(SetupFilesTest, ASavedSetUpReadsBackToTheSameSetUp) {
  FunctionsFilters = 0;  // else the load's reset moves the bounds to the arrays' first elements
  LiveBank.velocityWeights[9] = 3;
  LiveBank.densityMax = 90;
  LiveBank.boardFlags = 1u << 7;
  FunctionArrays[3][50] = 77;
  Seed = 1234;
  SetSongTempo(750000);
  ASSERT_EQ(SaveParameterFile(path("a.vlm")), 1);
  const auto saved = ParameterFileBytes();
  LiveBank = Bank{};
  SetBankDefaults();
  InitFunctionArrays();
  Seed = 0;
  FunctionsFilters = 0xFFFFFFFFu;
  ASSERT_EQ(LoadParameterFile(nullptr, path("a.vlm")), 1);
  EXPECT_EQ(ParameterFileBytes(), saved);
  EXPECT_EQ(LiveBank.boardFlags.load(), 1u << 7) << "applied through RefreshBoards, no window open";
  EXPECT_EQ(GetTempo(TheClock), 750000u);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(SetupFilesTest, AFileOfAnotherKindShowsItsFirstFourBytesAndChangesNothing) {
  write(path("song.mid"), {'M', 'T', 'h', 'd', 0, 0, 0, 6});
  const auto before = ParameterFileBytes();
  EXPECT_EQ(LoadParameterFile(nullptr, path("song.mid")), 0);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "MThd");
  EXPECT_EQ(prompts.shown()[0].title, "Error");
  EXPECT_EQ(ParameterFileBytes(), before);
}

TEST_F(SetupFilesTest, AFileWithLength0StopsTheStepping) {
  ByteWriter out;
  out.putBytes(std::span<const uint8_t>(reinterpret_cast<const uint8_t*>("VLhd"), 4));
  out.put<uint32_t>(0);
  write(path("zero.vlm"), out.bytes());
  ASSERT_EQ(LoadParameterFile(nullptr, path("zero.vlm")), 1);
  EXPECT_EQ(FunctionLength.load(), 0);
  GeneratorToggle();
  passes(50);
  EXPECT_EQ(FunctionIndex.load(), 0u);
}

TEST_F(SetupFilesTest, AHugeClaimedLengthGetsTheMemoryMessageAndChangesNothing) {
  ByteWriter out;
  out.putBytes(std::span<const uint8_t>(reinterpret_cast<const uint8_t*>("VLhd"), 4));
  out.put<uint32_t>(0xFFFFFFF0u);
  write(path("huge.vlm"), out.bytes());
  const auto before = ParameterFileBytes();
  EXPECT_EQ(LoadParameterFile(nullptr, path("huge.vlm")), 0);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Not enough memory. Try with another length.");
  EXPECT_EQ(ParameterFileBytes(), before);
  EXPECT_EQ(TheClock->flags.load() & SYNC_IN_TICK, 0u) << "the clock is not left held";
}

TEST_F(SetupFilesTest, AShortFileKeepsTheFieldsItDoesNotReach) {
  auto bytes = ParameterFileBytes();
  Seed = 99;
  LiveBank.noteWeights[0] = 5;      // within the part that stays
  bytes.resize(8 + 10 * 128 + 12);  // up to Overlap
  write(path("short.vlm"), bytes);
  ASSERT_EQ(LoadParameterFile(nullptr, path("short.vlm")), 1);
  EXPECT_EQ(Seed.load(), 99);
  EXPECT_EQ(LiveBank.noteWeights[0].load(), 5);
}

TEST_F(SetupFilesTest, LoadingWithThePanelClosedRepairsSumsAndChannelsButNotTimeBase) {
  LiveBank.timeControl = 300;
  LiveBank.channelMask = 0b110;
  LiveBank.noteMin = 60;
  LiveBank.noteMax = 61;
  ASSERT_EQ(SaveParameterFile(path("b.vlm")), 1);
  SetBankDefaults();
  RefreshControlPanel(nullptr);
  const uint32_t timeBase = TimeBase;
  ASSERT_EQ(LoadParameterFile(nullptr, path("b.vlm")), 1);
  EXPECT_EQ(ChannelCount.load(), 2);
  EXPECT_EQ(ChannelWeights[1].load(), 1);
  EXPECT_EQ(NoteSum.load(), 128);
  EXPECT_EQ(TimeBase.load(), timeBase) << "TimeBase follows only the panel's bar";
}

TEST_F(SetupFilesTest, LoadingAnotherSeedChangesTheSequenceAtOnce) {
  FunctionsFilters = 0;  // no stepping: the chords depend on the seed alone
  // The chords the generator draws from a reset, as note-on words.
  const auto chords = [&](int count) {
    devices.clearSent();
    for (int i = 0; i < count; ++i) {
      TheClock->now = NextChordTick.load();
      GeneratorTick();
    }
    std::vector<uint32_t> words;
    for (const auto& n : noteOns()) words.push_back(n.word);
    return words;
  };
  Generating = 1;
  Seed = 9;
  GeneratorReset();
  const auto ofSeed9 = chords(20);
  ASSERT_EQ(SaveParameterFile(path("s.vlm")), 1);
  Seed = 5;
  GeneratorReset();
  const auto ofSeed5 = chords(20);
  ASSERT_NE(ofSeed5, ofSeed9) << "the two seeds must draw apart for this test to tell";
  GeneratorReset();
  chords(5);  // seed 5's sequence is under way when the file comes in
  ASSERT_EQ(LoadParameterFile(nullptr, path("s.vlm")), 1);
  EXPECT_EQ(Seed.load(), 9);
  EXPECT_EQ(chords(20), ofSeed9) << "the next chord is the first of seed 9";
  Generating = 0;
}

TEST_F(SetupFilesTest, AFailedSaveLeavesTheOldFileAndSaysSo) {
  ASSERT_EQ(SaveParameterFile(path("keep.vlm")), 1);
  const auto old = platform::ReadWholeFile(path("keep.vlm"));
  fs::permissions(scratch.root, fs::perms::owner_read | fs::perms::owner_exec);
  const bool canWriteAnyway = ::geteuid() == 0;  // root writes through permissions
  if (!canWriteAnyway) {
    Seed = 42;
    EXPECT_EQ(SaveParameterFile(path("keep.vlm")), 0);
    EXPECT_EQ(platform::ReadWholeFile(path("keep.vlm")), old);
    ASSERT_EQ(prompts.shown().size(), 1u);
  }
  fs::permissions(scratch.root, fs::perms::owner_all);
  EXPECT_EQ(SaveParameterFile((scratch.root / "no-such-folder" / "x.vlm").string()), 0);
  EXPECT_NE(prompts.shown().back().text.find("Could not write"), std::string::npos);
}

TEST_F(SetupFilesTest, TheDialogsOfferVelmoraFilesAndRememberTheFolder) {
  prompts.planFile(path("c.vlm"));
  ASSERT_EQ(WriteParameterFile(nullptr), 1);
  prompts.planFile(path("c.vlm"));
  ASSERT_EQ(ReadParameterFile(nullptr), 1);
  const auto& open = prompts.shown()[1].dialog;
  ASSERT_EQ(open.filters.size(), 2u);
  EXPECT_EQ(open.filters[0].label, "Velmora Files(*.vlm)");
  EXPECT_EQ(open.filters[1].label, "All files (*.*)");
  EXPECT_TRUE(open.mustExist);
  EXPECT_EQ(open.initialDirectory, scratch.root.string());
  EXPECT_TRUE(prompts.shown()[0].dialog.askToOverwrite);
  prompts.planFile(std::nullopt);
  EXPECT_EQ(ReadParameterFile(nullptr), 0) << "cancel";
}

TEST_F(SetupFilesTest, ABankFileIsAParameterFileAndReadsIntoItsSlot) {
  ASSERT_EQ(SaveParameterFile(path("bank.vlm")), 1);
  prompts.planFile(path("bank.vlm"));
  ASSERT_EQ(ReadBankFile(nullptr, 7), 1);
  ASSERT_NE(BankSlots[7], nullptr);
  const Bank& bank = *BankSlots[7];
  EXPECT_EQ(bank.functionLength, 128u);
  EXPECT_EQ(bank.functions[5][0], 52);
  EXPECT_EQ(bank.tempo, SongTempo());
  EXPECT_EQ(bank.functionsFilters, FunctionsFilters.load());
  EXPECT_EQ(BankFileBytes(bank), ParameterFileBytes()) << "the two forms are the same bytes";
  BankSlots[7].reset();
}

TEST_F(SetupFilesTest, AWrongBankFileKeepsTheSlot) {
  ASSERT_EQ(AllocateBank(nullptr, 3, 4), 1);
  Bank* kept = BankSlots[3].get();
  write(path("x.bin"), {1, 2, 3, 4, 5});
  prompts.planFile(path("x.bin"));
  EXPECT_EQ(ReadBankFile(nullptr, 3), 0);
  EXPECT_EQ(BankSlots[3].get(), kept);
  BankSlots[3].reset();
}

TEST_F(SetupFilesTest, ABankThatCannotBeHadShowsItsMessageAndLeavesTheSlotEmpty) {
  ASSERT_EQ(AllocateBank(nullptr, 4, 4), 1);
  EXPECT_EQ(AllocateBank(nullptr, 4, 0xFFFFFFFFu), 0);
  EXPECT_EQ(BankSlots[4], nullptr);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text,
            "Not enough memory to create a new bank!  Close one or more applications and try again");
  EXPECT_EQ(AllocateBank(nullptr, BankSlotCount, 4), 0);
}

// ---- raw curve files ----

TEST_F(SetupFilesTest, ARawFileOfExactlyNValuesShowsNoMessage) {
  write(path("f.bin"), words({1, 2, 3, 4}));
  std::array<int8_t, 4> curve{};
  ASSERT_EQ(LoadFunctionFile(path("f.bin"), curve), 1);
  EXPECT_EQ(curve, (std::array<int8_t, 4>{1, 2, 3, 4}));
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(SetupFilesTest, ARawFileOfNPlus3ValuesTakesTheFirstNAndSays3) {
  write(path("f.bin"), words({1, 2, 3, 4, 5, 6, 7}));
  std::array<int8_t, 4> curve{};
  ASSERT_EQ(LoadFunctionFile(path("f.bin"), curve), 1);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text,
            "3 shorts were not loaded from file due to the length of the function. You could change function "
            "length to reload the entire file.");
}

TEST_F(SetupFilesTest, AShortRawFileRepeatsItsLastValueAndSaysBothSizes) {
  std::vector<uint16_t> ten{10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
  ByteWriter out;
  for (uint16_t v : ten) out.put(v);
  write(path("f.bin"), out.bytes());
  std::array<int8_t, 128> curve{};
  ASSERT_EQ(LoadFunctionFile(path("f.bin"), curve), 1);
  for (int i = 10; i < 128; ++i) ASSERT_EQ(curve[i], 19);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text,
            "Data size: 10.\nFunction length: 128.\nAs file size do not match function length the last data read "
            "was copied until the end of the function array.");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_OK);
}

TEST_F(SetupFilesTest, OutOfRangeValuesAreClippedDifferentlyForFunctionsAndTables) {
  write(path("v.bin"), words({200, 0x0141, 5}));
  std::array<int8_t, 3> curve{};
  ASSERT_EQ(LoadFunctionFile(path("v.bin"), curve), 1);
  EXPECT_EQ(curve, (std::array<int8_t, 3>{0, 65, 5})) << "200 clips to 0; the high byte of 0x0141 is dropped";
  EXPECT_EQ(prompts.shown().back().text, "Clipped values: 1");
  std::array<Weight, 3> table;
  ASSERT_EQ(LoadDistributionFile(path("v.bin"), table), 1);
  EXPECT_EQ(table[0].load(), 127);
  EXPECT_EQ(table[1].load(), 127);
  EXPECT_EQ(table[2].load(), 5);
  EXPECT_EQ(prompts.shown().back().text, "Clipped values: 2");
}

TEST_F(SetupFilesTest, AShortFileWithBadValuesSaysTheLengthThenTheClipping) {
  write(path("v.bin"), words({300}));
  std::array<Weight, 3> table;
  ASSERT_EQ(LoadDistributionFile(path("v.bin"), table), 1);
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_EQ(prompts.shown()[0].text.rfind("Data size: 1.", 0), 0u);
  EXPECT_EQ(prompts.shown()[1].text, "Clipped values: 3");
}

TEST_F(SetupFilesTest, AnEmptyRawFileFillsWithZero) {
  write(path("e.bin"), {});
  std::array<int8_t, 4> curve{9, 9, 9, 9};
  ASSERT_EQ(LoadFunctionFile(path("e.bin"), curve), 1);
  EXPECT_EQ(curve, (std::array<int8_t, 4>{0, 0, 0, 0}));
}

TEST_F(SetupFilesTest, ARawFileThatCannotBeOpenedSaysSo) {
  std::array<int8_t, 4> curve{};
  EXPECT_EQ(LoadFunctionFile(path("missing.bin"), curve), 0);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Could not open file.");
}

TEST_F(SetupFilesTest, ASavedFunctionComesBackUnchanged) {
  std::array<int8_t, 5> curve{0, 127, 64, 3, 100};
  prompts.planFile(path("s.bin"));
  ASSERT_EQ(WriteFunctionFile(nullptr, curve), 1);
  EXPECT_EQ(platform::ReadWholeFile(path("s.bin")).bytes.size(), 10u);
  std::array<int8_t, 5> back{};
  ASSERT_EQ(LoadFunctionFile(path("s.bin"), back), 1);
  EXPECT_EQ(back, curve);
  EXPECT_EQ(prompts.shown()[0].dialog.filters[0].label, "Fuctions Files (*.bin)");
}

TEST_F(SetupFilesTest, ASavedTableComesBackUnchanged) {
  const std::array<int16_t, 3> table{1, 127, 0};
  prompts.planFile(path("t.bin"));
  ASSERT_EQ(WriteDistributionFile(nullptr, table), 1);
  std::array<Weight, 3> back;
  ASSERT_EQ(LoadDistributionFile(path("t.bin"), back), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(back[i].load(), table[i]);
}

}  // namespace
