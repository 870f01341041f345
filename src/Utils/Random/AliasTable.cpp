#include <SeluUtils/Random/AliasTable.h>

#include "Utils/Random/Parameters.h"

#include <algorithm>
#include <string>

namespace ORVA {

namespace {

constexpr auto c_location =
    ORVA_LOCATION("src/Utils/Random/AliasTable", "ORVA::CAliasTable::CAliasTable");

void CheckWeights(std::span<double const> weights) {
  if (weights.empty()) Impl::RaiseBadParam(c_location, "There is no weight.");
  for (std::size_t i = 0; i < weights.size(); ++i)
    if (!(std::isfinite(weights[i]) && weights[i] >= 0))
      Impl::RaiseBadParam(c_location, CString("Weight %1 has to be finite and at least 0, not %2.")
                                          .Arg(CString(std::to_string(i)))
                                          .Arg(weights[i]));
}

// The weights so scaled that their mean is 1.
std::vector<double> Shares(std::span<double const> weights) {
  double const greatest = *std::ranges::max_element(weights);
  if (greatest == 0) Impl::RaiseBadParam(c_location, "All weights are 0.");
  double sum = 0; // of weights by the greatest: at most their number
  for (double const weight : weights) sum += weight / greatest;
  double const perEntry = static_cast<double>(weights.size()) / sum;
  std::vector<double> shares;
  shares.reserve(weights.size());
  for (double const weight : weights) shares.push_back(weight / greatest * perEntry);
  return shares;
}

} // namespace

// Entries that are less than full are filled up by one that is more than full, which goes on with
// what is left of it.
CAliasTable::CAliasTable(std::span<double const> weights) {
  CheckWeights(weights);
  std::vector<double> shares = Shares(weights);
  m_Entries.resize(shares.size());
  auto const heaviest = static_cast<std::size_t>(std::ranges::max_element(shares) - shares.begin());
  // A number below 1 times 2^64 is a number of 64 bits.
  auto const place = [](double share) { return static_cast<uint64>(share * 0x1p64); };
  std::vector<std::size_t> light, heavy;
  for (std::size_t i = 0; i < shares.size(); ++i) (shares[i] < 1 ? light : heavy).push_back(i);
  while (!light.empty() && !heavy.empty()) {
    std::size_t const filled = light.back(), by = heavy.back();
    light.pop_back();
    m_Entries[filled] = {place(shares[filled]), by};
    shares[by] -= 1 - shares[filled];
    if (shares[by] >= 1) continue;
    heavy.pop_back();
    light.push_back(by);
  }
  // What is left is full but for rounding; an entry of weight 0 can only be left by rounding, too.
  for (std::size_t const i : heavy) m_Entries[i] = {0, i};
  for (std::size_t const i : light) m_Entries[i] = {0, weights[i] > 0 ? i : heaviest};
}

} // namespace ORVA
