#pragma once
// The boards apart from the window's drawing: turning a board on and off
// (with the reset of the controllers that are on), clearing them, taking in
// the board set of a loaded file or bank, and the edit curve that the Boards
// window draws on, stores into a board and picks a board's curve up into.

#include <array>
#include <cstdint>

#include "generator/bank.h"
#include "generator/plot_grid.h"
#include "platform/message_loop.h"

// Board ids 350..359: flips the board's bit; turning one off first resets,
// on all channels, the controllers of every kind that is on.
void SwitchBoard(uint32_t id);
// An "on" button of the Boards window: a Pitch Wheel board (350..354) turns
// any other pitch board off first and becomes the selected pitch curve.
void PressBoardButton(uint32_t id);
void ClearBoards(platform::MessageTarget* window);
void RefreshBoards(platform::MessageTarget* window);

// The curve in the Boards window's edit area: zero at start, kept while the
// program runs, never in a file or bank. UI thread only.
extern std::array<int16_t, BoardPoints> EditCurve;
// The thumbnails' labels, in board order.
extern const std::array<const char*, BoardCount> BoardLabels;
// Sets the edit curve's point under a cell of the edit area: 127 at the top row.
void SetEditPoint(PlotCell cell);
// A double click on a thumbnail: the board's curve into the edit curve.
void PickUpBoard(int board);
// A "store" button, 301..310: the edit curve into its board, which plays it
// from the next message inside a note on, also while generating.
void StoreEditCurve(uint32_t id);
