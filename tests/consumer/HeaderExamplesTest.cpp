// The example at the head of every header compiles with that header alone plus what it shows, and
// prints what its comments say.

#include <gtest/gtest.h>

#include <cctype>
#include <iostream>
#include <sstream>
#include <string>

// Each example, as written by headers/WriteExample.cpp: X(the header, a function and a text).
#define X(header, name)                                                                            \
  void Run_##name();                                                                               \
  extern char const* const expected_##name;
#include "HeaderExamples.inc"
#undef X

namespace {

struct StExample {
  char const* header;
  void (*run)();
  char const* expected;
};

#define X(header, name) {header, Run_##name, expected_##name},
StExample const c_examples[] = {
#include "HeaderExamples.inc"
};
#undef X

std::string WithoutBlanks(std::string const& text) {
  std::string kept;
  for (char const c : text)
    if (std::isspace(static_cast<unsigned char>(c)) == 0) kept += c;
  return kept;
}

std::string Printed(void (*run)()) {
  std::ostringstream out;
  auto* const terminal = std::cout.rdbuf(out.rdbuf());
  run();
  std::cout.rdbuf(terminal);
  return out.str();
}

} // namespace

TEST(HeaderExamples, PrintWhatTheySay) {
  EXPECT_GE(std::size(c_examples), 60u);
  for (auto const& example : c_examples)
    EXPECT_EQ(WithoutBlanks(Printed(example.run)), WithoutBlanks(example.expected))
        << example.header;
}
