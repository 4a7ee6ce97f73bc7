#pragma once
// The helpers that every dialog shares: trimming a field's text, checking a
// number against a range and a text against a list of allowed words, and
// centring a dialog. The two checks tell the user themselves, in a message
// box titled "Velmora" with a stop icon; what happens to a refused field is
// the dialog's affair. UI thread only.

#include <cstdint>
#include <map>
#include <string>

// A dialog's edit texts by field id.
using FieldTexts = std::map<uint32_t, std::string>;
// The text of a field, or an empty one when the dialog has no such field.
const std::string& FieldText(const FieldTexts& texts, uint32_t id);

// Drops leading and trailing blanks and tabs; blanks inside stay. Returns text.
std::string& TrimBlanks(std::string& text);

// A field's text as a decimal number: an optional sign and digits, up to the
// first other character; 0 when there is no leading number. A number beyond
// 32 bits is held at the nearest end of their range.
int32_t FieldValue(const std::string& text);

// 1 when the text's value lies from low to high, both included; otherwise
// the box "Value is not in the range <low> to <high>." and 0.
int CheckRange(const std::string& text, int32_t low, int32_t high);

// The picture is a comma-separated list of allowed words. Both the text and
// the picture are upper-cased (the text in place); 1 when the text equals one
// of the words exactly, otherwise the box "Input does not conform to
// picture:" with the picture on the next line, and 0.
int CheckPicture(std::string& text, std::string picture);

struct Rect {
  int x, y, width, height;
};

// Where a window of the given size goes to stand centred over another, or
// over the screen when over is null: kept within the screen's right and
// bottom edges, and never at a negative place. Size is unchanged.
Rect CenterWindow(Rect window, const Rect* over, int screenWidth, int screenHeight);
