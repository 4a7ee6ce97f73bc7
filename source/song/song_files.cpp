#include "song/song_files.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>

#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/file_io.h"
#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "smf/smf.h"
#include "song/clock_placing.h"
#include "song/note_linking.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "song/track_rows.h"
#include "platform/command_ids.h"
#include "song/events_list.h"

using namespace platform;

int32_t SaveResult = 0;
SmfFile* SongReadHandle = nullptr;

namespace {

constexpr uint8_t META_TRACK_NAME = 3;
constexpr uint8_t META_TIME_SIGNATURE = 0x58;

std::string folderOf(const std::string& path) { return std::filesystem::path(path).parent_path().string(); }

void showNumber(uint32_t field, int64_t value) {
  if (ControlBar != nullptr) ControlBar->setFieldText(field, std::to_string(value));
}

// Everything that played or was placed goes back to the start.
void resetTrackTables() {
  for (uint32_t word = 0; word < TouchedTracks.size(); ++word) {
    for (uint32_t bit = 0; bit < 32; ++bit) {
      if ((TouchedTracks[word] >> bit & 1) == 0) continue;
      TouchedTracks[word] &= ~(1u << bit);
      const uint32_t track = word * 32 + bit;
      ResetTrackSettings(Tracks[track]);
      DropTrackRow(track);
    }
  }
  for (int32_t i = 0; i < ActiveTrackCount; ++i) {
    TrackRecord& t = Tracks[ActiveTracks[static_cast<std::size_t>(i)]];
    ResetTrackSettings(t);
    FreeEvents(t.events);
    t.events = nullptr;
    t.count = 0;
  }
  ActiveTrackCount = 0;
}

// The tempo track's one event: the clock's tempo at time 0.
void installOpeningTempo() {
  MidiEvent* block = AllocateEvents(1);
  if (block == nullptr) {
    NotEnoughMemory();
    return;
  }
  block[0].link = block;
  Tracks[TempoTrack].events = block;
  Tracks[TempoTrack].count = 1;
  ActiveTracks[0] = TempoTrack;
  ActiveTrackCount = 1;
  WriteTempoEvent();
}

// ---- loading ----

// Format 0: the first track's tempo and lyric events go to the front of the
// take buffer (delta times again); the channel events are handed back.
uint32_t splitFormatZero(EventList& others) {
  DeltaToAbsolute(TakeBuffer.data(), TakeCount);
  EventList metas;
  for (uint32_t i = 0; i < TakeCount; ++i) AppendEvent(&TakeBuffer[i], TakeBuffer[i].status == 0 ? &metas : &others);
  TakeCount = 0;
  std::copy(metas.events.begin(), metas.events.end(), TakeBuffer.begin());
  AbsoluteToDelta(TakeBuffer.data(), metas.length());
  return metas.length();
}

// The first event of the first track, if it is a meta event, sets the opening
// tempo; a lyric's offset bytes are read as a tempo all the same.
void takeOpeningTempo() {
  const MidiEvent& first = TakeBuffer[0];
  if (first.status != 0) return;
  const uint32_t tempo = EventTempo(first);
  if (tempo == 0) return;  // a tempo of 0 would stop time and divide by zero: the opening tempo stays
  SetTempo(TheClock, tempo);
  if (ControlBar != nullptr) ControlBar->showTempo(static_cast<double>(60000000 / tempo));
}

void takeMeter(SmfFile* smf) {
  const uint8_t* data = nullptr;
  uint32_t length = 0;
  if (ReadMetaEvent(smf, 0, META_TIME_SIGNATURE, &data, &length) != SMF_FAILED) {
    const uint8_t numerator = length > 0 ? data[0] : 0;
    const uint8_t power = length > 1 ? data[1] : 0;
    Numerator = static_cast<uint32_t>(int32_t{static_cast<int8_t>(numerator)});  // above 127 reads as negative
    // A power of 2 past what 32 bits hold gives 0, as a truncated number that large would.
    Denominator = power < 32 ? 1u << power : 0;
  } else {
    Numerator = 4;
    Denominator = 4;
  }
  if (TheClock != nullptr) TheClock->beatsPerBar = static_cast<uint8_t>(Numerator.load());
  TicksPerBar = Numerator * SongResolution;
  showNumber(ID_NUMERATOR_FIELD, static_cast<int32_t>(Numerator.load()));
  showNumber(ID_DENOMINATOR_FIELD, static_cast<int32_t>(Denominator.load()));
}

// The lyric text of one file track, joined into LyricText: a second lyric at
// one tick is left out, and two words that meet letter to letter get a space.
void collectLyrics(SmfFile* smf, uint32_t fileTrack, uint32_t& written) {
  uint8_t last = 0;
  uint32_t lastTick = 0xFFFFFFFFu;
  uint32_t tick = 0;
  for (;;) {
    const uint8_t* text = nullptr;
    uint32_t length = 0;
    const uint32_t delta = ReadMetaEvent(smf, fileTrack, META_LYRIC, &text, &length);
    if (delta == SMF_FAILED) return;
    tick += delta;
    if (tick == lastTick) continue;
    lastTick = tick;
    if (length == 0 || text == nullptr) continue;
    // The copy goes by the given length and stops at the end of the block.
    const auto room = [&] { return LyricTextSize - 1 - std::min(written, LyricTextSize - 1); };
    // The reader's letter test, so that its lyric offsets count the same spaces.
    if (IsLyricLetter(text[0]) && IsLyricLetter(last) && room() > 0) LyricText[written++] = ' ';
    last = text[length - 1];
    const uint32_t n = std::min(length, room());
    std::memcpy(LyricText.get() + written, text, n);
    written += n;
  }
}

void takeTrackName(SmfFile* smf, uint32_t fileTrack, uint32_t track) {
  const uint8_t* data = nullptr;
  uint32_t length = 0;
  if (ReadMetaEvent(smf, fileTrack, META_TRACK_NAME, &data, &length) == SMF_FAILED) return;
  TrackNames[track] = std::string(reinterpret_cast<const char*>(data), length);
}

uint32_t readTrack(SmfFile* smf, uint32_t fileTrack) {
  const uint32_t n = ReadSMF(smf, fileTrack, TakeBuffer.data(), TakeCapacity);
  return n == SMF_FAILED ? 0 : std::min(n, TakeCapacity);
}

// The file's tracks from the second on, each into song track f - 1. A file
// may claim up to 65535 tracks; past the 256 song tracks the rest are left out.
void loadSongTracks(SmfFile* smf, uint32_t fileTracks, bool formatZero) {
  uint32_t lyricsWritten = 0;
  fileTracks = std::min<uint32_t>(fileTracks, SongTrackCount + 1);
  for (uint32_t f = 1; f < fileTracks; ++f) {
    const uint32_t track = f - 1;
    RecordTrack = static_cast<uint8_t>(track);
    if (!formatZero) {
      TakeCount = readTrack(smf, f);
      InstallTrack(track, TakeCount, TakeBuffer.data());
      if (LyricText) collectLyrics(smf, f, lyricsWritten);
      takeTrackName(smf, f, track);
    }
    TouchTrack(track);
    BuildTrackRow(track);
  }
}

// The steps of a load after the file has opened.
void loadOpenedFile(SmfFile* smf, uint32_t format) {
  uint32_t resolution = GetSMFResolution(smf);
  // A division of 0 or above 960 cannot be kept by the clock: the song is read at 120.
  if (resolution == 0 || resolution > 960) resolution = 120;
  SongResolution = resolution;
  SetResolution(TheClock, static_cast<int32_t>(resolution));
  WaitCursor wait;
  RewindSMF(smf);

  const bool formatZero = format == 0;
  RecordTrack = 0;
  TakeCount = readTrack(smf, 0);
  uint32_t opening = TakeCount;  // events of this file at the front of the take buffer
  EventList channelEvents;
  if (formatZero) opening = splitFormatZero(channelEvents);
  InstallTrack(TempoTrack, TakeCount, TakeBuffer.data());
  // An empty first track leaves the buffer's old contents in place; they are not read as a tempo.
  if (opening != 0) takeOpeningTempo();
  takeMeter(smf);

  uint32_t fileTracks = smf->trackCount;
  if (formatZero) {
    std::copy(channelEvents.events.begin(), channelEvents.events.end(), TakeBuffer.begin());
    TakeCount = channelEvents.length();
    AbsoluteToDelta(TakeBuffer.data(), TakeCount);
    fileTracks = 2;
  }
  LyricText.reset(new (std::nothrow) char[LyricTextSize]());
  loadSongTracks(smf, fileTracks, formatZero);
  CloseSMF(&SongReadHandle);
}

// ---- writing ----

uint8_t denominatorPower() {
  switch (Denominator.load()) {
    case 1: return 0;
    case 2: return 1;
    case 4: return 2;
    case 8: return 3;
    case 16: return 4;
    case 32: return 5;
    default: return 0;
  }
}

// What the writer bakes into a track: its settings, its first event's
// channel and the length of its stored events, with the song's bar.
SmfTrackSettings fileSettings(const TrackRecord& t) {
  SmfTrackSettings settings;
  settings.keyOffset = t.keyOffset;
  settings.velocityOffset = t.velocityOffset;
  settings.channel = t.channel;
  settings.pan = t.pan;
  settings.patch = t.patch;
  settings.volume = t.volume;
  settings.timeOffset = t.timeOffset;
  settings.repeats = t.repeats;
  settings.storedChannel = t.events != nullptr && t.count > 0 ? t.events[0].status & 0x0F : 0;
  for (uint32_t i = 0; t.events != nullptr && i < t.count; ++i) settings.storedTicks += t.events[i].time;
  settings.ticksPerBar = TicksPerBar;
  return settings;
}

void writeTrack(SmfFile* smf, uint32_t fileTrack, uint32_t track) {
  TrackRecord& t = Tracks[track];
  AbsoluteToDelta(t.events, t.count);
  SetSMFTrackSettings(smf, track, fileSettings(t));
  WriteSMF(smf, fileTrack, t.events, t.count, track);
  DeltaToAbsolute(t.events, t.count);
}

void writeTimeSignature(SmfFile* smf) {
  const uint32_t denominator = Denominator;
  // Without a valid denominator there are no clocks per beat to divide into: 0 is written.
  const auto clocksPerBeat = static_cast<char>(denominator != 0 ? 96 / denominator : 0);
  const char data[4] = {static_cast<char>(Numerator.load()), static_cast<char>(denominatorPower()), clocksPerBeat, 8};
  WriteMetaEvent(smf, 0, META_TIME_SIGNATURE, data, 0);
}

void writeSongTracks(SmfFile* smf) {
  for (int32_t i = 0; i < ActiveTrackCount; ++i) {
    const auto index = static_cast<uint32_t>(i);
    const uint32_t track = ActiveTracks[index];
    if (track == TempoTrack) continue;
    writeTrack(smf, index + 1, track);
    // Whether a name goes out is asked at the track's place in the list, and the
    // name that goes out is the track's own: songs saved so far carry their names so.
    const std::optional<std::string>& name = TrackNames[track];
    if (TrackNames[index].has_value() && name.has_value() && !name->empty()) {
      WriteMetaEvent(smf, index + 1, META_TRACK_NAME, name->c_str(), 0);
    }
  }
}

}  // namespace

