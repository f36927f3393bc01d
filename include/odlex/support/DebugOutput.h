#pragma once
// The debugger output: where diagnostic lines go. By default a line is written to stderr as
// UTF-8 when the environment variable ODLEX_DEBUG is set, and dropped otherwise; a host or a
// test can install its own sink. For the host's thread only.

#include <functional>

#include "odlex/support/TalString.h"

namespace odlex {

class DebugOutput {
 public:
  using Sink = std::function<void(const TalString&)>;

  // Passes `text` to the sink as it is (callers end their lines with "\r\n").
  static void write(const TalString& text);
  // Installs `sink`; an empty function drops all output.
  static void setSink(Sink sink);
  // Goes back to the default (stderr when ODLEX_DEBUG is set).
  static void resetSink();
};

}  // namespace odlex
