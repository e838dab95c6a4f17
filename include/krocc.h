/*
 * krocc.h - public interface of kroCC, a colour-conversion library for raster images.
 *
 * Every image function takes pointers to caller-owned pixels, signed 32-bit row steps in bytes
 * and a region size, and returns a kroStatus. The library keeps no state, never allocates, has
 * no threads and is reentrant on buffers that do not overlap.
 *
 * Usable from C99 and C++.
 */
#ifndef KROCC_H_
#define KROCC_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define KROAPI
#else
#define KROAPI __attribute__((visibility("default")))
#endif

/* ---- Element types ------------------------------------------------------------------------ */

typedef uint8_t Kro8u;
typedef uint16_t Kro16u;
typedef int16_t Kro16s;
typedef int32_t Kro32s;
typedef float Kro32f;
typedef double Kro64f;

/* ---- Region and rectangle ------------------------------------------------------------------ */

/* Region of interest: width then height, in pixels of the full-resolution (luma) image. */
typedef struct KroSize {
  int32_t width;
  int32_t height;
} KroSize;

/* A rectangle inside a source image (Bayer functions only). */
typedef struct KroRect {
  int32_t x;
  int32_t y;
  int32_t width;
  int32_t height;
} KroRect;

/* ---- Status codes -------------------------------------------------------------------------- */

/* Zero is success, positive a warning with the work done, negative an error with nothing
 * written. */
typedef int32_t kroStatus;

enum {
  kroStatusOk = 0,
  kroStatusNegativeInput = 1,   /* warning: a negative input was met; work done */
  kroStatusOddSize = 35,        /* warning: size no multiple of the subsampling block */
  kroStatusBadArgument = -5,    /* a Bayer grid code outside 0..3 */
  kroStatusBadSize = -6,        /* width or height below the minimum, or no required multiple */
  kroStatusNullPointer = -8,    /* a required pointer is null */
  kroStatusBadStep = -14,       /* a row step below 1 */
  kroStatusBadContext = -17,    /* a noise generator record without its tag */
  kroStatusBadChannel = -47,    /* channel count outside 1, 3, 4, 9 */
  kroStatusBadGammaRange = -49, /* empty range for a 32f gamma function */
  kroStatusBadDitherLevels = -54, /* levels outside the type's range */
  kroStatusBadNoise = -55,        /* noise above 100 */
  kroStatusBadDitherType = -224   /* dither type outside the set */
};

/* ---- Version ------------------------------------------------------------------------------- */

typedef struct KroVersionRecord {
  int32_t versionMajor;
  int32_t versionMinor;
  int32_t versionPatch;
  int32_t revision;
  char targetCode[4]; /* two ASCII letters naming the processor class, then two zero bytes */
  const char* name;
  const char* versionText;
  const char* dateText;
} KroVersionRecord;

/* Returns the library's constant version record. Never fails; do not free or modify it. */
KROAPI const KroVersionRecord* kroccGetLibVersion(void);

/* ==== RGB and YUV at full resolution ========================================================
 * Y = 0.299 R + 0.587 G + 0.114 B, U = 0.492 (B - Y) + 128, V = 0.877 (R - Y) + 128, in 16-bit
 * fixed point. Pixels inside the vector blocks of a row and pixels of the row's tail use
 * slightly different integer forms and can differ by one; see docs/families.md.
 * Statuses: kroStatusNullPointer, kroStatusBadSize (width or height below 1). */

KROAPI kroStatus kroiRGBToYUV_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                     KroSize roi);
KROAPI kroStatus kroiRGBToYUV_8u_C3P3R(const Kro8u* src, int srcRowStep, Kro8u* const dstPlanes[3],
                                       int dstRowStep, KroSize roi);
