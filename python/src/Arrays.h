// NumPy's arrays as images of the library, without a copy; axes, points and sizes turned around.
//
//   CImageView const view = ViewOf(array, "image");    // [z, y, x] or [y, x], any strides
//   CTriple<int64> const d = ToXyz(offset, 2);         // (dy, dx) becomes (dx, dy, 0)
//   py::array_t<double> const values = NewArray<double>({3, 4});
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/ImageView.h>
#include <pxlib2image/Size.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <span>
#include <vector>

namespace selu_python {

namespace py = pybind11;

/// A module of its own for each subject: adds the functions to _core.
void BindTexture(py::module_& module);
void BindTextureMaps(py::module_& module);
void BindWalk(py::module_& module);
void BindRandom(py::module_& module);
void BindValues(py::module_& module);
void BindVolume(py::module_& module);

/// An integer or real array of 2 or 3 axes in the machine's byte order as an image over the same
/// memory, read-only unless `write` is asked for. BadParameter, with the name, for another dtype or
/// number of axes and for a masked array, TypeError for what is no array. The array must stay.
[[nodiscard]] ORVA::CImageView ViewOf(py::handle array, char const* name, bool write = false);
/// The same for gray values: booleans are refused as well.
[[nodiscard]] ORVA::CImageView GrayViewOf(py::handle array, char const* name);

/// The same for labels and masks: integers of 64 bits are taken too, through their lower halves.
/// BadParameter where one of them is not from 0 to 2^32 - 1.
[[nodiscard]] ORVA::CImageView LabelViewOf(py::handle array, char const* name);

/// The shape of an image or a size of `dimension` axes in the order of the array's axes.
[[nodiscard]] std::vector<py::ssize_t> ShapeOf(ORVA::CSize const& size);

/// Integers of shape (n, d) or (d,), the rows in the order of the axes, as (x, y, z), z = 0 in a
/// plane. BadParameter for another shape; TypeError for numbers that are not integers.
[[nodiscard]] std::vector<ORVA::CTriple<ORVA::int64>> PointsOf(py::handle points, int dimension,
                                                               char const* name);
/// Real numbers of shape (n, d) or (d,) alike, such as corners between the voxels and directions.
[[nodiscard]] std::vector<ORVA::CTriple<double>> RealPointsOf(py::handle points, int dimension,
                                                              char const* name);
/// One point of shape (d,).
[[nodiscard]] ORVA::CTriple<ORVA::int64> PointOf(py::handle point, int dimension, char const* name);
/// d integers, or one for all axes; an extent of 1 along z in a plane.
[[nodiscard]] ORVA::CSize SizeOf(py::handle size, int dimension, char const* name);

/// Points as an array (n, d) of int64, the rows in the order of the axes.
[[nodiscard]] py::array ToArray(std::span<ORVA::CTriple<ORVA::int64> const> points, int dimension);

template <class T>
[[nodiscard]] py::array_t<T> NewArray(std::vector<py::ssize_t> const& shape) {
  return py::array_t<T>(shape);
}

/// The entries of an array that has no gaps.
template <class T>
[[nodiscard]] std::span<T> Entries(py::array_t<T>& array) {
  return {array.mutable_data(), static_cast<std::size_t>(array.size())};
}

/// A text for messages: repr(object), cut after some 60 characters.
[[nodiscard]] std::string TextOf(py::handle object);

} // namespace selu_python
