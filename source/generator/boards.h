#pragma once
// The boards' switching, apart from the window: turning a board on and off
// (with the reset of the controllers that are on), clearing them, and taking
// in the board set of a loaded file or bank.

#include <cstdint>

#include "platform/message_loop.h"

// Board ids 350..359: flips the board's bit; turning one off first resets,
// on all channels, the controllers of every kind that is on.
void SwitchBoard(uint32_t id);
// An "on" button of the Boards window: a Pitch Wheel board (350..354) turns
// any other pitch board off first and becomes the selected pitch curve.
void PressBoardButton(uint32_t id);
void ClearBoards(platform::MessageTarget* window);
void RefreshBoards(platform::MessageTarget* window);
