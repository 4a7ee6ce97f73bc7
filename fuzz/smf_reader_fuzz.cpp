// Feeds any bytes to the MIDI file reader: opening, reading every track into
// a small array and a large one, and searching each track for meta events
// must never read outside a buffer, hang or crash.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "smf/smf.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  SmfFile* smf = nullptr;
  uint32_t format = 0;
  const uint32_t tracks = OpenSMFImage(&smf, std::vector<uint8_t>(data, data + size), &format);
  if (tracks == SMF_FAILED) return 0;
  std::vector<MidiEvent> events(1024);
  for (uint32_t t = 0; t < tracks && t < 16; ++t) {
    ReadSMF(smf, t, events.data(), 16);
    ReadSMF(smf, t, events.data(), static_cast<uint32_t>(events.size()));
    const uint8_t* meta = nullptr;
    uint32_t length = 0;
    for (const uint8_t type : std::initializer_list<uint8_t>{1, 3, 5, 81, 88, 126}) {
      for (int i = 0; i < 4 && ReadMetaEvent(smf, t, type, &meta, &length) != SMF_FAILED; ++i) {
      }
    }
  }
  RewindSMF(smf);
  GetSMFResolution(smf);
  CloseSMF(&smf);
  return 0;
}
