#include "generator/banks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <utility>

#include "generator/boards.h"
#include "generator/functions_window.h"
#include "song/song_tempo.h"
#include "support/generator_fixture.h"
#include "support/scratch_folder.h"
#include "support/song_fixture.h"
#include "support/song_views.h"

namespace {

using platform::IDCANCEL;
using platform::IDNO;
using platform::IDYES;
using Kind = platform::ScriptedPrompts::Kind;

class BanksTest : public GeneratorBench {
 protected:
  void SetUp() override {
    GeneratorBench::SetUp();
    ControlBar = &bar;
    ClearSongTracks();
    for (auto& slot : BankSlots) slot.reset();
  }
  void TearDown() override {
    for (auto& slot : BankSlots) slot.reset();
    Generating = 0;
    ControlBar = nullptr;
    GeneratorBench::TearDown();
  }

  // Every table, bound, board, function and setting moved away from where it was.
  static void changeEverything() {
    for (int d = 0; d < DistributionCount; ++d) {
      for (Weight& w : DistributionWeights(static_cast<Distribution>(d))) w = static_cast<int16_t>(w.load() + 3);
    }
    LiveBank.noteMin = 10;
    LiveBank.velocityMax = 90;
    LiveBank.voicesMax = 5;
    LiveBank.densityMin = 7;
    LiveBank.lengthMax = 44;
    LiveBank.channelMask = 0x0F0F;
    LiveBank.timeControl = 333;
    for (auto& curve : LiveBank.boardCurves) curve[64] = 1;
    LiveBank.boardFlags = 0x3FF;
    for (auto& array : FunctionArrays) {
      for (int i = 0; i < FunctionLength; ++i) array[i] = static_cast<int8_t>(i % 50);
    }
    FunctionsFilters = 0x155;
    Overlap = 1;
    FunctionsRate = 9;
    Seed = 4321;
    IntervalMode = 1;
    FromNote = 30;
    IntervalMin = 20;
    IntervalMax = 100;
    Mirror = 1;
    SetSongTempo(400000);
    SetResolution(TheClock, 480);
    SongResolution = 480;
  }

  std::vector<uint8_t> fileBytes(const std::string& path) const {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  // The note-ons of a run of the generator from where it stands, with their
  // ticks counted from the run's first pass.
  std::vector<std::pair<uint32_t, uint32_t>> run(int passesToRun) {
    devices.clearSent();
    const uint32_t start = timers.timeMs() / 10;
    GeneratorToggle();
    passes(passesToRun);
    GeneratorToggle();
    passes(200);  // the last notes end before the next run
    std::vector<std::pair<uint32_t, uint32_t>> ons;
    for (const Note& n : noteOns()) ons.emplace_back(n.tick - start, n.word);
    return ons;
  }

  RecordingControlBar bar;
  BanksList list;
  ScratchFolder scratch{"banks"};
};

TEST_F(BanksTest, EveryEmptySlotShowsItsNumberRightAlignedAndTheFirstIsSelected) {
  EXPECT_EQ(list.lines[0], "  0   <empty>");
  EXPECT_EQ(list.lines[7], "  7   <empty>");
  EXPECT_EQ(list.lines[42], " 42   <empty>");
  EXPECT_EQ(list.lines[255], "255   <empty>");
  EXPECT_EQ(list.selected, 0u);
}

TEST_F(BanksTest, ReceiveOnAnEmptySlotStoresTheSetUpAndShowsTheNumberTwice) {
  list.selected = 7;
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_RECEIVE), AfterBankCommand::Reselect);
  ASSERT_NE(BankSlots[7], nullptr);
  EXPECT_EQ(list.lines[7], "  7   <bank 7>");
  EXPECT_EQ(BankFileBytes(*BankSlots[7]), ParameterFileBytes()) << "every field of the live set-up";
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(BanksTest, ReceiveAgainWithYesKeepsOneBankOfTheNewSetUpAndTheLineAsItWas) {
  list.selected = 12;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  NameBank(list, "strings", true);
  Seed = 77;
  prompts.planAnswer(IDYES);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_RECEIVE), AfterBankCommand::Reselect);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Overwrite existing bank?");
  EXPECT_EQ(prompts.shown()[0].title, "Velmoras");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_YESNOCANCEL | platform::MB_ICONQUESTION);
  EXPECT_EQ(BankSlots[12]->seed, 77u);
  EXPECT_EQ(list.lines[12], " 12   strings") << "an overwritten slot keeps the line it had";
}

