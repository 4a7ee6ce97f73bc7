// velmora-render's edits: each command on a file of tests/data, the saved
// file checked note by note against what the test works out by itself from
// the file it started from.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <map>

#include "render/render.h"
#include "smf/smf.h"

namespace {

namespace fs = std::filesystem;

struct Note {
  uint32_t start, end;
  int key, velocity, channel;
  bool operator==(const Note&) const = default;
  bool operator<(const Note& o) const { return std::tie(start, key, end) < std::tie(o.start, o.key, o.end); }
};

std::string corpus(const char* name) { return std::string(VELMORA_TEST_DATA) + "/" + name; }
std::string temp(const std::string& name) { return (fs::temp_directory_path() / ("velmora-edit-" + name)).string(); }

// The notes of a track of a MIDI file: each note-on paired with the first
// note-off of its key and channel after it, and the number of other events.
std::vector<Note> notesOf(const std::string& path, uint32_t track, int* others = nullptr) {
  SmfFile* smf = nullptr;
  uint32_t format = 0;
  std::vector<Note> notes;
  if (OpenSMF(&smf, path.c_str(), &format, 'r') == SMF_FAILED) return notes;
  std::vector<MidiEvent> events(4000);
  const uint32_t n = ReadSMF(smf, track, events.data(), static_cast<uint32_t>(events.size()));
  CloseSMF(&smf);
  std::map<std::pair<int, int>, std::deque<std::size_t>> open;
  uint32_t tick = 0;
  int count = 0;
  for (uint32_t i = 0; n != SMF_FAILED && i < n; ++i) {
    const MidiEvent& e = events[i];
    tick += e.time;
    const int kind = e.status & 0xF0, channel = e.status & 15;
    if (kind == 0x90 && e.value2 != 0) {
      open[{e.value1, channel}].push_back(notes.size());
      notes.push_back({tick, tick, e.value1, e.value2, channel});
    } else if (kind == 0x80 || kind == 0x90) {
      auto& waiting = open[{e.value1, channel}];
      if (!waiting.empty()) {
        notes[waiting.front()].end = tick;
        waiting.pop_front();
      }
    } else if (e.status != 0) {
      ++count;
    }
  }
  if (others != nullptr) *others = count;
  std::sort(notes.begin(), notes.end());
  return notes;
}

class RenderEdits : public ::testing::Test {
 protected:
  void SetUp() override {
    out = temp(::testing::UnitTest::GetInstance()->current_test_info()->name() + std::string(".mid"));
    fs::remove(out);
  }
  void TearDown() override { fs::remove(out); }
  // Loads the two-track file, runs the edits on the tracks and region given, and saves.
  RenderEnd edit(const std::string& select, const std::string& from, const std::string& to,
                 std::vector<std::string> edits) {
    error.clear();
    std::vector<std::string> arguments = {"--song", in, "--save", out, "--seconds", "0", "--select", select};
    if (!from.empty()) arguments.insert(arguments.end(), {"--from", from});
    if (!to.empty()) arguments.insert(arguments.end(), {"--to", to});
    for (const std::string& e : edits) arguments.insert(arguments.end(), {"--edit", e});
    const auto options = ParseRenderArguments(arguments, error);
    if (!options) return RenderEnd::Failed;
    return RenderRun(*options, error);
  }
  // Song track 1 of the file (after the tempo track) and song track 2.
  std::vector<Note> before(uint32_t track) const { return notesOf(in, track); }
  std::vector<Note> after(uint32_t track) const { return notesOf(out, track); }

