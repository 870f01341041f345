#include "base/Table.h"

#include <algorithm>

namespace selu {
namespace {

constexpr std::size_t c_gap = 2;

std::string Padded(std::string const& text, std::size_t width, bool left) {
  std::string const space(width - std::min(width, text.size()), ' ');
  return left ? text + space : space + text;
}

} // namespace

std::vector<std::size_t> CTable::Widths() const {
  std::vector<std::size_t> widths(m_Rows.front().size());
  for (auto const& row : m_Rows)
    for (std::size_t i = 0; i < std::min(row.size(), widths.size()); ++i)
      widths[i] = std::max(widths[i], row[i].size());
  return widths;
}

std::string CTable::ToText(int columns) const {
  auto const widths = Widths();
  auto const page = static_cast<std::size_t>(std::max(columns, 1));
  std::string text;
  std::size_t first = 1;
  do {
    std::size_t last = first, width = widths[0];
    while (last < widths.size() && (last == first || width + c_gap + widths[last] <= page))
      width += c_gap + widths[last++];
    if (first > 1) text += '\n';
    for (std::size_t r = 0; r < m_Rows.size(); ++r) {
      auto const& row = m_Rows[r];
      std::string line = Padded(row[0], widths[0], true);
      for (std::size_t i = first; i < std::min(last, row.size()); ++i)
        line += std::string(c_gap, ' ') + Padded(row[i], widths[i], false);
      text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
      if (r == 0) text += std::string(width, '-') + '\n';
    }
    first = last;
  } while (first < widths.size());
  return text;
}

} // namespace selu
