// ReduceBits, the 32 typed exports and the size query: the generator's stream, the size table,
// the check order, the worked examples, and every export under every dither kind against a model
// written here from the definitions (a sequence of error rows instead of the kernels' ring, so
// the leak between channel passes is checked independently), with canaries and guard pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "dither/reduce_bits.h"
#include "support.h"

namespace kro {
namespace {

using dither::Dest;
using dither::Source;
using test::GuardedBuffer;
using test::Plane;

// ---- Generator --------------------------------------------------------------------------------

TEST(ReduceBitsNoise, FirstIndexValuesOfSeedZero) {
  alignas(8) uint8_t record[dither::kRecordBytes];
  int16_t index[8];
  dither::InitIndexRecord(record, 0, 0, 1024);
  ASSERT_EQ(dither::FillIndexTable(index, 8, record), kroStatusOk);
  const int16_t expected[8] = {1, 133, 217, 413, 361, 759, 844, 242};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(index[i], expected[i]) << i;
  // The record carries the stream on: two fills of four give the same eight values.
  int16_t halves[8];
  dither::InitIndexRecord(record, 0, 0, 1024);
  dither::FillIndexTable(halves, 4, record);
  dither::FillIndexTable(halves + 4, 4, record);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(halves[i], expected[i]) << i;
}

TEST(ReduceBitsNoise, FillRefusesNullCountAndForeignRecord) {
  alignas(8) uint8_t record[dither::kRecordBytes];
  int16_t index[4];
  float noise[4];
  dither::InitIndexRecord(record, 0, 0, 1024);
  EXPECT_EQ(dither::FillIndexTable(nullptr, 4, record), kroStatusNullPointer);
  EXPECT_EQ(dither::FillIndexTable(index, 0, record), kroStatusBadSize);
  EXPECT_EQ(dither::FillNoiseTable(noise, 4, record), kroStatusBadContext);  // tag 36, not 37
  dither::InitNoiseRecord(record, 0, -0.25f, 0.25f);
  EXPECT_EQ(dither::FillIndexTable(index, 4, record), kroStatusBadContext);
  ASSERT_EQ(dither::FillNoiseTable(noise, 4, record), kroStatusOk);
  for (float v : noise) EXPECT_TRUE(v >= -0.25f && v <= 0.25f) << v;
}

// ---- Size query -------------------------------------------------------------------------------

struct SizeCase {
  int channels, width, height, noise, kind;
  bool nullSize;
  kroStatus status;
  int size;
};

TEST(ReduceBitsSize, Table) {
  const SizeCase cases[] = {
      {1, 1, 1, 0, 0, false, kroStatusOk, 0},
      {3, 100, 1, 100, 0, false, kroStatusOk, 0},  // kind 0 asks for nothing, even with noise
      {4, 100, 1, 0, 4, false, kroStatusOk, 0},
      {9, 100, 1, 1, 4, false, kroStatusOk, 6336},
      {1, 100, 1, 0, 1, false, kroStatusOk, 880},
      {1, 100, 1, 5, 1, false, kroStatusOk, 7152},
      {3, 100, 1, 0, 2, false, kroStatusOk, 1312},
      {3, 100, 1, 0, 3, false, kroStatusOk, 1312},
      {9, 100, 1, 50, 3, false, kroStatusOk, 7584},
      {1, 7, 0, 0, 1, false, kroStatusOk, 136},  // the height is neither checked nor used
      {1, 1, 1, 0, 7, false, kroStatusBadDitherType, -1},
      {1, 1, 1, 0, -1, false, kroStatusBadDitherType, -1},
      {1, 1, 1, 101, 7, false, kroStatusBadNoise, -1},
      {1, 1, 1, -1, 0, false, kroStatusBadNoise, -1},  // noise is tested as unsigned
      {2, 1, 1, 0, 0, false, kroStatusBadChannel, -1},
      {2, 1, 1, 101, 7, false, kroStatusBadChannel, -1},
      {2, 0, 1, 101, 7, false, kroStatusBadSize, -1},
      {2, 0, 1, 101, 7, true, kroStatusNullPointer, -1},
  };
  for (const auto& c : cases) {
    int size = -1;
    EXPECT_EQ(kroiReduceBitsGetBufferSize(c.channels, {c.width, c.height}, c.noise, c.kind,
                                          c.nullSize ? nullptr : &size),
              c.status)
        << c.channels << " " << c.width << " " << c.noise << " " << c.kind;
    EXPECT_EQ(size, c.size) << c.channels << " " << c.width << " " << c.noise << " " << c.kind;
  }
}

// ---- The exports as a table -------------------------------------------------------------------

using Fn = std::function<kroStatus(const void*, int, void*, int, KroSize, int, int, int, Kro8u*)>;

struct Export {
  std::string name;
  Source src;
  Dest dst;
  int code;  // 1 C1R, 3 C3R, 4 AC4R, 5 C4R
  Fn fn;
  int srcBytes() const { return src == Source::k8u ? 1 : src == Source::k32f ? 4 : 2; }
  int dstBytes() const { return dst == Dest::k8u ? 1 : 2; }
  int samples() const { return code >= 4 ? 4 : code; }
  int channels() const { return code == 5 ? 4 : code == 4 ? 3 : code; }
  int maxLevels() const { return dst == Dest::k8u ? 256 : 65536; }
};

#define KRO_EXPORT_ROW(suffix, S, D, layout, code, TS, TD)                                     \
  Export {                                                                                     \
#suffix "_" #layout, Source::S, Dest::D, code,                                               \
        [](const void* s, int ss, void* d, int ds, KroSize r, int n, int k, int l, Kro8u* b) { \
          return kroiReduceBits_##suffix##_##layout(static_cast<const TS*>(s), ss,               \
                                                    static_cast<TD*>(d), ds, r, n, k, l, b);     \
        } \
  }
#define KRO_PAIR_ROWS(suffix, S, D, TS, TD)                                                   \
  KRO_EXPORT_ROW(suffix, S, D, C1R, 1, TS, TD), KRO_EXPORT_ROW(suffix, S, D, C3R, 3, TS, TD), \
      KRO_EXPORT_ROW(suffix, S, D, AC4R, 4, TS, TD), KRO_EXPORT_ROW(suffix, S, D, C4R, 5, TS, TD)

const std::vector<Export>& Exports() {
  static const std::vector<Export> all = {
      KRO_PAIR_ROWS(8u, k8u, k8u, Kro8u, Kro8u),
      KRO_PAIR_ROWS(16u, k16u, k16u, Kro16u, Kro16u),
      KRO_PAIR_ROWS(16s, k16s, k16s, Kro16s, Kro16s),
      KRO_PAIR_ROWS(16u8u, k16u, k8u, Kro16u, Kro8u),
      KRO_PAIR_ROWS(16s8u, k16s, k8u, Kro16s, Kro8u),
      KRO_PAIR_ROWS(32f8u, k32f, k8u, Kro32f, Kro8u),
      KRO_PAIR_ROWS(32f16u, k32f, k16u, Kro32f, Kro16u),
      KRO_PAIR_ROWS(32f16s, k32f, k16s, Kro32f, Kro16s),
  };
  return all;
}

// ---- The model --------------------------------------------------------------------------------

int32_t Cvtt(float f) {
  if (!(f >= -2147483648.0f && f < 2147483648.0f)) return INT32_MIN;
  return static_cast<int32_t>(f);
}

struct Model {
  const Export& ex;
  int L;
  bool f32() const { return ex.src == Source::k32f; }
  bool wide() const { return ex.src == Source::k16u || ex.src == Source::k16s; }
  float Work(const uint8_t* p) const {
    switch (ex.src) {
      case Source::k8u:
        return float(p[0]);
      case Source::k16u: {
        uint16_t v;
        std::memcpy(&v, p, 2);
        return float(v);
      }
      case Source::k16s: {
        int16_t v;
        std::memcpy(&v, p, 2);
        return float(v + 32768);
      }
      default: {
        float v;
        std::memcpy(&v, p, 4);
        return v;
      }
    }
  }
  float S() const {
    return ex.src == Source::k8u ? (65280.0f / float(L)) * 0.00390625f
           : f32()               ? 1.0f / float(L)
                                 : 65535.0f / float(L);
  }
  float I() const {
    return ex.src == Source::k8u ? float(L) / 255.0f : f32() ? float(L) : float(L) / 65535.0f;
  }
  float Top() const { return ex.src == Source::k8u ? 255.0f : f32() ? 1.0f : 65535.0f; }
  float O() const { return ex.dst == Dest::k8u ? 255.0f : 65535.0f; }
  int32_t Sat(int64_t t) const {
    if (ex.dst == Dest::k8u) return int32_t(std::min<int64_t>(255, std::max<int64_t>(0, t)));
    const int64_t u = std::min<int64_t>(65535, std::max<int64_t>(0, t));
    return int32_t(ex.dst == Dest::k16s ? u - 32768 : u);
  }
  int32_t Kind0(float v) const {
    const float r = 1.0f / float(L), h = 0.5f / float(L);
    const float u = f32() ? v : v * (ex.src == Source::k8u ? 0.003921569f : 1.5259022e-5f);
    float q = float(Cvtt(float(L) * u)) * r;
    if (h < u - q) q += r;
    return Sat(Cvtt(q * O()));
  }
  int32_t Kind4(float v, float T) const {
    float q = float(Cvtt(v * I())) * S();
    if (T < v - q) q += S();
    if (f32()) return Sat(Cvtt(q * O()));
    return Sat(ex.dst == Dest::k8u && wide() ? Cvtt(q) >> 8 : Cvtt(q));
  }
};

constexpr float kM[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

struct NoiseModel {
  std::vector<int16_t> index = std::vector<int16_t>(1024);
  std::vector<float> noise = std::vector<float>(1024);
  NoiseModel(float low, float high) {
    alignas(8) uint8_t rec[dither::kRecordBytes];
    dither::InitIndexRecord(rec, 0, 0, 1024);
    dither::FillIndexTable(index.data(), 1024, rec);
    dither::InitNoiseRecord(rec, 0, low, high);
    dither::FillNoiseTable(noise.data(), 1024, rec);
  }
  float At(int x, int y) const { return noise[(index[x & 1023] + 2 * y + x) & 1023]; }
};

// The destination region as int32 samples, row after row (w * samples a row).
std::vector<int32_t> Actual(const Export& ex, const Plane& dst, int w, int h) {
  std::vector<int32_t> out;
  for (int y = 0; y < h; ++y)
    for (int i = 0; i < w * ex.samples(); ++i) {
      const uint8_t* p = dst.row(y) + i * ex.dstBytes();
      out.push_back(ex.dstBytes() == 1 ? p[0]
                                       : (ex.dst == Dest::k16s ? int16_t(p[0] | p[1] << 8)
                                                               : uint16_t(p[0] | p[1] << 8)));
    }
  return out;
}

// The expected region after one call; `out` holds the destination as it was (alpha stays).
std::vector<int32_t> Expected(const Export& ex, const Plane& src, std::vector<int32_t> out, int w,
                              int h, int kind, int noise, int levels) {
  const Model m{ex, levels - 1};
  const int n = ex.samples(), sb = ex.srcBytes();
  auto work = [&](int x, int y, int c) { return m.Work(src.row(y) + (x * n + c) * sb); };
  auto put = [&](int x, int y, int c, int32_t v) { out[(y * w + x) * n + c] = v; };
  if (kind == 0 || kind == 4) {
    const float S = m.S();
    const NoiseModel nm(-float(noise) / 100.0f, float(noise) / 100.0f);
    const bool bare = noise > 0 && (ex.code == 5 ||
                                    (ex.code == 4 && ex.src == Source::k8u && ex.dst == Dest::k8u));
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const float mm = kM[y & 3][x & 3] / 15.0f;
        const float T = bare && x >= (w & ~3) ? mm : noise > 0 ? (nm.At(x, y) + mm) * S : mm * S;
        for (int c = 0; c < ex.channels(); ++c)
          put(x, y, c, kind == 0 ? m.Kind0(work(x, y, c)) : m.Kind4(work(x, y, c), T));
      }
    return out;
  }
  // Error diffusion over a sequence of rows (channel passes one after another), each row padded
  // by two zeros on both sides; row r gathers from rows r - 1 and r - 2 of the sequence.
  const float S = m.S(), I = m.I();
  const NoiseModel nm(float(50 - noise) * S / 100.0f, float(50 + noise) * S / 100.0f);
  const bool fs = kind == 1;
  const bool late = m.f32() || (ex.src == Source::k16s && ex.dst == Dest::k8u);
  const int rows = h * ex.channels();
  std::vector<std::vector<float>> err(rows + 2, std::vector<float>(w + 4, 0.0f));
  const float wj[3][5] = {{1, 3, 5, 3, 1}, {3, 5, 7, 5, 3}, {5, 7, 0, 0, 0}};
  const float ws[3][5] = {{1, 2, 4, 2, 1}, {2, 4, 8, 4, 2}, {4, 8, 0, 0, 0}};
  const auto& W = kind == 2 ? wj : ws;
  for (int r = 0; r < rows; ++r) {
    const int c = r / h, y = r % h;
    const float* p2 = err[r].data() + 2;  // row r - 2 of the sequence (err[0], err[1] are zero)
    const float* p1 = err[r + 1].data() + 2;
    float* cur = err[r + 2].data() + 2;
    for (int x = 0; x < w; ++x) {
      float g;
      if (fs) {
        g = (late ? ((3.0f * p1[x + 1] + 5.0f * p1[x]) + p1[x - 1])
                  : ((3.0f * p1[x + 1] + p1[x - 1]) + 5.0f * p1[x])) +
            7.0f * cur[x - 1];
        g = g * 0.0625f;
      } else {
        float l[4];
        for (int i = 0; i < 4; ++i) {
          // Kernel's ring row at x and x + 1 holds the row three back; weight 0 either way.
          l[i] = (W[0][i] * p2[x - 2 + i] + W[1][i] * p1[x - 2 + i]) +
                 W[2][i] * (i < 2 ? cur[x - 2 + i] : (r >= 1 ? err[r - 1][x + i] : 0.0f));
        }
        g = ((((l[0] + l[2]) + (l[1] + l[3])) + p2[x + 2]) + W[1][4] * p1[x + 2]) *
            (kind == 2 ? 0.020833334f : 0.023809524f);
      }
      const float v = work(x, y, c) + g;
      const float floor = fs && m.f32() ? 1.1920929e-7f : 0.0f;
      const int32_t hi = ex.dst == Dest::k8u ? 255 : ex.dst == Dest::k16u ? 65535 : 32767;
      const int32_t lo = ex.dst == Dest::k16s ? -32768 : 0;
      if (v >= m.Top()) {
        put(x, y, c, hi);
        cur[x] = 0;
        continue;
      }
      if (floor > v) {
        put(x, y, c, lo);
        cur[x] = 0;
        continue;
      }
      float q = float(Cvtt(v * I)) * S;
      const float T = noise > 0 ? nm.At(x, y) : 0.5f * S;
      if (T < v - q) q += S;
      cur[x] = v - q;
      const bool round = fs && late;
      int32_t t = m.f32() ? Cvtt(round ? q * m.O() + 0.5f : q * m.O()) : Cvtt(round ? q + 0.5f : q);
      if (m.wide() && ex.dst == Dest::k8u) t >>= 8;
      if (ex.dst == Dest::k16s) t -= 32768;
      put(x, y, c,
          ex.dst == Dest::k8u    ? int32_t(uint8_t(t))
          : ex.dst == Dest::k16u ? int32_t(uint16_t(t))
                                 : int32_t(int16_t(t)));
    }
  }
  return out;
}

// Source samples: random over the type's range (32f: -0.25..1.25 with exact 0, 1 and levels).
void FillSource(const Export& ex, Plane& p, std::mt19937& rng, int L) {
  for (int y = 0; y < p.height(); ++y)
    for (int i = 0; i < p.rowBytes() / ex.srcBytes(); ++i) {
      uint8_t* q = p.row(y) + i * ex.srcBytes();
      if (ex.src != Source::k32f) {
        for (int b = 0; b < ex.srcBytes(); ++b) q[b] = uint8_t(rng());
        continue;
      }
      const uint32_t k = rng() % 16;
      float v = k == 0   ? 0.0f
                : k == 1 ? 1.0f
                : k == 2 ? float(rng() % (L + 1)) / float(L)
                         : float(rng() % 1500) / 1000.0f - 0.25f;
      std::memcpy(q, &v, 4);
    }
}

struct Run {
  const Export& ex;
  int w, h, kind, noise, levels, pad, offset;
};

// Runs one call on fresh random images and compares every destination sample with the model.
void CheckAgainstModel(const Run& r, std::mt19937& rng) {
  const Export& ex = r.ex;
  Plane src(r.w * ex.samples() * ex.srcBytes(), r.h,
            r.w * ex.samples() * ex.srcBytes() + r.pad * ex.srcBytes(), r.offset);
  Plane dst(r.w * ex.samples() * ex.dstBytes(), r.h,
            r.w * ex.samples() * ex.dstBytes() + r.pad * ex.dstBytes(), r.offset * 3);
  FillSource(ex, src, rng, r.levels - 1);
  dst.FillRandom(rng);
  const auto before = Actual(ex, dst, r.w, r.h);
  int size = 0;
  ASSERT_EQ(kroiReduceBitsGetBufferSize(1, {r.w, r.h}, r.noise, r.kind, &size), kroStatusOk);
  std::vector<Kro8u> buffer(std::size_t(size) + 1);
  ASSERT_EQ(ex.fn(src.data(), src.step(), dst.data(), dst.step(), {r.w, r.h}, r.noise, r.kind,
                  r.levels, size ? buffer.data() + 1 : nullptr),
            kroStatusOk);
  const auto want = Expected(ex, src, before, r.w, r.h, r.kind, r.noise, r.levels);
  const auto got = Actual(ex, dst, r.w, r.h);
  for (std::size_t i = 0; i < want.size(); ++i) {
    ASSERT_EQ(got[i], want[i]) << ex.name << " kind " << r.kind << " noise " << r.noise
                               << " levels " << r.levels << " w " << r.w << " h " << r.h
                               << " sample " << i;
  }
  EXPECT_TRUE(dst.CanariesIntact()) << ex.name;
}

class ReduceBitsExport : public ::testing::TestWithParam<int> {
 protected:
  const Export& ex() const { return Exports()[GetParam()]; }
};

// Every kind, with and without noise, over several levels and region shapes.
TEST_P(ReduceBitsExport, MatchesModel) {
  std::mt19937 rng(1234 + GetParam());
  const int levels[] = {2, 3, 17, ex().maxLevels()};
  for (int kind : {0, 4, 1, 2, 3})
    for (int noise : {0, 30, 100})
      for (int li = 0; li < 4; ++li)
        for (auto [w, h] : {std::pair{1, 3}, std::pair{7, 5}, std::pair{37, 4}, std::pair{3, 1}})
          CheckAgainstModel({ex(), w, h, kind, noise, levels[li], li, li + 1}, rng);
}

// Kinds with vector bodies at every width 1..130, unaligned starts and padded steps.
TEST_P(ReduceBitsExport, AllWidthsPlainAndOrdered) {
  std::mt19937 rng(99 + GetParam());
  for (int w : test::AllWidths())
    for (int kind : {0, 4})
      CheckAgainstModel({ex(), w, 2, kind, w % 3 == 0 ? 25 : 0, 2 + w % 5, w % 7, w % 13}, rng);
}

// Checks in their order, two faults at a time; nothing written on failure.
TEST_P(ReduceBitsExport, CheckOrder) {
  Plane src(64, 2), dst(64, 2);
  std::mt19937 rng(5);
  dst.FillRandom(rng);
  dst.Snapshot();
  const int maxL = ex().maxLevels();
  Kro8u buf[8000];
  struct C {
    bool nullSrc, nullDst;
    int w, h, noise, kind, levels;
    bool nullBuf;
    kroStatus status;
  } cases[] = {
      {true, false, 0, 1, 0, 0, 2, false, kroStatusNullPointer},
      {false, true, 1, 0, 0, 0, 2, false, kroStatusNullPointer},
      {false, false, 0, 1, 101, 0, 2, false, kroStatusBadSize},
      {false, false, 1, -1, 101, 0, 2, false, kroStatusBadSize},
      {false, false, 2, 2, 101, 5, 1, false, kroStatusBadNoise},
      {false, false, 2, 2, -1, 0, 2, false, kroStatusBadNoise},
      {false, false, 2, 2, 0, 5, 1, false, kroStatusBadDitherLevels},
      {false, false, 2, 2, 0, 0, maxL + 1, false, kroStatusBadDitherLevels},
      {false, false, 2, 2, 0, 0, -1, false, kroStatusBadDitherLevels},
      {false, false, 2, 2, 0, 5, maxL, true, kroStatusBadDitherType},
      {false, false, 2, 2, 0, -1, 2, true, kroStatusBadDitherType},
      {false, false, 2, 2, 0, 1, 2, true, kroStatusNullPointer},
      {false, false, 2, 2, 0, 3, 2, true, kroStatusNullPointer},
      {false, false, 2, 2, 1, 4, 2, true, kroStatusNullPointer},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ex().fn(c.nullSrc ? nullptr : src.data(), 64, c.nullDst ? nullptr : dst.data(), 64,
                      {c.w, c.h}, c.noise, c.kind, c.levels, c.nullBuf ? nullptr : buf),
              c.status)
        << ex().name << " kind " << c.kind << " levels " << c.levels;
    EXPECT_TRUE(dst.Unchanged()) << ex().name;
  }
  // Kind 0, and kind 4 without noise, need no buffer.
  EXPECT_EQ(ex().fn(src.data(), 64, dst.data(), 64, {2, 2}, 0, 4, 2, nullptr), kroStatusOk);
  EXPECT_EQ(ex().fn(src.data(), 64, dst.data(), 64, {2, 2}, 100, 0, maxL, nullptr), kroStatusOk);
}

