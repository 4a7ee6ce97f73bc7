// Feeds any bytes, as a file, to the parameter file loader and to the bank
// file loader, each from the start-up set-up. A damaged or foreign file must
// never make either read outside a buffer, hang or crash; a stored bank that
// was read writes back out as the bytes it was read from, as far as they went.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fuzz_support.h"
#include "generator/functions.h"
#include "generator/generator_tick.h"
#include "generator/setup_files.h"
#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"
#include "platform/view_registry.h"
#include "song/song_store.h"

namespace {

constexpr std::size_t Slot = 7;

// A longer claimed length runs the same code as a shorter one, but each costs
// ten arrays of that many bytes and slows every run down; those inputs are
// skipped. Lengths that the loaders refuse outright are still tried.
constexpr uint32_t LongestTried = 1u << 16;

// The application as a headless run has it: the seams for tests, no window
// open, and the clock open but never started, so that no pass runs.
struct Bench {
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  fuzz::QuietPrompts prompts;
  fuzz::InputFile input;
  platform::InstalledSeams seams{{.loop = &loop, .timers = &timers, .prompts = &prompts}};

  Bench() {
    ClearViewRegistry();
    fuzz::Require(OpenSync(&TheClock, nullptr, SYNC_INTERNAL, 10) == 0, "the clock did not open");
  }

  // Everything the loaders change goes back to how the program starts.
  void startUp() {
    GeneratorStartUp();
    Playing = 0;
    Recording = 0;
    SongPosition = 0;
    SongResolution = 120;
    SetResolution(TheClock, 120);
    SetTempo(TheClock, 500000);
    VelmoraFilesDir.clear();
    for (auto& bank : BankSlots) bank.reset();
    loop.pump();
    prompts.reset();
  }
};

uint32_t claimedLength(const uint8_t* data, std::size_t size) {
  if (size < 8) return 0;
  return uint32_t{data[4]} | uint32_t{data[5]} << 8 | uint32_t{data[6]} << 16 | uint32_t{data[7]} << 24;
}

// How many of the file's bytes a bank written back must repeat: all it
// writes when the file held a whole bank; else all but a last field that the
// file cut short (at most three bytes), which is left unread.
std::size_t repeated(std::size_t fileSize, std::size_t writtenSize) {
  if (fileSize >= writtenSize) return writtenSize;
  return fileSize > 3 ? fileSize - 3 : 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static Bench& bench = *new Bench;  // lives as long as the process; libFuzzer never returns to main
  const uint32_t length = claimedLength(data, size);
  if (length > LongestTried && length <= static_cast<uint32_t>(MaxFunctionLength)) return 0;
  const std::string& path = bench.input.hold(data, size);

  bench.startUp();
  if (LoadParameterFile(nullptr, path) == 1) {
    fuzz::Require(bench.prompts.boxes == 0, "a parameter file that loaded showed a message");
    fuzz::Require(FunctionLength.load() >= 0, "the function length went negative");
    (void)ParameterFileBytes();
  } else {
    fuzz::Require(bench.prompts.boxes == 1, "a parameter file that did not load showed no message, or more than one");
  }

  bench.startUp();
  bench.prompts.offer(path);
  if (ReadBankFile(nullptr, Slot) == 1) {
    const Bank* bank = BankSlots[Slot].get();
    fuzz::Require(bank != nullptr, "a bank that was read left its slot empty");
    const std::vector<uint8_t> written = BankFileBytes(*bank);
    const std::size_t n = repeated(size, written.size());
    fuzz::Require(std::memcmp(written.data(), data, n) == 0, "a bank read from a file writes back other bytes");
  } else {
    fuzz::Require(bench.prompts.boxes == 1, "a bank file that did not load showed no message, or more than one");
    fuzz::Require(BankSlots[Slot] == nullptr, "a bank file that did not load filled the empty slot");
  }
  bench.startUp();
  return 0;
}
