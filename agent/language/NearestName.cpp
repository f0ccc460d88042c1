#include "agent/language/NearestName.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "Mox/QuotedString.h"

namespace ZelAgent {
namespace {

// How many bytes must be added, removed or replaced, or exchanged with the next one. More than
// `most` is not counted exactly.
std::size_t changesBetween(std::string_view a, std::string_view b, std::size_t most) {
  const std::size_t shorter = std::min(a.size(), b.size());
  if (std::max(a.size(), b.size()) - shorter > most) return most + 1;
  // The changes between the first bytes of `a`, one more in each row, and those of `b`.
  std::vector<std::size_t> rowBefore;
  std::vector<std::size_t> row(b.size() + 1);
  std::vector<std::size_t> next(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    next[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      next[j + 1] = std::min({row[j] + (a[i] == b[j] ? 0 : 1), row[j + 1] + 1, next[j] + 1});
      const bool isExchanged = i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j];
      if (isExchanged) next[j + 1] = std::min(next[j + 1], rowBefore[j - 1] + 1);
    }
    rowBefore = row;
    row.swap(next);
  }
  return row.back();
}

}  // namespace

std::optional<std::string> nearestName(std::string_view name, const std::set<std::string>& known) {
  std::size_t fewest = std::max<std::size_t>(name.size() / 3, 1) + 1;
  std::optional<std::string> nearest;
  for (const std::string& candidate : known) {
    const std::size_t changes = changesBetween(name, candidate, fewest - 1);
    if (changes >= fewest) continue;  // the first of several that are as near
    fewest = changes;
    nearest = candidate;
  }
  return nearest;
}

std::string suggestion(std::string_view name, const std::set<std::string>& known) {
  const auto nearest = nearestName(name, known);
  return nearest ? "; did you mean " + Mox::quoted(*nearest) + "?" : "";
}

}  // namespace ZelAgent
