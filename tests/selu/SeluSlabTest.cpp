// Images that are read and written slab by slab: the same results to the last bit, in little
// memory.
#include "support/Random.h"
#include "support/SeluRun.h"

#include <images/SlabWriter.h>
#include <images/VolumeSource.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

using Arguments = std::vector<std::string>;
using ORVA::CSize;
using ORVA::int64;

// SELU_SLAB_BYTES for the commands and the classes of this process.
class CSlabBytes {
public:
  explicit CSlabBytes(std::string const& bytes) { ::setenv("SELU_SLAB_BYTES", bytes.c_str(), 1); }
  CSlabBytes(CSlabBytes const&) = delete;
  CSlabBytes& operator=(CSlabBytes const&) = delete;
  ~CSlabBytes() { ::unsetenv("SELU_SLAB_BYTES"); }
};

class SeluSlab : public test::CSeluTest {
protected:
  // What commands print and write, as whole images and in slabs of this size.
  void ExpectSame(Arguments const& arguments, std::vector<std::string> const& files,
                  std::string const& slabBytes) const {
    SCOPED_TRACE(testing::PrintToString(arguments) + " " + slabBytes);
    auto const whole = Selu(arguments);
    ASSERT_EQ(whole.code, 0) << whole.error;
    std::vector<std::string> bytes;
    for (auto const& file : files) {
      bytes.push_back(Read(file));
      EXPECT_FALSE(bytes.back().empty()) << file;
      std::filesystem::remove(Path(file));
    }
    CSlabBytes const small(slabBytes);
    auto const slabs = Selu(arguments);
    EXPECT_EQ(slabs.code, 0) << slabs.error;
    EXPECT_EQ(slabs.out, whole.out);
    EXPECT_EQ(slabs.error, whole.error);
    for (std::size_t k = 0; k < files.size(); ++k)
      EXPECT_TRUE(Read(files[k]) == bytes[k]) << files[k];
  }

  template <class T>
  void WriteRandom(std::string const& name, std::string const& type, std::vector<long> const& sizes,
                   int low, int high) const {
    long count = 1;
    for (long const size : sizes) count *= size;
    std::vector<T> pixels(static_cast<std::size_t>(count));
    test::CRandomNumbers random;
    for (T& pixel : pixels) pixel = static_cast<T>(random.Between(low, high));
    WriteNrrd(name, type, sizes, pixels);
  }

  // Objects of all heights, some of which reach through the whole image.
  static constexpr std::array<int, 6> c_layers = {1, 3, 6, 10, 12, 17};
  void WriteLabels(std::string const& name) const {
    std::vector<std::uint16_t> labels(20 * 18 * 24);
    for (int z = 0; z < 24; ++z)
      for (int y = 0; y < 18; ++y)
        for (int x = 0; x < 20; ++x) {
          auto const layer =
              static_cast<int>(std::ranges::upper_bound(c_layers, z) - c_layers.begin());
          int const cell = x / 5 + y / 6 * 4 + layer * 12 + 1;
          int const label = x == 7 ? 500 : x > 15 && y > 12 ? 7 : (x + y + z) % 5 == 0 ? 0 : cell;
          labels[static_cast<std::size_t>((z * 18 + y) * 20 + x)] =
              static_cast<std::uint16_t>(label);
        }
    WriteNrrd(name, "uint16", {20, 18, 24}, labels);
  }
};

