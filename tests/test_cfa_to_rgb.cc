// Bayer to RGB, 8u and 16u: every pixel against a plain per-pixel model of the zones (corners,
// edges, second frame, interior with its gradient test), windows anywhere on the image, the
// vector interior against its scalar twin, guard pages, and the checks in their order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "sensor/cfa_to_rgb.h"
#include "support.h"

namespace kro {
namespace {

using test::GuardedBuffer;
using test::Plane;

// Colour letters of the four grid codes, rows 0 and 1.
const char* const kGrids[4][2] = {{"BG", "GR"}, {"RG", "GB"}, {"GB", "RG"}, {"GR", "BG"}};

int Channel(int grid, int x, int y) {
  const char c = kGrids[grid][y % 2][x % 2];
  return c == 'R' ? 0 : c == 'G' ? 1 : 2;
}

// The model: an image of w x h samples, row-major without padding.
template <class T>
std::array<uint32_t, 3> Model(const std::vector<T>& im, int w, int h, int grid, int x, int y) {
  auto s = [&](int dx, int dy) -> uint32_t {
    EXPECT_TRUE(x + dx >= 0 && x + dx < w && y + dy >= 0 && y + dy < h);
    return im[(y + dy) * w + x + dx];
  };
  const int site = Channel(grid, x, y), other = 2 - site;
  const int rowCh = Channel(grid, x + 1, y), colCh = Channel(grid, x, y + 1);
  std::array<uint32_t, 3> v{};
  v[site] = s(0, 0);
  const bool onX = x == 0 || x == w - 1, onY = y == 0 || y == h - 1;
  const int ix = x == 0 ? 1 : -1, iy = y == 0 ? 1 : -1;
  if (onX && onY) {  // corner
    if (site == 1) {
      v[rowCh] = s(ix, 0), v[colCh] = s(0, iy);
    } else {
      v[1] = (s(ix, 0) + s(0, iy) + 1) / 2, v[other] = s(ix, iy);
    }
  } else if (onY) {  // top or bottom edge
    if (site == 1) {
      v[rowCh] = (s(-1, 0) + s(1, 0) + 1) / 2, v[colCh] = s(0, iy);
    } else {
      v[1] = (s(-1, 0) + s(1, 0) + 2 * s(0, iy) + 2) / 4;
      v[other] = (s(-1, iy) + s(1, iy) + 1) / 2;
    }
  } else if (onX) {  // left or right edge
    if (site == 1) {
      v[colCh] = (s(0, -1) + s(0, 1) + 1) / 2, v[rowCh] = s(ix, 0);
    } else {
      v[1] = (s(0, -1) + s(0, 1) + 2 * s(ix, 0) + 2) / 4;
      v[other] = (s(ix, -1) + s(ix, 1) + 1) / 2;
    }
  } else if (site == 1) {
    v[rowCh] = (s(-1, 0) + s(1, 0) + 1) / 2, v[colCh] = (s(0, -1) + s(0, 1) + 1) / 2;
  } else {
    v[other] = (s(-1, -1) + s(1, -1) + s(-1, 1) + s(1, 1) + 2) / 4;
    const uint32_t m4 = (s(0, -1) + s(-1, 0) + s(1, 0) + s(0, 1) + 2) / 4;
    v[1] = m4;
    if (x >= 2 && x <= w - 3 && y >= 2 && y <= h - 3) {
      const int dv = std::abs(int(s(0, -2)) - int(s(0, 2))),
                dh = std::abs(int(s(-2, 0)) - int(s(2, 0)));
      if (dv > dh) v[1] = (s(-1, 0) + s(1, 0) + 1) / 2;
      if (dh > dv) v[1] = (s(0, -1) + s(0, 1) + 1) / 2;
    }
  }
  return v;
}

template <class T>
std::vector<T> Random(int n, std::mt19937& rng, uint32_t range) {
  std::vector<T> v(n);
  for (auto& e : v) e = static_cast<T>(rng() % range);
  return v;
}

template <class T>
kroStatus Run(const T* src, KroRect r, KroSize size, int srcStep, T* dst, int dstStep, int grid,
              int interpolation = 0) {
  if constexpr (sizeof(T) == 1) {
    return kroiCFAToRGB_8u_C1C3R(src, r, size, srcStep, dst, dstStep, grid, interpolation);
  } else {
    return kroiCFAToRGB_16u_C1C3R(src, r, size, srcStep, dst, dstStep, grid, interpolation);
  }
}

// Converts window r of a w x h image into a canaried plane of exactly the trimmed window and
// compares every pixel with the model.
template <class T>
void CheckWindow(const std::vector<T>& im, int w, int h, int grid, KroRect r) {
  const int tw = std::max(0, std::min(r.x + r.width, w) - r.x);
  const int th = std::max(0, std::min(r.y + r.height, h) - r.y);
  const int px = sizeof(T) * 3;
  Plane dst(std::max(tw, 1) * px, std::max(th, 1), std::max(tw, 1) * px + 2 * px, 2 * r.x);
  if (tw == 0 || th == 0) dst.Snapshot();
  ASSERT_EQ(Run(im.data(), r, KroSize{w, h}, int(w * sizeof(T)), reinterpret_cast<T*>(dst.data()),
                dst.step(), grid),
            kroStatusOk);
  if (tw == 0 || th == 0) {
    EXPECT_TRUE(dst.Unchanged()) << "nothing is converted";
    return;
  }
  EXPECT_TRUE(dst.CanariesIntact()) << w << "x" << h << " grid " << grid << " at " << r.x;
  for (int y = 0; y < th; ++y)
    for (int x = 0; x < tw; ++x) {
      const T* o = reinterpret_cast<const T*>(dst.row(y)) + 3 * x;
      const auto m = Model(im, w, h, grid, r.x + x, r.y + y);
      ASSERT_EQ((std::array<uint32_t, 3>{o[0], o[1], o[2]}), m)
          << w << "x" << h << " grid " << grid << " pixel " << r.x + x << "," << r.y + y;
    }
}

template <class T>
class CfaToRgb : public ::testing::Test {};
using Depths = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(CfaToRgb, Depths);

// A 2 x 2 image is four corners: B 10, G 20 and 30, R 40 in grid 0.
TEST(CfaToRgbExample, TwoByTwoCorners) {
  const uint8_t src[4] = {10, 20, 30, 40};
  uint8_t dst[12];
  ASSERT_EQ(kroiCFAToRGB_8u_C1C3R(src, {0, 0, 2, 2}, {2, 2}, 2, dst, 6, 0, 0), kroStatusOk);
  const uint8_t want[12] = {40, 25, 10, 40, 20, 10, 40, 30, 10, 40, 25, 10};
  EXPECT_EQ(0, std::memcmp(dst, want, 12));
}

// Whole images of every small shape (no interior, frame lines meeting) and larger ones, in every
// grid; full-range data and data of four levels, which makes gradient ties common.
TYPED_TEST(CfaToRgb, WholeImagesMatchModel) {
  std::mt19937 rng(7);
  const int sizes[][2] = {{2, 2}, {2, 3}, {3, 2}, {3, 3},  {2, 7},   {7, 2}, {4, 4},
                          {5, 5}, {6, 5}, {9, 8}, {23, 6}, {40, 11}, {37, 9}};
  for (uint32_t range : {1u << (8 * sizeof(TypeParam)), 4u})
    for (const auto& [w, h] : sizes)
      for (int grid = 0; grid < 4; ++grid)
        CheckWindow(Random<TypeParam>(w * h, rng, range), w, h, grid, KroRect{0, 0, w, h});
  // Every width up to past four vector blocks of the interior and of the second frame's rows.
  for (int w = 2; w <= 70; ++w)
    for (int h : {5, 6})
      CheckWindow(Random<TypeParam>(w * h, rng, w % 3 ? 256u : 4u), w, h, w & 3,
                  KroRect{0, 0, w, h});
}

// Windows at odd and even origins, reaching past the image (trimmed), empty, and starting at the
// image's size (nothing written).
TYPED_TEST(CfaToRgb, WindowsAnywhere) {
  std::mt19937 rng(11);
  const int w = 41, h = 13;
  const auto im = Random<TypeParam>(w * h, rng, 1u << (8 * sizeof(TypeParam)));
  const KroRect rects[] = {{1, 0, 40, 13}, {1, 1, 7, 5},   {3, 2, 30, 9},  {2, 3, 100, 100},
                           {38, 10, 9, 9}, {39, 12, 5, 5}, {0, 12, 41, 1}, {40, 0, 1, 13},
                           {5, 5, 0, 3},   {5, 5, 3, -2},  {41, 0, 4, 4},  {0, 13, 4, 4}};
  for (int grid = 0; grid < 4; ++grid)
    for (const KroRect& r : rects) CheckWindow(im, w, h, grid, r);
}

// The window at x = 1 gives, pixel by pixel, the same columns as the window at x = 0 (called
// with another interpolation value, which changes nothing).
TYPED_TEST(CfaToRgb, WindowOriginDoesNotChangePixels) {
  std::mt19937 rng(3);
  const int w = 35, h = 9;
  const auto im = Random<TypeParam>(w * h, rng, 1u << (8 * sizeof(TypeParam)));
  std::vector<TypeParam> a(w * h * 3), b(w * h * 3);
  const int step = int(sizeof(TypeParam)) * 3 * w;
  ASSERT_EQ(Run(im.data(), {0, 0, w, h}, {w, h}, w * int(sizeof(TypeParam)), a.data(), step, 1),
            kroStatusOk);
  ASSERT_EQ(Run(im.data(), {1, 0, w, h}, {w, h}, w * int(sizeof(TypeParam)), b.data(), step, 1, 7),
            kroStatusOk);
  for (int y = 0; y < h; ++y)
    for (int x = 1; x < w; ++x)
      for (int c = 0; c < 3; ++c)
        ASSERT_EQ(a[(y * w + x) * 3 + c], b[(y * w + x - 1) * 3 + c]) << x << "," << y;
}

// Red and blue sites flat, green random: both gradients are zero at every red and blue site of
// the interior, so green there is the mean of its four neighbours.
TYPED_TEST(CfaToRgb, FlatColourSitesTakeMeanOfFour) {
  std::mt19937 rng(5);
  const int w = 53, h = 8;
  for (int grid = 0; grid < 4; ++grid) {
    auto im = Random<TypeParam>(w * h, rng, 1u << (8 * sizeof(TypeParam)));
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if (Channel(grid, x, y) != 1) im[y * w + x] = Channel(grid, x, y) == 0 ? 200 : 9;
    std::vector<TypeParam> out(w * h * 3);
    ASSERT_EQ(Run(im.data(), {0, 0, w, h}, {w, h}, w * int(sizeof(TypeParam)), out.data(),
                  w * 3 * int(sizeof(TypeParam)), grid, -1),
              kroStatusOk);
    for (int y = 2; y < h - 2; ++y)
      for (int x = 2; x < w - 2; ++x) {
        if (Channel(grid, x, y) == 1) continue;
        const int i = y * w + x;
        const uint32_t m4 = (im[i - w] + im[i - 1] + im[i + 1] + im[i + w] + 2u) >> 2;
        ASSERT_EQ(out[3 * i + 1], m4) << grid << ": " << x << "," << y;
      }
  }
}

#if KRO_SIMD
// The vector interior against the scalar twin: interior widths 1..130 from both column
// parities, one to five rows from both row parities, padded odd steps, every grid.
TYPED_TEST(CfaToRgb, VectorInteriorMatchesScalarTwin) {
  using T = TypeParam;
  std::mt19937 rng(13);
  for (int n : test::AllWidths())
    for (int rows = 1; rows <= 5; ++rows)
      for (int origin = 0; origin < 4; ++origin) {
        const int x0 = 2 + (origin & 1), y0 = 2 + (origin >> 1), grid = (n + rows) & 3;
        const int w = x0 + n + 2 + (n & 1), h = y0 + rows + 2, step = w + 3;
        const auto im = Random<T>(step * h, rng, n % 3 == 0 ? 4 : 1u << (8 * sizeof(T)));
        const cfa::Source<T> s{im.data(), step, w, h};
        const int outStep = 3 * n + 5;
        Plane a(3 * n * int(sizeof(T)), rows, outStep * int(sizeof(T)), 2 * n);
        Plane b(3 * n * int(sizeof(T)), rows, outStep * int(sizeof(T)), 2 * n);
        cfa::InteriorScalar<T>(s, grid, x0, y0, x0 + n - 1, y0 + rows - 1,
                               reinterpret_cast<T*>(a.data()), outStep);
        cfa::InteriorVector<T>(s, grid, x0, y0, x0 + n - 1, y0 + rows - 1,
                               reinterpret_cast<T*>(b.data()), outStep);
        ASSERT_EQ(a.Region(), b.Region())
            << "n " << n << " rows " << rows << " at " << x0 << "," << y0;
        ASSERT_TRUE(b.CanariesIntact());
      }
}
#endif

// Negative steps walk both images upward from the pointers given: the same pixels as a
// top-down copy.
TYPED_TEST(CfaToRgb, NegativeSteps) {
  using T = TypeParam;
  std::mt19937 rng(19);
  const int w = 45, h = 7, px = 3 * int(sizeof(T));
  const auto im = Random<T>(w * h, rng, 1u << (8 * sizeof(T)));
  std::vector<T> flipped(w * h), out(3 * w * h);
  for (int y = 0; y < h; ++y) std::copy_n(&im[y * w], w, &flipped[(h - 1 - y) * w]);
  ASSERT_EQ(Run(&flipped[(h - 1) * w], {1, 1, w, h}, {w, h}, -w * int(sizeof(T)),
                &out[3 * (h - 2) * (w - 1)], -(w - 1) * px, 2),
            kroStatusOk);
  for (int y = 1; y < h; ++y)
    for (int x = 1; x < w; ++x) {
      const T* o = &out[3 * ((h - 1 - y) * (w - 1) + x - 1)];
      ASSERT_EQ((std::array<uint32_t, 3>{o[0], o[1], o[2]}), Model(im, w, h, 2, x, y))
          << x << "," << y;
    }
}

// Source and destination each placed against an inaccessible page on either side: no read or
// write leaves the image or the window, for widths whose last vector block ends at the border.
TYPED_TEST(CfaToRgb, GuardPages) {
  using T = TypeParam;
  std::mt19937 rng(17);
  for (int w : {2, 3, 5, 18, 20, 21, 34, 36, 37})
    for (bool atStart : {false, true}) {
      const int h = 6;
      const auto im = Random<T>(w * h, rng, 1u << (8 * sizeof(T)));
      GuardedBuffer src(im.size() * sizeof(T), atStart), dst(im.size() * 3 * sizeof(T), atStart);
      std::memcpy(src.data(), im.data(), src.size());
      for (int grid = 0; grid < 4; ++grid) {
        ASSERT_EQ(
            Run(reinterpret_cast<const T*>(src.data()), {0, 0, w, h}, {w, h}, w * int(sizeof(T)),
                reinterpret_cast<T*>(dst.data()), 3 * w * int(sizeof(T)), grid),
            kroStatusOk);
        const T* o = reinterpret_cast<const T*>(dst.data());
        const int last = w * h - 1;
        ASSERT_EQ((std::array<uint32_t, 3>{o[3 * last], o[3 * last + 1], o[3 * last + 2]}),
                  Model(im, w, h, grid, w - 1, h - 1));
      }
    }
}

// Null pointers first, then the image size (below 2 x 2), then the grid code; the window and
// interpolation are never checked. Nothing is written on an error.
TYPED_TEST(CfaToRgb, ChecksInOrder) {
  using T = TypeParam;
  std::vector<T> src(100 * 4, 1);
  Plane dst(3 * 4 * 10 * sizeof(T), 4);
  dst.Snapshot();
  T* d = reinterpret_cast<T*>(dst.data());
  const int ss = 100 * sizeof(T), ds = dst.step();
  const KroRect r{0, 0, 4, 4};
  EXPECT_EQ(Run<T>(nullptr, r, {1, 100}, ss, d, ds, 4), kroStatusNullPointer);
  EXPECT_EQ(Run<T>(src.data(), r, {4, 4}, ss, nullptr, ds, 0), kroStatusNullPointer);
  EXPECT_EQ(Run(src.data(), r, {1, 100}, ss, d, ds, 4), kroStatusBadSize);
  EXPECT_EQ(Run(src.data(), r, {100, 1}, ss, d, ds, 0), kroStatusBadSize);
  EXPECT_EQ(Run(src.data(), r, {4, 4}, ss, d, ds, 4), kroStatusBadArgument);
  EXPECT_EQ(Run(src.data(), r, {4, 4}, ss, d, ds, -1), kroStatusBadArgument);
  EXPECT_TRUE(dst.Unchanged());
  EXPECT_EQ(Run(src.data(), KroRect{2, 2, -3, -3}, {4, 4}, ss, d, ds, 3, 99), kroStatusOk);
  EXPECT_EQ(Run(src.data(), KroRect{0, 0, 4, 4}, {2, 2}, ss, d, ds, 3, 99), kroStatusOk);
}

}  // namespace
}  // namespace kro
