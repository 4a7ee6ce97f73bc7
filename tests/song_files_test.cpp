#include "song/song_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "platform/command_ids.h"
#include "smf/smf.h"
#include "song/song_tempo.h"
#include "support/song_bench.h"

namespace {

using platform::ScriptedPrompts;

std::vector<uint8_t> bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void append(std::vector<uint8_t>& out, uint32_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// A Standard MIDI File of the given tracks, each a body that ends its own track.
std::vector<uint8_t> smfBytes(uint16_t division, const std::vector<std::vector<uint8_t>>& tracks) {
  std::vector<uint8_t> out;
  for (char c : std::string("MThd")) out.push_back(static_cast<uint8_t>(c));
  append(out, 6, 4);
  append(out, 1, 2);
  append(out, static_cast<uint32_t>(tracks.size()), 2);
  append(out, division, 2);
  for (const auto& body : tracks) {
    for (char c : std::string("MTrk")) out.push_back(static_cast<uint8_t>(c));
    append(out, static_cast<uint32_t>(body.size()), 4);
    for (uint8_t b : body) out.push_back(b);
  }
  return out;
}

const std::vector<uint8_t> EmptyTrack = {0, 0xFF, 0x2F, 0};

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// The note events of a track as (time, status, key, velocity).
std::vector<std::tuple<uint32_t, int, int, int>> notesOf(uint32_t track) {
  std::vector<std::tuple<uint32_t, int, int, int>> notes;
  const TrackRecord& t = Tracks[track];
  for (uint32_t i = 0; i < t.count; ++i) {
    const MidiEvent& e = t.events[i];
    if ((e.status & 0xE0) == 0x80) notes.emplace_back(e.time, e.status, e.value1, e.value2);
  }
  return notes;
}

using SongFiles = SongBench;

// ---- the empty song ----

TEST_F(SongFiles, AnEmptySongHoldsOneTempoEventInTheTempoTrack) {
  EXPECT_EQ(ActiveTrackCount, 1);
  EXPECT_EQ(ActiveTracks[0], TempoTrack);
  ASSERT_EQ(Tracks[TempoTrack].count, 1u);
  const MidiEvent& e = Tracks[TempoTrack].events[0];
  EXPECT_EQ(e.time, 0u);
  EXPECT_EQ(e.status, 0);
  EXPECT_EQ(uint32_t{e.value1} << 16 | uint32_t{e.value2} << 8 | e.value3, 1000000u) << "60 beats a minute";
  EXPECT_EQ(GetTempo(clock), 1000000u);
  EXPECT_NEAR(bar.tempo, 60.00, 0.005);
  EXPECT_NEAR(bar.upDownTempo, 60, 0.005) << "the up-down control moves too";
  EXPECT_EQ(bar.fields[2050], "00001:01:000");
  EXPECT_EQ(bar.fields[2051], "00001:01:000");
  EXPECT_EQ(frame.songTitle, "No name");
  EXPECT_EQ(SongDirty, 0u);
  EXPECT_EQ(SongResolution.load(), 120u);
  SeekFeed(0);
  EXPECT_EQ(FeedRemaining.load(), 1u) << "the feed finds only the tempo event";
}

TEST_F(SongFiles, TheMeterSurvivesNewAndTicksPerBarComesFromTheOldNumeratorAndResolution120) {
  Numerator = 3;
  Denominator = 8;
  SongResolution = 480;
  TicksPerBar = 1440;
  NewSong();
  EXPECT_EQ(Numerator.load(), 3u);
  EXPECT_EQ(Denominator.load(), 8u);
  EXPECT_EQ(TicksPerBar.load(), 360u);
}

TEST_F(SongFiles, ResetClearsTouchedTracksButLeavesTheRowOfAnUntouchedTrack) {
  install(0, {ev(0, 0x90, 60, 90), ev(10, 0x90, 60, 0)});
  Tracks[0].keyOffset = 5;
  TouchTrack(0);
  BuildTrackRow(0);
  Tracks[7].repeats = 3;
  BuildTrackRow(7);  // a row made by a paste: not touched
  TrackNames[0] = "Lead";
  ResetSong();
  EXPECT_EQ(Tracks[0].events, nullptr);
  EXPECT_EQ(Tracks[0].keyOffset, 0);
  EXPECT_FALSE(TrackRowAt(0) != nullptr);
  EXPECT_FALSE(TrackNames[0].has_value());
  EXPECT_TRUE(TrackRowAt(7) != nullptr) << "a track not in TouchedTracks keeps its row";
  EXPECT_EQ(Tracks[7].repeats, 3) << "and its settings";
}

TEST_F(SongFiles, ResetEmptiesTheOpenViewsAndTheSelection) {
  RecordingList tracks, events;
  RecordingLyrics lyrics;
  install(2, {ev(0, 0xB0, 7, 90), ev(10, 0xB0, 7, 80)});
  TracksList = &tracks;
  EventsList = &events;
  LyricsEdit = &lyrics;
  TracksOpen = EventsOpen = LyricsOpen = 1;
  tracks.selected = {2, 4};
  ListEventRowsOf({2, 4});
  ASSERT_EQ(EventRowCount, 2u);
  const int updates = frame.updates;
  ResetSong();
  EXPECT_TRUE(tracks.selected.empty());
  EXPECT_EQ(SelectedTrackCount, 0);
  EXPECT_EQ(events.clears, 1);
  EXPECT_TRUE(EventRows.empty()) << "the rows go before the events they point into";
  EXPECT_EQ(EventRowCount, 0u);
  EXPECT_EQ(lyrics.text, "");
  EXPECT_GT(frame.updates, updates);
  EXPECT_GT(tracks.repaints, 0);
}

// ---- the question ----

TEST_F(SongFiles, NewWithACleanSongAsksNothing) {
  install(0, {ev(0, 0xB0, 7, 100)});
  NewSong();
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(Tracks[0].events, nullptr);
}

TEST_F(SongFiles, YesWithoutAPathOpensSaveAsAndCancellingThereCancelsTheNew) {
  install(0, {ev(0, 0xB0, 7, 100)});
  SongDirty = 1;
  prompts.planAnswer(platform::IDYES);
  prompts.planFile(std::nullopt);
  NewSong();
  ASSERT_EQ(prompts.shown().size(), 2u);
  const auto& question = prompts.shown()[0];
  EXPECT_EQ(question.text, "\nYour work has changed.\n\nSave it?") << "no path: the first line is empty";
  EXPECT_EQ(question.title, "Velmora");
  EXPECT_EQ(question.style, platform::MB_YESNOCANCEL | platform::MB_ICONEXCLAMATION);
  const auto& chooser = prompts.shown()[1];
  EXPECT_EQ(chooser.kind, ScriptedPrompts::Kind::SaveFile);
  EXPECT_EQ(chooser.dialog.title, "Save as");
  ASSERT_EQ(chooser.dialog.filters.size(), 1u);
  EXPECT_EQ(chooser.dialog.filters[0], (platform::FileFilter{"MIDI files (*.mid)", "*.mid"}));
  EXPECT_TRUE(chooser.dialog.askToOverwrite);
  EXPECT_TRUE(chooser.dialog.mustExist) << "the save dialog carries the must-exist flag too";
  EXPECT_NE(Tracks[0].events, nullptr) << "the New was cancelled";
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(SongFiles, NoAtThePromptGoesOnWithoutSaving) {
  install(0, {ev(0, 0xB0, 7, 100)});
  SongDirty = 1;
  SongFilePath = path("kept.mid");
  prompts.planAnswer(platform::IDNO);
  NewSong();
  EXPECT_EQ(prompts.shown()[0].text, path("kept.mid") + "\nYour work has changed.\n\nSave it?");
  EXPECT_EQ(Tracks[0].events, nullptr);
  EXPECT_FALSE(std::filesystem::exists(path("kept.mid")));
}

TEST_F(SongFiles, CancelAtThePromptStopsTheCaller) {
  SongDirty = 1;
  prompts.planAnswer(platform::IDCANCEL);
  EXPECT_EQ(SavePrompt(), 0);
}

TEST_F(SongFiles, YesWithAPathSavesThereAndGoesOn) {
  install(0, {ev(0, 0x90, 60, 90), ev(60, 0x90, 60, 0)});
  SongDirty = 1;
  SongFilePath = path("song.mid");
  prompts.planAnswer(platform::IDYES);
  NewSong();
  EXPECT_TRUE(std::filesystem::exists(path("song.mid")));
  EXPECT_EQ(Tracks[0].events, nullptr) << "the New went on after the save";
}

// ---- open ----

TEST_F(SongFiles, AfterOpenTheTitleShowsTheFileThePathIsEmptyAndThePromptsFirstLineIsEmpty) {
  prompts.planFile(corpus("format1_two_tracks.mid"));
  OpenSongDialog();
  const auto& chooser = prompts.shown().at(0);
  EXPECT_EQ(chooser.dialog.title, "Open");
  ASSERT_EQ(chooser.dialog.filters.size(), 2u);
  EXPECT_EQ(chooser.dialog.filters[0], (platform::FileFilter{"MIDI files (*.mid;*.mff)", "*.mid;*.mff"}));
  EXPECT_EQ(chooser.dialog.filters[1], (platform::FileFilter{"All files (*.*)", "*.*"}));
  EXPECT_EQ(frame.songTitle, corpus("format1_two_tracks.mid"));
  EXPECT_TRUE(SongFilePath.empty());
  EXPECT_EQ(MidiFilesDir, std::string(VELMORA_TEST_DATA));
  SongDirty = 1;
  prompts.planAnswer(platform::IDCANCEL);
  SavePrompt();
  EXPECT_EQ(prompts.shown().back().text, "\nYour work has changed.\n\nSave it?");
}

TEST_F(SongFiles, AFileThatCannotBeReadSaysInvalidFileFormatAndLeavesAnEmptySongWithTheChosenTitle) {
  install(0, {ev(0, 0xB0, 7, 100)});
  prompts.planFile(corpus("foreign_not_midi.mid"));
  OpenSongDialog();
  const auto& box = prompts.shown().back();
  EXPECT_EQ(box.text, "Invalid file format");
  EXPECT_EQ(box.title, "Error");
  EXPECT_EQ(box.style, platform::MB_ICONSTOP);
  EXPECT_EQ(ActiveTrackCount, 1) << "the old song went before the file was looked at";
  EXPECT_EQ(SongReadHandle, nullptr);
  EXPECT_EQ(frame.songTitle, corpus("foreign_not_midi.mid"));
}

TEST_F(SongFiles, AMissingFileSaysInvalidFileFormat) {
  LoadSong(path("nowhere.mid"));
  EXPECT_EQ(prompts.shown().back().text, "Invalid file format");
}

TEST_F(SongFiles, CancellingTheOpenDialogChangesNothing) {
  install(0, {ev(0, 0xB0, 7, 100)});
  prompts.planFile(std::nullopt);
  OpenSongDialog();
  EXPECT_NE(Tracks[0].events, nullptr);
  EXPECT_EQ(frame.songTitle, "No name");
}

// ---- what a load makes of a file ----

TEST_F(SongFiles, AFormat1FileOfOneTrackGivesOnlyATempoTrackWhoseChannelEventsPlay) {
  LoadSong(corpus("one_track_format1.mid"));
  EXPECT_EQ(ActiveTrackCount, 1);
  EXPECT_EQ(notesOf(TempoTrack).size(), 4u);
  TransportCommand(CMD_PLAY);
  playToTheEnd();
  int noteOns = 0;
  for (uint32_t word : sentMessages()) noteOns += (word & 0xF0) == 0x90 && (word >> 16 & 0x7F) != 0;
  EXPECT_EQ(noteOns, 2);
}

TEST_F(SongFiles, AFormat2FileLoadsAsFormat1) {
  LoadSong(corpus("format2_patterns.mid"));
  EXPECT_EQ(ActiveTrackCount, 3);
  EXPECT_EQ(notesOf(0).size(), 8u);
  EXPECT_EQ(notesOf(1).size(), 8u);
  EXPECT_EQ(GetTempo(clock), 750000u);
}

TEST_F(SongFiles, AFormat0FileLeavesTrack1WithARowAndNoEventsAndItsFirstTempoInTheClock) {
  LoadSong(corpus("format0_running_status.mid"));
  EXPECT_EQ(GetTempo(clock), 600000u);
  EXPECT_NEAR(bar.tempo, 100.00, 0.005);
  EXPECT_NEAR(bar.upDownTempo, 100, 0.005) << "the up-down control moves too";
  EXPECT_EQ(Tracks[0].count, 0u);
  EXPECT_TRUE(TrackRowAt(0) != nullptr);
  EXPECT_EQ(ActiveTrackCount, 1);
  EXPECT_EQ(Tracks[TempoTrack].count, 1u) << "no tempo map: the reset's event stays";
  EXPECT_EQ(TakeCount, 16u) << "the channel events stay behind in the take buffer";
  EXPECT_EQ(SongResolution.load(), 96u);
  EXPECT_EQ(SongDirty, 0u);
}

TEST_F(SongFiles, AFileWithoutATimeSignatureSetsFourFour) {
  Numerator = 3;
  Denominator = 8;
  LoadSong(corpus("format1_two_tracks.mid"));
  EXPECT_EQ(Numerator.load(), 4u);
  LoadSong(corpus("format1_running_status_across_meta.mid"));
  EXPECT_EQ(Numerator.load(), 4u);
  EXPECT_EQ(Denominator.load(), 4u);
  EXPECT_EQ(bar.fields[1180], "4");
  EXPECT_EQ(bar.fields[1181], "4");
}

TEST_F(SongFiles, ATimeSignatureSetsTheMeterAndTheBar) {
  LoadSong(corpus("format0_two_channels.mid"));
  EXPECT_EQ(Numerator.load(), 3u);
  EXPECT_EQ(Denominator.load(), 4u);
  EXPECT_EQ(TicksPerBar.load(), 360u);
  EXPECT_EQ(clock->beatsPerBar.load(), 3);
}

TEST_F(SongFiles, ANumeratorAbove127ReadsAsNegative) {
  LoadSong(corpus("numerator_200.mid"));
  EXPECT_EQ(static_cast<int32_t>(Numerator.load()), -56);
  EXPECT_EQ(bar.fields[1180], "-56");
  EXPECT_EQ(Denominator.load(), 8u);
}

TEST_F(SongFiles, AFileOf40000EventsInOneTrackLoads32768OfThemWithoutAWord) {
  LoadSong(corpus("long_track_40000_events.mid"));
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_GE(Tracks[0].count, 32768u) << "32768 read, and the notes left open closed";
  EXPECT_LE(Tracks[0].count, 32769u);
}

TEST_F(SongFiles, TwoLyricsAtOneTickKeepTheFirstAndWordsThatMeetGetASpace) {
  RecordingLyrics lyrics;
  LyricsEdit = &lyrics;
  LyricsOpen = 1;
  LoadSong(corpus("format1_lyrics.mid"));
  ASSERT_TRUE(LyricText);
  EXPECT_STREQ(LyricText.get(), "Hel lo world\r\nline two");
  EXPECT_EQ(lyrics.text, "Hel lo world\r\nline two");
}

TEST_F(SongFiles, TheOffsetsOfAccentedLyricsPointAtTheirWordsInTheJoinedText) {
  // Windows Western bytes: "Café", "olé" and "Él", each at its own tick.
  const std::vector<std::string> words = {"Caf\xE9", "ol\xE9", "\xC9l"};
  std::vector<uint8_t> body;
  for (const std::string& word : words) {
    body.insert(body.end(), {10, 0xFF, 0x05, static_cast<uint8_t>(word.size())});
    body.insert(body.end(), word.begin(), word.end());
  }
  body.insert(body.end(), EmptyTrack.begin(), EmptyTrack.end());
  writeBytes(path("accents.mid"), smfBytes(120, {EmptyTrack, body}));
  LoadSong(path("accents.mid"));
  ASSERT_TRUE(LyricText);
  const std::string text = LyricText.get();
  EXPECT_EQ(text, "Caf\xE9 ol\xE9 \xC9l") << "accented letters meet letter to letter";
  std::vector<std::pair<uint32_t, uint32_t>> spans;
  for (uint32_t i = 0; i < Tracks[0].count; ++i) {
    const MidiEvent& e = Tracks[0].events[i];
    if (e.status != 0 || e.metaType != META_LYRIC) continue;
    spans.emplace_back(uint32_t{e.value1} << 8 | e.value2, uint32_t{e.value3} << 8 | e.playedChannel);
  }
  ASSERT_EQ(spans.size(), words.size());
  for (std::size_t i = 0; i < words.size(); ++i) {
    const auto [start, end] = spans[i];
    ASSERT_LE(end, text.size()) << i;
    const std::string spanned = text.substr(start, end - start);
    EXPECT_EQ(spanned, (i == 0 ? "" : " ") + words[i]) << "lyric " << i;
  }
  EXPECT_EQ(spans.back().second, text.size());
}

TEST_F(SongFiles, LyricsOfTheFirstTrackBecomeTempoTrackEventsButTheirTextIsNotCollected) {
  LoadSong(corpus("format1_lyrics_in_first_track.mid"));
  ASSERT_TRUE(LyricText);
  EXPECT_STREQ(LyricText.get(), "");
  bool lyricEvent = false;
  for (uint32_t i = 0; i < Tracks[TempoTrack].count; ++i) {
    lyricEvent |= Tracks[TempoTrack].events[i].metaType == META_LYRIC;
  }
  EXPECT_TRUE(lyricEvent);
}

TEST_F(SongFiles, LyricTextStopsAtTheEndOfItsBlock) {
  // One track of 300 lyrics of 255 letters each, at rising ticks: 76500 bytes of text.
  std::vector<uint8_t> body;
  const std::string word(255, 'a');
  for (int i = 0; i < 300; ++i) {
    body.insert(body.end(), {0x01, 0xFF, 0x05, 0x81, 0x7F});
    body.insert(body.end(), word.begin(), word.end());
  }
  body.insert(body.end(), EmptyTrack.begin(), EmptyTrack.end());
  writeBytes(path("words.mid"), smfBytes(120, {EmptyTrack, body}));
  LoadSong(path("words.mid"));
  ASSERT_TRUE(LyricText);
  EXPECT_EQ(LyricText[LyricTextSize - 1], '\0') << "the block keeps its terminator";
  EXPECT_EQ(std::strlen(LyricText.get()), LyricTextSize - 1);
}

TEST_F(SongFiles, AFileOfMoreThan257TracksGivesAt256SongTracks) {
  std::vector<std::vector<uint8_t>> tracks;
  for (int t = 0; t < 300; ++t) {
    const auto key = static_cast<uint8_t>(t % 128);
    tracks.push_back({0, 0x90, key, 64, 10, 0x80, key, 0});
  }
  writeBytes(path("wide.mid"), smfBytes(120, tracks));
  LoadSong(path("wide.mid"));
  EXPECT_EQ(ActiveTrackCount, 257) << "the tempo track and 256 song tracks";
  EXPECT_EQ(RecordTrack, 0);
  EXPECT_EQ(notesOf(255).size(), 2u);
}

TEST_F(SongFiles, ATempoOf0InTheFirstEventDividesNothingAndTheOpeningTempoStays) {
  LoadSong(corpus("zero_tempo_first.mid"));
  EXPECT_EQ(GetTempo(clock), 1000000u);
  EXPECT_NEAR(bar.tempo, 60.00, 0.005);
}

TEST_F(SongFiles, AnSmpteDivisionGivesTicksPerQuarterAt120BeatsAMinute) {
  LoadSong(corpus("smpte_25fps.mid"));
  EXPECT_EQ(SongResolution.load(), 500u) << "25 frames of 40 ticks a second, half a second a beat";
  EXPECT_EQ(GetResolution(clock), 500u);
}

TEST_F(SongFiles, ADivisionOf0ReadsTheSongAt120) {
  writeBytes(path("still.mid"), smfBytes(0, {EmptyTrack, {0, 0x90, 60, 64, 10, 0x80, 60, 0}}));
  LoadSong(path("still.mid"));
  EXPECT_EQ(SongResolution.load(), 120u);
  EXPECT_EQ(GetResolution(clock), 120u);
}

TEST_F(SongFiles, AnEmptyFirstTrackDoesNotReadTheTakeBuffersOldContentsAsATempo) {
  TakeBuffer[0] = MidiEvent{0, 0, 0x04, 0x93, 0xE0, nullptr, 0, 0, 0, META_TEMPO};  // 300000 from an earlier load
  writeBytes(path("bare.mid"), smfBytes(120, {EmptyTrack, {0, 0x90, 60, 64, 10, 0x80, 60, 0}}));
  LoadSong(path("bare.mid"));
  EXPECT_EQ(GetTempo(clock), 1000000u);
}

TEST_F(SongFiles, ATimeSignaturePowerPast31GivesADenominatorOf0AndTheWriterDividesNothing) {
  const std::vector<uint8_t> tempoTrack = {0, 0xFF, 0x58, 4, 3, 40, 24, 8, 0, 0xFF, 0x2F, 0};
  writeBytes(path("deep.mid"), smfBytes(120, {tempoTrack, {0, 0x90, 60, 64, 10, 0x80, 60, 0}}));
  LoadSong(path("deep.mid"));
  EXPECT_EQ(Numerator.load(), 3u);
  EXPECT_EQ(Denominator.load(), 0u);
  ASSERT_EQ(WriteSong(path("deep-saved.mid")), 1);
  const std::vector<uint8_t> saved = bytesOf(path("deep-saved.mid"));
  const std::vector<uint8_t> meter = {0xFF, 0x58, 4, 3, 0, 0, 8};  // power 0 and 0 clocks a beat
  EXPECT_NE(std::search(saved.begin(), saved.end(), meter.begin(), meter.end()), saved.end());
}

TEST_F(SongFiles, ATrackWithoutAChannelSendsItsPanWithStatus0xFFWhenItsRowIsBuilt) {
  Tracks[3].pan = 64;
  BuildTrackRow(3);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0xFF | 10u << 8 | 64u << 16}));
}

