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
/// An object is created with one reference, which `Mox::makePtr` turns into a `Ptr`. So its
/// constructor may create and destroy pointers to it. When the last reference is released, the
/// object is destroyed exactly once: pointers that its destructor creates and destroys have no
/// effect. The count is not atomic unless thread-safe pointers are switched on at start-up.
///
/// The notification-active flag is set while the object takes part in notification. The zombie flag
/// is set while its deletion is pending.
class ZEL_EXPORT PtrInterface {
 public:
  class NotifieeConst;

  /// The notifiees of this entity; a descriptor of kind `none` unless overridden.
  [[nodiscard]] virtual Velo::NotifieeListDescriptor notifieeList() const;
  /// Sets the notification-active flag. Override it to switch the objects that this one owns.
  virtual void hasNotificationActiveIs(bool active);
  /// Called with true when no reference is left. Destroys the object.
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

  /// Makes counting atomic, process-wide. Call it at start-up, before a second thread uses
  /// pointers.
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
