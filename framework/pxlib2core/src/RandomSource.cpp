#include <pxlib2core/Exception.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/ReplaySource.h>
#include <pxlib2core/String.h>

#include "Words.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace ORVA {

static_assert(RandomSource<CRandomSource> && RandomSource<CReplaySource> &&
              RandomSource<CSourceReference> && RandomSource<std::mt19937_64>);
static_assert(!RandomSource<std::mt19937>, "its words have 32 bits");

namespace {

constexpr std::string_view c_name = "xoshiro256++";
constexpr std::size_t c_digits = 16;
constexpr std::string_view c_hex = "0123456789abcdef";

// The words of a saved state; whether the text is one.
bool Parse(std::string_view saved, uint64 (&state)[4]) {
  if (saved.size() != c_name.size() + std::size(state) * (1 + c_digits) ||
      saved.substr(0, c_name.size()) != c_name)
    return false;
  saved.remove_prefix(c_name.size());
  uint64 any = 0;
  for (uint64& word : state) {
    if (saved[0] != ' ') return false;
    word = 0;
    for (char const digit : saved.substr(1, c_digits)) {
      std::size_t const value = c_hex.find(digit);
      if (value == std::string_view::npos) return false;
      word = word << 4 | value;
    }
    any |= word;
    saved.remove_prefix(1 + c_digits);
  }
  return any != 0; // from all zeros no other word would ever come
}

[[noreturn]] void RaiseBadState(std::string_view saved) {
  constexpr std::size_t longest = 100;
  CString const shown(std::string(saved.substr(0, longest)) +
                      (saved.size() > longest ? "..." : ""));
  Impl::RaiseBadParam(
      ORVA_LOCATION("framework/pxlib2core/RandomSource", "ORVA::CRandomSource::Restore"),
      CString("\"%1\" is no saved state: that is \"xoshiro256++\" and four words of 16 lower-case "
              "hexadecimal digits, not all 0, with a blank before each.")
          .Arg(shown));
}

} // namespace

CRandomSource::CRandomSource() {
  std::random_device device;
  for (uint64& word : m_State) word = uint64{device()} << 32 | device();
  m_State[0] |= 1; // never all zeros
}

// Stream 0 fills the state as the shared source does, by four successive words of the mixer. For
// others the first two words give the first sum back and the last two the second; the difference of
// the sums gives the stream's number back. So no two pairs of seed and stream share a state.
void CRandomSource::Seed(uint64 seed, uint64 stream) noexcept {
  uint64 const hash = Impl::Mix(stream);
  Impl::CMixer first(seed + hash);
  Impl::CMixer second(seed + 2 * Impl::c_mixerStep + hash + Impl::Mix(hash));
  m_State[0] = first.Next();
  m_State[1] = first.Next();
  m_State[2] = second.Next();
  m_State[3] = second.Next();
}

void CRandomSource::Jump() noexcept {
  // The coefficients of x^(2^128) modulo the characteristic polynomial of the step, as published
  // with the generator.
  constexpr uint64 polynomial[] = {0x180EC6D33CFD0ABAu, 0xD5A61266F0C9392Cu, 0xA9582618E03FC9AAu,
                                   0x39ABDC4529B1661Cu};
  uint64 sum[4] = {};
  for (uint64 const coefficients : polynomial)
    for (int bit = 0; bit < 64; ++bit) {
      if ((coefficients >> bit & 1) != 0)
        for (std::size_t i = 0; i < std::size(sum); ++i) sum[i] ^= m_State[i];
      static_cast<void>(Rand64());
    }
  std::ranges::copy(sum, m_State);
}

void CRandomSource::Rand(void* buffer, std::size_t bytes) {
  if (bytes == 0) return;
  if (buffer == nullptr)
    Impl::RaiseBadParam(
        ORVA_LOCATION("framework/pxlib2core/RandomSource", "ORVA::CRandomSource::Rand"),
        "buffer is null");
  Impl::FillBytes(buffer, bytes, m_State);
}

std::string CRandomSource::Save() const {
  std::string text(c_name);
  for (uint64 const word : m_State) {
    text += ' ';
    for (int shift = 60; shift >= 0; shift -= 4) text += c_hex[word >> shift & 15];
  }
  return text;
}

void CRandomSource::Restore(std::string_view saved) {
  uint64 state[4];
  if (!Parse(saved, state)) RaiseBadState(saved);
  std::ranges::copy(state, m_State);
}

void CReplaySource::RaiseNoWord() const {
  Impl::Raise(
      ORVA_LOCATION("framework/pxlib2core/RandomSource", "ORVA::CReplaySource::operator ()"),
      CString("All %1 words have been drawn.").Arg(CString(std::to_string(m_Words.size()))));
}

} // namespace ORVA
