#include "chips/programs/VrfProgram.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace Chips {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;

std::uint32_t vrfIdOf(const L3::VrfName& name, const ProgramInputs& inputs) {
  if (!inputs.routeStatus) return 0;
  const auto status = inputs.routeStatus->vrfStatus(name);
  return status ? status->vrfId() : 0;
}

template <class RouteStatus>
std::vector<unsigned char> exactMatchLensOf(const L3::VrfName& name,
                                            const Mox::Ptr<RouteStatus const>& routeStatus) {
  std::vector<unsigned char> lengths;
  if (!routeStatus) return lengths;
  const auto entity = routeStatus->vrfPrefixLensInExactMatch(Velo::String(name.bytes()));
  if (!entity) return lengths;
  for (unsigned length = 0; length <= PrefixLensInExactMatch::longest; ++length) {
    const auto candidate = static_cast<unsigned char>(length);
    if (entity->prefixLenHas(candidate)) lengths.push_back(candidate);
  }
  return lengths;
}

bool isOn(const VrfWalk& walk, const L3::VrfName& name) {
  return std::any_of(walk.begin(), walk.end(),
                     [&name](const VrfFacts& facts) { return facts.name == name; });
}

void writeLens(std::ostream& stream, const std::vector<unsigned char>& lengths) {
  const char* separator = "";
  stream << '[';
  for (const unsigned char length : lengths) {
    stream << separator << static_cast<unsigned>(length);
    separator = ",";
  }
  stream << ']';
}

void writeWalk(std::ostream& stream, const char* label, const VrfWalk& walk) {
  stream << label << (walk.empty() ? " none" : " ");
  const char* separator = "";
  for (const VrfFacts& facts : walk) {
    stream << separator << facts.name << '(' << facts.vrfId << ") v4=";
    writeLens(stream, facts.exactMatchLens);
    stream << " v6=";
    writeLens(stream, facts.exactMatchLensV6);
    separator = " > ";
  }
  stream << "; ";
}

const char* onOrOff(bool on) {
  return on ? "on" : "off";
}

}  // namespace

VrfFacts factsOf(const L3::VrfName& name, const ProgramInputs& inputs) {
  return {name, vrfIdOf(name, inputs), exactMatchLensOf(name, inputs.routeStatus),
          exactMatchLensOf(name, inputs.routeStatusV6)};
}

std::ostream& operator<<(std::ostream& stream, const VrfProgram& program) {
  writeWalk(stream, "look up", program.lookUp);
  writeWalk(stream, "fallback", program.fallback);
  writeWalk(stream, "post-decap", program.postDecap);
  return stream << "decap-nh " << onOrOff(program.decapNhEnabled) << "; decap-nh-fallback "
                << onOrOff(program.decapNhFallbackEnabled);
}

VrfWalk walkOf(L3::VrfName name, const ProgramInputs& inputs) {
  VrfWalk walk;
  while (!name.empty() && walk.size() < longestWalk && !isOn(walk, name)) {
    walk.push_back(factsOf(name, inputs));
    name = inputs.fallbackConfig ? inputs.fallbackConfig->fallbackVrf(name) : L3::VrfName();
  }
  return walk;
}

VrfProgram programOf(const ZelVrfSelectionPolicy::VrfAction& action, const ProgramInputs& inputs) {
  return {walkOf(action.vrfName(), inputs), walkOf(action.fallbackVrfName(), inputs),
          walkOf(action.postDecapVrfName(), inputs),
          inputs.routeStatus && inputs.routeStatus->decapNhEnabled(),
          inputs.routeStatus && inputs.routeStatus->decapNhFallbackEnabled()};
}

L3::VrfName vrfWithoutId(const VrfProgram& program) {
  for (const VrfWalk* const walk : {&program.lookUp, &program.fallback, &program.postDecap}) {
    if (!walk->empty() && walk->front().vrfId == 0) return walk->front().name;
  }
  return {};
}

}  // namespace Chips
