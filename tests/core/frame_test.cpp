// Frame services: aligned allocation through the hooks, copy/zero regimes,
// the rectangle copy and the version record.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "kivvc.h"

namespace {

int g_malloc_calls = 0;
std::size_t g_last_size = 0;
void* g_last_raw = nullptr;
void* g_last_freed = nullptr;

void* counting_malloc(std::size_t n) {
    ++g_malloc_calls;
    g_last_size = n;
    return g_last_raw = std::malloc(n);
}
void* failing_malloc(std::size_t) {
    ++g_malloc_calls;
    return nullptr;
}
void recording_free(void* p) {
    g_last_freed = p;
    std::free(p);
}

struct HookGuard {
    decltype(i_malloc) m = i_malloc;
    decltype(i_free) f = i_free;
    HookGuard() { g_malloc_calls = 0; }
    ~HookGuard() {
        i_malloc = m;
        i_free = f;
    }
};

TEST(Frame, AllocationGoesThroughTheHooksAndIsAligned) {
    HookGuard guard;
    i_malloc = counting_malloc;
    i_free = recording_free;
    EXPECT_EQ(kivsMalloc_8u(0), nullptr);
    EXPECT_EQ(kivsMalloc_8s(-5), nullptr);
    EXPECT_EQ(g_malloc_calls, 0);

    for (Kiv32s len : {1, 31, 32, 33, 4096}) {
        Kiv8u* p = kivsMalloc_8u(len);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 32, 0u);
        void* slot;
        std::memcpy(&slot, p - sizeof(void*), sizeof(void*));
        EXPECT_EQ(slot, g_last_raw);
        // The whole length lies inside the raw allocation.
        EXPECT_LE(p + len, static_cast<Kiv8u*>(g_last_raw) + g_last_size);
        std::memset(p, 0xA5, std::size_t(len));
        void* raw = g_last_raw;
        kiviFree(p);
        EXPECT_EQ(g_last_freed, raw);
    }
    // The largest length does not overflow the size passed to the hook.
    i_malloc = failing_malloc;
    EXPECT_EQ(kivsMalloc_8u(0x7FFFFFFF), nullptr);
    EXPECT_EQ(g_malloc_calls, 1 + 5);

    g_last_freed = reinterpret_cast<void*>(1);
    kivsFree(nullptr);
    kiviFree(nullptr);
    EXPECT_EQ(g_last_freed, reinterpret_cast<void*>(1));
}

// op(src + 1, dst + 3, len) at lengths around each size threshold (the odd
// offsets exercise heads and tails) copies (or zeroes) exactly len elements.
template <class T, class Op>
void check_array_op(std::initializer_list<int> lengths, bool copy, Op op) {
    for (int len : lengths) {
        std::vector<T> src(std::size_t(len) + 3), dst(std::size_t(len) + 5, T(0x6E));
        for (std::size_t i = 0; i < src.size(); ++i) src[i] = static_cast<T>(i * 7 + 3);
        ASSERT_EQ(op(src.data() + 1, dst.data() + 3, len), kivStsOk);
        for (int i = -1; i <= len; ++i)
            ASSERT_EQ(dst[std::size_t(i + 3)], i < 0 || i == len ? T(0x6E) : copy ? src[std::size_t(i + 1)] : T(0))
                << len << " at " << i;
    }
}

TEST(Frame, ArrayCopyAndZeroAcrossTheirSizeRegimes) {
    EXPECT_EQ(kivsCopy_8u(nullptr, reinterpret_cast<Kiv8u*>(&g_malloc_calls), 1), kivStsNullPointer);
    Kiv8u b = 7;
    EXPECT_EQ(kivsCopy_8u(&b, &b, 0), kivStsBadSize);
    EXPECT_EQ(kivsZero_16s(nullptr, 4), kivStsNullPointer);
    EXPECT_EQ(kivsCopy_16s(reinterpret_cast<Kiv16s*>(&b), nullptr, 1), kivStsNullPointer);

    check_array_op<Kiv8u>({1, 63, 8191, 8192, 16383, 16384, 16385, 40000}, true, kivsCopy_8u);
    check_array_op<Kiv16s>({1, 4095, 4096, 8192, 9000}, true, kivsCopy_16s);
    check_array_op<Kiv16s>({1, 10239, 10240, 20001}, false,
                           [](const Kiv16s*, Kiv16s* d, int n) { return kivsZero_16s(d, n); });
}

TEST(Frame, RectangleCopyLeavesBytesBetweenRowsAlone) {
    std::vector<Kiv8u> src(100), dst(100, 0xCC);
    for (int i = 0; i < 100; ++i) src[std::size_t(i)] = static_cast<Kiv8u>(i);
    // Contiguous case: exactly width x height bytes.
    ASSERT_EQ(kiviCopy_8u_C1R(src.data(), 7, dst.data(), 7, KiviSize{7, 3}), kivStsOk);
    EXPECT_EQ(std::memcmp(src.data(), dst.data(), 21), 0);
    EXPECT_EQ(dst[21], 0xCC);
    std::fill(dst.begin(), dst.end(), 0xCC);
    ASSERT_EQ(kiviCopy_8u_C1R(src.data(), 10, dst.data(), 12, KiviSize{5, 4}), kivStsOk);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 12; ++x)
            EXPECT_EQ(dst[std::size_t(y * 12 + x)], x < 5 ? src[std::size_t(y * 10 + x)] : 0xCC);
    EXPECT_EQ(kiviCopy_8u_C1R(src.data(), 10, dst.data(), 10, KiviSize{0, 4}), kivStsBadSize);
    EXPECT_EQ(kiviCopy_8u_C1R(nullptr, 10, dst.data(), 10, KiviSize{0, 4}), kivStsNullPointer);
}

TEST(Frame, VersionRecord) {
    const KivVersion* v = kivvcGetLibVersion();
    ASSERT_EQ(v, kivvcGetLibVersion());
    EXPECT_EQ(v->majorVersion, 5);
    EXPECT_EQ(v->minorVersion, 2);
    EXPECT_EQ(v->majorBuild, 108);
    EXPECT_EQ(v->buildNumber, 366);
    EXPECT_STREQ(v->targetCpu, "a6");
    EXPECT_EQ(v->targetCpu[3], 0);
    EXPECT_STREQ(v->libraryName, "libkivvca6.so.5.2");
    EXPECT_STREQ(v->versionText, "5.2");
    EXPECT_STREQ(v->buildDate, "Jul 11 2007");
    EXPECT_EQ(i_version, 1);
    EXPECT_EQ(i_min_version, 0);
}

}  // namespace