void ResetSong() {
  CloseSMF(&SongReadHandle);
  LyricText.reset();
  if (LyricsOpen == 1 && LyricsEdit != nullptr) LyricsEdit->setText("");
  if (TracksOpen == 1 && TracksList != nullptr) {
    for (int32_t i = 0; i < SelectedTrackCount; ++i) {
      TracksList->setSelected(static_cast<int>(SelectedTracks[static_cast<std::size_t>(i)]), false);
    }
  }
  for (uint32_t t = 0; t < SongTrackCount; ++t) TrackNames[t].reset();
  if (EventsOpen == 1 && EventsList != nullptr) EventsList->clear();
  DropEventRows();
  SongFilePath.clear();
  SongTitle = "No name";
  SongDirty = 0;
  ShowSongTitle();
  SongResolution = 120;
  SetResolution(TheClock, 120);
  TicksPerBar = Numerator * SongResolution;
  SelectFrom = SelectTo = 0;
  if (ControlBar != nullptr) {
    ControlBar->setFieldText(ID_FROM_FIELD, TimeText(SelectFrom));
    ControlBar->setFieldText(ID_TO_FIELD, TimeText(SelectTo));
  }
  StartTempo(60.0);
  SetStartFrame(TheClock, 0);
  TakeCount = 0;
  resetTrackTables();
  SelectedTrackCount = 0;
  UpdateCommandStates();
  RecordTrack = 0;
  SongPosition = 0;
  installOpeningTempo();
  PlaceClock(TheClock, 0);
  if (ControlBar != nullptr) ControlBar->drawCounter(0);
  if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
}

