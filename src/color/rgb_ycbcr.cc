// RGB <-> YCbCr at full resolution: the fourteen wrappers, their checks and row loops.
#include "color/rgb_ycbcr.h"

#include "color/matrix_rows.h"
#include "frame/checks.h"
#include "frame/entry.h"

namespace kro::ycbcr {
namespace {

using namespace kro::color;

#if KRO_SIMD
// The block forms on eight 16-bit lanes per component; the pack to bytes applies the clamp.
inline Lanes ForwardLanesA(__m128i r, __m128i g, __m128i b) {
  const __m128i y = _mm_adds_epu16(
      _mm_srli_epi16(
          _mm_adds_epu16(
              _mm_adds_epu16(_mm_adds_epu16(_mm_mulhi_epu16(Set16(16843), _mm_slli_epi16(r, 8)),
                                            _mm_mulhi_epu16(Set16(33030), _mm_slli_epi16(g, 8))),
                             _mm_mulhi_epu16(Set16(6423), _mm_slli_epi16(b, 8))),
              Set16(128)),
          8),
      Set16(16));
  const __m128i r7 = _mm_slli_epi16(r, 7), g7 = _mm_slli_epi16(g, 7), b7 = _mm_slli_epi16(b, 7);
  auto chroma = [&](int kr, int kg, int kb) {
    const __m128i sum = _mm_adds_epi16(
        _mm_adds_epi16(
            _mm_adds_epi16(_mm_mulhi_epi16(Set16(kr), r7), _mm_mulhi_epi16(Set16(kg), g7)),
            _mm_mulhi_epi16(Set16(kb), b7)),
        Set16(64));
    return _mm_adds_epi16(_mm_srai_epi16(sum, 7), Set16(128));
  };
  return {y, chroma(-9699, -19071, 28770), chroma(28770, -24117, -4653)};
}

inline Lanes ForwardLanesB(__m128i r, __m128i g, __m128i b) {
  const __m128i r7 = _mm_slli_epi16(r, 7), g7 = _mm_slli_epi16(g, 7), b7 = _mm_slli_epi16(b, 7);
  auto rs = [](int k, __m128i x) { return _mm_mulhrs_epi16(Set16(k), x); };
  const __m128i y = _mm_add_epi16(
      _mm_add_epi16(_mm_add_epi16(rs(4211, r7), rs(8258, g7)), rs(1606, b7)), Set16(1026));
  const __m128i cb = _mm_add_epi16(
      _mm_sub_epi16(_mm_sub_epi16(rs(7193, b7), rs(4768, g7)), rs(2425, r7)), Set16(8194));
  const __m128i cr = _mm_add_epi16(
      _mm_sub_epi16(_mm_sub_epi16(rs(7193, r7), rs(6029, g7)), rs(1163, b7)), Set16(8194));
  return {_mm_srai_epi16(y, 6), _mm_srai_epi16(cb, 6), _mm_srai_epi16(cr, 6)};
}

inline Lanes InverseLanesA(__m128i y, __m128i cb, __m128i cr) {
  const __m128i y7 = _mm_slli_epi16(_mm_sub_epi16(y, Set16(16)), 7);
  const __m128i cb7 = _mm_slli_epi16(_mm_sub_epi16(cb, Set16(128)), 7);
  const __m128i cr7 = _mm_slli_epi16(_mm_sub_epi16(cr, Set16(128)), 7);
  const __m128i ys = _mm_mulhi_epi16(Set16(4769), y7);
  const __m128i four = Set16(4);
  return {_mm_srai_epi16(
              _mm_adds_epi16(_mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(6537), cr7)), four), 3),
          _mm_srai_epi16(
              _mm_adds_epi16(_mm_subs_epi16(ys, _mm_adds_epi16(_mm_mulhi_epi16(Set16(1605), cb7),
                                                               _mm_mulhi_epi16(Set16(3330), cr7))),
                             four),
              3),
          _mm_srai_epi16(
              _mm_adds_epi16(_mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(8263), cb7)), four), 3)};
}

