// Row machinery shared by the full-resolution matrix families (RGB with YUV, YCbCr, ...).
//
// A pixel formula maps three 8-bit components to three; a row kernel applies a block formula
// to the first width & ~(block - 1) pixels and a tail formula to the rest. The scalar row is the
// portable path and the reference; the vector row (SSE2 + SSSE3) runs a lane formula that
// computes the same values as the block formula, sixteen pixels a turn, loading and storing
// exactly the bytes of its pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/simd.h"

namespace kro::color {

struct Px {
  uint8_t c0, c1, c2;
};

using PixelFn = Px (*)(int, int, int);

// Where a row's three components live: component c of pixel x is at ptr[c][x * stride]. A
// destination of 4-byte pixels with alpha >= 0 has its fourth byte (after the three components,
// at the pixel's highest address) set to that value; with alpha < 0 the fourth byte is never
// written.
template <class T>
struct Samples {
  T* ptr[3];
  int stride;
  int alpha = -1;
};

// One row: the first width & ~(block - 1) pixels through the block formula, the rest through
// the tail formula. kOnly >= 0 stores just that component (the planar forward kernel's passes).
// With block 0 every pixel takes the tail formula.
template <int kBlock, PixelFn kBlockFn, PixelFn kTailFn, int kOnly = -1>
void ConvertRowScalar(Samples<const uint8_t> s, Samples<uint8_t> d, int width) {
  const int body = kBlock ? (width & ~(kBlock - 1)) : 0;
  for (int x = 0; x < width; ++x) {
    const int si = x * s.stride, di = x * d.stride;
    const int a = s.ptr[0][si], b = s.ptr[1][si], c = s.ptr[2][si];
    const Px p = x < body ? kBlockFn(a, b, c) : kTailFn(a, b, c);
    if (kOnly < 0 || kOnly == 0) d.ptr[0][di] = p.c0;
    if (kOnly < 0 || kOnly == 1) d.ptr[1][di] = p.c1;
    if (kOnly < 0 || kOnly == 2) d.ptr[2][di] = p.c2;
    if (d.alpha >= 0)
      (d.ptr[0] < d.ptr[2] ? d.ptr[0] : d.ptr[2])[di + 3] = static_cast<uint8_t>(d.alpha);
  }
}



using RowFn = void (*)(Samples<const uint8_t>, Samples<uint8_t>, int);

inline const uint8_t* RowOf(const uint8_t* p, int step, int y) {
  return p + static_cast<std::ptrdiff_t>(y) * step;
}
inline uint8_t* RowOf(uint8_t* p, int step, int y) {
  return p + static_cast<std::ptrdiff_t>(y) * step;
}

// Interleaved rows: component c at byte c of each pixel of `bytes` bytes.
template <class T>
Samples<T> Packed(T* row, int bytes) {
  return {{row, row + 1, row + 2}, bytes};
}
// BGR rows: packed rows whose components run backwards.
template <class T>
Samples<T> PackedBgr(T* row, int bytes) {
  return {{row + 2, row + 1, row}, bytes};
}
// Packed 4-byte rows whose fourth byte is set to `alpha`, components forwards or backwards.
template <class T>
Samples<T> PackedAlpha(T* row, uint8_t alpha) {
  return {{row, row + 1, row + 2}, 4, alpha};
}
template <class T>
Samples<T> PackedBgrAlpha(T* row, uint8_t alpha) {
  return {{row + 2, row + 1, row}, 4, alpha};
}
template <class T, class P>
Samples<T> Planar(P planes, int step, int y) {
  return {{RowOf(planes[0], step, y), RowOf(planes[1], step, y), RowOf(planes[2], step, y)}, 1};
}

// Plain row loop over an image, source and destination given as per-row sample sets.
// Row addressing for EachRow: the row y of a packed image (`bytes` bytes a pixel, BGR rows
// backwards) or of a set of planes sharing one step.
template <class T>
auto PackedRows(T* image, int step, int bytes) {
  return [=](int y) { return Packed(RowOf(image, step, y), bytes); };
}
template <class T>
auto PackedBgrRows(T* image, int step, int bytes) {
  return [=](int y) { return PackedBgr(RowOf(image, step, y), bytes); };
}
template <bool kBgr, class T>
auto PackedAlphaRows(T* image, int step, uint8_t alpha) {
  return [=](int y) {
    return kBgr ? PackedBgrAlpha(RowOf(image, step, y), alpha)
                : PackedAlpha(RowOf(image, step, y), alpha);
  };
}
template <class T, class P>
auto PlaneRows(P planes, int step) {
  return [=](int y) { return Planar<T>(planes, step, y); };
}

template <class SrcAt, class DstAt>
void EachRow(int height, SrcAt srcAt, DstAt dstAt, int width, RowFn row) {
  for (int y = 0; y < height; ++y) row(srcAt(y), dstAt(y), width);
}


#if KRO_SIMD
// ---- Vector bodies (SSE2 + SSSE3) ------------------------------------------------------------
//
// A block formula runs on eight pixels per 16-bit lane set; rows move sixteen pixels a turn
// (then eight where a block of eight remains), loading and storing exactly the bytes of their
// pixels: 48 (or 24) for packed RGB, 16 (or 8) per plane.

struct Lanes {
  __m128i c0, c1, c2;
};
using LaneFn = Lanes (*)(__m128i, __m128i, __m128i);

// Byte shuffle masks that gather component k of 16 packed 3-byte pixels from three 16-byte
// pieces (piece p supplies the source bytes 16p..16p+15), and the inverse that scatters three
// component vectors into output piece p.
struct Gather {
  alignas(16) int8_t m[3][3][16];  // [component][piece][lane]
};
constexpr Gather MakeGather() {
  Gather g{};
  for (int k = 0; k < 3; ++k)
    for (int p = 0; p < 3; ++p)
      for (int i = 0; i < 16; ++i) {
        const int src = 3 * i + k;
        g.m[k][p][i] = static_cast<int8_t>(src / 16 == p ? src % 16 : -128);
      }
  return g;
}
constexpr Gather MakeScatter() {
  Gather g{};
  for (int k = 0; k < 3; ++k)
    for (int p = 0; p < 3; ++p)
      for (int j = 0; j < 16; ++j) {
        const int out = 16 * p + j;  // output byte; pixel out / 3, component out % 3
        g.m[k][p][j] = static_cast<int8_t>(out % 3 == k ? out / 3 : -128);
      }
  return g;
}
inline constexpr Gather kGather = MakeGather();
inline constexpr Gather kScatter = MakeScatter();

inline __m128i Mask(const int8_t* m) { return _mm_load_si128(reinterpret_cast<const __m128i*>(m)); }

// Sixteen packed pixels (or eight: the upper eight lanes then hold zeros from the missing
// third piece and must not be stored).
template <int kPixels>
inline Lanes LoadPacked(const uint8_t* p) {
  __m128i piece[3];
  if (kPixels == 16) {
    for (int i = 0; i < 3; ++i) piece[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * i));
  } else {
    piece[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    piece[1] = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 16));
    piece[2] = _mm_setzero_si128();
  }
  __m128i c[3];
  for (int k = 0; k < 3; ++k) {
    c[k] = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(piece[0], Mask(kGather.m[k][0])),
                                     _mm_shuffle_epi8(piece[1], Mask(kGather.m[k][1]))),
                        _mm_shuffle_epi8(piece[2], Mask(kGather.m[k][2])));
  }
  return {c[0], c[1], c[2]};
}
template <int kPixels>
inline void StorePacked(uint8_t* p, const Lanes& v) {
  __m128i piece[3];
  for (int q = 0; q < 3; ++q) {
    piece[q] = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(v.c0, Mask(kScatter.m[0][q])),
                                         _mm_shuffle_epi8(v.c1, Mask(kScatter.m[1][q]))),
                            _mm_shuffle_epi8(v.c2, Mask(kScatter.m[2][q])));
  }
  if (kPixels == 16) {
    for (int q = 0; q < 3; ++q) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16 * q), piece[q]);
  } else {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), piece[0]);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 16), piece[1]);
  }
}
// Sixteen (or eight) 4-byte pixels: the first three bytes of each as components; the fourth
// byte is loaded with its pixel but takes no part.
template <int kPixels>
inline Lanes LoadPacked4(const uint8_t* p) {
  // Each piece of four pixels to [c0 x4, c1 x4, c2 x4, fourth bytes x4], then 32- and 64-bit
  // unpacks gather the pieces.
  const __m128i group = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  const __m128i* s = reinterpret_cast<const __m128i*>(p);
  const __m128i q0 = _mm_shuffle_epi8(_mm_loadu_si128(s), group);
  const __m128i q1 = _mm_shuffle_epi8(_mm_loadu_si128(s + 1), group);
  const __m128i t0 = _mm_unpacklo_epi32(q0, q1), t1 = _mm_unpackhi_epi32(q0, q1);
  if (kPixels == 8) return {t0, _mm_unpackhi_epi64(t0, t0), t1};
  const __m128i q2 = _mm_shuffle_epi8(_mm_loadu_si128(s + 2), group);
  const __m128i q3 = _mm_shuffle_epi8(_mm_loadu_si128(s + 3), group);
  const __m128i t2 = _mm_unpacklo_epi32(q2, q3), t3 = _mm_unpackhi_epi32(q2, q3);
  return {_mm_unpacklo_epi64(t0, t2), _mm_unpackhi_epi64(t0, t2), _mm_unpacklo_epi64(t1, t3)};
}
// Stores sixteen (or eight) 4-byte pixels: the three components, then `alpha` in every fourth
// byte.
template <int kPixels>
inline void StorePacked4(uint8_t* p, const Lanes& v, int alpha) {
  const __m128i a = _mm_set1_epi8(static_cast<char>(alpha));
  __m128i* d = reinterpret_cast<__m128i*>(p);
  const __m128i c01 = _mm_unpacklo_epi8(v.c0, v.c1), c2a = _mm_unpacklo_epi8(v.c2, a);
  _mm_storeu_si128(d, _mm_unpacklo_epi16(c01, c2a));
  _mm_storeu_si128(d + 1, _mm_unpackhi_epi16(c01, c2a));
  if (kPixels == 16) {
    const __m128i h01 = _mm_unpackhi_epi8(v.c0, v.c1), h2a = _mm_unpackhi_epi8(v.c2, a);
    _mm_storeu_si128(d + 2, _mm_unpacklo_epi16(h01, h2a));
    _mm_storeu_si128(d + 3, _mm_unpackhi_epi16(h01, h2a));
  }
}
// Stores the three components of sixteen (or eight) 4-byte pixels and leaves every fourth byte
// as it was: the pixels are put together in registers, and each goes out as its first three
// bytes only.
template <int kPixels>
inline void StorePacked4KeepFourth(uint8_t* p, const Lanes& v) {
  alignas(16) uint8_t pixels[64];
  StorePacked4<kPixels>(pixels, v, 0);
  for (int i = 0; i < kPixels; ++i) {
    std::memcpy(p + 4 * i, pixels + 4 * i, 2);
    p[4 * i + 2] = pixels[4 * i + 2];
  }
}

