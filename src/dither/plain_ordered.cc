// ReduceBits kinds 0 (nearest level) and 4 (ordered dither on a 4 by 4 Bayer matrix).
//
// Both treat every sample on its own, so a row is a flat run of samples (C1R, C3R, C4R) or a
// run of pixels whose fourth sample is skipped (AC4R). The vector bodies take sixteen samples a
// turn in four single-precision vectors and give exactly the per-sample results; the rest of a
// run goes sample by sample.
#include <algorithm>

#include "dither/reduce_bits.h"
#include "frame/checks.h"
#include "frame/simd.h"

namespace kro::dither {
namespace {

// ---- Kind 0 -----------------------------------------------------------------------------------
//
// Works in a domain normalised to 0..1: u = sample * A, q = trunc(L * u) / L, one more step if
// the remainder exceeds half a step (strictly), then trunc(q * O) saturated. A is 1/255 for
// 8-bit sources and 1/65535 for 16-bit ones (none for float samples); O is the destination's
// top, so unlike kinds 1 to 4 a 16-bit source narrows to bytes by the factor 255, not by a shift.

template <class P>
struct PlainConstants {
  float a, l, r, h;
  explicit PlainConstants(int L)
      : a(P::kSource == Source::k8u ? 0.003921569f : 1.5259022e-5f),
        l(static_cast<float>(L)),
        r(1.0f / static_cast<float>(L)),
        h(0.5f / static_cast<float>(L)) {}
};

template <class P>
int32_t PlainSample(float w, const PlainConstants<P>& k) {
  const float u = P::kFloatSource ? w : w * k.a;
  float q = static_cast<float>(Trunc(k.l * u)) * k.r;
  if (k.h < u - q) q = q + k.r;
  return Saturate<P::kDest>(Trunc(q * P::kOut));
}

// ---- Kind 4 -----------------------------------------------------------------------------------
//
// Threshold T per pixel from the matrix (and the noise), shared by its channels; the working
// value is quantised down by trunc(v * I) steps and stepped up when T < remainder (strictly).

// The Bayer matrix, entries / 15 in single precision.
constexpr int kBayerValue[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
constexpr float kBayer[4][4] = {
    {0.0f / 15.0f, 8.0f / 15.0f, 2.0f / 15.0f, 10.0f / 15.0f},
    {12.0f / 15.0f, 4.0f / 15.0f, 14.0f / 15.0f, 6.0f / 15.0f},
    {3.0f / 15.0f, 11.0f / 15.0f, 1.0f / 15.0f, 9.0f / 15.0f},
    {15.0f / 15.0f, 7.0f / 15.0f, 13.0f / 15.0f, 5.0f / 15.0f},
};

template <class P>
int32_t OrderedSample(float v, float t, float s, float i) {
  float q = static_cast<float>(Trunc(v * i)) * s;
  const float d = v - q;
  if (t < d) q = q + s;
  if constexpr (P::kFloatSource) {
    return Saturate<P::kDest>(Trunc(q * P::kOut));
  } else {
    const int32_t n = Trunc(q);
    return Saturate<P::kDest>(P::kNarrow ? n >> 8 : n);
  }
}

// Thresholds of one call.
struct Thresholds {
  float step;
  bool noisy;
  NoiseTables tables;
  // Pixels from this column on take the bare matrix entry (see OrderedThresholds).
  int bareFrom;
  float At(int x, int y) const {
    const float m = kBayer[y & 3][x & 3];
    if (x >= bareFrom) return m;
    return noisy ? (tables.At(x, y) + m) * step : m * step;
  }
};

// With noise, the C4R kernels of every pair and the 8u AC4R path go through the row in groups of
// four pixels and leave the last width & 3 pixels to a tail that compares against the bare
// matrix entry, neither scaled by the step nor offset by noise. That tail is kept as it is: in
// the integer pairs such a threshold is below one unit, so those pixels step up for nearly any
// remainder, while in the float pairs they mostly stay down.
template <class P>
kroStatus OrderedThresholds(const Job& job, Thresholds* t) {
  t->step = P::Step(job.L);
  t->noisy = job.noise > 0;
  t->bareFrom = job.width;
  if (!t->noisy) return kroStatusOk;
  if (job.buffer == nullptr) return kroStatusNullPointer;
  const float n = static_cast<float>(job.noise);
  t->tables = BuildNoiseTables(AlignWork(job.buffer), -n / 100.0f, n / 100.0f);
  if (job.code == 5 || (job.code == 4 && P::kSource == Source::k8u && P::kByteDest)) {
    t->bareFrom = job.width & ~3;
  }
  return kroStatusOk;
}

// ---- Sample access ----------------------------------------------------------------------------

template <class P>
void PutAt(uint8_t* row, int i, int32_t value) {
  Store(row + static_cast<std::size_t>(i) * sizeof(typename P::Dst),
        static_cast<typename P::Dst>(value));
}

// ---- Scalar kernels ---------------------------------------------------------------------------

template <class P>
void PlainImageScalar(const Job& job) {
  const PlainConstants<P> k(job.L);
  const int ch = ChannelsQuantised(job.code), stride = PixelStride(job.code);
  for (int y = 0; y < job.height; ++y) {
    const uint8_t* s = job.SrcRow(y);
    uint8_t* d = job.DstRow(y);
    for (int x = 0; x < job.width; ++x) {
      for (int c = 0; c < ch; ++c) {
        const int i = x * stride + c;
        PutAt<P>(d, i, PlainSample<P>(WorkAt<P>(s, i), k));
      }
    }
  }
}

template <class P>
void OrderedImageScalar(const Job& job, const Thresholds& th) {
  const float s = th.step, inv = P::Inverse(job.L);
  const int ch = ChannelsQuantised(job.code), stride = PixelStride(job.code);
  for (int y = 0; y < job.height; ++y) {
    const uint8_t* src = job.SrcRow(y);
    uint8_t* dst = job.DstRow(y);
    for (int x = 0; x < job.width; ++x) {
      const float t = th.At(x, y);
      for (int c = 0; c < ch; ++c) {
        const int i = x * stride + c;
        PutAt<P>(dst, i, OrderedSample<P>(WorkAt<P>(src, i), t, s, inv));
      }
    }
  }
}

#if KRO_SIMD

// ---- Vector bodies ----------------------------------------------------------------------------

// Sixteen samples as four vectors of working values.
template <class P>
void LoadWork16(const uint8_t* p, __m128 w[4]) {
  const __m128i zero = _mm_setzero_si128();
  if constexpr (P::kSource == Source::k8u) {
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i lo = _mm_unpacklo_epi8(b, zero), hi = _mm_unpackhi_epi8(b, zero);
    w[0] = _mm_cvtepi32_ps(_mm_unpacklo_epi16(lo, zero));
    w[1] = _mm_cvtepi32_ps(_mm_unpackhi_epi16(lo, zero));
    w[2] = _mm_cvtepi32_ps(_mm_unpacklo_epi16(hi, zero));
    w[3] = _mm_cvtepi32_ps(_mm_unpackhi_epi16(hi, zero));
  } else if constexpr (P::kWideSource) {
    // A 16s sample plus 32768 is the sample with its top bit flipped, read as unsigned.
    const __m128i flip = _mm_set1_epi16(P::kSource == Source::k16s ? -32768 : 0);
    for (int h = 0; h < 2; ++h) {
      const __m128i v =
          _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * h)), flip);
      w[2 * h] = _mm_cvtepi32_ps(_mm_unpacklo_epi16(v, zero));
      w[2 * h + 1] = _mm_cvtepi32_ps(_mm_unpackhi_epi16(v, zero));
    }
  } else {
    for (int j = 0; j < 4; ++j) w[j] = _mm_loadu_ps(reinterpret_cast<const float*>(p) + 4 * j);
  }
}