KROAPI kroStatus kroiRGBToYUV_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                     Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi);
KROAPI kroStatus kroiRGBToYUV_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                      int dstRowStep, KroSize roi);
/* The source's alpha is copied into dstPlanes[3]. */
KROAPI kroStatus kroiRGBToYUV_8u_AC4P4R(const Kro8u* src, int srcRowStep,
                                        Kro8u* const dstPlanes[4], int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYUVToRGB_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst, int dstRowStep,
                                     KroSize roi);
KROAPI kroStatus kroiYUVToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep, Kro8u* dst,
                                       int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYUVToRGB_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                     Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYUVToRGB_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                      int dstRowStep, KroSize roi);
/* Every destination pixel's fourth byte is alphaValue. */
KROAPI kroStatus kroiYUVToRGB_8u_C3C4R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                       int dstRowStep, KroSize roi, Kro8u alphaValue);

/* ==== RGB and YCbCr at full resolution ======================================================
 * Studio range: Y in 16..235, Cb and Cr in 16..240 around 128 (BT.601 unless the name says
 * 709CSC). Statuses: kroStatusNullPointer, kroStatusBadSize (width or height below 1). */

KROAPI kroStatus kroiRGBToYCbCr_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                       int dstRowStep, KroSize roi);
KROAPI kroStatus kroiRGBToYCbCr_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                         Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi);
/* dstPlanes itself is not tested for null (its three planes are): pass an array. */
KROAPI kroStatus kroiRGBToYCbCr_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                          Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi);
KROAPI kroStatus kroiRGBToYCbCr_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                        int dstRowStep, KroSize roi);
KROAPI kroStatus kroiRGBToYCbCr_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                       Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToRGB_8u_C3R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                       int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                         Kro8u* dst, int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToBGR_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                         Kro8u* dst, int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToRGB_8u_P3C4R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                         Kro8u* dst, int dstRowStep, KroSize roi,
                                         Kro8u alphaValue);
KROAPI kroStatus kroiYCbCrToBGR_8u_P3C4R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                         Kro8u* dst, int dstRowStep, KroSize roi,
                                         Kro8u alphaValue);
KROAPI kroStatus kroiYCbCrToRGB_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                       Kro8u* const dstPlanes[3], int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToRGB_8u_AC4R(const Kro8u* src, int srcRowStep, Kro8u* dst,
                                        int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToBGR_709CSC_8u_P3C3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                                Kro8u* dst, int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCrToBGR_709CSC_8u_P3C4R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                                Kro8u* dst, int dstRowStep, KroSize roi,
                                                Kro8u alphaValue);

/* ==== Gamma forward and inverse, 8u and 16u ==================================================
 * The BT.709 transfer curve (forward) and its inverse on every colour sample, by a table over
 * the type's whole range. AC4 forms leave alpha untouched; IR and IP3R forms work in place.
 * Checks, in order: kroStatusNullPointer (including each plane pointer), kroStatusBadSize
 * (width or height below 1), kroStatusBadStep (a step below 1). Steps are in bytes. */

