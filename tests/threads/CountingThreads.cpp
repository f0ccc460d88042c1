// Two threads copy and drop pointers to the same entities, and either may drop the last one. Built
// with the thread sanitizer, which judges it.
//
// usage: counting-threads atomic | plain
//
// "atomic" switches thread-safe pointers on, as an agent with threads does at its start. "plain"
// does not: that is the control, by which it is seen that a race would be reported.

#include <cstdio>
#include <string_view>
#include <thread>
#include <vector>

#include "Mox/Ptr.h"

namespace {

constexpr int entities = 200;
constexpr int copiesOfEach = 50;

// Each thread writes its own member as long as it has a pointer, the destructor reads both.
class Shared final : public Mox::PtrInterface {
 public:
  explicit Shared(long& sum) : sum_(sum) {}
  ~Shared() override { sum_ += first + second; }

  int first = 0;
  int second = 0;

 private:
  long& sum_;
};

using Held = std::vector<Mox::Ptr<Shared>>;

void copyAndDrop(Held held, int Shared::*own) {
  for (Mox::Ptr<Shared>& entity : held) {
    for (int copy = 0; copy < copiesOfEach; ++copy) {
      const Mox::Ptr<Shared> another = entity;
      const Mox::Ptr<Shared const> view = another;
      another.get()->*own += 1;
    }
    entity = nullptr;
  }
}

// What the destroyed entities add up to. Each has a place of its own to say it in.
long sumOfAll() {
  std::vector<long> sums(entities);
  Held held;
  for (long& sum : sums)
    held.push_back(Mox::makePtr<Shared>(sum));
  std::thread first(copyAndDrop, held, &Shared::first);
  std::thread second(copyAndDrop, std::move(held), &Shared::second);
  first.join();
  second.join();
  long total = 0;
  for (const long sum : sums)
    total += sum;
  return total;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view way = argc == 2 ? argv[1] : "";
  if (way != "atomic" && way != "plain") {
    std::fputs("usage: counting-threads atomic | plain\n", stderr);
    return 2;
  }
  Mox::PtrInterface::threadSafePointersIs(way == "atomic");
  const long total = sumOfAll();
  const long expected = 2L * entities * copiesOfEach;
  std::printf("%d entities, each destroyed with %ld of %ld\n", entities, total, expected);
  return total == expected ? 0 : 1;
}
