// A 2D or 3D image: pixel type, size, pixels in one block, and a map of attributes.
//
//   #include <iostream>
//   CImage image(IMAGE_GREY_8, CSize(64, 64, 32));
//   CImageAccess const access = image.CreateAccess(true);
//   access.As<std::uint8_t>()(3, 2, 1) = 200;                              // x, y, z
//   std::cout << static_cast<int>(access.Base()[64 * 64 + 2 * 64 + 3]);    // prints 200
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Export.h>
#include <pxlib2image/Pixels.h>
#include <pxlib2image/Size.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace ORVA {

/// A pixel type; the constants below are the ones there are.
class PXLIB2IMAGE_EXPORT CPixelType {
public:
  /// The pixel types.
  enum class EnId : std::uint8_t {
    None,
    Bool,
    BinaryFg,
    Grey8,
    Grey16,
    Grey32,
    GreyF,
    Signed8,
    Signed16,
    Signed32,
    Double
  };
  constexpr CPixelType() noexcept = default;
  /// Throws CExBadParam for a number that is none of the above.
  constexpr explicit CPixelType(EnId id) : m_Id(id) {
    if (id > EnId::Double) RaiseId(id);
  }
  /// Which of the types it is.
  [[nodiscard]] constexpr EnId Id() const noexcept { return m_Id; }
  /// Bytes of one pixel; 0 for no type.
  [[nodiscard]] int64 Bytes() const noexcept;
  /// The name of the constant, such as "IMAGE_GREY_8".
  [[nodiscard]] char const* ToString() const noexcept;
  friend constexpr bool operator==(CPixelType const&, CPixelType const&) noexcept = default;

private:
  [[noreturn]] static void RaiseId(EnId id);
  EnId m_Id = EnId::None;
};

/// Read or write access to the voxels of a box of an image. The access shares the pixel block, so
/// its addresses stay good while it lives, whatever becomes of the image; an image that is resized
/// or assigned to meanwhile gets a block of its own. Released at the end of its life.
class PXLIB2IMAGE_EXPORT CImageAccess {
public:
  /// For whoever implements IImage himself: access to `extents` voxels of a type, whose first one
  /// stands at `base` and whose neighbors along x, y, z are `strides` bytes away. `owner` keeps the
  /// pixels alive. The caller answers for the addresses; CExBadParam for a negative extent, and for
  /// a null address where there are voxels.
  [[nodiscard]] static CImageAccess ForWriting(CPixelType type, std::byte* base,
                                               std::array<int64, 3> const& extents,
                                               std::array<int64, 3> const& strides,
                                               std::shared_ptr<void const> owner = {});
  /// The same for pixels that are only read.
  [[nodiscard]] static CImageAccess ForReading(CPixelType type, std::byte const* base,
                                               std::array<int64, 3> const& extents,
                                               std::array<int64, 3> const& strides,
                                               std::shared_ptr<void const> owner = {});
  CImageAccess(CImageAccess const&) = default;
  CImageAccess& operator=(CImageAccess const&) = default;
  CImageAccess(CImageAccess&& other) noexcept; ///< leaves the other released
  CImageAccess& operator=(CImageAccess&& other) noexcept;
  ~CImageAccess() = default;

  /// Address of the box's first voxel; null when the box is empty or the access was released.
  [[nodiscard]] std::byte const* Base() const noexcept { return m_Base; }
  /// The same for writing; throws CExBadParam on an access released or opened for reading.
  [[nodiscard]] std::byte* WritableBase() const;
  /// Voxels of the box along axis 0, 1 or 2; throws CExBadParam for another axis.
  [[nodiscard]] int64 Extent(int axis) const { return m_Extent[Index(axis)]; }
  /// Voxels of the box along x, y and z.
  [[nodiscard]] std::array<int64, 3> const& Extents() const noexcept { return m_Extent; }
  /// Bytes from a voxel to its successor along axis 0, 1 or 2 (all 0 in an empty image); throws
  /// CExBadParam for another axis.
  [[nodiscard]] int64 Stride(int axis) const { return m_Stride[Index(axis)]; }
  /// Bytes from a voxel to its successor along x, y and z.
  [[nodiscard]] std::array<int64, 3> const& Strides() const noexcept { return m_Stride; }
  /// The pixels as numbers of type T: std::uint8_t for IMAGE_BOOL, IMAGE_BINARY_FG and
  /// IMAGE_GREY_8, and what its name says for each other type. A T that is not const writes. Throws
  /// CExBadParam where the pixels are of another type or, in a view of foreign pixels, not aligned
  /// for it, where T is not const and the access was not opened for writing, and after a release.
  template <class T>
  [[nodiscard]] CPixels<T> As() const {
    static_assert(std::is_arithmetic_v<T> && !std::is_same_v<std::remove_const_t<T>, bool>,
                  "pixels are numbers, std::uint8_t in an IMAGE_BOOL");
    CheckPixels(sizeof(T), std::is_signed_v<T>, std::is_floating_point_v<T>);
    if constexpr (std::is_const_v<T>)
      return {m_Owner, Base(), m_Extent, m_Stride};
    else
      return {m_Owner, WritableBase(), m_Extent, m_Stride};
  }
  /// Lets go of the pixels before the end of the access's life: no address, no extents.
  void Release() noexcept;

private:
  friend class CImage;
  CImageAccess() = default;
  static std::size_t Index(int axis) {
    if (axis < 0 || axis > 2) [[unlikely]]
      RaiseAxis(axis);
    return static_cast<std::size_t>(axis);
  }
  [[noreturn]] static void RaiseAxis(int axis);
  [[nodiscard]] bool IsAligned(int64 bytes) const noexcept;
  /// Throws CExBadParam unless the pixels are such numbers.
  void CheckPixels(std::size_t bytes, bool isSigned, bool isReal) const;

