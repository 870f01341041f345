// Tables for people: columns aligned, and broken into blocks where they are too wide for the page.
//
//   CTable table({"feature", "1,0,0", "0,1,0"});
//   table.Add({"Contrast", "0.012", "0.034"});
//   PrintOut(table.ToText(80));
#pragma once

#include <string>
#include <vector>

namespace selu {

/// The first column is left-aligned and stands at the left of every block; the others are
/// right-aligned. Rows may be shorter than the head.
class CTable {
public:
  explicit CTable(std::vector<std::string> head) : m_Rows{std::move(head)} {}
  void Add(std::vector<std::string> row) { m_Rows.push_back(std::move(row)); }
  [[nodiscard]] std::string ToText(int columns) const;

private:
  [[nodiscard]] std::vector<std::size_t> Widths() const;

  std::vector<std::vector<std::string>> m_Rows; // the head first
};

} // namespace selu
