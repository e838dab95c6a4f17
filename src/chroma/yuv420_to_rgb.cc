// 4:2:0 to RGB and BGR: the twenty wrappers, the row-pair loop, and the vector bodies.
//
// Rows are walked in pairs: rows 2j and 2j + 1 share chroma row j, and columns 2i and 2i + 1
// share chroma column i. Only the even part of the region is converted; an odd last row or
// column is not written, and the wrapper reports it with kroStatusOddSize after the work.
#include "chroma/yuv420_to_rgb.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "frame/checks.h"
#include "frame/entry.h"
#include "frame/simd.h"

namespace kro::yuv420 {
namespace {

using color::RowOf;

// ---- Arithmetic sets ------------------------------------------------------------------------
//
// A set names its formula for the columns its vector form covers (kBlock), its formula for the
// remaining columns of the even width (kTail), and where the vector form stops: at
// width & kVectorMask (a mask of ~1 means the whole even width, for sets with one form).
//
// kLanes describes the vector form as the 16-bit lane program all sets share:
//   yy  = luma term per pixel; one of mulh((Y - 16) << 7, kY), mulh(Y << 7, kY), Y << 4, Y << 1
//   u,v = chroma scaled as (C - 128) << 7, C << 7 or (C << 4) - 2048
//   R = sat((yy + mulh(v, kR) + cR) >> shift)
//   G = sat((yy + cG -/+ (mulh(u, kGu) + mulh(v, kGv))) >> shift)
//   B = sat((yy + mulh(u, kB) + cB) >> shift)
// except for the 32-bit set T (kYuv32), whose terms are whole 32-bit quotients (below).
// The constants c fold each set's rounding term (and in P1/P2 its offsets) into the chroma term,
// which the vector body computes once per 2x2 block. No sum of any set comes near the 16-bit
// limits (|yy| < 4500, |terms| < 4400), so the saturating adds of the formulas and the plain
// adds here give the same bits in any grouping; the negated products keep their own rounding
// (mulh(u, -k) is not -mulh(u, k)), as each set writes them.
enum class LumaIn { kOffset7, kPlain7, kTimes16, kTimes2, kAsIs };
enum class ChromaIn { kCentred7, kPlain7, kCentred4, kYuv32 };
struct LaneSet {
  LumaIn luma;
  int16_t kY;
  ChromaIn chroma;
  int16_t kR, cR;
  int16_t kGu, kGv, cG;
  bool gSubtracts;
  int16_t kB, cB;
  int shift;
};

template <PixelFn kBlockFn, PixelFn kTailFn, int kMask, const LaneSet& kLaneSet>
struct Set {
  static constexpr PixelFn kBlock = kBlockFn, kTail = kTailFn;
  static constexpr int kVectorMask = kMask;
  static constexpr const LaneSet& kLanes = kLaneSet;
};

using LI = LumaIn;
using CI = ChromaIn;
// Ycc601 at 2^12 (I-A) and 2^13 (I-B), Ycc709Csc at 2^13 (I-D).
constexpr LaneSet kLanesV = {LI::kOffset7, 4769, CI::kCentred7, 6537, 4, 1605,
                             3330,         4,    true,          8263, 4, 3};
constexpr LaneSet kLanesQ = {LI::kOffset7, 9535, CI::kCentred7, 13074, 8, 3211,
                             6660,         8,    true,          16523, 8, 4};
constexpr LaneSet kLanesC = {LI::kOffset7, 9535, CI::kCentred7, 14688, 8, -1745,
                             -4375,        8,    false,         17326, 8, 4};
// Ycc709Hdtv and YUV with luma at 2^4.
constexpr LaneSet kLanesD = {LI::kTimes16, 0, CI::kCentred7, 12616, 8, 1499,
                             3760,         8, true,          14877, 8, 4};
constexpr LaneSet kLanesA = {LI::kTimes16, 0, CI::kCentred7, 9338,  8, 3227,
                             4759,         8, true,          16646, 8, 4};
// Offsets and rounding folded in: cR = -oR, cG = oG, cB = -oB.
constexpr LaneSet kLanesP1 = {LI::kPlain7,
                              kFoldedP1.kY,
                              CI::kPlain7,
                              kFoldedP1.kR,
                              static_cast<int16_t>(-kFoldedP1.oR),
                              kFoldedP1.kU,
                              kFoldedP1.kV,
                              kFoldedP1.oG,
                              true,
                              kFoldedP1.kB,
                              static_cast<int16_t>(-kFoldedP1.oB),
                              3};
constexpr LaneSet kLanesP2 = {LI::kPlain7,
                              kFoldedP2.kY,
                              CI::kPlain7,
                              kFoldedP2.kR,
                              static_cast<int16_t>(-kFoldedP2.oR),
                              kFoldedP2.kU,
                              kFoldedP2.kV,
                              kFoldedP2.oG,
                              true,
                              kFoldedP2.kB,
                              static_cast<int16_t>(-kFoldedP2.oB),
                              3};
// YUV at 2^1, no rounding.
constexpr LaneSet kLanesH1 = {LI::kTimes2, 0, CI::kCentred4, 9339,  0, -3228,
                              -4760,       0, false,         16646, 0, 1};
constexpr LaneSet kLanesH2 = {LI::kTimes2, 0, CI::kCentred4, 9338,  0, -3227,
                              -4759,       0, false,         16645, 0, 1};
// The 32-bit YUV set: Y as it is, terms of its own (kYuv32), no shift.
constexpr LaneSet kLanesT = {LI::kAsIs, 0, CI::kYuv32, 0, 0, 0, 0, 0, false, 0, 0, 0};

using SetV = Set<BlockV, ScalarV, ~7, kLanesV>;
using SetQ = Set<BlockQ, ScalarV, ~7, kLanesQ>;
using SetC = Set<BlockC, ScalarC, ~7, kLanesC>;
using SetD = Set<BlockD, ScalarD, ~7, kLanesD>;
using SetA = Set<BlockA, ScalarA, ~3, kLanesA>;
using SetP1 = Set<BlockP1, BlockP1, ~1, kLanesP1>;
using SetP2 = Set<BlockP2, BlockP2, ~1, kLanesP2>;
using SetH1 = Set<BlockH1, BlockH1, ~1, kLanesH1>;
using SetH2 = Set<BlockH2, BlockH2, ~1, kLanesH2>;
using SetT = Set<ScalarT, ScalarT, ~1, kLanesT>;

// ---- Sources --------------------------------------------------------------------------------

// Chroma of a row: two planes of one byte per column, or one plane of pairs in the name's order.
enum class Chroma { kPlanes, kCbCrPairs, kCrCbPairs };

struct Source {
  const uint8_t* y;
  int yStep;
  const uint8_t* cb;
  int cbStep;
  const uint8_t* cr;
  int crStep;
};

// Planes in the order of the name: YCbCr and YUV have Cb (U) in plane 1, YCrCb has Cr there.
template <bool kCrFirst = false>
Source FromPlanes(const Kro8u* const planes[3], const int steps[3]) {
  constexpr int kCb = kCrFirst ? 2 : 1, kCr = 3 - kCb;
  return {planes[0], steps[0], planes[kCb], steps[kCb], planes[kCr], steps[kCr]};
}
template <Chroma kOrder>
Source FromPairs(const Kro8u* luma, int lumaStep, const Kro8u* chroma, int chromaStep) {
  constexpr int kCb = kOrder == Chroma::kCrCbPairs ? 1 : 0;
  return {luma, lumaStep, chroma + kCb, chromaStep, chroma + (1 - kCb), chromaStep};
}

// ---- Destinations ---------------------------------------------------------------------------

// Packed pixels of kBytes bytes, R at byte 0 (B for BGR), and in four-byte pixels the alpha
// byte after them: alphaValue for C4, 0 for AC4.
template <int kPixelBytes, bool kIsBgr>
struct PackedOut {
  static constexpr bool kPacked = true;
  static constexpr int kBytes = kPixelBytes;
  static constexpr bool kBgr = kIsBgr;
  uint8_t* image;
  int step;
  uint8_t alpha;
  struct Row {
    uint8_t* p;
    uint8_t alpha;
    void Put(int x, Px v) const {
      uint8_t* q = p + kBytes * x;
      q[kBgr ? 2 : 0] = v.c0;
      q[1] = v.c1;
      q[kBgr ? 0 : 2] = v.c2;
      if (kBytes == 4) q[3] = alpha;
    }
  };
  Row At(int y) const { return {RowOf(image, step, y), alpha}; }
};

// Three planes R, G, B sharing one step.
struct PlanarOut {
  static constexpr bool kPacked = false;
  uint8_t* const* planes;
  int step;
  struct Row {
    uint8_t* p[3];
    void Put(int x, Px v) const {
      p[0][x] = v.c0;
      p[1][x] = v.c1;
      p[2][x] = v.c2;
    }
  };
  Row At(int y) const {
    return {{RowOf(planes[0], step, y), RowOf(planes[1], step, y), RowOf(planes[2], step, y)}};
  }
};

// ---- Row pairs ------------------------------------------------------------------------------

// Columns x .. width - 1 of a row pair: the set's block formula up to vectorEnd, its tail
// formula after it.
template <class S, Chroma kChroma, class Row>
void RowPairScalar(const uint8_t* y0, const uint8_t* y1, const uint8_t* cb, const uint8_t* cr,
                   const Row& o0, const Row& o1, int x, int width, int vectorEnd) {
  constexpr int kStride = kChroma == Chroma::kPlanes ? 1 : 2;
  auto run = [&](auto fn, int end) {
    for (; x < end; ++x) {
      const int c = (x >> 1) * kStride;
      o0.Put(x, fn(y0[x], cb[c], cr[c]));
      o1.Put(x, fn(y1[x], cb[c], cr[c]));
    }
  };
  run(S::kBlock, vectorEnd < width ? vectorEnd : width);
  run(S::kTail, width);
}

// ---- Vector bodies (SSE2 + SSSE3) ------------------------------------------------------------
//
// Sixteen pixels of a row pair a turn (then one turn of eight): eight chroma columns are
// widened to 16-bit lanes and turned into the set's three chroma terms once, each term is
// doubled up for the two columns that share it, and both luma rows add their own luma term.
// Loads and stores touch exactly the bytes of the block's pixels.
#if KRO_SIMD
using color::Set16;

// The luma terms of pixels 0-7 (kHalf 0) or 8-15 (kHalf 1) of sixteen Y bytes.
template <const LaneSet& k, int kHalf>
inline __m128i LumaLanes(__m128i y) {
  if constexpr (k.luma == LumaIn::kOffset7) {
    // (Y - 16) * 64 in one multiply-add of the byte pairs (Y, 16) by (64, -64); its high
    // product with 2 kY is the high product of (Y - 16) << 7 with kY, the same 32-bit product.
    const __m128i pairs =
        kHalf ? _mm_unpackhi_epi8(y, _mm_set1_epi8(16)) : _mm_unpacklo_epi8(y, _mm_set1_epi8(16));
    const __m128i centred = _mm_maddubs_epi16(pairs, Set16(0xC040));  // bytes 64, -64
    return _mm_mulhi_epi16(centred, Set16(2 * k.kY));
  } else {
    const __m128i zero = _mm_setzero_si128();
    const __m128i w = kHalf ? _mm_unpackhi_epi8(y, zero) : _mm_unpacklo_epi8(y, zero);
    if constexpr (k.luma == LumaIn::kPlain7) {
      return _mm_mulhi_epi16(_mm_slli_epi16(w, 7), Set16(k.kY));
    } else if constexpr (k.luma == LumaIn::kTimes16) {
      return _mm_slli_epi16(w, 4);
    } else if constexpr (k.luma == LumaIn::kTimes2) {
      return _mm_add_epi16(w, w);
    } else {
      return w;
    }
  }
}

template <const LaneSet& k>
inline __m128i ChromaLanes(__m128i c) {
  if constexpr (k.chroma == ChromaIn::kCentred7) {
    return _mm_slli_epi16(_mm_sub_epi16(c, Set16(128)), 7);
  } else if constexpr (k.chroma == ChromaIn::kPlain7) {
    return _mm_slli_epi16(c, 7);
  } else {
    return _mm_sub_epi16(_mm_slli_epi16(c, 4), Set16(2048));
  }
}

struct Terms {
  __m128i r, g, b;
};

// Set T: (Y << 16 + weights * chroma) >> 16 is Y plus the floor of the chroma sum over 2^16,
// since Y << 16 adds whole units. The weights split at 2^16 so that every product fits 16 bits:
// 74711 v = 65536 v + 9175 v, 133169 u = 131072 u + 2097 u, -38076 v = -65536 v + 27460 v; the
// two products of G are summed in 32 bits before the shift, as the 32-bit form does.
inline Terms Yuv32Terms(__m128i cb, __m128i cr) {
  const __m128i u = _mm_sub_epi16(cb, Set16(128)), v = _mm_sub_epi16(cr, Set16(128));
  // Pairs (v, u) times (27460, -25821), summed in 32 bits.
  const __m128i gWeights = _mm_set1_epi32(
      static_cast<int32_t>((static_cast<uint32_t>(static_cast<uint16_t>(-25821)) << 16) | 27460u));
  const __m128i gLo = _mm_srai_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(v, u), gWeights), 16);
  const __m128i gHi = _mm_srai_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(v, u), gWeights), 16);
  return {_mm_add_epi16(v, _mm_mulhi_epi16(v, Set16(9175))),
          _mm_sub_epi16(_mm_packs_epi32(gLo, gHi), v),
          _mm_add_epi16(_mm_add_epi16(u, u), _mm_mulhi_epi16(u, Set16(2097)))};
}

