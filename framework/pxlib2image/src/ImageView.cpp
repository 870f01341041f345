#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2image/ImageView.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2image/ImageView";
constexpr char c_constructor[] = "ORVA::CImageView::CImageView";

CString Text(int64 x, int64 y, int64 z) { return CString("(%1, %2, %3)").Arg(x).Arg(y).Arg(z); }

std::array<int64, 3> Extents(CSize const& size) { return {size.x, size.y, size.z}; }

// What a stride says; 2^63 for the most negative one.
uint64 Length(int64 stride) {
  return stride < 0 ? uint64{0} - static_cast<uint64>(stride) : static_cast<uint64>(stride);
}

// The bytes from the lowest to the highest address of a voxel's first byte, in two parts: how far
// they reach down and up from the voxel (0, 0, 0). False where that overflows.
struct StReach {
  uint64 down = 0, up = 0;

  [[nodiscard]] bool Add(uint64 steps, int64 stride) {
    uint64& part = stride < 0 ? down : up;
    uint64 bytes = 0;
    return !__builtin_mul_overflow(steps, Length(stride), &bytes) &&
           !__builtin_add_overflow(part, bytes, &part);
  }
};

void CheckReach(IImage::CType type, CSize const& size, std::byte const* base,
                std::array<int64, 3> const& strides) {
  auto const extents = Extents(size);
  auto const address = static_cast<uint64>(reinterpret_cast<std::uintptr_t>(base));
  constexpr auto most = static_cast<uint64>(std::numeric_limits<std::uintptr_t>::max());
  StReach reach;
  bool isGood = true;
  for (std::size_t axis = 0; axis < 3; ++axis)
    isGood = isGood && reach.Add(static_cast<uint64>(extents[axis] - 1), strides[axis]);
  auto const bytes = static_cast<uint64>(type.Bytes());
  constexpr auto half = static_cast<uint64>(std::numeric_limits<int64>::max());
  isGood = isGood && reach.down <= half && reach.up <= half - bytes && reach.down <= address &&
           reach.up <= most - bytes && address <= most - bytes - reach.up;
  if (!isGood)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("a view of size %1 with strides %2 leads out of memory")
                            .Arg(Text(size.x, size.y, size.z))
                            .Arg(Text(strides[0], strides[1], strides[2])));
}

// Along the axes in ascending order of their strides, no stride may be shorter than what the axes
// before it cover.
void CheckOverlap(IImage::CType type, CSize const& size, std::array<int64, 3> const& strides) {
  auto const extents = Extents(size);
  std::array<std::size_t, 3> axes{0, 1, 2};
  std::ranges::sort(axes, {}, [&](std::size_t axis) { return Length(strides[axis]); });
  auto covered = static_cast<uint64>(type.Bytes());
  for (std::size_t const axis : axes) {
    if (extents[axis] == 1) continue;
    uint64 const stride = Length(strides[axis]);
    if (stride < covered)
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, c_constructor),
          CString("a writable view of size %1 with strides %2 has voxels that share a byte")
              .Arg(Text(size.x, size.y, size.z))
              .Arg(Text(strides[0], strides[1], strides[2])));
    covered += stride * static_cast<uint64>(extents[axis] - 1);
  }
}

void CheckSize(IImage::CType type, CSize const& size, char const* function) {
  auto const text = Text(size.x, size.y, size.z);
  if (type.Bytes() == 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("a view of size %1 needs a pixel type").Arg(text));
  if (size.Dim() == 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("view size %1 has no dimension").Arg(text));
  if (size.x < 0 || size.y < 0 || size.z < 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("view size %1 is negative").Arg(text));
  if ((size.Dim() < 3 && size.z != 1) || (size.Dim() < 2 && size.y != 1))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("view size %1 extends beyond its dimension").Arg(text));
}

} // namespace

CImageView::CImageView(CType const& type, CSize const& size, void* pixels)
    : CImageView(type, size, pixels, RowByRow(type, size)) {}

CImageView::CImageView(CType const& type, CSize const& size, void const* pixels)
    : CImageView(type, size, pixels, RowByRow(type, size)) {}

CImageView::CImageView(CType const& type, CSize const& size, void* pixels,
                       std::array<int64, 3> const& strides, std::shared_ptr<void const> owner)
    : CImageView(type, size, static_cast<void const*>(pixels), strides, std::move(owner)) {
  if (!m_Size.IsEmpty()) CheckOverlap(type, size, strides);
  m_IsWritable = true;
}