int SavePrompt() {
  if (SongDirty == 0) return 1;
  std::string text = SongFilePath;
  text += "\nYour work has changed.\n\nSave it?";
  SaveResult = ShowMessageBox(text, "Velmora", MB_YESNOCANCEL | MB_ICONEXCLAMATION);
  if (SaveResult == IDYES) {
    SaveSong();
  } else if (SaveResult == IDCANCEL) {
    SaveResult = 0;
  }
  return SaveResult;
}

void NewSong() {
  if (SavePrompt() != 0) ResetSong();
}

void SaveSong() {
  if (SongDirty == 0) return;
  if (SongFilePath.empty()) {
    SaveSongAs();
    return;
  }
  SaveResult = WriteSong(SongFilePath);
  if (SaveResult != 0) SongDirty = 0;
}

void SaveSongAs() {
  SaveResult = 0;
  Prompts* p = prompts();
  if (p == nullptr) return;
  FileDialog dialog;
  dialog.title = "Save as";
  dialog.filters = {{"MIDI files (*.mid)", "*.mid"}};
  dialog.initialDirectory = MidiFilesDir;
  dialog.defaultExtension.assign(1, '*');  // "*", said so to spare GCC 12 a false -Wrestrict
  dialog.mustExist = true;  // the save chooser asks for a path that exists, as the open chooser does
  dialog.askToOverwrite = true;
  const auto path = p->saveFileName(dialog);
  if (!path) return;  // a cancel; the choosers report no errors of their own
  MidiFilesDir = folderOf(*path);
  if (WriteSong(*path) == 0) return;
  SongFilePath = *path;
  SongTitle = *path;
  SongDirty = 0;
  ShowSongTitle();
  SaveResult = 1;
}

