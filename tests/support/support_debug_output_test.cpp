#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "odlex/support/DebugOutput.h"

namespace {

using odlex::DebugOutput;

class DebugOutputTest : public testing::Test {
 protected:
  void TearDown() override {
    DebugOutput::resetSink();
    unsetenv("ODLEX_DEBUG");
  }
};

TEST_F(DebugOutputTest, DefaultWritesUtf8ToStderrOnlyWhenAskedAndAnEmptySinkDropsIt) {
  unsetenv("ODLEX_DEBUG");
  testing::internal::CaptureStderr();
  DebugOutput::write(u"quiet\r\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  setenv("ODLEX_DEBUG", "1", 1);
  testing::internal::CaptureStderr();
  DebugOutput::write(u"MSI: \u00e9\r\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "MSI: \xC3\xA9\r\n");

  // An empty sink drops the output, even where the default would write it.
  DebugOutput::setSink(nullptr);
  testing::internal::CaptureStderr();
  DebugOutput::write(u"nothing happens\r\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// An installed sink receives each line unchanged; it may reset the sink from inside the call,
// after which the default (silent here) takes the lines.
TEST_F(DebugOutputTest, InstalledSinkReceivesLinesUnchangedAndMayReplaceItself) {
  std::vector<TalString> lines;
  DebugOutput::setSink([&lines](const TalString& line) {
    lines.push_back(line);
    DebugOutput::resetSink();
  });
  DebugOutput::write(u"TalMSI: \u00e9\r\n");
  DebugOutput::write(u"two");
  EXPECT_EQ(lines, std::vector<TalString>{u"TalMSI: \u00e9\r\n"});
}

}  // namespace
