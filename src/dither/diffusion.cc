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
template <class P>
constexpr bool kLatePair = P::kFloatSource || (P::kNarrow && P::kSource == Source::k16s);

template <class P, bool kFloyd>
int32_t Convert(float q) {
  constexpr bool kRound = kFloyd && kLatePair<P>;
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

  explicit Quantiser(int L) : step(P::Step(L)), inverse(P::Inverse(L)), half(0.5f * step) {}

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

// Row r of the sequence of channel passes: channel r / height, image row r % height.
struct PassRow {
  const uint8_t* src;
  uint8_t* dst;
  int y;
};

// ---- The two rings ----------------------------------------------------------------------------
//
// A ring knows which error row the pass row r writes and gathers from, and treats one sample.

// Kind 1, Floyd-Steinberg: 7 from the left, 3, 5, 1 from the row above, over 16. The first row
// of the buffer starts as the row above and the second as the current one, and the two swap
// after every row. The order of the sum differs by pair and is kept: the 8u, 16u, 16s and 16u8u
// pairs add the upper left before five times the upper middle, the other pairs after it.
template <class P>
struct FloydRing {
  static constexpr bool kFloyd = true;
  static constexpr int kLag = 2;  // a row needs the row above up to one column ahead
  using Pair = P;
  const Job& job;
  const NoiseTables* noise;
  Quantiser<P, true> qz;
  int stride;
  float* rows[2];

  FloydRing(const Job& j, const NoiseTables* n, float* e)
      : job(j), noise(n), qz(j.L), stride(PixelStride(j.code)), rows{e + 1, e + j.width + 3} {}
  float* Written(int r) const { return rows[(r + 1) & 1]; }
  const float* Above(int r) const { return rows[r & 1]; }

  static float Gather(float upLeft, float up, float upRight, float left) {
    float s;
    if constexpr (kLatePair<P>) {
      s = ((3.0f * upRight + 5.0f * up) + upLeft) + 7.0f * left;
    } else {
      s = ((3.0f * upRight + upLeft) + 5.0f * up) + 7.0f * left;
    }
    return s * 0.0625f;
  }
  void Pixel(int r, const PassRow& row, int x) const {
    const float* p1 = Above(r);
    float* c = Written(r);
    const int i = x * stride;
    const float v = WorkAt<P>(row.src, i) + Gather(p1[x - 1], p1[x], p1[x + 1], c[x - 1]);
    c[x] = qz.Apply(v, noise ? noise->At(x, row.y) : qz.half, row.dst, i);
  }
};

// Kinds 2 and 3, Jarvis-Judice-Ninke and Stucki, over three rows: the first row of the buffer
// starts two above, the second one above, the third current; after each row the oldest becomes
// the one written next. The sum runs as four lanes over columns x-2..x+1 and then the fifth
// column; the current row's lanes for x and x+1 have weight 0 but still take part, reading what
// the row three back left there.
template <class P>
struct WideRing {
  static constexpr bool kFloyd = false;
  static constexpr int kLag = 3;  // a row needs the two rows above up to two columns ahead
  using Pair = P;
  const Job& job;
  const NoiseTables* noise;
  Quantiser<P, false> qz;
  int stride;
  const Weights& wt;
  float* rows[3];

  WideRing(const Job& j, const NoiseTables* n, float* e)
      : job(j),
        noise(n),
        qz(j.L),
        stride(PixelStride(j.code)),
        wt(j.kind == 2 ? kJarvis : kStucki),
        rows{e + 2, e + j.width + 6, e + 2 * j.width + 10} {}
  float* Written(int r) const { return rows[(r + 2) % 3]; }
  const float* Above(int r) const { return rows[(r + 1) % 3]; }
  const float* TwoAbove(int r) const { return rows[r % 3]; }

  float Gather(const float* p2, const float* p1, const float* c, int x) const {
    float l[4];
    const float wc[4] = {wt.c[0], wt.c[1], 0.0f, 0.0f};
    for (int i = 0; i < 4; ++i) {
      l[i] = (wt.p2[i] * p2[x - 2 + i] + wt.p1[i] * p1[x - 2 + i]) + wc[i] * c[x - 2 + i];
    }
    const float s = (((l[0] + l[2]) + (l[1] + l[3])) + p2[x + 2]) + wt.p1[4] * p1[x + 2];
    return s * wt.norm;
  }
  void Pixel(int r, const PassRow& row, int x) const {
    float* c = Written(r);
    const int i = x * stride;
    const float v = WorkAt<P>(row.src, i) + Gather(TwoAbove(r), Above(r), c, x);
    c[x] = qz.Apply(v, noise ? noise->At(x, row.y) : qz.half, row.dst, i);
  }
};

template <class Ring>
PassRow RowOfPass(const Ring& ring, int r) {
  using P = typename Ring::Pair;
  const Job& job = ring.job;
  const int k = r / job.height, y = r % job.height;
  return {job.SrcRow(y) + k * sizeof(typename P::Src), job.DstRow(y) + k * sizeof(typename P::Dst),
          y};
}

template <class Ring>
void DiffuseRows(const Ring& ring, int r0, int r1) {
  for (int r = r0; r < r1; ++r) {
    const PassRow row = RowOfPass(ring, r);
    for (int x = 0; x < ring.job.width; ++x) ring.Pixel(r, row, x);
  }
}

#if KRO_SIMD

// ---- Wavefront bands --------------------------------------------------------------------------
//
// Each sample waits for its left neighbour's error, a chain of some fifty cycles, so a single row
// cannot use vectors. Rows can: a row needs the rows above only up to kLag - 1 columns ahead of
// itself, so a band of K rows runs as a wavefront, row r0 + j in lane j at column t - kLag * j
// at step t, and every lane does exactly the scalar arithmetic. Errors go to the ring as they
// come, where the scalar start and end of the band and the next band find them. The ring's rows
// suffice: a lane overwrites the row kLag above it only at columns the rows in between have
// passed.

// One vector of four samples through the quantiser, as Quantiser::Apply does it.
template <class P, bool kFloyd>
struct VectorQuantiser {
  __m128 top, floor, inv, step, half, out, rounding;
  __m128i highest, lowest, bias;
  explicit VectorQuantiser(const Quantiser<P, kFloyd>& qz)
      : top(_mm_set1_ps(P::kTop)),
        floor(_mm_set1_ps(Quantiser<P, kFloyd>::kFloor)),
        inv(_mm_set1_ps(qz.inverse)),
        step(_mm_set1_ps(qz.step)),
        half(_mm_set1_ps(qz.half)),
        out(_mm_set1_ps(P::kOut)),
        rounding(_mm_set1_ps(0.5f)),
        highest(_mm_set1_epi32(kHighest<P>)),
        lowest(_mm_set1_epi32(kLowest<P>)),
        bias(_mm_set1_epi32(32768)) {}

  // Returns the four outputs; *err receives the four errors.
  __m128i Apply(__m128 v, __m128 threshold, __m128* err) const {
    constexpr bool kRound = kFloyd && kLatePair<P>;
    const __m128 high = _mm_cmpge_ps(v, top), low = _mm_cmplt_ps(v, floor);
    __m128 q = _mm_mul_ps(_mm_cvtepi32_ps(_mm_cvttps_epi32(_mm_mul_ps(v, inv))), step);
    q = _mm_add_ps(q, _mm_and_ps(_mm_cmplt_ps(threshold, _mm_sub_ps(v, q)), step));
    *err = _mm_andnot_ps(_mm_or_ps(high, low), _mm_sub_ps(v, q));
    __m128i o;
    if constexpr (P::kFloatSource) {
      const __m128 scaled = _mm_mul_ps(q, out);
      o = _mm_cvttps_epi32(kRound ? _mm_add_ps(scaled, rounding) : scaled);
    } else {
      o = _mm_cvttps_epi32(kRound ? _mm_add_ps(q, rounding) : q);
      if constexpr (P::kNarrow) o = _mm_srai_epi32(o, 8);
    }
    if constexpr (P::kDest == Dest::k16s) o = _mm_sub_epi32(o, bias);
    const __m128i hi = _mm_castps_si128(high), lo = _mm_castps_si128(low);
    o = _mm_or_si128(_mm_and_si128(hi, highest), _mm_andnot_si128(hi, o));
    return _mm_or_si128(_mm_and_si128(lo, lowest), _mm_andnot_si128(lo, o));
  }
};

// The lanes of a band: their pass rows and columns, and the per-lane loads and stores.
template <class Ring, int K>
struct Lanes {
  using P = typename Ring::Pair;
  const Ring& ring;
  int r0;
  PassRow row[K];

  Lanes(const Ring& rg, int first) : ring(rg), r0(first) {
    for (int j = 0; j < K; ++j) row[j] = RowOfPass(ring, r0 + j);
  }
  static int Column(int j, int t) { return t - Ring::kLag * j; }
  // Steps where some lanes lie outside the row go sample by sample.
  void ScalarStep(int t) const {
    for (int j = 0; j < K; ++j) {
      const int x = Column(j, t);
      if (x >= 0 && x < ring.job.width) ring.Pixel(r0 + j, row[j], x);
    }
  }
  // Four lanes' values of a row array at an offset from each lane's column (0 for the band's
  // last lane where `lastIsZero`: a value nobody uses, outside that lane's row).
  template <class RowOf>
  __m128 Gather(int v, int t, int dx, RowOf rowOf, bool lastIsZero = false) const {
    alignas(16) float f[4];
    for (int l = 0; l < 4; ++l) {
      const int j = 4 * v + l;
      f[l] = lastIsZero && j == K - 1 ? 0.0f : rowOf(r0 + j)[Column(j, t) + dx];
    }
    return _mm_load_ps(f);
  }
  __m128 Work(int v, int t) const {
    alignas(16) float f[4];
    for (int l = 0; l < 4; ++l) {
      const int j = 4 * v + l;
      f[l] = WorkAt<P>(row[j].src, Column(j, t) * ring.stride);
    }
    return _mm_load_ps(f);
  }
  __m128 Threshold(int v, int t, __m128 half) const {
    if (!ring.noise) return half;
    alignas(16) float f[4];
    for (int l = 0; l < 4; ++l) {
      const int j = 4 * v + l;
      f[l] = ring.noise->At(Column(j, t), row[j].y);
    }
    return _mm_load_ps(f);
  }
  void Store(int v, int t, __m128 err, __m128i out) const {
    alignas(16) float e[4];
    alignas(16) int32_t o[4];
    _mm_store_ps(e, err);
    _mm_store_si128(reinterpret_cast<__m128i*>(o), out);
    for (int l = 0; l < 4; ++l) {
      const int j = 4 * v + l, x = Column(j, t);
      ring.Written(r0 + j)[x] = e[l];
      Put<P>(row[j].dst, x * ring.stride, o[l]);
    }
  }
};

// Lanes [before[3], lanes[0], lanes[1], lanes[2]]: each lane takes its upper neighbour's value.
inline __m128 ShiftIn(__m128 lanes, __m128 before) {
  return _mm_castsi128_ps(_mm_alignr_epi8(_mm_castps_si128(lanes), _mm_castps_si128(before), 12));
}

// Kind 1. Lane j's upper neighbours at x + 1, x and x - 1 are lane j - 1's errors of one, two
// and three steps before, so they come from registers; lane 0 reads the row above the band.
template <class P, int kVectors>
void FloydBand(const FloydRing<P>& ring, int r0) {
  constexpr int K = 4 * kVectors, t0 = 2 * (K - 1);
  const Lanes<FloydRing<P>, K> lanes(ring, r0);
  const int w = ring.job.width;
  for (int t = 0; t < t0; ++t) lanes.ScalarStep(t);
  const auto written = [&](int r) { return ring.Written(r); };
  __m128 e1[kVectors], e2[kVectors], e3[kVectors];  // errors at the three columns before
  for (int v = 0; v < kVectors; ++v) {
    e1[v] = lanes.Gather(v, t0, -1, written);
    e2[v] = lanes.Gather(v, t0, -2, written, true);
    e3[v] = lanes.Gather(v, t0, -3, written, true);
  }
  const VectorQuantiser<P, true> vq(ring.qz);
  const __m128 three = _mm_set1_ps(3.0f), five = _mm_set1_ps(5.0f), seven = _mm_set1_ps(7.0f),
               norm = _mm_set1_ps(0.0625f);
  const float* above = ring.Above(r0);
  for (int t = t0; t < w; ++t) {
    __m128 before1 = _mm_set1_ps(above[t + 1]), before2 = _mm_set1_ps(above[t]),
           before3 = _mm_set1_ps(above[t - 1]);
    __m128 next[kVectors];
    for (int v = 0; v < kVectors; ++v) {
      const __m128 upRight = ShiftIn(e1[v], before1), up = ShiftIn(e2[v], before2),
                   upLeft = ShiftIn(e3[v], before3);
      before1 = e1[v];
      before2 = e2[v];
      before3 = e3[v];
      __m128 s;
      if constexpr (kLatePair<P>) {
        s = _mm_add_ps(_mm_add_ps(_mm_mul_ps(three, upRight), _mm_mul_ps(five, up)), upLeft);
      } else {
        s = _mm_add_ps(_mm_add_ps(_mm_mul_ps(three, upRight), upLeft), _mm_mul_ps(five, up));
      }
      s = _mm_add_ps(s, _mm_mul_ps(seven, e1[v]));
      const __m128 val = _mm_add_ps(lanes.Work(v, t), _mm_mul_ps(s, norm));
      const __m128i out = vq.Apply(val, lanes.Threshold(v, t, vq.half), &next[v]);
      lanes.Store(v, t, next[v], out);
    }
    for (int v = 0; v < kVectors; ++v) {
      e3[v] = e2[v];
      e2[v] = e1[v];
      e1[v] = next[v];
    }
  }
  for (int t = w; t < w + t0; ++t) lanes.ScalarStep(t);
}

// Kinds 2 and 3. Each lane keeps a window of the five columns x-2..x+2 of both rows above; the
// window slides by one column a step and takes in column x + 2, which the lanes above finished
// in earlier steps. The current row's x-2 and x-1 are the lane's own last errors; its x and x+1
// are read from the ring as they stand.
template <class P, int kVectors>
void WideBand(const WideRing<P>& ring, int r0) {
  constexpr int K = 4 * kVectors, t0 = 3 * (K - 1);
  const Lanes<WideRing<P>, K> lanes(ring, r0);
  const int w = ring.job.width;
  for (int t = 0; t < t0; ++t) lanes.ScalarStep(t);
  const auto above = [&](int r) { return ring.Above(r); };
  const auto twoAbove = [&](int r) { return ring.TwoAbove(r); };
  const auto written = [&](int r) { return ring.Written(r); };
  __m128 p1[kVectors][5], p2[kVectors][5], e1[kVectors], e2[kVectors];
  for (int v = 0; v < kVectors; ++v) {
    for (int i = 0; i < 4; ++i) {
      p1[v][i] = lanes.Gather(v, t0, i - 2, above);
      p2[v][i] = lanes.Gather(v, t0, i - 2, twoAbove);
    }
    e1[v] = lanes.Gather(v, t0, -1, written);
    e2[v] = lanes.Gather(v, t0, -2, written);
  }
  const VectorQuantiser<P, false> vq(ring.qz);
  const Weights& wt = ring.wt;
  const __m128 zero = _mm_setzero_ps(), c0 = _mm_set1_ps(wt.c[0]), c1 = _mm_set1_ps(wt.c[1]),
               a4 = _mm_set1_ps(wt.p1[4]), norm = _mm_set1_ps(wt.norm);
  __m128 a[4], b[4];
  for (int i = 0; i < 4; ++i) {
    a[i] = _mm_set1_ps(wt.p1[i]);
    b[i] = _mm_set1_ps(wt.p2[i]);
  }
  for (int t = t0; t < w; ++t) {
    for (int v = 0; v < kVectors; ++v) {
      p1[v][4] = lanes.Gather(v, t, 2, above);
      p2[v][4] = lanes.Gather(v, t, 2, twoAbove);
      const __m128 cx = lanes.Gather(v, t, 0, written), cx1 = lanes.Gather(v, t, 1, written);
      const __m128 cur[4] = {_mm_mul_ps(c0, e2[v]), _mm_mul_ps(c1, e1[v]), _mm_mul_ps(zero, cx),
                             _mm_mul_ps(zero, cx1)};
      __m128 l[4];
      for (int i = 0; i < 4; ++i) {
        l[i] =
            _mm_add_ps(_mm_add_ps(_mm_mul_ps(b[i], p2[v][i]), _mm_mul_ps(a[i], p1[v][i])), cur[i]);
      }
      __m128 s = _mm_add_ps(_mm_add_ps(l[0], l[2]), _mm_add_ps(l[1], l[3]));
      s = _mm_add_ps(_mm_add_ps(s, p2[v][4]), _mm_mul_ps(a4, p1[v][4]));
      const __m128 val = _mm_add_ps(lanes.Work(v, t), _mm_mul_ps(s, norm));
      __m128 err;
      const __m128i out = vq.Apply(val, lanes.Threshold(v, t, vq.half), &err);
      lanes.Store(v, t, err, out);
      e2[v] = e1[v];
      e1[v] = err;
      for (int i = 0; i < 4; ++i) {
        p1[v][i] = p1[v][i + 1];
        p2[v][i] = p2[v][i + 1];
      }
    }
  }
  for (int t = w; t < w + t0; ++t) lanes.ScalarStep(t);
}

#endif  // KRO_SIMD

// Whole bands of rows through the wavefront where the row is wide enough for every lane to be
// inside it at once, the rest row by row.
template <class Ring, bool kVector>
void Diffuse(const Ring& ring) {
  const int rows = ring.job.height * ChannelsQuantised(ring.job.code);
  int r = 0;
#if KRO_SIMD
  constexpr int kVectors = 3, kRows = 4 * kVectors;
  if (kVector && ring.job.width > Ring::kLag * (kRows - 1)) {
    for (; r + kRows <= rows; r += kRows) {
      if constexpr (Ring::kFloyd) {
        FloydBand<typename Ring::Pair, kVectors>(ring, r);
      } else {
        WideBand<typename Ring::Pair, kVectors>(ring, r);
      }
    }
  }
#endif
  DiffuseRows(ring, r, rows);
}

}  // namespace

template <class P, bool kVector>
kroStatus DiffuseJob(const Job& job) {
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
    Diffuse<FloydRing<P>, kVector>(FloydRing<P>(job, noise, e));
  } else {
    std::memset(e, 0, (w + 4) * 3 * sizeof(float));
    Diffuse<WideRing<P>, kVector>(WideRing<P>(job, noise, e));
  }
  return kroStatusOk;
}

template <class P>
kroStatus ReduceDiffused(const Job& job) {
  return DiffuseJob<P, true>(job);
}
template <class P>
kroStatus ReduceDiffusedScalar(const Job& job) {
  return DiffuseJob<P, false>(job);
}

#define KRO_INSTANTIATE(P)                          \
  template kroStatus ReduceDiffused<P>(const Job&); \
  template kroStatus ReduceDiffusedScalar<P>(const Job&);
KRO_DITHER_PAIRS(KRO_INSTANTIATE)
#undef KRO_INSTANTIATE

}  // namespace kro::dither