// Files of every kind that can be read in parts, and the same pixels read as a whole.
TEST_F(SeluSlab, AnySlabOfAnyFileHoldsItsPixels) {
  WriteRandom<std::int16_t>("a.nrrd", "int16", {7, 5, 9}, -30000, 30000);
  auto const image = selu::ReadImage(Path("a.nrrd"));
  for (std::string const file : {"b.nrrd", "b.mha", "b.nii", "b.tif"}) {
    selu::CAtomicFile out(Path(file));
    selu::WriteImage(out, image);
    out.Commit();
  }
  // Detached, and in the other byte order.
  std::string const raw(reinterpret_cast<char const*>(image.Bytes().data()), image.Bytes().size());
  std::string swapped = raw;
  for (std::size_t k = 0; k < swapped.size(); k += 2) std::swap(swapped[k], swapped[k + 1]);
  Write("c.raw", swapped);
  Write("c.nhdr", "NRRD0004\ntype: int16\ndimension: 3\nsizes: 7 5 9\nendian: big\nencoding: raw\n"
                  "data file: c.raw\n");
  Write("c.mhd", "ObjectType = Image\nNDims = 3\nBinaryData = True\nBinaryDataByteOrderMSB = True\n"
                 "DimSize = 7 5 9\nElementType = MET_SHORT\nElementDataFile = c.raw\n");
  Write("d.raw", "skipped" + raw);
  Write("d.mhd", "ObjectType = Image\nNDims = 3\nBinaryData = True\nHeaderSize = 7\n"
                 "DimSize = 7 5 9\nElementType = MET_SHORT\nElementDataFile = d.raw\n");
  CSlabBytes const small("140"); // two slices
  for (std::string const file : {"b.nrrd", "b.mha", "b.nii", "b.tif", "c.nhdr", "c.mhd", "d.mhd"}) {
    SCOPED_TRACE(file);
    selu::CVolumeSource source(selu::OpenImage(Path(file)));
    EXPECT_TRUE(source.Image().ReadsSlabs());
    EXPECT_FALSE(source.IsHeld());
    for (auto const& [first, last] : {std::pair<int64, int64>{0, 1}, {3, 5}, {8, 9}, {0, 9}}) {
      auto const expected = image.Slab(first, last), slab = source.Slab(first, last);
      EXPECT_EQ(slab.Size(), CSize(7, 5, last - first));
      EXPECT_TRUE(std::ranges::equal(slab.Bytes(), expected.Bytes())) << first;
    }
  }
}

TEST_F(SeluSlab, RowsOfAFlatImageAreItsSlabs) {
  WriteRandom<std::uint16_t>("a.nrrd", "uint16", {6, 40}, 0, 60000);
  auto const image = selu::ReadImage(Path("a.nrrd"));
  selu::CAtomicFile out(Path("a.tif"));
  selu::WriteImage(out, image);
  out.Commit();
  CSlabBytes const small("100");
  for (std::string const file : {"a.nrrd", "a.tif"}) {
    selu::CVolumeSource source(selu::OpenImage(Path(file)));
    EXPECT_FALSE(source.IsHeld());
    EXPECT_TRUE(std::ranges::equal(source.Slab(17, 23).Bytes(), image.Slab(17, 23).Bytes()));
  }
}

// What only its reader understands is read as a whole, whatever its size.
TEST_F(SeluSlab, PackedOrScaledPixelsAreNotTakenForPlainOnes) {
  WriteRandom<std::int16_t>("a.nrrd", "int16", {8, 8, 8}, -300, 300);
  auto const image = selu::ReadImage(Path("a.nrrd"));
  selu::CAtomicFile out(Path("a.nii.gz")), plain(Path("scaled.nii"));
  selu::WriteImage(out, image);
  out.Commit();
  selu::WriteImage(plain, image);
  plain.Commit();
  std::string scaled = Read("scaled.nii");
  float const slope = 0.5F;
  std::memcpy(scaled.data() + 112, &slope, sizeof slope);
  Write("scaled.nii", scaled);
  std::string const raw(reinterpret_cast<char const*>(image.Bytes().data()), image.Bytes().size());
  Write("skip.raw", "x" + raw);
  Write("skip.nhdr", "NRRD0004\ntype: int16\ndimension: 3\nsizes: 8 8 8\nendian: little\n"
                     "byte skip: 1\nencoding: raw\ndata file: skip.raw\n");
  CSlabBytes const small("100");
  for (std::string const file : {"a.nii.gz", "scaled.nii", "skip.nhdr"}) {
    SCOPED_TRACE(file);
    selu::CVolumeSource source(selu::OpenImage(Path(file)));
    EXPECT_FALSE(source.Image().ReadsSlabs());
    EXPECT_TRUE(source.IsHeld());
    auto const whole = selu::ReadImage(Path(file));
    EXPECT_TRUE(std::ranges::equal(source.Slab(2, 4).Bytes(), whole.Slab(2, 4).Bytes()));
  }
}

