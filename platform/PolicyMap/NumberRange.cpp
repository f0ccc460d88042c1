#include "PolicyMap/NumberRange.h"

#include <algorithm>

namespace PolicyMap {

std::vector<NumberRange> fewestRanges(std::vector<NumberRange> ranges) {
  std::sort(ranges.begin(), ranges.end());
  std::vector<NumberRange> fewest;
  for (const NumberRange& range : ranges) {
    if (fewest.empty() || range.first > fewest.back().last + 1) {
      fewest.push_back(range);
    } else {
      fewest.back().last = std::max(fewest.back().last, range.last);
    }
  }
  return fewest;
}

}  // namespace PolicyMap
