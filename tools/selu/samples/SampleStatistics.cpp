#include "samples/SampleStatistics.h"

#include "base/Table.h"
#include "base/Texts.h"
#include "distributions/SpecialFunctions.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>

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

// The last column is the difference in standard errors.
void AddRow(CTable& table, std::string name, double observed, double expected, double size,
            double error) {
  double const off = observed - expected;
  bool const isRounding = std::abs(off) < 5e-16 * size;
  double const z = isRounding ? 0 : off / error;
  table.Add({std::move(name), Number(observed, size), Number(expected, size), Number(off, size),
             error > 0 && std::isfinite(z) ? Rounded(z, 3) : "none"});
}

// The chance that a normal number is that far from 0 or farther.
double ChanceBeyond(double z) { return std::erfc(std::abs(z) / std::sqrt(2)); }

double FiniteOr(double value, double other) { return std::isfinite(value) ? value : other; }

constexpr char const* c_head[] = {"moment", "of the samples", "in theory", "difference",
                                  "standard errors"};

struct StAxis {
  Vector axis; // with z >= 0
  double moment;
};

// One plane rotation of Jacobi's method: a symmetric matrix and the columns it is turned by.
void Turn(std::array<std::array<double, 3>, 3>& a, std::array<std::array<double, 3>, 3>& v,
          std::size_t p, std::size_t q) {
  if (a[p][q] == 0) return;
  double const angle = std::atan2(2 * a[p][q], a[q][q] - a[p][p]) / 2;
  double const c = std::cos(angle), s = std::sin(angle);
  for (auto& row : a)
    std::tie(row[p], row[q]) = std::pair(c * row[p] - s * row[q], s * row[p] + c * row[q]);
  for (std::size_t k = 0; k < 3; ++k)
    std::tie(a[p][k], a[q][k]) = std::pair(c * a[p][k] - s * a[q][k], s * a[p][k] + c * a[q][k]);
  for (auto& row : v)
    std::tie(row[p], row[q]) = std::pair(c * row[p] - s * row[q], s * row[p] + c * row[q]);
}

StAxis PrincipalAxis(std::array<double, 6> const& t) {
  std::array<std::array<double, 3>, 3> a = {
      {{t[0], t[3], t[4]}, {t[3], t[1], t[5]}, {t[4], t[5], t[2]}}};
  std::array<std::array<double, 3>, 3> v = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  constexpr int sweeps = 12; // far more than three dimensions need
  for (int sweep = 0; sweep < sweeps; ++sweep) {
    Turn(a, v, 0, 1);
    Turn(a, v, 0, 2);
    Turn(a, v, 1, 2);
  }
  std::array<std::size_t, 3> order = {0, 1, 2};
  std::sort(order.begin(), order.end(), [&](auto i, auto j) { return a[i][i] < a[j][j]; });
  double const low = a[order[0]][order[0]], middle = a[order[1]][order[1]],
               high = a[order[2]][order[2]];
  std::size_t const k = high - middle >= middle - low ? order[2] : order[0];
  double const sign = v[2][k] < 0 ? -1 : 1;
  return {Vector(v[0][k], v[1][k], v[2][k]) * sign, a[k][k]};
}

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

CCellTest::CCellTest(StScalarTheory const& theory) : m_Cells(theory.cells) {
  double below = 0;
  for (double const border : m_Cells) {
    double const upTo = std::isinf(border) ? 1 : theory.cdf(border);
    m_Shares.push_back(std::max(0.0, upTo - below));
    below = upTo;
  }
  m_Counts.resize(m_Cells.size());
}

void CCellTest::Add(double value) {
  auto const cell = std::lower_bound(m_Cells.begin(), m_Cells.end(), value);
  // A value that is no number is in none, which a chi-square of all samples shows.
  if (cell != m_Cells.end() && !std::isnan(value))
    ++m_Counts[static_cast<std::size_t>(cell - m_Cells.begin())];
  ++m_Count;
}

CCellTest::StResult CCellTest::Result() const {
  constexpr double least = 10;
  double sum = 0, count = 0, expected = 0, toCome = 0;
  double cells = 0;
  for (double const share : m_Shares) toCome += share * Real(m_Count);
  for (std::size_t i = 0; i < m_Cells.size(); ++i) {
    count += Real(m_Counts[i]);
    expected += m_Shares[i] * Real(m_Count);
    toCome -= m_Shares[i] * Real(m_Count);
    bool const isLast = i + 1 == m_Cells.size();
    if (!isLast && (expected < least || toCome < least)) continue;
    if (expected > 0) sum += (count - expected) * (count - expected) / expected;
    cells += 1;
    count = expected = 0;
  }
  return {sum, cells - 1, ChiSquareProbability(sum, cells - 1)};
}