// Sixteen 32-bit results saturated onto the destination (packs, as the scalar Saturate).
template <class P>
void StoreSaturated16(uint8_t* p, const __m128i t[4]) {
  if constexpr (P::kByteDest) {
    const __m128i lo = _mm_packs_epi32(t[0], t[1]), hi = _mm_packs_epi32(t[2], t[3]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(lo, hi));
  } else {
    // Negative values to 0 first, so that t - 32768 cannot wrap; then a signed pack saturates
    // to -32768..32767, which a 16u destination reads back with its top bit flipped.
    const __m128i zero = _mm_setzero_si128(), bias = _mm_set1_epi32(32768);
    const __m128i flip = _mm_set1_epi16(P::kDest == Dest::k16u ? -32768 : 0);
    __m128i u[4];
    for (int j = 0; j < 4; ++j) {
      u[j] = _mm_sub_epi32(_mm_andnot_si128(_mm_cmplt_epi32(t[j], zero), t[j]), bias);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p),
                     _mm_xor_si128(_mm_packs_epi32(u[0], u[1]), flip));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16),
                     _mm_xor_si128(_mm_packs_epi32(u[2], u[3]), flip));
  }
}

// Runs n samples: sixteen a turn through `quant` (four vectors of working values and the
// index of the first sample to four 32-bit results), the rest through `one` (index to result).
template <class P, class Quant, class One>
void RunVector(const uint8_t* s, uint8_t* d, int n, Quant quant, One one) {
  constexpr std::size_t kIn = sizeof(typename P::Src), kOut = sizeof(typename P::Dst);
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    __m128 w[4];
    __m128i t[4];
    LoadWork16<P>(s + i * kIn, w);
    quant(w, i, t);
    StoreSaturated16<P>(d + i * kOut, t);
  }
  for (; i < n; ++i) PutAt<P>(d, i, one(WorkAt<P>(s, i), i));
}