// Kind 0 ignores noise and buffer; two equal calls give equal bytes under every kind; the
// destination's alpha is never written in AC4R.
TEST_P(ReduceBitsExport, RepeatableAndAlphaKept) {
  const int w = 21, h = 9, sb = ex().samples() * ex().srcBytes(),
            db = ex().samples() * ex().dstBytes();
  std::mt19937 rng(77);
  Plane src(w * sb, h), a(w * db, h), b(w * db, h);
  FillSource(ex(), src, rng, 15);
  std::vector<Kro8u> buffer(20000, 0xCD);
  for (int kind : {0, 1, 2, 3, 4}) {
    a.Fill(0x5A);
    b.Fill(0x5A);
    const int noise = kind == 0 ? 0 : 60;
    ASSERT_EQ(
        ex().fn(src.data(), src.step(), a.data(), a.step(), {w, h}, noise, kind, 16, buffer.data()),
        kroStatusOk);
    std::fill(buffer.begin(), buffer.end(), 0x33);  // contents between calls mean nothing
    ASSERT_EQ(ex().fn(src.data(), src.step(), b.data(), b.step(), {w, h}, kind == 0 ? 100 : noise,
                      kind, 16, kind == 0 ? nullptr : buffer.data()),
              kroStatusOk);
    EXPECT_EQ(a.Region(), b.Region()) << ex().name << " kind " << kind;
    if (ex().code == 4) {
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          for (int k = 0; k < ex().dstBytes(); ++k)
            ASSERT_EQ(a.row(y)[(4 * x + 3) * ex().dstBytes() + k], 0x5A)
                << ex().name << " kind " << kind;
    }
  }
}

