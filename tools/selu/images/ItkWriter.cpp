#include "images/ItkWriter.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"
#include "images/ItkImageIo.h"
#include "images/PixelStore.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include <itkMetaDataObject.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

// Puts a line in the place of the one that begins like this.
void ReplaceLine(std::string& header, std::string const& beginning, std::string const& line) {
  std::size_t at = 0;
  while (header.compare(at, beginning.size(), beginning) != 0) {
    at = header.find('\n', at);
    if (at++ == std::string::npos) throw CAppError("a header lacks the line " + beginning);
  }
  header.replace(at, header.find('\n', at) - at, line);
}

void SetNiftiExtents(std::string& header, std::vector<ORVA::int64> const& extents) {
  constexpr std::size_t firstExtent = 42;
  for (std::size_t axis = 0; axis < extents.size(); ++axis) {
    if (extents[axis] > INT16_MAX)
      throw CAppError("NIfTI holds no extent of " + std::to_string(extents[axis]) +
                      ", only up to 32767; use .nrrd or .mha");
    auto const extent = static_cast<std::int16_t>(extents[axis]);
    std::memcpy(header.data() + firstExtent + axis * sizeof extent, &extent, sizeof extent);
  }
}

} // namespace

void CheckNotes(fs::path const& target, ImageNotes const& notes) {
  if (FormatForOutput(target) != EnFormat::Meta) return;
  for (auto const& [key, value] : notes)
    if (value.size() > c_mostMetaNote)
      throw CAppError("cannot write " + Quoted(target) + ": MetaImage holds " +
                      std::to_string(c_mostMetaNote) + " bytes for " + QuotedPart(key) +
                      ", but there are " + std::to_string(value.size()) + "; use .nrrd or .tif");
}

void WriteByItk(fs::path const& path, EnFormat format, StPixels const& image,
                ImageNotes const& notes) {
  auto const pointer = MakeItkIo(format);
  itk::ImageIOBase& io = *pointer;
  ORVA::CSize const size = image.header.size;
  std::array<ORVA::int64, 3> const extents = {size.x, size.y, size.z};
  io.SetNumberOfDimensions(static_cast<unsigned>(size.Dim()));
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    io.SetDimensions(axis, static_cast<itk::SizeValueType>(extents[axis]));
    io.SetSpacing(axis, image.grid.spacing[axis]);
    io.SetOrigin(axis, image.grid.origin[axis]);
    auto const& direction = image.grid.direction[axis];
    io.SetDirection(axis, {direction.begin(), direction.begin() + size.Dim()});
  }
  io.SetPixelType(itk::IOPixelEnum::SCALAR);
  io.SetNumberOfComponents(1);
  io.SetComponentType(ComponentOf(image.header.pixel));
  io.SetIORegion(WholeRegion(io));
  io.SetUseCompression(false);
  for (auto const& [key, value] : notes)
    itk::EncapsulateMetaData<std::string>(io.GetMetaDataDictionary(), key, value);
  io.SetFileName(path.string());
  io.Write(image.bytes.data());
}

// ITK knows how a grid is written; it writes that of an image of one voxel, and the extents of the
// real one follow.
std::string HeaderByItk(fs::path const& path, EnFormat format, StHeader const& header,
                        StGrid const& grid, ImageNotes const& notes) {
  auto const& size = header.size;
  std::vector<std::byte> const pixel(PixelBytes(header.pixel));
  ORVA::CSize const one = size.Dim() == 3 ? ORVA::CSize(1, 1, 1) : ORVA::CSize(1, 1);
  WriteByItk(path, format, {{one, header.pixel}, grid, pixel}, notes);
  std::string text = BeginningOf(path, fs::file_size(path));
  text.resize(text.size() - pixel.size());
  std::vector<ORVA::int64> extents = {size.x, size.y};
  if (size.Dim() == 3) extents.push_back(size.z);
  if (format == EnFormat::Nrrd) ReplaceLine(text, "sizes:", "sizes: " + Joined(extents, " "));
  if (format == EnFormat::Meta) ReplaceLine(text, "DimSize =", "DimSize = " + Joined(extents, " "));
  if (format == EnFormat::Nifti) SetNiftiExtents(text, extents);
  return text;
}

} // namespace selu
