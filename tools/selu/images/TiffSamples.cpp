#include "images/TiffSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace selu {
namespace {

using Word = std::uint64_t;

constexpr std::uint16_t c_unsigned = 1, c_signed = 2, c_float = 3, c_untyped = 4;

// Bits that follow one another from each byte's highest on.
Word PackedBits(std::span<std::byte const> row, std::size_t first, unsigned bits) {
  Word value = 0;
  for (std::size_t bit = first; bit < first + bits;) {
    auto const left = static_cast<unsigned>(8 - bit % 8); // of this byte
    unsigned const take = std::min(left, static_cast<unsigned>(first + bits - bit));
    auto const byte = std::to_integer<Word>(row[bit / 8]);
    value = value << take | ((byte >> (left - take)) & ((Word{1} << take) - 1));
    bit += take;
  }
  return value;
}

Word WholeBytes(std::span<std::byte const> row, std::size_t first, unsigned bytes, bool bigEndian) {
  Word value = 0;
  for (unsigned i = 0; i < bytes; ++i)
    value = value << 8 | std::to_integer<Word>(row[first + (bigEndian ? i : bytes - 1 - i)]);
  return value;
}

// A floating-point number with a sign, so many bits of exponent, and the rest for the fraction; the
// greatest exponent stands for infinity and NaN.
float SmallFloat(Word bits, unsigned exponentBits, unsigned fractionBits) {
  Word const fraction = bits & ((Word{1} << fractionBits) - 1);
  Word const exponent = bits >> fractionBits & ((Word{1} << exponentBits) - 1);
  bool const negative = (bits >> (fractionBits + exponentBits) & 1) != 0;
  int const bias = (1 << (exponentBits - 1)) - 1;
  auto const digits = static_cast<double>(fraction);
  double value = 0;
  if (exponent == (Word{1} << exponentBits) - 1)
    value = fraction == 0 ? INFINITY : NAN;
  else if (exponent == 0)
    value = std::ldexp(digits, 1 - bias - static_cast<int>(fractionBits));
  else
    value = std::ldexp(digits + static_cast<double>(Word{1} << fractionBits),
                       static_cast<int>(exponent) - bias - static_cast<int>(fractionBits));
  return static_cast<float>(negative ? -value : value);
}

bool IsStoredAsItIs(StTiffSamples const& how) {
  return how.bits == 8 || (how.bits == 16 && how.kind != c_float) || how.bits == 32 ||
         how.bits == 64;
}

Word PixelBits(StTiffSamples const& how, Word bits) {
  if (how.kind == c_float)
    return std::bit_cast<std::uint32_t>(how.bits == 16 ? SmallFloat(bits, 5, 10)
                                                       : SmallFloat(bits, 7, 16));
  // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): there are 1 to 64 bits
  bool const negative = how.kind == c_signed && (bits >> (how.bits - 1) & 1) != 0;
  return negative && how.bits < 64 ? bits | ~Word{0} << how.bits : bits;
}

} // namespace

std::optional<EnPixel> PixelOf(StTiffSamples const& how) noexcept {
  if (how.kind == c_float) {
    if (how.bits == 64) return EnPixel::Double;
    bool const isRead = how.bits == 16 || how.bits == 24 || how.bits == 32;
    return isRead ? std::optional(EnPixel::Float) : std::nullopt;
  }
  if (how.bits < 1 || how.bits > 64) return std::nullopt;
  if (how.kind == c_unsigned || how.kind == c_untyped)
    return how.bits <= 8    ? EnPixel::UInt8
           : how.bits <= 16 ? EnPixel::UInt16
           : how.bits <= 32 ? EnPixel::UInt32
                            : EnPixel::UInt64;
  if (how.kind == c_signed)
    return how.bits <= 8    ? EnPixel::Int8
           : how.bits <= 16 ? EnPixel::Int16
           : how.bits <= 32 ? EnPixel::Int32
                            : EnPixel::Int64;
  return std::nullopt;
}

void UnpackSamples(StTiffSamples const& how, std::span<std::byte const> row,
                   std::span<std::byte> out) {
  if (IsStoredAsItIs(how)) { // libtiff has put the bytes into the machine's order
    std::memcpy(out.data(), row.data(), out.size());
    return;
  }
  std::size_t const bytes = PixelBytes(*PixelOf(how));
  for (std::size_t i = 0; i < out.size() / bytes; ++i) {
    Word const bits = how.bits % 8 == 0
                          ? WholeBytes(row, i * (how.bits / 8), how.bits / 8, how.bigEndian)
                          : PackedBits(row, i * how.bits, how.bits);
    Word const pixel = PixelBits(how, bits);
    for (std::size_t k = 0; k < bytes; ++k)
      out[i * bytes + (std::endian::native == std::endian::little ? k : bytes - 1 - k)] =
          static_cast<std::byte>(pixel >> (8 * k) & 255);
  }
}

} // namespace selu
