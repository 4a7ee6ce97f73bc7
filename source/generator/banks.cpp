#include "generator/banks.h"

#include <cstdio>

#include "generator/functions.h"
#include "platform/command_ids.h"
#include "platform/prompts.h"

using namespace platform;

namespace {

// A name longer than this is cut.
constexpr std::size_t MaxBankName = 49;

bool filled(std::size_t slot) { return BankSlots[slot] != nullptr; }

bool yesTo(const char* question, uint32_t buttons) {
  return ShowMessageBox(question, "Velmoras", buttons | MB_ICONQUESTION) == IDYES;
}

std::string emptyLine(std::size_t slot) {
  char line[32];
  std::snprintf(line, sizeof line, "%3d   <empty>", static_cast<int>(slot));
  return line;
}

std::string filledLine(std::size_t slot) {
  char line[32];
  std::snprintf(line, sizeof line, "%3d   <bank %d>", static_cast<int>(slot), static_cast<int>(slot));
  return line;
}

}  // namespace

std::string BankLine(std::size_t slot) {
  return slot < BankSlotCount && filled(slot) ? filledLine(slot) : emptyLine(slot);
}

std::string NamedBankLine(std::size_t slot, const std::string& name) {
  char number[8];
  std::snprintf(number, sizeof number, "%3d   ", static_cast<int>(slot));
  return number + name.substr(0, MaxBankName);
}

BanksList::BanksList() {
  for (std::size_t slot = 0; slot < BankSlotCount; ++slot) lines[slot] = BankLine(slot);
}

AfterBankCommand ReceiveBank(MessageTarget* window, BanksList& list) {
  const std::size_t slot = list.selected;
  const bool wasEmpty = !filled(slot);
  if (!wasEmpty && !yesTo("Overwrite existing bank?", MB_YESNOCANCEL)) return AfterBankCommand::Reselect;
  // On the overwrite path the old bank is gone even when the new one cannot be had.
  if (AllocateBank(window, slot, static_cast<uint32_t>(FunctionLength.load())) == 0) return AfterBankCommand::Leave;
  CaptureSetup(*BankSlots[slot]);
  if (wasEmpty) list.lines[slot] = BankLine(slot);  // an overwritten slot keeps its line, a name too
  return AfterBankCommand::Reselect;
}

AfterBankCommand SendBank(MessageTarget* window, BanksList& list) {
  if (filled(list.selected)) InstallSetup(window, *BankSlots[list.selected]);
  return AfterBankCommand::Reselect;
}

AfterBankCommand SaveBank(MessageTarget* window, BanksList& list) {
  if (filled(list.selected)) {
    WriteBankFile(window, *BankSlots[list.selected]);
  } else {
    ShowMessageBox("Attempting to save a blank bank", "Velmora", MB_ICONSTOP);
  }
  return AfterBankCommand::Leave;
}

AfterBankCommand LoadBank(MessageTarget* window, BanksList& list) {
  const std::size_t slot = list.selected;
  if (filled(slot) && !yesTo("Overwrite existing bank?", MB_YESNOCANCEL)) return AfterBankCommand::Leave;
  const bool read = ReadBankFile(window, slot) != 0;
  // A failed read says "<empty>" even over a bank that is still there.
  list.lines[slot] = read ? filledLine(slot) : emptyLine(slot);
  return AfterBankCommand::Reselect;
}

AfterBankCommand DeleteBank(MessageTarget*, BanksList& list) {
  const std::size_t slot = list.selected;
  if (filled(slot) && yesTo("Delete bank?", MB_YESNO)) {
    BankSlots[slot].reset();
    list.lines[slot] = BankLine(slot);
  }
  return AfterBankCommand::Reselect;
}

AfterBankCommand BankCommand(MessageTarget* window, BanksList& list, uint32_t id) {
  if (list.selected >= BankSlotCount) return AfterBankCommand::Leave;
  switch (id) {
    case ID_BANK_RECEIVE: return ReceiveBank(window, list);
    case ID_BANK_SEND: return SendBank(window, list);
    case ID_BANK_SAVE: return SaveBank(window, list);
    case ID_BANK_LOAD: return LoadBank(window, list);
    case ID_BANK_DELETE: return DeleteBank(window, list);
    default: return AfterBankCommand::Leave;
  }
}

void NameBank(BanksList& list, const std::string& name, bool changed) {
  if (changed && list.selected < BankSlotCount) list.lines[list.selected] = NamedBankLine(list.selected, name);
}
