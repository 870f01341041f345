#include <SeluUtils/StraightLineVisitor.h>

#include "Utils/Exact.h"
#include "Utils/ImageWalker/Direction.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>
#include <cstddef>
#include <utility>

namespace ORVA {

namespace {

using Impl::int128;

constexpr char c_module[] = "src/Utils/ImageWalker";

// Says of one point after the other whether floor(i * b / a + 1/2) has risen, exactly, for doubles
// 0 <= b <= a.
class CSlope {
public:
  CSlope(double b, double a) {
    constexpr int bits = 53; // of a double's fraction
    int exponentA = 0, exponentB = 0;
    double const fractionA = std::frexp(a, &exponentA), fractionB = std::frexp(b, &exponentB);
    int const gap = exponentA - exponentB;
    if (b == 0 || gap > c_largestGap) return; // no image is as long as the first step takes
    m_Doubled = static_cast<int128>(std::ldexp(fractionA, bits)) << (gap + 1);
    m_Rise = static_cast<int128>(std::ldexp(fractionB, bits)) * 2;
    m_Rest = m_Doubled / 2;
  }
  bool RisesNext() {
    m_Rest += m_Rise;
    if (m_Rest < m_Doubled) return false;
    m_Rest -= m_Doubled;
    return true;
  }

private:
  static constexpr int c_largestGap = 66; // 2a * 2^66 has 120 bits

  int128 m_Doubled = 1, m_Rise = 0, m_Rest = 0; // 2a, 2b, and what stands over in 1 / 2a
};

std::vector<std::uint8_t> StepsOfLine(CTriple<double> const& direction, int64 length) {
  CSlope second(std::abs(direction.y), std::abs(direction.x));
  CSlope third(std::abs(direction.z), std::abs(direction.x));
  std::vector<std::uint8_t> steps(static_cast<std::size_t>(length));
  for (std::size_t i = 1; i < steps.size(); ++i)
    steps[i] =
        static_cast<std::uint8_t>((second.RisesNext() ? 1 : 0) + (third.RisesNext() ? 2 : 0));
  return steps;
}

uint64 Product(CTriple<int64> const& extents) {
  return static_cast<uint64>(extents.x) * static_cast<uint64>(extents.y) *
         static_cast<uint64>(extents.z);
}

} // namespace

CStraightLineVisitor::CStraightLineVisitor(CTriple<double> direction) { SetDirection(direction); }

void CStraightLineVisitor::SetDirection(CTriple<double> direction) {
  if (!Impl::IsFinite(direction) || direction == CTriple<double>())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CStraightLineVisitor::SetDirection"),
                        CString("direction (%1, %2, %3) points nowhere")
                            .Arg(direction.x, 6)
                            .Arg(direction.y, 6)
                            .Arg(direction.z, 6));
  Build(direction, m_ImageSize);
}

void CStraightLineVisitor::SetImageSize(CTriple<int64> extents) { Build(m_Direction, extents); }

// What can fail comes before any change.
void CStraightLineVisitor::Build(CTriple<double> const& direction, CTriple<int64> const& extents) {
  int64 const axis = Impl::LargestAxis(direction);
  auto const d = Impl::MainAxisFirst(axis, direction);
  auto const lineExtents = Impl::MainAxisFirst(axis, extents);
  bool const hasPoints = extents.x > 0 && extents.y > 0 && extents.z > 0;
  auto steps = StepsOfLine(d, hasPoints ? lineExtents.x : 0);
  m_Steps = std::move(steps);
  m_Direction = direction;
  m_ImageSize = extents;
  m_Axis = axis;
  m_Extents = hasPoints ? lineExtents : CTriple<int64>();
  m_Signs = {d.x < 0 ? -1 : 1, d.y < 0 ? -1 : 1, d.z < 0 ? -1 : 1};
  auto const first = [](int64 sign, int64 extent) {
    return sign < 0 && extent > 0 ? extent - 1 : 0;
  };
  m_Origin = {first(m_Signs.x, m_Extents.x), first(m_Signs.y, m_Extents.y),
              first(m_Signs.z, m_Extents.z)};
  Rewind();
}

uint64 CStraightLineVisitor::Steps() const noexcept { return Product(m_Extents); }

void CStraightLineVisitor::Rewind() noexcept {
  m_LineStart = m_OnLine = {};
  m_IsBorder = m_NextIsBorder = true;
  m_Left = m_Steps->empty() ? 0 : Steps();
}

void CStraightLineVisitor::NextLine() noexcept {
  if (++m_LineStart.y == m_Extents.y) {
    m_LineStart.y = 0;
    ++m_LineStart.z;
  }
  m_OnLine = m_LineStart;
  m_NextIsBorder = true;
}

} // namespace ORVA
