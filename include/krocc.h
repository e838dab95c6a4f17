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

/* ==== Bayer demosaicing: CFAToRGB ===========================================================
 * One plane of Bayer sensor samples to interleaved R, G, B, for a window of a whole image.
 * src points to pixel (0, 0) of the whole image of srcSize; dst to the output of the window's
 * first pixel (srcRect.x, srcRect.y), three samples per pixel. grid gives the colours of the
 * image's first 2 x 2 block, counted from pixel (0, 0) whatever the window:
 *   0: B G / G R   1: R G / G B   2: G B / R G   3: G R / B G   (row 0 / row 1).
 * Every sample is integer: the site keeps its own sample, the missing colours are rounded
 * averages of the nearest sites of that colour. Green at red and blue sites two or more pixels
 * from every border of the whole image is averaged along the direction (vertical or horizontal)
 * whose gradient over two pixels is smaller, from all four neighbours on a tie; nearer the border
 * the averages use the neighbours that exist, so a pixel's value depends on where it lies in the
 * whole image, not in the window. The window is trimmed to the image without a status; a window
 * starting at or past the image's width or height, or of width or height below 1, writes
 * nothing; a negative x or y is not supported.
 * interpolation is read by nothing. Steps are in bytes (16u: the low bit is dropped).
 * Checks, in order: kroStatusNullPointer (src, dst), kroStatusBadSize (srcSize below 2 x 2),
 * kroStatusBadArgument (grid outside 0..3). */

KROAPI kroStatus kroiCFAToRGB_8u_C1C3R(const Kro8u* src, KroRect srcRect, KroSize srcSize,
                                       int srcStep, Kro8u* dst, int dstStep, int grid,
                                       int interpolation);
KROAPI kroStatus kroiCFAToRGB_16u_C1C3R(const Kro16u* src, KroRect srcRect, KroSize srcSize,
                                        int srcStep, Kro16u* dst, int dstStep, int grid,
                                        int interpolation);

/* ==== Bayer demosaicing: DemosaicAHD ======================================================= */

/* ==== (next families are added below, one section each) ==================================== */

#ifdef __cplusplus
}
#endif

#endif /* KROCC_H_ */
