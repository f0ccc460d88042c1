#pragma once

#include <optional>
#include <unordered_map>

#include "Mox/SharedValue.h"
#include "PolicyMap/AclMatch.h"
#include "TrafficPolicy/TrafficPolicyInputs.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace TrafficPolicy {

/// Makes the matches of class maps into those that the hardware compares. The names of prefix sets
/// become their prefixes, and `permitFragment` is applied.
///
/// Rules with the same class map share one match, as long as neither the class map nor its sets
/// change.
class ZEL_EXPORT MatchResolver final {
 public:
  using Match = Mox::SharedValue<PolicyMap::AclMatch>;

  /// Either a match, or the reason in words why there is none.
  struct Result {
    std::optional<Match> match;
    Velo::String reason;
  };

  /// `inputs` must outlive this.
  explicit MatchResolver(const TrafficPolicyInputs& inputs) noexcept : inputs_(inputs) {}

  /// The match of a rule with that class map and an action of that type.
  [[nodiscard]] Result resolve(const Velo::String& classMap, PolicyMap::ActionType action);
  /// Forgets the matches of class maps that do not exist.
  void forgetRemoved();

 private:
  using Set = std::optional<Classification::SharedPrefixSet>;
  struct Resolved {
    PolicyMap::SharedClassMatch from;
    Set sourceSet;
    Set destinationSet;
    Match match;
    Match matchWithLaterFragments;  // the same one unless `permitFragment` has an effect on it
  };
  struct NameHash {
    std::size_t operator()(const Velo::String& name) const noexcept { return name.hash(0); }
  };

  [[nodiscard]] ZEL_HIDDEN const PolicyMap::SharedClassMatch* classMapOf(
      const Velo::String& name) const;
  [[nodiscard]] ZEL_HIDDEN Resolved made(const PolicyMap::SharedClassMatch& from, const Set& source,
                                         const Set& destination) const;

  const TrafficPolicyInputs& inputs_;
  std::unordered_map<Velo::String, Resolved, NameHash> resolved_;  // by class map
};

}  // namespace TrafficPolicy
