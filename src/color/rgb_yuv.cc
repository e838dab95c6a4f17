// RGB <-> YUV at full resolution: the ten wrappers, their checks and row loops.
#include "color/rgb_yuv.h"

#include <cstddef>

#include "frame/checks.h"
#include "frame/entry.h"
#include "frame/simd.h"

namespace kro::yuv {
namespace {

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
template <class T, class P>
Samples<T> Planar(P planes, int step, int y) {
  return {{RowOf(planes[0], step, y), RowOf(planes[1], step, y), RowOf(planes[2], step, y)}, 1};
}

// Plain row loop over an image, source and destination given as per-row sample sets.
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
constexpr Gather kGather = MakeGather();
constexpr Gather kScatter = MakeScatter();

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

// The block formulas on eight 16-bit lanes per component (inputs 0..255, outputs before the
// final clamp, which the pack to bytes applies).
inline Lanes ForwardLanesA(__m128i r, __m128i g, __m128i b) {
  const __m128i y = _mm_srli_epi16(
      _mm_adds_epu16(_mm_adds_epu16(_mm_mulhi_epu16(Set16(19595), _mm_slli_epi16(r, 8)),
                                    _mm_mulhi_epu16(Set16(38469), _mm_slli_epi16(g, 8))),
                     _mm_mulhi_epu16(Set16(7471), _mm_slli_epi16(b, 8))),
      8);
  const __m128i r7 = _mm_slli_epi16(r, 7), g7 = _mm_slli_epi16(g, 7), b7 = _mm_slli_epi16(b, 7);
  const __m128i u = _mm_adds_epi16(_mm_adds_epi16(_mm_mulhi_epi16(Set16(-4816), r7),
                                                  _mm_mulhi_epi16(Set16(-9469), g7)),
                                   _mm_mulhi_epi16(Set16(14286), b7));
  const __m128i v = _mm_adds_epi16(_mm_adds_epi16(_mm_mulhi_epi16(Set16(20152), r7),
                                                  _mm_mulhi_epi16(Set16(-16875), g7)),
                                   _mm_mulhi_epi16(Set16(-3276), b7));
  return {y, _mm_adds_epi16(_mm_srai_epi16(u, 6), Set16(128)),
          _mm_adds_epi16(_mm_srai_epi16(v, 6), Set16(128))};
}
inline Lanes InverseLanesA(__m128i y, __m128i u, __m128i v) {
  const __m128i u8x = _mm_slli_epi16(_mm_subs_epi16(u, Set16(128)), 3);
  const __m128i v8x = _mm_slli_epi16(_mm_subs_epi16(v, Set16(128)), 3);
  return {_mm_adds_epi16(y, _mm_mulhi_epi16(v8x, Set16(9339))),
          _mm_adds_epi16(_mm_adds_epi16(y, _mm_mulhi_epi16(u8x, Set16(-3228))),
                         _mm_mulhi_epi16(v8x, Set16(-4760))),
          _mm_adds_epi16(y, _mm_mulhi_epi16(u8x, Set16(16646)))};
}
inline Lanes InverseLanesB(__m128i y, __m128i u, __m128i v) {
  const __m128i y2x = _mm_slli_epi16(y, 1);
  const __m128i u16x = _mm_slli_epi16(_mm_subs_epi16(u, Set16(128)), 4);
  const __m128i v16x = _mm_slli_epi16(_mm_subs_epi16(v, Set16(128)), 4);
  return {_mm_srai_epi16(_mm_adds_epi16(y2x, _mm_mulhi_epi16(v16x, Set16(9338))), 1),
          _mm_srai_epi16(_mm_adds_epi16(_mm_adds_epi16(y2x, _mm_mulhi_epi16(u16x, Set16(-3227))),
                                        _mm_mulhi_epi16(v16x, Set16(-4759))),
                         1),
          _mm_srai_epi16(_mm_adds_epi16(y2x, _mm_mulhi_epi16(u16x, Set16(16645))), 1)};
}

// Sixteen pixels of bytes through a lane formula: widen, compute both halves, pack with the
// clamp to 0..255.
template <LaneFn kFn>
inline Lanes ConvertBytes(const Lanes& in) {
  const __m128i zero = _mm_setzero_si128();
  const Lanes lo = kFn(_mm_unpacklo_epi8(in.c0, zero), _mm_unpacklo_epi8(in.c1, zero),
                       _mm_unpacklo_epi8(in.c2, zero));
  const Lanes hi = kFn(_mm_unpackhi_epi8(in.c0, zero), _mm_unpackhi_epi8(in.c1, zero),
                       _mm_unpackhi_epi8(in.c2, zero));
  return {_mm_packus_epi16(lo.c0, hi.c0), _mm_packus_epi16(lo.c1, hi.c1),
          _mm_packus_epi16(lo.c2, hi.c2)};
}

// Packed rows have stride 3 (component k at ptr[k] = row + k), planar rows stride 1.
template <int kPixels>
inline Lanes Load(const Samples<const uint8_t>& s, int x) {
  if (s.stride == 3) return LoadPacked<kPixels>(s.ptr[0] + 3 * x);
  return {LoadPlane<kPixels>(s.ptr[0] + x), LoadPlane<kPixels>(s.ptr[1] + x),
          LoadPlane<kPixels>(s.ptr[2] + x)};
}
template <int kPixels, int kOnly>
inline void Store(const Samples<uint8_t>& d, int x, const Lanes& v) {
  if (d.stride == 3) return StorePacked<kPixels>(d.ptr[0] + 3 * x, v);
  if (kOnly < 0 || kOnly == 0) StorePlane<kPixels>(d.ptr[0] + x, v.c0);
  if (kOnly < 0 || kOnly == 1) StorePlane<kPixels>(d.ptr[1] + x, v.c1);
  if (kOnly < 0 || kOnly == 2) StorePlane<kPixels>(d.ptr[2] + x, v.c2);
}

// The vector twin of ConvertRowScalar for packed-3 and planar rows: body in sixteens (and one
// eight when the block is 8 and eight body pixels remain), tail through the scalar formula.
template <int kBlock, LaneFn kLanes, PixelFn kTailFn, int kOnly = -1>
void ConvertRowVector(Samples<const uint8_t> s, Samples<uint8_t> d, int width) {
  const int body = width & ~(kBlock - 1);
  int x = 0;
  for (; x + 16 <= body; x += 16) Store<16, kOnly>(d, x, ConvertBytes<kLanes>(Load<16>(s, x)));
  if (x < body) Store<8, kOnly>(d, x, ConvertBytes<kLanes>(Load<8>(s, x)));
  Samples<const uint8_t> st = s;
  Samples<uint8_t> dt = d;
  for (int k = 0; k < 3; ++k) st.ptr[k] += body * s.stride, dt.ptr[k] += body * d.stride;
  ConvertRowScalar<0, kTailFn, kTailFn, kOnly>(st, dt, width - body);
}

#define KRO_YUV_ROW(block, lanes, blockFn, tailFn, ...) \
  ConvertRowVector<block, lanes, tailFn, ##__VA_ARGS__>
#else
#define KRO_YUV_ROW(block, lanes, blockFn, tailFn, ...) \
  ConvertRowScalar<block, blockFn, tailFn, ##__VA_ARGS__>
#endif

}  // namespace
}  // namespace kro::yuv