// Source, destination and work buffer each end at an inaccessible page, or start right after
// one; the work buffer has exactly the size that the query gives.
TEST_P(ReduceBitsExport, GuardPages) {
  std::mt19937 rng(3);
  for (int w : {1, 5, 16, 40})
    for (int kind : {0, 1, 2, 4})
      for (int noise : {0, 10})
        for (bool guardStart : {false, true}) {
          const int h = 12, sRow = w * ex().samples() * ex().srcBytes(),
                    dRow = w * ex().samples() * ex().dstBytes();
          GuardedBuffer src(std::size_t(sRow) * h, guardStart),
              dst(std::size_t(dRow) * h, guardStart);
          for (std::size_t i = 0; i < src.size(); ++i) src.data()[i] = uint8_t(rng() & 0x3F);
          int size = 0;
          ASSERT_EQ(kroiReduceBitsGetBufferSize(ex().code == 4 ? 9 : ex().samples(), {w, h}, noise,
                                                kind, &size),
                    kroStatusOk);
          GuardedBuffer work(std::size_t(size > 0 ? size : 1), guardStart);
          EXPECT_EQ(ex().fn(src.data(), sRow, dst.data(), dRow, {w, h}, noise, kind, 5,
                            size > 0 ? work.data() : nullptr),
                    kroStatusOk)
              << ex().name;
        }
}

