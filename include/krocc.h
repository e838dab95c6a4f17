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
/* Interleaved RGB or BGR (C3; AC4 and C4 with a fourth byte that is never read) to 4:2:0: a
 * luma sample per pixel, and one Cb and one Cr per 2x2 block computed from the block's summed
 * samples. P3 destinations are three planes with a step each (YCrCb names: plane 1 is Cr, plane
 * 2 Cb); P2 is a luma plane and a plane of Cb, Cr pairs. BT.601 studio range unless the name
 * says 709CSC or 709HDTV (no luma offset, outputs held to 1..254); YUV names give U and V
 * offset by 128. Within a row the first columns take a 16-bit vector form of the arithmetic and
 * the rest a 32-bit form, which can differ by one; see docs/families.md.
 * Only the even part of the region is converted: with an odd width or height the last column or
 * row is left as it was and kroStatusOddSize (+35) is returned.
 * Checks: kroStatusNullPointer, kroStatusBadSize (below 1 x 1, or 2 x 2 for the BGR YCbCr P3
 * forms, the YCrCb forms and every 709 form). The plane pointers of the planar forms are
 * tested after the size, except in the forms with a minimum of 2 x 2, which test them first.
 * Step arrays are not tested. Forms without R take tightly packed images (steps 3W or W, W for
 * Y, W / 2 for chroma). Also planar RGB (P3R, P3) to YUV 4:2:0. */

KROAPI kroStatus kroiRGBToYCbCr420_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                            Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                            KroSize roi);
KROAPI kroStatus kroiRGBToYCbCr420_8u_C3P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                            int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                            KroSize roi);
KROAPI kroStatus kroiRGBToYCbCr420_8u_C4P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                            int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                            KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_8u_C3P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                            int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                            KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_8u_AC4P2R(const Kro8u* src, int srcRowStep, Kro8u* dstLuma,
                                             int dstLumaStep, Kro8u* dstChroma, int dstChromaStep,
                                             KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                            Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                            KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                             Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                             KroSize roi);
KROAPI kroStatus kroiBGRToYCrCb420_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                            Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                            KroSize roi);
KROAPI kroStatus kroiBGRToYCrCb420_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                             Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                             KroSize roi);
KROAPI kroStatus kroiRGBToYCrCb420_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                             Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                             KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_709CSC_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                                   Kro8u* const dstPlanes[3],
                                                   const int dstPlaneSteps[3], KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_709CSC_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                                    Kro8u* const dstPlanes[3],
                                                    const int dstPlaneSteps[3], KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_709CSC_8u_C3P2R(const Kro8u* src, int srcRowStep,
                                                   Kro8u* dstLuma, int dstLumaStep,
                                                   Kro8u* dstChroma, int dstChromaStep,
                                                   KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_709CSC_8u_AC4P2R(const Kro8u* src, int srcRowStep,
                                                    Kro8u* dstLuma, int dstLumaStep,
                                                    Kro8u* dstChroma, int dstChromaStep,
                                                    KroSize roi);
KROAPI kroStatus kroiBGRToYCrCb420_709CSC_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                                   Kro8u* const dstPlanes[3],
                                                   const int dstPlaneSteps[3], KroSize roi);
KROAPI kroStatus kroiBGRToYCrCb420_709CSC_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                                    Kro8u* const dstPlanes[3],
                                                    const int dstPlaneSteps[3], KroSize roi);
KROAPI kroStatus kroiBGRToYCbCr420_709HDTV_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                                     Kro8u* const dstPlanes[3],
                                                     const int dstPlaneSteps[3], KroSize roi);
KROAPI kroStatus kroiRGBToYUV420_8u_C3P3R(const Kro8u* src, int srcRowStep,
                                          Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                          KroSize roi);
KROAPI kroStatus kroiRGBToYUV420_8u_C3P3(const Kro8u* src, Kro8u* const dstPlanes[3], KroSize roi);
KROAPI kroStatus kroiBGRToYUV420_8u_AC4P3R(const Kro8u* src, int srcRowStep,
                                           Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                           KroSize roi);
/* Planar RGB source, the three source planes sharing srcRowStep. */
KROAPI kroStatus kroiRGBToYUV420_8u_P3R(const Kro8u* const srcPlanes[3], int srcRowStep,
                                        Kro8u* const dstPlanes[3], const int dstPlaneSteps[3],
                                        KroSize roi);
