// COM for the tests that read and write pictures, as the programs initialise it when they start.
#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

namespace skyvault {
namespace {

class ComEnvironment : public testing::Environment {
  public:
    void SetUp() override { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    void TearDown() override { CoUninitialize(); }
};

testing::Environment* const environment = testing::AddGlobalTestEnvironment(new ComEnvironment);

}  // namespace
}  // namespace skyvault
