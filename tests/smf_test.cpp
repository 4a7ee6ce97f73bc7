#include "smf/smf.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>


namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

// ---- building files byte by byte ----

Bytes be(uint32_t value, int bytes) {
  Bytes out;
  for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
  return out;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes header(uint16_t format, uint16_t tracks, uint16_t division) {
  return Bytes{'M', 'T', 'h', 'd'} + be(6, 4) + be(format, 2) + be(tracks, 2) + be(division, 2);
}

Bytes track(const Bytes& events) {
  return Bytes{'M', 'T', 'r', 'k'} + be(static_cast<uint32_t>(events.size()), 4) + events;
}

const Bytes EndOfTrack{0x00, 0xFF, 0x2F, 0x00};

class SmfTest : public ::testing::Test {
 protected:
  void SetUp() override { path = (fs::temp_directory_path() / ("velmora-smf-" + std::to_string(::getpid()))).string(); }
  void TearDown() override {
    CloseSMF(&smf);
    fs::remove(path);
  }
  uint32_t open(const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return OpenSMF(&smf, path.c_str(), &format, 'r');
  }
  std::vector<MidiEvent> read(uint32_t trackNumber, uint32_t max = 1000) {
    std::vector<MidiEvent> events(max);
    events.resize(ReadSMF(smf, trackNumber, events.data(), max));
    return events;
  }
  Bytes written() const {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  }
  std::string path;
  SmfFile* smf = nullptr;
  uint32_t format = 0;
};

TEST_F(SmfTest, AFormat2FileComesBackAsFormat1) {
  ASSERT_EQ(open(header(2, 1, 96) + track(EndOfTrack)), 1u);
  EXPECT_EQ(format, 1u);
  EXPECT_EQ(GetSMFResolution(smf), 96u);
}

TEST_F(SmfTest, TextBeforeTheHeaderIsPassedOver) {
  ASSERT_EQ(open(Bytes{'R', 'I', 'F', 'F', 1, 2, 3} + header(0, 1, 120) + track(Bytes{0, 0x90, 60, 100} + EndOfTrack)),
            1u);
  EXPECT_EQ(read(0).size(), 1u);
}

TEST_F(SmfTest, ALongerHeaderIsReadInFullAndItsRestIgnored) {
  const Bytes head = Bytes{'M', 'T', 'h', 'd'} + be(10, 4) + be(1, 2) + be(2, 2) + be(240, 2) + Bytes{9, 9, 9, 9};
  ASSERT_EQ(open(head + track(EndOfTrack) + track(EndOfTrack)), 2u);
  EXPECT_EQ(GetSMFResolution(smf), 240u);
}

TEST_F(SmfTest, NotAMidiFileFailsToOpen) {
  EXPECT_EQ(open(Bytes{'V', 'L', 'h', 'd', 0, 0, 0, 0}), SMF_FAILED);
  EXPECT_EQ(smf, nullptr);
  EXPECT_EQ(OpenSMF(&smf, "/nonexistent/x.mid", &format, 'r'), SMF_FAILED);
  EXPECT_EQ(OpenSMF(&smf, path.c_str(), &format, 'x'), SMF_FAILED);
}

TEST_F(SmfTest, RunningStatusAndDeltasComeBackAsEvents) {
  ASSERT_EQ(
      open(header(0, 1, 120) + track(Bytes{0x00, 0x90, 60, 100, 0x10, 62, 90, 0x81, 0x00, 0x80, 60, 0} + EndOfTrack)),
      1u);
  const auto events = read(0);
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[1].status, 0x90);
  EXPECT_EQ(events[1].value1, 62);
  EXPECT_EQ(events[1].time, 0x10u);
  EXPECT_EQ(events[2].time, 128u);
  EXPECT_EQ(events[2].status, 0x80);
}

