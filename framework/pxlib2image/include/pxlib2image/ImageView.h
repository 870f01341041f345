// An image over pixels that someone else owns, in any layout; nothing is copied.
//
//   #include <iostream>
//   #include <vector>
//   std::vector<std::uint16_t> pixels(64 * 32, 5);    // row by row, 64 columns
//   CImageView view(IMAGE_GREY_16, CSize(64, 32), pixels.data());
//   CImageView upsideDown(IMAGE_GREY_16, CSize(64, 32), pixels.data() + 31 * 64, {2, -128, 0});
//   auto const owner = std::make_shared<std::vector<float>>(64 * 32);
//   auto const rows = CImageView::RowByRow(IMAGE_GREY_F, CSize(64, 32));
//   CImageView kept(IMAGE_GREY_F, CSize(64, 32), owner->data(), rows, owner);
//   std::cout << rows[1] << ' ' << view.IsWritable();  // prints 256 1
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Export.h>
#include <pxlib2image/Image.h>
#include <pxlib2image/Size.h>

#include <array>
#include <cstddef>
#include <memory>

namespace ORVA {

/// An IImage over foreign memory: type, extents and byte strides of any sign. The address is that
/// of voxel (0, 0, 0), wherever that lies in memory; it needs no alignment. From a pointer to const
/// comes a read-only view: opening it for writing throws CExBadParam.
///
/// The memory must stay while the view, a copy of it or an access to it lives; an `owner` is kept
/// alive by all of them. Copies share the pixels, but have attributes of their own.
///
/// CExBadParam for a size or type that CImage refuses, a null address of a view that has voxels,
/// extents and strides that lead beyond the addresses there are, and, in a writable view, strides
/// by which two voxels share a byte. (Along the axes in ascending order of their strides' absolute
/// values each stride must be as long as all before it reach.) A read-only view may repeat voxels,
/// by a stride of 0, say.
class PXLIB2IMAGE_EXPORT CImageView final : public IImage {
public:
  /// No type, dimension 0.
  CImageView() = default;
  /// Without gaps, x fastest.
  CImageView(CType const& type, CSize const& size, void* pixels);
  CImageView(CType const& type, CSize const& size, void const* pixels);
  /// With the bytes from a voxel to its successor along x, y, z. The stride of an axis of extent 1
  /// does not matter.
  CImageView(CType const& type, CSize const& size, void* pixels,
             std::array<int64, 3> const& strides, std::shared_ptr<void const> owner = {});
  CImageView(CType const& type, CSize const& size, void const* pixels,
             std::array<int64, 3> const& strides, std::shared_ptr<void const> owner = {});
  CImageView(CImageView const&) = default;
  CImageView(CImageView&& other) noexcept; ///< leaves the other without pixels
  CImageView& operator=(CImageView const&) = default;
  CImageView& operator=(CImageView&& other) noexcept;
  ~CImageView() override;

  /// The strides of pixels without gaps, x fastest. CExBadParam for a size or type that CImage
  /// refuses.
  [[nodiscard]] static std::array<int64, 3> RowByRow(CType const& type, CSize const& size);

  [[nodiscard]] CSize Size() const noexcept override { return m_Size; }
  [[nodiscard]] CType Type() const noexcept override { return m_Type; }
  [[nodiscard]] CValueMap& Attributes() noexcept override { return m_Attributes; }
  [[nodiscard]] CValueMap const& Attributes() const noexcept override { return m_Attributes; }
  /// Whether the pixels may be written through the view.
  [[nodiscard]] bool IsWritable() const noexcept { return m_IsWritable; }
  /// Bytes from a pixel to the next along x, y and z.
  [[nodiscard]] std::array<int64, 3> const& Strides() const noexcept { return m_Strides; }

  [[nodiscard]] CImageAccess CreateAccess(bool write) override;
  [[nodiscard]] CImageAccess CreateAccess(bool write) const override;

  /// The voxels from `low` up to but not including `high`, without attributes, for reading or, as
  /// this view, writing; throws CExBadParam unless they lie inside.
  [[nodiscard]] CImageView Box(CPos const& low, CPos const& high) const;

private:
  CType m_Type;
  CSize m_Size;
  std::byte* m_Base = nullptr;
  std::array<int64, 3> m_Strides{};
  bool m_IsWritable = false;
  std::shared_ptr<void const> m_Owner;
  CValueMap m_Attributes;
};

} // namespace ORVA
