#include <SeluUtils/CylinderMask.h>

#include <pxlib2core/Exception.h>
#include <pxlib2image/HeaderTools.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/CylinderMask";
constexpr char c_doMask[] = "ORVA::`anonymous-namespace'::DoMaskImage";
constexpr char c_parameters[] = "cylinderMaskParameters";
constexpr char c_slice[] = "cylinderMaskSlice";

// An empty text fails with the standard library's out-of-range error.
char AxisLetter(CString const& axis) { return axis.Std().at(0); }

// How the voxels of an image lie in memory, seen from the cross section: groups of slice pixels,
// each group repeated along the cylinder's axis, each pixel standing for a number of voxels in a
// row. The voxel of group g, repeat r and pixel p starts at ((g * repeats + r) * pixels + p) *
// voxels; the groups share the v rows of the cross section evenly.
struct StLayout {
  int64 u, v; // extents of the cross section
  int64 repeats, pixels, voxels;
};

StLayout Layout(char axis, CSize const& size) {
  if (axis == 'X') return {size.y, size.z, 1, size.y * size.z, size.x};
  if (axis == 'Y') return {size.x, size.z, size.y, size.x, 1};
  return {size.x, size.y, size.z, size.x * size.y, 1};
}

struct StSpan {
  int64 begin, end;
};

class CCircle {
public:
  CCircle(double s, double t, double radius) : m_S(s), m_T(t), m_SquaredRadius(radius * radius) {}

  // The columns 0 .. extent - 1 of row v that are inside. Rounding never puts a nearer column
  // farther away than one beyond it, so the inside columns stand together around the one nearest
  // the center, and their ends are found by halving with the very test that defines the circle.
  [[nodiscard]] StSpan InsideSpan(int64 v, int64 extent) const {
    double const off = static_cast<double>(v) - m_T;
    double const squaredOff = off * off;
    auto const isInside = [&](int64 u) {
      double const across = static_cast<double>(u) - m_S;
      return m_SquaredRadius > across * across + squaredOff;
    };
    int64 const nearest = NearestColumn(extent);
    if (!isInside(nearest)) return {0, 0};
    return {FirstOf(0, nearest, isInside),
            FirstOf(nearest, extent, [&](int64 u) { return !isInside(u); })};
  }

private:
  [[nodiscard]] int64 NearestColumn(int64 extent) const {
    if (!(m_S > 0)) return 0;
    double const last = static_cast<double>(extent - 1);
    return m_S >= last ? extent - 1 : std::min(extent - 1, static_cast<int64>(std::round(m_S)));
  }

  // The first number from low on that has the property, else high; all behind it have it.
  template <class Property>
  static int64 FirstOf(int64 low, int64 high, Property has) {
    while (low < high) {
      int64 const middle = low + (high - low) / 2;
      if (has(middle))
        high = middle;
      else
        low = middle + 1;
    }
    return low;
  }

  double m_S, m_T, m_SquaredRadius;
};

std::int64_t TruncatedToInt64(double value) {
  constexpr double c_limit = 9223372036854775808.0; // 2^63
  if (std::isnan(value)) return 0;
  if (value >= c_limit) return std::numeric_limits<std::int64_t>::max();
  if (value < -c_limit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

template <class Voxel>
Voxel Converted(double value) {
  if constexpr (std::is_floating_point_v<Voxel>) {
    static_assert(std::numeric_limits<Voxel>::is_iec559); // out of range becomes infinity
    return static_cast<Voxel>(value);
  } else {
    return static_cast<Voxel>(TruncatedToInt64(value));
  }
}

// The axis letter of the image's parameters; nothing where the image has none.
std::optional<char> StoredAxis(CImage const& image) {
  CValue const* const parameters = CSeluHeaderTools::FindMetaInfo(image, c_parameters);
  if (parameters == nullptr) return std::nullopt;
  CValue const* const axis = parameters->Map().Find("axis");
  if (axis == nullptr || axis->Type() != CValue::EnType::String)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_doMask),
                        "the cylinder mask parameters have no text \"axis\"");
  return AxisLetter(axis->String());
}

