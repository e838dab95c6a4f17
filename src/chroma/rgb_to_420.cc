// RGB and BGR to 4:2:0, planar (P3) and semi-planar (P2): the 22 wrappers, the seven arithmetic
// sets and the row-pair kernel they run in.
//
// Every export walks its image two rows at a time. Each pixel of the even part of the region
// gets its own luma; each 2x2 block gets one Cb and one Cr, computed from the sums of its four
// R, G and B samples (the matrix is applied once to the sums, nothing is filtered across
// blocks). An odd last column and an odd last row are not touched, and the export then warns
// with kroStatusOddSize.
//
// Each set has two forms. The body form is the arithmetic of 16-bit vector lanes (rounded or
// high-half multiplies, saturating or wrapping adds); the tail form is 32-bit arithmetic with its
// own constants and rounding. A row's first columns take the body form and the rest take the
// tail form, and where that boundary lies is fixed per set (BodyPixels below), so the same
// colour can convert one apart at two positions of a row. Both forms are required as they are.
//
// The body form exists twice: as SSSE3 code sixteen pixels (eight blocks) a turn, and as the
// scalar twin that the portable build runs, written with the lane helpers of frame/lanes.h.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "color/matrix_rows.h"
#include "color/ycc_sets.h"
#include "frame/checks.h"
#include "frame/entry.h"
#include "frame/lanes.h"
#include "frame/simd.h"

namespace kro::chroma420 {
namespace {

using color::RowOf;
using color::Samples;
using namespace kro::lane;

struct Rgb {
  int r, g, b;
};
struct CbCr {
  uint8_t cb, cr;
};
// A 2x2 block: top-left, top-right, bottom-left, bottom-right.
using Quad = Rgb[4];

struct Sums {
  int r, g, b;
};
inline Sums SumOf(const Quad& q) {
  return {q[0].r + q[1].r + q[2].r + q[3].r, q[0].g + q[1].g + q[2].g + q[3].g,
          q[0].b + q[1].b + q[2].b + q[3].b};
}

inline int16_t S16(int v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }
inline uint16_t U16(int v) { return static_cast<uint16_t>(v); }
inline uint8_t Clamp1To254(int v) { return static_cast<uint8_t>(v < 1 ? 1 : (v > 254 ? 254 : v)); }

// Where the body form of each set stops (the argument is the even width W & ~1):
//   eight-pixel multiples:                   sets A, E, and C on P2
//   sixteen-pixel multiples, then four more if bit 2 of the width is set:  B, D, C on P3
//   sixteen-pixel multiples:                 F
//   none:                                    G
inline int BodyBy8(int w) { return w & ~7; }
inline int BodyBy16Then4(int w) { return (w & ~15) | (w & 4); }
inline int BodyBy16(int w) { return w & ~15; }

// ---- Tail form of the studio-range sets (A, B, C and, clamped, D) ---------------------------
//
// Y = (wR R + wG G + wB B + offset * 65536 + 0x8000) >> 16 with the 16.16 weights of the set.
// Chroma on the block sums at 18 fraction bits: unclamped, the constant 0xFE008000 (-128 in the
// top bits and a rounding term of 0x8000, an eighth of the last place) is added in unsigned 32
// bits, shifted logically and the low byte stored, which wraps to 128 + the value. Clamped (the
// HDTV set), +128 is added instead, the shift is arithmetic and all three outputs are held to
// 1..254.
template <const YccForward& K, bool kClamp>
struct StudioTail {
  static uint8_t Y(Rgb p) {
    const int32_t v =
        (K.y[0] * p.r + K.y[1] * p.g + K.y[2] * p.b + (K.yOffset << 16) + 0x8000) >> 16;
    return kClamp ? Clamp1To254(v) : Low8(v);
  }
  static uint8_t Chroma(const int32_t (&w)[3], Sums s) {
    const int32_t x = w[0] * s.r + w[1] * s.g + w[2] * s.b;
    if (kClamp) return Clamp1To254((x + (128 << 18) + 0x8000) >> 18);
    return Low8(static_cast<int32_t>((static_cast<uint32_t>(x) + 0xFE008000u) >> 18));
  }
  static CbCr C(const Quad& q) {
    const Sums s = SumOf(q);
    return {Chroma(K.cb, s), Chroma(K.cr, s)};
  }
};

// ---- Set A: rounded multiplies at 6 fraction bits -------------------------------------------
//
// Ycc601 at scale 2^14 (0.257 * 16384 = 4210.7 -> 4211, ...), on samples times 128 for luma and
// block sums times 32 (the sum of four is times 4 already) for chroma. Biases: 16 * 64 + 2 and
// 128 * 64 + 2, a rounding term of 2, not the 32 of a half; kept. Sums wrap in 16 bits.
struct SetA {
  static constexpr int16_t kY[3] = {4211, 8258, 1606};
  static constexpr int16_t kYBias = 1026;
  static constexpr int16_t kCbB = 7193, kCbR = 2425, kCbG = 4768;  // Cb = B' - R' - G'
  static constexpr int16_t kCrR = 7193, kCrG = 6029, kCrB = 1163;  // Cr = R' - G' - B'
  static constexpr int16_t kCBias = 8194;
  static int BodyPixels(int w) { return BodyBy8(w); }