// The address is written through only where it came without const.
CImageView::CImageView(CType const& type, CSize const& size, void const* pixels,
                       std::array<int64, 3> const& strides, std::shared_ptr<void const> owner)
    : m_Type(type), m_Size(size),
      m_Base(const_cast<std::byte*>(static_cast<std::byte const*>(pixels))), m_Strides(strides),
      m_Owner(std::move(owner)) {
  CheckSize(type, size, c_constructor);
  if (size.IsEmpty()) return;
  if (m_Base == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("a view of size %1 needs the address of its pixels")
                            .Arg(Text(size.x, size.y, size.z)));
  CheckReach(type, size, m_Base, strides);
}

CImageView::CImageView(CImageView&& other) noexcept
    : IImage(other), m_Type(std::exchange(other.m_Type, CType())),
      m_Size(std::exchange(other.m_Size, CSize())), m_Base(std::exchange(other.m_Base, nullptr)),
      m_Strides(std::exchange(other.m_Strides, {})),
      m_IsWritable(std::exchange(other.m_IsWritable, false)), m_Owner(std::move(other.m_Owner)),
      m_Attributes(std::move(other.m_Attributes)) {
  other.m_Attributes.Clear();
}

// Taken aside first: the other view may be held by this one's own attributes.
CImageView& CImageView::operator=(CImageView&& other) noexcept {
  CImageView taken(std::move(other));
  m_Type = taken.m_Type;
  m_Size = taken.m_Size;
  m_Base = taken.m_Base;
  m_Strides = taken.m_Strides;
  m_IsWritable = taken.m_IsWritable;
  m_Owner = std::move(taken.m_Owner);
  m_Attributes = std::move(taken.m_Attributes);
  return *this;
}

CImageView::~CImageView() = default;

std::array<int64, 3> CImageView::RowByRow(CType const& type, CSize const& size) {
  CheckSize(type, size, "ORVA::CImageView::RowByRow");
  if (size.IsEmpty()) return {};
  int64 row = 0, plane = 0;
  if (__builtin_mul_overflow(type.Bytes(), size.x, &row) ||
      __builtin_mul_overflow(row, size.y, &plane))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CImageView::RowByRow"),
        CString("view size %1 is too large to address").Arg(Text(size.x, size.y, size.z)));
  return {type.Bytes(), row, plane};
}

CImageAccess CImageView::CreateAccess(bool write) {
  if (!write) return std::as_const(*this).CreateAccess(false);
  if (!m_IsWritable)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageView::CreateAccess"),
                        "a read-only view cannot be opened for writing");
  return CImageAccess::ForWriting(m_Type, m_Base, Extents(m_Size), m_Strides, m_Owner);
}

CImageAccess CImageView::CreateAccess(bool write) const {
  if (write)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageView::CreateAccess"),
                        "a const view cannot be opened for writing");
  return CImageAccess::ForReading(m_Type, m_Base, Extents(m_Size), m_Strides, m_Owner);
}

CImageView CImageView::Box(CPos const& low, CPos const& high) const {
  auto const isInside = [](int64 from, int64 to, int64 extent) {
    return 0 <= from && from <= to && to <= extent;
  };
  if (!isInside(low.x, high.x, m_Size.x) || !isInside(low.y, high.y, m_Size.y) ||
      !isInside(low.z, high.z, m_Size.z))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageView::Box"),
                        CString("box from %1 up to %2 is not inside a view of size %3")
                            .Arg(Text(low.x, low.y, low.z))
                            .Arg(Text(high.x, high.y, high.z))
                            .Arg(Text(m_Size.x, m_Size.y, m_Size.z)));
  CImageView box;
  box.m_Type = m_Type;
  box.m_Size = m_Size;
  box.m_Size.x = high.x - low.x;
  box.m_Size.y = high.y - low.y;
  box.m_Size.z = high.z - low.z;
  box.m_Strides = m_Strides;
  box.m_IsWritable = m_IsWritable;
  box.m_Owner = m_Owner;
  if (!box.m_Size.IsEmpty())
    box.m_Base = m_Base + (low.x * m_Strides[0] + low.y * m_Strides[1] + low.z * m_Strides[2]);
  return box;
}

} // namespace ORVA
