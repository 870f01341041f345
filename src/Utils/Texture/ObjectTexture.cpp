#include <SeluUtils/Texture/ObjectTexture.h>

#include <SeluUtils/Texture/PairCounter.h>

#include "Utils/Cooccurrence/Strides.h"
#include "Utils/Texture/ObjectPairs.h"
#include "Utils/Texture/PixelBlocks.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";
constexpr char c_constructor[] = "ORVA::CObjectTexture::CObjectTexture";

[[noreturn]] void RaiseLabel(int64 label) {
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                      CString("label %1 is negative").Arg(label));
}

template <class T>
std::uint32_t LabelAt(std::byte const* pixel) {
  auto const label = Impl::ReadPixel<T>(pixel);
  if constexpr (std::is_signed_v<T>)
    if (label < 0) [[unlikely]]
      RaiseLabel(label);
  return static_cast<std::uint32_t>(label);
}

std::array<std::size_t, 3> AxesByStride(CImageAccess const& access) {
  std::array<std::size_t, 3> axes{0, 1, 2};
  std::ranges::stable_sort(axes, {}, [&](std::size_t axis) {
    return std::pair(access.Extents()[axis] == 1, Impl::StrideLength(access.Strides()[axis]));
  });
  return axes;
}

std::array<int64, 3> Permuted(std::array<int64, 3> const& values,
                              std::array<std::size_t, 3> const& axes) {
  return {values[axes[0]], values[axes[1]], values[axes[2]]};
}

// Calls add(label, length, first) for the runs of a row of n labels from voxel `at` on.
template <class T, class Add>
void FindRunsOfRow(std::byte const* pixel, int64 n, int64 stride, int64 at, Add add) {
  constexpr int64 most = std::numeric_limits<std::uint32_t>::max();
  for (int64 i = 0; i < n;) {
    std::uint32_t const label = LabelAt<T>(pixel + i * stride);
    int64 const first = i;
    for (++i; i < n && i - first < most && LabelAt<T>(pixel + i * stride) == label; ++i) continue;
    if (label != 0) add(label, static_cast<std::uint32_t>(i - first), at + first);
  }
}

} // namespace

CObjectTexture::CObjectTexture(CLevelImage levels, IImage const& labels,
                               StObjectTextureOptions options)
    : m_Levels(std::move(levels)), m_Labels(labels.CreateAccess(false)), m_LabelType(labels.Type()),
      m_Options(std::move(options)) {
  if (Impl::MaskLoaderOf(m_LabelType) == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("an image of the type %1 has no integer labels")
                            .Arg(CString(m_LabelType.ToString())));
  if (m_Labels.Extents() != m_Levels.Extents())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        "labels and levels have different extents");
  CTextureFeatures const check(m_Options.features); // refuses what is no feature
  TakeDisplacements();
  FindRuns();
  FindObjects();
}

void CObjectTexture::TakeDisplacements() {
  int const dimension = std::clamp(m_Levels.Size().Dim(), 1, 3);
  if (m_Options.displacements.empty()) m_Options.displacements = NeighborDisplacements(dimension);
  m_Axes = AxesByStride(m_Labels);
  m_Extents = Permuted(m_Labels.Extents(), m_Axes);
  for (auto const& d : m_Options.displacements) {
    if (d == CTriple<int64>())
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor), "a displacement is (0, 0, 0)");
    if (d.z != 0 && dimension < 3)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                          CString("the displacement (%1, %2, %3) leads out of the plane")
                              .Arg(d.x)
                              .Arg(d.y)
                              .Arg(d.z));
    m_Steps.push_back(Permuted({d.x, d.y, d.z}, m_Axes));
  }
}

// Voxels are numbered along the axes in the order of their strides.
void CObjectTexture::FindRuns() {
  auto const strides = Permuted(m_Labels.Strides(), m_Axes);
  auto const add = [this](std::uint32_t label, std::uint32_t length, int64 first) {
    m_Runs.push_back({label, length, first});
  };
  Impl::VisitPixelType(m_LabelType, [&]<class T>(T) {
    if constexpr (std::is_integral_v<T>)
      for (int64 z = 0; z < m_Extents[2]; ++z)
        for (int64 y = 0; y < m_Extents[1]; ++y)
          FindRunsOfRow<T>(m_Labels.Base() + y * strides[1] + z * strides[2], m_Extents[0],
                           strides[0], (z * m_Extents[1] + y) * m_Extents[0], add);
  });
  std::ranges::sort(m_Runs, [](StRun const& a, StRun const& b) {
    return std::tie(a.label, a.first) < std::tie(b.label, b.first);
  });
}

void CObjectTexture::FindObjects() {
  for (std::size_t k = 0; k < m_Runs.size(); ++k) {
    if (m_Objects.empty() || m_Objects.back().label != m_Runs[k].label) {
      m_Objects.push_back({m_Runs[k].label, 0});
      m_FirstRun.push_back(k);
    }
    m_Objects.back().voxels += m_Runs[k].length;
  }
  m_FirstRun.push_back(m_Runs.size());
}