  static uint8_t BodyY(Rgb p) {
    const int16_t y = Add(Add(Add(MulRound(S16(p.r << 7), kY[0]), MulRound(S16(p.g << 7), kY[1])),
                              MulRound(S16(p.b << 7), kY[2])),
                          kYBias);
    return PackU8(Sra(y, 6));
  }
  static CbCr BodyC(const Quad& q) {
    const Sums s = SumOf(q);
    const int16_t a = S16(s.r << 5), b = S16(s.g << 5), c = S16(s.b << 5);
    const int16_t cb =
        Add(Sub(Sub(MulRound(c, kCbB), MulRound(a, kCbR)), MulRound(b, kCbG)), kCBias);
    const int16_t cr =
        Add(Sub(Sub(MulRound(a, kCrR), MulRound(b, kCrG)), MulRound(c, kCrB)), kCBias);
    return {PackU8(Sra(cb, 6)), PackU8(Sra(cr, 6))};
  }
  static uint8_t TailY(Rgb p) { return StudioTail<kYcc601Forward, false>::Y(p); }
  static CbCr TailC(const Quad& q) { return StudioTail<kYcc601Forward, false>::C(q); }
};

// ---- Sets B, C, D: unsigned high multiplies -------------------------------------------------
//
// Y = ((hiU(R * 256, wR) +u hiU(G * 256, wG) +u hiU(B * 256, wB)) +u yBias) >> 7.
// With a, b, c the block sums of R, G, B times 32:
// Cb = ((hiU(c, cb0) - (hiU(a, cb1) +u hiU(b, cb2))) +s cBias) >> cShift, the difference wrapping
// in 16 bits; Cr the same with (a; b, c). Lanes go to bytes with the saturating pack; the HDTV
// set then holds them to 1..254. The chroma shift is arithmetic: in sets B and C the biased
// difference never goes below zero, so it equals a logical one there; in set D saturated
// yellows and cyans take it just below zero, and the arithmetic shift keeps that at the low end
// (0, held to 1) as the tail form does.
struct HighCoefs {
  uint16_t y[3], yBias;
  uint16_t cb[3];  // on c, a, b
  uint16_t cr[3];  // on a, b, c
  int16_t cBias;
  int cShift;
};
// Ycc601: halves of the 16.16 luma weights rounded up, bias (16 + 0.5) * 128; chroma weights
// as they stand at 16.16 on sums times 32, bias (128 + 1/8) * 128.
inline constexpr HighCoefs kSetB = {{8422, 16515, 3212},  2112,  {28770, 9699, 19071},
                                    {28770, 24117, 4653}, 16400, 7};
// Ycc709Csc in the same places.
inline constexpr HighCoefs kSetC = {{5997, 20120, 2032},  2112,  {28770, 6619, 22151},
                                    {28770, 26149, 2621}, 16400, 7};
// Ycc709Hdtv: halves of its 16.16 weights, no luma offset (bias 0.5 * 128), chroma at 6
// fraction bits with bias (128 + 1/2) * 64.
inline constexpr HighCoefs kSetD = {{6980, 23429, 2359},  64,   {16744, 3834, 12911},
                                    {16744, 15204, 1540}, 8224, 6};

static_assert(kSetB.cb[0] == kYcc601Forward.cb[2] && kSetB.cb[1] == -kYcc601Forward.cb[0] &&
                  kSetB.cb[2] == -kYcc601Forward.cb[1] && kSetB.cr[1] == -kYcc601Forward.cr[1] &&
                  kSetB.cr[2] == -kYcc601Forward.cr[2],
              "set B chroma weights are those of Ycc601");
static_assert(kSetC.cb[1] == -kYcc709CscForward.cb[0] && kSetC.cb[2] == -kYcc709CscForward.cb[1] &&
                  kSetC.cr[1] == -kYcc709CscForward.cr[1] &&
                  kSetC.cr[2] == -kYcc709CscForward.cr[2],
              "set C chroma weights are those of Ycc709Csc");

template <const HighCoefs& K, const YccForward& kTail, bool kClamp, int (*kBodyPixels)(int)>
struct HighSet {
  static constexpr const HighCoefs& kCoefs = K;
  static constexpr bool kClampTo254 = kClamp;
  static int BodyPixels(int w) { return kBodyPixels(w); }

  static uint8_t Finish(int16_t v) { return kClamp ? Clamp1To254(PackU8(v)) : PackU8(v); }
  static uint8_t BodyY(Rgb p) {
    const uint16_t y = AddU(AddU(AddU(HiU(U16(p.r << 8), K.y[0]), HiU(U16(p.g << 8), K.y[1])),
                                 HiU(U16(p.b << 8), K.y[2])),
                            K.yBias);
    return Finish(static_cast<int16_t>(Srl(y, 7)));
  }
  static uint8_t Chroma(const uint16_t (&k)[3], uint16_t first, uint16_t second, uint16_t third) {
    const int16_t d = Sub(static_cast<int16_t>(HiU(first, k[0])),
                          static_cast<int16_t>(AddU(HiU(second, k[1]), HiU(third, k[2]))));
    return Finish(Sra(AddS(d, K.cBias), K.cShift));
  }
  static CbCr BodyC(const Quad& q) {
    const Sums s = SumOf(q);
    const uint16_t a = U16(s.r << 5), b = U16(s.g << 5), c = U16(s.b << 5);
    return {Chroma(K.cb, c, a, b), Chroma(K.cr, a, b, c)};
  }
  static uint8_t TailY(Rgb p) { return StudioTail<kTail, kClamp>::Y(p); }
  static CbCr TailC(const Quad& q) { return StudioTail<kTail, kClamp>::C(q); }
};

using SetB = HighSet<kSetB, kYcc601Forward, false, BodyBy16Then4>;
// The 709CSC forms: the body ends like set A's on a P2 destination, like set B's on P3.
using SetCOnP2 = HighSet<kSetC, kYcc709CscForward, false, BodyBy8>;
using SetCOnP3 = HighSet<kSetC, kYcc709CscForward, false, BodyBy16Then4>;
using SetD = HighSet<kSetD, kYcc709HdtvForward, true, BodyBy16Then4>;

// ---- Set G: YUV, 32-bit only (and the tail of set F) -----------------------------------------
//
// Y = 0.299 R + 0.587 G + 0.114 B at 16.16 (19595, 38470, 7471; the weights sum to 65536),
// truncated. U = 0.492 (B - Y), V = 0.877 (R - Y) on the block: with S the sum of the four luma
// numerators, (SB << 16) - S + 0x1FFFF brought to integers by >> 16 and multiplied by the
// weight at 2^18 (0.492 * 4 * 16384 = 32244, 0.877 * 65536 = 57475). U is stored as its low
// byte after -128 (which reads as +128 in range; it is not clamped), V is clamped.
struct SetG {
  static constexpr int32_t kY[3] = {19595, 38470, 7471};
  static int BodyPixels(int) { return 0; }
  static int32_t Numerator(Rgb p) { return kY[0] * p.r + kY[1] * p.g + kY[2] * p.b; }
  static uint8_t TailY(Rgb p) { return Low8(Numerator(p) >> 16); }
  static CbCr TailC(const Quad& q) {
    const Sums s = SumOf(q);
    const int32_t n = Numerator(q[0]) + Numerator(q[1]) + Numerator(q[2]) + Numerator(q[3]);
    const int32_t u = ((((s.b << 16) - n + 0x1FFFF) >> 16) * 32244 >> 18) - 128;
    const int32_t v = ((((s.r << 16) - n + 0x1FFFF) >> 16) * 57475 >> 18) + 128;
    return {Low8(u), Sat8(v)};
  }
  static uint8_t BodyY(Rgb p) { return TailY(p); }
  static CbCr BodyC(const Quad& q) { return TailC(q); }
};

// ---- Set E: YUV from C3, rounded multiplies --------------------------------------------------
//
// Body: F = mulr(R * 128, 4899) + mulr(G * 128, 9617) + mulr(B * 128, 1868), luma at 6 fraction
// bits (the weights at 2^14); Y = F >> 6. T = (sum of the block's four F, wrapping) >> 1,
// logical, is the block's luma at the scale of the sums times 32; U and V multiply the
// differences by 0.492 and 0.877 at 2^14 and take 6 fraction bits off.
// Tail: the same weights at 2^14 in 32 bits, truncated; the chroma differences come to
// integers by >> 14 before the multiply. U wraps as in set G, V is clamped.
struct SetE {
  static constexpr int16_t kY[3] = {4899, 9617, 1868};
  static constexpr int16_t kU = 8061, kV = 14369;
  static int BodyPixels(int w) { return BodyBy8(w); }

