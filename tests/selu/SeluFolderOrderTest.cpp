// The folders of the application include one another in one direction only.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Each may include itself and those before it.
constexpr std::array<char const*, 12> c_order = {
    "Commands.h", "base",    "images",  "drawing", "distributions", "texture",
    "walks",      "samples", "volumes", "objects", "Application.h", "describe"};

fs::path const c_root = fs::path(SELU_SOURCE_DIR) / "tools/selu";

std::size_t PlaceOf(std::string const& name) {
  auto const found = std::find(c_order.begin(), c_order.end(), name);
  EXPECT_NE(found, c_order.end()) << "no place in the order: " << name;
  return static_cast<std::size_t>(found - c_order.begin());
}

// The folder of a file, or the file itself where it lies in none.
std::string RoomOf(fs::path const& relative) { return relative.begin()->string(); }

std::vector<fs::path> SourcesInFolders() {
  std::vector<fs::path> sources;
  for (auto const& entry : fs::recursive_directory_iterator(c_root)) {
    auto const ending = entry.path().extension();
    bool const isSource = ending == ".h" || ending == ".cpp";
    if (isSource && entry.path().parent_path() != c_root) sources.push_back(entry.path());
  }
  return sources;
}

// What a source includes in quotes: files of the application, from its root.
std::vector<std::string> OwnIncludes(fs::path const& source) {
  constexpr std::string_view begin = "#include \"";
  std::vector<std::string> includes;
  std::ifstream in(source);
  for (std::string line; std::getline(in, line);)
    if (line.starts_with(begin))
      includes.push_back(line.substr(begin.size(), line.rfind('"') - begin.size()));
  return includes;
}

TEST(SeluRooms, IncludeWhatComesBeforeThem) {
  auto const sources = SourcesInFolders();
  ASSERT_GT(sources.size(), 50u);
  for (auto const& source : sources) {
    auto const relative = fs::relative(source, c_root);
    for (auto const& include : OwnIncludes(source)) {
      SCOPED_TRACE(relative.string() + " includes " + include);
      EXPECT_TRUE(fs::exists(c_root / include));
      EXPECT_LE(PlaceOf(RoomOf(include)), PlaceOf(RoomOf(relative)));
    }
  }
}

TEST(SeluRooms, CommandsAreDeclaredWithoutAnyOfThem) {
  EXPECT_TRUE(OwnIncludes(c_root / "Commands.h").empty());
}

} // namespace
