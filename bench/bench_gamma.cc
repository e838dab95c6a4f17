// Gamma by table (8u, 16u): the C3R and AC4R forms, with OpenCV's cv::LUT on the same 8-bit
// image beside them when it is installed.
#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace kro::bench {
namespace {

template <class T, class Fn>
void RegisterGamma(const char* name, int channels, Fn fn) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    const std::size_t bytes = std::size_t(kFullW) * kFullH * channels * sizeof(T);
    Buffer src(bytes, 1), dst(bytes, 2);
    const int step = kFullW * channels * static_cast<int>(sizeof(T));
    RunConversion(state, bytes, bytes, [&] {
      fn(src.as<T>(), step, dst.as<T>(), step, KroSize{kFullW, kFullH});
    });
  })->Unit(benchmark::kMicrosecond);
}

const bool kRegistered = [] {
  RegisterGamma<Kro8u>("kroiGammaFwd_8u_C3R/1920x1080", 3, kroiGammaFwd_8u_C3R);
  RegisterGamma<Kro8u>("kroiGammaFwd_8u_AC4R/1920x1080", 4, kroiGammaFwd_8u_AC4R);
  RegisterGamma<Kro16u>("kroiGammaFwd_16u_C3R/1920x1080", 3, kroiGammaFwd_16u_C3R);
#ifdef KRO_HAVE_OPENCV
  for (int channels : {3, 4}) {
    RegisterGamma<Kro8u>(channels == 3 ? "opencv_LUT_8UC3/1920x1080" : "opencv_LUT_8UC4/1920x1080",
                         channels, [channels](const Kro8u* s, int ss, Kro8u* d, int ds, KroSize r) {
                           static cv::Mat lut(1, 256, CV_8U);
                           cv::Mat in(r.height, r.width, CV_8UC(channels), const_cast<Kro8u*>(s), ss);
                           cv::Mat out(r.height, r.width, CV_8UC(channels), d, ds);
                           cv::LUT(in, lut, out);
                         });
  }
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
