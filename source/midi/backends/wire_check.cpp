#include "midi/backends/wire_check.h"

#include <atomic>

namespace {

std::atomic<uint64_t> dropped{0};

}  // namespace

bool SysexFitsWire(std::span<const uint8_t> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const uint8_t byte = bytes[i];
    if (byte < 0x80) continue;
    const bool opens = i == 0 && byte == 0xF0;
    const bool closes = i + 1 == bytes.size() && byte == 0xF7;
    if (!opens && !closes) return false;
  }
  return true;
}

void CountDroppedMessage() { dropped.fetch_add(1, std::memory_order_relaxed); }

uint64_t DroppedMessages() { return dropped.load(std::memory_order_relaxed); }
