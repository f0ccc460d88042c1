#include "benchmarks/Comparison.h"

#include <cstdio>
#include <ctime>
#include <map>
#include <sstream>
#include <utility>

namespace Benchmarks {
namespace {

constexpr double secondsPerLoop = 0.02;
constexpr double secondsPerPasses = 0.001;  // one pass is long enough for a measurement

/// Collects the results of Google Benchmark: nanoseconds per iteration, by the benchmark's name.
class Collector final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const bool isPass = run.run_name.time_type == "manual_time";
      const double inUnits = isPass ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
      costs_[run.run_name.function_name] = inUnits;
    }
  }

  [[nodiscard]] double cost(const std::string& name) const { return costs_.at(name); }

 private:
  std::map<std::string, double> costs_;
};

std::string nameOf(std::size_t contender) {
  return std::string("contender").append(std::to_string(contender));
}

void writeNumbers(std::ostream& out, const std::vector<double>& numbers) {
  out << '[';
  for (std::size_t i = 0; i < numbers.size(); ++i)
    out << (i == 0 ? "" : ", ") << numbers[i];
  out << ']';
}

const char* kindName(Target::Kind kind) {
  switch (kind) {
    case Target::Kind::ratioAtMost:
      return "ratioAtMost";
    case Target::Kind::timesFaster:
      return "timesFaster";
    case Target::Kind::aboveByAtMost:
      return "aboveByAtMost";
    case Target::Kind::none:
      break;
  }
  return "none";
}

// The texts are literals of the benchmarks. They contain no quotes.
void writeCost(std::ostream& out, const Cost& cost) {
  out << R"({"contender": ")" << cost.contender << R"(", "target": ")" << kindName(cost.target.kind)
      << R"(", "value": )" << cost.target.value << R"(, "costs": )";
  writeNumbers(out, cost.repetitions);
  out << '}';
}

void writeRow(std::ostream& out, const Row& row) {
  out << R"({"work": ")" << row.work << R"(", "size": )" << row.size << R"(, "unit": ")" << row.unit
      << R"(", "shouldNotGrow": )" << (row.shouldNotGrow ? "true" : "false") << R"(, "ours": )";
  writeNumbers(out, row.ours);
  out << R"(, "beside": [)";
  for (std::size_t i = 0; i < row.beside.size(); ++i) {
    out << (i == 0 ? "" : ", ");
    writeCost(out, row.beside[i]);
  }
  out << "]}";
}

}  // namespace

void Report::rowIs(Row row) {
  std::fprintf(stderr, "measured: %s", row.work.c_str());
  if (row.size != 0) std::fprintf(stderr, ", %zu", row.size);
  std::fputc('\n', stderr);
  rows_.push_back(std::move(row));
}

std::string Report::json() const {
  std::ostringstream out;
  out << "[\n";
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    out << (i == 0 ? "" : ",\n");
    writeRow(out, rows_[i]);
  }
  out << "\n]\n";
  return out.str();
}

Comparison::Comparison(std::string work, std::size_t size) {
  row_.work = std::move(work);
  row_.size = size;
}

Comparison& Comparison::timesWork(double times) {
  timesWork_ = times;
  return *this;
}

Comparison& Comparison::shouldNotGrow() {
  row_.shouldNotGrow = true;
  return *this;
}

Comparison& Comparison::ours(Loop loop) {
  contenders_.push_back({std::move(loop), false});
  return *this;
}

Comparison& Comparison::oursPass(Pass pass) {
  contenders_.push_back(contenderOf(std::move(pass)));
  return *this;
}

Comparison& Comparison::beside(std::string contender, Target target, Loop loop) {
  row_.beside.push_back({std::move(contender), target, {}});
  contenders_.push_back({std::move(loop), false});
  return *this;
}

Comparison& Comparison::besidePass(std::string contender, Target target, Pass pass) {
  row_.beside.push_back({std::move(contender), target, {}});
  contenders_.push_back(contenderOf(std::move(pass)));
  return *this;
}

Comparison::Contender Comparison::contenderOf(Pass pass) {
  Loop loop = [pass = std::move(pass)](benchmark::State& state) {
    for (auto _ : state)
      state.SetIterationTime(pass());
  };
  return {std::move(loop), true};
}

void Comparison::registerAll() const {
  for (std::size_t i = 0; i < contenders_.size(); ++i) {
    auto* registered = benchmark::RegisterBenchmark(nameOf(i).c_str(), contenders_[i].loop);
    registered->Unit(benchmark::kNanosecond);
    if (contenders_[i].isPass) {
      registered->UseManualTime()->MinTime(secondsPerPasses);
    } else {
      registered->MinTime(secondsPerLoop);
    }
  }
}

void Comparison::measure(Report& report) {
  registerAll();
  for (int repetition = 0; repetition < repetitions; ++repetition) {
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector, nullptr, ".");
    row_.ours.push_back(collector.cost(nameOf(0)) / timesWork_);
    for (std::size_t i = 0; i < row_.beside.size(); ++i) {
      row_.beside[i].repetitions.push_back(collector.cost(nameOf(i + 1)) / timesWork_);
    }
  }
  benchmark::ClearRegisteredBenchmarks();
  report.rowIs(std::move(row_));
}

double processorTime() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace Benchmarks
