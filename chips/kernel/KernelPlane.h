#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "chips/kernel/BpfTable.h"
#include "chips/kernel/CounterArray.h"
#include "chips/kernel/KernelElements.h"
#include "chips/kernel/MappedArray.h"
#include "chips/kernel/layout/NextHop.h"
#include "chips/kernel/layout/Port.h"
#include "chips/kernel/layout/Program.h"
#include "chips/tables/layout/Classifier.h"
#include "chips/tables/layout/TrieNode.h"

namespace KernelChip {

/// How many entries the maps have. Number 0 of classifiers, programs, resources, next hops and
/// VRFs stands for none, and counts.
struct PlaneSizes {
  std::uint32_t ports = 64;
  std::uint32_t classifiers = 64;
  std::uint32_t ruleSets = 4096;
  std::uint32_t elements = 4096;
  std::uint32_t resources = 1024;
  std::uint32_t vrfs = 1024;
  std::uint32_t trieNodes = 4096;
  std::uint32_t routes = 4096;  // of IPv6, and in exact match
  std::uint32_t nextHops = 1024;
  std::uint32_t ruleCounters = 4096;
};

/// What became of a frame: the verdict of XDP, and the bytes of the frame.
struct FrameResult {
  std::uint32_t verdict = 0;
  std::vector<std::uint8_t> frame;
};

/// The chip's program in the kernel with its maps. Both go with the object.
class KernelPlane final {
 public:
  /// Loads the program. Throws `std::system_error` if the kernel refuses it.
  explicit KernelPlane(const PlaneSizes& sizes);
  KernelPlane(const KernelPlane&) = delete;
  KernelPlane& operator=(const KernelPlane&) = delete;
  ~KernelPlane();

  /// Runs the program once with a frame that comes in by the loopback interface.
  [[nodiscard]] FrameResult run(std::span<const std::uint8_t> frame) const;

 private:
  struct Object;

  std::unique_ptr<Object> object_;

 public:
  BpfTable<ZelPortKey, ZelPort> ports;
  MappedArray<ZelClassifier> classifiers;
  MappedArray<ZelRule> rules;
  MappedArray<ZelRuleSet> ruleSets;
  KernelElements elements;
  MappedArray<__u64> resources;
  MappedArray<ZelProgram> programs;
  MappedArray<__u64> v4Roots;
  MappedArray<ZelTrieNode> trieNodes;
  BpfTable<ZelV6RouteKey, ZelV6Route> v6Routes;
  BpfTable<ZelExactRouteKey, std::uint32_t> exactRoutes;
  MappedArray<ZelNextHop> nextHops;
  CounterArray ruleCounters;
  CounterArray vrfCounters;
  CounterArray portCounters;
  CounterArray reasonCounters;
};

}  // namespace KernelChip
