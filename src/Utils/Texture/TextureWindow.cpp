#include <SeluUtils/Texture/TextureWindow.h>

#include "Utils/Texture/WindowBand.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>

namespace ORVA {

namespace {

using Impl::StPairBox;
using Impl::StWindowBand;
using Impl::StWindowMaps;
using Impl::StWindowUnits;
using Impl::Vector;

constexpr char c_module[] = "src/Utils/Texture";

template <class Triple>
Vector AsVector(Triple const& t) {
  return {t.x, t.y, t.z};
}
CString Text(Vector const& v) { return CString("%1 x %2 x %3").Arg(v[0]).Arg(v[1]).Arg(v[2]); }

// The axis of rows or slices.
std::size_t LastAxis(CSize const& image) noexcept {
  return static_cast<std::size_t>(std::max(image.Dim(), 1)) - 1;
}

// The pairs of a window around a center: the first voxels are those from which the displacement
// stays inside.
StPairBox PairsOf(Vector const& side, Vector const& displacement) noexcept {
  StPairBox box{.displacement = displacement, .low = {}, .side = {}};
  for (std::size_t k = 0; k < 3; ++k) {
    box.low[k] = std::max<int64>(0, -displacement[k]) - side[k] / 2;
    box.side[k] = side[k] - std::abs(displacement[k]);
  }
  return box;
}

int64 Product(Vector const& v) noexcept { return v[0] * v[1] * v[2]; }

// The same without the pairs that lie outside of the image in all windows, whose centers lie
// inside. Where none is left, one that is always outside stands for them.
void Clip(StPairBox& box, Vector const& extent) noexcept {
  for (std::size_t k = 0; k < 3; ++k) {
    int64 const reach = extent[k] - 1, d = box.displacement[k];
    int64 const low = std::max(box.low[k], std::max(-reach, -reach - d));
    int64 const end = std::min(box.low[k] + box.side[k], std::min(reach, reach - d) + 1);
    if (low < end) box.low[k] = low;
    box.side[k] = std::max<int64>(1, end - low);
  }
}

// Columns that come or go for each voxel of a window and window, where windows move along an axis:
// all of them at the start of a line, then a few.
double CostAlong(StWindowBand const& band, std::size_t axis) noexcept {
  auto const windows = static_cast<double>(band.count[axis]);
  auto const side = static_cast<double>(Impl::LargestSide(band, axis));
  return (side + (windows - 1) * std::min(side, static_cast<double>(band.step[axis]))) /
         (windows * side);
}

// The axes in the order in which windows are visited: along x, unless another axis costs less than
// half.
std::array<std::size_t, 3> OrderOf(StWindowBand const& band) noexcept {
  std::array<std::size_t, 3> order{0, 1, 2};
  std::size_t const other = CostAlong(band, 1) <= CostAlong(band, 2) ? 1 : 2;
  if (2 * CostAlong(band, other) < CostAlong(band, 0)) std::swap(order[0], order[other]);
  return order;
}

void Permute(Vector& v, std::array<std::size_t, 3> const& order) noexcept {
  v = {v[order[0]], v[order[1]], v[order[2]]};
}

void Permute(StWindowBand& band, StWindowMaps& maps) noexcept {
  auto const order = OrderOf(band);
  for (Vector* const v : {&band.pixels.extent, &band.pixels.low, &band.pixels.stride, &band.step,
                          &band.first, &band.count, &maps.stride})
    Permute(*v, order);
  for (StPairBox& box : band.boxes)
    for (Vector* const v : {&box.displacement, &box.low, &box.side}) Permute(*v, order);
}

void SetAddress(StWindowMaps& maps, double* values) noexcept { maps.doubles = values; }
void SetAddress(StWindowMaps& maps, float* values) noexcept { maps.floats = values; }

Impl::StLevelPixels PixelsOf(CLevelImage const& levels, int64 first, CSize const& image) noexcept {
  Impl::StLevelPixels pixels{.base = levels.Base(),
                             .bytes = levels.BytesPerVoxel(),
                             .levels = levels.Levels(),
                             .extent = AsVector(image),
                             .stride = levels.Strides()};
  pixels.low[LastAxis(image)] = first;
  return pixels;
}

// The fixed points depend on the window as it was set, so that no part of an image has others.
StWindowUnits UnitsOf(Vector const& side, std::span<CTriple<int64> const> displacements,
                      Vector const& extent, bool isSymmetric, int levels, int normalizing) {
  int64 most = 0, counts = 0;
  for (auto const& d : displacements) {
    Vector box = PairsOf(side, AsVector(d)).side;
    most = std::max(most, Product(box));
    for (std::size_t k = 0; k < 3; ++k) box[k] = std::min(box[k], extent[k]);
    counts = std::max(counts, Product(box));
  }
  int64 const times = isSymmetric ? 2 : 1;
  return {most * times, counts * times, levels, normalizing == 0 ? levels : normalizing};
}

} // namespace

CTextureWindow::CTextureWindow(char const* name, IObject const* parent)
    : CAlgorithm(name, parent) {}
CTextureWindow::~CTextureWindow() = default;

// ---------------------------------------------------------------------------------------------
// What is asked for

void CTextureWindow::SetSides(CSize const& sides) {
  Vector const side = AsVector(sides);
  for (int64 const s : side)
    if (s < 1 || s % 2 == 0)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetSides"),
                          CString("the sides of a window are odd, not %1").Arg(Text(side)));
  if (std::ranges::max(side) > c_mostVoxels || Product(side) > c_mostVoxels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetSides"),
                        CString("a window of %1 voxels is too large").Arg(Text(side)));
  m_Sides = sides;
}

