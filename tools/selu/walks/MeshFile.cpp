#include "walks/MeshFile.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

namespace selu {
namespace {

// The words of a text line by line; blank lines and what follows a # are passed over.
class CLines {
public:
  explicit CLines(std::string_view text) : m_Rest(text) {}

  // The words of the next line that has some; false after the last.
  bool Next() {
    while (!m_Rest.empty()) {
      auto const end = m_Rest.find('\n');
      std::string_view line = m_Rest.substr(0, end);
      m_Rest.remove_prefix(end == std::string_view::npos ? m_Rest.size() : end + 1);
      ++m_Number;
      m_Words = line.substr(0, line.find('#'));
      SkipBlanks();
      if (!m_Words.empty()) return true;
    }
    return false;
  }
  // The next word of the line; empty after the last.
  std::string_view Word() {
    auto const end = std::min(m_Words.find_first_of(c_blanks), m_Words.size());
    std::string_view const word = m_Words.substr(0, end);
    m_Words.remove_prefix(end);
    SkipBlanks();
    return word;
  }
  [[nodiscard]] bool HasWords() const { return !m_Words.empty(); }

  [[noreturn]] void Refuse(std::string const& why) const {
    throw CAppError("line " + std::to_string(m_Number) + ", " + why);
  }

private:
  static constexpr std::string_view c_blanks = " \t\r\f\v";

  void SkipBlanks() {
    m_Words.remove_prefix(std::min(m_Words.find_first_not_of(c_blanks), m_Words.size()));
  }

  std::string_view m_Rest, m_Words;
  std::size_t m_Number = 0;
};

// Enough of a word to find it again.
std::string Told(std::string_view word) {
  constexpr std::size_t c_most = 40;
  return Quoted(std::string(word.substr(0, c_most)) + (word.size() > c_most ? "..." : ""));
}

double TakeReal(CLines& lines) {
  std::string_view const word = lines.Word();
  std::string_view const digits = word.starts_with('+') ? word.substr(1) : word;
  double value = 0;
  auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value))
    lines.Refuse(Told(word) + " is no finite number of double precision");
  return value;
}

// The rest of a line.
RealPoint TakePoint(CLines& lines) {
  double const x = TakeReal(lines), y = TakeReal(lines), z = TakeReal(lines);
  if (lines.HasWords()) lines.Refuse(Told(lines.Word()) + " after the three numbers of a corner");
  return {x, y, z};
}

std::uint32_t TakeCount(CLines& lines, char const* what) {
  std::string_view const word = lines.Word();
  std::uint32_t value = 0;
  auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc() || end != word.data() + word.size())
    lines.Refuse(Told(word) + " is no " + what);
  return value;
}

void Expect(CLines& lines, std::string_view expected) {
  std::string_view const word = lines.Word();
  if (Lower(std::string(word.substr(0, 16))) != expected)
    lines.Refuse(Told(word) + " where \"" + std::string(expected) + "\" belongs");
}

void NextLine(CLines& lines, char const* what) {
  if (!lines.Next()) lines.Refuse(std::string("the file ends before its ") + what);
}

// ---------------------------------------------------------------------------------------------
// OFF: counts, a corner a line, a face a line, whose colors are passed over.

std::vector<std::uint32_t> TakeFace(CLines& lines, std::size_t corners) {
  std::uint32_t const count = TakeCount(lines, "number of corners");
  std::vector<std::uint32_t> face; // grows with the line, whatever the count promises
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!lines.HasWords())
      lines.Refuse("a face of " + std::to_string(count) + " corners names " + std::to_string(i));
    face.push_back(TakeCount(lines, "corner of a face"));
    if (face.back() >= corners)
      lines.Refuse("a face names corner " + std::to_string(face.back()) + " of " +
                   std::to_string(corners));
  }
  return face;
}

StMesh ParseOff(std::string_view text) {
  CLines lines(text);
  if (!lines.Next()) lines.Refuse("the file ends before its word OFF");
  Expect(lines, "off");
  if (!lines.HasWords()) NextLine(lines, "counts");
  std::uint32_t const corners = TakeCount(lines, "number of corners");
  std::uint32_t const faces = TakeCount(lines, "number of faces");
  StMesh mesh;
  for (std::uint32_t i = 0; i < corners; ++i) {
    NextLine(lines, "corners do");
    mesh.corners.push_back(TakePoint(lines));
  }
  for (std::uint32_t i = 0; i < faces; ++i) {
    NextLine(lines, "faces do");
    mesh.faces.push_back(TakeFace(lines, mesh.corners.size()));
  }
  if (lines.Next()) lines.Refuse("there is more than the counts say");
  return mesh;
}

