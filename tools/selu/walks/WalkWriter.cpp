#include "WalkWriter.h"

#include "Output.h"
#include "WalkImage.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <type_traits>

namespace selu {
namespace {

constexpr std::size_t c_bufferBytes = 1 << 20;

std::vector<std::string> Columns(StWalkForm const& form) {
  std::vector<std::string> columns = {"x", "y"};
  if (form.dimension == 3) columns.emplace_back("z");
  if (form.distance) columns.emplace_back("distance");
  if (form.image != nullptr) columns.emplace_back("value");
  return columns;
}

std::string CsvHead(StWalkForm const& form) {
  std::string text;
  for (auto const& column : Columns(form)) text += (text.empty() ? "" : ",") + column;
  return text + "\n";
}

std::string JsonHead(StWalkForm const& form) {
  nlohmann::ordered_json head;
  head["walk"] = form.title;
  head["columns"] = Columns(form);
  std::string text = head.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  text.pop_back();
  return text + ",\"points\":[";
}

double Dot(RealPoint const& a, RealPoint const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

} // namespace

CLineDistance::CLineDistance(RealPoint const& from, RealPoint const& to,
                             std::array<double, 3> const& spacing)
    : m_from(from), m_spacing(spacing[0], spacing[1], spacing[2]) {
  RealPoint const way = (to - from) * m_spacing;
  double const length = std::hypot(way.x, way.y, way.z);
  if (length > 0) m_unit = way * (1 / length);
}

double CLineDistance::Of(Point const& p) const noexcept {
  RealPoint const place(static_cast<double>(p.x), static_cast<double>(p.y),
                        static_cast<double>(p.z));
  return Dot((place - m_from) * m_spacing, m_unit) + 0.0; // no -0
}

CWalkWriter::CWalkWriter(StWalkForm form, CAtomicFile* file)
    : m_form(std::move(form)), m_file(file) {
  m_buffer = m_form.isJson ? JsonHead(m_form) : CsvHead(m_form);
}

template <class T>
void CWalkWriter::AddNumber(T number) {
  if constexpr (std::is_floating_point_v<T>) {
    if (m_form.isJson && !std::isfinite(number)) {
      m_buffer += "null";
      return;
    }
  }
  std::array<char, 32> text;
  auto const result = std::to_chars(text.data(), text.data() + text.size(), number);
  m_buffer.append(text.data(), result.ptr);
}

template <class Value>
void CWalkWriter::AddRows(std::span<Point const> points, Value const& appendValue) {
  for (auto const& p : points) {
    if (m_form.isJson) m_buffer += m_first ? "\n[" : ",\n[";
    m_first = false;
    AddNumber(p.x);
    m_buffer += ',';
    AddNumber(p.y);
    if (m_form.dimension == 3) {
      m_buffer += ',';
      AddNumber(p.z);
    }
    if (m_form.distance) {
      m_buffer += ',';
      AddNumber(m_form.distance->Of(p));
    }
    appendValue(p);
    m_buffer += m_form.isJson ? "]" : "\n";
    if (m_buffer.size() >= c_bufferBytes) Flush();
  }
}

void CWalkWriter::Add(std::span<Point const> points) {
  if (m_form.image == nullptr) return AddRows(points, [](Point const&) {});
  VisitPixels(*m_form.image, [&](auto pixels) {
    AddRows(points, [&](Point const& p) {
      m_buffer += ',';
      AddNumber(pixels[IndexOf(p, m_form.image->Size())]);
    });
  });
}

void CWalkWriter::Finish(StCounts const& counts) {
  if (m_form.isJson)
    m_buffer += "\n],\"count\":" + std::to_string(counts.points) +
                ",\"outside\":" + std::to_string(counts.outside) + "}\n";
  Flush();
}

void CWalkWriter::Flush() {
  WriteOut(m_file, m_buffer);
  m_buffer.clear();
}

} // namespace selu
