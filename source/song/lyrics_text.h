#pragma once
// The song's lyric text as the Lyrics window shows it. The text is the files'
// 8-bit text, read as Windows-1252 (Latin-1 with printable characters in
// 0x80..0x9F). The highlight's offsets count its bytes with each line feed as
// two characters, as a field that holds a line end as carriage return and line
// feed does; a display that holds a line end as one character maps them here.
// A carriage return before a line feed (a file's own "\r\n") is part of that
// one line end on the display; a carriage return alone is a line end itself.

#include <cstdint>
#include <string>

// The text in UTF-8 with "\n" for every line end, each other byte one character.
std::string LyricDisplayText(const std::string& text);
// The character index, in a display with one-character line ends, of an
// offset that counts line ends as two. An offset inside a line end, or past
// the text, is held at the position after it.
uint32_t LyricDisplayPosition(const std::string& text, uint32_t offset);
