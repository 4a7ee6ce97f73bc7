#include "song/event_text.h"

#include <gtest/gtest.h>

#include <set>

#include "song/song_store.h"
#include "support/song_fixture.h"

namespace {

class EventTextTest : public EmptySongTest {
 protected:
  static std::string text(const MidiEvent& e, int expectedKind) {
    int kind = -1;
    std::string line = EventText(e, &kind);
    EXPECT_EQ(kind, expectedKind) << line;
    return line;
  }
};

TEST_F(EventTextTest, ANoteShowsItsNameVelocityStartAndTheTimeOfItsEnd) {
  MidiEvent on = ev(0, 0x90, 60, 100);
  MidiEvent off = ev(120, 0x80, 60, 0);
  on.link = &off;
  EXPECT_EQ(text(on, 1), " 1,Nota,C 5,Velocity, 100,00001:01:000,00001:02:000");
}

TEST_F(EventTextTest, ANoteWithoutAPartnerEndsWhereItStarts) {
  EXPECT_EQ(text(ev(480, 0x93, 70, 1), 1), " 4,Nota,Bb 5,Velocity,   1,00002:01:000,00002:01:000");
}

TEST_F(EventTextTest, EveryChannelKindHasItsForm) {
  EXPECT_EQ(text(ev(240, 0x83, 64, 0), 0), " 4,Note Off, 64,Velocity,   0,00001:03:000, ");
  EXPECT_EQ(text(ev(0, 0xA1, 61, 30), 2), " 2,KeyAft,C# 5,Pressure,  30,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xB0, 7, 100), 3), " 1,Contrl,  7,Value, 100,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xC9, 5), 4), "10,Patch,5, , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xD0, 77), 5), "1,ChanAft,77, , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xE2, 0, 64), 6), " 3,Wheel, ,Valor ,   0,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xE2, 127, 127), 6), " 3,Wheel, ,Valor ,8191,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xE2, 0, 0), 6), " 3,Wheel, ,Valor ,-8192,00001:01:000, ");
}

TEST_F(EventTextTest, EverySystemKindHasItsForm) {
  EXPECT_EQ(text(ev(0, 0xF0, 0xF0), 7), "SysEx, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF1, 0x23), 8), "2,MTC Quarter Frame,35, , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF2, 5, 1), 9), " 3,Song Position Pointer,  5,MSB,   1,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF3, 2), 10), "4,Song Select,2, , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF4), 11), "Undefined, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF6), 13), "Tune Request, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF7), 14), "EOX, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF8), 15), "Timing Clock, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xFA), 17), "Start, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xFB), 18), "Continue, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xFC), 19), "Stop, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xFE), 21), "Active Sensing, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xFF), 22), "System Reset, , , , ,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0xF0, 0x41), 23), "Sysex Data,65, , , , , ");
}

TEST_F(EventTextTest, TempoAndLyricEventsShowTheirTimeAndGiveKind8) {
  MidiEvent tempo = ev(480, 0);
  tempo.metaType = META_TEMPO;
  EXPECT_EQ(text(tempo, 8), "Tempo change, , , , ,00002:01:000");
  MidiEvent lyric = ev(0, 0);
  lyric.metaType = META_LYRIC;
  EXPECT_EQ(text(lyric, 8), "Lyric, , , , ,00001:01:000");
  MidiEvent other = ev(0, 0);
  other.metaType = 3;
  EXPECT_EQ(text(other, 8), "Meta, , , , ,00001:01:000") << "no other meta event is kept; one shows as such";
}

TEST_F(EventTextTest, AFirstDataByteOf128OrMoreIsTakenAsTheStatus) {
  EXPECT_EQ(text(ev(0, 0x90, 0xB0, 5), 3), " 1,Contrl,176,Value,   5,00001:01:000, ");
  EXPECT_EQ(text(ev(0, 0x91, 0xF8), 15), "Timing Clock, , , , ,00001:01:000, ");
}

TEST_F(EventTextTest, AStatusBelow128ShowsAsUndefined) {
  EXPECT_EQ(text(ev(0, 0x05, 1, 2), 11), "Undefined, , , , ,00001:01:000, ");
}