TEST_F(BanksTest, ReceiveAnsweredNoOrCancelKeepsTheStoredBank) {
  list.selected = 2;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  const auto stored = BankFileBytes(*BankSlots[2]);
  Seed = 5;
  for (const int answer : {IDNO, IDCANCEL}) {
    prompts.planAnswer(answer);
    EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_RECEIVE), AfterBankCommand::Reselect);
    EXPECT_EQ(BankFileBytes(*BankSlots[2]), stored);
  }
}

TEST_F(BanksTest, AReceiveThatCannotHaveItsMemoryHasLostTheOldBankAndIsNotReselected) {
  list.selected = 4;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  const int32_t length = FunctionLength;
  FunctionLength = MaxFunctionLength + 1;  // more than a bank may hold: the allocation fails
  prompts.planAnswer(IDYES);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_RECEIVE), AfterBankCommand::Leave);
  FunctionLength = length;
  EXPECT_EQ(BankSlots[4], nullptr);
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_EQ(prompts.shown()[1].text,
            "Not enough memory to create a new bank!  Close one or more applications and try again");
  EXPECT_EQ(prompts.shown()[1].title, "Velmora");
  EXPECT_EQ(list.lines[4], "  4   <bank 4>") << "the line is not told";
}

TEST_F(BanksTest, SendOnAnEmptySlotChangesNothing) {
  const auto before = ParameterFileBytes();
  list.selected = 9;
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_SEND), AfterBankCommand::Reselect);
  EXPECT_EQ(ParameterFileBytes(), before);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(BanksTest, ReceiveSaveLoadAndSendRestoreEveryFieldByteForByte) {
  FunctionsFilters = 0x3FF;
  PendingBoardFlags = 0x21;
  RefreshBoards(nullptr);
  Seed = 2024;
  SetSongTempo(545454);
  GeneratorReset();  // the bounds stand at the functions' first samples, as a Send leaves them
  const auto original = ParameterFileBytes();
  const std::string file = scratch.path("bank3.vlm");

  list.selected = 3;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  prompts.planFile(file);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_SAVE), AfterBankCommand::Leave);
  EXPECT_EQ(fileBytes(file), original) << "a bank file is the parameter file's bytes";
  prompts.planAnswer(IDYES);
  BankCommand(nullptr, list, ID_BANK_DELETE);
  ASSERT_EQ(BankSlots[3], nullptr);
  prompts.planFile(file);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_LOAD), AfterBankCommand::Reselect);
  EXPECT_EQ(list.lines[3], "  3   <bank 3>");

  changeEverything();
  ASSERT_NE(ParameterFileBytes(), original);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_SEND), AfterBankCommand::Reselect);
  EXPECT_EQ(ParameterFileBytes(), original);
  EXPECT_EQ(LiveBank.boardFlags.load(), 0x21u) << "through PendingBoardFlags and RefreshBoards";
  EXPECT_EQ(prompts.unplanned(), 0);
}

TEST_F(BanksTest, ABankOfLength200SentAtLength128GrowsEveryArrayAndTheViewFollows) {
  ASSERT_EQ(ResizeFunctions(nullptr, 200), 1);
  FunctionLength = 200;
  for (auto& array : FunctionArrays) array[199] = 99;
  list.selected = 1;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  ASSERT_EQ(ResizeFunctions(nullptr, 128), 1);
  FunctionLength = 128;
  platform::RecordingView functions;
  ::FunctionsWindow = &functions;
  FunctionsOpen = 1;
  GraphScroll = 100;

  BankCommand(nullptr, list, ID_BANK_SEND);
  EXPECT_EQ(FunctionLength.load(), 200);
  for (int f = 0; f < FunctionCount; ++f) {
    EXPECT_EQ(FunctionArrays[f][199], 99) << "function " << f;
    EXPECT_EQ(WorkingFunctions[f].load(), FunctionArrays[f].get());
  }
  EXPECT_EQ(ScratchCurve[199], ScratchCurve[127]) << "the scratch curve grows too";
  EXPECT_EQ(GraphScrollMaximum(), 199);
  EXPECT_EQ(functions.refreshes, 1);
  FunctionsOpen = 0;
  ::FunctionsWindow = nullptr;
}

