// Work in a process of its own: answers, and every way in which there is none.
#include <base/Errors.h>
#include <base/Isolated.h>

#include <gtest/gtest.h>

#include <csignal>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using selu::CIsolated;
using selu::CIsolationError;
using selu::EnFailure;

constexpr selu::StLimits c_limits = {.seconds = 5, .bytes = 64 << 20};

EnFailure FailureOf(CIsolated& process, std::string const& request,
                    selu::StLimits const& limits = c_limits) {
  try {
    ADD_FAILURE() << "an answer: " << process.Ask(request, limits);
  } catch (CIsolationError const& error) {
    return error.Why();
  }
  return EnFailure::Broken;
}

std::string Misbehave(std::string const& request, std::span<std::byte>) {
  if (request == "throw") throw std::runtime_error("something");
  if (request == "crash") ::raise(SIGSEGV);
  if (request == "sentence") throw selu::CAppError("it is no image");
  if (request == "spin")
    while (::getppid() != 0) {
    }
  if (request == "eat") {
    std::vector<std::vector<char>> all;
    while (true) all.emplace_back(std::size_t{1} << 20, 'x');
  }
  // As readers do: the lack of memory is hidden in an error of their own.
  if (request == "hide") {
    try {
      // A call, which no compiler leaves out as it may leave out a vector that nobody reads.
      ::operator delete(::operator new (std::size_t{1} << 40));
    } catch (std::bad_alloc const&) {
      throw std::runtime_error("could not read");
    }
  }
  return "well";
}

TEST(SeluIsolated, KeepsWhatItKnowsBetweenRequests) {
  int count = 0;
  CIsolated process([&](std::string const& request, std::span<std::byte>) {
    return request + " " + std::to_string(++count);
  });
  EXPECT_EQ(process.Ask("one", c_limits), "one 1");
  EXPECT_EQ(process.Ask("two", c_limits), "two 2");
  EXPECT_EQ(count, 0) << "the work is done in this process";
}

TEST(SeluIsolated, WritesIntoSharedMemory) {
  selu::CSharedBuffer shared(10000);
  CIsolated process([](std::string const&, std::span<std::byte> bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(i % 251);
    return std::string();
  });
  EXPECT_EQ(process.Ask("", c_limits, &shared), "");
  for (std::size_t i = 0; i < shared.Bytes().size(); ++i)
    ASSERT_EQ(shared.Bytes()[i], static_cast<std::byte>(i % 251)) << i;
}

TEST(SeluIsolated, SentencesComeThrough) {
  CIsolated process(Misbehave);
  try {
    (void)process.Ask("sentence", c_limits);
    FAIL();
  } catch (selu::CAppError const& error) {
    EXPECT_STREQ(error.what(), "it is no image");
  }
  EXPECT_EQ(process.Ask("again", c_limits), "well");
}

TEST(SeluIsolated, CrashesStayOutside) {
  CIsolated process(Misbehave);
  EXPECT_EQ(FailureOf(process, "throw"), EnFailure::Broken);
  EXPECT_EQ(process.Ask("again", c_limits), "well");
  EXPECT_EQ(FailureOf(process, "crash"), EnFailure::Broken);
  EXPECT_EQ(FailureOf(process, "again"), EnFailure::Broken) << "it is dead";
}

TEST(SeluIsolated, TimeIsLimited) {
  CIsolated process(Misbehave);
  EXPECT_EQ(FailureOf(process, "spin", {.seconds = 1, .bytes = 64 << 20}), EnFailure::Time);
}

TEST(SeluIsolated, MemoryIsLimited) {
  CIsolated process(Misbehave);
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer ends a process that asks for too much";
#endif
  EXPECT_EQ(FailureOf(process, "eat"), EnFailure::Memory);
  EXPECT_EQ(FailureOf(process, "hide"), EnFailure::Memory);
  EXPECT_EQ(process.Ask("again", c_limits), "well");
}

} // namespace
