// selu walk in tests: running it in a folder of its own.
#pragma once

#include "SeluRun.h"

#include <string>
#include <vector>

namespace test {

/// A test of "selu walk"; its arguments are those after "walk".
class CSeluWalkTest : public CSeluTest {
protected:
  /// Expects success, and gives what it prints.
  std::string Walk(std::vector<std::string> arguments) const {
    return Output(Whole(std::move(arguments)));
  }
  /// Expects success without a note, and gives what it prints.
  std::string Quiet(std::vector<std::string> arguments) const {
    auto const result = WalkResult(std::move(arguments));
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.error, "");
    return result.out;
  }
  StProcessResult WalkResult(std::vector<std::string> arguments) const {
    return Selu(Whole(std::move(arguments)));
  }
  void Fails(std::vector<std::string> arguments, std::string const& text, int code = 1) const {
    ExpectFailure(Whole(std::move(arguments)), text, code);
  }

private:
  static std::vector<std::string> Whole(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "walk");
    return arguments;
  }
};

} // namespace test
