#pragma once

#include "Mox/Ptr.h"
#include "Mox/PtrInterface.h"
#include "Velo/Export.h"

namespace Mox {

/// A reactor: is told by one entity, its notifier, which of that entity's attributes changed.
///
/// The notifier calls `onAttribute` synchronously after the change, and only while the reactor is
/// registered and its notifications are on. The reactor holds its notifier; the notifier does not
/// hold the reactor. Destruction takes it off the notifier's list.
///
/// A derived class overrides `onAttribute`, calls `moxDoZombieReactors(true)` in its destructor,
/// and reads its notifier as the type that it knows it to be.
class ZEL_EXPORT PtrInterface::NotifieeConst : public PtrInterface {
 public:
  void zeroReferencesIs(bool zero) override;
  ~NotifieeConst() override;

  /// The last reference is gone: destroys the reactor.
  virtual void onZeroReferences();
  /// Attribute `attributeId` of the notifier changed; `key` points at the key of the changed entry
  /// of a collection and is to be ignored for any other attribute.
  virtual void onAttribute(AttributeId attributeId, const void* key) = 0;
  /// Enters or leaves the state of pending deletion, switching notifications off or on.
  virtual void moxDoZombieReactors(bool zombie);

  [[nodiscard]] const Ptr<PtrInterface const>& notifier() const noexcept { return notifier_; }

 protected:
  explicit NotifieeConst(Ptr<PtrInterface const> notifier) noexcept;

  /// Makes `notifier` the one to be told by, moving an existing registration to it. May be null.
  void notifierIs(Ptr<PtrInterface const> notifier);
  /// Puts this reactor on its notifier's list, or takes it off.
  void isRegisteredIs(bool registered);

  /// The notifier as a `T`, which the derived class knows it to be. Null when there is none.
  template <class T>
  [[nodiscard]] const T* notifierAs() const noexcept {
    return static_cast<const T*>(notifier_.get());
  }

 private:
  Ptr<PtrInterface const> notifier_;
  bool registered_ = false;
};

/// The reactors of one entity. A reactor whose notifications are off is passed over.
class ZEL_EXPORT ReactorList {
 public:
  /// Tells every reactor of `entity` that `attributeId` changed. Keeps `entity`, and each reactor
  /// during its own call, alive.
  void notify(const PtrInterface& entity, AttributeId attributeId, const void* key = nullptr);

  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList(const PtrInterface& entity) noexcept {
    return describe(Velo::NotifieeListDescriptor::Kind::reactors, &entity, reactors_);
  }

 private:
  Velo::NotifieeList<PtrInterface::NotifieeConst> reactors_;
};

}  // namespace Mox
