// The reader reads the leaves of the path table, and no others.
#include "agent/config/PathTable.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/agent/config/FullDocument.h"
#include "tests/agent/config/LeafTable.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

std::string withoutKeys(std::string path) {
  for (auto open = path.find('['); open != std::string::npos; open = path.find('['))
    path.erase(open, path.find(']') - open + 1);
  return path;
}

bool isElementOfAnArray(const std::string& place) {
  return place.ends_with("/0");
}

TEST(PathTable, HasTheLeavesThatTheTestsKnow) {
  std::set<std::string> inTests;
  for (const Leaf& leaf : leafTable) {
    if (leaf.role != KeyRole::key && !isElementOfAnArray(leaf.place)) {
      inTests.insert(schemaPathOf(leaf.place));
    }
  }
  std::set<std::string> inTable;
  for (const ConfigPath& path : configPaths()) {
    if (path.presence != Presence::skipped) inTable.insert(withoutKeys(path.path));
  }
  EXPECT_EQ(inTable, inTests);
}

TEST(PathTable, HasEachPathOnceWithExampleAndMeaning) {
  std::set<std::string> paths;
  for (const ConfigPath& path : configPaths()) {
    EXPECT_TRUE(paths.insert(path.path).second) << path.path;
    EXPECT_TRUE(json::accept(path.example)) << path.path;
    EXPECT_FALSE(path.meaning.empty() || path.meaning.ends_with('.')) << path.path;
  }
  EXPECT_GT(paths.size(), 60U);
}

// What reading the document gives: a configuration, or none for an error.
std::optional<Configuration> resultOf(const json& document) {
  try {
    return readOpenConfig(document.dump(), "f.json").configuration;
  } catch (const ConfigError&) {
    return std::nullopt;
  }
}

// The document without the leaf. A flag, which is true, becomes false instead. A copy of a key
// becomes another key.
json documentWithout(const Leaf& leaf) {
  if (leaf.kind == LeafKind::flag) {
    const bool flag = fullDocument().at(toPointer(leaf.place)).get<bool>();
    return fullDocumentWith({{leaf.place, !flag}});
  }
  if (leaf.role == KeyRole::copy) {
    const json other = leaf.kind == LeafKind::number ? json(11) : json("198.51.100.0/24");
    return fullDocumentWith({{leaf.place, other}});
  }
  return fullDocumentWith({without(leaf.place)});
}

TEST(PathTable, HasNoLeafWithoutEffect) {
  for (const Leaf& leaf : leafTable)
    EXPECT_NE(resultOf(documentWithout(leaf)), fullConfiguration()) << leaf.place;
}

TEST(PathTable, ExamplesOfLeavesAreReadAsThatLeaf) {
  for (const ConfigPath& path : configPaths()) {
    if (path.presence == Presence::keyCopy || path.presence == Presence::skipped) continue;
    for (const Leaf& leaf : leafTable) {
      if (schemaPathOf(leaf.place) != withoutKeys(path.path) || isElementOfAnArray(leaf.place)) {
        continue;
      }
      const std::string place = pathOf(fullDocument(), leaf.place) + ": must be ";
      const json document = fullDocumentWith({{leaf.place, json::parse(path.example)}});
      const std::string refusal = refusalOf(document);
      const bool namesAnother = refusal.find("must be a policy") != std::string::npos ||
                                refusal.find("must be the name of") != std::string::npos ||
                                refusal.find("must be in the dscp-set") != std::string::npos;
      EXPECT_TRUE(namesAnother || refusal.find(place) == std::string::npos) << refusal;
    }
  }
}

TEST(SkippedLeaves, AreAWarningAndHaveNoEffect) {
  for (const json& value : {json("hits"), json(true)}) {
    for (const std::string leaf : {"count", "log"}) {
      const std::string place = "$RULE10/action/config/" + leaf;
      const json document = fullDocumentWith({{place, value}});
      const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
      EXPECT_TRUE(read.configuration == fullConfiguration());
      EXPECT_EQ(read.warnings,
                std::vector<std::string>{"f.json: " + pathOf(document, place) +
                                         ": has no effect on where a packet goes, ignored"});
    }
  }
}

}  // namespace
}  // namespace ZelAgent
