#include "tests/test_main.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    skyvault::test::ReportCrashes();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
