// Helpers shared by the benchmark files.
//
// Every case reports bytes_per_second over its input plus output bytes, and a counter
// "x_memcpy": its speed divided by the speed of memcpy moving the same total traffic
// ((input + output) / 2 bytes copied), timed in the same process right after the case.
// Both sides are timed in the thread's CPU time, so a ratio taken on a busy machine is not
// skewed by the time the process spends waiting for a core.
#pragma once

#include <benchmark/benchmark.h>

#include "krocc.h"

#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace kro::bench {

// CPU time of the calling thread, in seconds.
inline double ThreadSeconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Sizes every family is timed at.
inline constexpr int kFullW = 1920, kFullH = 1080;
inline constexpr int kSmallW = 64, kSmallH = 64;

// A byte buffer filled with seeded random values (64-byte aligned start).
class Buffer {
 public:
  explicit Buffer(std::size_t bytes, uint32_t seed = 1) : mem_(bytes + 64) {
    std::mt19937 rng(seed);
    for (auto& b : mem_) b = static_cast<uint8_t>(rng());
    auto p = reinterpret_cast<std::uintptr_t>(mem_.data());
    data_ = mem_.data() + ((64 - (p & 63)) & 63);
  }
  uint8_t* data() { return data_; }
  template <class T>
  T* as() { return reinterpret_cast<T*>(data_); }

 private:
  std::vector<uint8_t> mem_;
  uint8_t* data_;
};

// Seconds per memcpy of `bytes` bytes, best of a few timed batches.
inline double MemcpySeconds(std::size_t bytes) {
  std::vector<uint8_t> a(bytes + 64, 1), b(bytes + 64, 0);
  double best = 1e30;
  const int reps = bytes > (1u << 20) ? 20 : 2000;
  for (int round = 0; round < 5; ++round) {
    const double t0 = ThreadSeconds();
    for (int i = 0; i < reps; ++i) {
      std::memcpy(b.data(), a.data(), bytes);
      benchmark::ClobberMemory();
    }
    best = std::min(best, (ThreadSeconds() - t0) / reps);
  }
  benchmark::DoNotOptimize(b.data());
  return best;
}

// Runs `body` in the benchmark loop and reports throughput and the memcpy ratio.
template <class Body>
void RunConversion(benchmark::State& state, std::size_t inBytes, std::size_t outBytes, Body body) {
  const double t0 = ThreadSeconds();
  int64_t n = 0;
  for (auto _ : state) {
    body();
    benchmark::ClobberMemory();
    ++n;
  }
  const double perCall = (ThreadSeconds() - t0) / static_cast<double>(n);
  const std::size_t traffic = inBytes + outBytes;
  state.SetBytesProcessed(n * static_cast<int64_t>(traffic));
  state.counters["x_memcpy"] = MemcpySeconds(traffic / 2) / perCall;
}

// Layouts of the matrix families' images.
enum Shape { kPacked3, kPacked4, kPlanes3, kPlanes4 };

inline int BytesPerPixel(Shape s) { return s == kPacked3 || s == kPlanes3 ? 3 : 4; }

// An image of w x h pixels in a layout: one buffer, planes one after another.
struct Img {
  Img(Shape s, int w, int h, uint32_t seed)
      : buf(static_cast<std::size_t>(w) * h * BytesPerPixel(s), seed) {
    const bool planar = s == kPlanes3 || s == kPlanes4;
    step = planar ? w : w * BytesPerPixel(s);
    for (int p = 0; p < 4; ++p) planes[p] = buf.data() + (planar ? std::size_t(p) * w * h : 0);
    cplanes[0] = planes[0], cplanes[1] = planes[1], cplanes[2] = planes[2];
  }
  Buffer buf;
  int step;
  uint8_t* planes[4];
  const uint8_t* cplanes[3];
};

// Registers a conversion at the full and the small size.
template <class Fn>
void Register(const char* name, Shape in, Shape out, Fn fn) {
  for (auto [w, h] : {std::pair{kFullW, kFullH}, std::pair{kSmallW, kSmallH}}) {
    benchmark::RegisterBenchmark(
        (std::string(name) + "/" + std::to_string(w) + "x" + std::to_string(h)).c_str(),
        [=](benchmark::State& state) {
          Img src(in, w, h, 1), dst(out, w, h, 2);
          const KroSize roi = {w, h};
          RunConversion(state, std::size_t(w) * h * BytesPerPixel(in),
                        std::size_t(w) * h * BytesPerPixel(out), [&] { fn(src, dst, roi); });
        })
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace kro::bench
