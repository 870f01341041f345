#include "images/DicomElements.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace selu {
namespace {

constexpr double c_unknown = std::numeric_limits<double>::infinity();
constexpr std::uint32_t c_undefined = 0xffffffff; // the element's end is told by a delimiter
constexpr std::uint32_t c_syntaxTag = 0x00020010, c_bitsTag = 0x00280100, c_pixelTag = 0x7fe00010;

struct StElement {
  std::uint32_t tag = 0, length = 0;
  std::uint64_t value = 0; // where it begins in the file
};

class CDicomFile {
public:
  explicit CDicomFile(std::filesystem::path const& path)
      : m_Path(path), m_Size(SizeOfReadable(path)), m_File(path, std::ios::binary) {
    constexpr std::uint64_t preamble = 128;
    if (Text(preamble, 4) == "DICM")
      m_Place = preamble + 4;
    else
      m_Place = m_Size; // elements without a preamble are left to the reader
  }

  double Walk() {
    bool plain = false, anyPixels = false, walked = false;
    std::uint32_t bits = 0;
    double pixels = c_unknown;
    while (m_Place < m_Size) {
      walked = true;
      auto const element = Next();
      if (!element) return pixels; // lost: nothing can be said
      if (element->tag == c_syntaxTag && !Begin(*element)) return pixels;
      if (element->tag == c_bitsTag) bits = Number(element->value, 2);
      if (element->tag == c_pixelTag) {
        anyPixels = true;
        plain = element->length != c_undefined;
        if (plain && bits > 0) pixels = element->length * 8.0 / bits;
      }
      // Of an element of undefined length the contents are walked through as well.
      m_Place = element->value + (element->length == c_undefined ? 0 : element->length);
      if (m_Place > m_Size) Fail();
      m_Delimited = element->tag == 0xfffee0dd;
    }
    if (walked && (!anyPixels || (!plain && !m_Delimited))) Fail();
    return pixels;
  }

private:
  [[noreturn]] void Fail() const {
    throw CAppError("cannot read " + Quoted(m_Path) + ": the file is damaged or cut off");
  }

  std::string Text(std::uint64_t place, std::size_t count) {
    if (place > m_Size || count > m_Size - place) Fail();
    std::string text(count, '\0');
    m_File.seekg(static_cast<std::streamoff>(place));
    m_File.read(text.data(), static_cast<std::streamsize>(count));
    return text;
  }

  std::uint32_t Number(std::uint64_t place, std::size_t count) {
    std::string const bytes = Text(place, count);
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
  }

  std::optional<StElement> Next() {
    StElement element;
    element.tag = Number(m_Place, 2) << 16 | Number(m_Place + 2, 2);
    std::uint32_t const group = element.tag >> 16;
    bool const typed = group != 0xfffe && (group == 2 || m_Explicit);
    if (!typed) {
      element.length = Number(m_Place + 4, 4);
      element.value = m_Place + 8;
      return element;
    }
    std::string const type = Text(m_Place + 4, 2);
    auto const isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    if (!std::all_of(type.begin(), type.end(), isCapital)) return std::nullopt;
    constexpr std::string_view longTypes = "OB OD OF OL OV OW SQ SV UC UN UR UT UV ";
    bool const isLong = longTypes.find(type + " ") != std::string_view::npos;
    element.length = isLong ? Number(m_Place + 8, 4) : Number(m_Place + 6, 2);
    element.value = m_Place + (isLong ? 12 : 8);
    if (type == "UN" && element.length == c_undefined) return std::nullopt; // untyped within
    return element;
  }

  // Takes the transfer syntax up; false for one that cannot be walked.
  bool Begin(StElement const& element) {
    if (element.length > 64) return false;
    std::string syntax = Text(element.value, element.length);
    syntax.resize(std::min(syntax.find_last_not_of(std::string_view("\0 ", 2)) + 1, syntax.size()));
    m_Explicit = syntax != "1.2.840.10008.1.2";
    return syntax != "1.2.840.10008.1.2.2" && syntax != "1.2.840.10008.1.2.1.99";
  }

  std::filesystem::path m_Path;
  std::uint64_t m_Size;
  std::ifstream m_File;
  std::uint64_t m_Place = 0;
  bool m_Explicit = true, m_Delimited = false;
};

} // namespace

double WalkDicomElements(std::filesystem::path const& path) { return CDicomFile(path).Walk(); }

} // namespace selu
