#include "images/Quantize.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace selu {
namespace {

using ORVA::int64;

template <class T>
constexpr bool IsNaN(T value) {
  if constexpr (std::is_floating_point_v<T>) return std::isnan(value);
  return false;
}

template <class T>
std::string ValueText(T value) {
  if constexpr (std::is_floating_point_v<T>)
    return Shortest(value);
  else
    return std::to_string(value);
}

// Level of a value under a range; the comparison in this form sends NaN to 0.
int MappedLevel(double value, StRange const& range) {
  if (!(value > range.low)) return 0;
  if (value >= range.high) return 255;
  return static_cast<int>(std::floor((value - range.low) / (range.high - range.low) * 255 + 0.5));
}

// The highest byte, as the co-occurrence takes it.
template <class T>
int OwnLevel(T value) {
  return static_cast<int>(static_cast<std::uint64_t>(value) >> (sizeof(T) * 8 - 8));
}

template <class T>
using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;

// Sorts by one byte after the other, lowest first: linear in the number of keys.
template <class Key>
void RadixSort(std::vector<Key>& keys) {
  std::vector<Key> other(keys.size());
  for (unsigned shift = 0; shift < sizeof(Key) * 8; shift += 8) {
    std::array<std::size_t, 257> start{};
    for (Key const key : keys) ++start[((key >> shift) & 255) + 1];
    if (std::any_of(start.begin(), start.end(),
                    [&](std::size_t count) { return count == keys.size(); }))
      continue; // all keys have the same byte here
    for (std::size_t i = 1; i < start.size(); ++i) start[i] += start[i - 1];
    for (Key const key : keys) other[start[(key >> shift) & 255]++] = key;
    keys.swap(other);
  }
}

// Different values, NaN left out.
template <class T>
int64 CountDistinct(std::span<T const> pixels) {
  if constexpr (sizeof(T) <= 2) {
    std::vector<bool> seen(std::size_t{1} << (sizeof(T) * 8));
    for (T const value : pixels) seen[static_cast<std::make_unsigned_t<T>>(value)] = true;
    return std::count(seen.begin(), seen.end(), true);
  } else {
    std::vector<Bits<T>> keys;
    keys.reserve(pixels.size());
    // Adding 0 turns a negative zero into the zero that it equals.
    for (T const value : pixels)
      if (!IsNaN(value)) keys.push_back(std::bit_cast<Bits<T>>(static_cast<T>(value + T{0})));
    RadixSort(keys);
    return std::unique(keys.begin(), keys.end()) - keys.begin();
  }
}

// Least and greatest value on each level tell which levels are used and which hold more than one.
template <class T>
struct StLevelUse {
  std::array<T, 256> low, high;
  std::array<bool, 256> used{};

  void Add(int level, T value) {
    auto const i = static_cast<std::size_t>(level);
    if (!used[i]) {
      used[i] = true;
      low[i] = high[i] = value;
    } else {
      low[i] = std::min(low[i], value);
      high[i] = std::max(high[i], value);
    }
  }
};

// Least and greatest value, NaN left out.
template <class T>
struct StValues {
  bool any = false;
  T low{}, high{};
  int64 notNumbers = 0;

  void Add(std::span<T const> pixels) {
    for (T const value : pixels) {
      if (IsNaN(value)) {
        ++notNumbers;
      } else if (!any) {
        any = true;
        low = high = value;
      } else {
        low = std::min(low, value);
        high = std::max(high, value);
      }
    }
  }
};

template <class T>
void MeasureRange(std::span<T const> pixels, StLevels& result) {
  StValues<T> values;
  values.Add(pixels);
  result.voxels = static_cast<int64>(pixels.size());
  result.notNumbers = values.notNumbers;
  if (values.any) result.low = ValueText(values.low), result.high = ValueText(values.high);
}

[[noreturn]] void RaiseNeedsRange(EnPixel pixel, std::filesystem::path const& path,
                                  std::string const& low, std::string const& high) {
  throw CAppError(Quoted(path) + " has " + PixelText(pixel) +
                  " pixels, which need --range LO,HI to map them to gray levels" +
                  (low.empty() ? std::string(" (all its values are NaN)")
                               : " (its values range from " + low + " to " + high + ")"));
}

template <class T>
void MeasureUse(std::span<T const> pixels, std::optional<StRange> const& range, StLevels& result) {
  StLevelUse<T> use;
  result.quantized = true;
  for (T const value : pixels) {
    int level = 0;
    bool survives = false;
    if (range) {
      auto const number = static_cast<double>(value);
      level = MappedLevel(number, *range);
      survives = number >= range->low && number <= range->high;
    } else if constexpr (std::is_unsigned_v<T>) {
      level = OwnLevel(value);
      survives = level > 0 || value == 0;
    }
    result.survivors += survives;
    use.Add(level, value);
  }
  for (std::size_t level = 0; level < use.used.size(); ++level) {
    result.levels += use.used[level];
    result.merged = result.merged || (use.used[level] && use.low[level] < use.high[level]);
  }
}

} // namespace

