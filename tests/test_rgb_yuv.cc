// RGB <-> YUV at full resolution: worked values, every export against its per-pixel formulas at
// every width, argument checks in order, canaries and guard pages.
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <tuple>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "color/rgb_yuv.h"
#include "support.h"

namespace kro {
namespace {

using test::GuardedBuffer;
using test::Plane;
using yuv::Px;

// An image in one of the family's layouts: packed with 3 or 4 bytes per pixel, or 3 or 4 planes
// sharing one step. Every plane has canary margins.
struct Image {
  bool planar;
  int channels, width, height;
  std::vector<std::unique_ptr<Plane>> planes;
  const uint8_t* cptrs[4] = {};
  uint8_t* ptrs[4] = {};

  Image(bool isPlanar, int ch, int w, int h, int pad = 0, int offset = 0)
      : planar(isPlanar), channels(ch), width(w), height(h) {
    const int rowBytes = planar ? w : w * ch;
    for (int p = 0; p < (planar ? ch : 1); ++p) {
      planes.push_back(std::make_unique<Plane>(rowBytes, h, rowBytes + pad, offset + 5 * p));
      ptrs[p] = planes.back()->data();
      cptrs[p] = ptrs[p];
    }
  }
  int forcedStep = -1;  // >= 0: the step passed instead of the planes' own
  int step() const { return forcedStep >= 0 ? forcedStep : planes[0]->step(); }
  uint8_t& at(int x, int y, int c) {
    return planar ? planes[c]->row(y)[x] : planes[0]->row(y)[x * channels + c];
  }
  void Random(std::mt19937& rng) {
    for (auto& p : planes) p->FillRandom(rng);
  }
  void Snapshot() {
    for (auto& p : planes) p->Snapshot();
  }
  bool Unchanged() const {
    for (auto& p : planes)
      if (!p->Unchanged()) return false;
    return true;
  }
  bool CanariesIntact() const {
    for (auto& p : planes)
      if (!p->CanariesIntact()) return false;
    return true;
  }
};

// How an export treats the destination's fourth component.
enum class Alpha { kNone, kUntouched, kFromSource, kFixed };
constexpr uint8_t kAlphaValue = 0x77;

using Call = std::function<kroStatus(Image& src, Image& dst, KroSize roi)>;

struct Export {
  std::string name;
  bool srcPlanar;
  int srcChannels;
  bool dstPlanar;
  int dstChannels;
  int block;  // 0: every pixel takes the tail formula
  yuv::PixelFn blockFn, tailFn;
  Alpha alpha;
  Call call;
};

#define PACKED_TO_PACKED(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs[0], s.step(), d.ptrs[0], d.step(), r); }
#define PACKED_TO_PLANES(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs[0], s.step(), d.ptrs, d.step(), r); }
#define PLANES_TO_PLANES(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs, s.step(), d.ptrs, d.step(), r); }
#define PLANES_TO_PACKED(fn) \
  [](Image& s, Image& d, KroSize r) { return fn(s.cptrs, s.step(), d.ptrs[0], d.step(), r); }

std::vector<Export> Exports() {
  using namespace yuv;
  return {
      {"RGBToYUV_C3R", false, 3, false, 3, 16, ForwardBlockA, ForwardTail1, Alpha::kNone,
       PACKED_TO_PACKED(kroiRGBToYUV_8u_C3R)},
      {"RGBToYUV_C3P3R", false, 3, true, 3, 8, ForwardBlockA, ForwardTail1, Alpha::kNone,
       PACKED_TO_PLANES(kroiRGBToYUV_8u_C3P3R)},
      {"RGBToYUV_P3R", true, 3, true, 3, 16, ForwardBlockA, ForwardTail3, Alpha::kNone,
       PLANES_TO_PLANES(kroiRGBToYUV_8u_P3R)},
      {"RGBToYUV_AC4R", false, 4, false, 4, 0, ForwardTail2, ForwardTail2, Alpha::kUntouched,
       PACKED_TO_PACKED(kroiRGBToYUV_8u_AC4R)},
      {"RGBToYUV_AC4P4R", false, 4, true, 4, 8, ForwardBlockB, ForwardTail2, Alpha::kFromSource,
       PACKED_TO_PLANES(kroiRGBToYUV_8u_AC4P4R)},
      {"YUVToRGB_C3R", false, 3, false, 3, 8, InverseBlockA, InverseTail1, Alpha::kNone,
       PACKED_TO_PACKED(kroiYUVToRGB_8u_C3R)},
      {"YUVToRGB_P3C3R", true, 3, false, 3, 16, InverseBlockB, InverseTail2, Alpha::kNone,
       PLANES_TO_PACKED(kroiYUVToRGB_8u_P3C3R)},
      {"YUVToRGB_P3R", true, 3, true, 3, 0, InverseTail2, InverseTail2, Alpha::kNone,
       PLANES_TO_PLANES(kroiYUVToRGB_8u_P3R)},
      {"YUVToRGB_AC4R", false, 4, false, 4, 0, InverseTail1, InverseTail1, Alpha::kUntouched,
       PACKED_TO_PACKED(kroiYUVToRGB_8u_AC4R)},
      {"YUVToRGB_C3C4R", false, 3, false, 4, 8, InverseBlockC, InverseTail3, Alpha::kFixed,
       [](Image& s, Image& d, KroSize r) {
         return kroiYUVToRGB_8u_C3C4R(s.cptrs[0], s.step(), d.ptrs[0], d.step(), r, kAlphaValue);
       }},
  };
}

void PrintTo(const Export& e, std::ostream* os) { *os << e.name; }

class RgbYuv : public testing::TestWithParam<Export> {};

// Runs the export on src into a fresh destination and checks every pixel against the formula
// its position calls for, the alpha rule, and the canaries.
void ExpectFormulas(const Export& e, Image& src, int pad, int offset) {
  Image dst(e.dstPlanar, e.dstChannels, src.width, src.height, pad, offset);
  ASSERT_EQ(e.call(src, dst, {src.width, src.height}), kroStatusOk);
  const int body = e.block ? (src.width & ~(e.block - 1)) : 0;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      const Px want = (x < body ? e.blockFn : e.tailFn)(src.at(x, y, 0), src.at(x, y, 1),
                                                         src.at(x, y, 2));
      const Px got = {dst.at(x, y, 0), dst.at(x, y, 1), dst.at(x, y, 2)};
      ASSERT_TRUE(want.c0 == got.c0 && want.c1 == got.c1 && want.c2 == got.c2)
          << "pixel " << x << "," << y << " of width " << src.width << ": got " << int(got.c0)
          << " " << int(got.c1) << " " << int(got.c2) << ", want " << int(want.c0) << " "
          << int(want.c1) << " " << int(want.c2);
      const int alpha = e.alpha == Alpha::kUntouched    ? test::kCanary
                        : e.alpha == Alpha::kFromSource ? src.at(x, y, 3)
                        : e.alpha == Alpha::kFixed      ? kAlphaValue
                                                        : -1;
      if (alpha >= 0) {
        ASSERT_EQ(dst.at(x, y, 3), alpha) << "alpha of pixel " << x;
      }
    }
  }
  ASSERT_TRUE(dst.CanariesIntact()) << "width " << src.width;
}

