// ReduceBits kinds 1, 2 and 3: error diffusion in gathering form.
//
// Each sample collects the stored errors of the samples before it (its left neighbours in the
// current error row, and the rows above), adds them to its working value, is quantised, and
// leaves its own error in the current row. Error rows are single-precision values in the caller's
// work buffer, with zero pads on both sides that are never written, so errors that would fall
// outside the region are lost. The rows form a ring: two rows for kind 1, three for kinds 2 and
// 3, rotated after every image row.
//
// The outer loop runs over the channels, each channel a pass over the whole image at the pixel
// stride. The rows are zeroed once per call, not per pass, so the first rows of a pass gather the
// errors that the last rows of the pass before left in the ring. That leak is the family's
// behaviour and is kept.
#include "dither/reduce_bits.h"
#include "frame/checks.h"
#include "frame/simd.h"

namespace kro::dither {
namespace {

// Weights of the rows above (p2: two above, p1: one above) for columns x-2..x+2, of the current
// row for x-2 and x-1, and the norm (1/48 or 1/42 in single precision).
struct Weights {
  float p2[5], p1[5], c[2], norm;
};
constexpr Weights kJarvis = {{1, 3, 5, 3, 1}, {3, 5, 7, 5, 3}, {5, 7}, 0.020833334f};
constexpr Weights kStucki = {{1, 2, 4, 2, 1}, {2, 4, 8, 4, 2}, {4, 8}, 0.023809524f};

// Conversion of a quantised value q (working-domain units) to the destination. Kind 1 adds a
// rounding half for the 16s8u and float pairs only; kinds 2 and 3 and the other pairs under
// kind 1 truncate. That asymmetry is the family's and is kept. Results are stored by their low
// bits: q never leaves the destination's range by more than a step.
template <class P, bool kFloyd>
int32_t Convert(float q) {
  constexpr bool kRound = kFloyd && (P::kFloatSource || (P::kNarrow && P::kSource == Source::k16s));
  int32_t t;
  if constexpr (P::kFloatSource) {
    t = Trunc(kRound ? q * P::kOut + 0.5f : q * P::kOut);
  } else {
    t = Trunc(kRound ? q + 0.5f : q);
    if constexpr (P::kNarrow) t >>= 8;
  }
  if constexpr (P::kDest == Dest::k16s) t = static_cast<int32_t>(static_cast<uint32_t>(t) - 32768u);
  return t;
}

template <class P>
void Put(uint8_t* row, int i, int32_t value) {
  using D = typename P::Dst;
  using U = std::make_unsigned_t<D>;
  Store(row + static_cast<std::size_t>(i) * sizeof(D),
        static_cast<D>(static_cast<U>(static_cast<uint32_t>(value))));
}

template <class P>
constexpr int32_t kHighest = P::kDest == Dest::k8u    ? 255
                             : P::kDest == Dest::k16u ? 65535
                                                      : 32767;
template <class P>
constexpr int32_t kLowest = P::kDest == Dest::k16s ? -32768 : 0;

// Everything a sample needs besides its gathered error.
template <class P, bool kFloyd>
struct Quantiser {
  float step, inverse, half;
  // Kind 1 on the float pairs treats values below 2^-23, an exact 0 among them, as below the
  // range; everywhere else the floor is 0.
  static constexpr float kFloor = kFloyd && P::kFloatSource ? 1.1920929e-7f : 0.0f;

