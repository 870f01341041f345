#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2image/Image.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2image/Image";

enum class EnNumber { Unsigned, Signed, Real };

struct StPixelType {
  char const* name;
  int64 bytes;
  EnNumber number = EnNumber::Unsigned;
};

// By CType::EnId.
constexpr std::array<StPixelType, 11> c_types = {{
    {"no pixel type", 0},
    {"IMAGE_BOOL", 1},
    {"IMAGE_BINARY_FG", 1},
    {"IMAGE_GREY_8", 1},
    {"IMAGE_GREY_16", 2},
    {"IMAGE_GREY_32", 4},
    {"IMAGE_GREY_F", 4, EnNumber::Real},
    {"IMAGE_SIGNED_8", 1, EnNumber::Signed},
    {"IMAGE_SIGNED_16", 2, EnNumber::Signed},
    {"IMAGE_SIGNED_32", 4, EnNumber::Signed},
    {"IMAGE_DOUBLE", 8, EnNumber::Real},
}};

CString Text(int64 x, int64 y, int64 z) { return CString("(%1, %2, %3)").Arg(x).Arg(y).Arg(z); }

// Product of non-negative factors, or -1 where it does not fit.
int64 Multiply(int64 a, int64 b) {
  if (a < 0 || b < 0) return -1;
  return a != 0 && b > std::numeric_limits<int64>::max() / a ? -1 : a * b;
}

[[noreturn]] void Refuse(Impl::StExLocation const& where, char const* message,
                         CSize const& refused) {
  Impl::RaiseBadParam(where, CString(message).Arg(Text(refused.x, refused.y, refused.z)));
}

// Bytes of an image of that type and size, every argument checked on behalf of `function`.
int64 CheckedBytes(IImage::CType type, CSize const& size, CSize const& margin,
                   char const* function) {
  if (type.Bytes() == 0)
    Refuse(ORVA_LOCATION(c_module, function), "an image of size %1 needs a pixel type", size);
  if (size.Dim() == 0)
    Refuse(ORVA_LOCATION(c_module, function), "image size %1 has no dimension", size);
  if (size.x < 0 || size.y < 0 || size.z < 0)
    Refuse(ORVA_LOCATION(c_module, function), "image size %1 is negative", size);
  if ((size.Dim() < 3 && size.z != 1) || (size.Dim() < 2 && size.y != 1))
    Refuse(ORVA_LOCATION(c_module, function), "image size %1 extends beyond its dimension", size);
  if (margin.x != 0 || margin.y != 0 || margin.z != 0)
    Refuse(ORVA_LOCATION(c_module, function), "image margin %1 is not supported, only (0, 0, 0)",
           margin);
  if (size.IsEmpty()) return 0;
  int64 const bytes = Multiply(Multiply(Multiply(type.Bytes(), size.x), size.y), size.z);
  if (bytes < 0)
    Refuse(ORVA_LOCATION(c_module, function), "image size %1 is too large to address", size);
  return bytes;
}

void RefuseWriting(bool write) {
  if (write)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImage::CreateAccess"),
                        "a const image cannot be opened for writing");
}

// calloc: the system hands out zeroed pages without touching them, which matters for large volumes.
std::shared_ptr<std::byte> AllocateZeroed(int64 bytes) {
  if (bytes == 0) return {};
  auto* const memory = static_cast<std::byte*>(std::calloc(static_cast<std::size_t>(bytes), 1));
  if (memory == nullptr) throw std::bad_alloc();
  return {memory, [](std::byte* p) { std::free(p); }};
}

} // namespace

int64 IImage::CType::Bytes() const noexcept {
  return c_types[static_cast<std::size_t>(m_Id)].bytes;
}

char const* IImage::CType::ToString() const noexcept {
  return c_types[static_cast<std::size_t>(m_Id)].name;
}

void IImage::CType::RaiseId(EnId id) {
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::IImage::CType::CType"),
                      CString("there is no pixel type %1").Arg(static_cast<int>(id)));
}

IImage::~IImage() = default;

