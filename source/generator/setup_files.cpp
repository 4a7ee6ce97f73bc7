#include "generator/setup_files.h"

#include <cstring>
#include <filesystem>
#include <new>
#include <optional>

#include "generator/bank_fields.h"
#include "generator/boards.h"
#include "generator/byte_io.h"
#include "generator/control_panel.h"
#include "generator/distributions.h"
#include "generator/functions.h"
#include "generator/functions_window.h"
#include "generator/generator_tick.h"
#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "platform/file_io.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "song/clock_placing.h"
#include "song/song_store.h"
#include "song/song_tempo.h"

using namespace platform;

std::array<std::unique_ptr<Bank>, BankSlotCount> BankSlots;

namespace {

constexpr char Magic[4] = {'V', 'L', 'h', 'd'};

void stop(const std::string& text, const std::string& title = "Velmora") {
  ShowMessageBox(text, title, MB_ICONSTOP);
}

// A stored bank's fields after the arrays, all of them its own.
template <class Io, class B>
void bankFields(Io& io, B& bank) {
  io.template field<uint32_t>(bank.functionsFilters);
  io.template field<uint32_t>(bank.overlap);
  io.template field<uint32_t>(bank.functionsRate);
  RecordBody(io, bank);
  io.template field<uint32_t>(bank.boardFlags);
  io.template field<uint32_t>(bank.tempo);
  io.template field<uint32_t>(bank.resolution);
  io.template field<uint32_t>(bank.seed);
  io.template field<uint32_t>(bank.intervalMode);
  io.template field<int16_t>(bank.fromNote);
  io.template field<int16_t>(bank.intervalMin);
  io.template field<int16_t>(bank.intervalMax);
  io.template field<int16_t>(bank.mirror);
}

void writeArrays(ByteWriter& out, uint32_t length, const std::array<const int8_t*, FunctionCount>& arrays) {
  out.putBytes(std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(Magic), 4));
  out.put<uint32_t>(length);
  for (const int8_t* array : arrays) {
    if (array != nullptr) {
      out.putBytes(std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(array), length));
    } else {
      for (uint32_t i = 0; i < length; ++i) out.put<uint8_t>(0);
    }
  }
}

// The arrays, of the record's length, and every field after them, as far as
// the file goes: what it does not reach keeps what the record held.
void readRecord(ByteReader& in, Bank& bank) {
  for (auto& array : bank.functions) {
    if (bank.functionLength > 0 && array) in.getBytes(reinterpret_cast<uint8_t*>(array.get()), bank.functionLength);
  }
  bankFields(in, bank);
}

// The weight tables through the board curves, from one record into another.
void copyRecordBody(const Bank& from, Bank& to) {
  ByteWriter out;
  RecordBody(out, from);
  ByteReader in(out.bytes());
  RecordBody(in, to);
}

// Checks the magic; a file of another kind shows what it starts with instead.
bool magicFits(ByteReader& in) {
  char magic[5] = {};
  in.getBytes(reinterpret_cast<uint8_t*>(magic), 4);
  if (std::memcmp(magic, Magic, 4) == 0) return true;
  stop(magic, "Error");
  return false;
}

FileDialog velmoraFiles(const char* title, bool open) {
  FileDialog dialog;
  dialog.title = title;
  dialog.filters = {{"Velmora Files(*.vlm)", "*.vlm"}};
  if (open) dialog.filters.push_back({"All files (*.*)", "*.*"});
  dialog.initialDirectory = VelmoraFilesDir;
  dialog.defaultExtension.assign(1, '*');  // "*", said so to spare GCC 12 a false -Wrestrict
  dialog.mustExist = open;
  dialog.askToOverwrite = !open;
  return dialog;
}

std::optional<std::string> choose(const char* title, bool open) {
  Prompts* p = prompts();
  if (p == nullptr) return std::nullopt;
  auto path = open ? p->openFileName(velmoraFiles(title, open)) : p->saveFileName(velmoraFiles(title, open));
  if (path) VelmoraFilesDir = std::filesystem::path(*path).parent_path().string();
  return path;
}

// The file's contents, or a message and nothing when it cannot be read.
std::optional<std::vector<uint8_t>> readOrSay(const std::string& path) {
  return ReadFileOrSay(path, {"Could not open file.", "Velmora", MB_ICONSTOP});
}

int saveOrSay(const std::string& path, const std::vector<uint8_t>& bytes) {
  if (WriteFileSafely(path, bytes)) return 1;
  std::string text = "Could not write the file ";
  text += path;
  text += ". The old file, if there was one, is as it was.";
  stop(text);
  return 0;
}

}  // namespace

bool BeginsAsParameterFile(std::span<const uint8_t> head) {
  return head.size() >= 4 && std::memcmp(head.data(), Magic, 4) == 0;
}

std::vector<uint8_t> ParameterFileBytes() {
  // The fields alone are captured; the arrays are written from the live ones,
  // so a save needs no copy of them.
  const auto setup = std::make_unique<Bank>();
  CaptureSetup(*setup);
  std::array<const int8_t*, FunctionCount> arrays{};
  for (int f = 0; f < FunctionCount; ++f) arrays[f] = FunctionArrays[f].get();
  ByteWriter out;
  writeArrays(out, static_cast<uint32_t>(FunctionLength.load()), arrays);
  bankFields(out, *setup);
  return out.bytes();
}

std::vector<uint8_t> BankFileBytes(const Bank& bank) {
  ByteWriter out;
  std::array<const int8_t*, FunctionCount> arrays{};
  for (int f = 0; f < FunctionCount; ++f) arrays[f] = bank.functions[f].get();
  writeArrays(out, bank.functionLength, arrays);
  bankFields(out, bank);
  return out.bytes();
}

