#pragma once

#include <string>
#include <vector>

namespace ZelAgent {

/// The null-terminated list that `exec` takes. It points into `texts`.
[[nodiscard]] inline std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace ZelAgent