INSTANTIATE_TEST_SUITE_P(All, ReduceBitsExport, ::testing::Range(0, 32),
                         [](const ::testing::TestParamInfo<int>& i) {
                           return Exports()[i.param].name;
                         });

// ---- Worked examples --------------------------------------------------------------------------

TEST(ReduceBitsExamples, PlainLevels2And256) {
  Kro8u src[256], dst[256];
  for (int i = 0; i < 256; ++i) src[i] = Kro8u(i);
  ASSERT_EQ(kroiReduceBits_8u_C1R(src, 256, dst, 256, {256, 1}, 0, 0, 2, nullptr), kroStatusOk);
  EXPECT_EQ(dst[127], 0);
  EXPECT_EQ(dst[128], 255);
  ASSERT_EQ(kroiReduceBits_8u_C1R(src, 256, dst, 256, {256, 1}, 0, 0, 256, nullptr), kroStatusOk);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(dst[i], i);
}

TEST(ReduceBitsExamples, OrderedThresholdsAtOriginAndBelow) {
  const Kro8u src[2] = {128, 128};
  Kro8u dst[2] = {};
  ASSERT_EQ(kroiReduceBits_8u_C1R(src, 1, dst, 1, {1, 2}, 0, 4, 2, nullptr), kroStatusOk);
  EXPECT_EQ(dst[0], 255);  // T = 0 at (0, 0)
  EXPECT_EQ(dst[1], 0);    // T = 204 at (0, 1)
  // A sample on a level stays there even where T is 0: the comparison is strict.
  const Kro8u on[1] = {255};
  ASSERT_EQ(kroiReduceBits_8u_C1R(on, 1, dst, 1, {1, 1}, 0, 4, 2, nullptr), kroStatusOk);
  EXPECT_EQ(dst[0], 255);
}