void CheckSlice(CImage const& slice, StLayout const& layout) {
  if (slice.Type() != IMAGE_BOOL)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_doMask),
                        CString("the mask image is an %1, not an IMAGE_BOOL")
                            .Arg(CString(slice.Type().ToString())));
  CSize const size = slice.Size();
  if (size.x >= layout.u && size.y >= layout.v) return;
  CString message("a mask image of size (%1, %2) does not cover a cross section of (%3, %4)");
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_doMask),
                      message.Arg(size.x).Arg(size.y).Arg(layout.u).Arg(layout.v));
}

// The runs of false pixels of each group, as pixel numbers in the group; a run may go on over the
// end of a row. runs[ends[g - 1]] .. runs[ends[g] - 1] are those of group g.
struct StOutsideRuns {
  std::vector<StSpan> runs;
  std::vector<std::size_t> ends;

  StOutsideRuns(CImageAccess const& slice, StLayout const& layout) {
    int64 const rows = layout.pixels / layout.u;
    for (int64 v = 0; v < layout.v; ++v) {
      AddRow(slice.Base() + v * slice.Stride(1), layout.u, v % rows * layout.u);
      if (v % rows == rows - 1) ends.push_back(runs.size());
    }
  }

private:
  void AddRow(std::byte const* row, int64 extent, int64 first) {
    for (int64 u = 0; u < extent;) {
      int64 const end = SkipEqual(row, u, extent);
      if (row[u] == std::byte{0}) AddRun({first + u, first + end});
      u = end;
    }
  }

  static int64 SkipEqual(std::byte const* row, int64 u, int64 extent) {
    bool const isFalse = row[u] == std::byte{0};
    while (u < extent && (row[u] == std::byte{0}) == isFalse) ++u;
    return u;
  }

  void AddRun(StSpan run) {
    std::size_t const groupBegin = ends.empty() ? 0 : ends.back();
    if (runs.size() > groupBegin && runs.back().end == run.begin)
      runs.back().end = run.end;
    else
      runs.push_back(run);
  }
};

template <class Voxel>
void FillOutside(Voxel* voxels, StOutsideRuns const& outside, StLayout const& layout, Voxel value) {
  std::size_t begin = 0;
  for (std::size_t const end : outside.ends) {
    for (int64 repeat = 0; repeat < layout.repeats; ++repeat) {
      for (std::size_t k = begin; k < end; ++k)
        std::fill(voxels + outside.runs[k].begin * layout.voxels,
                  voxels + outside.runs[k].end * layout.voxels, value);
      voxels += layout.pixels * layout.voxels;
    }
    begin = end;
  }
}

template <class Voxel>
void DoMaskImage(CImage& image, CImage const& slice, double value) {
  auto const axis = StoredAxis(image);
  if (!axis) return;
  CImageAccess const sliceAccess = slice.CreateAccess(false);
  if (sliceAccess.Base() == nullptr)
    Impl::Raise(ORVA_LOCATION(c_module, c_doMask), "unable to access mask image");
  CImageAccess const access = image.CreateAccess(true);
  std::byte* const base = access.WritableBase();
  if (base == nullptr)
    Impl::Raise(ORVA_LOCATION(c_module, c_doMask), "unable to write to output image");
  StLayout const layout = Layout(*axis, image.Size());
  CheckSlice(slice, layout);
  StOutsideRuns const outside(sliceAccess, layout);
  FillOutside(reinterpret_cast<Voxel*>(base), outside, layout, Converted<Voxel>(value));
}

bool HasEntryOfType(CValueMap const& map, char const* key, CValue::EnType type) {
  CValue const* const value = map.Find(key);
  return value != nullptr && value->Type() == type;
}

} // namespace

CCylinderMask::CCylinderMask(char const* name, IObject const* parent) : CAlgorithm(name, parent) {}

CCylinderMask::~CCylinderMask() = default;

