#include "render/render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tuple>

#include "midi/midi_event.h"
#include "random/trandom.h"
#include "smf/smf.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> lines(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> result;
  for (std::string line; std::getline(file, line);) result.push_back(line);
  return result;
}

std::string temp(const char* name) { return (fs::temp_directory_path() / name).string(); }

std::string hex(int value) {
  char text[4];
  std::snprintf(text, sizeof text, "%02X", value);
  return text;
}

// The index a draw picks over n entries of weight 64 from lower, for r.
int drawOver(double r, int lower, int n) {
  const int sum = 64 * n;
  const int target = static_cast<int>(r * (sum - 1) + 1.0 + 0.5);
  return lower + (target - 1) / 64;
}

TEST(Render, TheFirstChordsOfTheDefaultSetUpWithSeed0AreTheOnesTheRulesGive) {
  // At 60 beats a minute and 120 ticks a quarter, passes of 10 ms give 1.2
  // ticks: now runs 1, 2, 3, 4, 6, ... and reaches 15 at pass 13.
  // The reset's first step and the first pass's step set the bounds from
  // element 0 of the start-up curves: notes 52..64, velocity 40..50, one
  // voice, density 15..17, length 12..12.
  tdseed(0);
  double r[6];
  for (double& x : r) x = tdrand();
  const int density = drawOver(r[0], 15, 3);  // 0.274272...: density 15
  ASSERT_EQ(density, 15);
  // Length 12 with Overlap off: 12 * 15 / 120 = 1, so the chord lasts 1 * 120 / 100 = 1 tick.
  const int note = drawOver(r[4], 52, 13);
  const int velocity = drawOver(r[5], 40, 11);

  RenderOptions options;
  options.seconds = 1;
  options.log = temp("velmora-first-chords.log");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  const auto log = lines(options.log);
  ASSERT_GE(log.size(), 8u);
  EXPECT_EQ(log[0], "0 0 FA") << "MIDI Start goes out as the button starts the clock";
  EXPECT_EQ(log[1], "1 1 90 " + hex(note) + " " + hex(velocity));
  EXPECT_EQ(log[2], "3 3 90 " + hex(note) + " 00") << "ended once its offTime 2 is below now";
  EXPECT_EQ(log[3], "5 6 F8") << "a MIDI clock every 5 ticks";
  EXPECT_EQ(log[4], "9 10 F8");
  // The next chord comes at tick 15 (pass 13) and, the voices having stepped
  // to element 1 at tick 10, has two notes.
  EXPECT_EQ(log[5].rfind("13 15 90 ", 0), 0u) << log[5];
  EXPECT_EQ(log[6].rfind("13 15 90 ", 0), 0u) << log[6];
  fs::remove(options.log);
}

TEST(Render, TheSameRunGivesTheSameLogAndAnotherSeedAnother) {
  RenderOptions options;
  options.seconds = 5;
  options.log = temp("velmora-a.log");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  const auto first = lines(options.log);
  ASSERT_TRUE(Render(options, error)) << error;
  EXPECT_EQ(lines(options.log), first);
  options.seed = 7;
  ASSERT_TRUE(Render(options, error)) << error;
  EXPECT_NE(lines(options.log), first);
  EXPECT_EQ(lines(options.log).back().substr(lines(options.log).back().size() - 2), "FC")
      << "the run ends with MIDI Stop once the drain is over";
  fs::remove(options.log);
}

TEST(Render, ANonPeriodicRunEndsByItself) {
  RenderOptions options;
  options.seconds = 3600;
  options.nonPeriodic = true;
  options.log = temp("velmora-np.log");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  const auto log = lines(options.log);
  // 128 steps of 10 ticks at 1.2 ticks a pass: about 1070 passes, not an hour.
  EXPECT_LT(std::stoul(log.back()), 1200u);
  fs::remove(options.log);
}

TEST(Render, TenSecondsOfTheDefaultSetUpRenderToAWavThatIsNotSilent) {
  RenderOptions options;
  options.seconds = 10;
  options.wav = temp("velmora-ten.wav");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  std::ifstream file(options.wav, std::ios::binary);
  const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), {});
  ASSERT_GT(bytes.size(), 44u + 10u * 44100 * 4);
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t at = 44; at + 1 < bytes.size(); at += 2, ++count) {
    const auto s = static_cast<int16_t>(bytes[at] | bytes[at + 1] << 8);
    sum += static_cast<double>(s) * s;
  }
  EXPECT_GT(std::sqrt(sum / static_cast<double>(count)), 100.0);
  fs::remove(options.wav);
}

