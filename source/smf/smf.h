#pragma once
// The Standard MIDI File layer: one handle that reads a file track by track
// into arrays of events with delta times, or writes one track chunk after the
// other, baking a song track's settings into the events.
//
// Reading takes the whole file in at open and never reads outside it: past
// its end every byte reads as 0, as a file that ends early does. Any file may
// be given; none can make the reader crash or hang. UI thread only.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "midi/midi_event.h"

inline constexpr uint32_t SMF_FAILED = 0xFFFFFFFFu;
inline constexpr uint8_t META_END_OF_TRACK = 47;

struct SmfTrackState {
  uint32_t length = 0;    // the chunk's length word: kept, used for nothing
  uint8_t status = 0;     // running status
  uint32_t position = 0;  // file position of the track's next byte
  uint32_t sysexLeft = 0;
  uint8_t scanStatus = 0;                     // running status of the meta search
  std::array<uint32_t, 127> metaPositions{};  // where the next search for a type begins
  uint32_t ended = 0;
};

// What a song track's settings do to it as it is written: the writer is
// handed one for each song track it writes (SetSMFTrackSettings). A song
// track without one is written with no setting.
struct SmfTrackSettings {
  int8_t keyOffset = 0;
  int8_t velocityOffset = 0;
  uint8_t channel = 255;  // 0..15 forces the channel; 255: the events keep their own
  uint8_t pan = 255;      // 255: none, here and below
  uint8_t patch = 255;
  uint8_t volume = 255;
  uint32_t timeOffset = 0;
  uint16_t repeats = 0;
  uint8_t storedChannel = 0;  // the channel of the track's first stored event; 0 for none
  uint64_t storedTicks = 0;   // the sum of the stored events' times, to which repeats pad
  uint32_t ticksPerBar = 0;   // the song's bar
};

// The song tracks whose settings a writer can be handed: 256 and the tempo track.
inline constexpr uint32_t SmfSongTracks = 257;

struct SmfFile {
  uint8_t mode = 0;  // 'r' or 'w'
  std::FILE* file = nullptr;
  uint16_t format = 0;
  uint16_t trackCount = 0;
  uint16_t division = 0;
  std::string path;
  std::vector<uint8_t> image;  // reading: the whole file
  std::vector<SmfTrackState> tracks;
  uint32_t currentTrack = 0;
  std::vector<uint8_t> metaBuffer;
  uint32_t filePos = 0;
  uint32_t chunkStart = 0;
  uint32_t chunkLength = 0;
  uint8_t runningStatus = 0;
  bool writeFailed = false;  // a write came up short
  bool ownsFile = true;      // false: the caller closes the file (OpenSMFWriter)
  std::vector<SmfTrackSettings> songTracks;  // writing: each song track's settings
};

uint32_t OpenSMF(SmfFile** smf, const char* path, uint32_t* format, uint8_t mode);
// Opens for reading a file image already in memory, as OpenSMF does a file.
uint32_t OpenSMFImage(SmfFile** smf, std::vector<uint8_t> image, uint32_t* format);
// Opens for writing, as OpenSMF does with 'w', a file that the caller has
// open, empty, for reading and writing; CloseSMF flushes it and leaves it open.
uint32_t OpenSMFWriter(SmfFile** smf, std::FILE* file, uint32_t* format);
// Closes the handle; SMF_FAILED when a file being written did not take every
// byte, so that a caller can keep its old file (the writers themselves go on).
uint32_t CloseSMF(SmfFile** smf);
uint32_t SuspendSMF(SmfFile* smf);
uint32_t RewindSMF(SmfFile* smf);
uint32_t ReadSMF(SmfFile* smf, uint32_t track, MidiEvent* events, uint32_t maxEvents);
uint32_t GetSMFResolution(SmfFile* smf);
// The next meta event of a type in the current track: its ticks since the
// last one found, or SMF_FAILED. *data stays good until the next call.
uint32_t ReadMetaEvent(SmfFile* smf, uint32_t track, uint8_t type, const uint8_t** data, uint32_t* length);

// A letter of the Windows Western code page (cp1252), which lyric files mostly
// use. Two lyrics that meet letter to letter are one space apart: the reader
// counts that space into the lyric offsets, and the song's lyric text holds it.
bool IsLyricLetter(uint8_t c);

uint32_t SetSMFResolution(SmfFile* smf, uint32_t resolution);
// The settings that WriteSMF bakes into a song track's events; 0 for a song
// track out of range or a handle not open for writing.
uint32_t SetSMFTrackSettings(SmfFile* smf, uint32_t songTrack, const SmfTrackSettings& settings);
uint32_t WriteSMF(SmfFile* smf, uint32_t fileTrack, const MidiEvent* events, uint32_t count, uint32_t songTrack);
uint32_t WriteMetaEvent(SmfFile* smf, uint32_t fileTrack, uint8_t type, const char* data, uint32_t time);

// A variable-length number as written: a value past 0x0FFFFFFF, which four
// bytes cannot hold, is written as 0x0FFFFFFF.
std::vector<uint8_t> EncodeVariableLength(uint32_t value);
