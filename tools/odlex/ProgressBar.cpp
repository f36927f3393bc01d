// Drawing the progress bar, in place on one line of stderr.

#include "ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace odlex::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kQuietStart = std::chrono::seconds(1);
constexpr auto kRedrawEvery = std::chrono::milliseconds(100);
constexpr std::uint64_t kBarWidth = 30;

}  // namespace

ProgressBar::ProgressBar(std::string label, std::string unit)
    : label_(std::move(label)), unit_(std::move(unit)) {
  const char* setting = std::getenv("ODLEX_PROGRESS");
  const std::string_view mode = setting ? setting : "";
  mode_ = mode == "always"                                ? Mode::kAlways
          : mode == "never" || isatty(STDERR_FILENO) != 1 ? Mode::kNever
                                                          : Mode::kTerminal;
}

ProgressBar::~ProgressBar() {
  if (!drawn_)
    return;
  draw(done_, total_, true);
  std::fputc('\n', stderr);
}

void ProgressBar::show(std::uint64_t done, std::uint64_t total) {
  done_ = done;
  total_ = total;
  if (mode_ == Mode::kNever)
    return;
  const Clock::time_point now = Clock::now();
  if ((mode_ == Mode::kTerminal && now - start_ < kQuietStart) ||
      (drawn_ && now - lastDrawn_ < kRedrawEvery))
    return;
  lastDrawn_ = now;
  drawn_ = true;
  draw(done, total, false);
}

void ProgressBar::draw(std::uint64_t done, std::uint64_t total, bool last) const {
  const std::uint64_t whole = std::max({total, last ? done : done + 1, std::uint64_t{1}});
  const std::uint64_t filled = done * kBarWidth / whole;
  const std::uint64_t shown = unit_ == "MiB" ? done >> 20 : done;
  std::fprintf(stderr, "\r%s [%s%s] %3d%% %llu %s", label_.c_str(),
               std::string(static_cast<std::size_t>(filled), '#').c_str(),
               std::string(static_cast<std::size_t>(kBarWidth - filled), ' ').c_str(),
               static_cast<int>(done * 100 / whole), static_cast<unsigned long long>(shown),
               unit_.c_str());
  std::fflush(stderr);
}

}  // namespace odlex::cli
