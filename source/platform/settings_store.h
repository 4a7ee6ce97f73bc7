#pragma once
// The settings store seam: two levels, the user's and the machine's, each a
// tree of keys ("Software\\Maker\\Product\\1.0\\Settings") holding named
// binary and text values, as the registry holds them.

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace platform {

enum class SettingsLevel { User, Machine };

enum class SettingsType : uint32_t { Text = 1, Binary = 3 };  // the registry's REG_SZ and REG_BINARY

struct SettingsValue {
  SettingsType type;
  std::vector<uint8_t> data;  // a text without its terminating zero

  static SettingsValue text(const std::string& value);
  static SettingsValue binary(std::span<const uint8_t> bytes);
  static SettingsValue word(uint32_t value);  // 4 bytes, little-endian
  static SettingsValue byte(uint8_t value);
  std::string asText() const;
  // The bytes read as a little-endian number (the first four at most).
  uint32_t asNumber() const;
  bool operator==(const SettingsValue&) const = default;
};

class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  // Creates the key and every key above it, or opens it; false if that is not allowed.
  virtual bool createKey(SettingsLevel level, const std::string& key) = 0;
  virtual bool keyExists(SettingsLevel level, const std::string& key) const = 0;
  // The value, or nothing if the key or the value does not exist.
  virtual std::optional<SettingsValue> query(SettingsLevel level, const std::string& key,
                                             const std::string& name) const = 0;
  // False if the key does not exist or may not be written.
  virtual bool set(SettingsLevel level, const std::string& key, const std::string& name,
                   const SettingsValue& value) = 0;
};

void installSettingsStore(SettingsStore* store);
SettingsStore* settingsStore();

// The test's store, in memory. A level can be made read-only, as the machine's
// settings are for a user without rights to them.
class MemorySettingsStore final : public SettingsStore {
 public:
  bool createKey(SettingsLevel level, const std::string& key) override;
  bool keyExists(SettingsLevel level, const std::string& key) const override;
  std::optional<SettingsValue> query(SettingsLevel level, const std::string& key,
                                     const std::string& name) const override;
  bool set(SettingsLevel level, const std::string& key, const std::string& name, const SettingsValue& value) override;

  void setReadOnly(SettingsLevel level, bool readOnly);
  std::size_t valueCount(SettingsLevel level) const;

 private:
  std::map<std::tuple<SettingsLevel, std::string>, std::map<std::string, SettingsValue>> keys_;
  bool readOnly_[2] = {false, false};
};

}  // namespace platform
