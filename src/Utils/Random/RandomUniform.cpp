#include <SeluUtils/Random/RandomUniform.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace ORVA {

namespace {

// Bits and values share the array. It is filled in pieces that stay in the cache between the two
// steps; each is a multiple of 8 bytes, so the bits are those of one request for the whole.
constexpr std::size_t c_pieceBytes = 16 * 1024;

// The word of an element: its first four bytes, lowest first.
template <class T>
std::uint32_t WordAt(T const& element) {
  std::uint32_t word;
  std::memcpy(&word, &element, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
  return word;
}

template <class T>
void Fill(T* out, std::size_t n, double start, double width) {
  constexpr std::size_t piece = c_pieceBytes / sizeof(T);
  while (n > 0) {
    std::size_t const count = std::min(n, piece);
    CRandom::Obj().Rand(out, count * sizeof(T));
    for (std::size_t i = 0; i < count; ++i)
      out[i] = static_cast<T>(width * (static_cast<double>(WordAt(out[i])) * 0x1p-32) + start);
    out += count;
    n -= count;
  }
}

} // namespace

CRandomUniform::CRandomUniform(double start, double end) : m_fStart(start), m_fEnd(end) {
  if (end < start)
    Impl::Raise(
        ORVA_LOCATION("src/Utils/Random/RandomUniform", "ORVA::CRandomUniform::CRandomUniform")
            .AtLine(47),
        CString("m_fEnd=%1 is smaller than m_fStart=%2.").Arg(end).Arg(start));
}

void CRandomUniform::operator()(double* out, std::size_t n) const {
  Fill(out, n, m_fStart, m_fEnd - m_fStart);
}

void CRandomUniform::operator()(float* out, std::size_t n) const {
  Fill(out, n, m_fStart, m_fEnd - m_fStart);
}

} // namespace ORVA
