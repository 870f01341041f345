#include "images/PixelStore.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>

#include <zlib.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

using std::string_view_literals::operator""sv; // NOLINT(misc-unused-using-decls)

// Deflate reaches 1032; bzip2 and the methods of TIFF and DICOM far more.
constexpr double c_deflate = 1100, c_anyMethod = 65536;

std::string Trimmed(std::string_view text) {
  constexpr auto blank = " \t\r\n"sv;
  auto const first = text.find_first_not_of(blank);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(blank) - first + 1));
}

struct StField {
  std::string value;
  std::size_t end; // of its line, in bytes from the header's beginning
};

// The first header line whose key is one of these; keys are compared in lower case.
std::optional<StField> FindField(std::string_view header, char separator,
                                 std::initializer_list<std::string_view> keys) {
  for (std::size_t begin = 0; begin < header.size();) {
    auto const newline = std::min(header.find('\n', begin), header.size() - 1);
    std::string_view const line = header.substr(begin, newline - begin);
    begin = newline + 1;
    if (separator == ':' && Trimmed(line).empty()) return std::nullopt; // a NRRD header's end
    auto const split = line.find(separator);
    if (split == std::string_view::npos) continue;
    std::string const key = Lower(Trimmed(line.substr(0, split)));
    if (std::find(keys.begin(), keys.end(), key) != keys.end())
      return StField{Trimmed(line.substr(split + 1)), begin};
  }
  return std::nullopt;
}

[[noreturn]] void RefuseHeader(fs::path const& path, std::string const& why) {
  throw CAppError("cannot read " + Quoted(path) + ": " + why);
}

// The file named by a header, relative to the header's folder.
fs::path DataFile(fs::path const& header, std::string const& name) {
  if (Lower(name.substr(0, 4)) == "list" || name.find('%') != std::string::npos)
    RefuseHeader(header, "its pixels are spread over several files, which selu does not read");
  return header.parent_path() / name;
}

StPixelStore NrrdStore(fs::path const& path, std::string_view header) {
  auto const encoding = FindField(header, ':', {"encoding"});
  auto const data = FindField(header, ':', {"data file", "datafile"});
  std::string const method = encoding ? Lower(encoding->value) : "raw";
  double const ratio = method == "raw"                      ? 1
                       : method == "gz" || method == "gzip" ? c_deflate
                                                            : c_anyMethod;
  auto const blank = std::min(header.find("\n\n"), header.find("\r\n\r\n"));
  if (data) return {DataFile(path, data->value), 0, ratio};
  auto const skip = header.compare(std::min(blank, header.size()), 2, "\n\n") == 0 ? 2u : 4u;
  return {path, blank == std::string::npos ? 0 : blank + skip, ratio};
}

// Bytes before the pixels; -1: as many as the pixels leave; 0: what the header says elsewhere.
ORVA::int64 MetaHeaderSize(std::string_view header, fs::path const& path) {
  auto const field = FindField(header, '=', {"headersize"});
  if (!field) return 0;
  auto const number = ParseIntegers(field->value);
  if (!number || number->size() != 1 || number->front() < -1)
    RefuseHeader(path, "its header size is no number of bytes");
  return number->front();
}

// What the library that reads a MetaImage header has room for, of a value and of its key; more
// would run over its fields.
constexpr std::size_t c_metaText = 254, c_metaOrientation = 9, c_metaKey = 254;
constexpr std::array c_metaTexts = {"comment"sv,         "name"sv,          "objecttype"sv,
                                    "objectsubtype"sv,   "elementtype"sv,   "modality"sv,
                                    "acquisitiondate"sv, "distanceunits"sv, "transformtype"sv};

std::size_t MetaRoom(std::string_view key) {
  if (key == "anatomicalorientation") return c_metaOrientation;
  return std::ranges::find(c_metaTexts, key) == c_metaTexts.end() ? c_mostMetaNote : c_metaText;
}

