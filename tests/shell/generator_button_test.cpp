// The generator button in the real frame plays what the headless renderer
// predicts for the same set-up: the same seed, the same start-up curves, the
// same clock.
#include <QDir>
#include <fstream>
#include <sstream>

#include "render/render.h"
#include "shell_bench.h"

namespace {

// The channel messages of a renderer's log ("pass tick status data..."), as
// short message words; MIDI clock, Start and Stop are left out.
std::vector<uint32_t> loggedNotes(const std::string& path) {
  std::ifstream file(path);
  std::vector<uint32_t> words;
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string pass, tick;
    fields >> pass >> tick;
    uint32_t word = 0;
    int shift = 0;
    for (std::string byte; fields >> byte && shift < 24; shift += 8) word |= static_cast<uint32_t>(std::stoul(byte, nullptr, 16)) << shift;
    if ((word & 0xFF) >= 0x80 && (word & 0xFF) < 0xF0) words.push_back(word);
  }
  return words;
}

class GeneratorButton : public ShellBench {};

TEST_F(GeneratorButton, TheLoopbackOutputReceivesTheChordsThatTheRendererLogs) {
  RenderOptions options;
  options.seconds = 3;
  options.log = QDir::temp().filePath(QStringLiteral("velmora-generator-button.log")).toStdString();
  std::string error;
  ASSERT_TRUE(Render(options, error)) << error;
  const std::vector<uint32_t> predicted = loggedNotes(options.log);
  std::remove(options.log.c_str());
  ASSERT_GT(predicted.size(), 20u);

  startWithoutThru();
  devices->clearSent();
  click(200);
  passes(250);  // two and a half seconds
  std::vector<uint32_t> played;
  for (const LoopbackDevices::Sent& sent : devices->sent()) {
    if ((sent.word & 0xFF) >= 0x80 && (sent.word & 0xFF) < 0xF0) played.push_back(sent.word);
  }
  ASSERT_GT(played.size(), 20u);
  ASSERT_LE(played.size(), predicted.size());
  EXPECT_TRUE(std::equal(played.begin(), played.end(), predicted.begin()))
      << "the first difference is at message "
      << std::mismatch(played.begin(), played.end(), predicted.begin()).first - played.begin();
  click(200);
}

}  // namespace
