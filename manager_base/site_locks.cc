#include "manager_base/site_locks.h"

namespace zvrsit {

int SiteLocks::Hold(std::int64_t byte, bool toAsk) {
  foundInUse_ = false;
  Held& held = held_[byte];
  if (held.uses > 0) return ++held.uses;
  const auto kind =
      onlyAsks_ || toAsk ? platform::LockKind::kShared : platform::LockKind::kExclusive;
  if (held.lock.Take(path_, byte, kind, patience_) == 0) return held.uses = 1;
  foundInUse_ = platform::LastError() == platform::kInUse;
  held_.erase(byte);
  return -1;
}

void SiteLocks::LetGo(std::int64_t byte) {
  const auto held = held_.find(byte);
  if (held != held_.end() && --held->second.uses == 0) held_.erase(held);
}

int SiteLocks::Uses(std::int64_t byte) const {
  const auto held = held_.find(byte);
  return held == held_.end() ? 0 : held->second.uses;
}

}  // namespace zvrsit