// Width 1 under kind 1 gathers only 5/16 of the error above.
TEST(ReduceBitsExamples, FloydWidthOne) {
  const Kro8u src[2] = {100, 100};
  Kro8u dst[2] = {};
  Kro8u buf[200];
  ASSERT_EQ(kroiReduceBits_8u_C1R(src, 1, dst, 1, {1, 2}, 0, 1, 2, buf), kroStatusOk);
  EXPECT_EQ(dst[0], 0);    // 100 < 127.5: error 100
  EXPECT_EQ(dst[1], 255);  // 100 + 31.25 > 127.5
}

// An exact 0 on 32f8u: kind 1 sends it to the lowest output through its floor, kind 2 quantises
// it, which with noise 100 (thresholds down to minus half a step) can step up.
TEST(ReduceBitsExamples, ExactZeroOnFloatUnderKinds1And2) {
  const int w = 64;
  std::vector<Kro32f> src(w, 0.0f);
  std::vector<Kro8u> d1(w), d2(w), buf(20000);
  ASSERT_EQ(
      kroiReduceBits_32f8u_C1R(src.data(), w * 4, d1.data(), w, {w, 1}, 100, 1, 2, buf.data()),
      kroStatusOk);
  ASSERT_EQ(
      kroiReduceBits_32f8u_C1R(src.data(), w * 4, d2.data(), w, {w, 1}, 100, 2, 2, buf.data()),
      kroStatusOk);
  for (int x = 0; x < w; ++x) EXPECT_EQ(d1[x], 0) << x;
  EXPECT_NE(std::count(d2.begin(), d2.end(), 255), 0);
}