std::unique_ptr<Bank> NewBank(uint32_t size) {
  if (size > static_cast<uint32_t>(MaxFunctionLength)) return nullptr;
  auto bank = std::unique_ptr<Bank>(new (std::nothrow) Bank{});
  if (!bank) return nullptr;
  for (auto& array : bank->functions) {
    array.reset(new (std::nothrow) int8_t[size]());
    if (!array) return nullptr;
  }
  bank->functionLength = size;
  return bank;
}

void CaptureSetup(Bank& bank) {
  for (int f = 0; f < FunctionCount; ++f) {
    if (!bank.functions[f]) continue;
    FitCurve(FunctionArrays[f].get(), FunctionLength, bank.functions[f].get(),
             static_cast<int32_t>(bank.functionLength));
  }
  copyRecordBody(LiveBank, bank);
  bank.boardFlags = LiveBank.boardFlags.load();
  bank.functionsFilters = FunctionsFilters;
  bank.overlap = Overlap;
  bank.functionsRate = FunctionsRate;
  bank.seed = static_cast<uint32_t>(Seed.load());
  bank.intervalMode = IntervalMode;
  bank.fromNote = FromNote;
  bank.intervalMin = IntervalMin;
  bank.intervalMax = IntervalMax;
  bank.mirror = Mirror;
  bank.tempo = SongTempo();
  bank.resolution = GetResolution(TheClock);
}

int InstallSetup(MessageTarget* window, const Bank& setup) {
  // No pass runs from here to the end: the arrays are replaced and every
  // field changes while the tick is kept out.
  HoldClockPasses(TheClock);
  // Whatever still reads the functions reads the incoming ones, not those about to go.
  for (int f = 0; f < FunctionCount; ++f) WorkingFunctions[f].store(setup.functions[f].get());
  // A length past the longest arrays is refused by the resize, as a negative one is.
  const int32_t length =
      setup.functionLength <= static_cast<uint32_t>(MaxFunctionLength) ? static_cast<int32_t>(setup.functionLength) : -1;
  if (ResizeFunctions(window, length) == 0) {
    UseFunctionArrays();
    ReleaseClockPasses(TheClock);
    return 0;
  }
  for (int f = 0; f < FunctionCount; ++f) {
    if (length > 0 && FunctionArrays[f] && setup.functions[f]) {
      std::memcpy(FunctionArrays[f].get(), setup.functions[f].get(), static_cast<std::size_t>(length));
    }
  }
  FunctionLength = length;
  FunctionsFilters = setup.functionsFilters;
  Overlap = setup.overlap;
  FunctionsRate = setup.functionsRate;
  Seed = static_cast<int32_t>(setup.seed);
  IntervalMode = setup.intervalMode;
  FromNote = setup.fromNote;
  IntervalMin = setup.intervalMin;
  IntervalMax = setup.intervalMax;
  Mirror = setup.mirror;
  copyRecordBody(setup, LiveBank);
  PendingBoardFlags = setup.boardFlags.load();

  RefreshControlPanel(window);
  RefreshDistributions(window);
  RefreshBoards(window);
  RefreshFunctionsWindow(window);
  GeneratorReset();
  RecallSongTempo(setup.tempo);
  // The song's events keep their times: only the clock counts at the new resolution.
  SongResolution = setup.resolution;
  SetResolution(TheClock, static_cast<int32_t>(std::min<uint32_t>(setup.resolution, 0x7FFFFFFF)));
  ReleaseClockPasses(TheClock);
  return 1;
}

int LoadParameterFile(MessageTarget* window, const std::string& path) {
  const auto bytes = readOrSay(path);
  if (!bytes) return 0;
  ByteReader in(*bytes);
  if (!magicFits(in)) return 0;
  // A file that ends before its length keeps the length in force.
  uint32_t length = static_cast<uint32_t>(FunctionLength.load());
  in.get(length);
  // The file is read over a copy of the live set-up, so that one ending early
  // keeps the fields it does not reach.
  const std::unique_ptr<Bank> setup = NewBank(length);
  if (!setup) {
    stop("Not enough memory. Try with another length.");
    return 0;
  }
  CaptureSetup(*setup);
  readRecord(in, *setup);
  return InstallSetup(window, *setup);
}

int SaveParameterFile(const std::string& path) { return saveOrSay(path, ParameterFileBytes()); }

int ReadParameterFile(MessageTarget* window) {
  const auto path = choose("Open Velmora", true);
  return path ? LoadParameterFile(window, *path) : 0;
}

int WriteParameterFile(MessageTarget*) {
  const auto path = choose("Save Velmora as", false);
  return path ? SaveParameterFile(*path) : 0;
}

int AllocateBank(MessageTarget*, std::size_t slot, uint32_t size) {
  if (slot >= BankSlotCount) return 0;
  BankSlots[slot].reset();  // a bank that stood here is gone whatever happens next
  BankSlots[slot] = NewBank(size);
  if (!BankSlots[slot]) {
    stop("Not enough memory to create a new bank!  Close one or more applications and try again");
    return 0;
  }
  return 1;
}

int ReadBankFile(MessageTarget* window, std::size_t slot) {
  const auto path = choose("Load bank", true);
  if (!path) return 0;
  const auto bytes = readOrSay(*path);
  if (!bytes) return 0;
  ByteReader in(*bytes);
  if (!magicFits(in)) return 0;
  uint32_t length = 0;
  in.get(length);
  if (AllocateBank(window, slot, length) == 0) return 0;
  readRecord(in, *BankSlots[slot]);
  return 1;
}

int WriteBankFile(MessageTarget*, const Bank& bank) {
  const auto path = choose("Save bank", false);
  return path ? saveOrSay(*path, BankFileBytes(bank)) : 0;
}
