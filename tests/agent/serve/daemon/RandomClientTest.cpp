// A client that sends garbage.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "testing/RandomSeed.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

// Answers in the text: one line of JSON, or the lines up to a dot.
long answersIn(const std::string& text) {
  long answers = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    answers += line == "." || line.starts_with('{') ? 1 : 0;
  return answers;
}

class RandomClient : public ServedClients {
 protected:
  std::string shown() {
    second_.send("show actions\nshow vrfs\nshow fallback\nshow users\n");
    scheduler_.rounds();
    return second_.received();
  }
};

TEST_F(RandomClient, IsAnsweredOnceForEachLineAndChangesNothing) {
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  std::string garbage(std::size_t{1} << 18U, '\0');
  std::generate(garbage.begin(), garbage.end(), [&] { return static_cast<char>(random()); });
  garbage.back() = '\n';
  const long lines = std::count(garbage.begin(), garbage.end(), '\n');

  connectAll();
  const std::string before = shown();
  for (std::string_view left = garbage; !left.empty();) {
    const std::size_t piece = std::min<std::size_t>(left.size(), 1 + random() % 3000);
    first_.send(left.substr(0, piece));
    left.remove_prefix(piece);
    if (random() % 2 == 0) scheduler_.round();
    first_.deliver();
  }
  first_.endSending();
  while (first_.isConnected()) {
    scheduler_.rounds();
    first_.deliver();
  }
  EXPECT_EQ(answersIn(first_.received()), lines);
  EXPECT_EQ(shown(), before);
}

}  // namespace
}  // namespace ZelAgent
