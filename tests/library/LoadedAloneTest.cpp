// The library in a process that was linked neither to it nor to its platform: everything is found
// by name, as an agent finds a plug-in.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "Mox/Reflection.h"
#include "Mox/Type.h"
#include "tests/library/LibraryPath.h"

namespace {

using LoadedLibrary::libraryPath;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

// The platform's functions by the names that the compiler gives them.
using FindType = const Mox::Type* (*)(std::string_view);
constexpr const char* findTypeName = "_ZN3Mox7moxTypeESt17basic_string_viewIcSt11char_traitsIcEE";
using ModuleNames = std::vector<std::string_view> (*)();
constexpr const char* moduleNamesName = "_ZN3Mox10moxModulesEv";

/// A shared library that is loaded while this lives.
class Loaded {
 public:
  explicit Loaded(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) ADD_FAILURE() << dlerror();
  }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() {
    if (handle_ == nullptr) return;
    EXPECT_EQ(dlclose(handle_), 0) << dlerror();
  }

  [[nodiscard]] void* symbol(const std::string& name) const {
    return handle_ == nullptr ? nullptr : dlsym(handle_, name.c_str());
  }
  template <class Function>
  [[nodiscard]] Function function(const char* name) const {
    return reinterpret_cast<Function>(symbol(name));
  }

 private:
  void* handle_;
};

bool isMapped(std::string_view file) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find(file) != line.npos) return true;
  }
  return false;
}

const std::vector<std::string> typeNames{
    "ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm",
    "ZelVrfSelectionPolicy::DependentVrfInfo",
    "ZelVrfSelectionPolicy::FailureCode",
    "ZelVrfSelectionPolicy::HwStatus",
    "ZelVrfSelectionPolicy::PolicySmMounts",
    "ZelVrfSelectionPolicy::ProgrammingResult",
    "ZelVrfSelectionPolicy::VrfAction",
    "ZelVrfSelectionPolicy::VrfHelper",
    "ZelVrfSelectionPolicy::VrfHwConfig",
    "ZelVrfSelectionPolicy::VrfHwStatus",
    "ZelVrfSelectionPolicy::VrfSm",
    "ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm",
};

TEST(LoadedAlone, NothingOfItIsThereBefore) {
  EXPECT_FALSE(isMapped("libZelVrfSelectionPolicy"));
  EXPECT_FALSE(isMapped("libZelPlatform"));
}

TEST(LoadedAlone, BringsThePlatformAndAllItNeeds) {
  const Loaded library(libraryPath());
  EXPECT_TRUE(isMapped("libZelVrfSelectionPolicy"));
  EXPECT_TRUE(isMapped("libZelPlatform"));
}

TEST(LoadedAlone, ShowsEveryFactoryAndStaticCreator) {
  const Loaded library(libraryPath());
  const std::string space = "_ZN21ZelVrfSelectionPolicy";
  for (const char* factory :
       {"18vrfHwConfigFactoryEv", "18vrfHwStatusFactoryEv", "21policySmMountsFactoryEv",
        "11VrfHwConfig13VrfHwConfigIsEv", "11VrfHwStatus13VrfHwStatusIsEv",
        "14PolicySmMounts16PolicySmMountsIsEv"}) {
    EXPECT_NE(library.symbol(space + factory), nullptr) << factory;
  }
  const std::string vrfSmArguments =
      "ERKN3Mox3PtrINS_11VrfHwConfigEEERKNS1_INS_11VrfHwStatusEEERKNS1_INS_9VrfHelperEEERKNS1_"
      "IKN18VrfSelectionPolicy23VrfSelectionFallbackVrfEEERKNS1_IKN7Routing8Hardware11RouteStatusE"
      "EERKNS1_IKN8Routing68Hardware11RouteStatusEEE";
  EXPECT_NE(library.symbol(space + "12vrfSmFactory" + vrfSmArguments), nullptr);
  const std::string policySmArguments =
      "ERKN3Mox3PtrIN9PolicyMap18PolicyMapAclHelperEEERKNS1_INS_14PolicySmMountsEEERKNS1_INS_"
      "9VrfHelperEEERKNS1_IKN18VrfSelectionPolicy23VrfSelectionFallbackVrfEEERKNS1_"
      "IKN7Routing8Hardware11RouteStatusEEERKNS1_IKN8Routing68Hardware11RouteStatusEEE";
  EXPECT_NE(library.symbol(space + "30zelVrfSelectionPolicySmFactory" + policySmArguments),
            nullptr);
}

TEST(LoadedAlone, DoesNotShowWhatIsItsOwnAffair) {
  const Loaded library(libraryPath());
  EXPECT_EQ(library.symbol("_ZN21ZelVrfSelectionPolicy12ActionsByVrf5clearEv"), nullptr);
  EXPECT_EQ(library.symbol("_ZTVN21ZelVrfSelectionPolicy12noSuchThing"), nullptr);
}

