#pragma once

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
  /// Returns the answer; none while the command waits.
  using Ask = std::function<std::optional<std::string>()>;

  explicit AwaitedAnswer(Ask ask) : ask_(std::move(ask)) {}

  [[nodiscard]] bool hasNext() const override { return ask_ != nullptr; }
  [[nodiscard]] std::string next() override {
    const auto bytes = ask_();
    if (bytes) ask_ = nullptr;
    return bytes.value_or("");
  }

 private:
  Ask ask_;  // empty after the answer
};

}  // namespace ZelAgent