TEST_F(SmfTest, TwoTemposAtOneTickKeepTheFirst) {
  ASSERT_EQ(open(header(1, 1, 120) +
                 track(Bytes{0, 0xFF, 0x51, 3, 0x07, 0xA1, 0x20, 0, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40} + EndOfTrack)),
            1u);
  const auto events = read(0);
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].metaType, META_TEMPO);
  EXPECT_EQ(events[0].status, 0);
  EXPECT_EQ(events[0].value1, 0x07);
  EXPECT_EQ(events[0].value3, 0x20);
}

TEST_F(SmfTest, ATempoOutsideTrack0IsSkippedAndItsDeltaKept) {
  ASSERT_EQ(open(header(1, 2, 120) + track(EndOfTrack) +
                 track(Bytes{10, 0xFF, 0x51, 3, 7, 0xA1, 0x20, 5, 0x90, 60, 100} + EndOfTrack)),
            2u);
  const auto events = read(1);
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].time, 15u);
}

TEST_F(SmfTest, ALyricAtTheTickOfATempoIsDropped) {
  ASSERT_EQ(open(header(1, 1, 120) +
                 track(Bytes{0, 0xFF, 0x51, 3, 7, 0xA1, 0x20, 0, 0xFF, 0x05, 2, 'l', 'a', 10, 0xFF, 0x05, 2, 'd', 'i'} +
                       EndOfTrack)),
            1u);
  const auto events = read(0);
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[1].metaType, META_LYRIC);
  EXPECT_EQ(events[1].time, 10u);
}

TEST_F(SmfTest, ALyricFollowingALetterIsOneLongerForTheSpaceBetween) {
  ASSERT_EQ(open(header(1, 1, 120) + track(Bytes{0, 0xFF, 0x05, 3, 'l', 'a', 'a', 10, 0xFF, 0x05, 2, 'd', 'i', 10, 0xFF,
                                                 0x05, 2, 0x0A, 'x'} +
                                           EndOfTrack)),
            1u);
  const auto events = read(0);
  ASSERT_EQ(events.size(), 3u);
  const auto start = [](const MidiEvent& e) { return e.value1 << 8 | e.value2; };
  const auto end = [](const MidiEvent& e) { return e.value3 << 8 | e.playedChannel; };
  EXPECT_EQ(start(events[0]), 0);
  EXPECT_EQ(end(events[0]), 3);
  EXPECT_EQ(start(events[1]), 3);
  EXPECT_EQ(end(events[1]), 6) << "a letter after a letter: one more";
  EXPECT_EQ(end(events[2]) - start(events[2]), 3) << "a line feed counts twice";
}

TEST_F(SmfTest, ATrackWithOnlyItsEndGivesNoEvents) {
  ASSERT_EQ(open(header(0, 1, 120) + track(EndOfTrack)), 1u);
  EXPECT_TRUE(read(0).empty());
}

TEST_F(SmfTest, SysexComesAsOneEventPerByte) {
  ASSERT_EQ(open(header(0, 1, 120) + track(Bytes{5, 0xF0, 3, 0x43, 0x10, 0xF7, 0, 0x90, 60, 1} + EndOfTrack)), 1u);
  const auto events = read(0);
  ASSERT_EQ(events.size(), 5u);
  EXPECT_EQ(events[0].value1, 0xF0);
  EXPECT_EQ(events[0].time, 5u);
  EXPECT_EQ(events[1].value1, 0x43);
  EXPECT_EQ(events[3].value1, 0xF7);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(events[i].status, 0xF0);
  EXPECT_EQ(events[4].status, 0x90);
}

TEST_F(SmfTest, ASysexLongerThanItsBytesEatsWhatFollows) {
  ASSERT_EQ(open(header(0, 1, 120) + track(Bytes{0, 0xF0, 10, 0x43, 0xF7, 0, 0x90, 60, 1} + EndOfTrack)), 1u);
  const auto events = read(0);
  // The note-on and the end-of-track's delta read as sysex; only 0xFF, which is
  // taken as a meta event before anything else, ends it.
  ASSERT_EQ(events.size(), 8u);
  for (const auto& e : events) EXPECT_EQ(e.status, 0xF0);
  EXPECT_EQ(events[4].value1, 0x90);
}

