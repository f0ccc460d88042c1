#include "agent/config/ActionReader.h"

#include <string>

namespace ZelAgent {
namespace {

constexpr const char* lookUpLeaf = "network-instance";
constexpr const char* decapLeaf = "decap-network-instance";
constexpr const char* fallbackLeaf = "decap-fallback-network-instance";
constexpr const char* postDecapLeaf = "post-decap-network-instance";

class ActionReader final {
 public:
  ActionReader(const JsonObject& rule, const InstanceNames& names)
      : config_(rule.child("action").child("config")), names_(names) {}

  [[nodiscard]] RuleAction read() const {
    warnOfLeavesWithoutEffect();
    const bool looksUp = has(lookUpLeaf);
    const bool decapsulates = has(decapLeaf) || has(fallbackLeaf) || has(postDecapLeaf);
    const JsonNode* const discard = config_.find("discard");
    const bool discards = discard != nullptr && discard->asFlag().value_or(false);
    if (int{looksUp} + int{decapsulates} + int{discards} > 1) {
      refuseSeveral(looksUp && decapsulates);
      return NoAction{};
    }
    if (decapsulates) return Decapsulate{vrf(decapLeaf), vrf(fallbackLeaf), vrf(postDecapLeaf)};
    if (looksUp) return LookUp{vrf(lookUpLeaf)};
    if (discards) return Discard{};
    return NoAction{};
  }

 private:
  [[nodiscard]] bool has(const char* leaf) const { return config_.find(leaf) != nullptr; }

  void warnOfLeavesWithoutEffect() const {
    for (const char* const leaf : {"count", "log"}) {
      if (const JsonNode* const node = config_.find(leaf)) {
        node->warn("has no effect on where a packet goes, ignored");
      }
    }
  }

  void refuseSeveral(bool areLookUps) const {
    config_.node().refuse(
        areLookUps ? "has both \"network-instance\" and a decapsulation; give one of them"
                   : "has both \"discard\" and a network instance; give one of them");
  }

  [[nodiscard]] std::string vrf(const char* leaf) const {
    const JsonNode* const node = config_.require(leaf);
    return node == nullptr ? std::string() : names_.readReference(*node).value_or("");
  }

  JsonObject config_;
  const InstanceNames& names_;
};

}  // namespace

RuleAction readAction(const JsonObject& rule, const InstanceNames& names) {
  return ActionReader(rule, names).read();
}

}  // namespace ZelAgent
