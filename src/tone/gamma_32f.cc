// Gamma forward and inverse, 32f: the transfer curve computed on the fly over the caller's range
// vMin..vMax, with the per-form arithmetic that the twelve exports keep.
//
// Per sample, with range = vMax - vMin and d = v - vMin:
//   forward: x = d / range; x < 0.018 ? 4.5 d + vMin : (x^0.45 * 1.099 - 0.099) range + vMin
//   inverse: x = d / range; t = (x + 0.099) / 1.099;
//            x < 0.0812 ? d / 4.5 + vMin : t^(1/0.45) range + vMin
// The forms differ on purpose, and each difference is kept:
//   - the reciprocal of the range is single (forward C3, AC4R; inverse C3) or double (forward
//     P3, AC4IR; inverse P3, AC4); with the double one, forward AC4IR compares the unrounded
//     double product with the threshold while the power takes it rounded to single, and the
//     double inverses form t in double from the product and round t once;
//   - forward C3 and P3 raise x with the C runtime's double pow (exactly: PowRowAsRuntime), the
//     others with the vector power routine (PowRow);
//   - forward AC4R and AC4IR add vMin a second time on the curve branch;
//   - inverse C3R, P3R and IP3R leave p unscaled by the range on the curve branch (C3IR and the
//     AC4 forms scale it); with range 1 nobody can tell.
// Rows go through strips of 128 pixels (384 samples) on the stack: the power inputs of a strip
// are formed into the buffer, raised there in one call, and the results chosen afterwards.
// The inverse C3 and planar forms run a row in three passes: d = v - vMin into the destination,
// the strips in place on d (the results without vMin), then vMin added; both passes are plain
// copies when vMin is 0 (so a -0 result keeps its sign there). The passes are fused sample by
// sample, which gives the same floats without writing the destination three times.
#include <algorithm>
#include <cstddef>

#include "frame/checks.h"
#include "frame/entry.h"
#include "frame/simd.h"
#include "tone/gamma_pow.h"

