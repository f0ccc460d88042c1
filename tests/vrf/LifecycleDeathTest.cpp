// Counts that cannot be stop the process, in every build, and say why.

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "Blinklog/Ring.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

const Journal* shownAtAbort = nullptr;

// What was journalled and what the ring holds, at the moment of the abort.
void showAtAbort(int /*signal*/) {
  for (const std::string& line : shownAtAbort->lines()) {
    std::fprintf(stderr, "%s\n", line.c_str());
  }
  for (const Blinklog::Record& record : Blinklog::ring().dump()) {
    std::fprintf(stderr, "ring %u %s:%u %s %s\n", record.site->level, record.site->path.c_str(),
                 record.site->line, record.site->function.c_str(), record.text.c_str());
  }
}

class VrfSmDeathTest : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    start();
    journalTables();
    Blinklog::ring().clear();
  }

  // In the process that is to die.
  void showWhatLedToIt() {
    shownAtAbort = &journal;
    std::signal(SIGABRT, &showAtAbort);
  }

  // The assertion as the platform reports it, after its comment.
  static std::string assertion(const std::string& comment, const std::string& condition,
                               unsigned line) {
    return comment + "\n" + program_invocation_short_name +
           ": /src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:" + std::to_string(line) +
           ": void ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange("
           "const ZelVrfSelectionPolicy::VrfAction&): Assertion `\"" +
           condition + "\" == nullptr' failed.\n";
  }
  static std::string increment() {
    return assertion("Invalid ref count increment", "vrfHwStatus()->hwStatusHas( vrfAction )", 56);
  }
  static std::string deletion(const std::string& action) {
    return assertion(
        "Trying to delete a vrf HW resource that has not been created yet. VRF:" + action, "false",
        45);
  }
  static std::string invalidCount(const std::string& vrf) {
    return "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:52 handleVrfRefCountChange "
           "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Invalid ref count for a vrf "
           "that has not yer been created VRF:" +
           vrf + "\n";
  }
  static std::string deletingUncreated(const std::string& vrf) {
    return "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:41 handleVrfRefCountChange "
           "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Trying to delete a vrf HW "
           "resource that has not been created yet. VRF:" +
           vrf + "\n";
  }
  static std::string stringForm(const std::string& vrf) {
    return "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': " +
           valueToStrep(L3::VrfName(vrf)).str() +
           ", 'fallbackVrfName': " + valueToStrep(L3::VrfName()).str() +
           ", 'postDecapVrfName': " + valueToStrep(L3::VrfName()).str() +
           ", 'action': " + PolicyMap::valueToStrep(PolicyMap::ActionType::vrf).str() + "})";
  }

  // Whole standard error of the process that dies.
  static ::testing::Matcher<const std::string&> says(const std::string& everything) {
    return ::testing::Eq(everything);
  }
};

TEST_F(VrfSmDeathTest, ACountOfTwoForAnActionWithoutAStatusStopsTheProcessAfterItsTrace) {
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        journalTrace();
        users->vrfRefCountIs(red, 2);
      },
      ::testing::KilledBySignal(SIGABRT),
      says(increment() + "ZelVrfSelection 5 " + invalidCount("red") + "ring 5 " +
           invalidCount("red")));
}

TEST_F(VrfSmDeathTest, ACountOfTwoIsInTheRingAlsoWhenItsLevelIsOff) {
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        trace.emplace(journal, "ZelVrfSelection=7");
        users->vrfRefCountIs(red, 2);
      },
      ::testing::KilledBySignal(SIGABRT), says(increment() + "ring 5 " + invalidCount("red")));
}

TEST_F(VrfSmDeathTest, AnIncrementByTwoOfAnActionWithoutAStatusStopsTheProcess) {
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        users->vrfRefCountInc(red, 2);
      },
      ::testing::KilledBySignal(SIGABRT), says(increment() + "ring 5 " + invalidCount("red")));
}