KROAPI kroStatus kroiRGBToYUV420_8u_P3(const Kro8u* const srcPlanes[3], Kro8u* const dstPlanes[3],
                                       KroSize roi);

/* ==== 4:2:0 to RGB and BGR ================================================================= */
/* Planar (P3: Y, Cb, Cr planes, each with its own row step) or two-plane (P2: Y plane and one
 * plane of chroma pairs, Cb first for YCbCr names and Cr first for YCrCb names) 4:2:0 images to
 * packed RGB/BGR (C3), with a fourth byte alphaValue (C4) or 0 (AC4), or to three R, G, B planes
 * sharing one step (P3R). The four pixels of each 2x2 block share its Cb and Cr. Only the even
 * part (width & ~1) x (height & ~1) is converted: an odd last column or row is left as it was,
 * and the call returns kroStatusOddSize (+35). Each export has its own integer arithmetic; in
 * several, the last columns of a row take a 32-bit form that can differ by one from the 16-bit
 * form of the columns before them (docs/families.md). Planar YCrCb sources list Cr in plane 1.
 * Statuses: kroStatusNullPointer, kroStatusBadSize (width or height below 1; below 2 for
 * kroiYUV420ToBGR_8u_P3C3R). The planar sources' plane pointers are tested after the size; the
 * two YCrCb P2C4R forms test the size before any pointer. */

KROAPI kroStatus kroiYCbCr420ToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3],
                                            const int srcPlaneSteps[3], Kro8u* dst,
                                            int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCr420ToBGR_8u_P3C3R(const Kro8u* const srcPlanes[3],
                                            const int srcPlaneSteps[3], Kro8u* dst,
                                            int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCr420ToBGR_8u_P3C4R(const Kro8u* const srcPlanes[3],
                                            const int srcPlaneSteps[3], Kro8u* dst,
                                            int dstRowStep, KroSize roi, Kro8u alphaValue);
KROAPI kroStatus kroiYCbCr420ToRGB_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCr420ToBGR_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCr420ToRGB_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi, Kro8u alphaValue);
KROAPI kroStatus kroiYCbCr420ToBGR_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi, Kro8u alphaValue);
KROAPI kroStatus kroiYCrCb420ToRGB_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCrCb420ToBGR_8u_P2C3R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi);
/* These two test the size before the pointers. */
KROAPI kroStatus kroiYCrCb420ToRGB_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi, Kro8u alphaValue);
KROAPI kroStatus kroiYCrCb420ToBGR_8u_P2C4R(const Kro8u* srcLuma, int srcLumaStep,
                                            const Kro8u* srcChroma, int srcChromaStep, Kro8u* dst,
                                            int dstRowStep, KroSize roi, Kro8u alphaValue);
/* srcPlanes: Y, Cr, Cb. */
KROAPI kroStatus kroiYCrCb420ToRGB_8u_P3C4R(const Kro8u* const srcPlanes[3],
                                            const int srcPlaneSteps[3], Kro8u* dst,
                                            int dstRowStep, KroSize roi, Kro8u alphaValue);
KROAPI kroStatus kroiYCbCr420ToBGR_709CSC_8u_P3C3R(const Kro8u* const srcPlanes[3],
                                                   const int srcPlaneSteps[3], Kro8u* dst,
                                                   int dstRowStep, KroSize roi);
KROAPI kroStatus kroiYCbCr420ToBGR_709HDTV_8u_P3C4R(const Kro8u* const srcPlanes[3],
                                                    const int srcPlaneSteps[3], Kro8u* dst,
                                                    int dstRowStep, KroSize roi,
                                                    Kro8u alphaValue);
/* YUV (U and V offset by 128). The AC4 form stores 0 in every fourth byte it writes. */
KROAPI kroStatus kroiYUV420ToRGB_8u_P3AC4R(const Kro8u* const srcPlanes[3],
                                           const int srcPlaneSteps[3], Kro8u* dst, int dstRowStep,
                                           KroSize roi);
/* Width and height at least 2. */
KROAPI kroStatus kroiYUV420ToBGR_8u_P3C3R(const Kro8u* const srcPlanes[3],
                                          const int srcPlaneSteps[3], Kro8u* dst, int dstRowStep,
                                          KroSize roi);