  // Quantises v = u + g against threshold t; returns the error and writes the output sample.
  float Apply(float v, float t, uint8_t* dst, int i) const {
    if (v >= P::kTop) {
      Put<P>(dst, i, kHighest<P>);
      return 0.0f;
    }
    if (kFloor > v) {
      Put<P>(dst, i, kLowest<P>);
      return 0.0f;
    }
    float q = static_cast<float>(Trunc(v * inverse)) * step;
    if (t < v - q) q = q + step;
    Put<P>(dst, i, Convert<P, kFloyd>(q));
    return v - q;
  }
};

template <class P>
float WorkAt(const uint8_t* row, int i) {
  return P::Work(
      Load<typename P::Src>(row + static_cast<std::size_t>(i) * sizeof(typename P::Src)));
}

// Jarvis-Judice-Ninke and Stucki, summed as four lanes over columns x-2..x+1 and then the fifth
// column; the current row's lanes for x and x+1 have weight 0 but still take part.
inline float GatherWide(const Weights& w, const float* p2, const float* p1, const float* c, int x) {
  float l[4];
  const float wc[4] = {w.c[0], w.c[1], 0.0f, 0.0f};
  for (int i = 0; i < 4; ++i) {
    l[i] = (w.p2[i] * p2[x - 2 + i] + w.p1[i] * p1[x - 2 + i]) + wc[i] * c[x - 2 + i];
  }
  const float s = (((l[0] + l[2]) + (l[1] + l[3])) + p2[x + 2]) + w.p1[4] * p1[x + 2];
  return s * w.norm;
}

// ---- Kind 1 -----------------------------------------------------------------------------------
//
// Floyd-Steinberg: 7 from the left, 3, 5, 1 from the row above, over 16. The order of the sum
// differs by pair and is kept: the 8u, 16u, 16s and 16u8u pairs add the upper left before five
// times the upper middle, the 16s8u and float pairs after it.
template <class P>
constexpr bool kLateUpperLeft = P::kFloatSource || (P::kNarrow && P::kSource == Source::k16s);

template <class P>
float GatherFloyd(float upLeft, float up, float upRight, float left) {
  float s;
  if constexpr (kLateUpperLeft<P>) {
    s = ((3.0f * upRight + 5.0f * up) + upLeft) + 7.0f * left;
  } else {
    s = ((3.0f * upRight + upLeft) + 5.0f * up) + 7.0f * left;
  }
  return s * 0.0625f;
}

// Row r of the sequence of channel passes: channel r / height, image row r % height.
struct PassRow {
  const uint8_t* src;
  uint8_t* dst;
  int y;
};

template <class P>
PassRow RowOfPass(const Job& job, int r) {
  const int k = r / job.height, y = r % job.height;
  return {job.SrcRow(y) + k * sizeof(typename P::Src), job.DstRow(y) + k * sizeof(typename P::Dst),
          y};
}

// The two error rows of kind 1. The first starts as the row above and the second as the
// current one, and they swap after every row of every pass: row r of the sequence writes
// Written(r) and gathers from the row written before it.
template <class P>
struct FloydRing {
  const Job& job;
  const NoiseTables* noise;
  Quantiser<P, true> qz;
  int stride;
  float* first;
  float* second;

