// DemosaicAHD, 8u and 16u: the strip partition's worked values, both exports against a
// whole-plane model written from the method's definition (any size, grid, window and sample
// range, tie-heavy images included), flat images, checks and their order, canaries, guard pages
// around source, destination and scratch.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "sensor/demosaic_ahd.h"
#include "support.h"

namespace kro {
namespace {

using test::GuardedBuffer;
using test::Plane;

// ---- Partition ------------------------------------------------------------------------------

bool Same(const ahd::Strip& s, int x, int y, int w, int h) {
  return s.x == x && s.y == y && s.width == w && s.height == h;
}

TEST(DemosaicAHDPlan, SmallestImageHasNoInterior) {
  // 5 x 5, grid 0: red at (5, 5) (outside), so no phase step; -5 becomes -6.
  const ahd::Plan p = ahd::PlanStrips({0, 0, 5, 5}, {5, 5}, 0);
  ASSERT_FALSE(p.empty);
  EXPECT_TRUE(Same(p.strips[0], 5, 5, -6, -6));
  EXPECT_TRUE(Same(p.strips[1], 0, 0, 5, 5));
  EXPECT_TRUE(Same(p.strips[2], 0, -1, 5, 6));  // bottom strip starts above the image
  EXPECT_TRUE(Same(p.strips[3], 0, 5, 5, -6));
  EXPECT_TRUE(Same(p.strips[4], -1, 5, 6, -6));
  // Blue at (5, 5): one column on, width -6 stays -6, one row down.
  const ahd::Plan q = ahd::PlanStrips({0, 0, 5, 5}, {5, 5}, 1);
  EXPECT_TRUE(Same(q.strips[0], 6, 6, -6, -6));
  EXPECT_TRUE(Same(q.strips[2], 0, 0, 5, 5));
}

TEST(DemosaicAHDPlan, TwelveAndElevenSquare) {
  const ahd::Plan p = ahd::PlanStrips({0, 0, 12, 12}, {12, 12}, 0);  // (5, 5) red
  EXPECT_TRUE(Same(p.strips[0], 5, 5, 2, 2));
  EXPECT_TRUE(Same(p.strips[1], 0, 0, 12, 5));
  EXPECT_TRUE(Same(p.strips[2], 0, 7, 12, 5));
  EXPECT_TRUE(Same(p.strips[3], 0, 5, 5, 2));
  EXPECT_TRUE(Same(p.strips[4], 7, 5, 5, 2));
  const ahd::Plan q = ahd::PlanStrips({0, 0, 11, 11}, {11, 11}, 0);
  EXPECT_TRUE(Same(q.strips[0], 5, 5, 0, 0));
  EXPECT_TRUE(Same(q.strips[4], 5, 5, 6, 0));
  // Green in a row of red at (5, 5): one column on and one row down, 12 x 12 then has none.
  const ahd::Plan r = ahd::PlanStrips({0, 0, 12, 12}, {12, 12}, 3);
  EXPECT_EQ(ahd::PositionCode(3, 5, 5), 1);
  EXPECT_TRUE(Same(r.strips[0], 5, 6, 2, 0));
}

TEST(DemosaicAHDPlan, TrimmedAndOddOrigins) {
  // Negative origin: moved to 0, width kept, then trimmed to the image.
  ahd::Plan p = ahd::PlanStrips({-3, -2, 10, 4}, {20, 20}, 1);
  EXPECT_EQ(p.x1, 0);
  EXPECT_EQ(p.w1, 10);
  EXPECT_EQ(p.h1, 4);
  p = ahd::PlanStrips({20, 0, 5, 5}, {20, 20}, 1);
  EXPECT_TRUE(p.empty);
  // An odd origin on grid 1: (7, 7) is blue -> interior from (8, 8), the rest in borders.
  p = ahd::PlanStrips({7, 7, 30, 30}, {40, 40}, 1);
  EXPECT_TRUE(Same(p.strips[0], 8, 8, 26, 26));
  EXPECT_TRUE(Same(p.strips[3], 7, 8, 1, 26));
  EXPECT_TRUE(Same(p.strips[4], 34, 8, 3, 26));
  EXPECT_TRUE(Same(p.strips[2], 7, 34, 30, 3));
}

// ---- Model ----------------------------------------------------------------------------------

// The method evaluated per position over the whole plane plus a margin, then the strips.
class Model {
 public:
  Model(const std::vector<int>& img, int wd, int ht, int grid, int maxv)
      : img_(img), wd_(wd), ht_(ht), grid_(grid), max_(maxv) {
    const int cw = wd + 2 * kM, ch = ht + 2 * kM;
    for (auto* a : {&gh_, &gv_}) a->assign(cw * ch, 0);
    for (int r = 0; r < 2; ++r)
      for (int k = 0; k < 3; ++k) rgb_[r][k].assign(cw * ch, 0);
    vote_.assign(cw * ch, 0);
    for (int y = -kM + 1; y < ht + kM - 1; ++y)
      for (int x = -kM + 1; x < wd + kM - 1; ++x) {
        At(gh_, x, y) = GreenAt(x, y, 1, 0);
        At(gv_, x, y) = GreenAt(x, y, 0, 1);
      }
    for (int r = 0; r < 2; ++r)
      for (int y = -kM + 2; y < ht + kM - 2; ++y)
        for (int x = -kM + 2; x < wd + kM - 2; ++x) Colour(r, x, y);
    for (int y = -kM + 3; y < ht + kM - 3; ++y)
      for (int x = -kM + 3; x < wd + kM - 3; ++x) At(vote_, x, y) = VoteAt(x, y);
  }

