#include "platform/settings_store.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

const std::string Key = "Software\\NQuillon\\Velmora\\0.1\\Settings";

TEST(MemorySettingsStore, AValueIsReadBackAsWritten) {
  MemorySettingsStore store;
  ASSERT_TRUE(store.createKey(SettingsLevel::User, Key));
  EXPECT_TRUE(store.set(SettingsLevel::User, Key, "In Device", SettingsValue::word(3)));
  EXPECT_TRUE(store.set(SettingsLevel::User, Key, "Midi Files Dir", SettingsValue::text("/home/me/midi")));
  const auto device = store.query(SettingsLevel::User, Key, "In Device");
  ASSERT_TRUE(device.has_value());
  EXPECT_EQ(device->type, SettingsType::Binary);
  EXPECT_EQ(device->data, (std::vector<uint8_t>{3, 0, 0, 0}));
  const auto folder = store.query(SettingsLevel::User, Key, "Midi Files Dir");
  ASSERT_TRUE(folder.has_value());
  EXPECT_EQ(folder->type, SettingsType::Text);
  EXPECT_EQ(folder->asText(), "/home/me/midi");
}

TEST(MemorySettingsStore, TheTwoLevelsAreApart) {
  MemorySettingsStore store;
  store.createKey(SettingsLevel::User, Key);
  store.createKey(SettingsLevel::Machine, Key);
  store.set(SettingsLevel::Machine, Key, "Numerator", SettingsValue::word(1));
  EXPECT_FALSE(store.query(SettingsLevel::User, Key, "Numerator").has_value());
  EXPECT_TRUE(store.query(SettingsLevel::Machine, Key, "Numerator").has_value());
  EXPECT_EQ(store.valueCount(SettingsLevel::Machine), 1u);
  EXPECT_EQ(store.valueCount(SettingsLevel::User), 0u);
}

TEST(MemorySettingsStore, CreatingAKeyCreatesTheKeysAboveIt) {
  MemorySettingsStore store;
  store.createKey(SettingsLevel::User, Key);
  EXPECT_TRUE(store.keyExists(SettingsLevel::User, "Software\\NQuillon"));
  EXPECT_TRUE(store.keyExists(SettingsLevel::User, Key));
  EXPECT_FALSE(store.keyExists(SettingsLevel::Machine, Key));
}

TEST(MemorySettingsStore, NothingIsWrittenUnderAKeyThatDoesNotExist) {
  MemorySettingsStore store;
  EXPECT_FALSE(store.set(SettingsLevel::User, Key, "Numerator", SettingsValue::word(4)));
  EXPECT_FALSE(store.query(SettingsLevel::User, Key, "Numerator").has_value());
}

TEST(MemorySettingsStore, AReadOnlyLevelRefusesWritesAndNewKeys) {
  MemorySettingsStore store;
  store.setReadOnly(SettingsLevel::Machine, true);
  EXPECT_FALSE(store.createKey(SettingsLevel::Machine, Key));
  store.setReadOnly(SettingsLevel::Machine, false);
  store.createKey(SettingsLevel::Machine, Key);
  store.setReadOnly(SettingsLevel::Machine, true);
  EXPECT_TRUE(store.createKey(SettingsLevel::Machine, Key)) << "opening an existing key works";
  EXPECT_FALSE(store.set(SettingsLevel::Machine, Key, "Numerator", SettingsValue::word(4)));
}

TEST(MemorySettingsStore, AValueIsReplacedWithItsNewType) {
  MemorySettingsStore store;
  store.createKey(SettingsLevel::User, Key);
  store.set(SettingsLevel::User, Key, "Key first beat", SettingsValue::text("x"));
  store.set(SettingsLevel::User, Key, "Key first beat", SettingsValue::byte(42));
  EXPECT_EQ(*store.query(SettingsLevel::User, Key, "Key first beat"), SettingsValue::byte(42));
}

TEST(SettingsValue, AWordIsFourLittleEndianBytes) {
  EXPECT_EQ(SettingsValue::word(0xFFFFFFFF).data, (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(SettingsValue::word(0x01020304).data, (std::vector<uint8_t>{4, 3, 2, 1}));
  EXPECT_EQ(SettingsValue::byte(9).data.size(), 1u);
}

TEST(InstalledSettingsStore, TheInstalledStoreIsTheOneReturned) {
  MemorySettingsStore store;
  installSettingsStore(&store);
  EXPECT_EQ(settingsStore(), &store);
  installSettingsStore(nullptr);
  EXPECT_EQ(settingsStore(), nullptr);
}

}  // namespace
