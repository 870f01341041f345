#include <SeluUtils/Texture/Quantizer.h>

#include "Utils/Texture/Binning.h"
#include "Utils/Texture/ExactSum.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";
constexpr double c_leastWidth = 0x1p-1000, c_greatestWidth = 0x1p1000;

void CheckLevels(int levels, char const* function) {
  if (levels < 1 || levels > c_mostLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("%1 levels are not from 1 to 65535").Arg(levels));
}

void CheckWidth(double width, char const* function) {
  if (!(width >= c_leastWidth && width <= c_greatestWidth))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("a bin width of %1 is not from 2^-1000 to 2^1000").Arg(width));
}

void CheckRange(double low, double high, char const* function) {
  if (!std::isfinite(low) || !std::isfinite(high) || !(high - low >= c_leastWidth) ||
      !(high - low <= c_greatestWidth))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, function),
        CString("a range from %1 to %2 is not 2^-1000 to 2^1000 wide").Arg(low).Arg(high));
}

// The greatest integer m with m * width <= value.
double MultipleBelow(double value, double width) {
  double multiple = std::floor(value / width);
  if (!(std::abs(multiple) <= 0x1p46))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CQuantizer::Fit"),
        CString("the least value %1 is too many bins of width %2 from 0").Arg(value).Arg(width));
  auto const isBelow = [&](double m) {
    Impl::StHalves const a(m), b(width);
    return Impl::SignOfSum(std::array{-a.high * b.high, -a.high * b.low, -a.low * b.high,
                                      -a.low * b.low, value}) < 0;
  };
  while (isBelow(multiple)) --multiple;
  while (!isBelow(multiple + 1)) ++multiple;
  return multiple;
}

} // namespace

uint64 StLevelReport::Voxels() const noexcept {
  uint64 voxels = 0;
  for (uint64 const count : histogram) voxels += count;
  return voxels;
}

int StLevelReport::Occurring() const noexcept {
  int occurring = 0;
  for (std::size_t level = 1; level < histogram.size(); ++level) occurring += histogram[level] != 0;
  return occurring;
}

int StLevelReport::Greatest() const noexcept {
  for (std::size_t level = histogram.size(); level-- > 1;)
    if (histogram[level] != 0) return static_cast<int>(level);
  return 0;
}

StLevelReport& StLevelReport::operator+=(StLevelReport const& other) {
  if (!histogram.empty() && !other.histogram.empty() && histogram.size() != other.histogram.size())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::StLevelReport::operator+="),
                        CString("reports of %1 and %2 levels do not add up")
                            .Arg(histogram.size() - 1)
                            .Arg(other.histogram.size() - 1));
  histogram.resize(std::max(histogram.size(), other.histogram.size()));
  for (std::size_t level = 0; level < other.histogram.size(); ++level)
    histogram[level] += other.histogram[level];
  offMask += other.offMask;
  notNumbers += other.notNumbers;
  below += other.below;
  above += other.above;
  return *this;
}

StValueRange& StValueRange::operator+=(StValueRange const& other) noexcept {
  if (other.voxels == 0) return *this;
  low = voxels == 0 ? other.low : std::min(low, other.low);
  high = voxels == 0 ? other.high : std::max(high, other.high);
  voxels += other.voxels;
  return *this;
}

CQuantizer CQuantizer::Range(double low, double high, int levels) {
  CheckLevels(levels, "ORVA::CQuantizer::Range");
  CheckRange(low, high, "ORVA::CQuantizer::Range");
  CQuantizer quantizer(EnRecipe::Count);
  quantizer.m_Levels = levels;
  quantizer.m_Low = low;
  quantizer.m_High = high;
  quantizer.m_IsFitted = true;
  return quantizer;
}

CQuantizer CQuantizer::BinCount(int levels) {
  CheckLevels(levels, "ORVA::CQuantizer::BinCount");
  CQuantizer quantizer(EnRecipe::Count);
  quantizer.m_Levels = levels;
  return quantizer;
}

CQuantizer CQuantizer::BinWidth(double width) {
  CheckWidth(width, "ORVA::CQuantizer::BinWidth");
  CQuantizer quantizer(EnRecipe::Width);
  quantizer.m_Width = width;
  return quantizer;
}

CQuantizer CQuantizer::BinWidthFrom(double start, double width) {
  CheckWidth(width, "ORVA::CQuantizer::BinWidthFrom");
  if (!std::isfinite(start) || std::abs(start) > c_greatestWidth)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CQuantizer::BinWidthFrom"),
                        CString("bins cannot start at %1").Arg(start));
  CQuantizer quantizer(EnRecipe::WidthFrom);
  quantizer.m_Low = start;
  quantizer.m_Width = width;
  return quantizer;
}

