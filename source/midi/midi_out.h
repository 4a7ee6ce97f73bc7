#pragma once
// The output half of the MIDI toolkit. An output handle wraps one device and
// gives it a ring of timed events, a chain of sysex buffers, the table of the
// notes now sounding and a filter word. Messages reach the device at once
// (time SEND_NOW), through the ring timed by the sync clock, or, for a handle
// with no clock, through the ring and the hidden window.
//
// Threads: only the UI thread opens, closes and changes filters; its hidden
// window's messages run there too. MidiOut is called on the UI thread and on
// the timer thread. The ring has one producer and one consumer at a time:
// ringCount publishes slots (release on change, acquire on read), each index
// has one owner. soundingNotes is changed with relaxed atomic bit operations
// by the UI thread, the timer thread and the input's thru.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "midi/midi_event.h"
#include "platform/message_loop.h"
#include "platform/midi_devices.h"
#include "platform/shared_word.h"

struct SyncClock;

// The flags word, of handles and of the word passed to open; its low 20 bits
// come from the open word.
inline constexpr uint32_t MIDI_SYSEX = 1u << 16;
inline constexpr uint32_t MIDI_SYNC = 1u << 17;
inline constexpr uint32_t MIDI_STARTED = 1u << 20;
inline constexpr uint32_t METRONOME_ON = 1u << 24;
inline constexpr uint32_t METRONOME_RECORD = 1u << 25;
inline constexpr uint32_t METRONOME_PLAY = 1u << 26;
inline constexpr uint32_t MIDI_THRU = 1u << 27;

// What the application opens its devices with: 32 sysex buffers of 512 bytes,
// a ring of 512 events, sysex and sync on.
inline constexpr uint32_t MIDI_OPEN_WORD = 209696;

inline constexpr std::array<uint32_t, 10> SizeTable = {64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768};

// The size table's entry for a 4-bit index; indices past the table take its last entry.
uint32_t SizeFromTable(uint32_t index);

// Private notifications of the hidden output window.
inline constexpr uint32_t NM_SYSEX_OUT_DONE = 20818;
inline constexpr uint32_t NM_OUT_FLUSH = 20819;
inline constexpr uint32_t NM_SYSEX_OUT_SEND = 20820;
inline constexpr uint32_t NM_SYSEX_OUT_RETRY = 20821;

inline constexpr uint32_t MIDI_OUT_FAILED = 0xFFFFFFFFu;

// One sysex buffer in a chain: the driver header and its data block. A node
// whose buffer could not be made has no block and takes no bytes.
struct SysexNode {
  SysexNode* prev = nullptr;
  std::atomic<SysexNode*> next{nullptr};
  platform::MidiHeader header{};
  std::unique_ptr<uint8_t[]> block;
  bool rewound = false;  // lpData has been moved back for the first send
};

struct MidiOutHandle;

// The hidden output window: buffer work and driver calls happen on the UI
// thread through its messages.
class MidiOutWindow final : public platform::MessageTarget {
 public:
  explicit MidiOutWindow(MidiOutHandle* out) : out_(out) {}
  intptr_t handleMessage(uint32_t message, uintptr_t param1, uintptr_t param2) override;
  MidiOutHandle* handle() const { return out_; }

 private:
  MidiOutHandle* out_;
};

struct MidiOutHandle {
  platform::MidiOutPort* device = nullptr;
  platform::MessageTarget* window = nullptr;  // notification window
  std::atomic<SyncClock*> clock{nullptr};
  uint32_t deviceId = 0;
  std::atomic<uint32_t> flags{0};
  SharedWord<uint32_t> filter;
  std::unique_ptr<MidiOutWindow> hiddenWindow;
  uint32_t sysexSize = 0;
  std::atomic<uint32_t> writeIndex{0};
  std::atomic<uint32_t> readIndex{0};
  std::unique_ptr<MidiEvent[]> ring;  // ringSize + 1 slots
  uint32_t ringSize = 0;
  std::atomic<uint32_t> ringCount{0};
  std::atomic<SysexNode*> sysexList{nullptr};              // the node being filled
  std::array<std::atomic<uint32_t>, 128> soundingNotes{};  // by key: bit c while it sounds on channel c
  std::unique_ptr<uint8_t[]> trackOfSlot;                  // by ring slot: the song track of the event
  // The first node of the chain, and the buffers that the driver holds until
  // it reports them done. UI thread only.
  SysexNode* sysexHead = nullptr;
  SysexNode* sentList = nullptr;
};

// The most recently opened output, used by the metronome and the input's thru.
extern std::atomic<MidiOutHandle*> LastMidiOut;

uint32_t GetMidiOutDescription(uint32_t deviceId, std::string& text);
uint32_t OpenMidiOut(MidiOutHandle** out, platform::MessageTarget* window, uint32_t deviceId, SyncClock* clock,
                     uint32_t flagsWord);
uint32_t CloseMidiOut(MidiOutHandle** out);
uint32_t GetMidiOutFilters(MidiOutHandle* out);
void SetMidiOutFilters(MidiOutHandle* out, uint32_t filter);
void FlushMidiOut(MidiOutHandle* out);
uint32_t ResetMidiOut(MidiOutHandle* out);
uint32_t ResetNotesAndControllers(MidiOutHandle* out);
uint32_t MidiOut(MidiOutHandle* out, MidiEvent* event);
// MidiOut of an immediate channel message.
uint32_t MidiOutNow(MidiOutHandle* out, uint8_t status, uint8_t value1, uint8_t value2);
// Sends note-offs (or note-ons of velocity 0), packed, at once and in order,
// and takes them off the table of sounding notes: a chord's endings. The
// device gets them in one call.
void EndNotesNow(MidiOutHandle* out, std::span<const uint32_t> offs);
void MidiOutCallback(platform::MidiOutPort* device, uint32_t message, uintptr_t instance, uintptr_t param1,
                     uintptr_t param2);
intptr_t MidiOutProc(MidiOutWindow* window, uint32_t message, uintptr_t param1, uintptr_t param2);

// Notes a packed message in the table of sounding notes. A repeated note-on
// sends, at once, the note-off of the note already sounding.
void NoteSounding(MidiOutHandle* out, uint32_t word);
// Sends at once, repeating while the driver answers not-ready.
uint32_t SendShortWithRetry(MidiOutHandle* out, uint32_t word);
// Puts one sysex byte into the buffer being filled; a full buffer, or one
// ended by 0xF7, goes to the hidden window to be sent.
void PutSysexByte(MidiOutHandle* out, uint8_t byte);