void CheckMetaLines(fs::path const& path, std::string_view header) {
  for (bool isEnded = false; !header.empty() && !isEnded;) {
    auto const end = std::min(header.find('\n'), header.size());
    std::string_view const line = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    auto const split = line.find_first_of("=:");
    if (split == std::string_view::npos) continue;
    std::string const name = Trimmed(line.substr(0, split)), key = Lower(name);
    auto const bytes = Trimmed(line.substr(split + 1)).size();
    auto const room = MetaRoom(key);
    isEnded = key == "elementdatafile";
    if (name.size() > c_metaKey)
      RefuseHeader(path, "its header has a key of " + std::to_string(name.size()) +
                             " bytes, but selu reads up to " + std::to_string(c_metaKey));
    if (bytes > room)
      RefuseHeader(path, "its header has " + std::to_string(bytes) + " bytes for " +
                             QuotedPart(name) + ", but selu reads up to " + std::to_string(room));
  }
}

StPixelStore MetaStore(fs::path const& path, std::string_view header) {
  CheckMetaLines(path, header);
  auto const packed = FindField(header, '=', {"compresseddata"});
  auto const data = FindField(header, '=', {"elementdatafile"});
  if (!data && header.size() >= c_headerBytes)
    RefuseHeader(path, "its header is longer than " + std::to_string(c_headerBytes) + " bytes");
  std::string const answer = packed ? Lower(packed->value) : "false";
  double const ratio = answer == "true" || answer == "1" ? c_deflate : 1;
  bool const local = !data || Lower(data->value) == "local";
  StPixelStore store = {local ? path : DataFile(path, data->value), local && data ? data->end : 0,
                        ratio};
  auto const binary = FindField(header, '=', {"binarydata"});
  store.isText = binary && std::string_view("tT1").find(binary->value[0]) == std::string_view::npos;
  auto const skipped = MetaHeaderSize(header, path);
  if (skipped <= 0) return store; // plain pixels then end with the file, wherever they begin
  if (static_cast<std::uint64_t>(skipped) < store.offset)
    RefuseHeader(path, "its pixels begin inside its header");
  store.offset = static_cast<std::uint64_t>(skipped);
  return store;
}

// Of a pair .hdr and .img the second file, either of them perhaps gzipped.
fs::path NiftiDataFile(fs::path const& path) {
  std::string const ending = EndingOf(path);
  if (!ending.starts_with(".hdr")) return path;
  fs::path stem = path;
  stem.replace_extension();
  if (ending == ".hdr.gz") stem.replace_extension();
  fs::path const plain = fs::path(stem).concat(".img");
  return fs::exists(plain) ? plain : fs::path(stem).concat(".img.gz");
}

constexpr std::size_t c_niftiHeaderBytes = 352;

std::string UnpackedBeginning(fs::path const& path) {
  std::unique_ptr<gzFile_s, int (*)(gzFile)> const file(::gzopen(path.c_str(), "rb"), ::gzclose_r);
  std::string text(c_niftiHeaderBytes, '\0');
  int const count = file ? ::gzread(file.get(), text.data(), c_niftiHeaderBytes) : -1;
  text.resize(static_cast<std::size_t>(std::max(count, 0)));
  return text;
}

// Bytes of NIfTI's types of numbers; readers go by these, not by the header's own count of bits.
std::size_t NiftiTypeBytes(int type) {
  constexpr std::array<std::pair<int, std::size_t>, 10> types = {{{2, 1},
                                                                  {4, 2},
                                                                  {8, 4},
                                                                  {16, 4},
                                                                  {64, 8},
                                                                  {256, 1},
                                                                  {512, 2},
                                                                  {768, 4},
                                                                  {1024, 8},
                                                                  {1280, 8}}};
  for (auto const& [known, bytes] : types)
    if (known == type) return bytes;
  return 0;
}

