// Shared test helpers: planes with canary margins, buffers that end or start at an inaccessible
// page, seeded random data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "krocc.h"

namespace kro::test {

constexpr uint8_t kCanary = 0xA5;

// A plane of `height` rows with `rowBytes` bytes of region each, `step` bytes apart (step may
// exceed rowBytes to leave padding), placed `offset` bytes past a 64-byte boundary, with canary
// margins before the first row and after the last. Everything outside the region holds kCanary
// until a function writes there.
class Plane {
 public:
  Plane(int rowBytes, int height, int step = 0, int offset = 0);
  uint8_t* data() { return origin_; }
  const uint8_t* data() const { return origin_; }
  int step() const { return step_; }
  int rowBytes() const { return rowBytes_; }
  int height() const { return height_; }
  uint8_t* row(int y) { return origin_ + static_cast<std::ptrdiff_t>(y) * step_; }
  const uint8_t* row(int y) const { return origin_ + static_cast<std::ptrdiff_t>(y) * step_; }
  void FillRandom(std::mt19937& rng);
  void Fill(uint8_t value);
  // The region's bytes, row after row, without padding.
  std::vector<uint8_t> Region() const;
  // True if every byte outside the region still holds kCanary.
  bool CanariesIntact() const;
  // True if no byte of the whole buffer (region included) changed since the last snapshot.
  void Snapshot() { snapshot_ = mem_; }
  bool Unchanged() const { return snapshot_ == mem_; }

 private:
  int rowBytes_, height_, step_;
  std::vector<uint8_t> mem_, snapshot_;
  uint8_t* origin_;
  std::size_t lead_;
};

// `bytes` accessible bytes that end exactly at an inaccessible page (or, with guardStart, begin
// exactly after one). Any read or write past the end (or before the start) faults.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t bytes, bool guardStart = false);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;
  uint8_t* data() { return data_; }
  std::size_t size() const { return bytes_; }

 private:
  void* map_ = nullptr;
  std::size_t mapBytes_ = 0;
  uint8_t* data_ = nullptr;
  std::size_t bytes_ = 0;
};

// The widths every kernel test walks: 1..130 covers every block and tail boundary.
std::vector<int> AllWidths();

}  // namespace kro::test
