#include "midi/midi_in.h"

#include <string>

using namespace platform;

uint32_t GetMidiInDescription(uint32_t deviceId, std::string& text) {
  std::string name;
  if (midiInGetDevCaps(deviceId, name) == MMSYSERR_BADDEVICEID) return 0;
  text = name;
  return 1;
}