TEST_F(SeluSlab, AFileThatShrinksMeanwhileIsAnErrorAndNoCrash) {
  WriteRandom<std::uint8_t>("a.nrrd", "uint8", {10, 10, 10}, 0, 255);
  CSlabBytes const small("200");
  selu::CVolumeSource source(selu::OpenImage(Path("a.nrrd")));
  EXPECT_NO_THROW((void)source.Slab(0, 2));
  std::filesystem::resize_file(Path("a.nrrd"), 500);
  try {
    (void)source.Slab(8, 10);
    ADD_FAILURE() << "no error";
  } catch (selu::CAppError const& error) {
    EXPECT_NE(std::string(error.what()).find("the file is damaged or cut off"), std::string::npos);
  }
}

TEST_F(SeluSlab, SlabsShareTheSlicesAndReachAsFarAsTheirHalo) {
  for (char const* const bytes : {"1", "30", "100", "1000", "100000"}) {
    CSlabBytes const budget(bytes);
    for (selu::StHalo const halo : {selu::StHalo{0, 0}, {1, 0}, {2, 3}, {40, 40}}) {
      int64 next = 0;
      for (auto const& slab : selu::SlabsOf(CSize(2, 5, 37), 10, halo)) {
        EXPECT_EQ(slab.first, next);
        EXPECT_GT(slab.last, slab.first);
        EXPECT_EQ(slab.from, std::max<int64>(0, slab.first - halo.below));
        EXPECT_EQ(slab.to, std::min<int64>(37, slab.last + halo.above));
        next = slab.last;
      }
      EXPECT_EQ(next, 37);
    }
  }
}

TEST_F(SeluSlab, WrittenInPartsAFileIsTheSame) {
  WriteRandom<std::uint8_t>("bytes.nrrd", "uint8", {9, 7, 6}, 0, 255);
  WriteRandom<float>("floats.nrrd", "float", {9, 7}, -100, 100);
  selu::StGrid grid;
  grid.spacing = {0.5, 2, 1.25};
  grid.origin = {-3, 10, 0.125};
  grid.direction = {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};
  selu::ImageNotes const notes = {{"feature", "contrast"}, {"window", "3 x 3"}};
  for (std::string const input : {"bytes.nrrd", "floats.nrrd"})
    for (std::string const ending : {".nrrd", ".mha", ".nii", ".tif", ".nii.gz"})
      for (bool const hasGrid : {false, true}) {
        SCOPED_TRACE(input + ending);
        auto const pixels = selu::ReadImage(Path(input));
        selu::CRawImage image({pixels.Size(), pixels.Pixel()}, hasGrid ? grid : selu::StGrid());
        std::ranges::copy(pixels.Bytes(), image.Bytes().begin());
        selu::CAtomicFile whole(Path("whole" + ending)), parts(Path("parts" + ending));
        selu::WriteImage(whole, image, notes);
        whole.Commit();
        CSlabBytes const small("64");
        selu::CSlabWriter writer(parts, {image.Size(), image.Pixel()}, image.Grid(), notes);
        for (auto left = std::span<std::byte const>(image.Bytes()); !left.empty();) {
          auto const part = left.first(std::min<std::size_t>(left.size(), 50));
          writer.Write(part);
          left = left.subspan(part.size());
        }
        writer.Finish();
        parts.Commit();
        EXPECT_TRUE(Read("whole" + ending) == Read("parts" + ending));
      }
}

