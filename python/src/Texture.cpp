// Matrices and features of whole images.

#include "Arrays.h"
#include "Boxes.h"
#include "Features.h"
#include "Levels.h"
#include "Watch.h"

#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/CooccurrenceSum.h>
#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace selu_python {
namespace {

using ORVA::CCooccurrence;
using ORVA::CImageView;
using ORVA::CLevelImage;
using ORVA::CPairCounter;
using ORVA::CPos;
using ORVA::CSize;
using ORVA::CString;
using ORVA::CTextureFeatures;
using ORVA::CTriple;
using ORVA::int64;
using ORVA::uint64;
using COffsets = std::vector<CTriple<int64>>;

constexpr char c_module[] = "python/src/Texture";
constexpr int c_grays = 256;

// CCooccurrence takes 32 bits and no displacement that leads out of a plane.
CTriple<long> Short(CTriple<int64> const& d) {
  return {static_cast<long>(d.x), static_cast<long>(d.y), static_cast<long>(d.z)};
}

// Voxels times offsets, for the progress; saturated.
int64 Steps(CSize const& size, std::size_t offsets) {
  int64 steps = static_cast<int64>(offsets);
  for (int64 const extent : {size.x, size.y, size.z})
    if (__builtin_mul_overflow(steps, extent, &steps)) return std::numeric_limits<int64>::max();
  return steps;
}

bool LeavesPairs(CSize const& size, CTriple<int64> const& d) {
  auto const isNear = [](int64 step, int64 extent) { return -extent < step && step < extent; };
  return isNear(d.x, size.x) && isNear(d.y, size.y) && isNear(d.z, size.z);
}

// The pairs of bytes, value by value. CCooccurrence counts in 32 bits, a box at a time; the box
// read reaches as far as the displacement leads, and has no pair but those whose first voxel is
// inside.
void CountBytes(CImageView const& image, CTriple<int64> const& d, std::span<uint64> counts,
                CWatch& watch) {
  CSize const size = image.Size();
  if (!LeavesPairs(size, d)) return;
  CCooccurrence counter("cooccurrence", nullptr);
  ORVA::CImage matrix(ORVA::IMAGE_GREY_32, CSize(1, c_grays, c_grays));
  auto const cells = matrix.CreateAccess(false).As<std::uint32_t const>();
  ForEachBox(size, [&](CPos const& low, CPos const& high) {
    CPos const from(low.x + std::min<int64>(0, d.x), low.y + std::min<int64>(0, d.y),
                    low.z + std::min<int64>(0, d.z));
    CPos const to(high.x + std::max<int64>(0, d.x), high.y + std::max<int64>(0, d.y),
                  high.z + std::max<int64>(0, d.z));
    CImageView const box = image.Box(
        {std::max<int64>(0, from.x), std::max<int64>(0, from.y), std::max<int64>(0, from.z)},
        {std::min(size.x, to.x), std::min(size.y, to.y), std::min(size.z, to.z)});
    counter.ComputeMatrix(matrix, box, Short(d));
    for (int64 i = 0; i < c_grays; ++i)
      for (int64 j = 0; j < c_grays; ++j)
        counts[static_cast<std::size_t>(i * c_grays + j)] += cells(0, i, j);
    watch.Advance(Voxels(low, high));
  });
}

// A table of the levels' square would cost more than to count few pairs into a list. The values are
// the same.
CPairCounter NewCounter(CLevelImage const& levels) {
  auto const& [x, y, z] = levels.Extents();
  bool const isSmall = x <= 1024 && y <= 1024 && z <= 1024 &&
                       x * y * z < int64{levels.Levels()} * levels.Levels() / 16;
  return CPairCounter(levels.Levels(),
                      isSmall ? CPairCounter::EnForm::Sparse : CPairCounter::EnForm::Automatic);
}

void CountLevels(CLevelImage const& levels, CTriple<int64> const& d, CPairCounter& pairs,
                 CWatch& watch) {
  ForEachBox(levels.Size(), [&](CPos const& low, CPos const& high) {
    pairs.Count(levels, d, low, high);
    watch.Advance(Voxels(low, high));
  });
}

void Symmetrize(std::span<uint64> counts, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j <= i; ++j)
      counts[i * n + j] = counts[j * n + i] = counts[i * n + j] + counts[j * n + i];
}

