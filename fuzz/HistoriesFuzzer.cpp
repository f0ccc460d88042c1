// The library against the reference model: the input is the choices that make up a history, of the
// names and actions that it is about and of what befalls them. The tables of users and statuses,
// fallbacks, hardware VRFs and their ids, prefix lengths, flags, machines that are silenced, built
// anew and dropped, and a chip whose outcomes fail and change are all in it.
//
// After every event the chip was called, tables told and messages written as the model says, and
// tables and machines hold what those of the model hold. Events that have to stop the process are
// passed over. tests/vrf/model is the model, and what compares.

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