TEST_F(SeluSlab, TextureIsTheSame) {
  WriteRandom<std::uint8_t>("bytes.nrrd", "uint8", {13, 11, 17}, 0, 255);
  WriteRandom<std::int16_t>("shorts.nrrd", "int16", {13, 11, 17}, -900, 900);
  WriteRandom<std::uint16_t>("flat.nrrd", "uint16", {40, 60}, 0, 300);
  WriteRandom<std::uint8_t>("mask.nrrd", "uint8", {13, 11, 17}, 0, 2);
  for (std::string const slab : {"1", "700", "1500"}) {
    ExpectSame({"texture", "bytes.nrrd", "--format", "json", "--matrix", "m.nrrd"}, {"m.nrrd"},
               slab);
    ExpectSame({"texture", "bytes.nrrd", "--direction", "2,-3,-5", "--direction", "0,1,16",
                "--format", "csv"},
               {}, slab);
    ExpectSame({"texture", "shorts.nrrd", "--range", "-500,500", "--format", "csv"}, {}, slab);
    for (std::string const direction : {"1,0,-3", "0,-1,2"}) // to one side only
      for (std::string const levels : {"256", "20"})
        ExpectSame({"texture", "bytes.nrrd", "--direction", direction, "--levels", levels,
                    "--features", levels == "256" ? "ibsi" : "contrast", "--format", "csv"},
                   {}, slab);
    ExpectSame({"texture", "bytes.nrrd", "--direction", "1,0,-3", "--format", "csv"}, {}, slab);
    ExpectSame({"texture", "flat.nrrd", "--format", "csv"}, {}, slab); // with its warning
    ExpectSame({"texture", "flat.nrrd", "--bin-count", "9", "--aggregate", "2D_avg"}, {}, slab);
    ExpectSame({"texture", "shorts.nrrd", "--mask", "mask.nrrd", "--label", "2", "--bin-width",
                "100", "--symmetric", "--distance", "1,3", "--format", "json"},
               {}, slab);
    for (std::string const way : {"2D_avg", "2_5D_comb", "3D_avg", "3D_comb"})
      ExpectSame(
          {"texture", "shorts.nrrd", "--bin-count", "12", "--aggregate", way, "--format", "json"},
          {}, slab);
  }
}

TEST_F(SeluSlab, TextureMapsAreTheSame) {
  WriteRandom<std::uint8_t>("a.nrrd", "uint8", {14, 12, 16}, 0, 15);
  WriteRandom<std::uint8_t>("flat.nrrd", "uint8", {30, 50}, 0, 15);
  for (std::string const slab : {"1", "4000", "20000"}) {
    ExpectSame({"texture-map", "a.nrrd", "--window", "5,5,3", "--bin-count", "8", "--features",
                "contrast,joint_entr", "-o", "m.nrrd", "--picture", "m.png"},
               {"m-contrast.nrrd", "m-joint_entr.nrrd", "m.png"}, slab);
    ExpectSame({"texture-map", "flat.nrrd", "--window", "7", "--bin-count", "8", "--features",
                "corr", "-o", "m.tif", "--picture", "m.svg", "--threads", "3"},
               {"m.tif", "m.svg"}, slab);
    ExpectSame({"texture-map", "a.nrrd", "--window", "3", "--bin-count", "8", "--features",
                "contrast", "--border", "valid", "--step", "2,1,3", "-o", "m.mha"},
               {"m.mha"}, slab);
  }
}

TEST_F(SeluSlab, RegionsAreTheSame) {
  WriteLabels("labels.nrrd");
  WriteRandom<std::uint16_t>("values.nrrd", "uint16", {20, 18, 24}, 100, 4000);
  for (std::string const slab : {"1", "9000", "40000"}) {
    ExpectSame({"regions", "labels.nrrd", "--csv", "r.csv"}, {"r.csv"}, slab);
    ExpectSame({"regions", "labels.nrrd", "--intensity", "values.nrrd", "--bin-count", "16", "-o",
                "r.json", "--csv", "r.csv"},
               {"r.json", "r.csv"}, slab);
    ExpectSame({"regions", "labels.nrrd", "--intensity", "values.nrrd", "--bin-count", "16",
                "--symmetric", "--direction", "1,0,-3", "--features", "contrast,corr", "--csv",
                "r.csv"},
               {"r.csv"}, slab);
    // Longer than any object: there is no pair, and no slab needs to reach that far.
    ExpectSame({"regions", "labels.nrrd", "--intensity", "values.nrrd", "--bin-count", "16",
                "--direction", "0,0,-40", "--csv", "r.csv"},
               {"r.csv"}, slab);
  }
}

