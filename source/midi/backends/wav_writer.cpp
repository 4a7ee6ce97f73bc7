#include "midi/backends/wav_writer.h"

#include <algorithm>
#include <array>

namespace {

void putLE(uint8_t* at, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

std::array<uint8_t, 44> header(uint32_t sampleRate, uint16_t channels, uint32_t dataBytes) {
  std::array<uint8_t, 44> h{};
  const uint16_t blockAlign = static_cast<uint16_t>(channels * 2);
  std::copy_n("RIFF", 4, h.begin());
  putLE(&h[4], 36 + dataBytes, 4);
  std::copy_n("WAVEfmt ", 8, h.begin() + 8);
  putLE(&h[16], 16, 4);  // size of the format chunk
  putLE(&h[20], 1, 2);   // PCM
  putLE(&h[22], channels, 2);
  putLE(&h[24], sampleRate, 4);
  putLE(&h[28], sampleRate * blockAlign, 4);
  putLE(&h[32], blockAlign, 2);
  putLE(&h[34], 16, 2);  // bits per sample
  std::copy_n("data", 4, h.begin() + 36);
  putLE(&h[40], dataBytes, 4);
  return h;
}

}  // namespace

WavWriter::~WavWriter() { close(); }

bool WavWriter::open(const std::string& path, uint32_t sampleRate, uint16_t channels) {
  close();
  file_ = std::fopen(path.c_str(), "wb");
  if (file_ == nullptr) return false;
  dataBytes_ = 0;
  failed_ = false;
  const auto h = header(sampleRate, channels, 0);  // sizes are filled in at close
  failed_ = std::fwrite(h.data(), 1, h.size(), file_) != h.size();
  return !failed_;
}

bool WavWriter::write(std::span<const int16_t> samples) {
  if (file_ == nullptr || failed_) return false;
  std::array<uint8_t, 2048> bytes;
  for (std::size_t done = 0; done < samples.size();) {
    const std::size_t count = std::min(samples.size() - done, bytes.size() / 2);
    for (std::size_t i = 0; i < count; ++i) putLE(&bytes[2 * i], static_cast<uint16_t>(samples[done + i]), 2);
    if (std::fwrite(bytes.data(), 1, 2 * count, file_) != 2 * count) {
      failed_ = true;
      return false;
    }
    done += count;
  }
  dataBytes_ += static_cast<uint32_t>(samples.size() * 2);
  return true;
}

bool WavWriter::close() {
  if (file_ == nullptr) return !failed_;
  uint8_t sizes[4];
  putLE(sizes, 36 + dataBytes_, 4);
  failed_ |= std::fseek(file_, 4, SEEK_SET) != 0 || std::fwrite(sizes, 1, 4, file_) != 4;
  putLE(sizes, dataBytes_, 4);
  failed_ |= std::fseek(file_, 40, SEEK_SET) != 0 || std::fwrite(sizes, 1, 4, file_) != 4;
  failed_ |= std::fclose(file_) != 0;
  file_ = nullptr;
  return !failed_;
}