std::string CVerdict::Text(uint64 count) const {
  if (!m_IsTested) return "";
  if (count < c_fewest && m_Fits) return "";
  return m_Fits ? "The samples fit their law.\n"
                : "The samples do not fit their law: a test is less likely than 1e-6.\n";
}

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
      m_CellTest(scalar.theory), m_Center(FiniteOr(scalar.theory.moments.mean, 0)),
      m_Scale(FiniteOr(scalar.theory.moments.deviation, 1)),
      m_Borders(selu::Borders(scalar, expected)) {
  if (!(m_Scale > 0)) m_Scale = 1;
  m_Counts.resize(m_Borders.size() - 1);
}

void CScalarStatistics::Add(double value) {
  ++m_Count;
  if (m_Theory.noTest.empty()) m_Test.Add(m_Theory.cdf(value));
  if (m_CellTest.Exists()) m_CellTest.Add(value);
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
  double const n = Real(m_Count);
  double const ofMean = deviation / std::sqrt(n);
  double const ofDeviation = deviation * std::sqrt((should.excess + 2) / (4 * n));
  AddRow(table, "mean", is.mean, should.mean, std::max(std::abs(m_Center), deviation), ofMean);
  AddRow(table, "standard deviation", is.deviation, should.deviation, deviation, ofDeviation);
  AddRow(table, "skewness", is.skewness, should.skewness, 1, 0);
  AddRow(table, "excess kurtosis", is.excess, should.excess, 1, 0);
  std::string text = table.ToText(columns) + TestText(m_Test, m_Theory.noTest);
  // A law whose spread doubles hardly show beside its mean is not judged.
  constexpr double finest = 1e-11;
  bool const isJudged = m_Count >= CVerdict::c_fewest && std::isfinite(should.deviation) &&
                        should.deviation > finest * std::abs(should.mean);
  if (isJudged && m_Theory.noTest.empty()) m_Verdict.Add(m_Test.Probability());
  if (isJudged && m_CellTest.Exists()) {
    auto const [sum, freedom, probability] = m_CellTest.Result();
    text += "Chi-square: " + Rounded(sum, 4) + " with " + Rounded(freedom, 6) +
            " degrees of freedom, p-value " + Rounded(probability, 4) + "\n";
    m_Verdict.Add(probability);
    // Where no continuous test looks at the mean: normal only for many samples of a law that is not
    // too skew.
    bool const isNormal = n > 100 * (1 + should.skewness * should.skewness);
    if (isNormal && ofMean > 0) m_Verdict.Add(ChanceBeyond((is.mean - should.mean) / ofMean));
  }
  return text + m_Verdict.Text(m_Count);
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
  for (std::size_t i = 0; i < products.size(); ++i) {
    m_Sums[i] += products[i];
    m_Squares[i] += products[i] * products[i];
  }
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
  double const n = Real(m_Count);
  for (std::size_t i = 0; i < names.size(); ++i) {
    double const mean = m_Sums[i] / n;
    double const error = std::sqrt(std::max(0.0, m_Squares[i] / n - mean * mean) / n);
    AddRow(table, names[i], mean, expected[i], 1, error > 1e-12 ? error : 0);
  }
  std::string const about = m_Theory.noTest.empty() ? " (angle to the axis)" : "";
  std::string text = TestText(m_Test, m_Theory.noTest);
  text.insert(text.find(':'), about);
  if (m_Theory.noTest.empty() && m_Count >= CVerdict::c_fewest) m_Verdict.Add(m_Test.Probability());
  return table.ToText(columns) + text + (m_Theory.isAxial ? AxisText() : "") +
         m_Verdict.Text(m_Count);
}

// The axis whose second moment differs most from the other two, of samples and in theory.
std::string CDirectionStatistics::AxisText() const {
  std::array<double, 6> tensor{};
  for (std::size_t i = 0; i < 6; ++i) tensor[i] = m_Sums[i + 3] / Real(m_Count);
  auto const [axis, moment] = PrincipalAxis(tensor);
  Vector const& m = m_Theory.axis;
  double const cosine = std::abs(axis.x * m.x + axis.y * m.y + axis.z * m.z);
  auto const degrees = [](double radians) {
    return Rounded(std::round(radians * 1800 / std::numbers::pi) / 10 + 0.0, 5);
  };
  double const theta = std::acos(std::clamp(axis.z, -1.0, 1.0));
  double phi = std::atan2(axis.y, axis.x);
  if (phi < 0) phi += 2 * std::numbers::pi;
  return "Principal axis: theta " + degrees(theta) + " deg, phi " + degrees(phi) +
         " deg, second moment " + Rounded(moment, 4) + "; " +
         degrees(std::acos(std::min(1.0, cosine))) + " deg from that of theory\n";
}

} // namespace selu