// floor((ka a + kb b + kc c + k) / 65536) for signed 16-bit lanes a, b, c and 16-bit weights:
// the products are summed in 32 bits (pmaddwd pairs), as a 32-bit formula does, and the
// result must fit 16 bits again.
inline __m128i Dot3Floor16(__m128i a, __m128i b, __m128i c, int ka, int kb, int kc, int32_t k) {
  const __m128i wab = _mm_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(kb) << 16) |
                                                          (static_cast<uint32_t>(ka) & 0xFFFF)));
  const __m128i wc = _mm_set1_epi32(kc & 0xFFFF), bias = _mm_set1_epi32(k);
  const __m128i zero = _mm_setzero_si128();
  auto half = [&](__m128i ab, __m128i c0) {
    return _mm_srai_epi32(
        _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(ab, wab), _mm_madd_epi16(c0, wc)), bias), 16);
  };
  return _mm_packs_epi32(half(_mm_unpacklo_epi16(a, b), _mm_unpacklo_epi16(c, zero)),
                         half(_mm_unpackhi_epi16(a, b), _mm_unpackhi_epi16(c, zero)));
}

template <int kPixels>
inline __m128i LoadPlane(const uint8_t* p) {
  return kPixels == 16 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(p))
                       : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
template <int kPixels>
inline void StorePlane(uint8_t* p, __m128i v) {
  if (kPixels == 16) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
  } else {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
  }
}

