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

TEST_F(DebugOutputTest, InstalledSinkReceivesLinesUnchanged) {
  std::vector<TalString> lines;
  DebugOutput::setSink([&lines](const TalString& line) { lines.push_back(line); });
  DebugOutput::write(u"ODLEX: Unable to copy file.\r\n");
  DebugOutput::write(u"TalMSI: \u00e9\r\n");
  EXPECT_EQ(lines,
            (std::vector<TalString>{u"ODLEX: Unable to copy file.\r\n", u"TalMSI: \u00e9\r\n"}));
}

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

TEST_F(DebugOutputTest, ResetRestoresTheDefaultAndASinkMayReplaceItself) {
  int calls = 0;
  DebugOutput::setSink([&calls](const TalString&) {
    ++calls;
    DebugOutput::resetSink();
  });
  DebugOutput::write(u"one");
  DebugOutput::write(u"two");  // goes to the default, which is silent here
  EXPECT_EQ(calls, 1);
}

}  // namespace
