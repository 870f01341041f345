// The voxels of an image by their type: addresses, and rows of them below a run.
//
//   CImage const image(IMAGE_GREY_8, CSize(4, 4));
//   CImageAccess const access = Impl::OpenVoxels(image);
//   Impl::CVoxelBlock<std::uint8_t const> const block(access);
//   auto const row = block.Clip({{-2, 1, 0}, 0, 5});         // 3 voxels from (0, 1, 0) on
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace ORVA::Impl {

/// Throws CExBadParam: the image has no pixel type.
[[noreturn]] SELUUTILS_EXPORT void RaiseNoPixelType();
/// For writing, where the image is not const.
template <class Image>
[[nodiscard]] CImageAccess OpenVoxels(Image& image) {
  return image.CreateAccess(!std::is_const_v<Image>);
}

/// Calls visit with a null pointer of the image's pixel type.
template <class Visit>
[[gnu::always_inline]] inline void DispatchPixelType(IImage const& image, Visit visit) {
  switch (image.Type().Id()) {
  case CPixelType::EnId::Bool:
  case CPixelType::EnId::BinaryFg:
  case CPixelType::EnId::Grey8:
    return visit(static_cast<std::uint8_t const*>(nullptr));
  case CPixelType::EnId::Grey16:
    return visit(static_cast<std::uint16_t const*>(nullptr));
  case CPixelType::EnId::Grey32:
    return visit(static_cast<std::uint32_t const*>(nullptr));
  case CPixelType::EnId::GreyF:
    return visit(static_cast<float const*>(nullptr));
  case CPixelType::EnId::Signed8:
    return visit(static_cast<std::int8_t const*>(nullptr));
  case CPixelType::EnId::Signed16:
    return visit(static_cast<std::int16_t const*>(nullptr));
  case CPixelType::EnId::Signed32:
    return visit(static_cast<std::int32_t const*>(nullptr));
  case CPixelType::EnId::Double:
    return visit(static_cast<double const*>(nullptr));
  case CPixelType::EnId::None:
    break;
  }
  RaiseNoPixelType();
}

/// The address so many bytes further.
template <class Pixel>
[[nodiscard]] Pixel* Moved(Pixel* pixel, int64 bytes) noexcept {
  using Byte = std::conditional_t<std::is_const_v<Pixel>, std::byte const, std::byte>;
  return reinterpret_cast<Pixel*>(reinterpret_cast<Byte*>(pixel) + bytes);
}

/// The part of a run that lies in an image.
template <class Pixel>
struct StVoxelRow {
  CTriple<int64> position; // of the first voxel
  int64 axis = 0;
  Pixel* first = nullptr;
  int64 stride = 0; // bytes from voxel to voxel
  int64 length = 0; // 0: nothing of the run lies in the image
};

/// The pixels of an access, read only where Pixel is const. The access must outlive it.
template <class Pixel>
class CVoxelBlock {
public:
  /// CExBadParam where the pixels are of another type, and for pixels that are not aligned as their
  /// type wants it.
  explicit CVoxelBlock(CImageAccess const& access)
      : m_Extents(access.Extents()), m_Strides(access.Strides()) {
    (void)access.As<Pixel>(); // checks type and alignment
    if (access.Base() == nullptr) return;
    if constexpr (std::is_const_v<Pixel>) {
      m_Base = reinterpret_cast<Pixel*>(access.Base());
    } else {
      m_Base = reinterpret_cast<Pixel*>(access.WritableBase());
    }
  }

  [[nodiscard]] CTriple<int64> Extents() const noexcept {
    return {m_Extents[0], m_Extents[1], m_Extents[2]};
  }
  /// Bytes from a voxel to its successor along axis 0, 1 or 2.
  [[nodiscard]] int64 Stride(int64 axis) const noexcept {
    return m_Strides[static_cast<std::size_t>(axis)];
  }
  [[nodiscard]] bool IsInside(CTriple<int64> const& p) const noexcept {
    return IsWithin(p.x, 0) && IsWithin(p.y, 1) && IsWithin(p.z, 2);
  }
  /// Of a voxel inside.
  [[nodiscard]] Pixel* Address(CTriple<int64> const& p) const noexcept {
    return Moved(m_Base, p.x * m_Strides[0] + p.y * m_Strides[1] + p.z * m_Strides[2]);
  }
  /// Of a run inside.
  [[nodiscard]] StVoxelRow<Pixel> Row(StRun const& run) const noexcept {
    return {run.first, run.axis, Address(run.first), Stride(run.axis), run.length};
  }
  /// The part of a run inside.
  [[nodiscard]] StVoxelRow<Pixel> Clip(StRun const& run) const noexcept {
    CTriple<int64> first = run.first;
    int64& start = run.axis == 0 ? first.x : run.axis == 1 ? first.y : first.z;
    int64 const extent = m_Extents[static_cast<std::size_t>(run.axis)];
    int64 length = run.length;
    if (start < 0) { // skips as many, unless that is more than there are
      length = length > -(start + 1) ? length - 1 + (start + 1) : 0;
      start = 0;
    }
    if (length <= 0 || !IsInside(first)) return {};
    if (length > extent - start) length = extent - start;
    return {first, run.axis, Address(first), Stride(run.axis), length};
  }

private:
  [[nodiscard]] bool IsWithin(int64 position, std::size_t axis) const noexcept {
    return static_cast<uint64>(position) < static_cast<uint64>(m_Extents[axis]);
  }

  Pixel* m_Base = nullptr;
  std::array<int64, 3> m_Extents;
  std::array<int64, 3> m_Strides;
};

} // namespace ORVA::Impl
