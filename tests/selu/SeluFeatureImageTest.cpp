// selu feature-image: a feature map as an image and as a table.
#include "support/Random.h"
#include "support/SeluRun.h"

#include <images/ImageFile.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>

namespace {

using Arguments = std::vector<std::string>;
using Row = std::vector<float>;

constexpr char c_cells[] = R"({
  "maximum label": 3, "no. of objects": 2,
  "cell 1": {"cell": "1", "status": "good, \"really\"", "volume [px]": 12, "is round": true,
             "shape": {"length": 0.5, "axes": [1, 2.5]}},
  "cell 3": {"cell": "3", "status": "bad\nindeed", "volume [px]": 7, "is round": false,
             "shape": {"length": -2}}
})";

class SeluFeatureImage : public test::CSeluTest {
protected:
  static Arguments Command(Arguments const& options, std::string const& output = "out.nrrd") {
    Arguments command = {"feature-image", "f.json", "-o", output};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }

  [[nodiscard]] std::vector<Row> Rows(std::string const& file) const {
    auto const image = selu::ReadImage(Path(file));
    EXPECT_EQ(image.Pixel(), selu::EnPixel::Float);
    EXPECT_EQ(image.Size().Dim(), 2);
    std::vector<Row> rows(static_cast<std::size_t>(image.Size().y),
                          Row(static_cast<std::size_t>(image.Size().x)));
    auto const* bytes = image.Bytes().data();
    for (Row& row : rows) {
      std::memcpy(row.data(), bytes, row.size() * sizeof(float));
      bytes += row.size() * sizeof(float);
    }
    return rows;
  }
};

TEST_F(SeluFeatureImage, RowsAreTheFeaturesInTheOrderOfTheirKeys) {
  Write("f.json", c_cells);
  std::vector<Row> const expected = {
      {0, 1, 2, 3},     // labels
      {0, 1, 0, 0},     // is round
      {0, 1, 0, 0},     // shape/axes/0
      {0, 2.5f, 0, 0},  // shape/axes/1
      {0, 0.5f, 0, -2}, // shape/length
      {0, 2, 0, 1},     // status: "", "bad...", "good..."
      {0, 12, 0, 7},    // volume [px]
  };
  for (std::string const output : {"out.nrrd", "out.tif", "out.mha", "out.nii.gz"}) {
    EXPECT_EQ(Output(Command({"--id-key", "cell"}, output)), "");
    EXPECT_EQ(Rows(output), expected) << output;
  }
}

TEST_F(SeluFeatureImage, TableHoldsNamesAndTexts) {
  Write("f.json", c_cells);
  EXPECT_EQ(Output(Command({"--id-key", "cell", "--csv", "out.csv"})), "");
  EXPECT_EQ(Read("out.csv"),
            "cell,is round,shape/axes/0,shape/axes/1,shape/length,status,volume [px]\n"
            "1,1,1,2.5,0.5,\"good, \"\"really\"\"\",12\n"
            "3,0,,,-2,\"bad\nindeed\",7\n");
}

TEST_F(SeluFeatureImage, NamesAreQuotedWhereTheyMustBe) {
  Write("f.json", R"({"maximum label": 1, "object 1": {"a,b": 1, "say \"x\"": 2, "1\r2": 3}})");
  EXPECT_EQ(Output(Command({"--csv", "out.csv"})), "");
  EXPECT_EQ(Read("out.csv"), "object,\"1\r2\",\"a,b\",\"say \"\"x\"\"\"\n1,3,1,2\n");
}

TEST_F(SeluFeatureImage, ExcludedFeaturesHaveNoRow) {
  Write("f.json", c_cells);
  EXPECT_EQ(Output(Command({"--id-key", "cell", "--csv", "out.csv", "--exclude", "shape",
                            "--exclude", "status", "--exclude", "is round"})),
            "");
  EXPECT_EQ(Read("out.csv"), "cell,volume [px]\n1,12\n3,7\n");
  EXPECT_EQ(Rows("out.nrrd").size(), 2u);
  auto const result = Selu(Command({"--id-key", "cell", "--exclude", "sahpe"}));
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.error, "selu: warning: no object has the feature \"sahpe\" to exclude\n");
  EXPECT_EQ(Rows("out.nrrd").size(), 7u);
}

