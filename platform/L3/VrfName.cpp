#include "L3/VrfName.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <ostream>
#include <vector>

#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"
#include "Mox/ValueTable.h"

namespace L3 {
namespace {

constexpr Mox::ValueOperations operations = Mox::simpleOperations<VrfName>();
constexpr Mox::Reflection reflection{.value = &operations};

}  // namespace

constinit const Mox::Type VrfName::moxType{"L3::VrfName", &reflection};

/// The names in use, by their bytes.
///
/// Open addressing with linear probing, at most half full; the place of a name that goes is closed
/// by moving back what stands behind it. A standard map would hash the bytes a second time. The
/// numbers in use are those from 1 to `count_ + freeNumbers_.size()` that are not free.
class VrfName::Table {
 public:
  Table() = default;
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() {
    for (Interned* name : places_)
      ::operator delete(name);
  }

  /// The name with these bytes, with one user more.
  Interned* used(std::string_view bytes) {
    if (places_.empty()) grow();
    const unsigned hash = Mox::hashSingleAttr(0, bytes);
    std::size_t place = hash & mask();
    for (; places_[place] != nullptr; place = (place + 1) & mask()) {
      Interned* name = places_[place];
      if (name->hash != hash || name->bytes() != bytes) continue;
      ++name->users;
      return name;
    }
    if (count_ + 1 > places_.size() / 2) {
      grow();
      place = freePlace(hash);
    }
    places_[place] = made(hash, bytes);
    if (!freeNumbers_.empty()) freeNumbers_.pop_back();
    ++count_;
    return places_[place];
  }

  void release(Interned* name) noexcept {
    std::size_t place = name->hash & mask();
    while (places_[place] != name)
      place = (place + 1) & mask();
    closeGap(place);
    freeNumbers_.push_back(name->number);
    --count_;
    ::operator delete(name);
  }

 private:
  static constexpr std::size_t fewestPlaces = 16;

  Interned* made(unsigned hash, std::string_view bytes) const {
    const unsigned number = freeNumbers_.empty() ? count_ + 1 : freeNumbers_.back();
    void* memory = ::operator new(sizeof(Interned) + bytes.size());
    std::memcpy(static_cast<char*>(memory) + sizeof(Interned), bytes.data(), bytes.size());
    return new (memory) Interned{1, hash, number, static_cast<unsigned>(bytes.size())};
  }

  [[nodiscard]] std::size_t mask() const noexcept { return places_.size() - 1; }

  void grow() {
    std::vector<Interned*> old(std::max(fewestPlaces, 2 * places_.size()));
    freeNumbers_.reserve(old.size());  // so that no name needs memory to go
    old.swap(places_);
    for (Interned* name : old) {
      if (name == nullptr) continue;
      places_[freePlace(name->hash)] = name;
    }
  }

  [[nodiscard]] std::size_t freePlace(unsigned hash) const noexcept {
    std::size_t place = hash & mask();
    while (places_[place] != nullptr)
      place = (place + 1) & mask();
    return place;
  }

  void closeGap(std::size_t gap) noexcept {
    for (std::size_t place = (gap + 1) & mask(); places_[place] != nullptr;
         place = (place + 1) & mask()) {
      const std::size_t home = places_[place]->hash & mask();
      if (((place - home) & mask()) < ((place - gap) & mask())) continue;
      places_[gap] = places_[place];
      gap = place;
    }
    places_[gap] = nullptr;
  }

  std::vector<Interned*> places_;
  std::vector<unsigned> freeNumbers_;
  unsigned count_ = 0;
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
  table_.release(interned);
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
  std::string escaped;
  *name = Mox::readQuoted(range, escaped);
}

std::ostream& operator<<(std::ostream& stream, const VrfName& name) {
  return stream << name.bytes();
}

}  // namespace L3