void Impl::RaisePixel(int64 x, int64 y, int64 z, std::array<int64, 3> const& extents) {
  CString message("pixel %1 is outside a box of %2 pixels");
  RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPixels::operator ()"),
                message.Arg(Text(x, y, z)).Arg(Text(extents[0], extents[1], extents[2])));
}

void Impl::RaiseRow(int64 y, int64 z, std::array<int64, 3> const& extents) {
  CString message("row y = %1, z = %2 is outside a box of %3 pixels");
  RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPixels::Row"),
                message.Arg(y).Arg(z).Arg(Text(extents[0], extents[1], extents[2])));
}

void Impl::RaiseRowStride(int64 stride) {
  RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPixels::Row"),
                CString("the pixels of a row are %1 bytes apart").Arg(stride));
}

bool CImageAccess::IsAligned(int64 bytes) const noexcept {
  if (reinterpret_cast<std::uintptr_t>(m_Base) % static_cast<std::uintptr_t>(bytes) != 0)
    return false;
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (m_Extent[axis] > 1 && m_Stride[axis] % bytes != 0) return false;
  return true;
}

void CImageAccess::CheckPixels(std::size_t bytes, bool isSigned, bool isReal) const {
  StPixelType const& type = c_types[static_cast<std::size_t>(m_Type.Id())];
  EnNumber const number = isReal     ? EnNumber::Real
                          : isSigned ? EnNumber::Signed
                                     : EnNumber::Unsigned;
  if (static_cast<std::size_t>(type.bytes) == bytes && type.number == number) {
    if (IsAligned(type.bytes)) return;
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageAccess::As"),
                        CString("the pixels are not aligned for numbers of %1 bytes").Arg(bytes));
  }
  constexpr std::array<char const*, 3> c_numbers = {"unsigned integers", "signed integers",
                                                    "real numbers"};
  CString message("the pixels are of type %1, not %2 of %3 bytes");
  Impl::RaiseBadParam(
      ORVA_LOCATION(c_module, "ORVA::CImageAccess::As"),
      message.Arg(type.name).Arg(c_numbers[static_cast<std::size_t>(number)]).Arg(bytes));
}

CImageAccess CImageAccess::ForWriting(CPixelType type, std::byte* base,
                                      std::array<int64, 3> const& extents,
                                      std::array<int64, 3> const& strides,
                                      std::shared_ptr<void const> owner) {
  bool isEmpty = false;
  for (int64 const extent : extents) {
    if (extent < 0)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageAccess::ForWriting"),
                          CString("an extent of %1 voxels is negative").Arg(extent));
    isEmpty |= extent == 0;
  }
  if (!isEmpty && base == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageAccess::ForWriting"),
                        "an access to voxels needs their address");
  CImageAccess access;
  access.m_Extent = extents;
  access.m_Writable = true;
  access.m_Type = type;
  if (isEmpty) return access;
  access.m_Owner = std::move(owner);
  access.m_Base = base;
  access.m_Stride = strides;
  return access;
}

CImageAccess CImageAccess::ForReading(CPixelType type, std::byte const* base,
                                      std::array<int64, 3> const& extents,
                                      std::array<int64, 3> const& strides,
                                      std::shared_ptr<void const> owner) {
  // Never written: the access hands out its address for writing only when it is writable.
  auto access = ForWriting(type, const_cast<std::byte*>(base), extents, strides, std::move(owner));
  access.m_Writable = false;
  return access;
}

CImageAccess::CImageAccess(CImageAccess&& other) noexcept {
  *this = std::as_const(other);
  other.Release();
}

CImageAccess& CImageAccess::operator=(CImageAccess&& other) noexcept {
  CImageAccess const taken(std::move(other));
  return *this = taken;
}

void CImageAccess::RaiseAxis(int axis) {
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageAccess::Index"),
                      CString("axis %1 is not 0, 1 or 2").Arg(axis));
}

std::byte* CImageAccess::WritableBase() const {
  if (!m_Writable)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImageAccess::WritableBase"),
                        "the access was not opened for writing");
  return m_Base;
}

void CImageAccess::Release() noexcept {
  CImageAccess const released;
  *this = released; // a copy: moving releases the source and would come back here
}