  // Output of a region, rows of 3 * w values.
  std::vector<int> Run(KroRect rect) const {
    const int x1 = std::max(rect.x, 0), y1 = std::max(rect.y, 0);
    const int w1 = std::min(rect.width, wd_ - x1), h1 = std::min(rect.height, ht_ - y1);
    std::vector<int> out;
    if (w1 < 1 || h1 < 1) return out;
    out.assign(static_cast<size_t>(w1) * h1 * 3, -1);
    // Partition.
    int x0 = std::max(x1, 5), y0 = std::max(y1, 5);
    int wi = std::min(wd_ - 5, x1 + w1) - x0, hi = std::min(ht_ - 5, y1 + h1) - y0;
    const char c = ColourOf(x0, y0);
    if (c == 'B' || (c == 'G' && ColourOf(x0 + 1, y0) == 'R')) ++x0, --wi;
    wi = wi >= 0 ? wi - wi % 2 : -((-wi + 1) / 2 * 2);
    if (ColourOf(x0, y0) != 'R') ++y0, --hi;
    hi = hi >= 0 ? hi - hi % 2 : -((-hi + 1) / 2 * 2);
    const int strips[5][4] = {{x0, y0, wi, hi},
                              {x1, y1, w1, y0 - y1},
                              {x1, y0 + hi, w1, y1 + h1 - y0 - hi},
                              {x1, y0, x0 - x1, hi},
                              {x0 + wi, y0, x1 + w1 - x0 - wi, hi}};
    for (const auto& s : strips) {
      if (s[2] < 1 || s[3] < 1) continue;
      for (int y = s[1]; y < s[1] + s[3]; ++y) {
        int last = 1;
        for (int x = s[0]; x < s[0] + s[2]; ++x) {
          int sum = 0;
          for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) sum += At(vote_, x + dx, y + dy);
          if (sum != 0) last = sum;
          if (x < x1 || x >= x1 + w1 || y < y1 || y >= y1 + h1) continue;
          const int r = last < 0 ? 1 : 0;
          for (int k = 0; k < 3; ++k)
            out[(static_cast<size_t>(y - y1) * w1 + (x - x1)) * 3 + k] = At(rgb_[r][k], x, y);
        }
      }
    }
    return out;
  }

 private:
  static constexpr int kM = 16;

