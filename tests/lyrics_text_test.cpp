#include "song/lyrics_text.h"

#include <gtest/gtest.h>

namespace {

TEST(LyricsText, TwoSyllablesJoinedByABlankAreHighlightedAt0To3And3To6) {
  const std::string text = "Hel lo";
  EXPECT_EQ(LyricDisplayPosition(text, 0), 0u);
  EXPECT_EQ(LyricDisplayPosition(text, 3), 3u);
  EXPECT_EQ(LyricDisplayPosition(text, 6), 6u);
}

TEST(LyricsText, ALineBreakCountsTwoInTheOffsetsAndOneOnTheScreen) {
  const std::string text = "abc\ndef";
  EXPECT_EQ(LyricDisplayPosition(text, 5), 4u) << "offset 5 is the d of def";
  EXPECT_EQ(LyricDisplayPosition(text, 8), 7u);
  EXPECT_EQ(LyricDisplayPosition(text, 4), 4u) << "inside the line break: after it";
  EXPECT_EQ(LyricDisplayPosition(text, 90), 7u) << "past the text: its end";
  EXPECT_EQ(LyricDisplayPosition("a\n\nb", 5), 3u);
}

TEST(LyricsText, TheTextIsReadAsWindows1252) {
  EXPECT_EQ(LyricDisplayText("plain"), "plain");
  EXPECT_EQ(LyricDisplayText("can\xE7\xE3o"), "can\xC3\xA7\xC3\xA3o") << "ç and ã";
  EXPECT_EQ(LyricDisplayText("\x80 5"), "\xE2\x82\xAC 5") << "the euro sign of 0x80";
  EXPECT_EQ(LyricDisplayText("\x93la\x94"), "\xE2\x80\x9Cla\xE2\x80\x9D") << "curly quotes";
  EXPECT_EQ(LyricDisplayText("\x81"), "\xC2\x81") << "an undefined byte keeps its Latin-1 code";
}

TEST(LyricsText, AFilesOwnCarriageReturnAndLineFeedIsOneLineEnd) {
  const std::string text = "Hel lo world\r\nline two";  // as a lyric "\r\nline two" joins the text
  EXPECT_EQ(LyricDisplayText(text), "Hel lo world\nline two");
  EXPECT_EQ(LyricDisplayPosition(text, 12), 12u);
  EXPECT_EQ(LyricDisplayPosition(text, 23), 21u)
      << "the lyric's end: the carriage return counted once, the line feed twice";
  EXPECT_EQ(LyricDisplayPosition(text, 13), 13u) << "between the carriage return and the line feed: after the line end";
  EXPECT_EQ(LyricDisplayText("a\rb"), "a\nb") << "a carriage return alone ends a line too";
  EXPECT_EQ(LyricDisplayPosition("a\rb", 2), 2u);
}

}  // namespace