TEST_F(SmfTest, ReadMetaEventFindsEachInTurnAndAMissingTypeOnlyOnce) {
  ASSERT_EQ(
      open(header(1, 1, 120) +
           track(Bytes{5, 0xFF, 0x03, 4, 'P', 'i', 'a', 'n', 0, 0x90, 60, 1, 7, 0xFF, 0x03, 1, 'x'} + EndOfTrack)),
      1u);
  const uint8_t* data = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(ReadMetaEvent(smf, 0, 0x03, &data, &length), 5u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(data), length), "Pian");
  EXPECT_EQ(ReadMetaEvent(smf, 0, 0x03, &data, &length), 7u) << "ticks since the last find";
  EXPECT_EQ(ReadMetaEvent(smf, 0, 0x03, &data, &length), SMF_FAILED);
  EXPECT_EQ(ReadMetaEvent(smf, 0, 0x01, &data, &length), SMF_FAILED);
  EXPECT_EQ(smf->tracks[0].metaPositions[1], 0xFFFFFFFFu) << "no scan from now on";
  EXPECT_EQ(read(0).size(), 1u) << "the read position is not disturbed";
}

TEST_F(SmfTest, AnSmpteDivisionBecomesTicksPerQuarterAt120) {
  ASSERT_EQ(open(header(0, 1, static_cast<uint16_t>(0xE7 << 8 | 40)) + track(EndOfTrack)),
            1u);  // -25 fps, 40 ticks a frame
  EXPECT_EQ(GetSMFResolution(smf), 500u);
  CloseSMF(&smf);
  ASSERT_EQ(open(header(0, 1, static_cast<uint16_t>(0x81 << 8 | 40)) + track(EndOfTrack)),
            1u);  // a rate outside the table
  EXPECT_EQ(GetSMFResolution(smf), 40u * 500000 / 33333) << "counted as 30 frames, not divided by zero";
}

TEST_F(SmfTest, ATrackTheHeaderPromisesButTheFileLacksIsEmpty) {
  ASSERT_EQ(open(header(1, 3, 120) + track(Bytes{0, 0x90, 60, 1} + EndOfTrack)), 3u);
  EXPECT_EQ(read(0).size(), 1u);
  EXPECT_TRUE(read(1).empty());
  EXPECT_TRUE(read(2).empty());
  EXPECT_TRUE(read(7).empty()) << "no such track";
}

TEST_F(SmfTest, ADataByteBeforeAnyStatusIsPassedOver) {
  ASSERT_EQ(open(header(0, 1, 120) + track(Bytes{0, 60, 0, 0x90, 60, 1} + EndOfTrack)), 1u);
  const auto events = read(0);
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].status, 0x90);
}

TEST_F(SmfTest, AHugeMetaLengthNeitherHangsNorReadsOutside) {
  ASSERT_EQ(open(header(0, 1, 120) + track(Bytes{0, 0xFF, 0x01, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F, 1, 2})), 1u);
  EXPECT_TRUE(read(0).empty());
}

TEST_F(SmfTest, AMetaEventClaimingMoreThanTheFileHoldsGivesWhatIsThere) {
  ASSERT_EQ(open(header(0, 1, 120) + track(Bytes{0, 0xFF, 0x03, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F, 'a', 'b'})), 1u);
  const uint8_t* data = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(ReadMetaEvent(smf, 0, 0x03, &data, &length), 0u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(data), length), "ab");
  CloseSMF(&smf);
  ASSERT_EQ(open(header(0, 1, 120) + track(Bytes{0, 0xFF, 0x05, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F, 'l', 'a'})), 1u);
  const auto events = read(0, 4);
  ASSERT_FALSE(events.empty());
  EXPECT_EQ(events[0].value3 << 8 | events[0].playedChannel, 2) << "the lyric is the rest of the file";
}

TEST_F(SmfTest, ATrackWithoutItsEndReadsZerosUpToTheArraysSize) {
  ASSERT_EQ(open(header(0, 1, 120) + Bytes{'M', 'T', 'r', 'k'} + be(4, 4) + Bytes{0, 0x90, 60, 100}), 1u);
  EXPECT_EQ(read(0, 50).size(), 50u) << "running status 0x90 reads the zeros as notes";
}

