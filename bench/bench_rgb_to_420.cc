// RGB and BGR to 4:2:0: the 22 exports at 1920x1080 and 64x64, and libyuv's conversions beside
// the packed forms when it is installed, once as it runs by default and once with its AVX and
// wider paths masked off (the SSE2 + SSSE3 class this library is built for).
#include <algorithm>
#include <chrono>
#include <string>

#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_LIBYUV
#include <libyuv/convert.h>
#include <libyuv/cpu_id.h>
#endif

namespace kro::bench {
namespace {

// A packed source of `bpp` bytes a pixel (or three planes for bpp 0) and a 4:2:0 destination:
// Y plane, then two chroma planes (or one plane of pairs).
struct Images {
  Images(int w, int h, int bpp)
      : src(static_cast<std::size_t>(w) * h * (bpp ? bpp : 3), 1),
        dst(static_cast<std::size_t>(w) * h * 2, 2),
        srcStep(bpp ? w * bpp : w) {
    for (int p = 0; p < 3; ++p) srcPlanes[p] = src.data() + (bpp ? 0 : std::size_t(p) * w * h);
    const std::size_t chroma = static_cast<std::size_t>(w / 2) * (h / 2);
    planes[0] = dst.data();
    planes[1] = planes[0] + std::size_t(w) * h;
    planes[2] = planes[1] + chroma;
    steps[0] = w;
    steps[1] = steps[2] = w / 2;
  }
  Buffer src, dst;
  int srcStep;
  const uint8_t* srcPlanes[3];
  uint8_t* planes[3];
  int steps[3];
};

using Fn = void (*)(Images&, KroSize);

// A conversion at both sizes; `cpuMask` >= 0 masks libyuv's processor features for the case.
void Add(const std::string& name, int bpp, Fn fn, int cpuMask = -1) {
  for (auto [w, h] : {std::pair{kFullW, kFullH}, std::pair{kSmallW, kSmallH}}) {
    benchmark::RegisterBenchmark((name + "/" + std::to_string(w) + "x" + std::to_string(h)).c_str(),
                                 [=](benchmark::State& state) {
#ifdef KRO_HAVE_LIBYUV
                                   libyuv::MaskCpuFlags(cpuMask);
#endif
                                   Images img(w, h, bpp);
                                   const KroSize roi = {w, h};
                                   RunConversion(state, std::size_t(w) * h * (bpp ? bpp : 3),
                                                 std::size_t(w) * h * 3 / 2, [&] { fn(img, roi); });
#ifdef KRO_HAVE_LIBYUV
                                   libyuv::MaskCpuFlags(-1);
#endif
                                 })
        ->Unit(benchmark::kMicrosecond);
  }
}

#define KRO_P3(fn, bpp) \
  Add(#fn, bpp, [](Images& i, KroSize r) { fn(i.src.data(), i.srcStep, i.planes, i.steps, r); })
#define KRO_P2(fn, bpp)                                                                   \
  Add(#fn, bpp, [](Images& i, KroSize r) {                                                \
    fn(i.src.data(), i.srcStep, i.planes[0], i.steps[0], i.planes[1], 2 * i.steps[1], r); \
  })

#ifdef KRO_HAVE_LIBYUV
// This library's conversion and a peer's on the same image, alternating call by call, each
// timed alone; the counters are the fastest call of each and the ratio of the two (above 1:
// this library is faster). Taking the fastest call keeps the ratio steady on a busy machine.
void AddRatio(const std::string& name, int bpp, Fn ours, Fn peer, int cpuMask) {
  benchmark::RegisterBenchmark(
      (name + "/" + std::to_string(kFullW) + "x" + std::to_string(kFullH)).c_str(),
      [=](benchmark::State& state) {
        Images img(kFullW, kFullH, bpp);
        const KroSize roi = {kFullW, kFullH};
        double best[2] = {1e30, 1e30};
        for (auto _ : state) {
          for (int k = 0; k < 2; ++k) {
            libyuv::MaskCpuFlags(k ? cpuMask : -1);
            const auto t0 = std::chrono::steady_clock::now();
            (k ? peer : ours)(img, roi);
            benchmark::ClobberMemory();
            const auto t1 = std::chrono::steady_clock::now();
            best[k] = std::min(best[k], std::chrono::duration<double>(t1 - t0).count());
          }
        }
        libyuv::MaskCpuFlags(-1);
        state.counters["krocc_us"] = best[0] * 1e6;
        state.counters["peer_us"] = best[1] * 1e6;
        state.counters["speed_vs_peer"] = best[1] / best[0];
      })
      ->Unit(benchmark::kMicrosecond)
      ->Iterations(200);
}

// A libyuv conversion from one packed source to I420 planes.
template <auto kConvert>
void Peer(Images& i, KroSize r) {
  kConvert(i.src.data(), i.srcStep, i.planes[0], i.steps[0], i.planes[1], i.steps[1], i.planes[2],
           i.steps[2], r.width, r.height);
}
#endif

const bool kRegistered = [] {
  KRO_P3(kroiRGBToYCbCr420_8u_C3P3R, 3);
  KRO_P3(kroiBGRToYCbCr420_8u_C3P3R, 3);
  KRO_P3(kroiBGRToYCbCr420_8u_AC4P3R, 4);
  KRO_P3(kroiBGRToYCrCb420_8u_C3P3R, 3);
  KRO_P3(kroiBGRToYCrCb420_8u_AC4P3R, 4);
  KRO_P3(kroiRGBToYCrCb420_8u_AC4P3R, 4);
  KRO_P3(kroiBGRToYCbCr420_709CSC_8u_C3P3R, 3);
  KRO_P3(kroiBGRToYCbCr420_709CSC_8u_AC4P3R, 4);
  KRO_P3(kroiBGRToYCrCb420_709CSC_8u_C3P3R, 3);
  KRO_P3(kroiBGRToYCrCb420_709CSC_8u_AC4P3R, 4);
  KRO_P3(kroiBGRToYCbCr420_709HDTV_8u_AC4P3R, 4);
  KRO_P3(kroiRGBToYUV420_8u_C3P3R, 3);
  KRO_P3(kroiBGRToYUV420_8u_AC4P3R, 4);
  KRO_P2(kroiRGBToYCbCr420_8u_C3P2R, 3);
  KRO_P2(kroiRGBToYCbCr420_8u_C4P2R, 4);
  KRO_P2(kroiBGRToYCbCr420_8u_C3P2R, 3);
  KRO_P2(kroiBGRToYCbCr420_8u_AC4P2R, 4);
  KRO_P2(kroiBGRToYCbCr420_709CSC_8u_C3P2R, 3);
  KRO_P2(kroiBGRToYCbCr420_709CSC_8u_AC4P2R, 4);
  Add("kroiRGBToYUV420_8u_C3P3", 3,
      [](Images& i, KroSize r) { kroiRGBToYUV420_8u_C3P3(i.src.data(), i.planes, r); });
  Add("kroiRGBToYUV420_8u_P3R", 0, [](Images& i, KroSize r) {
    kroiRGBToYUV420_8u_P3R(i.srcPlanes, r.width, i.planes, i.steps, r);
  });
  Add("kroiRGBToYUV420_8u_P3", 0,
      [](Images& i, KroSize r) { kroiRGBToYUV420_8u_P3(i.srcPlanes, i.planes, r); });
#ifdef KRO_HAVE_LIBYUV
  // libyuv names packed formats by the order of a little-endian word: its RAW is R, G, B in
  // memory (this library's RGB), RGB24 is B, G, R (BGR), ARGB is B, G, R, A (BGR AC4).
  using namespace libyuv;
  const int noAvx = ~(kCpuHasAVX | kCpuHasAVX2 | kCpuHasFMA3 | kCpuHasF16C | kCpuHasGFNI |
                      kCpuHasAVX512BW | kCpuHasAVX512VL | kCpuHasAVX512VNNI | kCpuHasAVX512VBMI |
                      kCpuHasAVX512VBMI2 | kCpuHasAVX512VBITALG | kCpuHasAVX512VPOPCNTDQ);
  for (auto [suffix, mask] : {std::pair{"", -1}, std::pair{"_noAVX2", noAvx}}) {
    const std::string s = suffix;
    Add("libyuv_RAWToI420" + s, 3, Peer<RAWToI420>, mask);
    Add("libyuv_RGB24ToI420" + s, 3, Peer<RGB24ToI420>, mask);
    Add("libyuv_ARGBToI420" + s, 4, Peer<ARGBToI420>, mask);
  }
  for (auto [suffix, mask] : {std::pair{"", -1}, std::pair{"_noAVX2", noAvx}}) {
    const std::string s = suffix;
    AddRatio(
        "ratio_kroiRGBToYCbCr420_8u_C3P3R_vs_RAWToI420" + s, 3,
        [](Images& i, KroSize r) {
          kroiRGBToYCbCr420_8u_C3P3R(i.src.data(), i.srcStep, i.planes, i.steps, r);
        },
        Peer<RAWToI420>, mask);
    AddRatio(
        "ratio_kroiBGRToYCbCr420_8u_C3P3R_vs_RGB24ToI420" + s, 3,
        [](Images& i, KroSize r) {
          kroiBGRToYCbCr420_8u_C3P3R(i.src.data(), i.srcStep, i.planes, i.steps, r);
        },
        Peer<RGB24ToI420>, mask);
    AddRatio(
        "ratio_kroiBGRToYCbCr420_8u_AC4P3R_vs_ARGBToI420" + s, 4,
        [](Images& i, KroSize r) {
          kroiBGRToYCbCr420_8u_AC4P3R(i.src.data(), i.srcStep, i.planes, i.steps, r);
        },
        Peer<ARGBToI420>, mask);
  }
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
