#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "tests/vrf/cost/Allocations.h"
#include "tests/vrf/cost/CountingChip.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::string numbered(const char* name, unsigned number) {
  std::string text(name);
  text += std::to_string(number);
  return text;
}

using Page = std::uintptr_t;

Page pageSize() {
  return static_cast<Page>(sysconf(_SC_PAGESIZE));
}

Page pageOf(const void* memory) {
  return reinterpret_cast<Page>(memory) / pageSize() * pageSize();
}

/// Pages that end the process when anything on them is read or written, as long as this lives.
class Forbidden {
 public:
  explicit Forbidden(const std::set<Page>& pages) : pages_(pages) { protect(PROT_NONE); }
  Forbidden(const Forbidden&) = delete;
  Forbidden& operator=(const Forbidden&) = delete;
  ~Forbidden() { protect(PROT_READ | PROT_WRITE); }

 private:
  void protect(int protection) const {
    for (const Page page : pages_) {
      EXPECT_EQ(mprotect(reinterpret_cast<void*>(page), pageSize(), protection), 0);
    }
  }

  const std::set<Page>& pages_;
};

// A table of which 16 actions name "red", scattered among 100,000 that do not. No entry of these
// stands on a page with one of those, nor with anything else that was allocated.
class RefreshCost : public ::testing::Test {
 protected:
  static constexpr unsigned others = 100000;
  static constexpr unsigned naming = 16;

  RefreshCost() {
    nameActions();
    fillTable();
    separatePages();
    vrfSm = VrfSm::VrfSmIs(VrfHwConfig::VrfHwConfigIs(), statuses, chip, fallback, routes, nullptr);
    redStatus = routes->vrfStatusIs("red");
  }

  // What naming a VRF for the first time allocates is no part of the table.
  void nameActions() {
    for (unsigned i = 0; i < naming; ++i) {
      VrfAction action(i % 3 == 0 ? std::string("red") : numbered("with", i),
                       PolicyMap::ActionType::vrf);
      action.fallbackVrfNameIs(i % 3 == 1 ? std::string("red") : numbered("fallback", i));
      action.postDecapVrfNameIs(i % 3 == 2 ? std::string("red") : numbered("decap", i));
      namingRed.push_back(action);
    }
    // More than are asked for, since some will share a page with those that name "red".
    for (unsigned i = 0; i < others + others / 50; ++i) {
      VrfAction action(numbered("vrf", i), PolicyMap::ActionType::vrf);
      action.fallbackVrfNameIs(numbered("fallback", i % 100));
      if (!hashesLikeOneNamingRed(action)) notNamingRed.push_back(action);
    }
  }

  // A search has to look at an entry whose hash is the same; so there shall be none.
  bool hashesLikeOneNamingRed(const VrfAction& action) const {
    const unsigned seed = Mox::HashHelper::hashSeed32() ^ 0x7b6bc380;
    for (const VrfAction& red : namingRed) {
      if (red.hash(seed) == action.hash(seed)) return true;
    }
    return false;
  }

  void fillTable() {
    const Allocations::OnPagesOfTheirOwn entriesStandAlone;
    const std::size_t apart = notNamingRed.size() / naming;
    for (std::size_t i = 0; i < notNamingRed.size(); ++i) {
      if (i % apart == 0 && i / apart < naming) {
        statuses->hwStatusIs(namingRed[i / apart], HwStatus());
      }
      statuses->hwStatusIs(notNamingRed[i], HwStatus());
    }
  }

  void separatePages() {
    std::set<Page> allowed;
    for (const VrfAction& action : namingRed)
      insertPages(allowed, action);
    std::vector<VrfAction> kept;
    for (const VrfAction& action : notNamingRed) {
      std::set<Page> pages;
      insertPages(pages, action);
      bool shared = false;
      for (const Page page : pages)
        shared = shared || allowed.count(page) != 0;
      if (shared || kept.size() == others) {
        statuses->hwStatusDel(action);
      } else {
        kept.push_back(action);
        forbidden.insert(pages.begin(), pages.end());
      }
    }
    notNamingRed.swap(kept);
  }