TEST_F(SmfTest, EveryCutOfAFileLoadsWithoutHarm) {
  const Bytes file = header(1, 2, 120) +
                     track(Bytes{0, 0xFF, 0x51, 3, 7, 0xA1, 0x20, 0, 0xFF, 0x05, 2, 'l', 'a'} + EndOfTrack) +
                     track(Bytes{0, 0xC0, 5, 0, 0x90, 60, 100, 0x60, 0x80, 60, 0, 0, 0xF0, 2, 1, 0xF7} + EndOfTrack);
  std::size_t events = 0;
  for (std::size_t cut = 0; cut <= file.size(); ++cut) {
    CloseSMF(&smf);
    const uint32_t tracks = open(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(cut)));
    // It opens once the tag is there; a header cut short sets nothing, so no track.
    EXPECT_EQ(tracks == SMF_FAILED, cut < 4) << "cut " << cut;
    if (tracks == SMF_FAILED) continue;
    EXPECT_EQ(tracks, cut < 14 ? 0u : 2u) << "cut " << cut;
    events = 0;
    for (uint32_t t = 0; t < tracks; ++t) events += read(t, 64).size();
  }
  // The whole file: the tempo (its lyric, at the same tick, is dropped), then the
  // program, note-on, note-off and the three sysex bytes 0xF0, 1, 0xF7.
  EXPECT_EQ(events, 7u);
}

// ---- writing ----

class SmfWriteTest : public SmfTest {
 protected:
  void startWriting(uint32_t fileFormat = 1) {
    format = fileFormat;
    ASSERT_EQ(OpenSMF(&smf, path.c_str(), &format, 'w'), 0u);
  }
};

TEST_F(SmfWriteTest, ASmallSongIsWrittenByteForByte) {
  std::vector<MidiEvent> events = {{0, 0x90, 60, 100, 0, nullptr, 0, 0, 0, 0},
                                   {120, 0x80, 60, 0, 0, nullptr, 0, 0, 0, 0}};
  startWriting();
  SetSMFResolution(smf, 120);
  EXPECT_EQ(WriteSMF(smf, 0, events.data(), 2, 0), 2u);
  CloseSMF(&smf);
  const Bytes expected = header(1, 1, 120) + track(Bytes{0x00, 0x90, 60, 100, 0x78, 0x80, 60, 0} + EndOfTrack);
  EXPECT_EQ(written(), expected);
  // And it reads back as written.
  ASSERT_EQ(open(written()), 1u);
  const auto back = read(0);
  ASSERT_EQ(back.size(), 2u);
  EXPECT_EQ(back[1].time, 120u);
  EXPECT_EQ(back[1].status, 0x80);
}

TEST_F(SmfWriteTest, RepeatsWriteEachPassFromTheNextBarLineAndTheSettingsOnce) {
  std::vector<MidiEvent> events = {{10, 0x90, 60, 100, 0, nullptr, 0, 0, 0, 0},
                                   {100, 0x80, 60, 0, 0, nullptr, 0, 0, 0, 0}};
  SmfTrackSettings t;
  t.storedTicks = 110;
  t.ticksPerBar = 480;
  t.repeats = 1;
  t.pan = 30;
  t.volume = 100;
  t.timeOffset = 5;
  startWriting();
  EXPECT_EQ(SetSMFTrackSettings(smf, 3, t), 1u);
  EXPECT_EQ(WriteSMF(smf, 0, events.data(), 2, 3), 4u);
  CloseSMF(&smf);
  const Bytes body{0x00, 0xB0, 10,   30,  0x00, 7,    100,           // pan and volume share one status byte
                   15,   0x90, 60,   100, 0x64, 0x80, 60,   0,       // pass 0: offset 5 added to the first delta
                   0x82, 0x72, 0x90, 60,  100,  0x64, 0x80, 60, 0};  // pass 1 at the bar line: 480 - 110 = 370
  EXPECT_EQ(written(), header(1, 1, 480) + track(body + EndOfTrack));
}

