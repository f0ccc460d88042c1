// Measures every row, or the families named on the command line, and writes them to standard
// output for `report.py`. Run it through `./dev bench`.

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "benchmarks/Families.h"

namespace {

struct Family {
  std::string_view name;
  void (*measure)(Benchmarks::Report& report);
};

constexpr Family families[] = {
    {"life", &Benchmarks::lifeOfAnAction},     {"refresh", &Benchmarks::refresh},
    {"chain", &Benchmarks::fallbackChain},     {"start-up", &Benchmarks::startUp},
    {"publication", &Benchmarks::publication}, {"collection", &Benchmarks::collection},
    {"pointers", &Benchmarks::pointers},       {"messages", &Benchmarks::messages},
    {"records", &Benchmarks::records},         {"memory", &Benchmarks::memory},
    {"soft-chip", &Benchmarks::softChip},      {"loading", &Benchmarks::loading},
};

const Family* find(std::string_view name) {
  for (const Family& family : families) {
    if (family.name == name) return &family;
  }
  return nullptr;
}

[[noreturn]] void failUnknown(const char* name) {
  std::fprintf(stderr, "benchmarks: no family '%s'; there are:", name);
  for (const Family& family : families)
    std::fprintf(stderr, " %s", family.name.data());
  std::fputc('\n', stderr);
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (find(argv[i]) == nullptr) failUnknown(argv[i]);
  }
  Benchmarks::Report report;
  for (const Family& family : families) {
    bool wanted = argc == 1;
    for (int i = 1; i < argc; ++i)
      wanted = wanted || family.name == argv[i];
    if (wanted) family.measure(report);
  }
  std::fputs(report.json().c_str(), stdout);
}
