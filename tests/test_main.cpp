#include <gtest/gtest.h>

#ifdef _WIN32
namespace skyvault::test {
void ReportCrashes();  // in test_main_win.cpp; elsewhere the shell sees the signal
}
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
    skyvault::test::ReportCrashes();
#endif
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