// The kind 4 tail with noise on C4R: width 3 puts every pixel in the tail, whose bare matrix
// threshold (below one unit) lets any remainder step up.
TEST(ReduceBitsExamples, OrderedC4TailWithNoise) {
  Kro8u src[12], dst[12], buf[7000];
  for (int i = 0; i < 12; ++i) src[i] = 1;  // remainder 1 of a step of 255
  ASSERT_EQ(kroiReduceBits_8u_C4R(src, 12, dst, 12, {3, 1}, 1, 4, 2, buf), kroStatusOk);
  for (int i = 0; i < 12; ++i) EXPECT_EQ(dst[i], 255) << i;
  ASSERT_EQ(kroiReduceBits_8u_C3R(src, 9, dst, 9, {3, 1}, 1, 4, 2, buf), kroStatusOk);
  for (int i = 3; i < 9; ++i) EXPECT_EQ(dst[i], 0) << i;  // thresholds of 8 and 2 fifteenths of 255
}

// With noise the look-up repeats every 512 rows (2y wraps at 1024), and not every 4.
TEST(ReduceBitsExamples, OrderedNoiseRepeatsAfter512Rows) {
  const int w = 64, h = 520;
  std::vector<Kro8u> src(w * h), dst(w * h), buf(7000);
  for (int i = 0; i < w * h; ++i) src[i] = Kro8u(i % w * 4);
  ASSERT_EQ(kroiReduceBits_8u_C1R(src.data(), w, dst.data(), w, {w, h}, 50, 4, 4, buf.data()),
            kroStatusOk);
  EXPECT_TRUE(std::equal(dst.begin(), dst.begin() + w, dst.begin() + 512 * w));
  EXPECT_FALSE(std::equal(dst.begin(), dst.begin() + w, dst.begin() + 4 * w));
}