TEST_F(BanksTest, SendWhileGeneratingGoesOnWithTheStepBackAtSample0) {
  FunctionsRate = 1;
  list.selected = 0;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  GeneratorToggle();
  passes(60);
  ASSERT_GT(FunctionIndex.load(), 10u);
  BankCommand(nullptr, list, ID_BANK_SEND);
  EXPECT_EQ(FunctionIndex.load(), 0u);
  EXPECT_EQ(TheClock->flags.load() & SYNC_IN_TICK, 0u) << "the clock is not left held";
  EXPECT_EQ(Generating.load(), 1u);
  devices.clearSent();
  passes(60);
  EXPECT_FALSE(noteOns().empty()) << "the generator goes on without a stop";
  EXPECT_GT(FunctionIndex.load(), 10u);
}

TEST_F(BanksTest, ASendWhoseArraysCannotBeHadLeavesTheSetUpAsItWas) {
  BankSlots[6] = NewBank(4);
  BankSlots[6]->functionLength = static_cast<uint32_t>(MaxFunctionLength) + 1;  // past what may be had
  BankSlots[6]->seed = 999;
  const auto before = ParameterFileBytes();
  list.selected = 6;
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_SEND), AfterBankCommand::Reselect);
  EXPECT_EQ(ParameterFileBytes(), before);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Not enough memory. Try with another length.");
  EXPECT_EQ(TheClock->flags.load() & SYNC_IN_TICK, 0u);
  for (int f = 0; f < FunctionCount; ++f) EXPECT_EQ(WorkingFunctions[f].load(), FunctionArrays[f].get());
}

TEST_F(BanksTest, SendSetsTheTempoWithItsFractionAndTheResolutionWithoutRescalingTheSong) {
  list.selected = 5;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  BankSlots[5]->tempo = 615384;  // 97.5 beats a minute
  BankSlots[5]->resolution = 96;
  SongResolution = 120;
  TicksPerBar = 480;
  BankCommand(nullptr, list, ID_BANK_SEND);
  EXPECT_EQ(GetTempo(TheClock), 615384u);
  EXPECT_NEAR(TempoFraction, 60000000.0 / 615384 - 97, 1e-9);
  EXPECT_NEAR(bar.upDownTempo, 60000000.0 / 615384, 1e-9) << "the control shows 97, the field 97.50";
  EXPECT_EQ(SongResolution.load(), 96u);
  EXPECT_EQ(GetResolution(TheClock), 96u);
  EXPECT_EQ(TicksPerBar.load(), 480u) << "not recomputed";
}

TEST_F(BanksTest, SaveBankOnAnEmptySlotSaysSoAndOpensNoFileDialog) {
  list.selected = 8;
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_SAVE), AfterBankCommand::Leave);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].kind, Kind::MessageBox);
  EXPECT_EQ(prompts.shown()[0].text, "Attempting to save a blank bank");
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_ICONSTOP);
}

TEST_F(BanksTest, LoadBankCancelledOnAnEmptySlotLeavesItEmpty) {
  list.selected = 10;
  prompts.planFile(std::nullopt);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_LOAD), AfterBankCommand::Reselect);
  EXPECT_EQ(list.lines[10], " 10   <empty>");
  EXPECT_EQ(BankSlots[10], nullptr);
}

TEST_F(BanksTest, LoadBankCancelledOverAFilledSlotShowsEmptyWhileSendStillWorks) {
  list.selected = 11;
  Seed = 31;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  prompts.planAnswer(IDYES);
  prompts.planFile(std::nullopt);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_LOAD), AfterBankCommand::Reselect);
  EXPECT_EQ(list.lines[11], " 11   <empty>");
  ASSERT_NE(BankSlots[11], nullptr) << "the line says what is not so";
  Seed = 1;
  BankCommand(nullptr, list, ID_BANK_SEND);
  EXPECT_EQ(Seed.load(), 31);
}

