// Turns the example at the head of a header into a source that includes that header first.
//
//   WriteExample SeluUtils/Triple.h include/SeluUtils/Triple.h out.cpp
//
// The example is what stands indented in the comment above "#pragma once". Its #include lines go to
// the top of the source, the rest becomes the body of a function; what the comments "prints ..."
// promise becomes the text that a run is compared with.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> ExampleAtTheHead(std::string const& header) {
  std::string const indent = "//   ";
  std::ifstream in(header);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line) && line != "#pragma once";)
    if (line.starts_with(indent)) lines.push_back(line.substr(indent.size()));
  return lines;
}

// What the line's comment promises that it prints.
std::string Promise(std::string const& line) {
  std::string const word = "// prints ";
  std::size_t const at = line.find(word);
  return at == std::string::npos ? "" : line.substr(at + word.size()) + "\n";
}

std::string Identifier(std::string text) {
  for (char& c : text)
    if (c == '/' || c == '.') c = '_';
  return text;
}

} // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: WriteExample INCLUDE HEADER OUT\n";
    return 2;
  }
  std::string const include = arguments[1], name = Identifier(include);
  auto const lines = ExampleAtTheHead(arguments[2]);
  if (lines.empty()) {
    std::cerr << include << " has no example at its head\n";
    return 1;
  }
  std::string includes, body, promises;
  for (auto const& line : lines) {
    (line.starts_with("#include") ? includes : body) += line + '\n';
    promises += Promise(line);
  }
  std::ofstream out(arguments[3]);
  out << "#include <" << include << ">\n"
      << includes << "extern char const* const expected_" << name << ";\n"
      << "char const* const expected_" << name << " = R\"~(" << promises << ")~\";\n"
      << "void Run_" << name << "();\n"
      << "void Run_" << name << "() {\n"
      << "using namespace ORVA;\n"
      << body << "}\n";
  return out.flush() ? 0 : 1;
}