  static int16_t F(Rgb p) {
    return Add(Add(MulRound(S16(p.r << 7), kY[0]), MulRound(S16(p.g << 7), kY[1])),
               MulRound(S16(p.b << 7), kY[2]));
  }
  static uint8_t BodyY(Rgb p) { return PackU8(Sra(F(p), 6)); }
  static CbCr BodyC(const Quad& q) {
    const Sums s = SumOf(q);
    const uint16_t sum = static_cast<uint16_t>(Add(Add(F(q[0]), F(q[1])), Add(F(q[2]), F(q[3]))));
    const int16_t t = static_cast<int16_t>(Srl(sum, 1));
    const int16_t u = Add(Sra(MulRound(Sub(S16(s.b << 5), t), kU), 6), 128);
    const int16_t v = Add(Sra(MulRound(Sub(S16(s.r << 5), t), kV), 6), 128);
    return {PackU8(u), PackU8(v)};
  }
  static int32_t Numerator(Rgb p) { return kY[0] * p.r + kY[1] * p.g + kY[2] * p.b; }
  static uint8_t TailY(Rgb p) { return Low8(Numerator(p) >> 14); }
  static CbCr TailC(const Quad& q) {
    const Sums s = SumOf(q);
    const int32_t n = Numerator(q[0]) + Numerator(q[1]) + Numerator(q[2]) + Numerator(q[3]);
    const int32_t u = ((((s.b << 14) - n) >> 14) * kU >> 16) - 128;
    const int32_t v = ((((s.r << 14) - n) >> 14) * kV >> 16) + 128;
    return {Low8(u), Sat8(v)};
  }
};

// ---- Set F: YUV from AC4, signed high multiplies ---------------------------------------------
//
// t = hiS(R * 4, 9798) +s hiS(G * 4, 19235) +s hiS(B * 4, 3736): twice the luma (the weights at
// 2^15), Y = t >> 1. T = (sum of the four t) >> 2; U = hiS((SB * 4 >> 3) - T, 16121) +s 128 and
// V likewise with SR and 28737 (0.492 and 0.877 at 2^15). The tail is set G.
struct SetF {
  static constexpr int16_t kY[3] = {9798, 19235, 3736};
  static constexpr int16_t kU = 16121, kV = 28737;
  static int BodyPixels(int w) { return BodyBy16(w); }

  static int16_t T(Rgb p) {
    return AddS(AddS(HiS(S16(p.r << 2), kY[0]), HiS(S16(p.g << 2), kY[1])),
                HiS(S16(p.b << 2), kY[2]));
  }
  static uint8_t BodyY(Rgb p) { return PackU8(Sra(T(p), 1)); }
  static CbCr BodyC(const Quad& q) {
    const Sums s = SumOf(q);
    const int16_t t = Sra(Add(Add(T(q[0]), T(q[1])), Add(T(q[2]), T(q[3]))), 2);
    const int16_t u = AddS(HiS(Sub(Sra(S16(s.b << 2), 3), t), kU), 128);
    const int16_t v = AddS(HiS(Sub(Sra(S16(s.r << 2), 3), t), kV), 128);
    return {PackU8(u), PackU8(v)};
  }
  static uint8_t TailY(Rgb p) { return SetG::TailY(p); }
  static CbCr TailC(const Quad& q) { return SetG::TailC(q); }
};

// ---- Row pairs --------------------------------------------------------------------------------

// The chroma samples of one row: Cb and Cr of column i at cb[i * stride] and cr[i * stride]
// (stride 1 for planes, 2 for the interleaved pairs of P2).
struct ChromaRow {
  uint8_t* cb;
  uint8_t* cr;
  int stride;
};

inline Rgb At(const Samples<const uint8_t>& s, int x) {
  const int i = x * s.stride;
  return {s.ptr[0][i], s.ptr[1][i], s.ptr[2][i]};
}

// Columns [from, to) of a row pair (column i: pixels 2i and 2i + 1) through one form.
template <class Set, bool kBody>
void ScalarColumns(const Samples<const uint8_t>& s0, const Samples<const uint8_t>& s1, uint8_t* y0,
                   uint8_t* y1, ChromaRow c, int from, int to) {
  for (int i = from; i < to; ++i) {
    const Quad q = {At(s0, 2 * i), At(s0, 2 * i + 1), At(s1, 2 * i), At(s1, 2 * i + 1)};
    for (int k = 0; k < 4; ++k) {
      (k < 2 ? y0 : y1)[2 * i + (k & 1)] = kBody ? Set::BodyY(q[k]) : Set::TailY(q[k]);
    }
    const CbCr v = kBody ? Set::BodyC(q) : Set::TailC(q);
    c.cb[i * c.stride] = v.cb;
    c.cr[i * c.stride] = v.cr;
  }
}

// Source layouts: bytes per pixel and component order; planar sources have no vector body.
template <int kBytes, bool kBgr>
struct PackedLayout {
  static constexpr int kBpp = kBytes;
  static constexpr bool kReversed = kBgr;
  static const uint8_t* Base(const Samples<const uint8_t>& s) { return kBgr ? s.ptr[2] : s.ptr[0]; }
};
using Rgb3 = PackedLayout<3, false>;
using Bgr3 = PackedLayout<3, true>;
using Rgb4 = PackedLayout<4, false>;
using Bgr4 = PackedLayout<4, true>;
struct PlanarLayout {};

}  // namespace
}  // namespace kro::chroma420

