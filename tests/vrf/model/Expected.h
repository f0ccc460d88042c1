#pragma once

#include <string_view>
#include <tuple>

#include "Cast.h"
#include "Steps.h"

namespace VrfModel {

/// A call of one of the chip's hooks.
enum class Hook : unsigned char { createVrf, updateVrf, deleteVrf };
struct HookCall {
  Hook hook;
  Action action;

  friend bool operator==(const HookCall&, const HookCall&) = default;
  friend auto operator<=>(const HookCall&, const HookCall&) = default;
};

/// A message as the ring holds it. `function` lives as long as the process.
struct Message {
  unsigned level;
  unsigned line;
  std::string_view function;
  std::string text;

  friend bool operator==(const Message&, const Message&) = default;
  friend auto operator<=>(const Message&, const Message&) = default;
};

/// A notice of one of the tables to its subscribers.
enum class Table : unsigned char { counts, statuses };
struct Notice {
  Table table;
  int attribute;
  Action action;

  friend bool operator==(const Notice&, const Notice&) = default;
  friend auto operator<=>(const Notice&, const Notice&) = default;
};

/// The hook calls, messages and notices that one event must cause.
struct Expected {
  Steps<HookCall> hooks;
  Steps<Message> messages;
  Steps<Notice> notices;

  /// Begins a new step: later entries must come after all earlier ones. Has no effect during an
  /// `AnyOrder`.
  void next() {
    if (anyOrders_ != 0) return;
    hooks.next();
    messages.next();
  }

  /// Entries that are added during its lifetime may come in any order.
  class AnyOrder {
   public:
    explicit AnyOrder(Expected& expected) : expected_(expected) {
      expected_.next();
      ++expected_.anyOrders_;
    }
    AnyOrder(const AnyOrder&) = delete;
    AnyOrder& operator=(const AnyOrder&) = delete;
    ~AnyOrder() {
      --expected_.anyOrders_;
      expected_.next();
    }

   private:
    Expected& expected_;
  };

  void hook(Hook hook, const Action& action) {
    next();
    hooks.add({hook, action});
  }
  void message(Message message) {
    next();
    messages.add(std::move(message));
  }
  void notice(Table table, const Action& action);

 private:
  unsigned anyOrders_ = 0;
};

[[nodiscard]] std::string shown(const HookCall& call);
[[nodiscard]] std::string shown(const Message& message);
[[nodiscard]] std::string shown(const Notice& notice);

}  // namespace VrfModel
