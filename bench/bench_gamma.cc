// Gamma by table (8u, 16u): the C3R and AC4R forms, with OpenCV's cv::LUT on the same 8-bit
// image beside them when it is installed. Gamma by formula (32f): C3R and AC4R in both
// directions, beside a plain loop that calls the C runtime's powf for every sample.
#include <cmath>

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

// A 32f image of samples in 0..1 (what the forms see on a range of 0..1).
void FillUnit(float* p, std::size_t n) {
  std::mt19937 rng(3);
  for (std::size_t i = 0; i < n; ++i) p[i] = static_cast<float>(rng() >> 8) * 0x1p-24f;
}

template <class Fn>
void RegisterGamma32f(const char* name, int channels, Fn fn) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    const std::size_t samples = std::size_t(kFullW) * kFullH * channels, bytes = 4 * samples;
    Buffer src(bytes, 1), dst(bytes, 2);
    FillUnit(src.as<float>(), samples);
    const int step = kFullW * channels * 4;
    RunConversion(state, bytes, bytes, [&] {
      fn(src.as<Kro32f>(), step, dst.as<Kro32f>(), step, KroSize{kFullW, kFullH}, 0.0f, 1.0f);
    });
  })->Unit(benchmark::kMicrosecond);
}

// The same curves written plainly, one powf call per sample on the curve branch.
template <bool kInverse, int kChannels>
kroStatus PowfLoop(const Kro32f* src, int srcStep, Kro32f* dst, int dstStep, KroSize roi,
                   Kro32f vMin, Kro32f vMax) {
  const float range = vMax - vMin;
  for (int y = 0; y < roi.height; ++y) {
    const float* s = src + std::ptrdiff_t(y) * (srcStep / 4);
    float* d = dst + std::ptrdiff_t(y) * (dstStep / 4);
    for (int x = 0; x < roi.width; ++x) {
      for (int c = 0; c < 3; ++c) {
        const float v = s[kChannels * x + c] - vMin, n = v / range;
        float r;
        if (kInverse) {
          r = n < 0.0812f ? v / 4.5f : std::pow((n + 0.099f) / 1.099f, 1.0f / 0.45f) * range;
        } else {
          r = n < 0.018f ? 4.5f * v : (1.099f * std::pow(n, 0.45f) - 0.099f) * range;
        }
        d[kChannels * x + c] = r + vMin;
      }
    }
  }
  return kroStatusOk;
}

const bool kRegistered = [] {
  RegisterGamma32f("kroiGammaFwd_32f_C3R/1920x1080", 3, kroiGammaFwd_32f_C3R);
  RegisterGamma32f("powf_loop_Fwd_C3/1920x1080", 3, PowfLoop<false, 3>);
  RegisterGamma32f("kroiGammaFwd_32f_AC4R/1920x1080", 4, kroiGammaFwd_32f_AC4R);
  RegisterGamma32f("powf_loop_Fwd_AC4/1920x1080", 4, PowfLoop<false, 4>);
  RegisterGamma32f("kroiGammaInv_32f_C3R/1920x1080", 3, kroiGammaInv_32f_C3R);
  RegisterGamma32f("powf_loop_Inv_C3/1920x1080", 3, PowfLoop<true, 3>);
  RegisterGamma32f("kroiGammaInv_32f_AC4R/1920x1080", 4, kroiGammaInv_32f_AC4R);
  RegisterGamma32f("powf_loop_Inv_AC4/1920x1080", 4, PowfLoop<true, 4>);
  RegisterGamma32f("kroiGammaFwd_32f_P3R-as-C3/1920x1080", 3,
                   [](const Kro32f* s, int ss, Kro32f* d, int ds, KroSize r, Kro32f lo, Kro32f hi) {
                     // The three planes of one image laid out as one plane three times as wide.
                     const Kro32f* sp[3] = {s, s + r.width, s + 2 * r.width};
                     Kro32f* dp[3] = {d, d + r.width, d + 2 * r.width};
                     return kroiGammaFwd_32f_P3R(sp, ss, dp, ds, r, lo, hi);
                   });
  RegisterGamma<Kro8u>("kroiGammaFwd_8u_C3R/1920x1080", 3, kroiGammaFwd_8u_C3R);
  RegisterGamma<Kro8u>("kroiGammaFwd_8u_AC4R/1920x1080", 4, kroiGammaFwd_8u_AC4R);
  RegisterGamma<Kro8u>("kroiGammaInv_8u_C3R/1920x1080", 3, kroiGammaInv_8u_C3R);
  RegisterGamma<Kro16u>("kroiGammaFwd_16u_C3R/1920x1080", 3, kroiGammaFwd_16u_C3R);
  RegisterGamma<Kro16u>("kroiGammaFwd_16u_AC4R/1920x1080", 4, kroiGammaFwd_16u_AC4R);
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
