#include "images/FileFormat.h"

#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace selu {
namespace fs = std::filesystem;
namespace {

using std::string_view_literals::operator""sv; // NOLINT(misc-unused-using-decls)

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

char const* FormatText(EnFormat format) noexcept {
  constexpr std::array<char const*, 6> texts = {"PNG",       "TIFF",  "NRRD",
                                                "MetaImage", "NIfTI", "DICOM"};
  return texts[static_cast<std::size_t>(format)];
}

std::optional<EnFormat> KnownFormat(std::string_view beginning) noexcept {
  for (auto const& [signature, format] : c_signatures)
    if (beginning.starts_with(signature)) return format;
  if (beginning.size() >= 132 && beginning.substr(128, 4) == "DICM") return EnFormat::Dicom;
  return std::nullopt;
}

EnFormat FormatOf(fs::path const& path, std::string_view beginning) {
  if (auto const known = KnownFormat(beginning)) return *known;
  std::string const ending = EndingOf(path);
  for (auto const& [known, format] : c_inputEndings)
    if (ending == known) return format;
  throw CAppError("cannot read " + Quoted(path) +
                  ": it is no PNG, TIFF, NRRD, MetaImage, NIfTI or DICOM image");
}

bool IsImageEnding(std::string_view ending) noexcept {
  return std::any_of(c_outputEndings.begin(), c_outputEndings.end(),
                     [&](auto const& known) { return known.first == ending; });
}

EnFormat FormatForOutput(fs::path const& path) {
  if (DescriptorOf(path)) return EnFormat::Nrrd;
  std::string const ending = EndingOf(path);
  for (auto const& [known, format] : c_outputEndings)
    if (ending == known) return format;
  throw CAppError("cannot write " + Quoted(path) +
                  ": the ending must be one of .nrrd, .mha, .nii, " + ".nii.gz, .tif and .png");
}

} // namespace selu