using CMatrices = py::array_t<uint64>;

CMatrices NewMatrices(std::size_t n, int levels) {
  constexpr int c_most = 16383; // as CPairCounter::ToDense
  if (levels > c_most)
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "cooccurrence"),
        CString("matrices of %1 levels are too large; up to %2 are made").Arg(levels).Arg(c_most));
  CMatrices matrices({static_cast<py::ssize_t>(n), py::ssize_t{levels}, py::ssize_t{levels}});
  std::ranges::fill(Entries(matrices), 0);
  return matrices;
}

CMatrices MatricesOfBytes(CImageView const& image, COffsets const& offsets, int levels,
                          CWatch& watch) {
  CMatrices matrices = NewMatrices(offsets.size(), levels);
  auto const all = Entries(matrices);
  auto const n = static_cast<std::size_t>(levels);
  CUnlocked const unlocked;
  std::vector<uint64> counts(std::size_t{c_grays} * c_grays);
  for (std::size_t k = 0; k < offsets.size(); ++k) {
    std::ranges::fill(counts, 0);
    CountBytes(image, offsets[k], counts, watch);
    for (std::size_t i = 0; i < std::min<std::size_t>(n, c_grays); ++i)
      for (std::size_t j = 0; j < std::min<std::size_t>(n, c_grays); ++j)
        all[(k * n + i) * n + j] = counts[i * c_grays + j];
  }
  return matrices;
}

CMatrices MatricesOfLevels(CLevelImage const& levels, COffsets const& offsets, CWatch& watch) {
  CMatrices matrices = NewMatrices(offsets.size(), levels.Levels());
  auto const all = Entries(matrices);
  auto const n = static_cast<std::size_t>(levels.Levels());
  CUnlocked const unlocked;
  CPairCounter pairs = NewCounter(levels);
  for (std::size_t k = 0; k < offsets.size(); ++k) {
    pairs.Clear();
    CountLevels(levels, offsets[k], pairs, watch);
    auto const matrix = all.subspan(k * n * n, n * n);
    pairs.ForEach([&](int i, int j, uint64 count) {
      matrix[static_cast<std::size_t>(i - 1) * n + static_cast<std::size_t>(j - 1)] = count;
    });
  }
  return matrices;
}

CMatrices Cooccurrence(py::object const& array, py::object const& points, CRecipe const& recipe,
                       py::object const& maskArray, bool isSymmetric, py::object const& progress) {
  CImageView const image = GrayViewOf(array, "image");
  COffsets const offsets = PointsOf(points, image.Size().Dim(), "offset");
  CMask const mask(maskArray, image.Size());
  CWatch watch(progress);
  watch.Start(Steps(image.Size(), offsets.size()), "");
  bool const isBytes = image.Type() == ORVA::IMAGE_GREY_8 && recipe.IsPlain() && !mask.IsGiven();
  CMatrices matrices;
  if (isBytes) {
    bool const isChecked = recipe.Levels().value_or(c_grays) >= c_grays;
    int const n = isChecked ? recipe.Levels().value_or(c_grays)
                            : Unlocked([&] { return CountValues(image, recipe.Levels(), mask); });
    matrices = MatricesOfBytes(image, offsets, n, watch);
  } else {
    CLevelImage const levels = [&] {
      CUnlocked const unlocked;
      return recipe.IsPlain() ? ValuesAsLevels(image, recipe.Levels(), mask)
                              : LevelsOf(image, recipe, mask).levels;
    }();
    matrices = MatricesOfLevels(levels, offsets, watch);
  }
  auto const n = static_cast<std::size_t>(matrices.shape(1));
  if (isSymmetric)
    for (std::size_t k = 0; k < offsets.size(); ++k)
      Symmetrize(Entries(matrices).subspan(k * n * n, n * n), n);
  watch.Complete();
  return matrices;
}