template <class P>
void PlainRunVector(const uint8_t* s, uint8_t* d, int n, const PlainConstants<P>& k) {
  const __m128 a = _mm_set1_ps(k.a), l = _mm_set1_ps(k.l), r = _mm_set1_ps(k.r),
               h = _mm_set1_ps(k.h), o = _mm_set1_ps(P::kOut);
  RunVector<P>(
      s, d, n,
      [&](const __m128 w[4], int, __m128i t[4]) {
        for (int j = 0; j < 4; ++j) {
          const __m128 u = P::kFloatSource ? w[j] : _mm_mul_ps(w[j], a);
          __m128 q = _mm_mul_ps(_mm_cvtepi32_ps(_mm_cvttps_epi32(_mm_mul_ps(l, u))), r);
          q = _mm_add_ps(q, _mm_and_ps(_mm_cmplt_ps(h, _mm_sub_ps(u, q)), r));
          t[j] = _mm_cvttps_epi32(_mm_mul_ps(q, o));
        }
      },
      [&](float w, int) { return PlainSample<P>(w, k); });
}

// n samples whose thresholds are thr[0..n).
template <class P>
void OrderedRunVector(const uint8_t* s, uint8_t* d, int n, const float* thr, float step,
                      float inverse) {
  const __m128 sv = _mm_set1_ps(step), iv = _mm_set1_ps(inverse), o = _mm_set1_ps(P::kOut);
  RunVector<P>(
      s, d, n,
      [&](const __m128 w[4], int i, __m128i t[4]) {
        for (int j = 0; j < 4; ++j) {
          __m128 q = _mm_mul_ps(_mm_cvtepi32_ps(_mm_cvttps_epi32(_mm_mul_ps(w[j], iv))), sv);
          const __m128 up = _mm_cmplt_ps(_mm_loadu_ps(thr + i + 4 * j), _mm_sub_ps(w[j], q));
          q = _mm_add_ps(q, _mm_and_ps(up, sv));
          if constexpr (P::kFloatSource) {
            t[j] = _mm_cvttps_epi32(_mm_mul_ps(q, o));
          } else {
            t[j] = _mm_cvttps_epi32(q);
            if constexpr (P::kNarrow) t[j] = _mm_srai_epi32(t[j], 8);
          }
        }
      },
      [&](float w, int i) { return OrderedSample<P>(w, thr[i], step, inverse); });
}

// ---- Byte tables for 8-bit samples ----------------------------------------------------------
//
// With an 8-bit source and destination, kind 0 maps each byte value to one result, and kind 4
// without noise maps a byte value and a matrix cell to one. Both are tabulated per call from the
// per-sample arithmetic above and then applied with byte shuffles, so every result is one the
// per-sample code gives; a call whose tables do not fit the shuffles' form takes the float body.

// Kind 0 as a function of the byte: the value at the start of each run of sixteen (high nibble)
// plus, for each change inside the run, a difference added from its low-nibble position on. Up to
// 16 levels change once per run, 32 twice, around 140 eight times; each change costs
// about a sixth of the float body, so tables with more than kMaxSteps changes in one run are left
// to it.
constexpr int kMaxSteps = 8;

