#include "L3/VrfName.h"

#include <memory>
#include <ostream>
#include <unordered_map>

#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"
#include "Mox/ValueTable.h"

namespace L3 {
namespace {

constexpr Mox::ValueOperations operations = Mox::simpleOperations<VrfName>();
constexpr Mox::Reflection reflection{.value = &operations};

}  // namespace

constinit const Mox::Type VrfName::moxType{"L3::VrfName", &reflection};

// The names in use, by their bytes.
struct VrfName::Table {
  std::unordered_map<std::string_view, std::unique_ptr<Interned>> names;

  Interned* interned(std::string_view bytes) {
    const auto found = names.find(bytes);
    if (found != names.end()) {
      ++found->second->users;
      return found->second.get();
    }
    auto fresh =
        std::make_unique<Interned>(Interned{1, Mox::hashSingleAttr(0, bytes), std::string(bytes)});
    Interned* name = fresh.get();
    names.emplace(name->text, std::move(fresh));
    return name;
  }
};

VrfName::Table VrfName::table_;
const VrfName VrfName::default_("default");

VrfName::VrfName(std::string_view bytes) {
  if (bytes.size() > maxLength) {
    throw Mox::RangeException("Mox::String::bytes > maxLength() not allowed");
  }
  if (!bytes.empty()) interned_ = table_.interned(bytes);
}

void VrfName::release(Interned* interned) noexcept {
  table_.names.erase(table_.names.find(interned->text));
}

unsigned VrfName::hashOfEmpty() noexcept {
  static const unsigned hash = Mox::hashSingleAttr(0, {});
  return hash;
}

const VrfName& VrfName::defaultVrf() {
  return default_;
}

Velo::String valueToStrep(const VrfName& name) {
  return Mox::quoted(name.bytes());
}

void sequenceToValue(Mox::CharRange& range, VrfName* name) {
  *name = Mox::readQuoted(range);
}

std::ostream& operator<<(std::ostream& stream, const VrfName& name) {
  return stream << name.bytes();
}

}  // namespace L3
