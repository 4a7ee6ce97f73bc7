#pragma once
// What the frame's status bar says: what runs now, where the song stands in
// bars and beats, and which output plays. UI thread; it only reads the
// transport words and the clock.

#include <cstdint>
#include <string>
#include <vector>

// A song position by the song's resolution and meter, as the counter shows it
// (beats counted in 16 bits).
struct BarBeat {
  uint16_t bar;
  uint16_t beat;
  uint32_t tick;
};
BarBeat BarBeatAt(uint32_t ticks);

// What runs, in this order: "Waiting for MIDI clock" (MIDI sync chosen and
// the transport started, with no Start or Continue received yet), "Playing",
// "Recording", "Generating". Empty when everything stands.
std::vector<std::string> RunningStates();
// True while the transport waits for the MIDI clock to start it.
bool WaitingForMidiClock();

// "Playing · bar 3, beat 2 · Out: Velmora Synth (General MIDI)"; "Stopped"
// when nothing runs, "Out: none" when no output is open.
std::string StatusLine();
