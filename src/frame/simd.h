// Vector code switch. KRO_SIMD is 1 in the default build (SSE2 + SSSE3) and 0 in the portable
// build, which compiles no intrinsics at all and runs every kernel's scalar twin.
#pragma once

#ifndef KRO_SIMD
#error "KRO_SIMD must be defined by the build (1: SSE2 + SSSE3 kernels, 0: portable)"
#endif

#if KRO_SIMD
#include <emmintrin.h>
#include <tmmintrin.h>
#endif