  // The pages on which the entry of `action` stands, key and value.
  void insertPages(std::set<Page>& pages, const VrfAction& action) const {
    const auto at = statuses->hwStatus().position(action);
    const VrfAction& key = statuses->hwStatus().key(at);
    const HwStatus& value = statuses->hwStatus().value(at);
    pages.insert({pageOf(&key), pageOf(&key + 1), pageOf(&value), pageOf(&value + 1)});
  }

  std::vector<VrfAction> namingRed;
  std::vector<VrfAction> notNamingRed;
  std::set<Page> forbidden;
  Mox::Ptr<VrfHwStatus> statuses = VrfHwStatus::VrfHwStatusIs();
  Mox::Ptr<CountingChip> chip = Mox::makePtr<CountingChip>();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing::Hardware::VrfStatus> redStatus;
  Mox::Ptr<VrfSm> vrfSm;
};

using RefreshCostDeathTest = RefreshCost;

TEST_F(RefreshCost, TableHoldsWhatTheOtherTestsSpeakOf) {
  EXPECT_EQ(namingRed.size(), 16U);
  EXPECT_EQ(notNamingRed.size(), 100000U);
  EXPECT_EQ(statuses->hwStatus().count(), 100016U);
  for (const VrfAction& action : namingRed)
    EXPECT_TRUE(statuses->hwStatusHas(action));
  EXPECT_GT(forbidden.size(), 1000U);
}

TEST_F(RefreshCostDeathTest, LookingAtAnyOtherEntryWouldBeNoticed) {
  EXPECT_DEATH(
      {
        const Forbidden entries(forbidden);
        static_cast<void>(statuses->hwStatus(notNamingRed.front()));
      },
      "");
  EXPECT_DEATH(
      {
        const Forbidden entries(forbidden);
        static_cast<void>(statuses->hwStatus(notNamingRed.back()));
      },
      "");
}

TEST_F(RefreshCost, AllocationsOfTheLibraryAreCounted) {
  const std::size_t before = Allocations::made();
  const auto another = VrfHwStatus::VrfHwStatusIs();
  another->hwStatusIs(namingRed[0], HwStatus());
  EXPECT_GT(Allocations::made(), before);
}

TEST_F(RefreshCost, RefreshOfOneVrfLooksAtItsSixteenEntriesOnlyAndAllocatesNothing) {
  std::size_t allocations = 0;
  {
    const Forbidden entries(forbidden);
    const std::size_t before = Allocations::made();
    vrfSm->updateAllVrfActions("red");
    allocations = Allocations::made() - before;
  }
  EXPECT_EQ(chip->updates(), 16U);
  EXPECT_EQ(allocations, 0U);
}

TEST_F(RefreshCost, ChangeOfAVrfIdLooksAtItsSixteenEntriesOnlyAndAllocatesNothing) {
  std::size_t allocations = 0;
  {
    const Forbidden entries(forbidden);
    const std::size_t before = Allocations::made();
    redStatus->vrfIdIs(7);
    allocations = Allocations::made() - before;
  }
  EXPECT_EQ(chip->updates(), 16U);
  EXPECT_EQ(allocations, 0U);
}

TEST_F(RefreshCost, RefreshOfAVrfThatNoActionNamesLooksAtNothingAndAllocatesNothing) {
  const L3::VrfName unnamed("unnamed");
  std::set<Page> all = forbidden;
  for (const VrfAction& action : namingRed)
    insertPages(all, action);
  std::size_t allocations = 0;
  {
    const Forbidden entries(all);
    const std::size_t before = Allocations::made();
    vrfSm->updateAllVrfActions(unnamed);
    allocations = Allocations::made() - before;
  }
  EXPECT_EQ(chip->updates(), 0U);
  EXPECT_EQ(allocations, 0U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
