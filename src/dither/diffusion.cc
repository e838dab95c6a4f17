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

// Floyd-Steinberg: 7 from the left, 3, 5, 1 from the row above, over 16. The order of the sum
// differs by pair and is kept: the 8u, 16u, 16s and 16u8u pairs add p1[x-1] before 5 * p1[x],
// the others after.
template <class P>
float GatherFloyd(const float* p1, const float* c, int x) {
  constexpr bool kLateLeft = P::kFloatSource || (P::kNarrow && P::kSource == Source::k16s);
  float s;
  if constexpr (kLateLeft) {
    s = ((3.0f * p1[x + 1] + 5.0f * p1[x]) + p1[x - 1]) + 7.0f * c[x - 1];
  } else {
    s = ((3.0f * p1[x + 1] + p1[x - 1]) + 5.0f * p1[x]) + 7.0f * c[x - 1];
  }
  return s * 0.0625f;
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

template <class P>
void DiffuseFloyd(const Job& job, float* e, const NoiseTables* noise) {
  const int w = job.width, ch = ChannelsQuantised(job.code), stride = PixelStride(job.code);
  Quantiser<P, true> qz{P::Step(job.L), P::Inverse(job.L), 0.0f};
  qz.half = 0.5f * qz.step;
  float* p1 = e + 1;
  float* c = e + w + 3;
  for (int k = 0; k < ch; ++k) {
    for (int y = 0; y < job.height; ++y) {
      const uint8_t* src = job.SrcRow(y);
      uint8_t* dst = job.DstRow(y);
      for (int x = 0; x < w; ++x) {
        const int i = x * stride + k;
        const float v = WorkAt<P>(src, i) + GatherFloyd<P>(p1, c, x);
        c[x] = qz.Apply(v, noise ? noise->At(x, y) : qz.half, dst, i);
      }
      float* t = p1;
      p1 = c;
      c = t;
    }
  }
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

template <class P>
kroStatus ReduceDiffused(const Job& job) {
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
    DiffuseFloyd<P>(job, e, noise);
  } else {
    std::memset(e, 0, (w + 4) * 3 * sizeof(float));
    DiffuseWide<P>(job, e, noise);
  }
  return kroStatusOk;
}

#define KRO_INSTANTIATE(P) template kroStatus ReduceDiffused<P>(const Job&);
KRO_INSTANTIATE(P8u)
KRO_INSTANTIATE(P16u)
KRO_INSTANTIATE(P16s)
KRO_INSTANTIATE(P16u8u)
KRO_INSTANTIATE(P16s8u)
KRO_INSTANTIATE(P32f8u)
KRO_INSTANTIATE(P32f16u)
KRO_INSTANTIATE(P32f16s)
#undef KRO_INSTANTIATE

}  // namespace kro::dither