StRange ParseRange(std::string const& text) {
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() != 2)
    throw CUsageError("--range needs two numbers LO,HI, not \"" + text + "\"");
  StRange const range{(*numbers)[0], (*numbers)[1]};
  if (!std::isfinite(range.low) || !std::isfinite(range.high) ||
      !std::isfinite(range.high - range.low))
    throw CUsageError("--range needs finite numbers, not \"" + text + "\"");
  if (!(range.low < range.high))
    throw CUsageError("--range needs LO below HI, not \"" + text + "\"");
  return range;
}

StLevels MeasureLevelsOnly(CRawImage const& image, std::optional<StRange> const& range) {
  StLevels result;
  VisitPixels(image, [&](auto pixels) {
    MeasureRange(pixels, result);
    if (range || HasOwnGrayLevels(image.Pixel())) MeasureUse(pixels, range, result);
  });
  return result;
}

StLevels MeasureLevels(CRawImage const& image, std::optional<StRange> const& range) {
  StLevels result = MeasureLevelsOnly(image, range);
  result.distinct = VisitPixels(image, [](auto pixels) { return CountDistinct(pixels); });
  return result;
}

ORVA::CImage ToGray(CRawImage const& image, std::optional<StRange> const& range,
                    std::filesystem::path const& path) {
  if (!range && HasOwnGrayLevels(image.Pixel())) return image.ToGray();
  if (!range) {
    StLevels values;
    VisitPixels(image, [&](auto pixels) { MeasureRange(pixels, values); });
    RaiseNeedsRange(image.Pixel(), path, values.low, values.high);
  }
  ORVA::CImage gray(ORVA::IMAGE_GREY_8, image.Size());
  auto const access = gray.CreateAccess(true);
  auto* out = reinterpret_cast<std::uint8_t*>(access.WritableBase());
  VisitPixels(image, [&](auto pixels) {
    for (auto const value : pixels)
      *out++ = static_cast<std::uint8_t>(MappedLevel(static_cast<double>(value), *range));
  });
  return gray;
}

void RequireRange(CVolumeSource& image, std::optional<StRange> const& range) {
  if (range || HasOwnGrayLevels(image.Pixel())) return;
  VisitType(image.Pixel(), [&]<class T>(T) {
    StValues<T> values;
    for (StSlab const& slab : SlabsOf(image.Size(), image.BytesPerSlice())) {
      auto const pixels = image.Slab(slab.first, slab.last);
      VisitPixels(pixels, [&]<class U>(std::span<U const> some) {
        if constexpr (std::is_same_v<T, U>) values.Add(some);
      });
    }
    RaiseNeedsRange(image.Pixel(), image.Path(), values.any ? ValueText(values.low) : "",
                    values.any ? ValueText(values.high) : "");
  });
}

CCollapseMeter::CCollapseMeter(EnPixel pixel, std::optional<StRange> const& range)
    : m_Bits(PixelBytes(pixel) * 8),
      m_IsNeeded(!range && (pixel == EnPixel::UInt16 || pixel == EnPixel::UInt32)) {}

void CCollapseMeter::Add(CRawImage const& image) {
  if (!m_IsNeeded) return;
  VisitPixels(image, [&]<class T>(std::span<T const> pixels) {
    if constexpr (std::is_unsigned_v<T> && sizeof(T) <= 4)
      for (T const value : pixels) {
        auto& level = m_Levels[static_cast<std::size_t>(OwnLevel(value))];
        level.low = std::min(level.low, std::uint32_t{value});
        level.high = std::max(level.high, std::uint32_t{value});
      }
  });
}

std::string CCollapseMeter::Warning(std::filesystem::path const& path) const {
  constexpr int few = 32;
  int levels = 0;
  bool isMerged = false;
  StLevel all;
  for (StLevel const& level : m_Levels) {
    if (level.low > level.high) continue;
    ++levels;
    isMerged = isMerged || level.low < level.high;
    all.low = std::min(all.low, level.low);
    all.high = std::max(all.high, level.high);
  }
  if (!isMerged || levels >= few) return {};
  return Quoted(path) + " keeps only " + std::to_string(levels) +
         (levels == 1 ? " gray level" : " gray levels") + " of its " + std::to_string(m_Bits) +
         " bits, since the highest byte counts: give --range " + std::to_string(all.low) + "," +
         std::to_string(all.high) + " to spread its values over all 256";
}

std::string CollapseWarning(CRawImage const& image, std::optional<StRange> const& range,
                            std::filesystem::path const& path) {
  CCollapseMeter collapse(image.Pixel(), range);
  collapse.Add(image);
  return collapse.Warning(path);
}

} // namespace selu