TEST_F(SmfWriteTest, TheTracksSettingsShapeTheNotes) {
  std::vector<MidiEvent> events = {{0, 0x90, 120, 120, 0, nullptr, 0, 0, 0, 0},
                                   {0, 0x80, 120, 64, 0, nullptr, 0, 0, 0, 0},
                                   {0, 0xB3, 7, 1, 0, nullptr, 0, 0, 0, 0}};
  SmfTrackSettings t;
  t.keyOffset = 20;        // 140 folds back an octave to 128, then to 116
  t.velocityOffset = 100;  // held at 127
  t.channel = 5;
  startWriting();
  SetSMFTrackSettings(smf, 0, t);
  WriteSMF(smf, 0, events.data(), 3, 0);
  CloseSMF(&smf);
  EXPECT_EQ(written(),
            header(1, 1, 480) + track(Bytes{0, 0x95, 116, 127, 0, 0x85, 116, 64, 0, 0xB5, 7, 1} + EndOfTrack));
}

TEST_F(SmfWriteTest, WithoutSettingsTheSettingsGoOutOnTheFirstEventsChannel) {
  std::vector<MidiEvent> events = {{0, 0x93, 60, 100, 0, nullptr, 0, 0, 0, 0}};
  SmfTrackSettings t;
  t.storedChannel = 3;
  t.patch = 9;
  startWriting();
  SetSMFTrackSettings(smf, 7, t);
  WriteSMF(smf, 0, events.data(), 1, 7);
  WriteSMF(smf, 1, events.data(), 1, 8);  // song track 8 was handed nothing: no setting at all
  CloseSMF(&smf);
  EXPECT_EQ(written(), header(1, 2, 480) + track(Bytes{0, 0xC3, 9, 0, 0x93, 60, 100} + EndOfTrack) +
                           track(Bytes{0, 0x93, 60, 100} + EndOfTrack));
}

TEST_F(SmfWriteTest, SettingsForASongTrackPastTheTempoTrackAreRefused) {
  startWriting();
  EXPECT_EQ(SetSMFTrackSettings(smf, SmfSongTracks, SmfTrackSettings{}), 0u);
  EXPECT_EQ(WriteSMF(smf, 0, nullptr, 0, SmfSongTracks), 0u);
  EXPECT_EQ(SetSMFTrackSettings(smf, SmfSongTracks - 1, SmfTrackSettings{}), 1u);
  CloseSMF(&smf);
  EXPECT_EQ(SetSMFTrackSettings(nullptr, 0, SmfTrackSettings{}), 0u);
}

TEST_F(SmfWriteTest, OneTrackKeepsTheFormatAndASecondMakesIt1) {
  startWriting(0);
  WriteSMF(smf, 0, nullptr, 0, 0);
  CloseSMF(&smf);
  EXPECT_EQ(written()[9], 0) << "format 0 kept";
  startWriting(0);
  WriteSMF(smf, 0, nullptr, 0, 0);
  WriteSMF(smf, 1, nullptr, 0, 1);
  CloseSMF(&smf);
  const Bytes file = written();
  EXPECT_EQ(file[9], 1);
  EXPECT_EQ(file[11], 2) << "two tracks";
}

TEST_F(SmfWriteTest, ANameWrittenAfterTheEventsStandsJustBeforeTheEnd) {
  std::vector<MidiEvent> events = {{0, 0x90, 60, 1, 0, nullptr, 0, 0, 0, 0}};
  startWriting();
  WriteSMF(smf, 0, events.data(), 1, 0);
  EXPECT_EQ(WriteMetaEvent(smf, 0, 0x03, "Lead", 0), 0u);
  CloseSMF(&smf);
  EXPECT_EQ(written(),
            header(1, 1, 480) + track(Bytes{0, 0x90, 60, 1, 0, 0xFF, 0x03, 4, 'L', 'e', 'a', 'd'} + EndOfTrack));
}

