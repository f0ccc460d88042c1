#include "Routing/Hardware/PrefixLensInExactMatch.h"

#include "Mox/AttributeTable.h"
#include "Mox/Exceptions.h"

namespace Routing::Hardware {
namespace {

constexpr Mox::Reflection reflection{.nameOf = &Mox::namedBy<&PrefixLensInExactMatch::name>};

}  // namespace

constinit const Mox::Type PrefixLensInExactMatch::moxType{
    "Routing::Hardware::PrefixLensInExactMatch", &reflection};

Mox::Ptr<PrefixLensInExactMatch> PrefixLensInExactMatch::PrefixLensInExactMatchIs(
    const Velo::String& name) {
  return Mox::makeActivePtr<PrefixLensInExactMatch>(name);
}

PrefixLensInExactMatch::PrefixLensInExactMatch(const Velo::String& name) noexcept : name_(name) {}

PrefixLensInExactMatch::~PrefixLensInExactMatch() = default;

Velo::NotifieeListDescriptor PrefixLensInExactMatch::notifieeList() const {
  return reactors_.notifieeList(*this);
}

const Mox::Type* PrefixLensInExactMatch::fwkType() const {
  return &moxType;
}

void PrefixLensInExactMatch::prefixLenIs(unsigned char length) {
  if (length > longest) {
    throw Mox::RangeException("prefix length " + std::to_string(length) + ": expected 0 to 128");
  }
  if (lengths_[length]) return;
  lengths_[length] = true;
  reactors_.notify(*this, prefixLenAttribute, &length);
}

bool PrefixLensInExactMatch::prefixLenDel(unsigned char length) {
  if (!prefixLenHas(length)) return false;
  lengths_[length] = false;
  reactors_.notify(*this, prefixLenAttribute, &length);
  return true;
}

void PrefixLensInExactMatch::prefixLenDelAll() {
  const Mox::Ptr<PrefixLensInExactMatch> alive(this);
  for (unsigned length = 0; length <= longest; ++length) {
    prefixLenDel(static_cast<unsigned char>(length));
  }
}

bool PrefixLensInExactMatch::prefixLenHas(unsigned char length) const noexcept {
  return length <= longest && lengths_[length];
}

unsigned PrefixLensInExactMatch::prefixLens() const noexcept {
  return static_cast<unsigned>(lengths_.count());
}

}  // namespace Routing::Hardware
