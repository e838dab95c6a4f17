// The gamma family's power routine: x^y for the curve's two exponents (see gamma_pow.h).
#include "tone/gamma_pow.h"

#include <cmath>
#include <cstdint>
#include <cstring>

#include "frame/simd.h"

namespace kro::gamma {
namespace {

// The approximation a is within 2^-39 of x^y and the runtime's double pow within 2^-52, that is
// within 2^14 units of a's last place of each other. Unless the 29 bits of a below single
// precision lie within kNear = 2^16 units of the midpoint between two floats, both round to the
// same float. (For exponents in (0, 1] every result of an ordinary input is a normal float, so
// those 29 bits are exactly what the rounding drops.) About one input in 4000 is that near.
constexpr uint32_t kTailBits = 0x1FFFFFFF;
constexpr uint32_t kMidpoint = 0x10000000;
constexpr uint32_t kNear = 1u << 16;
static_assert(2 * kNear == 1u << 17, "the vector test shifts by 17");

template <class To, class From>
To BitCast(From from) {
  static_assert(sizeof(To) == sizeof(From));
  To to;
  std::memcpy(&to, &from, sizeof(To));
  return to;
}

// Positive, normal and finite: the inputs the tables cover.
bool Ordinary(uint32_t bits) { return bits - 0x00800000u < 0x7F000000u; }

double Approximate(uint32_t bits, const PowCurve& curve) {
  const double* seg = curve.segment[(bits >> 15) & 255];
  const float m = BitCast<float>((bits & 0x007FFFFFu) | 0x3F800000u);
  const double r = static_cast<double>(m) * seg[0] - 1.0;
  double p = curve.series[2] * r;
  p = (p + curve.series[1]) * r;
  p = (p + curve.series[0]) * r;
  p = p + 1.0;
  return (curve.scale[bits >> 23] * seg[1]) * p;
}

float Runtime(float x, const PowCurve& curve) {
  return static_cast<float>(std::pow(static_cast<double>(x), static_cast<double>(curve.exponent)));
}

float Unusual(float x, const PowCurve& curve) {
  return BitCast<uint32_t>(x) == 0 ? 0.0f : Runtime(x, curve);
}

template <bool kAsRuntime>
float PowOne(float x, const PowCurve& curve) {
  return kAsRuntime ? PowScalarAsRuntime(x, curve) : PowScalar(x, curve);
}

#if KRO_SIMD
// The double at a byte offset into a table.
template <class Table>
const double* At(const Table& table, uint64_t byteOffset) {
  return reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + byteOffset);
}

// The same address, hidden from the optimiser, so that reading the input's bits through it is a
// second load from memory: the compiler would otherwise move the lanes out of the vector register
// it has just loaded, one at a time through the single port between the vector and the general
// registers (measured 25 % slower).
template <class T>
const T* Opaque(const T* p) {
  __asm__("" : "+r"(p));
  return p;
}

// Four floats a round, as two pairs of doubles; table entries are fetched lane by lane. Lanes
// that are neither ordinary nor +0 are redone by the scalar twin, as are (as-runtime form)
// lanes whose rounding the bound does not decide.
template <bool kAsRuntime>
void PowRowSse2(const float* src, const PowCurve& curve, float* dst, int count) {
  const __m128i lift = _mm_set1_epi32(0x7F800000), normalTop = _mm_set1_epi32(-0x01000000);
  const __m128i mantissa = _mm_set1_epi32(0x007FFFFF), one = _mm_set1_epi32(0x3F800000);
  const __m128d oneD = _mm_set1_pd(1.0);
  const __m128d s0 = _mm_set1_pd(curve.series[0]), s1 = _mm_set1_pd(curve.series[1]),
                s2 = _mm_set1_pd(curve.series[2]);
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    const __m128 in = _mm_loadu_ps(src + i);
    const __m128i x = _mm_castps_si128(in);
    // Ordinary: x + 0x7F800000 wraps into [2^31, 2^32 - 2^24) exactly for x in
    // [0x00800000, 0x7F800000).
    const __m128i ordinary = _mm_cmplt_epi32(_mm_add_epi32(x, lift), normalTop);
    const __m128i zero = _mm_cmpeq_epi32(x, _mm_setzero_si128());
    // Any float indexes both tables; +0 meets a scale of 0 and comes out +0. The byte offsets
    // of the entries, ((bits >> 15) & 255) * 16 and (bits >> 23) * 8, are formed in general
    // registers from the input's bits read a second time as two 64-bit words (the vector unit,
    // which the arithmetic keeps busy, is not asked to hand the lanes over).
    const __m128 m = _mm_castsi128_ps(_mm_or_si128(_mm_and_si128(x, mantissa), one));
    __m128d a[2];
    for (int h = 0; h < 2; ++h) {
      const __m128d md = _mm_cvtps_pd(h ? _mm_movehl_ps(m, m) : m);
      uint64_t pair;
      std::memcpy(&pair, Opaque(src + i + 2 * h), sizeof(pair));
      const uint64_t b0 = pair & 0xFFFFFFFFu, b1 = pair >> 32;
      const __m128d e0 = _mm_load_pd(At(curve.segment, (b0 >> 11) & 0xFF0));
      const __m128d e1 = _mm_load_pd(At(curve.segment, (b1 >> 11) & 0xFF0));
      const __m128d scale = _mm_loadh_pd(_mm_load_sd(At(curve.scale, (b0 >> 20) & 0xFF8)),
                                         At(curve.scale, (b1 >> 20) & 0xFF8));
      const __m128d r = _mm_sub_pd(_mm_mul_pd(md, _mm_unpacklo_pd(e0, e1)), oneD);
      __m128d p = _mm_mul_pd(s2, r);
      p = _mm_mul_pd(_mm_add_pd(p, s1), r);
      p = _mm_mul_pd(_mm_add_pd(p, s0), r);
      p = _mm_add_pd(p, oneD);
      a[h] = _mm_mul_pd(_mm_mul_pd(scale, _mm_unpackhi_pd(e0, e1)), p);
    }
    __m128 result = _mm_movelh_ps(_mm_cvtpd_ps(a[0]), _mm_cvtpd_ps(a[1]));
    int redo = _mm_movemask_ps(_mm_castsi128_ps(_mm_or_si128(ordinary, zero))) ^ 15;
    if constexpr (kAsRuntime) {
      // The low words of the four doubles; tail - (midpoint - kNear) below 2 kNear = 2^17.
      const __m128i low = _mm_castps_si128(
          _mm_shuffle_ps(_mm_castpd_ps(a[0]), _mm_castpd_ps(a[1]), _MM_SHUFFLE(2, 0, 2, 0)));
      const __m128i v = _mm_sub_epi32(_mm_and_si128(low, _mm_set1_epi32(kTailBits)),
                                      _mm_set1_epi32(kMidpoint - kNear));
      const __m128i near = _mm_cmpeq_epi32(_mm_srli_epi32(v, 17), _mm_setzero_si128());
      redo |= _mm_movemask_ps(_mm_castsi128_ps(near));  // other lanes are redone anyway
    }
    if (redo != 0) {  // rare: keep the inputs, which an in-place call is about to overwrite
      float xs[4], rs[4];
      _mm_storeu_ps(xs, in);
      _mm_storeu_ps(rs, result);
      for (int lane = 0; lane < 4; ++lane)
        if (redo & (1 << lane)) rs[lane] = PowOne<kAsRuntime>(xs[lane], curve);
      result = _mm_loadu_ps(rs);
    }
    _mm_storeu_ps(dst + i, result);
  }
  for (; i < count; ++i) dst[i] = PowOne<kAsRuntime>(src[i], curve);
}
#endif

}  // namespace