TEST_F(SeluFeatureImage, NumbersBeyondTheCommonOnesPass) {
  Write("f.json",
        R"({"maximum label": 10, "object 01": {"big": 5000000000, "odd": 0.1, "round": 16000000},
                      "object 10": {"big": 3, "odd": {"$number": "-Infinity"}}})");
  EXPECT_EQ(Output(Command({"--csv", "out.csv"})), "");
  auto const rows = Rows("out.nrrd");
  EXPECT_EQ(rows[1][1], 5e9f);
  EXPECT_EQ(rows[1][10], 3);
  EXPECT_EQ(rows[2][10], -std::numeric_limits<float>::infinity());
  auto const lines = test::Lines(Read("out.csv"));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], "1,5000000000,0.1,16000000");
  EXPECT_EQ(lines[2], "10,3,-inf,");
}

TEST_F(SeluFeatureImage, TableHasEveryDigit) {
  Write("f.json", R"({"maximum label": 1, "object 1": {"a": 16785409, "b": 9007199254740991,
                      "c": 0.1234567890123456, "d": 1e300}})");
  EXPECT_EQ(Output({"feature-image", "f.json", "--csv", "-"}),
            "object,a,b,c,d\n1,16785409,9007199254740991,0.1234567890123456,1e+300\n");
}

// Objects in any order, each with some of the features: the table against a map of maps.
TEST_F(SeluFeatureImage, WhatAnObjectDoesNotHaveIsEmptyWhateverTheOrder) {
  test::CRandomNumbers random;
  for (std::size_t const count : {1U, 2U, 7U, 60U}) {
    std::map<std::int64_t, std::map<std::string, std::string>> objects;
    std::set<std::string> columns;
    std::string json = R"({"maximum label": 1)";
    while (objects.size() < count) {
      auto const label = random.Between(1, 1000);
      if (objects.contains(label)) continue;
      auto& features = objects[label];
      json += ", \"object " + std::to_string(label) + "\": {\"object\": \"\"";
      for (std::string const feature : {"a", "b", "c", "text"}) {
        if (random.Between(0, 2) == 0) continue;
        bool const isText = feature == "text";
        features[feature] = (isText ? "w" : "") + std::to_string(random.Between(0, 4));
        std::string const quote = isText ? "\"" : "";
        json += ", \"" + feature + "\": " + quote + features[feature] + quote;
        columns.insert(feature);
      }
      json += "}";
    }
    std::string expected = "object";
    for (auto const& column : columns) expected += "," + column;
    for (auto& [label, features] : objects) {
      expected += "\n" + std::to_string(label);
      for (auto const& column : columns) expected += "," + features[column];
    }
    Write("f.json", json + "}");
    EXPECT_EQ(Output({"feature-image", "f.json", "--csv", "-"}), expected + "\n");
  }
}

TEST_F(SeluFeatureImage, TextsThatMetaImageDoesNotHoldAreRefused) {
  std::string json = R"({"maximum label": 1)";
  for (int i = 1; i <= 1000; ++i)
    json += ", \"object " + std::to_string(i) + "\": {\"name\": \"" + std::string(50, 'n') +
            std::to_string(i) + "\"}";
  Write("f.json", json + "}");
  ExpectFailure({"feature-image", "f.json", "-o", "f.mha"},
                "cannot write \"f.mha\": MetaImage holds 32767 bytes for \"label-lookup\", but ");
  EXPECT_EQ(Files(), std::vector<std::string>{"f.json"});
  EXPECT_EQ(Output({"feature-image", "f.json", "-o", "f.nrrd"}), "");
}

TEST_F(SeluFeatureImage, FeaturesOfOneObjectEachTakeNoMoreThanThese) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer takes more addresses than the limit below has";
#endif
  constexpr int count = 12000; // objects and features: 1.1 GiB, were all numbers there
  std::string json = R"({"maximum label": 1)";
  for (int i = 1; i <= count; ++i)
    json += ", \"object " + std::to_string(i) + "\": {\"f" + std::to_string(i) + "\": 1}";
  Write("f.json", json + "}");
  auto const result = test::RunProcess(
      {"/usr/bin/env", "bash", "-c",
       "ulimit -v 800000; exec \"$0\" feature-image f.json --csv f.csv", SELU_BINARY},
      {.folder = Folder().string()});
  EXPECT_EQ(result.code, 0) << result.error;
  EXPECT_GT(std::filesystem::file_size(Path("f.csv")), std::uintmax_t{count} * count);
}

