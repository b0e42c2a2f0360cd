// The differential tester: every registered kernel case, at every CPU level
// whose table entry differs from the reference, against the reference on
// the same inputs. Seeds come from KIVVC_TEST_SEED (default fixed) and are
// printed on failure; KIVVC_DIFF_RUNS sets the runs per pattern.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

std::uint64_t base_seed() {
    const char* s = std::getenv("KIVVC_TEST_SEED");
    return s ? std::strtoull(s, nullptr, 0) : 0x6b69767663ull;
}

int runs_per_pattern() {
    const char* s = std::getenv("KIVVC_DIFF_RUNS");
    const int n = s ? std::atoi(s) : 0;
    return n > 0 ? n : 40;
}

class Differential : public ::testing::Test {
public:
    explicit Differential(const KernelCase* c) : case_(c) {}
    void TestBody() override {
        const void* ref = case_->pick(0);
        int compared = 0;
        for (CpuLevel level : levels_to_test()) {
            if (level == CpuLevel::Scalar) continue;
            const void* fn = case_->pick(flags_for_level(level));
            if (fn == ref) continue;
            ++compared;
            for (int pat = 0; pat < static_cast<int>(Pattern::Count); ++pat) {
                for (int run = 0; run < runs_per_pattern(); ++run) {
                    const std::uint64_t seed = base_seed() * 1000003u + std::uint64_t(pat) * 7919u + std::uint64_t(run);
                    TestProbe want(seed, static_cast<Pattern>(pat));
                    case_->test(ref, want);
                    TestProbe got(seed, static_cast<Pattern>(pat));
                    case_->test(fn, got);
                    ASSERT_TRUE(want.called()) << "exercise never called the kernel";
                    const std::string ref_fault = want.check_integrity();
                    ASSERT_TRUE(ref_fault.empty()) << "reference: " << ref_fault;
                    const std::string fault = got.check_integrity();
                    ASSERT_TRUE(fault.empty()) << level_name(level) << ": " << fault << " (seed " << seed << ")";
                    const auto a = want.outputs(), b = got.outputs();
                    ASSERT_EQ(a.size(), b.size());
                    for (std::size_t i = 0; i < a.size(); ++i) {
                        ASSERT_EQ(int(a[i]), int(b[i]))
                            << case_->family << "/" << case_->name << " at " << level_name(level) << ", pattern "
                            << pattern_name(static_cast<Pattern>(pat)) << ", seed " << seed << ": first mismatch at "
                            << got.locate(i);
                    }
                }
            }
        }
        if (compared == 0) GTEST_SKIP() << "no SIMD variant at the tested levels";
    }

private:
    const KernelCase* case_;
};

}  // namespace

void register_differential_tests() {
    for (const KernelCase& c : registry()) {
        std::string suite = "Differential_" + c.family;
        for (char& ch : suite)
            if (ch == '/') ch = '_';
        ::testing::RegisterTest(suite.c_str(), c.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                                [&c]() -> ::testing::Test* { return new Differential(&c); });
    }
}

}  // namespace kivvc::test
