#pragma once
// The parameter file ("*.vlm", magic "VLhd"): one whole generator set-up, byte
// for byte the same as a bank file of the Banks window. Dialogs and messages
// go through the prompts seam; all of this runs on the UI thread.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "generator/bank.h"
#include "platform/message_loop.h"

inline constexpr std::size_t BankSlotCount = 256;
// The stored banks: a slot is empty exactly when its pointer is null.
extern std::array<std::unique_ptr<Bank>, BankSlotCount> BankSlots;

int ReadParameterFile(platform::MessageTarget* window);
int WriteParameterFile(platform::MessageTarget* window);
int AllocateBank(platform::MessageTarget* window, std::size_t slot, uint32_t size);
int ReadBankFile(platform::MessageTarget* window, std::size_t slot);
int WriteBankFile(platform::MessageTarget* window, const Bank& bank);

// The same without the dialogs, for a path already chosen (the headless
// programs, and the commands above once the user has chosen).
int LoadParameterFile(platform::MessageTarget* window, const std::string& path);
int SaveParameterFile(const std::string& path);

// The file's bytes for the live set-up, and for a stored bank.
std::vector<uint8_t> ParameterFileBytes();
std::vector<uint8_t> BankFileBytes(const Bank& bank);
