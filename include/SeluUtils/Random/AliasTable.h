// Choosing one of many things, each with a weight of its own, in constant time.
//
//   #include <vector>
//   CAliasTable const phase(std::vector{0.2, 0.5, 0.3});
//   CRandomSource source(42);
//   std::size_t const index = phase(source);  // 0, 1 or 2
//   std::vector<std::size_t> indices(1000);
//   phase.Fill(indices, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Int128.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <span>
#include <vector>

namespace ORVA {

/// The alias method: A. J. Walker, "An Efficient Method for Generating Discrete Random Variables
/// with General Distributions", ACM Transactions on Mathematical Software 3 (1977) 253-256, its
/// table made as by M. D. Vose, "A Linear Algorithm for Generating Random Numbers with a Given
/// Distribution", IEEE Transactions on Software Engineering 17 (1991) 972-975. One word per draw,
/// O(n) to make, 16 bytes an entry. Probabilities are right within 2^-50 or so of their greatest; a
/// weight of 0 is never drawn.
class SELUUTILS_EXPORT CAliasTable {
public:
  /// Weights of any sum. Throws CExBadParam unless there is one, all are finite and at least 0, and
  /// one is positive.
  explicit CAliasTable(std::span<double const> weights);

  /// An index, drawn from the shared source.
  std::size_t operator()() const {
    Impl::CSharedSource shared;
    return (*this)(shared);
  }
  /// An index, drawn from the given source.
  template <RandomSource Source>
  std::size_t operator()(Source& source) const {
    // The word's product with the number of entries: its high half is the entry, its low half a
    // uniform place in it.
    Impl::uint128 const product = Impl::uint128{source()} * m_Entries.size();
    auto const index = static_cast<std::size_t>(product >> 64);
    StEntry const& entry = m_Entries[index];
    // By a mask: no one could foretell the branch.
    std::size_t const mask = static_cast<uint64>(product) < entry.own ? 0 : ~std::size_t{0};
    return index ^ ((index ^ entry.alias) & mask);
  }
  /// Fills an array by draws from the source, one after the other.
  template <RandomSource Source>
  void Fill(std::span<std::size_t> out, Source& source) const {
    Impl::FillInOrder(out, source, [&own = *this](auto& words) { return own(words); });
  }

  /// The number of weights.
  [[nodiscard]] std::size_t Size() const noexcept { return m_Entries.size(); }

private:
  struct StEntry {
    uint64 own;        // places below this one are the entry's own,
    std::size_t alias; // the others are this one's: itself, where all are its own
  };

  std::vector<StEntry> m_Entries;
};

} // namespace ORVA