// ---- Vector bodies against the portable kernels -----------------------------------------------

// Random samples of a pair's source: any bits for integers, -0.2..1.2 for floats.
template <class P>
void FillSamples(Plane& src, std::mt19937& rng) {
  src.FillRandom(rng);
  if (!P::kFloatSource) return;
  for (int y = 0; y < src.height(); ++y)
    for (int i = 0; i < src.rowBytes() / 4; ++i) {
      const float v = float(rng() % 1400) / 1000.0f - 0.2f;
      std::memcpy(src.row(y) + 4 * i, &v, 4);
    }
}

template <class P>
void CompareWithScalar(std::mt19937& rng) {
  for (int w : test::AllWidths())
    for (int code : {1, 3, 4, 5}) {
      const int n = w * dither::PixelStride(code);
      const int sb = int(sizeof(typename P::Src)), db = int(sizeof(typename P::Dst));
      Plane src(n * sb, 3, n * sb + 7, w % 5), a(n * db, 3, n * db + 3, w % 3),
          b(n * db, 3, n * db + 3, w % 3);
      FillSamples<P>(src, rng);
      std::vector<uint8_t> buf(7000);
      for (int noise : {0, 40}) {
        dither::Job job{src.data(), src.step(),           a.data(), a.step(), w,         3,
                        code,       1 + int(rng() % 200), noise,    4,        buf.data()};
        dither::ReducePlain<P>(job);
        job.dst = b.data();
        dither::ReducePlainScalar<P>(job);
        ASSERT_EQ(a.Region(), b.Region()) << "kind 0 w " << w << " code " << code;
        ASSERT_EQ(dither::ReduceOrdered<P>(job), kroStatusOk);
        job.dst = a.data();
        ASSERT_EQ(dither::ReduceOrderedScalar<P>(job), kroStatusOk);
        ASSERT_EQ(a.Region(), b.Region())
            << "kind 4 w " << w << " code " << code << " noise " << noise;
      }
    }
}

