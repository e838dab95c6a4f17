// Bit-depth reduction (ReduceBits): what the frame, the noise generator and the four kernel
// files share.
//
// A call quantises each colour sample onto `levels` evenly spaced values. Below the wrappers a
// sample pair (source type, destination type) is a traits struct, a layout is its channel code,
// and every kernel is one template over the pair.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "krocc.h"

namespace kro::dither {

// ---- Float to integer with the processor's truncating conversion ------------------------------

// cvttss2si: the fraction is discarded; NaN and values outside the 32-bit range give INT32_MIN.
inline int32_t Trunc(float f) {
  return (f >= -2147483648.0f && f < 2147483648.0f) ? static_cast<int32_t>(f) : INT32_MIN;
}

// Unaligned element access: 16-bit and float rows may start at any byte (kind 0 keeps byte
// steps, and callers may pass odd addresses).
template <class T>
inline T Load(const void* p) {
  T v;
  std::memcpy(&v, p, sizeof(T));
  return v;
}
template <class T>
inline void Store(void* p, T v) {
  std::memcpy(p, &v, sizeof(T));
}

// ---- Sample pairs -----------------------------------------------------------------------------

enum class Source { k8u, k16u, k16s, k32f };
enum class Dest { k8u, k16u, k16s };

// kSource, kDest: element types. The working value of a sample is its value, plus 32768 for a
// 16s source. S (one step) and I (its inverse) follow the source's domain.
template <Source kS, Dest kD>
struct Pair {
  static constexpr Source kSource = kS;
  static constexpr Dest kDest = kD;
  using Src = std::conditional_t<
      kS == Source::k8u, uint8_t,
      std::conditional_t<kS == Source::k16u, uint16_t,
                         std::conditional_t<kS == Source::k16s, int16_t, float>>>;
  using Dst = std::conditional_t<kD == Dest::k8u, uint8_t,
                                 std::conditional_t<kD == Dest::k16u, uint16_t, int16_t>>;
  static constexpr bool kFloatSource = kS == Source::k32f;
  static constexpr bool kWideSource = kS == Source::k16u || kS == Source::k16s;
  static constexpr bool kByteDest = kD == Dest::k8u;
  // A 16-bit source written to bytes is quantised in the 16-bit domain and narrowed by >> 8.
  static constexpr bool kNarrow = kWideSource && kByteDest;
  static constexpr uint32_t kMaxLevels = kByteDest ? 256u : 65536u;
  // Top of the working domain.
  static constexpr float kTop = kS == Source::k8u ? 255.0f : kFloatSource ? 1.0f : 65535.0f;
  // Destination's scale for the float pairs and for kind 0 of every pair.
  static constexpr float kOut = kByteDest ? 255.0f : 65535.0f;

  static float Work(Src s) {
    if constexpr (kS == Source::k16s) return static_cast<float>(int32_t{s} + 32768);
    return static_cast<float>(s);
  }
  static float Step(int L) {
    const float l = static_cast<float>(L);
    if constexpr (kS == Source::k8u) return (65280.0f / l) * 0.00390625f;
    if constexpr (kFloatSource) return 1.0f / l;
    return 65535.0f / l;
  }
  static float Inverse(int L) {
    const float l = static_cast<float>(L);
    if constexpr (kS == Source::k8u) return l / 255.0f;
    if constexpr (kFloatSource) return l;
    return l / 65535.0f;
  }
};

using P8u = Pair<Source::k8u, Dest::k8u>;
using P16u = Pair<Source::k16u, Dest::k16u>;
using P16s = Pair<Source::k16s, Dest::k16s>;
using P16u8u = Pair<Source::k16u, Dest::k8u>;
using P16s8u = Pair<Source::k16s, Dest::k8u>;
using P32f8u = Pair<Source::k32f, Dest::k8u>;
using P32f16u = Pair<Source::k32f, Dest::k16u>;
using P32f16s = Pair<Source::k32f, Dest::k16s>;

// Applies X to every pair, for the kernels' explicit instances.
#define KRO_DITHER_PAIRS(X) \
  X(P8u) X(P16u) X(P16s) X(P16u8u) X(P16s8u) X(P32f8u) X(P32f16u) X(P32f16s)

// Working value of sample i of a row.
template <class P>
float WorkAt(const uint8_t* row, int i) {
  return P::Work(
      Load<typename P::Src>(row + static_cast<std::size_t>(i) * sizeof(typename P::Src)));
}

// Saturating store of an integer result t on the destination's range; a 16s destination holds
// t - 32768 (t saturated to 0..65535 first, so nothing wraps).
template <Dest kD>
inline int32_t Saturate(int32_t t) {
  if constexpr (kD == Dest::k8u) return t < 0 ? 0 : (t > 255 ? 255 : t);
  const int32_t u = t < 0 ? 0 : (t > 65535 ? 65535 : t);
  return kD == Dest::k16s ? u - 32768 : u;
}

// ---- Layouts ----------------------------------------------------------------------------------

// Channel codes: 1 C1R, 3 C3R, 4 AC4R, 5 C4R.
constexpr int ChannelsQuantised(int code) { return code == 5 ? 4 : code == 4 ? 3 : code; }
constexpr int PixelStride(int code) { return code >= 4 ? 4 : code; }

// ---- One call's arguments below the wrapper ---------------------------------------------------

struct Job {
  const uint8_t* src;
  std::ptrdiff_t srcStep;  // bytes between rows as the kernel uses them
  uint8_t* dst;
  std::ptrdiff_t dstStep;
  int width, height;
  int code;   // channel code
  int L;      // levels - 1
  int noise;  // 0..100
  int kind;   // 0..4
  uint8_t* buffer;

