#include "live/live_system.h"

#include <array>
#include <string>

#include "generator/bank.h"
#include "generator/generator_tick.h"
#include "platform/field_checks.h"
#include "live/settings_dialogs.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/midi_devices.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "smf/smf.h"
#include "song/clock_placing.h"
#include "song/recording.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "transport/playback_feed.h"
#include "song/events_list.h"

namespace {

template <typename Handle>
using OpenDevice = uint32_t (*)(Handle**, platform::MessageTarget*, uint32_t, SyncClock*, uint32_t);

template <typename Handle>
uint32_t openLive(OpenDevice<Handle> open, Handle** handle, uint32_t device) {
  const uint32_t result = open(handle, ControlBarWindow, device, TheClock, MIDI_OPEN_WORD);
  if (result != 0) platform::ShowMessageBox(platform::midiInGetErrorText(result), "Velmora", platform::MB_ICONSTOP);
  return result;
}

// The stored device, or 0 when there is no such device; a device that cannot
// be opened is passed over for the next one, up to the last.
void openFirstWorking(uint32_t stored, uint32_t count, uint32_t (*open)(uint32_t)) {
  for (uint32_t device = stored < count ? stored : 0; device < count; ++device) {
    if (open(device) == 0) return;
  }
}

template <typename Handle>
void setFlag(Handle* handle, uint32_t flag, bool on) {
  if (handle == nullptr) return;
  if (on) {
    handle->flags.fetch_or(flag);
  } else {
    handle->flags.fetch_and(~flag);
  }
}

template <typename Handle>
uint32_t openedDevice(const Handle* handle) {
  return handle != nullptr ? handle->deviceId : 0;  // none opened: the list's first
}

void checkMenu(uint32_t id, bool checked) {
  if (FrameWindow != nullptr) FrameWindow->checkMenuItem(id, checked);
}

std::string heldText(uint32_t value, uint32_t low, uint32_t high, uint32_t otherwise) {
  return std::to_string(low <= value && value <= high ? value : otherwise);
}

bool validDenominator(uint32_t d) { return d == 1 || d == 2 || d == 4 || d == 8 || d == 16 || d == 32; }

// The meter from the settings, held to its range, applied and shown.
void takeMeter(const SettingsRecord& settings) {
  NumeratorText = heldText(settings.numerator, 1, 99, 4);
  DenominatorText = std::to_string(validDenominator(settings.denominator) ? settings.denominator : 4);
  ApplyMeter();
}

// The metronome's seven numbers and the count-in from the settings, each held
// to the Metronome dialog's range for its field, else its first-run value.
void takeMetronome(const SettingsRecord& settings) {
  const SettingsRecord firstRun;
  const auto valuesOf = [](const SettingsRecord& r) {
    return std::array<uint32_t, 8>{r.metronomeCount, r.noteDuration, r.firstChannel, r.firstKey,
                                   r.firstVelocity,  r.otherChannel, r.otherKey,     r.otherVelocity};
  };
  const auto values = valuesOf(settings);
  const auto defaults = valuesOf(firstRun);
  for (std::size_t i = 0; i < MetronomeFields.size(); ++i) {
    const MetronomeField& f = MetronomeFields[i];
    *f.text = heldText(values[i], static_cast<uint32_t>(f.low), static_cast<uint32_t>(f.high), defaults[i]);
  }
  ApplyMetronome();
  if (TheClock != nullptr) TheClock->metronomeMsg = TheClock->firstBeatMsg.load();
  SetMidiOutFlag(METRONOME_RECORD, settings.metronomeRecord != 0);
  SetMidiOutFlag(METRONOME_PLAY, settings.metronomePlay != 0);
  SetMidiInFlag(MIDI_THRU, settings.midiThru != 0);
  checkMenu(CMD_MIDI_THRU, settings.midiThru != 0);
}

// Every track's events and name, gone; the rows that pointed into them too.
void freeSong() {
  for (TrackRecord& t : Tracks) {
    FreeEvents(t.events);
    t.events = nullptr;
    t.count = 0;
    t.remaining = 0;
  }
  ActiveTrackCount = 0;
  for (auto& name : TrackNames) name.reset();
  DropEventRows();
}

}  // namespace

uint32_t OpenLiveInput(uint32_t device) { return openLive<MidiInHandle>(OpenMidiIn, &TheMidiIn, device); }