void OpenSongDialog() {
  Prompts* p = prompts();
  if (p == nullptr) return;
  FileDialog dialog;
  dialog.title = "Open";
  dialog.filters = {{"MIDI files (*.mid;*.mff)", "*.mid;*.mff"}, {"All files (*.*)", "*.*"}};
  dialog.initialDirectory = MidiFilesDir;
  dialog.mustExist = true;
  const auto path = p->openFileName(dialog);
  if (!path) return;
  MidiFilesDir = folderOf(*path);
  OpenSongFile(*path);
}

bool OpenSongFile(const std::string& path) {
  if (!LoadSong(path)) return false;
  SongTitle = path;  // whatever the load made of the file
  ShowSongTitle();
  return true;
}

bool LoadSong(const std::string& path) {
  if (SavePrompt() == 0) return true;
  const LoaderMessage invalid{"Invalid file format", "Error", MB_ICONSTOP};
  auto image = ReadFileOrSay(path, invalid);
  if (!image) return false;
  CloseSMF(&SongReadHandle);
  ResetSong();
  uint32_t format = 0;
  if (OpenSMFImage(&SongReadHandle, std::move(*image), &format) == SMF_FAILED) {
    ShowMessageBox(invalid.text, invalid.title, invalid.style);
    SongReadHandle = nullptr;
  } else {
    loadOpenedFile(SongReadHandle, format);
    PostSyncTick();
  }
  RecordTrack = 0;
  SongDirty = 0;
  if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
  if (LyricsOpen == 1 && LyricsEdit != nullptr) LyricsEdit->setText(LyricText ? LyricText.get() : "");
  return true;
}

int WriteSong(const std::string& path) {
  const bool saved = SaveFileSafely(path, [](std::FILE* file) {
    SmfFile* smf = nullptr;
    uint32_t format = 1;
    if (OpenSMFWriter(&smf, file, &format) == SMF_FAILED) return false;
    SetSMFResolution(smf, TheClock != nullptr ? GetResolution(TheClock) : SongResolution.load());
    writeTrack(smf, 0, TempoTrack);
    writeTimeSignature(smf);
    writeSongTracks(smf);
    return CloseSMF(&smf) == 0;
  });
  if (!saved) return 0;
  SongDirty = 0;
  return 1;
}