inline __m128i Set16(int v) { return _mm_set1_epi16(static_cast<int16_t>(v)); }

// Packed rows have stride 3 or 4 (component k at ptr[k] = row + k, or row + 2 - k for rows
// stored backwards such as BGR), planar rows stride 1.
template <int kPixels>
inline Lanes Load(const Samples<const uint8_t>& s, int x) {
  if (s.stride == 3 || s.stride == 4) {
    const bool backwards = s.ptr[2] < s.ptr[0];
    const uint8_t* row = backwards ? s.ptr[2] : s.ptr[0];
    const Lanes v =
        s.stride == 3 ? LoadPacked<kPixels>(row + 3 * x) : LoadPacked4<kPixels>(row + 4 * x);
    return backwards ? Lanes{v.c2, v.c1, v.c0} : v;
  }
  return {LoadPlane<kPixels>(s.ptr[0] + x), LoadPlane<kPixels>(s.ptr[1] + x),
          LoadPlane<kPixels>(s.ptr[2] + x)};
}
// 4-byte destinations get alpha in their fourth byte, or keep the byte that was there.
template <int kPixels, int kOnly>
inline void Store(const Samples<uint8_t>& d, int x, const Lanes& v) {
  if (d.stride == 3 || d.stride == 4) {
    const bool backwards = d.ptr[2] < d.ptr[0];
    uint8_t* row = backwards ? d.ptr[2] : d.ptr[0];
    const Lanes w = backwards ? Lanes{v.c2, v.c1, v.c0} : v;
    if (d.stride == 3) return StorePacked<kPixels>(row + 3 * x, w);
    if (d.alpha >= 0) return StorePacked4<kPixels>(row + 4 * x, w, d.alpha);
    return StorePacked4KeepFourth<kPixels>(row + 4 * x, w);
  }
  if (kOnly < 0 || kOnly == 0) StorePlane<kPixels>(d.ptr[0] + x, v.c0);
  if (kOnly < 0 || kOnly == 1) StorePlane<kPixels>(d.ptr[1] + x, v.c1);
  if (kOnly < 0 || kOnly == 2) StorePlane<kPixels>(d.ptr[2] + x, v.c2);
}

