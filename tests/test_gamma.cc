// Gamma by table, 8u and 16u: the tables' defining values, every export against a plain
// look-up in every layout, in place against out of place, alpha, checks and canaries.
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support.h"
#include "tone/gamma_tables.h"

namespace kro {
namespace {

using test::Plane;
using namespace kro::tables;

TEST(GammaTables, DefiningValues) {
  EXPECT_EQ(kGammaFwd8u[0], 0);
  EXPECT_EQ(kGammaFwd8u[1], 4);   // 4.5, tie to even
  EXPECT_EQ(kGammaFwd8u[3], 14);  // 13.5, tie to even
  EXPECT_EQ(kGammaFwd8u[5], 23);  // first entry on the curve
  EXPECT_EQ(kGammaFwd8u[255], 255);
  EXPECT_EQ(kGammaInv8u[0], 0);
  EXPECT_EQ(kGammaInv8u[20], 4);
  EXPECT_EQ(kGammaInv8u[21], 5);
  EXPECT_EQ(kGammaInv8u[255], 255);
  EXPECT_EQ(kGammaFwd16u[0], 0);
  EXPECT_EQ(kGammaFwd16u[41], 184);       // 184.5, tie to even
  EXPECT_EQ(kGammaFwd16u[62095], 63808);  // rounded to single first, then onto the tie
  EXPECT_EQ(kGammaFwd16u[1179], 5306);    // the seam's step
  EXPECT_EQ(kGammaFwd16u[1180], 5326);
  EXPECT_EQ(kGammaFwd16u[65535], 65535);
  EXPECT_EQ(kGammaInv16u[0], 0);
  EXPECT_EQ(kGammaInv16u[5321], 1182);
  EXPECT_EQ(kGammaInv16u[5322], 1179);
  EXPECT_EQ(kGammaInv16u[65535], 65535);
}

// Both forward tables rise everywhere; the inverse falls at exactly one place, its seam.
TEST(GammaTables, MonotonicExceptTheInverseSeam) {
  for (int i = 1; i < 65536; ++i) ASSERT_GE(kGammaFwd16u[i], kGammaFwd16u[i - 1]) << i;
  for (int i = 1; i < 256; ++i) ASSERT_GE(kGammaFwd8u[i], kGammaFwd8u[i - 1]) << i;
  for (int i = 1; i < 256; ++i) ASSERT_GE(kGammaInv8u[i], kGammaInv8u[i - 1]) << i;
  std::vector<int> falls;
  for (int i = 1; i < 65536; ++i)
    if (kGammaInv16u[i] < kGammaInv16u[i - 1]) falls.push_back(i);
  EXPECT_EQ(falls, std::vector<int>{5322});
}

// ---- Exports ----------------------------------------------------------------------------------

enum class Layout { kC3, kAC4, kP3 };

struct Images {
  // One plane for packed layouts, three for planar; samples of `bytes` bytes.
  std::vector<std::unique_ptr<Plane>> planes;
  int width, height, samples, bytes;
  Images(Layout l, int w, int h, int bytesPerSample, int pad)
      : width(w), height(h), samples(l == Layout::kC3 ? 3 : l == Layout::kAC4 ? 4 : 1),
        bytes(bytesPerSample) {
    const int rowBytes = w * samples * bytes;
    for (int p = 0; p < (l == Layout::kP3 ? 3 : 1); ++p)
      planes.push_back(std::make_unique<Plane>(rowBytes, h, rowBytes + pad * bytes, 2 * p));
  }
  int step() const { return planes[0]->step(); }
  uint8_t* p(int i) { return planes[i]->data(); }
  unsigned Sample(int plane, int y, int i) const {
    const uint8_t* r = planes[plane]->row(y) + i * bytes;
    return bytes == 1 ? r[0] : unsigned(r[0] | (r[1] << 8));
  }
};

struct GammaExport {
  std::string name;
  Layout layout;
  int bytes;       // 1 or 2
  bool inPlace;
  const void* table;
  // Runs the export from src into dst (in-place forms: dst holds a copy of src first).
  std::function<kroStatus(Images& src, Images& dst, KroSize roi)> run;
};

#define OUT_OF_PLACE_PACKED(fn, T)                                                          \
  [](Images& s, Images& d, KroSize r) {                                                    \
    return fn(reinterpret_cast<const T*>(s.p(0)), s.step(), reinterpret_cast<T*>(d.p(0)), \
              d.step(), r);                                                                \
  }
#define IN_PLACE_PACKED(fn, T) \
  [](Images&, Images& d, KroSize r) { return fn(reinterpret_cast<T*>(d.p(0)), d.step(), r); }
#define OUT_OF_PLACE_PLANES(fn, T)                                                          \
  [](Images& s, Images& d, KroSize r) {                                                    \
    const T* sp[3] = {reinterpret_cast<const T*>(s.p(0)), reinterpret_cast<const T*>(s.p(1)), \
                      reinterpret_cast<const T*>(s.p(2))};                                 \
    T* dp[3] = {reinterpret_cast<T*>(d.p(0)), reinterpret_cast<T*>(d.p(1)),                \
                reinterpret_cast<T*>(d.p(2))};                                             \
    return fn(sp, s.step(), dp, d.step(), r);                                              \
  }
#define IN_PLACE_PLANES(fn, T)                                                \
  [](Images&, Images& d, KroSize r) {                                        \
    T* dp[3] = {reinterpret_cast<T*>(d.p(0)), reinterpret_cast<T*>(d.p(1)),  \
                reinterpret_cast<T*>(d.p(2))};                               \
    return fn(dp, d.step(), r);                                              \
  }
#define DIRECTION(Dir, depth, T, bytes, table)                                                    \
  {#Dir "_" #depth "_C3R", Layout::kC3, bytes, false, table,                                      \
   OUT_OF_PLACE_PACKED(kroiGamma##Dir##_##depth##_C3R, T)},                                       \
      {#Dir "_" #depth "_C3IR", Layout::kC3, bytes, true, table,                                  \
       IN_PLACE_PACKED(kroiGamma##Dir##_##depth##_C3IR, T)},                                      \
      {#Dir "_" #depth "_AC4R", Layout::kAC4, bytes, false, table,                                \
       OUT_OF_PLACE_PACKED(kroiGamma##Dir##_##depth##_AC4R, T)},                                  \
      {#Dir "_" #depth "_AC4IR", Layout::kAC4, bytes, true, table,                                \
       IN_PLACE_PACKED(kroiGamma##Dir##_##depth##_AC4IR, T)},                                     \
      {#Dir "_" #depth "_P3R", Layout::kP3, bytes, false, table,                                  \
       OUT_OF_PLACE_PLANES(kroiGamma##Dir##_##depth##_P3R, T)},                                   \
      {#Dir "_" #depth "_IP3R", Layout::kP3, bytes, true, table,                                  \
       IN_PLACE_PLANES(kroiGamma##Dir##_##depth##_IP3R, T)}

std::vector<GammaExport> Exports() {
  return {DIRECTION(Fwd, 8u, Kro8u, 1, kGammaFwd8u), DIRECTION(Inv, 8u, Kro8u, 1, kGammaInv8u),
          DIRECTION(Fwd, 16u, Kro16u, 2, kGammaFwd16u),
          DIRECTION(Inv, 16u, Kro16u, 2, kGammaInv16u)};
}

void PrintTo(const GammaExport& e, std::ostream* os) { *os << e.name; }
class Gamma : public testing::TestWithParam<GammaExport> {};

unsigned Lookup(const GammaExport& e, unsigned s) {
  return e.bytes == 1 ? static_cast<const uint8_t*>(e.table)[s]
                      : static_cast<const uint16_t*>(e.table)[s];
}

// Every colour sample is its table entry, alpha keeps what the destination held (in place:
// the source's alpha), nothing outside the region changes; in place equals out of place.
TEST_P(Gamma, EverySampleIsItsTableEntry) {
  const GammaExport& e = GetParam();
  std::mt19937 rng(9);
  for (auto [w, h, pad] : {std::tuple{1, 1, 0}, {2, 3, 1}, {17, 4, 5}, {64, 2, 0}}) {
    Images src(e.layout, w, h, e.bytes, pad), dst(e.layout, w, h, e.bytes, pad + 3);
    for (auto& p : src.planes) p->FillRandom(rng);
    if (e.inPlace) {
      dst = Images(e.layout, w, h, e.bytes, pad);
      for (size_t p = 0; p < src.planes.size(); ++p)
        for (int y = 0; y < h; ++y)
          std::memcpy(dst.planes[p]->row(y), src.planes[p]->row(y), src.planes[p]->rowBytes());
    }
    ASSERT_EQ(e.run(src, dst, {w, h}), kroStatusOk);
    for (size_t p = 0; p < dst.planes.size(); ++p) {
      ASSERT_TRUE(dst.planes[p]->CanariesIntact()) << w << "x" << h;
      for (int y = 0; y < h; ++y) {
        for (int i = 0; i < w * dst.samples; ++i) {
          const bool alpha = dst.samples == 4 && i % 4 == 3;
          const unsigned want = alpha ? (e.inPlace ? src.Sample(p, y, i)
                                                   : (e.bytes == 1 ? test::kCanary
                                                                   : test::kCanary * 257u))
                                      : Lookup(e, src.Sample(p, y, i));
          ASSERT_EQ(dst.Sample(p, y, i), want) << "plane " << p << " row " << y << " sample " << i;
        }
      }
    }
  }
}

// A bad size in either direction is reported and nothing is written.
TEST_P(Gamma, BadSizeWritesNothing) {
  const GammaExport& e = GetParam();
  Images src(e.layout, 4, 2, e.bytes, 0), dst(e.layout, 4, 2, e.bytes, 0);
  for (auto& p : dst.planes) p->Snapshot();
  EXPECT_EQ(e.run(src, dst, {0, 2}), kroStatusBadSize);
  EXPECT_EQ(e.run(src, dst, {4, -1}), kroStatusBadSize);
  for (auto& p : dst.planes) EXPECT_TRUE(p->Unchanged());
}

INSTANTIATE_TEST_SUITE_P(AllExports, Gamma, testing::ValuesIn(Exports()),
                         [](const auto& info) { return info.param.name; });

// Checks through the exports directly, where null pointers and steps are easy to place.
TEST(GammaChecks, NullBeforeSizeBeforeStep) {
  std::vector<Kro8u> buf(64, 7);
  std::vector<Kro16u> buf16(64, 7);
  const KroSize ok = {2, 2}, bad = {0, 2};
  EXPECT_EQ(kroiGammaFwd_8u_C3R(nullptr, 6, buf.data(), 6, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaFwd_8u_C3R(buf.data(), 6, buf.data() + 32, 6, bad), kroStatusBadSize);
  EXPECT_EQ(kroiGammaFwd_8u_C3R(buf.data(), 0, buf.data() + 32, 6, bad), kroStatusBadSize);
  EXPECT_EQ(kroiGammaFwd_8u_C3R(buf.data(), 0, buf.data() + 32, 6, ok), kroStatusBadStep);
  EXPECT_EQ(kroiGammaInv_16u_AC4IR(nullptr, 0, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaInv_16u_AC4IR(buf16.data(), -8, ok), kroStatusBadStep);
  Kro8u* planes[3] = {buf.data(), nullptr, buf.data() + 8};
  const Kro8u* cplanes[3] = {buf.data(), buf.data() + 4, buf.data() + 8};
  EXPECT_EQ(kroiGammaFwd_8u_P3R(cplanes, 2, planes, 2, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaFwd_8u_IP3R(planes, 2, bad), kroStatusNullPointer);
  EXPECT_EQ(kroiGammaFwd_8u_P3R(cplanes, 2, nullptr, 2, bad), kroStatusNullPointer);
  planes[1] = buf.data() + 4;
  EXPECT_EQ(kroiGammaFwd_8u_IP3R(planes, 0, bad), kroStatusBadSize);
  EXPECT_EQ(kroiGammaFwd_8u_IP3R(planes, 0, ok), kroStatusBadStep);
  // Nothing was written by any of the failing calls.
  for (Kro8u v : buf) EXPECT_EQ(v, 7);
  for (Kro16u v : buf16) EXPECT_EQ(v, 7);
}

// Buffers that end at an inaccessible page: a row of 5 pixels (an odd sample count) reads and
// writes nothing past its last sample.
TEST(GammaChecks, StaysInsideBuffersThatEndAtAPage) {
  test::GuardedBuffer src(15 * 2), dst(15 * 2);
  std::memset(src.data(), 0, src.size());
  ASSERT_EQ(kroiGammaFwd_16u_C3R(reinterpret_cast<Kro16u*>(src.data()), 30,
                                 reinterpret_cast<Kro16u*>(dst.data()), 30, {5, 1}),
            kroStatusOk);
  ASSERT_EQ(kroiGammaInv_8u_C3IR(dst.data(), 15, {5, 1}), kroStatusOk);
}

}  // namespace
}  // namespace kro
