#include "support/run_fixture.h"

namespace quellix {
namespace {

using Win32RegistryTest = RunFixture;

TEST_F(Win32RegistryTest, KeysThatStandForPerformanceDataAreNoError) {
  constexpr const char* kPerflib = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Perflib";
  const auto perflib =
      ports.registry.Open(RegistryRoot::kLocalMachine, kPerflib, RegistryAccess::kRead);
  ASSERT_TRUE(perflib);
  for (uint32_t i = 0; const auto name = perflib->SubKeyAt(i); ++i) {
    const auto language = perflib->Open(*name, RegistryAccess::kRead);
    if (language) {
      EXPECT_NO_THROW(language->SubKeyAt(0)) << *name;
    }
  }
}

}  // namespace
}  // namespace quellix