#if KRO_SIMD
namespace kro::chroma420 {
namespace {

// ---- SSSE3 bodies: sixteen pixels of a row pair a turn ---------------------------------------
//
// A row of sixteen packed pixels (48 or 64 bytes) is cut into four groups of four pixels; one
// byte shuffle per group gathers its R, G and B bytes into 32-bit runs, and two interleaves of
// those runs give R|G of pixels 0..7, R|G of pixels 8..15 and the sixteen B bytes. From there:
// - luma lanes are the component bytes widened into the high byte of each 16-bit lane (x * 256,
//   which the unpack gives for free), pixels 0..7 and 8..15;
// - block sums times 32 come from pmaddubsw of each row's bytes with 32 (neighbouring pixels)
//   and the add of the two rows: exactly the a, b, c of the chroma formulas.
// Every lane computes exactly its set's body formula.

inline __m128i Set16(int v) { return _mm_set1_epi16(static_cast<int16_t>(v)); }

// A row of sixteen pixels after the split: rg[0] holds R of pixels 0..7 in its low eight bytes
// and G of the same pixels in its high eight, rg[1] the same for pixels 8..15, and b the sixteen
// B bytes.
struct RowParts {
  __m128i rg[2], b;
};

// Per group of four pixels: the R, G and B bytes in runs of four (alpha, if any, dropped).
template <class Layout>
inline __m128i GroupMask() {
  constexpr int kR = Layout::kReversed ? 2 : 0, kB = 2 - kR, n = Layout::kBpp;
  return _mm_setr_epi8(kR, kR + n, kR + 2 * n, kR + 3 * n, 1, 1 + n, 1 + 2 * n, 1 + 3 * n, kB,
                       kB + n, kB + 2 * n, kB + 3 * n, -1, -1, -1, -1);
}

// kOverlap: the four groups of a 3-byte row come from four loads twelve bytes apart, which read
// four bytes past the sixteenth pixel; the caller uses it only where the row goes on that far.
// Otherwise three loads are cut up by byte alignment.
template <class Layout, bool kAligned, bool kOverlap>
inline RowParts LoadRow(const uint8_t* p) {
  auto load = [&](int i) {
    const __m128i* a = reinterpret_cast<const __m128i*>(p + 16 * i);
    return kAligned ? _mm_load_si128(a) : _mm_loadu_si128(a);
  };
  __m128i q[4];
  if constexpr (Layout::kBpp == 3 && kOverlap) {
    q[0] = load(0);
    for (int i = 1; i < 4; ++i) {
      q[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 12 * i));
    }
  } else if constexpr (Layout::kBpp == 3) {
    const __m128i p0 = load(0), p1 = load(1), p2 = load(2);
    q[0] = p0;
    q[1] = _mm_alignr_epi8(p1, p0, 12);
    q[2] = _mm_alignr_epi8(p2, p1, 8);
    q[3] = _mm_srli_si128(p2, 4);
  } else {
    for (int i = 0; i < 4; ++i) q[i] = load(i);
  }
  const __m128i mask = GroupMask<Layout>();
  for (int i = 0; i < 4; ++i) q[i] = _mm_shuffle_epi8(q[i], mask);
  return {{_mm_unpacklo_epi32(q[0], q[1]), _mm_unpacklo_epi32(q[2], q[3])},
          _mm_unpacklo_epi64(_mm_unpackhi_epi32(q[0], q[1]), _mm_unpackhi_epi32(q[2], q[3]))};
}

// Lane forms of the sets, on widened components (r8, g8, b8) and block sums times 32 (a, b, c).
// Luma(r8, g8, b8, &pre) gives the luma lanes before the pack and, for the YUV sets, the
// per-pixel value whose block sum the chroma needs; Chroma(a, b, c, preSum) gives the Cb and Cr
// lanes before the pack. The widening puts each component byte in the high byte of its lane and
// the set's kLow byte under it (plain: x * 256).
struct PlainWidening {
  static constexpr uint8_t kLow[3] = {0, 0, 0};
};

// mulr(x * 128, k) = (x k + 128) >> 8 equals hiU(x * 256 + c, k) - d for every byte x, for
// the (c, d) of each luma weight of set A below: the constant c placed under the sample makes
// the truncating high product round as mulr does, shifted by d. So the luma of set A needs no
// shift of its samples: the widening puts c in the low byte for free, and the d go into the
// bias. Checked for all 256 bytes at compile time.
struct Rounding {
  int32_t c, d;
};
inline constexpr Rounding kRoundA[3] = {{179, 11}, {4, 0}, {143, 3}};
constexpr bool RoundsExactly(int32_t k, Rounding r) {
  for (int32_t x = 0; x < 256; ++x) {
    if ((((256 * x + r.c) * k) >> 16) - r.d != ((k * x + 128) >> 8)) return false;
  }
  return true;
}
static_assert(RoundsExactly(SetA::kY[0], kRoundA[0]) && RoundsExactly(SetA::kY[1], kRoundA[1]) &&
                  RoundsExactly(SetA::kY[2], kRoundA[2]),
              "set A luma through truncating products");

struct LanesA {
  static constexpr uint8_t kLow[3] = {kRoundA[0].c, kRoundA[1].c, kRoundA[2].c};
  static __m128i Luma(__m128i r8, __m128i g8, __m128i b8, __m128i*) {
    constexpr int kBias = SetA::kYBias - kRoundA[0].d - kRoundA[1].d - kRoundA[2].d;
    const __m128i y =
        _mm_add_epi16(_mm_add_epi16(_mm_mulhi_epu16(r8, Set16(SetA::kY[0])),
                                    _mm_mulhi_epu16(g8, Set16(SetA::kY[1]))),
                      _mm_add_epi16(_mm_mulhi_epu16(b8, Set16(SetA::kY[2])), Set16(kBias)));
    return _mm_srai_epi16(y, 6);
  }
  static void Chroma(__m128i a, __m128i b, __m128i c, __m128i, __m128i* cb, __m128i* cr) {
    auto m = [](__m128i x, int k) { return _mm_mulhrs_epi16(x, Set16(k)); };
    const __m128i bias = Set16(SetA::kCBias);
    *cb = _mm_srai_epi16(_mm_sub_epi16(_mm_add_epi16(m(c, SetA::kCbB), bias),
                                       _mm_add_epi16(m(a, SetA::kCbR), m(b, SetA::kCbG))),
                         6);
    *cr = _mm_srai_epi16(_mm_sub_epi16(_mm_add_epi16(m(a, SetA::kCrR), bias),
                                       _mm_add_epi16(m(b, SetA::kCrG), m(c, SetA::kCrB))),
                         6);
  }
};

template <const HighCoefs& K>
struct LanesHigh : PlainWidening {
  static __m128i Luma(__m128i r8, __m128i g8, __m128i b8, __m128i*) {
    auto m = [](__m128i x, int k) { return _mm_mulhi_epu16(x, Set16(k)); };
    const __m128i y =
        _mm_adds_epu16(_mm_adds_epu16(_mm_adds_epu16(m(r8, K.y[0]), m(g8, K.y[1])), m(b8, K.y[2])),
                       Set16(K.yBias));
    return _mm_srli_epi16(y, 7);
  }
  static __m128i One(const uint16_t (&k)[3], __m128i first, __m128i second, __m128i third) {
    const __m128i d = _mm_sub_epi16(
        _mm_mulhi_epu16(first, Set16(k[0])),
        _mm_adds_epu16(_mm_mulhi_epu16(second, Set16(k[1])), _mm_mulhi_epu16(third, Set16(k[2]))));
    return _mm_srai_epi16(_mm_adds_epi16(d, Set16(K.cBias)), K.cShift);
  }
  static void Chroma(__m128i a, __m128i b, __m128i c, __m128i, __m128i* cb, __m128i* cr) {
    *cb = One(K.cb, c, a, b);
    *cr = One(K.cr, a, b, c);
  }
};

// Set E's weights have such constants too; its per-pixel F must come out exact for the block
// sum, so the d are taken off F itself.
inline constexpr Rounding kRoundE[3] = {{87, 6}, {92, 13}, {18, 0}};
static_assert(RoundsExactly(SetE::kY[0], kRoundE[0]) && RoundsExactly(SetE::kY[1], kRoundE[1]) &&
                  RoundsExactly(SetE::kY[2], kRoundE[2]),
              "set E luma through truncating products");

struct LanesE {
  static constexpr uint8_t kLow[3] = {kRoundE[0].c, kRoundE[1].c, kRoundE[2].c};
  static __m128i Luma(__m128i r8, __m128i g8, __m128i b8, __m128i* pre) {
    constexpr int kOff = -(kRoundE[0].d + kRoundE[1].d + kRoundE[2].d);
    *pre = _mm_add_epi16(_mm_add_epi16(_mm_mulhi_epu16(r8, Set16(SetE::kY[0])),
                                       _mm_mulhi_epu16(g8, Set16(SetE::kY[1]))),
                         _mm_add_epi16(_mm_mulhi_epu16(b8, Set16(SetE::kY[2])), Set16(kOff)));
    return _mm_srai_epi16(*pre, 6);
  }
  static void Chroma(__m128i a, __m128i, __m128i c, __m128i preSum, __m128i* u, __m128i* v) {
    const __m128i t = _mm_srli_epi16(preSum, 1);
    auto one = [&](__m128i s, int k) {
      return _mm_add_epi16(_mm_srai_epi16(_mm_mulhrs_epi16(_mm_sub_epi16(s, t), Set16(k)), 6),
                           Set16(128));
    };
    *u = one(c, SetE::kU);
    *v = one(a, SetE::kV);
  }
};

struct LanesF : PlainWidening {
  static __m128i Luma(__m128i r8, __m128i g8, __m128i b8, __m128i* pre) {
    auto m = [](__m128i x8, int k) { return _mm_mulhi_epi16(_mm_srli_epi16(x8, 6), Set16(k)); };
    *pre =
        _mm_adds_epi16(_mm_adds_epi16(m(r8, SetF::kY[0]), m(g8, SetF::kY[1])), m(b8, SetF::kY[2]));
    return _mm_srai_epi16(*pre, 1);
  }
  // (S * 4) >> 3 of a sum below 1021 is the sum times 32, shifted right by 6.
  static void Chroma(__m128i a, __m128i, __m128i c, __m128i preSum, __m128i* u, __m128i* v) {
    const __m128i t = _mm_srai_epi16(preSum, 2);
    auto one = [&](__m128i s, int k) {
      return _mm_adds_epi16(_mm_mulhi_epi16(_mm_sub_epi16(_mm_srai_epi16(s, 6), t), Set16(k)),
                            Set16(128));
    };
    *u = one(c, SetF::kU);
    *v = one(a, SetF::kV);
  }
};

// The lane form of each set and the byte clamp after the pack.
template <class Set>
struct LanesOf;
template <>
struct LanesOf<SetA> : LanesA {};
template <>
struct LanesOf<SetE> : LanesE {};
template <>
struct LanesOf<SetF> : LanesF {};
template <const HighCoefs& K, const YccForward& T, bool kClamp, int (*kBody)(int)>
struct LanesOf<HighSet<K, T, kClamp, kBody>> : LanesHigh<K> {};

template <class Set>
inline __m128i ClampBytes(__m128i v) {
  if constexpr (std::is_same_v<Set, SetD>) {
    return _mm_max_epu8(_mm_min_epu8(v, _mm_set1_epi8(static_cast<char>(254))), _mm_set1_epi8(1));
  }
  return v;
}

template <class Set>
inline constexpr bool kNeedsLumaSums = std::is_same_v<Set, SetE> || std::is_same_v<Set, SetF>;

// The block sums of a row pair, times 32, as they accumulate: pair sums of R | G for pixels
// 0..7 and 8..15, of B for all sixteen, and for the YUV sets of the per-pixel luma value.
struct Acc {
  __m128i rg[2], b, pre;
};

// One row of sixteen pixels: luma stored, the row's pair sums added to the accumulators.
template <class Set, class Layout, bool kAligned, bool kOverlap>
inline void Row16(const uint8_t* src, uint8_t* y, Acc& acc) {
  using L = LanesOf<Set>;
  const RowParts v = LoadRow<Layout, kAligned, kOverlap>(src);
  const __m128i by32 = _mm_set1_epi8(32);
  acc.rg[0] = _mm_add_epi16(acc.rg[0], _mm_maddubs_epi16(v.rg[0], by32));
  acc.rg[1] = _mm_add_epi16(acc.rg[1], _mm_maddubs_epi16(v.rg[1], by32));
  acc.b = _mm_add_epi16(acc.b, _mm_maddubs_epi16(v.b, by32));
  // Low bytes of the lanes: red's in the low half, green's in the high half of rg.
  const __m128i lowRG = _mm_unpacklo_epi64(_mm_set1_epi8(static_cast<char>(L::kLow[0])),
                                           _mm_set1_epi8(static_cast<char>(L::kLow[1])));
  const __m128i lowB = _mm_set1_epi8(static_cast<char>(L::kLow[2]));
  __m128i pre[2];
  const __m128i lo = L::Luma(_mm_unpacklo_epi8(lowRG, v.rg[0]), _mm_unpackhi_epi8(lowRG, v.rg[0]),
                             _mm_unpacklo_epi8(lowB, v.b), &pre[0]);
  const __m128i hi = L::Luma(_mm_unpacklo_epi8(lowRG, v.rg[1]), _mm_unpackhi_epi8(lowRG, v.rg[1]),
                             _mm_unpackhi_epi8(lowB, v.b), &pre[1]);
  const __m128i bytes = ClampBytes<Set>(_mm_packus_epi16(lo, hi));
  if (kAligned) {
    _mm_store_si128(reinterpret_cast<__m128i*>(y), bytes);
  } else {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), bytes);
  }
  if constexpr (kNeedsLumaSums<Set>) {
    acc.pre = _mm_add_epi16(acc.pre, _mm_hadd_epi16(pre[0], pre[1]));
  }
}

