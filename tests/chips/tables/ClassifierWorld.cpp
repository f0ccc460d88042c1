#include "tests/chips/tables/ClassifierWorld.h"

#include <algorithm>

namespace ChipTables {
namespace {

std::uint32_t longest(const void* world, const ZelPacketFields* packet, std::uint32_t field) {
  return static_cast<const ClassifierWorld*>(world)->elements.longest(
      *packet, ClassifierWorld::index, field);
}

const ZelRule* ruleAt(const void* world, std::uint32_t number) {
  return &static_cast<const ClassifierWorld*>(world)->rules[number];
}

}  // namespace

ZelPacketFields fieldsOf(const Chips::PacketHeader& header) {
  ZelPacketFields fields{};
  std::copy(header.source.bytes.begin(), header.source.bytes.end(), fields.source);
  std::copy(header.destination.bytes.begin(), header.destination.bytes.end(), fields.destination);
  fields.length = static_cast<std::uint32_t>(header.totalLength);
  fields.fragmentOffset = header.fragment.offset;
  fields.family = header.family == Ip::Family::v4 ? 0 : 1;
  fields.protocol = header.protocol;
  fields.dscp = header.dscp;
  fields.hopLimit = header.ttl;
  fields.isFragment = header.fragment.isFragment() ? 1 : 0;
  if (header.ports) {
    fields.hasPorts = 1;
    fields.sourcePort = header.ports->source;
    fields.destinationPort = header.ports->destination;
  }
  if (header.tcpFlags) {
    fields.hasTcpFlags = 1;
    fields.tcpFlags = *header.tcpFlags;
  }
  return fields;
}

ClassifierWorld::ClassifierWorld(std::function<void()> look, ClassifierSizes sizes,
                                 std::function<void()> wait)
    : setMemory(sizes.sets + zelFirstRuleSet),
      clock(std::move(wait)),
      elements(sizes.elements, look),
      sets(setMemory, clock, Stores(look)),
      list(*classifier, index, rules, sets, elements, clock, Stores(look)) {}

std::uint64_t ClassifierWorld::actionFor(const ZelPacketFields& packet) const {
  PacketOnItsWay way(*this, packet);
  std::size_t steps = std::size_t{zelScanSteps} + zelFields;
  while (steps-- > 0 && !way.step())
    continue;
  return way.action();
}

PacketOnItsWay::PacketOnItsWay(const ClassifierWorld& world, const ZelPacketFields& packet)
    : world_(&world), packet_(packet) {
  scan_.classifier = world.classifier.get();
  scan_.epoch = zelLoadFirst(&world.classifier->epoch);
}

bool PacketOnItsWay::step() {
  if (field_ == zelFields) return zelScanStep(&scan_, {ruleAt, world_}) != 0;
  const std::uint32_t set = zelSetOf(scan_.classifier, &packet_, field_, {longest, world_});
  scan_.sets[field_++] = &world_->setMemory[set];
  if (field_ == zelFields) zelScanBegins(&scan_);
  return false;
}

}  // namespace ChipTables