namespace kro::gamma {
namespace {

constexpr float kLinearEnd = 0.018f;      // forward: the linear branch below this x
constexpr float kSlope = 4.5f;            // forward linear slope
constexpr float kGain = 1.099f;           // curve gain
constexpr float kLift = 0.099f;           // curve offset
constexpr float kInvGain = 0.9099181f;    // 1 / 1.099
constexpr float kInvSlope = 0.22222222f;  // 1 / 4.5
constexpr float kCurveStart = 0.0812f;    // inverse: the linear branch below this x

constexpr int kStrip = 384;  // samples per strip: 128 pixels of three colours

struct Range {
  float vMin, range, rcp;  // rcp = 1 / range in single precision
  double rcpD;             // 1 / range in double precision
};

Range MakeRange(float vMin, float vMax) {
  const float range = vMax - vMin;
  return {vMin, range, 1.0f / range, 1.0 / static_cast<double>(range)};
}

enum class Recip { kSingle, kDouble };

// ---- Lanes ----------------------------------------------------------------------------------
// The forms' arithmetic is written once over a lane type: Lane1 (one float; the tails of the
// strips, and every sample in the portable build) or Lane4 (four floats in an SSE register).
// F is a float lane, D the same lanes widened to double, M a comparison mask. Both run the same
// IEEE operations in the same order, so a sample's result does not depend on its lane.

struct Lane1 {
  using F = float;
  using D = double;
  using M = bool;
  static F Load(const float* p) { return *p; }
  static void Store(float* p, F v) { *p = v; }
  static D Widen(F v) { return static_cast<double>(v); }
  static F Round(D v) { return static_cast<float>(v); }
  static M Less(F a, F b) { return a < b; }
  static M Less(D a, D b) { return a < b; }
  static F Select(M m, F a, F b) { return m ? a : b; }
};

#if KRO_SIMD
struct F4 {
  __m128 v;
  F4(__m128 x) : v(x) {}
  F4(float x) : v(_mm_set1_ps(x)) {}
};
inline F4 operator+(F4 a, F4 b) { return _mm_add_ps(a.v, b.v); }
inline F4 operator-(F4 a, F4 b) { return _mm_sub_ps(a.v, b.v); }
inline F4 operator*(F4 a, F4 b) { return _mm_mul_ps(a.v, b.v); }

struct D4 {  // lanes 0-1 and 2-3
  __m128d lo, hi;
  D4(__m128d a, __m128d b) : lo(a), hi(b) {}
  D4(double x) : lo(_mm_set1_pd(x)), hi(lo) {}
};
inline D4 operator+(D4 a, D4 b) { return {_mm_add_pd(a.lo, b.lo), _mm_add_pd(a.hi, b.hi)}; }
inline D4 operator*(D4 a, D4 b) { return {_mm_mul_pd(a.lo, b.lo), _mm_mul_pd(a.hi, b.hi)}; }

struct Lane4 {
  using F = F4;
  using D = D4;
  using M = __m128;
  static F Load(const float* p) { return _mm_loadu_ps(p); }
  static void Store(float* p, F v) { _mm_storeu_ps(p, v.v); }
  // The three colour samples of a pixel from lanes 0-2; the fourth float is not written.
  static void Store3(float* p, F v) {
    _mm_storel_pi(reinterpret_cast<__m64*>(p), v.v);
    _mm_store_ss(p + 2, _mm_movehl_ps(v.v, v.v));
  }
  static D Widen(F v) { return {_mm_cvtps_pd(v.v), _mm_cvtps_pd(_mm_movehl_ps(v.v, v.v))}; }
  static F Round(D v) { return _mm_movelh_ps(_mm_cvtpd_ps(v.lo), _mm_cvtpd_ps(v.hi)); }
  static M Less(F a, F b) { return _mm_cmplt_ps(a.v, b.v); }
  static M Less(D a, D b) {
    return _mm_shuffle_ps(_mm_castpd_ps(_mm_cmplt_pd(a.lo, b.lo)),
                          _mm_castpd_ps(_mm_cmplt_pd(a.hi, b.hi)), _MM_SHUFFLE(2, 0, 2, 0));
  }
  static F Select(M m, F a, F b) { return _mm_or_ps(_mm_and_ps(m, a.v), _mm_andnot_ps(m, b.v)); }
};
#endif

// ---- Per-sample arithmetic of each form ---------------------------------------------------
// Input(v) is the power's argument for sample v; Output(v, p) the result given that power.
// Both branches are computed and one is selected.

// Forward. kCompareProduct: the branch test takes the unrounded double product (AC4IR).
// kTwiceMin: the curve branch adds vMin twice (AC4R, AC4IR).
template <Recip kRecip, bool kCompareProduct, bool kTwiceMin, bool kRuntimePow>
struct Forward {
  static constexpr bool kAsRuntime = kRuntimePow;
  static const PowCurve& Curve() { return kGammaPowFwd; }
  template <class L>
  static typename L::F Input(typename L::F v, const Range& r) {
    const typename L::F d = v - r.vMin;
    if constexpr (kRecip == Recip::kSingle) {
      return r.rcp * d;
    } else {
      return L::Round(L::Widen(d) * r.rcpD);
    }
  }
  template <class L>
  static typename L::M Linear(typename L::F v, const Range& r) {
    const typename L::F d = v - r.vMin;
    if constexpr (kRecip == Recip::kSingle) {
      return L::Less(r.rcp * d, kLinearEnd);
    } else {
      const typename L::D x = L::Widen(d) * r.rcpD;
      if constexpr (kCompareProduct) {
        return L::Less(x, static_cast<double>(kLinearEnd));
      } else {
        return L::Less(L::Round(x), kLinearEnd);
      }
    }
  }
  template <class L>
  static typename L::F Choose(typename L::F v, typename L::F p, typename L::M linear,
                              const Range& r) {
    using F = typename L::F;
    const F d = v - r.vMin;
    const F straight = kSlope * d + r.vMin;
    F curve = (p * kGain - kLift) * r.range + r.vMin;
    if constexpr (kTwiceMin) curve = curve + r.vMin;
    return L::Select(linear, straight, curve);
  }
  template <class L>
  static typename L::F Output(typename L::F v, typename L::F p, const Range& r) {
    return Choose<L>(v, p, Linear<L>(v, r), r);
  }
};

// t in single precision from the single product, or in double from the double product; the
// branch test on the same product.
template <Recip kRecip>
struct InverseBase {
  static constexpr bool kAsRuntime = false;
  static const PowCurve& Curve() { return kGammaPowInv; }
  template <class L>
  static typename L::F T(typename L::F d, const Range& r) {
    if constexpr (kRecip == Recip::kSingle) {
      const typename L::F x = d * r.rcp;
      return (x + kLift) * kInvGain;
    } else {
      const typename L::D x = L::Widen(d) * r.rcpD;
      return L::Round((x + static_cast<double>(kLift)) * static_cast<double>(kInvGain));
    }
  }
  template <class L>
  static typename L::M Linear(typename L::F d, const Range& r) {
    if constexpr (kRecip == Recip::kSingle) {
      return L::Less(d * r.rcp, kCurveStart);
    } else {
      return L::Less(L::Widen(d) * r.rcpD, static_cast<double>(kCurveStart));
    }
  }
};

// Inverse AC4R, AC4IR: one pass, double reciprocal, p scaled by the range.
struct InverseAlpha : InverseBase<Recip::kDouble> {
  template <class L>
  static typename L::F Input(typename L::F v, const Range& r) {
    return T<L>(v - r.vMin, r);
  }
  template <class L>
  static typename L::M Linear(typename L::F v, const Range& r) {
    return InverseBase::Linear<L>(v - r.vMin, r);
  }
  template <class L>
  static typename L::F Choose(typename L::F v, typename L::F p, typename L::M linear,
                              const Range& r) {
    const typename L::F d = v - r.vMin;
    const typename L::F straight = d * kInvSlope + r.vMin, curve = p * r.range + r.vMin;
    return L::Select(linear, straight, curve);
  }
  template <class L>
  static typename L::F Output(typename L::F v, typename L::F p, const Range& r) {
    return Choose<L>(v, p, Linear<L>(v, r), r);
  }
};

// Inverse C3 and planar, middle pass: the row holds d already and vMin comes after.
template <Recip kRecip, bool kTimesRange>
struct InverseRow : InverseBase<kRecip> {
  using Base = InverseBase<kRecip>;
  template <class L>
  static typename L::F Input(typename L::F d, const Range& r) {
    return Base::template T<L>(d, r);
  }
  template <class L>
  static typename L::F Output(typename L::F d, typename L::F p, const Range& r) {
    const typename L::F straight = d * kInvSlope;
    typename L::F curve = p;
    if constexpr (kTimesRange) curve = p * r.range;
    return L::Select(Base::template Linear<L>(d, r), straight, curve);
  }
};

// ---- Rows ---------------------------------------------------------------------------------

template <class Form>
void Raise(float* buf, int n) {
  if constexpr (Form::kAsRuntime) {
    PowRowAsRuntime(buf, Form::Curve(), buf, n);
  } else {
    PowRow(buf, Form::Curve(), buf, n);
  }
}

// One strip of m contiguous samples: the power's inputs into buf, the power over buf, the results
// chosen from it. in and out may be the same array.
template <class Form>
void Strip(const float* in, float* out, int m, const Range& r, float* buf) {
  int i = 0;
#if KRO_SIMD
  for (; i + 4 <= m; i += 4)
    Lane4::Store(buf + i, Form::template Input<Lane4>(Lane4::Load(in + i), r));
#endif
  for (; i < m; ++i) buf[i] = Form::template Input<Lane1>(in[i], r);
  Raise<Form>(buf, m);
  i = 0;
#if KRO_SIMD
  for (; i + 4 <= m; i += 4)
    Lane4::Store(out + i,
                 Form::template Output<Lane4>(Lane4::Load(in + i), Lane4::Load(buf + i), r));
#endif
  for (; i < m; ++i) out[i] = Form::template Output<Lane1>(in[i], buf[i], r);
}

// n contiguous samples (a C3 row or a plane row), in strips of kStrip.
template <class Form>
void StripRun(const float* src, float* dst, int n, const Range range) {
  const Range r = range;  // a local copy: stores to dst cannot alias it
  float buf[kStrip];
  for (int s = 0; s < n; s += kStrip)
    Strip<Form>(src + s, dst + s, std::min(kStrip, n - s), r, buf);
}

// An AC4 row: strips of 128 pixels. The first pass gathers the colour samples of four pixels
// into three registers (whole-pixel loads; the shuffles drop the alpha samples), keeps
// them packed in a stack buffer and forms the power's inputs; the power runs over the strip; the
// second pass chooses the results and scatters them back with three-lane stores. Pixels past the
// last group of four go sample by sample.
template <class Form>
void StripRunAlpha(const float* src, float* dst, int width, const Range range) {
  const Range r = range;
  alignas(16) float colour[kStrip];
  alignas(16) float buf[kStrip];
#if KRO_SIMD
  __m128 linear[kStrip / 4];  // the branch masks of the vector groups, formed in the first pass
#endif
  for (int s = 0; s < width; s += kStrip / 3) {
    const int m = std::min(kStrip / 3, width - s);
    const float* in = src + 4 * static_cast<std::ptrdiff_t>(s);
    float* out = dst + 4 * static_cast<std::ptrdiff_t>(s);
    int x = 0;
#if KRO_SIMD
    for (; x + 4 <= m; x += 4) {
      const float* q = in + 4 * x;
      const __m128 p0 = _mm_loadu_ps(q), p1 = _mm_loadu_ps(q + 4), p2 = _mm_loadu_ps(q + 8),
                   p3 = _mm_loadu_ps(q + 12);
      const __m128 b0r1 = _mm_shuffle_ps(p0, p1, _MM_SHUFFLE(0, 0, 2, 2));
      const __m128 b2r3 = _mm_shuffle_ps(p2, p3, _MM_SHUFFLE(0, 0, 2, 2));
      const __m128 c[3] = {_mm_shuffle_ps(p0, b0r1, _MM_SHUFFLE(2, 0, 1, 0)),   // r0 g0 b0 r1
                           _mm_shuffle_ps(p1, p2, _MM_SHUFFLE(1, 0, 2, 1)),     // g1 b1 r2 g2
                           _mm_shuffle_ps(b2r3, p3, _MM_SHUFFLE(2, 1, 2, 0))};  // b2 r3 g3 b3
      for (int k = 0; k < 3; ++k) {
        _mm_store_ps(colour + 3 * x + 4 * k, c[k]);
        Lane4::Store(buf + 3 * x + 4 * k, Form::template Input<Lane4>(c[k], r));
        linear[(3 * x) / 4 + k] = Form::template Linear<Lane4>(c[k], r);
      }
    }
#endif
    for (int i = x; i < m; ++i)
      for (int k = 0; k < 3; ++k) {
        colour[3 * i + k] = in[4 * i + k];
        buf[3 * i + k] = Form::template Input<Lane1>(in[4 * i + k], r);
      }
    Raise<Form>(buf, 3 * m);
#if KRO_SIMD
    for (int i = 0; i < x; i += 4) {
      __m128 c[3];
      for (int k = 0; k < 3; ++k)
        c[k] = Form::template Choose<Lane4>(_mm_load_ps(colour + 3 * i + 4 * k),
                                            _mm_load_ps(buf + 3 * i + 4 * k),
                                            linear[(3 * i) / 4 + k], r)
                   .v;
      const __m128 r1g1b1 = _mm_shuffle_ps(c[0], c[1], _MM_SHUFFLE(1, 0, 3, 3));  // r1 r1 g1 b1
      float* q = out + 4 * i;
      Lane4::Store3(q, c[0]);
      Lane4::Store3(q + 4, _mm_shuffle_ps(r1g1b1, r1g1b1, _MM_SHUFFLE(3, 3, 2, 0)));
      Lane4::Store3(q + 8, _mm_shuffle_ps(c[1], c[2], _MM_SHUFFLE(0, 0, 3, 2)));
      Lane4::Store3(q + 12, _mm_shuffle_ps(c[2], c[2], _MM_SHUFFLE(3, 3, 2, 1)));
    }
#endif
    for (int i = x; i < m; ++i)
      for (int k = 0; k < 3; ++k)
        out[4 * i + k] = Form::template Output<Lane1>(colour[3 * i + k], buf[3 * i + k], r);
  }
}

// The inverse C3/planar row: in effect d = v - vMin into the destination, the strips on d, then
// vMin added; with vMin exactly 0 both passes are copies (so a -0 result keeps its sign). The
// passes are fused per sample: the float values between them are the same ones, held in
// registers instead of the destination row.
template <class Form>
struct Shifted {
  static constexpr bool kAsRuntime = Form::kAsRuntime;
  static const PowCurve& Curve() { return Form::Curve(); }
  template <class L>
  static typename L::F Input(typename L::F v, const Range& r) {
    return Form::template Input<L>(v - r.vMin, r);
  }
  template <class L>
  static typename L::F Output(typename L::F v, typename L::F p, const Range& r) {
    return Form::template Output<L>(v - r.vMin, p, r) + r.vMin;
  }
};

template <class Form>
void ThreePassRun(const float* src, float* dst, int n, const Range& r) {
  if (r.vMin == 0.0f) {
    StripRun<Form>(src, dst, n, r);
  } else {
    StripRun<Shifted<Form>>(src, dst, n, r);
  }
}

// ---- Image loops --------------------------------------------------------------------------

enum class Shape { kPacked3, kAlpha4, kPlane };

template <class Form, bool kThreePass, Shape kShape>
void RunRow(const float* src, float* dst, int width, const Range& r) {
  if constexpr (kShape == Shape::kAlpha4) {
    StripRunAlpha<Form>(src, dst, width, r);
  } else {
    const int n = kShape == Shape::kPacked3 ? 3 * width : width;
    if constexpr (kThreePass) {
      ThreePassRun<Form>(src, dst, n, r);
    } else {
      StripRun<Form>(src, dst, n, r);
    }
  }
}

// Byte steps become element steps by an arithmetic shift at this border.
std::ptrdiff_t Elements(int stepBytes) { return static_cast<std::ptrdiff_t>(stepBytes >> 2); }

template <class Form, bool kThreePass, Shape kShape>
void RunImage(const float* src, int srcStep, float* dst, int dstStep, KroSize roi, const Range& r) {
  const std::ptrdiff_t ss = Elements(srcStep), ds = Elements(dstStep);
  for (int y = 0; y < roi.height; ++y)
    RunRow<Form, kThreePass, kShape>(src + y * ss, dst + y * ds, roi.width, r);
}

kroStatus CheckRange(float vMin, float vMax) {
  return 0.0f >= vMax - vMin ? kroStatusBadGammaRange : kroStatusOk;
}

// ---- Wrappers' bodies: range, null pointers (with plane pointers), size, steps ----------------

template <class Form, bool kThreePass, Shape kShape>
kroStatus Packed(const float* src, int srcStep, float* dst, int dstStep, KroSize roi, float vMin,
                 float vMax) {
  KRO_CHECK(CheckRange(vMin, vMax));
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(srcStep, dstStep));
  RunImage<Form, kThreePass, kShape>(src, srcStep, dst, dstStep, roi, MakeRange(vMin, vMax));
  return kroStatusOk;
}

template <class Form, bool kThreePass, Shape kShape>
kroStatus PackedInPlace(float* image, int step, KroSize roi, float vMin, float vMax) {
  KRO_CHECK(CheckRange(vMin, vMax));
  KRO_CHECK(CheckNull(image));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(step));
  RunImage<Form, kThreePass, kShape>(image, step, image, step, roi, MakeRange(vMin, vMax));
  return kroStatusOk;
}

