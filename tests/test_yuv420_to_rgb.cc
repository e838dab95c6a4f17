// 4:2:0 to RGB and BGR: every export against its set's formulas, column by column, at every
// width 1..130 and odd heights; worked values; odd sizes; checks in order with two faults;
// canaries and guard pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <tuple>
#include <vector>

#include "chroma/yuv420_to_rgb.h"
#include "support.h"

namespace kro {
namespace {

using namespace kro::test;
using namespace kro::yuv420;

constexpr uint8_t kAlpha = 0x5C;

// A 4:2:0 source: Y plane, and two chroma planes (in the name's order) or one plane of pairs.
struct Src420 {
  bool pairs, crFirst;
  int w, h;
  std::vector<std::unique_ptr<Plane>> planes;
  const uint8_t* ptrs[3] = {};
  int steps[3] = {};
  bool nullArray = false;  // pass a null plane array
  const uint8_t* const* Planes() const { return nullArray ? nullptr : ptrs; }

  Src420(bool isPairs, bool isCrFirst, int width, int height, int pad = 0, int offset = 0)
      : pairs(isPairs), crFirst(isCrFirst), w(width), h(height) {
    const int cw = std::max(1, (w >> 1) * (pairs ? 2 : 1)), ch = h >> 1;
    Add(w, h, pad ? w + pad : 0, offset);
    Add(cw, ch, pad ? cw + pad + 1 : 0, offset + 3);
    if (!pairs) Add(cw, ch, pad ? cw + pad + 2 : 0, offset + 7);
  }
  void Add(int rowBytes, int rows, int step, int offset) {
    planes.push_back(std::make_unique<Plane>(rowBytes, rows, step, offset));
    ptrs[planes.size() - 1] = planes.back()->data();
    steps[planes.size() - 1] = planes.back()->step();
  }
  void Random(std::mt19937& rng) {
    for (auto& p : planes) p->FillRandom(rng);
  }
  uint8_t& Y(int x, int y) { return planes[0]->row(y)[x]; }
  // Chroma of the pixel at (x, y); `second` picks the second component of the name's order.
  uint8_t& C(int x, int y, bool second) {
    if (pairs) return planes[1]->row(y >> 1)[2 * (x >> 1) + second];
    return planes[1 + second]->row(y >> 1)[x >> 1];
  }
  uint8_t& Cb(int x, int y) { return C(x, y, crFirst); }
  uint8_t& Cr(int x, int y) { return C(x, y, !crFirst); }
};

// The destination: packed pixels of 3 or 4 bytes, or three planes sharing one step.
struct Dst {
  bool planar;
  int bytes;
  std::vector<std::unique_ptr<Plane>> planes;
  uint8_t* ptrs[3] = {};
  int step;
  bool nullArray = false;
  uint8_t* const* Planes() const { return nullArray ? nullptr : ptrs; }
  Dst(bool isPlanar, int pixelBytes, int w, int h, int pad = 0, int offset = 0)
      : planar(isPlanar), bytes(pixelBytes) {
    const int rowBytes = planar ? w : w * bytes;
    for (int p = 0; p < (planar ? 3 : 1); ++p) {
      planes.push_back(std::make_unique<Plane>(rowBytes, h, pad ? rowBytes + pad : 0, offset + p));
      ptrs[p] = planes.back()->data();
    }
    step = planes[0]->step();
  }
  // Byte k of pixel (x, y): component k in memory order, or plane k.
  uint8_t& at(int x, int y, int k) {
    return planar ? planes[k]->row(y)[x] : planes[0]->row(y)[x * bytes + k];
  }
  void Random(std::mt19937& rng) {
    for (auto& p : planes) p->FillRandom(rng);
  }
  void Snapshot() {
    for (auto& p : planes) p->Snapshot();
  }
  bool Unchanged() const {
    return std::all_of(planes.begin(), planes.end(), [](auto& p) { return p->Unchanged(); });
  }
  bool CanariesIntact() const {
    return std::all_of(planes.begin(), planes.end(), [](auto& p) { return p->CanariesIntact(); });
  }
};

enum class In { kP3, kP3CrCb, kP2CbCr, kP2CrCb };
enum class Out { kRgb, kBgr, kRgba, kBgra, kRgb0, kPlanes };
enum class Order { kNullSizePlanes, kNullSize, kSizeNull };
using Call = std::function<kroStatus(Src420&, Dst&, KroSize)>;

struct Case {
  const char* name;
  In in;
  Out out;
  PixelFn block, tail;
  int vectorMask;  // the block formula covers columns below width & vectorMask
  int minSize;
  Order order;
  Call call;
  bool implied = false;  // no steps: tightly packed planes
};

bool Pairs(In in) { return in == In::kP2CbCr || in == In::kP2CrCb; }
bool CrFirst(In in) { return in == In::kP3CrCb || in == In::kP2CrCb; }
int Bytes(Out out) {
  return out == Out::kRgb || out == Out::kBgr ? 3 : out == Out::kPlanes ? 1 : 4;
}
bool Bgr(Out out) { return out == Out::kBgr || out == Out::kBgra; }

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

#define P3_TO_PACKED(fn, ...)                                         \
  [](Src420& s, Dst& d, KroSize r) {                                  \
    return fn(s.Planes(), s.steps, d.ptrs[0], d.step, r __VA_ARGS__); \
  }
#define P2_TO_PACKED(fn, ...)                                                                  \
  [](Src420& s, Dst& d, KroSize r) {                                                           \
    return fn(s.ptrs[0], s.steps[0], s.ptrs[1], s.steps[1], d.ptrs[0], d.step, r __VA_ARGS__); \
  }
#define ALPHA , kAlpha

std::vector<Case> Cases() {
  using O = Order;
  const O kNSP = O::kNullSizePlanes, kNS = O::kNullSize;
  return {
      {"YCbCr420ToRGB_P3C3R", In::kP3, Out::kRgb, BlockV, ScalarV, ~7, 1, kNSP,
       P3_TO_PACKED(kroiYCbCr420ToRGB_8u_P3C3R)},
      {"YCbCr420ToBGR_P3C3R", In::kP3, Out::kBgr, BlockV, ScalarV, ~7, 1, kNSP,
       P3_TO_PACKED(kroiYCbCr420ToBGR_8u_P3C3R)},
      {"YCbCr420ToBGR_P3C4R", In::kP3, Out::kBgra, BlockP1, BlockP1, ~1, 1, kNSP,
       P3_TO_PACKED(kroiYCbCr420ToBGR_8u_P3C4R, ALPHA)},
      {"YCbCr420ToRGB_P2C3R", In::kP2CbCr, Out::kRgb, BlockP1, BlockP1, ~1, 1, kNS,
       P2_TO_PACKED(kroiYCbCr420ToRGB_8u_P2C3R)},
      {"YCbCr420ToBGR_P2C3R", In::kP2CbCr, Out::kBgr, BlockP1, BlockP1, ~1, 1, kNS,
       P2_TO_PACKED(kroiYCbCr420ToBGR_8u_P2C3R)},
      {"YCbCr420ToRGB_P2C4R", In::kP2CbCr, Out::kRgba, BlockP1, BlockP1, ~1, 1, kNS,
       P2_TO_PACKED(kroiYCbCr420ToRGB_8u_P2C4R, ALPHA)},
      {"YCbCr420ToBGR_P2C4R", In::kP2CbCr, Out::kBgra, BlockP1, BlockP1, ~1, 1, kNS,
       P2_TO_PACKED(kroiYCbCr420ToBGR_8u_P2C4R, ALPHA)},
      {"YCrCb420ToRGB_P2C3R", In::kP2CrCb, Out::kRgb, BlockP2, BlockP2, ~1, 1, kNS,
       P2_TO_PACKED(kroiYCrCb420ToRGB_8u_P2C3R)},
      {"YCrCb420ToBGR_P2C3R", In::kP2CrCb, Out::kBgr, BlockP2, BlockP2, ~1, 1, kNS,
       P2_TO_PACKED(kroiYCrCb420ToBGR_8u_P2C3R)},
      {"YCrCb420ToRGB_P2C4R", In::kP2CrCb, Out::kRgba, BlockP2, BlockP2, ~1, 1, O::kSizeNull,
       P2_TO_PACKED(kroiYCrCb420ToRGB_8u_P2C4R, ALPHA)},
      {"YCrCb420ToBGR_P2C4R", In::kP2CrCb, Out::kBgra, BlockP2, BlockP2, ~1, 1, O::kSizeNull,
       P2_TO_PACKED(kroiYCrCb420ToBGR_8u_P2C4R, ALPHA)},
      {"YCrCb420ToRGB_P3C4R", In::kP3CrCb, Out::kRgba, BlockQ, ScalarV, ~7, 1, kNSP,
       P3_TO_PACKED(kroiYCrCb420ToRGB_8u_P3C4R, ALPHA)},
      {"YCbCr420ToBGR_709CSC_P3C3R", In::kP3, Out::kBgr, BlockC, ScalarC, ~7, 1, kNSP,
       P3_TO_PACKED(kroiYCbCr420ToBGR_709CSC_8u_P3C3R)},
      {"YCbCr420ToBGR_709HDTV_P3C4R", In::kP3, Out::kBgra, BlockD, ScalarD, ~7, 1, kNSP,
       P3_TO_PACKED(kroiYCbCr420ToBGR_709HDTV_8u_P3C4R, ALPHA)},
      {"YUV420ToRGB_P3AC4R", In::kP3, Out::kRgb0, BlockA, ScalarA, ~3, 1, kNSP,
       P3_TO_PACKED(kroiYUV420ToRGB_8u_P3AC4R)},
      {"YUV420ToBGR_P3C3R", In::kP3, Out::kBgr, BlockH1, BlockH1, ~1, 2, kNSP,
       P3_TO_PACKED(kroiYUV420ToBGR_8u_P3C3R)},
      {"YUV420ToRGB_P3C3R", In::kP3, Out::kRgb, BlockH2, BlockH2, ~1, 1, kNSP,
       P3_TO_PACKED(kroiYUV420ToRGB_8u_P3C3R)},
      {"YUV420ToRGB_P3C3", In::kP3, Out::kRgb, BlockH2, BlockH2, ~1, 1, kNSP,
       [](Src420& s, Dst& d, KroSize r) {
         return kroiYUV420ToRGB_8u_P3C3(s.Planes(), d.ptrs[0], r);
       },
       true},
      {"YUV420ToRGB_P3R", In::kP3, Out::kPlanes, ScalarT, ScalarT, ~1, 1, kNSP,
       [](Src420& s, Dst& d, KroSize r) {
         return kroiYUV420ToRGB_8u_P3R(s.Planes(), s.steps, d.Planes(), d.step, r);
       }},
      {"YUV420ToRGB_P3", In::kP3, Out::kPlanes, ScalarT, ScalarT, ~1, 1, kNSP,
       [](Src420& s, Dst& d, KroSize r) {
         return kroiYUV420ToRGB_8u_P3(s.Planes(), d.Planes(), r);
       },
       true},
  };
}

class Yuv420ToRgb : public testing::TestWithParam<Case> {};

// Converts src into a destination of random bytes and checks every byte: converted pixels
// against the formula of their column, alpha by its rule, the odd last row and column and
// everything around the region unchanged.
void ExpectConversion(const Case& c, Src420& s, int pad, int offset, std::mt19937& rng) {
  Dst d(c.out == Out::kPlanes, Bytes(c.out), s.w, s.h, pad, offset);
  d.Random(rng);
  std::vector<std::vector<uint8_t>> before;
  for (auto& p : d.planes) before.push_back(p->Region());
  const bool odd = (s.w | s.h) & 1;
  ASSERT_EQ(c.call(s, d, {s.w, s.h}), odd ? kroStatusOddSize : kroStatusOk);
  const int ew = s.w & ~1, eh = s.h & ~1, vectorEnd = s.w & c.vectorMask;
  for (int y = 0; y < s.h; ++y) {
    for (int x = 0; x < s.w; ++x) {
      if (x >= ew || y >= eh) {
        for (int k = 0; k < Bytes(c.out); ++k) {
          const int p = d.planar ? k : 0, i = d.planar ? y * s.w + x : (y * s.w + x) * d.bytes + k;
          ASSERT_EQ(d.at(x, y, k), before[p][i]) << "odd part written at " << x << "," << y;
        }
        continue;
      }
      const Px want = (x < vectorEnd ? c.block : c.tail)(s.Y(x, y), s.Cb(x, y), s.Cr(x, y));
      const int r = Bgr(c.out) ? 2 : 0;
      const Px got = {d.at(x, y, r), d.at(x, y, 1), d.at(x, y, 2 - r)};
      ASSERT_TRUE(want.c0 == got.c0 && want.c1 == got.c1 && want.c2 == got.c2)
          << "pixel " << x << "," << y << " of " << s.w << "x" << s.h << ": got " << int(got.c0)
          << " " << int(got.c1) << " " << int(got.c2) << ", want " << int(want.c0) << " "
          << int(want.c1) << " " << int(want.c2);
      if (c.out == Out::kRgba || c.out == Out::kBgra) {
        ASSERT_EQ(d.at(x, y, 3), kAlpha);
      } else if (c.out == Out::kRgb0) {
        ASSERT_EQ(d.at(x, y, 3), 0);
      }
    }
  }
  ASSERT_TRUE(d.CanariesIntact()) << s.w << "x" << s.h;
}

// Random data at every width 1..130 (both sides of every vector boundary of every set), odd
// and even heights, padded odd steps and unaligned starts.
TEST_P(Yuv420ToRgb, EveryPixelFollowsItsColumnsFormula) {
  const Case& c = GetParam();
  std::mt19937 rng(7);
  for (int width : AllWidths()) {
    if (width < c.minSize) continue;
    for (auto [height, pad, offset] : {std::tuple{2, 0, 0}, {5, 7, 1}, {4, 64, 13}, {3, 0, 6}}) {
      if (c.implied && pad) continue;
      Src420 s(Pairs(c.in), CrFirst(c.in), width, height, pad, offset);
      s.Random(rng);
      ExpectConversion(c, s, c.implied ? 0 : pad + 3, offset + 2, rng);
      if (HasFatalFailure()) return;
    }
  }
}

// Every luma value against every pair of chroma extremes, in rows wide enough for the vector
// body and with a tail: the sums must saturate only in the final clamp.
TEST_P(Yuv420ToRgb, ExtremeValues) {
  const Case& c = GetParam();
  std::mt19937 rng(9);
  const uint8_t chroma[] = {0, 1, 16, 127, 128, 240, 254, 255};
  for (int w : {128, 134}) {
    Src420 s(Pairs(c.in), CrFirst(c.in), w, 256);
    for (int y = 0; y < s.h; ++y) {
      for (int x = 0; x < w; ++x) {
        s.Y(x, y) = static_cast<uint8_t>(y + 7 * x);
        s.Cb(x, y) = chroma[(x >> 1) & 7];
        s.Cr(x, y) = chroma[(x >> 4) & 7];
      }
    }
    ExpectConversion(c, s, 0, 0, rng);
  }
}

// Every Cb, Cr pair once (a 2x2 block each) with random luma: the vector forms' chroma terms are
// checked over their whole domain.
TEST_P(Yuv420ToRgb, EveryChromaPair) {
  const Case& c = GetParam();
  std::mt19937 rng(12);
  Src420 s(Pairs(c.in), CrFirst(c.in), 518, 512);
  s.Random(rng);
  for (int y = 0; y < s.h; y += 2) {
    for (int x = 0; x < s.w; x += 2) {
      s.Cb(x, y) = static_cast<uint8_t>(x >> 1);
      s.Cr(x, y) = static_cast<uint8_t>(y >> 1);
    }
  }
  ExpectConversion(c, s, 0, 0, rng);
}

// W = 1 or H = 1: nothing is converted, +35 (or the size error of a 2 x 2 minimum).
TEST_P(Yuv420ToRgb, SingleRowOrColumnWritesNothing) {
  const Case& c = GetParam();
  for (auto [w, h] : {std::pair{1, 1}, {1, 6}, {17, 1}}) {
    Src420 s(Pairs(c.in), CrFirst(c.in), w, h);
    Dst d(c.out == Out::kPlanes, Bytes(c.out), w, h);
    d.Snapshot();
    EXPECT_EQ(c.call(s, d, {w, h}), c.minSize == 1 ? kroStatusOddSize : kroStatusBadSize);
    EXPECT_TRUE(d.Unchanged()) << w << "x" << h;
  }
}

// Two faults at once give the status of the earlier check; nothing is written on an error.
TEST_P(Yuv420ToRgb, ChecksInOrder) {
  const Case& c = GetParam();
  Src420 s(Pairs(c.in), CrFirst(c.in), 8, 4);
  Dst d(c.out == Out::kPlanes, Bytes(c.out), 8, 4);
  d.Snapshot();
  const kroStatus nullFirst = c.order == Order::kSizeNull ? kroStatusBadSize : kroStatusNullPointer;
  auto expect = [&](kroStatus want, KroSize roi, const char* what) {
    EXPECT_EQ(c.call(s, d, roi), want) << what;
    EXPECT_TRUE(d.Unchanged()) << what;
  };
  const KroSize minimum = {c.minSize, c.minSize};
  expect(kroStatusBadSize, {minimum.width - 1, 4}, "width below minimum");
  expect(kroStatusBadSize, {8, minimum.height - 1}, "height below minimum");
  expect(kroStatusBadSize, {-8, 4}, "negative width");
  // Null destination (packed), or the first pointer argument of the two-plane forms.
  uint8_t* const keepDst = d.ptrs[0];
  if (d.planar) {
    d.ptrs[1] = nullptr;  // a destination plane: after the size
    expect(kroStatusBadSize, {0, 4}, "null destination plane and bad size");
    expect(kroStatusNullPointer, {8, 4}, "null destination plane");
    d.ptrs[1] = d.planes[1]->data();
  } else {
    d.ptrs[0] = nullptr;
    expect(nullFirst, {0, 4}, "null destination and bad size");
    expect(kroStatusNullPointer, {8, 4}, "null destination");
    d.ptrs[0] = keepDst;
  }
  // The plane arrays, with the other top-level pointers before the size.
  if (!Pairs(c.in)) {
    s.nullArray = true;
    expect(kroStatusNullPointer, {0, 4}, "null source array and bad size");
    s.nullArray = false;
  }
  if (d.planar) {
    d.nullArray = true;
    expect(kroStatusNullPointer, {0, 4}, "null destination array and bad size");
    d.nullArray = false;
  }
  for (int p = 0; p < (Pairs(c.in) ? 2 : 3); ++p) {
    const uint8_t* keep = s.ptrs[p];
    s.ptrs[p] = nullptr;
    // Planes of a plane array come after the size; two-plane pointers with the others.
    const kroStatus first = c.order == Order::kNullSizePlanes ? kroStatusBadSize : nullFirst;
    expect(first, {8, 0}, "null source plane and bad size");
    expect(kroStatusNullPointer, {8, 4}, "null source plane");
    s.ptrs[p] = keep;
  }
  EXPECT_EQ(c.call(s, d, {8, 4}), kroStatusOk);
}

// Buffers that end exactly at an inaccessible page, tightly packed: no byte beyond the last
// one of any plane is read or written.
TEST_P(Yuv420ToRgb, StaysInsideBuffersThatEndAtAPage) {
  const Case& c = GetParam();
  for (int w : {2, 3, 4, 6, 8, 10, 14, 16, 17, 18, 24, 30, 32, 34, 48}) {
    for (int h : {2, 3}) {
      Src420 s(Pairs(c.in), CrFirst(c.in), w, h);
      Dst d(c.out == Out::kPlanes, Bytes(c.out), w, h);
      std::vector<std::unique_ptr<GuardedBuffer>> bufs;
      auto guard = [&](const Plane& p) {
        const std::size_t bytes =
            static_cast<std::size_t>(p.step()) * (p.height() - 1) + p.rowBytes();
        bufs.push_back(std::make_unique<GuardedBuffer>(bytes));
        std::memcpy(bufs.back()->data(), p.data(), bytes);
        return bufs.back()->data();
      };
      for (std::size_t p = 0; p < s.planes.size(); ++p) s.ptrs[p] = guard(*s.planes[p]);
      for (std::size_t p = 0; p < d.planes.size(); ++p) d.ptrs[p] = guard(*d.planes[p]);
      EXPECT_EQ(c.call(s, d, {w, h}), (w | h) & 1 ? kroStatusOddSize : kroStatusOk) << w;
    }
  }
}

// Negative steps from the last rows walk the image upward: the same bytes as the plain call.
TEST_P(Yuv420ToRgb, NegativeStepsWalkUpward) {
  const Case& c = GetParam();
  if (c.implied) GTEST_SKIP() << "no steps";
  std::mt19937 rng(4);
  Src420 s(Pairs(c.in), CrFirst(c.in), 37, 6, 5, 3);
  s.Random(rng);
  Dst plain(c.out == Out::kPlanes, Bytes(c.out), 37, 6, 4),
      up(c.out == Out::kPlanes, Bytes(c.out), 37, 6, 4);
  ASSERT_EQ(c.call(s, plain, {37, 6}), kroStatusOddSize);
  for (std::size_t p = 0; p < s.planes.size(); ++p) {
    s.ptrs[p] = s.planes[p]->row(s.planes[p]->height() - 1);
    s.steps[p] = -s.steps[p];
  }
  for (std::size_t p = 0; p < up.planes.size(); ++p) up.ptrs[p] = up.planes[p]->row(5);
  up.step = -up.step;
  ASSERT_EQ(c.call(s, up, {37, 6}), kroStatusOddSize);
  for (std::size_t p = 0; p < up.planes.size(); ++p) {
    EXPECT_EQ(up.planes[p]->Region(), plain.planes[p]->Region());
  }
}

INSTANTIATE_TEST_SUITE_P(Chroma420, Yuv420ToRgb, testing::ValuesIn(Cases()),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- Worked values --------------------------------------------------------------------------

const Case& Find(const char* name) {
  static const std::vector<Case> all = Cases();
  for (const Case& c : all)
    if (std::strcmp(c.name, name) == 0) return c;
  throw std::runtime_error(name);
}

// One colour over a w x 2 image; returns the destination.
std::unique_ptr<Dst> Solid(const Case& c, int w, int y, int cb, int cr) {
  Src420 s(Pairs(c.in), CrFirst(c.in), w, 2);
  for (int x = 0; x < w; ++x) {
    s.Y(x, 0) = s.Y(x, 1) = static_cast<uint8_t>(y);
    s.Cb(x, 0) = static_cast<uint8_t>(cb);
    s.Cr(x, 0) = static_cast<uint8_t>(cr);
  }
  auto d = std::make_unique<Dst>(c.out == Out::kPlanes, Bytes(c.out), w, 2);
  EXPECT_EQ(c.call(s, *d, {w, 2}), w & 1 ? kroStatusOddSize : kroStatusOk);
  return d;
}

// Y = 16 and 235 with neutral chroma: black and white in sets V, Q and P1.
TEST(Yuv420ToRgbValues, BlackAndWhite) {
  for (PixelFn f : {BlockV, BlockQ, ScalarV, BlockP1}) {
    const Px black = f(16, 128, 128), white = f(235, 128, 128);
    EXPECT_TRUE(black.c0 == 0 && black.c1 == 0 && black.c2 == 0);
    EXPECT_TRUE(white.c0 == 255 && white.c1 == 255 && white.c2 == 255);
  }
}

// A colour on which a set's two forms differ shows the column where one hands over to the
// other: W = 6 in set V is all scalar, W = 8 all vector, W = 15 vector up to column 7.
TEST(Yuv420ToRgbValues, VectorSpanOfEachSet) {
  struct Span {
    const char* name;
    PixelFn block, tail;
    int width, firstTail;
  };
  for (const Span& sp : {Span{"YCbCr420ToRGB_P3C3R", BlockV, ScalarV, 6, 0},
                         Span{"YCbCr420ToRGB_P3C3R", BlockV, ScalarV, 8, 8},
                         Span{"YCbCr420ToBGR_P3C3R", BlockV, ScalarV, 15, 8},
                         Span{"YCrCb420ToRGB_P3C4R", BlockQ, ScalarV, 22, 16},
                         Span{"YCbCr420ToBGR_709CSC_P3C3R", BlockC, ScalarC, 31, 24},
                         Span{"YCbCr420ToBGR_709HDTV_P3C4R", BlockD, ScalarD, 14, 8},
                         Span{"YUV420ToRGB_P3AC4R", BlockA, ScalarA, 14, 12},
                         Span{"YUV420ToRGB_P3AC4R", BlockA, ScalarA, 7, 4}}) {
    SCOPED_TRACE(std::string(sp.name) + " width " + std::to_string(sp.width));
    const Case& c = Find(sp.name);
    int found = 0;
    for (int y = 0; y < 256 && !found; y += 3)
      for (int cb = 0; cb < 256 && !found; cb += 5)
        for (int cr = 0; cr < 256 && !found; cr += 7) {
          const Px a = sp.block(y, cb, cr), b = sp.tail(y, cb, cr);
          if (a.c0 == b.c0 && a.c1 == b.c1 && a.c2 == b.c2) continue;
          found = 1;
          auto d = Solid(c, sp.width, y, cb, cr);
          const int r = Bgr(c.out) ? 2 : 0;
          for (int x = 0; x < (sp.width & ~1); ++x) {
            const Px want = x < sp.firstTail ? a : b;
            EXPECT_EQ(d->at(x, 1, r), want.c0) << x;
            EXPECT_EQ(d->at(x, 1, 1), want.c1) << x;
            EXPECT_EQ(d->at(x, 1, 2 - r), want.c2) << x;
          }
        }
    EXPECT_TRUE(found) << "no colour tells the two forms apart";
  }
}

// 37 x 9 through a P1 form: +35, 36 columns and 8 rows converted, column 36 and row 8 as they
// were; the alpha argument in every converted pixel.
TEST(Yuv420ToRgbValues, OddSizeLeavesLastRowAndColumn) {
  const Case& c = Find("YCbCr420ToBGR_P2C4R");
  Src420 s(true, false, 37, 9);
  std::mt19937 rng(1);
  s.Random(rng);
  Dst d(false, 4, 37, 9);
  d.planes[0]->Fill(0xEE);
  ASSERT_EQ(c.call(s, d, {37, 9}), kroStatusOddSize);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 37; ++x)
      for (int k = 0; k < 4; ++k) {
        const bool converted = x < 36 && y < 8;
        if (!converted) {
          ASSERT_EQ(d.at(x, y, k), 0xEE) << x << "," << y;
        } else if (k == 3) {
          ASSERT_EQ(d.at(x, y, k), kAlpha);
        }
      }
}

}  // namespace
}  // namespace kro
