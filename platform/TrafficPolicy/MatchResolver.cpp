#include "TrafficPolicy/MatchResolver.h"

#include <utility>

#include "Mox/QuotedString.h"

namespace TrafficPolicy {
namespace {

using Classification::FieldSetConfig;
using Classification::SharedPrefixSet;
using PolicyMap::AclMatch;
using PolicyMap::ActionType;
using PolicyMap::ClassMatch;
using PolicyMap::SharedClassMatch;

const SharedPrefixSet* setOf(const Mox::Ptr<FieldSetConfig const>& config, const ClassMatch& match,
                             const Velo::String& name) {
  return config && match.family ? config->prefixSet({*match.family, name}) : nullptr;
}

Velo::String missing(const char* what, const Velo::String& name) {
  return what + std::string(" ") + Mox::quoted(name.bytes()) + " does not exist";
}

}  // namespace

MatchResolver::Result MatchResolver::resolve(const Velo::String& classMap, ActionType action) {
  const SharedClassMatch* const match = classMapOf(classMap);
  if (match == nullptr) return {std::nullopt, missing("class map", classMap)};
  Set source;
  Set destination;
  for (const auto& [name, set] : {std::pair(&(*match)->sourceSet, &source),
                                  std::pair(&(*match)->destinationSet, &destination)}) {
    if (name->empty()) continue;
    const SharedPrefixSet* const found = setOf(inputs_.fieldSetConfig, **match, *name);
    if (found == nullptr) return {std::nullopt, missing("prefix set", *name)};
    *set = *found;
  }
  auto present = resolved_.find(classMap);
  if (present == resolved_.end() || !(present->second.from == *match) ||
      present->second.sourceSet != source || present->second.destinationSet != destination) {
    present = resolved_.insert_or_assign(classMap, made(*match, source, destination)).first;
  }
  const Resolved& resolved = present->second;
  return {action == ActionType::discard ? resolved.match : resolved.matchWithLaterFragments, ""};
}

void MatchResolver::forgetRemoved() {
  std::erase_if(resolved_,
                [this](const auto& entry) { return classMapOf(entry.first) == nullptr; });
}

const SharedClassMatch* MatchResolver::classMapOf(const Velo::String& name) const {
  return inputs_.classTypeConfig ? inputs_.classTypeConfig->classMap(name) : nullptr;
}

MatchResolver::Resolved MatchResolver::made(const SharedClassMatch& from, const Set& source,
                                            const Set& destination) const {
  AclMatch match{*from, source, destination, false};
  Resolved resolved{from, source, destination, match, {}};
  resolved.matchWithLaterFragments = resolved.match;
  if (inputs_.permitFragment && match.comparesUpperLayer()) {
    match.matchesLaterFragments = true;
    resolved.matchWithLaterFragments = std::move(match);
  }
  return resolved;
}

}  // namespace TrafficPolicy
