#pragma once
// A word that two threads share: a std::atomic of the field's own width, read
// and written with relaxed order, that otherwise reads like a plain field.
//
// Each such word has one writing thread; compound assignments are therefore
// a load and a store, not an atomic read-modify-write. Where an index
// publishes data (ring indices), use std::atomic with release/acquire instead.

#include <atomic>

template <class T>
class SharedWord {
 public:
  static_assert(std::atomic<T>::is_always_lock_free, "a shared word must be lock-free");

  constexpr SharedWord(T value = T{}) noexcept : word_(value) {}
  SharedWord(const SharedWord& other) noexcept : word_(other.load()) {}
  SharedWord& operator=(const SharedWord& other) noexcept { return *this = other.load(); }

  T load() const noexcept { return word_.load(std::memory_order_relaxed); }
  void store(T value) noexcept { word_.store(value, std::memory_order_relaxed); }
  // For a word whose new value makes other writes visible: the writer
  // publishes, the reader that acts on it acquires.
  void publish(T value) noexcept { word_.store(value, std::memory_order_release); }
  T acquire() const noexcept { return word_.load(std::memory_order_acquire); }

  operator T() const noexcept { return load(); }
  SharedWord& operator=(T value) noexcept {
    store(value);
    return *this;
  }
  SharedWord& operator+=(T value) noexcept { return *this = static_cast<T>(load() + value); }
  SharedWord& operator-=(T value) noexcept { return *this = static_cast<T>(load() - value); }
  SharedWord& operator|=(T value) noexcept { return *this = static_cast<T>(load() | value); }
  SharedWord& operator&=(T value) noexcept { return *this = static_cast<T>(load() & value); }

 private:
  std::atomic<T> word_;
};