  int& At(std::vector<int>& a, int x, int y) const { return a[(y + kM) * (wd_ + 2 * kM) + x + kM]; }
  int At(const std::vector<int>& a, int x, int y) const {
    return a[(y + kM) * (wd_ + 2 * kM) + x + kM];
  }
  static int Reflect(int v, int n) {
    const int period = 2 * (n - 1);
    int m = ((v % period) + period) % period;
    return m > n - 1 ? period - m : m;
  }
  int Raw(int x, int y) const { return img_[Reflect(y, ht_) * wd_ + Reflect(x, wd_)]; }
  char ColourOf(int x, int y) const {
    static const char* kGrids[4] = {"BGGR", "RGGB", "GBRG", "GRBG"};
    return kGrids[grid_][(y & 1) * 2 + (x & 1)];
  }
  int GreenAt(int x, int y, int dx, int dy) const {
    const int c = Raw(x, y);
    if (ColourOf(x, y) == 'G') return c;
    const int a = Raw(x - dx, y - dy), b = Raw(x + dx, y + dy);
    const int a2 = Raw(x - 2 * dx, y - 2 * dy), b2 = Raw(x + 2 * dx, y + 2 * dy);
    const int g = (a + b) / 2 + static_cast<int>(std::floor((2.0 * c - a2 - b2) / 4));
    return std::clamp(g, std::min(a, b), std::max(a, b));
  }
  static int FloorDiv(int v, int d) { return static_cast<int>(std::floor(double(v) / d)); }
  // r: 0 horizontal, 1 vertical.
  void Colour(int r, int x, int y) {
    const std::vector<int>& g = r == 0 ? gh_ : gv_;
    const int gc = At(g, x, y);
    At(rgb_[r][1], x, y) = gc;
    for (int k : {0, 2}) {
      const char want = k == 0 ? 'R' : 'B';
      const char here = ColourOf(x, y);
      int v;
      auto d = [&](int u, int w) { return Raw(u, w) - At(g, u, w); };
      if (here == want) {
        v = Raw(x, y);
      } else if (here == 'G' && ColourOf(x + 1, y) == want) {
        v = gc + FloorDiv(d(x - 1, y) + d(x + 1, y), 2);
      } else if (here == 'G') {
        v = gc + FloorDiv(d(x, y - 1) + d(x, y + 1), 2);
      } else {
        v = gc + FloorDiv(d(x - 1, y - 1) + d(x + 1, y - 1) + d(x - 1, y + 1) + d(x + 1, y + 1), 4);
      }
      At(rgb_[r][k], x, y) = std::clamp(v, 0, max_);
    }
  }
  struct Ycc {
    int64_t y, cb, cr;
  };
  Ycc YccAt(int r, int x, int y) const {
    const int64_t R = At(rgb_[r][0], x, y), G = At(rgb_[r][1], x, y), B = At(rgb_[r][2], x, y);
    auto f = [](int64_t v) { return static_cast<int64_t>(std::floor(double(v) / 256)); };
    return {f(66 * R + 129 * G + 25 * B + 128), f(-38 * R - 74 * G + 112 * B + 128),
            f(112 * R - 94 * G - 18 * B + 128)};
  }
  // Squared chroma distance, kept to 32 bits as a two's complement value.
  int64_t Dc(const Ycc& a, const Ycc& b) const {
    const int64_t s = (a.cb - b.cb) * (a.cb - b.cb) + (a.cr - b.cr) * (a.cr - b.cr);
    const int64_t low = s & 0xFFFFFFFF;
    if (s >= 0x80000000) ++wraps_;
    return low >= 0x80000000 ? low - 0x100000000 : low;
  }
  int VoteAt(int x, int y) const {
    const int nx[4] = {-1, 1, 0, 0}, ny[4] = {0, 0, -1, 1};
    int64_t dy[2][4], dc[2][4];
    for (int r = 0; r < 2; ++r) {
      const Ycc m = YccAt(r, x, y);
      for (int n = 0; n < 4; ++n) {
        const Ycc o = YccAt(r, x + nx[n], y + ny[n]);
        dy[r][n] = std::llabs(m.y - o.y);
        dc[r][n] = Dc(m, o);
      }
    }
    const int64_t ey = std::min(std::max(dy[0][0], dy[0][1]), std::max(dy[1][2], dy[1][3]));
    const int64_t ec = std::min(std::max(dc[1][2], dc[1][3]), std::max(dc[0][0], dc[0][1]));
    int count[2] = {0, 0};
    for (int r = 0; r < 2; ++r)
      for (int n = 0; n < 4; ++n) count[r] += dy[r][n] <= ey && dc[r][n] <= ec;
    return count[0] - count[1];
  }

