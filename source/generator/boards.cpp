#include "generator/boards.h"

#include "generator/bank.h"
#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"

namespace {

void sendNow(uint8_t status, uint8_t data1, uint8_t data2) { MidiOutNow(TheMidiOut, status, data1, data2); }

// Resets, on all 16 channels from 15 down, the controllers of the kinds that are on.
void resetKindsThatAreOn(uint32_t flags) {
  for (int c = 15; c >= 0; --c) {
    const auto channel = static_cast<uint8_t>(c);
    if ((flags & 31) != 0) sendNow(0xE0 | channel, 0, 64);
    if ((flags >> 5 & 1) != 0) sendNow(0xB0 | channel, 1, 0);
    if ((flags >> 6 & 1) != 0) sendNow(0xB0 | channel, 2, 0);
    if ((flags >> 7 & 1) != 0) sendNow(0xB0 | channel, 7, 64);
    if ((flags >> 8 & 1) != 0) sendNow(0xB0 | channel, 10, 64);
    if ((flags >> 9 & 1) != 0) sendNow(0xD0 | channel, 0, 0);
  }
}

}  // namespace

void SwitchBoard(uint32_t id) {
  if (id < ID_PITCH_BOARD_FIRST_ON || id > ID_BOARD_LAST_ON) return;
  const uint32_t bit = 1u << (id - ID_PITCH_BOARD_FIRST_ON);
  const uint32_t flags = LiveBank.boardFlags;
  if ((flags & bit) != 0) resetKindsThatAreOn(flags);
  LiveBank.boardFlags = flags ^ bit;
}

void PressBoardButton(uint32_t id) {
  if (id < ID_PITCH_BOARD_FIRST_ON || id > ID_BOARD_LAST_ON) return;
  if (id < ID_CONTROLLER_BOARD_FIRST_ON) {
    for (uint32_t other = ID_PITCH_BOARD_FIRST_ON; other < ID_CONTROLLER_BOARD_FIRST_ON; ++other) {
      if (other != id && (LiveBank.boardFlags >> (other - ID_PITCH_BOARD_FIRST_ON) & 1) != 0) SwitchBoard(other);
    }
  }
  SwitchBoard(id);
  if (id < ID_CONTROLLER_BOARD_FIRST_ON) SelectedPitchBoard = static_cast<uint8_t>(id - ID_PITCH_BOARD_FIRST_ON);
}

void ClearBoards(platform::MessageTarget*) {
  LiveBank.boardFlags = 0;
  RefreshIfOpen(BoardsOpen, BoardsWindow);  // the window sets its buttons from the flags
}

void RefreshBoards(platform::MessageTarget* window) {
  LiveBank.boardFlags = 0;
  const uint32_t pending = PendingBoardFlags;
  for (uint32_t id = ID_PITCH_BOARD_FIRST_ON; id <= ID_BOARD_LAST_ON; ++id) {
    if ((pending >> (id - ID_PITCH_BOARD_FIRST_ON) & 1) == 0) continue;
    SwitchBoard(id);
    if (id < ID_CONTROLLER_BOARD_FIRST_ON) SelectedPitchBoard = static_cast<uint8_t>(id - ID_PITCH_BOARD_FIRST_ON);
  }
  (void)window;
  RefreshIfOpen(BoardsOpen, BoardsWindow);
}

std::array<int16_t, BoardPoints> EditCurve{};

const std::array<const char*, BoardCount> BoardLabels = {"Pitch Wheel", "Pitch Wheel", "Pitch Wheel", "Pitch Wheel",
                                                         "Pitch Wheel", "Mod Wheel",   "Breath",      "Main Volume",
                                                         "Pan",         "Key Aft"};

void SetEditPoint(PlotCell cell) {
  if (!CurveEditArea.contains(CurveEditArea.left + cell.column, CurveEditArea.top + cell.row)) return;
  EditCurve[static_cast<std::size_t>(cell.column)] = static_cast<int16_t>(CurveEditArea.valueOfRow(cell.row));
}

void PickUpBoard(int board) {
  if (board < 0 || board >= BoardCount) return;
  const auto& curve = LiveBank.boardCurves[static_cast<std::size_t>(board)];
  for (std::size_t i = 0; i < EditCurve.size(); ++i) EditCurve[i] = curve[i];
}

void StoreEditCurve(uint32_t id) {
  if (id < ID_BOARD_FIRST_STORE || id > ID_BOARD_LAST_STORE) return;
  auto& curve = LiveBank.boardCurves[id - ID_BOARD_FIRST_STORE];
  for (std::size_t i = 0; i < EditCurve.size(); ++i) curve[i] = EditCurve[i];
}
