// RGB <-> YUV at full resolution: worked values, every export against its per-pixel formulas at
// every width, argument checks in order, canaries and guard pages.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "color/rgb_yuv.h"
#include "matrix_family.h"

namespace kro {
namespace {

using namespace kro::test;
using yuv::Px;

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

INSTANTIATE_TEST_SUITE_P(RgbYuv, MatrixFamily, testing::ValuesIn(Exports()),
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

const Export& Find(const char* name) {
  static const std::vector<Export> all = Exports();
  return test::Find(all, name);
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

// The bytes of every export on one seeded image, as recorded from a build whose vector bodies
// matched their scalar twins at every width; the portable build must give the same.
TEST(RgbYuvValues, RecordedOutputs) {
  const std::vector<Recorded> recorded = {
      {"RGBToYUV_C3R", 0xBD9B77EFu},    {"RGBToYUV_C3P3R", 0x039A9E2Fu},
      {"RGBToYUV_P3R", 0x7A9DA16Au},    {"RGBToYUV_AC4R", 0x3BF2874Eu},
      {"RGBToYUV_AC4P4R", 0xADAFAF90u}, {"YUVToRGB_C3R", 0x55634A6Cu},
      {"YUVToRGB_P3C3R", 0x7ABB75ABu},  {"YUVToRGB_P3R", 0x037A5D13u},
      {"YUVToRGB_AC4R", 0x491DC01Bu},   {"YUVToRGB_C3C4R", 0xC9E4F4DBu},
  };
  ExpectRecordedOutputs(Exports(), recorded);
}

}  // namespace
}  // namespace kro