// Boxes that a slab holds, and some that none does: more than are counted at a time.
TEST_F(SeluSlab, RegionsByTheirBoxesAreTheSame) {
  WriteLabels("labels.nrrd");
  WriteRandom<std::uint16_t>("few.nrrd", "uint16", {20, 18, 24}, 100, 4000);
  WriteRandom<float>("floats.nrrd", "float", {20, 18, 24}, -300, 300);
  WriteRandom<std::uint8_t>("flat labels.nrrd", "uint8", {30, 50}, 0, 9);
  WriteRandom<std::uint8_t>("flat.nrrd", "uint8", {30, 50}, 0, 255);
  for (std::string const slab : {"1", "1000", "9000", "40000"}) {
    auto const expectSame = [&](std::string const& labels, std::string const& values,
                                Arguments const& options) {
      Arguments arguments = {"regions", labels,   "--intensity", values, "--box",
                             "-o",      "r.json", "--csv",       "r.csv"};
      arguments.insert(arguments.end(), options.begin(), options.end());
      ExpectSame(arguments, {"r.json", "r.csv"}, slab);
    };
    expectSame("labels.nrrd", "few.nrrd", {}); // with its warning
    expectSame("labels.nrrd", "floats.nrrd", {"--range", "-200,250"});
    for (std::string const direction : {"1,0,-3", "0,-1,2", "0,0,23", "2,0,0", "0,0,24"})
      expectSame("labels.nrrd", "few.nrrd", {"--range", "0,4000", "--direction", direction});
    expectSame("flat labels.nrrd", "flat.nrrd", {});
    expectSame("flat labels.nrrd", "flat.nrrd", {"--direction", "-1,-7"});
  }
}

TEST_F(SeluSlab, MaskAndSynthAreTheSame) {
  WriteRandom<std::uint16_t>("a.nrrd", "uint16", {14, 12, 16}, 0, 60000);
  WriteRandom<std::uint8_t>("flat.nrrd", "uint8", {30, 50}, 0, 15);
  for (std::string const slab : {"1", "1000"}) {
    for (std::string const axis : {"X", "Y", "Z"})
      ExpectSame({"mask", "a.nrrd", "--axis", axis, "--center", "6.1,7.3", "--radius", "4.7",
                  "--value", "5", "--keep-parameters", "-o", "m.nrrd"},
                 {"m.nrrd", "m.nrrd.json"}, slab);
    ExpectSame({"mask", "flat.nrrd", "--axis", "Z", "--center", "16.1,27.3", "--radius", "12.5",
                "--value", "0", "-o", "m.tif"},
               {"m.tif"}, slab);
    for (std::string const kind : {"noise", "layers", "blobs"})
      for (std::string const file : {"s.nrrd", "s.tif", "s.nii", "s.mha"})
        ExpectSame({"synth", kind, "--size", "13,11,9", "--seed", "4", "-o", file}, {file}, slab);
    // Thinner than what is smoothed, much longer than it, flat, and of one slice.
    for (std::string const size : {"2,3,4", "3,2,40", "40,30", "13,11,1", "1,1,7"})
      for (std::string const kind : {"noise", "layers", "blobs"})
        ExpectSame({"synth", kind, "--size", size, "--seed", "4", "-o", "s.nrrd"}, {"s.nrrd"},
                   slab);
  }
}

// Along the slabs, across them and oblique, thinner and thicker than a slab.
TEST_F(SeluSlab, FibersAreTheSame) {
  for (std::string const slab : {"1", "1000", "4000"})
    for (std::string const radius : {"0.4", "2", "9"})
      for (std::string const orientation :
           {"isotropic", "fixed", "vmf,kappa=90,theta=90deg,phi=45deg", "vmf,kappa=9,theta=150deg"})
        ExpectSame({"synth", "fibers", "--size", "25,20,31", "--count", "12", "--radius", radius,
                    "--orientation", orientation, "--seed", "3", "-o", "f.nrrd"},
                   {"f.nrrd"}, slab);
}

TEST_F(SeluSlab, ANumberOfBytesThatIsNoneIsRefused) {
  WriteRandom<std::uint8_t>("a.nrrd", "uint8", {4, 4, 4}, 0, 255);
  for (std::string const text : {"0", "-5", "many", "1.5"}) {
    CSlabBytes const wrong(text);
    ExpectFailure({"texture", "a.nrrd"},
                  "SELU_SLAB_BYTES needs a whole number above 0, not \"" + text + "\"", 2);
  }
}

} // namespace
