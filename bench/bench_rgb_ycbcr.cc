// RGB <-> YCbCr at full resolution: the fourteen exports, and OpenCV's YCrCb conversions beside
// the packed forms when it is installed (its chroma order differs; the work is the same).
#include "bench_util.h"
#include "krocc.h"

#ifdef KRO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace kro::bench {
namespace {

#define KRO_PACKED(fn) \
  [](Img& s, Img& d, KroSize r) { fn(s.planes[0], s.step, d.planes[0], d.step, r); }
#define KRO_TO_PLANES(fn) \
  [](Img& s, Img& d, KroSize r) { fn(s.planes[0], s.step, d.planes, d.step, r); }
#define KRO_FROM_PLANES(fn) \
  [](Img& s, Img& d, KroSize r) { fn(s.cplanes, s.step, d.planes[0], d.step, r); }
#define KRO_FROM_PLANES_C4(fn) \
  [](Img& s, Img& d, KroSize r) { fn(s.cplanes, s.step, d.planes[0], d.step, r, 255); }
#define KRO_PLANES(fn) \
  [](Img& s, Img& d, KroSize r) { fn(s.cplanes, s.step, d.planes, d.step, r); }

const bool kRegistered = [] {
  Register("kroiRGBToYCbCr_8u_C3R", kPacked3, kPacked3, KRO_PACKED(kroiRGBToYCbCr_8u_C3R));
  Register("kroiRGBToYCbCr_8u_C3P3R", kPacked3, kPlanes3, KRO_TO_PLANES(kroiRGBToYCbCr_8u_C3P3R));
  Register("kroiRGBToYCbCr_8u_AC4P3R", kPacked4, kPlanes3,
           KRO_TO_PLANES(kroiRGBToYCbCr_8u_AC4P3R));
  Register("kroiRGBToYCbCr_8u_AC4R", kPacked4, kPacked4, KRO_PACKED(kroiRGBToYCbCr_8u_AC4R));
  Register("kroiRGBToYCbCr_8u_P3R", kPlanes3, kPlanes3, KRO_PLANES(kroiRGBToYCbCr_8u_P3R));
  Register("kroiYCbCrToRGB_8u_C3R", kPacked3, kPacked3, KRO_PACKED(kroiYCbCrToRGB_8u_C3R));
  Register("kroiYCbCrToRGB_8u_P3C3R", kPlanes3, kPacked3,
           KRO_FROM_PLANES(kroiYCbCrToRGB_8u_P3C3R));
  Register("kroiYCbCrToBGR_8u_P3C3R", kPlanes3, kPacked3,
           KRO_FROM_PLANES(kroiYCbCrToBGR_8u_P3C3R));
  Register("kroiYCbCrToRGB_8u_P3C4R", kPlanes3, kPacked4,
           KRO_FROM_PLANES_C4(kroiYCbCrToRGB_8u_P3C4R));
  Register("kroiYCbCrToBGR_8u_P3C4R", kPlanes3, kPacked4,
           KRO_FROM_PLANES_C4(kroiYCbCrToBGR_8u_P3C4R));
  Register("kroiYCbCrToRGB_8u_P3R", kPlanes3, kPlanes3, KRO_PLANES(kroiYCbCrToRGB_8u_P3R));
  Register("kroiYCbCrToRGB_8u_AC4R", kPacked4, kPacked4, KRO_PACKED(kroiYCbCrToRGB_8u_AC4R));
  Register("kroiYCbCrToBGR_709CSC_8u_P3C3R", kPlanes3, kPacked3,
           KRO_FROM_PLANES(kroiYCbCrToBGR_709CSC_8u_P3C3R));
  Register("kroiYCbCrToBGR_709CSC_8u_P3C4R", kPlanes3, kPacked4,
           KRO_FROM_PLANES_C4(kroiYCbCrToBGR_709CSC_8u_P3C4R));
#ifdef KRO_HAVE_OPENCV
  Register("opencv_RGB2YCrCb_C3", kPacked3, kPacked3, [](Img& s, Img& d, KroSize r) {
    cv::Mat in(r.height, r.width, CV_8UC3, s.planes[0], s.step);
    cv::Mat out(r.height, r.width, CV_8UC3, d.planes[0], d.step);
    cv::cvtColor(in, out, cv::COLOR_RGB2YCrCb);
  });
  Register("opencv_YCrCb2RGB_C3", kPacked3, kPacked3, [](Img& s, Img& d, KroSize r) {
    cv::Mat in(r.height, r.width, CV_8UC3, s.planes[0], s.step);
    cv::Mat out(r.height, r.width, CV_8UC3, d.planes[0], d.step);
    cv::cvtColor(in, out, cv::COLOR_YCrCb2RGB);
  });
#endif
  return true;
}();

}  // namespace
}  // namespace kro::bench