TEST(Render, ARealTimeRunPlaysOnTheChosenDevice) {
  RenderOptions options;
  options.realtime = true;
  options.out = 1;  // the loopback
  options.seconds = 0.4;
  options.log = temp("velmora-realtime.log");
  std::string error;
  const auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(Render(options, error)) << error;
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400)) << "it took real time";
  const auto log = lines(options.log);
  ASSERT_GE(log.size(), 3u);
  EXPECT_EQ(log.front(), "0 0 FA");
  // The pass whose drain stops the clock sends Stop, then the MIDI clock due in that pass, if one is.
  std::size_t stop = log.size();
  while (stop > 0 && log[stop - 1].substr(log[stop - 1].size() - 2) != "FC") --stop;
  ASSERT_GT(stop, 0u) << "Stop was sent";
  for (std::size_t i = stop; i < log.size(); ++i) EXPECT_EQ(log[i].substr(log[i].size() - 2), "F8") << log[i];
  EXPECT_LE(log.size() - stop, 1u);
  options.out = 999;
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error.rfind("cannot open output device 999: ", 0), 0u) << error;
  fs::remove(options.log);
}

TEST(Render, EveryWrongArgumentIsOneClearLine) {
  std::string error;
  EXPECT_FALSE(ParseRenderArguments({"--seconds", "soon"}, error));
  EXPECT_EQ(error, "--seconds takes a number of seconds from 0 to 86400, not 'soon'");
  EXPECT_FALSE(ParseRenderArguments({"--tempo"}, error));
  EXPECT_EQ(error, "--tempo needs a value");
  EXPECT_FALSE(ParseRenderArguments({"--resolution", "961"}, error));
  EXPECT_FALSE(ParseRenderArguments({"--seed", "99999999999"}, error));
  EXPECT_FALSE(ParseRenderArguments({"--frobnicate"}, error));
  EXPECT_EQ(error, "unknown argument '--frobnicate' (try --help)");
  EXPECT_FALSE(ParseRenderArguments({"--realtime", "--wav", "x.wav"}, error));
  const auto fine = ParseRenderArguments({"--seed", "-5", "--tempo", "90.5", "--non-periodic", "--period", "5"}, error);
  ASSERT_TRUE(fine);
  EXPECT_EQ(*fine->seed, -5);
  EXPECT_DOUBLE_EQ(*fine->tempoBpm, 90.5);
  EXPECT_TRUE(fine->nonPeriodic);
  EXPECT_EQ(fine->periodMs, 5u);
}

TEST(Render, AFileThatIsNoParameterFileIsRefusedWithAClearLine) {
  const std::string path = temp("velmora-not.vlm");
  std::ofstream(path) << "MThd and so on";
  RenderOptions options;
  options.params = path;
  std::string error;
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "'" + path + "' is not a Velmora parameter file (it does not begin with VLhd)");
  options.params = temp("velmora-missing.vlm");
  EXPECT_FALSE(Render(options, error));
  EXPECT_NE(error.find("cannot read"), std::string::npos);
  fs::remove(path);
}

TEST(Render, ALogThatCannotBeWrittenIsAnError) {
  RenderOptions options;
  options.log = "/nonexistent-folder/x.log";
  std::string error;
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot write the log '/nonexistent-folder/x.log'");
}

}  // namespace

namespace {

std::string corpusFile(const char* name) { return std::string(VELMORA_TEST_DATA) + "/" + name; }

TEST(RenderSong, PlaysTheSongToItsEndAndLogsEveryNote) {
  RenderOptions options;
  options.song = corpusFile("format1_two_tracks.mid");
  options.log = temp("velmora-song.log");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  int noteOns = 0;
  std::string last;
  for (const std::string& line : lines(options.log)) {
    std::istringstream words(line);
    uint32_t pass = 0, now = 0;
    std::string status, key, velocity;
    words >> pass >> now >> status >> key >> velocity;
    noteOns += (status == "90" || status == "91") && velocity != "00";
    last = status;
  }
  EXPECT_EQ(noteOns, 12) << "8 notes in one track, 4 in the other";
  EXPECT_EQ(last, "EF") << "the end of the song stopped the transport: benders centred";
}

TEST(RenderSong, SavesTheLoadedSongAndStopsAfterTheGivenSeconds) {
  RenderOptions options;
  options.song = corpusFile("format1_tempo_map.mid");
  options.save = temp("velmora-saved.mid");
  options.seconds = 0.5;
  options.secondsGiven = true;
  options.log = temp("velmora-short.log");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  EXPECT_GT(fs::file_size(options.save), 100u);
  const auto log = lines(options.log);
  ASSERT_FALSE(log.empty());
  EXPECT_LE(std::stoul(log.back()), 52u) << "half a second is 50 passes of 10 ms";
}

TEST(RenderSong, SaysWhyASongCannotBeLoadedOrSaved) {
  RenderOptions options;
  std::string error;
  options.song = corpusFile("foreign_not_midi.mid");
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot load '" + options.song + "': Invalid file format");
  options.song = temp("velmora-no-such-song.mid");
  error.clear();
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot read the MIDI file '" + options.song + "'");
  options.song = corpusFile("format1_two_tracks.mid");
  options.save = "/no/such/folder/out.mid";
  error.clear();
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot write the MIDI file '/no/such/folder/out.mid'");
}

TEST(RenderSong, RefusesGeneratorOptionsAndASaveWithoutASong) {
  std::string error;
  EXPECT_FALSE(ParseRenderArguments({"--song", "a.mid", "--seed", "3"}, error));
  EXPECT_EQ(error,
            "--song plays a MIDI file as it is and cannot go with --params, --seed, --tempo, --resolution or "
            "--non-periodic");
  EXPECT_FALSE(ParseRenderArguments({"--save", "b.mid"}, error));
  EXPECT_EQ(error, "--save writes a loaded song and needs --song");
  const auto options = ParseRenderArguments({"--song", "a.mid", "--save", "b.mid", "--seconds", "2"}, error);
  ASSERT_TRUE(options);
  EXPECT_EQ(options->song, "a.mid");
  EXPECT_EQ(options->save, "b.mid");
  EXPECT_TRUE(options->secondsGiven);
}

}  // namespace

