#pragma once
// A progress bar on stderr for long work: "rewrite [#######       ]  23% 512 MiB".
//
// It is drawn only when stderr is a terminal and the work has gone on for over a second, so
// that quick commands and scripts see nothing; ODLEX_PROGRESS=always draws it from the start
// (for logs), ODLEX_PROGRESS=never never.

#include <chrono>
#include <cstdint>
#include <string>

namespace odlex::cli {

class ProgressBar {
 public:
  // `unit` follows the count: "MiB" shows bytes in MiB, anything else the plain count.
  ProgressBar(std::string label, std::string unit);
  // Draws the last count given and ends the line, when the bar was drawn.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // `done` of `total` (an estimate: `done` may pass it, and the bar then stays short of full
  // until the work ends); redrawn at most ten times a second.
  void show(std::uint64_t done, std::uint64_t total);

 private:
  enum class Mode { kTerminal, kAlways, kNever };

  // `last`: the work has ended, and the bar may show it full.
  void draw(std::uint64_t done, std::uint64_t total, bool last) const;

  std::string label_;
  std::string unit_;
  Mode mode_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point lastDrawn_{};
  std::uint64_t done_ = 0;
  std::uint64_t total_ = 0;
  bool drawn_ = false;
};

}  // namespace odlex::cli