  float* Written(int r) const { return (r & 1) ? first : second; }
  float* Above(int r) const { return (r & 1) ? second : first; }
  float Threshold(int x, int y) const { return noise ? noise->At(x, y) : qz.half; }
  void Pixel(const PassRow& row, const float* p1, float* c, int x) const {
    const int i = x * stride;
    const float v = WorkAt<P>(row.src, i) + GatherFloyd<P>(p1[x - 1], p1[x], p1[x + 1], c[x - 1]);
    c[x] = qz.Apply(v, Threshold(x, row.y), row.dst, i);
  }
  void Rows(int r0, int r1) const {
    for (int r = r0; r < r1; ++r) {
      const PassRow row = RowOfPass<P>(job, r);
      for (int x = 0; x < job.width; ++x) Pixel(row, Above(r), Written(r), x);
    }
  }
};

#if KRO_SIMD

// Each sample waits for its left neighbour's error, a chain of some fifty cycles, so a single
// row cannot use vectors. Rows can: pixel (x, r) needs row r - 1 only up to column x + 1, so a
// band of K rows runs as a wavefront, row r0 + j at column t - 2j in lane j, and every lane does
// exactly the scalar arithmetic. Lane j's upper neighbours are lane j - 1's errors of one, two
// and three steps before; lane 0 reads the row above the band from memory. Errors still go to the
// ring, where the scalar start and end of the band and the next band find them. Two rows of ring
// suffice: a lane overwrites the row two above at a column its neighbour has passed.
template <class P, int kVectors>
void FloydBand(const FloydRing<P>& ring, int r0) {
  constexpr int K = 4 * kVectors;
  const int w = ring.job.width, stride = ring.stride;
  PassRow row[K];
  float* c[K];
  const float* p1[K];
  for (int j = 0; j < K; ++j) {
    row[j] = RowOfPass<P>(ring.job, r0 + j);
    c[j] = ring.Written(r0 + j);
    p1[j] = ring.Above(r0 + j);
  }
  const auto scalarStep = [&](int t) {
    for (int j = 0; j < K; ++j) {
      const int x = t - 2 * j;
      if (x >= 0 && x < w) ring.Pixel(row[j], p1[j], c[j], x);
    }
  };
  const int t0 = 2 * (K - 1);  // first step with every lane inside the row
  for (int t = 0; t < t0; ++t) scalarStep(t);

  // Errors of each lane at the three columns before its current one.
  alignas(16) float h1[K], h2[K], h3[K];
  for (int j = 0; j < K; ++j) {
    h1[j] = c[j][t0 - 1 - 2 * j];
    h2[j] = j < K - 1 ? c[j][t0 - 2 - 2 * j] : 0.0f;
    h3[j] = j < K - 1 ? c[j][t0 - 3 - 2 * j] : 0.0f;
  }
  __m128 e1[kVectors], e2[kVectors], e3[kVectors];
  for (int v = 0; v < kVectors; ++v) {
    e1[v] = _mm_load_ps(h1 + 4 * v);
    e2[v] = _mm_load_ps(h2 + 4 * v);
    e3[v] = _mm_load_ps(h3 + 4 * v);
  }
  const Quantiser<P, true>& qz = ring.qz;
  const __m128 three = _mm_set1_ps(3.0f), five = _mm_set1_ps(5.0f), seven = _mm_set1_ps(7.0f),
               norm = _mm_set1_ps(0.0625f), top = _mm_set1_ps(P::kTop),
               floor = _mm_set1_ps(Quantiser<P, true>::kFloor), inv = _mm_set1_ps(qz.inverse),
               step = _mm_set1_ps(qz.step), half = _mm_set1_ps(qz.half), out = _mm_set1_ps(P::kOut),
               rounding = _mm_set1_ps(0.5f);
  const __m128i highest = _mm_set1_epi32(kHighest<P>), lowest = _mm_set1_epi32(kLowest<P>),
                bias = _mm_set1_epi32(32768);
  const auto shiftIn = [](__m128 lanes, __m128 before) {  // before[3], lanes[0], lanes[1], lanes[2]
    return _mm_castsi128_ps(_mm_alignr_epi8(_mm_castps_si128(lanes), _mm_castps_si128(before), 12));
  };
  for (int t = t0; t < w; ++t) {
    const float* above = p1[0];
    __m128 before1 = _mm_set1_ps(above[t + 1]), before2 = _mm_set1_ps(above[t]),
           before3 = _mm_set1_ps(above[t - 1]);
    __m128 next[kVectors];
    for (int v = 0; v < kVectors; ++v) {
      const __m128 upRight = shiftIn(e1[v], before1), up = shiftIn(e2[v], before2),
                   upLeft = shiftIn(e3[v], before3);
      before1 = e1[v];
      before2 = e2[v];
      before3 = e3[v];
      alignas(16) float u[4], th[4];
      for (int l = 0; l < 4; ++l) {
        const int j = 4 * v + l, x = t - 2 * j;
        u[l] = WorkAt<P>(row[j].src, x * stride);
        th[l] = ring.noise ? ring.noise->At(x, row[j].y) : 0.0f;
      }
      __m128 s;
      if constexpr (kLateUpperLeft<P>) {
        s = _mm_add_ps(_mm_mul_ps(three, upRight), _mm_mul_ps(five, up));
        s = _mm_add_ps(s, upLeft);
      } else {
        s = _mm_add_ps(_mm_mul_ps(three, upRight), upLeft);
        s = _mm_add_ps(s, _mm_mul_ps(five, up));
      }
      s = _mm_add_ps(s, _mm_mul_ps(seven, e1[v]));
      const __m128 val = _mm_add_ps(_mm_load_ps(u), _mm_mul_ps(s, norm));
      const __m128 high = _mm_cmpge_ps(val, top), low = _mm_cmplt_ps(val, floor);
      __m128 q = _mm_mul_ps(_mm_cvtepi32_ps(_mm_cvttps_epi32(_mm_mul_ps(val, inv))), step);
      const __m128 threshold = ring.noise ? _mm_load_ps(th) : half;
      q = _mm_add_ps(q, _mm_and_ps(_mm_cmplt_ps(threshold, _mm_sub_ps(val, q)), step));
      next[v] = _mm_andnot_ps(_mm_or_ps(high, low), _mm_sub_ps(val, q));
      __m128i o;
      if constexpr (P::kFloatSource) {
        o = _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(q, out), rounding));
      } else {
        o = _mm_cvttps_epi32(kLateUpperLeft<P> ? _mm_add_ps(q, rounding) : q);
        if constexpr (P::kNarrow) o = _mm_srai_epi32(o, 8);
      }
      if constexpr (P::kDest == Dest::k16s) o = _mm_sub_epi32(o, bias);
      o = _mm_or_si128(_mm_and_si128(_mm_castps_si128(high), highest),
                       _mm_andnot_si128(_mm_castps_si128(high), o));
      o = _mm_or_si128(_mm_and_si128(_mm_castps_si128(low), lowest),
                       _mm_andnot_si128(_mm_castps_si128(low), o));
      alignas(16) float err[4];
      alignas(16) int32_t res[4];
      _mm_store_ps(err, next[v]);
      _mm_store_si128(reinterpret_cast<__m128i*>(res), o);
      for (int l = 0; l < 4; ++l) {
        const int j = 4 * v + l, x = t - 2 * j;
        c[j][x] = err[l];
        Put<P>(row[j].dst, x * stride, res[l]);
      }
    }
    for (int v = 0; v < kVectors; ++v) {
      e3[v] = e2[v];
      e2[v] = e1[v];
      e1[v] = next[v];
    }
  }
  for (int t = w; t < w + t0; ++t) scalarStep(t);
}