// ---- Packed 3-byte pixels straight to and from 16-bit lanes --------------------------------
//
// The block formulas work on 16-bit lanes, so a packed row's bytes are shuffled directly into
// the lanes of pixels 0..7 (from pieces 0 and 1) and 8..15 (pieces 1 and 2), each byte in the
// low half of its lane or, for formulas that start from x * 256, in the high half. On the way
// out, the saturating packs pair the components as (c0, c1) and (c2, c0') of pixels 0..7 and
// 8..15 and (c1', c2') of 8..15, so that output piece 0 draws on two registers, piece 1 on
// three and piece 2 on two.

struct Halves {
  Lanes lo, hi;  // pixels 0..7 and 8..15
};

struct WordGather {
  alignas(16) int8_t m[3][2][2][16];  // [component][half][first or second piece][byte]
};
constexpr WordGather MakeWordGather(bool times256) {
  WordGather g{};
  for (int k = 0; k < 3; ++k)
    for (int h = 0; h < 2; ++h)
      for (int w = 0; w < 2; ++w)
        for (int i = 0; i < 8; ++i) {
          const int src = 3 * (8 * h + i) + k, piece = h + w;
          const int8_t value = static_cast<int8_t>(src / 16 == piece ? src % 16 : -128);
          g.m[k][h][w][2 * i + (times256 ? 1 : 0)] = value;
          g.m[k][h][w][2 * i + (times256 ? 0 : 1)] = -128;
        }
  return g;
}
template <bool kTimes256>
inline constexpr WordGather kWordGather = MakeWordGather(kTimes256);

