// Row and plane copies and fills across their regimes, the cache-size queries that pick the
// regime, and the rounding-mode guard.
#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/copy_fill.h"
#include "frame/simd.h"
#include "support.h"

namespace kro {
namespace {

using test::GuardedBuffer;
using test::kCanary;
using test::Plane;

std::vector<uint8_t> Pattern(std::size_t n, unsigned seed) {
  std::vector<uint8_t> v(n);
  for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>(i * 131 + seed * 17 + 5);
  return v;
}

// ---- CopyRow / FillRow ----------------------------------------------------------------------

// Every length around the 64-byte switch and the 16/8/4/2/1 tails, every destination offset
// within a vector, streaming on and off: the copied bytes equal the source and nothing around
// them changes.
TEST(CopyRow, CopiesExactlyTheRowAtEveryLengthAndOffset) {
  const std::vector<uint8_t> src = Pattern(512, 1);
  for (bool streaming : {false, true}) {
    for (std::size_t n : {0, 1, 7, 15, 16, 17, 63, 64, 65, 79, 127, 128, 129, 200, 255, 300}) {
      for (int dstOff = 0; dstOff < 16; ++dstOff) {
        for (int srcOff : {0, 3, 16}) {
          std::vector<uint8_t> dst(n + 64, kCanary);
          CopyRow(src.data() + srcOff, dst.data() + 16 + dstOff, n, streaming);
          SCOPED_TRACE(testing::Message() << "n=" << n << " dstOff=" << dstOff << " srcOff="
                                          << srcOff << " streaming=" << streaming);
          for (std::size_t i = 0; i < dst.size(); ++i) {
            const bool inside = i >= 16u + dstOff && i < 16u + dstOff + n;
            const uint8_t want = inside ? src[srcOff + i - 16 - dstOff] : kCanary;
            if (dst[i] != want) {
              ADD_FAILURE() << "byte " << i;
              break;
            }
          }
        }
      }
    }
  }
}

// The band in which the source lies just behind the destination modulo 64 KiB keeps plain
// stores; only the low 16 bits of the difference count.
TEST(CopyRow, StreamingBandOfAddressDifferences) {
  struct Case {
    std::uintptr_t diff;
    bool mayStream;
  } cases[] = {{0, true},          {1, true},          {65215, true},
               {65216, false},     {65300, false},     {65520, false},
               {65521, true},      {65535, true},      {0x10000 + 65300, false},
               {0x30000 + 64, true}};
  for (const Case& c : cases) {
    const std::uintptr_t dst = 0x100000;
    EXPECT_EQ(CopyRowMayStream(dst + c.diff, dst), c.mayStream) << c.diff;
  }
}

// Inside the band (source 65300 bytes after the destination) the flagged copy still copies.
TEST(CopyRow, CopiesInsideTheBand) {
  std::vector<uint8_t> mem(65300 + 400, 0);
  const std::vector<uint8_t> payload = Pattern(300, 9);
  uint8_t* dst = mem.data() + 16;
  std::memcpy(dst + 65300, payload.data(), payload.size());
  CopyRow(dst + 65300, dst, payload.size(), true);
  EXPECT_EQ(0, std::memcmp(dst, payload.data(), payload.size()));
}

// Source and destination both end at an inaccessible page: no read or write past the row.
TEST(CopyRow, StaysInsideRowsThatEndAtAPage) {
  for (std::size_t n : {1, 15, 64, 65, 100, 191, 4096}) {
    for (bool streaming : {false, true}) {
      GuardedBuffer src(n), dst(n);
      std::memset(src.data(), 0x3C, n);
      CopyRow(src.data(), dst.data(), n, streaming);
      EXPECT_EQ(0, std::memcmp(src.data(), dst.data(), n)) << n;
    }
  }
  GuardedBuffer src(300, true), dst(300, true);  // rows that start right after a page
  std::memset(src.data(), 0x5A, 300);
  CopyRow(src.data(), dst.data(), 300, true);
  EXPECT_EQ(0, std::memcmp(src.data(), dst.data(), 300));
}

TEST(FillRow, FillsExactlyTheRowAtEveryLengthAndOffset) {
  uint8_t pattern[16];
  std::memset(pattern, 0x6B, sizeof pattern);
  for (bool streaming : {false, true}) {
    for (std::size_t n : {0, 1, 15, 16, 63, 64, 65, 80, 127, 128, 129, 333}) {
      for (int off = 0; off < 16; ++off) {
        std::vector<uint8_t> dst(n + 48, kCanary);
        FillRow(pattern, dst.data() + 16 + off, n, streaming);
        for (std::size_t i = 0; i < dst.size(); ++i) {
          const bool inside = i >= 16u + off && i < 16u + off + n;
          ASSERT_EQ(dst[i], inside ? 0x6B : kCanary)
              << "n=" << n << " off=" << off << " byte " << i << " streaming=" << streaming;
        }
      }
    }
  }
  GuardedBuffer end(130);
  FillRow(pattern, end.data(), 130, true);
  EXPECT_EQ(end.data()[129], 0x6B);
}

// ---- FillPlane --------------------------------------------------------------------------------

int g_queries = 0;
int32_t g_reportedCache = 0;
int CountingQuery(int32_t* size) {
  ++g_queries;
  *size = g_reportedCache;
  return 0;
}
int FailingQuery(int32_t*) {
  ++g_queries;
  return -1;
}

TEST(FillPlane, AsksForTheCacheOnlyAbove512KiB) {
  g_reportedCache = 1 << 20;
  g_queries = 0;
  EXPECT_FALSE(FillPlaneStreams(524288, CountingQuery));
  EXPECT_EQ(g_queries, 0);
  EXPECT_FALSE(FillPlaneStreams(524289, CountingQuery));  // below the reported size
  EXPECT_EQ(g_queries, 1);
  EXPECT_TRUE(FillPlaneStreams(1 << 20, CountingQuery));   // at the reported size
  EXPECT_FALSE(FillPlaneStreams((1 << 20) - 1, CountingQuery));
  g_reportedCache = 524289;
  EXPECT_TRUE(FillPlaneStreams(524289, CountingQuery));
  g_reportedCache = 0;  // an answer of zero bytes is still an answer: every large fill streams
  EXPECT_TRUE(FillPlaneStreams(524289, CountingQuery));
  g_queries = 0;
  EXPECT_FALSE(FillPlaneStreams(size_t{1} << 30, FailingQuery));  // no answer: plain stores
  EXPECT_EQ(g_queries, 1);
}

// A whole plane call at the boundary: 1024 x 512 never asks; one more row does. Bytes and
// padding are right either way, with a failing query too.
TEST(FillPlane, BoundaryPlanesFillTheSameBytes) {
  for (CacheQueryFn query : {CountingQuery, FailingQuery}) {
    g_reportedCache = 1 << 19;
    for (int height : {512, 513}) {
      g_queries = 0;
      Plane p(1024, height, 1024);
      ASSERT_EQ(FillPlane(0x42, p.data(), p.step(), 1024, height, query), kroStatusOk);
      EXPECT_EQ(g_queries, height == 512 ? 0 : 1);
      for (uint8_t b : p.Region()) ASSERT_EQ(b, 0x42);
      EXPECT_TRUE(p.CanariesIntact());
    }
  }
}

// Step equal to the width runs as one row, one byte more as height rows; same region bytes,
// padding untouched.
TEST(FillPlane, CollapsedAndRowByRowAgree) {
  for (int width : {1, 63, 64, 100, 1000}) {
    for (int height : {1, 2, 7}) {
      Plane tight(width, height, width), padded(width, height, width + 1);
      ASSERT_EQ(FillPlane(0xE1, tight.data(), width, width, height), kroStatusOk);
      ASSERT_EQ(FillPlane(0xE1, padded.data(), width + 1, width, height), kroStatusOk);
      EXPECT_EQ(tight.Region(), padded.Region());
      EXPECT_EQ(tight.Region(), std::vector<uint8_t>(size_t(width) * height, 0xE1));
      EXPECT_TRUE(padded.CanariesIntact());
      EXPECT_TRUE(tight.CanariesIntact());
    }
  }
}

TEST(FillPlane, StatusesInOrderAndNothingWritten) {
  Plane p(16, 2, 16);
  p.Snapshot();
  EXPECT_EQ(FillPlane(1, nullptr, 16, 0, 2), kroStatusNullPointer);  // null before size
  EXPECT_EQ(FillPlane(1, p.data(), 16, 0, 2), kroStatusBadSize);
  EXPECT_EQ(FillPlane(1, p.data(), 16, 16, 0), kroStatusBadSize);
  EXPECT_EQ(FillPlane(1, p.data(), 16, -3, 2), kroStatusBadSize);
  EXPECT_TRUE(p.Unchanged());
}

// ---- CopyPlane --------------------------------------------------------------------------------

uint32_t Cache1MiB() { return 1u << 20; }
uint32_t CacheUnknown() { return 0; }
uint32_t Cache64KiB() { return 1u << 16; }

TEST(CopyPlane, ChoosesItsPathByShapeAndCache) {
  struct Case {
    int srcStep, dstStep, width, height;
    DescriptorCacheFn cache;
    bool collapsed, streaming;
  } cases[] = {
      {64, 64, 64, 2048, Cache1MiB, true, false},       // 128 KiB: at the plain limit
      {64, 64, 64, 2049, Cache64KiB, true, true},       // above it, above half the cache
      {64, 64, 64, 2049, CacheUnknown, true, false},    // unknown cache: plain
      {65, 64, 64, 2049, Cache64KiB, false, true},      // steps differ: row by row
      {64, 64, 63, 4000, Cache64KiB, false, false},     // rows narrower than 64 bytes
      {63, 63, 63, 4000, Cache64KiB, true, true},       // ... unless they collapse
      {1024, 1024, 1024, 1024, Cache1MiB, true, true},  // 1 MiB above half of 1 MiB
      {1024, 1024, 1024, 512, Cache1MiB, true, false},  // exactly half: plain
      {1024, 1024, 1024, 513, Cache1MiB, true, true},
      {0, 0, 65536, 32768, CacheUnknown, false, false},  // 2^31: 32-bit count overflows...
      {0, 0, 65536, 32767, CacheUnknown, false, false},
  };
  for (const Case& c : cases) {
    const CopyPlanePlan plan = PlanCopyPlane(c.srcStep, c.dstStep, c.width, c.height, c.cache);
    SCOPED_TRACE(testing::Message() << c.srcStep << "/" << c.dstStep << " " << c.width << "x"
                                    << c.height);
    EXPECT_EQ(plan.collapsed, c.collapsed);
    if (int64_t{c.width} * c.height > INT32_MAX) {
      EXPECT_TRUE(plan.streaming);  // ... and streams at once, whatever the cache
    } else {
      EXPECT_EQ(plan.streaming, c.streaming);
    }
  }
}

// Same bytes on every path, for tight and padded steps, odd widths and unaligned rows.
TEST(CopyPlane, EveryPathCopiesTheSameBytes) {
  std::mt19937 rng(7);
  for (DescriptorCacheFn cache : {CacheUnknown, Cache64KiB}) {
    for (int width : {1, 5, 16, 63, 64, 65, 130, 700}) {
      for (int height : {1, 3, 200}) {
        for (int pad : {0, 1, 19}) {
          for (int offset : {0, 5}) {
            Plane src(width, height, width + pad, offset), dst(width, height, width + pad, 3);
            src.FillRandom(rng);
            CopyPlane(src.data(), src.step(), dst.data(), dst.step(), width, height, cache);
            ASSERT_EQ(src.Region(), dst.Region()) << width << "x" << height << " pad " << pad;
            ASSERT_TRUE(dst.CanariesIntact()) << width << "x" << height << " pad " << pad;
          }
        }
      }
    }
  }
}

TEST(CopyPlane, StaysInsidePlanesThatEndAtAPage) {
  for (DescriptorCacheFn cache : {CacheUnknown, Cache64KiB}) {
    const int width = 333, height = 700;
    GuardedBuffer src(size_t(width) * height), dst(size_t(width) * height);
    for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(i * 7);
    CopyPlane(src.data(), width, dst.data(), width, width, height, cache);
    EXPECT_EQ(0, std::memcmp(src.data(), dst.data(), src.size()));
  }
}

// ---- Cache queries ----------------------------------------------------------------------------

Leaf2Answer Answer(const char* vendor, uint32_t eax, uint32_t ebx, uint32_t ecx, uint32_t edx) {
  Leaf2Answer a;
  std::memcpy(a.vendor, vendor, 12);
  a.eax = eax, a.ebx = ebx, a.ecx = ecx, a.edx = edx;
  return a;
}

TEST(CacheQuery, DescriptorWalk) {
  const char* leaf2Vendor = kDescriptorVendor;
  const char* otherVendor = "OtherVendor!";
  // 0x43 (512 KiB) and 0x29 (4 MiB): the table's order, largest first, decides.
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x00430001, 0, 0x29, 0)), 4u << 20);
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x00000001, 0x0043, 0, 0)), 512u << 10);
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x01, 0, 0, 0xEC000000u >> 8)),
            24u << 20);
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x01, 0, 0, 0x48)), 3u << 20);
  // A register with its top bit set holds no descriptors.
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x01, 0x800000ECu, 0, 0x43)),
            512u << 10);
  // No descriptor of 512 KiB or more, two rounds, another vendor: unknown.
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x01, 0x2C, 0xFF, 0x30)), 0u);
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(leaf2Vendor, 0x00EC0002, 0, 0, 0)), 0u);
  EXPECT_EQ(CacheSizeFromDescriptors(Answer(otherVendor, 0x00EC0001, 0, 0, 0)), 0u);
}