template <class Form, bool kThreePass>
void RunPlanes(const float* const src[3], int srcStep, float* const dst[3], int dstStep,
               KroSize roi, float vMin, float vMax) {
  const Range r = MakeRange(vMin, vMax);
  const std::ptrdiff_t ss = Elements(srcStep), ds = Elements(dstStep);
  for (int y = 0; y < roi.height; ++y)
    for (int p = 0; p < 3; ++p)
      RunRow<Form, kThreePass, Shape::kPlane>(src[p] + y * ss, dst[p] + y * ds, roi.width, r);
}

template <class Form, bool kThreePass>
kroStatus Planes(const float* const src[3], int srcStep, float* const dst[3], int dstStep,
                 KroSize roi, float vMin, float vMax) {
  KRO_CHECK(CheckRange(vMin, vMax));
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckPlanes(src, 3));
  KRO_CHECK(CheckPlanes(dst, 3));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(srcStep, dstStep));
  RunPlanes<Form, kThreePass>(src, srcStep, dst, dstStep, roi, vMin, vMax);
  return kroStatusOk;
}

template <class Form, bool kThreePass>
kroStatus PlanesInPlace(float* const planes[3], int step, KroSize roi, float vMin, float vMax) {
  KRO_CHECK(CheckRange(vMin, vMax));
  KRO_CHECK(CheckNull(planes));
  KRO_CHECK(CheckPlanes(planes, 3));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(step));
  RunPlanes<Form, kThreePass>(planes, step, planes, step, roi, vMin, vMax);
  return kroStatusOk;
}

