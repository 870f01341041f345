// The sample volumes: reproducible, and with the texture that their help promises.
#include "support/Images.h"
#include "support/SeluRun.h"

#include <SeluUtils/Cooccurrence.h>
#include <images/ImageFile.h>

#include <cstdlib>

#include <zlib.h>

namespace {

using Arguments = std::vector<std::string>;

class SeluSynth : public test::CSeluTest {
protected:
  void Make(std::string const& kind, std::string const& size, std::string const& seed,
            std::string const& file) const {
    auto const result = Selu({"synth", kind, "--size", size, "--seed", seed, "-o", file});
    EXPECT_EQ(result.code, 0) << result.error;
    EXPECT_EQ(result.out, "");
  }
  [[nodiscard]] ORVA::CImage Image(std::string const& file) const {
    return selu::ReadImage(Path(file)).ToGray();
  }
};

double Contrast(ORVA::CImage const& image, ORVA::CTriple<long> direction) {
  ORVA::CCooccurrence texture("texture", nullptr);
  ORVA::CValueMap features;
  texture.ComputeFeatures(image, &direction, &features);
  return features.Entry("Contrast").Double();
}

TEST_F(SeluSynth, SameSeedSameBytes) {
  for (std::string const kind : {"noise", "blobs", "layers"})
    for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz", "tif"}) {
      Make(kind, "20,18,16", "18446744073709551615", "a." + ending);
      Make(kind, "20,18,16", "18446744073709551615", "b." + ending);
      Make(kind, "20,18,16", "3", "c." + ending);
      EXPECT_EQ(Read("a." + ending), Read("b." + ending)) << kind << ending;
      EXPECT_NE(Read("a." + ending), Read("c." + ending)) << kind << ending;
    }
}

TEST_F(SeluSynth, EveryFormatHoldsTheSameVoxels) {
  Make("layers", "20,18,16", "3", "a.nrrd");
  auto const expected = Image("a.nrrd");
  EXPECT_EQ(expected.Size(), ORVA::CSize(20, 18, 16));
  for (std::string const ending : {"mha", "nii", "nii.gz", "tif", "tiff"}) {
    Make("layers", "20,18,16", "3", "a." + ending);
    EXPECT_EQ(Image("a." + ending), expected) << ending;
  }
  Make("layers", "20,18", "3", "flat.nrrd");
  for (std::string const ending : {"png", "mha", "nii.gz", "tif"}) {
    Make("layers", "20,18", "3", "flat." + ending);
    EXPECT_EQ(Image("flat." + ending), Image("flat.nrrd")) << ending;
  }
}

TEST_F(SeluSynth, NoiseTakesEveryGrayValueAboutEquallyOften) {
  Make("noise", "64,64,64", "5", "a.nrrd");
  std::vector<int> histogram(256);
  for (auto const value : test::Pixels<std::uint8_t>(Image("a.nrrd"))) ++histogram[value];
  double chiSquare = 0;
  for (int const count : histogram) chiSquare += (count - 1024.0) * (count - 1024.0) / 1024.0;
  EXPECT_LT(chiSquare, 255 + 6 * 22.6); // six deviations
}

// Bytes that must not change: a checksum of the voxels of a seed.
TEST_F(SeluSynth, ASeedKeepsItsVoxels) {
  struct StCase {
    std::string kind, size;
    unsigned long checksum;
  };
  for (auto const& [kind, size, checksum] :
       {StCase{"noise", "20,18,16", 0xb8c1f91cU}, StCase{"noise", "33,7", 0x9b409ef5U},
        StCase{"noise", "3,4,30", 0xe972ee70U}, StCase{"blobs", "20,18,16", 0xdd07f9d9U},
        StCase{"blobs", "33,7", 0x7b6ad4afU}, StCase{"blobs", "3,4,30", 0x3667e12dU},
        StCase{"layers", "20,18,16", 0x51da432fU}, StCase{"layers", "33,7", 0xeca08ac6U},
        StCase{"layers", "3,4,30", 0xe2b943b3U}}) {
    Make(kind, size, "5", "a.nrrd");
    auto const image = Image("a.nrrd");
    auto const pixels = test::Pixels<std::uint8_t>(image);
    EXPECT_EQ(::crc32_z(0, pixels.data(), pixels.size()), checksum) << kind << ' ' << size;
  }
}

TEST_F(SeluSynth, BlobsAreContinuous) {
  Make("blobs", "64,64,64", "5", "a.nrrd");
  auto const image = Image("a.nrrd");
  auto const pixels = test::Pixels<std::uint8_t>(image);
  double sum = 0, largest = 0;
  for (std::size_t i = 0; i + 1 < pixels.size(); ++i) {
    sum += pixels[i];
    if (i % 64 != 63) largest = std::max(largest, std::abs(pixels[i + 1] - pixels[i]) + 0.0);
  }
  EXPECT_NEAR(sum / static_cast<double>(pixels.size()), 128, 2);
  EXPECT_LT(largest, 40); // noise would have steps of 250
}

TEST_F(SeluSynth, LayersDifferByDirectionAsPromised) {
  Make("layers", "48,48,48", "5", "a.nrrd");
  auto const image = Image("a.nrrd");
  // Contrast grows with |dx + dy + dz|, whatever else the direction is.
  std::vector<std::vector<double>> contrasts(4);
  for (auto const& direction : ORVA::CCooccurrence::m_cDirections)
    contrasts[static_cast<std::size_t>(std::abs(direction.x + direction.y + direction.z))]
        .push_back(Contrast(image, direction));
  EXPECT_EQ(contrasts[0].size(), 3u);
  EXPECT_EQ(contrasts[3].size(), 1u);
  for (std::size_t k = 0; k + 1 < contrasts.size(); ++k)
    EXPECT_LT(2 * *std::max_element(contrasts[k].begin(), contrasts[k].end()),
              *std::min_element(contrasts[k + 1].begin(), contrasts[k + 1].end()))
        << k;
}

TEST_F(SeluSynth, FlatLayersDifferByDirectionAsPromised) {
  Make("layers", "128,128", "5", "a.png");
  auto const image = Image("a.png");
  double const inside = Contrast(image, {1, -1, 0}), across = Contrast(image, {1, 1, 0});
  for (auto const& direction : {ORVA::CTriple<long>(1, 0, 0), ORVA::CTriple<long>(0, 1, 0)}) {
    EXPECT_LT(2 * inside, Contrast(image, direction));
    EXPECT_LT(2 * Contrast(image, direction), across);
  }
}

TEST_F(SeluSynth, TinyAndFlatSizesWork) {
  for (std::string const kind : {"noise", "blobs", "layers"})
    for (std::string const size : {"1,1", "1,1,1", "1,7,3", "300,1,1", "2,2,1"}) {
      Make(kind, size, "1", "a.nrrd");
      EXPECT_GT(Read("a.nrrd").size(), 1u) << kind << size;
    }
}

TEST_F(SeluSynth, SizesBeyondMemoryOrTheDiskAreRefused) {
  for (std::string const kind : {"noise", "blobs", "layers"})
    for (std::string const size :
         {"1000000,1000000,1000000", "9223372036854775807,9223372036854775807,9223372036854775807",
          "3000000000,3000000000"})
      for (std::string const file : {"a.nrrd", "a.nii.gz"})
        ExpectFailure({"synth", kind, "--size", size, "--seed", "1", "-o", file},
                      file == "a.nii.gz" ? "more than this machine's memory" : "left on its disk");
  EXPECT_TRUE(Files().empty());
}

} // namespace
