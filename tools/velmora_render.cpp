// velmora-render: plays the generator without a window, into a log, a WAV
// file, or a MIDI device in real time.

#include <cstdio>
#include <string>
#include <vector>

#include "midi/backends/wire_check.h"
#include "render/render.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  for (const std::string& argument : arguments) {
    if (argument == "--help" || argument == "-h") {
      std::fputs(RenderUsage().c_str(), stdout);
      return 0;
    }
  }
  std::string error;
  const auto options = ParseRenderArguments(arguments, error);
  if (!options) {
    std::fprintf(stderr, "velmora-render: %s\n", error.c_str());
    return 2;
  }
  const RenderEnd end = RenderRun(*options, error);
  if (end != RenderEnd::Done) std::fprintf(stderr, "velmora-render: %s\n", error.c_str());
  if (const uint64_t dropped = DroppedMessages(); dropped > 0) {
    std::fprintf(stderr, "velmora-render: %llu messages with a data byte of 0x80 or above were not sent to the device\n",
                 static_cast<unsigned long long>(dropped));
  }
  // Ended by a signal, as a shell expects: 128 and the signal's number.
  return end == RenderEnd::Interrupted ? 128 + RenderInterruptSignal() : static_cast<int>(end);
}
