#include "midi/sync_clock.h"

#include <algorithm>
#include <new>
#include <thread>
#include <vector>

#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/transport_words.h"
#include "platform/timers.h"

using namespace platform;

SyncClockHooks ClockHooks;
std::atomic<uint32_t> ClockPassCount{0};

namespace {

// Clocks that are open now; UI thread only.
std::vector<SyncClock*> liveClocks;

// Passes under way on any thread, so that what a pass reaches can be released
// safely; and those of this thread, which a wait must not wait for.
std::atomic<int> passesRunning{0};
thread_local int passesOnThisThread = 0;

// Counts passes towards the next NM_SYNC_TICK.
SharedWord<uint32_t> syncTickDivider;

// A quarter frame in microseconds times 256, and frames per second, for modes 2 to 5.
constexpr uint32_t QuarterFrameLength[4] = {2133333, 2135467, 2560000, 2666667};
constexpr uint32_t FramesPerSecond[4] = {30, 30, 25, 24};

// Flags publish: what the transport writes before it starts the clock is seen
// by the pass that finds the clock counting.
bool has(const SyncClock* clock, uint32_t flag) { return (clock->flags.load(std::memory_order_acquire) & flag) != 0; }
void setFlag(SyncClock* clock, uint32_t flag) { clock->flags.fetch_or(flag, std::memory_order_release); }
void clearFlag(SyncClock* clock, uint32_t flag) { clock->flags.fetch_and(~flag, std::memory_order_release); }

bool isSmpteMode(uint32_t mode) { return mode >= SYNC_SMPTE30 && mode <= SYNC_SMPTE24; }

uintptr_t asParam(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

template <class Visit>
void forEachOutput(SyncClock* clock, Visit&& visit) {
  for (std::size_t i = 0; i < MaxClockOutputs; ++i) {
    MidiOutHandle* out = clock->outputs[i].load();
    if (out == nullptr) return;
    visit(out);
  }
}

bool sendsSync(const MidiOutHandle* out, uint8_t status) {
  return (out->flags & MIDI_SYNC) != 0 && !MidiFilterBlocks(out->filter, status);
}

// One step of the exact division: whole ticks for this pass, the rest kept.
uint32_t tickArithmetic(SyncClock* clock) {
  const uint32_t tempo = clock->tempo;
  // A clock that never had a tempo would divide by zero: its time stands still.
  if (tempo == 0) return 0;
  const uint32_t increment = clock->increment;
  const uint32_t q = (clock->remainder + increment) / tempo;
  clock->remainder += increment - tempo * q;
  return q;
}

// SYNC_MIDI, clocks were received: bring now to one full clock past the last
// one for each of them (more than one when some came while another pass ran).
uint32_t followReceivedClock(SyncClock* clock) {
  const uint32_t received = clock->clocksPending.exchange(0);
  clock->remainder = 0;
  const uint32_t owed = received * clock->ticksPerClock;
  const uint32_t since = clock->now - clock->lastClockPos;
  // Time never runs backwards: a position already past the clock (or a
  // resolution too small to count clocks in) stays where it is.
  const uint32_t q = since <= owed ? owed - since : 0;
  clock->lastClockPos = clock->now + q;
  // A wait that a pass set after the clock came in ends with the clock.
  clearFlag(clock, SYNC_CLOCK_SEEN | SYNC_WAIT_CLOCK);
  return q;
}

// SYNC_MIDI between clocks: run on the timer, stopping one tick short of the next clock.
uint32_t interpolate(SyncClock* clock) {
  uint32_t q = tickArithmetic(clock);
  clock->freeTicks += q;
  const uint32_t perClock = clock->ticksPerClock;
  const uint32_t since = clock->now - clock->lastClockPos;
  if (since + q >= perClock) {
    q = since < perClock ? perClock - 1 - since : 0;  // never backwards, as above
    setFlag(clock, SYNC_WAIT_CLOCK);
  }
  return q;
}

void sendMetronome(MidiOutHandle* out, uint32_t word) {
  midiOutShortMsg(out->device, word);
  NoteSounding(out, word);
}

void metronome(SyncClock* clock) {
  const uint32_t resolution = clock->resolution;
  const uint32_t now = clock->now;
  if (clock->beatTicks >= resolution) {
    clock->beatTicks -= resolution;
    clock->beat = static_cast<uint8_t>(clock->beat + 1);
    clock->nextBeat = now;
    if (clock->beat == clock->beatsPerBar) clock->beat = 0;
  }
  MidiOutHandle* out = LastMidiOut.load();
  const bool audible = out != nullptr && (out->flags & METRONOME_ON) != 0;
  if (clock->nextBeat <= now) {
    clock->metronomeMsg = clock->beat == 0 ? clock->firstBeatMsg : clock->otherBeatsMsg;
    if (audible) sendMetronome(out, clock->metronomeMsg);
    clock->beatCount += 1;
    clock->nextBeat = now + resolution;
    // A divisor of 0 (never set) counts as 1 rather than dividing by zero.
    const uint32_t divisor = std::max<uint32_t>(clock->noteDivisor, 1);
    clock->noteOffAt = clock->nextBeat - resolution / divisor;
  } else if (clock->noteOffAt <= now && audible) {
    sendMetronome(out, clock->metronomeMsg & ~0x00FF0000u);  // again on every pass up to the next click
  }
}

// A resolution of 0 has no beats to be inside of.
uint32_t withinBeat(uint32_t position, uint32_t resolution) { return resolution != 0 ? position % resolution : 0; }

void endCountInIfDue(SyncClock* clock) {
  const uint32_t countIn = clock->resolution * clock->beatsPerBar * clock->countInBars;
  const uint32_t start = clock->startPosition;
  if (countIn + start > clock->now) return;
  clearFlag(clock, SYNC_COUNT_IN);
  if (clock->mode == SYNC_INTERNAL) {
    clock->remainder = 0;
    clock->now = start;
    clock->clockTicks = 0;
    clock->sinceEvent = start;
    clock->freeTicks = 0;
    clock->lastClockPos = 0;
  } else if (clock->mode == SYNC_MIDI) {
    // remainder and clockTicks take the position here, not 0, as this path does.
    clock->remainder = start;
    clock->now = start;
    clock->clockTicks = start;
    clock->sinceEvent = start;
    clock->freeTicks = start;
    clock->lastClockPos = start;
  }
  if (clock->mode <= SYNC_MIDI) {
    clock->beatTicks = withinBeat(start, clock->resolution);
    clock->dispatchBase = 0;
  }
  clock->nextBeat -= countIn;
  clock->noteOffAt -= countIn;
  if (MidiInHandle* in = clock->midiIn.load()) {
    in->writeIndex = 0;
    in->readIndex = 0;
    in->lastEventTime = 0;
  }
  Capturing.publish(1);  // the input sees the emptied ring with it
}

void dispatchMeta(MidiOutHandle* out, SyncClock* clock, const MidiEvent& event) {
  if (event.metaType == META_TEMPO) {
    const uint32_t tempo = uint32_t{event.value1} << 16 | uint32_t{event.value2} << 8 | event.value3;
    if (tempo != 0) clock->tempo = tempo * 256;
    post(out->window, NM_SONG_META, META_TEMPO, 0);
  } else if (event.metaType == META_LYRIC) {
    const uint32_t start = uint32_t{event.value1} << 8 | event.value2;
    const uint32_t end = uint32_t{event.value3} << 8 | event.playedChannel;
    post(out->window, NM_SONG_META, META_LYRIC, start | end << 16);
  }
}

void dispatch(SyncClock* clock, MidiOutHandle* out) {
  for (;;) {
    // A stale slot of an empty ring is never dispatched, not even an end of sysex.
    if (out->ringCount.load(std::memory_order_acquire) == 0) return;
    const uint32_t at = out->readIndex.load(std::memory_order_relaxed);
    MidiEvent& slot = out->ring[at];
    if (slot.value1 != 0xF7 && clock->now - clock->dispatchBase < slot.time) return;
    clock->dispatchBase += slot.time;
    if (slot.time != 0) clock->sinceEvent = 0;
    if (slot.status == 0) {
      dispatchMeta(out, clock, slot);
    } else if (!MidiFilterBlocks(out->filter, slot.status)) {
      if (slot.status == 0xF0) {
        PutSysexByte(out, slot.value1);
      } else {
        if (ClockHooks.shapeEvent != nullptr) ClockHooks.shapeEvent(clock, out, &slot);
        const uint32_t word = PackedMessage(slot);
        NoteSounding(out, word);  // a repeated note-on ends the old note first
        midiOutShortMsg(out->device, word);
      }
    }
    out->readIndex.store(at == out->ringSize ? 0 : at + 1, std::memory_order_relaxed);
    if (ClockHooks.sendEvent != nullptr) ClockHooks.sendEvent(out);  // the slot read still counts as taken
    out->ringCount.fetch_sub(1, std::memory_order_release);
  }
}

uint32_t dueMidiClocks(SyncClock* clock) {
  const uint32_t perClock = clock->ticksPerClock;
  if (clock->mode == SYNC_MIDI) return 0;
  // While a beat has fewer than 24 ticks no MIDI clock is sent, and none is owed.
  if (perClock == 0) {
    clock->clockTicks = 0;
    return 0;
  }
  uint32_t due = 0;
  while (clock->clockTicks >= perClock) {
    clock->clockTicks -= perClock;
    ++due;
  }
  return due;
}

// Takes time forward by q and does everything that falls due with it.
void advanceAndDispatch(SyncClock* clock, uint32_t q) {
  clock->now += q;
  clock->beatTicks += q;
  clock->sinceEvent += q;
  if (syncTickDivider.load() >= 4) {
    if (!has(clock, SYNC_COUNT_IN)) post(clock->window, NM_SYNC_TICK, 0, asParam(clock));
    syncTickDivider = 0;
  } else {
    syncTickDivider += 1;
  }
  metronome(clock);
  if (has(clock, SYNC_COUNT_IN)) {
    endCountInIfDue(clock);
    return;
  }
  if (Generating.acquire() == 1) {
    if (ClockHooks.generatorTick != nullptr) ClockHooks.generatorTick();
  } else if (Draining == 1) {
    if (ClockHooks.generatorDrain != nullptr) ClockHooks.generatorDrain();
  }
  const uint32_t clocksDue = dueMidiClocks(clock);
  forEachOutput(clock, [&](MidiOutHandle* out) {
    if (clock->mode != SYNC_MIDI && sendsSync(out, 0xF8)) {
      for (uint32_t i = 0; i < clocksDue; ++i) midiOutShortMsg(out->device, 0xF8);
    }
    dispatch(clock, out);
  });
}

// Takes the pass for this thread: false while another pass, or a hold, has
// it. Sequentially consistent, with leavePass and the count of clocks: a
// clock counted before an entry finds the pass taken is seen by the load
// after the taker's leavePass (runPasses).
bool enterPass(SyncClock* clock) { return (clock->flags.fetch_or(SYNC_IN_TICK) & SYNC_IN_TICK) == 0; }
void leavePass(SyncClock* clock) { clock->flags.fetch_and(~SYNC_IN_TICK); }

// One pass; false when none ran: the clock is not counting, or another pass
// is under way (this one is then lost, or its MIDI clock left counted). A
// pass for a received clock runs only while one waits: when the timer's pass
// has followed it already, there is nothing left for it to do.
bool runTick(SyncClock* clock, bool forClock = false) {
  if (!has(clock, SYNC_COUNTING)) return false;
  if (!enterPass(clock)) return false;
  if (forClock && clock->clocksPending.load() == 0) {
    leavePass(clock);
    return false;
  }
  uint32_t q = 0;
  bool followed = false;
  if (clock->mode != SYNC_MIDI) {
    q = tickArithmetic(clock);
    clock->clockTicks += q;
  } else if (clock->clocksPending.load() != 0) {
    q = followReceivedClock(clock);
    followed = true;
  } else if (has(clock, SYNC_WAIT_CLOCK)) {
    clock->freeTicks += tickArithmetic(clock);  // time stands until the next clock
    leavePass(clock);
    return true;
  } else {
    q = interpolate(clock);
  }
  advanceAndDispatch(clock, q);
  if (followed) clock->freeTicks = 0;  // after the tick, whose count-in end sets it
  leavePass(clock);
  return true;
}

// Runs the pass, and runs it again while MIDI clocks that found it taken
// wait to be followed.
void runPasses(SyncClock* clock, bool forClock = false) {
  while (clock->held.load() == 0 && runTick(clock, forClock)) {
    if (clock->mode != SYNC_MIDI || clock->clocksPending.load() == 0) return;
    forClock = true;
  }
}

void advanceSmpteFrame(SyncClock* clock) {
  auto& time = clock->smpteTime;
  const uint32_t type = clock->smpteType;
  // A frame type outside the SMPTE modes (no full time code yet) counts 30 frames.
  const uint32_t perSecond = isSmpteMode(type) ? FramesPerSecond[type - SYNC_SMPTE30] : 30;
  time[0] = static_cast<uint8_t>(time[0] + 1);
  if (time[0] < perSecond) return;
  time[0] = 0;
  time[1] = static_cast<uint8_t>(time[1] + 1);
  if (time[1] >= 60) {
    time[1] = 0;
    time[2] = static_cast<uint8_t>(time[2] + 1);
    if (time[2] >= 60) {
      time[2] = 0;
      time[3] = static_cast<uint8_t>(time[3] + 1);
      if (time[3] >= 24) time[3] = 0;
    }
  }
  // The drop applies on each second of every tenth minute, as settled.
  if (type == SYNC_SMPTE30DROP && time[2] % 10 == 0) time[0] = 2;
}

void postSmpteTime(SyncClock* clock) { post(clock->window, NM_SMPTE_TIME, clock->smpteType, SmpteTimeWord(clock)); }

uint32_t killClockTimer(SyncClock* clock) {
  const SendsRefused refused;  // a pass blocked in a send to this thread must not hold up its timer's end
  const uint32_t result = timeKillEvent(clock->timerId);
  clock->timerId = 0;
  return result;
}

bool isLiveClock(const SyncClock* clock) {
  return std::find(liveClocks.begin(), liveClocks.end(), clock) != liveClocks.end();
}

}  // namespace

uint32_t SmpteTimeWord(const SyncClock* clock) {
  const auto& time = clock->smpteTime;
  return uint32_t{time[0]} | uint32_t{time[1]} << 8 | uint32_t{time[2]} << 16 | uint32_t{time[3]} << 24;
}

uint32_t OpenSync(SyncClock** clock, MessageTarget* window, uint32_t mode, uint32_t period) {
  SyncClock* c = *clock;
  if (c != nullptr && isLiveClock(c)) {
    if (c->timerId != 0) killClockTimer(c);
    timeEndPeriod(c->period);
  } else {
    c = new (std::nothrow) SyncClock;
    if (c == nullptr) return MMSYSERR_NOMEM;
    liveClocks.push_back(c);
    *clock = c;
  }
  c->window = window;
  if (mode != SYNC_KEEP) c->mode = mode;
  if (period != SYNC_KEEP) c->period = period;
  c->flags = 0;
  c->timerId = 0;
  if (c->mode >= SYNC_SMPTE30) {
    c->period = 500;
    timeBeginPeriod(500);
    return 0;
  }
  TimerCaps caps{};
  if (timeGetDevCaps(caps) != TIMERR_NOERROR) return SYNC_TIMER_FAILED;
  c->period = std::max(c->period, caps.periodMin);
  if (timeBeginPeriod(c->period) != TIMERR_NOERROR) return SYNC_TIMER_FAILED;
  c->timerId = timeSetEvent(c->period, c->period, syncTimer, asParam(c), TIME_PERIODIC);
  return c->timerId == 0 ? SYNC_TIMER_FAILED : 0;
}

uint32_t CloseSync(SyncClock** clock) {
  if (*clock == nullptr) return 0;
  SyncClock* c = *clock;
  // Nothing may reach the record once it is freed: the outputs and the input
  // let go of it first, then every pass under way ends, then the timer.
  forEachOutput(c, [](MidiOutHandle* out) { out->clock = nullptr; });
  for (auto& entry : c->outputs) entry = nullptr;
  if (MidiInHandle* in = c->midiIn.load()) {
    SyncClock* self = c;
    in->clock.compare_exchange_strong(self, nullptr);
  }
  WaitForClockPasses();
  uint32_t result = 0;
  if (c->timerId != 0) {
    result += killClockTimer(c);
    result += timeEndPeriod(c->period);
  }
  liveClocks.erase(std::remove(liveClocks.begin(), liveClocks.end(), c), liveClocks.end());
  delete c;
  *clock = nullptr;
  return result;
}

void StartSync(SyncClock* clock) {
  if (clock == nullptr) return;
  clock->remainder = 0;
  clock->now = 0;
  clock->clockTicks = 0;
  clock->sinceEvent = 0;
  clock->beatTicks = 0;
  clock->dispatchBase = 0;
  clock->freeTicks = 0;
  clock->lastClockPos = 0;
  clock->beat = 0;
  clock->metronomeMsg = clock->firstBeatMsg.load();
  if (clock->mode >= SYNC_SMPTE30) {
    for (auto& nibble : clock->smpteNibbles) nibble = 255;
    clock->smpteType = clock->mode;
  }
  ReStartSync(clock);
}

void ReStartSync(SyncClock* clock) {
  if (clock == nullptr) return;
  clock->clocksPending = 0;  // clocks left from before a stop are not followed after it
  setFlag(clock, SYNC_RUNNING);
  if (clock->mode != SYNC_MIDI) {
    setFlag(clock, SYNC_COUNTING);
    forEachOutput(clock, [](MidiOutHandle* out) {
      if (sendsSync(out, 0xFA)) midiOutShortMsg(out->device, 0xFA);
    });
  }
  syncTickDivider = 0;
}

void StopSync(SyncClock* clock) {
  if (clock == nullptr) return;
  // SYNC_IN_TICK stays with the pass under way, which clears it as it ends:
  // no other pass may start beside it meanwhile.
  clock->flags.fetch_and(SYNC_IN_TICK);
  // A pass still under way ends before the outputs are reset, so that it
  // cannot take an event from a ring that the reset has just emptied.
  WaitForClockPasses();
  forEachOutput(clock, [clock](MidiOutHandle* out) {
    if (clock->mode != SYNC_MIDI && sendsSync(out, 0xFC)) midiOutShortMsg(out->device, 0xFC);
    ResetMidiOut(out);
  });
}

uint32_t SetTempo(SyncClock* clock, uint32_t microsecondsPerQuarter) {
  if (clock == nullptr || microsecondsPerQuarter == 0) return SYNC_TIMER_FAILED;
  clock->tempo = microsecondsPerQuarter * 256;
  return 0;
}

uint32_t GetTempo(SyncClock* clock) { return clock != nullptr ? clock->tempo / 256 : 0; }

void SetResolution(SyncClock* clock, int32_t ticksPerQuarter) {
  if (clock == nullptr || ticksPerQuarter < 0 || ticksPerQuarter > 960) return;
  const auto resolution = static_cast<uint32_t>(ticksPerQuarter);
  clock->resolution = resolution;
  clock->ticksPerClock = resolution / 24;
  if (clock->mode <= SYNC_MIDI) {
    clock->increment = resolution * clock->period * 256000;
  } else if (isSmpteMode(clock->mode)) {
    clock->increment = QuarterFrameLength[clock->mode - SYNC_SMPTE30] * resolution;
  } else {
    clock->increment = 0;  // a mode beyond the table has no time source: time stands
  }
}

uint32_t GetResolution(SyncClock* clock) { return clock != nullptr ? clock->resolution.load() : 0; }

void SetStartFrame(SyncClock* clock, uint32_t frame) {
  if (clock != nullptr) clock->startFrame = frame;
}

uint32_t GetStartFrame(SyncClock* clock) { return clock != nullptr ? clock->startFrame.load() : 0; }

ClockPassGuard::ClockPassGuard() {
  ++passesOnThisThread;
  passesRunning.fetch_add(1);
}

ClockPassGuard::~ClockPassGuard() {
  passesRunning.fetch_sub(1);
  --passesOnThisThread;
}

void syncTimer(uint32_t, uint32_t, uintptr_t user, uintptr_t, uintptr_t) {
  ClockPassGuard guard;
  ClockPassCount.fetch_add(1, std::memory_order_relaxed);
  auto* clock = reinterpret_cast<SyncClock*>(user);
  // While a set-up is being replaced no pass runs. SYNC_IN_TICK alone does not
  // tell: a pass under way when the hold came clears it as it ends.
  if (clock->held.load() != 0) return;
  runPasses(clock);  // a pass that finds another under way is lost
}

void SmpteStoppedTimer(uint32_t, uint32_t, uintptr_t user, uintptr_t, uintptr_t) {
  ClockPassGuard guard;
  auto* clock = reinterpret_cast<SyncClock*>(user);
  post(clock->window, NM_SMPTE_STOPPED, 0, asParam(clock));
  for (auto& nibble : clock->smpteNibbles) nibble = 255;
  clock->smpteType = clock->mode;
}

void SyncMidiClock(SyncClock* clock) {
  ClockPassGuard guard;
  if (clock->held.load() != 0) return;  // a set-up is being replaced
  // Counted before the pass is tried: if the timer's pass is under way, that
  // pass follows this clock before it ends instead of this thread.
  if (has(clock, SYNC_COUNTING)) clock->clocksPending.fetch_add(1);
  setFlag(clock, SYNC_CLOCK_SEEN);
  clearFlag(clock, SYNC_WAIT_CLOCK);
  runPasses(clock, has(clock, SYNC_COUNTING));
}

void SyncQuarterFrame(SyncClock* clock, uint8_t data) {
  ClockPassGuard guard;
  if (clock->held.load() != 0) return;  // a set-up is being replaced
  timeKillEvent(clock->timerId);
  clock->timerId = timeSetEvent(clock->period, 100, SmpteStoppedTimer, asParam(clock), TIME_ONESHOT);

  const uint32_t piece = data >> 4 & 7;
  const auto nibble = static_cast<uint8_t>(data & 0x0F);
  auto& assembled = clock->smpteNibbles[piece / 2];
  assembled = (piece & 1) != 0 ? static_cast<uint8_t>(assembled | nibble << 4) : nibble;
  for (const auto& byte : clock->smpteNibbles) {
    if (byte == 255) return;
  }

  if (piece == 0) {
    advanceSmpteFrame(clock);
    postSmpteTime(clock);
    const uint32_t word = SmpteTimeWord(clock);
    if (!has(clock, SYNC_SMPTE_LOCKED) && word >= clock->startFrame) {
      setFlag(clock, SYNC_SMPTE_LOCKED);
      post(clock->window, NM_SMPTE_START, 0, word);
    }
  } else if (piece == 4) {
    advanceSmpteFrame(clock);
    postSmpteTime(clock);
  } else if (piece == 7) {
    const auto& n = clock->smpteNibbles;
    clock->smpteTime[0] = static_cast<uint8_t>(n[0] & 0x1F);
    clock->smpteTime[1] = static_cast<uint8_t>(n[1] & 0x3F);
    clock->smpteTime[2] = static_cast<uint8_t>(n[2] & 0x3F);
    clock->smpteTime[3] = static_cast<uint8_t>(n[3] & 0x1F);
    clock->smpteType = 5 - (n[3] >> 5 & 3);
    advanceSmpteFrame(clock);
  }
  if (has(clock, SYNC_SMPTE_LOCKED)) runTick(clock);
}

bool AttachClockOutput(SyncClock* clock, MidiOutHandle* out) {
  for (std::size_t i = 0; i < MaxClockOutputs; ++i) {
    if (clock->outputs[i].load() == nullptr) {
      clock->outputs[i] = out;
      return true;
    }
  }
  return false;
}

void DetachClockOutput(SyncClock* clock, MidiOutHandle* out) {
  std::size_t i = 0;
  while (i < MaxClockOutputs && clock->outputs[i].load() != out) ++i;
  for (; i < MaxClockOutputs; ++i) clock->outputs[i] = clock->outputs[i + 1].load();
}

void WaitForClockPasses() {
  // A pass that stops its own clock (the generator's drain) waits only for the others.
  const int own = passesOnThisThread;
  if (passesRunning.load() <= own) return;
  const SendsRefused refused;  // a pass may wait for this thread
  while (passesRunning.load() > own) std::this_thread::yield();
}

void HoldClockPasses(SyncClock* clock) {
  if (clock == nullptr) return;
  setFlag(clock, SYNC_IN_TICK);
  // Sequentially consistent, as the pass guard's count is: either a pass
  // counted itself before this store, and the wait below finds it, or it
  // reads the hold after its count and runs nothing.
  clock->held.store(1);
  WaitForClockPasses();
}

void ReleaseClockPasses(SyncClock* clock) {
  if (clock == nullptr) return;
  // The guard first: a pass that comes once the hold is gone must find it free, not lose it after.
  clearFlag(clock, SYNC_IN_TICK);
  clock->held.store(0, std::memory_order_release);
}
