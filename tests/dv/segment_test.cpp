// DV segment decoding: random segments from the test writer decode back to
// every coefficient and parameter word for both forms, with spills inside
// macroblocks and across the segment; the redistribution corner cases; the
// error and limit rules; the one-pass decoder's limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "dv/dv_segment.h"
#include "dv/segment_writer.h"
#include "kivvc.h"

namespace {

using kivvc::test::Rng;
using namespace kivvc::test::dv;

constexpr Kiv16s kBackground = 0x5A5A;

struct Form {
    const char* name;
    int per_mb;
    const int* lengths;
    decltype(&kiviHuffmanDecodeSegment_DV_8u16s) decode;
    decltype(&kiviHuffmanDecodeSegmentOnePass_DV_8u16s) one_pass;
    bool mode_selects_zigzag;
};

const Form kForms[] = {
    {"DV", 6, kivvc::dv::nDVSD_BitSequenceLengths, kiviHuffmanDecodeSegment_DV_8u16s,
     kiviHuffmanDecodeSegmentOnePass_DV_8u16s, true},
    {"DV100", 8, kivvc::dv::nDV100_BitSequenceLengths, kiviHuffmanDecodeSegment_DV100_8u16s,
     kiviHuffmanDecodeSegmentOnePass_DV100_8u16s, false},
};

class DvSegment : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(kiviInitAllocHuffmanTable_DV_32u(kivDvCodeFirstLevel, kivDvCodeSecondLevel, &table_), kivStsOk);
        // Two different scans, so that a wrong choice shows.
        Rng rng(5);
        std::iota(zigzag_, zigzag_ + 64, 0u);
        std::iota(zigzag_ + 64, zigzag_ + 128, 0u);
        for (int t = 0; t < 2; ++t)
            for (int i = 63; i > 1; --i) std::swap(zigzag_[64 * t + i], zigzag_[64 * t + 1 + rng.range(0, i - 1)]);
    }
    void TearDown() override { kiviFreeHuffmanTable_DV_32u(table_); }

    const Kiv32u* scan(const Form& f, const BlockPlan& b) const {
        return zigzag_ + (f.mode_selects_zigzag && b.mode ? 64 : 0);
    }

    struct Decoded {
        KivStatus status;
        std::vector<Kiv16s> blocks;
        std::vector<Kiv32u> params;
    };
    Decoded decode(const Form& f, const Segment& s, int limit = -1000) const {
        const int n = 5 * f.per_mb;
        Decoded d{0, std::vector<Kiv16s>(std::size_t(64 * n), kBackground), std::vector<Kiv32u>(std::size_t(n), 0xEEEEEEEE)};
        // The segment in an exact allocation: any read past it is caught under ASan.
        std::vector<Kiv8u> exact(s.bytes);
        d.status = limit == -1000 ? f.decode(exact.data(), zigzag_, table_, d.blocks.data(), d.params.data())
                                  : f.one_pass(exact.data(), zigzag_, table_, d.blocks.data(), d.params.data(), limit);
        return d;
    }

    void expect_blocks(const Form& f, const std::vector<BlockPlan>& plan, const Segment& s, const Decoded& d,
                       const Kiv8u* sta_qno) const {
        for (int n = 0; n < int(plan.size()); ++n) {
            const BlockPlan& b = plan[std::size_t(n)];
            ASSERT_EQ(block(d, n), expected_block(b, scan(f, b), kBackground)) << f.name << " block " << n;
            int byte = (n / f.per_mb) * 80 + 4;
            for (int i = 0; i < n % f.per_mb; ++i) byte += f.lengths[i];
            const Kiv32u param = Kiv32u{sta_qno[n / f.per_mb]} << 16 | Kiv32u{s.bytes[std::size_t(byte)]} << 8 |
                                 s.bytes[std::size_t(byte + 1)];
            ASSERT_EQ(d.params[std::size_t(n)], param) << f.name << " block " << n;
        }
    }

    static std::vector<Kiv16s> block(const Decoded& d, int n) {
        return {d.blocks.begin() + 64 * n, d.blocks.begin() + 64 * (n + 1)};
    }

    Kiv32u* table_ = nullptr;
    Kiv32u zigzag_[128];
};

// `count` random blocks, each of a density drawn from lo..hi (see random_block).
std::vector<BlockPlan> random_plan(Rng& rng, int count, int lo, int hi) {
    std::vector<BlockPlan> plan;
    for (int n = 0; n < count; ++n) plan.push_back(random_block(rng, rng.range(lo, hi)));
    return plan;
}