template <const LaneSet& k>
inline Terms ChromaTerms(__m128i cb, __m128i cr) {
  if constexpr (k.chroma == ChromaIn::kYuv32) return Yuv32Terms(cb, cr);
  const __m128i u = ChromaLanes<k>(cb), v = ChromaLanes<k>(cr);
  const __m128i g =
      _mm_add_epi16(_mm_mulhi_epi16(u, Set16(k.kGu)), _mm_mulhi_epi16(v, Set16(k.kGv)));
  return {_mm_add_epi16(_mm_mulhi_epi16(v, Set16(k.kR)), Set16(k.cR)),
          k.gSubtracts ? _mm_sub_epi16(Set16(k.cG), g) : _mm_add_epi16(Set16(k.cG), g),
          _mm_add_epi16(_mm_mulhi_epi16(u, Set16(k.kB)), Set16(k.cB))};
}

// Sixteen outputs of one component: luma terms of pixels 0-7 and 8-15 plus their chroma terms,
// shifted, packed with the clamp to 0..255.
template <const LaneSet& k>
inline __m128i Component(__m128i yLo, __m128i yHi, __m128i tLo, __m128i tHi) {
  const auto shift = [](__m128i x) { return k.shift ? _mm_srai_epi16(x, k.shift) : x; };
  return _mm_packus_epi16(shift(_mm_add_epi16(yLo, tLo)), shift(_mm_add_epi16(yHi, tHi)));
}

