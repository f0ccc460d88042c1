#include "Mox/Entity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Mox/Dir.h"
#include "Mox/Exceptions.h"

namespace Mox {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// An entity that writes down the names of the parents that it gets.
class Child final : public Entity {
 public:
  Child(const Velo::String& name, std::vector<std::string>& parents)
      : Entity(name), parents_(parents) {}
  void handleParent(const Ptr<Entity>& parent) override {
    parents_.push_back(parent ? parent->name().str() : "none");
    EXPECT_EQ(this->parent(), parent);
  }

 private:
  std::vector<std::string>& parents_;
};

class Directories : public ::testing::Test {
 protected:
  std::vector<std::string> parents;
  std::vector<std::string> ofSecond;
  Ptr<Dir> dir = Dir::DirIs("dir");
  Ptr<Child> child = makePtr<Child>("child", parents);
};

TEST_F(Directories, HaveNameTypeAndNotifications) {
  EXPECT_EQ(dir->name().bytes(), "dir");
  EXPECT_EQ(dir->nameString().bytes(), "dir");
  EXPECT_EQ(dir->fwkType()->name, "Mox::Dir");
  EXPECT_TRUE(dir->hasNotificationActive());
  EXPECT_EQ(dir->parent(), nullptr);
  EXPECT_EQ(dir->entries(), 0u);
}

TEST_F(Directories, HoldEntriesUnderTheirNames) {
  dir->entryIs(child);
  EXPECT_EQ(dir->entries(), 1u);
  EXPECT_EQ(dir->entry("child").get(), child.get());
  EXPECT_EQ(dir->entry("other"), nullptr);
  EXPECT_EQ(child->references(), 2u);
}

TEST_F(Directories, AreTheParentsOfTheirEntriesWhichDoNotHoldThem) {
  dir->entryIs(child);
  EXPECT_EQ(child->parent().get(), dir.get());
  EXPECT_EQ(dir->references(), 1u);
  EXPECT_THAT(parents, ElementsAre("dir"));
}

TEST_F(Directories, TakeTheSameEntryTwiceWithoutAWord) {
  dir->entryIs(child);
  dir->entryIs(child);
  EXPECT_EQ(dir->entries(), 1u);
  EXPECT_EQ(child->references(), 2u);
  EXPECT_THAT(parents, ElementsAre("dir"));
}

TEST_F(Directories, ReplaceAnEntryOfTheSameName) {
  const Ptr<Child> second = makePtr<Child>("child", ofSecond);
  dir->entryIs(child);
  dir->entryIs(second);
  EXPECT_EQ(dir->entries(), 1u);
  EXPECT_EQ(dir->entry("child").get(), second.get());
  EXPECT_THAT(parents, ElementsAre("dir", "none"));
  EXPECT_THAT(ofSecond, ElementsAre("dir"));
  EXPECT_EQ(child->references(), 1u);
}

TEST_F(Directories, GiveTheEntryThatIsTakenOut) {
  dir->entryIs(child);
  EXPECT_EQ(dir->entryDel("child").get(), child.get());
  EXPECT_EQ(dir->entries(), 0u);
  EXPECT_EQ(child->parent(), nullptr);
  EXPECT_EQ(child->references(), 1u);
  EXPECT_EQ(dir->entryDel("child"), nullptr);
  EXPECT_THAT(parents, ElementsAre("dir", "none"));
}

TEST_F(Directories, RefuseNull) {
  EXPECT_THROW(dir->entryIs(nullptr), NullArgumentException);
  EXPECT_EQ(dir->entries(), 0u);
}

TEST_F(Directories, LeaveTheirEntriesWithoutParentWhenTheyGo) {
  dir->entryIs(child);
  dir = nullptr;
  EXPECT_EQ(child->parent(), nullptr);
  EXPECT_EQ(child->references(), 1u);
}

TEST_F(Directories, DoNotTakeTheParentOfAnEntryThatHasMovedOn) {
  const Ptr<Dir> other = Dir::DirIs("other");
  dir->entryIs(child);
  other->entryIs(child);
  EXPECT_EQ(child->parent().get(), other.get());
  dir->entryDel("child");
  EXPECT_EQ(child->parent().get(), other.get());
  EXPECT_THAT(parents, ElementsAre("dir", "other"));
}

TEST_F(Directories, GoWithoutTakingTheParentOfAnEntryThatHasMovedOn) {
  const Ptr<Dir> other = Dir::DirIs("other");
  dir->entryIs(child);
  other->entryIs(child);
  dir = nullptr;
  EXPECT_EQ(child->parent().get(), other.get());
}

TEST_F(Directories, Nest) {
  const Ptr<Dir> inner = Dir::DirIs("inner");
  dir->entryIs(inner);
  inner->entryIs(child);
  EXPECT_EQ(child->parent()->parent().get(), dir.get());
}

TEST_F(Directories, EntriesAreNotToldOfAParentThatTheyHave) {
  child->parentIs(dir);
  child->parentIs(dir);
  EXPECT_THAT(parents, ElementsAre("dir"));
  child->parentIs(nullptr);
  EXPECT_THAT(parents, ElementsAre("dir", "none"));
}

TEST_F(Directories, AnswerWithATypeWhereAnEntityNamesNone) {
  EXPECT_EQ(child->fwkType()->name, "Mox::Entity");
  EXPECT_EQ(child->nameString().bytes(), "child");
  EXPECT_THAT(parents, IsEmpty());
}

}  // namespace
}  // namespace Mox