// The processor's own answer is the size of its largest cache as the system reports it.
TEST(CacheQuery, LargestCacheMatchesTheSystem) {
  int64_t largest = 0;
  for (int index = 0; index < 8; ++index) {
    std::ifstream f("/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) +
                    "/size");
    std::string text;
    if (!(f >> text) || text.empty()) continue;
    int64_t size = std::stoll(text);
    if (text.back() == 'K') size <<= 10;
    if (text.back() == 'M') size <<= 20;
    largest = std::max(largest, size);
  }
  int32_t size = -1;
  const int result = kroGetMaxCacheSizeB(&size);
#if defined(__x86_64__) || defined(__i386__)
  ASSERT_EQ(result, 0);
  EXPECT_GE(size, 32 << 10);
  if (largest == 0) GTEST_SKIP() << "the system reports no cache sizes";
  EXPECT_EQ(size, largest);
#else
  EXPECT_NE(result, 0);
  EXPECT_EQ(size, -1);
#endif
}

// ---- Rounding-mode guard ----------------------------------------------------------------------

// Float to integer in the mode the vector conversions use.
int ConvertNow(float x) {
#if KRO_SIMD
  return _mm_cvtss_si32(_mm_set_ss(x));
#else
  return static_cast<int>(std::lrint(x));
#endif
}

TEST(RoundToNearestScope, SetsNearestAndRestoresTheCallersMode) {
  const int before = std::fegetround();
  for (int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
    std::fesetround(mode);
    const int outside = ConvertNow(2.5f);
    {
      RoundToNearestScope scope;
      EXPECT_EQ(ConvertNow(2.5f), 2);
      EXPECT_EQ(ConvertNow(-3.5f), -4);
    }
    EXPECT_EQ(ConvertNow(2.5f), outside);
  }
  std::fesetround(FE_UPWARD);
  EXPECT_EQ(ConvertNow(2.25f), 3);
  std::fesetround(before);
}

}  // namespace
}  // namespace kro
