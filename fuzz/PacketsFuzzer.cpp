// Fuzzes the forwarding of packets by the software chip. The first byte of the input is the number
// of changes of the network, which follow. The next byte says how to use the rest: as an Ethernet
// frame or as a raw IP packet, by which interface, and whether to correct IPv4 checksums first.
//
// Every packet is dropped for one reason or leaves by one interface. It is counted once: for that
// reason or for the VRF that routed it, and for at most one rule. The compiled rules and a search
// of the rules one by one, which an observer of the steps causes, have the same result. A packet
// that leaves passes `checkLeft`.

#include <numeric>

#include "agent/model/packets/Captures.h"
#include "fuzz/Must.h"
#include "fuzz/PacketChecks.h"
#include "fuzz/PacketWorld.h"

namespace {

using Chips::DropReason;
using Chips::Forwarder;
using Chips::PacketCounter;
using Chips::Verdict;
using Fuzz::FuzzedBytes;
using Fuzz::must;
using Fuzz::PacketWorld;

constexpr unsigned mostChanges = 12;

// Records how a packet ended.
class EndOfWay final : public Chips::PacketWay {
 public:
  void decapsulated(const Chips::PacketHeader& /*outer*/, const Chips::PacketHeader& /*arrived*/,
                    const Chips::PacketHeader& /*inner*/) override {
    ++decapsulations_;
  }
  void dropped(DropReason reason, std::string_view /*detail*/) override {
    ++ends_;
    reason_ = reason;
  }
  void left(const std::string& intf, const L3::VrfName& /*vrf*/,
            const Chips::PacketHeader& /*header*/) override {
    ++ends_;
    egress_ = intf;
  }

  [[nodiscard]] bool wasDecapsulated() const noexcept { return decapsulations_ != 0; }
  // Checks that the verdict is the recorded end.
  void check(const Verdict& verdict) const {
    must(ends_ == 1, "the end of a way is reported once");
    must(decapsulations_ <= 1, "a packet is decapsulated once");
    must(reason_ == verdict.drop && egress_ == verdict.egress, "the end of a way is the verdict");
  }

 private:
  int ends_ = 0;
  int decapsulations_ = 0;
  std::optional<DropReason> reason_;
  std::string egress_;
};

struct Counts {
  PacketCounter dropped;
  PacketCounter left;
  std::uint64_t byRules = 0;

  bool operator==(const Counts&) const = default;
};

void add(PacketCounter& sum, const PacketCounter& counter) {
  sum.packets += counter.packets;
  sum.bytes += counter.bytes;
}

Counts countsOf(PacketWorld& world, const std::string& intf) {
  Counts counts;
  for (std::size_t reason = 0; reason < Chips::dropReasons; ++reason)
    add(counts.dropped, world.forwarder().dropCounter(static_cast<DropReason>(reason)));
  for (const auto& [vrf, counter] : world.forwarder().vrfCounters())
    add(counts.left, counter);
  counts.byRules = world.packetsByRules(intf);
  return counts;
}

void checkCounts(const Counts& before, const Counts& after, const Verdict& verdict) {
  const std::uint64_t dropped = verdict.drop ? 1 : 0;
  must(after.dropped.packets - before.dropped.packets == dropped, "a drop is counted once");
  must(after.left.packets - before.left.packets == 1 - dropped, "what leaves is counted once");
  must(after.left.bytes - before.left.bytes == verdict.packet.size(), "and as long as it leaves");
  must(after.byRules - before.byRules <= 1, "a packet is counted for one rule at most");
}

Verdict forwardCounted(PacketWorld& world, const std::string& intf, Fuzz::PacketBytes packet) {
  const Counts before = countsOf(world, intf);
  Verdict verdict = world.forwarder().forward(intf, packet);
  checkCounts(before, countsOf(world, intf), verdict);
  return verdict;
}

void forward(PacketWorld& world, const std::string& intf, Fuzz::PacketBytes packet) {
  const Verdict verdict = forwardCounted(world, intf, packet);
  EndOfWay way;
  const Counts counted = countsOf(world, intf);
  must(world.forwarder().explain(intf, packet, way) == verdict, "what is explained happens");
  must(countsOf(world, intf) == counted, "to explain counts nothing");
  way.check(verdict);
  if (verdict.drop) {
    must(verdict.egress.empty() && verdict.packet.empty(), "a packet that is dropped is gone");
  } else {
    must(!verdict.egress.empty(), "a packet that leaves has an interface to do so");
    Fuzz::checkLeft(verdict.packet, packet, way.wasDecapsulated());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedBytes input(data, size);
  PacketWorld world;
  for (unsigned changes = input.below(mostChanges + 1); changes > 0; --changes)
    world.change(input);
  const std::uint8_t how = input.byte();
  std::vector<std::uint8_t> bytes(input.rest().begin(), input.rest().end());
  const bool isFrame = (how & 1U) != 0;
  const auto inFrame = isFrame ? ZelAgent::ipPacketIn(bytes) : bytes;
  if (!inFrame) return 0;
  std::vector<std::uint8_t> packet(inFrame->begin(), inFrame->end());
  if ((how & 2U) == 0) Fuzz::correctChecksums(packet);
  forward(world, PacketWorld::intfs()[(how & 4U) == 0 ? 0 : 1], packet);
  return 0;
}