// Random data at every width 1..130 (each block and tail boundary), odd padded steps and
// unaligned starts: block pixels follow the block formula, the rest the tail formula.
TEST_P(RgbYuv, EveryPixelFollowsItsPositionsFormula) {
  const Export& e = GetParam();
  std::mt19937 rng(42);
  for (int width : test::AllWidths()) {
    for (auto [height, pad, offset] : {std::tuple{1, 0, 0}, {3, 7, 1}, {2, 64, 13}}) {
      Image src(e.srcPlanar, e.srcChannels, width, height, pad, offset);
      src.Random(rng);
      ExpectFormulas(e, src, pad + 3, offset + 2);
      if (HasFatalFailure()) return;
    }
  }
}

// A step of 0 names the same row for every row of the image: height 4 gives the one-row result.
TEST_P(RgbYuv, StepZeroRepeatsOneRow) {
  const Export& e = GetParam();
  std::mt19937 rng(3);
  Image src(e.srcPlanar, e.srcChannels, 37, 1), ref(e.dstPlanar, e.dstChannels, 37, 1);
  src.Random(rng);
  ASSERT_EQ(e.call(src, ref, {37, 1}), kroStatusOk);
  Image dst(e.dstPlanar, e.dstChannels, 37, 1);
  src.forcedStep = dst.forcedStep = 0;
  ASSERT_EQ(e.call(src, dst, {37, 4}), kroStatusOk);
  for (int p = 0; p < (e.dstPlanar ? e.dstChannels : 1); ++p) {
    EXPECT_EQ(dst.planes[p]->Region(), ref.planes[p]->Region());
  }
  EXPECT_TRUE(dst.CanariesIntact());
}