KROAPI kroStatus kroiYUV420ToRGB_8u_P3C3R(const Kro8u* const srcPlanes[3],
                                          const int srcPlaneSteps[3], Kro8u* dst, int dstRowStep,
                                          KroSize roi);
/* Three R, G, B planes sharing dstRowStep. */
KROAPI kroStatus kroiYUV420ToRGB_8u_P3R(const Kro8u* const srcPlanes[3],
                                        const int srcPlaneSteps[3], Kro8u* const dstPlanes[3],
                                        int dstRowStep, KroSize roi);
/* Tightly packed: Y step width, chroma steps width / 2, destination step width (planes) or
 * 3 * width (packed). */
KROAPI kroStatus kroiYUV420ToRGB_8u_P3(const Kro8u* const srcPlanes[3], Kro8u* const dstPlanes[3],
                                       KroSize roi);
KROAPI kroStatus kroiYUV420ToRGB_8u_P3C3(const Kro8u* const srcPlanes[3], Kro8u* dst,
                                         KroSize roi);

/* ==== Gamma, 32f by formula ================================================================ */
/* The BT.709 transfer curve (forward) and its inverse computed per colour sample over the
 * caller's range vMin..vMax (range = vMax - vMin, d = v - vMin, x = d / range):
 *   forward: x < 0.018 ? 4.5 d + vMin : (1.099 x^0.45 - 0.099) range + vMin
 *   inverse: x < 0.0812 ? d / 4.5 + vMin : ((x + 0.099) / 1.099)^(1/0.45) range + vMin
 * Samples are not clamped to the range. The forms keep their own arithmetic: the reciprocal of
 * the range is single or double precision per form; forward AC4R and AC4IR add vMin a second
 * time on the curve branch; inverse C3R, P3R and IP3R do not multiply the curve by the range.
 * AC4 forms leave alpha untouched; C3IR, AC4IR and IP3R work in place.
 * Checks, in order: kroStatusBadGammaRange (0 >= vMax - vMin; before any pointer test; a NaN
 * passes), kroStatusNullPointer (including each plane pointer), kroStatusBadSize (width or
 * height below 1), kroStatusBadStep (a step below 1). Steps are in bytes. */

KROAPI kroStatus kroiGammaFwd_32f_C3R(const Kro32f* src, int srcStep, Kro32f* dst, int dstStep,
                                      KroSize roi, Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaFwd_32f_C3IR(Kro32f* image, int step, KroSize roi, Kro32f vMin,
                                       Kro32f vMax);
KROAPI kroStatus kroiGammaFwd_32f_AC4R(const Kro32f* src, int srcStep, Kro32f* dst, int dstStep,
                                       KroSize roi, Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaFwd_32f_AC4IR(Kro32f* image, int step, KroSize roi, Kro32f vMin,
                                        Kro32f vMax);
KROAPI kroStatus kroiGammaFwd_32f_P3R(const Kro32f* const srcPlanes[3], int srcStep,
                                      Kro32f* const dstPlanes[3], int dstStep, KroSize roi,
                                      Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaFwd_32f_IP3R(Kro32f* const planes[3], int step, KroSize roi,
                                       Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaInv_32f_C3R(const Kro32f* src, int srcStep, Kro32f* dst, int dstStep,
                                      KroSize roi, Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaInv_32f_C3IR(Kro32f* image, int step, KroSize roi, Kro32f vMin,
                                       Kro32f vMax);
KROAPI kroStatus kroiGammaInv_32f_AC4R(const Kro32f* src, int srcStep, Kro32f* dst, int dstStep,
                                       KroSize roi, Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaInv_32f_AC4IR(Kro32f* image, int step, KroSize roi, Kro32f vMin,
                                        Kro32f vMax);
KROAPI kroStatus kroiGammaInv_32f_P3R(const Kro32f* const srcPlanes[3], int srcStep,
                                      Kro32f* const dstPlanes[3], int dstStep, KroSize roi,
                                      Kro32f vMin, Kro32f vMax);
KROAPI kroStatus kroiGammaInv_32f_IP3R(Kro32f* const planes[3], int step, KroSize roi,
                                       Kro32f vMin, Kro32f vMax);

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