void CTextureWindow::SetDisplacements(std::span<CTriple<int64> const> displacements) {
  if (displacements.empty())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetDisplacements"),
                        "no displacement");
  m_Displacements.assign(displacements.begin(), displacements.end());
}

void CTextureWindow::SetFeatures(std::span<EnTextureFeature const> features) {
  if (features.empty())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetFeatures"), "no feature");
  for (EnTextureFeature const feature : features) {
    auto const number = static_cast<std::size_t>(feature);
    if (number >= c_nTextureFeatures)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetFeatures"),
                          CString("no feature has the number %1").Arg(number));
    if (Impl::Finisher(feature) == nullptr)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetFeatures"),
                          CString("the feature %1 has no moving window")
                              .Arg(CString(std::string(FeatureName(feature)))));
  }
  m_Features.assign(features.begin(), features.end());
}

void CTextureWindow::SetSteps(CSize const& steps) {
  Vector const step = AsVector(steps);
  if (std::ranges::min(step) < 1)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetSteps"),
                        CString("steps of %1 voxels").Arg(Text(step)));
  m_Steps = steps;
}

void CTextureWindow::SetNormalizingLevels(int levels) {
  if (levels < 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::SetNormalizingLevels"),
                        CString("%1 levels").Arg(levels));
  m_NormalizingLevels = levels;
}

// ---------------------------------------------------------------------------------------------
// Shapes

CSize CTextureWindow::MapSize(CSize const& image) const {
  CSize size = image;
  auto const along = [this](int64 extent, int64 side, int64 step) {
    int64 const centers = m_Border == EnWindowBorder::Valid ? extent - side + 1 : extent;
    return centers <= 0 ? 0 : (centers - 1) / step + 1;
  };
  size.x = along(image.x, m_Sides.x, m_Steps.x);
  size.y = along(image.y, m_Sides.y, m_Steps.y);
  size.z = along(image.z, m_Sides.z, m_Steps.z);
  return size;
}

CPos CTextureWindow::Center(CPos const& mapPixel) const noexcept {
  bool const isValid = m_Border == EnWindowBorder::Valid;
  return {mapPixel.x * m_Steps.x + (isValid ? m_Sides.x / 2 : 0),
          mapPixel.y * m_Steps.y + (isValid ? m_Sides.y / 2 : 0),
          mapPixel.z * m_Steps.z + (isValid ? m_Sides.z / 2 : 0)};
}

