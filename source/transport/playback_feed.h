#pragma once
// The playback feed: it merges the song's tracks lazily into an output's ring.
// Play places every track at a position and fills the ring; then every event
// the clock dispatches tops the ring up by one. On the way out each event is
// shaped by its track's settings, so the stored events never change.
//
// Threads: SeekFeed and the first SendEvent run on the UI thread while the
// clock is stopped; after that SendEvent and ShapeEvent run in the clock's pass.

#include <cstdint>

#include "midi/midi_event.h"
#include "platform/shared_word.h"

struct SyncClock;
struct MidiOutHandle;

inline constexpr uint32_t NM_EVENT_FOLLOW = 20827;

extern SharedWord<uint32_t> FeedRemaining;  // events left to feed, repeats entered included
extern SharedWord<uint32_t> FeedLastTime;   // absolute time of the event last put into the ring
// The Events list's playback cursor: the first row not yet passed, the row
// last shown, and the list's top row as Play and Record remember it.
extern uint32_t FeedCursorRow, FeedShownRow, EventsListTop;

// Places every track at a position, sending at once the pan, volume and patch of each.
void SeekFeed(uint32_t position);
// Tops the ring up as far as it takes.
void SendEvent(MidiOutHandle* out);
// Shapes a ring slot by its track's settings just before it is sent.
void ShapeEvent(SyncClock* clock, MidiOutHandle* out, MidiEvent* event);
// The first of the Events list's rows whose event's time is at or after a
// position, or the row count when there is none.
uint32_t FirstEventRowAt(uint32_t position);
// NM_EVENT_FOLLOW: moves the Events list's cursor to the music at a position,
// a page at a time.
void EventFollowNotice(uint32_t position);
// Installs the shaping and the top-up in the clock's pass.
void InstallFeedHooks();
