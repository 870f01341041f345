#include <SeluUtils/Texture/Features.h>

#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/PairCounter.h>

#include "Utils/Texture/FeatureValues.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";

struct StFeatureNames {
  std::string_view name, title, code;
};

// By EnTextureFeature.
constexpr std::array<StFeatureNames, c_nTextureFeatures> c_names = {{
    {"joint_max", "Joint maximum", "GYBY"},
    {"joint_avg", "Joint average", "60VM"},
    {"joint_var", "Joint variance", "UR99"},
    {"joint_entr", "Joint entropy", "TU9B"},
    {"diff_avg", "Difference average", "TF7R"},
    {"diff_var", "Difference variance", "D3YU"},
    {"diff_entr", "Difference entropy", "NTRS"},
    {"sum_avg", "Sum average", "ZGXS"},
    {"sum_var", "Sum variance", "OEEB"},
    {"sum_entr", "Sum entropy", "P6QZ"},
    {"energy", "Angular second moment", "8ZQL"},
    {"contrast", "Contrast", "ACUI"},
    {"dissimilarity", "Dissimilarity", "8S9J"},
    {"inv_diff", "Inverse difference", "IB1Z"},
    {"inv_diff_norm", "Normalized inverse difference", "NDRX"},
    {"inv_diff_mom", "Inverse difference moment", "WF0Z"},
    {"inv_diff_mom_norm", "Normalized inverse difference moment", "1QCO"},
    {"inv_var", "Inverse variance", "E8JP"},
    {"corr", "Correlation", "NI2N"},
    {"auto_corr", "Autocorrelation", "QWB0"},
    {"clust_tend", "Cluster tendency", "DG8W"},
    {"clust_shade", "Cluster shade", "7NFM"},
    {"clust_prom", "Cluster prominence", "AE86"},
    {"info_corr1", "Information correlation 1", "R8DG"},
    {"info_corr2", "Information correlation 2", "JN9H"},
    {"mcc", "Maximal correlation coefficient", ""},
    {"haralick_angular_second_moment", "Angular second moment (Haralick 1)", ""},
    {"haralick_contrast", "Contrast (Haralick 2)", ""},
    {"haralick_correlation", "Correlation (Haralick 3)", ""},
    {"haralick_variance", "Sum of squares: variance (Haralick 4)", ""},
    {"haralick_inverse_difference_moment", "Inverse difference moment (Haralick 5)", ""},
    {"haralick_sum_average", "Sum average (Haralick 6)", ""},
    {"haralick_sum_variance", "Sum variance (Haralick 7)", ""},
    {"haralick_sum_entropy", "Sum entropy (Haralick 8)", ""},
    {"haralick_entropy", "Entropy (Haralick 9)", ""},
    {"haralick_difference_variance", "Difference variance (Haralick 10)", ""},
    {"haralick_difference_entropy", "Difference entropy (Haralick 11)", ""},
    {"haralick_information_correlation_1", "Information measure of correlation 1 (Haralick 12)",
     ""},
    {"haralick_information_correlation_2", "Information measure of correlation 2 (Haralick 13)",
     ""},
    {"haralick_maximal_correlation", "Maximal correlation coefficient (Haralick 14)", ""},
    {"haralick_sum_variance_printed", "Sum variance about the sum entropy (Haralick 7, printed)",
     ""},
}};

StFeatureNames const& NamesOf(EnTextureFeature feature) noexcept {
  static constexpr StFeatureNames none{};
  auto const index = static_cast<std::size_t>(feature);
  return index < c_names.size() ? c_names[index] : none;
}

void CheckLevels(int levels) {
  if (levels < 1 || levels > c_mostLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::Of"),
                        CString("%1 levels are not from 1 to 65535").Arg(levels));
}

void CheckWeights(std::span<double const> weights) {
  double total = 0;
  for (double const weight : weights) {
    if (!(weight >= 0 && std::isfinite(weight)))
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::Of"),
                          CString("a matrix holds the weight %1").Arg(weight));
    total += weight;
  }
  if (!std::isfinite(total))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::Of"),
                        "the weights of a matrix sum to infinity");
}

} // namespace

std::string_view FeatureName(EnTextureFeature feature) noexcept { return NamesOf(feature).name; }
std::string_view FeatureTitle(EnTextureFeature feature) noexcept { return NamesOf(feature).title; }
std::string_view FeatureCode(EnTextureFeature feature) noexcept { return NamesOf(feature).code; }

