#include "FileFormat.h"

#include "Errors.h"
#include "Texts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

using std::string_view_literals::operator""sv;

std::string Lower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

// The bytes of a regular file that can be opened.
ORVA::uint64 SizeOfReadable(fs::path const& path) {
  struct stat status = {};
  auto const fail = [&](std::string const& why) -> ORVA::uint64 {
    throw CAppError("cannot read " + Quoted(path) + ": " + why);
  };
  if (::stat(path.c_str(), &status) != 0) return fail(SystemText(errno));
  if (S_ISDIR(status.st_mode)) return fail("it is a directory");
  if (!S_ISREG(status.st_mode)) return fail("it is not a regular file");
  if (::access(path.c_str(), R_OK) != 0) return fail(SystemText(errno));
  if (status.st_size == 0) return fail("the file is empty");
  return static_cast<ORVA::uint64>(status.st_size);
}

std::string Beginning(fs::path const& path, std::size_t bytes) {
  std::ifstream file(path, std::ios::binary);
  std::string text(bytes, '\0');
  file.read(text.data(), static_cast<std::streamsize>(bytes));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return text;
}

constexpr std::array<std::pair<std::string_view, EnFormat>, 9> c_signatures = {{
    {"\x89PNG"sv, EnFormat::Png},
    {"II*\0"sv, EnFormat::Tiff},
    {"MM\0*"sv, EnFormat::Tiff},
    {"II+\0"sv, EnFormat::Tiff},
    {"MM\0+"sv, EnFormat::Tiff},
    {"NRRD000"sv, EnFormat::Nrrd},
    {"\x5c\x01\0\0"sv, EnFormat::Nifti}, // the header's length, 348, in either byte order
    {"\0\0\x01\x5c"sv, EnFormat::Nifti},
    {"ObjectType"sv, EnFormat::Meta},
}};

// Endings of formats whose files need not begin with something of their own.
constexpr std::array<std::pair<std::string_view, EnFormat>, 12> c_inputEndings = {{
    {".nii", EnFormat::Nifti},
    {".nii.gz", EnFormat::Nifti},
    {".hdr", EnFormat::Nifti},
    {".img", EnFormat::Nifti},
    {".hdr.gz", EnFormat::Nifti},
    {".img.gz", EnFormat::Nifti},
    {".nia", EnFormat::Nifti},
    {".mha", EnFormat::Meta},
    {".mhd", EnFormat::Meta},
    {".dcm", EnFormat::Dicom},
    {".dicom", EnFormat::Dicom},
    {".ima", EnFormat::Dicom},
}};

constexpr std::array<std::pair<std::string_view, EnFormat>, 7> c_outputEndings = {{
    {".png", EnFormat::Png},
    {".tif", EnFormat::Tiff},
    {".tiff", EnFormat::Tiff},
    {".nrrd", EnFormat::Nrrd},
    {".mha", EnFormat::Meta},
    {".nii", EnFormat::Nifti},
    {".nii.gz", EnFormat::Nifti},
}};

std::string Trimmed(std::string_view text) {
  constexpr auto blank = " \t\r\n"sv;
  auto const first = text.find_first_not_of(blank);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(blank) - first + 1));
}

// The value of the first header line whose key is one of these; keys are compared in lower case.
std::optional<std::string> HeaderValue(std::string_view header, char separator,
                                       std::initializer_list<std::string_view> keys) {
  while (!header.empty()) {
    auto const end = header.find('\n');
    std::string_view const line = header.substr(0, end);
    header.remove_prefix(end == std::string_view::npos ? header.size() : end + 1);
    if (separator == ':' && Trimmed(line).empty()) return std::nullopt; // the end of a NRRD header
    auto const split = line.find(separator);
    if (split == std::string_view::npos) continue;
    std::string const key = Lower(Trimmed(line.substr(0, split)));
    if (std::find(keys.begin(), keys.end(), key) != keys.end())
      return Trimmed(line.substr(split + 1));
  }
  return std::nullopt;
}

