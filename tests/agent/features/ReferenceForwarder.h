// What becomes of packets, told a second time and as plainly as it can be: lists are searched from
// front to back, and nothing is prepared, kept in step or shared with what it is compared with. It
// knows the configuration, the events, and which calls the chip had.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/model/events/Event.h"
#include "chips/interface/HookCall.h"
#include "tests/agent/features/ReferencePacket.h"
#include "tests/agent/features/ReferenceRoutes.h"

namespace ZelAgent {

struct ReferenceVerdict {
  std::string drop;  // the reason; empty where the packet leaves
  std::string egress;
  PacketBytes packet;

  bool operator==(const ReferenceVerdict&) const = default;
};

struct ReferenceCount {
  std::uint64_t packets = 0;
  std::uint64_t bytes = 0;

  bool operator==(const ReferenceCount&) const = default;
};

struct ReferenceCounters {
  // By interface, policy and sequence number; every rule is there.
  std::map<std::tuple<std::string, std::string, std::uint32_t>, ReferenceCount> rules;
  std::map<std::string, ReferenceCount> vrfs;
  std::map<std::string, ReferenceCount> drops;

  bool operator==(const ReferenceCounters&) const = default;
};

// The three names of an action, and whether it decapsulates.
using ReferenceAction = std::tuple<std::string, std::string, std::string, bool>;

class ReferenceForwarder final {
 public:
  explicit ReferenceForwarder(Configuration configuration, std::uint32_t chipCapacity);

  // The event's change of the facts; the calls that it causes are told by `called`.
  void play(const Event& event);
  // What the chip does when it is called after all that was played. Gives what is wrong with the
  // outcome of the call; empty where nothing is.
  [[nodiscard]] std::string called(const Chips::HookCall& call);

  // To be called after the last event and before packets.
  void makeTables();
  [[nodiscard]] ReferenceVerdict forward(const std::string& interface, const PacketBytes& packet);

  [[nodiscard]] const ReferenceCounters& counters() const { return counters_; }
  // The actions that the chip has a resource for.
  [[nodiscard]] std::set<ReferenceAction> programmedActions() const;

 private:
  using Lengths = std::map<IpFamily, std::set<std::uint8_t>>;

  struct VrfFacts {
    std::string name;
    std::uint32_t id = 0;
    Lengths lengths;
  };
  using Walk = std::vector<VrfFacts>;
  struct Program {
    Walk lookUp;
    Walk fallback;
    Walk postDecap;
    bool decapNh = false;
    bool decapNhFallback = false;
  };
  struct Found {
    const ReferenceRoute* route = nullptr;
    std::string vrf;
    std::string drop;  // why there is no route
  };

  [[nodiscard]] VrfFacts factsOf(const std::string& vrf) const;
  [[nodiscard]] Walk walkFrom(std::string vrf) const;
  [[nodiscard]] Program programOf(const ReferenceAction& action) const;
  [[nodiscard]] Program ownVrfOf(const std::string& interface) const;
  [[nodiscard]] bool namesVrfWithoutId(const ReferenceAction& action) const;
  [[nodiscard]] bool failsByPlan(const std::string& vrf);
  // False where the chip cannot.
  [[nodiscard]] bool program(const ReferenceAction& action);

  [[nodiscard]] bool matches(const RuleMatch& match, const ReferenceHeader& header) const;
  [[nodiscard]] bool isInSet(const std::string& set, const IpAddress& address) const;
  // The rule and the id of its policy. Null where no rule matches.
  [[nodiscard]] std::pair<const Rule*, std::string> firstRuleFor(
      const std::string& interface, const ReferenceHeader& header) const;
  [[nodiscard]] ReferenceVerdict select(const std::string& interface, const PacketBytes& packet,
                                        const ReferenceHeader& header);
  [[nodiscard]] ReferenceVerdict send(const std::string& interface, const Program& program,
                                      const PacketBytes& packet, const ReferenceHeader& header);
  [[nodiscard]] Found search(const Walk& walk, const Program& flags, const IpAddress& destination,
                             bool isBehindTunnel) const;
  [[nodiscard]] ReferenceVerdict leaveBy(const Found& found, const PacketBytes& packet,
                                         const ReferenceHeader& header);

  void change(const SetVrfId& event) { ids_[event.vrf] = event.id; }
  void change(const RemoveVrf& event) { ids_.erase(event.vrf); }
  void change(const AddVrf& event) { ids_[event.vrf] = event.id; }
  void change(const SetFallback& event) { fallbacks_[event.vrf] = event.fallback; }
  void change(const RemoveFallback& event) { fallbacks_.erase(event.vrf); }
  void change(const SetDecapNh& event) { decapNh_ = event.isOn; }
  void change(const SetDecapNhFallback& event) { decapNhFallback_ = event.isOn; }
  void change(const SetPrefixLens& event);
  void change(const RemovePrefixLens& event);
  void change(const ApplyConfig& event);
  void change(const SetChipRules& /*event*/) {}  // there is room for all rules
  void change(const SetChipCapacity& event) { capacity_ = event.capacity; }
  void change(const PlanChipFaults& event);
  void change(const SetDecapRoute& event);
  void change(const SetEgressRoute& event);
  void change(const RemoveRoute& event) { routes_[event.vrf].takeBack(event.prefix); }
  void change(const Retry&) {}
  void change(const Show&) {}

  Configuration configuration_;
  std::uint32_t capacity_;
  std::map<std::string, std::uint32_t> faults_;  // planned, by VRF
  std::uint32_t anyFaults_ = 0;
  std::map<std::string, std::uint32_t> ids_;  // of the VRFs that the hardware knows
  std::map<std::string, std::string> fallbacks_;
  std::map<std::string, Lengths> lengths_;
  std::map<std::string, ReferenceRoutes> routes_;
  bool decapNh_ = false;
  bool decapNhFallback_ = false;
  std::map<ReferenceAction, Program> programs_;

  struct Table {
    ReferenceTable routes;
    Lengths lengths;
  };
  std::map<std::uint32_t, Table> tables_;  // by VRF id
  ReferenceCounters counters_;
};

}  // namespace ZelAgent
