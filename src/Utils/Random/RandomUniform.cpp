#include <SeluUtils/Random/RandomUniform.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace ORVA {

namespace {

// Bits and values share the array. It is filled in pieces that stay in the cache between the two
// steps; each is a multiple of 8 bytes, so the bits are those of one request for the whole.
constexpr std::size_t c_pieceBytes = 16 * 1024;

// The word of an element: its first four bytes, lowest first.
template <class T>
uint64 WordAt(T const& element) {
  using Bits = std::conditional_t<sizeof(T) == 8, uint64, std::uint32_t>;
  Bits bits = std::bit_cast<Bits>(element);
  if constexpr (std::endian::native == std::endian::big)
    bits = sizeof(T) == 8 ? __builtin_bswap64(bits) : __builtin_bswap32(bits);
  return bits & 0xFFFFFFFFu;
}

// Exact, and unlike a conversion two or more at a time on every processor: the word becomes the
// lowest bits of a number just above 2^52.
double ToDouble(uint64 word) {
  return std::bit_cast<double>(word | std::bit_cast<uint64>(0x1p52)) - 0x1p52;
}

template <class T>
void FillUniform(T* out, std::size_t n, double start, double width) {
  constexpr std::size_t piece = c_pieceBytes / sizeof(T);
  while (n > 0) {
    std::size_t const count = std::min(n, piece);
    CRandom::Obj().Rand(out, count * sizeof(T));
    for (std::size_t i = 0; i < count; ++i)
      out[i] = static_cast<T>(width * (ToDouble(WordAt(out[i])) * 0x1p-32) + start);
    out += count;
    n -= count;
  }
}

} // namespace

CRandomUniform::CRandomUniform(double start, double end) : m_Start(start), m_End(end) {
  if (end < start)
    Impl::Raise(
        ORVA_LOCATION("src/Utils/Random/RandomUniform", "ORVA::CRandomUniform::CRandomUniform")
            .AtLine(47),
        CString("m_fEnd=%1 is smaller than m_fStart=%2.").Arg(end).Arg(start));
}

void CRandomUniform::operator()(double* out, std::size_t n) const {
  FillUniform(out, n, m_Start, m_End - m_Start);
}

void CRandomUniform::operator()(float* out, std::size_t n) const {
  FillUniform(out, n, m_Start, m_End - m_Start);
}

} // namespace ORVA