inline __m128i Load4(const uint8_t* p) {
  int32_t v;
  std::memcpy(&v, p, 4);
  return _mm_cvtsi32_si128(v);
}

// Cb and Cr of the block's kPixels / 2 chroma columns from column i on, in 16-bit lanes.
template <Chroma kChroma, int kPixels>
inline void LoadChroma(const uint8_t* cb, const uint8_t* cr, int i, __m128i& u, __m128i& v) {
  if constexpr (kChroma == Chroma::kPlanes) {
    const __m128i zero = _mm_setzero_si128();
    const auto load = [](const uint8_t* p) {
      return kPixels == 16 ? _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)) : Load4(p);
    };
    u = _mm_unpacklo_epi8(load(cb + i), zero);
    v = _mm_unpacklo_epi8(load(cr + i), zero);
  } else {
    const uint8_t* p = (kChroma == Chroma::kCbCrPairs ? cb : cr) + 2 * i;
    const __m128i pairs = kPixels == 16 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(p))
                                        : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    const __m128i first = _mm_and_si128(pairs, Set16(0xFF)), second = _mm_srli_epi16(pairs, 8);
    u = kChroma == Chroma::kCbCrPairs ? first : second;
    v = kChroma == Chroma::kCbCrPairs ? second : first;
  }
}