// A large volume is counted box by box; the features are those of a count in one go, bit by bit.
CCooccurrence::CFeatures FeaturesAt(CImageView const& image, CTriple<int64> const& d,
                                    CCooccurrence& texture, CWatch& watch) {
  CSize const size = image.Size();
  if (!LeavesPairs(size, d) || Voxels({}, {size.x, size.y, size.z}) <= c_boxVoxels)
    return texture.ComputeFeatures(image, Short(d));
  ORVA::CCooccurrenceSum sum;
  ForEachBox(size, [&](CPos const& low, CPos const& high) {
    sum.Count(image, d, low, high);
    watch.Advance(0);
  });
  return sum.Features();
}

// Features of a matrix after the other, of shape (offsets, features).
py::array SeluFeatures(py::object const& array, py::object const& points,
                       py::object const& progress) {
  CImageView const image = GrayViewOf(array, "image");
  COffsets const offsets = PointsOf(points, image.Size().Dim(), "offset");
  CWatch watch(progress);
  watch.Start(static_cast<int64>(offsets.size()), "");
  auto values = NewArray<double>({static_cast<py::ssize_t>(offsets.size()),
                                  py::ssize_t{CCooccurrence::m_cFeatureNames.size()}});
  double* out = values.mutable_data();
  {
    CUnlocked const unlocked;
    CCooccurrence texture("texture", nullptr);
    for (auto const& offset : offsets) {
      out = std::ranges::copy(FeaturesAt(image, offset, texture, watch), out).out;
      watch.Advance();
    }
  }
  watch.Complete();
  return values;
}

/// What the features are made of.
struct StTexture {
  CLevelImage levels;
  COffsets offsets;
  bool isSymmetric = true;
};

StTexture TextureOf(py::object const& array, py::object const& points, CRecipe const& recipe,
                    py::object const& maskArray, bool isSymmetric) {
  CImageView const image = GrayViewOf(array, "image");
  COffsets offsets = PointsOf(points, image.Size().Dim(), "offset");
  CMask const mask(maskArray, image.Size());
  CUnlocked const unlocked;
  return {LevelsOf(image, recipe, mask).levels, std::move(offsets), isSymmetric};
}

// Of each displacement's matrix, or of all added.
py::array LevelFeatures(py::object const& array, py::object const& points, CRecipe const& recipe,
                        py::object const& mask, std::vector<std::string> const& names,
                        bool isSymmetric, bool isAdded, py::object const& progress) {
  CTextureFeatures features(FeaturesOf(names));
  StTexture const texture = TextureOf(array, points, recipe, mask, isSymmetric);
  auto const& offsets = texture.offsets;
  std::size_t const rows = isAdded ? 1 : offsets.size();
  CWatch watch(progress);
  watch.Start(Steps(texture.levels.Size(), offsets.size()), "");
  auto values =
      NewArray<double>({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(names.size())});
  double* out = values.mutable_data();
  {
    CUnlocked const unlocked;
    CPairCounter pairs = NewCounter(texture.levels);
    for (std::size_t k = 0; k < offsets.size(); ++k) {
      CountLevels(texture.levels, offsets[k], pairs, watch);
      if (isAdded && k + 1 < offsets.size()) continue;
      if (isSymmetric) pairs.Symmetrize();
      out = std::ranges::copy(features.Of(pairs), out).out;
      pairs.Clear();
    }
  }
  watch.Complete();
  return values;
}