  const std::string in = corpus("format1_two_tracks.mid");  // 120 ticks a beat, 4/4
  std::string out;
  std::string error;
};

TEST_F(RenderEdits, TransposeMovesTheNotesThatStartInTheRegion) {
  ASSERT_EQ(edit("1", "1:1:0", "1:1:200", {"transpose amount=5"}), RenderEnd::Done) << error;
  std::vector<Note> expected = before(1);
  for (Note& n : expected) {
    if (n.start <= 200) n.key += 5;
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(after(1), expected);
  EXPECT_EQ(after(2), before(2)) << "track 2 was not selected";
}

TEST_F(RenderEdits, VelocityRampsOverTheSelectedTracksNotes) {
  ASSERT_EQ(edit("2", "1:1:0", "9:1:0", {"velocity begin=10 end=20"}), RenderEnd::Done) << error;
  std::vector<Note> expected = before(2);
  ASSERT_EQ(expected.size(), 4u);
  const double step = 11.0 / 4;
  for (std::size_t i = 0; i < expected.size(); ++i) expected[i].velocity = 10 + static_cast<int>(step * static_cast<double>(i));
  EXPECT_EQ(after(2), expected);
}

TEST_F(RenderEdits, QuantizeRoundsStartsAndEndsToTheGivenTicks) {
  ASSERT_EQ(edit("1", "1:1:0", "9:1:0", {"quantize resolution=45"}), RenderEnd::Done) << error;
  const auto nearest = [](uint32_t t) { return (t + 22) / 45 * 45; };
  std::vector<Note> expected = before(1);
  for (Note& n : expected) {
    n.start = nearest(n.start);
    n.end = nearest(n.end);
    if (n.end == n.start) n.end += 45;
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(after(1), expected);
}

TEST_F(RenderEdits, LengthHalvesTimesAndDurationsFromTheSongsStart) {
  ASSERT_EQ(edit("1", "1:1:0", "9:1:0", {"length percentage=50 start=1 durations=1"}), RenderEnd::Done) << error;
  std::vector<Note> expected = before(1);
  for (Note& n : expected) {
    const uint32_t start = n.start / 2;
    n.end = start + (n.end - n.start) / 2;
    n.start = start;
  }
  EXPECT_EQ(after(1), expected);
}

TEST_F(RenderEdits, SlideByAMeasureMovesTheRegionsNotesByItsTicks) {
  ASSERT_EQ(edit("1,2", "1:1:0", "1:1:100", {"slide amount=1 unit=measures"}), RenderEnd::Done) << error;
  for (uint32_t track : {1u, 2u}) {
    std::vector<Note> expected = before(track);
    for (Note& n : expected) {
      if (n.start > 100) continue;
      n.start += 480;
      n.end += 480;
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(after(track), expected) << track;
  }
}

TEST_F(RenderEdits, CopyAndPasteIntoANewTrackRepeatTheRegionsNotes) {
  ASSERT_EQ(edit("1", "1:1:0", "1:1:119", {"copy", "paste time=2:1:0 track=3 repetitions=2 mode=replace"}),
            RenderEnd::Done)
      << error;
  // The region holds the notes at 0-50 and 60-110; the second pass follows the
  // last event of the first by the first event's offset (0) plus a tick.
  const std::vector<Note> expected = {
      {480, 530, 60, 90, 0}, {540, 590, 62, 90, 0}, {591, 641, 60, 90, 0}, {651, 701, 62, 90, 0}};
  EXPECT_EQ(after(3), expected);
  EXPECT_EQ(after(1), before(1)) << "a copy leaves its track";
}

TEST_F(RenderEdits, CutWithAHoleClosesTheRegionUp) {
  ASSERT_EQ(edit("1", "1:1:0", "1:1:119", {"cut hole=1"}), RenderEnd::Done) << error;
  std::vector<Note> expected;
  for (Note n : before(1)) {
    if (n.start <= 119) continue;
    n.start -= 119;
    n.end -= 119;
    expected.push_back(n);
  }
  EXPECT_EQ(after(1), expected);
}

TEST_F(RenderEdits, ARefusedFieldPrintsTheDialogsMessageExits2AndWritesNothing) {
  EXPECT_EQ(edit("1", "", "", {"transpose amount=200"}), RenderEnd::Refused);
  EXPECT_EQ(error, "--edit 'transpose amount=200': Value is not in the range -127 to 127.");
  EXPECT_FALSE(fs::exists(out));
  EXPECT_EQ(edit("1", "", "", {"copy", "paste repetitions=-3"}), RenderEnd::Refused);
  EXPECT_EQ(error, "--edit 'paste repetitions=-3': Value is not in the range 0 to 65535.");
  EXPECT_FALSE(fs::exists(out));
}

TEST_F(RenderEdits, AWrongCommandFieldOrValueIsOneClearLine) {
  EXPECT_EQ(edit("1", "", "", {"frobnicate"}), RenderEnd::Refused);
  EXPECT_EQ(error, "--edit 'frobnicate': no edit 'frobnicate' (copy, cut, paste, quantize, length, transpose, "
                   "velocity, slide)");
  EXPECT_EQ(edit("1", "", "", {"transpose semitones=3"}), RenderEnd::Refused);
  EXPECT_EQ(error, "--edit 'transpose semitones=3': transpose has no field 'semitones'");
  EXPECT_EQ(edit("1", "", "", {"cut hole=yes"}), RenderEnd::Refused);
  EXPECT_EQ(error, "--edit 'cut hole=yes': hole= takes 0 or 1, not 'yes'");
  EXPECT_FALSE(fs::exists(out));
}

TEST_F(RenderEdits, AValueMayHoldBlanks) {
  ASSERT_EQ(edit("1", "1:1:0", "9:1:0", {"quantize resolution=Eighth Triplet"}), RenderEnd::Done) << error;
  for (const Note& n : after(1)) EXPECT_EQ(n.start % 40, 0u) << n.start;
}

TEST_F(RenderEdits, TheSelectionTakesNumbersAndRanges) {
  const auto options = ParseRenderArguments({"--song", "a.mid", "--select", "1,3-5"}, error);
  ASSERT_TRUE(options) << error;
  EXPECT_EQ(options->select, (std::vector<uint32_t>{1, 3, 4, 5}));
  for (const char* wrong : {"0", "257", "3-1", "1,,2", "x"}) {
    EXPECT_FALSE(ParseRenderArguments({"--song", "a.mid", "--select", wrong}, error)) << wrong;
    EXPECT_EQ(error, "--select takes one-based track numbers from 1 to 256 and ranges, as 1,3-5, not '" +
                         std::string(wrong) + "'");
  }
  EXPECT_FALSE(ParseRenderArguments({"--edit", "copy"}, error));
  EXPECT_EQ(error, "--edit, --select, --from and --to edit a loaded song and need --song");
}

}  // namespace