KROAPI kroStatus kroiGammaFwd_8u_C3R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                       KroSize roi);
KROAPI kroStatus kroiGammaFwd_8u_C3IR(Kro8u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaFwd_8u_AC4R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                        KroSize roi);
KROAPI kroStatus kroiGammaFwd_8u_AC4IR(Kro8u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaFwd_8u_P3R(const Kro8u* const srcPlanes[3], int srcStep,
                                       Kro8u* const dstPlanes[3], int dstStep, KroSize roi);
KROAPI kroStatus kroiGammaFwd_8u_IP3R(Kro8u* const planes[3], int step, KroSize roi);
KROAPI kroStatus kroiGammaFwd_16u_C3R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                       KroSize roi);
KROAPI kroStatus kroiGammaFwd_16u_C3IR(Kro16u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaFwd_16u_AC4R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                        KroSize roi);
KROAPI kroStatus kroiGammaFwd_16u_AC4IR(Kro16u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaFwd_16u_P3R(const Kro16u* const srcPlanes[3], int srcStep,
                                       Kro16u* const dstPlanes[3], int dstStep, KroSize roi);
KROAPI kroStatus kroiGammaFwd_16u_IP3R(Kro16u* const planes[3], int step, KroSize roi);
KROAPI kroStatus kroiGammaInv_8u_C3R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                       KroSize roi);
KROAPI kroStatus kroiGammaInv_8u_C3IR(Kro8u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaInv_8u_AC4R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                        KroSize roi);
KROAPI kroStatus kroiGammaInv_8u_AC4IR(Kro8u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaInv_8u_P3R(const Kro8u* const srcPlanes[3], int srcStep,
                                       Kro8u* const dstPlanes[3], int dstStep, KroSize roi);
KROAPI kroStatus kroiGammaInv_8u_IP3R(Kro8u* const planes[3], int step, KroSize roi);
KROAPI kroStatus kroiGammaInv_16u_C3R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                       KroSize roi);
KROAPI kroStatus kroiGammaInv_16u_C3IR(Kro16u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaInv_16u_AC4R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                        KroSize roi);
KROAPI kroStatus kroiGammaInv_16u_AC4IR(Kro16u* image, int step, KroSize roi);
KROAPI kroStatus kroiGammaInv_16u_P3R(const Kro16u* const srcPlanes[3], int srcStep,
                                       Kro16u* const dstPlanes[3], int dstStep, KroSize roi);
KROAPI kroStatus kroiGammaInv_16u_IP3R(Kro16u* const planes[3], int step, KroSize roi);

/* ==== RGB and BGR to 4:2:0 ================================================================= */

/* ==== 4:2:0 to RGB and BGR ================================================================= */

/* ==== Gamma, 32f by formula ================================================================ */

/* ==== Bit-depth reduction (ReduceBits) ===================================================== */
/* Each colour sample is moved onto one of `levels` evenly spaced values of the destination's
 * range. ditherKind: 0 nearest level, 1 Floyd-Steinberg and 2 Jarvis-Judice-Ninke and 3 Stucki
 * error diffusion, 4 ordered dither on a 4 by 4 Bayer matrix. noise (0..100) perturbs the
 * threshold of kinds 1 to 4 from a generator that is seeded afresh in every call, so equal calls
 * give equal pixels. AC4R leaves the destination's alpha unwritten. 32f sources are nominally
 * 0..1. levels: 2..256 for 8-bit destinations, 2..65536 for 16-bit ones.
 * Work memory is the caller's: `buffer` of the size kroiReduceBitsGetBufferSize gives (it may be
 * null where that size is 0: kind 0, and kind 4 without noise). Row steps are bytes, unchecked.
 * Checks, in order: kroStatusNullPointer (src, dst), kroStatusBadSize (width or height below 1),
 * kroStatusBadNoise (noise above 100 as unsigned), kroStatusBadDitherLevels (levels out of the
 * range, as unsigned), kroStatusBadDitherType, then kroStatusNullPointer for a needed buffer. */

/* Bytes of work buffer for a call of that width (the height is not used). channels: 1, 3, 4 or 9
 * (C1R, C3R, C4R, AC4R; the size does not depend on it). Checks, in order: kroStatusNullPointer,
 * kroStatusBadSize (width below 1), kroStatusBadChannel, kroStatusBadNoise,
 * kroStatusBadDitherType (kind 0 stores 0 before the type is looked at further). */
KROAPI kroStatus kroiReduceBitsGetBufferSize(int channels, KroSize roi, int noise, int ditherKind,
                                             int* size);

