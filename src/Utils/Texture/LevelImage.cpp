#include <SeluUtils/Texture/LevelImage.h>

#include "Utils/Cooccurrence/Strides.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cstring>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";
constexpr char c_constructor[] = "ORVA::CLevelImage::CLevelImage";

int BytesOf(IImage::CType type) {
  if (type == IMAGE_GREY_16) return 2;
  if (type == IMAGE_GREY_8 || type == IMAGE_BOOL || type == IMAGE_BINARY_FG) return 1;
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                      CString("levels need an image of 8 or 16 unsigned bits, not %1")
                          .Arg(CString(type.ToString())));
}

template <class T>
int GreatestOfRow(std::byte const* voxel, int64 n, int64 stride) noexcept {
  T greatest = 0;
  for (int64 i = 0; i < n; ++i) {
    T value;
    std::memcpy(&value, voxel + i * stride, sizeof value);
    greatest = std::max(greatest, value);
  }
  return greatest;
}

// With the stride of rows without gaps known to the compiler, the loop is as fast as memory.
template <class T>
int Greatest(CImageAccess const& access) {
  Impl::StJointBox<1> box{access.Extents(), {access.Strides()}, {}};
  box.Normalize();
  int greatest = 0;
  box.ForEachRow([&](std::array<int64, 1> const& offset) {
    auto const* const row = access.Base() + offset[0];
    int64 const n = box.extent[0], stride = box.stride[0][0];
    constexpr auto dense = static_cast<int64>(sizeof(T));
    greatest = std::max(greatest, stride == dense ? GreatestOfRow<T>(row, n, dense)
                                                  : GreatestOfRow<T>(row, n, stride));
  });
  return greatest;
}

} // namespace

CLevelImage::CLevelImage(IImage const& pixels, int levels, StUnchecked)
    : m_Access(pixels.CreateAccess(false)), m_Size(pixels.Size()),
      m_BytesPerVoxel(BytesOf(pixels.Type())), m_Levels(levels) {}

CLevelImage::CLevelImage(IImage const& pixels) : CLevelImage(pixels, 1, StUnchecked()) {
  m_Levels = std::max(1, m_BytesPerVoxel == 1 ? Greatest<std::uint8_t>(m_Access)
                                              : Greatest<std::uint16_t>(m_Access));
}

CLevelImage::CLevelImage(IImage const& pixels, int levels) : CLevelImage(pixels) {
  if (levels < 1 || levels > c_mostLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("%1 levels are not from 1 to 65535").Arg(levels));
  if (m_Levels > levels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("the image has the level %1, above %2").Arg(m_Levels).Arg(levels));
  m_Levels = levels;
}

int CLevelImage::At(CPos const& position) const {
  auto const& extents = Extents();
  auto const& strides = Strides();
  if (position.x < 0 || position.y < 0 || position.z < 0 || position.x >= extents[0] ||
      position.y >= extents[1] || position.z >= extents[2])
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CLevelImage::At"),
                        CString("position (%1, %2, %3) is not inside the image")
                            .Arg(position.x)
                            .Arg(position.y)
                            .Arg(position.z));
  auto const* const voxel =
      Base() + (position.x * strides[0] + position.y * strides[1] + position.z * strides[2]);
  if (m_BytesPerVoxel == 1) return std::to_integer<int>(*voxel);
  std::uint16_t level;
  std::memcpy(&level, voxel, sizeof level);
  return level;
}

// The access keeps the pixels alive as long as the view does.
CImageView CLevelImage::View() const {
  if (m_Size.Dim() == 0) return {};
  auto const owner = std::make_shared<CImageAccess>(m_Access);
  return {m_BytesPerVoxel == 1 ? IMAGE_GREY_8 : IMAGE_GREY_16, m_Size,
          static_cast<void const*>(Base()), Strides(), owner};
}

CLevelImage CLevelImage::Box(CPos const& low, CPos const& high) const {
  return {View().Box(low, high), m_Levels, StUnchecked()};
}

} // namespace ORVA