// I-B: G and B take plain 16-bit sums before the saturating rounding term.
inline Lanes InverseLanesB(__m128i y, __m128i cb, __m128i cr) {
  const __m128i y7 = _mm_slli_epi16(_mm_sub_epi16(y, Set16(16)), 7);
  const __m128i cb7 = _mm_slli_epi16(_mm_sub_epi16(cb, Set16(128)), 7);
  const __m128i cr7 = _mm_slli_epi16(_mm_sub_epi16(cr, Set16(128)), 7);
  const __m128i ys = _mm_mulhi_epi16(Set16(9535), y7);
  const __m128i eight = Set16(8);
  const __m128i g = _mm_sub_epi16(_mm_sub_epi16(ys, _mm_mulhi_epi16(Set16(6660), cr7)),
                                  _mm_mulhi_epi16(Set16(3211), cb7));
  return {_mm_srai_epi16(
              _mm_adds_epi16(_mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(13074), cr7)), eight), 4),
          _mm_srai_epi16(_mm_adds_epi16(g, eight), 4),
          _mm_srai_epi16(
              _mm_adds_epi16(_mm_add_epi16(ys, _mm_mulhi_epi16(Set16(16523), cb7)), eight), 4)};
}

inline Lanes InverseLanesC(__m128i y, __m128i cb, __m128i cr) {
  const __m128i y7 = _mm_slli_epi16(_mm_sub_epi16(y, Set16(16)), 7);
  const __m128i cb7 = _mm_slli_epi16(_mm_sub_epi16(cb, Set16(128)), 7);
  const __m128i cr7 = _mm_slli_epi16(_mm_sub_epi16(cr, Set16(128)), 7);
  const __m128i ys = _mm_mulhi_epi16(Set16(9536), y7);
  return {_mm_srai_epi16(_mm_adds_epi16(_mm_mulhi_epi16(Set16(13074), cr7), ys), 4),
          _mm_srai_epi16(_mm_adds_epi16(_mm_mulhi_epi16(Set16(-3203), cb7),
                                        _mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(-6660), cr7))),
                         4),
          _mm_srai_epi16(_mm_adds_epi16(_mm_mulhi_epi16(Set16(16523), cb7), ys), 4)};
}

// I-D, returned as R, G, B (the BGR rows store them backwards).
inline Lanes InverseLanes709(__m128i y, __m128i cb, __m128i cr) {
  const __m128i y7 = _mm_slli_epi16(_mm_sub_epi16(y, Set16(16)), 7);
  const __m128i cb7 = _mm_slli_epi16(_mm_sub_epi16(cb, Set16(128)), 7);
  const __m128i cr7 = _mm_slli_epi16(_mm_sub_epi16(cr, Set16(128)), 7);
  const __m128i ys = _mm_mulhi_epi16(Set16(9535), y7);
  const __m128i eight = Set16(8);
  return {_mm_srai_epi16(
              _mm_adds_epi16(_mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(14688), cr7)), eight), 4),
          _mm_srai_epi16(
              _mm_adds_epi16(_mm_adds_epi16(_mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(-4375), cr7)),
                                            _mm_mulhi_epi16(Set16(-1745), cb7)),
                             eight),
              4),
          _mm_srai_epi16(
              _mm_adds_epi16(_mm_adds_epi16(ys, _mm_mulhi_epi16(Set16(17326), cb7)), eight), 4)};
}
#endif

// Height before width: the order of the checks of the planar-to-packed exports.
inline kroStatus CheckHeightThenWidth(KroSize roi) {
  if (roi.height < 1) return kroStatusBadSize;
  return roi.width < 1 ? kroStatusBadSize : kroStatusOk;
}

}  // namespace
}  // namespace kro::ycbcr

namespace kro::wrap {

using namespace kro::ycbcr;
using namespace kro::color;

// The aligned pair of this export (destination and its step aligned or not) differs only in
// its stores; both give these bytes.
kroStatus kroiRGBToYCbCr_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3), PackedRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(16, ForwardLanesB, ForwardB, ForwardTail));
  return kroStatusOk;
}

kroStatus kroiRGBToYCbCr_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                  int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dstPlanes));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3), PlaneRows<uint8_t>(dstPlanes, dstRowStep),
          roi.width, KRO_MATRIX_ROW(8, ForwardLanesA, ForwardA, ForwardTail));
  return kroStatusOk;
}