#endif  // KRO_SIMD

template <class P, bool kVector>
void DiffuseFloyd(const Job& job, float* e, const NoiseTables* noise) {
  const int w = job.width, rows = job.height * ChannelsQuantised(job.code);
  Quantiser<P, true> qz{P::Step(job.L), P::Inverse(job.L), 0.0f};
  qz.half = 0.5f * qz.step;
  const FloydRing<P> ring{job, noise, qz, PixelStride(job.code), e + 1, e + w + 3};
  int r = 0;
#if KRO_SIMD
  constexpr int kVectors = 3, kRows = 4 * kVectors;
  if (kVector && w >= 2 * kRows - 1) {
    for (; r + kRows <= rows; r += kRows) FloydBand<P, kVectors>(ring, r);
  }
#endif
  ring.Rows(r, rows);
}

template <class P>
void DiffuseWide(const Job& job, float* e, const NoiseTables* noise) {
  const Weights& wt = job.kind == 2 ? kJarvis : kStucki;
  const int w = job.width, ch = ChannelsQuantised(job.code), stride = PixelStride(job.code);
  Quantiser<P, false> qz{P::Step(job.L), P::Inverse(job.L), 0.0f};
  qz.half = 0.5f * qz.step;
  float* p2 = e + 2;
  float* p1 = e + w + 6;
  float* c = e + 2 * w + 10;
  for (int k = 0; k < ch; ++k) {
    for (int y = 0; y < job.height; ++y) {
      const uint8_t* src = job.SrcRow(y);
      uint8_t* dst = job.DstRow(y);
      for (int x = 0; x < w; ++x) {
        const int i = x * stride + k;
        const float v = WorkAt<P>(src, i) + GatherWide(wt, p2, p1, c, x);
        c[x] = qz.Apply(v, noise ? noise->At(x, y) : qz.half, dst, i);
      }
      // The oldest row becomes the one written next.
      float* t = p2;
      p2 = p1;
      p1 = c;
      c = t;
    }
  }
}

}  // namespace

template <class P, bool kVector>
kroStatus Diffuse(const Job& job) {
  if (job.buffer == nullptr) return kroStatusNullPointer;
  uint8_t* a = AlignWork(job.buffer);
  NoiseTables tables{};
  const NoiseTables* noise = nullptr;
  if (job.noise > 0) {
    // Thresholds straying from half a step by up to noise percent of a step.
    const float s = P::Step(job.L);
    const float low = static_cast<float>(50 - job.noise) * s / 100.0f;
    const float high = static_cast<float>(50 + job.noise) * s / 100.0f;
    tables = BuildNoiseTables(a, low, high);
    noise = &tables;
    a += kNoisePartBytes;
  }
  float* e = reinterpret_cast<float*>(a);
  const std::size_t w = static_cast<std::size_t>(job.width);
  if (job.kind == 1) {
    std::memset(e, 0, (w + 2) * 2 * sizeof(float));
    DiffuseFloyd<P, kVector>(job, e, noise);
  } else {
    std::memset(e, 0, (w + 4) * 3 * sizeof(float));
    DiffuseWide<P>(job, e, noise);
  }
  return kroStatusOk;
}

template <class P>
kroStatus ReduceDiffused(const Job& job) {
  return Diffuse<P, true>(job);
}
template <class P>
kroStatus ReduceDiffusedScalar(const Job& job) {
  return Diffuse<P, false>(job);
}

#define KRO_INSTANTIATE(P)                          \
  template kroStatus ReduceDiffused<P>(const Job&); \
  template kroStatus ReduceDiffusedScalar<P>(const Job&);
KRO_DITHER_PAIRS(KRO_INSTANTIATE)
#undef KRO_INSTANTIATE

}  // namespace kro::dither
