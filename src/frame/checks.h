// Argument checks for wrappers.
//
// Each wrapper spells its own sequence of checks, in its export's order, for example
//
//   KRO_CHECK(CheckNull(src, dst));
//   KRO_CHECK(CheckSize(roi, 2, 2));
//   KRO_CHECK(CheckPlanes(dstPlanes));
//
// and the first failure returns at once, before anything is written. The order differs between
// exports on purpose, so there is deliberately no all-in-one validator here.
#pragma once

#include <cstddef>

#include "krocc.h"

#define KRO_CHECK(expr)                                \
  do {                                                 \
    const kroStatus kro_check_status_ = (expr);        \
    if (kro_check_status_ != kroStatusOk) return kro_check_status_; \
  } while (0)

namespace kro {

// kroStatusNullPointer if any of the pointers is null.
template <class... P>
constexpr kroStatus CheckNull(const P*... pointers) {
  return ((pointers == nullptr) || ...) ? kroStatusNullPointer : kroStatusOk;
}

// The pointers of a plane array, in plane order (the array itself is not tested here).
template <std::size_t N, class T>
constexpr kroStatus CheckPlanes(T* const (&planes)[N]) {
  for (std::size_t i = 0; i < N; ++i) {
    if (planes[i] == nullptr) return kroStatusNullPointer;
  }
  return kroStatusOk;
}
// The first `count` pointers of an array that arrives as a pointer parameter.
template <class T>
constexpr kroStatus CheckPlanes(T* const* planes, int count) {
  for (int i = 0; i < count; ++i) {
    if (planes[i] == nullptr) return kroStatusNullPointer;
  }
  return kroStatusOk;
}

// Width and height at least the given minimum (signed comparisons).
constexpr kroStatus CheckSize(KroSize roi, int minWidth = 1, int minHeight = 1) {
  return (roi.width < minWidth || roi.height < minHeight) ? kroStatusBadSize : kroStatusOk;
}

// kroStatusBadStep if any row step is below 1.
template <class... S>
constexpr kroStatus CheckStep(S... steps) {
  return ((steps < 1) || ...) ? kroStatusBadStep : kroStatusOk;
}

}  // namespace kro
