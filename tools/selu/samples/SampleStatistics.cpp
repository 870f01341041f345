#include "samples/SampleStatistics.h"

#include "base/Table.h"
#include "base/Texts.h"
#include "distributions/SpecialFunctions.h"

#include <algorithm>
#include <cmath>

namespace selu {
namespace {

using ORVA::uint64;

constexpr uint64 c_testCells = 1 << 20;

double Real(uint64 count) { return static_cast<double>(count); }

std::string TestText(CUniformTest& test, std::string const& skipped) {
  if (!skipped.empty()) return "Kolmogorov-Smirnov: skipped, " + skipped + "\n";
  return "Kolmogorov-Smirnov: distance " + Rounded(test.Distance(), 4) + ", p-value " +
         Rounded(test.Probability(), 4) + "\n";
}

// What is but rounding of a zero, in a quantity of this size, is shown as one.
std::string Number(double value, double size) {
  if (std::isnan(value)) return "none";
  return Rounded(std::abs(value) < 5e-16 * size ? 0 : value, 6);
}

void AddRow(CTable& table, std::string name, double observed, double expected, double size) {
  table.Add({std::move(name), Number(observed, size), Number(expected, size),
             Number(observed - expected, size)});
}

double FiniteOr(double value, double other) { return std::isfinite(value) ? value : other; }

constexpr char const* c_head[] = {"moment", "of the samples", "in theory", "difference"};

// Equal bins, of whole numbers when the values are.
std::vector<double> Borders(StScalar const& scalar, uint64 expected) {
  double const most = std::clamp(std::sqrt(Real(expected)), 12.0, 80.0);
  double const width = scalar.theory.high - scalar.theory.low;
  double step = width / std::floor(most);
  if (scalar.isWhole) step = std::max(1.0, std::ceil(step));
  std::vector<double> borders = {scalar.theory.low};
  while (borders.back() < scalar.theory.high - step * 1e-6 && borders.size() < 200)
    borders.push_back(scalar.theory.low + step * static_cast<double>(borders.size()));
  return borders;
}

} // namespace

CUniformTest::CUniformTest(uint64 expected) {
  if (expected > c_testCells)
    m_Cells.resize(c_testCells + 1);
  else
    m_Values.reserve(expected);
}

void CUniformTest::Add(double share) {
  ++m_Count;
  if (std::isnan(share)) m_IsUndefined = true;
  if (m_IsUndefined) return;
  share = std::clamp(share, 0.0, 1.0);
  if (m_Cells.empty())
    m_Values.push_back(share);
  else
    ++m_Cells[static_cast<std::size_t>(share * Real(c_testCells))];
}

double CUniformTest::DistanceOfCells() const {
  double distance = 0;
  uint64 below = 0;
  for (std::size_t i = 0; i < c_testCells; ++i) {
    below += m_Cells[i];
    double const share = Real(below) / Real(m_Count);
    distance = std::max(distance, std::abs(share - Real(i + 1) / Real(c_testCells)));
  }
  return distance;
}

double CUniformTest::DistanceOfValues() {
  std::sort(m_Values.begin(), m_Values.end());
  double distance = 0;
  for (std::size_t i = 0; i < m_Values.size(); ++i)
    distance = std::max({distance, Real(i + 1) / Real(m_Count) - m_Values[i],
                         m_Values[i] - Real(i) / Real(m_Count)});
  return distance;
}

double CUniformTest::Distance() {
  if (m_IsUndefined || m_Count == 0) return std::nan("");
  return m_Cells.empty() ? DistanceOfValues() : DistanceOfCells();
}

double CUniformTest::Probability() { return KolmogorovProbability(Distance(), Real(m_Count)); }

CScalarStatistics::CScalarStatistics(StScalar const& scalar, uint64 expected)
    : m_Theory(scalar.theory), m_Test(scalar.theory.noTest.empty() ? expected : 0),
      m_Center(FiniteOr(scalar.theory.moments.mean, 0)),
      m_Scale(FiniteOr(scalar.theory.moments.deviation, 1)),
      m_Borders(selu::Borders(scalar, expected)) {
  if (!(m_Scale > 0)) m_Scale = 1;
  m_Counts.resize(m_Borders.size() - 1);
}

void CScalarStatistics::Add(double value) {
  ++m_Count;
  if (m_Theory.noTest.empty()) m_Test.Add(m_Theory.cdf(value));
  double const off = (value - m_Center) / m_Scale;
  m_Sums[0] += off;
  m_Sums[1] += off * off;
  m_Sums[2] += off * off * off;
  m_Sums[3] += off * off * off * off;
  double const place = (value - m_Borders.front()) / (m_Borders.back() - m_Borders.front()) *
                       static_cast<double>(m_Counts.size());
  if (place >= 0 && place <= static_cast<double>(m_Counts.size()))
    ++m_Counts[std::min(static_cast<std::size_t>(place), m_Counts.size() - 1)];
  else
    ++m_Outside;
}

StMoments CScalarStatistics::Moments() const {
  double const n = Real(m_Count);
  double const m1 = m_Sums[0] / n, m2 = m_Sums[1] / n, m3 = m_Sums[2] / n, m4 = m_Sums[3] / n;
  double const variance = std::max(0.0, m2 - m1 * m1);
  double const third = m3 - 3 * m1 * m2 + 2 * m1 * m1 * m1;
  double const fourth = m4 - 4 * m1 * m3 + 6 * m1 * m1 * m2 - 3 * m1 * m1 * m1 * m1;
  double const deviation = std::sqrt(variance);
  bool const varies = variance > 0;
  return {m_Center + m1 * m_Scale, deviation * m_Scale,
          varies ? third / (variance * deviation) : std::nan(""),
          varies ? fourth / (variance * variance) - 3 : std::nan("")};
}

std::string CScalarStatistics::Report(int columns) {
  StMoments const is = Moments(), should = m_Theory.moments;
  CTable table({std::begin(c_head), std::end(c_head)});
  double const deviation = FiniteOr(should.deviation, 0);
  AddRow(table, "mean", is.mean, should.mean, std::max(std::abs(m_Center), deviation));
  AddRow(table, "standard deviation", is.deviation, should.deviation, deviation);
  AddRow(table, "skewness", is.skewness, should.skewness, 1);
  AddRow(table, "excess kurtosis", is.excess, should.excess, 1);
  return table.ToText(columns) + TestText(m_Test, m_Theory.noTest);
}

StProjected Project(Vector const& d) noexcept {
  double const factor = 1 / std::sqrt(1 + std::abs(d.z));
  return {d.z >= 0 ? 0 : 1, d.x * factor, d.y * factor};
}

CDirectionStatistics::CDirectionStatistics(StRotationTheory const& theory, uint64 expected)
    : m_Theory(theory), m_Test(theory.noTest.empty() ? expected : 0),
      m_Cells(static_cast<int>(std::clamp(std::sqrt(Real(expected) / 20), 12.0, 90.0))) {
  for (auto& counts : m_Counts)
    counts.resize(static_cast<std::size_t>(m_Cells) * static_cast<std::size_t>(m_Cells));
}

void CDirectionStatistics::Add(Vector const& d) {
  ++m_Count;
  std::array<double, 9> const products = {d.x,       d.y,       d.z,       d.x * d.x, d.y * d.y,
                                          d.z * d.z, d.x * d.y, d.x * d.z, d.y * d.z};
  for (std::size_t i = 0; i < products.size(); ++i) m_Sums[i] += products[i];
  // 1 - cos(angle) by the chord, which keeps its digits near the axis.
  Vector const chord = d - m_Theory.axis;
  if (m_Theory.noTest.empty())
    m_Test.Add(m_Theory.beyond((chord.x * chord.x + chord.y * chord.y + chord.z * chord.z) / 2));
  auto const [hemisphere, x, y] = Project(d);
  auto const cell = [this](double place) {
    return static_cast<std::size_t>(
        std::clamp((place + 1) / 2 * m_Cells, 0.0, static_cast<double>(m_Cells - 1)));
  };
  ++m_Counts[static_cast<std::size_t>(hemisphere)]
            [cell(y) * static_cast<std::size_t>(m_Cells) + cell(x)];
}

Vector CDirectionStatistics::Mean() const {
  return Vector(m_Sums[0], m_Sums[1], m_Sums[2]) * (1 / Real(m_Count));
}

std::string CDirectionStatistics::Report(int columns) {
  Vector const m = m_Theory.mean;
  auto const& t = m_Theory.tensor;
  std::array<double, 9> const expected = {m.x, m.y, m.z, t[0], t[1], t[2], t[3], t[4], t[5]};
  constexpr std::array<char const*, 9> names = {"mean x",  "mean y",  "mean z",
                                                "mean xx", "mean yy", "mean zz",
                                                "mean xy", "mean xz", "mean yz"};
  CTable table({std::begin(c_head), std::end(c_head)});
  for (std::size_t i = 0; i < names.size(); ++i)
    AddRow(table, names[i], m_Sums[i] / Real(m_Count), expected[i], 1);
  std::string const about = m_Theory.noTest.empty() ? " (angle to the axis)" : "";
  std::string text = TestText(m_Test, m_Theory.noTest);
  text.insert(text.find(':'), about);
  return table.ToText(columns) + text;
}

} // namespace selu