struct ByteSteps {
  int steps;  // changes per run, 0..kMaxSteps
  alignas(16) uint8_t base[16];
  alignas(16) uint8_t from[kMaxSteps][16];  // low-nibble position - 1; 15 never fires
  alignas(16) uint8_t add[kMaxSteps][16];   // difference, modulo 256

  bool Build(const uint8_t (&table)[256]) {
    steps = 0;
    for (int h = 0; h < 16; ++h) {
      const uint8_t* run = table + 16 * h;
      base[h] = run[0];
      int k = 0;
      for (int l = 1; l < 16; ++l) {
        if (run[l] == run[l - 1]) continue;
        if (k == kMaxSteps) return false;
        from[k][h] = static_cast<uint8_t>(l - 1);
        add[k][h] = static_cast<uint8_t>(run[l] - run[l - 1]);
        ++k;
      }
      for (int j = k; j < kMaxSteps; ++j) from[j][h] = 15, add[j][h] = 0;
      steps = k > steps ? k : steps;
    }
    return true;
  }
};

template <int kSteps>
void ByteStepsRun(const uint8_t* s, uint8_t* d, int n, const ByteSteps& t) {
  const __m128i nibble = _mm_set1_epi8(15);
  const __m128i base = _mm_load_si128(reinterpret_cast<const __m128i*>(t.base));
  __m128i from[kSteps > 0 ? kSteps : 1], add[kSteps > 0 ? kSteps : 1];
  for (int j = 0; j < kSteps; ++j) {
    from[j] = _mm_load_si128(reinterpret_cast<const __m128i*>(t.from[j]));
    add[j] = _mm_load_si128(reinterpret_cast<const __m128i*>(t.add[j]));
  }
  int i = 0;
#pragma GCC unroll 2
  for (; i + 16 <= n; i += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    const __m128i hi = _mm_and_si128(_mm_srli_epi16(v, 4), nibble), lo = _mm_and_si128(v, nibble);
    __m128i r = _mm_shuffle_epi8(base, hi);
    for (int j = 0; j < kSteps; ++j) {
      const __m128i on = _mm_cmpgt_epi8(lo, _mm_shuffle_epi8(from[j], hi));
      r = _mm_add_epi8(r, _mm_and_si128(on, _mm_shuffle_epi8(add[j], hi)));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), r);
  }
  for (; i < n; ++i) {
    const int v = s[i], h = v >> 4, l = v & 15;
    int r = t.base[h];
    for (int j = 0; j < kSteps; ++j) r += l > t.from[j][h] ? t.add[j][h] : 0;
    d[i] = static_cast<uint8_t>(r);
  }
}

// Kind 0 on 8u rows through the byte table (AC4R by plain look-up); false (nothing written) when
// it does not fit.
template <class P>
bool PlainImageBytes(const Job& job, const PlainConstants<P>& k) {
  if constexpr (P::kSource != Source::k8u || !P::kByteDest) {
    return false;
  } else {
    // The 256 results through the float body, which gives the per-sample results.
    alignas(16) uint8_t values[256], table[256];
    for (int v = 0; v < 256; ++v) values[v] = static_cast<uint8_t>(v);
    PlainRunVector<P>(values, table, 256, k);
    if (job.code == 4) {  // pixel by pixel, the alpha byte untouched
      for (int y = 0; y < job.height; ++y) {
        const uint8_t* s = job.SrcRow(y);
        uint8_t* d = job.DstRow(y);
        for (int i = 0; i < 4 * job.width; i += 4)
          for (int c = 0; c < 3; ++c) d[i + c] = table[s[i + c]];
      }
      return true;
    }
    ByteSteps t;
    if (!t.Build(table)) return false;
    const int n = job.width * ChannelsQuantised(job.code);
    using Run = void (*)(const uint8_t*, uint8_t*, int, const ByteSteps&);
    constexpr Run kRuns[] = {ByteStepsRun<0>, ByteStepsRun<1>, ByteStepsRun<2>,
                             ByteStepsRun<3>, ByteStepsRun<4>, ByteStepsRun<5>,
                             ByteStepsRun<6>, ByteStepsRun<7>, ByteStepsRun<8>};
    static_assert(sizeof(kRuns) / sizeof(kRuns[0]) == kMaxSteps + 1, "one run per step count");
    for (int y = 0; y < job.height; ++y) kRuns[t.steps](job.SrcRow(y), job.DstRow(y), n, t);
    return true;
  }
}

