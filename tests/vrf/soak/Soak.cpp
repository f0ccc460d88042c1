// A long life: random events of every kind, one after the other, on one set of tables. The memory
// in use must be flat, and nothing may be left over at the end.
//
// usage: vrf-soak [--unmeasured] [EVENTS [SEED]]
//
// Under memcheck the C library's counts of what is allocated are not kept: "--unmeasured" leaves
// memory to that. Prints what it did and what it measured. Exits with 1 when memory grew or objects
// are left.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Possible.h"
#include "Quarry/Slab.h"
#include "tests/memory/AllocatedMemory.h"
#include "tests/vrf/model/EventSource.h"

namespace VrfModel {
namespace {

constexpr std::uint64_t defaultEvents = 100000;
constexpr std::uint64_t defaultSeed = 1;

// Tables grow to their largest, and every name and action is met, in the first tenth.
constexpr std::uint64_t warmUpPart = 10;
constexpr std::uint64_t samples = 1000;
// So often what was made and went is let go of, which is right before each sample, too.
constexpr std::uint64_t forgetAfter = 100;

// What may be more without anything having grown: freed blocks that count as allocated, and a table
// that doubled late. Of ten million events the second half would exceed this by a single block lost
// in two thousand events.
constexpr std::size_t slack = std::size_t{64} * 1024;

struct Done {
  std::uint64_t events = 0;
  std::uint64_t passedOver = 0;
  std::array<std::uint64_t, 3> calls{};
  std::uint64_t notices = 0;
  std::uint64_t machines = 0;
};

struct Highest {
  std::size_t firstHalf = 0;
  std::size_t secondHalf = 0;
};

class Soak {
 public:
  Soak(std::uint64_t events, std::uint64_t seed) : events_(events), choices_(seed) {
    Event build;
    build.kind = Kind::machineBuild;
    happen(build);
  }

  void run() {
    const std::uint64_t warmUp = events_ / warmUpPart;
    const std::uint64_t middle = warmUp + (events_ - warmUp) / 2;
    const std::uint64_t between =
        forgetAfter * std::max<std::uint64_t>(1, events_ / samples / forgetAfter);
    for (std::uint64_t event = 0; event < events_; ++event) {
      happen(source_.next());
      if (event % forgetAfter == 0) system_.forgetUnheld();
      if (event < warmUp || event % between != 0) continue;
      std::size_t& highest = event < middle ? highest_.firstHalf : highest_.secondHalf;
      highest = std::max(highest, allocatedMemory());
    }
    done_.machines = system_.built();
  }

  [[nodiscard]] const Done& done() const noexcept { return done_; }
  [[nodiscard]] const Highest& highest() const noexcept { return highest_; }

 private:
  void happen(const Event& event) {
    if (!isPossible(system_, cast_, event)) {
      ++done_.passedOver;
      return;
    }
    system_.apply(event);
    ++done_.events;
    const Observed observed = system_.takeObserved();
    for (const HookCall& call : observed.hooks)
      ++done_.calls.at(static_cast<std::size_t>(call.hook));
    done_.notices += observed.notices.size();
  }

  std::uint64_t events_;
  RandomChoices choices_;
  Cast cast_ = castOf(choices_);
  EventSource source_{cast_, choices_};
  System system_{cast_};
  Done done_;
  Highest highest_;
};

/// Whether it is so; otherwise says what went wrong.
bool holds(bool condition, const std::string& otherwise) {
  if (!condition) std::fprintf(stderr, "vrf-soak: %s\n", otherwise.c_str());
  return condition;
}

bool isFlat(const char* when, std::size_t before, std::size_t after) {
  return holds(after <= before + slack, std::string("memory grew ") + when + ": from " +
                                            std::to_string(before) + " to " +
                                            std::to_string(after) + " bytes");
}

bool allSlabsAreEmpty() {
  bool areEmpty = true;
  const std::vector<std::string> typeNames = Quarry::Slab::typeNames();
  for (const std::string& typeName : typeNames) {
    const Quarry::Slab& slab = *Quarry::Slab::find(typeName);
    std::printf("  %10zu %s\n", slab.allocated(), typeName.c_str());
    areEmpty &=
        holds(slab.live() == 0, std::to_string(slab.live()) + " objects left of " + typeName);
  }
  return holds(!typeNames.empty(), "no slab was ever used") && areEmpty;
}

// What is made once for the process, and the page that each slab keeps, is made by a first short
// life.
constexpr std::uint64_t eventsOfFirstLife = 2000;

bool soak(std::uint64_t events, std::uint64_t seed, bool isMeasured) {
  Soak(eventsOfFirstLife, seed).run();
  const std::size_t before = allocatedMemory();
  Done done;
  Highest highest;
  {
    Soak soak(events, seed);
    soak.run();
    done = soak.done();
    highest = soak.highest();
  }
  const std::size_t after = allocatedMemory();
  std::printf("%llu events happened, %llu were passed over; %llu machines\n",
              static_cast<unsigned long long>(done.events),
              static_cast<unsigned long long>(done.passedOver),
              static_cast<unsigned long long>(done.machines));
  std::printf("%llu creations, %llu updates, %llu deletions; %llu notices\n",
              static_cast<unsigned long long>(done.calls[0]),
              static_cast<unsigned long long>(done.calls[1]),
              static_cast<unsigned long long>(done.calls[2]),
              static_cast<unsigned long long>(done.notices));
  std::printf(
      "bytes allocated: %zu before, at most %zu in the first half, at most %zu in the "
      "second half, %zu after\n",
      before, highest.firstHalf, highest.secondHalf, after);
  std::printf("objects made, all gone:\n");
  const bool nothingIsLeft = allSlabsAreEmpty();
  if (!isMeasured) return nothingIsLeft;
  return holds(highest.firstHalf > before, "nothing was measured") &&
         isFlat("from the first half to the second", highest.firstHalf, highest.secondHalf) &&
         isFlat("from start to end", before, after) && nothingIsLeft;
}

std::uint64_t numberOf(std::string_view what, std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc() && end == text.data() + text.size()) return number;
  throw std::invalid_argument(std::string(what) + " '" + std::string(text) +
                              "': expected a decimal number");
}

int run(std::span<char*> arguments) {
  const bool isMeasured = arguments.empty() || arguments[0] != std::string_view("--unmeasured");
  if (!isMeasured) arguments = arguments.subspan(1);
  if (arguments.size() > 2) {
    throw std::invalid_argument("usage: vrf-soak [--unmeasured] [EVENTS [SEED]]");
  }
  const std::uint64_t events = arguments.empty() ? defaultEvents : numberOf("EVENTS", arguments[0]);
  const std::uint64_t seed = arguments.size() < 2 ? defaultSeed : numberOf("SEED", arguments[1]);
  std::printf("seed %llu: replay with vrf-soak %llu %llu\n", static_cast<unsigned long long>(seed),
              static_cast<unsigned long long>(events), static_cast<unsigned long long>(seed));
  return soak(events, seed, isMeasured) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace VrfModel

int main(int argc, char** argv) {
  try {
    return VrfModel::run(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vrf-soak: %s\n", error.what());
    return 2;
  }
}