// ---------------------------------------------------------------------------------------------
// STL: every triangle brings corners of its own.

void AddTriangle(StMesh& mesh, std::array<RealPoint, 3> const& triangle) {
  auto const first = static_cast<std::uint32_t>(mesh.corners.size());
  mesh.corners.insert(mesh.corners.end(), triangle.begin(), triangle.end());
  mesh.faces.push_back({first, first + 1, first + 2});
}

StMesh ParseStlText(std::string_view text) {
  CLines lines(text);
  StMesh mesh;
  while (lines.Next()) {
    std::string const word = Lower(std::string(lines.Word().substr(0, 16)));
    if (word == "solid" || word == "endsolid") continue; // with any name
    if (word != "facet") lines.Refuse(Told(word) + " where \"facet\" belongs");
    NextLine(lines, "facet does");
    Expect(lines, "outer");
    std::array<RealPoint, 3> triangle;
    for (RealPoint& corner : triangle) {
      NextLine(lines, "facet does");
      Expect(lines, "vertex");
      corner = TakePoint(lines);
    }
    for (std::string_view const end : {"endloop", "endfacet"}) {
      NextLine(lines, "facet does");
      Expect(lines, end);
    }
    AddTriangle(mesh, triangle);
  }
  return mesh;
}

constexpr std::size_t c_stlHead = 84, c_stlTriangle = 50;

// Little-endian.
std::uint32_t Word(std::string_view bytes, std::size_t at) {
  std::uint32_t word = 0;
  for (std::size_t k = 4; k-- > 0;) word = word << 8 | static_cast<unsigned char>(bytes[at + k]);
  return word;
}

// The triangles that a binary file of this size has; nothing where its head counts others.
std::optional<std::size_t> BinaryTriangles(std::string_view bytes) {
  if (bytes.size() < c_stlHead) return std::nullopt;
  std::size_t const count = Word(bytes, c_stlHead - 4);
  return bytes.size() == c_stlHead + count * c_stlTriangle ? std::optional(count) : std::nullopt;
}

StMesh ParseStlBinary(std::string_view bytes, std::size_t triangles) {
  StMesh mesh;
  for (std::size_t t = 0; t < triangles; ++t) {
    std::size_t at = c_stlHead + t * c_stlTriangle + 12; // behind the normal
    auto const next = [&] {
      double const value = std::bit_cast<float>(Word(bytes, at));
      at += 4;
      if (!std::isfinite(value))
        throw CAppError("triangle " + std::to_string(t) + " has a corner that is not finite");
      return value;
    };
    std::array<RealPoint, 3> triangle;
    for (RealPoint& corner : triangle) {
      double const x = next(), y = next();
      corner = {x, y, next()};
    }
    AddTriangle(mesh, triangle);
  }
  return mesh;
}

bool BeginsWith(std::string_view text, std::string_view word) {
  auto const first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  return Lower(std::string(text.substr(first, word.size()))) == word;
}

} // namespace

StMesh ParseMesh(std::string_view bytes) {
  StMesh mesh;
  if (auto const triangles = BinaryTriangles(bytes)) {
    mesh = ParseStlBinary(bytes, *triangles);
  } else if (bytes.size() >= c_stlHead && bytes.find('\0') != std::string_view::npos) {
    auto const count = std::uint64_t{Word(bytes, c_stlHead - 4)};
    throw CAppError("it is no text, and as a binary STL file of " + std::to_string(count) +
                    " triangles it would have " +
                    std::to_string(c_stlHead + count * c_stlTriangle) + " bytes, not " +
                    std::to_string(bytes.size()));
  } else if (BeginsWith(bytes, "solid")) {
    mesh = ParseStlText(bytes);
  } else if (BeginsWith(bytes, "off") || BeginsWith(bytes, "#")) {
    mesh = ParseOff(bytes);
  } else {
    throw CAppError("it is neither an OFF nor an STL file");
  }
  if (mesh.faces.empty()) throw CAppError("it has no faces");
  return mesh;
}

StMesh ReadMesh(std::string const& path) {
  auto const size = SizeOfReadable(path);
  // The shortest triangle is 50 bytes and becomes three corners and a list of three numbers; the
  // shortest corner "0 0 0" and the shortest face "0" become up to 48 bytes, and lists double.
  RefuseBeyondMemory(static_cast<double>(size) * 49, "the mesh " + Quoted(path));
  std::string const bytes = BeginningOf(path, static_cast<std::size_t>(size));
  if (bytes.size() != size) throw CAppError("cannot read " + Quoted(path) + ": reading failed");
  try {
    return ParseMesh(bytes);
  } catch (CAppError const& error) {
    throw CAppError("cannot read " + Quoted(path) + ": " + error.what());
  }
}

} // namespace selu