StRowRange CTextureWindow::InputRows(CSize const& image, StRowRange const& rows) const {
  auto const axis = LastAxis(image);
  int64 const most = AsVector(MapSize(image))[axis];
  if (rows.low < 0 || rows.high < rows.low || rows.high > most)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CTextureWindow::InputRows"),
        CString("rows from %1 to %2 of a map of %3").Arg(rows.low).Arg(rows.high).Arg(most));
  if (rows.low == rows.high) return {};
  auto const center = [&](int64 row) { return AsVector(Center({row, row, row}))[axis]; };
  int64 const radius = AsVector(m_Sides)[axis] / 2, extent = AsVector(image)[axis];
  return {std::max<int64>(0, center(rows.low) - radius),
          std::min(extent, center(rows.high - 1) + radius + 1)};
}

// ---------------------------------------------------------------------------------------------
// Checks

void CTextureWindow::CheckLevels(int levels) const {
  Vector const side = AsVector(m_Sides);
  if (levels > c_mostLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckLevels"),
                        CString("%1 levels in a moving window").Arg(levels));
  if (levels * Product(side) > c_mostVoxelsTimesLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckLevels"),
                        CString("%1 levels in a window of %2").Arg(levels).Arg(Text(side)));
  if (levels > Impl::c_mostProminenceLevels &&
      std::ranges::find(m_Features, EnTextureFeature::ClusterProminence) != m_Features.end())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckLevels"),
                        CString("%1 levels with the cluster prominence").Arg(levels));
}

void CTextureWindow::CheckSize(CSize const& image) const {
  Vector const side = AsVector(m_Sides);
  for (auto k = static_cast<std::size_t>(image.Dim()); k < 3; ++k)
    if (side[k] != 1)
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckSize"),
          CString("a window of %1 in an image of dimension %2").Arg(Text(side)).Arg(image.Dim()));
  for (auto const& d : m_Displacements)
    for (std::size_t k = 0; k < 3; ++k)
      if (AsVector(d)[k] <= -side[k] || AsVector(d)[k] >= side[k])
        Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckSize"),
                            CString("displacement (%1, %2, %3) leaves no pair in a window of %4")
                                .Arg(d.x)
                                .Arg(d.y)
                                .Arg(d.z)
                                .Arg(Text(side)));
}

// What is given must be the part of the image that the rows need, and leave room for their values.
void CTextureWindow::CheckPart(CLevelImage const& levels, int64 first, CSize const& image,
                               StRowRange const& rows) const {
  auto const axis = LastAxis(image);
  StRowRange const needed = InputRows(image, rows);
  Vector const extent = AsVector(image), held = levels.Extents();
  bool const isThere = needed.low == needed.high ||
                       (first <= needed.low && first >= 0 && needed.high - first <= held[axis]);
  if (!isThere)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckPart"),
                        CString("%1 rows from %2 on where those from %3 to %4 are needed")
                            .Arg(held[axis])
                            .Arg(first)
                            .Arg(needed.low)
                            .Arg(needed.high));
  for (std::size_t k = 0; k < 3; ++k)
    if (k != axis && held[k] != extent[k])
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, "ORVA::CTextureWindow::CheckPart"),
          CString("levels of %1 voxels of an image of %2").Arg(Text(held)).Arg(Text(extent)));
}

// ---------------------------------------------------------------------------------------------
// Values