  const std::vector<int>& img_;
  int wd_, ht_, grid_, max_;
  mutable int wraps_ = 0;

 public:
  int wraps() const { return wraps_; }

 private:
  std::vector<int> gh_, gv_, rgb_[2][3], vote_;
};

// ---- Exports against the model -----------------------------------------------------------------

template <class T>
struct Depth;
template <>
struct Depth<Kro8u> {
  static constexpr auto kFn = kroiDemosaicAHD_8u_C1C3R;
  static constexpr int kMax = 255;
};
template <>
struct Depth<Kro16u> {
  static constexpr auto kFn = kroiDemosaicAHD_16u_C1C3R;
  static constexpr int kMax = 65535;
};

// Calls an export on `img` with canaried source, destination and scratch planes (scratch of
// the smallest step the header promises enough), and checks the canaries.
template <class T>
std::vector<int> Call(const std::vector<int>& img, int wd, int ht, KroRect rect, int grid,
                      int pad = 0) {
  const int s = sizeof(T);
  Plane src(wd * s, ht, wd * s + pad * s, s * (pad % 3));
  for (int y = 0; y < ht; ++y)
    for (int x = 0; x < wd; ++x) {
      const T v = static_cast<T>(img[y * wd + x]);
      std::memcpy(src.row(y) + x * s, &v, s);
    }
  const int x1 = std::max(rect.x, 0), y1 = std::max(rect.y, 0);
  const int w1 = std::max(std::min(rect.width, wd - x1), 1);
  const int h1 = std::max(std::min(rect.height, ht - y1), 1);
  Plane dst(w1 * 3 * s, h1, w1 * 3 * s + pad * 2 * s, s * (pad % 2));
  const int tmpStep = (std::max(w1, 6) + 6) * s + (pad & 1);
  Plane tmp(tmpStep * 29 + (std::max(w1, 6) + 6) * s, 1, 0, pad % 5);
  src.Snapshot();
  const kroStatus st =
      Depth<T>::kFn(reinterpret_cast<const T*>(src.data()), rect, {wd, ht}, src.step(),
                    reinterpret_cast<T*>(dst.data()), dst.step(), grid, tmp.data(), tmpStep);
  EXPECT_EQ(st, kroStatusOk);
  EXPECT_TRUE(src.Unchanged());
  EXPECT_TRUE(dst.CanariesIntact());
  EXPECT_TRUE(tmp.CanariesIntact());
  std::vector<int> out;
  for (int y = 0; y < h1; ++y)
    for (int x = 0; x < w1 * 3; ++x) {
      T v;
      std::memcpy(&v, dst.row(y) + x * s, s);
      out.push_back(v);
    }
  return out;
}

std::vector<int> RandomImage(std::mt19937& rng, int wd, int ht, int lo, int hi) {
  std::uniform_int_distribution<int> d(lo, hi);
  std::vector<int> img(static_cast<size_t>(wd) * ht);
  for (int& v : img) v = d(rng);
  return img;
}

template <class T>
class DemosaicAHD : public ::testing::Test {};
using Depths = ::testing::Types<Kro8u, Kro16u>;
TYPED_TEST_SUITE(DemosaicAHD, Depths);

// Whole images of every small size and grid, with full-range and tie-heavy samples.
TYPED_TEST(DemosaicAHD, WholeImagesMatchModel) {
  using T = TypeParam;
  std::mt19937 rng(7);
  const int maxv = Depth<T>::kMax;
  for (int ht : {5, 6, 7, 8, 11, 12, 13, 17})
    for (int wd : {5, 6, 7, 9, 11, 12, 14, 23}) {
      for (int grid = 0; grid < 4; ++grid) {
        // Two levels give many zero vote sums, where the strips' tie memory shows.
        const int mode = (wd + ht + grid) % 3;
        std::vector<int> scaled =
            RandomImage(rng, wd, ht, 0, mode == 0 ? maxv : (mode == 1 ? 1 : 15));
        if (mode == 1)
          for (int& v : scaled) v *= maxv / 3;
        const Model model(scaled, wd, ht, grid, maxv);
        const KroRect rect = {0, 0, wd, ht};
        ASSERT_EQ(Call<T>(scaled, wd, ht, rect, grid, (wd * ht) % 4), model.Run(rect))
            << wd << "x" << ht << " grid " << grid << " mode " << mode;
      }
    }
}

// Windows anywhere, past every edge, negative origins and odd phases.
TYPED_TEST(DemosaicAHD, WindowsMatchModel) {
  using T = TypeParam;
  std::mt19937 rng(11);
  const int maxv = Depth<T>::kMax;
  for (int round = 0; round < 300; ++round) {
    // every third image is wide enough for long vector runs in the interior
    const int wd = 5 + rng() % (round % 3 == 2 ? 120 : 30), ht = 5 + rng() % 30, grid = rng() % 4;
    const int hi = round % 3 == 0 ? maxv : (round % 3 == 1 ? 3 : maxv / 64);
    const std::vector<int> img = RandomImage(rng, wd, ht, 0, hi);
    const Model model(img, wd, ht, grid, maxv);
    const KroRect rect = {static_cast<int>(rng() % (wd + 4)) - 3,
                          static_cast<int>(rng() % (ht + 4)) - 3, 1 + static_cast<int>(rng() % 130),
                          1 + static_cast<int>(rng() % 40)};
    if (std::max(rect.x, 0) >= wd || std::max(rect.y, 0) >= ht) continue;
    ASSERT_EQ(Call<T>(img, wd, ht, rect, grid, round % 7), model.Run(rect))
        << wd << "x" << ht << " grid " << grid << " rect " << rect.x << "," << rect.y << " "
        << rect.width << "x" << rect.height;
  }
}

// Interior strips of every width 1..130 (the 8-bit interior runs eight and sixteen columns a
// turn with scalar remainders), on steps with padding and odd starts.
TYPED_TEST(DemosaicAHD, EveryInteriorWidthMatchesModel) {
  using T = TypeParam;
  std::mt19937 rng(13);
  for (int w = 1; w <= 130; ++w) {
    const int wd = w + 10, ht = 14, grid = w % 4;
    const std::vector<int> img = RandomImage(rng, wd, ht, 0, w % 2 ? Depth<T>::kMax : 40);
    const Model model(img, wd, ht, grid, Depth<T>::kMax);
    const KroRect rect = {0, 0, wd, ht};
    ASSERT_EQ(Call<T>(img, wd, ht, rect, grid, w % 9), model.Run(rect)) << w;
  }
}

// Full-scale steps: red beside cyan gives squared chroma distances past 2^31 in 16-bit data,
// where they wrap (and near 32767 in 8-bit data).
TYPED_TEST(DemosaicAHD, LargeChromaStepsMatchModel) {
  using T = TypeParam;
  const int maxv = Depth<T>::kMax;
  std::mt19937 rng(3);
  int large = 0;
  for (int round = 0; round < 20; ++round) {
    const int wd = 40, ht = 20, grid = round % 4;
    std::vector<int> img(wd * ht);
    // Bands of full-scale samples two columns by four rows, mixed with noise.
    for (int y = 0; y < ht; ++y)
      for (int x = 0; x < wd; ++x)
        img[y * wd + x] = rng() % 4 == 0 ? static_cast<int>(rng() % (maxv + 1))
                                         : ((((y + round) >> 1) ^ x) & 1 ? 0 : maxv);
    const Model model(img, wd, ht, grid, maxv);
    large += model.wraps();
    const KroRect rect = {0, 0, wd, ht};
    ASSERT_EQ(Call<T>(img, wd, ht, rect, grid), model.Run(rect)) << round;
  }
  EXPECT_EQ(large > 0, sizeof(T) == 2);
}

// The vote bodies against the scalar steps on scratch rows of arbitrary colours: corner colours
// of the cube give the largest squared chroma distances (past 32767 in 8-bit data, wrapping
// past 2^31 in 16-bit data).
TYPED_TEST(DemosaicAHD, VoteBodyMatchesScalarSteps) {
  using T = TypeParam;
  std::mt19937 rng(21);
  for (int n = 5; n <= 140; ++n) {
    const int step = (n + n % 3) * static_cast<int>(sizeof(T));
    std::vector<uint8_t> a(30 * step), b;
    for (size_t i = 0; i < a.size(); i += sizeof(T)) {
      const int v = rng() % 3 == 0 ? static_cast<int>(rng() % (Depth<T>::kMax + 1))
                                   : (rng() & 1) * Depth<T>::kMax;
      const T sample = static_cast<T>(v);
      std::memcpy(&a[i], &sample, sizeof(T));
    }
    b = a;
    const int t = 1 + n % 4;
    auto vote = sizeof(T) == 1 ? ahd::VoteRow8u : ahd::VoteRow16u;
    vote(a.data(), step, n, t, true);
    vote(b.data(), step, n, t, false);
    // Equal everywhere but the vote row's last two entries, past the last vote, which the
    // body may overwrite.
    const int votes = (14 + 5 * (t % 4)) * step;
    for (int i : {votes + n - 2, votes + n - 1}) a[i] = b[i] = 0;
    ASSERT_EQ(a, b) << n;
  }
}

// Flat images: every difference is 0, all votes 0, and the horizontal result (equal to the
// vertical one) is taken everywhere: each colour keeps its level.
TYPED_TEST(DemosaicAHD, FlatColoursStayFlat) {
  using T = TypeParam;
  const int maxv = Depth<T>::kMax;
  const int levels[3] = {maxv / 5, maxv, 7};  // R, G, B
  for (int grid = 0; grid < 4; ++grid) {
    const int wd = 19, ht = 16;
    static const char* kGrids[4] = {"BGGR", "RGGB", "GBRG", "GRBG"};
    std::vector<int> img(wd * ht);
    for (int y = 0; y < ht; ++y)
      for (int x = 0; x < wd; ++x) {
        const char c = kGrids[grid][(y & 1) * 2 + (x & 1)];
        img[y * wd + x] = levels[c == 'R' ? 0 : (c == 'G' ? 1 : 2)];
      }
    const std::vector<int> out = Call<T>(img, wd, ht, {0, 0, wd, ht}, grid);
    for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out[i], levels[i % 3]) << grid << " " << i;
  }
}