TEST_F(DvSegment, RandomSegmentsRoundTrip) {
    Rng rng(1);
    int spilled_far = 0;
    for (const Form& f : kForms) {
        for (int run = 0; run < 600; ++run) {
            // Densities from sparse (room to spare) to dense (segment-wide spills).
            const int fill = run % 4 == 0 ? rng.range(40, 80) : rng.range(80, 97);
            const auto plan = random_plan(rng, 5 * f.per_mb, fill, fill);
            Kiv8u sta_qno[5];
            for (auto& v : sta_qno) v = static_cast<Kiv8u>(rng.next());
            const Segment s = write_segment(plan, f.per_mb, f.lengths, sta_qno, rng);
            if (!s.fits) continue;
            const Decoded d = decode(f, s);
            ASSERT_EQ(d.status, kivStsOk) << f.name << " run " << run;
            expect_blocks(f, plan, s, d, sta_qno);
            spilled_far += fill > 90;
        }
    }
    EXPECT_GT(spilled_far, 50);  // dense segments that still fit were common enough
}

TEST_F(DvSegment, RedistributionCorners) {
    Rng rng(2);
    const Form& f = kForms[0];
    const Kiv8u sta_qno[5] = {0x12, 0x34, 0x56, 0x78, 0x9A};
    for (int shape = 0; shape < 5; ++shape) {
        for (int run = 0; run < 50; ++run) {
            auto plan = random_plan(rng, 30, 30, 30);
            BlockPlan& b = plan[0];
            b.events.clear();
            // Block 0 has 100 bits for its codes: 32 three-bit codes and the
            // end of block fill it exactly; one more code makes it cut a code
            // at the area's end; long codes and escapes make it spill far.
            const int ones = shape == 0 ? 32 : 33;
            for (int i = 0; i < ones; ++i) b.events.push_back({0, rng.chance(2) ? 1 : -1, false});
            if (shape == 2) b.events.push_back({3, 7, false});  // 13-bit code across the end
            if (shape >= 3) {
                for (int i = 0; i < 6; ++i) b.events.push_back({0, rng.range(23, 255) * (i % 2 ? -1 : 1), true});
                b.events.push_back({0, shape == 3 ? 255 : -255, true});
            }
            if (shape == 4) {
                // Blocks 1..5 spill too, so that block 0 runs into other macroblocks.
                for (int n = 1; n < 6; ++n) {
                    plan[std::size_t(n)].events.clear();
                    for (int i = 0; i < 30; ++i) plan[std::size_t(n)].events.push_back({0, 2, false});
                }
            }
            const Segment s = write_segment(plan, f.per_mb, f.lengths, sta_qno, rng);
            ASSERT_TRUE(s.fits);
            const Decoded d = decode(f, s);
            ASSERT_EQ(d.status, kivStsOk) << "shape " << shape;
            expect_blocks(f, plan, s, d, sta_qno);
        }
    }
}

TEST_F(DvSegment, PastPosition63IsAnErrorInEveryPass) {
    Rng rng(3);
    const Kiv8u sta_qno[5] = {1, 2, 3, 4, 5};
    for (const Form& f : kForms) {
        // Block `victim` codes 63 ones and then one more: in its own area
        // (a long zero run), in its macroblock's spare bits, or in the segment's.
        for (int where = 0; where < 3; ++where) {
            auto plan = random_plan(rng, 5 * f.per_mb, 30, 30);
            const int victim = where == 2 ? f.per_mb + 1 : 1;
            BlockPlan& b = plan[std::size_t(victim)];
            b.events.clear();
            if (where == 0) {
                b.events = {{62, 0, false}, {0, 1, false}};
            } else {
                for (int i = 0; i < 63; ++i) b.events.push_back({0, 1, false});
                b.events.push_back({0, 1, false});
            }
            if (where == 2)  // fill the rest of macroblock 1 so the spill leaves it
                for (int n = f.per_mb; n < 2 * f.per_mb; ++n)
                    if (n != victim) {
                        plan[std::size_t(n)].events.clear();
                        for (int i = 0; i < 20; ++i) plan[std::size_t(n)].events.push_back({0, 5, false});
                    }
            const Segment s = write_segment(plan, f.per_mb, f.lengths, sta_qno, rng);
            const Decoded d = decode(f, s);
            EXPECT_EQ(d.status, kivStsBadBitstreamCode) << f.name << " where " << where;
            if (where == 0) {
                // Pass 1 stops at the bad block: later parameter words are not written.
                EXPECT_NE(d.params[std::size_t(victim)], 0xEEEEEEEEu);
                EXPECT_EQ(d.params[std::size_t(victim + 1)], 0xEEEEEEEEu);
                // The one-pass decoder just stops before the code that would pass 63.
                const Decoded quick = decode(f, s, 100);
                EXPECT_EQ(quick.status, kivStsOk);
                BlockPlan first = b;
                first.events.pop_back();
                const auto want = expected_block(first, scan(f, first), kBackground);
                EXPECT_EQ(block(quick, victim), want);
            } else {
                EXPECT_NE(d.params.back(), 0xEEEEEEEEu);
            }
        }
    }
}

