#pragma once
// The transport words: what the transport is doing now. Flags are 0 or 1 and
// are tested for the value 1. The UI thread writes them; the clock's pass,
// the generator and the device callbacks read them.

#include <cstdint>
#include <string>

#include "platform/message_loop.h"
#include "platform/shared_word.h"

struct SyncClock;
struct MidiInHandle;
struct MidiOutHandle;

extern SharedWord<uint32_t> Playing;
extern SharedWord<uint32_t> Recording;
extern SharedWord<uint32_t> Capturing;   // input and the generator's notes go into the take
extern SharedWord<uint32_t> Generating;  // the generator runs in every pass; set with publish
extern SharedWord<uint32_t> Draining;    // the generator only ends what still sounds
extern SharedWord<uint32_t> Linked;      // the generator follows the transport
extern SharedWord<uint32_t> SongPosition;
extern SharedWord<uint32_t> SongResolution;  // ticks per quarter note of the song
extern SharedWord<uint32_t> Numerator;       // beats per bar
extern SharedWord<uint32_t> Denominator;

// The live system that the Control Bar owns: one clock, one input, one output.
extern SyncClock* TheClock;
extern MidiInHandle* TheMidiIn;
extern MidiOutHandle* TheMidiOut;

// The Control Bar, which takes the clock's and the input's notifications, and
// its buttons, to which others post BUTTON_SET_STATE. Null while there is none.
extern platform::MessageTarget* ControlBarWindow;
platform::MessageTarget* ControlBarControl(uint32_t id);
void SetControlBarControl(uint32_t id, platform::MessageTarget* control);

inline constexpr uint32_t BUTTON_SET_STATE = 1324;

// The Control Bar's commands, which others send or post to it by message.
inline constexpr uint32_t WM_COMMAND = 0x0111;  // param1's low word is the command's id
inline constexpr uint32_t CMD_STOP = 100;
inline constexpr uint32_t CMD_PLAY = 101;
inline constexpr uint32_t CMD_REWIND = 102;
inline constexpr uint32_t CMD_GO_TO_END = 103;
inline constexpr uint32_t CMD_RECORD = 104;
inline constexpr uint32_t CMD_QUANTIZE_RECORD = 105;
inline constexpr uint32_t CMD_PANIC = 106;
inline constexpr uint32_t CMD_MIDI_SYNC = 107;
inline constexpr uint32_t CMD_INTERNAL_CLOCK = 108;
inline constexpr uint32_t CMD_METRONOME = 109;
inline constexpr uint32_t CMD_LINK = 110;
inline constexpr uint32_t CMD_GENERATE = 200;
// The frame's menu commands that the transport answers.
inline constexpr uint32_t CMD_MIDI_THRU = 1555;
inline constexpr uint32_t CMD_MENU_INTERNAL_CLOCK = 1600;
inline constexpr uint32_t CMD_MENU_MIDI_SYNC = 1601;
inline constexpr uint32_t CMD_MENU_LINK = 1618;

// The folders each kind of file dialog opens in; each takes the folder of
// the last file of its kind. UI thread only.
extern std::string MidiFilesDir, VelmoraFilesDir, DistributionFilesDir, FunctionFilesDir;