float PowScalar(float x, const PowCurve& curve) {
  const uint32_t bits = BitCast<uint32_t>(x);
  if (!Ordinary(bits)) return Unusual(x, curve);
  return static_cast<float>(Approximate(bits, curve));
}

float PowScalarAsRuntime(float x, const PowCurve& curve) {
  const uint32_t bits = BitCast<uint32_t>(x);
  if (!Ordinary(bits)) return Unusual(x, curve);
  const double a = Approximate(bits, curve);
  const uint32_t tail = static_cast<uint32_t>(BitCast<uint64_t>(a)) & kTailBits;
  if (tail - (kMidpoint - kNear) < 2 * kNear) return Runtime(x, curve);
  return static_cast<float>(a);
}

namespace {
template <bool kAsRuntime>
void PowRowOf(const float* src, const PowCurve& curve, float* dst, int count) {
#if KRO_SIMD
  PowRowSse2<kAsRuntime>(src, curve, dst, count);
#else
  for (int i = 0; i < count; ++i) dst[i] = PowOne<kAsRuntime>(src[i], curve);
#endif
}
}  // namespace

void PowRow(const float* src, const PowCurve& curve, float* dst, int count) {
  PowRowOf<false>(src, curve, dst, count);
}

void PowRowAsRuntime(const float* src, const PowCurve& curve, float* dst, int count) {
  PowRowOf<true>(src, curve, dst, count);
}

}  // namespace kro::gamma
