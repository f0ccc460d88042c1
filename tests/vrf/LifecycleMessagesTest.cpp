// The messages of an action's life, as an operator reads them: lines of text and ring records.

#include <algorithm>
#include <ostream>
#include <tuple>

#include "Blinklog/Ring.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A record of the ring without its number.
struct Record {
  unsigned level;
  unsigned line;
  std::string path;
  std::string function;
  std::string text;

  friend bool operator==(const Record&, const Record&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const Record& record) {
    return stream << record.level << ' ' << record.path << ':' << record.line << ' '
                  << record.function << ' ' << record.text;
  }
};

constexpr const char* path = "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy";

std::vector<Record> takeRing() {
  std::vector<Record> records;
  for (const Blinklog::Record& record : Blinklog::ring().dump()) {
    records.push_back({record.site->level, record.site->line, record.site->path,
                       record.site->function, record.text});
  }
  Blinklog::ring().clear();
  return records;
}

const Record initializeRecord{5, 289, path, "handleInitialized",
                              "VrfSm::VrfInstanceSm::handleInitialized Initialize VRF SM"};
const Record inUseRecord{
    7, 59, path, "handleVrfRefCountChange",
    "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: VRF HW resource already in use for "
    "VRF:red refCount:2"};
const Record deletingRecord{
    7, 35, path, "handleVrfRefCountChange",
    "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Deleting VRF Hw resource. VRF:red"};

Record createFailedRecord(const std::string& reason) {
  return {
      5, 26, path, "handleVrfRefCountChange",
      "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Failed to create VRF:red. Error:" +
          reason};
}

class VrfSmMessageSinks : public VrfSmFrameFixture {
 protected:
  void SetUp() override { Blinklog::ring().clear(); }

  // Creates (which fails), uses, and deletes red.
  void liveOnce() {
    chip->onCreate = [](const VrfAction&) {
      return failure(FailureCode::failureVrfResourceAlloc, "no memory");
    };
    for (const unsigned count : {1U, 2U, 0U})
      users->vrfRefCountIs(red, count);
  }
  // The lines that the trace wrote, without those of the hooks.
  Lines tracedLines() {
    Lines lines = journal.take();
    std::erase_if(lines, [](const auto& line) { return !line.starts_with("ZelVrfSelection "); });
    return lines;
  }
};

TEST_F(VrfSmMessageSinks, TextLinesAreWholeAndVerbatim) {
  journalTrace();
  start();
  liveOnce();
  const std::string where = "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:";
  EXPECT_THAT(
      tracedLines(),
      ElementsAre("ZelVrfSelection 5 " + where +
                      "289 handleInitialized VrfSm::VrfInstanceSm::handleInitialized Initialize "
                      "VRF SM",
                  "ZelVrfSelection 5 " + where +
                      "26 handleVrfRefCountChange ZelVrfSelectionPolicy::VrfSm::"
                      "handleVrfRefCountChange: Failed to create VRF:red. "
                      "Error:failureVrfResourceAlloc",
                  "ZelVrfSelection 7 " + where +
                      "59 handleVrfRefCountChange ZelVrfSelectionPolicy::VrfSm::"
                      "handleVrfRefCountChange: VRF HW resource already in use for VRF:red "
                      "refCount:2",
                  "ZelVrfSelection 7 " + where +
                      "35 handleVrfRefCountChange ZelVrfSelectionPolicy::VrfSm::"
                      "handleVrfRefCountChange: Deleting VRF Hw resource. VRF:red"));
}

TEST_F(VrfSmMessageSinks, RingRecordsCarryLevelLinePathFunctionAndText) {
  start();
  liveOnce();
  EXPECT_THAT(takeRing(),
              ElementsAre(initializeRecord, createFailedRecord("failureVrfResourceAlloc"),
                          inUseRecord, deletingRecord));
}

TEST_F(VrfSmMessageSinks, LevelsThatAreOffGiveNoTextButStillTheRingRecords) {
  trace.emplace(journal, "ZelVrfSelection=0,1,2,3,4,6,8,9");
  start();
  liveOnce();
  EXPECT_THAT(tracedLines(), IsEmpty());
  EXPECT_THAT(takeRing(),
              ElementsAre(initializeRecord, createFailedRecord("failureVrfResourceAlloc"),
                          inUseRecord, deletingRecord));
}

TEST_F(VrfSmMessageSinks, Level5AloneGivesTextForInitializationAndFailures) {
  trace.emplace(journal, "ZelVrfSelection=5");
  start();
  liveOnce();
  EXPECT_THAT(tracedLines(),
              ElementsAre(initialize(), createFailed("red", "failureVrfResourceAlloc")));
  EXPECT_EQ(takeRing().size(), 4U);
}

TEST_F(VrfSmMessageSinks, Level7AloneGivesTextForUseAndDeletion) {
  trace.emplace(journal, "ZelVrfSelection=7");
  start();
  liveOnce();
  EXPECT_THAT(tracedLines(), ElementsAre(alreadyInUse("red", 2), deleting("red")));
  EXPECT_EQ(takeRing().size(), 4U);
}

TEST_F(VrfSmMessageSinks, AnotherHandlesLevelsDoNotMatter) {
  trace.emplace(journal, "Zel=*;ZelVrf=*;ZelVrfSelectionPolicy=*");
  start();
  liveOnce();
  EXPECT_THAT(tracedLines(), IsEmpty());
}

TEST_F(VrfSmMessageSinks, NamesOfTheGreatestLengthStandWholeInBothSinks) {
  const std::string longest(100, 'v');
  const VrfAction action(longest, PolicyMap::ActionType::vrf);
  journalTrace();
  start();
  users->vrfRefCountIs(action, 1);
  users->vrfRefCountIs(action, 2);
  users->vrfRefCountIs(action, 0);
  EXPECT_THAT(tracedLines(),
              ElementsAre(initialize(), alreadyInUse(longest, 2), deleting(longest)));
  const std::vector<Record> ring = takeRing();
  ASSERT_EQ(ring.size(), 3U);
  EXPECT_EQ(ring[2].text,
            "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange"
            ": Deleting VRF Hw resource. VRF:" +
                longest);
}

class VrfSmFailureReasons : public VrfSmMessageSinks,
                            public ::testing::WithParamInterface<FailureCode> {};

TEST_P(VrfSmFailureReasons, AreTracedByTheirNames) {
  chip->onCreate = [](const VrfAction&) { return failure(GetParam(), "as it comes"); };
  journalTrace();
  start();
  users->vrfRefCountIs(red, 1);
  const std::string reason = stringValue(GetParam()).str();
  EXPECT_THAT(tracedLines(), ElementsAre(initialize(), createFailed("red", reason)));
  EXPECT_THAT(takeRing(), ElementsAre(initializeRecord, createFailedRecord(reason)));
  EXPECT_EQ(statuses->hwStatus(red), failure(GetParam(), "as it comes"));
}

INSTANTIATE_TEST_SUITE_P(EveryCode, VrfSmFailureReasons,
                         ::testing::Values(FailureCode::failureNone,
                                           FailureCode::failureVrfResourceAlloc,
                                           FailureCode::failureVrfResourceExhausted),
                         [](const auto& code) { return stringValue(code.param).str(); });

TEST_F(VrfSmMessageSinks, AReasonWithoutAFailureIsNotTraced) {
  chip->onCreate = [](const VrfAction&) {
    HwStatus status;
    status.failureReasonIs(FailureCode::failureVrfResourceAlloc);
    return status;
  };
  start();
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(takeRing(), ElementsAre(initializeRecord));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