template <class P>
void PlainImageVector(const Job& job) {
  const PlainConstants<P> k(job.L);
  if (PlainImageBytes<P>(job, k)) return;
  if (job.code == 4) return PlainImageScalar<P>(job);  // alpha is skipped sample by sample
  const int n = job.width * ChannelsQuantised(job.code);
  for (int y = 0; y < job.height; ++y) PlainRunVector<P>(job.SrcRow(y), job.DstRow(y), n, k);
}

// Kind 4 without noise on 8u, up to 16 levels. The step count below a sample, trunc(v * I), is
// the high half of v * M for a 16-bit M, and the low half orders the remainders: for each matrix
// cell the samples that step up are exactly those whose low half exceeds a bound. M and the
// bounds are found from the per-sample arithmetic over all 256 values and 16 cells; the result
// is then low[k] or low[k] + rise[k] for step count k.
struct OrderedBytes {
  uint16_t mul;
  alignas(16) uint8_t low[16];
  alignas(16) uint8_t rise[16];  // modulo 256
  int16_t bound[4][4];           // per matrix cell, with the top bit flipped for a signed compare
  // When the top byte of the low half is enough to separate the samples for every cell (15
  // levels and 16 among others), the same bounds in bytes.
  bool narrow;
  int8_t bound8[4][4];

  // A call runs in 1 to 2 microseconds: only the first and last sample of each step bound M,
  // and each sample meets the matrix thresholds in their order.
  template <class P>
  bool Build(float s, float inv) {
    uint8_t k[256];
    for (int v = 0; v < 256; ++v) {
      const int32_t n = Trunc(P::Work(v) * inv);
      if (n < 0 || n > 15 || (v > 0 && n < k[v - 1])) return false;
      k[v] = static_cast<uint8_t>(n);
    }
    if (k[0] != 0) return false;
    // M with k = (v * M) >> 16 for every v: within a step the first sample bounds M from below
    // and the last from above.
    int64_t lo = 0, hi = 65535;
    for (int v = 1; v < 256; ++v) {
      if (k[v] != k[v - 1]) lo = std::max<int64_t>(lo, (int64_t{k[v]} * 65536 + v - 1) / v);
      if (v == 255 || k[v + 1] != k[v])
        hi = std::min<int64_t>(hi, ((int64_t{k[v]} + 1) * 65536 + v - 1) / v - 1);
    }
    if (lo > hi) return false;
    mul = static_cast<uint16_t>(lo);
    for (int j = 0; j < 16; ++j) {
      const float q = static_cast<float>(j) * s;
      const int32_t down = Saturate<P::kDest>(Trunc(q)), up = Saturate<P::kDest>(Trunc(q + s));
      low[j] = static_cast<uint8_t>(down);
      rise[j] = static_cast<uint8_t>(up - down);
    }
    // Thresholds by matrix value N (cell entries N / 15), which must rise strictly with N; a
    // sample then steps up for exactly the N below its count c of thresholds under its remainder.
    float t[16];
    for (int cy = 0; cy < 4; ++cy)
      for (int cx = 0; cx < 4; ++cx) t[kBayerValue[cy][cx]] = kBayer[cy][cx] * s;
    for (int n = 1; n < 16; ++n)
      if (!(t[n - 1] < t[n])) return false;
    int most[17], least[17];  // per count c: largest and smallest low half
    for (int c = 0; c <= 16; ++c) most[c] = -1, least[c] = 65536;
    for (int v = 0; v < 256; ++v) {
      const float d = P::Work(v) - static_cast<float>(k[v]) * s;
      int c = 0;
      while (c < 16 && t[c] < d) ++c;
      if (((v * mul) >> 16) != k[v]) return false;
      const int frac = (v * mul) & 0xFFFF;
      most[c] = std::max(most[c], frac);
      least[c] = std::min(least[c], frac);
    }
    // Value N: the samples that stay have counts up to N, those that step up counts above N.
    int stay[16];
    narrow = true;
    for (int n = 15, climb = 65536; n >= 0; --n) {
      climb = std::min(climb, least[n + 1]);
      stay[n] = -1;
      for (int c = 0; c <= n; ++c) stay[n] = std::max(stay[n], most[c]);
      if (stay[n] < 0 || stay[n] >= climb) return false;
      narrow = narrow && (stay[n] >> 8) < (climb >> 8);
    }
    for (int cy = 0; cy < 4; ++cy)
      for (int cx = 0; cx < 4; ++cx) {
        const int b = stay[kBayerValue[cy][cx]];
        bound[cy][cx] = static_cast<int16_t>(b ^ 0x8000);
        bound8[cy][cx] = static_cast<int8_t>((b >> 8) ^ 0x80);
      }
    return true;
  }
  // One sample v against the bound of its cell (in bytes when `narrowBound`).
  uint8_t At(int v, int cellBound, bool narrowBound = false) const {
    const int prod = v * mul, k = prod >> 16;
    const bool up = narrowBound ? static_cast<int8_t>(((prod >> 8) & 0xFF) ^ 0x80) > cellBound
                                : static_cast<int16_t>((prod & 0xFFFF) ^ 0x8000) > cellBound;
    return static_cast<uint8_t>(low[k] + (up ? rise[k] : 0));
  }
};

