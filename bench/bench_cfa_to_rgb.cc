// Bayer to RGB, 8u and 16u, on the whole 1920x1080 image; OpenCV's bilinear and edge-aware
// Bayer conversions of the same image beside them when it is installed.
#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace kro::bench {
namespace {

// fn(src, srcStep, dst, dstStep) converts one whole image of T samples: random, or flat (every
// gradient test a tie).
template <class T, class Fn>
void RegisterBayer(const char* name, Fn fn, bool flat = false) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    const std::size_t pixels = std::size_t(kFullW) * kFullH;
    Buffer src(pixels * sizeof(T), 1), dst(pixels * 3 * sizeof(T), 2);
    if (flat) std::memset(src.data(), 0x40, pixels * sizeof(T));
    const int srcStep = kFullW * int(sizeof(T)), dstStep = 3 * srcStep;
    RunConversion(state, pixels * sizeof(T), pixels * 3 * sizeof(T),
                  [&] { fn(src.as<T>(), srcStep, dst.as<T>(), dstStep); });
  })->Unit(benchmark::kMicrosecond);
}

const bool kRegistered = [] {
  const KroRect all{0, 0, kFullW, kFullH};
  const KroSize size{kFullW, kFullH};
  RegisterBayer<Kro8u>("kroiCFAToRGB_8u_C1C3R/1920x1080", [=](auto s, int ss, auto d, int ds) {
    kroiCFAToRGB_8u_C1C3R(s, all, size, ss, d, ds, 0, 0);
  });
  RegisterBayer<Kro16u>("kroiCFAToRGB_16u_C1C3R/1920x1080", [=](auto s, int ss, auto d, int ds) {
    kroiCFAToRGB_16u_C1C3R(s, all, size, ss, d, ds, 0, 0);
  });
  RegisterBayer<Kro8u>(
      "kroiCFAToRGB_8u_C1C3R/flat/1920x1080",
      [=](auto s, int ss, auto d, int ds) { kroiCFAToRGB_8u_C1C3R(s, all, size, ss, d, ds, 0, 0); },
      true);
#ifdef KRO_HAVE_OPENCV
  struct Peer {
    const char* name;
    int code, depth;
  };
  for (const Peer& p :
       {Peer{"opencv_BayerBG2RGB_8u/1920x1080", cv::COLOR_BayerBG2RGB, CV_8U},
        Peer{"opencv_BayerBG2RGB_EA_8u/1920x1080", cv::COLOR_BayerBG2RGB_EA, CV_8U},
        Peer{"opencv_BayerBG2RGB_16u/1920x1080", cv::COLOR_BayerBG2RGB, CV_16U},
        Peer{"opencv_BayerBG2RGB_EA_16u/1920x1080", cv::COLOR_BayerBG2RGB_EA, CV_16U}}) {
    const auto run = [p](const void* s, int ss, void* d, int ds) {
      cv::Mat in(kFullH, kFullW, CV_MAKETYPE(p.depth, 1), const_cast<void*>(s), ss);
      cv::Mat out(kFullH, kFullW, CV_MAKETYPE(p.depth, 3), d, ds);
      cv::cvtColor(in, out, p.code);
    };
    if (p.depth == CV_8U) {
      RegisterBayer<Kro8u>(p.name, run);
      if (p.code == cv::COLOR_BayerBG2RGB) {
        RegisterBayer<Kro8u>("opencv_BayerBG2RGB_8u/flat/1920x1080", run, true);
      }
    } else {
      RegisterBayer<Kro16u>(p.name, run);
    }
  }
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
