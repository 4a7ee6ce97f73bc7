// Feeds any bytes to velmora-render's command-line parser, cut at each NUL
// byte into arguments as the program's argv would be. It must never crash; a
// refusal must say why; and what it accepts must be a run that Render can
// take: each value in its range and no two options that cannot go together.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "random/trandom.h"
#include "render/render.h"

namespace {

// Every NUL ends an argument; bytes after the last NUL make one more.
std::vector<std::string> arguments(const uint8_t* data, std::size_t size) {
  std::vector<std::string> split;
  std::size_t start = 0;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] != 0) continue;
    split.emplace_back(reinterpret_cast<const char*>(data + start), i - start);
    start = i + 1;
  }
  if (start < size) split.emplace_back(reinterpret_cast<const char*>(data + start), size - start);
  return split;
}

void checkAccepted(const RenderOptions& o) {
  using fuzz::Require;
  Require(o.seconds >= 0 && o.seconds <= 24 * 3600, "--seconds out of its range");
  Require(!o.tempoBpm || (*o.tempoBpm >= 1 && *o.tempoBpm <= 1000), "--tempo out of its range");
  Require(!o.resolution || (*o.resolution >= 1 && *o.resolution <= 960), "--resolution out of its range");
  Require(o.periodMs >= 1 && o.periodMs <= 1000, "--period out of its range");
  Require(!o.seed || SeedInRange(*o.seed), "--seed out of the random source's range");
  Require(o.out <= 0xFFFF && (!o.record || *o.record <= 0xFFFF), "a device number out of its range");
  if (!o.song.empty()) {
    Require(o.params.empty() && !o.seed && !o.tempoBpm && !o.resolution && !o.nonPeriodic,
            "--song taken with a generator option");
    Require(o.midi.empty(), "--song taken with --midi");
  }
  Require(o.save.empty() || !o.song.empty(), "--save taken without --song");
  if (o.record) {
    Require(!o.midi.empty(), "--record taken without --midi");
    Require(o.song.empty() && o.wav.empty() && o.params.empty(), "--record taken with --song, --wav or --params");
    Require(o.realtime, "--record taken without real time");
  }
  Require(!o.midiSync || o.record, "--midi-sync taken without --record");
  Require(!o.realtime || o.wav.empty(), "--wav taken with --realtime");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::string error;
  const auto options = ParseRenderArguments(arguments(data, size), error);
  if (options) {
    checkAccepted(*options);
  } else {
    fuzz::Require(!error.empty(), "a command line was refused without a reason");
  }
  return 0;
}
