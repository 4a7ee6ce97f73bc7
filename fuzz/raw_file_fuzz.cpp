// Feeds any bytes, as a file, to the raw curve loaders: into function curves
// of a few lengths, and into each size of Distribution table. Whatever the
// file, every element of the target must come out as the loader promises: the
// file's value, or its last value repeated past its end (0 for an empty file),
// then clipped into the target's range.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz_support.h"
#include "generator/bank.h"
#include "generator/functions.h"
#include "generator/raw_files.h"
#include "platform/installed_seams.h"

namespace {

struct Bench {
  fuzz::QuietPrompts prompts;
  fuzz::InputFile input;
  platform::InstalledSeams seams{{.prompts = &prompts}};
  // Targets owned here, so that nothing of the application's set-up changes.
  std::vector<int8_t> curve;
  Bank bank;
};

// The 16-bit value that element i of an n-element target is loaded from.
uint16_t loaded(const uint8_t* data, std::size_t size, std::size_t n, std::size_t i) {
  const std::size_t got = std::min(size / 2, n);
  if (got == 0) return 0;
  const std::size_t at = 2 * std::min(i, got - 1);
  return static_cast<uint16_t>(data[at] | data[at + 1] << 8);
}

void checkCurve(const uint8_t* data, std::size_t size, std::span<const int8_t> curve) {
  for (std::size_t i = 0; i < curve.size(); ++i) {
    const auto low = static_cast<int8_t>(loaded(data, size, curve.size(), i) & 0xFF);
    fuzz::Require(curve[i] == (low < 0 ? 0 : low), "a function curve element is not the file's, clipped");
  }
}

void checkTable(const uint8_t* data, std::size_t size, std::span<const Weight> table) {
  for (std::size_t i = 0; i < table.size(); ++i) {
    const auto w = static_cast<int16_t>(loaded(data, size, table.size(), i));
    const int16_t expected = w < 0 ? 0 : w > 127 ? 127 : w;
    fuzz::Require(table[i].load() == expected, "a weight is not the file's, clipped");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static Bench& bench = *new Bench;  // lives as long as the process; libFuzzer never returns to main
  const std::string& path = bench.input.hold(data, size);

  for (const std::size_t length : {std::size_t{1}, std::size_t{StartFunctionLength}, std::size_t{1000}}) {
    bench.prompts.reset();
    bench.curve.assign(length, -1);
    fuzz::Require(LoadFunctionFile(path, bench.curve) == 1, "a readable file did not load as a curve");
    checkCurve(data, size, bench.curve);
  }

  for (std::span<Weight> table :
       {std::span<Weight>(bench.bank.noteWeights), std::span<Weight>(bench.bank.lengthWeights),
        std::span<Weight>(bench.bank.densityWeights), std::span<Weight>(bench.bank.voiceWeights)}) {
    bench.prompts.reset();
    for (Weight& w : table) w = -1;
    fuzz::Require(LoadDistributionFile(path, table) == 1, "a readable file did not load as a table");
    checkTable(data, size, table);
  }
  bench.prompts.reset();
  return 0;
}
