#include <gtest/gtest.h>

namespace kivvc::test {
void register_differential_tests();
}

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    kivvc::test::register_differential_tests();
    return RUN_ALL_TESTS();
}
