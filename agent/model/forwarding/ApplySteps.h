#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <utility>

namespace ZelAgent {

/// The parts of a change, which are made one after the other, step by step.
class ApplySteps final {
 public:
  /// Makes a step of the part, if it has any. Returns whether steps are left.
  using Part = std::function<bool()>;

  void add(Part part) { parts_.push_back(std::move(part)); }
  /// Adds a part that is one step.
  template <class Make>
  void addOne(Make make) {
    add([make = std::move(make)] {
      make();
      return false;
    });
  }
  /// Adds a part that calls `use` with each element, one in each step. The range must not change
  /// from the first step of the part to the last.
  template <class Range, class Use>
  void addEach(const Range& range, Use use) {
    using Place = decltype(range.begin());
    add([&range, place = std::optional<Place>(), use = std::move(use)]() mutable {
      if (!place) place = range.begin();
      if (*place == range.end()) return false;
      use(**place);
      return ++*place != range.end();
    });
  }

  /// Makes the next step. Returns whether steps are left.
  bool step() {
    if (!parts_.empty() && !parts_.front()()) parts_.pop_front();
    return !parts_.empty();
  }

 private:
  std::deque<Part> parts_;
};

}  // namespace ZelAgent
