#pragma once
// The sync clock: the one time base. It turns a periodic timer, incoming MIDI
// clock or incoming MIDI time code into a song position in ticks, and on every
// pass sounds the metronome, runs the generator, sends MIDI clock and
// dispatches the due events of every output it serves.
//
// Threads: the pass runs on the timer's thread (syncTimer) and, in the MIDI
// and SMPTE modes, on the input driver's thread (the entries below). The UI
// thread opens, closes, starts and positions the clock. StopSync comes from
// the UI thread, or from a pass that stops its own clock: the generator's
// drain does, once it has ended the last note with the transport stopped;
// StopSync then waits only for the other passes. SYNC_IN_TICK is the guard
// between passes: every entry takes it with one fetch_or, and an entry that
// finds it taken runs no pass. A MIDI clock that finds it taken stays counted
// in clocksPending, and the thread of the pass under way takes the pass again
// to follow it once that pass ends; the
// hold (HoldClockPasses) keeps out the passes of every entry. Nothing in a
// pass allocates or takes a lock of ours.

#include <array>
#include <atomic>
#include <cstdint>

#include "midi/midi_event.h"
#include "platform/message_loop.h"
#include "platform/shared_word.h"

struct MidiOutHandle;
struct MidiInHandle;

// Modes: the source of time.
inline constexpr uint32_t SYNC_INTERNAL = 0;
inline constexpr uint32_t SYNC_MIDI = 1;
inline constexpr uint32_t SYNC_SMPTE30 = 2;
inline constexpr uint32_t SYNC_SMPTE30DROP = 3;
inline constexpr uint32_t SYNC_SMPTE25 = 4;
inline constexpr uint32_t SYNC_SMPTE24 = 5;

// Flags.
inline constexpr uint32_t SYNC_RUNNING = 1u << 0;
inline constexpr uint32_t SYNC_COUNTING = 1u << 1;
inline constexpr uint32_t SYNC_SMPTE_LOCKED = 1u << 2;
inline constexpr uint32_t SYNC_IN_TICK = 1u << 3;
inline constexpr uint32_t SYNC_WAIT_CLOCK = 1u << 4;
inline constexpr uint32_t SYNC_CLOCK_SEEN = 1u << 5;
inline constexpr uint32_t SYNC_COUNT_IN = 1u << 8;

// Notifications the clock posts.
inline constexpr uint32_t NM_SMPTE_START = 4;
inline constexpr uint32_t NM_SYNC_TICK = 20822;
inline constexpr uint32_t NM_SONG_META = 20823;
inline constexpr uint32_t NM_SMPTE_TIME = 20824;
inline constexpr uint32_t NM_SMPTE_STOPPED = 20826;

inline constexpr uint32_t SYNC_KEEP = 65535;  // a mode or period that keeps the old value
inline constexpr uint32_t SYNC_TIMER_FAILED = 97;

// Outputs a clock can serve at once; the list ends with a null entry.
inline constexpr std::size_t MaxClockOutputs = 16;

struct SyncClock {
  platform::MessageTarget* window = nullptr;  // receives the clock's notifications
  uint32_t mode = 0;
  uint32_t period = 0;  // milliseconds
  std::atomic<MidiInHandle*> midiIn{nullptr};
  std::atomic<uint32_t> flags{0};
  SharedWord<uint32_t> timerId;    // 0 when there is none
  SharedWord<uint32_t> now;        // song position in ticks
  SharedWord<uint32_t> beatTicks;  // ticks since the last beat
  SharedWord<uint32_t> tempo;      // microseconds per quarter note, times 256
  SharedWord<uint32_t> resolution;
  SharedWord<uint32_t> increment;  // time added per pass, in tempo's unit times resolution
  SharedWord<uint32_t> remainder;
  std::array<std::atomic<MidiOutHandle*>, MaxClockOutputs + 1> outputs{};
  SharedWord<uint32_t> ticksPerClock;
  SharedWord<uint32_t> clockTicks;
  SharedWord<uint32_t> sinceEvent;
  SharedWord<uint32_t> dispatchBase;
  std::array<SharedWord<uint8_t>, 4> smpteNibbles;  // frames, seconds, minutes, hours; 255: not yet
  std::array<SharedWord<uint8_t>, 4> smpteTime;     // frames, seconds, minutes, hours
  SharedWord<uint32_t> smpteType;
  SharedWord<uint32_t> startFrame;
  SharedWord<uint32_t> freeTicks;
  SharedWord<uint32_t> lastClockPos;
  // MIDI clocks received while counting and not yet followed by a pass.
  std::atomic<uint32_t> clocksPending{0};
  SharedWord<uint8_t> noteDivisor;
  SharedWord<uint8_t> beat;
  SharedWord<uint8_t> beatsPerBar;
  SharedWord<uint32_t> metronomeMsg;
  SharedWord<uint32_t> firstBeatMsg;
  SharedWord<uint32_t> otherBeatsMsg;
  SharedWord<uint32_t> nextBeat;
  SharedWord<uint32_t> noteOffAt;
  SharedWord<uint32_t> beatCount;
  SharedWord<uint32_t> countInBars;
  SharedWord<uint32_t> startPosition;
  SharedWord<uint32_t> followEnabled;
  // Set while the UI thread keeps every pass out (HoldClockPasses), honoured
  // by the timer and by the input's entries alike.
  std::atomic<uint32_t> held{0};
};