// ---- Checks ---------------------------------------------------------------------------------

TYPED_TEST(DemosaicAHD, ChecksInOrderNothingWritten) {
  using T = TypeParam;
  const int s = sizeof(T);
  Plane src(8 * s, 8), dst(8 * 3 * s, 8), tmp(14 * s * 30, 1);
  dst.Snapshot();
  const T* sp = reinterpret_cast<const T*>(src.data());
  T* dp = reinterpret_cast<T*>(dst.data());
  const KroRect r = {0, 0, 8, 8};
  const int ss = src.step(), ds = dst.step(), ts = 14 * s;
  auto fn = Depth<T>::kFn;
  EXPECT_EQ(fn(nullptr, r, {4, 8}, ss, dp, ds, 0, tmp.data(), ts), kroStatusNullPointer);
  EXPECT_EQ(fn(sp, r, {8, 8}, ss, nullptr, ds, 7, tmp.data(), ts), kroStatusNullPointer);
  EXPECT_EQ(fn(sp, r, {8, 4}, ss, dp, ds, -1, tmp.data(), ts), kroStatusBadSize);
  EXPECT_EQ(fn(sp, r, {4, 8}, ss, dp, ds, 0, tmp.data(), ts), kroStatusBadSize);
  EXPECT_EQ(fn(sp, r, {8, 8}, ss, dp, ds, 4, tmp.data(), ts), kroStatusBadArgument);
  EXPECT_EQ(fn(sp, r, {8, 8}, ss, dp, ds, -1, nullptr, ts), kroStatusBadArgument);
  EXPECT_TRUE(dst.Unchanged());
  // Nothing of the window or the scratch is checked: an empty window needs no scratch at all.
  EXPECT_EQ(fn(sp, {8, 0, 4, 4}, {8, 8}, ss, dp, ds, 0, nullptr, 0), kroStatusOk);
  EXPECT_EQ(fn(sp, {0, 0, 0, 4}, {8, 8}, ss, dp, ds, 0, nullptr, 0), kroStatusOk);
  EXPECT_EQ(fn(sp, {0, 0, 4, -1}, {8, 8}, ss, dp, ds, 0, nullptr, 0), kroStatusOk);
  EXPECT_TRUE(dst.Unchanged());
}

