#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

/// The target of a comparison with a peer.
struct Target {
  enum class Kind {
    none,           // the ratio is shown without a target
    ratioAtMost,    // this library's cost over the peer's
    timesFaster,    // the peer's cost over this library's, at least
    aboveByAtMost,  // this library's cost minus the peer's
  };
  Kind kind = Kind::none;
  double value = 0;
};
[[nodiscard]] inline Target ratioAtMost(double value) {
  return {Target::Kind::ratioAtMost, value};
}
[[nodiscard]] inline Target timesFaster(double value) {
  return {Target::Kind::timesFaster, value};
}
[[nodiscard]] inline Target aboveByAtMost(double value) {
  return {Target::Kind::aboveByAtMost, value};
}
[[nodiscard]] inline Target noTarget() {
  return {};
}

/// The cost of one contender, one number per repetition.
struct Cost {
  std::string contender;
  Target target;
  std::vector<double> repetitions;
};

/// One row of the table: an operation at one size, with its cost in this library and in each peer.
struct Row {
  std::string work;
  std::size_t size = 0;  // 0 if the work has no size
  std::string unit = "ns";
  bool shouldNotGrow = false;
  std::vector<double> ours;
  std::vector<Cost> beside;
};

/// The measured rows. `report.py` reads their JSON, compares them with the targets and prints them.
class Report {
 public:
  void rowIs(Row row);
  [[nodiscard]] std::string json() const;

 private:
  std::vector<Row> rows_;
};

/// Measures one row. In each of nine repetitions Google Benchmark runs this library and each peer
/// once. A temporary load of the machine then affects all contenders, and a ratio is computed
/// within one repetition. Costs are processor time.
class Comparison {
 public:
  static constexpr int repetitions = 9;
  /// A benchmark in the form of Google Benchmark.
  using Loop = std::function<void(benchmark::State&)>;
  /// One pass, for work that needs a new preparation each time. Returns the measured seconds.
  using Pass = std::function<double()>;

  Comparison(std::string work, std::size_t size = 0);

  /// One iteration or pass does the work this many times. Costs are shown for one time.
  Comparison& timesWork(double times);
  /// The cost should be the same at every size.
  Comparison& shouldNotGrow();

  Comparison& ours(Loop loop);
  Comparison& oursPass(Pass pass);
  Comparison& beside(std::string contender, Target target, Loop loop);
  Comparison& besidePass(std::string contender, Target target, Pass pass);

  void measure(Report& report);

 private:
  struct Contender {
    Loop loop;
    bool isPass;
  };

  static Contender contenderOf(Pass pass);
  void registerAll() const;

  Row row_;
  double timesWork_ = 1;
  std::vector<Contender> contenders_;  // this library first, then as in `row_.beside`
};

/// Processor time of this thread, in seconds.
[[nodiscard]] double processorTime();

/// Processor time that `work()` takes, in seconds.
template <class Work>
double timed(Work&& work) {
  const double before = processorTime();
  work();
  return processorTime() - before;
}

}  // namespace Benchmarks
