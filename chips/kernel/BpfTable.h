#pragma once

#include <bpf/bpf.h>

#include <cerrno>
#include <optional>

namespace KernelChip {

/// A hash table or a trie of the kernel, by key. Each call is one step for packets.
template <class Key, class Value>
class BpfTable final {
 public:
  explicit BpfTable(int map) noexcept : map_(map) {}

  /// Adds or replaces. Returns 0, or the error: `ENOSPC` and `E2BIG` if the table is full.
  [[nodiscard]] int valueIs(const Key& key, const Value& value) const {
    return bpf_map_update_elem(map_, &key, &value, BPF_ANY) == 0 ? 0 : errno;
  }
  /// Returns whether there was one.
  bool valueDel(const Key& key) const { return bpf_map_delete_elem(map_, &key) == 0; }
  [[nodiscard]] std::optional<Value> value(const Key& key) const {
    Value found;
    if (bpf_map_lookup_elem(map_, &key, &found) != 0) return std::nullopt;
    return found;
  }

 private:
  int map_;
};

}  // namespace KernelChip
