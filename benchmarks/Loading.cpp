// Loading the library and its platform by `dlopen`, compared with an empty shared library. Each
// load happens in a new process that is linked to neither.

#include <cstdio>
#include <stdexcept>

#include "benchmarks/Families.h"

namespace Benchmarks {
namespace {

constexpr double mostNanosecondsAbove = 1e6;

/// The nanoseconds in which a new process loads `library`.
double loadTime(const char* library) {
  const std::string command = std::string(LOAD_TIME_PROGRAM).append(" ").append(library);
  std::FILE* output = popen(command.c_str(), "r");
  if (output == nullptr) throw std::runtime_error("cannot run " + command);
  double nanoseconds = 0;
  const bool isRead = std::fscanf(output, "%lf", &nanoseconds) == 1;
  if (pclose(output) != 0 || !isRead) throw std::runtime_error(command + " failed");
  return nanoseconds;
}

}  // namespace

void loading(Report& report) {
  Row row;
  row.work = "loading the library and its platform";
  Cost empty{"empty shared library", aboveByAtMost(mostNanosecondsAbove), {}};
  for (int repetition = 0; repetition < Comparison::repetitions; ++repetition) {
    row.ours.push_back(loadTime(LIBRARY));
    empty.repetitions.push_back(loadTime(EMPTY_LIBRARY));
  }
  row.beside.push_back(std::move(empty));
  report.rowIs(std::move(row));
}

}  // namespace Benchmarks