// Sixteen pixels of two rows: 2 x 16 luma bytes and eight chroma columns.
template <class Set, class Layout, bool kInterleaved, bool kAligned, bool kOverlap>
inline void Step16(const uint8_t* s0, const uint8_t* s1, uint8_t* y0, uint8_t* y1, uint8_t* cb,
                   uint8_t* cr) {
  const __m128i zero = _mm_setzero_si128();
  Acc acc = {{zero, zero}, zero, zero};
  Row16<Set, Layout, kAligned, kOverlap>(s0, y0, acc);
  Row16<Set, Layout, kAligned, kOverlap>(s1, y1, acc);
  __m128i vcb, vcr;
  LanesOf<Set>::Chroma(_mm_unpacklo_epi64(acc.rg[0], acc.rg[1]),
                       _mm_unpackhi_epi64(acc.rg[0], acc.rg[1]), acc.b, acc.pre, &vcb, &vcr);
  const __m128i both = ClampBytes<Set>(_mm_packus_epi16(vcb, vcr));  // Cb in 0..7, Cr in 8..15
  if (kInterleaved) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cb),
                     _mm_unpacklo_epi8(both, _mm_srli_si128(both, 8)));
  } else {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cb), both);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cr), _mm_srli_si128(both, 8));
  }
}