TEST_F(BanksTest, LoadBankAnsweredNoOverAFilledSlotEndsAtOnce) {
  list.selected = 13;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  prompts.planAnswer(IDNO);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_LOAD), AfterBankCommand::Leave);
  EXPECT_EQ(list.lines[13], " 13   <bank 13>");
  EXPECT_EQ(prompts.shown().size(), 1u) << "no file dialog";
}

TEST_F(BanksTest, ABankIsReadWithTheLengthItWasSavedWith) {
  ASSERT_EQ(ResizeFunctions(nullptr, 64), 1);
  FunctionLength = 64;
  const std::string file = scratch.path("short.vlm");
  ASSERT_EQ(SaveParameterFile(file), 1);
  ASSERT_EQ(ResizeFunctions(nullptr, 128), 1);
  FunctionLength = 128;
  list.selected = 20;
  prompts.planFile(file);
  BankCommand(nullptr, list, ID_BANK_LOAD);
  EXPECT_EQ(BankSlots[20]->functionLength, 64u);
}

TEST_F(BanksTest, DeleteEmptiesAFilledSlotOnlyAfterYes) {
  list.selected = 14;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  prompts.planAnswer(IDNO);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_DELETE), AfterBankCommand::Reselect);
  EXPECT_NE(BankSlots[14], nullptr);
  prompts.planAnswer(IDYES);
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_DELETE), AfterBankCommand::Reselect);
  EXPECT_EQ(BankSlots[14], nullptr);
  EXPECT_EQ(list.lines[14], " 14   <empty>");
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_EQ(prompts.shown()[1].text, "Delete bank?");
  EXPECT_EQ(prompts.shown()[1].title, "Velmoras");
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_DELETE), AfterBankCommand::Reselect);
  EXPECT_EQ(prompts.shown().size(), 2u) << "an empty slot is not asked about";
}

TEST_F(BanksTest, ANameReplacesTheLineCutTo49CharactersOnlyWhenChanged) {
  list.selected = 100;
  NameBank(list, "pads", false);
  EXPECT_EQ(list.lines[100], "100   <empty>");
  NameBank(list, std::string(60, 'x'), true);
  EXPECT_EQ(list.lines[100], "100   " + std::string(49, 'x'));
  EXPECT_EQ(BankLine(100), "100   <empty>") << "the name is in no record";
}

TEST_F(BanksTest, AListBuiltAgainShowsEveryFilledSlotAsABankAndForgetsTheNames) {
  list.selected = 250;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  NameBank(list, "lead", true);
  const BanksList reopened;
  EXPECT_EQ(reopened.lines[250], "250   <bank 250>");
  EXPECT_EQ(reopened.lines[249], "249   <empty>");
  EXPECT_EQ(reopened.selected, 0u);
}

TEST_F(BanksTest, ACommandOutsideTheFiveDoesNothing) {
  const auto before = ParameterFileBytes();
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_NAME), AfterBankCommand::Leave);
  list.selected = BankSlotCount;
  EXPECT_EQ(BankCommand(nullptr, list, ID_BANK_RECEIVE), AfterBankCommand::Leave);
  EXPECT_EQ(ParameterFileBytes(), before);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(BanksTest, ASetUpSentBackAfterEveryTableChangedPlaysAsTheOriginalDid) {
  FunctionsRate = 3;
  Seed = 808;
  list.selected = 3;
  BankCommand(nullptr, list, ID_BANK_RECEIVE);
  const auto original = run(1000);
  ASSERT_GT(original.size(), 20u) << "enough chords to tell two set-ups apart";

  changeEverything();
  ASSERT_NE(run(1000), original) << "the changed set-up plays otherwise";
  BankCommand(nullptr, list, ID_BANK_SEND);
  EXPECT_EQ(run(1000), original);
}

TEST_F(BanksTest, AParameterFileLoadSetsTheTempoFractionAsASendDoes) {
  const std::string file = scratch.path("tempo.vlm");
  SetSongTempo(615384);
  ASSERT_EQ(SaveParameterFile(file), 1);
  SetSongTempo(500000);
  TempoFraction = 0;
  ASSERT_EQ(LoadParameterFile(nullptr, file), 1);
  EXPECT_NEAR(TempoFraction, 60000000.0 / 615384 - 97, 1e-9);
}

}  // namespace
