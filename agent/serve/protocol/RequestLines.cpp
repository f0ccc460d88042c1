#include "agent/serve/protocol/RequestLines.h"

namespace ZelAgent {

void RequestLines::append(std::string_view bytes) {
  if (isBroken_) return;
  bytes_.erase(0, taken_);
  searched_ -= taken_;
  if (newline_ != nowhere) newline_ -= taken_;
  taken_ = 0;
  bytes_ += bytes;
  findNewline();
}

void RequestLines::findNewline() {
  if (newline_ != nowhere) return;
  newline_ = bytes_.find('\n', searched_);
  searched_ = newline_ == nowhere ? bytes_.size() : newline_;
}

bool RequestLines::hasNext() const noexcept {
  if (isBroken_) return false;
  const std::size_t left = bytes_.size() - taken_;
  return newline_ != nowhere || left > longest || (isEnded_ && left > 0);
}

RequestLine RequestLines::next() {
  const std::size_t size = (newline_ == nowhere ? bytes_.size() : newline_) - taken_;
  if (size > longest) return giveBeginning();
  RequestLine line{newline_ == nowhere ? RequestLine::Kind::unfinished : RequestLine::Kind::whole,
                   bytes_.substr(taken_, size)};
  taken_ = newline_ == nowhere ? bytes_.size() : newline_ + 1;
  searched_ = taken_;
  newline_ = nowhere;
  findNewline();
  return line;
}

RequestLine RequestLines::giveBeginning() {
  isBroken_ = true;
  RequestLine line{RequestLine::Kind::tooLong, bytes_.substr(taken_, shownOfTooLong)};
  std::string().swap(bytes_);
  taken_ = 0;
  return line;
}

}  // namespace ZelAgent
