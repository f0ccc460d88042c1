#pragma once

#include <utility>

namespace Velo {

/// The active calls of one kind on one object, innermost first. Each call has data.
///
/// Use it where a call may re-enter the object, and the inner call must know the outer ones. A call
/// opens a scope. Scopes are closed in reverse order, also by an exception. A scope may outlive the
/// object: `isOrphan` reports that the object was destroyed.
///
///     Velo::ScopeStack<Creation>::Scope scope(creations_, action);
///     chip.createVrf(action);              // may re-enter, and change the data
///     if (scope->countChanged) ...
template <class Data>
class ScopeStack {
 public:
  class Scope {
   public:
    /// Opens a scope with data that is constructed from `data`.
    template <class... Arguments>
    explicit Scope(ScopeStack& stack, Arguments&&... data)
        : data_{std::forward<Arguments>(data)...}, stack_(&stack), outer_(stack.innermost_) {
      stack.innermost_ = this;
    }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope() {
      if (stack_ != nullptr) stack_->innermost_ = outer_;
    }

    [[nodiscard]] Data* operator->() noexcept { return &data_; }
    [[nodiscard]] const Data* operator->() const noexcept { return &data_; }
    /// Whether the stack was destroyed.
    [[nodiscard]] bool isOrphan() const noexcept { return stack_ == nullptr; }

   private:
    friend class ScopeStack;
    Data data_;
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
  /// The data of the innermost scope; null if no scope is open.
  [[nodiscard]] Data* innermost() const noexcept {
    return innermost_ == nullptr ? nullptr : &innermost_->data_;
  }
  /// The innermost data that meets `condition`, or null.
  template <class Condition>
  [[nodiscard]] Data* find(Condition condition) const {
    for (Scope* scope = innermost_; scope != nullptr; scope = scope->outer_) {
      if (condition(scope->data_)) return &scope->data_;
    }
    return nullptr;
  }
  /// Calls `visitor` with the data of each scope, innermost first.
  template <class Visitor>
  void forEach(Visitor visitor) const {
    for (Scope* scope = innermost_; scope != nullptr; scope = scope->outer_)
      visitor(scope->data_);
  }

 private:
  Scope* innermost_ = nullptr;
};

}  // namespace Velo
