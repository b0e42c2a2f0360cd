/*
 * kivvc: video-coding primitives behind a flat C interface.
 *
 * One header for the whole library, valid C99 and C++. Sections follow the
 * families of the library: frame, block copy, block metrics, MPEG-1/2,
 * H.264 residual, H.264 inter, MPEG-4, H.263/H.261, VC-1, DV and
 * pre/post-processing.
 *
 * Conventions that hold for every function below unless its comment says
 * otherwise:
 *  - The result is a KivStatus: 0 success, negative error, positive warning.
 *  - Checks run before any memory is touched: required pointers in parameter
 *    order (then pointers held inside pointer arguments), then the function's
 *    own checks in the order its comment lists. When a check fails nothing is
 *    written.
 *  - Row steps are signed byte counts, also for 16-bit data (the 16-bit H.264
 *    inter-prediction, weighting and deblocking functions count samples).
 *    Fixed-size block functions check pointers only and trust their steps.
 *  - This is a 64-bit build: record fields that hold pointers are native
 *    pointers.
 */
#ifndef KIVVC_H
#define KIVVC_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#define KIV_API
#elif defined(__GNUC__)
#define KIV_API __attribute__((visibility("default")))
#else
#define KIV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================== */
/* Frame: types, statuses, memory, version                                  */
/* ======================================================================== */

typedef uint8_t  Kiv8u;
typedef int8_t   Kiv8s;
typedef uint16_t Kiv16u;
typedef int16_t  Kiv16s;
typedef uint32_t Kiv32u;
typedef int32_t  Kiv32s;

typedef struct { Kiv32s width, height; } KiviSize;
typedef struct { Kiv32s x, y; } KiviPoint;
typedef struct { Kiv32s x, y, width, height; } KiviRect;

typedef Kiv32s KivStatus;
enum {
    kivStsOk                   = 0,
    kivStsWarnPartial          = 35,   /* odd width/height: largest even rectangle done */
    kivStsWarnNeighbourMissing = 11,   /* an unavailable intra neighbour was replaced by 128 */
    kivStsNotImplemented       = -2,
    kivStsBadArgument          = -5,
    kivStsBadSize              = -6,
    kivStsNullPointer          = -8,
    kivStsNoMemory             = -9,
    kivStsDivByZero            = -10,
    kivStsOutOfRange           = -11,
    kivStsLevelOutOfRange      = -13,
    kivStsBadStep              = -14,
    kivStsContextMismatch      = -17,
    kivStsBadResizeMode        = -22,
    kivStsBadResizeFactor      = -23,
    kivStsBadVlcCode           = -74,
    kivStsBadIntraPredMode     = -117,
    kivStsBadBitstreamCode     = -191,
    kivStsBadQp                = -192,
    kivStsBadBitOffset         = -193
};

/* The constant version record. */
typedef struct {
    Kiv32s majorVersion;      /* 5 */
    Kiv32s minorVersion;      /* 2 */
    Kiv32s majorBuild;        /* 108 */
    Kiv32s buildNumber;       /* 366 */
    char targetCpu[4];        /* "a6", zero-padded */
    const char *libraryName;  /* "libkivvca6.so.5.2" */
    const char *versionText;  /* "5.2" */
    const char *buildDate;    /* "Jul 11 2007" */
} KivVersion;

/* Allocator hooks. They start as the C library's malloc, calloc, realloc and
 * free. A client may replace them before its first allocation; the library
 * calls i_malloc in every kivsMalloc_8u/kivsMalloc_8s and i_free in every
 * kivsFree without testing them for null, so a replacement must always be
 * callable. i_calloc and i_realloc are published for clients and are never
 * called by the library. */
extern KIV_API void *(*i_malloc)(size_t size);
extern KIV_API void *(*i_calloc)(size_t count, size_t size);
extern KIV_API void *(*i_realloc)(void *block, size_t size);
extern KIV_API void (*i_free)(void *block);
/* Published for clients and companion libraries (1 and 0); never read or
 * written by this library. */
