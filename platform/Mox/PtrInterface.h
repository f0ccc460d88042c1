#pragma once

#include <atomic>

#include "Mox/Type.h"
#include "Velo/Export.h"
#include "Velo/NotifieeList.h"

namespace Mox {

/// Number of an attribute within its type.
using AttributeId = short;

/// Base of every entity: an intrusive reference count and two flags.
///
/// An object is born with one reference, that of its creator, which `Mox::makePtr` turns into a
/// `Ptr`; so pointers to an object may come and go while its constructor runs. When the last
/// reference goes the object is destroyed exactly once, whatever its destructor triggers:
/// pointers that its destructor makes and drops again have no effect. Counting is not atomic
/// unless thread-safe pointers are switched on at start-up.
///
/// The notification-active flag tells whether the object takes part in notification; the zombie
/// flag tells that it is about to be deleted.
class ZEL_EXPORT PtrInterface {
 public:
  class NotifieeConst;

  /// Those whom this entity notifies; a descriptor of kind `none` unless overridden.
  [[nodiscard]] virtual Velo::NotifieeListDescriptor notifieeList() const;
  /// Sets the notification-active flag; overridden to switch what the object owns.
  virtual void hasNotificationActiveIs(bool active);
  /// Called with true when the last reference is gone: destroys the object.
  virtual void zeroReferencesIs(bool zero);
  /// This type's entry in the type table of its module.
  [[nodiscard]] virtual const Type* fwkType() const;

  PtrInterface(const PtrInterface&) = delete;
  PtrInterface& operator=(const PtrInterface&) = delete;

  [[nodiscard]] bool hasNotificationActive() const noexcept { return notificationActive_; }
  [[nodiscard]] bool isZombie() const noexcept { return zombie_; }

  /// Number of references, for tests and tools.
  [[nodiscard]] unsigned references() const noexcept { return references_; }
  void referenceIs() const noexcept {
    if (threadSafePointers_) [[unlikely]] {
      std::atomic_ref(references_).fetch_add(1, std::memory_order_relaxed);
    } else {
      ++references_;
    }
  }
  void referenceDel() const noexcept {
    if (threadSafePointers_) [[unlikely]] {
      if (std::atomic_ref(references_).fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    } else if (--references_ != 0) {
      return;
    }
    lastReferenceGone();
  }

  /// Makes counting atomic, process-wide. To be called at start-up, before there is a second
  /// thread that uses pointers.
  static void threadSafePointersIs(bool threadSafe) noexcept { threadSafePointers_ = threadSafe; }
  [[nodiscard]] static bool threadSafePointers() noexcept { return threadSafePointers_; }

 protected:
  PtrInterface() = default;
  virtual ~PtrInterface();

  void zombieIs(bool zombie) noexcept { zombie_ = zombie; }

 private:
  void lastReferenceGone() const noexcept;

  static bool threadSafePointers_;

  mutable unsigned references_ = 1;
  bool notificationActive_ = false;
  bool zombie_ = false;
};

}  // namespace Mox
