#include "song/lyrics_text.h"

#include <array>

namespace {

// Windows-1252's characters from 0x80 to 0x9F; the five it leaves undefined keep their Latin-1 code.
constexpr std::array<char32_t, 32> HighControls = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | c >> 6);
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | c >> 12);
    out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// A carriage return that a line feed follows: it takes no place of its own on the display.
bool joinsLineFeed(const std::string& text, std::size_t i) {
  return text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
}

}  // namespace

std::string LyricDisplayText(const std::string& text) {
  std::string out;
  out.reserve(text.size() * 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (joinsLineFeed(text, i)) continue;
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '\r') {
      out += '\n';
    } else {
      appendUtf8(out, c >= 0x80 && c < 0xA0 ? HighControls[c - 0x80] : char32_t{c});
    }
  }
  return out;
}

uint32_t LyricDisplayPosition(const std::string& text, uint32_t offset) {
  uint32_t counted = 0;
  uint32_t position = 0;
  for (std::size_t i = 0; i < text.size() && counted < offset; ++i, ++position) {
    if (joinsLineFeed(text, i)) {
      counted += 3;  // the file's carriage return, and the line feed that counts two: one line end on the display
      ++i;
    } else {
      counted += text[i] == '\n' ? 2 : 1;
    }
  }
  return position;
}
