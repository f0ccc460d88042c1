#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace VrfModel {

/// Items that are expected in steps. Steps come one after the other, the items of one step in any
/// order. `Item` is ordered and has a `shown`.
template <class Item>
class Steps {
 public:
  void add(Item item) { items_.push_back(std::move(item)); }
  /// Begins a new step: later items come after all earlier ones.
  void next() {
    const std::size_t begin = ends_.empty() ? 0 : ends_.back();
    if (items_.size() > begin) ends_.push_back(items_.size());
  }

  [[nodiscard]] const std::vector<Item>& items() const noexcept { return items_; }

  /// The difference of `observed` from the expected items. Empty if there is none.
  [[nodiscard]] std::string differenceFrom(std::vector<Item> observed) const {
    Steps expected(*this);
    expected.next();
    if (observed.size() == items_.size()) {
      expected.sortEachStepOf(observed);
      expected.sortEachStepOf(expected.items_);
      if (observed == expected.items_) return {};
    }
    return "\n  expected:" + expected.shownSteps() + "\n  observed:" + shownItems(observed);
  }

 private:
  using Place = typename std::vector<Item>::difference_type;

  void sortEachStepOf(std::vector<Item>& items) const {
    Place begin = 0;
    for (const std::size_t end : ends_) {
      std::sort(items.begin() + begin, items.begin() + static_cast<Place>(end));
      begin = static_cast<Place>(end);
    }
  }

  [[nodiscard]] std::string shownSteps() const {
    std::string text;
    std::size_t begin = 0;
    for (const std::size_t end : ends_) {
      if (begin != 0) text += "\n    then";
      const auto from = items_.begin();
      text += shownItems({from + static_cast<Place>(begin), from + static_cast<Place>(end)});
      begin = end;
    }
    return text.empty() ? shownItems({}) : text;
  }
  [[nodiscard]] static std::string shownItems(const std::vector<Item>& items) {
    std::string text;
    for (const Item& item : items)
      text += "\n    " + shown(item);
    return text.empty() ? "\n    nothing" : text;
  }

  std::vector<Item> items_;
  std::vector<std::size_t> ends_;
};

}  // namespace VrfModel
