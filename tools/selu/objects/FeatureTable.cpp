#include "objects/FeatureTable.h"

#include "base/Errors.h"
#include "base/Memory.h"
#include "base/Output.h"
#include "base/Texts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

namespace selu {
namespace {

using Json = nlohmann::ordered_json;
using ORVA::int64;

// The order of keys: numbers by value, then texts by bytes, part by part of a path.
bool ComesBefore(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    auto const first = a.substr(0, a.find('/')), second = b.substr(0, b.find('/'));
    if (first != second) {
      auto const m = ParseUnsigned(first), n = ParseUnsigned(second);
      if (m && n && *m != *n) return *m < *n;
      if (m.has_value() != n.has_value()) return m.has_value();
      return first < second;
    }
    a.remove_prefix(std::min(first.size() + 1, a.size()));
    b.remove_prefix(std::min(second.size() + 1, b.size()));
  }
  return a.empty() && !b.empty();
}

} // namespace

std::string FullDigits(double value) {
  constexpr double ones = 0x1p53;
  bool const isCount = std::abs(value) <= ones && std::trunc(value) == value;
  return isCount ? std::to_string(static_cast<int64>(value)) : Shortest(value);
}

void CFeatureTable::StColumn::Append(std::size_t row, double value) {
  bool const isFirstGap = rows.empty() && row != values.size();
  if (isFirstGap) {
    rows.resize(values.size());
    std::iota(rows.begin(), rows.end(), std::size_t{0});
  }
  if (isFirstGap || !rows.empty()) rows.push_back(row);
  values.push_back(value);
}

void CFeatureTable::StColumn::MoveTo(std::vector<std::size_t> const& newRows) {
  std::vector<std::pair<std::size_t, double>> moved;
  moved.reserve(values.size());
  for (std::size_t k = 0; k < values.size(); ++k) moved.emplace_back(newRows[Row(k)], values[k]);
  std::ranges::sort(moved, {}, &std::pair<std::size_t, double>::first);
  values.clear();
  rows.clear();
  for (auto const& [row, value] : moved) Append(row, value);
}

void CFeatureTable::StColumn::SortTexts(std::size_t objects) {
  std::vector<std::string> sorted = texts;
  if (values.size() < objects || !places.contains("")) sorted.emplace_back();
  std::ranges::sort(sorted);
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  for (double& value : values) {
    auto const place = std::ranges::lower_bound(sorted, texts[static_cast<std::size_t>(value)]);
    value = static_cast<double>(place - sorted.begin());
  }
  texts = std::move(sorted);
  places.clear();
}

CFeatureTable::StColumn& CFeatureTable::ColumnOf(StFeature const& feature,
                                                 std::string const& name) {
  bool const isText = std::holds_alternative<std::string>(feature.value);
  auto const [known, isNew] = m_Places.try_emplace(feature.path, m_Columns.size());
  if (isNew) m_Columns.push_back({feature.path, isText, {}, {}, {}, {}});
  StColumn& column = m_Columns[known->second];
  if (column.isText != isText)
    throw CAppError("the entry " + QuotedPart(name + "/" + feature.path) + " is a " +
                    (isText ? "text, but other objects have a number there"
                            : "number, but other objects have a text there"));
  return column;
}

void CFeatureTable::Add(int64 label, std::string const& name,
                        std::vector<StFeature> const& features) {
  std::size_t const row = m_Labels.size();
  m_Labels.push_back(label);
  for (auto const& feature : features) {
    StColumn& column = ColumnOf(feature, name);
    if (!column.isText) {
      column.Append(row, std::get<double>(feature.value));
      continue;
    }
    auto const& text = std::get<std::string>(feature.value);
    auto const [known, isNew] = column.places.try_emplace(text, column.texts.size());
    if (isNew) column.texts.push_back(text);
    column.Append(row, static_cast<double>(known->second));
  }
}

