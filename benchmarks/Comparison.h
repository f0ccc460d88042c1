#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

/// What a comparison with a peer has to show.
struct Mark {
  enum class Kind {
    none,           // the ratio is only stated
    ratioAtMost,    // this library's cost over the peer's
    timesFaster,    // the peer's cost over this library's, at least
    aboveByAtMost,  // this library's cost less the peer's
  };
  Kind kind = Kind::none;
  double value = 0;
};
[[nodiscard]] inline Mark ratioAtMost(double value) {
  return {Mark::Kind::ratioAtMost, value};
}
[[nodiscard]] inline Mark timesFaster(double value) {
  return {Mark::Kind::timesFaster, value};
}
[[nodiscard]] inline Mark aboveByAtMost(double value) {
  return {Mark::Kind::aboveByAtMost, value};
}
[[nodiscard]] inline Mark stated() {
  return {};
}

/// What one contender cost, one number per repetition.
struct Cost {
  std::string contender;
  Mark mark;
  std::vector<double> repetitions;
};

/// One row of the table: a piece of work at one size, what it costs in this library, and what it
/// costs the peers beside it.
struct Row {
  std::string work;
  std::size_t size = 0;  // 0 where the work has none
  std::string unit = "ns";
  bool shouldNotGrow = false;
  std::vector<double> ours;
  std::vector<Cost> beside;
};

/// The rows measured so far. Written out whole, for `report.py`, which judges and shows them.
class Report {
 public:
  void rowIs(Row row);
  [[nodiscard]] std::string json() const;

 private:
  std::vector<Row> rows_;
};

/// Measures one row: Google Benchmark runs this library and each peer once, and then all of them
/// again, nine times; so whatever slows the machine for a while slows all contenders alike, and the
/// ratio of one repetition compares what ran side by side. Costs are processor time.
class Comparison {
 public:
  static constexpr int repetitions = 9;
  /// A benchmark in Google Benchmark's own form.
  using Loop = std::function<void(benchmark::State&)>;
  /// One pass, for work that has to be prepared anew each time: gives the seconds that counted.
  using Pass = std::function<double()>;

  Comparison(std::string work, std::size_t size = 0);

  /// One iteration or pass is this many times the work: costs are shown for one.
  Comparison& timesWork(double times);
  /// The cost should be the same at every size.
  Comparison& shouldNotGrow();

  Comparison& ours(Loop loop);
  Comparison& oursPass(Pass pass);
  Comparison& beside(std::string contender, Mark mark, Loop loop);
  Comparison& besidePass(std::string contender, Mark mark, Pass pass);

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
