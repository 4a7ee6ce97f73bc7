#pragma once
// The transport as the Control Bar runs it, without the window: the commands
// Play, Stop, Rewind, Go to end and the generator button, the end of the
// song, and the notifications of the clock and the output. Buttons and fields
// are reached through the view registry. UI thread only.

#include <cstdint>

#include "platform/message_loop.h"

inline constexpr uint32_t WM_COMMAND = 0x0111;  // param1's low word is the command's id

inline constexpr uint32_t CMD_STOP = 100;
inline constexpr uint32_t CMD_PLAY = 101;
inline constexpr uint32_t CMD_REWIND = 102;
inline constexpr uint32_t CMD_GO_TO_END = 103;
inline constexpr uint32_t CMD_GENERATE = 200;

// Runs a transport command, then brings the frame's commands up to date.
void TransportCommand(uint32_t id);

void PlayCommand();
void StopCommand();
void RewindCommand();
void GoToEndCommand();
// NM_SYNC_TICK: the song has run out when the output's ring is empty while
// playing (Stop, then Rewind); otherwise the counter shows the clock's time.
void SyncTickNotice();

// The Control Bar's messages: WM_COMMAND, NM_SYNC_TICK, NM_SONG_META,
// NM_EVENT_FOLLOW. Returns 0.
intptr_t ControlBarMessage(uint32_t msg, uintptr_t param1, uintptr_t param2);

// A Control Bar without a window, for headless programs and tests.
class TransportWindow final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override {
    return ControlBarMessage(msg, param1, param2);
  }
};
