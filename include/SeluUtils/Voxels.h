// The voxels of an image below a walk, as a range or by a function.
//
//   #include <SeluUtils/PolygonVisitor.h>
//   CImage image(IMAGE_GREY_8, CSize(512, 512));
//   CPolygonVisitor polygon({{10, 10, 0}, {400, 90, 0}, {90, 600, 0}}, 2, NEIGHBORHOOD_8, true);
//   uint64 sum = 0;
//   ForEachVoxel(image, polygon, [&](auto value) { sum += static_cast<uint64>(value); });
//   polygon.Rewind();
//   for (std::uint8_t& value : Voxels<std::uint8_t>(image, polygon)) value = 255;  // in walk order
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/VoxelBlock.h>
#include <SeluUtils/Impl/VoxelWalk.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/Walker.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <ranges>
#include <type_traits>
#include <utility>

namespace ORVA {

namespace Impl {

/// Goes from voxel to voxel below a walk. All of it is inline up to the loop, so that a walker that
/// lives there is walked in registers.
template <class Pixel, RunWalker W>
class CVoxelIterator {
public:
  using iterator_concept = std::input_iterator_tag;
  using value_type = std::remove_const_t<Pixel>;
  using difference_type = std::ptrdiff_t;

  CVoxelIterator() = default;
  [[gnu::always_inline]] CVoxelIterator(CVoxelBlock<Pixel> const& block, W& walker)
      : m_Block(&block), m_Walker(&walker) {
    NextRow();
  }

  [[nodiscard]] Pixel& operator*() const noexcept { return *m_Row.first; }
  [[gnu::always_inline]] CVoxelIterator& operator++() {
    if (--m_Row.length > 0) {
      m_Row.first = Moved(m_Row.first, m_Row.stride);
    } else {
      NextRow();
    }
    return *this;
  }
  [[gnu::always_inline]] void operator++(int) { ++*this; }
  friend bool operator==(CVoxelIterator const& a, std::default_sentinel_t) noexcept {
    return a.m_Row.length <= 0;
  }

private:
  [[gnu::always_inline]] void NextRow() {
    m_Row.length = 0;
    while (m_Row.length == 0 && m_Walker->MorePoints()) {
      // Of a line, whose rows are short, the next point.
      if constexpr (std::is_same_v<W, CBresenhamVisitor> ||
                    std::is_same_v<W, CBresenhamVisitorSelect>) {
        CTriple<int64> const p = m_Walker->NextPoint();
        if (m_Block->IsInside(p)) m_Row = {p, 0, m_Block->Address(p), 0, 1};
      } else {
        m_Row = m_Block->Clip(m_Walker->NextRun());
      }
    }
  }

  CVoxelBlock<Pixel> const* m_Block = nullptr;
  W* m_Walker = nullptr;
  StVoxelRow<Pixel> m_Row; // from this voxel on; of no length behind the last one
};

} // namespace Impl

/// References to the voxels below the points that a walker has still to hand out, in their order;
/// points outside the image are left out. A single-pass input range: begin goes to the first voxel,
/// each ++ to the next. Where a loop is left the walker stands behind the run of the voxel last
/// seen. Takes no memory.
template <class Pixel, RunWalker W>
class CVoxelRange : public std::ranges::view_base {
public:
  /// An input iterator of the range.
  using CIterator = Impl::CVoxelIterator<Pixel, W>;

  CVoxelRange(CImageAccess access, W& walker)
      : m_Access(std::move(access)), m_Block(m_Access), m_Walker(&walker) {}

  [[nodiscard, gnu::always_inline]] CIterator begin() { return {m_Block, *m_Walker}; }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

private:
  CImageAccess m_Access;
  Impl::CVoxelBlock<Pixel> m_Block;
  W* m_Walker;
};

/// The same for a walker that the range keeps.
template <class Pixel, RunWalker W>
class COwningVoxelRange : public std::ranges::view_base {
public:
  COwningVoxelRange(CImageAccess access, W&& walker)
      : m_Access(std::move(access)), m_Block(m_Access), m_Walker(std::move(walker)) {}

