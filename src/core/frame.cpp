// Library frame: allocator hooks, aligned blocks, array copy and zero, the
// rectangle copy and the version record.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kivvc.h"

#if KIVVC_X86
#include <emmintrin.h>  // SSE2 is part of the x86-64 baseline
#endif

extern "C" {
KIV_API void* (*i_malloc)(size_t) = std::malloc;
KIV_API void* (*i_calloc)(size_t, size_t) = std::calloc;
KIV_API void* (*i_realloc)(void*, size_t) = std::realloc;
KIV_API void (*i_free)(void*) = std::free;
KIV_API Kiv32s i_version = 1;
KIV_API Kiv32s i_min_version = 0;
}

namespace {

// The raw address is kept in the pointer-sized slot below the block, so the
// block starts at least sizeof(void*) and at most that plus 31 bytes above it.
constexpr std::size_t kAlign = 32;
constexpr std::size_t kSlot = sizeof(void*);
constexpr std::size_t kOverhead = kSlot + kAlign - 1;

void* aligned_alloc_through_hook(Kiv32s length) {
    if (length < 1) return nullptr;
    const std::size_t total = static_cast<std::size_t>(length) + kOverhead;  // no overflow on 64 bits
    void* raw = i_malloc(total);
    if (!raw) return nullptr;
    const std::uintptr_t block = (reinterpret_cast<std::uintptr_t>(raw) + kOverhead) & ~(kAlign - 1);
    std::memcpy(reinterpret_cast<void*>(block - kSlot), &raw, kSlot);
    return reinterpret_cast<void*>(block);
}

// Below 8 KiB (or the 16-bit equivalent) a plain copy; in the middle regime
// the same copy; from 16 KiB the source is touched 4 KiB at a time, one
// prefetch per 32 bytes, before that stretch is copied.
void copy_bytes(const Kiv8u* src, Kiv8u* dst, std::size_t bytes) {
    constexpr std::size_t kPrefetchFrom = 16384;
    constexpr std::size_t kChunk = 4096;
    if (bytes < kPrefetchFrom) {
        std::memcpy(dst, src, bytes);
        return;
    }
    while (bytes >= kChunk) {
        for (std::size_t i = 0; i < kChunk; i += 32) __builtin_prefetch(src + i);
        std::memcpy(dst, src, kChunk);
        src += kChunk;
        dst += kChunk;
        bytes -= kChunk;
    }
    std::memcpy(dst, src, bytes);
}

void zero_bytes(Kiv8u* dst, std::size_t bytes, bool streaming) {
#if KIVVC_X86
    if (streaming) {
        // Head up to a 16-byte boundary, non-temporal body, tail.
        const std::size_t head = (16 - (reinterpret_cast<std::uintptr_t>(dst) & 15)) & 15;
        std::memset(dst, 0, head);
        dst += head;
        bytes -= head;
        const __m128i zero = _mm_setzero_si128();
        for (; bytes >= 64; bytes -= 64, dst += 64) {
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst), zero);
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 16), zero);
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 32), zero);
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 48), zero);
        }
        _mm_sfence();
    }
#else
    (void)streaming;
#endif
    std::memset(dst, 0, bytes);
}

constexpr KivVersion kVersion = {5, 2, 108, 366, {'a', '6', 0, 0}, "libkivvca6.so.5.2", "5.2", "Jul 11 2007"};

}  // namespace

extern "C" {

KIV_API Kiv8u* kivsMalloc_8u(Kiv32s length) { return static_cast<Kiv8u*>(aligned_alloc_through_hook(length)); }

KIV_API Kiv8s* kivsMalloc_8s(Kiv32s length) { return static_cast<Kiv8s*>(aligned_alloc_through_hook(length)); }

KIV_API void kivsFree(void* block) {
    if (!block) return;
    void* raw;
    std::memcpy(&raw, static_cast<Kiv8u*>(block) - kSlot, kSlot);
    i_free(raw);
}

// Goes through the exported (interposable) kivsFree on purpose.
KIV_API void kiviFree(void* block) { kivsFree(block); }

KIV_API KivStatus kivsCopy_8u(const Kiv8u* src, Kiv8u* dst, Kiv32s length) {
    if (!src || !dst) return kivStsNullPointer;
    if (length < 1) return kivStsBadSize;
    copy_bytes(src, dst, static_cast<std::size_t>(length));
    return kivStsOk;
}

KIV_API KivStatus kivsCopy_16s(const Kiv16s* src, Kiv16s* dst, Kiv32s length) {
    if (!src || !dst) return kivStsNullPointer;
    if (length < 1) return kivStsBadSize;
    copy_bytes(reinterpret_cast<const Kiv8u*>(src), reinterpret_cast<Kiv8u*>(dst),
               static_cast<std::size_t>(length) * 2);
    return kivStsOk;
}

KIV_API KivStatus kivsZero_16s(Kiv16s* dst, Kiv32s length) {
    if (!dst) return kivStsNullPointer;
    if (length < 1) return kivStsBadSize;
    zero_bytes(reinterpret_cast<Kiv8u*>(dst), static_cast<std::size_t>(length) * 2, length >= 10240);
    return kivStsOk;
}

KIV_API KivStatus kiviCopy_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep, KiviSize roi) {
    if (!src || !dst) return kivStsNullPointer;
    if (roi.width < 1 || roi.height < 1) return kivStsBadSize;
    if (srcStep == dstStep && srcStep == roi.width) {
        copy_bytes(src, dst, static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(roi.height));
        return kivStsOk;
    }
    for (Kiv32s y = 0; y < roi.height; ++y) {
        std::memcpy(dst, src, static_cast<std::size_t>(roi.width));
        src += srcStep;
        dst += dstStep;
    }
    return kivStsOk;
}

KIV_API const KivVersion* kivvcGetLibVersion(void) { return &kVersion; }

}  // extern "C"
