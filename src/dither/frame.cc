// ReduceBits frame: the wrappers of the 32 typed exports and their checks, the size query of
// the work buffer, and the noise generator with its two tables.
#include <cmath>

#include "dither/reduce_bits.h"
#include "frame/checks.h"
#include "frame/entry.h"

namespace kro::dither {
namespace {

// ---- Generator --------------------------------------------------------------------------------
//
// A 32-bit linear congruential sequence added to a subtract-with-borrow sequence of lags 2 and 3
// with modulus 2^32 - 18. The record keeps the three most recent lagged terms (one, two and
// three back) and the borrow, 0 or -1.

struct Record {
  int32_t tag;
  uint32_t seed;
  union {
    int16_t i16[2];
    float f32[2];
  } range;  // low, high
  double mean;
  double scale;
  uint32_t lcg;   // congruential word
  uint32_t lag1;  // term one back
  uint32_t lag2;  // two back
  uint32_t lag3;  // three back
  int32_t borrow;
};
static_assert(sizeof(Record) == kRecordBytes, "the generator record is 56 bytes");

constexpr uint32_t kLcgMul = 69069u, kLcgAdd = 1013904243u;
constexpr double kTwoToMinus32 = 2.3283064365386963e-10;

void Seed(Record& r, int32_t tag, uint32_t seed) {
  r.tag = tag;
  r.seed = seed;
  r.lcg = 1131199209u;
  r.lag1 = seed;
  r.lag2 = seed * kLcgMul + kLcgAdd;
  r.lag3 = r.lag2 * kLcgMul + kLcgAdd;
  r.borrow = -1;
}

// One draw as a signed 32-bit value.
int32_t Draw(Record& r) {
  const uint32_t t = r.lag2 - r.lag3 + static_cast<uint32_t>(r.borrow);
  uint32_t next;
  if (static_cast<int32_t>(t) < 0) {
    next = t - 18u;
    r.borrow = -1;
  } else {
    next = t;
    r.borrow = 0;
  }
  r.lag3 = r.lag2;
  r.lag2 = r.lag1;
  r.lag1 = next;
  r.lcg = r.lcg * kLcgMul + kLcgAdd;
  return static_cast<int32_t>(next + r.lcg);
}

template <class T, int32_t kTag, class Put>
kroStatus Fill(T* table, int count, void* record, Put put) {
  if (table == nullptr || record == nullptr) return kroStatusNullPointer;
  if (count < 1) return kroStatusBadSize;
  Record r;
  std::memcpy(&r, record, sizeof r);
  if (r.tag != kTag) return kroStatusBadContext;
  for (int i = 0; i < count; ++i) table[i] = put(static_cast<double>(Draw(r)) * r.scale + r.mean);
  std::memcpy(record, &r, sizeof r);
  return kroStatusOk;
}

}  // namespace

void InitIndexRecord(void* record, uint32_t seed, int16_t low, int16_t high) {
  Record r{};
  Seed(r, kIndexTag, seed);
  r.range.i16[0] = low;
  r.range.i16[1] = high;
  // Integer sum and difference: exact.
  r.mean = static_cast<double>(int32_t{low} + high) * 0.5;
  r.scale = static_cast<double>(int32_t{high} - low) * kTwoToMinus32;
  std::memcpy(record, &r, sizeof r);
}

void InitNoiseRecord(void* record, uint32_t seed, float low, float high) {
  Record r{};
  Seed(r, kNoiseTag, seed);
  r.range.f32[0] = low;
  r.range.f32[1] = high;
  // Sum and difference rounded to single precision before they are widened.
  const float sum = low + high, diff = high - low;
  r.mean = static_cast<double>(sum) * 0.5;
  r.scale = static_cast<double>(diff) * kTwoToMinus32;
  std::memcpy(record, &r, sizeof r);
}

kroStatus FillIndexTable(int16_t* table, int count, void* record) {
  // The processor's default conversion: nearest, ties to even, in the current rounding mode.
  return Fill<int16_t, kIndexTag>(table, count, record,
                                  [](double v) { return static_cast<int16_t>(std::lrint(v)); });
}

kroStatus FillNoiseTable(float* table, int count, void* record) {
  return Fill<float, kNoiseTag>(table, count, record,
                                [](double v) { return static_cast<float>(v); });
}

NoiseTables BuildNoiseTables(uint8_t* a, float low, float high) {
  auto* index = reinterpret_cast<int16_t*>(a + kIndexTableOffset);
  auto* noise = reinterpret_cast<float*>(a + kNoiseTableOffset);
  InitIndexRecord(a + kIndexRecordOffset, 0, 0, 1024);
  FillIndexTable(index, kNoiseCount, a + kIndexRecordOffset);
  InitNoiseRecord(a + kNoiseRecordOffset, 0, low, high);
  FillNoiseTable(noise, kNoiseCount, a + kNoiseRecordOffset);
  return {noise, index};
}

namespace {

// Kinds 1 to 4 address rows in elements: each byte step loses the bits below its element size.
template <class T>
std::ptrdiff_t ElementStep(int step) {
  constexpr int kShift = sizeof(T) == 4 ? 2 : sizeof(T) == 2 ? 1 : 0;
  return static_cast<std::ptrdiff_t>(step >> kShift) * static_cast<std::ptrdiff_t>(sizeof(T));
}

// The typed exports: checks in their order, then the kernel of the dither kind.
template <class P, int kCode>
kroStatus ReduceBits(const typename P::Src* src, int srcStep, typename P::Dst* dst, int dstStep,
                     KroSize roi, int noise, int ditherKind, int levels, Kro8u* buffer) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  if (static_cast<uint32_t>(noise) > 100u) return kroStatusBadNoise;
  if (static_cast<uint32_t>(levels) - 2u > P::kMaxLevels - 2u) return kroStatusBadDitherLevels;
  Job job{reinterpret_cast<const uint8_t*>(src),
          srcStep,
          reinterpret_cast<uint8_t*>(dst),
          dstStep,
          roi.width,
          roi.height,
          kCode,
          levels - 1,
          noise,
          ditherKind,
          buffer};
  if (ditherKind == 0) {
    ReducePlain<P>(job);
    return kroStatusOk;
  }
  job.srcStep = ElementStep<typename P::Src>(srcStep);
  job.dstStep = ElementStep<typename P::Dst>(dstStep);
  if (ditherKind == 4) return ReduceOrdered<P>(job);
  if (ditherKind == 1 || ditherKind == 2 || ditherKind == 3) return ReduceDiffused<P>(job);
  return kroStatusBadDitherType;
}

}  // namespace
}  // namespace kro::dither