// Where the pixels begin and how many bytes each has on disk, before a slope makes it a
// floating-point number: by the header of NIfTI-1 or its forerunner.
struct StNiftiHeader {
  std::uint64_t offset = 0;
  std::size_t bytesPerPixel = 0; // 0: unknown
};

StNiftiHeader ReadNiftiHeader(fs::path const& path, std::string header) {
  if (header.size() < 348) RefuseHeader(path, "the file is damaged or cut off");
  header.resize(c_niftiHeaderBytes);
  auto const load = [&]<class T>(std::size_t place, T, bool swap) {
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), header.data() + place, sizeof(T));
    if (swap) std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<T>(bytes);
  };
  bool const swapped = header[0] == 0;
  if (load(0, std::int32_t{}, swapped) == 540)
    RefuseHeader(path, "NIfTI-2 is not read, only NIfTI-1");
  auto const offset = static_cast<double>(load(108, float{}, swapped));
  bool const single = std::memcmp(header.data() + 344, "n+1", 4) == 0;
  // Readers take pixels inside the header for such behind it.
  if (!std::isfinite(offset) || (single && offset < 352))
    RefuseHeader(path, "its pixels begin inside its header");
  // In a file of their own they may be counted from its end, by a number below 0.
  return {static_cast<std::uint64_t>(std::clamp(offset, 0.0, 1e18)),
          NiftiTypeBytes(load(70, std::int16_t{}, swapped))};
}

StPixelStore NiftiStore(fs::path const& path, std::string_view header) {
  fs::path const data = NiftiDataFile(path);
  auto const isGzipped = [](std::string_view bytes) { return bytes.starts_with("\x1f\x8b"sv); };
  bool const gzipped = isGzipped(data == path ? header.substr(0, 2) : BeginningOf(data, 2));
  auto const [offset, bytes] =
      ReadNiftiHeader(path, isGzipped(header) ? UnpackedBeginning(path) : std::string(header));
  return gzipped ? StPixelStore{data, 0, c_deflate, offset, bytes}
                 : StPixelStore{data, offset, 1, 0, bytes};
}

StPixelStore FindStore(fs::path const& path, EnFormat format, std::string_view header) {
  switch (format) {
  case EnFormat::Nrrd:
    return NrrdStore(path, header);
  case EnFormat::Meta:
    return MetaStore(path, header);
  case EnFormat::Nifti:
    return NiftiStore(path, header);
  case EnFormat::Png:
    return {path, 0, c_deflate * 8}; // 1-bit pixels become bytes
  case EnFormat::Tiff:
  case EnFormat::Dicom:
    break;
  }
  return {path, 0, c_anyMethod};
}

// Unpacks a gzip or zlib stream from a place of a file on; joined streams count as one.
class CUnpacker {
public:
  CUnpacker(fs::path const& path, std::uint64_t offset) : m_File(path, std::ios::binary) {
    m_File.seekg(static_cast<std::streamoff>(offset));
    constexpr int anyHeader = 32; // added to the window bits: zlib's or gzip's
    if (::inflateInit2(&m_Stream, 15 + anyHeader) != Z_OK) throw std::bad_alloc();
  }
  CUnpacker(CUnpacker const&) = delete;
  CUnpacker& operator=(CUnpacker const&) = delete;
  ~CUnpacker() { ::inflateEnd(&m_Stream); }

  /// Bytes of the next piece, 0 at the end; nothing when the stream is damaged or cut off.
  std::optional<std::size_t> Next() {
    while (true) { // a stream may be empty, and so may what is read of one
      if (m_Ended && !NextStream()) return 0;
      if (m_Stream.avail_in == 0 && !Fill()) return std::nullopt;
      m_Stream.next_out = m_Out.data();
      m_Stream.avail_out = static_cast<uInt>(m_Out.size());
      int const status = ::inflate(&m_Stream, Z_NO_FLUSH);
      if (status == Z_MEM_ERROR) throw std::bad_alloc();
      if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) return std::nullopt;
      m_Ended = status == Z_STREAM_END;
      if (std::size_t const count = m_Out.size() - m_Stream.avail_out; count > 0) return count;
    }
  }