// Counts and evaluates one object after the other in memory of its own.
class CObjectTexture::CWorker {
public:
  explicit CWorker(CObjectTexture const& texture)
      : m_Texture(texture), m_Image(ImageOf(texture)),
        m_Pairs(texture.m_Levels.Levels(), texture.m_Options.isSymmetric),
        m_Features(texture.m_Options.features),
        m_CountRun(Impl::RunCounterOf(texture.m_LabelType, texture.m_Levels.BytesPerVoxel())) {}

  void Compute(std::size_t object, std::span<double> values) {
    Place(object);
    std::ranges::fill(values, 0.0);
    double matrices = 0;
    bool const isCombined = m_Texture.m_Options.isCombined;
    for (std::size_t k = 0; k < m_Texture.m_Steps.size(); ++k) {
      for (Impl::StPlacedRun const& run : m_Runs)
        m_CountRun(m_Image, run, m_Texture.m_Steps[k], m_Pairs);
      bool const isLast = k + 1 == m_Texture.m_Steps.size();
      if ((isCombined && !isLast) || m_Pairs.IsEmpty()) continue;
      AddFeatures(values);
      ++matrices;
    }
    for (double& value : values) value = matrices > 0 ? value / matrices : NAN;
  }

private:
  static Impl::StLabeledLevels ImageOf(CObjectTexture const& texture) {
    return {texture.m_Labels.Base(), texture.m_Levels.Base(), texture.m_Extents,
            Permuted(texture.m_Labels.Strides(), texture.m_Axes),
            Permuted(texture.m_Levels.Strides(), texture.m_Axes)};
  }

  // The runs of an object with their coordinates.
  void Place(std::size_t object) {
    m_Runs.clear();
    auto const& extents = m_Texture.m_Extents;
    for (std::size_t k = m_Texture.m_FirstRun[object]; k < m_Texture.m_FirstRun[object + 1]; ++k) {
      StRun const& run = m_Texture.m_Runs[k];
      int64 const row = run.first / extents[0];
      m_Runs.push_back(
          {run.label, run.length, {run.first % extents[0], row % extents[1], row / extents[1]}});
    }
  }

  void AddFeatures(std::span<double> values) {
    Impl::CPairSums& sums = m_Features.Start(m_Texture.m_Levels.Levels());
    m_Pairs.MoveTo(sums, m_Features.NeedsCells());
    auto const ofMatrix = m_Features.Finish();
    for (std::size_t k = 0; k < values.size(); ++k) values[k] += ofMatrix[k];
  }

  CObjectTexture const& m_Texture;
  Impl::StLabeledLevels m_Image;
  Impl::CObjectPairs m_Pairs;
  CTextureFeatures m_Features;
  Impl::RunCounter m_CountRun;
  std::vector<Impl::StPlacedRun> m_Runs;
};

std::vector<double> CObjectTexture::Compute() const {
  std::vector<double> values(m_Objects.size() * Features().size());
  Compute(0, m_Objects.size(), values);
  return values;
}

void CObjectTexture::Compute(std::size_t first, std::size_t last, std::span<double> values) const {
  std::size_t const features = Features().size();
  if (first > last || last > m_Objects.size())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CObjectTexture::Compute"),
                        CString("objects from %1 up to %2 are not among %3")
                            .Arg(first)
                            .Arg(last)
                            .Arg(m_Objects.size()));
  if (values.size() != (last - first) * features)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CObjectTexture::Compute"),
        CString("%1 values are not those of %2 objects").Arg(values.size()).Arg(last - first));
  if (first == last) return;
  CWorker worker(*this);
  for (std::size_t object = first; object < last; ++object)
    worker.Compute(object, values.subspan((object - first) * features, features));
}

CValueMap CObjectTexture::ToMap(std::span<double const> values, std::string const& idKey) const {
  constexpr int64 most = std::numeric_limits<std::int32_t>::max();
  std::size_t const features = Features().size();
  if (values.size() != m_Objects.size() * features)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CObjectTexture::ToMap"),
        CString("%1 values are not those of %2 objects").Arg(values.size()).Arg(m_Objects.size()));
  auto const toLong = [](int64 number) {
    if (number > most)
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, "ORVA::CObjectTexture::ToMap"),
          CString("a map holds no number above 2147483647, such as %1").Arg(number));
    return CValueLong(static_cast<std::int32_t>(number));
  };
  CValueMap map;
  int64 const greatest = m_Objects.empty() ? 0 : m_Objects.back().label;
  map.SetEntry("maximum label", toLong(greatest));
  map.SetEntry("no. of objects", toLong(static_cast<int64>(m_Objects.size())));
  std::size_t const digits = std::to_string(greatest).size();
  for (std::size_t k = 0; k < m_Objects.size(); ++k) {
    std::string const label = std::to_string(m_Objects[k].label);
    CValueMap object;
    object.SetEntry(idKey.c_str(), CValueString(label));
    object.SetEntry("status", CValueString("measured"));
    object.SetEntry("no. of voxels", toLong(m_Objects[k].voxels));
    for (std::size_t f = 0; f < features; ++f)
      object.SetEntry(std::string(FeatureName(Features()[f])).c_str(),
                      CValueDouble(values[k * features + f]));
    map.SetEntry((idKey + ' ' + std::string(digits - label.size(), '0') + label).c_str(),
                 std::move(object));
  }
  return map;
}

} // namespace ORVA
