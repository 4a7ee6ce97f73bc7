#include "live/settings.h"

#include <array>
#include <optional>
#include <variant>

#include "generator/bank.h"
#include "live/product_info.h"
#include "midi/backends/synth.h"
#include "platform/prompts.h"
#include "platform/settings_store.h"
#include "song/song_store.h"

using platform::SettingsLevel;
using platform::SettingsType;
using platform::SettingsValue;

namespace {

// Everything the settings hold, the record and the five values beside it,
// each starting at its built-in default.
struct HeldValues {
  SettingsRecord record;
  std::string midiFiles, velmoraFiles, distributionFiles, functionFiles;
  uint32_t functionsFilters = 0xFFFFFFFFu;
};

using Field = std::variant<std::string*, uint8_t*, uint32_t*>;

struct Binding {
  const char* name;
  Field field;
};

// The values in the order of the load and the save.
std::array<Binding, 20> bindingsOf(HeldValues& v) {
  SettingsRecord& r = v.record;
  return {{{"Midi Files Dir", &v.midiFiles},
           {"Velmora Files Dir", &v.velmoraFiles},
           {"Distribution Files Dir", &v.distributionFiles},
           {"Function Files Dir", &v.functionFiles},
           {"In Device", &r.inDevice},
           {"Out Device", &r.outDevice},
           {"Numerator", &r.numerator},
           {"Denominator", &r.denominator},
           {"Key first beat", &r.firstKey},
           {"Velocity first beat", &r.firstVelocity},
           {"Channel first beat", &r.firstChannel},
           {"Key other beats", &r.otherKey},
           {"Velocity other beats", &r.otherVelocity},
           {"Channel other beats", &r.otherChannel},
           {"Metronome note Duration", &r.noteDuration},
           {"Metronome count", &r.metronomeCount},
           {"Metronome record", &r.metronomeRecord},
           {"Metronome play", &r.metronomePlay},
           {"Midi Thru", &r.midiThru},
           {"Functions Filters", &v.functionsFilters}}};
}

std::string settingsKey() { return SettingsKeyPath() + "\\Settings"; }

SettingsValue valueOf(const Field& field) {
  struct {
    SettingsValue operator()(const std::string* text) const { return SettingsValue::text(*text); }
    SettingsValue operator()(const uint8_t* byte) const { return SettingsValue::byte(*byte); }
    SettingsValue operator()(const uint32_t* word) const { return SettingsValue::word(*word); }
  } make;
  return std::visit(make, field);
}

// Takes a stored value into its field. A value of another kind, a number of
// another size, or a text too long for its buffer counts as missing, so that
// no field is ever filled in part: false then, and the field stays.
bool take(const std::optional<SettingsValue>& stored, const Field& field) {
  if (!stored) return false;
  const std::vector<uint8_t>& data = stored->data;
  struct {
    const std::vector<uint8_t>& data;
    SettingsType type;
    uint32_t number;
    bool operator()(std::string* text) const {
      if (type != SettingsType::Text || data.size() > SettingsTextLimit) return false;
      const std::string whole(data.begin(), data.end());
      text->assign(whole.c_str());  // a text ends at its first zero, as a C string does
      return true;
    }
    bool operator()(uint8_t* byte) const {
      if (type != SettingsType::Binary || data.size() != 1) return false;
      *byte = data[0];
      return true;
    }
    bool operator()(uint32_t* word) const {
      if (type != SettingsType::Binary || data.size() != 4) return false;
      *word = number;
      return true;
    }
  } fill{data, stored->type, stored->asNumber()};
  return std::visit(fill, field);
}

}  // namespace

std::string SettingsKeyPath() { return "Software\\NQuillon\\" + ProductName() + "\\" + ProductVersion(); }

void LoadSettings(SettingsRecord& settings) {
  HeldValues held;
  HeldValues defaults;
  const auto fields = bindingsOf(held);
  const auto defaultFields = bindingsOf(defaults);
  platform::SettingsStore* store = platform::settingsStore();
  if (store != nullptr) {
    const std::string key = settingsKey();
    store->createKey(SettingsLevel::User, key);
    store->createKey(SettingsLevel::Machine, key);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const Binding& b = fields[i];
      if (take(store->query(SettingsLevel::User, key, b.name), b.field)) continue;
      if (!take(store->query(SettingsLevel::Machine, key, b.name), b.field)) {
        take(valueOf(defaultFields[i].field), b.field);
        store->set(SettingsLevel::Machine, key, b.name, valueOf(b.field));
      }
      store->set(SettingsLevel::User, key, b.name, valueOf(b.field));
    }
  }
  settings = held.record;
  MidiFilesDir = held.midiFiles;
  VelmoraFilesDir = held.velmoraFiles;
  DistributionFilesDir = held.distributionFiles;
  FunctionFilesDir = held.functionFiles;
  FunctionsFilters = held.functionsFilters;
}

void SaveSettings(const SettingsRecord& settings) {
  platform::SettingsStore* store = platform::settingsStore();
  if (store == nullptr) return;
  HeldValues held{settings,         MidiFilesDir,           VelmoraFilesDir, DistributionFilesDir,
                  FunctionFilesDir, FunctionsFilters.load()};
  const std::string key = settingsKey();
  for (const Binding& b : bindingsOf(held)) store->set(SettingsLevel::User, key, b.name, valueOf(b.field));
}

namespace {

std::string synthKey() { return SettingsKeyPath() + "\\Synthesizer"; }

}  // namespace

double LoadSynthGain() {
  const platform::SettingsStore* store = platform::settingsStore();
  if (store == nullptr) return DefaultSynthGain;
  const std::optional<SettingsValue> stored = store->query(SettingsLevel::User, synthKey(), "Gain");
  if (!stored) return DefaultSynthGain;
  // A whole number typed into the settings file by hand reads back as a 4-byte number.
  if (uint32_t whole = 0; take(stored, &whole)) {
    return SynthGainInRange(whole) ? static_cast<double>(whole) : DefaultSynthGain;
  }
  if (stored->type != SettingsType::Text) return DefaultSynthGain;
  return ReadSynthGain(stored->asText()).value_or(DefaultSynthGain);
}

void SaveSynthGain(double gain) {
  platform::SettingsStore* store = platform::settingsStore();
  if (store == nullptr || !store->createKey(SettingsLevel::User, synthKey())) return;
  store->set(SettingsLevel::User, synthKey(), "Gain", SettingsValue::text(SynthGainText(gain)));
}