// The work of other parts that a pass runs, installed once at start-up: the
// generator's tick and drain, and the feed's shaping and top-up. An entry left
// null does nothing.
struct SyncClockHooks {
  void (*generatorTick)() = nullptr;
  void (*generatorDrain)() = nullptr;
  void (*shapeEvent)(SyncClock* clock, MidiOutHandle* out, MidiEvent* event) = nullptr;
  void (*sendEvent)(MidiOutHandle* out) = nullptr;
};
extern SyncClockHooks ClockHooks;

uint32_t OpenSync(SyncClock** clock, platform::MessageTarget* window, uint32_t mode, uint32_t period);
uint32_t CloseSync(SyncClock** clock);
void StartSync(SyncClock* clock);
void ReStartSync(SyncClock* clock);
void StopSync(SyncClock* clock);
uint32_t SetTempo(SyncClock* clock, uint32_t microsecondsPerQuarter);
uint32_t GetTempo(SyncClock* clock);
void SetResolution(SyncClock* clock, int32_t ticksPerQuarter);
uint32_t GetResolution(SyncClock* clock);
void SetStartFrame(SyncClock* clock, uint32_t frame);
uint32_t GetStartFrame(SyncClock* clock);
void syncTimer(uint32_t timerId, uint32_t message, uintptr_t clock, uintptr_t reserved1, uintptr_t reserved2);
void SmpteStoppedTimer(uint32_t timerId, uint32_t message, uintptr_t clock, uintptr_t reserved1, uintptr_t reserved2);

// The entries that the MIDI input calls: a received MIDI clock (0xF8) in
// SYNC_MIDI, and a quarter frame's data byte in the SMPTE modes.
void SyncMidiClock(SyncClock* clock);
void SyncQuarterFrame(SyncClock* clock, uint8_t data);

// The SMPTE time word: frames lowest, then seconds, minutes, hours highest.
uint32_t SmpteTimeWord(const SyncClock* clock);

// For the output toolkit: serving an output, and waiting until no pass runs.
bool AttachClockOutput(SyncClock* clock, MidiOutHandle* out);
void DetachClockOutput(SyncClock* clock, MidiOutHandle* out);
void WaitForClockPasses();

// Counts a stretch of timer or driver work as a pass, so that WaitForClockPasses
// waits for it: the input's driver callback runs under one, since it reaches
// the output and the clock that the UI thread may be closing.
class ClockPassGuard {
 public:
  ClockPassGuard();
  ~ClockPassGuard();
  ClockPassGuard(const ClockPassGuard&) = delete;
  ClockPassGuard& operator=(const ClockPassGuard&) = delete;
};

// Keeps the passes out while a whole set-up is replaced: sets SYNC_IN_TICK and
// the hold, which the timer's passes and the input's MIDI clock and
// quarter-frame entries all honour; then waits for a pass under way. Such a
// pass clears SYNC_IN_TICK as it ends, so the hold is what keeps the timer's
// later passes out until the release. UI thread.
void HoldClockPasses(SyncClock* clock);
void ReleaseClockPasses(SyncClock* clock);

// Passes begun since the program started, for logs and tests.
extern std::atomic<uint32_t> ClockPassCount;
