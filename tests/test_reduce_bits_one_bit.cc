// ReduceBits to one bit: bit placement at every offset with its two unlike ends, the threshold of
// kind 0, the fixed-point Stucki diffusion of kind 3 against a model over a sequence of error
// rows, checks and guard pages.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "krocc.h"
#include "support.h"

namespace kro {
namespace {

using test::GuardedBuffer;

kroStatus Call(const std::vector<Kro8u>& src, int w, int h, Kro8u* dst, int dstStep, int offset,
               int kind, int threshold, Kro8u* buffer) {
  return kroiReduceBits_8u1u_C1R(src.data(), w, dst, dstStep, offset, {w, h}, 0, 0, kind,
                                 Kro8u(threshold), buffer);
}

TEST(ReduceBitsOneBit, OffsetThreeWidthTwoClearsTheRestOfTheByte) {
  Kro8u dst[2] = {0xFF, 0xFF};
  ASSERT_EQ(Call({200, 0}, 2, 1, dst, 2, 3, 0, 100, nullptr), kroStatusOk);
  EXPECT_EQ(dst[0], 0xF0);  // 111, then 1 0, then 000
  EXPECT_EQ(dst[1], 0xFF);
  Kro8u again[2] = {0xFF, 0xFF};
  ASSERT_EQ(Call({200, 0}, 2, 1, again, 2, 11, 0, 100, nullptr), kroStatusOk);  // 11 acts as 3
  EXPECT_EQ(again[0], 0xF0);
  EXPECT_EQ(again[1], 0xFF);
}

TEST(ReduceBitsOneBit, OffsetThreeWidthTwentyKeepsTheLastByteLowBits) {
  Kro8u dst[4] = {0xFF, 0xFF, 0xFF, 0xFF};
  ASSERT_EQ(Call(std::vector<Kro8u>(20, 0), 20, 1, dst, 4, 3, 0, 0, nullptr), kroStatusOk);
  EXPECT_EQ(dst[0], 0xE0);
  EXPECT_EQ(dst[1], 0x00);
  EXPECT_EQ(dst[2], 0x01);  // 7 pixels, the bit below them kept
  EXPECT_EQ(dst[3], 0xFF);
}

TEST(ReduceBitsOneBit, Thresholds) {
  std::vector<Kro8u> src(40);
  for (int i = 0; i < 40; ++i) src[i] = Kro8u(i * 7 % 256);
  src[5] = 255;
  Kro8u dst[5];
  ASSERT_EQ(Call(src, 40, 1, dst, 5, 0, 0, 255, nullptr), kroStatusOk);
  for (Kro8u b : dst) EXPECT_EQ(b, 0);
  ASSERT_EQ(Call(src, 40, 1, dst, 5, 0, 0, 0, nullptr), kroStatusOk);
  EXPECT_EQ(dst[0], 0x7F);  // only sample 0 is zero
  for (int i = 1; i < 5; ++i) EXPECT_EQ(dst[i], 0xFF);
}

// The model: bits from the definition, placed bit by bit, with a sequence of error rows.
std::vector<Kro8u> Model(const std::vector<Kro8u>& src, int w, int h, std::vector<Kro8u> dst,
                         int step, int offset, int kind, int threshold) {
  const int o = offset & 7;
  std::vector<std::vector<int32_t>> err(h + 2, std::vector<int32_t>(w + 4, 0));
  for (int y = 0; y < h; ++y) {
    const int32_t* p2 = err[y].data() + 2;
    const int32_t* p1 = err[y + 1].data() + 2;
    int32_t* c = err[y + 2].data() + 2;
    std::vector<int> bits(w);
    for (int x = 0; x < w; ++x) {
      const int s = src[y * w + x];
      if (kind == 0) {
        bits[x] = threshold < s;
        continue;
      }
      const int32_t a = 1 * p2[x - 2] + 2 * p2[x - 1] + 4 * p2[x] + 2 * p2[x + 1] + 1 * p2[x + 2] +
                        2 * p1[x - 2] + 4 * p1[x - 1] + 8 * p1[x] + 4 * p1[x + 1] + 2 * p1[x + 2] +
                        4 * c[x - 2] + 8 * c[x - 1];
      const int32_t v = s * 8192 + 23 * a;
      bits[x] = v > threshold * 8192;
      c[x] = (v >> 10) - (bits[x] ? 2047 : 0);
    }
    Kro8u* row = dst.data() + y * step;
    const int end = o + w, bytes = (end + 7) / 8;
    for (int b = 0; b < bytes; ++b) {
      int keep = 0;
      if (b == 0 && o != 0)
        keep = 0xFF00 >> o & 0xFF;
      else if (b == bytes - 1 && end % 8 != 0)
        keep = (1 << (8 - end % 8)) - 1;
      row[b] &= Kro8u(keep);
    }
    for (int x = 0; x < w; ++x) row[(o + x) / 8] |= Kro8u(bits[x] << (7 - (o + x) % 8));
  }
  return dst;
}

TEST(ReduceBitsOneBit, MatchesModelAtEveryOffset) {
  std::mt19937 rng(8);
  for (int kind : {0, 3})
    for (int w : {1, 2, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 64, 70})
      for (int offset : {0, 1, 3, 7, 8, 13}) {
        const int h = 4, step = (w + 7) / 8 + 2;
        std::vector<Kro8u> src(w * h), dst(step * h), buf(12 * w + 112);
        for (auto& s : src) s = Kro8u(rng());
        for (auto& d : dst) d = Kro8u(rng());
        const int threshold = int(rng() % 256);
        const auto want = Model(src, w, h, dst, step, offset, kind, threshold);
        ASSERT_EQ(Call(src, w, h, dst.data(), step, offset, kind, threshold, buf.data() + 3),
                  kroStatusOk);
        ASSERT_EQ(dst, want) << "kind " << kind << " w " << w << " offset " << offset;
      }
}

TEST(ReduceBitsOneBit, CheckOrder) {
  std::vector<Kro8u> src(16, 9);
  Kro8u dst[4] = {1, 2, 3, 4}, buf[400];
  const Kro8u* s = src.data();
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(nullptr, 8, dst, 1, 0, {0, 1}, 0, 0, 7, 0, buf),
            kroStatusNullPointer);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, nullptr, 1, 0, {8, 1}, 0, 0, 0, 0, buf),
            kroStatusNullPointer);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, dst, 1, 0, {0, 1}, 0, 0, 7, 0, buf), kroStatusBadSize);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, dst, 1, 0, {8, 0}, 0, 0, 7, 0, buf), kroStatusBadSize);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, dst, 1, -1, {8, 1}, 0, 0, 7, 0, buf), kroStatusBadSize);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, dst, 1, 0, {8, 1}, 0, 0, 1, 0, nullptr),
            kroStatusBadDitherType);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, dst, 1, 0, {8, 1}, 0, 0, 3, 0, nullptr),
            kroStatusNullPointer);
  const Kro8u untouched[4] = {1, 2, 3, 4};
  EXPECT_EQ(std::memcmp(dst, untouched, 4), 0);
  EXPECT_EQ(kroiReduceBits_8u1u_C1R(s, 8, dst, 1, 0, {8, 1}, 5, 6, 0, 8, nullptr), kroStatusOk);
  EXPECT_EQ(dst[0], 0xFF);
}

// A width of 8 at offset 0 writes whole bytes only; source, destination and a kind 3 buffer of
// 12w + 112 bytes each end at an inaccessible page.
TEST(ReduceBitsOneBit, GuardPages) {
  for (int w : {1, 8, 13, 40})
    for (int kind : {0, 3}) {
      const int h = 3, step = (w + 7) / 8;
      GuardedBuffer src(std::size_t(w) * h), dst(std::size_t(step) * h), buf(12 * w + 112);
      for (std::size_t i = 0; i < src.size(); ++i) src.data()[i] = Kro8u(i * 37);
      EXPECT_EQ(kroiReduceBits_8u1u_C1R(src.data(), w, dst.data(), step, 0, {w, h}, 0, 0, kind, 100,
                                        buf.data()),
                kroStatusOk);
    }
}

}  // namespace
}  // namespace kro