private:
  bool Fill() {
    m_File.read(reinterpret_cast<char*>(m_In.data()), static_cast<std::streamsize>(m_In.size()));
    m_Stream.next_in = m_In.data();
    m_Stream.avail_in = static_cast<uInt>(m_File.gcount());
    return m_Stream.avail_in > 0;
  }
  // Whatever follows a stream and is no stream itself is not ours.
  bool NextStream() {
    if (m_Stream.avail_in == 0 && !Fill()) return false;
    if (*m_Stream.next_in != 0x1f) return false;
    m_Ended = false;
    return ::inflateReset(&m_Stream) == Z_OK;
  }

  std::ifstream m_File;
  z_stream m_Stream = {};
  bool m_Ended = false;
  std::vector<Bytef> m_In = std::vector<Bytef>(1 << 16), m_Out = std::vector<Bytef>(1 << 18);
};

std::size_t StoredBytes(StPixelStore const& store, std::size_t bytesPerPixel) {
  return store.bytesPerPixel > 0 ? store.bytesPerPixel : bytesPerPixel;
}

// Of all pixels in the file, unpacked.
double ClaimedBytes(StPixelStore const& store, std::vector<ORVA::int64> const& extents,
                    std::size_t bytesPerPixel) {
  double pixels = 1;
  for (auto const extent : extents) pixels *= static_cast<double>(extent);
  // A number of a text needs a digit and, but for the last, a blank.
  return store.isText ? pixels * 2 - 1
                      : pixels * static_cast<double>(StoredBytes(store, bytesPerPixel));
}

} // namespace

StPixelStore StoreOf(fs::path const& path, EnFormat format, std::string_view beginning) {
  auto store = FindStore(path, format, beginning);
  store.isDeflated = store.ratio == c_deflate;
  (void)SizeOfReadable(store.file, path);
  return store;
}

void CheckClaim(fs::path const& path, StPixelStore const& store,
                std::vector<ORVA::int64> const& extents, std::size_t bytesPerPixel) {
  auto const size = SizeOfReadable(store.file, path);
  double const room = size > store.offset ? static_cast<double>(size - store.offset) : 0;
  if (ClaimedBytes(store, extents, bytesPerPixel) > room * store.ratio)
    throw CAppError("cannot read " + Quoted(path) + ": its header claims " +
                    Joined(extents, " x ") + " pixels of " +
                    std::to_string(StoredBytes(store, bytesPerPixel) * 8) + " bits, but " +
                    (store.file == path ? "the file" : QuotedPart(store.file.native())) +
                    " has only " + BytesText(static_cast<double>(size)));
}

// Unpacks as far as the pixels go, and to the end where that is near, since the checksum is there.
void CheckDeflated(fs::path const& path, StPixelStore const& store,
                   std::vector<ORVA::int64> const& extents, std::size_t bytesPerPixel) {
  CUnpacker unpacker(store.file, store.offset);
  double const needed =
      static_cast<double>(store.before) + ClaimedBytes(store, extents, bytesPerPixel);
  constexpr double beyond = 1 << 20;
  double unpacked = 0;
  for (std::size_t count = 1; count > 0 && unpacked < needed + beyond;) {
    auto const next = unpacker.Next();
    if (!next) throw CAppError("cannot read " + Quoted(path) + ": the file is damaged or cut off");
    count = *next;
    unpacked += static_cast<double>(count);
  }
  if (unpacked < needed)
    throw CAppError("cannot read " + Quoted(path) + ": its header claims " + BytesText(needed) +
                    " unpacked, but the file unpacks to " + BytesText(unpacked));
}

} // namespace selu
