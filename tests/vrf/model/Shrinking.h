#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace VrfModel {

/// A part of `whole`, in the same order, that fails and from which no single item can be removed.
/// Tries to remove runs of items: first halves, then shorter runs. Precondition: `whole` fails.
template <class Item>
[[nodiscard]] std::vector<Item> shrunk(std::vector<Item> whole,
                                       const std::function<bool(const std::vector<Item>&)>& fails) {
  using Place = typename std::vector<Item>::difference_type;
  std::size_t run = std::max<std::size_t>(whole.size() / 2, 1);
  for (;;) {
    bool leftOut = false;
    for (std::size_t begin = 0; begin < whole.size();) {
      const std::size_t end = std::min(begin + run, whole.size());
      std::vector<Item> part = whole;
      part.erase(part.begin() + static_cast<Place>(begin), part.begin() + static_cast<Place>(end));
      if (fails(part)) {
        whole = std::move(part);
        leftOut = true;
      } else {
        begin = end;
      }
    }
    if (run == 1 && !leftOut) return whole;
    run = std::max<std::size_t>(run / 2, 1);
  }
}

}  // namespace VrfModel