TEST_F(SmfWriteTest, ATimeSignatureOfFourQuartersIsWrittenAs4_2_24_8) {
  startWriting();
  WriteSMF(smf, 0, nullptr, 0, 0);
  const char signature[4] = {4, 2, 24, 8};
  WriteMetaEvent(smf, 0, 0x58, signature, 0);
  CloseSMF(&smf);
  EXPECT_EQ(written(), header(1, 1, 480) + track(Bytes{0, 0xFF, 0x58, 4, 4, 2, 24, 8} + EndOfTrack));
}

TEST_F(SmfWriteTest, RunningStatusCarriesOverMetaEventsAndALyricGoesOutAsATempo) {
  std::vector<MidiEvent> events = {{0, 0x90, 60, 1, 0, nullptr, 0, 0, 0, 0},
                                   {0, 0, 0, 3, 0, nullptr, 9, 0, 0, META_LYRIC},
                                   {0, 0x90, 62, 1, 0, nullptr, 0, 0, 0, 0},
                                   {0, 0xF0, 0xF0, 0, 0, nullptr, 0, 0, 0, 0},
                                   {0, 0xF0, 0x43, 0, 0, nullptr, 0, 0, 0, 0}};
  startWriting();
  WriteSMF(smf, 0, events.data(), 5, 0);
  CloseSMF(&smf);
  const Bytes body{0, 0x90, 60, 1, 0, 0xFF, 0x51, 3, 0, 3, 0, 0, 62, 1, 0, 0xF0, 0};  // the sysex bytes are lost
  EXPECT_EQ(written(), header(1, 1, 480) + track(body + EndOfTrack));
}

TEST_F(SmfWriteTest, WithNoEventsTheSettingsStandAlone) {
  SmfTrackSettings t;
  t.patch = 5;
  t.channel = 3;
  startWriting();
  SetSMFTrackSettings(smf, 2, t);
  EXPECT_EQ(WriteSMF(smf, 0, nullptr, 0, 2), 0u);
  CloseSMF(&smf);
  EXPECT_EQ(written(), header(1, 1, 480) + track(Bytes{0, 0xC3, 5} + EndOfTrack));
}

TEST_F(SmfWriteTest, AFileWithNoTrackIsTheHeaderAlone) {
  startWriting();
  CloseSMF(&smf);
  EXPECT_EQ(written(), header(1, 0, 480));
}

TEST(SmfClose, AFileThatDidNotTakeEveryByteIsReportedAtClose) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
  SmfFile* smf = nullptr;
  uint32_t format = 1;
  ASSERT_NE(OpenSMF(&smf, "/dev/full", &format, 'w'), SMF_FAILED);
  std::vector<MidiEvent> events(2000, MidiEvent{0, 0xB0, 7, 100, 0, nullptr, 0, 0, 0, 0});
  WriteSMF(smf, 0, events.data(), static_cast<uint32_t>(events.size()), 0);
  EXPECT_EQ(CloseSMF(&smf), SMF_FAILED) << "the disk is full";
  EXPECT_EQ(smf, nullptr);
}

TEST(VariableLength, IsWrittenSevenBitsAByteAndHeldToFourBytes) {
  EXPECT_EQ(EncodeVariableLength(0), (Bytes{0}));
  EXPECT_EQ(EncodeVariableLength(127), (Bytes{0x7F}));
  EXPECT_EQ(EncodeVariableLength(128), (Bytes{0x81, 0x00}));
  EXPECT_EQ(EncodeVariableLength(0x0FFFFFFF), (Bytes{0xFF, 0xFF, 0xFF, 0x7F}));
  EXPECT_EQ(EncodeVariableLength(0xFFFFFFFF), EncodeVariableLength(0x0FFFFFFF));
}

TEST(FoldKey, FoldsByWholeOctaves) {
  EXPECT_EQ(FoldKey(-12), 12);
  EXPECT_EQ(FoldKey(-1), 11);
  EXPECT_EQ(FoldKey(128), 116);
  EXPECT_EQ(FoldKey(140), 116);
  EXPECT_EQ(FoldKey(60), 60);
}

}  // namespace
