// RGB <-> YUV at full resolution: the ten wrappers, their checks and row loops.
#include "color/rgb_yuv.h"

#include <cstddef>

#include "color/matrix_rows.h"
#include "frame/checks.h"
#include "frame/entry.h"

namespace kro::yuv {
namespace {

using namespace kro::color;

#if KRO_SIMD
// The block formulas on eight 16-bit lanes per component (inputs 0..255, outputs before the
// final clamp, which the pack to bytes applies).
// Inputs arrive as R * 256, G * 256, B * 256 (see LoadWords); the chroma lanes take them
// at * 128.
inline Lanes ForwardLanesA(__m128i r8, __m128i g8, __m128i b8) {
  const __m128i y = _mm_srli_epi16(
      _mm_adds_epu16(_mm_adds_epu16(_mm_mulhi_epu16(Set16(19595), r8),
                                    _mm_mulhi_epu16(Set16(38469), g8)),
                     _mm_mulhi_epu16(Set16(7471), b8)),
      8);
  const __m128i r7 = _mm_srli_epi16(r8, 1), g7 = _mm_srli_epi16(g8, 1), b7 = _mm_srli_epi16(b8, 1);
  const __m128i u = _mm_adds_epi16(
      _mm_adds_epi16(_mm_mulhi_epi16(Set16(-4816), r7), _mm_mulhi_epi16(Set16(-9469), g7)),
      _mm_mulhi_epi16(Set16(14286), b7));
  const __m128i v = _mm_adds_epi16(
      _mm_adds_epi16(_mm_mulhi_epi16(Set16(20152), r7), _mm_mulhi_epi16(Set16(-16875), g7)),
      _mm_mulhi_epi16(Set16(-3276), b7));
  return {y, _mm_adds_epi16(_mm_srai_epi16(u, 6), Set16(128)),
          _mm_adds_epi16(_mm_srai_epi16(v, 6), Set16(128))};
}

// Y-T2 in 16-bit lanes, exact. With S = 19595 R + 38470 G + 7471 B, the green weight is split
// as 65536 - 27066, so (S + 32768) >> 16 is G plus the floor of the remainder sum, and
// ((B << 16) - S + 32768) >> 16 is B - G plus the floor of the negated remainder sum (the same
// for R). The chroma products then take the high half of D * 32244 and of D * 57475, the latter
// as D plus the high half of D * (57475 - 65536).
inline Lanes ForwardLanesTail2(__m128i r, __m128i g, __m128i b) {
  const __m128i y = _mm_add_epi16(g, Dot3Floor16(r, g, b, 19595, -27066, 7471, 32768));
  const __m128i rest = Dot3Floor16(r, g, b, -19595, 27066, -7471, 32768);
  const __m128i d = _mm_add_epi16(_mm_sub_epi16(b, g), rest);
  const __m128i e = _mm_add_epi16(_mm_sub_epi16(r, g), rest);
  return {y, _mm_add_epi16(_mm_mulhi_epi16(d, Set16(32244)), Set16(128)),
          _mm_add_epi16(_mm_add_epi16(e, _mm_mulhi_epi16(e, Set16(57475 - 65536))), Set16(128))};
}

// R-T1 in 16-bit lanes, exact: 74711 = 65536 + 9175, -38076 = -65536 + 27460 and
// 133169 = 2 * 65536 + 2097; the rounding term rides in the 32-bit sums of R and B only.
inline Lanes InverseLanesTail1(__m128i y, __m128i u, __m128i v) {
  const __m128i uu = _mm_sub_epi16(u, Set16(128)), vv = _mm_sub_epi16(v, Set16(128));
  const __m128i zero = _mm_setzero_si128();
  return {_mm_add_epi16(_mm_add_epi16(y, vv), Dot3Floor16(vv, zero, zero, 9175, 0, 0, 32768)),
          _mm_add_epi16(_mm_sub_epi16(y, vv), Dot3Floor16(uu, vv, zero, -25821, 27460, 0, 0)),
          _mm_add_epi16(_mm_add_epi16(y, _mm_add_epi16(uu, uu)),
                        Dot3Floor16(uu, zero, zero, 2097, 0, 0, 32768))};
}

// Y-B: luma at twice the scale from R, G, B times 4 (products added R, B, G, then 1), chroma
// from the wrapping differences 2 B - Y2 and 2 R - Y2.
inline Lanes ForwardLanesB(__m128i r, __m128i g, __m128i b) {
  const __m128i y2 = _mm_adds_epi16(
      _mm_adds_epi16(_mm_adds_epi16(_mm_mulhi_epi16(Set16(9798), _mm_slli_epi16(r, 2)),
                                    _mm_mulhi_epi16(Set16(3736), _mm_slli_epi16(b, 2))),
                     _mm_mulhi_epi16(Set16(19235), _mm_slli_epi16(g, 2))),
      Set16(1));
  const __m128i u = _mm_mulhi_epi16(Set16(16121), _mm_sub_epi16(_mm_add_epi16(b, b), y2));
  const __m128i v = _mm_mulhi_epi16(Set16(28737), _mm_sub_epi16(_mm_add_epi16(r, r), y2));
  return {_mm_srai_epi16(y2, 1), _mm_adds_epi16(u, Set16(128)), _mm_adds_epi16(v, Set16(128))};
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
// R-T2 in 16-bit lanes, exact: with y = Y << 16, (y + 74710 v) >> 16 is Y + v + the high half
// of 9174 v (74710 = 65536 + 9174), B likewise with 133168 = 2 * 65536 + 2096, and G is
// Y - v plus the floor of (-25820 u + 27461 v) / 65536 (-38075 = -65536 + 27461), whose two
// products are summed in 32 bits before the shift as the formula does.
inline Lanes InverseLanesTail2(__m128i y, __m128i u, __m128i v) {
  const __m128i uu = _mm_sub_epi16(u, Set16(128)), vv = _mm_sub_epi16(v, Set16(128));
  const __m128i weights = _mm_set1_epi32((27461 << 16) | (-25820 & 0xFFFF));
  const __m128i gLo = _mm_srai_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(uu, vv), weights), 16);
  const __m128i gHi = _mm_srai_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(uu, vv), weights), 16);
  return {_mm_add_epi16(_mm_add_epi16(y, vv), _mm_mulhi_epi16(vv, Set16(9174))),
          _mm_add_epi16(_mm_sub_epi16(y, vv), _mm_packs_epi32(gLo, gHi)),
          _mm_add_epi16(_mm_add_epi16(y, _mm_add_epi16(uu, uu)), _mm_mulhi_epi16(uu, Set16(2096)))};
}

