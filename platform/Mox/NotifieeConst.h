#pragma once

#include "Mox/Ptr.h"
#include "Mox/PtrInterface.h"
#include "Velo/Export.h"

namespace Mox {

/// A reactor. One entity, its notifier, notifies it of each attribute that changed.
///
/// The notifier calls `onAttribute` synchronously after the change, and only while the reactor is
/// registered and its notifications are on. The reactor holds a reference to its notifier, but not
/// the other way round. The destructor removes the reactor from the notifier's list.
///
/// A derived class overrides `onAttribute`, calls `moxDoZombieReactors(true)` in its destructor,
/// and reads its notifier by `notifierAs`.
class ZEL_EXPORT PtrInterface::NotifieeConst : public PtrInterface {
 public:
  void zeroReferencesIs(bool zero) override;
  ~NotifieeConst() override;

  /// Called when no reference is left. Destroys the reactor.
  virtual void onZeroReferences();
  /// Attribute `attributeId` of the notifier changed. For a collection `key` points to the key of
  /// the changed entry. For any other attribute ignore it.
  virtual void onAttribute(AttributeId attributeId, const void* key) = 0;
  /// Enters or leaves the state of pending deletion, and switches notifications off or on.
  virtual void moxDoZombieReactors(bool zombie);

  [[nodiscard]] const Ptr<PtrInterface const>& notifier() const noexcept { return notifier_; }

 protected:
  explicit NotifieeConst(Ptr<PtrInterface const> notifier) noexcept;

  /// Sets the notifier, which may be null, and moves an existing registration to it.
  void notifierIs(Ptr<PtrInterface const> notifier);
  /// Adds this reactor to its notifier's list, or removes it.
  void isRegisteredIs(bool registered);

  /// The notifier as a `T`, or null. Precondition: it is a `T`.
  template <class T>
  [[nodiscard]] const T* notifierAs() const noexcept {
    return static_cast<const T*>(notifier_.get());
  }

 private:
  Ptr<PtrInterface const> notifier_;
  bool registered_ = false;
};

/// The reactors of one entity. A reactor whose notifications are off is not called.
class ZEL_EXPORT ReactorList {
 public:
  /// Notifies every reactor of `entity` that `attributeId` changed. Keeps `entity`, and each
  /// reactor during its call, alive.
  void notify(const PtrInterface& entity, AttributeId attributeId, const void* key = nullptr);

  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList(const PtrInterface& entity) noexcept {
    return describe(Velo::NotifieeListDescriptor::Kind::reactors, &entity, reactors_);
  }

 private:
  Velo::NotifieeList<PtrInterface::NotifieeConst> reactors_;
};

}  // namespace Mox
