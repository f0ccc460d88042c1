#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Mox/Ptr.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "tests/library/LibraryPath.h"

namespace LoadedLibrary {

// A counted pointer is one word whatever it points to, and every entity begins with its base.
using Object = Mox::Ptr<Mox::PtrInterface>;
using TableFactory = Object (*)();
using SixArgumentFactory = Object (*)(const Object&, const Object&, const Object&, const Object&,
                                      const Object&, const Object&);

inline constexpr const char* vrfHwConfigFactory =
    "_ZN21ZelVrfSelectionPolicy18vrfHwConfigFactoryEv";
inline constexpr const char* vrfHwStatusFactory =
    "_ZN21ZelVrfSelectionPolicy18vrfHwStatusFactoryEv";
inline constexpr const char* policySmMountsFactory =
    "_ZN21ZelVrfSelectionPolicy21policySmMountsFactoryEv";
inline constexpr const char* vrfSmFactory =
    "_ZN21ZelVrfSelectionPolicy12vrfSmFactoryERKN3Mox3PtrINS_11VrfHwConfigEEERKNS1_INS_"
    "11VrfHwStatusEEERKNS1_INS_9VrfHelperEEERKNS1_IKN18VrfSelectionPolicy23VrfSelectionFallbackVrfE"
    "EERKNS1_IKN7Routing8Hardware11RouteStatusEEERKNS1_IKN8Routing68Hardware11RouteStatusEEE";
inline constexpr const char* policySmFactory =
    "_ZN21ZelVrfSelectionPolicy30zelVrfSelectionPolicySmFactoryERKN3Mox3PtrIN9PolicyMap18PolicyMap"
    "AclHelperEEERKNS1_INS_14PolicySmMountsEEERKNS1_INS_9VrfHelperEEERKNS1_"
    "IKN18VrfSelectionPolicy23VrfSelectionFallbackVrfEEERKNS1_IKN7Routing8Hardware11RouteStatusEEER"
    "KNS1_IKN8Routing68Hardware11RouteStatusEEE";

/// The library, loaded beside the platform that this program is linked to, and its factories.
class Library {
 public:
  Library() : handle_(dlopen(libraryPath(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) ADD_FAILURE() << dlerror();
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { unload(); }

  void unload() {
    if (handle_ == nullptr) return;
    EXPECT_EQ(dlclose(std::exchange(handle_, nullptr)), 0);
    EXPECT_EQ(dlopen(libraryPath(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still loaded";
  }

  template <class Factory>
  [[nodiscard]] Factory factory(const char* name) const {
    return reinterpret_cast<Factory>(dlsym(handle_, name));
  }
  [[nodiscard]] Object makeTable(const char* name) const { return factory<TableFactory>(name)(); }
  [[nodiscard]] Object makeVrfSm() const {
    return factory<SixArgumentFactory>(vrfSmFactory)(
        makeTable(vrfHwConfigFactory), makeTable(vrfHwStatusFactory), nullptr,
        VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs(), nullptr, nullptr);
  }

 private:
  void* handle_;
};

}  // namespace LoadedLibrary