// The plane array itself is not tested, only the three planes in it: the caller must pass an
// array.
kroStatus kroiRGBToYCbCr_8u_AC4P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                   int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(src));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 4), PlaneRows<uint8_t>(dstPlanes, dstRowStep),
          roi.width, KRO_MATRIX_ROW(8, ForwardLanesA, ForwardA, ForwardTail));
  return kroStatusOk;
}

kroStatus kroiRGBToYCbCr_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                 KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 4), PackedRows(dst, dstRowStep, 4), roi.width,
          ConvertRowScalar<0, ForwardTail, ForwardTail>);
  return kroStatusOk;
}

// Sixteen-pixel blocks when planes, steps and width are all multiples of 16 (then there is no
// remainder), eight-pixel blocks and a tail otherwise: both paths give F-A on width & ~7.
kroStatus kroiRGBToYCbCr_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PlaneRows<uint8_t>(dstPlanes, dstRowStep), roi.width,
          KRO_MATRIX_ROW(8, ForwardLanesA, ForwardA, ForwardTail));
  return kroStatusOk;
}

// "16, then 8" blocks: the tail starts at width & ~7.
kroStatus kroiYCbCrToRGB_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 3), PackedRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(8, InverseLanesA, InverseA, InverseT2));
  return kroStatusOk;
}

kroStatus kroiYCbCrToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                  int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckHeightThenWidth(roi));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(8, InverseLanesA, InverseA, InverseT2));
  return kroStatusOk;
}

kroStatus kroiYCbCrToBGR_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                  int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckHeightThenWidth(roi));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedBgrRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(8, InverseLanesA, InverseA, InverseT2));
  return kroStatusOk;
}

kroStatus kroiYCbCrToRGB_8u_P3C4R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                  int dstRowStep, KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedAlphaRows<false>(dst, dstRowStep, alphaValue), roi.width,
          KRO_MATRIX_ROW(8, InverseLanesB, InverseB, InverseT2));
  return kroStatusOk;
}

// Blocks of 16, then 8, then single pixels through the same arithmetic: I-B for every pixel.
kroStatus kroiYCbCrToBGR_8u_P3C4R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                  int dstRowStep, KroSize roi, Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckHeightThenWidth(roi));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedAlphaRows<true>(dst, dstRowStep, alphaValue), roi.width,
          KRO_MATRIX_ROW(1, InverseLanesB, InverseB, InverseB));
  return kroStatusOk;
}

// Blocks of 16 (aligned), 8 and 4 through I-C, so the I-T1 tail starts at width & ~3. The
// destination planes are tested before the source planes.
kroStatus kroiYCbCrToRGB_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dstPlanes));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckPlanes(dstPlanes, 3));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PlaneRows<uint8_t>(dstPlanes, dstRowStep), roi.width,
          KRO_MATRIX_ROW(4, InverseLanesC, InverseC, InverseT1));
  return kroStatusOk;
}

// Every pixel through I-T0; alpha neither read nor written.
kroStatus kroiYCbCrToRGB_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                 KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  EachRow(roi.height, PackedRows(src, srcRowStep, 4), PackedRows(dst, dstRowStep, 4), roi.width,
          ConvertRowScalar<0, InverseT0, InverseT0>);
  return kroStatusOk;
}

// The 709 studio set, B, G, R in memory; single pixels run through the block arithmetic too.
kroStatus kroiYCbCrToBGR_709CSC_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                         Kro8u* dst, int dstRowStep, KroSize roi) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckHeightThenWidth(roi));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedBgrRows(dst, dstRowStep, 3), roi.width,
          KRO_MATRIX_ROW(1, InverseLanes709, Inverse709, Inverse709));
  return kroStatusOk;
}

kroStatus kroiYCbCrToBGR_709CSC_8u_P3C4R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                         Kro8u* dst, int dstRowStep, KroSize roi,
                                         Kro8u alphaValue) {
  KRO_CHECK(CheckNull(srcPlanes, dst));
  KRO_CHECK(CheckPlanes(srcPlanes, 3));
  KRO_CHECK(CheckHeightThenWidth(roi));
  EachRow(roi.height, PlaneRows<const uint8_t>(srcPlanes, srcRowStep),
          PackedAlphaRows<true>(dst, dstRowStep, alphaValue), roi.width,
          KRO_MATRIX_ROW(1, InverseLanes709, Inverse709, Inverse709));
  return kroStatusOk;
}

}  // namespace kro::wrap
