#include "Mox/NotifieeConst.h"

#include <utility>

namespace Mox {

PtrInterface::NotifieeConst::NotifieeConst(Ptr<PtrInterface const> notifier) noexcept
    : notifier_(std::move(notifier)) {}

PtrInterface::NotifieeConst::~NotifieeConst() {
  isRegisteredIs(false);
}

void PtrInterface::NotifieeConst::zeroReferencesIs(bool zero) {
  if (zero) onZeroReferences();
}

void PtrInterface::NotifieeConst::onZeroReferences() {
  delete this;
}

void PtrInterface::NotifieeConst::makeRoomAt(const PtrInterface& entity) {
  const Velo::NotifieeListDescriptor reactors = entity.notifieeList();
  reactors.makeRoom(reactors.list);
}

void PtrInterface::NotifieeConst::moxDoZombieReactors(bool zombie) {
  if (isZombie() == zombie) return;
  if (notifier_) hasNotificationActiveIs(!zombie);
  zombieIs(zombie);
}

void PtrInterface::NotifieeConst::notifierIs(Ptr<PtrInterface const> notifier) {
  if (notifier == notifier_) return;
  // First to the new list, since that may throw.
  if (registered_) listIs(notifier, true);
  if (registered_) listIs(notifier_, false);
  notifier_ = std::move(notifier);
}

void PtrInterface::NotifieeConst::listIs(const Ptr<PtrInterface const>& notifier, bool registered) {
  if (!notifier) return;
  const Velo::NotifieeListDescriptor notifiees = notifier->notifieeList();
  if (notifiees.kind == Velo::NotifieeListDescriptor::Kind::reactors) {
    (registered ? notifiees.add : notifiees.remove)(notifiees.list, this);
  }
}

void PtrInterface::NotifieeConst::isRegisteredIs(bool registered) {
  if (registered_ == registered) return;
  listIs(notifier_, registered);
  registered_ = registered;
}

void ReactorList::notify(const PtrInterface& entity, AttributeId attributeId, const void* key) {
  const Ptr<PtrInterface const> alive(&entity);
  reactors_.visit([&](PtrInterface::NotifieeConst& reactor) {
    if (!reactor.hasNotificationActive()) return;
    const Ptr<PtrInterface::NotifieeConst> called(&reactor);
    reactor.onAttribute(attributeId, key);
  });
}

}  // namespace Mox