// R-C: the only block form with a rounding term; G subtracts both chroma terms in turn.
inline Lanes InverseLanesC(__m128i y, __m128i u, __m128i v) {
  const __m128i y8x = _mm_slli_epi16(y, 3);
  const __m128i u128x = _mm_slli_epi16(_mm_subs_epi16(u, Set16(128)), 7);
  const __m128i v128x = _mm_slli_epi16(_mm_subs_epi16(v, Set16(128)), 7);
  const __m128i four = Set16(4);
  return {
      _mm_srai_epi16(_mm_adds_epi16(_mm_adds_epi16(y8x, _mm_mulhi_epi16(v128x, Set16(4669))), four),
                     3),
      _mm_srai_epi16(
          _mm_adds_epi16(_mm_subs_epi16(_mm_subs_epi16(y8x, _mm_mulhi_epi16(v128x, Set16(2380))),
                                        _mm_mulhi_epi16(u128x, Set16(1614))),
                         four),
          3),
      _mm_srai_epi16(_mm_adds_epi16(_mm_adds_epi16(y8x, _mm_mulhi_epi16(u128x, Set16(8323))), four),
                     3)};
}
#endif
}  // namespace
}  // namespace kro::yuv

namespace kro::wrap {

using namespace kro::yuv;
using namespace kro::color;

kroStatus kroiRGBToYUV_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                              KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3), PackedRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail1, -1, true));
  return kroStatusOk;
}

kroStatus kroiRGBToYUV_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3), PlaneRows<uint8_t>(dstPlanes, dstRowStep),
          roi.width, KRO_MATRIX_ROW(8, ForwardLanesA, ForwardBlockA, ForwardTail1, -1, true));
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
    KRO_MATRIX_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail3, 0, true)(s, d, roi.width);
    KRO_MATRIX_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail3, 1, true)(s, d, roi.width);
    KRO_MATRIX_ROW(16, ForwardLanesA, ForwardBlockA, ForwardTail3, 2, true)(s, d, roi.width);
  }
  return kroStatusOk;
}

// Every pixel through the rounded tail formula; the alpha bytes are neither read nor written.
kroStatus kroiRGBToYUV_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                               KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 4), PackedRows(dst, dstRowStep, 4), roi.width,
          KRO_MATRIX_ROW(1, ForwardLanesTail2, ForwardTail2, ForwardTail2));
  return kroStatusOk;
}

// Blocks of 8 through the doubled-luma formula, the tail rounded; alpha goes unchanged into the
// fourth plane (which, unlike the other three, is not tested for null).
kroStatus kroiRGBToYUV_8u_AC4P4R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[4],
                                 int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  constexpr auto row = KRO_MATRIX_ROW(8, ForwardLanesB, ForwardBlockB, ForwardTail2);
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* s = RowOf(src, srcRowStep, y);
    row(Packed(s, 4), Planar<uint8_t>(dstPlanes, dstRowStep, y), roi.width);
    uint8_t* alpha = RowOf(dstPlanes[3], dstRowStep, y);
    for (int x = 0; x < roi.width; ++x) alpha[x] = s[4 * x + 3];
  }
  return kroStatusOk;
}

kroStatus kroiYUVToRGB_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                              KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3), PackedRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(8, InverseLanesA, InverseBlockA, InverseTail1));
  return kroStatusOk;
}

kroStatus kroiYUVToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(16, InverseLanesB, InverseBlockB, InverseTail2));
  return kroStatusOk;
}

// Every pixel through the tail formula of the planar-to-packed kernel (computed sixteen at a
// time in exact lane arithmetic). The destination planes are tested before the source planes.
kroStatus kroiYUVToRGB_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                              Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PlaneRows<uint8_t>(dstPlanes, dstRowStep), roi.width,
          KRO_MATRIX_ROW(1, InverseLanesTail2, InverseTail2, InverseTail2));
  return kroStatusOk;
}

kroStatus kroiYUVToRGB_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                               KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 4), PackedRows(dst, dstRowStep, 4), roi.width,
          KRO_MATRIX_ROW(1, InverseLanesTail1, InverseTail1, InverseTail1));
  return kroStatusOk;
}

// Blocks of 8 (16 on rows whose source and destination are 16-byte aligned; the arithmetic is
// the same, so the tail always starts at width & ~7), the fourth byte set to alphaValue.
kroStatus kroiYUVToRGB_8u_C3C4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3),
          PackedAlphaRows<false>(dst, dstRowStep, alphaValue), roi.width,
          KRO_MATRIX_ROW(8, InverseLanesC, InverseBlockC, InverseTail3));
  return kroStatusOk;
}

}  // namespace kro::wrap
