#include "tests/agent/model/trails/TrailFile.h"

#include <fstream>
#include <sstream>

namespace ZelAgent {

std::vector<Trail> trailsIn(const std::string& file) {
  std::ifstream stream(ZEL_TRAILS_DIR "/" + file);
  std::vector<Trail> trails;
  std::string line;
  while (std::getline(stream, line)) {
    if (line.starts_with('#')) continue;
    if (line == "trail") {
      trails.emplace_back();
    } else {
      trails.back().push_back(line);
    }
  }
  return trails;
}

std::string textOf(const Trail& trail) {
  std::string text;
  for (const std::string& line : trail)
    text += line + '\n';
  return text;
}

std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  std::string word;
  while (stream >> word)
    words.push_back(word);
  return words;
}

}  // namespace ZelAgent
