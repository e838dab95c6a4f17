// RGB and BGR to 4:2:0: every export against a reference written here from the definitions of
// the seven arithmetic sets (both forms, and the column where one hands over to the other), at
// every width 1..130 and odd heights; odd sizes, checks in order, canaries and guard pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "krocc.h"
#include "support.h"

namespace kro {
namespace {

using namespace kro::test;

// ---- Reference arithmetic ------------------------------------------------------------------

enum Set { A, B, C, D, E, F, G };

int W16(int v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }  // wrap to int16
int Sat(int v) { return std::clamp(W16(v), 0, 255); }                      // pack to a byte
int Mulr(int a, int k) { return W16((W16(a) * k + 16384) >> 15); }
int Mulu(int a, int k) { return ((a & 0xFFFF) * k) >> 16; }
int Mulh(int a, int k) { return (W16(a) * k) >> 16; }
int AddU(int a, int b) { return std::min(65535, (a & 0xFFFF) + (b & 0xFFFF)); }
int AddS(int a, int b) { return std::clamp(W16(a) + W16(b), -32768, 32767); }
int Clamp254(int v) { return std::clamp(v, 1, 254); }

struct Px {
  int r, g, b;
};

// Pixels converted by the body form: a prefix of the even width.
int BodyPixels(Set s, bool p2, int w) {
  w &= ~1;
  if (s == A || s == E || (s == C && p2)) return w & ~7;
  if (s == B || s == D || s == C) return (w & ~15) + (w & 4);
  return s == F ? w & ~15 : 0;
}

struct Hi {  // luma weights and bias, Cb on (c, a, b), Cr on (a, b, c), bias, shift
  int y[3], yb, cb[3], cr[3], cbias, shift;
};
const Hi kB = {{8422, 16515, 3212}, 2112, {28770, 9699, 19071}, {28770, 24117, 4653}, 16400, 7};
const Hi kC = {{5997, 20120, 2032}, 2112, {28770, 6619, 22151}, {28770, 26149, 2621}, 16400, 7};
const Hi kD = {{6980, 23429, 2359}, 64, {16744, 3834, 12911}, {16744, 15204, 1540}, 8224, 6};
struct Tail {  // 16.16 weights of Y, Cb, Cr
  int y[3], cb[3], cr[3];
};
const Tail k601 = {{16843, 33030, 6423}, {-9699, -19071, 28770}, {28770, -24117, -4653}};
const Tail k709 = {{11993, 40239, 4063}, {-6619, -22151, 28770}, {28770, -26149, -2621}};
const Tail kHdtv = {{13959, 46858, 4719}, {-7668, -25821, 33489}, {33489, -30409, -3080}};

int BodyY(Set s, Px p) {
  if (s == A) {
    return Sat((Mulr(p.r << 7, 4211) + Mulr(p.g << 7, 8258) + Mulr(p.b << 7, 1606) + 1026) >> 6);
  }
  if (s == E) return Sat((Mulr(p.r << 7, 4899) + Mulr(p.g << 7, 9617) + Mulr(p.b << 7, 1868)) >> 6);
  if (s == F) {
    return Sat(AddS(AddS(Mulh(p.r << 2, 9798), Mulh(p.g << 2, 19235)), Mulh(p.b << 2, 3736)) >> 1);
  }
  const Hi& k = s == B ? kB : s == C ? kC : kD;
  const int y =
      Sat(AddU(AddU(AddU(Mulu(p.r << 8, k.y[0]), Mulu(p.g << 8, k.y[1])), Mulu(p.b << 8, k.y[2])),
               k.yb) >>
          7);
  return s == D ? Clamp254(y) : y;
}

int TailY(Set s, Px p) {
  if (s == E) return (4899 * p.r + 9617 * p.g + 1868 * p.b) >> 14;
  if (s == F || s == G) return (19595 * p.r + 38470 * p.g + 7471 * p.b) >> 16;
  const Tail& t = s == D ? kHdtv : s == C ? k709 : k601;
  const int v = t.y[0] * p.r + t.y[1] * p.g + t.y[2] * p.b;
  return s == D ? Clamp254((v + 0x8000) >> 16) : ((v + 0x108000) >> 16) & 255;
}

// Cb and Cr of a block (q: top-left, top-right, bottom-left, bottom-right).
std::pair<int, int> BodyC(Set s, const Px q[4]) {
  const int sr = q[0].r + q[1].r + q[2].r + q[3].r, sg = q[0].g + q[1].g + q[2].g + q[3].g,
            sb = q[0].b + q[1].b + q[2].b + q[3].b, a = sr << 5, b = sg << 5, c = sb << 5;
  if (s == A) {
    return {Sat((Mulr(c, 7193) - Mulr(a, 2425) - Mulr(b, 4768) + 8194) >> 6),
            Sat((Mulr(a, 7193) - Mulr(b, 6029) - Mulr(c, 1163) + 8194) >> 6)};
  }
  if (s == E) {
    int f = 0;
    for (int i = 0; i < 4; ++i)
      f += Mulr(q[i].r << 7, 4899) + Mulr(q[i].g << 7, 9617) + Mulr(q[i].b << 7, 1868);
    const int t = (f & 0xFFFF) >> 1;
    return {Sat((Mulr(c - t, 8061) >> 6) + 128), Sat((Mulr(a - t, 14369) >> 6) + 128)};
  }
  if (s == F) {
    int sum = 0;
    for (int i = 0; i < 4; ++i)
      sum += AddS(AddS(Mulh(q[i].r << 2, 9798), Mulh(q[i].g << 2, 19235)), Mulh(q[i].b << 2, 3736));
    const int t = sum >> 2;
    return {Sat(AddS(Mulh((sb << 2 >> 3) - t, 16121), 128)),
            Sat(AddS(Mulh((sr << 2 >> 3) - t, 28737), 128))};
  }
  const Hi& k = s == B ? kB : s == C ? kC : kD;
  auto one = [&](const int(&w)[3], int x0, int x1, int x2) {
    const int v = AddS(Mulu(x0, w[0]) - AddU(Mulu(x1, w[1]), Mulu(x2, w[2])), k.cbias);
    // B and C never go negative here, so their logical shift is the plain one.
    return s == D ? Clamp254(Sat(W16(v) >> 6)) : Sat((v & 0xFFFF) >> 7);
  };
  return {one(k.cb, c, a, b), one(k.cr, a, b, c)};
}

std::pair<int, int> TailC(Set s, const Px q[4]) {
  const int sr = q[0].r + q[1].r + q[2].r + q[3].r, sg = q[0].g + q[1].g + q[2].g + q[3].g,
            sb = q[0].b + q[1].b + q[2].b + q[3].b;
  if (s == E || s == F || s == G) {
    const bool e = s == E;
    int n = 0;
    for (int i = 0; i < 4; ++i) {
      n += e ? 4899 * q[i].r + 9617 * q[i].g + 1868 * q[i].b
             : 19595 * q[i].r + 38470 * q[i].g + 7471 * q[i].b;
    }
    if (e) {
      return {(((((sb << 14) - n) >> 14) * 8061 >> 16) - 128) & 255,
              std::clamp(((((sr << 14) - n) >> 14) * 14369 >> 16) + 128, 0, 255)};
    }
    return {(((((sb << 16) - n + 0x1FFFF) >> 16) * 32244 >> 18) - 128) & 255,
            std::clamp(((((sr << 16) - n + 0x1FFFF) >> 16) * 57475 >> 18) + 128, 0, 255)};
  }
  const Tail& t = s == D ? kHdtv : s == C ? k709 : k601;
  auto one = [&](const int(&w)[3]) {
    const int v = w[0] * sr + w[1] * sg + w[2] * sb;
    if (s == D) return Clamp254((v + 0x2008000) >> 18);
    return static_cast<int>(((static_cast<uint32_t>(v) + 0xFE008000u) >> 18) & 255);
  };
  return {one(t.cb), one(t.cr)};
}

// ---- Images and the table of exports -------------------------------------------------------

enum Out { kP3, kP3CrCb, kP2 };

struct Src {
  int w, h, bpp;  // bpp 0: three planes
  bool bgr;
  std::vector<std::unique_ptr<Plane>> planes;
  const uint8_t* ptrs[3] = {};
  const uint8_t* const* array = ptrs;
  int step;
  Src(int w_, int h_, int bpp_, bool bgr_, int pad, int offset, bool tight)
      : w(w_), h(h_), bpp(bpp_), bgr(bgr_) {
    const int bytes = bpp ? w * bpp : w;
    for (int p = 0; p < (bpp ? 1 : 3); ++p) {
      planes.push_back(std::make_unique<Plane>(bytes, h, tight ? bytes : bytes + pad, offset + p));
      ptrs[p] = planes.back()->data();
    }
    step = planes[0]->step();
  }
  void Random(std::mt19937& rng) {
    for (auto& p : planes) p->FillRandom(rng);
  }
  Px at(int x, int y) const {
    if (!bpp) return {planes[0]->row(y)[x], planes[1]->row(y)[x], planes[2]->row(y)[x]};
    const uint8_t* p = planes[0]->row(y) + x * bpp;
    return bgr ? Px{p[2], p[1], p[0]} : Px{p[0], p[1], p[2]};
  }
};

constexpr uint8_t kPrefill = 0x5A;

struct Dst {
  Out out;
  std::vector<std::unique_ptr<Plane>> planes;
  uint8_t* ptrs[3] = {};
  uint8_t* const* array = ptrs;
  int steps[3] = {};
  Dst(Out o, int w, int h, int pad, int offset, bool tight) : out(o) {
    const int cw = o == kP2 ? (w >> 1) * 2 : w >> 1;
    const int bytes[3] = {w, cw, cw};
    for (int p = 0; p < (o == kP2 ? 2 : 3); ++p) {
      const int rows = p ? h >> 1 : h, minStep = std::max(bytes[p], 1);
      planes.push_back(
          std::make_unique<Plane>(bytes[p], rows, tight ? minStep : minStep + pad, offset + 3 * p));
      planes.back()->Fill(kPrefill);
      planes.back()->Snapshot();
      ptrs[p] = planes.back()->data();
      steps[p] = planes.back()->step();
    }
  }
  uint8_t& y(int x, int r) { return planes[0]->row(r)[x]; }
  uint8_t& cb(int i, int r) {
    return out == kP2 ? planes[1]->row(r)[2 * i] : planes[out == kP3 ? 1 : 2]->row(r)[i];
  }
  uint8_t& cr(int i, int r) {
    return out == kP2 ? planes[1]->row(r)[2 * i + 1] : planes[out == kP3 ? 2 : 1]->row(r)[i];
  }
  bool Unchanged() const {
    return std::all_of(planes.begin(), planes.end(), [](const auto& p) { return p->Unchanged(); });
  }
  bool CanariesIntact() const {
    return std::all_of(planes.begin(), planes.end(),
                       [](const auto& p) { return p->CanariesIntact(); });
  }
};

using Call = kroStatus (*)(Src&, Dst&, KroSize);
struct Export {
  std::string name;
  Set set;
  int bpp;
  bool bgr;
  Out out;
  int min;           // smallest width and height
  bool planesFirst;  // plane pointers tested before the size
  bool tight;        // no R: steps implied by the width
  Call call;
};
void PrintTo(const Export& e, std::ostream* os) { *os << e.name; }

#define TO_P3(fn) \
  [](Src& s, Dst& d, KroSize r) { return fn(s.ptrs[0], s.step, d.array, d.steps, r); }
#define TO_P2(fn)                                                                  \
  [](Src& s, Dst& d, KroSize r) {                                                  \
    return fn(s.ptrs[0], s.step, d.ptrs[0], d.steps[0], d.ptrs[1], d.steps[1], r); \
  }

std::vector<Export> Exports() {
  return {
      {"RGBToYCbCr420_C3P3R", A, 3, false, kP3, 1, false, false, TO_P3(kroiRGBToYCbCr420_8u_C3P3R)},
      {"RGBToYCbCr420_C3P2R", A, 3, false, kP2, 1, false, false, TO_P2(kroiRGBToYCbCr420_8u_C3P2R)},
      {"RGBToYCbCr420_C4P2R", A, 4, false, kP2, 1, false, false, TO_P2(kroiRGBToYCbCr420_8u_C4P2R)},
      {"BGRToYCbCr420_C3P2R", A, 3, true, kP2, 1, false, false, TO_P2(kroiBGRToYCbCr420_8u_C3P2R)},
      {"BGRToYCbCr420_AC4P2R", A, 4, true, kP2, 1, false, false,
       TO_P2(kroiBGRToYCbCr420_8u_AC4P2R)},
      {"BGRToYCbCr420_C3P3R", B, 3, true, kP3, 2, true, false, TO_P3(kroiBGRToYCbCr420_8u_C3P3R)},
      {"BGRToYCbCr420_AC4P3R", B, 4, true, kP3, 2, true, false, TO_P3(kroiBGRToYCbCr420_8u_AC4P3R)},
      {"BGRToYCrCb420_C3P3R", B, 3, true, kP3CrCb, 2, true, false,
       TO_P3(kroiBGRToYCrCb420_8u_C3P3R)},
      {"BGRToYCrCb420_AC4P3R", B, 4, true, kP3CrCb, 2, true, false,
       TO_P3(kroiBGRToYCrCb420_8u_AC4P3R)},
      {"RGBToYCrCb420_AC4P3R", B, 4, false, kP3CrCb, 2, true, false,
       TO_P3(kroiRGBToYCrCb420_8u_AC4P3R)},
      {"BGRToYCbCr420_709CSC_C3P3R", C, 3, true, kP3, 2, true, false,
       TO_P3(kroiBGRToYCbCr420_709CSC_8u_C3P3R)},
      {"BGRToYCbCr420_709CSC_AC4P3R", C, 4, true, kP3, 2, true, false,
       TO_P3(kroiBGRToYCbCr420_709CSC_8u_AC4P3R)},
      {"BGRToYCbCr420_709CSC_C3P2R", C, 3, true, kP2, 2, false, false,
       TO_P2(kroiBGRToYCbCr420_709CSC_8u_C3P2R)},
      {"BGRToYCbCr420_709CSC_AC4P2R", C, 4, true, kP2, 2, false, false,
       TO_P2(kroiBGRToYCbCr420_709CSC_8u_AC4P2R)},
      {"BGRToYCrCb420_709CSC_C3P3R", C, 3, true, kP3CrCb, 2, true, false,
       TO_P3(kroiBGRToYCrCb420_709CSC_8u_C3P3R)},
      {"BGRToYCrCb420_709CSC_AC4P3R", C, 4, true, kP3CrCb, 2, true, false,
       TO_P3(kroiBGRToYCrCb420_709CSC_8u_AC4P3R)},
      {"BGRToYCbCr420_709HDTV_AC4P3R", D, 4, true, kP3, 2, true, false,
       TO_P3(kroiBGRToYCbCr420_709HDTV_8u_AC4P3R)},
      {"RGBToYUV420_C3P3R", E, 3, false, kP3, 1, false, false, TO_P3(kroiRGBToYUV420_8u_C3P3R)},
      {"RGBToYUV420_C3P3", E, 3, false, kP3, 1, false, true,
       [](Src& s, Dst& d, KroSize r) { return kroiRGBToYUV420_8u_C3P3(s.ptrs[0], d.array, r); }},
      {"BGRToYUV420_AC4P3R", F, 4, true, kP3, 1, false, false, TO_P3(kroiBGRToYUV420_8u_AC4P3R)},
      {"RGBToYUV420_P3R", G, 0, false, kP3, 1, false, false,
       [](Src& s, Dst& d, KroSize r) {
         return kroiRGBToYUV420_8u_P3R(s.array, s.step, d.array, d.steps, r);
       }},
      {"RGBToYUV420_P3", G, 0, false, kP3, 1, false, true,
       [](Src& s, Dst& d, KroSize r) { return kroiRGBToYUV420_8u_P3(s.array, d.array, r); }},
  };
}

class Rgb420 : public testing::TestWithParam<Export> {};
INSTANTIATE_TEST_SUITE_P(RgbTo420, Rgb420, testing::ValuesIn(Exports()),
                         [](const auto& info) { return info.param.name; });

// Runs the export and checks every sample of every plane: the even part against the form its
// column calls for, the odd last row and column untouched, canaries intact.
void RunAndCompare(const Export& e, Src& s, int pad, int offset) {
  Dst d(e.out, s.w, s.h, pad, offset, e.tight);
  const kroStatus want = ((s.w | s.h) & 1) ? kroStatusOddSize : kroStatusOk;
  ASSERT_EQ(e.call(s, d, {s.w, s.h}), want) << s.w << "x" << s.h;
  const int body = BodyPixels(e.set, e.out == kP2, s.w);
  for (int r = 0; r < s.h; ++r) {
    for (int x = 0; x < s.w; ++x) {
      const bool done = r < (s.h & ~1) && x < (s.w & ~1);
      const int y = !done      ? kPrefill
                    : x < body ? BodyY(e.set, s.at(x, r))
                               : TailY(e.set, s.at(x, r));
      ASSERT_EQ(d.y(x, r), y) << "Y at " << x << "," << r << " of " << s.w << "x" << s.h;
    }
  }
  for (int r = 0; r < s.h / 2; ++r) {
    for (int i = 0; i < s.w / 2; ++i) {
      const Px q[4] = {s.at(2 * i, 2 * r), s.at(2 * i + 1, 2 * r), s.at(2 * i, 2 * r + 1),
                       s.at(2 * i + 1, 2 * r + 1)};
      const auto want = 2 * i < body ? BodyC(e.set, q) : TailC(e.set, q);
      ASSERT_EQ(d.cb(i, r), want.first) << "Cb at " << i << "," << r << " of width " << s.w;
      ASSERT_EQ(d.cr(i, r), want.second) << "Cr at " << i << "," << r << " of width " << s.w;
    }
  }
  ASSERT_TRUE(d.CanariesIntact()) << s.w << "x" << s.h;
}

// Widths 1..130 cover both sides of every body boundary of every set (multiples of 4, 8, 16).
TEST_P(Rgb420, EverySampleFollowsTheFormOfItsColumn) {
  const Export& e = GetParam();
  std::mt19937 rng(7);
  for (int w = std::max(e.min, 1); w <= 130; ++w) {
    for (auto [h, pad, offset] : {std::tuple{e.min, 0, 0}, {3, 5, 1}, {4, 19, 7}}) {
      Src s(w, h, e.bpp, e.bgr, pad, offset, e.tight);
      s.Random(rng);
      RunAndCompare(e, s, pad + 1, offset + 3);
      if (HasFatalFailure()) return;
    }
  }
}

// Extreme colours drive every saturation and wrap: block colours drawn from 0 and 255.
TEST_P(Rgb420, ExtremeColours) {
  const Export& e = GetParam();
  std::mt19937 rng(11);
  for (int w : {24, 37, 64}) {
    Src s(w, 9, e.bpp, e.bgr, 3, 2, e.tight);
    for (auto& p : s.planes)
      for (int r = 0; r < 9; ++r)
        for (int x = 0; x < p->rowBytes(); ++x) p->row(r)[x] = (rng() & 1) ? 255 : (rng() & 3);
    RunAndCompare(e, s, 2, 5);
  }
}

TEST_P(Rgb420, ChecksInOrderAndWritesNothingOnError) {
  const Export& e = GetParam();
  Src s(8, 4, e.bpp, e.bgr, 0, 0, e.tight);
  Dst d(e.out, 8, 4, 0, 0, e.tight);
  auto expect = [&](kroStatus want, KroSize roi, const char* what) {
    EXPECT_EQ(e.call(s, d, roi), want) << what;
    EXPECT_TRUE(d.Unchanged()) << what;
  };
  const KroSize good = {8, 4}, bad = {0, 4};
  expect(kroStatusBadSize, bad, "width 0");
  expect(kroStatusBadSize, {8, -3}, "negative height");
  expect(kroStatusBadSize, {e.min - 1, 4}, "width below the minimum");
  expect(kroStatusBadSize, {8, e.min - 1}, "height below the minimum");
  if (e.bpp) {
    s.ptrs[0] = nullptr;
    expect(kroStatusNullPointer, bad, "null source and bad size");
    s.ptrs[0] = s.planes[0]->data();
  } else {
    s.array = nullptr;
    expect(kroStatusNullPointer, bad, "null source array and bad size");
    s.array = s.ptrs;
    for (int p = 0; p < 3; ++p) {  // source planes come after the size
      s.ptrs[p] = nullptr;
      expect(kroStatusBadSize, bad, "null source plane and bad size");
      expect(kroStatusNullPointer, good, "null source plane");
      s.ptrs[p] = s.planes[p]->data();
    }
  }
  if (e.out != kP2) {
    d.array = nullptr;
    expect(kroStatusNullPointer, bad, "null plane array and bad size");
    d.array = d.ptrs;
  }
  for (int p = 0; p < (e.out == kP2 ? 2 : 3); ++p) {
    d.ptrs[p] = nullptr;
    const bool before = e.planesFirst || e.out == kP2;  // P2 pointers are plain arguments
    expect(before ? kroStatusNullPointer : kroStatusBadSize, bad, "null plane and bad size");
    expect(kroStatusNullPointer, good, "null plane");
    d.ptrs[p] = d.planes[p]->data();
  }
}

// Sources and destinations that end at (or begin after) an inaccessible page.
TEST_P(Rgb420, StaysInsideBuffersAtPageEdges) {
  const Export& e = GetParam();
  for (bool atStart : {false, true}) {
    for (int w : {2, 3, 4, 6, 8, 9, 12, 14, 16, 17, 20, 22, 24, 31, 33, 40}) {
      const int h = 3, srcBytes = e.bpp ? w * e.bpp : w, cw = e.out == kP2 ? w & ~1 : w >> 1;
      Src s(w, h, e.bpp, e.bgr, 0, 0, true);
      Dst d(e.out, w, h, 0, 0, true);
      std::vector<std::unique_ptr<GuardedBuffer>> bufs;
      auto guard = [&](std::size_t bytes) {
        bufs.push_back(std::make_unique<GuardedBuffer>(bytes, atStart));
        std::memset(bufs.back()->data(), 0x40, bytes);
        return bufs.back()->data();
      };
      for (int p = 0; p < (e.bpp ? 1 : 3); ++p) s.ptrs[p] = guard(std::size_t(srcBytes) * h);
      d.ptrs[0] = guard(std::size_t(w) * h);
      d.steps[0] = w;
      for (int p = 1; p < (e.out == kP2 ? 2 : 3); ++p) {
        d.ptrs[p] = guard(std::max(cw, 1) * std::size_t(h / 2));
        d.steps[p] = cw;
      }
      s.step = srcBytes;
      EXPECT_EQ(e.call(s, d, {w, h}), kroStatusOddSize) << w;
    }
  }
}

// ---- Single exports ------------------------------------------------------------------------

const Export& Find(const char* name) {
  static const std::vector<Export> all = Exports();
  for (const Export& e : all)
    if (e.name == name) return e;
  throw std::runtime_error(name);
}

// White gives Y = 235 in the BT.601 sets and 254 (255 clamped) in the HDTV set; a grey of 128
// gives chroma 128 everywhere.
TEST(Rgb420Values, WhiteAndGrey) {
  for (auto [name, y] : {std::pair{"RGBToYCbCr420_C3P3R", 235},
                         {"BGRToYCbCr420_C3P3R", 235},
                         {"BGRToYCbCr420_709CSC_C3P2R", 235},
                         {"BGRToYCbCr420_709HDTV_AC4P3R", 254}}) {
    const Export& e = Find(name);
    Src s(22, 2, e.bpp, e.bgr, 0, 0, false);
    s.planes[0]->Fill(255);
    Dst d(e.out, 22, 2, 0, 0, false);
    ASSERT_EQ(e.call(s, d, {22, 2}), kroStatusOk);
    for (int x = 0; x < 22; ++x) EXPECT_EQ(d.y(x, 1), y) << name << " " << x;
    s.planes[0]->Fill(128);
    ASSERT_EQ(e.call(s, d, {22, 2}), kroStatusOk);
    for (int i = 0; i < 11; ++i) EXPECT_EQ(d.cb(i, 0), 128) << name << " " << i;
  }
}

// 37 x 9: 36 columns and 8 rows converted, column 36 and row 8 of every plane left alone.
TEST(Rgb420Values, OddSizeConvertsTheEvenPart) {
  for (const Export& e : Exports()) {
    std::mt19937 rng(1);
    Src s(37, 9, e.bpp, e.bgr, 0, 0, e.tight);
    s.Random(rng);
    RunAndCompare(e, s, 0, 0);
  }
}

// Regions of one column or one row: +35 and nothing written where 1 is allowed, else -6.
TEST(Rgb420Values, OneColumnOrRow) {
  for (const Export& e : Exports()) {
    for (KroSize roi : {KroSize{1, 4}, KroSize{4, 1}, KroSize{1, 1}}) {
      Src s(4, 4, e.bpp, e.bgr, 0, 0, false);
      Dst d(e.out, 4, 4, 0, 0, false);
      EXPECT_EQ(e.call(s, d, roi), e.min == 1 ? kroStatusOddSize : kroStatusBadSize) << e.name;
      EXPECT_TRUE(d.Unchanged()) << e.name;
    }
  }
}

// The fourth byte of AC4 and C4 sources is never read into a result.
TEST(Rgb420Values, AlphaIsIgnored) {
  for (const Export& e : Exports()) {
    if (e.bpp != 4) continue;
    std::mt19937 rng(5);
    Src s(40, 4, 4, e.bgr, 0, 0, false);
    s.Random(rng);
    Dst d1(e.out, 40, 4, 0, 0, false), d2(e.out, 40, 4, 0, 0, false);
    ASSERT_EQ(e.call(s, d1, {40, 4}), kroStatusOk);
    for (int r = 0; r < 4; ++r)
      for (int x = 0; x < 40; ++x) s.planes[0]->row(r)[4 * x + 3] ^= 0xFF;
    ASSERT_EQ(e.call(s, d2, {40, 4}), kroStatusOk);
    for (int p = 0; p < (e.out == kP2 ? 2 : 3); ++p)
      EXPECT_EQ(d1.planes[p]->Region(), d2.planes[p]->Region()) << e.name;
  }
}

// kroiRGBToYCbCr420_8u_C3P3R takes its aligned kernel when the source, the planes and all
// steps are multiples of 16: the bytes are those of the unaligned kernel.
TEST(Rgb420Values, AlignedAndUnalignedKernelsAgree) {
  const Export& e = Find("RGBToYCbCr420_C3P3R");
  std::mt19937 rng(9);
  for (int w : {16, 24, 30, 32, 37, 48, 64, 100, 130}) {
    Src aligned(w, 6, 3, false, (16 - (3 * w) % 16) % 16, 0, false);
    ASSERT_EQ(aligned.step % 16, 0);
    aligned.Random(rng);
    Src shifted(w, 6, 3, false, 1, 5, false);
    for (int r = 0; r < 6; ++r)
      std::memcpy(shifted.planes[0]->row(r), aligned.planes[0]->row(r), 3 * w);
    const int padY = (16 - w % 16) % 16, padC = (16 - (w / 2) % 16) % 16;
    Dst da(kP3, w, 6, 0, 0, false), du(kP3, w, 6, 3, 1, false);
    for (int p = 0; p < 3; ++p) {
      da.planes[p] =
          std::make_unique<Plane>(p ? w / 2 : w, p ? 3 : 6, (p ? w / 2 + padC : w + padY), 0);
      da.planes[p]->Fill(kPrefill);
      da.ptrs[p] = da.planes[p]->data();
      da.steps[p] = da.planes[p]->step();
      ASSERT_EQ((reinterpret_cast<uintptr_t>(da.ptrs[p]) | da.steps[p]) % 16, 0u);
    }
    ASSERT_EQ(e.call(aligned, da, {w, 6}), e.call(shifted, du, {w, 6}));
    for (int p = 0; p < 3; ++p) EXPECT_EQ(da.planes[p]->Region(), du.planes[p]->Region()) << w;
  }
}

}  // namespace
}  // namespace kro
