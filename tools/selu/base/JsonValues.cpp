#include "base/JsonValues.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Texts.h"

#include <pxlib2core/ValueVector.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <unordered_set>
#include <utility>
#include <vector>

namespace selu {
namespace {

using Json = nlohmann::json;
using ORVA::CValue;
using ORVA::CValue_Key;
using ORVA::CValueMap;
using ORVA::CValueVector;

constexpr char c_numberKey[] = "$number";

struct StSpecialNumber {
  char const* text;
  double value;
};
constexpr std::array<StSpecialNumber, 3> c_specialNumbers = {{
    {"NaN", std::numeric_limits<double>::quiet_NaN()},
    {"Infinity", std::numeric_limits<double>::infinity()},
    {"-Infinity", -std::numeric_limits<double>::infinity()},
}};

std::string KeyText(CValue_Key const& key) {
  if (!key.IsText()) return "$" + std::to_string(key.Number());
  return key.Text().starts_with('$') ? "$" + key.Text() : key.Text();
}

// The number that a text writes in the one way that numbers are written.
std::optional<ORVA::int64> WrittenNumber(std::string_view text) {
  ORVA::int64 number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (std::to_string(number) != text) return std::nullopt;
  return number;
}

CValue_Key KeyOf(std::string const& text) {
  if (text.starts_with("$$")) return text.substr(1);
  if (text.starts_with('$'))
    if (auto const number = WrittenNumber(std::string_view(text).substr(1))) return *number;
  return text;
}

// ---- Writing ----

std::string Below(std::string const& path, std::string const& part) {
  return path.empty() ? part : path + "/" + part;
}

Json ToJson(CValueMap const& map, std::string const& path, int depth);

Json NumberJson(double value) {
  if (std::isfinite(value)) return value;
  auto const special = std::ranges::find_if(c_specialNumbers, [&](StSpecialNumber const& one) {
    return one.value == value || (std::isnan(one.value) && std::isnan(value));
  });
  return Json{{c_numberKey, special->text}};
}

Json ToJson(CValue const& value, std::string const& path, int depth) {
  switch (value.Type()) {
  case CValue::EnType::Invalid:
    return {};
  case CValue::EnType::Bool:
    return value.Bool();
  case CValue::EnType::Long:
    return value.Long();
  case CValue::EnType::Double:
    return NumberJson(value.Double());
  case CValue::EnType::String:
    return value.String().Std();
  case CValue::EnType::Map:
    return ToJson(value.Map(), path, depth + 1);
  case CValue::EnType::Vector: {
    if (depth >= c_jsonDepth) break;
    Json array = Json::array();
    for (auto const& entry : value.Vector())
      array.push_back(ToJson(entry, Below(path, std::to_string(array.size())), depth + 1));
    return array;
  }
  case CValue::EnType::Pointer:
    throw CAppError("the entry " + QuotedPart(path) + " holds an object, which JSON cannot hold");
  }
  throw CAppError("the entry " + QuotedPart(path) + " is nested deeper than " +
                  std::to_string(c_jsonDepth) + " levels");
}

Json ToJson(CValueMap const& map, std::string const& path, int depth) {
  if (depth > c_jsonDepth)
    throw CAppError("the entry " + QuotedPart(path) + " is nested deeper than " +
                    std::to_string(c_jsonDepth) + " levels");
  Json object = Json::object();
  for (auto const& [key, value] : map)
    object[KeyText(key)] = ToJson(value, Below(path, key.ToString()), depth);
  return object;
}

// ---- Reading ----

// An object or array that has begun and not ended.
struct StOpen {
  bool isMap;
  CValueMap map = {};
  CValueVector vector = {};
  std::string key = {}; // of the entry to come next or, at last, of the one that came last
};

// Builds the values while the text is read, so that depth and numbers are judged as they come.
class CReader : public nlohmann::json_sax<Json> {
public:
  using Take = std::function<void(CValue_Key const&, CValue)>;

  /// Gives each entry of the outermost map away where there is somebody to take it.
  explicit CReader(Take take = {}) : m_Take(std::move(take)) {}

  bool null() override { return Add(CValue()); }
  bool boolean(bool value) override { return Add(ORVA::CValueBool(value)); }
  bool string(string_t& value) override { return Add(ORVA::CValueString(std::move(value))); }
  bool binary(binary_t&) override { return Refuse("is binary"); }

