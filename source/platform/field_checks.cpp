#include "platform/field_checks.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "platform/prompts.h"

namespace {

bool blank(char c) { return c == ' ' || c == '\t'; }

void refuse(const std::string& text) { platform::ShowMessageBox(text, "Velmora", platform::MB_ICONSTOP); }

void upperCase(std::string& text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

}  // namespace

const std::string& FieldText(const FieldTexts& texts, uint32_t id) {
  static const std::string none;
  const auto found = texts.find(id);
  return found != texts.end() ? found->second : none;
}

std::string& TrimBlanks(std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), blank);
  text.erase(text.begin(), first);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), blank);
  text.erase(last.base(), text.end());
  return text;
}

int32_t FieldValue(const std::string& text) {
  const long long value = std::strtoll(text.c_str(), nullptr, 10);
  return static_cast<int32_t>(
      std::clamp<long long>(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

int CheckRange(const std::string& text, int32_t low, int32_t high) {
  const int32_t value = FieldValue(text);
  if (low <= value && value <= high) return 1;
  char message[80];
  std::snprintf(message, sizeof message, "Value is not in the range %ld to %ld.", static_cast<long>(low),
                static_cast<long>(high));
  refuse(message);
  return 0;
}

int CheckPicture(std::string& text, std::string picture) {
  upperCase(text);
  upperCase(picture);
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = picture.find(',', start);
    if (picture.compare(start, comma - start, text) == 0) return 1;
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  refuse("Input does not conform to picture:\n" + picture);
  return 0;
}

Rect CenterWindow(Rect window, const Rect* over, int screenWidth, int screenHeight) {
  int x = 0;
  int y = 0;
  if (over != nullptr) {
    x = over->x + (over->width - window.width) / 2;
    y = over->y + (over->height - window.height) / 2;
    if (x + window.width > screenWidth) x = screenWidth - window.width;
    if (y + window.height > screenHeight) y = screenHeight - window.height;
  } else {
    x = (screenWidth - window.width) / 2;
    y = (screenHeight - window.height) / 2;
  }
  if (x < 1) x = 0;
  if (y < 0) y = 0;
  return {x, y, window.width, window.height};
}