void CFeatureTable::SortRows() {
  std::vector<std::size_t> order(m_Labels.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [&](std::size_t row) { return m_Labels[row]; });
  std::vector<std::size_t> newRows(order.size());
  for (std::size_t row = 0; row < order.size(); ++row) newRows[order[row]] = row;
  for (auto& column : m_Columns) column.MoveTo(newRows);
  std::ranges::sort(m_Labels);
  auto const twice = std::ranges::adjacent_find(m_Labels);
  if (twice != m_Labels.end())
    throw CAppError("the object with the label " + std::to_string(*twice) + " is there twice");
}

void CFeatureTable::Finish() {
  if (!std::ranges::is_sorted(m_Labels, std::ranges::less_equal())) SortRows();
  std::ranges::sort(m_Columns,
                    [](auto const& a, auto const& b) { return ComesBefore(a.path, b.path); });
  for (auto& column : m_Columns)
    if (column.isText) column.SortTexts(m_Labels.size());
}

bool CFeatureTable::HasFeature(std::string_view path) const {
  return std::ranges::any_of(m_Columns, [&](auto const& column) {
    return column.path == path || column.path.starts_with(std::string(path) + "/");
  });
}

std::string CFeatureTable::Field(StColumn const& column, std::size_t k) {
  double const value = column.values[k];
  return column.isText ? CsvField(column.texts[static_cast<std::size_t>(value)])
                       : FullDigits(value);
}

void CFeatureTable::WriteCsv(CAtomicFile& file) const {
  constexpr std::size_t block = 1 << 20;
  std::string text = CsvField(m_IdKey);
  for (auto const& column : m_Columns) text += "," + CsvField(column.path);
  text += '\n';
  std::vector<std::size_t> next(m_Columns.size()); // value of each column
  for (std::size_t row = 0; row < m_Labels.size(); ++row) {
    text += std::to_string(m_Labels[row]);
    for (std::size_t c = 0; c < m_Columns.size(); ++c) {
      text += ',';
      StColumn const& column = m_Columns[c];
      bool const isThere = next[c] < column.values.size() && column.Row(next[c]) == row;
      if (isThere) text += Field(column, next[c]++);
    }
    text += '\n';
    if (text.size() < block) continue;
    file.Append(text);
    text.clear();
  }
  file.Append(text);
}

ORVA::CImage CFeatureTable::ToImage(int64 greatest) const {
  auto const rows = static_cast<int64>(m_Columns.size()) + 1;
  double const bytes = 4 * (static_cast<double>(greatest) + 1) * static_cast<double>(rows);
  RefuseBeyondMemory(bytes, "the feature image of " + std::to_string(greatest + 1) + " x " +
                                std::to_string(rows) + " pixels");
  ORVA::CImage image(ORVA::IMAGE_GREY_F, ORVA::CSize(greatest + 1, rows));
  auto* pixels = reinterpret_cast<float*>(image.CreateAccess(true).WritableBase());
  for (int64 label = 0; label <= greatest; ++label) pixels[label] = static_cast<float>(label);
  for (auto const& column : m_Columns) {
    pixels += greatest + 1;
    for (std::size_t k = 0; k < column.values.size(); ++k)
      pixels[m_Labels[column.Row(k)]] = static_cast<float>(column.values[k]);
  }
  return image;
}

ImageNotes CFeatureTable::Notes(std::string const& name) const {
  Json keys = {m_IdKey}, types = {"numeric"}, lookup = Json::object();
  for (auto const& column : m_Columns) {
    keys.push_back(column.path);
    types.push_back(column.isText ? "label" : "numeric");
    if (column.isText) lookup[column.path] = column.texts;
  }
  auto const text = [](Json const& json) {
    return json.dump(-1, ' ', true, Json::error_handler_t::replace);
  };
  return {{"ContentType", "FeatureImage"},  {"featurename", text(name)},
          {"unique-id-key", text(m_IdKey)}, {"y-keys", text(keys)},
          {"y-types", text(types)},         {"label-lookup", text(lookup)}};
}

} // namespace selu
