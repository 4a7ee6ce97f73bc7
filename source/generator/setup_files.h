#pragma once
// The parameter file ("*.vlm", magic "VLhd"): one whole generator set-up, byte
// for byte the same as a bank file of the Banks window. Dialogs and messages
// go through the prompts seam; all of this runs on the UI thread.

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "generator/bank.h"
#include "platform/message_loop.h"

inline constexpr std::size_t BankSlotCount = 256;
// The stored banks: a slot is empty exactly when its pointer is null.
extern std::array<std::unique_ptr<Bank>, BankSlotCount> BankSlots;

// A record with ten zeroed arrays of size samples (its functionLength); null
// when they cannot be had or size is past the longest arrays. No message.
std::unique_ptr<Bank> NewBank(uint32_t size);
// The live set-up into a record: its arrays (where it has them) take the live
// functions cut or stretched to the record's own length, its tempo the song's first tempo
// event and its resolution the clock's. Only reads: a running generator may
// move a bound meanwhile, and the record then holds a slightly mixed snapshot.
void CaptureSetup(Bank& bank);
// Makes a record the live set-up: with the clock's passes held off, the
// arrays go to the record's length and take its samples, every field follows,
// the windows and the derived values are refreshed, the generator starts
// again from its seed, and the song takes the tempo and, without rescaling
// its events, the resolution. 1 for done; 0 when the arrays cannot be had,
// after the resize's message, with the set-up as it was.
int InstallSetup(platform::MessageTarget* window, const Bank& setup);

int ReadParameterFile(platform::MessageTarget* window);
int WriteParameterFile(platform::MessageTarget* window);
int AllocateBank(platform::MessageTarget* window, std::size_t slot, uint32_t size);
int ReadBankFile(platform::MessageTarget* window, std::size_t slot);
int WriteBankFile(platform::MessageTarget* window, const Bank& bank);

// The same without the dialogs, for a path already chosen (the headless
// programs, and the commands above once the user has chosen).
int LoadParameterFile(platform::MessageTarget* window, const std::string& path);
int SaveParameterFile(const std::string& path);

// Whether a file's first bytes are a parameter file's "VLhd".
bool BeginsAsParameterFile(std::span<const uint8_t> head);

// The file's bytes for the live set-up, and for a stored bank.
std::vector<uint8_t> ParameterFileBytes();
std::vector<uint8_t> BankFileBytes(const Bank& bank);