// Sixteen-pixel steps over [x, end) of a row pair.
template <class Set, class Layout, bool kAligned, bool kOverlap>
inline int Steps16(const uint8_t* s0, const uint8_t* s1, uint8_t* y0, uint8_t* y1, ChromaRow c,
                   int x, int end) {
  constexpr int kBpp = Layout::kBpp;
  if (c.stride == 2) {
    for (; x + 16 <= end; x += 16) {
      Step16<Set, Layout, true, kAligned, kOverlap>(s0 + kBpp * x, s1 + kBpp * x, y0 + x, y1 + x,
                                                    c.cb + x, nullptr);
    }
  } else {
    for (; x + 16 <= end; x += 16) {
      Step16<Set, Layout, false, kAligned, kOverlap>(s0 + kBpp * x, s1 + kBpp * x, y0 + x, y1 + x,
                                                     c.cb + x / 2, c.cr + x / 2);
    }
  }
  return x;
}

// Body columns [0, cols) of a row pair: sixteen pixels a turn, and a last part of eight or four
// pixels through the same lanes on copies in a small stack buffer, so that no byte outside the
// region is read or written.
template <class Set, class Layout, bool kAligned>
void VectorColumns(const uint8_t* s0, const uint8_t* s1, uint8_t* y0, uint8_t* y1, ChromaRow c,
                   int cols, int width) {
  constexpr int kBpp = Layout::kBpp;
  const int pixels = 2 * cols;
  // Overlapping loads while the first byte of pixel x + 17 still lies in the row.
  int x = 0;
  if constexpr (kBpp == 3) {
    x = Steps16<Set, Layout, kAligned, true>(s0, s1, y0, y1, c, x, std::min(pixels, width - 2));
  }
  x = Steps16<Set, Layout, kAligned, false>(s0, s1, y0, y1, c, x, pixels);
  const int rest = pixels - x;
  if (rest == 0) return;
  alignas(16) uint8_t in[2][64] = {};
  alignas(16) uint8_t out[4][16] = {};
  std::memcpy(in[0], s0 + kBpp * x, static_cast<std::size_t>(kBpp * rest));
  std::memcpy(in[1], s1 + kBpp * x, static_cast<std::size_t>(kBpp * rest));
  Step16<Set, Layout, false, false, false>(in[0], in[1], out[0], out[1], out[2], out[3]);
  std::memcpy(y0 + x, out[0], static_cast<std::size_t>(rest));
  std::memcpy(y1 + x, out[1], static_cast<std::size_t>(rest));
  for (int i = 0; i < rest / 2; ++i) {
    c.cb[(x / 2 + i) * c.stride] = out[2][i];
    c.cr[(x / 2 + i) * c.stride] = out[3][i];
  }
}

}  // namespace
}  // namespace kro::chroma420
#endif

