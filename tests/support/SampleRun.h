// Tests of `selu sample`: how its arguments are put together.
//
//   Output(Command({"normal", "mean=3"}, {"-n", "10"}));   // selu sample normal mean=3 -n 10
#pragma once

#include "SeluRun.h"

#include <string>
#include <vector>

namespace test {

using Arguments = std::vector<std::string>;

class CSampleTest : public CSeluTest {
protected:
  [[nodiscard]] static Arguments Command(Arguments const& distribution, Arguments const& more) {
    Arguments all = {"sample"};
    all.insert(all.end(), distribution.begin(), distribution.end());
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
};

} // namespace test