// Buffers that end exactly at an inaccessible page: no byte past the last pixel is touched.
TEST_P(RgbYuv, StaysInsideBuffersThatEndAtAPage) {
  const Export& e = GetParam();
  for (int width : {1, 7, 8, 9, 15, 16, 17, 33}) {
    const int srcBytes = e.srcPlanar ? width : width * e.srcChannels;
    const int dstBytes = e.dstPlanar ? width : width * e.dstChannels;
    std::vector<std::unique_ptr<GuardedBuffer>> bufs;
    Image src(e.srcPlanar, e.srcChannels, width, 1), dst(e.dstPlanar, e.dstChannels, width, 1);
    for (int p = 0; p < (e.srcPlanar ? e.srcChannels : 1); ++p) {
      bufs.push_back(std::make_unique<GuardedBuffer>(srcBytes));
      std::memset(bufs.back()->data(), 0x80 + p, srcBytes);
      src.cptrs[p] = bufs.back()->data();
    }
    for (int p = 0; p < (e.dstPlanar ? e.dstChannels : 1); ++p) {
      bufs.push_back(std::make_unique<GuardedBuffer>(dstBytes));
      dst.ptrs[p] = bufs.back()->data();
    }
    EXPECT_EQ(e.call(src, dst, {width, 1}), kroStatusOk) << width;
  }
}