  bool number_integer(number_integer_t value) override {
    return AddInteger(value, std::to_string(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    return AddInteger(value, std::to_string(value));
  }
  // Also integers of more than 64 bits.
  bool number_float(number_float_t value, string_t const& text) override {
    if (text.find_first_of(".eE") == string_t::npos) return AddAsDouble(value, text);
    return Add(ORVA::CValueDouble(value));
  }

  bool start_object(std::size_t) override { return Open(true); }
  bool start_array(std::size_t) override { return Open(false); }
  bool key(string_t& text) override {
    if (text.find('/') != string_t::npos)
      throw CAppError(Where() + " has the key " + QuotedPart(text) +
                      ", but / separates the keys of a path");
    m_Open.back().key = std::move(text);
    return true;
  }
  bool end_object() override {
    StOpen closed = Close();
    if (auto const number = SpecialNumber(closed)) return Add(ORVA::CValueDouble(*number));
    return Add(std::move(closed.map));
  }
  bool end_array() override { return Add(std::move(Close().vector)); }

  bool parse_error(std::size_t position, string_t const&,
                   nlohmann::detail::exception const& error) override {
    constexpr int numberOverflow = 406;
    if (error.id == numberOverflow) return Refuse("is a number beyond the doubles");
    m_Error = position;
    return false;
  }

  /// Where the text stops being JSON, in bytes from its begin.
  [[nodiscard]] std::optional<std::size_t> Error() const noexcept { return m_Error; }
  [[nodiscard]] CValueMap TakeMap() noexcept { return std::move(m_Result); }

private:
  // The place of the value that is being read.
  [[nodiscard]] std::string Where() const {
    std::string path;
    for (StOpen const& open : m_Open) {
      std::string const part = open.isMap ? open.key : std::to_string(open.vector.Size());
      if (!part.empty()) path = Below(path, part);
    }
    return path.empty() ? "the JSON text" : "the entry " + QuotedPart(path);
  }
  [[noreturn]] bool Refuse(std::string const& why) const { throw CAppError(Where() + " " + why); }

  bool Open(bool isMap) {
    if (m_Open.empty() && !isMap) Refuse("is no object with keys and values");
    if (m_Open.size() >= static_cast<std::size_t>(c_jsonDepth))
      Refuse("is nested deeper than " + std::to_string(c_jsonDepth) + " levels");
    m_Open.push_back({isMap});
    return true;
  }

  StOpen Close() {
    StOpen closed = std::move(m_Open.back());
    m_Open.pop_back();
    return closed;
  }

  bool Add(CValue value) {
    if (m_Open.empty()) {
      if (value.Type() != CValue::EnType::Map) Refuse("is no object with keys and values");
      m_Result = std::move(value.Map());
      return true;
    }
    StOpen& open = m_Open.back();
    if (!open.isMap) {
      open.vector.PushBack(std::move(value));
      return true;
    }
    if (m_Take && m_Open.size() == 1) {
      if (!m_Taken.insert(open.key).second) Refuse("is there twice");
      m_Take(KeyOf(open.key), std::move(value));
      return true;
    }
    std::size_t const before = open.map.Size();
    open.map.SetEntry(KeyOf(open.key), std::move(value));
    if (open.map.Size() == before) Refuse("is there twice");
    return true;
  }

  template <class T>
  bool AddInteger(T value, std::string const& text) {
    if (std::in_range<std::int32_t>(value))
      return Add(ORVA::CValueLong(static_cast<std::int32_t>(value)));
    return AddAsDouble(static_cast<double>(value), text);
  }

  bool AddAsDouble(double value, std::string const& text) {
    std::array<char, 400> digits; // the greatest double has 309
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                   std::chars_format::fixed, 0)
                         .ptr;
    if (text != std::string_view(digits.data(), end))
      Refuse("is an integer that neither 32 bits nor a double hold: " + text.substr(0, 80));
    return Add(ORVA::CValueDouble(value));
  }

  static std::optional<double> SpecialNumber(StOpen const& closed) {
    if (closed.map.Size() != 1 || closed.key != c_numberKey) return std::nullopt;
    CValue const& value = closed.map.begin().Value();
    if (value.Type() != CValue::EnType::String) return std::nullopt;
    for (auto const& special : c_specialNumbers)
      if (value.String().Std() == special.text) return special.value;
    return std::nullopt;
  }

  std::vector<StOpen> m_Open; // the outermost first
  CValueMap m_Result;
  Take m_Take;
  std::unordered_set<std::string> m_Taken; // keys of the entries that were given away
  std::optional<std::size_t> m_Error;
};

// Of the byte before this position.
std::string LineAndColumn(std::istream& text, std::size_t position) {
  std::size_t line = 1, column = 1;
  for (std::size_t i = 1; i < position; ++i) {
    bool const isEnd = text.get() == '\n';
    line += isEnd;
    column = isEnd ? 1 : column + 1;
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// The text is read a second time where its place has to be told.
void Parse(std::istream& text, CReader& reader) {
  if (Json::sax_parse(text, &reader)) return;
  text.clear();
  text.seekg(0, std::ios::end);
  auto const size = static_cast<std::size_t>(text.tellg());
  text.seekg(0);
  throw CAppError("the text is no JSON from " + LineAndColumn(text, reader.Error().value_or(size)) +
                  " on");
}

} // namespace

std::string ToJsonText(CValueMap const& map) {
  Json const json = ToJson(map, "", 1);
  try {
    return json.dump(2) + "\n";
  } catch (Json::type_error const&) { // the only one that writing knows
    throw CAppError("a text or key of the map is not UTF-8, which JSON has to be");
  }
}

CValueMap ParseJsonMap(std::string_view text) {
  CReader reader;
  std::istringstream in{std::string(text)};
  Parse(in, reader);
  return reader.TakeMap();
}

namespace {

void ParseFile(std::filesystem::path const& path, CReader& reader) {
  auto const bytes = SizeOfReadable(path);
  try {
    std::ifstream in(path, std::ios::binary);
    Parse(in, reader);
    if (in.bad() || SizeOfReadable(path) != bytes)
      throw CAppError("the file cannot be read to its end");
  } catch (CAppError const& error) {
    throw CAppError("cannot read " + Quoted(path) + ": " + error.what());
  }
}

} // namespace

CValueMap ReadJsonMap(std::filesystem::path const& path) {
  RefuseBeyondMemory(static_cast<double>(SizeOfReadable(path)), "the file " + Quoted(path));
  CReader reader;
  ParseFile(path, reader);
  return reader.TakeMap();
}

void ReadJsonEntries(std::filesystem::path const& path,
                     std::function<void(CValue_Key const&, CValue)> const& take) {
  CReader reader(take);
  ParseFile(path, reader);
}

} // namespace selu
