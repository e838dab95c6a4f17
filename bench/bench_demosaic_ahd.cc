// DemosaicAHD (8u, 16u) on a whole 1920x1080 Bayer plane, with OpenCV's VNG demosaicing of the
// same 8-bit plane beside it when OpenCV is installed.
#include <vector>

#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace kro::bench {
namespace {

template <class T, class Fn>
void RegisterAhd(const char* name, Fn fn) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    const int w = kFullW, h = kFullH, s = sizeof(T);
    Buffer src(std::size_t(w) * h * s, 1), dst(std::size_t(w) * h * 3 * s, 2);
    const int tmpStep = (w + 6) * s;
    std::vector<Kro8u> tmp(std::size_t(tmpStep) * 30);
    RunConversion(state, std::size_t(w) * h * s, std::size_t(w) * h * 3 * s, [&] {
      fn(src.as<T>(), KroRect{0, 0, w, h}, KroSize{w, h}, w * s, dst.as<T>(), w * 3 * s, 0,
         tmp.data(), tmpStep);
    });
  })->Unit(benchmark::kMillisecond);
}

const bool kRegistered = [] {
  RegisterAhd<Kro8u>("kroiDemosaicAHD_8u_C1C3R/1920x1080", kroiDemosaicAHD_8u_C1C3R);
  RegisterAhd<Kro16u>("kroiDemosaicAHD_16u_C1C3R/1920x1080", kroiDemosaicAHD_16u_C1C3R);
#ifdef KRO_HAVE_OPENCV
  // Grid 0 (B G / G R) is OpenCV's BayerBG layout.
  RegisterAhd<Kro8u>("opencv_BayerBG2RGB_VNG_8u/1920x1080",
                     [](const Kro8u* s, KroRect, KroSize sz, int ss, Kro8u* d, int ds, int,
                        Kro8u*, int) {
                       cv::Mat in(sz.height, sz.width, CV_8UC1, const_cast<Kro8u*>(s), ss);
                       cv::Mat out(sz.height, sz.width, CV_8UC3, d, ds);
                       cv::cvtColor(in, out, cv::COLOR_BayerBG2RGB_VNG);
                     });
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
