#pragma once
// Little-endian fields in and out of a byte buffer, for the set-up files. The
// reader never reads past its end: a field that is not all there is not read,
// and what it would have filled keeps its value.

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "platform/shared_word.h"

class ByteWriter {
 public:
  template <class T>
  void put(T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i)
      bytes_.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
  }
  void putBytes(std::span<const uint8_t> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  // A field of on-disk type T from a plain or shared place.
  template <class T, class Place>
  void field(const Place& place) {
    put(static_cast<T>(load(place)));
  }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  template <class W>
  static W load(const SharedWord<W>& word) {
    return word.load();
  }
  template <class W>
  static W load(const W& value) {
    return value;
  }
  std::vector<uint8_t> bytes_;
};

class ByteReader {
 public:
  explicit ByteReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}
  template <class T>
  bool get(T& value) {
    if (left() < sizeof(T)) return false;
    uint64_t raw = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) raw |= uint64_t{bytes_[at_ + i]} << (8 * i);
    value = static_cast<T>(raw);
    at_ += sizeof(T);
    return true;
  }
  // Reads up to count bytes; returns how many there were.
  std::size_t getBytes(uint8_t* to, std::size_t count) {
    const std::size_t got = std::min(count, left());
    if (got > 0) std::memcpy(to, bytes_.data() + at_, got);
    at_ += got;
    return got;
  }
  template <class T, class Place>
  void field(Place& place) {
    T value{};
    if (get(value)) store(place, value);
  }
  std::size_t left() const { return bytes_.size() - at_; }

 private:
  template <class W, class T>
  static void store(SharedWord<W>& word, T value) {
    word = static_cast<W>(value);
  }
  template <class W, class T>
  static void store(W& place, T value) {
    place = static_cast<W>(value);
  }
  std::span<const uint8_t> bytes_;
  std::size_t at_ = 0;
};
