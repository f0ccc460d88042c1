#include "L3/VrfName.h"

#include <cstring>
#include <memory>
#include <ostream>
#include <utility>

#include "Mox/Exceptions.h"
#include "Mox/HashMap2018.h"
#include "Mox/QuotedString.h"
#include "Mox/ValueTable.h"

namespace L3 {
namespace {

constexpr Mox::ValueOperations operations = Mox::simpleOperations<VrfName>();
constexpr Mox::Reflection reflection{.value = &operations};

}  // namespace

constinit const Mox::Type VrfName::moxType{"L3::VrfName", &reflection};

/// The names in use, by their bytes. The value of an entry is what equal names share. It never
/// moves. The position of the entry is the number of the name.
class VrfName::Table {
 public:
  /// Returns the name with these bytes and increments its users.
  Interned* used(std::string_view bytes) {
    const Key key(bytes, Mox::hashSingleAttr(Mox::HashHelper::hashSeed32(), bytes));
    Interned* name = names_.find(key);
    if (name == nullptr) name = &added(key);
    ++name->users;
    return name;
  }

  void release(const Interned& name) noexcept {
    names_.erase(Key(name.bytes(), name.hashes.seeded));
  }

 private:
  // A reference to bytes, with their hash, which is computed once.
  class Key {
   public:
    Key(std::string_view bytes, unsigned seededHash) noexcept
        : text_(bytes.data()),
          size_(static_cast<unsigned>(bytes.size())),
          seededHash_(seededHash) {}

    [[nodiscard]] std::string_view bytes() const noexcept { return {text_, size_}; }
    [[nodiscard]] unsigned seededHash() const noexcept { return seededHash_; }
    [[nodiscard]] unsigned hash(unsigned seed) const noexcept {
      return scattered(seededHash_, seed);
    }
    friend bool operator==(const Key& a, const Key& b) noexcept { return a.bytes() == b.bytes(); }

   private:
    const char* text_;
    unsigned size_;
    unsigned seededHash_;
  };

  // A name without users yet.
  Interned& added(const Key& wanted) {
    const std::string_view bytes = wanted.bytes();
    auto text = std::make_unique_for_overwrite<char[]>(bytes.size());
    std::memcpy(text.get(), bytes.data(), bytes.size());
    const Key key({text.get(), bytes.size()}, wanted.seededHash());
    Interned fresh{.users = 0,
                   .number = 0,
                   .hashes = {wanted.seededHash(), Mox::hashSingleAttr(0, bytes)},
                   .size = static_cast<unsigned>(bytes.size()),
                   .text = std::move(text)};
    const auto position = names_.insert(Key(key), std::move(fresh)).first;
    Interned& name = names_.value(position);
    name.number = position + 1;
    return name;
  }

  Mox::HashMap2018<Key, Interned, 0x5d1c83a7> names_;
};

VrfName::Table VrfName::table_;
const VrfName VrfName::default_("default");

VrfName::VrfName(std::string_view bytes) {
  if (bytes.size() > maxLength) {
    throw Mox::RangeException("Mox::String::bytes > maxLength() not allowed");
  }
  if (!bytes.empty()) interned_ = table_.used(bytes);
}

void VrfName::release(Interned* interned) noexcept {
  table_.release(*interned);
}

const VrfName::Hashes& VrfName::hashesOfEmpty() noexcept {
  static const Hashes hashes{Mox::hashSingleAttr(Mox::HashHelper::hashSeed32(), {}),
                             Mox::hashSingleAttr(0, {})};
  return hashes;
}

const VrfName& VrfName::defaultVrf() {
  return default_;
}

Velo::String valueToStrep(const VrfName& name) {
  return Mox::quoted(name.bytes());
}

void sequenceToValue(Mox::CharRange& range, VrfName* name) {
  std::string escaped;
  *name = Mox::readQuoted(range, escaped);
}

std::ostream& operator<<(std::ostream& stream, const VrfName& name) {
  return stream << name.bytes();
}

}  // namespace L3