// Steps as given: a negative source step walks the image upward (rows stored bottom-up give
// the same result), and the 16u destination step is halved rounding towards zero (-19 bytes is
// -9 samples: row 1 starts 9 samples before row 0).
TEST(DemosaicAHD, SignedSteps) {
  const int wd = 37, ht = 23;
  std::mt19937 rng(17);
  const std::vector<int> img = RandomImage(rng, wd, ht, 0, 255);
  std::vector<Kro8u> bottomUp(wd * ht), dst(30 * 20 * 3), tmp(30 * 36);
  for (int y = 0; y < ht; ++y)
    for (int x = 0; x < wd; ++x)
      bottomUp[(ht - 1 - y) * wd + x] = static_cast<Kro8u>(img[y * wd + x]);
  const KroRect rect = {2, 1, 30, 20};
  ASSERT_EQ(kroiDemosaicAHD_8u_C1C3R(bottomUp.data() + (ht - 1) * wd, rect, {wd, ht}, -wd,
                                     dst.data(), 30 * 3, 3, tmp.data(), 36),
            kroStatusOk);
  EXPECT_EQ(std::vector<int>(dst.begin(), dst.end()), Model(img, wd, ht, 3, 255).Run(rect));

  const KroRect small = {1, 2, 3, 2};
  const std::vector<int> want = Model(img, wd, ht, 2, 65535).Run(small);
  std::vector<Kro16u> src(img.begin(), img.end()), out(64, 0);
  ASSERT_EQ(kroiDemosaicAHD_16u_C1C3R(src.data(), small, {wd, ht}, wd * 2, out.data() + 40, -19, 2,
                                      tmp.data(), 24),
            kroStatusOk);
  for (int k = 0; k < 9; ++k) {
    EXPECT_EQ(out[40 + k], want[k]) << k;
    EXPECT_EQ(out[31 + k], want[9 + k]) << k;
  }
}

