// velmora-devices: lists the MIDI output and input devices with the numbers
// that Velmora knows them by.

#include <cstdio>
#include <cstring>
#include <string>

#include "midi/backends/device_list.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"

namespace {

template <class Describe>
void list(const char* heading, Describe&& describe) {
  std::printf("%s\n", heading);
  std::string name;
  uint32_t id = 0;
  for (; describe(id, name) != 0; ++id) std::printf("  %3u  %s\n", id, name.c_str());
  if (id == 0) std::printf("  (none)\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::printf("usage: velmora-devices\nLists the MIDI devices with the numbers Velmora uses for them.\n");
    return 0;
  }
  if (argc > 1) {
    std::fprintf(stderr, "velmora-devices: unknown argument '%s' (try --help)\n", argv[1]);
    return 2;
  }
  StandardDevices devices;
  platform::installMidiDevices(&devices.list);
  list("Outputs", GetMidiOutDescription);
  std::printf("\n");
  list("Inputs", GetMidiInDescription);
  if (devices.synth.soundFont().empty()) {
    std::printf(
        "\nThe built-in synthesizer has no General MIDI SoundFont and cannot play:\n"
        "install the timgm6mb-soundfont package.\n");
  }
  platform::installMidiDevices(nullptr);
  return 0;
}
