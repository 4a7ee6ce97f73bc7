#pragma once
// The Banks window's logic: the list's lines and the five commands on the
// selected slot. A slot keeps a whole set-up in memory until the program
// ends; a line is display text only. UI thread only; Send makes a slot the
// live set-up under a running generator, with the clock's passes held off.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "generator/setup_files.h"
#include "platform/message_loop.h"

// "%3d   <empty>" for an empty slot, "%3d   <bank %d>" for a filled one.
std::string BankLine(std::size_t slot);
// "%3d   %s": a line that the user named; the name is cut to 49 characters.
std::string NamedBankLine(std::size_t slot, const std::string& name);

// The list as the window shows it: built from BankSlots, the first line selected.
struct BanksList {
  BanksList();
  std::array<std::string, BankSlotCount> lines;
  std::size_t selected = 0;
};

// After a command the window selects its slot again and gives the list the
// focus, or leaves both as they are.
enum class AfterBankCommand { Reselect, Leave };

// The live set-up into the slot, after "Overwrite existing bank?" when it is filled.
AfterBankCommand ReceiveBank(platform::MessageTarget* window, BanksList& list);
// The slot becomes the live set-up; an empty slot changes nothing.
AfterBankCommand SendBank(platform::MessageTarget* window, BanksList& list);
// The slot into a bank file; an empty one is refused with a message.
AfterBankCommand SaveBank(platform::MessageTarget* window, BanksList& list);
// A bank file into the slot. Any failure, the cancelled file dialog among
// them, shows the line as empty even where the slot still holds its bank.
AfterBankCommand LoadBank(platform::MessageTarget* window, BanksList& list);
// Empties a filled slot after "Delete bank?".
AfterBankCommand DeleteBank(platform::MessageTarget* window, BanksList& list);
// One of the five by its button's id (500..504); Leave for any other id.
AfterBankCommand BankCommand(platform::MessageTarget* window, BanksList& list, uint32_t id);

// The Bank Name dialog's OK: a changed name replaces the selected line. The
// name goes into no record and no file, and is lost with the window.
void NameBank(BanksList& list, const std::string& name, bool changed);
