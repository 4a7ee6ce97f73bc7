#include "generator/raw_files.h"

#include <cstdio>
#include <filesystem>
#include <vector>

#include "generator/byte_io.h"
#include "platform/file_io.h"
#include "platform/prompts.h"

using namespace platform;

namespace {

void say(const std::string& text, uint32_t icon = MB_OK) {
  ShowMessageBox(text, "Velmora", icon);
}

std::optional<std::string> choose(std::string& directory, bool open) {
  Prompts* p = prompts();
  if (p == nullptr) return std::nullopt;
  FileDialog dialog;
  dialog.title = open ? "Open curve" : "Save curve";
  dialog.filters = {{"Fuctions Files (*.bin)", "*.bin"}};
  if (open) dialog.filters.push_back({"All Files(*.*)", "*.*"});
  dialog.initialDirectory = directory;
  dialog.defaultExtension.assign(1, '*');
  dialog.mustExist = open;
  dialog.askToOverwrite = !open;
  auto path = open ? p->openFileName(dialog) : p->saveFileName(dialog);
  if (path) directory = std::filesystem::path(*path).parent_path().string();
  return path;
}

// Loads n values into a target through store(i, value) and clips them through
// clip(i), which tells whether it changed the element; the messages follow.
template <class Store, class Clip>
int loadRaw(const std::string& path, std::size_t n, Store&& store, Clip&& clip) {
  const auto bytes = ReadFileOrSay(path, {"Could not open file.", "Velmora", MB_OK});
  if (!bytes) return 0;
  const std::size_t size = bytes->size() / 2;
  const std::size_t got = std::min(size, n);
  ByteReader in(*bytes);
  uint16_t value = 0;  // an empty file fills with 0
  for (std::size_t i = 0; i < got; ++i) {
    in.get(value);
    store(i, value);
  }
  if (got < n) {
    for (std::size_t i = got; i < n; ++i) store(i, value);
    char text[256];
    std::snprintf(text, sizeof text,
                  "Data size: %lu.\nFunction length: %lu.\nAs file size do not match function length the last data "
                  "read was copied until the end of the function array.",
                  static_cast<unsigned long>(size), static_cast<unsigned long>(n));
    say(text);
  }
  if (size > n) {
    char text[256];
    std::snprintf(text, sizeof text,
                  "%lu shorts were not loaded from file due to the length of the function. You could change "
                  "function length to reload the entire file.",
                  static_cast<unsigned long>(size - n));
    say(text);
  }
  int clipped = 0;
  for (std::size_t i = 0; i < n; ++i) clipped += clip(i) ? 1 : 0;
  if (clipped != 0) say("Clipped values: " + std::to_string(clipped));
  return 1;
}

int saveRaw(const std::string& path, const ByteWriter& out) {
  if (WriteFileSafely(path, out.bytes())) return 1;
  say("Could not write the file.", MB_ICONSTOP);
  return 0;
}

}  // namespace

int LoadFunctionFile(const std::string& path, std::span<int8_t> curve) {
  return loadRaw(
      path, curve.size(), [&](std::size_t i, uint16_t value) { curve[i] = static_cast<int8_t>(value & 0xFF); },
      [&](std::size_t i) {
        if (curve[i] >= 0) return false;
        curve[i] = 0;  // 128..255 in the low byte becomes 0, not 127
        return true;
      });
}

int LoadDistributionFile(const std::string& path, std::span<Weight> table) {
  return loadRaw(
      path, table.size(), [&](std::size_t i, uint16_t value) { table[i] = static_cast<int16_t>(value); },
      [&](std::size_t i) {
        const int16_t w = table[i];
        if (w >= 0 && w <= 127) return false;
        table[i] = static_cast<int16_t>(w < 0 ? 0 : 127);
        return true;
      });
}

int ReadFunctionFile(MessageTarget*, std::span<int8_t> curve) {
  const auto path = choose(FunctionFilesDir, true);
  return path ? LoadFunctionFile(*path, curve) : 0;
}

int ReadDistributionFile(MessageTarget*, std::span<Weight> table) {
  const auto path = choose(DistributionFilesDir, true);
  return path ? LoadDistributionFile(*path, table) : 0;
}

int WriteFunctionFile(MessageTarget*, std::span<const int8_t> curve) {
  const auto path = choose(FunctionFilesDir, false);
  if (!path) return 0;
  ByteWriter out;
  for (const int8_t element : curve) {
    out.put<uint8_t>(static_cast<uint8_t>(element));
    out.put<uint8_t>(0);  // the second byte of an element means nothing: it is written as 0
  }
  return saveRaw(*path, out);
}

int SaveDistributionFile(const std::string& path, std::span<const int16_t> values) {
  ByteWriter out;
  for (const int16_t value : values) out.put<int16_t>(value);
  return saveRaw(path, out);
}

int WriteDistributionFile(MessageTarget*, std::span<const int16_t> values) {
  const auto path = choose(DistributionFilesDir, false);
  return path ? SaveDistributionFile(*path, values) : 0;
}
