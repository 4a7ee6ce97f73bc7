#pragma once
// A 16-bit PCM WAV file written as it goes; the sizes in its header are set
// when it is closed.

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

class WavWriter {
 public:
  WavWriter() = default;
  ~WavWriter();
  WavWriter(const WavWriter&) = delete;
  WavWriter& operator=(const WavWriter&) = delete;

  // False if the file cannot be created.
  bool open(const std::string& path, uint32_t sampleRate, uint16_t channels);
  // Interleaved samples; false once a write has failed (disk full, ...).
  bool write(std::span<const int16_t> samples);
  // Fills in the sizes and closes; false if anything failed.
  bool close();
  bool isOpen() const { return file_ != nullptr; }

 private:
  std::FILE* file_ = nullptr;
  uint32_t dataBytes_ = 0;
  bool failed_ = false;
};
