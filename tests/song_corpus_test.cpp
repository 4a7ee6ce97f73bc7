// Every MIDI file of tests/data: loaded, played to its end on the virtual
// timer with what was played checked against what the song holds, saved,
// and loaded again; and every file cut at every 97th byte loads without harm.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <filesystem>
#include <cstring>
#include <fstream>

#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "smf/smf.h"
#include "support/song_bench.h"

namespace {

std::vector<std::string> corpusFiles() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(VELMORA_TEST_DATA)) {
    if (entry.path().extension() == ".mid") names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool isChannelMessage(const MidiEvent& e) { return e.status >= 0x80 && e.status < 0xF0; }

// The song's channel messages in the order the feed must play them: by time,
// and at equal times by the track's place in ActiveTracks, then by array order.
std::vector<uint32_t> expectedStream() {
  struct Due {
    uint32_t time;
    int32_t list;
    uint32_t index;
    uint32_t word;
  };
  std::vector<Due> due;
  for (int32_t i = 0; i < ActiveTrackCount; ++i) {
    const TrackRecord& t = Tracks[ActiveTracks[static_cast<std::size_t>(i)]];
    for (uint32_t n = 0; n < t.count; ++n) {
      if (isChannelMessage(t.events[n])) due.push_back({t.events[n].time, i, n, PackedMessage(t.events[n])});
    }
  }
  std::sort(due.begin(), due.end(), [](const Due& a, const Due& b) {
    return std::tie(a.time, a.list, a.index) < std::tie(b.time, b.list, b.index);
  });
  // The output ends a sounding note before it strikes the same key and channel again.
  std::set<uint32_t> sounding;
  std::vector<uint32_t> words;
  for (const Due& d : due) {
    const uint32_t kind = d.word & 0xF0;
    const uint32_t note = d.word & 0xFF0F;
    if (kind == 0x90 && (d.word >> 16) != 0) {
      if (!sounding.insert(note).second) words.push_back(d.word & ~0xFF0000u);
    } else if (kind == 0x80 || kind == 0x90) {
      sounding.erase(note);
    }
    words.push_back(d.word);
  }
  return words;
}

bool holdsSysex() {
  for (int32_t i = 0; i < ActiveTrackCount; ++i) {
    const TrackRecord& t = Tracks[ActiveTracks[static_cast<std::size_t>(i)]];
    for (uint32_t n = 0; n < t.count; ++n) {
      if (t.events[n].status == 0xF0) return true;
    }
  }
  return false;
}

// The channel events of the whole song, as a sorted list, for comparing a song with its saved copy.
std::vector<std::tuple<uint32_t, int, int, int>> channelEvents() {
  std::vector<std::tuple<uint32_t, int, int, int>> events;
  for (int32_t i = 0; i < ActiveTrackCount; ++i) {
    const TrackRecord& t = Tracks[ActiveTracks[static_cast<std::size_t>(i)]];
    for (uint32_t n = 0; n < t.count; ++n) {
      const MidiEvent& e = t.events[n];
      if (isChannelMessage(e)) events.emplace_back(e.time, e.status, e.value1, e.value2);
    }
  }
  std::sort(events.begin(), events.end());
  return events;
}

class Corpus : public SongBench, public ::testing::WithParamInterface<std::string> {};

TEST_P(Corpus, LoadsPlaysToItsEndAndSavesWhatItHolds) {
  LoadSong(corpus(GetParam()));
  loop.pump();
  if (GetParam().starts_with("foreign")) {
    ASSERT_FALSE(prompts.shown().empty());
    EXPECT_EQ(prompts.shown().back().text, "Invalid file format");
  } else {
    EXPECT_TRUE(prompts.shown().empty()) << "a readable file loads without a word";
  }
  const std::vector<uint32_t> expected = expectedStream();
  const auto held = channelEvents();
  const bool sysex = holdsSysex();

  TransportCommand(CMD_PLAY);
  const int passes = playToTheEnd();
  ASSERT_EQ(Playing.load(), 0u) << "the song's end stopped the transport";
  EXPECT_EQ(SongPosition.load(), 0u) << "and rewound";
  EXPECT_GT(passes, 0);

  std::vector<uint32_t> played = sentMessages();
  ASSERT_EQ(played.size(), expected.size() + 32) << "the song, then the pedals and benders of Stop";
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), played.begin()));

  for (uint32_t channel = 0; channel < 16; ++channel) {
    EXPECT_EQ(played[expected.size() + channel], 0xB0 | channel | 64u << 8);
    EXPECT_EQ(played[expected.size() + 16 + channel], 0xE0 | channel | 64u << 16);
  }

  ASSERT_EQ(WriteSong(path("saved.mid")), 1);
  LoadSong(path("saved.mid"));
  // Sysex is written without its data, and what follows it in its track is read as part of it.
  if (sysex) return;
  EXPECT_EQ(channelEvents(), held) << "the saved song holds the same channel events at the same ticks";
}

INSTANTIATE_TEST_SUITE_P(Files, Corpus, ::testing::ValuesIn(corpusFiles()), [](const ::testing::TestParamInfo<std::string>& file) {
  std::string name = file.param.substr(0, file.param.size() - 4);
  std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
});

TEST_F(SongBench, TheCorpusHoldsEveryKindOfFile) {
  const auto names = corpusFiles();
  EXPECT_GE(names.size(), 20u);
  std::set<uint32_t> formats;
  bool smpte = false;
  for (const std::string& name : names) {
    std::ifstream file(corpus(name), std::ios::binary);
    std::vector<uint8_t> head(14);
    file.read(reinterpret_cast<char*>(head.data()), 14);
    if (file.gcount() < 14 || std::memcmp(head.data(), "MThd", 4) != 0) continue;
    formats.insert(head[9]);
    smpte |= (head[12] & 0x80) != 0;
  }
  EXPECT_EQ(formats, (std::set<uint32_t>{0, 1, 2}));
  EXPECT_TRUE(smpte);
}

TEST_F(SongBench, EveryFileOfTheCorpusCutAtEvery97thByteLoadsWithoutHarm) {
  for (const std::string& name : corpusFiles()) {
    std::ifstream file(corpus(name), std::ios::binary);
    const std::vector<char> whole{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    for (std::size_t cut = 97; cut < whole.size(); cut += 97) {
      {
        std::ofstream part(path("cut.mid"), std::ios::binary | std::ios::trunc);
        part.write(whole.data(), static_cast<std::streamsize>(cut));
      }
      LoadSong(path("cut.mid"));
      loop.pump();
      ASSERT_GE(ActiveTrackCount, 1) << name << " cut at " << cut;
      for (int32_t i = 0; i < ActiveTrackCount; ++i) {
        const TrackRecord& t = Tracks[ActiveTracks[static_cast<std::size_t>(i)]];
        ASSERT_NE(t.events, nullptr);
        for (uint32_t n = 1; n < t.count; ++n) ASSERT_LE(t.events[n - 1].time, t.events[n].time) << name;
      }
    }
  }
}

}  // namespace