// Statuses in each export's order: pointers first, then the size, then plane pointers; nothing
// is written on any error.
TEST_P(RgbYuv, ChecksInOrderAndWritesNothingOnError) {
  const Export& e = GetParam();
  Image src(e.srcPlanar, e.srcChannels, 8, 2), dst(e.dstPlanar, e.dstChannels, 8, 2);
  dst.Snapshot();
  auto expect = [&](kroStatus want, KroSize roi, const char* what) {
    EXPECT_EQ(e.call(src, dst, roi), want) << what;
    EXPECT_TRUE(dst.Unchanged()) << what;
  };
  expect(kroStatusBadSize, {0, 2}, "width 0");
  expect(kroStatusBadSize, {8, -1}, "height -1");
  // A null image (packed) before the size.
  if (!e.srcPlanar) {
    const uint8_t* keep = src.cptrs[0];
    src.cptrs[0] = nullptr;
    expect(kroStatusNullPointer, {0, 0}, "null source and bad size");
    src.cptrs[0] = keep;
  }
  if (!e.dstPlanar) {
    uint8_t* keep = dst.ptrs[0];
    dst.ptrs[0] = nullptr;
    expect(kroStatusNullPointer, {0, 0}, "null destination and bad size");
    dst.ptrs[0] = keep;
  }
  // Plane pointers are tested after the size (the fourth destination plane not at all).
  for (int p = 0; p < 3; ++p) {
    if (e.srcPlanar) {
      const uint8_t* keep = src.cptrs[p];
      src.cptrs[p] = nullptr;
      expect(kroStatusBadSize, {8, 0}, "null source plane and bad size");
      expect(kroStatusNullPointer, {8, 2}, "null source plane");
      src.cptrs[p] = keep;
    }
    if (e.dstPlanar) {
      uint8_t* keep = dst.ptrs[p];
      dst.ptrs[p] = nullptr;
      expect(kroStatusBadSize, {-8, 2}, "null destination plane and bad size");
      expect(kroStatusNullPointer, {8, 2}, "null destination plane");
      dst.ptrs[p] = keep;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AllExports, RgbYuv, testing::ValuesIn(Exports()),
                         [](const auto& info) { return info.param.name; });

// Null plane arrays come before the size.
TEST(RgbYuvChecks, NullPlaneArraysBeforeSize) {
  uint8_t buf[64] = {};
  uint8_t* planes[4] = {buf, buf, buf, buf};
  const uint8_t* cplanes[3] = {buf, buf, buf};
  const KroSize bad = {0, 0};
  EXPECT_EQ(kroiRGBToYUV_8u_C3P3R(buf, 3, nullptr, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiRGBToYUV_8u_P3R(nullptr, 1, planes, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiRGBToYUV_8u_P3R(cplanes, 1, nullptr, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiRGBToYUV_8u_AC4P4R(buf, 4, nullptr, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYUVToRGB_8u_P3C3R(nullptr, 1, buf, 3, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYUVToRGB_8u_P3R(nullptr, 1, planes, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYUVToRGB_8u_P3R(cplanes, 1, nullptr, 1, bad), kroStatusNullPointer);
}

// ---- Worked values --------------------------------------------------------------------------

// A row of `width` copies of one colour through an export; returns the destination image.
Image RunSolid(const Export& e, int width, int a, int b, int c) {
  Image src(e.srcPlanar, e.srcChannels, width, 1);
  for (int x = 0; x < width; ++x) {
    src.at(x, 0, 0) = static_cast<uint8_t>(a);
    src.at(x, 0, 1) = static_cast<uint8_t>(b);
    src.at(x, 0, 2) = static_cast<uint8_t>(c);
    if (e.srcChannels == 4) src.at(x, 0, 3) = 0xEE;
  }
  Image dst(e.dstPlanar, e.dstChannels, width, 1);
  EXPECT_EQ(e.call(src, dst, {width, 1}), kroStatusOk);
  return dst;
}

const Export& Find(const char* name) {
  static const std::vector<Export> all = Exports();
  for (const Export& e : all)
    if (e.name == name) return e;
  throw std::runtime_error(name);
}

void ExpectPixel(Image& img, int x, int a, int b, int c, const char* what) {
  EXPECT_EQ(img.at(x, 0, 0), a) << what << " pixel " << x;
  EXPECT_EQ(img.at(x, 0, 1), b) << what << " pixel " << x;
  EXPECT_EQ(img.at(x, 0, 2), c) << what << " pixel " << x;
}

TEST(RgbYuvValues, WhiteAcrossBlockAndTail) {
  Image c3 = RunSolid(Find("RGBToYUV_C3R"), 17, 255, 255, 255);
  for (int x = 0; x < 16; ++x) ExpectPixel(c3, x, 254, 127, 127, "C3R block");
  ExpectPixel(c3, 16, 255, 128, 128, "C3R tail");

  Image ac4 = RunSolid(Find("RGBToYUV_AC4R"), 17, 255, 255, 255);
  for (int x = 0; x < 17; ++x) {
    ExpectPixel(ac4, x, 255, 128, 128, "AC4R");
    EXPECT_EQ(ac4.at(x, 0, 3), test::kCanary);
  }

  Image p3 = RunSolid(Find("RGBToYUV_P3R"), 17, 255, 255, 255);
  for (int x = 0; x < 16; ++x) ExpectPixel(p3, x, 254, 127, 127, "P3R block");
  ExpectPixel(p3, 16, 254, 128, 128, "P3R tail");

  Image p4 = RunSolid(Find("RGBToYUV_AC4P4R"), 9, 255, 255, 255);
  for (int x = 0; x < 9; ++x) ExpectPixel(p4, x, 255, 128, 128, "AC4P4R white");
  Image p4black = RunSolid(Find("RGBToYUV_AC4P4R"), 9, 0, 0, 0);
  for (int x = 0; x < 8; ++x) ExpectPixel(p4black, x, 0, 127, 127, "AC4P4R black block");
  ExpectPixel(p4black, 8, 0, 128, 128, "AC4P4R black tail");
  EXPECT_EQ(p4black.at(8, 0, 3), 0xEE);

  // Widths below the block run the tail only.
  Image short3 = RunSolid(Find("RGBToYUV_C3P3R"), 7, 255, 255, 255);
  ExpectPixel(short3, 0, 255, 128, 128, "C3P3R width 7");
  Image short16 = RunSolid(Find("RGBToYUV_C3R"), 15, 255, 255, 255);
  ExpectPixel(short16, 14, 255, 128, 128, "C3R width 15");
}

TEST(RgbYuvValues, GreenAndRed) {
  EXPECT_EQ(yuv::ForwardBlockA(0, 255, 0).c0, 149);
  EXPECT_EQ(yuv::ForwardTail1(0, 255, 0).c0, 149);
  EXPECT_EQ(yuv::ForwardTail2(0, 255, 0).c0, 150);
  EXPECT_EQ(yuv::ForwardBlockB(0, 255, 0).c0, 150);
  // V of pure red clamps from 284 on every path.
  for (yuv::PixelFn f : {yuv::ForwardBlockA, yuv::ForwardBlockB, yuv::ForwardTail1,
                         yuv::ForwardTail2, yuv::ForwardTail3}) {
    EXPECT_EQ(f(255, 0, 0).c2, 255);
  }
  Image c3 = RunSolid(Find("RGBToYUV_C3R"), 17, 0, 255, 0);
  EXPECT_EQ(c3.at(0, 0, 0), 149);
  EXPECT_EQ(c3.at(16, 0, 0), 149);
}

TEST(RgbYuvValues, InverseBlockAndTailDiffer) {
  Image c3 = RunSolid(Find("YUVToRGB_C3R"), 9, 29, 239, 102);
  EXPECT_EQ(c3.at(0, 0, 2), 254);  // block
  EXPECT_EQ(c3.at(8, 0, 2), 255);  // tail
  Image c4 = RunSolid(Find("YUVToRGB_C3C4R"), 9, 150, 54, 0);
  EXPECT_EQ(c4.at(0, 0, 1), 254);
  EXPECT_EQ(c4.at(0, 0, 3), kAlphaValue);
  Image c3g = RunSolid(Find("YUVToRGB_C3R"), 9, 150, 54, 0);
  EXPECT_EQ(c3g.at(0, 0, 1), 253);
  EXPECT_EQ(c3g.at(8, 0, 1), 253);
}

// The planar forward kernel writes Y, then U, then V over the whole row: with the destination's
// Y plane on the source's G plane, U and V see the new Y where G was.
TEST(RgbYuvValues, PlanarPassesSeeEarlierPlanes) {
  const int width = 20;
  std::vector<uint8_t> r(width, 200), g(width, 30), b(width, 90), u(width), v(width);
  const uint8_t* src[3] = {r.data(), g.data(), b.data()};
  uint8_t* dst[3] = {g.data(), u.data(), v.data()};
  ASSERT_EQ(kroiRGBToYUV_8u_P3R(src, width, dst, width, {width, 1}), kroStatusOk);
  for (int x = 0; x < width; ++x) {
    const bool block = x < 16;
    const yuv::PixelFn f = block ? yuv::ForwardBlockA : yuv::ForwardTail3;
    const int y = f(200, 30, 90).c0;
    EXPECT_EQ(g[x], y);
    EXPECT_EQ(u[x], f(200, y, 90).c1) << x;
    EXPECT_EQ(v[x], f(200, y, 90).c2) << x;
  }
}

}  // namespace
}  // namespace kro
