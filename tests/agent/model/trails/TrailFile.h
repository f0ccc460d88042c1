// The trails of the formal models, as models/trails.py writes them.
#pragma once

#include <string>
#include <vector>

namespace ZelAgent {

// The lines of one trail.
using Trail = std::vector<std::string>;

// The trails of a file in the folder of the trails. None if the file cannot be read.
[[nodiscard]] std::vector<Trail> trailsIn(const std::string& file);

// All lines in one text, to print.
[[nodiscard]] std::string textOf(const Trail& trail);

// The words of a line.
[[nodiscard]] std::vector<std::string> wordsOf(const std::string& line);

}  // namespace ZelAgent
