// Why: two entries of one key would leave it open which of them holds.
// Always: a second entry of a key is a ConfigError that names it.
#pragma once

#include <set>
#include <utility>

#include "agent/config/JsonNode.h"

namespace ZelAgent {

template <class Key>
class UniqueKeys final {
 public:
  void add(Key key, const JsonNode& entry) {
    if (!keys_.insert(std::move(key)).second) {
      entry.fail("is given twice; each key may stand once in its list");
    }
  }

 private:
  std::set<Key> keys_;
};

}  // namespace ZelAgent
