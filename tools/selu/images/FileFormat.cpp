#include "images/FileFormat.h"

#include "base/Errors.h"
#include "base/Texts.h"

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

using std::string_view_literals::operator""sv; // NOLINT(misc-unused-using-decls)

std::string Lower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

constexpr std::array<std::pair<std::string_view, EnFormat>, 9> c_signatures = {{
    {"\x89PNG\r\n\x1a\n"sv, EnFormat::Png},
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

} // namespace

std::string EndingOf(fs::path const& path) {
  std::string ending = Lower(path.extension().string());
  if (ending == ".gz") ending = Lower(path.stem().extension().string()) + ending;
  return ending;
}

std::uint64_t SizeOfReadable(fs::path const& path, fs::path const& header) {
  struct stat status = {};
  auto const fail = [&](std::string const& why) -> std::uint64_t {
    std::string const named = header.empty() || header == path
                                  ? Quoted(path)
                                  : Quoted(header) + ", whose pixels are in " + Quoted(path);
    throw CAppError("cannot read " + named + ": " + why);
  };
  if (::stat(path.c_str(), &status) != 0) return fail(SystemText(errno));
  if (S_ISDIR(status.st_mode)) return fail("it is a directory");
  if (!S_ISREG(status.st_mode)) return fail("it is not a regular file");
  if (::access(path.c_str(), R_OK) != 0) return fail(SystemText(errno));
  if (status.st_size == 0) return fail("the file is empty");
  return static_cast<std::uint64_t>(status.st_size);
}

std::string BeginningOf(fs::path const& path, std::size_t bytes) {
  std::ifstream file(path, std::ios::binary);
  std::string text(bytes, '\0');
  file.read(text.data(), static_cast<std::streamsize>(bytes));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return text;
}

char const* FormatText(EnFormat format) noexcept {
  constexpr std::array<char const*, 6> texts = {"PNG",       "TIFF",  "NRRD",
                                                "MetaImage", "NIfTI", "DICOM"};
  return texts[static_cast<std::size_t>(format)];
}

EnFormat FormatOfFile(fs::path const& path) {
  (void)SizeOfReadable(path);
  std::string const begin = BeginningOf(path, 512);
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

} // namespace selu
