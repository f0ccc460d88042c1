// One publication to subscribers that only count, compared with a signal library and with a loop
// over function pointers.

#include <boost/signals2.hpp>

#include "Velo/Publisher.h"
#include "benchmarks/Families.h"

namespace Benchmarks {
namespace {

constexpr short attribute = 130;

struct CountingSubscriber final : Velo::Subscriber {
  CountingSubscriber() { dispatch = &count; }
  static void count(Velo::Publisher* /*publisher*/, Velo::Subscriber* subscriber,
                    short /*attributeId*/, const void* /*key*/, const void* /*value*/) {
    ++static_cast<CountingSubscriber*>(subscriber)->calls;
  }
  unsigned calls = 0;
};

using Signal = boost::signals2::signal<void(short, const void*, const void*)>;

void publish(Velo::Publisher& publisher, benchmark::State& state) {
  const unsigned key = 1;
  for (auto _ : state)
    publisher.publish(attribute, &key, &key);
}

void callEach(const std::vector<Velo::Subscriber*>& subscribers, benchmark::State& state) {
  const unsigned key = 1;
  for (auto _ : state) {
    for (Velo::Subscriber* subscriber : subscribers)
      subscriber->dispatch(nullptr, subscriber, attribute, &key, &key);
    benchmark::ClobberMemory();
  }
}

void emit(const Signal& signal, benchmark::State& state) {
  const unsigned key = 1;
  for (auto _ : state)
    signal(attribute, &key, &key);
}

void measure(Report& report, std::size_t count) {
  std::vector<CountingSubscriber> subscribers(count);
  std::vector<Velo::Subscriber*> pointers;
  Velo::Publisher publisher;
  Signal signal;
  for (CountingSubscriber& subscriber : subscribers) {
    publisher.subscriberIs(subscriber);
    pointers.push_back(&subscriber);
    signal.connect([&subscriber](short, const void*, const void*) { ++subscriber.calls; });
  }
  Comparison("one publication to " + std::to_string(count) +
             (count == 1 ? " subscriber" : " subscribers"))
      .ours([&](benchmark::State& state) { publish(publisher, state); })
      .beside("boost::signals2", timesFaster(20),
              [&](benchmark::State& state) { emit(signal, state); })
      .beside("loop over function pointers", ratioAtMost(1.5),
              [&](benchmark::State& state) { callEach(pointers, state); })
      .measure(report);
}

}  // namespace

void publication(Report& report) {
  for (const std::size_t count : {1U, 4U, 16U})
    measure(report, count);
}

}  // namespace Benchmarks
