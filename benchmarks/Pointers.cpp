// Copying a counted pointer and dropping the copy.

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <memory>

#include "Mox/Dir.h"
#include "benchmarks/Families.h"

namespace Benchmarks {
namespace {

struct PlainCounted : boost::intrusive_ref_counter<PlainCounted, boost::thread_unsafe_counter> {
  virtual ~PlainCounted() = default;
};
struct AtomicCounted : boost::intrusive_ref_counter<AtomicCounted, boost::thread_safe_counter> {
  virtual ~AtomicCounted() = default;
};

/// Has thread-safe pointers on during its lifetime.
class ThreadSafePointers {
 public:
  ThreadSafePointers() { Mox::PtrInterface::threadSafePointersIs(true); }
  ThreadSafePointers(const ThreadSafePointers&) = delete;
  ThreadSafePointers& operator=(const ThreadSafePointers&) = delete;
  ~ThreadSafePointers() { Mox::PtrInterface::threadSafePointersIs(false); }
};

template <class Pointer>
Comparison::Loop copyAndDrop(const Pointer& pointer) {
  return [&pointer](benchmark::State& state) {
    for (auto _ : state) {
      Pointer copy = pointer;
      benchmark::DoNotOptimize(copy);
    }
  };
}

}  // namespace

void pointers(Report& report) {
  const Mox::Ptr<Mox::Dir> ours = Mox::makePtr<Mox::Dir>("dir");
  const boost::intrusive_ptr<PlainCounted> plain(new PlainCounted);
  const boost::intrusive_ptr<AtomicCounted> atomic(new AtomicCounted);
  const std::shared_ptr<PlainCounted> shared = std::make_shared<PlainCounted>();

  Comparison("copy and drop of a Mox::Ptr")
      .ours(copyAndDrop(ours))
      .beside("boost::intrusive_ptr, plain counter", ratioAtMost(1.05), copyAndDrop(plain))
      .beside("std::shared_ptr", timesFaster(1), copyAndDrop(shared))
      .measure(report);

  const ThreadSafePointers threadSafe;
  Comparison("copy and drop of a thread-safe Mox::Ptr")
      .ours(copyAndDrop(ours))
      .beside("boost::intrusive_ptr, atomic counter", ratioAtMost(1.05), copyAndDrop(atomic))
      .beside("std::shared_ptr", timesFaster(1), copyAndDrop(shared))
      .measure(report);
}

}  // namespace Benchmarks
