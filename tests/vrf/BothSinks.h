#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Blinklog/Ring.h"
#include "testing/TraceCapture.h"

namespace ZelVrfSelectionPolicy::Testing {

/// One message as a test expects it of either sink.
struct ExpectedMessage {
  unsigned level;
  unsigned line;
  std::string function;
  std::string text;
};

/// The message of a refresh of what names `vrf`.
inline ExpectedMessage updatingAll(const std::string& vrf) {
  return {5, 130, "updateAllVrfActions",
          "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions " + vrf};
}

/// Everything that is traced while it lives, as each of the two sinks has it. Afterwards the text
/// trace of the library is quiet again.
class BothSinks {
 public:
  BothSinks() : capture_(text_) { Blinklog::ring().clear(); }
  BothSinks(const BothSinks&) = delete;
  BothSinks& operator=(const BothSinks&) = delete;
  ~BothSinks() { Mox::traceLevelsIs("ZelVrfSelection=0"); }

  /// The lines of the text trace so far, whole.
  [[nodiscard]] const std::vector<std::string>& text() const noexcept { return text_.lines(); }

  /// The records of the ring so far: level, path, line, function and text of each.
  [[nodiscard]] static std::vector<std::string> ring() {
    std::vector<std::string> shown;
    for (const Blinklog::Record& record : Blinklog::ring().dump()) {
      const Blinklog::Site& site = *record.site;
      shown.push_back(inRing(site.level, site.path, site.line, site.function, record.text));
    }
    return shown;
  }

  /// The text trace that has exactly these messages.
  [[nodiscard]] static std::vector<std::string> textOf(
      const std::vector<ExpectedMessage>& messages) {
    std::vector<std::string> lines;
    for (const std::string& record : ringOf(messages))
      lines.push_back("ZelVrfSelection " + record);
    return lines;
  }

  /// The ring that has exactly these messages.
  [[nodiscard]] static std::vector<std::string> ringOf(
      const std::vector<ExpectedMessage>& messages) {
    std::vector<std::string> records;
    for (const auto& [level, line, function, text] : messages) {
      records.push_back(inRing(level, path, line, function, text));
    }
    return records;
  }

  /// Forgets what was traced so far.
  void clear() {
    static_cast<void>(text_.take());
    Blinklog::ring().clear();
  }

 private:
  static constexpr const char* path = "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy";

  static std::string inRing(unsigned level, const std::string& file, unsigned line,
                            const std::string& function, const std::string& text) {
    return std::to_string(level) + " " + file + ":" + std::to_string(line) + " " + function + " " +
           text;
  }

  Journal text_;
  TraceCapture capture_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