constexpr int64_t kOrderedBytesMin = 4096;

// n samples of one row; pattern[i % 48] is the bound of sample i's matrix cell (48 samples are
// whole four-pixel periods for one, three and four channels), in bytes when kNarrow. The narrow
// form takes the step count and the top byte of the low half from one product, (v << 8) * M.
template <bool kNarrow, class Bound>
void OrderedBytesRun(const uint8_t* s, uint8_t* d, int n, const OrderedBytes& t,
                     const Bound* pattern) {
  const __m128i zero = _mm_setzero_si128(), flip = _mm_set1_epi16(-32768);
  const __m128i flip8 = _mm_set1_epi8(-128);
  const __m128i bytes = _mm_setr_epi8(1, 3, 5, 7, 9, 11, 13, 15, 0, 2, 4, 6, 8, 10, 12, 14);
  const __m128i m = _mm_set1_epi16(static_cast<int16_t>(t.mul));
  const __m128i low = _mm_load_si128(reinterpret_cast<const __m128i*>(t.low));
  const __m128i rise = _mm_load_si128(reinterpret_cast<const __m128i*>(t.rise));
  int i = 0, p = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    __m128i k, up;
    if constexpr (kNarrow) {
      // Each 16-bit lane: step count in the high byte, top of the low half in the low byte.
      const __m128i a = _mm_shuffle_epi8(_mm_mulhi_epu16(_mm_unpacklo_epi8(zero, v), m), bytes);
      const __m128i b = _mm_shuffle_epi8(_mm_mulhi_epu16(_mm_unpackhi_epi8(zero, v), m), bytes);
      k = _mm_unpacklo_epi64(a, b);
      up = _mm_cmpgt_epi8(_mm_xor_si128(_mm_unpackhi_epi64(a, b), flip8),
                          _mm_load_si128(reinterpret_cast<const __m128i*>(pattern + p)));
    } else {
      const __m128i a = _mm_unpacklo_epi8(v, zero), b = _mm_unpackhi_epi8(v, zero);
      k = _mm_packus_epi16(_mm_mulhi_epu16(a, m), _mm_mulhi_epu16(b, m));
      const __m128i fa = _mm_xor_si128(_mm_mullo_epi16(a, m), flip);
      const __m128i fb = _mm_xor_si128(_mm_mullo_epi16(b, m), flip);
      up = _mm_packs_epi16(
          _mm_cmpgt_epi16(fa, _mm_load_si128(reinterpret_cast<const __m128i*>(pattern + p))),
          _mm_cmpgt_epi16(fb, _mm_load_si128(reinterpret_cast<const __m128i*>(pattern + p + 8))));
    }
    const __m128i r =
        _mm_add_epi8(_mm_shuffle_epi8(low, k), _mm_and_si128(up, _mm_shuffle_epi8(rise, k)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), r);
    p = p == 32 ? 0 : p + 16;
  }
  for (; i < n; ++i) d[i] = t.At(s[i], pattern[i % 48], kNarrow);
}

