// velmora-render: plays the generator without a window, into a log, a WAV
// file, or a MIDI device in real time.

#include <cstdio>
#include <string>
#include <vector>

#include "render/render.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  for (const std::string& argument : arguments) {
    if (argument == "--help" || argument == "-h") {
      std::fputs(RenderUsage, stdout);
      return 0;
    }
  }
  std::string error;
  const auto options = ParseRenderArguments(arguments, error);
  if (!options) {
    std::fprintf(stderr, "velmora-render: %s\n", error.c_str());
    return 2;
  }
  if (!Render(*options, error)) {
    std::fprintf(stderr, "velmora-render: %s\n", error.c_str());
    return 1;
  }
  return 0;
}