namespace kro::chroma420 {
namespace {

// One row pair: the body columns, then the tail columns up to the even width.
template <class Set, class Layout, bool kAligned>
void RowPair(const Samples<const uint8_t>& s0, const Samples<const uint8_t>& s1, uint8_t* y0,
             uint8_t* y1, ChromaRow c, int width) {
  const int cols = width >> 1;
  const int body = Set::BodyPixels(width & ~1) >> 1;
  if constexpr (!std::is_same_v<Layout, PlanarLayout>) {
#if KRO_SIMD
    VectorColumns<Set, Layout, kAligned>(Layout::Base(s0), Layout::Base(s1), y0, y1, c, body,
                                         width);
#else
    ScalarColumns<Set, true>(s0, s1, y0, y1, c, 0, body);
#endif
  }
  ScalarColumns<Set, false>(s0, s1, y0, y1, c, body, cols);
}

// The destination of an image: Y plane and the two chroma sample sets.
struct Dest {
  uint8_t* y;
  int yStep;
  uint8_t* cb;
  int cbStep;
  uint8_t* cr;
  int crStep;
  int stride;
};
inline Dest Planes(Kro8u* const planes[3], const int steps[3]) {
  return {planes[0], steps[0], planes[1], steps[1], planes[2], steps[2], 1};
}
// YCrCb: plane 1 is Cr and plane 2 Cb; the kernel is the YCbCr one.
inline Dest PlanesCrCb(Kro8u* const planes[3], const int steps[3]) {
  return {planes[0], steps[0], planes[2], steps[2], planes[1], steps[1], 1};
}
inline Dest Pairs(Kro8u* y, int yStep, Kro8u* chroma, int chromaStep) {
  return {y, yStep, chroma, chromaStep, chroma + 1, chromaStep, 2};
}

// The image: row pairs over the even height; +35 when width or height is odd.
template <class Set, class Layout, bool kAligned = false, class SrcAt>
kroStatus Convert(SrcAt srcAt, const Dest& d, KroSize roi) {
  for (int j = 0; j < roi.height >> 1; ++j) {
    RowPair<Set, Layout, kAligned>(
        srcAt(2 * j), srcAt(2 * j + 1), RowOf(d.y, d.yStep, 2 * j), RowOf(d.y, d.yStep, 2 * j + 1),
        ChromaRow{RowOf(d.cb, d.cbStep, j), RowOf(d.cr, d.crStep, j), d.stride}, roi.width);
  }
  return ((roi.width | roi.height) & 1) ? kroStatusOddSize : kroStatusOk;
}

template <class Set, class Layout>
kroStatus FromPacked(const Kro8u* src, int srcStep, const Dest& d, KroSize roi) {
  if constexpr (Layout::kReversed) {
    return Convert<Set, Layout>(color::PackedBgrRows(src, srcStep, Layout::kBpp), d, roi);
  } else {
    return Convert<Set, Layout>(color::PackedRows(src, srcStep, Layout::kBpp), d, roi);
  }
}

}  // namespace
}  // namespace kro::chroma420

namespace kro::wrap {

using namespace kro::chroma420;

// ---- Set A: BT.601 studio range, rounded multiplies; regions down to 1 x 1 -------------------

// Two row kernels that differ only in their loads and stores: aligned ones when the source,
// every destination plane and every step are multiples of 16 bytes. Both give the same bytes.
kroStatus kroiRGBToYCbCr420_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                     const int dstPlaneSteps[3], KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  const Dest d = Planes(dstPlanes, dstPlaneSteps);
  const uintptr_t bits = reinterpret_cast<uintptr_t>(src) | reinterpret_cast<uintptr_t>(d.y) |
                         reinterpret_cast<uintptr_t>(d.cb) | reinterpret_cast<uintptr_t>(d.cr) |
                         static_cast<uintptr_t>(srcRowStep | d.yStep | d.cbStep | d.crStep);
  const auto rows = color::PackedRows(src, srcRowStep, 3);
  if ((bits & 15) == 0) return Convert<SetA, Rgb3, true>(rows, d, roi);
  return Convert<SetA, Rgb3, false>(rows, d, roi);
}

// The P2 forms: source, luma and chroma pointers, then the size (at least 1 x 1 for set A,
// 2 x 2 for the 709CSC forms).
template <class Set, class Layout, int kMin>
kroStatus ToPairs(const Kro8u* src, int srcRowStep, Kro8u* dstLuma, int dstLumaStep,
                  Kro8u* dstChroma, int dstChromaStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dstLuma, dstChroma));
  KRO_CHECK(CheckSize(roi, kMin, kMin));
  return FromPacked<Set, Layout>(src, srcRowStep,
                                 Pairs(dstLuma, dstLumaStep, dstChroma, dstChromaStep), roi);
}