uint32_t OpenLiveOutput(uint32_t device) { return openLive<MidiOutHandle>(OpenMidiOut, &TheMidiOut, device); }

void SetMidiInFlag(uint32_t flag, bool on) { setFlag(TheMidiIn, flag, on); }

void SetMidiOutFlag(uint32_t flag, bool on) { setFlag(TheMidiOut, flag, on); }

bool MidiInFlag(uint32_t flag) { return TheMidiIn != nullptr && (TheMidiIn->flags & flag) != 0; }

bool MidiOutFlag(uint32_t flag) { return TheMidiOut != nullptr && (TheMidiOut->flags & flag) != 0; }

void MyIni(void*, void*, void*, void*, void*, void*, void*, void*) {}

void StartLiveSystem(platform::MessageTarget* window) {
  LiveBank = Bank{};
  SetBankDefaults();
  SettingsRecord settings;
  LoadSettings(settings);
  SynthGain = LoadSynthGain();
  platform::midiSetSynthGain(SynthGain);

  ControlBarWindow = window;
  InstallGeneratorHooks();
  InstallFeedHooks();
  OpenSync(&TheClock, window, SYNC_INTERNAL, 10);
  // An empty song: record track 0, no file open, 120 ticks a quarter, 60
  // beats a minute held in the clock, the tempo field and the tempo track's one event.
  ResetSong();

  openFirstWorking(settings.inDevice, platform::midiInGetNumDevs(), OpenLiveInput);
  openFirstWorking(settings.outDevice, platform::midiOutGetNumDevs(), OpenLiveOutput);
  MidiInDevice = openedDevice(TheMidiIn);
  MidiOutDevice = openedDevice(TheMidiOut);
  checkMenu(CMD_MENU_INTERNAL_CLOCK, true);

  QuantizeRecord = 0;
  SetRecordResolution(RecordResolutionStart);
  SetQuantizeFilters(0);
  SongPosition = 0;
  PlaceClock(TheClock, 0);
  if (TheClock != nullptr) TheClock->beat = 0;

  takeMeter(settings);
  MyIni(&FeedRemaining, &ActiveTrackCount, &ActiveTracks, &RecordTrack, &Capturing, &Tracks, &FeedLastTime,
        &TicksPerBar);
  takeMetronome(settings);
  for (TrackRecord& t : Tracks) ResetTrackSettings(t);
  StartMidiIn(TheMidiIn);

  platform::post(ControlBarControl(CMD_INTERNAL_CLOCK), BUTTON_SET_STATE, 1, 0);
  if (ControlBar != nullptr) ControlBar->enableControl(CMD_INTERNAL_CLOCK, false);
}

void CollectSettings(SettingsRecord& settings) {
  settings.inDevice = openedDevice(TheMidiIn);
  settings.outDevice = openedDevice(TheMidiOut);
  settings.numerator = Numerator;
  settings.denominator = Denominator;
  const auto byteOf = [](const std::string& text) { return static_cast<uint8_t>(FieldValue(text)); };
  settings.firstKey = byteOf(FirstBeatKeyText);
  settings.firstVelocity = byteOf(FirstBeatVelocityText);
  settings.firstChannel = byteOf(FirstBeatChannelText);
  settings.otherKey = byteOf(OtherBeatsKeyText);
  settings.otherVelocity = byteOf(OtherBeatsVelocityText);
  settings.otherChannel = byteOf(OtherBeatsChannelText);
  settings.noteDuration = byteOf(ClickLengthText);
  settings.metronomeCount = static_cast<uint32_t>(FieldValue(CountInText));
  settings.metronomeRecord = MidiOutFlag(METRONOME_RECORD) ? 1 : 0;
  settings.metronomePlay = MidiOutFlag(METRONOME_PLAY) ? 1 : 0;
  settings.midiThru = MidiInFlag(MIDI_THRU) ? 1 : 0;
}

void StopLiveSystem() {
  SettingsRecord settings;
  CollectSettings(settings);
  SaveSettings(settings);
  StopMidiIn(TheMidiIn);
  CloseSMF(&SongReadHandle);
  CloseSync(&TheClock);
  // With no pass left to run, every sounding note ends and the controllers go
  // back to their rest before the output closes.
  ResetMidiOut(TheMidiOut);
  ResetNotesAndControllers(TheMidiOut);
  CloseMidiIn(&TheMidiIn);
  CloseMidiOut(&TheMidiOut);
  freeSong();
}