TEST_F(EventTextTest, NoteNamesRunFromC0ToG10) {
  EXPECT_EQ(NoteText(0), "C 0");
  EXPECT_EQ(NoteText(60), "C 5");
  EXPECT_EQ(NoteText(61), "C# 5");
  EXPECT_EQ(NoteText(70), "Bb 5");
  EXPECT_EQ(NoteText(127), "G 10");
}

TEST_F(EventTextTest, ANoteNameIsOneOfTheTwelveInAnyCase) {
  EXPECT_EQ(NoteNameIndex("C"), 0);
  EXPECT_EQ(NoteNameIndex("c#"), 1);
  EXPECT_EQ(NoteNameIndex("bb"), 10);
  EXPECT_EQ(NoteNameIndex("BB"), 10);
  EXPECT_EQ(NoteNameIndex("A#"), -1) << "only Bb is spelled with a flat";
  EXPECT_EQ(NoteNameIndex("Db"), -1);
  EXPECT_EQ(NoteNameIndex("c "), -1) << "blanks are not trimmed";
  EXPECT_EQ(NoteNameIndex(""), -1);
  EXPECT_EQ(NoteNameIndex("G#x"), -1) << "three characters are compared";
  EXPECT_EQ(NoteNameIndex("F#  "), -1);
}

TEST_F(EventTextTest, AKeyPast127FoldsDownByWholeOctaves) {
  EXPECT_EQ(NoteKey(0, 5), 60);
  EXPECT_EQ(NoteKey(7, 10), 127);
  EXPECT_EQ(NoteKey(8, 10), 116);
  EXPECT_EQ(NoteKey(11, 10), 119);
  EXPECT_EQ(NoteKey(0, 0), 0);
}

TEST_F(EventTextTest, TheIconsGoByKindAndTheKindsPast8HaveNone) {
  EXPECT_EQ(EventIcon(0), 215u);
  EXPECT_EQ(EventIcon(1), 215u);
  EXPECT_EQ(EventIcon(2), 214u);
  EXPECT_EQ(EventIcon(3), 219u);
  EXPECT_EQ(EventIcon(4), 216u);
  EXPECT_EQ(EventIcon(5), 218u);
  EXPECT_EQ(EventIcon(6), 217u);
  EXPECT_EQ(EventIcon(7), 220u);
  EXPECT_EQ(EventIcon(8), 213u);
  for (int kind = 9; kind < EventKindCount; ++kind) EXPECT_EQ(EventIcon(kind), 0u) << kind;
  EXPECT_EQ(EventIcon(-1), 0u);
}

TEST_F(EventTextTest, NoteOffsAndSysexBytesGetNoRow) {
  EXPECT_FALSE(HasEventRow(ev(0, 0x80, 60, 64)));
  EXPECT_FALSE(HasEventRow(ev(0, 0x95, 60, 0)));
  EXPECT_FALSE(HasEventRow(ev(0, 0xF0, 0x41)));
  EXPECT_TRUE(HasEventRow(ev(0, 0x95, 60, 1)));
  EXPECT_TRUE(HasEventRow(ev(0, 0xB0, 7, 0)));
  EXPECT_TRUE(HasEventRow(ev(0, 0xF8)));
  EXPECT_TRUE(HasEventRow(ev(0, 0)));
}

TEST_F(EventTextTest, TheRowsOfTheSelectedTracksStandInTimeOrderWithoutNoteOffs) {
  std::vector<MidiEvent> a = {ev(0, 0x90, 60, 100), ev(100, 0x80, 60, 0), ev(300, 0xB0, 7, 90)};
  std::vector<MidiEvent> b = {ev(50, 0xC0, 5), ev(200, 0x90, 62, 0), ev(250, 0xF0, 0x41)};
  Tracks[2].events = a.data();
  Tracks[2].count = 3;
  Tracks[7].events = b.data();
  Tracks[7].count = 3;
  const uint32_t selected[] = {7, 2, TempoTrack};
  const std::vector<EventRow> rows = EventRowsOf(selected, 3);
  Tracks[2] = TrackRecord{};
  Tracks[7] = TrackRecord{};
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].event, &a[0]);
  EXPECT_EQ(rows[0].track, 2);
  EXPECT_EQ(rows[1].event, &b[0]);
  EXPECT_EQ(rows[1].track, 7);
  EXPECT_EQ(rows[2].event, &a[2]);
  EXPECT_TRUE(EventRowsOf(selected, 0).empty());
}

}  // namespace