kroStatus kroiRGBToYCbCr420_8u_C3P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                     int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                     KroSize roi) {
  return ToPairs<SetA, Rgb3, 1>(src, srcRowStep, dstLuma, dstLumaStep, dstChroma, dstChromaStep,
                                roi);
}
kroStatus kroiRGBToYCbCr420_8u_C4P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                     int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                     KroSize roi) {
  return ToPairs<SetA, Rgb4, 1>(src, srcRowStep, dstLuma, dstLumaStep, dstChroma, dstChromaStep,
                                roi);
}
kroStatus kroiBGRToYCbCr420_8u_C3P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                     int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                     KroSize roi) {
  return ToPairs<SetA, Bgr3, 1>(src, srcRowStep, dstLuma, dstLumaStep, dstChroma, dstChromaStep,
                                roi);
}
kroStatus kroiBGRToYCbCr420_8u_AC4P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                      int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                      KroSize roi) {
  return ToPairs<SetA, Bgr4, 1>(src, srcRowStep, dstLuma, dstLumaStep, dstChroma, dstChromaStep,
                                roi);
}

// ---- Set B: BT.601 studio range, unsigned high multiplies; regions from 2 x 2 ----------------

// The planar B, C and D forms test the three plane pointers with the other pointers, before
// the size.
template <class Set, class Layout, bool kCrCb = false>
kroStatus PlanarStudio(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                       const int dstPlaneSteps[3], KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  KRO_CHECK(CheckSize(roi, 2, 2));
  return FromPacked<Set, Layout>(
      src, srcRowStep,
      kCrCb ? PlanesCrCb(dstPlanes, dstPlaneSteps) : Planes(dstPlanes, dstPlaneSteps), roi);
}

kroStatus kroiBGRToYCbCr420_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                     const int dstPlaneSteps[3], KroSize roi) {
  return PlanarStudio<SetB, Bgr3>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
kroStatus kroiBGRToYCbCr420_8u_AC4P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                      const int dstPlaneSteps[3], KroSize roi) {
  return PlanarStudio<SetB, Bgr4>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
kroStatus kroiBGRToYCrCb420_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                     const int dstPlaneSteps[3], KroSize roi) {
  return PlanarStudio<SetB, Bgr3, true>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
kroStatus kroiBGRToYCrCb420_8u_AC4P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                      const int dstPlaneSteps[3], KroSize roi) {
  return PlanarStudio<SetB, Bgr4, true>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
// No YCbCr twin among the exports: set B on RGB order, planes exchanged.
kroStatus kroiRGBToYCrCb420_8u_AC4P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                      const int dstPlaneSteps[3], KroSize roi) {
  return PlanarStudio<SetB, Rgb4, true>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}

// ---- Set C: BT.709 studio range; regions from 2 x 2 ------------------------------------------

kroStatus kroiBGRToYCbCr420_709CSC_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                            Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                            KroSize roi) {
  return PlanarStudio<SetCOnP3, Bgr3>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
kroStatus kroiBGRToYCbCr420_709CSC_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                             Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                             KroSize roi) {
  return PlanarStudio<SetCOnP3, Bgr4>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
kroStatus kroiBGRToYCrCb420_709CSC_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                            Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                            KroSize roi) {
  return PlanarStudio<SetCOnP3, Bgr3, true>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}
kroStatus kroiBGRToYCrCb420_709CSC_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                             Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                             KroSize roi) {
  return PlanarStudio<SetCOnP3, Bgr4, true>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}

kroStatus kroiBGRToYCbCr420_709CSC_8u_C3P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                            int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                            KroSize roi) {
  return ToPairs<SetCOnP2, Bgr3, 2>(src, srcRowStep, dstLuma, dstLumaStep, dstChroma, dstChromaStep,
                                    roi);
}
kroStatus kroiBGRToYCbCr420_709CSC_8u_AC4P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                             int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                             KroSize roi) {
  return ToPairs<SetCOnP2, Bgr4, 2>(src, srcRowStep, dstLuma, dstLumaStep, dstChroma, dstChromaStep,
                                    roi);
}

// ---- Set D: BT.709 without luma offset, every output held to 1..254 --------------------------

kroStatus kroiBGRToYCbCr420_709HDTV_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                              Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                              KroSize roi) {
  return PlanarStudio<SetD, Bgr4>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}

// ---- Sets E, F, G: YUV (U and V offset by 128); regions down to 1 x 1 ------------------------

template <class Set, class Layout>
kroStatus PackedYuv(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                    const int dstPlaneSteps[3], KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  return FromPacked<Set, Layout>(src, srcRowStep, Planes(dstPlanes, dstPlaneSteps), roi);
}

kroStatus kroiRGBToYUV420_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                   const int dstPlaneSteps[3], KroSize roi) {
  return PackedYuv<SetE, Rgb3>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}

// Tightly packed: source rows 3W bytes apart, Y rows W, chroma rows W / 2.
kroStatus kroiRGBToYUV420_8u_C3P3(const Kro8u* src, Kro8u* const dstPlanes[3], KroSize roi) {
  const int steps[3] = {roi.width, roi.width >> 1, roi.width >> 1};
  return wrap::kroiRGBToYUV420_8u_C3P3R(
      src, static_cast<int>(3u * static_cast<unsigned>(roi.width)), dstPlanes, steps, roi);
}

kroStatus kroiBGRToYUV420_8u_AC4P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                    const int dstPlaneSteps[3], KroSize roi) {
  return PackedYuv<SetF, Bgr4>(src, srcRowStep, dstPlanes, dstPlaneSteps, roi);
}

// Planar source: no vector body; the source planes are tested before the destination planes.
kroStatus kroiRGBToYUV420_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                 Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                 KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  return Convert<SetG, PlanarLayout>(color::PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
                                     Planes(dstPlanes, dstPlaneSteps), roi);
}

// Tightly packed: every plane's rows W bytes apart, chroma rows W / 2.
kroStatus kroiRGBToYUV420_8u_P3(const Kro8u* const srcPlanes[3], Kro8u* const dstPlanes[3],
                                KroSize roi) {
  const int steps[3] = {roi.width, roi.width >> 1, roi.width >> 1};
  return wrap::kroiRGBToYUV420_8u_P3R(srcPlanes, roi.width, dstPlanes, steps, roi);
}

}  // namespace kro::wrap