  std::shared_ptr<void const> m_Owner;
  std::byte* m_Base = nullptr;
  std::array<int64, 3> m_Extent{};
  std::array<int64, 3> m_Stride{};
  bool m_Writable = false;
  CPixelType m_Type; // none after a release
};

/// What the algorithms need of an image.
class PXLIB2IMAGE_EXPORT IImage {
public:
  /// The type of a pixel.
  using CType = CPixelType;

  virtual ~IImage();
  /// The extents, and the dimension.
  [[nodiscard]] virtual CSize Size() const noexcept = 0;
  /// The pixel type.
  [[nodiscard]] virtual CType Type() const noexcept = 0;
  /// The meta information that travels with the image.
  [[nodiscard]] virtual CValueMap& Attributes() noexcept = 0;
  [[nodiscard]] virtual CValueMap const& Attributes() const noexcept = 0;
  /// Access to the whole image, for reading or writing.
  [[nodiscard]] virtual CImageAccess CreateAccess(bool write) = 0;
  /// Access for reading; asking a const image for write access throws CExBadParam.
  [[nodiscard]] virtual CImageAccess CreateAccess(bool write) const = 0;

protected:
  IImage() = default;
  IImage(IImage const&) = default;
  IImage& operator=(IImage const&) = default;
};

inline constexpr IImage::CType IMAGE_BOOL{IImage::CType::EnId::Bool};          ///< 1 byte, 0 or 1
inline constexpr IImage::CType IMAGE_BINARY_FG{IImage::CType::EnId::BinaryFg}; ///< 1 byte
inline constexpr IImage::CType IMAGE_GREY_8{IImage::CType::EnId::Grey8};       ///< unsigned
inline constexpr IImage::CType IMAGE_GREY_16{IImage::CType::EnId::Grey16};     ///< unsigned
inline constexpr IImage::CType IMAGE_GREY_32{IImage::CType::EnId::Grey32};     ///< unsigned
inline constexpr IImage::CType IMAGE_GREY_F{IImage::CType::EnId::GreyF};       ///< float
inline constexpr IImage::CType IMAGE_SIGNED_8{IImage::CType::EnId::Signed8};   ///< two's complement
inline constexpr IImage::CType IMAGE_SIGNED_16{IImage::CType::EnId::Signed16}; ///< the same
inline constexpr IImage::CType IMAGE_SIGNED_32{IImage::CType::EnId::Signed32}; ///< the same
inline constexpr IImage::CType IMAGE_DOUBLE{IImage::CType::EnId::Double};      ///< double

/// An image that owns its pixels: x fastest, then y, then z, without gaps. A value: copies are
/// deep, a moved-from image is empty. New pixels are 0.
class PXLIB2IMAGE_EXPORT CImage final : public IImage {
public:
  CImage() = default; ///< no type, dimension 0
  /// Throws CExBadParam for a missing type or dimension, a negative extent, an extent other than 1
  /// beyond the dimension, a size that overflows, or a margin other than (0, 0, 0); std::bad_alloc
  /// when memory is out.
  CImage(CType const& type, CSize const& size, CSize const& margin = CSize(0, 0, 0));
  CImage(CImage const& other);
  CImage(CImage&& other) noexcept;
  CImage& operator=(CImage const& other);
  CImage& operator=(CImage&& other) noexcept;
  ~CImage() override;

  /// Gives the image another size with all pixels 0; attributes stay. Errors as the constructor's;
  /// on failure the image is unchanged.
  void Resize(CSize const& size, CSize const& margin = CSize(0, 0, 0));

  [[nodiscard]] CSize Size() const noexcept override { return m_Size; }
  [[nodiscard]] CType Type() const noexcept override { return m_Type; }
  [[nodiscard]] CValueMap& Attributes() noexcept override { return m_Attributes; }
  [[nodiscard]] CValueMap const& Attributes() const noexcept override { return m_Attributes; }
  /// Bytes of all pixels.
  [[nodiscard]] std::size_t Bytes() const noexcept;

  [[nodiscard]] CImageAccess CreateAccess(bool write) override;
  [[nodiscard]] CImageAccess CreateAccess(bool write) const override;
  /// Access to the voxels of the box from `first` to `last`, both included; throws CExBadParam for
  /// a box that is not inside the image.
  [[nodiscard]] CImageAccess CreateAccess(bool write, CPos const& first, CPos const& last);
  [[nodiscard]] CImageAccess CreateAccess(bool write, CPos const& first, CPos const& last) const;

  /// Same type, size, pixels and attributes.
  friend PXLIB2IMAGE_EXPORT bool operator==(CImage const& a, CImage const& b);

private:
  [[nodiscard]] CImageAccess Open(bool write, CPos const& first, CSize const& extents) const;
  [[nodiscard]] CImageAccess OpenBox(bool write, CPos const& first, CPos const& last) const;

  CType m_Type;
  CSize m_Size;
  std::shared_ptr<std::byte> m_Block; // shared with accesses only, never with another image
  CValueMap m_Attributes;
};

} // namespace ORVA