// In one of IBSI's ways; no points are the neighbors of the way.
py::array AggregatedFeatures(py::object const& array, py::object const& points,
                             CRecipe const& recipe, py::object const& mask,
                             std::vector<std::string> const& names, bool isSymmetric,
                             std::string const& way, py::object const& progress) {
  auto const found = ORVA::AggregationFromName(way);
  if (!found)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "features"),
                              CString("there is no aggregate \"%1\"").Arg(way.c_str()));
  StTexture const texture = TextureOf(array, points, recipe, mask, isSymmetric);
  CSize const size = texture.levels.Size();
  CWatch watch(progress);
  watch.Start(size.z, "");
  std::vector<double> values;
  {
    CUnlocked const unlocked;
    ORVA::CAggregatedTexture sums(*found, texture.levels.Levels(),
                                  CTextureFeatures(FeaturesOf(names)),
                                  {texture.isSymmetric, texture.offsets});
    // Slabs of some 20 ms.
    int64 const slab = std::max<int64>(1, c_boxVoxels / 8 / std::max<int64>(1, size.x * size.y));
    for (int64 z = 0; z < size.z; z += slab) {
      sums.Count(texture.levels, z, std::min(size.z, z + slab));
      watch.Advance(std::min(size.z, z + slab) - z);
    }
    values = sums.Values();
  }
  watch.Complete();
  return py::array_t<double>(static_cast<py::ssize_t>(values.size()), values.data());
}

/// The features of matrices (n, ng, ng) as (n, features).
template <class T>
py::array MatrixFeatures(py::array_t<T, py::array::c_style> const& matrices,
                         std::vector<std::string> const& names, int normalizingLevels) {
  CTextureFeatures features(FeaturesOf(names));
  features.SetNormalizingLevels(normalizingLevels);
  auto const n = static_cast<std::size_t>(matrices.shape(1));
  if (n > static_cast<std::size_t>(ORVA::c_mostLevels))
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "matrix_features"),
                              "counts have more than 65535 levels");
  auto values = NewArray<double>({matrices.shape(0), static_cast<py::ssize_t>(names.size())});
  double* out = values.mutable_data();
  CWatch watch;
  CUnlocked const unlocked;
  for (py::ssize_t k = 0; k < matrices.shape(0); ++k) {
    std::span<T const> const matrix(matrices.data(k, 0, 0), n * n);
    out = std::ranges::copy(features.Of(matrix, static_cast<int>(n)), out).out;
    watch.Advance();
  }
  return values;
}

py::tuple Quantize(py::object const& array, CRecipe const& recipe, py::object const& maskArray) {
  CImageView const image = GrayViewOf(array, "image");
  CMask const mask(maskArray, image.Size());
  StLevels const gray = [&] {
    CUnlocked const unlocked;
    return LevelsOf(image, recipe, mask);
  }();
  auto const shape = ShapeOf(image.Size());
  CLevelImage const& levels = gray.levels;
  py::dtype const dtype =
      levels.BytesPerVoxel() == 1 ? py::dtype::of<std::uint8_t>() : py::dtype::of<std::uint16_t>();
  std::vector<py::ssize_t> strides;
  for (std::size_t axis = shape.size(); axis-- > 0;)
    strides.push_back(static_cast<py::ssize_t>(levels.Strides()[axis]));
  // The pixels stay with the array; a copy of them would double the memory. Values as they are may
  // be the caller's own; without an owner the array has a copy.
  py::object keep;
  if (!recipe.IsPlain())
    keep = py::capsule(new CLevelImage(levels),
                       [](void* kept) { delete static_cast<CLevelImage*>(kept); });
  return py::make_tuple(
      py::array(dtype, shape, strides, levels.Base(), keep),
      py::array_t<double>(static_cast<py::ssize_t>(gray.edges.size()), gray.edges.data()),
      levels.Levels());
}

// Least and greatest finite value and how many there are: what a recipe is fitted to.
py::tuple ValueRange(py::object const& array, py::object const& maskArray) {
  CImageView const image = GrayViewOf(array, "image");
  CMask const mask(maskArray, image.Size());
  ORVA::StValueRange const range = [&] {
    CUnlocked const unlocked;
    return FindRange(image, mask);
  }();
  return py::make_tuple(range.low, range.high, range.voxels);
}

py::array Offsets(int dimension, int64 distance, bool isShell) {
  auto const offsets = isShell ? ORVA::ShellDisplacements(dimension, distance)
                               : ORVA::NeighborDisplacements(dimension, distance);
  return ToArray(offsets, dimension);
}