KROAPI kroStatus kroiReduceBits_8u_C1R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                       KroSize roi, int noise, int ditherKind, int levels,
                                       Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_8u_C3R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                       KroSize roi, int noise, int ditherKind, int levels,
                                       Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_8u_C4R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                       KroSize roi, int noise, int ditherKind, int levels,
                                       Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_8u_AC4R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u_C1R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u_C3R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u_C4R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u_AC4R(const Kro16u* src, int srcStep, Kro16u* dst, int dstStep,
                                         KroSize roi, int noise, int ditherKind, int levels,
                                         Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s_C1R(const Kro16s* src, int srcStep, Kro16s* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s_C3R(const Kro16s* src, int srcStep, Kro16s* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s_C4R(const Kro16s* src, int srcStep, Kro16s* dst, int dstStep,
                                        KroSize roi, int noise, int ditherKind, int levels,
                                        Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s_AC4R(const Kro16s* src, int srcStep, Kro16s* dst, int dstStep,
                                         KroSize roi, int noise, int ditherKind, int levels,
                                         Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u8u_C1R(const Kro16u* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u8u_C3R(const Kro16u* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u8u_C4R(const Kro16u* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16u8u_AC4R(const Kro16u* src, int srcStep, Kro8u* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s8u_C1R(const Kro16s* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s8u_C3R(const Kro16s* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s8u_C4R(const Kro16s* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_16s8u_AC4R(const Kro16s* src, int srcStep, Kro8u* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f8u_C1R(const Kro32f* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f8u_C3R(const Kro32f* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f8u_C4R(const Kro32f* src, int srcStep, Kro8u* dst, int dstStep,
                                          KroSize roi, int noise, int ditherKind, int levels,
                                          Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f8u_AC4R(const Kro32f* src, int srcStep, Kro8u* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16u_C1R(const Kro32f* src, int srcStep, Kro16u* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16u_C3R(const Kro32f* src, int srcStep, Kro16u* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16u_C4R(const Kro32f* src, int srcStep, Kro16u* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16u_AC4R(const Kro32f* src, int srcStep, Kro16u* dst,
                                            int dstStep, KroSize roi, int noise, int ditherKind,
                                            int levels, Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16s_C1R(const Kro32f* src, int srcStep, Kro16s* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16s_C3R(const Kro32f* src, int srcStep, Kro16s* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16s_C4R(const Kro32f* src, int srcStep, Kro16s* dst, int dstStep,
                                           KroSize roi, int noise, int ditherKind, int levels,
                                           Kro8u* buffer);
KROAPI kroStatus kroiReduceBits_32f16s_AC4R(const Kro32f* src, int srcStep, Kro16s* dst,
                                            int dstStep, KroSize roi, int noise, int ditherKind,
                                            int levels, Kro8u* buffer);

/* One 8-bit plane to a packed one-bit plane, most significant bit first, the first pixel at bit
 * (dstBitOffset & 7) from the top of *dst (the pointer is not moved by the offset). A bit is 1
 * where the sample exceeds threshold (ditherKind 0) or, under ditherKind 3, where the sample plus
 * its gathered Stucki error does, in fixed point. A first byte entered at an offset keeps its top
 * bits and has the bits after a run that ends inside it cleared; a last partial byte keeps the
 * bits below the run. ignoredA and ignoredB are not read. buffer: 12 * width + 112 bytes for
 * kind 3, unused by kind 0. Checks, in order: kroStatusNullPointer (src, dst), kroStatusBadSize
 * (width or height below 1, dstBitOffset negative), kroStatusBadDitherType, kroStatusNullPointer
 * (kind 3 without buffer). */
KROAPI kroStatus kroiReduceBits_8u1u_C1R(const Kro8u* src, int srcStep, Kro8u* dst, int dstStep,
                                         int dstBitOffset, KroSize roi, int ignoredA, int ignoredB,
                                         int ditherKind, Kro8u threshold, Kro8u* buffer);

/* ==== Bayer demosaicing: CFAToRGB ========================================================== */

/* ==== Bayer demosaicing: DemosaicAHD ======================================================= */

/* ==== (next families are added below, one section each) ==================================== */

#ifdef __cplusplus
}
#endif

#endif /* KROCC_H_ */
