// The platform's keyed collection with actions as keys, compared with three hash maps of the same
// key type and hash. In all three maps, iterators to other entries stay valid after an erase. The
// fastest of the three is the target. Only two of them keep the addresses of entries when the map
// grows, as HashMap2018 does.

#include <absl/container/flat_hash_map.h>
#include <absl/container/node_hash_map.h>

#include <unordered_map>

#include "Mox/HashMap2018.h"
#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::VrfAction;

constexpr unsigned salt = 0x5a17c0de;

struct SameHash {
  std::size_t operator()(const VrfAction& action) const noexcept {
    return action.hash(Mox::HashHelper::hashSeed32() ^ salt);
  }
};

/// The four operations on a map with the interface of the standard library.
template <class Map>
class Standard {
 public:
  void insert(const VrfAction& key, unsigned value) { map_.try_emplace(key, value); }
  void erase(const VrfAction& key) { map_.erase(key); }
  [[nodiscard]] unsigned lookUp(const VrfAction& key) const { return map_.find(key)->second; }
  [[nodiscard]] unsigned sum() const {
    unsigned total = 0;
    for (const auto& [key, value] : map_)
      total += value;
    return total;
  }

 private:
  Map map_;
};

using Flat = Standard<absl::flat_hash_map<VrfAction, unsigned, SameHash>>;
using Node = Standard<absl::node_hash_map<VrfAction, unsigned, SameHash>>;
using Unordered = Standard<std::unordered_map<VrfAction, unsigned, SameHash>>;

class Ours {
 public:
  void insert(const VrfAction& key, unsigned value) { map_.insert(key, value); }
  void erase(const VrfAction& key) { map_.erase(key); }
  [[nodiscard]] unsigned lookUp(const VrfAction& key) const { return *map_.find(key); }
  [[nodiscard]] unsigned sum() const {
    unsigned total = 0;
    for (auto entry = map_.iterator(); entry; ++entry)
      total += entry.value();
    return total;
  }

 private:
  Mox::HashMap2018<VrfAction, unsigned, salt> map_;
};

using Keys = std::vector<VrfAction>;

template <class Contender>
void fill(Contender& contender, const Keys& keys) {
  for (const VrfAction& key : keys)
    contender.insert(key, 1);
}

template <class Contender>
Comparison::Loop lookUp(const Keys& keys, const Keys& asked) {
  auto filled = std::make_shared<Contender>();
  fill(*filled, keys);
  return [filled, &asked, i = std::size_t{0}](benchmark::State& state) mutable {
    for (auto _ : state) {
      benchmark::DoNotOptimize(filled->lookUp(asked[i]));
      if (++i == asked.size()) i = 0;
    }
  };
}

template <class Contender>
Comparison::Pass insertAll(const Keys& keys, const Keys& /*asked*/) {
  return [&keys] {
    Contender contender;
    return timed([&] { fill(contender, keys); });
  };
}

template <class Contender>
Comparison::Pass eraseAll(const Keys& keys, const Keys& asked) {
  return [&keys, &asked] {
    Contender contender;
    fill(contender, keys);
    return timed([&] {
      for (const VrfAction& key : asked)
        contender.erase(key);
    });
  };
}

template <class Contender>
Comparison::Loop iterate(const Keys& keys, const Keys& /*asked*/) {
  auto filled = std::make_shared<Contender>();
  fill(*filled, keys);
  return [filled](benchmark::State& state) {
    for (auto _ : state)
      benchmark::DoNotOptimize(filled->sum());
  };
}

constexpr double most = 1.2;
constexpr const char* flat = "absl::flat_hash_map";
constexpr const char* node = "absl::node_hash_map";
constexpr const char* unordered = "std::unordered_map";

void measure(Report& report, std::size_t size) {
  const Keys keys = actions(size, 1);
  const Keys asked = shuffled(keys, 7);
  const auto perEntry = static_cast<double>(size);
  Comparison("HashMap2018 lookup", size)
      .shouldNotGrow()
      .ours(lookUp<Ours>(keys, asked))
      .beside(flat, ratioAtMost(most), lookUp<Flat>(keys, asked))
      .beside(node, ratioAtMost(most), lookUp<Node>(keys, asked))
      .beside(unordered, ratioAtMost(most), lookUp<Unordered>(keys, asked))
      .measure(report);
  Comparison("HashMap2018 insert", size)
      .shouldNotGrow()
      .timesWork(perEntry)
      .oursPass(insertAll<Ours>(keys, asked))
      .besidePass(flat, ratioAtMost(most), insertAll<Flat>(keys, asked))
      .besidePass(node, ratioAtMost(most), insertAll<Node>(keys, asked))
      .besidePass(unordered, ratioAtMost(most), insertAll<Unordered>(keys, asked))
      .measure(report);
  Comparison("HashMap2018 erase", size)
      .shouldNotGrow()
      .timesWork(perEntry)
      .oursPass(eraseAll<Ours>(keys, asked))
      .besidePass(flat, ratioAtMost(most), eraseAll<Flat>(keys, asked))
      .besidePass(node, ratioAtMost(most), eraseAll<Node>(keys, asked))
      .besidePass(unordered, ratioAtMost(most), eraseAll<Unordered>(keys, asked))
      .measure(report);
  Comparison("HashMap2018 iterate, per entry", size)
      .shouldNotGrow()
      .timesWork(perEntry)
      .ours(iterate<Ours>(keys, asked))
      .beside(flat, ratioAtMost(most), iterate<Flat>(keys, asked))
      .beside(node, ratioAtMost(most), iterate<Node>(keys, asked))
      .beside(unordered, ratioAtMost(most), iterate<Unordered>(keys, asked))
      .measure(report);
}

}  // namespace

void collection(Report& report) {
  for (const std::size_t size : sizes)
    measure(report, size);
}

}  // namespace Benchmarks