// Byte shuffles that interleave sixteen 3-byte pixels from pairs of their first two components
// (a) and from their third components (b): output piece q takes pairs of pixels
// kPairFrom[q] on from its a-vector and third components of pixels 0..15 from b.
struct Interleave3 {
  alignas(16) int8_t a[3][16], b[3][16];
};
constexpr int kPairFrom[3] = {0, 5, 8};
constexpr Interleave3 MakeInterleave3() {
  Interleave3 m{};
  for (int q = 0; q < 3; ++q)
    for (int j = 0; j < 16; ++j) {
      const int px = (16 * q + j) / 3, c = (16 * q + j) % 3;
      m.a[q][j] = static_cast<int8_t>(c < 2 ? 2 * (px - kPairFrom[q]) + c : -128);
      m.b[q][j] = static_cast<int8_t>(c == 2 ? px : -128);
    }
  return m;
}
inline constexpr Interleave3 kInterleave3 = MakeInterleave3();

// Sixteen 3-byte pixels: the first two components are paired up (pixels 0-7 and 8-15, and by
// an alignment of the two, 5-12), then each 16-byte piece is one shuffle of pairs and one of
// third components.
inline void Store3x16(uint8_t* p, __m128i first, __m128i second, __m128i third) {
  const __m128i lo = _mm_unpacklo_epi8(first, second), hi = _mm_unpackhi_epi8(first, second);
  const __m128i pairs[3] = {lo, _mm_alignr_epi8(hi, lo, 10), hi};
  for (int q = 0; q < 3; ++q) {
    const __m128i piece = _mm_or_si128(_mm_shuffle_epi8(pairs[q], color::Mask(kInterleave3.a[q])),
                                       _mm_shuffle_epi8(third, color::Mask(kInterleave3.b[q])));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16 * q), piece);
  }
}

