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

/* ==== Bayer demosaicing: CFAToRGB ========================================================== */

/* ==== Bayer demosaicing: DemosaicAHD ======================================================= */
/* Adaptive homogeneity-directed demosaicing of a Bayer plane into interleaved R, G, B. The image
 * is interpolated twice (green along the row, green along the column; red and blue by colour
 * differences), both results go to luma-chroma, each pixel votes by how many neighbours lie
 * within its thresholds in each result, and the votes of its 3 x 3 window choose the result
 * (a tie repeats the last decision of the row's strip). Integer arithmetic only.
 * src is pixel (0, 0) of the whole srcSize image; srcRect is trimmed to the image (a negative
 * origin moves to 0, its width kept); dst is the output pixel of the trimmed region's first
 * pixel; reads beyond the image edge are mirrored. grid is the Bayer phase at (0, 0):
 * 0 = B G / G R, 1 = R G / G B, 2 = G B / R G, 3 = G R / B G.
 * tmp: caller's scratch of 30 rows, tmpStep bytes apart (16u: low bit of tmpStep ignored), each
 * row at least (max(trimmed width, 6) + 6) samples; no alignment needed, contents don't matter.
 * Only pixels of the trimmed region are written, also where the strip partition of a small
 * region starts outside it.
 * Checks, in order: src or dst null -> kroStatusNullPointer; srcSize below 5 x 5 ->
 * kroStatusBadSize; grid outside 0..3 -> kroStatusBadArgument. tmp, tmpStep and srcRect are
 * not checked; a region that is empty after trimming returns kroStatusOk.
 * 16u: srcStep is halved by a shift, dstStep by a division rounding towards zero. */

KROAPI kroStatus kroiDemosaicAHD_8u_C1C3R(const Kro8u* src, KroRect srcRect, KroSize srcSize,
                                          int srcStep, Kro8u* dst, int dstStep, int grid,
                                          Kro8u* tmp, int tmpStep);
KROAPI kroStatus kroiDemosaicAHD_16u_C1C3R(const Kro16u* src, KroRect srcRect, KroSize srcSize,
                                           int srcStep, Kro16u* dst, int dstStep, int grid,
                                           Kro8u* tmp, int tmpStep);

/* ==== (next families are added below, one section each) ==================================== */

#ifdef __cplusplus
}
#endif

#endif /* KROCC_H_ */
