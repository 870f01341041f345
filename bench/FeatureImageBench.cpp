// Feature images of growing numbers of objects with 50 features each, in time for one value, beside
// looking every feature of every object up by its path. A level column of times is a linear cost.
// The copy of the features that the image carries is part of it, and measured on its own too; who
// gives the map away saves it.
#include <SeluUtils/ValueHelper.h>

#include <pxlib2core/String.h>

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ORVA;

constexpr int c_features = 50;

// Five groups of ten features; one in ten is a text.
CValueMap Features(int objects) {
  CValueMap features;
  features.SetEntry("maximum label", CValueLong(objects));
  auto const digits = static_cast<int>(std::to_string(objects).size());
  for (int label = 1; label <= objects; ++label) {
    CValueMap object;
    for (int group = 0; group < 5; ++group) {
      CValueMap values;
      for (int k = 0; k < 9; ++k)
        values.SetEntry(CStringTools::Printf("feature %d", k), CValueDouble(label * 0.5 + k));
      values.SetEntry("status", CValueString(label % 3 == 0 ? "border" : "inside"));
      object.SetEntry(CStringTools::Printf("group %d", group), std::move(values));
    }
    features.SetEntry(CStringTools::Printf("object %0*d", digits, label), std::move(object));
  }
  return features;
}

void Convert(benchmark::State& state, int objects) {
  CValueMap const features = Features(objects);
  for (auto _ : state) {
    CImage image(IMAGE_GREY_F, CSize(1, 1));
    ConvertObjectBasedFeaturesIntoFeatureImage("bench", features, "object", image, {});
    benchmark::DoNotOptimize(image.Bytes());
  }
  state.SetItemsProcessed(state.iterations() * objects * c_features);
}

void ConvertGivenAway(benchmark::State& state, int objects) {
  for (auto _ : state) {
    state.PauseTiming();
    CValueMap features = Features(objects);
    state.ResumeTiming();
    CImage image(IMAGE_GREY_F, CSize(1, 1));
    ConvertObjectBasedFeaturesIntoFeatureImage("bench", std::move(features), "object", image, {});
    benchmark::DoNotOptimize(image.Bytes());
    state.PauseTiming();
    image = CImage(IMAGE_GREY_F, CSize(1, 1));
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * objects * c_features);
}

void CopyOnly(benchmark::State& state, int objects) {
  CValueMap const features = Features(objects);
  for (auto _ : state) {
    CValueMap copy = features;
    benchmark::DoNotOptimize(copy.Size());
  }
  state.SetItemsProcessed(state.iterations() * objects * c_features);
}

// The numbers only, without an image around them.
void LookUpEach(benchmark::State& state, int objects) {
  CValueMap const features = Features(objects);
  std::vector<std::string> keys;
  auto const digits = static_cast<int>(std::to_string(objects).size());
  std::string const first = CStringTools::Printf("object %0*d", digits, 1);
  ExtractKeys(features.Entry(first).Map(), keys, 2, {});
  for (auto _ : state) {
    double sum = 0;
    for (auto const& key : keys)
      for (int label = 1; label <= objects; ++label) {
        auto const& value =
            features.Entry(CStringTools::Printf("object %0*d/%s", digits, label, key.c_str()));
        if (value.Type() == CValue::EnType::Double) sum += value.Double();
      }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * objects * c_features);
}

[[maybe_unused]] bool const c_registered = [] {
  for (int const objects : {1000, 10000, 100000}) {
    std::string const row = std::to_string(objects) + " objects, 50 features/";
    auto const add = [&](char const* contestant, auto run) {
      benchmark::RegisterBenchmark((row + contestant).c_str(), [=](benchmark::State& state) {
        run(state, objects);
      })->Unit(benchmark::kMillisecond);
    };
    add("SeluUtils", Convert);
    add("given away", ConvertGivenAway);
    add("copy of the map", CopyOnly);
    add("look-up of each value", LookUpEach);
  }
  return true;
}();

} // namespace