CQuantizer CQuantizer::BinWidthAtMultiple(double width) {
  CheckWidth(width, "ORVA::CQuantizer::BinWidthAtMultiple");
  CQuantizer quantizer(EnRecipe::WidthAtMultiple);
  quantizer.m_Width = width;
  return quantizer;
}

CQuantizer CQuantizer::ByEdges(std::vector<double> edges) {
  if (edges.size() < 2 || edges.size() > std::size_t{c_mostLevels} + 1)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CQuantizer::ByEdges"),
                        CString("%1 edges are not from 2 to 65536").Arg(edges.size()));
  for (std::size_t k = 1; k < edges.size(); ++k)
    if (!(edges[k - 1] < edges[k]))
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, "ORVA::CQuantizer::ByEdges"),
          CString("edge %1 does not lie below edge %2").Arg(edges[k - 1]).Arg(edges[k]));
  CQuantizer quantizer(EnRecipe::Edges);
  quantizer.m_Levels = static_cast<int>(edges.size()) - 1;
  quantizer.m_Edges = std::move(edges);
  quantizer.m_IsFitted = true;
  return quantizer;
}

CQuantizer& CQuantizer::Beyond(EnBeyond beyond) noexcept {
  m_Beyond = beyond;
  return *this;
}

bool CQuantizer::NeedsRange() const noexcept { return !m_IsFitted; }

CQuantizer CQuantizer::Fit(StValueRange const& range) const {
  CQuantizer fitted = *this;
  if (m_IsFitted) return fitted;
  fitted.m_IsFitted = true;
  fitted.m_HasNone = range.voxels == 0;
  if (fitted.m_HasNone) {
    fitted.m_Levels = 1;
  } else if (m_Recipe != EnRecipe::Count) {
    fitted.FitWidth(range);
  } else if (range.low == range.high) {
    fitted.m_Recipe = EnRecipe::Edges;
    fitted.m_Edges = {range.low, range.high};
    fitted.m_Levels = 1;
  } else {
    CheckRange(range.low, range.high, "ORVA::CQuantizer::Fit");
    fitted.m_Low = range.low;
    fitted.m_High = range.high;
  }
  return fitted;
}

void CQuantizer::FitWidth(StValueRange const& range) {
  if (std::max(std::abs(range.low), std::abs(range.high)) > c_greatestWidth)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CQuantizer::Fit"),
        CString("values from %1 to %2 lead beyond 2^1000").Arg(range.low).Arg(range.high));
  if (m_Recipe == EnRecipe::Width) m_Low = range.low;
  if (m_Recipe == EnRecipe::WidthAtMultiple) m_Multiple = MultipleBelow(range.low, m_Width);
  m_Levels = c_mostLevels;
  auto const bins = Binning();
  int const greatest = bins.Find(range.high);
  // The upper edge of the last bin would be the start of the one after it.
  if (greatest == Impl::CBinning::c_above ||
      (greatest == c_mostLevels &&
       Impl::CBinning::OfWidth(m_Low, m_Multiple, m_Width, greatest + 1).Find(range.high) !=
           greatest))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CQuantizer::Fit"),
                        CString("bins of width %1 up to the value %2 are more than 65535")
                            .Arg(m_Width)
                            .Arg(range.high));
  m_Levels = std::max(1, greatest); // 1 where all values lie below a given start
}

void CQuantizer::CheckFitted(char const* function) const {
  if (!m_IsFitted)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, function),
        "the levels depend on the values found: fit the quantizer to a range first");
}

// Without a range any bins will do: no voxel gets a level.
Impl::CBinning CQuantizer::Binning() const {
  if (m_HasNone) return Impl::CBinning::OfWidth(0, 0, 1, 1);
  if (m_Recipe == EnRecipe::Edges) return Impl::CBinning::OfEdges(m_Edges);
  if (m_Recipe == EnRecipe::Count) return Impl::CBinning::OfCount(m_Low, m_High, m_Levels);
  return Impl::CBinning::OfWidth(m_Low, m_Multiple, m_Width, m_Levels);
}

int CQuantizer::Levels() const {
  CheckFitted("ORVA::CQuantizer::Levels");
  return m_Levels;
}

std::vector<double> CQuantizer::Edges() const {
  CheckFitted("ORVA::CQuantizer::Edges");
  if (m_HasNone) return {};
  auto const bins = Binning();
  std::vector<double> edges;
  for (int k = 0; k <= m_Levels; ++k) edges.push_back(bins.Edge(k));
  return edges;
}

int CQuantizer::Level(double value) const {
  CheckFitted("ORVA::CQuantizer::Level");
  int const bin = m_HasNone ? Impl::CBinning::c_none : Binning().Find(value);
  if (bin > 0) return bin;
  if (bin == Impl::CBinning::c_none || m_Beyond == EnBeyond::Outside) return 0;
  return bin == Impl::CBinning::c_below ? 1 : m_Levels;
}

} // namespace ORVA