namespace kro::wrap {

using namespace kro::yuv;

kroStatus kroiRGBToYUV_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                              KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(
      roi.height, [&](int y) { return Packed(RowOf(src, srcRowStep, y), 3); },
      [&](int y) { return Packed(RowOf(dst, dstRowStep, y), 3); }, roi.width,
      KRO_YUV_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail1));
  return kroStatusOk;
}

kroStatus kroiRGBToYUV_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  EachRow(
      roi.height, [&](int y) { return Packed(RowOf(src, srcRowStep, y), 3); },
      [&](int y) { return Planar<uint8_t>(dstPlanes, dstRowStep, y); }, roi.width,
      KRO_YUV_ROW(8, ForwardLanesA, ForwardBlockA, ForwardTail1));
  return kroStatusOk;
}

// Three passes over each row, one per output plane (Y, then U, then V): a source plane that is
// also a destination plane is read after the earlier passes have written it.
kroStatus kroiRGBToYUV_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                              Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  for (int y = 0; y < roi.height; ++y) {
    const Samples<const uint8_t> s = Planar<const uint8_t>(srcPlanes, srcRowStep, y);
    const Samples<uint8_t> d = Planar<uint8_t>(dstPlanes, dstRowStep, y);
    KRO_YUV_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail3, 0)(s, d, roi.width);
    KRO_YUV_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail3, 1)(s, d, roi.width);
    KRO_YUV_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail3, 2)(s, d, roi.width);
  }
  return kroStatusOk;
}

