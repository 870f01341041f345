// Texture of windows and of objects.

#include "Arrays.h"
#include "Features.h"
#include "LargeObjects.h"
#include "Levels.h"
#include "Watch.h"

#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace selu_python {
namespace {

using ORVA::CImageView;
using ORVA::CLevelImage;
using ORVA::CObjectTexture;
using ORVA::CSize;
using ORVA::CTextureWindow;
using ORVA::int64;

constexpr char c_module[] = "python/src/TextureMaps";

CLevelImage LevelsWithin(CImageView const& image, CRecipe const& recipe, py::handle maskArray) {
  CMask const mask(maskArray, image.Size());
  CUnlocked const unlocked;
  return LevelsOf(image, recipe, mask).levels;
}

CTextureWindow NewWindow(int dimension, py::object const& sides, py::object const& offsets,
                         std::vector<std::string> const& names, py::object const& steps,
                         bool isSymmetric, std::string const& border) {
  CTextureWindow window("feature maps", nullptr);
  window.SetSides(SizeOf(sides, dimension, "size"));
  window.SetSteps(SizeOf(steps, dimension, "step"));
  window.SetDisplacements(PointsOf(offsets, dimension, "offset"));
  window.SetFeatures(FeaturesOf(names));
  window.SetSymmetric(isSymmetric);
  if (border != "clipped" && border != "valid")
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "feature_maps"),
        ORVA::CString("border must be \"clipped\" or \"valid\", not \"%1\"").Arg(border.c_str()));
  window.SetBorder(border == "valid" ? ORVA::EnWindowBorder::Valid : ORVA::EnWindowBorder::Clipped);
  return window;
}

// The shape of all maps: features, then the axes of the image.
std::vector<py::ssize_t> MapsShape(CTextureWindow const& window, CSize const& image) {
  auto shape = ShapeOf(window.MapSize(image));
  shape.insert(shape.begin(), static_cast<py::ssize_t>(window.Features().size()));
  return shape;
}

// What a caller gave, unless it does not fit.
template <class T>
py::array_t<T> CheckedOut(py::object const& out, std::vector<py::ssize_t> const& shape) {
  auto array = py::reinterpret_borrow<py::array_t<T>>(out);
  bool const isFitting =
      array.writeable() && (array.flags() & py::array::c_style) != 0 &&
      std::ranges::equal(std::vector(array.shape(), array.shape() + array.ndim()), shape);
  if (!isFitting)
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "feature_maps"),
        ORVA::CString("out must be writable, without gaps, and of the shape %1")
            .Arg(TextOf(py::tuple(py::cast(shape))).c_str()));
  return array;
}

template <class T>
py::array ComputeMaps(CTextureWindow& window, CLevelImage const& levels, py::object const& out,
                      CWatch& watch) {
  auto const shape = MapsShape(window, levels.Size());
  py::array_t<T> maps = out.is_none() ? NewArray<T>(shape) : CheckedOut<T>(out, shape);
  auto const values = Entries(maps);
  int64 const rows = shape.size() == 4 || shape.size() == 3 ? shape[1] : 0;
  window.SetProgressObserver(&watch);
  try {
    CUnlocked const unlocked;
    window.Compute(levels, {0, rows}, values);
  } catch (...) { // a part of the maps would look like all of them
    std::ranges::fill(values, std::numeric_limits<T>::quiet_NaN());
    throw;
  }
  return maps;
}

py::array FeatureMaps(py::object const& array, py::object const& sides, py::object const& offsets,
                      std::vector<std::string> const& names, CRecipe const& recipe,
                      py::object const& mask, py::object const& steps, bool isSymmetric,
                      std::string const& border, py::object const& out, bool isDouble,
                      py::object const& progress) {
  CImageView const image = GrayViewOf(array, "image");
  CTextureWindow window =
      NewWindow(image.Size().Dim(), sides, offsets, names, steps, isSymmetric, border);
  CLevelImage const levels = LevelsWithin(image, recipe, mask);
  CWatch watch(progress);
  py::array maps = isDouble ? ComputeMaps<double>(window, levels, out, watch)
                            : ComputeMaps<float>(window, levels, out, watch);
  watch.Complete();
  return maps;
}

// What is computed between two looks at the signals: at most so many objects, of so many voxels but
// for a single one.
constexpr std::size_t c_objects = 256;
constexpr int64 c_objectVoxels = c_largeObject;

// The end of the objects from `first` on that are computed together.
std::size_t EndOfBatch(std::span<ORVA::StTextureObject const> objects, std::size_t first) {
  std::size_t const last = std::min(objects.size(), first + c_objects);
  int64 left = c_objectVoxels;
  std::size_t end = first;
  while (end < last && (end == first || objects[end].voxels <= left)) left -= objects[end++].voxels;
  return end;
}

py::tuple ObjectFeatures(py::object const& array, py::object const& labelArray,
                         py::object const& offsets, std::vector<std::string> const& names,
                         CRecipe const& recipe, py::object const& mask, bool isSymmetric,
                         bool isCombined, py::object const& progress) {
  CImageView const image = GrayViewOf(array, "image");
  CImageView const labels = LabelViewOf(labelArray, "labels");
  ORVA::StObjectTextureOptions options;
  options.features = FeaturesOf(names);
  options.isSymmetric = isSymmetric;
  options.isCombined = isCombined;
  options.displacements = PointsOf(offsets, image.Size().Dim(), "offset");
  CLevelImage const levels = LevelsWithin(image, recipe, mask);
  CWatch watch(progress);
  std::vector<std::uint32_t> ids;
  std::vector<int64> voxels;
  std::vector<double> values;
  {
    CUnlocked const unlocked;
    CObjectTexture const texture(levels, labels, options);
    auto const objects = texture.Objects();
    std::size_t const n = objects.size(), m = names.size();
    watch.Start(static_cast<int64>(n), ""); // before the first look at large objects, which is told
    CLargeObjects const large(levels, labels, objects, options, watch);
    values.resize(n * m);
    for (std::size_t k = 0, end = 0; k < n; k = end) {
      end = EndOfBatch(objects, k);
      auto const ofBatch = std::span(values).subspan(k * m, (end - k) * m);
      if (end - k > 1 || !large.Compute(objects[k].label, ofBatch))
        texture.Compute(k, end, ofBatch);
      watch.Advance(static_cast<int64>(end - k));
    }
    for (auto const& object : objects) {
      ids.push_back(object.label);
      voxels.push_back(object.voxels);
    }
  }
  watch.Complete();
  auto const rows = static_cast<py::ssize_t>(ids.size());
  py::array_t<double> const table({rows, static_cast<py::ssize_t>(names.size())}, values.data());
  return py::make_tuple(py::array_t<std::uint32_t>(rows, ids.data()),
                        py::array_t<int64>(rows, voxels.data()), table);
}

} // namespace

void BindTextureMaps(py::module_& module) {
  module.def("feature_maps", &FeatureMaps, py::arg("image"), py::arg("size"), py::arg("offsets"),
             py::arg("names"), py::arg("recipe"), py::arg("mask"), py::arg("step"),
             py::arg("symmetric"), py::arg("border"), py::arg("out"), py::arg("double"),
             py::arg("progress"));
  module.def("object_features", &ObjectFeatures, py::arg("image"), py::arg("labels"),
             py::arg("offsets"), py::arg("names"), py::arg("recipe"), py::arg("mask"),
             py::arg("symmetric"), py::arg("combined"), py::arg("progress"));
}

} // namespace selu_python