TEST_F(VrfSmDeathTest, ADecrementBelowZeroIsACountAboveOneAndStopsTheProcess) {
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        users->vrfRefCountDec(red, 1);
      },
      ::testing::KilledBySignal(SIGABRT), says(increment() + "ring 5 " + invalidCount("red")));
}

TEST_F(VrfSmDeathTest, ARemovalOfAnActionWithoutAStatusIsToldToTheChipBeforeTheProcessStops) {
  vrfSm = nullptr;
  users->vrfRefCountIs(red, 1);
  start();
  forgetLines();
  Blinklog::ring().clear();
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        journalTrace();
        users->vrfRefCountDel(red);
      },
      ::testing::KilledBySignal(SIGABRT),
      says(deletion(stringForm("red")) + "vrfRefCount red gone\ndeleteVrf red\nZelVrfSelection 7 " +
           deletingUncreated("red") + "ring 7 " + deletingUncreated("red")));
}

TEST_F(VrfSmDeathTest, AZeroForAnActionWithoutAStatusLeavesItsCountEntryWhenTheProcessStops) {
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        // Subscribed anew, before the machine, so as to see each change as it happens.
        vrfSm = nullptr;
        start();
        Blinklog::ring().clear();
        users->vrfRefCountIs(red, 0);
      },
      ::testing::KilledBySignal(SIGABRT),
      says(deletion(stringForm("red")) + "vrfRefCount red = 0\ndeleteVrf red\nring 7 " +
           deletingUncreated("red")));
}

TEST_F(VrfSmDeathTest, TheCommentOnARemovalShowsTheWholeActionAndTheTraceItsVrfAlone) {
  VrfAction full("red", PolicyMap::ActionType::decapVrf);
  full.fallbackVrfNameIs("blue");
  full.postDecapVrfNameIs("green");
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        tables.reset();
        users->vrfRefCountIs(full, 0);
      },
      ::testing::KilledBySignal(SIGABRT),
      says(deletion("Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': " +
                    valueToStrep(L3::VrfName("red")).str() + ", 'fallbackVrfName': " +
                    valueToStrep(L3::VrfName("blue")).str() + ", 'postDecapVrfName': " +
                    valueToStrep(L3::VrfName("green")).str() + ", 'action': " +
                    PolicyMap::valueToStrep(PolicyMap::ActionType::decapVrf).str() + "})") +
           "deleteVrf red>blue>green:" +
           PolicyMap::stringValue(PolicyMap::ActionType::decapVrf).str() + "\nring 7 " +
           deletingUncreated("red")));
}

// That of another action does not count as its own.
TEST_F(VrfSmDeathTest, AZeroInWhoseCourseAnotherResourceEndsStopsTheProcess) {
  struct Ending final : Velo::Subscriber {
    Mox::Ptr<VrfHwConfig> users;
    VrfAction other;
  };
  Ending ending;
  ending.users = users;
  ending.other = lookUpIn("other");
  ending.dispatch = [](Velo::Publisher*, Velo::Subscriber* self, short, const void* key,
                       const void*) {
    const auto& told = *static_cast<Ending*>(self);
    if (!(*static_cast<const VrfAction*>(key) == told.other))
      told.users->vrfRefCountIs(told.other, 0);
  };
  users->vrfRefCountIs(ending.other, 1);
  vrfSm = nullptr;
  users->publisher().subscriberIs(ending);
  start();
  EXPECT_EXIT(
      {
        Blinklog::ring().clear();
        users->vrfRefCountIs(red, 0);
      },
      ::testing::KilledBySignal(SIGABRT),
      ::testing::HasSubstr("Trying to delete a vrf HW resource"));
  users->publisher().subscriberDel(ending);
}

TEST_F(VrfSmDeathTest, ASecondRemovalStopsTheProcess) {
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(red, 0);
  forgetLines();
  tables.reset();
  Blinklog::ring().clear();
  EXPECT_EXIT(
      {
        showWhatLedToIt();
        vrfSm->handleVrfRefCountChange(red);
      },
      ::testing::KilledBySignal(SIGABRT),
      says(deletion(stringForm("red")) + "deleteVrf red\nring 7 " + deletingUncreated("red")));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
