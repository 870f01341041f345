#include "samples/SampleWriter.h"

#include "base/Output.h"
#include "base/Texts.h"

#include <nlohmann/json.hpp>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>

namespace selu {
namespace {

constexpr std::size_t c_bufferBytes = 1 << 20;

// The NPY format, version 1.0: magic, length of the header, a Python dictionary padded to 64 bytes.
std::string NpyHeader(StSampleShape const& shape) {
  std::string dictionary = "{'descr': '";
  dictionary += shape.isWhole ? "<i8" : "<f8";
  dictionary += "', 'fortran_order': False, 'shape': (" + std::to_string(shape.count) + ",";
  for (int const extent : shape.extents) dictionary += " " + std::to_string(extent) + ",";
  dictionary += "), }";
  constexpr std::size_t before = 10, block = 64;
  while ((before + dictionary.size() + 1) % block != 0) dictionary += ' ';
  dictionary += '\n';
  std::string header("\x93NUMPY\x01\x00", 8);
  header += static_cast<char>(dictionary.size() & 255);
  header += static_cast<char>(dictionary.size() >> 8);
  return header + dictionary;
}

std::string JsonHeader(StSampleShape const& shape) {
  nlohmann::ordered_json head;
  head["distribution"] = shape.distribution;
  head["seed"] = shape.seed;
  if (shape.stream) head["stream"] = *shape.stream;
  head["columns"] = shape.columns;
  std::string text = head.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  text.pop_back();
  return text + ",\"samples\":[";
}

std::string CsvHeader(StSampleShape const& shape) {
  std::string text;
  for (auto const& column : shape.columns) text += (text.empty() ? "" : ",") + column;
  return text + "\n";
}

void AppendBytes(std::string& buffer, std::uint64_t bits) {
  for (int i = 0; i < 8; ++i) buffer += static_cast<char>(bits >> (8 * i) & 255);
}

} // namespace

CSampleWriter::CSampleWriter(EnSampleFormat format, StSampleShape shape, CAtomicFile* file)
    : m_Format(format), m_Shape(std::move(shape)), m_File(file) {
  m_Buffer.reserve(c_bufferBytes + (1 << 16));
  m_Buffer = format == EnSampleFormat::Npy    ? NpyHeader(m_Shape)
             : format == EnSampleFormat::Json ? JsonHeader(m_Shape)
                                              : CsvHeader(m_Shape);
}

void CSampleWriter::AddNumber(double value) {
  std::array<char, 32> text;
  auto const [end, error] =
      m_Shape.isWhole ? std::to_chars(text.begin(), text.end(), static_cast<ORVA::int64>(value))
                      : std::to_chars(text.begin(), text.end(), value);
  m_Buffer.append(text.data(), end);
}

void CSampleWriter::AddCsv(std::span<double const> sample) {
  for (std::size_t i = 0; i < sample.size(); ++i) {
    if (i > 0) m_Buffer += ',';
    AddNumber(sample[i]);
  }
  m_Buffer += '\n';
}

void CSampleWriter::AddJson(std::span<double const> sample) {
  m_Buffer += m_First ? "\n" : ",\n";
  m_First = false;
  bool const isList = !m_Shape.extents.empty();
  if (isList) m_Buffer += '[';
  for (std::size_t i = 0; i < sample.size(); ++i) {
    if (i > 0) m_Buffer += ',';
    if (std::isfinite(sample[i]))
      AddNumber(sample[i]);
    else
      m_Buffer += "null";
  }
  if (isList) m_Buffer += ']';
}

void CSampleWriter::AddNpy(std::span<double const> values) {
  for (double const value : values)
    AppendBytes(m_Buffer, m_Shape.isWhole
                              ? static_cast<std::uint64_t>(static_cast<ORVA::int64>(value))
                              : std::bit_cast<std::uint64_t>(value));
}

void CSampleWriter::Add(std::span<double const> values) {
  std::size_t const width = m_Shape.columns.size();
  for (std::size_t i = 0; i + width <= values.size(); i += width) {
    auto const sample = values.subspan(i, width);
    if (m_Format == EnSampleFormat::Npy)
      AddNpy(sample);
    else if (m_Format == EnSampleFormat::Json)
      AddJson(sample);
    else
      AddCsv(sample);
    if (m_Buffer.size() >= c_bufferBytes) Flush();
  }
}

void CSampleWriter::Finish() {
  if (m_Format == EnSampleFormat::Json) m_Buffer += "\n]}\n";
  Flush();
}

void CSampleWriter::Flush() {
  WriteOut(m_File, m_Buffer);
  m_Buffer.clear();
}

} // namespace selu
