// The application in tests: a folder of its own, and running it there.
#pragma once

#include "Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace test {

/// A test with a folder that vanishes with it, in which the application runs.
class CSeluTest : public testing::Test {
protected:
  CSeluTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "selu-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) m_Folder = pattern;
    std::filesystem::permissions(m_Folder, std::filesystem::perms::all);
  }
  ~CSeluTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_Folder, ignored);
  }

  [[nodiscard]] std::string Path(std::string const& name) const {
    return (m_Folder / name).string();
  }

  StProcessResult Selu(std::vector<std::string> arguments, StProcessOptions options = {}) const {
    arguments.insert(arguments.begin(), SELU_BINARY);
    if (options.folder.empty()) options.folder = m_Folder.string();
    return RunProcess(arguments, options);
  }

  /// Runs it, expects success, and gives its output.
  std::string Output(std::vector<std::string> const& arguments) const {
    auto const result = Selu(arguments);
    EXPECT_EQ(result.code, 0) << result.error;
    return result.out;
  }

  /// Expects exit code 1 (or another), no output, and one line on standard error that holds the
  /// text.
  void ExpectFailure(std::vector<std::string> const& arguments, std::string const& text,
                     int code = 1, StProcessOptions const& options = {}) const {
    auto const result = Selu(arguments, options);
    std::string const shown = testing::PrintToString(arguments) + "\n" + result.error;
    EXPECT_EQ(result.code, code) << shown;
    EXPECT_EQ(result.out, "") << shown;
    EXPECT_TRUE(result.error.starts_with("selu: ")) << shown;
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << shown;
    EXPECT_TRUE(result.error.find(text) != std::string::npos) << shown << "lacks: " << text;
  }

  void Write(std::string const& name, std::string const& bytes) const {
    std::ofstream(m_Folder / name, std::ios::binary) << bytes;
  }
  [[nodiscard]] std::string Read(std::string const& name) const {
    std::ifstream file(m_Folder / name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

  /// A NRRD file with these pixels, x fastest.
  template <class T>
  void WriteNrrd(std::string const& name, std::string const& type, std::vector<long> const& sizes,
                 std::vector<T> const& pixels) const {
    std::string header =
        "NRRD0004\ntype: " + type + "\ndimension: " + std::to_string(sizes.size()) + "\nsizes:";
    for (auto const size : sizes) header += " " + std::to_string(size);
    header += "\nendian: little\nencoding: raw\n\n";
    Write(name, header + std::string(reinterpret_cast<char const*>(pixels.data()),
                                     pixels.size() * sizeof(T)));
  }

  /// Names of all that is in the folder, hidden files included.
  [[nodiscard]] std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(m_Folder))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  [[nodiscard]] std::filesystem::path const& Folder() const { return m_Folder; }

private:
  std::filesystem::path m_Folder;
};

/// The whole text must match no more than these lines: helper for tables.
inline std::vector<std::string> Lines(std::string const& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

inline std::vector<std::string> Fields(std::string const& line, char separator = ',') {
  std::vector<std::string> fields;
  std::istringstream in(line);
  for (std::string field; std::getline(in, field, separator);) fields.push_back(field);
  return fields;
}

} // namespace test