// The mean of each column over the rows that are numbers, added from above; NaN where none is.
std::vector<double> MeanRows(py::array_t<double, py::array::c_style> const& table) {
  std::vector<double> means;
  for (py::ssize_t column = 0; column < table.shape(1); ++column) {
    double sum = 0;
    int rows = 0;
    for (py::ssize_t row = 0; row < table.shape(0); ++row) {
      double const value = table.at(row, column);
      if (std::isnan(value)) continue;
      sum += value;
      ++rows;
    }
    means.push_back(rows > 0 ? sum / rows : std::numeric_limits<double>::quiet_NaN());
  }
  return means;
}

std::vector<std::string> NamesOf(std::span<ORVA::EnTextureFeature const> features) {
  std::vector<std::string> names;
  for (auto const feature : features) names.emplace_back(ORVA::FeatureName(feature));
  return names;
}

} // namespace

std::vector<ORVA::EnTextureFeature> FeaturesOf(std::vector<std::string> const& names) {
  std::vector<ORVA::EnTextureFeature> features;
  for (auto const& name : names) {
    auto const feature = ORVA::FeatureFromName(name);
    if (!feature)
      ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "features"),
                                CString("there is no feature \"%1\"").Arg(name.c_str()));
    features.push_back(*feature);
  }
  return features;
}

void BindTexture(py::module_& module) {
  py::class_<CRecipe>(module, "Recipe")
      .def(py::init<std::optional<int64>, std::optional<double>, std::optional<int64>,
                    std::optional<std::pair<double, double>>, py::object const&>(),
           py::arg("levels") = py::none(), py::arg("bin_width") = py::none(),
           py::arg("bin_count") = py::none(), py::arg("range") = py::none(),
           py::arg("anchor") = py::none())
      .def_property_readonly("needs_range", &CRecipe::NeedsRange)
      .def(
          "fit",
          [](CRecipe const& recipe, double low, double high, uint64 voxels) {
            return recipe.Fit({low, high, voxels});
          },
          py::arg("low"), py::arg("high"), py::arg("voxels"));
  module.def("value_range", &ValueRange, py::arg("image"), py::arg("mask"));
  module.def("quantize", &Quantize, py::arg("image"), py::arg("recipe"), py::arg("mask"));
  module.def("cooccurrence", &Cooccurrence, py::arg("image"), py::arg("offsets"), py::arg("recipe"),
             py::arg("mask"), py::arg("symmetric"), py::arg("progress"));
  module.def("selu_features", &SeluFeatures, py::arg("image"), py::arg("offsets"),
             py::arg("progress"));
  module.def("level_features", &LevelFeatures, py::arg("image"), py::arg("offsets"),
             py::arg("recipe"), py::arg("mask"), py::arg("names"), py::arg("symmetric"),
             py::arg("added"), py::arg("progress"));
  module.def("aggregated_features", &AggregatedFeatures, py::arg("image"), py::arg("offsets"),
             py::arg("recipe"), py::arg("mask"), py::arg("names"), py::arg("symmetric"),
             py::arg("way"), py::arg("progress"));
  module.def("count_features", &MatrixFeatures<uint64>, py::arg("counts"), py::arg("names"),
             py::arg("normalizing_levels"));
  module.def("weight_features", &MatrixFeatures<double>, py::arg("weights"), py::arg("names"),
             py::arg("normalizing_levels"));
  module.def("mean_rows", &MeanRows, py::arg("table"));
  module.def("offsets", &Offsets, py::arg("ndim"), py::arg("distance"), py::arg("shell"));
  module.attr("SELU_FEATURES") = py::tuple(py::cast(CCooccurrence::m_cFeatureNames));
  module.attr("IBSI_FEATURES") = py::tuple(py::cast(NamesOf(ORVA::c_ibsiFeatures)));
  module.attr("HARALICK_FEATURES") = py::tuple(py::cast(NamesOf(ORVA::c_haralickFeatures)));
}

} // namespace selu_python
