// Compares the library with the reference model in tests/vrf/model. The input is the choices that
// make up a history: its names, its actions and its events. Events change users, fallbacks,
// hardware VRFs and their ids, prefix lengths and flags. Machines are suspended, rebuilt and
// dropped. The outcomes of the chip fail and change.
//
// After every event the hook calls, the notices of the tables, the messages, and the state of
// tables and machines are those of the model. Events that would stop the process are skipped.

#include <iostream>

#include "fuzz/FuzzedChoices.h"
#include "fuzz/Must.h"
#include "tests/vrf/model/EventSource.h"
#include "tests/vrf/model/History.h"

namespace {

using Fuzz::FuzzedChoices;
using VrfModel::Cast;
using VrfModel::Event;

constexpr std::size_t longestHistory = 150;

std::vector<Event> historyOf(const Cast& cast, FuzzedChoices& choices) {
  std::vector<Event> history(1);
  history.front().kind = VrfModel::Kind::machineBuild;
  VrfModel::EventSource source(cast, choices);
  while (!choices.areUsedUp() && history.size() < longestHistory)
    history.push_back(source.next());
  return history;
}

[[noreturn]] void report(const Cast& cast, const std::vector<Event>& history,
                         const VrfModel::Difference& difference) {
  for (std::size_t index = 0; index <= difference.event; ++index)
    std::cerr << index + 1 << ". " << shown(history[index], cast) << '\n';
  Fuzz::fail("after the last of these events the library is as the model: " + difference.text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedChoices choices(data, size);
  const Cast cast = VrfModel::castOf(choices);
  const std::vector<Event> history = historyOf(cast, choices);
  if (const auto difference = firstDifference(cast, history)) report(cast, history, *difference);
  return 0;
}