// kPixels packed pixels from component vectors; four-byte pixels take `alpha` as fourth byte.
template <int kBytes, bool kBgr, int kPixels>
inline void StorePixels(uint8_t* p, __m128i r, __m128i g, __m128i b, __m128i alpha) {
  const __m128i first = kBgr ? b : r, last = kBgr ? r : b;
  if constexpr (kBytes == 3 && kPixels == 16) {
    Store3x16(p, first, g, last);
  } else if constexpr (kBytes == 3) {
    color::StorePacked<kPixels>(p, {first, g, last});
  } else {
    const auto store = [&](int at, __m128i fg, __m128i la) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p + at), _mm_unpacklo_epi16(fg, la));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p + at + 16), _mm_unpackhi_epi16(fg, la));
    };
    store(0, _mm_unpacklo_epi8(first, g), _mm_unpacklo_epi8(last, alpha));
    if (kPixels == 16) store(32, _mm_unpackhi_epi8(first, g), _mm_unpackhi_epi8(last, alpha));
  }
}

// Columns x .. x + kPixels - 1 of both rows of a pair, into packed pixels or three planes.
template <const LaneSet& k, Chroma kChroma, class Out, int kPixels>
inline void BlockPair(const uint8_t* y0, const uint8_t* y1, const uint8_t* cb, const uint8_t* cr,
                      const typename Out::Row& o0, const typename Out::Row& o1, __m128i alpha,
                      int x) {
  __m128i u, v;
  LoadChroma<kChroma, kPixels>(cb, cr, x >> 1, u, v);
  const Terms t = ChromaTerms<k>(u, v);
  const Terms lo = {_mm_unpacklo_epi16(t.r, t.r), _mm_unpacklo_epi16(t.g, t.g),
                    _mm_unpacklo_epi16(t.b, t.b)};
  const Terms hi = {_mm_unpackhi_epi16(t.r, t.r), _mm_unpackhi_epi16(t.g, t.g),
                    _mm_unpackhi_epi16(t.b, t.b)};
  const auto row = [&](const uint8_t* yRow, const typename Out::Row& o) {
    const __m128i y = kPixels == 16 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(yRow + x))
                                    : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(yRow + x));
    const __m128i yLo = LumaLanes<k, 0>(y), yHi = LumaLanes<k, 1>(y);
    const __m128i r = Component<k>(yLo, yHi, lo.r, hi.r), g = Component<k>(yLo, yHi, lo.g, hi.g),
                  b = Component<k>(yLo, yHi, lo.b, hi.b);
    if constexpr (Out::kPacked) {
      StorePixels<Out::kBytes, Out::kBgr, kPixels>(o.p + Out::kBytes * x, r, g, b, alpha);
    } else {
      color::StorePlane<kPixels>(o.p[0] + x, r);
      color::StorePlane<kPixels>(o.p[1] + x, g);
      color::StorePlane<kPixels>(o.p[2] + x, b);
    }
  };
  row(y0, o0);
  row(y1, o1);
}

