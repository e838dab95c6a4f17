// 4:2:0 to RGB and BGR: the twenty exports, and libyuv's conversions beside the planar and
// two-plane packed forms when it is installed, once with all its paths and once with its AVX
// paths masked off (the "sse" rows: the same instruction-set class as this library).
#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace kro::bench {
namespace {

// A 4:2:0 source (Y plane, then U and V planes; the two-plane forms read the chroma as pairs
// from the U plane on) and a destination of w x h pixels of `outBytes` bytes, or three planes.
struct Frame420 {
  Frame420(int w, int h, int outBytes)
      : src(std::size_t(w) * h * 2, 1), dst(std::size_t(w) * h * outBytes, 2) {
    y = src.data();
    u = y + std::size_t(w) * h;
    v = u + std::size_t(w / 2) * (h / 2);
    planes[0] = y, planes[1] = u, planes[2] = v;
    steps[0] = w, steps[1] = steps[2] = w / 2;
    for (int p = 0; p < 3; ++p) dstPlanes[p] = dst.data() + std::size_t(p) * w * h;
  }
  Buffer src, dst;
  const uint8_t *y, *u, *v;
  const uint8_t* planes[3];
  int steps[3];
  uint8_t* dstPlanes[3];
};

using Fn420 = void (*)(Frame420&, int w, int h);

// Registers a conversion at the full and the small size; `mask` (libyuv only) limits the peer's
// instruction sets for the run and restores them after it.
void Register420(const char* name, int outBytes, Fn420 fn, int mask = 0) {
  for (auto [w, h] : {std::pair{kFullW, kFullH}, std::pair{kSmallW, kSmallH}}) {
    benchmark::RegisterBenchmark(
        (std::string(name) + "/" + std::to_string(w) + "x" + std::to_string(h)).c_str(),
        [=](benchmark::State& state) {
          Frame420 f(w, h, outBytes);
#ifdef KRO_HAVE_LIBYUV
          if (mask) libyuv::MaskCpuFlags(mask);
#endif
          RunConversion(state, std::size_t(w) * h * 3 / 2, std::size_t(w) * h * outBytes,
                        [&] { fn(f, w, h); });
#ifdef KRO_HAVE_LIBYUV
          if (mask) libyuv::MaskCpuFlags(-1);
#endif
        })
        ->Unit(benchmark::kMicrosecond);
  }
  (void)mask;
}

#define KRO_P3(fn, bytes, ...)                                                \
  Register420(#fn, bytes, [](Frame420& f, int w, int h) {                     \
    fn(f.planes, f.steps, f.dst.data(), w* bytes, KroSize{w, h} __VA_ARGS__); \
  })
#define KRO_P2(fn, bytes, ...)                                             \
  Register420(#fn, bytes, [](Frame420& f, int w, int h) {                  \
    fn(f.y, w, f.u, w, f.dst.data(), w* bytes, KroSize{w, h} __VA_ARGS__); \
  })

#define ALPHA , 255

const bool kRegistered = [] {
  KRO_P3(kroiYCbCr420ToRGB_8u_P3C3R, 3);
  KRO_P3(kroiYCbCr420ToBGR_8u_P3C3R, 3);
  KRO_P3(kroiYCbCr420ToBGR_8u_P3C4R, 4, ALPHA);
  KRO_P3(kroiYCrCb420ToRGB_8u_P3C4R, 4, ALPHA);
  KRO_P3(kroiYCbCr420ToBGR_709CSC_8u_P3C3R, 3);
  KRO_P3(kroiYCbCr420ToBGR_709HDTV_8u_P3C4R, 4, ALPHA);
  KRO_P3(kroiYUV420ToRGB_8u_P3AC4R, 4);
  KRO_P3(kroiYUV420ToBGR_8u_P3C3R, 3);
  KRO_P3(kroiYUV420ToRGB_8u_P3C3R, 3);
  KRO_P2(kroiYCbCr420ToRGB_8u_P2C3R, 3);
  KRO_P2(kroiYCbCr420ToBGR_8u_P2C3R, 3);
  KRO_P2(kroiYCbCr420ToRGB_8u_P2C4R, 4, ALPHA);
  KRO_P2(kroiYCbCr420ToBGR_8u_P2C4R, 4, ALPHA);
  KRO_P2(kroiYCrCb420ToRGB_8u_P2C3R, 3);
  KRO_P2(kroiYCrCb420ToBGR_8u_P2C3R, 3);
  KRO_P2(kroiYCrCb420ToRGB_8u_P2C4R, 4, ALPHA);
  KRO_P2(kroiYCrCb420ToBGR_8u_P2C4R, 4, ALPHA);
  Register420("kroiYUV420ToRGB_8u_P3C3", 3, [](Frame420& f, int w, int h) {
    kroiYUV420ToRGB_8u_P3C3(f.planes, f.dst.data(), KroSize{w, h});
  });
  Register420("kroiYUV420ToRGB_8u_P3R", 3, [](Frame420& f, int w, int h) {
    kroiYUV420ToRGB_8u_P3R(f.planes, f.steps, f.dstPlanes, w, KroSize{w, h});
  });
  Register420("kroiYUV420ToRGB_8u_P3", 3, [](Frame420& f, int w, int h) {
    kroiYUV420ToRGB_8u_P3(f.planes, f.dstPlanes, KroSize{w, h});
  });
#ifdef KRO_HAVE_LIBYUV
  // libyuv's RGB24 is B, G, R in memory (our BGR) and its RAW is R, G, B (our RGB); its ARGB is
  // B, G, R, A in memory.
  using namespace libyuv;
  const int sse = kCpuInitialized | kCpuHasX86 | kCpuHasSSE2 | kCpuHasSSSE3 | kCpuHasSSE41 |
                  kCpuHasSSE42 | kCpuHasERMS;
  for (int mask : {sse, 0}) {
    const std::string tag = mask ? "libyuv_sse_" : "libyuv_";
    Register420((tag + "I420ToRAW").c_str(), 3,
                [](Frame420& f, int w, int h) {
                  I420ToRAW(f.y, w, f.u, w / 2, f.v, w / 2, f.dst.data(), w * 3, w, h);
                },
                mask);
    Register420((tag + "I420ToRGB24").c_str(), 3,
                [](Frame420& f, int w, int h) {
                  I420ToRGB24(f.y, w, f.u, w / 2, f.v, w / 2, f.dst.data(), w * 3, w, h);
                },
                mask);
    Register420(
        (tag + "NV12ToRGB24").c_str(), 3,
        [](Frame420& f, int w, int h) { NV12ToRGB24(f.y, w, f.u, w, f.dst.data(), w * 3, w, h); },
        mask);
    Register420((tag + "I420ToARGB").c_str(), 4,
                [](Frame420& f, int w, int h) {
                  I420ToARGB(f.y, w, f.u, w / 2, f.v, w / 2, f.dst.data(), w * 4, w, h);
                },
                mask);
  }
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
