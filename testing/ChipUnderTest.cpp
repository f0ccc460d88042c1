#include "testing/ChipUnderTest.h"

#include <cxxabi.h>

#include <cstdlib>
#include <ostream>

#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {

ChipUnderTest::~ChipUnderTest() = default;

std::optional<std::size_t> ChipUnderTest::resourcesInUse() const {
  return std::nullopt;
}

std::optional<std::size_t> ChipUnderTest::capacity() const {
  return std::nullopt;
}

std::size_t ChipUnderTest::mostCreations() const {
  return 65536;
}

std::optional<std::string> ChipUnderTest::programOf(const VrfAction& /*action*/) const {
  return std::nullopt;
}

bool ChipUnderTest::failNextHook() {
  return false;
}

ChipMaker::ChipMaker(std::string name, Make make) : name_(std::move(name)), make_(std::move(make)) {
  Conformance::linkTestFiles();
}

std::ostream& operator<<(std::ostream& stream, const ChipMaker& maker) {
  return stream << maker.name();
}

std::string shortTypeName(const std::type_info& type) {
  const std::unique_ptr<char, void (*)(void*)> text(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr), std::free);
  const std::string name = text ? text.get() : type.name();
  const std::size_t scope = name.rfind("::");
  return scope == std::string::npos ? name : name.substr(scope + 2);
}

}  // namespace ZelVrfSelectionPolicy::Testing
