#include "agent/serve/console/Pager.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "agent/language/DisplayWidth.h"

namespace ZelAgent {
namespace {

constexpr std::string_view question = "--More--";
constexpr int interruptKey = 3;  // Ctrl-C

std::size_t rowsOf(std::string_view line, std::size_t columns) {
  if (columns == 0) return 1;
  return std::max<std::size_t>(1, (displayWidth(line) + columns - 1) / columns);
}

// One row is for the question.
std::size_t rowsOfAScreen(const Screen& screen) {
  return std::max<std::size_t>(screen.rows, 2) - 1;
}

}  // namespace

Pager::Pager(std::ostream& out, Screen screen, ReadKey readKey)
    : out_(out), screen_(screen), readKey_(std::move(readKey)), free_(rowsOfAScreen(screen)) {}

bool Pager::line(std::string_view line) {
  const std::size_t needed = rowsOf(line, screen_.columns);
  const bool isFirst = free_ == rowsOfAScreen(screen_);
  if (screen_.rows > 0 && needed > free_ && !isFirst) wait(needed);
  if (isEnded_) return false;
  out_ << line << '\n';
  free_ -= std::min(free_, needed);
  return true;
}

void Pager::wait(std::size_t needed) {
  out_ << question << std::flush;
  while (true) {
    const int key = readKey_();
    isEnded_ = key < 0 || key == 'q' || key == 'Q' || key == interruptKey;
    if (key == ' ') free_ = rowsOfAScreen(screen_);
    if (key == '\r' || key == '\n') free_ = needed;
    if (isEnded_ || key == ' ' || key == '\r' || key == '\n') break;
  }
  out_ << '\r' << std::string(question.size(), ' ') << '\r' << std::flush;
}

}  // namespace ZelAgent
