#pragma once
// The transport as the Control Bar runs it, without the window: the commands
// Play, Record, Stop, Rewind, Go to end, the generator button, the clock
// source, the metronome, Link, Panic, quantize on record and MIDI thru; the
// end of the song; and the notifications of the clock, the output and the
// input. Buttons and fields are reached through the view registry. UI thread only.

#include <cstdint>

#include "platform/message_loop.h"


// Runs a transport command, then brings the frame's commands up to date.
void TransportCommand(uint32_t id);

void PlayCommand();
// Record (104): the take starts at SongPosition, after a count-in when the
// metronome sounds for recording.
void RecordCommand();
// Stop (100): ends play, or ends a take and asks "Keep take?".
void StopCommand();
// The clock source: 107 and 1601 follow MIDI sync, 108 and 1600 the
// internal clock. The menu's entries also press the chosen button.
void ClockSourceCommand(uint32_t id);
// The metronome button (109): on, or off with both clicks ended.
void MetronomeCommand();
// MIDI thru (1555): the input echoes to the output, or stops echoing.
void MidiThruCommand();
// Link (110): Play and Record start the generator too.
void LinkCommand();
// Panic (106): every note and the common controllers back to rest.
void PanicCommand();
void RewindCommand();
// The song's start: the first event of the first active track, or the first
// of any further song track, whichever is earlier. Its end: the first event
// of the first active track, or the last of any further song track, whichever
// is later. 0 for a song without tracks.
uint32_t SongStart();
uint32_t SongEnd();
void GoToEndCommand();
// NM_SYNC_TICK: the song has run out when the output's ring is empty while
// playing (Stop, then Rewind); otherwise the counter shows the clock's time.
void SyncTickNotice();

// The Control Bar's messages: WM_COMMAND, NM_SYNC_TICK, NM_SONG_META,
// NM_EVENT_FOLLOW and the input's MIM_DATA. Returns 0.
intptr_t ControlBarMessage(uint32_t msg, uintptr_t param1, uintptr_t param2);

// A Control Bar without a window, for headless programs and tests.
class TransportWindow final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override {
    return ControlBarMessage(msg, param1, param2);
  }
};