struct PairScatter {
  alignas(16) int8_t m[3][3][16];  // [output piece][register (c0,c1) (c2,c0') (c1',c2')][byte]
};
constexpr PairScatter MakePairScatter() {
  PairScatter g{};
  for (int q = 0; q < 3; ++q)
    for (int r = 0; r < 3; ++r)
      for (int j = 0; j < 16; ++j) {
        const int out = 16 * q + j, n = out / 3, k = out % 3;
        int reg = 0, index = 0;
        if (k == 0) reg = n < 8 ? 0 : 1, index = n < 8 ? n : n;
        if (k == 1) reg = n < 8 ? 0 : 2, index = n < 8 ? 8 + n : n - 8;
        if (k == 2) reg = n < 8 ? 1 : 2, index = n < 8 ? n : n;
        g.m[q][r][j] = static_cast<int8_t>(reg == r ? index : -128);
      }
  return g;
}
inline constexpr PairScatter kPairScatter = MakePairScatter();
constexpr bool Unused(const int8_t (&m)[16]) {
  for (int8_t v : m)
    if (v != -128) return false;
  return true;
}
static_assert(Unused(kPairScatter.m[0][2]) && Unused(kPairScatter.m[2][0]),
              "piece 0 takes nothing from (c1', c2'), piece 2 nothing from (c0, c1)");

template <int kPixels, bool kTimes256>
inline Halves LoadPacked3Words(const uint8_t* p) {
  const auto& g = kWordGather<kTimes256>;
  __m128i piece[3];
  piece[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  if (kPixels == 16) {
    piece[1] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
    piece[2] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32));
  } else {
    piece[1] = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 16));
    piece[2] = _mm_setzero_si128();
  }
  auto words = [&](int k, int h) {
    return _mm_or_si128(_mm_shuffle_epi8(piece[h], Mask(g.m[k][h][0])),
                        _mm_shuffle_epi8(piece[h + 1], Mask(g.m[k][h][1])));
  };
  const Lanes lo = {words(0, 0), words(1, 0), words(2, 0)};
  if (kPixels == 8) return {lo, lo};
  return {lo, {words(0, 1), words(1, 1), words(2, 1)}};
}

template <int kPixels>
inline void StorePacked3Words(uint8_t* p, const Halves& v) {
  const auto& g = kPairScatter;
  const __m128i a = _mm_packus_epi16(v.lo.c0, v.lo.c1), b = _mm_packus_epi16(v.lo.c2, v.hi.c0);
  __m128i* d = reinterpret_cast<__m128i*>(p);
  _mm_storeu_si128(
      d, _mm_or_si128(_mm_shuffle_epi8(a, Mask(g.m[0][0])), _mm_shuffle_epi8(b, Mask(g.m[0][1]))));
  const __m128i piece1 =
      _mm_or_si128(_mm_shuffle_epi8(a, Mask(g.m[1][0])), _mm_shuffle_epi8(b, Mask(g.m[1][1])));
  if (kPixels == 8) return _mm_storel_epi64(d + 1, piece1);  // pixels 5..7 only
  const __m128i c = _mm_packus_epi16(v.hi.c1, v.hi.c2);
  _mm_storeu_si128(d + 1, _mm_or_si128(piece1, _mm_shuffle_epi8(c, Mask(g.m[1][2]))));
  _mm_storeu_si128(d + 2, _mm_or_si128(_mm_shuffle_epi8(b, Mask(g.m[2][1])),
                                       _mm_shuffle_epi8(c, Mask(g.m[2][2]))));
}

inline Lanes Swap02(const Lanes& v) { return {v.c2, v.c1, v.c0}; }

// A block's pixels as 16-bit lanes (x * 256 with kTimes256), from any row layout.
template <int kPixels, bool kTimes256>
inline Halves LoadWords(const Samples<const uint8_t>& s, int x) {
  if (s.stride == 3) {
    const bool backwards = s.ptr[2] < s.ptr[0];
    const Halves h =
        LoadPacked3Words<kPixels, kTimes256>((backwards ? s.ptr[2] : s.ptr[0]) + 3 * x);
    return backwards ? Halves{Swap02(h.lo), Swap02(h.hi)} : h;
  }
  const Lanes in = Load<kPixels>(s, x);
  const __m128i zero = _mm_setzero_si128();
  auto lo8 = [&](__m128i v) {
    return kTimes256 ? _mm_unpacklo_epi8(zero, v) : _mm_unpacklo_epi8(v, zero);
  };
  auto hi8 = [&](__m128i v) {
    return kTimes256 ? _mm_unpackhi_epi8(zero, v) : _mm_unpackhi_epi8(v, zero);
  };
  const Lanes lo = {lo8(in.c0), lo8(in.c1), lo8(in.c2)};
  if (kPixels == 8) return {lo, lo};
  return {lo, {hi8(in.c0), hi8(in.c1), hi8(in.c2)}};
}

