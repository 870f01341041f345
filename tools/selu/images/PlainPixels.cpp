#include "images/PlainPixels.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

using std::string_view_literals::operator""sv; // NOLINT(misc-unused-using-decls)

constexpr bool c_isBigEndian = std::endian::native == std::endian::big;

std::string_view Trimmed(std::string_view text) {
  constexpr auto blank = " \t\r\n"sv;
  auto const first = text.find_first_not_of(blank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

// Takes the first line off a text.
std::string_view NextLine(std::string_view& text) {
  auto const end = std::min(text.find('\n'), text.size());
  std::string_view const line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

template <std::size_t N>
bool Knows(std::array<std::string_view, N> const& keys, std::string_view key) {
  return std::ranges::find(keys, key) != keys.end();
}

// What says nothing of how the pixels are stored, or is looked at below.
constexpr std::array c_nrrdKeys = {
    "type"sv,         "dimension"sv,   "space"sv,       "space dimension"sv,
    "sizes"sv,        "spacings"sv,    "thicknesses"sv, "axis mins"sv,
    "axismins"sv,     "axis maxs"sv,   "axismaxs"sv,    "space directions"sv,
    "space origin"sv, "space units"sv, "units"sv,       "kinds"sv,
    "labels"sv,       "centers"sv,     "centerings"sv,  "content"sv,
    "endian"sv,       "encoding"sv,    "data file"sv,   "datafile"sv,
    "sample units"sv, "sampleunits"sv, "number"sv,      "measurement frame"sv};
constexpr std::array c_metaKeys = {"objecttype"sv,
                                   "ndims"sv,
                                   "binarydata"sv,
                                   "binarydatabyteordermsb"sv,
                                   "compresseddata"sv,
                                   "transformmatrix"sv,
                                   "rotation"sv,
                                   "orientation"sv,
                                   "offset"sv,
                                   "position"sv,
                                   "origin"sv,
                                   "centerofrotation"sv,
                                   "elementspacing"sv,
                                   "elementsize"sv,
                                   "dimsize"sv,
                                   "headersize"sv,
                                   "elementtype"sv,
                                   "elementdatafile"sv,
                                   "anatomicalorientation"sv,
                                   "elementbyteordermsb"sv,
                                   "elementnumberofchannels"sv,
                                   "modality"sv,
                                   "comment"sv,
                                   "name"sv,
                                   "feature"sv,
                                   "window"sv};

// By an answer of a header about its byte order.
StPlainPixels Ordered(StPixelStore const& store, EnPixel pixel, bool isBigEndian) {
  std::size_t const bytes = PixelBytes(pixel);
  return {store.file, store.offset, bytes, bytes > 1 && isBigEndian != c_isBigEndian};
}

std::optional<StPlainPixels> PlainNrrd(fs::path const& path, std::string_view header,
                                       StPixelStore const& store, EnPixel pixel) {
  bool isRaw = false;
  std::string endian;
  (void)NextLine(header); // the magic
  while (!header.empty()) {
    std::string_view const line = NextLine(header);
    if (Trimmed(line).empty()) break;
    if (line.starts_with('#') || line.find(":=") != std::string_view::npos) continue;
    auto const colon = line.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::string const key = Lower(std::string(Trimmed(line.substr(0, colon))));
    std::string const value = Lower(std::string(Trimmed(line.substr(colon + 1))));
    if (!Knows(c_nrrdKeys, key)) return std::nullopt;
    if (key == "encoding") isRaw = value == "raw";
    if (key == "endian") endian = value;
  }
  bool const hasOrder = endian == "little" || endian == "big" || PixelBytes(pixel) == 1;
  if (!isRaw || !hasOrder || (store.file == path && store.offset == 0)) return std::nullopt;
  return Ordered(store, pixel, endian == "big");
}

std::optional<StPlainPixels> PlainMeta(fs::path const& path, std::string_view header,
                                       StPixelStore const& store, EnPixel pixel) {
  bool isBinary = false, isBig = false, isEnded = false;
  while (!header.empty() && !isEnded) {
    std::string_view const line = NextLine(header);
    auto const split = line.find('=');
    if (split == std::string_view::npos) return std::nullopt;
    std::string const key = Lower(std::string(Trimmed(line.substr(0, split))));
    std::string const value = Lower(std::string(Trimmed(line.substr(split + 1))));
    bool const isTrue = value == "true" || value == "1", isFalse = value == "false" || value == "0";
    if (!Knows(c_metaKeys, key)) return std::nullopt;
    if (key == "binarydata") isBinary = isTrue;
    if (key == "compresseddata" && !isFalse) return std::nullopt;
    if (key == "headersize" && value.starts_with('-')) return std::nullopt;
    if (key == "binarydatabyteordermsb" || key == "elementbyteordermsb") {
      if (!isTrue && !isFalse) return std::nullopt;
      isBig = isTrue;
    }
    isEnded = key == "elementdatafile";
  }
  if (!isBinary || !isEnded || (store.file == path && store.offset == 0)) return std::nullopt;
  return Ordered(store, pixel, isBig);
}

template <class T>
T NumberAt(std::string_view header, std::size_t place, bool isSwapped) {
  std::array<char, sizeof(T)> bytes;
  std::memcpy(bytes.data(), header.data() + place, sizeof(T));
  if (isSwapped) std::ranges::reverse(bytes);
  return std::bit_cast<T>(bytes);
}

std::optional<StPlainPixels> PlainNifti(std::string_view header, StPixelStore const& store,
                                        EnPixel pixel) {
  constexpr std::size_t slopeAt = 112, interceptAt = 116, magicAt = 344, bytes = 348;
  if (header.size() < bytes) return std::nullopt;
  auto const magic = header.substr(magicAt, 4);
  if (magic != "n+1\0"sv && magic != "ni1\0"sv) return std::nullopt;
  bool const isSwapped = NumberAt<std::int32_t>(header, 0, false) != 348;
  auto const slope = NumberAt<float>(header, slopeAt, isSwapped);
  auto const intercept = NumberAt<float>(header, interceptAt, isSwapped);
  bool const isScaled = !(slope == 0 || (slope == 1 && intercept == 0));
  // A number of another length has been made of the one that is stored.
  if (isScaled || store.bytesPerPixel != PixelBytes(pixel)) return std::nullopt;
  return Ordered(store, pixel, isSwapped != c_isBigEndian);
}

} // namespace

std::optional<StPlainPixels> FindPlainPixels(fs::path const& path, EnFormat format,
                                             std::string_view beginning, StPixelStore const& store,
                                             EnPixel pixel) {
  if (store.ratio != 1 || store.isText || store.isDeflated) return std::nullopt;
  if (format == EnFormat::Nrrd) return PlainNrrd(path, beginning, store, pixel);
  if (format == EnFormat::Meta) return PlainMeta(path, beginning, store, pixel);
  if (format == EnFormat::Nifti) return PlainNifti(beginning, store, pixel);
  return std::nullopt;
}

void SwapBytes(std::span<std::byte> numbers, std::size_t bytes) noexcept {
  auto const swapAll = [&]<class Word>(Word) {
    for (std::size_t i = 0; i + sizeof(Word) <= numbers.size(); i += sizeof(Word)) {
      std::array<std::byte, sizeof(Word)> word;
      std::memcpy(word.data(), numbers.data() + i, sizeof word);
      std::ranges::reverse(word);
      std::memcpy(numbers.data() + i, word.data(), sizeof word);
    }
  };
  if (bytes == 2) swapAll(std::uint16_t{});
  if (bytes == 4) swapAll(std::uint32_t{});
  if (bytes == 8) swapAll(std::uint64_t{});
}

void ReadAt(fs::path const& file, std::uint64_t offset, std::span<std::byte> out) {
  int const descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw CAppError("cannot read " + Quoted(file) + ": " + SystemText(errno));
  std::size_t done = 0;
  while (done < out.size()) {
    ssize_t const count = ::pread(descriptor, out.data() + done, out.size() - done,
                                  static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  ::close(descriptor);
  if (done < out.size())
    throw CAppError("cannot read " + Quoted(file) + ": the file is damaged or cut off");
}

void ReadPlainPixels(StPlainPixels const& pixels, std::uint64_t first, std::span<std::byte> out) {
  ReadAt(pixels.file, pixels.offset + first, out);
  if (pixels.isSwapped) SwapBytes(out, pixels.bytes);
}

} // namespace selu
