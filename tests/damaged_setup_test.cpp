// A damaged or hand-edited set-up file makes the generator build messages
// with data bytes of 0x80 and above. The engine keeps them as built; the
// device never puts them on the wire. Here the loopback's cable is the wire,
// and the input at its end checks every message that arrives.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "generator/setup_files.h"
#include "midi/backends/wire_check.h"
#include "support/generator_fixture.h"

using namespace platform;

namespace {

namespace fs = std::filesystem;

class DamagedSetUp : public GeneratorBench {
 protected:
  void SetUp() override {
    GeneratorBench::SetUp();
    file = fs::temp_directory_path() / ("velmora-damaged-" + std::to_string(::getpid()) + ".vlm");
    ASSERT_EQ(devices.inOpen(0, &DamagedSetUp::arrived, reinterpret_cast<uintptr_t>(this), wireEnd), 0u);
    ASSERT_EQ(wireEnd->start(), 0u);
  }
  void TearDown() override {
    wireEnd->stop();
    wireEnd->close();
    fs::remove(file);
    GeneratorBench::TearDown();
  }

  static void arrived(MidiInPort*, uint32_t message, uintptr_t instance, uintptr_t param1, uintptr_t) {
    auto* self = reinterpret_cast<DamagedSetUp*>(instance);
    if (message != MIM_DATA) return;
    const auto word = static_cast<uint32_t>(param1);
    ++self->received;
    const auto status = static_cast<uint8_t>(word);
    for (int i = 1; i <= MidiDataBytes(status); ++i) {
      if ((word >> (8 * i) & 0xFF) >= 0x80) ++self->badBytes;
    }
  }

  void save(const std::vector<uint8_t>& bytes) const {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  // Loads the file into a fresh start-up set-up, and plays it for some passes.
  bool play(int passCount) {
    GeneratorStartUp();
    if (LoadParameterFile(nullptr, file.string()) == 0) return false;
    Seed = 1;  // the seed's own range is checked elsewhere
    GeneratorToggle();
    passes(passCount);
    if (Generating == 1) GeneratorToggle();
    passes(10);
    return true;
  }

  // Messages the engine built with a data byte of 0x80 or above.
  std::size_t builtOutOfRange() const {
    std::size_t count = 0;
    for (const auto& s : devices.sent()) count += s.bytes.empty() && !ShortMessageFitsWire(s.word) ? 1 : 0;
    return count;
  }

  fs::path file;
  std::unique_ptr<MidiInPort> wireEnd;
  std::size_t received = 0;
  std::size_t badBytes = 0;
};

TEST_F(DamagedSetUp, BoardCurvesOf200AndMinus1AndIntervalBoundsOf300ReachTheWireOnlyAsValidMessages) {
  for (std::size_t b = 0; b < LiveBank.boardCurves.size(); ++b) {
    for (std::size_t i = 0; i < LiveBank.boardCurves[b].size(); ++i) {
      LiveBank.boardCurves[b][i] = static_cast<int16_t>(i % 2 == 0 ? 200 : -1);
    }
  }
  LiveBank.boardFlags = 0x3FF;
  IntervalMode = 1;
  IntervalMin = -300;
  IntervalMax = 300;
  FunctionsFilters = 0;
  save(ParameterFileBytes());
  const uint64_t droppedBefore = DroppedMessages();

  ASSERT_TRUE(play(400));
  EXPECT_GT(builtOutOfRange(), 0u) << "the engine still builds the damaged set-up's messages";
  EXPECT_GT(received, 0u) << "the valid ones arrive";
  EXPECT_EQ(badBytes, 0u) << "no data byte of 0x80 or above arrives";
  EXPECT_EQ(DroppedMessages() - droppedBefore, builtOutOfRange()) << "every one dropped is counted";
}

TEST_F(DamagedSetUp, RandomBytesAfterTheHeaderNeverPutAnInvalidByteOnTheWire) {
  FunctionsFilters = 0x3FF;
  const std::vector<uint8_t> valid = ParameterFileBytes();
  std::mt19937 random(20261122);
  int played = 0;
  for (int round = 0; round < 12; ++round) {
    std::vector<uint8_t> bytes = valid;
    for (std::size_t i = 8; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(random());
    save(bytes);
    devices.clearSent();
    if (play(150)) ++played;
  }
  EXPECT_GT(played, 0) << "some damaged files load";
  EXPECT_EQ(badBytes, 0u);
}

}  // namespace
