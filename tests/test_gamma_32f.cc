// Gamma by formula, 32f: the power routine against the C runtime's pow, every export against a
// scalar oracle written from the curve's definition (each form's own arithmetic), the forms'
// deliberate differences, in place against out of place, alpha, checks, canaries, guard pages.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support.h"
#include "tone/gamma_pow.h"

namespace kro {
namespace {

using gamma::kGammaPowFwd;
using gamma::kGammaPowInv;
using gamma::PowCurve;
using test::Plane;

uint32_t Bits(float f) {
  uint32_t u;
  std::memcpy(&u, &f, 4);
  return u;
}
float FromBits(uint32_t u) {
  float f;
  std::memcpy(&f, &u, 4);
  return f;
}
float RuntimePow(float x, float y) {
  return static_cast<float>(std::pow(static_cast<double>(x), static_cast<double>(y)));
}
// Distance in units in the last place between two floats of the same sign.
int64_t Ulps(float a, float b) { return std::llabs(int64_t{Bits(a)} - int64_t{Bits(b)}); }

// ---- The power routine ------------------------------------------------------------------------

TEST(GammaPow, ExponentsAreTheCurves) {
  EXPECT_EQ(Bits(kGammaPowFwd.exponent), 0x3EE66666u);
  EXPECT_EQ(Bits(kGammaPowInv.exponent), 0x400E38E4u);
}

// Every 193rd float from 0 to infinity: PowRow is within one unit of the runtime's result and
// equal to it almost everywhere; PowRowAsRuntime (for exponents up to 1) is equal everywhere.
void Sweep(const PowCurve& curve, uint32_t stride) {
  std::vector<float> in, approx(1 << 20), exact(1 << 20);
  std::size_t total = 0, equal = 0;
  for (uint64_t b = 0; b <= 0x7F800000u;) {
    in.clear();
    for (; b <= 0x7F800000u && in.size() < approx.size(); b += stride)
      in.push_back(FromBits(uint32_t(b)));
    gamma::PowRow(in.data(), curve, approx.data(), int(in.size()));
    gamma::PowRowAsRuntime(in.data(), curve, exact.data(), int(in.size()));
    for (std::size_t i = 0; i < in.size(); ++i) {
      const float want = RuntimePow(in[i], curve.exponent);
      if (curve.exponent <= 1.0f) {
        ASSERT_EQ(Bits(exact[i]), Bits(want)) << std::hexfloat << in[i];
      }
      ASSERT_LE(Ulps(approx[i], want), 1) << std::hexfloat << in[i];
      equal += Bits(approx[i]) == Bits(want);
    }
    total += in.size();
  }
  const double fraction = double(equal) / double(total);
  std::cout << "  y = " << curve.exponent << ": " << total << " inputs, PowRow differs from "
            << "the runtime's pow on " << total - equal << " (equal: " << std::setprecision(9)
            << fraction << ")\n";
  EXPECT_GT(fraction, 0.99999);
}

TEST(GammaPow, DenseSweepForward) { Sweep(kGammaPowFwd, 193); }
TEST(GammaPow, DenseSweepInverse) { Sweep(kGammaPowInv, 193); }

// All 2^31 non-negative floats (minutes; run by hand with --gtest_also_run_disabled_tests).
TEST(GammaPow, DISABLED_EveryFloat) {
  Sweep(kGammaPowFwd, 1);
  Sweep(kGammaPowInv, 1);
}

// Zero, negative, subnormal, infinite and NaN inputs follow the runtime's pow.
TEST(GammaPow, UnusualInputs) {
  const float inputs[] = {0.0f,    -0.0f,    -1.0f,     -0.25f,    1e-40f, -1e-40f,
                          1e-45f,  INFINITY, -INFINITY, NAN,       -NAN,   1.0f,
                          FLT_MAX, FLT_MIN,  3e38f,     1.17e-38f, 2.0f,   0.018f};
  for (const PowCurve* c : {&kGammaPowFwd, &kGammaPowInv}) {
    for (float x : inputs) {
      const float want = RuntimePow(x, c->exponent);
      float got[2];
      gamma::PowRow(&x, *c, &got[0], 1);
      gamma::PowRowAsRuntime(&x, *c, &got[1], 1);
      for (float g : got) {
        if (std::isnan(want)) {
          EXPECT_TRUE(std::isnan(g)) << x;
        } else {
          EXPECT_EQ(Bits(g), Bits(want)) << std::hexfloat << x;
        }
      }
    }
  }
}

// The vector body against the scalar twin: every count 0..41, unaligned starts, in place, with
// ordinary and unusual lanes mixed in one block.
TEST(GammaPow, VectorEqualsScalarTwin) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<float> u(-0.2f, 2.5f);
  for (const PowCurve* c : {&kGammaPowFwd, &kGammaPowInv}) {
    for (int count = 0; count <= 41; ++count) {
      for (int offset = 0; offset < 4; ++offset) {
        std::vector<float> buf(count + 4);
        for (auto& v : buf) v = u(rng);
        if (count > 2) buf[offset + 1] = 0.0f, buf[offset + 2] = NAN;
        std::vector<float> in(buf), out(count + 4, -7.0f);
        gamma::PowRow(in.data() + offset, *c, out.data() + offset, count);
        gamma::PowRowAsRuntime(buf.data() + offset, *c, buf.data() + offset, count);  // in place
        for (int i = 0; i < count + 4; ++i) {
          const bool inside = i >= offset && i < offset + count;
          const float x = in[i];
          if (!inside) {
            EXPECT_EQ(out[i], -7.0f);
            EXPECT_EQ(Bits(buf[i]), Bits(x));
            continue;
          }
          const float s = gamma::PowScalar(x, *c), r = gamma::PowScalarAsRuntime(x, *c);
          EXPECT_TRUE(Bits(out[i]) == Bits(s) || (std::isnan(s) && std::isnan(out[i]))) << x;
          EXPECT_TRUE(Bits(buf[i]) == Bits(r) || (std::isnan(r) && std::isnan(buf[i]))) << x;
        }
      }
    }
  }
}

// ---- The exports against their definition ------------------------------------------------------

// How a form computes: the reciprocal (single; double with x rounded; double with the unrounded
// product compared), the power, vMin twice, the range factor on p, three passes.
enum class Recip { kSingle, kDouble, kDoubleCompared };
struct Arith {
  bool inverse;
  Recip recip;
  bool runtimePow;  // forward: the C runtime's pow per sample
  bool twiceMin;    // forward: vMin added again on the curve branch
  bool timesRange;  // inverse: p multiplied by the range
  bool threePass;   // inverse: d, curve, then vMin as separate passes (copies when vMin is 0)
};

float Oracle(const Arith& a, float v, float vMin, float vMax) {
  const float range = vMax - vMin;
  const bool zeroCopy = a.threePass && vMin == 0.0f;
  const float d = zeroCopy ? v : v - vMin;
  const double rd = 1.0 / double(range);
  const double xd = double(d) * rd;
  if (!a.inverse) {
    const float x = a.recip == Recip::kSingle ? (1.0f / range) * d : float(xd);
    const bool linear = a.recip == Recip::kDoubleCompared ? xd < double(0.018f) : x < 0.018f;
    if (linear) return 4.5f * d + vMin;
    const float p = a.runtimePow ? RuntimePow(x, 0.45f) : gamma::PowScalar(x, kGammaPowFwd);
    float r = (p * 1.099f - 0.099f) * range + vMin;
    return a.twiceMin ? r + vMin : r;
  }
  float t;
  bool linear;
  if (a.recip == Recip::kSingle) {
    const float x = d * (1.0f / range);
    t = (x + 0.099f) * 0.9099181f;
    linear = x < 0.0812f;
  } else {
    t = float((xd + double(0.099f)) * double(0.9099181f));
    linear = xd < double(0.0812f);
  }
  const float p = gamma::PowScalar(t, kGammaPowInv);
  if (!a.threePass) return linear ? d * 0.22222222f + vMin : p * range + vMin;
  const float r = linear ? d * 0.22222222f : (a.timesRange ? p * range : p);
  return zeroCopy ? r : r + vMin;
}

enum class Layout { kC3, kAC4, kP3 };

// The float images of one call: one plane (packed) or three, with canary margins.
struct Images {
  std::vector<std::unique_ptr<Plane>> planes;
  int width, height, samples;
  Images(Layout l, int w, int h, int pad, int offset)
      : width(w),
        height(h),
        samples(l == Layout::kC3    ? 3
                : l == Layout::kAC4 ? 4
                                    : 1) {
    const int rowBytes = 4 * w * samples;
    for (int p = 0; p < (l == Layout::kP3 ? 3 : 1); ++p)
      planes.push_back(std::make_unique<Plane>(rowBytes, h, rowBytes + 4 * pad, offset + 4 * p));
  }
  int step() const { return planes[0]->step(); }
  float* p(int i) { return reinterpret_cast<float*>(planes[i]->data()); }
  float& at(int plane, int y, int i) { return reinterpret_cast<float*>(planes[plane]->row(y))[i]; }
  void CopyFrom(Images& o) {
    for (std::size_t p = 0; p < planes.size(); ++p)
      for (int y = 0; y < height; ++y)
        std::memcpy(planes[p]->row(y), o.planes[p]->row(y), planes[p]->rowBytes());
  }
};

using Runner = std::function<kroStatus(Images& src, Images& dst, KroSize, float, float)>;
struct Export32f {
  std::string name;
  Layout layout;
  bool inPlace;
  Arith arith;
  Runner run;  // in-place forms work on dst
};

#define PACKED(fn)                                            \
  [](Images& s, Images& d, KroSize r, float lo, float hi) {   \
    return fn(s.p(0), s.step(), d.p(0), d.step(), r, lo, hi); \
  }
#define PACKED_IN_PLACE(fn) \
  [](Images&, Images& d, KroSize r, float lo, float hi) { return fn(d.p(0), d.step(), r, lo, hi); }
#define PLANES(fn)                                          \
  [](Images& s, Images& d, KroSize r, float lo, float hi) { \
    const float* sp[3] = {s.p(0), s.p(1), s.p(2)};          \
    float* dp[3] = {d.p(0), d.p(1), d.p(2)};                \
    return fn(sp, s.step(), dp, d.step(), r, lo, hi);       \
  }
#define PLANES_IN_PLACE(fn)                               \
  [](Images&, Images& d, KroSize r, float lo, float hi) { \
    float* dp[3] = {d.p(0), d.p(1), d.p(2)};              \
    return fn(dp, d.step(), r, lo, hi);                   \
  }

std::vector<Export32f> Exports() {
  using R = Recip;
  const Arith fwdC3{false, R::kSingle, true, false, false, false};
  const Arith fwdP3{false, R::kDouble, true, false, false, false};
  const Arith fwdAC4R{false, R::kSingle, false, true, false, false};
  const Arith fwdAC4IR{false, R::kDoubleCompared, false, true, false, false};
  const Arith invC3R{true, R::kSingle, false, false, false, true};
  const Arith invC3IR{true, R::kSingle, false, false, true, true};
  const Arith invAC4{true, R::kDouble, false, false, true, false};
  const Arith invP3{true, R::kDouble, false, false, false, true};
  return {
      {"Fwd_C3R", Layout::kC3, false, fwdC3, PACKED(kroiGammaFwd_32f_C3R)},
      {"Fwd_C3IR", Layout::kC3, true, fwdC3, PACKED_IN_PLACE(kroiGammaFwd_32f_C3IR)},
      {"Fwd_AC4R", Layout::kAC4, false, fwdAC4R, PACKED(kroiGammaFwd_32f_AC4R)},
      {"Fwd_AC4IR", Layout::kAC4, true, fwdAC4IR, PACKED_IN_PLACE(kroiGammaFwd_32f_AC4IR)},
      {"Fwd_P3R", Layout::kP3, false, fwdP3, PLANES(kroiGammaFwd_32f_P3R)},
      {"Fwd_IP3R", Layout::kP3, true, fwdP3, PLANES_IN_PLACE(kroiGammaFwd_32f_IP3R)},
      {"Inv_C3R", Layout::kC3, false, invC3R, PACKED(kroiGammaInv_32f_C3R)},
      {"Inv_C3IR", Layout::kC3, true, invC3IR, PACKED_IN_PLACE(kroiGammaInv_32f_C3IR)},
      {"Inv_AC4R", Layout::kAC4, false, invAC4, PACKED(kroiGammaInv_32f_AC4R)},
      {"Inv_AC4IR", Layout::kAC4, true, invAC4, PACKED_IN_PLACE(kroiGammaInv_32f_AC4IR)},
      {"Inv_P3R", Layout::kP3, false, invP3, PLANES(kroiGammaInv_32f_P3R)},
      {"Inv_IP3R", Layout::kP3, true, invP3, PLANES_IN_PLACE(kroiGammaInv_32f_IP3R)},
  };
}

const Export32f& Find(const std::string& name) {
  static const std::vector<Export32f> all = Exports();
  for (const auto& e : all)
    if (e.name == name) return e;
  throw std::runtime_error(name);
}

// Samples over and around the range, with the branch seams, zeros of both signs and specials.
float Sample(std::mt19937& rng, float vMin, float vMax) {
  const float range = vMax - vMin;
  switch (rng() % 16) {
    case 0:
      return vMin + 0.018f * range;
    case 1:
      return vMin + 0.0812f * range;
    case 2:
      return (rng() & 1) ? 0.0f : -0.0f;
    case 3:
      return vMin;
    case 4:
      return (rng() & 1) ? vMax : -INFINITY;
    case 5:
      return (rng() & 1) ? NAN : 1e30f;
    default:
      return vMin + range * std::uniform_real_distribution<float>(-0.2f, 1.2f)(rng);
  }
}

bool SameFloat(float a, float b) { return Bits(a) == Bits(b) || (std::isnan(a) && std::isnan(b)); }

void PrintTo(const Export32f& e, std::ostream* os) { *os << e.name; }
class Gamma32f : public testing::TestWithParam<Export32f> {};

// Every sample equals the oracle of its form (bit for bit), alpha keeps what the destination
// held, nothing outside the region changes: widths 1..130 and two strips' worth, padded steps,
// starts off 16-byte alignment, several ranges.
TEST_P(Gamma32f, EverySampleIsItsFormula) {
  const Export32f& e = GetParam();
  std::mt19937 rng(17);
  const std::pair<float, float> ranges[] = {
      {0.0f, 1.0f}, {1.0f, 3.0f}, {-0.5f, 2.0f}, {0.0f, 255.0f}, {-0.0f, 0.25f}};
  std::vector<int> widths = test::AllWidths();
  widths.push_back(300);
  for (int w : widths) {
    for (auto [vMin, vMax] : ranges) {
      const int h = w > 128 ? 3 : 2, pad = w % 3, offset = 4 * (w % 4);
      Images src(e.layout, w, h, pad, offset), dst(e.layout, w, h, pad + 1, 12 - offset);
      for (auto& plane : src.planes)
        for (int y = 0; y < h; ++y)
          for (int i = 0; i < w * src.samples; ++i)
            reinterpret_cast<float*>(plane->row(y))[i] = Sample(rng, vMin, vMax);
      if (e.inPlace) dst = Images(e.layout, w, h, pad, offset), dst.CopyFrom(src);
      Images before(e.layout, w, h, 0, 0);
      before.CopyFrom(dst);
      ASSERT_EQ(e.run(src, dst, {w, h}, vMin, vMax), kroStatusOk);
      for (std::size_t p = 0; p < dst.planes.size(); ++p) {
        ASSERT_TRUE(dst.planes[p]->CanariesIntact()) << w;
        for (int y = 0; y < h; ++y) {
          for (int i = 0; i < w * dst.samples; ++i) {
            const float got = dst.at(int(p), y, i);
            if (dst.samples == 4 && i % 4 == 3) {
              ASSERT_EQ(Bits(got), Bits(before.at(int(p), y, i))) << "alpha moved, width " << w;
              continue;
            }
            const float v = src.at(int(p), y, i);
            const float want = Oracle(e.arith, v, vMin, vMax);
            ASSERT_TRUE(SameFloat(got, want))
                << "width " << w << " range " << vMin << ".." << vMax << " plane " << p << " row "
                << y << " sample " << i << ": v " << v << " got " << got << " want " << want;
          }
        }
      }
    }
  }
}

// Checks in order: range (even with null pointers), null pointers, size, step; nothing written.
TEST_P(Gamma32f, ChecksInOrderAndNothingWritten) {
  const Export32f& e = GetParam();
  Images src(e.layout, 4, 2, 0, 0), dst(e.layout, 4, 2, 0, 0);
  for (auto& p : dst.planes) p->Snapshot();
  EXPECT_EQ(e.run(src, dst, {0, 2}, 1.0f, 1.0f), kroStatusBadGammaRange);
  EXPECT_EQ(e.run(src, dst, {4, 2}, 2.0f, 1.0f), kroStatusBadGammaRange);
  EXPECT_EQ(e.run(src, dst, {0, 2}, 0.0f, 1.0f), kroStatusBadSize);
  EXPECT_EQ(e.run(src, dst, {4, -1}, NAN, 1.0f), kroStatusBadSize);  // NaN passes the range test
  for (auto& p : dst.planes) EXPECT_TRUE(p->Unchanged());
}

INSTANTIATE_TEST_SUITE_P(AllExports, Gamma32f, testing::ValuesIn(Exports()),
                         [](const auto& info) { return info.param.name; });

// Null pointers, plane pointers and steps, called directly.
TEST(Gamma32fChecks, RangeNullSizeStep) {
  std::vector<float> buf(64, 7.0f);
  float* b = buf.data();
  const KroSize ok = {2, 2}, bad = {0, 2};
  EXPECT_EQ(kroiGammaFwd_32f_C3R(nullptr, 24, nullptr, 24, bad, 0.5f, 0.5f),
            kroStatusBadGammaRange);
  EXPECT_EQ(kroiGammaInv_32f_IP3R(nullptr, 0, bad, 3.0f, -1.0f), kroStatusBadGammaRange);
  EXPECT_EQ(kroiGammaFwd_32f_C3R(nullptr, 24, b, 24, bad, 0.0f, 1.0f), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaInv_32f_AC4IR(nullptr, 0, bad, 0.0f, 1.0f), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaFwd_32f_C3R(b, 0, b + 32, 24, bad, 0.0f, 1.0f), kroStatusBadSize);
  EXPECT_EQ(kroiGammaFwd_32f_C3R(b, 0, b + 32, 24, ok, 0.0f, 1.0f), kroStatusBadStep);
  EXPECT_EQ(kroiGammaInv_32f_AC4IR(b, -32, ok, 0.0f, 1.0f), kroStatusBadStep);
  EXPECT_EQ(kroiGammaInv_32f_C3IR(b, 0, ok, NAN, 1.0f), kroStatusBadStep);
  float* planes[3] = {b, nullptr, b + 8};
  const float* cplanes[3] = {b, b + 4, b + 8};
  EXPECT_EQ(kroiGammaFwd_32f_P3R(cplanes, 8, planes, 8, bad, 0.0f, 1.0f), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaInv_32f_IP3R(planes, 8, bad, 0.0f, 1.0f), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaInv_32f_P3R(cplanes, 8, nullptr, 8, bad, 0.0f, 1.0f), kroStatusNullPointer);
  planes[1] = b + 4;
  EXPECT_EQ(kroiGammaFwd_32f_IP3R(planes, 0, bad, 0.0f, 1.0f), kroStatusBadSize);
  EXPECT_EQ(kroiGammaFwd_32f_IP3R(planes, 0, ok, 0.0f, 1.0f), kroStatusBadStep);
  EXPECT_EQ(kroiGammaInv_32f_P3R(cplanes, 8, planes, -8, ok, 0.0f, 1.0f), kroStatusBadStep);
  for (float v : buf) EXPECT_EQ(v, 7.0f);
}

// ---- Forms side by side ---------------------------------------------------------------------

// Runs one export on a one-row image of the given colour samples (a multiple of 3; AC4 forms get
// an alpha of 0.25 after every three) and returns the colour samples (in place: on a copy).
std::vector<float> RunExport(const std::string& name, const std::vector<float>& colours, float vMin,
                             float vMax) {
  const Export32f& e = Find(name);
  std::vector<float> samples;
  for (std::size_t i = 0; i < colours.size(); ++i) {
    samples.push_back(colours[i]);
    if (e.layout == Layout::kAC4 && i % 3 == 2) samples.push_back(0.25f);
  }
  const int w = int(colours.size()) / (e.layout == Layout::kP3 ? 1 : 3);
  Images src(e.layout, w, 1, 0, 0), dst(e.layout, w, 1, 0, 0);
  for (std::size_t p = 0; p < src.planes.size(); ++p)
    std::memcpy(src.p(int(p)), samples.data(), samples.size() * 4);
  if (e.inPlace) dst.CopyFrom(src);
  EXPECT_EQ(e.run(src, dst, {w, 1}, vMin, vMax), kroStatusOk);
  std::vector<float> out;
  for (std::size_t i = 0; i < samples.size(); ++i)
    if (e.layout != Layout::kAC4 || i % 4 != 3) out.push_back(dst.p(0)[i]);
  return out;
}

std::vector<float> Ramp(int n, float lo, float hi) {
  std::vector<float> v(n);
  for (int i = 0; i < n; ++i) v[i] = lo + (hi - lo) * float(i) / float(n - 1);
  return v;
}

// In place equals out of place wherever the two forms share their arithmetic.
TEST(Gamma32fForms, InPlaceEqualsOutOfPlace) {
  const std::vector<float> v = Ramp(3 * 4 * 200, -0.3f, 3.4f);
  for (auto [a, b] : {std::pair{"Fwd_C3R", "Fwd_C3IR"},
                      {"Fwd_P3R", "Fwd_IP3R"},
                      {"Inv_P3R", "Inv_IP3R"},
                      {"Inv_AC4R", "Inv_AC4IR"}}) {
    for (auto [lo, hi] : {std::pair{0.0f, 1.0f}, {1.0f, 3.0f}}) {
      const auto x = RunExport(a, v, lo, hi), y = RunExport(b, v, lo, hi);
      for (std::size_t i = 0; i < v.size(); ++i)
        ASSERT_EQ(Bits(x[i]), Bits(y[i])) << a << " " << b << " " << v[i];
    }
  }
}

// With vMin = 1 and vMax = 3: forward AC4R is C3R plus vMin on the curve branch only; inverse
// C3IR scales the curve by the range where C3R does not; the linear branches agree.
TEST(Gamma32fForms, RangeOneToThree) {
  const std::vector<float> v = Ramp(3 * 300, 0.5f, 3.5f);
  const auto fwdC3 = RunExport("Fwd_C3R", v, 1.0f, 3.0f),
             fwdAC4 = RunExport("Fwd_AC4R", v, 1.0f, 3.0f);
  const auto invC3 = RunExport("Inv_C3R", v, 1.0f, 3.0f),
             invC3I = RunExport("Inv_C3IR", v, 1.0f, 3.0f);
  for (std::size_t i = 0; i < v.size(); ++i) {
    const float x = (v[i] - 1.0f) / 2.0f;
    if (x < 0.018f) {
      EXPECT_EQ(fwdAC4[i], fwdC3[i]) << v[i];
    } else {
      EXPECT_NEAR(fwdAC4[i] - fwdC3[i], 1.0f, 1e-6f) << v[i];
    }
    if (x < 0.0812f) {
      EXPECT_EQ(invC3I[i], invC3[i]) << v[i];
    } else {
      EXPECT_NEAR(invC3I[i] - 1.0f, 2.0f * (invC3[i] - 1.0f), 1e-6f) << v[i];
    }
  }
}

// Worked values on 0..1: both ends exact, the linear branch, a point on each curve.
TEST(Gamma32fForms, WorkedValues) {
  const std::vector<float> v = {0.0f, 1.0f, 0.01f, 0.5f, 0.25f, 0.05f};
  for (const char* name : {"Fwd_C3R", "Fwd_P3R", "Fwd_AC4R", "Fwd_AC4IR"}) {
    const auto r = RunExport(name, v, 0.0f, 1.0f);
    EXPECT_EQ(r[0], 0.0f) << name;
    EXPECT_EQ(r[1], 1.0f) << name;
    EXPECT_EQ(r[2], 4.5f * 0.01f) << name;
    EXPECT_NEAR(r[3], 1.099 * std::pow(0.5, 0.45) - 0.099, 2e-7) << name;
  }
  for (const char* name : {"Inv_C3R", "Inv_C3IR", "Inv_P3R", "Inv_AC4R"}) {
    const auto r = RunExport(name, v, 0.0f, 1.0f);
    EXPECT_EQ(r[0], 0.0f) << name;
    EXPECT_NEAR(r[1], 1.0f, 1e-7f) << name;
    EXPECT_EQ(r[5], 0.05f * 0.22222222f) << name;
    EXPECT_NEAR(r[3], std::pow((0.5 + 0.099) / 1.099, 1 / 0.45), 2e-7) << name;
  }
}

// One hash per export of its output on a seeded image over four ranges: the default and
// the portable build must both give these bytes.
TEST(Gamma32fForms, SameBytesInEveryBuild) {
  const std::pair<const char*, uint64_t> expected[] = {
      {"Fwd_C3R", 0xa4d7e11a3b448ba8u},  {"Fwd_C3IR", 0xa4d7e11a3b448ba8u},
      {"Fwd_AC4R", 0xf4d373cd85ab6ebeu}, {"Fwd_AC4IR", 0x8e207a721a7eb6ceu},
      {"Fwd_P3R", 0x85a5f71c504eaf30u},  {"Fwd_IP3R", 0x85a5f71c504eaf30u},
      {"Inv_C3R", 0xa922900d42dccbdeu},  {"Inv_C3IR", 0x9cc984e8af9374c5u},
      {"Inv_AC4R", 0xdbe7639898b2c786u}, {"Inv_AC4IR", 0xdbe7639898b2c786u},
      {"Inv_P3R", 0x2242d70b848c9d28u},  {"Inv_IP3R", 0x2242d70b848c9d28u}};
  std::mt19937 rng(2024);
  std::vector<float> v(3 * 1000);
  for (auto& x : v) x = float(rng() >> 8) * 0x1p-24f * 3.5f - 0.25f;
  for (auto [name, hash] : expected) {
    uint64_t h = 1469598103934665603u;
    for (auto [lo, hi] : {std::pair{0.0f, 1.0f}, {1.0f, 3.0f}, {-0.5f, 2.5f}, {0.1f, 0.7f}})
      for (float r : RunExport(name, v, lo, hi)) h = (h ^ Bits(r)) * 1099511628211u;
    EXPECT_EQ(h, hash) << name << " 0x" << std::hex << h;
  }
}

// With vMin exactly 0 the inverse C3/planar forms copy instead of subtracting and adding, so a
// -0 sample stays -0; the one-pass AC4 forms add vMin and give +0.
TEST(Gamma32fForms, NegativeZeroThroughTheCopyPasses) {
  const std::vector<float> v = {-0.0f, -0.0f, -0.0f};
  EXPECT_TRUE(std::signbit(RunExport("Inv_C3R", v, 0.0f, 1.0f)[0]));
  EXPECT_TRUE(std::signbit(RunExport("Inv_C3IR", v, 0.0f, 1.0f)[0]));
  EXPECT_TRUE(std::signbit(RunExport("Inv_IP3R", v, 0.0f, 1.0f)[0]));
  EXPECT_TRUE(std::signbit(RunExport("Inv_P3R", v, -0.0f, 1.0f)[0]));  // -0 == 0: copies too
  EXPECT_FALSE(std::signbit(RunExport("Inv_AC4R", v, 0.0f, 1.0f)[0]));
  EXPECT_FALSE(std::signbit(RunExport("Fwd_C3R", v, 0.0f, 1.0f)[0]));
}

// Rows that end at an inaccessible page: nothing is read or written past the last sample (the
// AC4 forms' last alpha included, which they may touch neither way).
TEST(Gamma32fChecks, StaysInsideBuffersThatEndAtAPage) {
  for (int w : {1, 5, 131}) {
    test::GuardedBuffer src(12 * w), dst(12 * w), src4(16 * w - 4), dst4(16 * w - 4);
    std::memset(src.data(), 0, src.size());
    std::memset(src4.data(), 0, src4.size());
    auto f = [](test::GuardedBuffer& b) { return reinterpret_cast<float*>(b.data()); };
    EXPECT_EQ(kroiGammaFwd_32f_C3R(f(src), 12 * w, f(dst), 12 * w, {w, 1}, 0, 1), kroStatusOk);
    EXPECT_EQ(kroiGammaInv_32f_C3R(f(src), 12 * w, f(dst), 12 * w, {w, 1}, 0.5f, 1), kroStatusOk);
    EXPECT_EQ(kroiGammaInv_32f_C3IR(f(dst), 12 * w, {w, 1}, 0, 1), kroStatusOk);
    // The last pixel's alpha lies past the buffer: AC4 rows stop after its third sample.
    EXPECT_EQ(kroiGammaFwd_32f_AC4R(f(src4), 16 * w, f(dst4), 16 * w, {w, 1}, 0, 1), kroStatusOk);
    EXPECT_EQ(kroiGammaInv_32f_AC4IR(f(dst4), 16 * w, {w, 1}, 0, 1), kroStatusOk);
  }
}

}  // namespace
}  // namespace kro
