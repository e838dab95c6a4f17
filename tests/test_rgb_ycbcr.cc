// RGB <-> YCbCr at full resolution: worked values of every form, every export against its
// per-position formulas at every width, checks in order, canaries and guard pages.
#include "color/rgb_ycbcr.h"
#include "matrix_family.h"

namespace kro {
namespace {

using namespace kro::test;
using namespace kro::ycbcr;

#define PLANES_TO_C4(fn)                                               \
  [](Image& s, Image& d, KroSize r) {                                  \
    return fn(s.cptrs, s.step(), d.ptrs[0], d.step(), r, kAlphaValue); \
  }

std::vector<Export> Exports() {
  constexpr bool kBackwards = true, kPlanesFirst = true;
  return {
      {"RGBToYCbCr_C3R", false, 3, false, 3, 16, ForwardB, ForwardTail, Alpha::kNone,
       PACKED_TO_PACKED(kroiRGBToYCbCr_8u_C3R)},
      {"RGBToYCbCr_C3P3R", false, 3, true, 3, 8, ForwardA, ForwardTail, Alpha::kNone,
       PACKED_TO_PLANES(kroiRGBToYCbCr_8u_C3P3R), false, kPlanesFirst},
      {"RGBToYCbCr_AC4P3R", false, 4, true, 3, 8, ForwardA, ForwardTail, Alpha::kNone,
       PACKED_TO_PLANES(kroiRGBToYCbCr_8u_AC4P3R), false, kPlanesFirst},
      {"RGBToYCbCr_AC4R", false, 4, false, 4, 0, ForwardTail, ForwardTail, Alpha::kUntouched,
       PACKED_TO_PACKED(kroiRGBToYCbCr_8u_AC4R)},
      {"RGBToYCbCr_P3R", true, 3, true, 3, 8, ForwardA, ForwardTail, Alpha::kNone,
       PLANES_TO_PLANES(kroiRGBToYCbCr_8u_P3R)},
      {"YCbCrToRGB_C3R", false, 3, false, 3, 8, InverseA, InverseT2, Alpha::kNone,
       PACKED_TO_PACKED(kroiYCbCrToRGB_8u_C3R)},
      {"YCbCrToRGB_P3C3R", true, 3, false, 3, 8, InverseA, InverseT2, Alpha::kNone,
       PLANES_TO_PACKED(kroiYCbCrToRGB_8u_P3C3R), false, kPlanesFirst},
      {"YCbCrToBGR_P3C3R", true, 3, false, 3, 8, InverseA, InverseT2, Alpha::kNone,
       PLANES_TO_PACKED(kroiYCbCrToBGR_8u_P3C3R), kBackwards, kPlanesFirst},
      {"YCbCrToRGB_P3C4R", true, 3, false, 4, 8, InverseB, InverseT2, Alpha::kFixed,
       PLANES_TO_C4(kroiYCbCrToRGB_8u_P3C4R)},
      {"YCbCrToBGR_P3C4R", true, 3, false, 4, 0, InverseB, InverseB, Alpha::kFixed,
       PLANES_TO_C4(kroiYCbCrToBGR_8u_P3C4R), kBackwards, kPlanesFirst},
      {"YCbCrToRGB_P3R", true, 3, true, 3, 4, InverseC, InverseT1, Alpha::kNone,
       PLANES_TO_PLANES(kroiYCbCrToRGB_8u_P3R)},
      {"YCbCrToRGB_AC4R", false, 4, false, 4, 0, InverseT0, InverseT0, Alpha::kUntouched,
       PACKED_TO_PACKED(kroiYCbCrToRGB_8u_AC4R)},
      {"YCbCrToBGR_709CSC_P3C3R", true, 3, false, 3, 0, Inverse709, Inverse709, Alpha::kNone,
       PLANES_TO_PACKED(kroiYCbCrToBGR_709CSC_8u_P3C3R), kBackwards, kPlanesFirst},
      {"YCbCrToBGR_709CSC_P3C4R", true, 3, false, 4, 0, Inverse709, Inverse709, Alpha::kFixed,
       PLANES_TO_C4(kroiYCbCrToBGR_709CSC_8u_P3C4R), kBackwards, kPlanesFirst},
  };
}

INSTANTIATE_TEST_SUITE_P(RgbYcbcr, MatrixFamily, testing::ValuesIn(Exports()),
                         [](const auto& info) { return info.param.name; });

const Export& Find(const char* name) {
  static const std::vector<Export> all = Exports();
  return test::Find(all, name);
}

void ExpectPx(Px got, int a, int b, int c, const char* what) {
  EXPECT_EQ(got.c0, a) << what;
  EXPECT_EQ(got.c1, b) << what;
  EXPECT_EQ(got.c2, c) << what;
}

TEST(RgbYcbcrValues, ForwardForms) {
  for (color::PixelFn f : {ForwardA, ForwardB, ForwardTail}) {
    ExpectPx(f(255, 255, 255), 235, 128, 128, "white");
    ExpectPx(f(0, 0, 0), 16, 128, 128, "black");
  }
  ExpectPx(ForwardA(255, 0, 0), 82, 90, 240, "red F-A");
  ExpectPx(ForwardTail(255, 0, 0), 82, 90, 240, "red F-T");
  ExpectPx(ForwardB(255, 0, 0), 81, 90, 239, "red F-B");
  Image red = RunSolid(Find("RGBToYCbCr_C3R"), 17, 255, 0, 0);
  for (int x = 0; x < 16; ++x) ExpectPixel(red, x, 81, 90, 239, "C3R block");
  ExpectPixel(red, 16, 82, 90, 240, "C3R tail");
}

TEST(RgbYcbcrValues, InverseForms) {
  for (color::PixelFn f :
       {InverseA, InverseB, InverseC, Inverse709, InverseT0, InverseT1, InverseT2}) {
    ExpectPx(f(16, 128, 128), 0, 0, 0, "black");
  }
  for (color::PixelFn f : {InverseA, InverseB, InverseT1, InverseT2}) {
    ExpectPx(f(235, 128, 128), 255, 255, 255, "white, rounded forms");
  }
  for (color::PixelFn f : {InverseC, InverseT0}) {
    ExpectPx(f(235, 128, 128), 254, 254, 254, "white, forms without rounding");
  }
  // Out of range input saturates channel by channel, never wraps.
  for (color::PixelFn f : {InverseA, InverseB, InverseC, InverseT0, InverseT1, InverseT2}) {
    const Px p = f(0, 0, 255);
    EXPECT_NEAR(p.c0, 184, 1);  // 1.164 * -16 + 1.596 * 127 (1.793 in the 709 set: 209)
    EXPECT_EQ(p.c1, 0);         // negative: clamped, not wrapped
    EXPECT_EQ(p.c2, 0);
  }
}

TEST(RgbYcbcrValues, Inverse709Saturates) {
  const Px p = Inverse709(0, 0, 255);
  EXPECT_NEAR(p.c0, 209, 1);
  EXPECT_EQ(p.c1, 0);
  EXPECT_EQ(p.c2, 0);
}

// Width 13 through the planar inverse: an 8-pixel and a 4-pixel block of I-C, then pixel 12
// through I-T1; white shows the difference (254 against 255).
TEST(RgbYcbcrValues, PlanarInverseBlocksOfFour) {
  Image img = RunSolid(Find("YCbCrToRGB_P3R"), 13, 235, 128, 128);
  for (int x = 0; x < 12; ++x) ExpectPixel(img, x, 254, 254, 254, "I-C block");
  ExpectPixel(img, 12, 255, 255, 255, "I-T1 tail");
}

// Width 25 through the BGR C4 form: every pixel takes I-B, whatever its column. Width 9
// through the RGB C4 form: I-B for eight pixels, I-T2 for the ninth.
TEST(RgbYcbcrValues, C4FormsByColumn) {
  std::mt19937 rng(5);
  const int y = 77, cb = 201, cr = 33;
  const Px want = InverseB(y, cb, cr);
  Image bgr = RunSolid(Find("YCbCrToBGR_P3C4R"), 25, y, cb, cr);
  for (int x = 0; x < 25; ++x) {
    ExpectPixel(bgr, x, want.c2, want.c1, want.c0, "BGR C4");
    EXPECT_EQ(bgr.at(x, 0, 3), kAlphaValue);
  }
  Image rgb = RunSolid(Find("YCbCrToRGB_P3C4R"), 9, 235, 128, 128);
  ExpectPixel(rgb, 8, 255, 255, 255, "I-T2");
  // Find a colour on which I-B and I-T2 differ, and check that the ninth pixel shows it.
  for (int i = 0; i < 10000; ++i) {
    const int a = rng() & 255, b = rng() & 255, c = rng() & 255;
    const Px blockPx = InverseB(a, b, c), tailPx = InverseT2(a, b, c);
    if (blockPx.c0 == tailPx.c0 && blockPx.c1 == tailPx.c1 && blockPx.c2 == tailPx.c2) continue;
    Image img = RunSolid(Find("YCbCrToRGB_P3C4R"), 9, a, b, c);
    ExpectPixel(img, 0, blockPx.c0, blockPx.c1, blockPx.c2, "block");
    ExpectPixel(img, 8, tailPx.c0, tailPx.c1, tailPx.c2, "tail");
    return;
  }
  ADD_FAILURE() << "no colour tells I-B from I-T2";
}

// The aligned and unaligned destinations of the packed forward form give the same bytes: an
// aligned destination with an aligned step, an unaligned destination, and an aligned
// destination whose step is 8 more than a multiple of 16 (its second row is unaligned).
TEST(RgbYcbcrValues, AlignedPairAgrees) {
  std::mt19937 rng(11);
  const Export& e = Find("RGBToYCbCr_C3R");
  for (int width : {16, 17, 40}) {
    Image src(false, 3, width, 4);
    src.Random(rng);
    const int row = 3 * width, toVector = (16 - row % 16) % 16;
    Image aligned(false, 3, width, 4, toVector, 0), shifted(false, 3, width, 4, toVector, 8),
        oddStep(false, 3, width, 4, toVector + 8, 0);
    ASSERT_EQ(aligned.step() % 16, 0);
    ASSERT_EQ(oddStep.step() % 16, 8);
    for (Image* dst : {&aligned, &shifted, &oddStep}) {
      ASSERT_EQ(e.call(src, *dst, {width, 4}), kroStatusOk);
      EXPECT_TRUE(dst->CanariesIntact());
    }
    EXPECT_EQ(aligned.planes[0]->Region(), shifted.planes[0]->Region());
    EXPECT_EQ(aligned.planes[0]->Region(), oddStep.planes[0]->Region());
    Image red = RunSolid(e, width, 255, 0, 0);
    EXPECT_EQ(red.at(0, 0, 0), 81);
  }
}

// A null plane array is caught with the top-level pointers, before the size; the AC4P3R form
// tests only the three planes inside its array, so a null array is read, not reported.
TEST(RgbYcbcrChecks, NullPlaneArraysBeforeSize) {
  uint8_t buf[64] = {};
  uint8_t* planes[3] = {buf, buf, buf};
  const uint8_t* cplanes[3] = {buf, buf, buf};
  const KroSize bad = {0, 0};
  EXPECT_EQ(kroiRGBToYCbCr_8u_C3P3R(buf, 3, nullptr, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiRGBToYCbCr_8u_P3R(nullptr, 1, planes, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiRGBToYCbCr_8u_P3R(cplanes, 1, nullptr, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToRGB_8u_P3R(nullptr, 1, planes, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToRGB_8u_P3R(cplanes, 1, nullptr, 1, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToRGB_8u_P3C4R(nullptr, 1, buf, 4, bad, 0), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToRGB_8u_P3C3R(nullptr, 1, buf, 3, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToBGR_8u_P3C3R(nullptr, 1, buf, 3, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToBGR_8u_P3C4R(nullptr, 1, buf, 4, bad, 0), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToBGR_709CSC_8u_P3C3R(nullptr, 1, buf, 3, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiYCbCrToBGR_709CSC_8u_P3C4R(nullptr, 1, buf, 4, bad, 0), kroStatusNullPointer);
  // With a null source as well, the source comes first and is what is reported.
  EXPECT_EQ(kroiRGBToYCbCr_8u_AC4P3R(nullptr, 4, nullptr, 1, bad), kroStatusNullPointer);
}

TEST(RgbYcbcrChecksDeathTest, AC4P3RReadsItsPlaneArrayUntested) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  uint8_t buf[16] = {};
  EXPECT_DEATH(kroiRGBToYCbCr_8u_AC4P3R(buf, 4, nullptr, 1, {1, 1}), "");
}

// The bytes of every export on one seeded image, as recorded from a build whose vector bodies
// matched their scalar twins at every width; the portable build must give the same.
TEST(RgbYcbcrValues, RecordedOutputs) {
  const std::vector<Recorded> recorded = {
      {"RGBToYCbCr_C3R", 0x51D4BBF7u},          {"RGBToYCbCr_C3P3R", 0x73DEDF1Eu},
      {"RGBToYCbCr_AC4P3R", 0x984E4673u},       {"RGBToYCbCr_AC4R", 0x175B7C9Au},
      {"RGBToYCbCr_P3R", 0x010DDD71u},          {"YCbCrToRGB_C3R", 0xFE5791E7u},
      {"YCbCrToRGB_P3C3R", 0x30A0E178u},        {"YCbCrToBGR_P3C3R", 0xA4635BA0u},
      {"YCbCrToRGB_P3C4R", 0x7C27B0D6u},        {"YCbCrToBGR_P3C4R", 0xFA07B122u},
      {"YCbCrToRGB_P3R", 0x605AE261u},          {"YCbCrToRGB_AC4R", 0x1D350F3Eu},
      {"YCbCrToBGR_709CSC_P3C3R", 0x2E772C6Fu}, {"YCbCrToBGR_709CSC_P3C4R", 0x6B1202CCu},
  };
  ExpectRecordedOutputs(Exports(), recorded);
}

}  // namespace
}  // namespace kro
