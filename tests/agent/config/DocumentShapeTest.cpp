// What holds for every member, container and list of a document.
#include <gtest/gtest.h>

#include "tests/agent/config/FullDocument.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

bool isMember(const std::string& place) {
  return !place.empty() && place.find_last_not_of("0123456789") != place.rfind('/');
}

std::vector<std::string> memberPlaces() {
  std::vector<std::string> members = allPlaces();
  std::erase_if(members, [](const std::string& place) { return !isMember(place); });
  return members;
}

std::vector<std::string> objectPlaces() {
  std::vector<std::string> objects;
  const json document = fullDocument();
  for (const std::string& place : allPlaces()) {
    if (document.at(toPointer(place)).is_object()) objects.push_back(place);
  }
  return objects;
}

std::string rootOr(const std::string& path) {
  return path.empty() ? "/" : path;
}

// The document with the member under another name.
json withMemberNamed(const std::string& place, const std::string& name) {
  json document = fullDocument();
  const auto pointer = toPointer(place);
  json& parent = document.at(pointer.parent_pointer());
  json value = parent.at(pointer.back());
  parent.erase(pointer.back());
  parent[name] = std::move(value);
  return document;
}

std::string lastStep(const std::string& place) {
  return place.substr(place.rfind('/') + 1);
}

TEST(EveryMember, MayHaveAnOpenConfigPrefix) {
  ASSERT_FALSE(memberPlaces().empty());
  for (const std::string& place : memberPlaces()) {
    SCOPED_TRACE(place);
    const json document = withMemberNamed(place, "openconfig-any:" + lastStep(place));
    const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
    EXPECT_TRUE(read.configuration == fullConfiguration());
    EXPECT_EQ(read.warnings, std::vector<std::string>{});
  }
}

TEST(EveryMember, IsGivenEitherWithOrWithoutItsPrefix) {
  for (const std::string& place : memberPlaces()) {
    json document = fullDocument();
    const auto pointer = toPointer(place);
    const json value = document.at(pointer);
    const std::string prefixed = "openconfig-any:" + pointer.back();
    document[pointer.parent_pointer()][prefixed] = value;
    const bool prefixedIsFirst = prefixed < pointer.back();
    const std::string refused = prefixedIsFirst ? pointer.back() : prefixed;
    EXPECT_EQ(refusalOf(document),
              "f.json: " + pathOf(document, place.substr(0, place.rfind('/'))) + '/' + refused +
                  ": is given twice, with and without its module prefix; give each member once");
  }
}

// Whether what is unknown there could change what a rule matches or does.
bool isOfARule(const std::string& place) {
  return place.find("/rule/") != std::string::npos || place.find("-set/") != std::string::npos;
}

TEST(EveryObject, WarnsOfAnUnknownMemberOnceAndIgnoresItOutsideOfRules) {
  for (const std::string& place : objectPlaces()) {
    if (isOfARule(place)) continue;
    for (const char* const name : {"vendor:name", "openconfig-any:unknown"}) {
      json document = fullDocument();
      document[toPointer(place)][name] = json::parse(R"({"deep": {"deeper": 1}})");
      const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
      EXPECT_EQ(read.warnings, std::vector<std::string>{"f.json: " + pathOf(document, place) + '/' +
                                                        name + ": unknown member, ignored"});
      EXPECT_TRUE(read.configuration == fullConfiguration());
    }
  }
}

TEST(EveryObject, RefusesAnUnknownMemberInsideOfRulesAndSets) {
  std::size_t count = 0;
  for (const std::string& place : objectPlaces()) {
    if (!isOfARule(place)) continue;
    for (const char* const name : {"vendor:name", "openconfig-any:unknown"}) {
      json document = fullDocument();
      document[toPointer(place)][name] = json::parse(R"({"deep": {"deeper": 1}})");
      const std::string start = "f.json: " + pathOf(document, place) + '/' + name +
                                ": is not supported; supported here: ";
      EXPECT_EQ(refusalOf(document).substr(0, start.size()), start);
      EXPECT_EQ(refusalOf(document).find('\n'), std::string::npos);
      ++count;
    }
  }
  EXPECT_GT(count, 40U);
}

TEST(EveryObject, SkipsStateAndDescriptionsSilently) {
  for (const std::string& place : objectPlaces()) {
    json document = fullDocument();
    document[toPointer(place)]["state"] = json::parse(R"({"deep": {"deeper": 1}})");
    document[toPointer(place)]["openconfig-any:description"] = "text";
    const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
    EXPECT_EQ(read.warnings, std::vector<std::string>{});
    EXPECT_TRUE(read.configuration == fullConfiguration());
  }
}

TEST(EveryObject, RefusesAnyOtherValueInItsPlace) {
  for (const std::string& place : objectPlaces()) {
    for (const json& value : {json(), json(true), json(5), json("text"), json::array()}) {
      json document = fullDocument();
      const std::string path = [&] {
        if (isMember(place) || place.empty()) return rootOr(pathOf(document, place));
        const std::string list = place.substr(0, place.rfind('/'));
        return pathOf(document, list) + '[' + std::to_string(std::stoul(lastStep(place)) + 1) + ']';
      }();
      document[toPointer(place)] = value;
      EXPECT_EQ(refusalOf(document),
                "f.json: " + path + ": must be an object, not " + shownValue(value));
    }
  }
}

TEST(EveryList, RefusesAnyOtherValueInItsPlace) {
  const json original = fullDocument();
  for (const std::string& place : allPlaces()) {
    const json& list = original.at(toPointer(place));
    if (!list.is_array() || !list[0].is_object()) continue;
    for (const json& value : {json(), json(false), json(5), json("text"), json::object()}) {
      EXPECT_EQ(refusalOf(fullDocumentWith({{place, value}})),
                "f.json: " + pathOf(original, place) + ": must be an array of objects, not " +
                    shownValue(value));
    }
  }
}

TEST(EveryReference, WarnsOfAnInstanceThatIsNotConfigured) {
  for (const std::string place :
       {"$RED/config/fallback-network-instance", "$RULE10/action/config/network-instance",
        "$RULE20/action/config/decap-network-instance",
        "$RULE20/action/config/decap-fallback-network-instance",
        "$RULE20/action/config/post-decap-network-instance"}) {
    const json document = fullDocumentWith({{place, "ghost"}});
    EXPECT_EQ(readOpenConfig(document.dump(), "f.json").warnings,
              std::vector<std::string>{"f.json: " + pathOf(document, place) +
                                       ": names network instance \"ghost\", which is not "
                                       "configured"});
  }
}

TEST(EveryProtocol, ThatIsNotStaticIsAWarning) {
  for (const char* const identifier :
       {"", "BGP", "static", "vendor:STATIC", "openconfig-a:b:STATIC", "openconfig:STATIC"}) {
    const json document = fullDocumentWith(
        {{"$PROTOCOL/identifier", identifier}, {"$PROTOCOL/config/identifier", identifier}});
    const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
    EXPECT_EQ(read.warnings,
              std::vector<std::string>{"f.json: " + pathOf(document, "$PROTOCOL") +
                                       ": only protocols with the identifier STATIC are read, "
                                       "ignored"});
    EXPECT_TRUE(read.configuration.networkInstances.at(1).staticRoutes.empty());
  }
}

}  // namespace
}  // namespace ZelAgent
