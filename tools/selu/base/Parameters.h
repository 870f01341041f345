// A distribution with its parameters, as written on the command line or in a JSON file.
//
//   CParameters given = CParameters::FromText("vmf,kappa=20,theta=90deg");
//   double kappa = given.Number("kappa", {.above = 0});
//   double theta = given.Angle("theta", 0.0, {.least = 0, .most = pi});
//   given.Finish();                        // throws for a name that was not asked for
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace selu {

/// What a number may be; always finite.
struct StBounds {
  double least = -std::numeric_limits<double>::infinity();
  double most = std::numeric_limits<double>::infinity();
  double above = -std::numeric_limits<double>::infinity();
  double below = std::numeric_limits<double>::infinity();
};

/// All errors name the distribution, the parameter and the value: CUsageError for what the command
/// line says, CAppError for what a file says.
class CParameters {
public:
  using Pairs = std::vector<std::pair<std::string, std::string>>;

  /// Those of a file.
  CParameters(std::string distribution, Pairs given)
      : m_Distribution(std::move(distribution)), m_Given(std::move(given)), m_Used(m_Given.size()) {
  }

  /// "normal,mean=3,sigma=2"; the value of a parameter called file is the rest of the text.
  [[nodiscard]] static CParameters FromText(std::string const& text);
  /// The texts of a command line, each of that form after the first one's name.
  [[nodiscard]] static CParameters FromTexts(std::vector<std::string> const& texts);

  [[nodiscard]] std::string const& Distribution() const noexcept { return m_Distribution; }
  [[nodiscard]] Pairs const& Given() const noexcept { return m_Given; }
  /// "normal, mean = 3, sigma = 2", for people.
  [[nodiscard]] std::string Title() const;
  [[nodiscard]] bool Has(std::string const& name) const;

  /// Without a default the parameter must be given.
  [[nodiscard]] double Number(std::string const& name, StBounds const& bounds);
  [[nodiscard]] double Number(std::string const& name, double fallback, StBounds const& bounds);
  /// Radians, or degrees with the ending "deg".
  [[nodiscard]] double Angle(std::string const& name, double fallback, StBounds const& bounds);
  [[nodiscard]] std::string Text(std::string const& name);
  /// All parameters, names being numbers as well: value and weight.
  [[nodiscard]] std::vector<std::pair<double, double>> NumberPairs();

  /// To be called when all parameters were asked for.
  void Finish() const;
  /// "the distribution normal ", then why.
  [[noreturn]] void Refuse(std::string const& why) const;
  [[noreturn]] void Raise(std::string const& sentence) const;

private:
  void AddText(std::string text);
  [[nodiscard]] std::optional<std::string> Take(std::string const& name);
  [[nodiscard]] double Checked(std::string const& name, std::string const& text, double value,
                               StBounds const& bounds) const;

  std::string m_Distribution;
  Pairs m_Given;
  std::vector<bool> m_Used;
  bool m_IsTyped = false; // on the command line
};

} // namespace selu