extern KIV_API Kiv32s i_version;
extern KIV_API Kiv32s i_min_version;

/* A block of `length` bytes aligned to 32 bytes, allocated through i_malloc,
 * or null when length < 1 (the hook is not called) or the hook returns null.
 * The pointer-sized slot just below the block holds the address i_malloc
 * returned; the size computation cannot overflow for any Kiv32s length.
 * Release it with kivsFree or kiviFree only. */
KIV_API Kiv8u *kivsMalloc_8u(Kiv32s length);
/* As kivsMalloc_8u, typed Kiv8s. */
KIV_API Kiv8s *kivsMalloc_8s(Kiv32s length);
/* Releases a block from kivsMalloc_8u/kivsMalloc_8s through i_free; null does
 * nothing. */
KIV_API void kivsFree(void *block);
/* Same as kivsFree, and forwards to the exported kivsFree so that a client
 * interposing kivsFree sees these releases too. */
KIV_API void kiviFree(void *block);

/* Copies `length` bytes from src to dst (no overlap). Statuses: NullPointer
 * (src, dst), BadSize (length < 1). */
KIV_API KivStatus kivsCopy_8u(const Kiv8u *src, Kiv8u *dst, Kiv32s length);
/* Copies `length` 16-bit elements. Statuses as kivsCopy_8u. */
KIV_API KivStatus kivsCopy_16s(const Kiv16s *src, Kiv16s *dst, Kiv32s length);
/* Stores zero into `length` 16-bit elements. Statuses: NullPointer (dst),
 * BadSize (length < 1). */
KIV_API KivStatus kivsZero_16s(Kiv16s *dst, Kiv32s length);
/* Copies a width x height rectangle of bytes row by row (as one run when both
 * steps equal the width). Statuses: NullPointer (src, dst), BadSize (width or
 * height < 1). Steps are not validated. */
KIV_API KivStatus kiviCopy_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst,
                                  Kiv32s dstStep, KiviSize roiSize);
/* The constant version record; the same address on every call. */
KIV_API const KivVersion *kivvcGetLibVersion(void);

/* Bitstream cursors. Word cursor: (Kiv32u **ppBitStream, Kiv32s *pOffset),
 * words in host order, first stream bit = bit 31 of the first word. A reader's
 * offset is the index (31..0) of the next unread bit; a writer's offset is the
 * number of free bits of the current word (32..1). Word-cursor readers load
 * the word after the current one, so the buffer must be readable one 32-bit
 * word beyond the last code; apart from kiviDecodeExpGolombOne_H264_1u16s they
 * do not validate the offset and use only its low five bits. Word-cursor
 * writers OR into the current word: the words from the cursor on must be zero.
 * Byte cursor: (Kiv8u **ppBitStream, int *pBitOffset), the offset counting the
 * bits of the current byte already consumed or written (0..7); readers may load
 * up to four bytes past the byte holding the last bit consumed. */

/* ======================================================================== */
/* Block copy, average and add (8-bit samples)                              */
/* ======================================================================== */
/* Half-sample position `acc`: bit 0 horizontal half, bit 1 vertical half
 * (higher bits ignored). `rounding`: bit 0 only; 0 rounds half-sample averages
 * up, 1 rounds them down. Half-sample kernels read one column more (HF, HH)
 * and one row more (FH, HH) than the block. The only status is NullPointer. */

