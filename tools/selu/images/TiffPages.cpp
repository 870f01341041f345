#include "images/TiffPages.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace selu {
namespace {

using Word = std::uint64_t;

// Tags of a page's directory that matter here.
enum EnTag : Word {
  SubfileType = 254,
  Width = 256,
  Length = 257,
  SampleBits = 258,
  Photometric = 262,
  StripOffsets = 273,
  Samples = 277,
  StripBytes = 279,
  TileOffsets = 324,
  TileBytes = 325,
  SampleKind = 339
};

// Kinds of numbers that samples are.
enum EnSample : Word { Unsigned = 1, Signed = 2, Floating = 3, Untyped = 4 };

// What a page's directory says, with the values that count where it says nothing.
struct StPage {
  Word next = 0, width = 0, length = 0;
  Word bits = 1, samples = 1, kind = Unsigned, photometric = 0;
  bool preview = false;

  [[nodiscard]] bool IsGray() const noexcept { return samples == 1 && photometric <= 1; }
  [[nodiscard]] bool HasPixelsOf(StPage const& other) const noexcept {
    return bits == other.bits && samples == other.samples && kind == other.kind &&
           photometric == other.photometric;
  }
};

// ITK's reader hands out zeros for integers of 32 bits and takes those of 1 and 4 bits for colors.
bool IsRead(StPage const& page) noexcept {
  if (!page.IsGray()) return true; // colors are refused as such
  if (page.kind == Floating) return page.bits == 32;
  return page.kind <= Untyped && (page.bits == 8 || page.bits == 16);
}

std::string KindText(StPage const& page) {
  char const* const what = page.kind == Floating  ? " floating-point numbers"
                           : page.kind <= Untyped ? " integers"
                                                  : " numbers that are not real";
  return "TIFF of " + std::to_string(page.bits) + "-bit" + what +
         " is not read, only of 8 and 16-bit integers and 32-bit floating-point numbers";
}

// Numbers of a TIFF file in its byte order; each read is checked against the file's end.
class CTiffFile {
public:
  explicit CTiffFile(std::filesystem::path const& path)
      : m_Path(path), m_Size(SizeOfReadable(path)), m_File(path, std::ios::binary) {
    m_BigEndian = Bytes(0, 1)[0] == 'M';
    m_Big = Number(2, 2) == 43;
    m_First = m_Big ? Number(8, 8) : Number(4, 4);
  }

  [[nodiscard]] Word FirstPage() const noexcept { return m_First; }

  [[nodiscard]] StPage Page(Word place) {
    Word const countBytes = m_Big ? 8 : 2, entryBytes = m_Big ? 20 : 12;
    Word const count = Number(place, countBytes);
    if (count > 4096) Fail();
    StPage page;
    std::vector<Word> offsets, sizes;
    for (Word i = 0; i < count; ++i)
      Entry(place + countBytes + i * entryBytes, page, offsets, sizes);
    if (offsets.size() != sizes.size()) Fail();
    for (std::size_t i = 0; i < offsets.size(); ++i)
      if (offsets[i] > m_Size || sizes[i] > m_Size - offsets[i]) Fail();
    page.next = Number(place + countBytes + count * entryBytes, m_Big ? 8 : 4);
    return page;
  }

  [[noreturn]] void Fail(std::string const& why = "the file is damaged or cut off") const {
    throw CAppError("cannot read " + Quoted(m_Path) + ": " + why);
  }

private:
  std::array<unsigned char, 8> Bytes(Word place, Word count) {
    if (place > m_Size || count > m_Size - place) Fail();
    std::array<unsigned char, 8> bytes{};
    m_File.seekg(static_cast<std::streamoff>(place));
    if (!m_File.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count)))
      Fail();
    return bytes;
  }

  Word Number(Word place, Word count) {
    auto const bytes = Bytes(place, count);
    Word value = 0;
    for (std::size_t i = 0; i < count; ++i)
      value = value << 8 | bytes[m_BigEndian ? i : static_cast<std::size_t>(count) - 1 - i];
    return value;
  }

  // Bytes of a number of type 0, 1, ...; 0 where there is no such type.
  static Word TypeBytes(Word type) {
    constexpr std::array<Word, 19> bytes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                            8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < bytes.size() ? bytes[type] : 0;
  }

  // Where the values of an entry are, which must be inside the file, and how many: in the entry
  // itself where they fit, else where it points to.
  std::pair<Word, Word> Place(Word entry, Word bytes) {
    Word const room = m_Big ? 8 : 4, count = Number(entry + 4, room);
    if (bytes == 0 || count > m_Size / bytes) Fail();
    Word const inside = entry + 4 + room;
    Word const place = count * bytes <= room ? inside : Number(inside, room);
    if (place > m_Size || count * bytes > m_Size - place) Fail();
    return {place, count};
  }

  // Entries of types that are not known are left alone.
  void CheckPlace(Word entry) {
    Word const bytes = TypeBytes(Number(entry + 2, 2));
    if (bytes > 0) (void)Place(entry, bytes);
  }

  std::vector<Word> Values(Word entry) {
    Word const bytes = TypeBytes(Number(entry + 2, 2));
    auto const [place, count] = Place(entry, bytes);
    std::vector<Word> values(count);
    for (Word i = 0; i < count; ++i) values[i] = Number(place + i * bytes, bytes);
    return values;
  }

  Word Value(Word entry) {
    auto const values = Values(entry);
    return values.empty() ? 0 : values.front();
  }

  void Entry(Word entry, StPage& page, std::vector<Word>& offsets, std::vector<Word>& sizes) {
    switch (Number(entry, 2)) {
    case SubfileType:
      page.preview = (Value(entry) & 1) != 0;
      break;
    case Width:
      page.width = Value(entry);
      break;
    case Length:
      page.length = Value(entry);
      break;
    case SampleBits:
      page.bits = Value(entry);
      break;
    case Photometric:
      page.photometric = Value(entry);
      break;
    case Samples:
      page.samples = Value(entry);
      break;
    case SampleKind:
      page.kind = Value(entry);
      break;
    case StripOffsets:
    case TileOffsets:
      offsets = Values(entry);
      break;
    case StripBytes:
    case TileBytes:
      sizes = Values(entry);
      break;
    default:
      CheckPlace(entry);
      break;
    }
  }

  std::filesystem::path m_Path;
  Word m_Size;
  std::ifstream m_File;
  bool m_BigEndian = false, m_Big = false;
  Word m_First = 0;
};

} // namespace

void CheckTiffPages(std::filesystem::path const& path) {
  CTiffFile file(path);
  std::set<Word> seen; // a chain of directories that bites its tail would never end
  std::optional<StPage> first;
  for (Word place = file.FirstPage(); place != 0;) {
    if (!seen.insert(place).second) file.Fail();
    StPage const page = file.Page(place);
    place = page.next;
    if (page.preview) continue;
    if (!first) first = page;
    if (!IsRead(page)) file.Fail(KindText(page));
    if (page.width != first->width || page.length != first->length)
      file.Fail("its pages differ in size");
    if (!page.HasPixelsOf(*first)) file.Fail("its pages differ in their pixel type");
  }
}

} // namespace selu
