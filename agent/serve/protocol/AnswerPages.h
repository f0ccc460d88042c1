#pragma once

#include <string>

#include "agent/reports/ReportPages.h"
#include "agent/serve/protocol/AnswerParts.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

/// The bytes of a successful answer whose output is made page by page.
///
/// All parts together are what `toBytes` returns for the whole output: one line of JSON, or lines
/// of text and ".". A part has at most `Limits::shortAnswerBytes` bytes.
class AnswerPages final : public AnswerParts {
 public:
  /// `asJson` is whether the pages are JSON.
  AnswerPages(ReportPagesPtr pages, Framing framing, bool asJson);

  [[nodiscard]] bool hasNext() const override { return pages_->hasNext(); }
  /// A part is empty if the report needs more time for its next page.
  [[nodiscard]] std::string next(std::size_t room) override;

 private:
  [[nodiscard]] std::string nextPages();
  [[nodiscard]] std::string framed(const std::string& pages) const;

  ReportPagesPtr pages_;
  Framing framing_;
  bool asJson_;
  bool hasBegun_ = false;
};

}  // namespace ZelAgent
