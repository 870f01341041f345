// What the picture's axes and cells say.
#include <Picture.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Labels = std::vector<std::string>;

Labels LabelsOf(std::vector<selu::StTick> const& ticks) {
  Labels labels;
  for (auto const& tick : ticks) labels.push_back(tick.text);
  return labels;
}

TEST(SeluPicture, TicksOfAllGreyLevelsBeginAtZero) {
  EXPECT_EQ(LabelsOf(selu::LinearTicks(-0.5, 255.5, 6)),
            (Labels{"0", "50", "100", "150", "200", "250"}));
}

TEST(SeluPicture, TicksLieWithinTheAxis) {
  EXPECT_EQ(LabelsOf(selu::LinearTicks(-3.5, 3.5, 6)), (Labels{"-2", "0", "2"}));
  EXPECT_EQ(LabelsOf(selu::LinearTicks(62.5, 207.5, 6)), (Labels{"100", "150", "200"}));
  for (auto const& tick : selu::LinearTicks(-0.5, 255.5, 6)) {
    EXPECT_GE(tick.place, 0);
    EXPECT_LE(tick.place, 1);
  }
}

} // namespace
