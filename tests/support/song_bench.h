#pragma once
// A bench for the song and the transport: the MIDI bench with the clock and
// the output installed as the Control Bar's, a windowless Control Bar that
// takes their notifications, the view fakes, scripted prompts, and a new song.

#include <filesystem>
#include <string>
#include <vector>

#include "midi/live_devices.h"
#include "midi/transport_words.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "smf/smf.h"
#include "song/note_linking.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "song/track_rows.h"
#include "support/midi_fixture.h"
#include "support/song_fixture.h"
#include "support/song_views.h"
#include "transport/playback_feed.h"
#include "transport/transport_commands.h"

class SongBench : public MidiBench {
 protected:
  void SetUp() override {
    MidiBench::SetUp();
    ClearViewRegistry();
    ClearSongTracks();
    platform::installPrompts(&prompts);
    ASSERT_EQ(OpenSync(&clock, &controlBar, SYNC_INTERNAL, 10), 0u);
    SetResolution(clock, 120);
    ASSERT_EQ(OpenMidiOut(&out, &controlBar, 0, clock, MIDI_OPEN_WORD), 0u);
    TheClock = clock;
    TheMidiOut = out;
    ControlBarWindow = &controlBar;
    ControlBar = &bar;
    FrameWindow = &frame;
    ClearTrackRows();
    InstallFeedHooks();
    Playing = Recording = Capturing = Generating = Draining = Linked = 0;
    Numerator = 4;
    Denominator = 4;
    MidiFilesDir.clear();
    ResetSong();
    loop.pump();
    folder = std::filesystem::temp_directory_path() /
             ("velmora-song-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
  }

  void TearDown() override {
    CloseSMF(&SongReadHandle);
    ClearSongTracks();
    ClearTrackRows();
    LyricText.reset();
    ClearViewRegistry();
    ControlBarWindow = nullptr;
    TheClock = nullptr;
    TheMidiOut = nullptr;
    platform::installPrompts(nullptr);
    std::filesystem::remove_all(folder);
    MidiBench::TearDown();
  }

  // A track from events given in absolute time.
  static void install(uint32_t track, std::vector<MidiEvent> absolute) {
    AbsoluteToDelta(absolute.data(), static_cast<uint32_t>(absolute.size()));
    InstallTrack(track, static_cast<uint32_t>(absolute.size()), absolute.data());
  }

  // Runs the clock and delivers its notifications until the transport stops,
  // or at most max passes; the number of passes run.
  int playToTheEnd(int max = 200000) {
    int n = 0;
    while (Playing == 1 && n < max) {
      timers.step();
      loop.pump();
      ++n;
    }
    return n;
  }

  std::string path(const std::string& name) const { return (folder / name).string(); }

  static std::string corpus(const std::string& name) { return std::string(VELMORA_TEST_DATA) + "/" + name; }

  platform::ScriptedPrompts prompts;
  TransportWindow controlBar;
  RecordingControlBar bar;
  RecordingFrame frame;
  std::filesystem::path folder;
};