TEST_F(SeluFeatureImage, ObjectsMayLieAboveTheMaximum) {
  Write("f.json", R"({"maximum label": 2, "object 1": {"a": 5}, "object 12": {"a": 6, "b": 7}})");
  EXPECT_EQ(Output(Command({"--csv", "out.csv"})), "");
  auto const rows = Rows("out.nrrd");
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].size(), 13u);
  EXPECT_EQ(rows[1][12], 6);
  EXPECT_EQ(rows[2][12], 7);
  EXPECT_EQ(Read("out.csv"), "object,a,b\n1,5,\n12,6,7\n");
}

TEST_F(SeluFeatureImage, ImageFilesHoldTheNamesOfTheirRows) {
  Write("f.json", c_cells);
  for (std::string const output : {"out.nrrd", "out.mha", "out.tif"}) {
    EXPECT_EQ(Output(Command({"--id-key", "cell"}, output)), "");
    auto const bytes = Read(output);
    EXPECT_NE(bytes.find("y-keys"), std::string::npos) << output;
    EXPECT_NE(bytes.find("shape/axes/1"), std::string::npos) << output;
    EXPECT_NE(bytes.find("label-lookup"), std::string::npos) << output;
    EXPECT_NE(bytes.find("indeed"), std::string::npos) << output;
  }
}

TEST_F(SeluFeatureImage, BadMapsAreRefused) {
  std::vector<std::pair<std::string, std::string>> const cases = {
      {"{}", "cannot read \"f.json\": it has no objects"},
      {R"({"maximum label": 1, "cell 1": {"a": 1}})", "it has no objects"},
      {R"({"object 1": {"a": 1}})", "it has no \"maximum label\" above 0"},
      {R"({"maximum label": 0, "object 1": {"a": 1}})", "it has no \"maximum label\" above 0"},
      {R"({"maximum label": 1.0, "object 1": {"a": 1}})", "it has no \"maximum label\" above 0"},
      {R"({"maximum label": -2, "object 1": {"a": 1}})", "maximum label -2 is negative"},
      {R"({"maximum label": 99999999999999999999, "object 1": {"a": 1}})",
       "the entry \"maximum label\" is an integer that neither 32 bits nor a double hold"},
      {R"({"maximum label": 12, "object 3": {"a": 1}, "object 03": {"a": 1}})",
       "the object with the label 3 is there twice"},
      {R"({"maximum label": 12, "object 4294967296": {"a": 1}})",
       "needs a label from 0 to 4294967295"},
      {R"({"maximum label": 2, "object 1": {"a": 1}, "object 2": {"a": "one"}})",
       "the entry \"object 2/a\" is a text, but other objects have a number there"},
      {R"({"maximum label": 2, "object 1": {"a": {"b": [1, null]}}})",
       "the entry \"object 1/a/b/1\" is null"},
      {R"({"maximum label": 1, "object 1": {"a": 1, "a": 2}})", "\"object 1/a\" is there twice"},
      {R"({"maximum label": 1, "object 1": {"a": )", "no JSON from line 1"},
      {"[]", "is no object"},
  };
  for (auto const& [json, sentence] : cases) {
    Write("f.json", json);
    ExpectFailure(Command({"--csv", "out.csv"}), sentence);
  }
  EXPECT_EQ(Files(), std::vector<std::string>{"f.json"});
}

TEST_F(SeluFeatureImage, BadFilesAreRefusedBeforeAnyWork) {
  Write("f.json", c_cells);
  ExpectFailure(Command({}, "out.png"), "PNG holds no more than 16 bits per pixel");
  ExpectFailure(Command({}, "out.txt"), "the ending must be one of");
  ExpectFailure(Command({}, "no/out.tif"), "cannot write \"no/out.tif\"");
  ExpectFailure(Command({"--id-key", "cell", "--csv", "no/out.csv"}),
                "cannot write \"no/out.csv\"");
  for (auto const& csv : Arguments{"out.nrrd", "./out.nrrd", Path("out.nrrd")})
    ExpectFailure(Command({"--csv", csv}), "name the same file", 2);
  ExpectFailure({"feature-image", "none.json", "-o", "out.tif"}, "cannot read \"none.json\"");
  ExpectFailure({"feature-image", ".", "-o", "out.tif"}, "it is a directory");
  ExpectFailure({"feature-image", "f.json"}, "give --output", 2);
  Write("f.json", "");
  ExpectFailure(Command({}), "the file is empty");
  EXPECT_EQ(Files(), std::vector<std::string>{"f.json"});
}