// Stores a block's 16-bit results, clamped to bytes by the packs, into any row layout.
template <int kPixels, int kOnly>
inline void StoreWords(const Samples<uint8_t>& d, int x, const Halves& v) {
  if (d.stride == 3) {
    const bool backwards = d.ptr[2] < d.ptr[0];
    uint8_t* row = backwards ? d.ptr[2] : d.ptr[0];
    return StorePacked3Words<kPixels>(row + 3 * x,
                                      backwards ? Halves{Swap02(v.lo), Swap02(v.hi)} : v);
  }
  Store<kPixels, kOnly>(d, x,
                        {_mm_packus_epi16(v.lo.c0, v.hi.c0), _mm_packus_epi16(v.lo.c1, v.hi.c1),
                         _mm_packus_epi16(v.lo.c2, v.hi.c2)});
}

// One block of 16 or 8 pixels through a lane formula.
template <int kPixels, LaneFn kFn, bool kTimes256, int kOnly>
inline void ConvertBlock(const Samples<const uint8_t>& s, const Samples<uint8_t>& d, int x) {
  const Halves in = LoadWords<kPixels, kTimes256>(s, x);
  const Lanes lo = kFn(in.lo.c0, in.lo.c1, in.lo.c2);
  const Lanes hi = kPixels == 16 ? kFn(in.hi.c0, in.hi.c1, in.hi.c2) : lo;
  StoreWords<kPixels, kOnly>(d, x, {lo, hi});
}

// The vector twin of ConvertRowScalar for packed-3 and planar rows: body in sixteens, then one
// eight if eight body pixels remain, the rest of the body (blocks of four) and the tail through
// the scalar formulas. x stays a multiple of the block, so the scalar row's own body mask
// (width - x) & ~(block - 1) ends where the image's body ends.
template <int kBlock, LaneFn kLanes, PixelFn kBlockFn, PixelFn kTailFn, int kOnly = -1,
          bool kTimes256 = false>
void ConvertRowVector(Samples<const uint8_t> s, Samples<uint8_t> d, int width) {
  const int body = width & ~(kBlock - 1);
  int x = 0;
  for (; x + 16 <= body; x += 16) ConvertBlock<16, kLanes, kTimes256, kOnly>(s, d, x);
  if (x + 8 <= body) {
    ConvertBlock<8, kLanes, kTimes256, kOnly>(s, d, x);
    x += 8;
  }
  // Blocks smaller than eight (four-pixel blocks) take the block formula one pixel at a time,
  // then the tail formula runs from the end of the body.
  Samples<const uint8_t> st = s;
  Samples<uint8_t> dt = d;
  for (int k = 0; k < 3; ++k) st.ptr[k] += x * s.stride, dt.ptr[k] += x * d.stride;
  ConvertRowScalar<kBlock, kBlockFn, kTailFn, kOnly>(st, dt, width - x);
}

// The row kernel of a build: the vector row where there is one, else the scalar row.
#define KRO_MATRIX_ROW(block, lanes, blockFn, tailFn, ...) \
  ConvertRowVector<block, lanes, blockFn, tailFn, ##__VA_ARGS__>
#else
// The scalar row, with the vector row's template arguments (the last ones only shape the
// vector body).
template <int kBlock, PixelFn kBlockFn, PixelFn kTailFn, int kOnly = -1, bool = false>
inline constexpr auto kScalarRow = ConvertRowScalar<kBlock, kBlockFn, kTailFn, kOnly>;
#define KRO_MATRIX_ROW(block, lanes, blockFn, tailFn, ...) \
  kScalarRow<block, blockFn, tailFn, ##__VA_ARGS__>
#endif


}  // namespace kro::color
