#pragma once

#include <cstddef>
#include <string>

namespace ZelAgent {

/// The bytes of an answer that are made part by part, when the part before was sent.
class AnswerParts {
 public:
  AnswerParts() = default;
  AnswerParts(const AnswerParts&) = delete;
  AnswerParts& operator=(const AnswerParts&) = delete;
  virtual ~AnswerParts() = default;

  [[nodiscard]] virtual bool hasNext() const = 0;
  /// The next part. It is empty if the part cannot be made yet. A part of more than
  /// `Limits::shortAnswerBytes` bytes has at most `room` bytes. Precondition: there is a part.
  [[nodiscard]] virtual std::string next(std::size_t room) = 0;
};

}  // namespace ZelAgent
