#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Mox/HashMap2018.h"
#include "Mox/PtrInterface.h"
#include "Velo/Export.h"
#include "Velo/Publisher.h"
#include "Velo/String.h"

namespace PolicyMap {

/// A rule of a policy map on an interface to which it is applied.
struct ZEL_EXPORT RuleKey {
  Velo::String intf;
  Velo::String policyMap;
  std::uint32_t sequence = 0;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const RuleKey&) const = default;
};

/// The status of a rule on an interface.
struct RuleStatus {
  bool programmed = false;
  /// The reason if it is not programmed; otherwise empty.
  Velo::String reason;

  bool operator==(const RuleStatus&) const = default;
};

/// The status of each rule of a policy map on each interface: a keyed collection that is an
/// attribute of an entity. After each real change it notifies the entity's subscribers of the
/// changed key and its new value, which is null after a deletion.
///
/// There may be a million rules, so the rules of one policy map on one interface are one vector,
/// in the order of their sequences. A status takes 24 bytes. A search takes the logarithm of the
/// number of rules. An addition behind the last rule, a change and a deletion cost no more. An
/// addition between rules moves those behind it.
///
/// During a notification a subscriber may change the collection again.
class ZEL_EXPORT RuleStatusTable final {
 public:
  /// Publishes through `publisher`, which must outlive this, as the attribute of that number.
  RuleStatusTable(Velo::Publisher& publisher, Mox::AttributeId attribute) noexcept
      : publisher_(publisher), attribute_(attribute) {}
  RuleStatusTable(const RuleStatusTable&) = delete;
  RuleStatusTable& operator=(const RuleStatusTable&) = delete;

  /// Number of statuses.
  [[nodiscard]] std::size_t count() const noexcept { return count_; }
  /// The status of the rule, or null. It is valid until the next change.
  [[nodiscard]] const RuleStatus* find(const RuleKey& rule) const noexcept;
  /// Number of rules of the policy map that are programmed on the interface.
  [[nodiscard]] std::size_t programmed(const Velo::String& intf,
                                       const Velo::String& policyMap) const noexcept;
  /// The interfaces that have statuses.
  [[nodiscard]] std::vector<Velo::String> intfs() const;
  /// The rules on the interface that have a status, but are not those of the policy map with these
  /// sequences, which ascend.
  [[nodiscard]] std::vector<RuleKey> others(const Velo::String& intf, const Velo::String& policyMap,
                                            const std::vector<std::uint32_t>& sequences) const;

  /// Sets the status of the rule, inserting it if absent.
  void is(const RuleKey& rule, const RuleStatus& status);
  /// Removes the status. Returns whether it was present.
  bool del(const RuleKey& rule);

  /// An iteration by interface, policy map and sequence. It allows any change. It visits every
  /// status that is present at its start and not deleted once.
  ///
  ///     for (auto entry = table.iterator(); entry; ++entry) use(entry.key(), entry.value());
  class ZEL_EXPORT Iterator {
   public:
    explicit operator bool() const noexcept { return key_.has_value(); }
    [[nodiscard]] const RuleKey& key() const { return *key_; }
    /// Precondition: the status is not deleted.
    [[nodiscard]] const RuleStatus& value() const { return *table_->find(*key_); }
    Iterator& operator++();

   private:
    friend class RuleStatusTable;
    explicit Iterator(const RuleStatusTable& table);
    ZEL_HIDDEN void settle();

    const RuleStatusTable* table_;
    std::vector<Velo::String> intfs_;  // still to visit, the next one last
    std::vector<RuleKey> rules_;       // of the present interface, the next one last
    std::optional<RuleKey> key_;
  };
  [[nodiscard]] Iterator iterator() const { return Iterator(*this); }

 private:
  // A slot whose rule was deleted stays until many are empty.
  struct Slot {
    std::uint32_t sequence = 0;
    bool isUsed = false;
    RuleStatus status;
  };
  struct Rules {
    Velo::String policyMap;
    std::vector<Slot> slots;  // ascending
    std::size_t used = 0;
    std::size_t programmed = 0;
  };
  using RulesOfIntf = std::vector<Rules>;  // none without a used slot
  using Intfs = Mox::HashMap2018<Velo::String, RulesOfIntf, 0x18f5a2c9>;

  [[nodiscard]] ZEL_HIDDEN const Rules* rulesOf(const Velo::String& intf,
                                                const Velo::String& policyMap) const noexcept;
  [[nodiscard]] ZEL_HIDDEN Rules& rulesIs(const RuleKey& rule);
  [[nodiscard]] ZEL_HIDDEN static Slot& slotIs(Rules& rules, std::uint32_t sequence);
  ZEL_HIDDEN void discardUnused(const Velo::String& intf, RulesOfIntf& present, Rules& rules);

  Velo::Publisher& publisher_;
  Mox::AttributeId attribute_;
  Intfs intfs_;
  std::size_t count_ = 0;
};

}  // namespace PolicyMap