// Kind 4 without noise on 8u rows through OrderedBytes (AC4R sample by sample); false (nothing
// written) when the call's level count does not fit it.
template <class P>
bool OrderedImageBytes(const Job& job, const Thresholds& th) {
  if constexpr (P::kSource != Source::k8u || !P::kByteDest) {
    return false;
  } else {
    const int ch = ChannelsQuantised(job.code);
    // Below this many samples the tables cost more than they save.
    if (th.noisy || int64_t{job.width} * job.height * ch < kOrderedBytesMin) return false;
    OrderedBytes t;
    if (!t.Build<P>(th.step, P::Inverse(job.L))) return false;
    if (job.code == 4) {  // pixel by pixel, the alpha byte untouched
      for (int y = 0; y < job.height; ++y) {
        const uint8_t* s = job.SrcRow(y);
        uint8_t* d = job.DstRow(y);
        for (int x = 0; x < job.width; ++x)
          for (int c = 0; c < 3; ++c) d[4 * x + c] = t.At(s[4 * x + c], t.bound[y & 3][x & 3]);
      }
      return true;
    }
    const int n = job.width * ch;
    if (t.narrow) {
      alignas(16) int8_t pattern[4][48];
      for (int cy = 0; cy < 4; ++cy)
        for (int i = 0; i < 48; ++i) pattern[cy][i] = t.bound8[cy][(i / ch) & 3];
      for (int y = 0; y < job.height; ++y)
        OrderedBytesRun<true>(job.SrcRow(y), job.DstRow(y), n, t, pattern[y & 3]);
    } else {
      alignas(16) int16_t pattern[4][48];
      for (int cy = 0; cy < 4; ++cy)
        for (int i = 0; i < 48; ++i) pattern[cy][i] = t.bound[cy][(i / ch) & 3];
      for (int y = 0; y < job.height; ++y)
        OrderedBytesRun<false>(job.SrcRow(y), job.DstRow(y), n, t, pattern[y & 3]);
    }
    return true;
  }
}

// A row is cut into chunks of 240 samples, a whole number of four-pixel matrix periods for one,
// three and four channels, so without noise the thresholds of the first chunk serve them all.
constexpr int kChunk = 240;

template <class P>
void OrderedImageVector(const Job& job, const Thresholds& th) {
  if (OrderedImageBytes<P>(job, th)) return;
  if (job.code == 4) return OrderedImageScalar<P>(job, th);
  const int ch = ChannelsQuantised(job.code);
  const int n = job.width * ch;
  const float inv = P::Inverse(job.L);
  constexpr int kIn = sizeof(typename P::Src), kOut = sizeof(typename P::Dst);
  alignas(16) float thr[kChunk];
  for (int y = 0; y < job.height; ++y) {
    const uint8_t* s = job.SrcRow(y);
    uint8_t* d = job.DstRow(y);
    for (int i0 = 0; i0 < n; i0 += kChunk) {
      const int len = n - i0 < kChunk ? n - i0 : kChunk;
      if (i0 == 0 || th.noisy) {
        for (int j = 0, x = i0 / ch; j < len; j += ch, ++x) {
          const float t = th.At(x, y);
          for (int c = 0; c < ch; ++c) thr[j + c] = t;
        }
      }
      OrderedRunVector<P>(s + i0 * kIn, d + i0 * kOut, len, thr, th.step, inv);
    }
  }
}

#endif  // KRO_SIMD

}  // namespace

template <class P>
void ReducePlainScalar(const Job& job) {
  PlainImageScalar<P>(job);
}

template <class P>
void ReducePlain(const Job& job) {
#if KRO_SIMD
  PlainImageVector<P>(job);
#else
  PlainImageScalar<P>(job);
#endif
}

template <class P>
kroStatus ReduceOrderedScalar(const Job& job) {
  Thresholds th;
  KRO_CHECK(OrderedThresholds<P>(job, &th));
  OrderedImageScalar<P>(job, th);
  return kroStatusOk;
}

template <class P>
kroStatus ReduceOrdered(const Job& job) {
  Thresholds th;
  KRO_CHECK(OrderedThresholds<P>(job, &th));
#if KRO_SIMD
  OrderedImageVector<P>(job, th);
#else
  OrderedImageScalar<P>(job, th);
#endif
  return kroStatusOk;
}

#define KRO_INSTANTIATE(P)                         \
  template void ReducePlain<P>(const Job&);        \
  template void ReducePlainScalar<P>(const Job&);  \
  template kroStatus ReduceOrdered<P>(const Job&); \
  template kroStatus ReduceOrderedScalar<P>(const Job&);
KRO_DITHER_PAIRS(KRO_INSTANTIATE)
#undef KRO_INSTANTIATE

}  // namespace kro::dither
