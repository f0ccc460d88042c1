#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "agent/language/TextTable.h"

namespace ZelAgent {

/// A report that is made page by page, when its reader has taken the page before.
///
/// As text a page is whole lines. As JSON it is a part of a document on one line: all pages
/// together are the document. A page may be empty while the next rows are searched. One call does a
/// limited amount of work, and keeps no more than `Limits::pageBytes` bytes and the rows of one
/// reading. A page shows the state at the time when it is made.
class ReportPages {
 public:
  ReportPages() = default;
  ReportPages(const ReportPages&) = delete;
  ReportPages& operator=(const ReportPages&) = delete;
  virtual ~ReportPages() = default;

  [[nodiscard]] virtual bool hasNext() const = 0;
  /// Precondition: there is one.
  [[nodiscard]] virtual std::string next() = 0;
  /// Limits the width of the tables on the next pages. 0 sets no limit.
  virtual void columnsAre(std::size_t /*columns*/) {}
};

using ReportPagesPtr = std::unique_ptr<ReportPages>;

/// Adds the next rows to the list, possibly none. Returns false after the last.
template <class Row>
using ReadRows = std::function<bool(std::vector<Row>& rows)>;

/// A table whose heading is on each page. The columns are as wide as the page needs. Without rows
/// the report is `ifEmpty`.
[[nodiscard]] ReportPagesPtr tablePages(std::vector<std::string> heading,
                                        ReadRows<std::vector<std::string>> read,
                                        std::string ifEmpty);

/// An array of JSON elements, each on one line.
[[nodiscard]] ReportPagesPtr arrayPages(ReadRows<std::string> read);

/// One page with this text.
[[nodiscard]] ReportPagesPtr onePage(std::string text);

/// The pages of several reports, one report after the other.
[[nodiscard]] ReportPagesPtr pagesInOrder(std::vector<ReportPagesPtr> reports);

/// All pages that are left.
[[nodiscard]] std::string wholeText(ReportPages& pages);

/// The same rows as a table or as an array.
template <class Row>
struct RowFormat {
  std::vector<std::string> heading;
  std::string ifEmpty;
  std::vector<std::string> (*cells)(const Row& row);
  std::string (*element)(const Row& row);
};

/// The rows as JSON or as text.
template <class Row>
[[nodiscard]] ReportPagesPtr pagesOf(RowFormat<Row> format, ReadRows<Row> read, bool asJson) {
  const auto converted = [read = std::move(read)](auto convert) {
    return [read, convert](auto& out) {
      std::vector<Row> rows;
      const bool hasMore = read(rows);
      for (const Row& row : rows)
        out.push_back(convert(row));
      return hasMore;
    };
  };
  if (asJson) return arrayPages(converted(format.element));
  return tablePages(std::move(format.heading), converted(format.cells), std::move(format.ifEmpty));
}

/// Reads the rows of a list that exists already.
template <class Row>
[[nodiscard]] ReadRows<Row> rowsOfList(std::vector<Row> list) {
  return [list = std::move(list), at = std::size_t{0}](std::vector<Row>& rows) mutable {
    constexpr std::size_t most = 100;
    for (std::size_t read = 0; read < most && at < list.size(); ++read)
      rows.push_back(list[at++]);
    return at < list.size();
  };
}

}  // namespace ZelAgent