// The vector columns of a row pair below `end`: sixteens, then one eight. Returns the first
// column left to the scalar row.
template <class S, Chroma kChroma, class Out>
int RowPairVector(const uint8_t* y0, const uint8_t* y1, const uint8_t* cb, const uint8_t* cr,
                  const typename Out::Row& o0, const typename Out::Row& o1, int end) {
  constexpr const LaneSet& k = S::kLanes;
  __m128i alpha = _mm_setzero_si128();
  if constexpr (Out::kPacked) alpha = _mm_set1_epi8(static_cast<char>(o0.alpha));
  int x = 0;
  for (; x + 16 <= end; x += 16) BlockPair<k, kChroma, Out, 16>(y0, y1, cb, cr, o0, o1, alpha, x);
  if (x + 8 <= end) {
    BlockPair<k, kChroma, Out, 8>(y0, y1, cb, cr, o0, o1, alpha, x);
    x += 8;
  }
  return x;
}
#endif

// The image: row pairs over the even height, columns over the even width.
template <class S, Chroma kChroma, class Out>
void Convert420(const Source& s, const Out& out, KroSize roi) {
  const int width = roi.width & ~1, pairs = roi.height >> 1;
  const int vectorEnd = roi.width & S::kVectorMask;
  for (int j = 0; j < pairs; ++j) {
    const uint8_t* y0 = RowOf(s.y, s.yStep, 2 * j);
    const uint8_t* y1 = RowOf(s.y, s.yStep, 2 * j + 1);
    const uint8_t* cb = RowOf(s.cb, s.cbStep, j);
    const uint8_t* cr = RowOf(s.cr, s.crStep, j);
    const auto o0 = out.At(2 * j), o1 = out.At(2 * j + 1);
    int x = 0;
#if KRO_SIMD
    x = RowPairVector<S, kChroma, Out>(y0, y1, cb, cr, o0, o1,
                                       vectorEnd < width ? vectorEnd : width);
#endif
    RowPairScalar<S, kChroma>(y0, y1, cb, cr, o0, o1, x, width, vectorEnd);
  }
}

template <class S, Chroma kChroma = Chroma::kPlanes, class Out>
kroStatus Run(const Source& s, const Out& out, KroSize roi) {
  Convert420<S, kChroma>(s, out, roi);
  return ((roi.width | roi.height) & 1) ? kroStatusOddSize : kroStatusOk;
}

// A luma plane and one plane of interleaved chroma pairs; the pair order picks the set (YCbCr
// pairs run P1, YCrCb pairs P2).
template <Chroma kPairs, class Out>
kroStatus RunTwoPlane(const Kro8u* luma, int lumaStep, const Kro8u* chroma, int chromaStep,
                      const Out& out, KroSize roi) {
  using S = std::conditional_t<kPairs == Chroma::kCbCrPairs, SetP1, SetP2>;
  return Run<S, kPairs>(FromPairs<kPairs>(luma, lumaStep, chroma, chromaStep), out, roi);
}

using Rgb = PackedOut<3, false>;
using Bgr = PackedOut<3, true>;
using Rgba = PackedOut<4, false>;
using Bgra = PackedOut<4, true>;

}  // namespace
}  // namespace kro::yuv420

namespace kro::wrap {

using namespace kro::yuv420;

// ---- Planar sources -------------------------------------------------------------------------
// Pointers to the plane array and the destination, then the size, then the three planes.

kroStatus kroiYCbCr420ToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                     Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetV>(FromPlanes(srcPlanes, srcPlaneSteps), Rgb{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYCbCr420ToBGR_8u_P3C3R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                     Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetV>(FromPlanes(srcPlanes, srcPlaneSteps), Bgr{dst, dstRowStep, 0}, roi);
}

// The planar BGR C4 form computes the two-plane forms' set P1, on every column.
kroStatus kroiYCbCr420ToBGR_8u_P3C4R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                     Kro8u* dst, int dstRowStep, KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetP1>(FromPlanes(srcPlanes, srcPlaneSteps), Bgra{dst, dstRowStep, alphaValue}, roi);
}

// Cr in plane 1: the planes are exchanged and run through set Q as they are.
kroStatus kroiYCrCb420ToRGB_8u_P3C4R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                     Kro8u* dst, int dstRowStep, KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetQ>(FromPlanes<true>(srcPlanes, srcPlaneSteps), Rgba{dst, dstRowStep, alphaValue},
                   roi);
}

