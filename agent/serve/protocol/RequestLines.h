// Why: a socket gives bytes in pieces of any size, while a request is a line; and a client may send
// what never becomes one.
// Always: requests come out in the order of their bytes, however those were cut; no more than the
// longest line and what was appended last is kept. After a line that is too long nothing follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ZelAgent {

struct RequestLine {
  enum class Kind : std::uint8_t {
    whole,
    tooLong,     // the text is its beginning
    unfinished,  // the bytes ended before the line did
  };

  Kind kind = Kind::whole;
  std::string text;  // without the line end
};

class RequestLines final {
 public:
  static constexpr std::size_t longest = std::size_t{64} * 1024;

  void append(std::string_view bytes);
  // No more bytes will come.
  void end() noexcept { isEnded_ = true; }

  [[nodiscard]] bool hasNext() const noexcept;
  // Precondition: there is one.
  [[nodiscard]] RequestLine next();

 private:
  static constexpr std::size_t nowhere = std::string::npos;
  static constexpr std::size_t shownOfTooLong = 100;

  void findNewline();
  [[nodiscard]] RequestLine giveBeginning();

  std::string bytes_;
  std::size_t taken_ = 0;          // of bytes_
  std::size_t searched_ = 0;       // of bytes_; no line end is between taken_ and here
  std::size_t newline_ = nowhere;  // where the line at taken_ ends, once that is known
  bool isEnded_ = false;
  bool isBroken_ = false;  // a line was too long
};

}  // namespace ZelAgent
