#include "objects/RegionFeatures.h"

#include "base/Output.h"
#include "base/Texts.h"

#include <cmath>
#include <string_view>

namespace selu {
namespace {

using ORVA::int64;

// A text that is read back as a double; JSON has neither NaN nor infinity.
std::string JsonNumber(double value) {
  if (std::isnan(value)) return R"({"$number": "NaN"})";
  if (std::isinf(value))
    return value > 0 ? R"({"$number": "Infinity"})" : R"({"$number": "-Infinity"})";
  std::string text = Shortest(value);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

// The texts of features are our own: nothing in them needs an escape.
std::string JsonValue(StRegionFeature const& feature) {
  if (auto const* whole = std::get_if<int64>(&feature.value)) return std::to_string(*whole);
  if (auto const* number = std::get_if<double>(&feature.value)) return JsonNumber(*number);
  return '"' + std::get<std::string>(feature.value) + '"';
}

std::string CsvValue(StRegionFeature const& feature) {
  if (auto const* whole = std::get_if<int64>(&feature.value)) return std::to_string(*whole);
  if (auto const* number = std::get_if<double>(&feature.value)) return FullDigits(*number);
  return CsvField(std::get<std::string>(feature.value));
}

} // namespace

CRegionWriter::CRegionWriter(CAtomicFile* json, CAtomicFile* csv, int64 greatestLabel,
                             std::size_t objects)
    : m_Json(json), m_Csv(csv), m_Digits(std::to_string(greatestLabel).size()),
      m_JsonText("{\n  \"maximum label\": " + std::to_string(greatestLabel) +
                 ",\n  \"no. of objects\": " + std::to_string(objects)) {}

void CRegionWriter::Add(int64 label, std::vector<StRegionFeature> const& features) {
  constexpr std::size_t block = 1 << 20;
  if (m_Json != nullptr) AddJson(label, features);
  if (m_Csv != nullptr) AddCsv(features);
  Flush(block);
}

void CRegionWriter::AddJson(int64 label, std::vector<StRegionFeature> const& features) {
  std::string const name = std::to_string(label);
  m_JsonText += ",\n  \"object " + std::string(m_Digits - name.size(), '0') + name + "\": {";
  std::string_view group; // the map within that is open
  bool isFirst = true;
  for (auto const& feature : features) {
    std::string_view const path = feature.path;
    auto const slash = path.find('/');
    auto const own = slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
    if (own != group) {
      if (!group.empty()) m_JsonText += "\n    }";
      if (!own.empty()) {
        m_JsonText += (isFirst ? "\n    \"" : ",\n    \"") + std::string(own) + "\": {";
        isFirst = true;
      }
      group = own;
    }
    m_JsonText += isFirst ? "\n" : ",\n";
    m_JsonText += group.empty() ? "    \"" : "      \"";
    m_JsonText += own.empty() ? path : path.substr(slash + 1);
    m_JsonText += "\": " + JsonValue(feature);
    isFirst = false;
  }
  m_JsonText += group.empty() ? "\n  }" : "\n    }\n  }";
}

void CRegionWriter::AddCsv(std::vector<StRegionFeature> const& features) {
  // The label is the first column and not among the others.
  auto const addLine = [&](auto const& field) {
    std::string rest;
    for (auto const& feature : features) {
      if (feature.path == "object")
        m_CsvText += field(feature);
      else
        rest += "," + field(feature);
    }
    m_CsvText += rest + "\n";
  };
  if (!m_HasHead) addLine([](StRegionFeature const& feature) { return CsvField(feature.path); });
  m_HasHead = true;
  addLine(CsvValue);
}

void CRegionWriter::Flush(std::size_t most) {
  if (m_Json != nullptr && m_JsonText.size() > most) {
    m_Json->Append(m_JsonText);
    m_JsonText.clear();
  }
  if (m_Csv != nullptr && m_CsvText.size() > most) {
    m_Csv->Append(m_CsvText);
    m_CsvText.clear();
  }
}

void CRegionWriter::Finish() {
  m_JsonText += "\n}\n";
  Flush(0);
}

} // namespace selu
