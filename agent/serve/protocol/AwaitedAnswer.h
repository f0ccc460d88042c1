#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "agent/serve/protocol/AnswerParts.h"

namespace ZelAgent {

/// An answer whose command may have to wait. Its parts are empty until it can be answered. Then one
/// part is the whole answer.
class AwaitedAnswer final : public AnswerParts {
 public:
  /// Returns the answer, for which there is so much room; none while the command waits.
  using Ask = std::function<std::optional<std::string>(std::size_t room)>;

  explicit AwaitedAnswer(Ask ask) : ask_(std::move(ask)) {}

  [[nodiscard]] bool hasNext() const override { return ask_ != nullptr; }
  [[nodiscard]] std::string next(std::size_t room) override {
    const auto bytes = ask_(room);
    if (bytes) ask_ = nullptr;
    return bytes.value_or("");
  }

 private:
  Ask ask_;  // empty after the answer
};

}  // namespace ZelAgent
