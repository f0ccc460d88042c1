#include "agent/language/Progress.h"

#include <poll.h>
#include <unistd.h>

#include <utility>

namespace ZelAgent {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds untilTheFirst{1000};
constexpr milliseconds betweenTwo{200};
constexpr std::string_view erased = "\r\x1b[K";

// "1,000,000"
std::string grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3)
    text.insert(at - 3, 1, ',');
  return text;
}

}  // namespace

Progress::Progress(Output output, Clock clock)
    : output_(std::move(output)), clock_(std::move(clock)) {}

Progress::Output Progress::terminal(int descriptor) {
  if (isatty(descriptor) == 0) return {};
  return [descriptor](std::string_view text) {
    // A terminal that is stopped or closed only lacks the progress.
    pollfd ready{descriptor, POLLOUT, 0};
    if (poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return;
    [[maybe_unused]] const ssize_t written = write(descriptor, text.data(), text.size());
  };
}

void Progress::begin(std::string what, std::string unit, std::uint64_t total) {
  end();
  what_ = std::move(what);
  unit_ = std::move(unit);
  total_ = total;
  done_ = 0;
  looks_ = 0;
  if (output_) next_ = clock_() + untilTheFirst;
}

void Progress::step() {
  ++done_;
  look();
}

void Progress::look() {
  if (output_ && ++looks_ % stepsOfALook == 0) show();
}

void Progress::end() {
  if (std::exchange(isShown_, false)) output_(erased);
}

void Progress::show() {
  const Time now = clock_();
  if (now < next_) return;
  next_ = now + betweenTwo;
  output_(std::string(erased) + text());
  isShown_ = true;
}

std::string Progress::text() const {
  if (done_ == 0) return what_;
  const std::string all = total_ == 0 ? "" : " of " + grouped(total_);
  return what_ + ": " + grouped(done_) + all + ' ' + unit_;
}

}  // namespace ZelAgent