TEST(LoadedAlone, RegistersItsTypesByBeingLoaded) {
  const Loaded library(libraryPath());
  const auto findType = library.function<FindType>(findTypeName);
  const auto moduleNames = library.function<ModuleNames>(moduleNamesName);
  ASSERT_NE(findType, nullptr);
  ASSERT_NE(moduleNames, nullptr);
  EXPECT_THAT(moduleNames(), Contains("ZelVrfSelectionPolicy"));
  for (const std::string& name : typeNames) {
    const Mox::Type* type = findType(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_EQ(type->name, name);
  }
}

TEST(LoadedAlone, LetsItsTypesBeUsedByNameAndNumber) {
  const Loaded library(libraryPath());
  const auto findType = library.function<FindType>(findTypeName);
  ASSERT_NE(findType, nullptr);
  const Mox::Type* actionType = findType("ZelVrfSelectionPolicy::VrfAction");
  ASSERT_NE(actionType, nullptr);
  ASSERT_NE(actionType->reflection, nullptr);
  std::vector<std::string> attributes;
  for (const Mox::Attribute& attribute : actionType->reflection->attributes) {
    attributes.push_back(std::to_string(attribute.number) + " " + std::string(attribute.name) +
                         " " + attribute.kind());
  }
  EXPECT_THAT(attributes,
              ElementsAre("2 vrfName L3::VrfName", "3 fallbackVrfName L3::VrfName",
                          "4 postDecapVrfName L3::VrfName", "5 action PolicyMap::ActionType"));

  const Mox::ValueOperations& actions = *actionType->reflection->value;
  void* parsed = actions.parse(
      "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': 'red', 'fallbackVrfName': '', "
      "'postDecapVrfName': '', 'action': actionVrf})");
  void* copy = actions.copy(parsed);
  void* unset = actions.construct(Mox::Arguments(actionType->name, {}));
  EXPECT_TRUE(actions.isSet(parsed));
  EXPECT_FALSE(actions.isSet(unset));
  EXPECT_TRUE(actions.isEqual(parsed, copy));
  EXPECT_FALSE(actions.isEqual(parsed, unset));
  EXPECT_TRUE(actions.isLess(unset, parsed));
  EXPECT_EQ(actions.hash(parsed), actions.hash(copy));
  for (void* record : {parsed, copy, unset})
    actions.destroy(record);
}

TEST(LoadedAlone, TakesItsTypesAlongWhenItIsUnloaded) {
  const Loaded platform(PLATFORM);
  const auto findType = platform.function<FindType>(findTypeName);
  const auto moduleNames = platform.function<ModuleNames>(moduleNamesName);
  ASSERT_NE(findType, nullptr);
  ASSERT_NE(moduleNames, nullptr);
  const auto modulesBefore = moduleNames();
  EXPECT_THAT(modulesBefore, Not(Contains("ZelVrfSelectionPolicy")));
  {
    const Loaded library(libraryPath());
    EXPECT_THAT(moduleNames(), Contains("ZelVrfSelectionPolicy"));
  }
  EXPECT_EQ(moduleNames(), modulesBefore);
  for (const std::string& name : typeNames)
    EXPECT_EQ(findType(name), nullptr) << name;
}

TEST(LoadedAlone, LeavesNothingMappedWhenItIsUnloaded) {
  { const Loaded library(libraryPath()); }
  EXPECT_EQ(dlopen(libraryPath(), RTLD_NOW | RTLD_NOLOAD), nullptr);
  EXPECT_FALSE(isMapped("libZelVrfSelectionPolicy"));
  EXPECT_FALSE(isMapped("libZelPlatform"));
}

TEST(LoadedAlone, MayBeLoadedAgainAndAgain) {
  const Loaded platform(PLATFORM);
  const auto moduleNames = platform.function<ModuleNames>(moduleNamesName);
  ASSERT_NE(moduleNames, nullptr);
  const std::size_t modulesBefore = moduleNames().size();
  for (int i = 0; i < 20; ++i) {
    const Loaded library(libraryPath());
    EXPECT_EQ(moduleNames().size(), modulesBefore + 1);
  }
}

TEST(LoadedAlone, LoadedTwiceItIsThereOnceAndUntilTheSecondIsGone) {
  const Loaded platform(PLATFORM);
  const auto moduleNames = platform.function<ModuleNames>(moduleNamesName);
  ASSERT_NE(moduleNames, nullptr);
  const auto outer = std::make_unique<Loaded>(libraryPath());
  const std::size_t modules = moduleNames().size();
  { const Loaded inner(libraryPath()); }
  EXPECT_EQ(moduleNames().size(), modules);
  EXPECT_THAT(moduleNames(), Contains("ZelVrfSelectionPolicy"));
}

/// The new-handler is `handler` while this lives, and the one that there was before afterwards.
class NewHandler {
 public:
  explicit NewHandler(std::new_handler handler) : before_(std::set_new_handler(handler)) {}
  NewHandler(const NewHandler&) = delete;
  NewHandler& operator=(const NewHandler&) = delete;
  ~NewHandler() { std::set_new_handler(before_); }

 private:
  std::new_handler before_;
};

void handlerOfTheProcess() {
  throw std::bad_alloc();
}

TEST(LoadedAlone, HasANewHandlerAsLongAsItIsThere) {
  ASSERT_EQ(std::get_new_handler(), nullptr);
  {
    const Loaded library(libraryPath());
    EXPECT_NE(std::get_new_handler(), nullptr);
  }
  EXPECT_EQ(std::get_new_handler(), nullptr);
}

TEST(LoadedAlone, LeavesANewHandlerAloneThatTheProcessHadBefore) {
  const NewHandler handler(handlerOfTheProcess);
  {
    const Loaded library(libraryPath());
    EXPECT_EQ(std::get_new_handler(), handlerOfTheProcess);
  }
  EXPECT_EQ(std::get_new_handler(), handlerOfTheProcess);
}

TEST(LoadedAlone, LeavesANewHandlerAloneThatTheProcessSetsAfterwards) {
  const NewHandler none(nullptr);
  {
    const Loaded library(libraryPath());
    std::set_new_handler(handlerOfTheProcess);
  }
  EXPECT_EQ(std::get_new_handler(), handlerOfTheProcess);
}

}  // namespace
