#pragma once
// The live system's one clock, one input and one output. The UI thread opens
// and closes them and sets these pointers, only while no pass runs; every
// other user reads them and does nothing when one is null.

struct SyncClock;
struct MidiInHandle;
struct MidiOutHandle;

extern SyncClock* TheClock;
extern MidiInHandle* TheMidiIn;
extern MidiOutHandle* TheMidiOut;
