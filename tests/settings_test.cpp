#include "live/settings.h"

#include <gtest/gtest.h>

#include <regex>

#include "generator/bank.h"
#include "live/product_info.h"
#include "platform/prompts.h"
#include "platform/settings_store.h"
#include "song/song_store.h"

using platform::SettingsLevel;
using platform::SettingsType;
using platform::SettingsValue;

namespace {

const std::vector<std::string> TextNames = {"Midi Files Dir", "Velmora Files Dir", "Distribution Files Dir",
                                            "Function Files Dir"};
const std::vector<std::string> ByteNames = {"Key first beat",         "Velocity first beat",  "Channel first beat",
                                            "Key other beats",        "Velocity other beats", "Channel other beats",
                                            "Metronome note Duration"};
const std::vector<std::string> WordNames = {"In Device",      "Out Device",      "Numerator",
                                            "Denominator",    "Metronome count", "Metronome record",
                                            "Metronome play", "Midi Thru",       "Functions Filters"};

class Settings : public ::testing::Test {
 protected:
  void SetUp() override {
    platform::installSettingsStore(&store);
    MidiFilesDir = VelmoraFilesDir = DistributionFilesDir = FunctionFilesDir = "left over";
    FunctionsFilters = 0x5;
  }
  void TearDown() override {
    platform::installSettingsStore(nullptr);
    MidiFilesDir.clear();
    VelmoraFilesDir.clear();
    DistributionFilesDir.clear();
    FunctionFilesDir.clear();
    FunctionsFilters = 0xFFFFFFFFu;
  }

  static std::string key() { return SettingsKeyPath() + "\\Settings"; }
  std::optional<SettingsValue> at(SettingsLevel level, const std::string& name) const {
    return store.query(level, key(), name);
  }
  void put(SettingsLevel level, const std::string& name, const SettingsValue& value) {
    store.createKey(level, key());
    store.set(level, key(), name, value);
  }
  SettingsRecord load() {
    SettingsRecord record;
    record.numerator = 77;  // the load fills every field
    LoadSettings(record);
    return record;
  }