namespace {

struct Strike {
  uint32_t tick;
  std::string message;
  bool operator<(const Strike& other) const { return std::tie(tick, message) < std::tie(other.tick, other.message); }
  bool operator==(const Strike&) const = default;
};

// The note-ons with a velocity in a log, at the clock's tick.
std::vector<Strike> loggedStrikes(const std::string& path) {
  std::vector<Strike> strikes;
  for (const std::string& line : lines(path)) {
    std::istringstream words(line);
    uint32_t pass = 0, now = 0;
    std::string status, key, velocity;
    words >> pass >> now >> status >> key >> velocity;
    if (status.size() == 2 && status[0] == '9' && velocity != "00") strikes.push_back({now, status + " " + key + " " + velocity});
  }
  std::sort(strikes.begin(), strikes.end());
  return strikes;
}

// The note-ons with a velocity in the second track of a MIDI file.
std::vector<Strike> fileStrikes(const std::string& path) {
  SmfFile* smf = nullptr;
  uint32_t format = 0;
  std::vector<Strike> strikes;
  if (OpenSMF(&smf, path.c_str(), &format, 'r') == SMF_FAILED) return strikes;
  std::vector<MidiEvent> events(40000);
  const uint32_t n = ReadSMF(smf, 1, events.data(), static_cast<uint32_t>(events.size()));
  uint32_t tick = 0;
  for (uint32_t i = 0; n != SMF_FAILED && i < n; ++i) {
    tick += events[i].time;
    if ((events[i].status & 0xF0) == 0x90 && events[i].value2 != 0) {
      strikes.push_back({tick, hex(events[i].status) + " " + hex(events[i].value1) + " " + hex(events[i].value2)});
    }
  }
  CloseSMF(&smf);
  std::sort(strikes.begin(), strikes.end());
  return strikes;
}

TEST(RenderTake, TheGeneratorsTakeKeptAndSavedHoldsTheLoggedNotesAtTheLoggedTicks) {
  RenderOptions options;
  options.seconds = 20;
  options.seed = 11;
  options.log = temp("velmora-take.log");
  options.midi = temp("velmora-take.mid");
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  const auto logged = loggedStrikes(options.log);
  const auto saved = fileStrikes(options.midi);
  ASSERT_GT(logged.size(), 20u);
  EXPECT_EQ(saved, logged);
}

TEST(RenderTake, RecordingArgumentsThatDoNotFitAreOneClearLine) {
  std::string error;
  EXPECT_FALSE(ParseRenderArguments({"--record", "0"}, error));
  EXPECT_EQ(error, "--record takes down an input and needs --midi OUT.mid to write it to");
  EXPECT_FALSE(ParseRenderArguments({"--record", "x", "--midi", "a.mid"}, error));
  EXPECT_EQ(error, "--record takes an input device number (see velmora-devices), not 'x'");
  EXPECT_FALSE(ParseRenderArguments({"--midi-sync"}, error));
  EXPECT_EQ(error, "--midi-sync follows an input's MIDI clock and needs --record");
  EXPECT_FALSE(ParseRenderArguments({"--song", "a.mid", "--midi", "b.mid"}, error));
  EXPECT_EQ(error, "--midi records the generator or an input, not a song (use --save to write a song)");
  EXPECT_FALSE(ParseRenderArguments({"--record", "1", "--midi", "b.mid", "--wav", "c.wav"}, error));
  const auto fine = ParseRenderArguments({"--record", "1", "--midi", "b.mid", "--midi-sync"}, error);
  ASSERT_TRUE(fine);
  EXPECT_TRUE(fine->realtime) << "an input device plays in real time";
  EXPECT_EQ(fine->record, 1u);
}

TEST(RenderTake, AnInputThatCannotBeOpenedIsAnErrorAndNoFileIsWritten) {
  RenderOptions options;
  options.record = 999;
  options.realtime = true;
  options.seconds = 0.1;
  options.midi = temp("velmora-no-input.mid");
  fs::remove(options.midi);
  std::string error;
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error.rfind("cannot open input device 999: ", 0), 0u) << error;
  EXPECT_FALSE(fs::exists(options.midi));
}

TEST(RenderTake, ATakeThatCannotBeWrittenIsAnError) {
  RenderOptions options;
  options.seconds = 1;
  options.midi = temp("no-such-folder-for-velmora/take.mid");
  std::string error;
  EXPECT_FALSE(Render(options, error));
  EXPECT_EQ(error, "cannot write the MIDI file '" + options.midi + "'");
}

}  // namespace