// Bytes of the pixels' own file, where a header names one; of the header's file otherwise. Lists
// and patterns of files are left to the reader.
ORVA::uint64 StoreBytes(fs::path const& path, std::optional<std::string> const& data) {
  if (!data || Lower(*data) == "local") return SizeOfReadable(path);
  if (Lower(data->substr(0, 4)) == "list" || data->find('%') != std::string::npos)
    throw CAppError("cannot read " + Quoted(path) +
                    ": its pixels are spread over several files, which selu does not read");
  return SizeOfReadable(path.parent_path() / *data);
}

// The most that a byte can unpack to: deflate 1032, bzip2 and the methods of TIFF far more.
constexpr ORVA::uint64 c_deflate = 1100, c_anyMethod = 65536;

StPixelStore NrrdStore(fs::path const& path) {
  std::string const header = Beginning(path, 1 << 16);
  auto const encoding = Lower(HeaderValue(header, ':', {"encoding"}).value_or("raw"));
  auto const bytes = StoreBytes(path, HeaderValue(header, ':', {"data file", "datafile"}));
  bool const packed = encoding == "gz" || encoding == "gzip";
  bool const raw = encoding == "raw";
  return {bytes, raw ? 1 : packed ? c_deflate : c_anyMethod};
}

StPixelStore MetaStore(fs::path const& path) {
  std::string const header = Beginning(path, 1 << 16);
  auto const packed = Lower(HeaderValue(header, '=', {"compresseddata"}).value_or("false"));
  auto const bytes = StoreBytes(path, HeaderValue(header, '=', {"elementdatafile"}));
  return {bytes, packed == "true" || packed == "1" ? c_deflate : 1};
}

StPixelStore NiftiStore(fs::path const& path) {
  std::string const ending = EndingOf(path);
  fs::path data = path;
  if (ending.starts_with(".hdr")) {
    data.replace_extension(); // of .hdr.gz only the .gz
    if (ending == ".hdr.gz") data.replace_extension();
    fs::path const plain = fs::path(data).concat(".img");
    data = fs::exists(plain) ? plain : data.concat(".img.gz");
  }
  auto const bytes = SizeOfReadable(data);
  return {bytes, Beginning(data, 2) == "\x1f\x8b"sv ? c_deflate : 1};
}

} // namespace

std::string EndingOf(fs::path const& path) {
  std::string ending = Lower(path.extension().string());
  if (ending == ".gz") ending = Lower(path.stem().extension().string()) + ending;
  return ending;
}

EnFormat FormatOfFile(fs::path const& path) {
  (void)SizeOfReadable(path);
  std::string const begin = Beginning(path, 512);
  for (auto const& [signature, format] : c_signatures)
    if (begin.starts_with(signature)) return format;
  if (begin.size() >= 132 && begin.substr(128, 4) == "DICM") return EnFormat::Dicom;
  std::string const ending = EndingOf(path);
  for (auto const& [known, format] : c_inputEndings)
    if (ending == known) return format;
  throw CAppError("cannot read " + Quoted(path) +
                  ": it is no PNG, TIFF, NRRD, MetaImage, NIfTI or DICOM image");
}

EnFormat FormatForOutput(fs::path const& path) {
  std::string const ending = EndingOf(path);
  for (auto const& [known, format] : c_outputEndings)
    if (ending == known) return format;
  throw CAppError("cannot write " + Quoted(path) +
                  ": the ending must be one of .nrrd, .mha, .nii, " + ".nii.gz, .tif and .png");
}

StPixelStore PixelStoreOf(fs::path const& path, EnFormat format) {
  switch (format) {
  case EnFormat::Nrrd:
    return NrrdStore(path);
  case EnFormat::Meta:
    return MetaStore(path);
  case EnFormat::Nifti:
    return NiftiStore(path);
  case EnFormat::Png:
    return {SizeOfReadable(path), c_deflate * 8}; // 1-bit pixels become bytes
  case EnFormat::Tiff:
  case EnFormat::Dicom:
    break;
  }
  return {SizeOfReadable(path), c_anyMethod};
}

} // namespace selu
