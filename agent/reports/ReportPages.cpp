#include "agent/reports/ReportPages.h"

#include <algorithm>
#include <cstddef>
#include <sstream>

#include "agent/language/Limits.h"

namespace ZelAgent {
namespace {

using Cells = std::vector<std::string>;

// The size of a table that grows row by row. It is not less than the bytes that are printed.
class TableSize final {
 public:
  explicit TableSize(const Cells& heading) : widths_(heading.size()) { add(heading); }

  // Returns the size with this row, too.
  std::size_t add(const Cells& row) {
    ++rows_;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t before = widths_[i];
      widths_[i] = std::max(before, row[i].size() + separatorBytes);
      rowBytes_ += widths_[i] - before;
    }
    return rows_ * rowBytes_;
  }

 private:
  static constexpr std::size_t separatorBytes = 2;

  std::vector<std::size_t> widths_;
  std::size_t rows_ = 0;
  std::size_t rowBytes_ = 1;  // the end of the line
};

// Cuts rows into pages. A page has at least one row.
template <class Row>
class PagedRows : public ReportPages {
 public:
  explicit PagedRows(ReadRows<Row> read) : read_(std::move(read)) {}

  [[nodiscard]] bool hasNext() const final { return !isDone_; }
  [[nodiscard]] std::string next() final {
    if (hasMore_ && rowsOfPage(rows_) == rows_.size()) hasMore_ = read_(rows_);
    const std::size_t count = rowsOfPage(rows_);
    if (hasMore_ && count == rows_.size()) return {};
    isDone_ = count == rows_.size();
    std::vector<Row> page(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(count));
    rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(count));
    return textOf(std::move(page), std::exchange(isFirst_, false), isDone_);
  }

 private:
  // How many rows from the front fit on a page.
  [[nodiscard]] virtual std::size_t rowsOfPage(const std::vector<Row>& rows) const = 0;
  [[nodiscard]] virtual std::string textOf(std::vector<Row> page, bool isFirst,
                                           bool isLast) const = 0;

  ReadRows<Row> read_;
  std::vector<Row> rows_;  // read, and not on a page yet
  bool hasMore_ = true;
  bool isFirst_ = true;
  bool isDone_ = false;
};

class TablePages final : public PagedRows<Cells> {
 public:
  TablePages(Cells heading, ReadRows<Cells> read, std::string ifEmpty)
      : PagedRows(std::move(read)), heading_(std::move(heading)), ifEmpty_(std::move(ifEmpty)) {}

  void columnsAre(std::size_t columns) override { columns_ = columns; }

 private:
  [[nodiscard]] std::size_t rowsOfPage(const TextTable& rows) const override {
    TableSize size(heading_);
    std::size_t count = 0;
    while (count < rows.size() && (size.add(rows[count]) <= Limits::pageBytes || count == 0))
      ++count;
    return count;
  }
  [[nodiscard]] std::string textOf(TextTable page, bool isFirst, bool /*isLast*/) const override {
    if (page.empty()) return isFirst ? ifEmpty_ : "";
    page.insert(page.begin(), heading_);
    std::ostringstream text;
    tableColumnsAre(text, columns_);
    writeTable(text, page);
    return std::move(text).str();
  }

  Cells heading_;
  std::string ifEmpty_;
  std::size_t columns_ = 0;
};

class ArrayPages final : public PagedRows<std::string> {
 public:
  using PagedRows::PagedRows;

 private:
  [[nodiscard]] std::size_t rowsOfPage(const std::vector<std::string>& rows) const override {
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < rows.size() &&
           ((bytes += rows[count].size() + 1) <= Limits::pageBytes || count == 0))
      ++count;
    return count;
  }
  [[nodiscard]] std::string textOf(std::vector<std::string> page, bool isFirst,
                                   bool isLast) const override {
    std::string text = isFirst ? "[" : "";
    for (std::size_t i = 0; i < page.size(); ++i) {
      if (!isFirst || i > 0) text += ',';
      text += page[i];
    }
    return isLast ? text + ']' : text;
  }
};

class OnePage final : public ReportPages {
 public:
  explicit OnePage(std::string text) : text_(std::move(text)) {}

  [[nodiscard]] bool hasNext() const override { return !isDone_; }
  [[nodiscard]] std::string next() override {
    isDone_ = true;
    return std::move(text_);
  }

 private:
  std::string text_;
  bool isDone_ = false;
};

class PagesInOrder final : public ReportPages {
 public:
  explicit PagesInOrder(std::vector<ReportPagesPtr> reports) : reports_(std::move(reports)) {}

  [[nodiscard]] bool hasNext() const override { return at_ < reports_.size(); }
  [[nodiscard]] std::string next() override {
    ReportPages& present = *reports_[at_];
    std::string page = present.next();
    if (!present.hasNext()) ++at_;
    return page;
  }
  void columnsAre(std::size_t columns) override {
    for (const ReportPagesPtr& report : reports_)
      report->columnsAre(columns);
  }

 private:
  std::vector<ReportPagesPtr> reports_;  // each has at least one page
  std::size_t at_ = 0;
};

}  // namespace

ReportPagesPtr tablePages(Cells heading, ReadRows<Cells> read, std::string ifEmpty) {
  return std::make_unique<TablePages>(std::move(heading), std::move(read), std::move(ifEmpty));
}

ReportPagesPtr arrayPages(ReadRows<std::string> read) {
  return std::make_unique<ArrayPages>(std::move(read));
}

ReportPagesPtr onePage(std::string text) {
  return std::make_unique<OnePage>(std::move(text));
}

ReportPagesPtr pagesInOrder(std::vector<ReportPagesPtr> reports) {
  return std::make_unique<PagesInOrder>(std::move(reports));
}

std::string wholeText(ReportPages& pages) {
  std::string text;
  while (pages.hasNext())
    text += pages.next();
  return text;
}

}  // namespace ZelAgent