// Every pixel through the rounded tail formula; the alpha bytes are neither read nor written.
kroStatus kroiRGBToYUV_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                               KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(
      roi.height, [&](int y) { return Packed(RowOf(src, srcRowStep, y), 4); },
      [&](int y) { return Packed(RowOf(dst, dstRowStep, y), 4); }, roi.width,
      ConvertRowScalar<0, ForwardTail2, ForwardTail2>);
  return kroStatusOk;
}

// Blocks of 8 through the doubled-luma formula, the tail rounded; alpha goes unchanged into the
// fourth plane (which, unlike the other three, is not tested for null).
kroStatus kroiRGBToYUV_8u_AC4P4R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[4],
                                 int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* s = RowOf(src, srcRowStep, y);
    ConvertRowScalar<8, ForwardBlockB, ForwardTail2>(
        Packed(s, 4), Planar<uint8_t>(dstPlanes, dstRowStep, y), roi.width);
    uint8_t* alpha = RowOf(dstPlanes[3], dstRowStep, y);
    for (int x = 0; x < roi.width; ++x) alpha[x] = s[4 * x + 3];
  }
  return kroStatusOk;
}

kroStatus kroiYUVToRGB_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                              KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(
      roi.height, [&](int y) { return Packed(RowOf(src, srcRowStep, y), 3); },
      [&](int y) { return Packed(RowOf(dst, dstRowStep, y), 3); }, roi.width,
      KRO_YUV_ROW(8, InverseLanesA, InverseBlockA, InverseTail1));
  return kroStatusOk;
}

kroStatus kroiYUVToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  EachRow(
      roi.height, [&](int y) { return Planar<const uint8_t>(srcPlanes, srcRowStep, y); },
      [&](int y) { return Packed(RowOf(dst, dstRowStep, y), 3); }, roi.width,
      KRO_YUV_ROW(16, InverseLanesB, InverseBlockB, InverseTail2));
  return kroStatusOk;
}

// Every pixel through the tail formula of the planar-to-packed kernel. The destination planes
// are tested before the source planes.
kroStatus kroiYUVToRGB_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                              Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  EachRow(
      roi.height, [&](int y) { return Planar<const uint8_t>(srcPlanes, srcRowStep, y); },
      [&](int y) { return Planar<uint8_t>(dstPlanes, dstRowStep, y); }, roi.width,
      ConvertRowScalar<0, InverseTail2, InverseTail2>);
  return kroStatusOk;
}

kroStatus kroiYUVToRGB_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                               KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(
      roi.height, [&](int y) { return Packed(RowOf(src, srcRowStep, y), 4); },
      [&](int y) { return Packed(RowOf(dst, dstRowStep, y), 4); }, roi.width,
      ConvertRowScalar<0, InverseTail1, InverseTail1>);
  return kroStatusOk;
}

// Blocks of 8 (16 on rows whose source and destination are 16-byte aligned; the arithmetic is
// the same, so the tail always starts at width & ~7), the fourth byte set to alphaValue.
kroStatus kroiYUVToRGB_8u_C3C4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  for (int y = 0; y < roi.height; ++y) {
    uint8_t* d = RowOf(dst, dstRowStep, y);
    ConvertRowScalar<8, InverseBlockC, InverseTail3>(Packed(RowOf(src, srcRowStep, y), 3),
                                                     Packed(d, 4), roi.width);
    for (int x = 0; x < roi.width; ++x) d[4 * x + 3] = alphaValue;
  }
  return kroStatusOk;
}

}  // namespace kro::wrap
