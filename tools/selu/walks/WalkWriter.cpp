#include "walks/WalkWriter.h"

#include "base/Output.h"
#include "walks/WalkImage.h"

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
    : m_From(from), m_Spacing(spacing[0], spacing[1], spacing[2]) {
  RealPoint const way = (to - from) * m_Spacing;
  double const length = std::hypot(way.x, way.y, way.z);
  if (length > 0) m_Unit = way * (1 / length);
}

double CLineDistance::Of(Point const& p) const noexcept {
  RealPoint const place(static_cast<double>(p.x), static_cast<double>(p.y),
                        static_cast<double>(p.z));
  return Dot((place - m_From) * m_Spacing, m_Unit) + 0.0; // no -0
}

CWalkWriter::CWalkWriter(StWalkForm form, CAtomicFile* file)
    : m_Form(std::move(form)), m_File(file) {
  m_Buffer = m_Form.isJson ? JsonHead(m_Form) : CsvHead(m_Form);
}

template <class T>
void CWalkWriter::AddNumber(T number) {
  if constexpr (std::is_floating_point_v<T>) {
    if (m_Form.isJson && !std::isfinite(number)) {
      m_Buffer += "null";
      return;
    }
  }
  std::array<char, 32> text;
  auto const result = std::to_chars(text.data(), text.data() + text.size(), number);
  m_Buffer.append(text.data(), result.ptr);
}

template <class Value>
void CWalkWriter::AddRows(std::span<Point const> points, Value const& appendValue) {
  for (auto const& p : points) {
    if (m_Form.isJson) m_Buffer += m_First ? "\n[" : ",\n[";
    m_First = false;
    AddNumber(p.x);
    m_Buffer += ',';
    AddNumber(p.y);
    if (m_Form.dimension == 3) {
      m_Buffer += ',';
      AddNumber(p.z);
    }
    if (m_Form.distance) {
      m_Buffer += ',';
      AddNumber(m_Form.distance->Of(p));
    }
    appendValue(p);
    m_Buffer += m_Form.isJson ? "]" : "\n";
    if (m_Buffer.size() >= c_bufferBytes) Flush();
  }
}

void CWalkWriter::Add(std::span<Point const> points) {
  if (m_Form.image == nullptr) return AddRows(points, [](Point const&) {});
  VisitPixels(*m_Form.image, [&](auto pixels) {
    AddRows(points, [&](Point const& p) {
      m_Buffer += ',';
      AddNumber(pixels[IndexOf(p, m_Form.image->Size())]);
    });
  });
}

void CWalkWriter::Finish(StCounts const& counts) {
  if (m_Form.isJson)
    m_Buffer += "\n],\"count\":" + std::to_string(counts.points) +
                ",\"outside\":" + std::to_string(counts.outside) + "}\n";
  Flush();
}

void CWalkWriter::Flush() {
  WriteOut(m_File, m_Buffer);
  m_Buffer.clear();
}

} // namespace selu
