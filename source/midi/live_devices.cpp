#include "midi/live_devices.h"

SyncClock* TheClock = nullptr;
MidiInHandle* TheMidiIn = nullptr;
MidiOutHandle* TheMidiOut = nullptr;