  const uint8_t* SrcRow(int y) const { return src + static_cast<std::ptrdiff_t>(y) * srcStep; }
  uint8_t* DstRow(int y) const { return dst + static_cast<std::ptrdiff_t>(y) * dstStep; }
};

// ---- Work buffer ------------------------------------------------------------------------------

constexpr int kNoiseCount = 1024;
constexpr std::size_t kNoiseTableOffset = 0;
constexpr std::size_t kIndexTableOffset = 4096;
constexpr std::size_t kIndexRecordOffset = 6144;
constexpr std::size_t kNoiseRecordOffset = 6200;
constexpr std::size_t kNoisePartBytes = 6256;  // where the error rows start when noise > 0

// The caller's pointer moved up to the next multiple of 64.
inline uint8_t* AlignWork(uint8_t* p) {
  const std::uintptr_t u = reinterpret_cast<std::uintptr_t>(p);
  return p + ((0 - u) & 63u);
}

// ---- Noise generator --------------------------------------------------------------------------

constexpr int32_t kIndexTag = 36;  // record of a 16-bit table
constexpr int32_t kNoiseTag = 37;  // record of a single-precision table
constexpr std::size_t kRecordBytes = 56;

// Writes a fresh record at `record` (kRecordBytes bytes) for a table of the given range.
void InitIndexRecord(void* record, uint32_t seed, int16_t low, int16_t high);
void InitNoiseRecord(void* record, uint32_t seed, float low, float high);
// Fills `count` entries from the record's stream and keeps the stream's state in the record.
kroStatus FillIndexTable(int16_t* table, int count, void* record);
kroStatus FillNoiseTable(float* table, int count, void* record);

// The two tables of a call with noise, built in the aligned work buffer `a`: index values in
// 0..1024, and noise values in low..high.
struct NoiseTables {
  const float* noise;
  const int16_t* index;
  // The value for column x of region row y.
  float At(int x, int y) const {
    const unsigned i = static_cast<unsigned>(index[x & 1023]) + 2u * static_cast<unsigned>(y) +
                       static_cast<unsigned>(x);
    return noise[i & 1023u];
  }
};
NoiseTables BuildNoiseTables(uint8_t* a, float low, float high);

// ---- Kernels ----------------------------------------------------------------------------------

// Kind 0, nearest level. Byte steps; ignores noise and buffer.
template <class P>
void ReducePlain(const Job& job);
// Kind 4, ordered dither. Element steps. kroStatusNullPointer for noise without a buffer.
template <class P>
kroStatus ReduceOrdered(const Job& job);
// Kinds 1, 2, 3, error diffusion. Element steps. kroStatusNullPointer without a buffer.
template <class P>
kroStatus ReduceDiffused(const Job& job);

// Portable forms of the kernels that have a vector body, for the tests' comparisons: the same
// results from plain per-sample code.
template <class P>
void ReducePlainScalar(const Job& job);
template <class P>
kroStatus ReduceOrderedScalar(const Job& job);
template <class P>
kroStatus ReduceDiffusedScalar(const Job& job);

}  // namespace kro::dither