TEST(ReduceBitsVector, MatchesScalarTwins) {
  std::mt19937 rng(11);
  CompareWithScalar<dither::P8u>(rng);
  CompareWithScalar<dither::P16u>(rng);
  CompareWithScalar<dither::P16s>(rng);
  CompareWithScalar<dither::P16u8u>(rng);
  CompareWithScalar<dither::P16s8u>(rng);
  CompareWithScalar<dither::P32f8u>(rng);
  CompareWithScalar<dither::P32f16u>(rng);
  CompareWithScalar<dither::P32f16s>(rng);
}

// 8u kinds 0 and 4 (without noise) go through per-call byte tables when the level count allows
// (AC4R by sample, leaving alpha).
// Every level count, every byte value in every matrix cell (sample i of a C1R row holds i / 4,
// so cell i & 3 meets all 256 values; eight rows give the matrix rows twice), odd tails, images
// large enough for the tables.
TEST(ReduceBitsVector, ByteTablesAtEveryLevelCount) {
  for (int code : {1, 3, 4, 5}) {
    const int n = 1024 + 13, w = n / dither::PixelStride(code);
    Plane src(n, 8, n + 5, 1), a(n, 8, n + 3, 2), b(n, 8, n + 3, 2);
    for (int y = 0; y < 8; ++y)
      for (int i = 0; i < n; ++i) src.row(y)[i] = uint8_t((i >> 2) + 37 * y);
    for (int L = 1; L <= 255; ++L) {
      dither::Job job{src.data(), src.step(), a.data(), a.step(), w, 8, code, L, 0, 4, nullptr};
      dither::ReducePlain<dither::P8u>(job);
      job.dst = b.data();
      dither::ReducePlainScalar<dither::P8u>(job);
      ASSERT_EQ(a.Region(), b.Region()) << "kind 0 L " << L << " code " << code;
      ASSERT_EQ(dither::ReduceOrderedScalar<dither::P8u>(job), kroStatusOk);
      job.dst = a.data();
      ASSERT_EQ(dither::ReduceOrdered<dither::P8u>(job), kroStatusOk);
      ASSERT_EQ(a.Region(), b.Region()) << "kind 4 L " << L << " code " << code;
    }
  }
}

// Kinds 1 to 3 run bands of rows as a wavefront; they must give the plain row-by-row results at
// every width around the band's minimum, for every layout (bands cross channel passes) and height.
template <class P>
void CompareDiffusedWithScalar(std::mt19937& rng) {
  for (int w : test::AllWidths())
    for (int code : {1, 3, 4, 5}) {
      const int h = 1 + int(rng() % 30), n = w * dither::PixelStride(code);
      const int sb = int(sizeof(typename P::Src)), db = int(sizeof(typename P::Dst));
      Plane src(n * sb, h, n * sb + 4, w % 4), a(n * db, h, n * db + 2, 1),
          b(n * db, h, n * db + 2, 1);
      FillSamples<P>(src, rng);
      std::vector<uint8_t> buf(12 * w + 6384);
      const int noise = w % 2 ? 0 : 70, kind = 1 + w % 3;
      dither::Job job{src.data(), src.step(),           a.data(), a.step(), w,         h,
                      code,       1 + int(rng() % 200), noise,    kind,     buf.data()};
      ASSERT_EQ(dither::ReduceDiffused<P>(job), kroStatusOk);
      job.dst = b.data();
      ASSERT_EQ(dither::ReduceDiffusedScalar<P>(job), kroStatusOk);
      ASSERT_EQ(a.Region(), b.Region())
          << "kind " << kind << " w " << w << " h " << h << " code " << code;
    }
}

TEST(ReduceBitsVector, DiffusionBandsMatchRows) {
  std::mt19937 rng(12);
  CompareDiffusedWithScalar<dither::P8u>(rng);
  CompareDiffusedWithScalar<dither::P16u>(rng);
  CompareDiffusedWithScalar<dither::P16s>(rng);
  CompareDiffusedWithScalar<dither::P16u8u>(rng);
  CompareDiffusedWithScalar<dither::P16s8u>(rng);
  CompareDiffusedWithScalar<dither::P32f8u>(rng);
  CompareDiffusedWithScalar<dither::P32f16u>(rng);
  CompareDiffusedWithScalar<dither::P32f16s>(rng);
}

}  // namespace
}  // namespace kro