template <class Value>
void CTextureWindow::ComputeRows(CLevelImage const& levels, int64 first, CSize const& image,
                                 StRowRange const& rows, std::span<Value> values) const {
  CheckLevels(levels.Levels());
  CheckSize(image);
  CheckPart(levels, first, image, rows);
  auto const axis = LastAxis(image);
  Vector count = AsVector(MapSize(image));
  count[axis] = rows.high - rows.low;
  auto const pixels = static_cast<std::size_t>(Product(count));
  if (values.size() / m_Features.size() != pixels || values.size() % m_Features.size() != 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CTextureWindow::ComputeRows"),
                        CString("%1 values for %2 features of %3 windows")
                            .Arg(values.size())
                            .Arg(m_Features.size())
                            .Arg(pixels));
  if (pixels == 0) return;

  Vector const sides = AsVector(m_Sides), extent = AsVector(image);
  StWindowBand band{.pixels = PixelsOf(levels, first, image),
                    .boxes = {},
                    .step = AsVector(m_Steps),
                    .first = AsVector(Center({0, 0, 0})),
                    .count = count,
                    .isSymmetric = m_IsSymmetric,
                    .features = m_Features};
  band.first[axis] += rows.low * band.step[axis];
  for (auto const& d : m_Displacements) band.boxes.push_back(PairsOf(sides, AsVector(d)));
  if (m_Border == EnWindowBorder::Clipped)
    for (StPairBox& box : band.boxes) Clip(box, extent);
  StWindowMaps maps{.stride = {1, count[0], count[0] * count[1]},
                    .featureStride = static_cast<int64>(pixels)};
  SetAddress(maps, values.data());
  Permute(band, maps);
  auto const units =
      UnitsOf(sides, m_Displacements, extent, m_IsSymmetric, levels.Levels(), m_NormalizingLevels);
  CProgress progress(*this, Impl::LinesOf(band), "texture maps");
  Impl::ComputeBand(band, units, maps, [&] { progress.Advance(); });
  progress.Finish();
}

void CTextureWindow::Compute(CLevelImage const& levels, StRowRange const& rows,
                             std::span<double> values) const {
  ComputeRows(levels, 0, levels.Size(), rows, values);
}

void CTextureWindow::Compute(CLevelImage const& levels, StRowRange const& rows,
                             std::span<float> values) const {
  ComputeRows(levels, 0, levels.Size(), rows, values);
}

void CTextureWindow::Compute(CLevelImage const& levels, int64 first, CSize const& image,
                             StRowRange const& rows, std::span<double> values) const {
  ComputeRows(levels, first, image, rows, values);
}

void CTextureWindow::Compute(CLevelImage const& levels, int64 first, CSize const& image,
                             StRowRange const& rows, std::span<float> values) const {
  ComputeRows(levels, first, image, rows, values);
}

std::vector<CImage> CTextureWindow::Maps(CLevelImage const& levels) const {
  CSize const size = MapSize(levels.Size());
  auto const pixels = static_cast<std::size_t>(Product(AsVector(size)));
  std::vector<float> values(pixels * m_Features.size());
  Compute(levels, {0, AsVector(size)[LastAxis(size)]}, values);
  std::vector<CImage> maps;
  for (std::size_t f = 0; f < m_Features.size(); ++f) {
    auto const access = maps.emplace_back(IMAGE_GREY_F, size).CreateAccess(true);
    std::ranges::copy(std::as_bytes(std::span(values).subspan(f * pixels, pixels)),
                      access.WritableBase());
  }
  return maps;
}

std::vector<double> CTextureWindow::At(CLevelImage const& levels, CPos const& center) const {
  CheckLevels(levels.Levels());
  CheckSize(levels.Size());
  static_cast<void>(levels.At(center)); // refuses a position outside
  Vector const extent = AsVector(levels.Size());
  StWindowUnits const units = UnitsOf(AsVector(m_Sides), m_Displacements, extent, m_IsSymmetric,
                                      levels.Levels(), m_NormalizingLevels);
  std::vector<Impl::StWindowSums> windows;
  for (auto const& d : m_Displacements)
    windows.push_back(Impl::CountAfresh(PixelsOf(levels, 0, levels.Size()),
                                        PairsOf(AsVector(m_Sides), AsVector(d)), AsVector(center),
                                        m_IsSymmetric, units));
  auto const withPairs =
      std::ranges::count_if(windows, [](auto const& window) { return window.pairs != 0; });
  std::vector<double> values;
  for (EnTextureFeature const feature : m_Features) {
    double sum = 0;
    for (auto const& window : windows) Impl::Finisher(feature)(std::span(&window, 1), units, &sum);
    values.push_back(sum / static_cast<double>(withPairs)); // NaN for 0 / 0
  }
  return values;
}

} // namespace ORVA
