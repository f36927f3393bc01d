#include "odlex/support/DebugOutput.h"

#include <cstdio>
#include <cstdlib>

namespace odlex {
namespace {

void WriteToStderrWhenAsked(const TalString& text) {
  if (std::getenv("ODLEX_DEBUG") == nullptr) {
    return;
  }
  const std::string utf8 = text.ToUtf8();
  std::fwrite(utf8.data(), 1, utf8.size(), stderr);
  std::fflush(stderr);
}

DebugOutput::Sink& CurrentSink() {
  static DebugOutput::Sink sink = WriteToStderrWhenAsked;
  return sink;
}

}  // namespace

void DebugOutput::write(const TalString& text) {
  const Sink sink = CurrentSink();  // a copy: the sink may replace itself
  if (sink) {
    sink(text);
  }
}

void DebugOutput::setSink(Sink sink) {
  CurrentSink() = std::move(sink);
}

void DebugOutput::resetSink() {
  CurrentSink() = WriteToStderrWhenAsked;
}

}  // namespace odlex
