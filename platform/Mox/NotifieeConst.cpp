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

void PtrInterface::NotifieeConst::moxDoZombieReactors(bool zombie) {
  if (isZombie() == zombie) return;
  if (notifier_) hasNotificationActiveIs(!zombie);
  zombieIs(zombie);
}

void PtrInterface::NotifieeConst::notifierIs(Ptr<PtrInterface const> notifier) {
  if (notifier == notifier_) return;
  const bool registered = registered_;
  isRegisteredIs(false);
  notifier_ = std::move(notifier);
  isRegisteredIs(registered);
}

void PtrInterface::NotifieeConst::isRegisteredIs(bool registered) {
  if (registered_ == registered) return;
  registered_ = registered;
  if (!notifier_) return;
  const Velo::NotifieeListDescriptor notifiees = notifier_->notifieeList();
  if (notifiees.kind == Velo::NotifieeListDescriptor::Kind::reactors) {
    (registered ? notifiees.add : notifiees.remove)(notifiees.list, this);
  }
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
