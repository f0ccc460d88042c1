#pragma once

#include <bpf/bpf.h>
#include <bpf/libbpf.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "chips/kernel/layout/Counters.h"

namespace KernelChip {

/// The counters of one map, which the programs count on each CPU.
class CounterArray final {
 public:
  explicit CounterArray(int map) noexcept : map_(map) {}

  /// The sum of all CPUs. Zero if the map has no such counter.
  [[nodiscard]] ZelCounter sum(std::uint32_t index) const {
    std::vector<ZelCounter> counters(static_cast<std::size_t>(libbpf_num_possible_cpus()));
    ZelCounter sum{};
    if (bpf_map_lookup_elem(map_, &index, counters.data()) != 0) return sum;
    for (const ZelCounter& counter : counters) {
      sum.packets += counter.packets;
      sum.bytes += counter.bytes;
    }
    return sum;
  }

 private:
  int map_;
};

}  // namespace KernelChip
