#include "base/Output.h"
#include "base/Table.h"
#include "base/Texts.h"
#include "texture/Texture.h"

#include <nlohmann/json.hpp>

namespace selu {

using Json = nlohmann::ordered_json;

std::string DirectionText(Direction const& direction, int dimension) {
  std::string text = std::to_string(direction.x) + "," + std::to_string(direction.y);
  if (dimension == 3) text += "," + std::to_string(direction.z);
  return text;
}

namespace {

std::string AggregatedTable(StTexture const& texture, int columns) {
  CTable table({"aggregation", texture.aggregation});
  for (std::size_t f = 0; f < texture.featureNames.size(); ++f)
    table.Add({texture.featureNames[f], Rounded(texture.aggregated[f], 6)});
  return table.ToText(columns);
}

Json FeaturesJson(StTexture const& texture, std::vector<double> const& values) {
  Json json;
  for (std::size_t f = 0; f < values.size(); ++f) json[texture.featureNames[f]] = values[f];
  return json;
}

} // namespace

std::string ToTable(StTexture const& texture, int columns) {
  if (!texture.aggregation.empty()) return AggregatedTable(texture, columns);
  std::vector<std::string> head = {"direction"}, pairs = {"pairs"};
  for (auto const& one : texture.directions) {
    head.push_back(DirectionText(one.direction, texture.size.Dim()));
    pairs.push_back(std::to_string(one.pairs));
  }
  CTable table(head);
  table.Add(pairs);
  for (std::size_t f = 0; f < texture.featureNames.size(); ++f) {
    std::vector<std::string> row = {texture.featureNames[f]};
    for (auto const& one : texture.directions) row.push_back(Rounded(one.features[f], 6));
    table.Add(row);
  }
  return table.ToText(columns);
}

std::string ToJson(StTexture const& texture) {
  Json json;
  json["image"] = texture.image;
  json["size"] = texture.size.Dim() == 2 ? Json{texture.size.x, texture.size.y}
                                         : Json{texture.size.x, texture.size.y, texture.size.z};
  json["pixel type"] = PixelName(texture.pixel);
  json["range"] = texture.range ? Json{texture.range->low, texture.range->high} : Json();
  if (!texture.edges.empty()) {
    json["levels"] = texture.edges.size() - 1;
    json["edges"] = {texture.edges.front(), texture.edges.back()};
  }
  if (!texture.aggregation.empty()) {
    json["aggregation"] = texture.aggregation;
    json["features"] = FeaturesJson(texture, texture.aggregated);
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  }
  json["directions"] = Json::array();
  for (auto const& one : texture.directions) {
    Json entry;
    entry["direction"] = {one.direction.x, one.direction.y, one.direction.z};
    entry["pairs"] = one.pairs;
    entry["features"] = FeaturesJson(texture, one.features);
    json["directions"].push_back(entry);
  }
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string ToCsv(StTexture const& texture) {
  bool const isAggregated = !texture.aggregation.empty();
  std::string text = isAggregated ? "aggregation" : "dx,dy,dz,pairs";
  for (auto const& name : texture.featureNames) text += "," + CsvField(name);
  text += '\n';
  if (isAggregated) {
    text += texture.aggregation;
    for (double const value : texture.aggregated) text += "," + Shortest(value);
    text += '\n';
  }
  for (auto const& one : texture.directions) {
    text += DirectionText(one.direction, 3) + "," + std::to_string(one.pairs);
    for (double const value : one.features) text += "," + Shortest(value);
    text += '\n';
  }
  return text;
}

} // namespace selu
