// Every C++ block of the README and the docs stands in one of the examples, which are built and
// run.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

fs::path const c_source = SELU_SOURCE_DIR;

std::string Read(fs::path const& file) {
  std::ifstream in(file);
  EXPECT_TRUE(in) << file;
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<fs::path> FilesIn(fs::path const& folder, std::string const& ending) {
  std::vector<fs::path> files;
  for (auto const& entry : fs::recursive_directory_iterator(folder))
    if (entry.path().extension() == ending) files.push_back(entry.path());
  return files;
}

std::vector<std::string> CppBlocks(std::string const& text) {
  std::string const open = "```cpp\n", close = "```";
  std::vector<std::string> blocks;
  for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
    at += open.size();
    std::size_t const end = text.find(close, at);
    blocks.push_back(text.substr(at, end - at));
    at = end;
  }
  return blocks;
}

bool IsInAnExample(std::string const& block) {
  for (auto const& file : FilesIn(c_source / "examples", ".cpp"))
    if (Read(file).find(block) != std::string::npos) return true;
  return false;
}

} // namespace

TEST(Docs, EveryCppBlockIsBuiltAsAnExample) {
  auto files = FilesIn(c_source / "docs", ".md");
  files.push_back(c_source / "README.md");
  std::size_t blocks = 0;
  for (auto const& file : files)
    for (auto const& block : CppBlocks(Read(file))) {
      ++blocks;
      EXPECT_TRUE(IsInAnExample(block)) << file << "\n" << block;
    }
  EXPECT_GE(blocks, 2u) << "the README and the guide have examples";
}