CImage::CImage(CType const& type, CSize const& size, CSize const& margin)
    : m_Type(type), m_Size(size),
      m_Block(AllocateZeroed(CheckedBytes(type, size, margin, "ORVA::CImage::CImage"))) {}

CImage::CImage(CImage const& other)
    : IImage(other), m_Type(other.m_Type), m_Size(other.m_Size),
      m_Block(AllocateZeroed(static_cast<int64>(other.Bytes()))), m_Attributes(other.m_Attributes) {
  if (m_Block) std::memcpy(m_Block.get(), other.m_Block.get(), Bytes());
}

CImage::CImage(CImage&& other) noexcept
    : IImage(other), m_Type(std::exchange(other.m_Type, CType())),
      m_Size(std::exchange(other.m_Size, CSize())), m_Block(std::move(other.m_Block)),
      m_Attributes(std::move(other.m_Attributes)) {
  other.m_Attributes.Clear();
}

CImage& CImage::operator=(CImage const& other) {
  CImage copy(other);
  return *this = std::move(copy);
}

// Taken aside first: the other image may be held by this image's own attributes.
CImage& CImage::operator=(CImage&& other) noexcept {
  CImage taken(std::move(other));
  m_Type = taken.m_Type;
  m_Size = taken.m_Size;
  m_Block = std::move(taken.m_Block);
  m_Attributes = std::move(taken.m_Attributes);
  return *this;
}

CImage::~CImage() = default;

void CImage::Resize(CSize const& size, CSize const& margin) {
  m_Block = AllocateZeroed(CheckedBytes(m_Type, size, margin, "ORVA::CImage::Resize"));
  m_Size = size;
}

std::size_t CImage::Bytes() const noexcept {
  return m_Block ? static_cast<std::size_t>(m_Type.Bytes() * m_Size.x * m_Size.y * m_Size.z) : 0;
}

CImageAccess CImage::Open(bool write, CPos const& first, CSize const& extents) const {
  CImageAccess access;
  access.m_Owner = m_Block;
  access.m_Writable = write;
  access.m_Type = m_Type;
  access.m_Extent = {extents.x, extents.y, extents.z};
  if (m_Block && !extents.IsEmpty()) {
    int64 const row = m_Type.Bytes() * m_Size.x;
    access.m_Stride = {m_Type.Bytes(), row, row * m_Size.y};
    access.m_Base = m_Block.get() + (first.x * access.m_Stride[0] + first.y * access.m_Stride[1] +
                                     first.z * access.m_Stride[2]);
  }
  return access;
}

CImageAccess CImage::OpenBox(bool write, CPos const& first, CPos const& last) const {
  auto const inside = [](int64 from, int64 to, int64 extent) {
    return 0 <= from && from <= to && to < extent;
  };
  if (!inside(first.x, last.x, m_Size.x) || !inside(first.y, last.y, m_Size.y) ||
      !inside(first.z, last.z, m_Size.z)) {
    CString message("box %1 to %2 is not inside an image of size %3");
    message.Arg(Text(first.x, first.y, first.z)).Arg(Text(last.x, last.y, last.z));
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CImage::CreateAccess"),
                        message.Arg(Text(m_Size.x, m_Size.y, m_Size.z)));
  }
  return Open(write, first,
              CSize(last.x - first.x + 1, last.y - first.y + 1, last.z - first.z + 1));
}

CImageAccess CImage::CreateAccess(bool write) { return Open(write, CPos(), m_Size); }

CImageAccess CImage::CreateAccess(bool write, CPos const& first, CPos const& last) {
  return OpenBox(write, first, last);
}

CImageAccess CImage::CreateAccess(bool write, CPos const& first, CPos const& last) const {
  RefuseWriting(write);
  return OpenBox(false, first, last);
}

CImageAccess CImage::CreateAccess(bool write) const {
  RefuseWriting(write);
  return Open(false, CPos(), m_Size);
}

bool operator==(CImage const& a, CImage const& b) {
  return a.m_Type == b.m_Type && a.m_Size == b.m_Size &&
         (!a.m_Block || std::memcmp(a.m_Block.get(), b.m_Block.get(), a.Bytes()) == 0) &&
         a.m_Attributes == b.m_Attributes;
}

} // namespace ORVA