namespace kro::wrap {

kroStatus kroiReduceBitsGetBufferSize(int channels, KroSize roi, int noise, int ditherKind,
                                      int* size) {
  KRO_CHECK(CheckNull(size));
  if (roi.width < 1) return kroStatusBadSize;
  if (channels != 1 && channels != 3 && channels != 4 && channels != 9) return kroStatusBadChannel;
  if (static_cast<uint32_t>(noise) > 100u) return kroStatusBadNoise;
  if (ditherKind == 0) {
    *size = 0;
    return kroStatusOk;
  }
  // 32-bit arithmetic throughout, as the caller's int receives it.
  const uint32_t w = static_cast<uint32_t>(roi.width);
  uint32_t bytes;
  if (ditherKind == 4) {
    bytes = 0;
  } else if (ditherKind == 1) {
    bytes = w * 8u + 16u;  // two error rows of w + 2 floats
  } else if (ditherKind == 2 || ditherKind == 3) {
    bytes = w * 12u + 48u;  // three error rows of w + 4 floats
  } else {
    return kroStatusBadDitherType;
  }
  // Two tables (4096 + 2048 bytes) and two generator records of 56 bytes rounded up to 64.
  if (noise > 0) bytes += 64u + 64u + 6144u;
  if (bytes != 0) bytes += 64u;  // room to move the start to a 64-byte boundary
  *size = static_cast<int>(bytes);
  return kroStatusOk;
}

#define KRO_REDUCE_BITS(suffix, P)                                                                \
  kroStatus kroiReduceBits_##suffix##_C1R(const P::Src* s, int ss, P::Dst* d, int ds, KroSize r,  \
                                          int n, int k, int l, Kro8u* b) {                        \
    return dither::ReduceBits<P, 1>(s, ss, d, ds, r, n, k, l, b);                                 \
  }                                                                                               \
  kroStatus kroiReduceBits_##suffix##_C3R(const P::Src* s, int ss, P::Dst* d, int ds, KroSize r,  \
                                          int n, int k, int l, Kro8u* b) {                        \
    return dither::ReduceBits<P, 3>(s, ss, d, ds, r, n, k, l, b);                                 \
  }                                                                                               \
  kroStatus kroiReduceBits_##suffix##_AC4R(const P::Src* s, int ss, P::Dst* d, int ds, KroSize r, \
                                           int n, int k, int l, Kro8u* b) {                       \
    return dither::ReduceBits<P, 4>(s, ss, d, ds, r, n, k, l, b);                                 \
  }                                                                                               \
  kroStatus kroiReduceBits_##suffix##_C4R(const P::Src* s, int ss, P::Dst* d, int ds, KroSize r,  \
                                          int n, int k, int l, Kro8u* b) {                        \
    return dither::ReduceBits<P, 5>(s, ss, d, ds, r, n, k, l, b);                                 \
  }

KRO_REDUCE_BITS(8u, dither::P8u)
KRO_REDUCE_BITS(16u, dither::P16u)
KRO_REDUCE_BITS(16s, dither::P16s)
KRO_REDUCE_BITS(16u8u, dither::P16u8u)
KRO_REDUCE_BITS(16s8u, dither::P16s8u)
KRO_REDUCE_BITS(32f8u, dither::P32f8u)
KRO_REDUCE_BITS(32f16u, dither::P32f16u)
KRO_REDUCE_BITS(32f16s, dither::P32f16s)

#undef KRO_REDUCE_BITS

}  // namespace kro::wrap