  platform::MemorySettingsStore store;
};

void expectDefaults(const SettingsRecord& r) {
  EXPECT_EQ(r.inDevice, 0u);
  EXPECT_EQ(r.outDevice, 0u);
  EXPECT_EQ(r.numerator, 1u);
  EXPECT_EQ(r.denominator, 4u);
  EXPECT_EQ(r.firstKey, 42);
  EXPECT_EQ(r.firstVelocity, 100);
  EXPECT_EQ(r.firstChannel, 9);
  EXPECT_EQ(r.otherKey, 42);
  EXPECT_EQ(r.otherVelocity, 72);
  EXPECT_EQ(r.otherChannel, 9);
  EXPECT_EQ(r.noteDuration, 2);
  EXPECT_EQ(r.metronomeRecord, 1u);
  EXPECT_EQ(r.metronomePlay, 0u);
  EXPECT_EQ(r.metronomeCount, 1u);
  EXPECT_EQ(r.midiThru, 1u);
}

TEST(ProductInfo, TheKeyPathIsTheMakerTheProductAndItsVersion) {
  EXPECT_EQ(ProductName(), "Velmora");
  EXPECT_TRUE(std::regex_match(ProductVersion(), std::regex(R"(\d+\.\d+\.\d+)"))) << ProductVersion();
  EXPECT_EQ(SettingsKeyPath(), "Software\\NQuillon\\Velmora\\" + ProductVersion());
  EXPECT_EQ(LegalCopyright(), "Copyright (C) 2026 The Velmora developers");
}

TEST(ProductInfo, ABuildWithoutASpecialBuildNameHasAnEmptyOne) { EXPECT_EQ(SpecialBuild(), ""); }

TEST_F(Settings, ACleanStoreGetsEveryValueAtBothLevelsAndTheDefaultsApply) {
  const SettingsRecord r = load();
  expectDefaults(r);
  EXPECT_EQ(MidiFilesDir, "");
  EXPECT_EQ(VelmoraFilesDir, "");
  EXPECT_EQ(DistributionFilesDir, "");
  EXPECT_EQ(FunctionFilesDir, "");
  EXPECT_EQ(FunctionsFilters.load(), 0xFFFFFFFFu);
  for (SettingsLevel level : {SettingsLevel::User, SettingsLevel::Machine}) {
    EXPECT_EQ(store.valueCount(level), 20u);
    EXPECT_EQ(at(level, "Numerator"), SettingsValue::word(1));
    EXPECT_EQ(at(level, "Velocity other beats"), SettingsValue::byte(72));
    EXPECT_EQ(at(level, "Functions Filters"), SettingsValue::word(0xFFFFFFFFu));
    EXPECT_EQ(at(level, "Midi Files Dir"), SettingsValue::text(""));
  }
}

TEST_F(Settings, NumbersAreStoredInTheirSizesAndTextsWithoutATerminator) {
  load();
  for (const auto& name : TextNames) {
    const auto value = at(SettingsLevel::User, name);
    ASSERT_TRUE(value) << name;
    EXPECT_EQ(value->type, SettingsType::Text) << name;
  }
  for (const auto& name : ByteNames) {
    const auto value = at(SettingsLevel::User, name);
    ASSERT_TRUE(value) << name;
    EXPECT_EQ(value->type, SettingsType::Binary) << name;
    EXPECT_EQ(value->data.size(), 1u) << name;
  }
  for (const auto& name : WordNames) {
    const auto value = at(SettingsLevel::User, name);
    ASSERT_TRUE(value) << name;
    EXPECT_EQ(value->type, SettingsType::Binary) << name;
    EXPECT_EQ(value->data.size(), 4u) << name;
  }
  MidiFilesDir = "/home/me";
  SaveSettings(SettingsRecord{});
  EXPECT_EQ(at(SettingsLevel::User, "Midi Files Dir")->data.size(), 8u);
}

TEST_F(Settings, AValueOnlyAtMachineLevelIsCopiedToTheUserAndUsed) {
  put(SettingsLevel::Machine, "Numerator", SettingsValue::word(3));
  put(SettingsLevel::Machine, "Function Files Dir", SettingsValue::text("/opt/curves"));
  const SettingsRecord r = load();
  EXPECT_EQ(r.numerator, 3u);
  EXPECT_EQ(FunctionFilesDir, "/opt/curves");
  EXPECT_EQ(at(SettingsLevel::User, "Numerator"), SettingsValue::word(3));
  EXPECT_EQ(at(SettingsLevel::User, "Function Files Dir"), SettingsValue::text("/opt/curves"));
}

TEST_F(Settings, AUserValueIsNotCopiedUpToTheMachine) {
  put(SettingsLevel::User, "Denominator", SettingsValue::word(8));
  const SettingsRecord r = load();
  EXPECT_EQ(r.denominator, 8u);
  EXPECT_FALSE(at(SettingsLevel::Machine, "Denominator"));
  EXPECT_EQ(store.valueCount(SettingsLevel::Machine), 19u);
}

TEST_F(Settings, TheUserValueWinsOverTheMachines) {
  put(SettingsLevel::User, "Key first beat", SettingsValue::byte(60));
  put(SettingsLevel::Machine, "Key first beat", SettingsValue::byte(36));
  EXPECT_EQ(load().firstKey, 60);
  EXPECT_EQ(at(SettingsLevel::Machine, "Key first beat"), SettingsValue::byte(36));
}

TEST_F(Settings, ValuesAreTakenAsTheyStandWithoutRangeChecks) {
  put(SettingsLevel::User, "Metronome count", SettingsValue::word(17));
  put(SettingsLevel::User, "Channel first beat", SettingsValue::byte(200));
  const SettingsRecord r = load();
  EXPECT_EQ(r.metronomeCount, 17u);
  EXPECT_EQ(r.firstChannel, 200);
}

TEST_F(Settings, AWronglySizedValueCountsAsMissingAndIsRepaired) {
  const uint8_t two[2] = {7, 0};
  put(SettingsLevel::User, "In Device", SettingsValue::binary(two));
  put(SettingsLevel::Machine, "In Device", SettingsValue::word(1));
  put(SettingsLevel::User, "Key other beats", SettingsValue::word(50));  // 4 bytes where 1 is held
  put(SettingsLevel::User, "Out Device", SettingsValue::text("2"));      // a text where a number is held
  const SettingsRecord r = load();
  EXPECT_EQ(r.inDevice, 1u);
  EXPECT_EQ(r.otherKey, 42);
  EXPECT_EQ(r.outDevice, 0u);
  EXPECT_EQ(at(SettingsLevel::User, "In Device"), SettingsValue::word(1));
  EXPECT_EQ(at(SettingsLevel::User, "Key other beats"), SettingsValue::byte(42));
  EXPECT_EQ(at(SettingsLevel::Machine, "Key other beats"), SettingsValue::byte(42));
  EXPECT_EQ(at(SettingsLevel::User, "Out Device"), SettingsValue::word(0));
}

TEST_F(Settings, ATextTooLongForItsBufferCountsAsMissing) {
  put(SettingsLevel::User, "Midi Files Dir", SettingsValue::text(std::string(256, 'a')));
  put(SettingsLevel::User, "Velmora Files Dir", SettingsValue::text(std::string(255, 'b')));
  load();
  EXPECT_EQ(MidiFilesDir, "");
  EXPECT_EQ(VelmoraFilesDir, std::string(255, 'b'));
}

TEST_F(Settings, AMachineLevelThatCannotBeWrittenStillGivesTheUserTheDefaults) {
  store.setReadOnly(SettingsLevel::Machine, true);
  expectDefaults(load());
  EXPECT_EQ(store.valueCount(SettingsLevel::User), 20u);
  EXPECT_EQ(store.valueCount(SettingsLevel::Machine), 0u);
}

TEST_F(Settings, WithoutAStoreTheDefaultsApply) {
  platform::installSettingsStore(nullptr);
  expectDefaults(load());
  EXPECT_EQ(MidiFilesDir, "");
  EXPECT_EQ(FunctionsFilters.load(), 0xFFFFFFFFu);
  SaveSettings(SettingsRecord{});  // and nothing happens
}

TEST_F(Settings, SaveWritesEveryValueAtTheUserLevelOnly) {
  load();
  SettingsRecord r;
  r.outDevice = 2;
  r.otherChannel = 10;
  r.metronomePlay = 1;
  VelmoraFilesDir = "/home/me/setups";
  FunctionsFilters = 0x3FF;
  SaveSettings(r);
  EXPECT_EQ(at(SettingsLevel::User, "Out Device"), SettingsValue::word(2));
  EXPECT_EQ(at(SettingsLevel::User, "Channel other beats"), SettingsValue::byte(10));
  EXPECT_EQ(at(SettingsLevel::User, "Metronome play"), SettingsValue::word(1));
  EXPECT_EQ(at(SettingsLevel::User, "Velmora Files Dir"), SettingsValue::text("/home/me/setups"));
  EXPECT_EQ(at(SettingsLevel::User, "Functions Filters"), SettingsValue::word(0x3FF));
  EXPECT_EQ(at(SettingsLevel::Machine, "Out Device"), SettingsValue::word(0));
  EXPECT_EQ(at(SettingsLevel::Machine, "Functions Filters"), SettingsValue::word(0xFFFFFFFFu));
}

TEST_F(Settings, SaveWithoutTheUsersKeyWritesNothing) {
  SaveSettings(SettingsRecord{});
  EXPECT_EQ(store.valueCount(SettingsLevel::User), 0u);
  EXPECT_EQ(store.valueCount(SettingsLevel::Machine), 0u);
}

TEST_F(Settings, WhatIsSavedIsLoadedNextTime) {
  load();
  SettingsRecord r;
  r.inDevice = 1;
  r.numerator = 3;
  r.firstVelocity = 127;
  r.midiThru = 0;
  MidiFilesDir = "/songs";
  SaveSettings(r);
  MidiFilesDir.clear();
  const SettingsRecord back = load();
  EXPECT_EQ(back.inDevice, 1u);
  EXPECT_EQ(back.numerator, 3u);
  EXPECT_EQ(back.firstVelocity, 127);
  EXPECT_EQ(back.midiThru, 0u);
  EXPECT_EQ(MidiFilesDir, "/songs");
}

}  // namespace
