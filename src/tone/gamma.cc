// Gamma forward and inverse, 8u and 16u: every colour sample replaced by its entry of the
// build-time table of its depth and direction (one table serves the six layouts).
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/checks.h"
#include "frame/entry.h"
#include "tone/gamma_tables.h"

namespace kro::gamma {
namespace {

template <class T, bool kInverse>
const T* Table() {
  if constexpr (sizeof(T) == 1) {
    return kInverse ? tables::kGammaInv8u : tables::kGammaFwd8u;
  } else {
    return kInverse ? tables::kGammaInv16u : tables::kGammaFwd16u;
  }
}

// Byte steps become element steps by an arithmetic shift at this border.
template <class T>
std::ptrdiff_t Elements(int stepBytes) {
  return static_cast<std::ptrdiff_t>(stepBytes >> (sizeof(T) == 2 ? 1 : 0));
}

// Eight bytes of samples read as one word, each colour sample of it looked up and stored on its
// own (a fourth sample of four-sample pixels, alpha, is skipped and never written). The word is
// read whole before anything is written, so source and destination may be the same.
template <class T, int kSamples>
void MapWord(const T* table, const T* src, T* dst) {
  constexpr int kBits = 8 * sizeof(T), kCount = 8 / sizeof(T);
  constexpr uint64_t kMask = (uint64_t{1} << kBits) - 1;
  uint64_t in;
  std::memcpy(&in, src, 8);
  for (int k = 0; k < kCount; ++k)
    if (kSamples != 4 || k % 4 != 3) dst[k] = table[(in >> (kBits * k)) & kMask];
}

// One row of pixels of kSamples samples (1: a plane row, 3: C3, 4: three colours and alpha), a
// word at a time; the samples short of a word one by one.
template <class T, int kSamples>
void MapRow(const T* table, const T* src, T* dst, int width) {
  constexpr int kCount = 8 / sizeof(T);
  const int n = width * kSamples;
  int i = 0;
  for (; i + kCount <= n; i += kCount) MapWord<T, kSamples>(table, src + i, dst + i);
  for (; i < n; ++i)
    if (kSamples != 4 || i % 4 != 3) dst[i] = table[src[i]];
}

template <class T, int kSamples>
void MapImage(const T* table, const T* src, int srcStep, T* dst, int dstStep, KroSize roi) {
  const std::ptrdiff_t ss = Elements<T>(srcStep), ds = Elements<T>(dstStep);
  for (int y = 0; y < roi.height; ++y)
    MapRow<T, kSamples>(table, src + y * ss, dst + y * ds, roi.width);
}

template <class T, bool kInverse, int kSamples>
kroStatus Packed(const T* src, int srcStep, T* dst, int dstStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(srcStep, dstStep));
  MapImage<T, kSamples>(Table<T, kInverse>(), src, srcStep, dst, dstStep, roi);
  return kroStatusOk;
}

template <class T, bool kInverse, int kSamples>
kroStatus PackedInPlace(T* image, int step, KroSize roi) {
  KRO_CHECK(CheckNull(image));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(step));
  MapImage<T, kSamples>(Table<T, kInverse>(), image, step, image, step, roi);
  return kroStatusOk;
}

template <class T, bool kInverse>
kroStatus Planes(const T* const src[3], int srcStep, T* const dst[3], int dstStep, KroSize roi) {
  KRO_CHECK(CheckNull(src, dst));
  KRO_CHECK(CheckPlanes(src, 3));
  KRO_CHECK(CheckPlanes(dst, 3));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(srcStep, dstStep));
  for (int p = 0; p < 3; ++p) {
    MapImage<T, 1>(Table<T, kInverse>(), src[p], srcStep, dst[p], dstStep, roi);
  }
  return kroStatusOk;
}

template <class T, bool kInverse>
kroStatus PlanesInPlace(T* const planes[3], int step, KroSize roi) {
  KRO_CHECK(CheckNull(planes));
  KRO_CHECK(CheckPlanes(planes, 3));
  KRO_CHECK(CheckSize(roi));
  KRO_CHECK(CheckStep(step));
  for (int p = 0; p < 3; ++p) {
    MapImage<T, 1>(Table<T, kInverse>(), planes[p], step, planes[p], step, roi);
  }
  return kroStatusOk;
}

}  // namespace
}  // namespace kro::gamma

namespace kro::wrap {

// The six layouts of one direction and depth, each an instance of the templates above.
#define KRO_GAMMA_LAYOUTS(Dir, depth, T, kInverse)                                             \
  kroStatus kroiGamma##Dir##_##depth##_C3R(const T* s, int ss, T* d, int ds, KroSize roi) {    \
    return gamma::Packed<T, kInverse, 3>(s, ss, d, ds, roi);                                   \
  }                                                                                            \
  kroStatus kroiGamma##Dir##_##depth##_C3IR(T* img, int step, KroSize roi) {                   \
    return gamma::PackedInPlace<T, kInverse, 3>(img, step, roi);                               \
  }                                                                                            \
  kroStatus kroiGamma##Dir##_##depth##_AC4R(const T* s, int ss, T* d, int ds, KroSize roi) {   \
    return gamma::Packed<T, kInverse, 4>(s, ss, d, ds, roi);                                   \
  }                                                                                            \
  kroStatus kroiGamma##Dir##_##depth##_AC4IR(T* img, int step, KroSize roi) {                  \
    return gamma::PackedInPlace<T, kInverse, 4>(img, step, roi);                               \
  }                                                                                            \
  kroStatus kroiGamma##Dir##_##depth##_P3R(const T* const s[3], int ss, T* const d[3], int ds, \
                                           KroSize roi) {                                      \
    return gamma::Planes<T, kInverse>(s, ss, d, ds, roi);                                      \
  }                                                                                            \
  kroStatus kroiGamma##Dir##_##depth##_IP3R(T* const planes[3], int step, KroSize roi) {       \
    return gamma::PlanesInPlace<T, kInverse>(planes, step, roi);                               \
  }

KRO_GAMMA_LAYOUTS(Fwd, 8u, Kro8u, false)
KRO_GAMMA_LAYOUTS(Inv, 8u, Kro8u, true)
KRO_GAMMA_LAYOUTS(Fwd, 16u, Kro16u, false)
KRO_GAMMA_LAYOUTS(Inv, 16u, Kro16u, true)

#undef KRO_GAMMA_LAYOUTS

}  // namespace kro::wrap
