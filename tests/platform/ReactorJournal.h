#pragma once

#include <string>
#include <utility>
#include <vector>

#include "L3/VrfName.h"
#include "Mox/NotifieeConst.h"
#include "Velo/String.h"

namespace PlatformTests {

/// How a reactor journal reads the key of an attribute: a function from key to text.
template <class Key>
std::string shownKey(const void* key) {
  return static_cast<const Key*>(key)->str();
}
template <>
inline std::string shownKey<unsigned char>(const void* key) {
  return std::to_string(*static_cast<const unsigned char*>(key));
}
/// For an attribute that is no collection.
struct NoKey {};
template <>
inline std::string shownKey<NoKey>(const void* /*key*/) {
  return "";
}

/// A registered, active reactor that writes down "ATTRIBUTE KEY" for each change of its notifier
/// whose attribute it was told how to read, and "ATTRIBUTE?" for any other.
class ReactorJournal final : public Mox::PtrInterface::NotifieeConst {
 public:
  using KeyReader = std::string (*)(const void* key);
  using KeyReaders = std::vector<std::pair<Mox::AttributeId, KeyReader>>;

  ReactorJournal(const Mox::Ptr<Mox::PtrInterface const>& entity, KeyReaders readers)
      : NotifieeConst(entity), readers_(std::move(readers)) {
    isRegisteredIs(true);
    hasNotificationActiveIs(true);
  }
  ~ReactorJournal() override { moxDoZombieReactors(true); }

  void onAttribute(Mox::AttributeId attributeId, const void* key) override {
    lines_.push_back(std::to_string(attributeId) + shown(attributeId, key));
  }
  /// Gives the lines so far and begins anew.
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(lines_, {}); }

 private:
  [[nodiscard]] std::string shown(Mox::AttributeId attributeId, const void* key) const {
    for (const auto& [known, reader] : readers_) {
      if (known == attributeId) return std::string(1, ' ').append(reader(key));
    }
    return "?";
  }

  KeyReaders readers_;
  std::vector<std::string> lines_;
};

}  // namespace PlatformTests
