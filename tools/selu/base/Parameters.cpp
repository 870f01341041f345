#include "base/Parameters.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <cmath>
#include <numbers>

namespace selu {
namespace {

std::optional<double> ParseNumber(std::string const& text) {
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() != 1) return std::nullopt;
  return numbers->front();
}

std::optional<double> ParseAngle(std::string const& text) {
  if (!text.ends_with("deg")) return ParseNumber(text);
  auto const degrees = ParseNumber(text.substr(0, text.size() - 3));
  if (!degrees) return std::nullopt;
  return *degrees / 180 * std::numbers::pi; // in this order 180deg is pi exactly
}

std::string BoundsText(StBounds const& bounds) {
  std::string text = "a finite number";
  auto const add = [&](double bound, char const* words) {
    if (std::isinf(bound)) return;
    text += text.ends_with("number") ? " " : " and ";
    text += words + Rounded(bound, 10);
  };
  add(bounds.least, "of at least ");
  add(bounds.above, "above ");
  add(bounds.most, "of at most ");
  add(bounds.below, "below ");
  return text;
}

} // namespace

CParameters CParameters::FromText(std::string const& text) { return FromTexts({text}); }

CParameters CParameters::FromTexts(std::vector<std::string> const& texts) {
  if (texts.empty()) throw CUsageError("the name of the distribution is missing");
  std::size_t const comma = texts[0].find(',');
  CParameters parameters(texts[0].substr(0, comma), {});
  parameters.m_IsTyped = true;
  if (comma != std::string::npos) parameters.AddText(texts[0].substr(comma + 1));
  for (std::size_t i = 1; i < texts.size(); ++i) parameters.AddText(texts[i]);
  return parameters;
}

void CParameters::AddText(std::string text) {
  while (true) {
    bool const isFile = text.starts_with("file=");
    std::size_t const comma = isFile ? std::string::npos : text.find(',');
    std::string const one = text.substr(0, comma);
    std::size_t const equals = one.find('=');
    if (equals == std::string::npos || equals == 0)
      Refuse("takes parameters written name=value, not " + Quoted(one));
    std::string const name = one.substr(0, equals);
    if (Has(name)) Refuse("is given " + name + " twice");
    m_Given.emplace_back(name, one.substr(equals + 1));
    m_Used.push_back(false);
    if (comma == std::string::npos) return;
    text.erase(0, comma + 1);
  }
}

std::string CParameters::Title() const {
  std::string title = m_Distribution;
  for (auto const& [name, value] : m_Given) title += ", " + name + " = " + value;
  return title;
}

bool CParameters::Has(std::string const& name) const {
  for (auto const& given : m_Given)
    if (given.first == name) return true;
  return false;
}

std::optional<std::string> CParameters::Take(std::string const& name) {
  for (std::size_t i = 0; i < m_Given.size(); ++i)
    if (m_Given[i].first == name) {
      m_Used[i] = true;
      return m_Given[i].second;
    }
  return std::nullopt;
}

double CParameters::Checked(std::string const& name, std::string const& text, double value,
                            StBounds const& bounds) const {
  bool const good = std::isfinite(value) && value >= bounds.least && value <= bounds.most &&
                    value > bounds.above && value < bounds.below;
  if (!good) Refuse("needs " + name + " to be " + BoundsText(bounds) + ", not " + Quoted(text));
  return value;
}

double CParameters::Number(std::string const& name, StBounds const& bounds) {
  auto const text = Take(name);
  if (!text) Refuse("needs the parameter " + name);
  return Checked(name, *text, ParseNumber(*text).value_or(std::nan("")), bounds);
}

double CParameters::Number(std::string const& name, double fallback, StBounds const& bounds) {
  return Has(name) ? Number(name, bounds) : fallback;
}

double CParameters::Angle(std::string const& name, double fallback, StBounds const& bounds) {
  auto const text = Take(name);
  if (!text) return fallback;
  return Checked(name, *text, ParseAngle(*text).value_or(std::nan("")), bounds);
}

std::string CParameters::Text(std::string const& name) {
  auto const text = Take(name);
  if (!text || text->empty()) Refuse("needs the parameter " + name);
  return *text;
}

std::vector<std::pair<double, double>> CParameters::NumberPairs() {
  std::vector<std::pair<double, double>> pairs;
  for (auto const& [name, text] : m_Given) {
    auto const value = ParseNumber(name), weight = ParseNumber(text);
    if (!value || !weight || !std::isfinite(*value) || !std::isfinite(*weight))
      Refuse("takes pairs of numbers value=weight, not " + Quoted(name + "=" + text));
    pairs.emplace_back(*value, *weight);
  }
  m_Used.assign(m_Given.size(), true);
  return pairs;
}

void CParameters::Finish() const {
  for (std::size_t i = 0; i < m_Given.size(); ++i)
    if (!m_Used[i]) Refuse("has no parameter " + Quoted(m_Given[i].first));
}

void CParameters::Refuse(std::string const& why) const {
  std::string name = Quoted(m_Distribution);
  Raise("the distribution " + name.substr(1, name.size() - 2) + " " + why);
}

void CParameters::Raise(std::string const& sentence) const {
  if (m_IsTyped) throw CUsageError(sentence);
  throw CAppError(sentence);
}

} // namespace selu
