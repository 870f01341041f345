#include "images/GridText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace selu {
namespace {

using Json = nlohmann::ordered_json;

// Numbers of an array, where it is one of so many numbers.
bool TakeNumbers(Json const& json, std::array<double, 3>& numbers) {
  if (!json.is_array() || json.size() != numbers.size()) return false;
  for (std::size_t i = 0; i < numbers.size(); ++i)
    if (json[i].is_number()) numbers[i] = json[i].get<double>();
  return true;
}

} // namespace

std::string GridText(StGrid const& grid, ImageNotes const& notes) {
  Json text = Json::object();
  if (grid != StGrid()) {
    text["spacing"] = grid.spacing;
    text["origin"] = grid.origin;
    text["direction"] = grid.direction;
  }
  for (auto const& [key, value] : notes) text[key] = value;
  if (text.empty()) return {};
  return text.dump(-1, ' ', true, Json::error_handler_t::replace);
}

bool TakeGrid(std::string_view text, StGrid& grid) {
  if (!text.starts_with('{')) return false;
  Json const json = Json::parse(text, nullptr, false);
  if (!json.is_object() || !json.contains("spacing")) return false;
  if (!TakeNumbers(json["spacing"], grid.spacing)) return false;
  if (json.contains("origin")) TakeNumbers(json["origin"], grid.origin);
  if (!json.contains("direction") || !json["direction"].is_array()) return true;
  for (std::size_t axis = 0; axis < std::min<std::size_t>(json["direction"].size(), 3); ++axis)
    TakeNumbers(json["direction"][axis], grid.direction[axis]);
  return true;
}

} // namespace selu