/* Copies an 8x8 block. */
KIV_API KivStatus kiviCopy8x8_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep);
/* Copies a 16x16 block. */
KIV_API KivStatus kiviCopy16x16_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep);
/* Half-sample prediction of an 8-wide, 4-high block at position acc. */
KIV_API KivStatus kiviCopy8x4HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* Half-sample prediction of an 8x8 block. */
KIV_API KivStatus kiviCopy8x8HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* Half-sample prediction of a 16-wide, 8-high block. */
KIV_API KivStatus kiviCopy16x8HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* Half-sample prediction of a 16x16 block. */
KIV_API KivStatus kiviCopy16x16HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* pSrcDst = (pSrcDst + pSrc + 1) >> 1 over 8x8. Pointers tested: pSrcDst, then pSrc. */
KIV_API KivStatus kiviAverage8x8_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep);
/* As kiviAverage8x8_8u_C1IR over 16x16. */
KIV_API KivStatus kiviAverage16x16_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep);
/* pDst = (pSrc1 + pSrc2 + 1) >> 1 over 8x8. */
KIV_API KivStatus kiviAverage8x8_8u_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv8u *pDst, Kiv32s dstStep);
/* As kiviAverage8x8_8u_C1R over 16x16. */
KIV_API KivStatus kiviAverage16x16_8u_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv8u *pDst, Kiv32s dstStep);
/* pSrcDst = (pSrcDst + p + 1) >> 1, p the half-sample prediction from pSrc
 * at (acc, rounding); the final average always rounds up. 8 wide, 4 high. */
KIV_API KivStatus kiviInterpolateAverage8x4_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* As kiviInterpolateAverage8x4_8u_C1IR, 8x8. */
KIV_API KivStatus kiviInterpolateAverage8x8_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* As kiviInterpolateAverage8x4_8u_C1IR, 16 wide, 8 high. */
KIV_API KivStatus kiviInterpolateAverage16x8_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* As kiviInterpolateAverage8x4_8u_C1IR, 16x16. */
KIV_API KivStatus kiviInterpolateAverage16x16_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* pSrcDst = sat(pSrcDst + residual) over 8x8, the sum formed in 16 bits and
 * saturated to 0..255. residualStep is in bytes. Residuals are expected in
 * -2048..2047; outside that the 16-bit sum wraps (we keep the wrap, so that
 * scalar and SIMD paths agree for any input). */
KIV_API KivStatus kiviAdd8x8_16s8u_C1IRS(const Kiv16s *pResidual, Kiv32s residualStep, Kiv8u *pSrcDst, Kiv32s srcDstStep);
/* pDst = sat(p + residual), p the half-sample prediction from pRef at (acc,
 * rounding), 8x8; the 16-bit sum wraps as in kiviAdd8x8_16s8u_C1IRS. */
KIV_API KivStatus kiviAdd8x8HP_16s8u_C1RS(const Kiv16s *pResidual, Kiv32s residualStep, const Kiv8u *pRef, Kiv32s refStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* pSrcDst = sat(pSrcDst + value) over 8x8 (16-bit sum, wraps as above). */
KIV_API KivStatus kiviAddC8x8_16s8u_C1IR(Kiv16s value, Kiv8u *pSrcDst, Kiv32s srcDstStep);

/* ---- section: block metrics ---- */
/* ---- end section: block metrics ---- */

/* ---- section: mpeg2 ---- */
/* ---- end section: mpeg2 ---- */

/* ---- section: h264 residual ---- */
/* ---- end section: h264 residual ---- */

/* ---- section: h264 intra ---- */
/* ---- end section: h264 intra ---- */

/* ---- section: h264 encoder ---- */
/* ---- end section: h264 encoder ---- */

/* ---- section: h264 inter ---- */
/* ---- end section: h264 inter ---- */

/* ---- section: h264 deblocking ---- */
/* ---- end section: h264 deblocking ---- */

/* ---- section: mpeg4 ---- */
/* ---- end section: mpeg4 ---- */

/* ---- section: mpeg4 sprite and postfilter ---- */
/* ---- end section: mpeg4 sprite and postfilter ---- */

/* ---- section: h263 ---- */
/* ---- end section: h263 ---- */

/* ---- section: vc1 ---- */
/* ---- end section: vc1 ---- */

/* ---- section: dv ---- */
/* ---- end section: dv ---- */

/* ---- section: prepost ---- */
/* ---- end section: prepost ---- */

#ifdef __cplusplus
}
#endif

#endif /* KIVVC_H */