kroStatus kroiYCbCr420ToBGR_709CSC_8u_P3C3R(const Kro8u* const srcPlanes[3],
                                            const int srcPlaneSteps[3], Kro8u* dst, int dstRowStep,
                                            KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetC>(FromPlanes(srcPlanes, srcPlaneSteps), Bgr{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYCbCr420ToBGR_709HDTV_8u_P3C4R(const Kro8u* const srcPlanes[3],
                                             const int srcPlaneSteps[3], Kro8u* dst, int dstRowStep,
                                             KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetD>(FromPlanes(srcPlanes, srcPlaneSteps), Bgra{dst, dstRowStep, alphaValue}, roi);
}

// The fourth byte of every pixel written is 0.
kroStatus kroiYUV420ToRGB_8u_P3AC4R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                    Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetA>(FromPlanes(srcPlanes, srcPlaneSteps), Rgba{dst, dstRowStep, 0}, roi);
}

// The one form of this family that needs a whole 2x2 block.
kroStatus kroiYUV420ToBGR_8u_P3C3R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                   Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi, 2, 2));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetH1>(FromPlanes(srcPlanes, srcPlaneSteps), Bgr{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYUV420ToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                   Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  return Run<SetH2>(FromPlanes(srcPlanes, srcPlaneSteps), Rgb{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYUV420ToRGB_8u_P3C3(const Kro8u* const srcPlanes[3], Kro8u* dst, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  const int steps[3] = {roi.width, roi.width / 2, roi.width / 2};
  return Run<SetH2>(FromPlanes(srcPlanes, steps), Rgb{dst, 3 * roi.width, 0}, roi);
}

// Planar destination: the source planes, then the destination planes, after the size.
kroStatus kroiYUV420ToRGB_8u_P3R(const Kro8u* const srcPlanes[3], const int srcPlaneSteps[3],
                                 Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  return Run<SetT>(FromPlanes(srcPlanes, srcPlaneSteps), PlanarOut{dstPlanes, dstRowStep}, roi);
}

kroStatus kroiYUV420ToRGB_8u_P3(const Kro8u* const srcPlanes[3], Kro8u* const dstPlanes[3],
                                KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  const int steps[3] = {roi.width, roi.width / 2, roi.width / 2};
  return Run<SetT>(FromPlanes(srcPlanes, steps), PlanarOut{dstPlanes, roi.width}, roi);
}

// ---- Two-plane sources ----------------------------------------------------------------------
// All pointers, then the size; the YCrCb C4 forms test the size first. YCrCb pairs run set P2,
// whose numbers differ from the YCbCr forms' set P1, not only in the order of the pair.

kroStatus kroiYCbCr420ToRGB_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  KRO_CHECK(CheckSize(roi));
  return RunTwoPlane<Chroma::kCbCrPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Rgb{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYCbCr420ToBGR_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  KRO_CHECK(CheckSize(roi));
  return RunTwoPlane<Chroma::kCbCrPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Bgr{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYCbCr420ToRGB_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi,
                                     Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  KRO_CHECK(CheckSize(roi));
  return RunTwoPlane<Chroma::kCbCrPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Rgba{dst, dstRowStep, alphaValue}, roi);
}

kroStatus kroiYCbCr420ToBGR_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi,
                                     Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  KRO_CHECK(CheckSize(roi));
  return RunTwoPlane<Chroma::kCbCrPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Bgra{dst, dstRowStep, alphaValue}, roi);
}

kroStatus kroiYCrCb420ToRGB_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  KRO_CHECK(CheckSize(roi));
  return RunTwoPlane<Chroma::kCrCbPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Rgb{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYCrCb420ToBGR_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  KRO_CHECK(CheckSize(roi));
  return RunTwoPlane<Chroma::kCrCbPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Bgr{dst, dstRowStep, 0}, roi);
}

kroStatus kroiYCrCb420ToRGB_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi,
                                     Kro8u alphaValue) {
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  return RunTwoPlane<Chroma::kCrCbPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Rgba{dst, dstRowStep, alphaValue}, roi);
}

kroStatus kroiYCrCb420ToBGR_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep, const Kro8u* srcChroma,
                                     int srcChromaStep, Kro8u* dst, int dstRowStep, KroSize roi,
                                     Kro8u alphaValue) {
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckNull(srcLuma, srcChroma, dst));
  return RunTwoPlane<Chroma::kCrCbPairs>(srcLuma, srcLumaStep, srcChroma, srcChromaStep,
                                         Bgra{dst, dstRowStep, alphaValue}, roi);
}

}  // namespace kro::wrap
