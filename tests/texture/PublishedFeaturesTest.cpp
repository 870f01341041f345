// Texture features against published values: the IBSI phantom in its six aggregations, and three
// regions of the PyRadiomics baseline by three recipes.

#include "support/Images.h"

#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

std::string const c_data = SELU_SOURCE_DIR "/tests/texture/data/";

// The lines of a table without its head, as fields.
std::vector<std::vector<std::string>> ReadTable(std::string const& name) {
  std::ifstream file(c_data + name);
  EXPECT_TRUE(file) << name;
  std::vector<std::vector<std::string>> lines;
  for (std::string line; std::getline(file, line);) {
    std::istringstream text(line);
    lines.emplace_back();
    for (std::string field; std::getline(text, field, ',');) lines.back().push_back(field);
  }
  if (!lines.empty()) lines.erase(lines.begin());
  return lines;
}

// The digital phantom of IBSI and its region, slice by slice.
std::vector<std::uint8_t> const c_phantom = {
    1, 4, 4, 1, 1, 1, 4, 6, 1, 1, 4, 1, 6, 4, 1, 4, 4, 6, 4, 1, //
    1, 4, 4, 1, 1, 1, 1, 6, 1, 1, 1, 1, 3, 1, 1, 4, 4, 6, 1, 1, //
    1, 4, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 9, 1, 1, 1, 1, 6, 1, 1, //
    1, 4, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 6, 1, 1};
std::vector<std::uint8_t> const c_phantomMask = {
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, //
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, //
    1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, //
    1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

CLevelImage Phantom() {
  auto const image = test::MakeGrey8(CSize(5, 4, 4), c_phantom);
  auto const mask = test::MakeGrey8(CSize(5, 4, 4), c_phantomMask);
  return CQuantizer::BinWidth(1).Quantize(image, {&mask, 1});
}

struct StRegion {
  CImage values, mask;
};

StRegion ReadRegion(std::string const& name) {
  std::ifstream file(c_data + name + ".txt");
  EXPECT_TRUE(file) << name;
  int64 nx = 0, ny = 0, nz = 0;
  file >> nx >> ny >> nz >> std::ws;
  std::vector<std::int16_t> values(static_cast<std::size_t>(nx * ny * nz));
  std::vector<std::uint8_t> mask(values.size());
  for (std::string line; std::getline(file, line);) {
    std::istringstream text(line);
    int64 z = 0, y = 0, x = 0;
    text >> z >> y >> x;
    auto place = static_cast<std::size_t>((z * ny + y) * nx + x);
    for (std::int16_t value = 0; text >> value; ++place) {
      values[place] = value;
      mask[place] = 1;
    }
  }
  CSize const size(nx, ny, nz);
  return {test::MakeImage(IMAGE_SIGNED_16, size, values), test::MakeGrey8(size, mask)};
}

} // namespace

TEST(PublishedFeatures, IbsiPhantomHasTheLevelsOfTheManual) {
  auto const levels = Phantom();
  EXPECT_EQ(levels.Levels(), 6);
  EXPECT_EQ(levels.At({2, 0, 0}), 4);
  EXPECT_EQ(levels.At({2, 2, 2}), 0) << "off the mask";
}

// To half a unit of the third significant digit, which is the last one published; and to 1e-12 of
// the value of the formulas.
TEST(PublishedFeatures, IbsiPhantomInSixAggregations) {
  auto const levels = Phantom();
  std::map<std::string, std::vector<double>> values;
  for (EnAggregation const way : c_aggregations) {
    CAggregatedTexture texture(way, levels.Levels());
    texture.Count(levels);
    values[std::string(AggregationName(way))] = texture.Values();
  }
  auto const table = ReadTable("ibsi_phantom_features.csv");
  ASSERT_EQ(table.size(), 150u);
  for (auto const& line : table) {
    auto const feature = FeatureFromName(line[1]);
    ASSERT_TRUE(feature) << line[1];
    double const value = values.at(line[0]).at(static_cast<std::size_t>(*feature));
    double const published = std::stod(line[2]), computed = std::stod(line[3]);
    double const unit = std::pow(10, std::floor(std::log10(std::abs(published))) - 2);
    EXPECT_NEAR(value, published, unit / 2 * (1 + 1e-9)) << line[0] << ' ' << line[1];
    EXPECT_NEAR(value, computed, 1e-12 * std::max(1.0, std::abs(computed)))
        << line[0] << ' ' << line[1];
  }
}

TEST(PublishedFeatures, PyRadiomicsBaselineOfThreeRegions) {
  std::vector<EnTextureFeature> wanted(c_ibsiFeatures.begin(), c_ibsiFeatures.end());
  wanted.push_back(EnTextureFeature::MaximalCorrelation);
  std::map<std::string, std::vector<double>> values;
  for (std::string const name : {"brain1", "brain2", "breast1"}) {
    auto const region = ReadRegion(name);
    auto const measure = [&](CQuantizer const& quantizer, EnAggregation way) {
      auto const levels = quantizer.Quantize(region.values, {&region.mask, 1});
      CAggregatedTexture texture(way, levels.Levels(), CTextureFeatures(wanted));
      texture.Count(levels);
      return texture.Values();
    };
    auto const width = CQuantizer::BinWidthAtMultiple(25);
    values[name + "/"] = measure(width, EnAggregation::Average3D);
    values[name + "/FBN"] = measure(CQuantizer::BinCount(64), EnAggregation::Average3D);
    values[name + "/2d"] = measure(width, EnAggregation::Average25D);
  }
  auto const table = ReadTable("pyradiomics_features.csv");
  ASSERT_EQ(table.size(), 216u);
  for (auto const& line : table) {
    auto const feature = FeatureFromName(line[2]);
    ASSERT_TRUE(feature) << line[2];
    auto const place = std::ranges::find(wanted, *feature) - wanted.begin();
    double const value = values.at(line[0] + "/" + line[1]).at(static_cast<std::size_t>(place));
    double const published = std::stod(line[3]);
    EXPECT_NEAR(value, published, 1e-10 * std::abs(published))
        << line[0] << ' ' << line[1] << ' ' << line[2];
  }
}

// Haralick, Shanmugam and Dinstein, figure 3: the (symmetric) matrix at 0 degrees, by levels 1
// .. 4.
TEST(PublishedFeatures, HaralickFigure3) {
  auto const image = test::MakeGrey8(CSize(4, 4), {1, 1, 2, 2, 1, 1, 2, 2, 1, 3, 3, 3, 3, 3, 4, 4});
  CPairCounter pairs(4);
  pairs.Count(CLevelImage(image, 4), {1, 0, 0});
  pairs.Symmetrize();
  EXPECT_EQ(pairs.ToDense(), (std::vector<uint64>{4, 2, 1, 0, 2, 4, 0, 0, 1, 0, 6, 1, 0, 0, 1, 2}));
}