// ---- Guard pages ----------------------------------------------------------------------------

// Source, destination and scratch each end at (or start right after) an inaccessible page; the
// scratch is exactly 30 rows of the smallest step.
TYPED_TEST(DemosaicAHD, GuardPages) {
  using T = TypeParam;
  const int s = sizeof(T);
  struct Case {
    int wd, ht;
    KroRect rect;
  };
  const Case cases[] = {{5, 5, {0, 0, 5, 5}},     {33, 21, {0, 0, 33, 21}},
                        {33, 21, {31, 19, 9, 9}}, {40, 30, {3, 4, 30, 20}},
                        {12, 12, {0, 0, 12, 12}}, {30, 9, {27, 0, 3, 9}}};
  std::mt19937 rng(9);
  for (const Case& c : cases)
    for (bool front : {false, true}) {
      const int x1 = std::max(c.rect.x, 0), y1 = std::max(c.rect.y, 0);
      const int w1 = std::min(c.rect.width, c.wd - x1), h1 = std::min(c.rect.height, c.ht - y1);
      const int tmpStep = (std::max(w1, 6) + 6) * s;
      GuardedBuffer src(static_cast<size_t>(c.wd) * c.ht * s, front),
          dst(static_cast<size_t>(w1) * h1 * 3 * s, front), tmp(30 * tmpStep, front);
      for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(rng());
      const kroStatus st =
          Depth<T>::kFn(reinterpret_cast<const T*>(src.data()), c.rect, {c.wd, c.ht}, c.wd * s,
                        reinterpret_cast<T*>(dst.data()), w1 * 3 * s, 1, tmp.data(), tmpStep);
      EXPECT_EQ(st, kroStatusOk);
    }
}

}  // namespace
}  // namespace kro