void CCylinderMask::SetCylinderParameters(CImage& image, CString axis, double s, double t,
                                          double radius) {
  CValueMap parameters;
  parameters.SetEntry("axis", CValueString(std::move(axis)));
  parameters.SetEntry("s", CValueDouble(s));
  parameters.SetEntry("t", CValueDouble(t));
  parameters.SetEntry("radius", CValueDouble(radius));
  CSeluHeaderTools::SetMetaInfo(image, c_parameters, std::move(parameters));
}

void CCylinderMask::SetCylinderParameters(CImage& image, CValueMap const& parameters) {
  if (HasEntryOfType(parameters, "s", CValue::EnType::Double) &&
      HasEntryOfType(parameters, "t", CValue::EnType::Double) &&
      HasEntryOfType(parameters, "radius", CValue::EnType::Double) &&
      HasEntryOfType(parameters, "axis", CValue::EnType::String))
    CSeluHeaderTools::SetMetaInfo(image, c_parameters, parameters);
}

bool CCylinderMask::CopyMetaInfo(CImage const& from, CImage& to) {
  CValue const* const parameters = CSeluHeaderTools::FindMetaInfo(from, c_parameters);
  if (parameters == nullptr) return false;
  CSeluHeaderTools::SetMetaInfo(to, c_parameters, *parameters);
  return true;
}

void CCylinderMask::SetCylinderSlice(CImage& image) {
  CValue const* const stored = CSeluHeaderTools::FindMetaInfo(image, c_parameters);
  if (stored == nullptr) return;
  CValueMap const& parameters = stored->Map();
  char const axis = AxisLetter(parameters.Entry("axis").String());
  CCircle const circle(parameters.Entry("s").Double(), parameters.Entry("t").Double(),
                       parameters.Entry("radius").Double());
  CSize const size = image.Size();
  CSize const extents(axis == 'X' ? size.y : size.x, axis == 'X' || axis == 'Y' ? size.z : size.y);
  CImage slice(IMAGE_BOOL, extents, CSize(0, 0, 0));
  CImageAccess access = slice.CreateAccess(true);
  std::byte* const base = access.WritableBase();
  if (base == nullptr)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCylinderMask::SetCylinderSlice"),
                "unable to write to mask image");
  for (int64 v = 0; v < extents.y; ++v) {
    StSpan const inside = circle.InsideSpan(v, extents.x);
    std::fill(base + v * extents.x + inside.begin, base + v * extents.x + inside.end, std::byte{1});
  }
  access.Release();
  CSeluHeaderTools::SetMetaInfo(image, c_slice, CValuePointer::Own(std::move(slice)));
}

void CCylinderMask::MaskImageWithMetaInfoCylinder(CImage& image, double value) {
  if (CSeluHeaderTools::FindMetaInfo(image, c_slice) == nullptr) SetCylinderSlice(image);
  CValue const* const stored = CSeluHeaderTools::FindMetaInfo(image, c_slice);
  if (stored == nullptr) return;
  CImage const* const slice = stored->Pointer<CImage>();
  if (slice == nullptr)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCylinderMask::MaskImageWithMetaInfoCylinder"),
                "unable to read mask image");
  switch (image.Type().Id()) {
  case IImage::CType::EnId::GreyF:
    return DoMaskImage<float>(image, *slice, value);
  case IImage::CType::EnId::Grey32:
    return DoMaskImage<std::uint32_t>(image, *slice, value);
  case IImage::CType::EnId::Grey16:
    return DoMaskImage<std::uint16_t>(image, *slice, value);
  case IImage::CType::EnId::Grey8:
  case IImage::CType::EnId::BinaryFg:
    return DoMaskImage<std::uint8_t>(image, *slice, value);
  default:
    CString message("Image type %1 not supported.");
    throw CException("CCylinderMask::MaskImageWithMetaInfoCylinder",
                     message.Arg(CString(image.Type().ToString())).c_str());
  }
}

} // namespace ORVA
