#pragma once

#include <utility>

namespace Velo {

/// The calls of one kind that are under way on one object, each with a note, innermost first.
///
/// Choose it where a call may come back to the object that it was made on, and whoever comes back
/// must know of the calls around it. A call opens a scope. Scopes close in reverse order, also when
/// an exception passes. They may outlive the object: `isOrphan` reports that it is gone.
///
///     Velo::ScopeStack<Creation>::Scope scope(creations_, action);
///     chip.createVrf(action);              // may come back, and write into the note
///     if (scope->countChanged) ...
template <class Note>
class ScopeStack {
 public:
  class Scope {
   public:
    /// Opens a scope. Its note is made of `note`.
    template <class... Arguments>
    explicit Scope(ScopeStack& stack, Arguments&&... note)
        : note_{std::forward<Arguments>(note)...}, stack_(&stack), outer_(stack.innermost_) {
      stack.innermost_ = this;
    }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope() {
      if (stack_ != nullptr) stack_->innermost_ = outer_;
    }

    [[nodiscard]] Note* operator->() noexcept { return &note_; }
    [[nodiscard]] const Note* operator->() const noexcept { return &note_; }
    /// Whether the stack is gone.
    [[nodiscard]] bool isOrphan() const noexcept { return stack_ == nullptr; }

   private:
    friend class ScopeStack;
    Note note_;
    ScopeStack* stack_;
    Scope* outer_;
  };

  ScopeStack() = default;
  ScopeStack(const ScopeStack&) = delete;
  ScopeStack& operator=(const ScopeStack&) = delete;
  ~ScopeStack() {
    for (Scope* scope = innermost_; scope != nullptr; scope = scope->outer_)
      scope->stack_ = nullptr;
  }

  [[nodiscard]] bool empty() const noexcept { return innermost_ == nullptr; }
  /// The note of the innermost scope, null when none is open.
  [[nodiscard]] Note* innermost() const noexcept {
    return innermost_ == nullptr ? nullptr : &innermost_->note_;
  }
  /// The innermost note that meets `condition`, null when none does.
  template <class Condition>
  [[nodiscard]] Note* find(Condition condition) const {
    for (Scope* scope = innermost_; scope != nullptr; scope = scope->outer_) {
      if (condition(scope->note_)) return &scope->note_;
    }
    return nullptr;
  }
  /// Calls `visitor` with each note, innermost first.
  template <class Visitor>
  void forEach(Visitor visitor) const {
    for (Scope* scope = innermost_; scope != nullptr; scope = scope->outer_)
      visitor(scope->note_);
  }

 private:
  Scope* innermost_ = nullptr;
};

}  // namespace Velo
