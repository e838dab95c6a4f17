// RGB <-> YUV at full resolution: the ten exports, and OpenCV's conversions beside the packed
// forms when it is installed.
#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace kro::bench {
namespace {

enum Shape { kPacked3, kPacked4, kPlanes3, kPlanes4 };

int BytesPerPixel(Shape s) { return s == kPacked3 || s == kPlanes3 ? 3 : 4; }

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

const bool kRegistered = [] {
  Register("kroiRGBToYUV_8u_C3R", kPacked3, kPacked3, [](Img& s, Img& d, KroSize r) {
    kroiRGBToYUV_8u_C3R(s.planes[0], s.step, d.planes[0], d.step, r);
  });
  Register("kroiRGBToYUV_8u_C3P3R", kPacked3, kPlanes3, [](Img& s, Img& d, KroSize r) {
    kroiRGBToYUV_8u_C3P3R(s.planes[0], s.step, d.planes, d.step, r);
  });
  Register("kroiRGBToYUV_8u_P3R", kPlanes3, kPlanes3, [](Img& s, Img& d, KroSize r) {
    kroiRGBToYUV_8u_P3R(s.cplanes, s.step, d.planes, d.step, r);
  });
  Register("kroiRGBToYUV_8u_AC4R", kPacked4, kPacked4, [](Img& s, Img& d, KroSize r) {
    kroiRGBToYUV_8u_AC4R(s.planes[0], s.step, d.planes[0], d.step, r);
  });
  Register("kroiRGBToYUV_8u_AC4P4R", kPacked4, kPlanes4, [](Img& s, Img& d, KroSize r) {
    kroiRGBToYUV_8u_AC4P4R(s.planes[0], s.step, d.planes, d.step, r);
  });
  Register("kroiYUVToRGB_8u_C3R", kPacked3, kPacked3, [](Img& s, Img& d, KroSize r) {
    kroiYUVToRGB_8u_C3R(s.planes[0], s.step, d.planes[0], d.step, r);
  });
  Register("kroiYUVToRGB_8u_P3C3R", kPlanes3, kPacked3, [](Img& s, Img& d, KroSize r) {
    kroiYUVToRGB_8u_P3C3R(s.cplanes, s.step, d.planes[0], d.step, r);
  });
  Register("kroiYUVToRGB_8u_P3R", kPlanes3, kPlanes3, [](Img& s, Img& d, KroSize r) {
    kroiYUVToRGB_8u_P3R(s.cplanes, s.step, d.planes, d.step, r);
  });
  Register("kroiYUVToRGB_8u_AC4R", kPacked4, kPacked4, [](Img& s, Img& d, KroSize r) {
    kroiYUVToRGB_8u_AC4R(s.planes[0], s.step, d.planes[0], d.step, r);
  });
  Register("kroiYUVToRGB_8u_C3C4R", kPacked3, kPacked4, [](Img& s, Img& d, KroSize r) {
    kroiYUVToRGB_8u_C3C4R(s.planes[0], s.step, d.planes[0], d.step, r, 255);
  });
#ifdef KRO_HAVE_OPENCV
  Register("opencv_RGB2YUV_C3", kPacked3, kPacked3, [](Img& s, Img& d, KroSize r) {
    cv::Mat in(r.height, r.width, CV_8UC3, s.planes[0], s.step);
    cv::Mat out(r.height, r.width, CV_8UC3, d.planes[0], d.step);
    cv::cvtColor(in, out, cv::COLOR_RGB2YUV);
  });
  Register("opencv_YUV2RGB_C3", kPacked3, kPacked3, [](Img& s, Img& d, KroSize r) {
    cv::Mat in(r.height, r.width, CV_8UC3, s.planes[0], s.step);
    cv::Mat out(r.height, r.width, CV_8UC3, d.planes[0], d.step);
    cv::cvtColor(in, out, cv::COLOR_YUV2RGB);
  });
  // The planar forms against OpenCV's packed conversion plus the split or merge of planes.
  Register("opencv_RGB2YUV_planes", kPlanes3, kPlanes3, [](Img& s, Img& d, KroSize r) {
    std::vector<cv::Mat> in = {cv::Mat(r.height, r.width, CV_8UC1, s.planes[0], s.step),
                               cv::Mat(r.height, r.width, CV_8UC1, s.planes[1], s.step),
                               cv::Mat(r.height, r.width, CV_8UC1, s.planes[2], s.step)};
    thread_local cv::Mat packed, yuv;
    cv::merge(in, packed);
    cv::cvtColor(packed, yuv, cv::COLOR_RGB2YUV);
    std::vector<cv::Mat> out = {cv::Mat(r.height, r.width, CV_8UC1, d.planes[0], d.step),
                                cv::Mat(r.height, r.width, CV_8UC1, d.planes[1], d.step),
                                cv::Mat(r.height, r.width, CV_8UC1, d.planes[2], d.step)};
    cv::split(yuv, out);
  });
  Register("opencv_YUV2RGB_planes_to_C3", kPlanes3, kPacked3, [](Img& s, Img& d, KroSize r) {
    std::vector<cv::Mat> in = {cv::Mat(r.height, r.width, CV_8UC1, s.planes[0], s.step),
                               cv::Mat(r.height, r.width, CV_8UC1, s.planes[1], s.step),
                               cv::Mat(r.height, r.width, CV_8UC1, s.planes[2], s.step)};
    thread_local cv::Mat packed;
    cv::merge(in, packed);
    cv::Mat out(r.height, r.width, CV_8UC3, d.planes[0], d.step);
    cv::cvtColor(packed, out, cv::COLOR_YUV2RGB);
  });
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