// The forms of the twelve exports.
using FwdC3 = Forward<Recip::kSingle, false, false, true>;
using FwdP3 = Forward<Recip::kDouble, false, false, true>;
using FwdAC4R = Forward<Recip::kSingle, false, true, false>;
using FwdAC4IR = Forward<Recip::kDouble, true, true, false>;
using InvC3R = InverseRow<Recip::kSingle, false>;
using InvC3IR = InverseRow<Recip::kSingle, true>;
using InvP3 = InverseRow<Recip::kDouble, false>;

}  // namespace
}  // namespace kro::gamma

namespace kro::wrap {

// The six layouts of one direction: the form of each (C3R, C3IR, AC4R, AC4IR, planar), and
// whether the C3 and planar rows run in three passes.
#define KRO_GAMMA32F_LAYOUTS(Dir, C3, C3I, AC4, AC4I, P3, kThreePass)                              \
  kroStatus kroiGamma##Dir##_32f_C3R(const Kro32f* s, int ss, Kro32f* d, int ds, KroSize roi,      \
                                     Kro32f vMin, Kro32f vMax) {                                   \
    return gamma::Packed<C3, kThreePass, gamma::Shape::kPacked3>(s, ss, d, ds, roi, vMin, vMax);   \
  }                                                                                                \
  kroStatus kroiGamma##Dir##_32f_C3IR(Kro32f* img, int step, KroSize roi, Kro32f vMin,             \
                                      Kro32f vMax) {                                               \
    return gamma::PackedInPlace<C3I, kThreePass, gamma::Shape::kPacked3>(img, step, roi, vMin,     \
                                                                         vMax);                    \
  }                                                                                                \
  kroStatus kroiGamma##Dir##_32f_AC4R(const Kro32f* s, int ss, Kro32f* d, int ds, KroSize roi,     \
                                      Kro32f vMin, Kro32f vMax) {                                  \
    return gamma::Packed<AC4, false, gamma::Shape::kAlpha4>(s, ss, d, ds, roi, vMin, vMax);        \
  }                                                                                                \
  kroStatus kroiGamma##Dir##_32f_AC4IR(Kro32f* img, int step, KroSize roi, Kro32f vMin,            \
                                       Kro32f vMax) {                                              \
    return gamma::PackedInPlace<AC4I, false, gamma::Shape::kAlpha4>(img, step, roi, vMin, vMax);   \
  }                                                                                                \
  kroStatus kroiGamma##Dir##_32f_P3R(const Kro32f* const s[3], int ss, Kro32f* const d[3], int ds, \
                                     KroSize roi, Kro32f vMin, Kro32f vMax) {                      \
    return gamma::Planes<P3, kThreePass>(s, ss, d, ds, roi, vMin, vMax);                           \
  }                                                                                                \
  kroStatus kroiGamma##Dir##_32f_IP3R(Kro32f* const planes[3], int step, KroSize roi, Kro32f vMin, \
                                      Kro32f vMax) {                                               \
    return gamma::PlanesInPlace<P3, kThreePass>(planes, step, roi, vMin, vMax);                    \
  }

KRO_GAMMA32F_LAYOUTS(Fwd, gamma::FwdC3, gamma::FwdC3, gamma::FwdAC4R, gamma::FwdAC4IR, gamma::FwdP3,
                     false)
KRO_GAMMA32F_LAYOUTS(Inv, gamma::InvC3R, gamma::InvC3IR, gamma::InverseAlpha, gamma::InverseAlpha,
                     gamma::InvP3, true)

#undef KRO_GAMMA32F_LAYOUTS

}  // namespace kro::wrap
