#pragma once

#include <array>
#include <initializer_list>
#include <span>
#include <string_view>

#include "Blinklog/Ring.h"
#include "Mox/TraceHandle.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Duolog {

/// One argument of a message: its value in the ring and its form in the text trace.
class Argument {
 public:
  Argument(std::string_view text) noexcept  // NOLINT(google-explicit-constructor): made in place
      : kept_{'s', 0, text}, shown_(text) {}
  Argument(const Velo::String& text) noexcept : Argument(text.bytes()) {}    // NOLINT: as above
  Argument(const char* text) noexcept : Argument(std::string_view(text)) {}  // NOLINT: as above
  Argument(unsigned number) noexcept : kept_{'u', number} {}                 // NOLINT: as above
  Argument(bool value) noexcept                                              // NOLINT: as above
      : kept_{'b', value}, shown_(value ? "true" : "false") {}
  /// A number with a name. The ring holds the number, the text trace shows the name.
  Argument(unsigned number, std::string_view name) noexcept : kept_{'u', number}, shown_(name) {}

  [[nodiscard]] const Blinklog::Argument& kept() const noexcept { return kept_; }
  /// The form in the text trace; empty for a number without a name, which is shown in decimal.
  [[nodiscard]] std::string_view shown() const noexcept { return shown_; }

 private:
  Blinklog::Argument kept_;
  std::string_view shown_;
};

/// One message of a library's catalogue. Calling it sends the message to the ring of the process,
/// and to the text trace if its level is on.
///
///     const Duolog::Message deleting(
///         source, 7, 35, "handleIt", {"Vrf::", "handleIt", ": Deleting ", "%s"});
///     deleting(name);
///
/// Sending allocates only if the level is on. Functions, fragments and path must be literals.
class ZEL_EXPORT Message {
 public:
  /// What the messages of one library share.
  struct Source {
    /// Returns the handle of the text trace. Called when the first message is sent.
    const Mox::TraceHandle& (*handle)();
    const char* path;
  };

  Message(const Source& source, unsigned level, unsigned line, const char* function,
          std::initializer_list<const char*> fragments);

  template <class... Arguments>
  void operator()(const Arguments&... arguments) const {
    {
      Blinklog::Ring::Message kept(Blinklog::ring(), site_);
      (kept.put(Argument(arguments).kept()), ...);
    }
    if (handle().isOn(level_)) [[unlikely]] {
      const std::array<Argument, sizeof...(Arguments)> all{Argument(arguments)...};
      sendText(all);
    }
  }

 private:
  static constexpr std::size_t maxFragments = 8;

  [[nodiscard]] const Mox::TraceHandle& handle() const {
    if (handle_ == nullptr) [[unlikely]]
      handle_ = &source_.handle();
    return *handle_;
  }
  void sendText(std::span<const Argument> arguments) const;

  Source source_;
  unsigned level_;
  unsigned line_;
  const char* function_;
  std::array<std::string_view, maxFragments> fragments_;
  std::size_t fragmentCount_;
  Blinklog::SiteId site_;
  mutable const Mox::TraceHandle* handle_ = nullptr;  // null until a message is sent
};

}  // namespace Duolog