TEST_F(DvSegment, BitsRunningOutIsNotAnError) {
    Rng rng(4);
    const Kiv8u sta_qno[5] = {};
    for (const Form& f : kForms) {
        auto plan = random_plan(rng, 5 * f.per_mb, 99, 99);
        for (auto& b : plan)  // escapes everywhere: far more bits than the segment holds
            for (auto& e : b.events) e = {0, 100, true};
        const Segment s = write_segment(plan, f.per_mb, f.lengths, sta_qno, rng);
        ASSERT_FALSE(s.fits);
        const Decoded d = decode(f, s);
        EXPECT_EQ(d.status, kivStsOk);
        // Every block got its parameter word and DC and at least its own area's codes.
        for (int n = 0; n < 5 * f.per_mb; ++n) {
            EXPECT_NE(d.params[std::size_t(n)], 0xEEEEEEEEu);
            EXPECT_EQ(d.blocks[std::size_t(64 * n)], plan[std::size_t(n)].dc * 128);
        }
    }
}

TEST_F(DvSegment, CodeWithoutEntryIsAnError) {
    // A table without second-level codes: the first long code is an error,
    // while a block that holds fewer than 13 bits there is just unfinished.
    static const Kiv32s kEmpty[] = {9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    Kiv32u* bare = nullptr;
    ASSERT_EQ(kiviInitAllocHuffmanTable_DV_32u(kivDvCodeFirstLevel, kEmpty, &bare), kivStsOk);
    Rng rng(6);
    auto plan = random_plan(rng, 30, 30, 30);
    plan[0].events = {{0, 18, false}};  // 1111 0101 1 + sign: second level
    const Kiv8u sta_qno[5] = {};
    const Segment s = write_segment(plan, 6, kivvc::dv::nDVSD_BitSequenceLengths, sta_qno, rng);
    std::vector<Kiv16s> blocks(64 * 30);
    std::vector<Kiv32u> params(30);
    EXPECT_EQ(kiviHuffmanDecodeSegment_DV_8u16s(s.bytes.data(), zigzag_, bare, blocks.data(), params.data()),
              kivStsBadBitstreamCode);
    kiviFreeHuffmanTable_DV_32u(bare);
}

TEST_F(DvSegment, OnePassStaysInItsAreaAndStopsAtTheLimit) {
    Rng rng(7);
    for (const Form& f : kForms) {
        for (int run = 0; run < 200; ++run) {
            const auto plan = random_plan(rng, 5 * f.per_mb, 50, 97);
            Kiv8u sta_qno[5];
            for (auto& v : sta_qno) v = static_cast<Kiv8u>(rng.next());
            const Segment s = write_segment(plan, f.per_mb, f.lengths, sta_qno, rng);
            const int limit = run % 5 == 0 ? rng.range(-3, 1) : rng.range(2, 70);
            const Decoded d = decode(f, s, limit);
            ASSERT_EQ(d.status, kivStsOk);
            for (int n = 0; n < 5 * f.per_mb; ++n) {
                const BlockPlan& b = plan[std::size_t(n)];
                // The codes that lie wholly in the area and start below the limit.
                const int room = f.lengths[n % f.per_mb] * 8 - 12;
                int bits = 0, k = 1;
                std::size_t events = 0;
                for (; events < b.events.size() && k < limit; ++events) {
                    BlockPlan single;
                    single.events = {b.events[events]};
                    single.end_of_block = false;
                    bits += code_block(single).size();
                    if (bits > room) break;
                    k += b.events[events].run + 1;
                }
                ASSERT_EQ(block(d, n), expected_block(b, scan(f, b), kBackground, events))
                    << f.name << " run " << run << " limit " << limit << " block " << n;
                EXPECT_NE(d.params[std::size_t(n)], 0xEEEEEEEEu);
            }
        }
    }
}

TEST_F(DvSegment, NullPointersInOrder) {
    Kiv8u stream[400] = {};
    Kiv16s blocks[64 * 40];
    Kiv32u params[40];
    for (const Form& f : kForms) {
        EXPECT_EQ(f.decode(nullptr, zigzag_, table_, blocks, params), kivStsNullPointer);
        EXPECT_EQ(f.decode(stream, zigzag_, nullptr, blocks, params), kivStsNullPointer);
        EXPECT_EQ(f.decode(stream, zigzag_, table_, blocks, nullptr), kivStsNullPointer);
        EXPECT_EQ(f.one_pass(stream, zigzag_, table_, blocks, nullptr, 64), kivStsNullPointer);
        EXPECT_EQ(f.one_pass(nullptr, zigzag_, table_, blocks, params, 64), kivStsNullPointer);
    }
}

}  // namespace