std::optional<EnTextureFeature> FeatureFromName(std::string_view name) noexcept {
  for (std::size_t k = 0; k < c_names.size(); ++k)
    if (name == c_names[k].name || (!name.empty() && name == c_names[k].code))
      return static_cast<EnTextureFeature>(k);
  return std::nullopt;
}

CTextureFeatures::CTextureFeatures(std::span<EnTextureFeature const> features)
    : m_Features(features.begin(), features.end()), m_Values(features.size()) {
  for (EnTextureFeature const feature : features)
    if (static_cast<std::size_t>(feature) >= c_nTextureFeatures)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::CTextureFeatures"),
                          CString("there is no texture feature %1").Arg(static_cast<int>(feature)));
}

CTextureFeatures::CTextureFeatures(std::initializer_list<EnTextureFeature> features)
    : CTextureFeatures(std::span(features.begin(), features.size())) {}

void CTextureFeatures::SetNormalizingLevels(int levels) {
  if (levels < 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::SetNormalizingLevels"),
                        CString("%1 is no number of levels").Arg(levels));
  m_NormalizingLevels = levels;
}

bool CTextureFeatures::NeedsCells() const noexcept {
  return std::ranges::any_of(m_Features, [](EnTextureFeature feature) {
    return feature == EnTextureFeature::MaximalCorrelation ||
           feature == EnTextureFeature::HaralickMaximalCorrelation;
  });
}

Impl::CPairSums& CTextureFeatures::Start(int levels) {
  m_Sums.Start(levels, NeedsCells());
  return m_Sums;
}

std::span<double const> CTextureFeatures::Finish() {
  int const n = static_cast<int>(m_Sums.Levels());
  Impl::CFeatureValues values(m_Sums, m_NormalizingLevels > 0 ? m_NormalizingLevels : n);
  std::ranges::transform(m_Features, m_Values.begin(),
                         [&](EnTextureFeature feature) { return values.Of(feature); });
  return m_Values;
}

template <class T>
std::span<double const> CTextureFeatures::OfDense(std::span<T const> matrix, int levels) {
  CheckLevels(levels);
  auto const n = static_cast<std::size_t>(levels);
  if (matrix.size() != n * n)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::Of"),
        CString("a matrix of %1 cells does not have %2 levels").Arg(matrix.size()).Arg(levels));
  Start(levels);
  for (std::size_t i = 1; i <= n; ++i) m_Sums.AddRow(i, matrix.data() + (i - 1) * n);
  return Finish();
}

std::span<double const> CTextureFeatures::Of(std::span<uint64 const> counts, int levels) {
  return OfDense(counts, levels);
}

std::span<double const> CTextureFeatures::Of(std::span<std::uint32_t const> counts, int levels) {
  return OfDense(counts, levels);
}

std::span<double const> CTextureFeatures::Of(std::span<double const> weights, int levels) {
  CheckWeights(weights);
  return OfDense(weights, levels);
}

std::span<double const> CTextureFeatures::Of(CPairCounter const& pairs) {
  Start(pairs.Levels());
  pairs.ForEach([this](int i, int j, uint64 count) {
    m_Sums.Add(static_cast<std::size_t>(i), static_cast<std::size_t>(j), count);
  });
  return Finish();
}

std::span<double const> CTextureFeatures::Of(std::span<StPairCount const> cells, int levels) {
  CheckLevels(levels);
  Start(levels);
  StPairCount before;
  for (StPairCount const& cell : cells) {
    bool const isInside = cell.i >= 1 && cell.j >= 1 && cell.i <= levels && cell.j <= levels;
    bool const isNext = before.i < cell.i || (before.i == cell.i && before.j < cell.j);
    if (!isInside || !isNext)
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, "ORVA::CTextureFeatures::Of"),
          CString("the cell (%1, %2) is %3")
              .Arg(cell.i)
              .Arg(cell.j)
              .Arg(CString(isInside ? "not in ascending order" : "outside of the matrix")));
    if (cell.count > 0)
      m_Sums.Add(static_cast<std::size_t>(cell.i), static_cast<std::size_t>(cell.j), cell.count);
    before = cell;
  }
  return Finish();
}

} // namespace ORVA
