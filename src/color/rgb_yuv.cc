// RGB <-> YUV at full resolution: the ten wrappers, their checks and row loops.
#include "color/rgb_yuv.h"

#include <cstddef>

#include "frame/checks.h"
#include "frame/entry.h"

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
      ConvertRowScalar<16, ForwardBlockA, ForwardTail1>);
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
      ConvertRowScalar<8, ForwardBlockA, ForwardTail1>);
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
    ConvertRowScalar<16, ForwardBlockA, ForwardTail3, 0>(s, d, roi.width);
    ConvertRowScalar<16, ForwardBlockA, ForwardTail3, 1>(s, d, roi.width);
    ConvertRowScalar<16, ForwardBlockA, ForwardTail3, 2>(s, d, roi.width);
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
      ConvertRowScalar<8, InverseBlockA, InverseTail1>);
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
      ConvertRowScalar<16, InverseBlockB, InverseTail2>);
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
