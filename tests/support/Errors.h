// Checks that an operation raises the error it should: type, message to the letter, and place.
#pragma once

#include <pxlib2core/Exception.h>

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

namespace test {

/// Runs the operation and checks the exact exception type, its message and, where they are given,
/// the function, the module and the line of its location record.
template <class Error = ORVA::CException, class Operation>
void ExpectError(Operation operation, std::string const& message, std::string const& function = "",
                 std::string const& source = "", int line = 0) {
  try {
    operation();
  } catch (ORVA::CException const& error) {
    EXPECT_TRUE(typeid(error) == typeid(Error)) << typeid(error).name() << ": " << error.what();
    EXPECT_EQ(error.what(), message);
    if (!function.empty()) {
      EXPECT_EQ(error.Location().function, function);
    }
    if (!source.empty()) {
      EXPECT_EQ(error.Location().source, source);
    }
    if (line != 0) {
      EXPECT_EQ(error.Location().line, line);
    }
    EXPECT_EQ(error.Location().reserved, 0);
    return;
  }
  ADD_FAILURE() << "no error; expected \"" << message << '"';
}

/// The line in the record of the error that the operation raises; 0 where it raises none.
template <class Operation>
int LineOfError(Operation operation) {
  try {
    operation();
  } catch (ORVA::CException const& error) {
    return error.Location().line;
  }
  return 0;
}

/// Checks that each operation raises an error, and each on a line of its own: so a record tells the
/// errors of one operation apart.
inline void ExpectLinesOfTheirOwn(std::vector<std::function<void()>> const& operations) {
  std::set<int> lines;
  for (auto const& operation : operations) lines.insert(LineOfError(operation));
  EXPECT_FALSE(lines.contains(0)) << "one raises no error";
  EXPECT_EQ(lines.size(), operations.size());
}

} // namespace test