// Label image, features, feature image, table: the volumes and boxes in the end are those that a
// count of the label image gives.
TEST_F(SeluFeatureImage, ChainOfRealLabelsGivesTheCounts) {
  std::string const base = std::string(SELU_TEST_DATA) + "/prostate_phantom_subvolume";
  if (!std::filesystem::exists(base + "-label.nrrd")) GTEST_SKIP() << "no " << base << "-label";
  EXPECT_EQ(Output({"regions", base + "-label.nrrd", "--intensity", base + ".nrrd", "--range",
                    "0,2017", "-o", "f.json"}),
            "");
  EXPECT_EQ(Output(Command({"--csv", "out.csv"}, "out.tif")), "");
  auto const labels = selu::ReadImage(base + "-label.nrrd");
  auto const values = selu::ReadImage(base + ".nrrd").ToGray();
  ASSERT_EQ(labels.Pixel(), selu::EnPixel::Int16);
  ASSERT_EQ(values.Type(), ORVA::IMAGE_GREY_16);
  auto const access = values.CreateAccess(false);
  std::map<std::size_t, std::array<double, 3>> counts; // voxels, sum of intensities, least x
  for (long i = 0; i < 82 * 67 * 13; ++i) {
    std::int16_t label = 0;
    std::uint16_t value = 0;
    std::memcpy(&label, labels.Bytes().data() + i * 2, 2);
    std::memcpy(&value, access.Base() + i * 2, 2);
    if (label == 0) continue;
    auto const [count, isNew] = counts.try_emplace(static_cast<std::size_t>(label));
    auto& [voxels, sum, leastX] = count->second;
    leastX = isNew ? static_cast<double>(i % 82) : std::min(leastX, static_cast<double>(i % 82));
    voxels += 1;
    sum += value;
  }
  auto const rows = Rows("out.tif");
  auto const lines = test::Lines(Read("out.csv"));
  auto const names = test::Fields(lines[0]);
  ASSERT_EQ(names.size(), rows.size());
  ASSERT_EQ(lines.size(), counts.size() + 1);
  auto const column = [&](std::string const& name) {
    return static_cast<std::size_t>(std::ranges::find(names, name) - names.begin());
  };
  EXPECT_EQ(rows[0], (Row{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(rows.size(), 1u + 6 + 3 + 2 + 1 + 7 + 25 + 1);
  std::map<std::size_t, std::vector<std::string>> table;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    auto const fields = test::Fields(lines[i]);
    ASSERT_EQ(fields.size(), names.size());
    table[std::stoul(fields[0])] = fields;
  }
  for (std::size_t label = 0; label < 10; ++label) {
    auto const [voxels, sum, leastX] = counts[label];
    EXPECT_EQ(table.contains(label), voxels > 0);
    EXPECT_EQ(rows[column("volume [px]")][label], static_cast<float>(voxels));
    EXPECT_EQ(rows[column("bounding box/x min")][label], static_cast<float>(leastX));
    float const mean = voxels > 0 ? static_cast<float>(sum / voxels) : 0;
    EXPECT_FLOAT_EQ(rows[column("intensity/mean")][label], mean);
    if (voxels == 0) continue;
    auto const& fields = table[label];
    EXPECT_EQ(fields[column("volume [px]")], std::to_string(static_cast<long>(voxels)));
    EXPECT_EQ(fields[column("status")], "measured");
  }
}

TEST_F(SeluFeatureImage, TheFeaturesAreNotOverwritten) {
  std::string const json = R"({"maximum label": 1, "object 1": {"a": 2}})";
  Write("f.tif", json); // whatever its ending
  ExpectFailure({"feature-image", "f.tif", "-o", "./f.tif"},
                "cannot write \"./f.tif\": it is the input \"f.tif\"");
  ExpectFailure({"feature-image", "f.tif", "-o", "a.tif", "--csv", "f.tif"}, "it is the input");
  EXPECT_EQ(Read("f.tif"), json);
  EXPECT_EQ(Files(), Arguments{"f.tif"});
}

} // namespace