  [[nodiscard, gnu::always_inline]] auto begin() {
    return Impl::CVoxelIterator<Pixel, W>(m_Block, m_Walker);
  }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

private:
  CImageAccess m_Access;
  Impl::CVoxelBlock<Pixel> m_Block;
  W m_Walker;
};

/// The voxels of the image below the walker's remaining points, as `Pixel const&`, and as `Pixel&`
/// where the image is not const. `Pixel` is the image's pixel type as CImageAccess::As has it:
/// std::uint8_t for IMAGE_BOOL, IMAGE_BINARY_FG and IMAGE_GREY_8, and so on. CExBadParam for
/// another one, and for pixels that are not aligned as their type wants it. A walker given by name
/// is walked itself and must outlive the range, a temporary moves into it; the image may be gone
/// before.
template <class Pixel, class Image, class W>
requires std::derived_from<Image, IImage> && RunWalker<std::remove_cvref_t<W>>
[[nodiscard]] auto Voxels(Image& image, W&& walker) {
  static_assert(!std::is_const_v<std::remove_reference_t<W>>, "walking changes the walker");
  using Voxel = std::conditional_t<std::is_const_v<Image>, Pixel const, Pixel>;
  auto access = Impl::OpenVoxels(image);
  if constexpr (std::is_lvalue_reference_v<W>) {
    return CVoxelRange<Voxel, std::remove_reference_t<W>>(std::move(access), walker);
  } else {
    return COwningVoxelRange<Voxel, W>(std::move(access), std::forward<W>(walker));
  }
}

/// Calls f with each voxel of the image below the walker's remaining points; points outside the
/// image are left out, the walker ends finished. f takes the voxel by its type, `auto` or, to write
/// it where the image is not const, `auto&`, and, where it has a second parameter, the voxel's
/// position, a CTriple<int64>. It is compiled for each of the eight pixel types, but for one alone
/// where that is named: ForEachVoxel<std::uint8_t>(image, walker, f).
///
/// The order is the one that the memory likes best: polygons and areas are visited row by row of
/// the image, not column by column, which takes 8 bytes per row of the image and some 100 per run
/// in hand. All else is visited in the order of the walk. Rows and lines are walked by addresses
/// alone: what f does over a row a compiler may do for many voxels at once. Errors as for Voxels.
template <class Image, class W, class Function>
requires std::derived_from<Image, IImage> && RunWalker<std::remove_cvref_t<W>>
[[gnu::always_inline]] inline void ForEachVoxel(Image& image, W&& walker, Function f) {
  static_assert(!std::is_const_v<std::remove_reference_t<W>>, "walking changes the walker");
  auto const access = Impl::OpenVoxels(image);
  Impl::DispatchPixelType(
      image, [&]<class Pixel>(Pixel const*) __attribute__((always_inline)) {
        using Voxel = std::conditional_t<std::is_const_v<Image>, Pixel const, Pixel>;
        Impl::WalkVoxels(Impl::CVoxelBlock<Voxel>(access), walker, f);
      });
}
template <class Pixel, class Image, class W, class Function>
requires std::is_arithmetic_v<Pixel> && std::derived_from<Image, IImage> &&
    RunWalker<std::remove_cvref_t<W>>
[[gnu::always_inline]] inline void ForEachVoxel(Image& image, W&& walker, Function f) {
  static_assert(!std::is_const_v<std::remove_reference_t<W>>, "walking changes the walker");
  using Voxel = std::conditional_t<std::is_const_v<Image>, Pixel const, Pixel>;
  auto const access = Impl::OpenVoxels(image);
  Impl::WalkVoxels(Impl::CVoxelBlock<Voxel>(access), walker, f);
}

} // namespace ORVA
