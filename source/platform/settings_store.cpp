#include "platform/settings_store.h"

#include <algorithm>
#include <atomic>

namespace platform {

namespace {

std::atomic<SettingsStore*> installedStore{nullptr};

int levelIndex(SettingsLevel level) { return level == SettingsLevel::User ? 0 : 1; }

}  // namespace

void installSettingsStore(SettingsStore* store) { installedStore.store(store, std::memory_order_release); }

SettingsStore* settingsStore() { return installedStore.load(std::memory_order_acquire); }

SettingsValue SettingsValue::text(const std::string& value) {
  return {SettingsType::Text, std::vector<uint8_t>(value.begin(), value.end())};
}

SettingsValue SettingsValue::binary(std::span<const uint8_t> bytes) {
  return {SettingsType::Binary, std::vector<uint8_t>(bytes.begin(), bytes.end())};
}

SettingsValue SettingsValue::word(uint32_t value) {
  const uint8_t bytes[4] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
                            static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 24)};
  return binary(bytes);
}

SettingsValue SettingsValue::byte(uint8_t value) { return binary(std::span<const uint8_t>(&value, 1)); }

std::string SettingsValue::asText() const { return std::string(data.begin(), data.end()); }

uint32_t SettingsValue::asNumber() const {
  uint32_t value = 0;
  for (std::size_t i = std::min<std::size_t>(data.size(), 4); i-- > 0;) value = value << 8 | data[i];
  return value;
}

bool MemorySettingsStore::createKey(SettingsLevel level, const std::string& key) {
  if (keyExists(level, key)) return true;
  if (readOnly_[levelIndex(level)]) return false;
  // Every key above this one comes into being with it.
  for (std::size_t at = key.find('\\'); at != std::string::npos; at = key.find('\\', at + 1)) {
    keys_[{level, key.substr(0, at)}];
  }
  keys_[{level, key}];
  return true;
}

bool MemorySettingsStore::keyExists(SettingsLevel level, const std::string& key) const {
  return keys_.contains({level, key});
}

std::optional<SettingsValue> MemorySettingsStore::query(SettingsLevel level, const std::string& key,
                                                        const std::string& name) const {
  const auto found = keys_.find({level, key});
  if (found == keys_.end()) return std::nullopt;
  const auto value = found->second.find(name);
  if (value == found->second.end()) return std::nullopt;
  return value->second;
}

bool MemorySettingsStore::set(SettingsLevel level, const std::string& key, const std::string& name,
                              const SettingsValue& value) {
  if (readOnly_[levelIndex(level)]) return false;
  const auto found = keys_.find({level, key});
  if (found == keys_.end()) return false;
  found->second[name] = value;
  return true;
}

void MemorySettingsStore::setReadOnly(SettingsLevel level, bool readOnly) { readOnly_[levelIndex(level)] = readOnly; }

std::size_t MemorySettingsStore::valueCount(SettingsLevel level) const {
  std::size_t count = 0;
  for (const auto& [where, values] : keys_) {
    if (std::get<0>(where) == level) count += values.size();
  }
  return count;
}

}  // namespace platform
