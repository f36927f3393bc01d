#pragma once
// Checks that two packages read the same through msiinfo: the same tables in the same order,
// the same rows, the same streams byte for byte and the same summary information.

#include <cstdint>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace odlex::test {

// The code page the package's _ForceCodepage export names (0 when none).
std::uint32_t packageCodePage(const std::filesystem::path& package);

::testing::AssertionResult sameTables(const std::filesystem::path& expected,
                                      const std::filesystem::path& actual);
// Every stream msiinfo lists, byte for byte, the summary information's among them.
::testing::AssertionResult sameStreams(const std::filesystem::path& expected,
                                       const std::filesystem::path& actual);
::testing::AssertionResult sameSummary(const std::filesystem::path& expected,
                                       const std::filesystem::path& actual);

}  // namespace odlex::test
