#pragma once
// The song: 256 song tracks and the tempo track, each an array of events
// sorted by time with the settings that shape it at output.
//
// Threads: the UI thread changes tracks only while the transport is stopped,
// except the settings that shape each event at output (key and velocity
// offset, channel, play off, pan, patch, volume): the Tracks manager may
// change those while the song plays, and the clock's pass reads them. They
// are shared words, and a change takes effect at the next event.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "midi/midi_event.h"
#include "platform/shared_word.h"

inline constexpr std::size_t SongTrackCount = 256;
inline constexpr std::size_t TempoTrack = 256;

struct TrackRecord {
  uint32_t cursor = 0;     // index of the next event
  uint32_t count = 0;      // events in the array
  uint32_t remaining = 0;  // events left from cursor
  MidiEvent* events = nullptr;
  SharedWord<int8_t> keyOffset = 0;       // semitones added to each note at output
  SharedWord<int8_t> velocityOffset = 0;  // added to each note-on's velocity at output
  SharedWord<uint8_t> channel = 255;      // 0..15 forces the channel; 255: the events keep their own
  SharedWord<uint8_t> playOff = 0;        // 1: note-ons go out with velocity 0
  SharedWord<uint8_t> pan = 255;          // controller 10; 255: none
  SharedWord<uint8_t> patch = 255;        // program; 255: none
  SharedWord<uint8_t> volume = 255;       // controller 7; 255: none
  uint32_t timeOffset = 0;                // ticks added to every event time at output
  uint16_t repeats = 0;                   // extra passes through the track
  uint16_t repeatsDone = 0;               // passes the feed has made
};

extern std::array<TrackRecord, SongTrackCount + 1> Tracks;
// The song's meter: ticks per quarter note, beats per bar and the beat's note value.
extern SharedWord<uint32_t> SongResolution;
extern SharedWord<uint32_t> Numerator;
extern SharedWord<uint32_t> Denominator;
extern SharedWord<uint32_t> TicksPerBar;
// The tracks that hold an event array, in order of arrival; after a deletion,
// rebuilt from track 0 up, so that the tempo track stands last.
extern std::array<uint32_t, SongTrackCount + 1> ActiveTracks;
extern int32_t ActiveTrackCount;
extern uint8_t RecordTrack;
extern std::array<uint32_t, 8> TouchedTracks;  // bit t % 32 of word t / 32
// A track's name: none, or a text, which may be empty.
extern std::array<std::optional<std::string>, SongTrackCount + 1> TrackNames;

// The tracks that Copy, Cut, the transforms and the Events list act on, ascending.
extern std::array<uint32_t, SongTrackCount> SelectedTracks;
extern int32_t SelectedTrackCount;
extern uint32_t SelectFrom, SelectTo;  // the region's bounds in ticks

// The take and the loader's staging area: one block from start to exit.
// Recording stops taking at TakeCapacity events; the block has room beyond
// it for what may still follow the last regular place: the note-on of a
// doubled key, and one note-off per key at Stop.
inline constexpr uint32_t TakeCapacity = 32768;
inline constexpr uint32_t TakeSlots = TakeCapacity + 1 + 128;
extern std::array<MidiEvent, TakeSlots> TakeBuffer;
extern uint32_t TakeCount;

// The song's lyric text: null, or one block of LyricTextSize bytes that the
// loader fills and never runs past.
inline constexpr uint32_t LyricTextSize = 65535;
extern std::unique_ptr<char[]> LyricText;

extern std::string SongFilePath;  // the path of the last Save as; empty otherwise
extern std::string SongTitle;     // the name in the frame's title
extern uint32_t SongDirty;        // the song changed since it was last saved
// Shows SongTitle in the frame's title.
void ShowSongTitle();

// Ticks as measure:beat:tick, counted from 1: 0 reads 00001:01:000.
std::string TimeText(uint32_t ticks);
// measure:beat:tick back to ticks; missing parts are 0, a measure or beat
// below 1 counts as 1, and nothing is held to a range.
uint32_t ParseTimeText(const std::string& text);
void AbsoluteToDelta(MidiEvent* events, uint32_t n);
void DeltaToAbsolute(MidiEvent* events, uint32_t n);
int CompareEventTime(const MidiEvent& a, const MidiEvent& b);

// The collecting list of every edit: copies of events, in order.
struct EventList {
  std::vector<MidiEvent> events;
  uint32_t length() const { return static_cast<uint32_t>(events.size()); }
};
// 1, or 0 when no room could be had for the copy.
int AppendEvent(const MidiEvent* event, EventList* list);

// The settings of a track as a new song has them.
void ResetTrackSettings(TrackRecord& track);
void TouchTrack(uint32_t track);
// A track's setting (pan, volume, patch) goes out at once as the event that
// makes it heard; a value of 255 is none and sends nothing.
void SendTrackSetting(uint8_t value, uint8_t status, uint8_t controller);
// The Tracks manager's selected rows into SelectedTracks, ascending, and
// their number into SelectedTrackCount; then the gray rules again.
void ReadSelection();
// Sends a track's pan, volume and patch where it has them, has the Tracks
// manager build its row from the record, and marks the song changed.
void BuildTrackRow(uint32_t track);
// Takes a track's events, name and row away, puts the current track's
// settings back to their defaults, and rebuilds ActiveTracks from the tracks
// that still hold events when this one held events or stood in the list.
void DeleteTrack(uint32_t track);
// The one message for an exhausted heap in the song and its edits.
void NotEnoughMemory();
// An event array that does not move while it lives; null when none can be
// had, or when it would hold more than EventBlockLimit events (a test lowers
// the limit to walk the paths of an exhausted heap).
MidiEvent* AllocateEvents(uint32_t count);
extern uint32_t EventBlockLimit;
void FreeEvents(MidiEvent* events);