TEST_F(SongFiles, TrackNamesComeFromTheFile) {
  LoadSong(corpus("format1_track_names.mid"));
  EXPECT_EQ(TrackNames[0], "Piano");
  EXPECT_EQ(TrackNames[1], "Bass");
  EXPECT_FALSE(TrackNames[2].has_value());
}

// ---- save ----

TEST_F(SongFiles, SaveWithACleanSongDoesNothingAlsoWhenNoFileExists) {
  SongFilePath = path("absent.mid");
  SaveSong();
  EXPECT_FALSE(std::filesystem::exists(path("absent.mid")));
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(SongFiles, SaveAsWritesTheFileAndTakesItsPathAndTitle) {
  install(0, {ev(0, 0x90, 60, 90), ev(60, 0x90, 60, 0)});
  SongDirty = 1;
  prompts.planFile(path("new.mid"));
  SaveSongAs();
  EXPECT_EQ(SaveResult, 1);
  EXPECT_EQ(SongFilePath, path("new.mid"));
  EXPECT_EQ(frame.songTitle, path("new.mid"));
  EXPECT_EQ(SongDirty, 0u);
  EXPECT_EQ(MidiFilesDir, folder.string());
  EXPECT_FALSE(std::filesystem::exists(path("new.mid.partial")));
}

TEST_F(SongFiles, AFailedSaveLeavesTheOldFileAndTheSongChanged) {
  install(0, {ev(0, 0x90, 60, 90), ev(60, 0x90, 60, 0)});
  std::filesystem::create_directory(path("taken.mid"));  // a folder stands where the file should go
  writeBytes(path("taken.mid") + "/inside", {1, 2, 3});
  SongDirty = 1;
  SongFilePath = path("taken.mid");
  SaveSong();
  EXPECT_EQ(SaveResult, 0);
  EXPECT_EQ(SongDirty, 1u);
  EXPECT_EQ(bytesOf(path("taken.mid") + "/inside"), (std::vector<uint8_t>{1, 2, 3}));
  EXPECT_FALSE(std::filesystem::exists(path("taken.mid.partial")));
  EXPECT_EQ(WriteSong(path("no-such-folder/x.mid")), 0) << "a file that cannot be opened";
}

TEST_F(SongFiles, AnUnwritableSaveAtThePromptStopsTheCaller) {
  install(0, {ev(0, 0xB0, 7, 100)});
  SongDirty = 1;
  SongFilePath = path("no-such-folder/x.mid");
  prompts.planAnswer(platform::IDYES);
  NewSong();
  EXPECT_NE(Tracks[0].events, nullptr);
}

TEST_F(SongFiles, WriteSongWritesTheseBytes) {
  SongResolution = 120;
  install(0, {ev(0, 0x90, 60, 100), MidiEvent{60, 0, 0, 0, 0, nullptr, 0, 0, 0, META_LYRIC}, ev(120, 0x90, 60, 0)});
  ASSERT_EQ(WriteSong(path("golden.mid")), 1);
  const std::vector<uint8_t> expected = {
      'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, 2, 0, 120,
      'M', 'T', 'r', 'k', 0, 0, 0, 19,
      0x00, 0xFF, 0x51, 0x03, 0x0F, 0x42, 0x40,  // 60 beats a minute
      0x00, 0xFF, 0x58, 0x04, 4, 2, 24, 8,       // 4/4, 24 clocks a beat, 8 32nds a quarter
      0x00, 0xFF, 0x2F, 0x00,
      'M', 'T', 'r', 'k', 0, 0, 0, 18,
      0x00, 0x90, 60, 100,
      0x3C, 0xFF, 0x51, 0x03, 0, 0, 0,  // a lyric goes out as a tempo with its offsets
      0x3C, 60, 0,                      // running status across the meta event
      0x00, 0xFF, 0x2F, 0x00};
  EXPECT_EQ(bytesOf(path("golden.mid")), expected);
  LoadSong(path("golden.mid"));
  EXPECT_EQ(notesOf(0), (std::vector<std::tuple<uint32_t, int, int, int>>{{0, 0x90, 60, 100}, {120, 0x90, 60, 0}}));
  EXPECT_EQ(Tracks[TempoTrack].count, 1u);
  EXPECT_EQ(GetTempo(clock), 1000000u);
}

TEST_F(SongFiles, TheStoreIsUnchangedByASave) {
  install(0, {ev(5, 0x90, 60, 100), ev(125, 0x90, 60, 0)});
  WriteSong(path("same.mid"));
  EXPECT_EQ(notesOf(0), (std::vector<std::tuple<uint32_t, int, int, int>>{{5, 0x90, 60, 100}, {125, 0x90, 60, 0}}));
  EXPECT_EQ(Tracks[TempoTrack].events[0].time, 0u);
}

TEST_F(SongFiles, ASavedTrackWithRepeats2ComesBackAsThreeCopiesAndRep0) {
  install(0, {ev(0, 0x90, 60, 100), ev(100, 0x90, 60, 0)});
  Tracks[0].repeats = 2;
  WriteSong(path("repeats.mid"));
  LoadSong(path("repeats.mid"));
  EXPECT_EQ(notesOf(0).size(), 6u);
  EXPECT_EQ(Tracks[0].repeats, 0);
}

TEST_F(SongFiles, SavingAndLoadingWithKeyPlusGivesTransposedEventsAndKeyPlus0) {
  install(0, {ev(0, 0x90, 60, 100), ev(100, 0x80, 60, 0)});
  Tracks[0].keyOffset = 7;
  WriteSong(path("transposed.mid"));
  LoadSong(path("transposed.mid"));
  EXPECT_EQ(std::get<2>(notesOf(0).at(0)), 67);
  EXPECT_EQ(Tracks[0].keyOffset, 0);
}

TEST_F(SongFiles, ANameIsWrittenOnlyWhenTheNameAtTheTracksListPositionIsSetToo) {
  install(0, {ev(0, 0x90, 60, 100), ev(100, 0x80, 60, 0)});
  install(1, {ev(0, 0x90, 62, 100), ev(100, 0x80, 62, 0)});
  TrackNames[0] = "Lead";
  TrackNames[1] = "Pad";
  WriteSong(path("names.mid"));  // ActiveTracks: 256, 0, 1
  LoadSong(path("names.mid"));
  EXPECT_EQ(TrackNames[0], "Lead") << "position 1 names track 0's test";
  EXPECT_FALSE(TrackNames[1].has_value()) << "position 2 has no name, so track 1's is not written";
}

TEST_F(SongFiles, SysexIsLostOnSave) {
  LoadSong(corpus("format1_sysex.mid"));
  uint32_t sysex = 0;
  for (uint32_t i = 0; i < Tracks[0].count; ++i) sysex += Tracks[0].events[i].status == 0xF0;
  EXPECT_GE(sysex, 12u) << "two messages, one event per byte";
  WriteSong(path("sysex.mid"));
  const std::vector<uint8_t> saved = bytesOf(path("sysex.mid"));
  const std::vector<uint8_t> message = {0x7E, 0x7F, 0x09, 0x01};
  EXPECT_EQ(std::search(saved.begin(), saved.end(), message.begin(), message.end()), saved.end())
      << "the writer gives sysex events no data";
  const std::vector<uint8_t> lead = {0x00, 0xF0, 0x00};
  EXPECT_NE(std::search(saved.begin(), saved.end(), lead.begin(), lead.end()), saved.end())
      << "one 0xF0, then a row of delta bytes";
}

// ---- the tempo control and the song ----

TEST_F(SongFiles, TheTempoEntryWritesTheClockTheFieldAndTheFirstTempoEventOnly) {
  LoadSong(corpus("format1_tempo_map.mid"));
  const uint32_t count = Tracks[TempoTrack].count;
  TempoFraction = 0.5;
  TempoEntry(90);
  EXPECT_EQ(GetTempo(clock), static_cast<uint32_t>(60000000 / 90.5));
  EXPECT_NEAR(bar.tempo, 90.50, 0.005);
  EXPECT_EQ(SongTempo(), GetTempo(clock));
  EXPECT_EQ(Tracks[TempoTrack].count, count);
  const MidiEvent& second = Tracks[TempoTrack].events[1];
  EXPECT_EQ(uint32_t{second.value1} << 16 | uint32_t{second.value2} << 8 | second.value3, 250000u)
      << "later tempo events stay in force";
}

TEST_F(SongFiles, ATempoEntryThatWouldGiveNoTempoIsIgnored) {
  TempoFraction = 0;
  TempoEntry(0);
  TempoEntry(-5);
  EXPECT_EQ(GetTempo(clock), 1000000u);
  EXPECT_EQ(SongTempo(), 1000000u);
}

TEST_F(SongFiles, ATempoEventOfTheSongShowsInTheControlBarAndKeepsTheFraction) {
  TempoFraction = 0.25;
  SetTempo(clock, 400000);
  SongMetaNotice(META_TEMPO, 0);
  EXPECT_NEAR(bar.upDownTempo, 150, 0.005) << "the up-down control moves too";
  EXPECT_NEAR(bar.tempo, 150.00, 0.005);
  EXPECT_EQ(TempoFraction, 0.25);
}

TEST_F(SongFiles, ALyricEventSelectsItsSpanInTheLyricsView) {
  RecordingLyrics lyrics;
  LyricsEdit = &lyrics;
  SongMetaNotice(META_LYRIC, 3 | 9 << 16);
  ASSERT_EQ(lyrics.highlights.size(), 1u);
  EXPECT_EQ(lyrics.highlights[0], (std::pair<uint32_t, uint32_t>{3, 9}));
}

}  // namespace
