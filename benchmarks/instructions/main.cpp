// The operations for the instruction counter. Each operation runs 2,000 times to warm up, then
// 1,000 times while the counter runs. Run it through `./dev bench --check-instructions`.
//
// usage: zel-instructions [WORK TIMES [ACTIONS]]     does one piece of work, for a profiler, in
//                                                    tables of that many actions

#include <valgrind/callgrind.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string_view>

#include "Duolog/Message.h"
#include "Velo/Publisher.h"
#include "benchmarks/World.h"

namespace {

using Benchmarks::World;
using ZelVrfSelectionPolicy::VrfAction;

constexpr std::size_t usualTableSize = 10'000;
constexpr unsigned warmUps = 2'000;
constexpr unsigned counted = 1'000;

const L3::VrfName& changing() {
  static const L3::VrfName name("customer-network-changed");
  return name;
}

// The actions of a table. 16 of them, or all if there are fewer, name the VRF that changes.
std::vector<VrfAction> presentActions(std::size_t size) {
  std::vector<VrfAction> present = Benchmarks::actions(size, 1);
  const std::size_t step = size / 16 + 1;
  for (std::size_t i = 0; i < size; i += step)
    present[i].fallbackVrfNameIs(changing());
  return present;
}

std::function<void()> refresh(World& world) {
  return [&world] { world.vrfSm->updateAllVrfActions(changing()); };
}

std::function<void()> lifeOfAnAction(World& world) {
  return [&world, coming = Benchmarks::actions(1024, 2), i = std::size_t{0}]() mutable {
    const VrfAction& action = coming[i++ % coming.size()];
    world.users->vrfRefCountInc(action, 1);
    world.users->vrfRefCountDec(action, 1);
  };
}

std::function<void()> lookup(World& world, const std::vector<VrfAction>& present) {
  return [&world, asked = Benchmarks::shuffled(present, 3), i = std::size_t{0}]() mutable {
    static_cast<void>(world.users->vrfRefCount(asked[i++ % asked.size()]));
  };
}

struct Subscribers {
  Subscribers() {
    for (Velo::Subscriber& subscriber : all) {
      subscriber.dispatch = [](Velo::Publisher*, Velo::Subscriber*, short, const void*,
                               const void*) {};
      publisher.subscriberIs(subscriber);
    }
  }
  Velo::Publisher publisher;
  std::array<Velo::Subscriber, 4> all;
};

std::function<void()> publication(Subscribers& subscribers) {
  return [&subscribers] {
    const unsigned key = 1;
    subscribers.publisher.publish(130, &key, &key);
  };
}

const Mox::TraceHandle& handle() {
  static const Mox::TraceHandle made("Benchmarks", 0U);
  return made;
}

std::function<void()> message() {
  static const Duolog::Message assigned({&handle, "/src/benchmarks/instructions"}, 5, 1, "assign",
                                        {"assign", ": VRF:", "%s", " vrfId:", "%u"});
  return [] { assigned(changing().bytes(), 7U); };
}

void repeat(const std::function<void()>& work, unsigned times) {
  for (unsigned i = 0; i < times; ++i)
    work();
}

void count(const char* name, const std::function<void()>& work) {
  repeat(work, warmUps);
  CALLGRIND_ZERO_STATS;
  repeat(work, counted);
  CALLGRIND_DUMP_STATS_AT(name);
}

unsigned long number(const char* text) {
  return std::strtoul(text, nullptr, 10);
}

struct Work {
  const char* name;
  std::function<void()> once;
};

}  // namespace

int main(int argc, char** argv) {
  const bool isForProfiler = argc == 3 || argc == 4;
  const std::vector<VrfAction> present =
      presentActions(argc == 4 ? number(argv[3]) : usualTableSize);
  World world(present);
  Subscribers subscribers;
  const std::array<Work, 5> works{{{"refresh", refresh(world)},
                                   {"lookup", lookup(world, present)},
                                   {"life", lifeOfAnAction(world)},
                                   {"publication", publication(subscribers)},
                                   {"message", message()}}};
  for (const Work& work : works) {
    if (isForProfiler && std::string_view(argv[1]) != work.name) continue;
    if (isForProfiler) {
      repeat(work.once, static_cast<unsigned>(number(argv[2])));
    } else {
      count(work.name, work.once);
    }
  }
}
