#include "song/track_rows.h"

#include <gtest/gtest.h>

#include "support/song_fixture.h"

namespace {

class TrackRowsTest : public EmptySongTest {
 protected:
  void TearDown() override {
    ClearTrackRows();
    EmptySongTest::TearDown();
  }
};

TEST_F(TrackRowsTest, ARowShowsTheTracksSettings) {
  TrackRecord t;
  t.playOff = 1;
  t.keyOffset = -12;
  t.velocityOffset = 5;
  t.timeOffset = 480;
  t.channel = 9;
  t.repeats = 65535;
  t.pan = 64;
  const TrackRow row = TrackRowOf(t);
  EXPECT_STREQ(row.play, "Off");
  EXPECT_STREQ(row.key, "-12");
  EXPECT_STREQ(row.velocity, "5");
  EXPECT_STREQ(row.time, "00002:01:000");
  EXPECT_STREQ(row.channel, "10");
  EXPECT_STREQ(row.repeats, "65535");
  EXPECT_STREQ(row.pan, "64");
  EXPECT_STREQ(row.volume, "- - -");
  EXPECT_STREQ(row.patch, "- - -");
}

TEST_F(TrackRowsTest, ANewTracksRowPlaysOnItsOwnChannelsWithNoSetting) {
  const TrackRow row = TrackRowOf(TrackRecord{});
  EXPECT_STREQ(row.play, "On");
  EXPECT_STREQ(row.key, "0");
  EXPECT_STREQ(row.time, "00001:01:000");
  EXPECT_STREQ(row.channel, "- - -");
  EXPECT_STREQ(row.repeats, "0");
}

TEST_F(TrackRowsTest, ARowKeepsItsTextsUntilItIsBuiltAgainAndGoesWhenDropped) {
  Tracks[7].repeats = 3;
  BuildTrackRow(7);
  Tracks[7].repeats = 4;
  ASSERT_NE(TrackRowAt(7), nullptr);
  EXPECT_STREQ(TrackRowAt(7)->repeats, "3");
  BuildTrackRow(7);
  EXPECT_STREQ(TrackRowAt(7)->repeats, "4");
  DropTrackRow(7);
  EXPECT_EQ(TrackRowAt(7), nullptr);
  SetTrackRow(SongTrackCount + 1, TrackRowOf(Tracks[7]));  // past the tempo track: nothing
  EXPECT_EQ(TrackRowAt(SongTrackCount + 1), nullptr);
  SongDirty = 0;
}

}  // namespace
