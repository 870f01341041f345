#include "images/ItkImageIo.h"

#include "base/Errors.h"

#include <array>

#include <itkGDCMImageIO.h>
#include <itkMetaImageIO.h>
#include <itkNiftiImageIO.h>
#include <itkNrrdImageIO.h>
#include <itkPNGImageIO.h>

namespace selu {
namespace {

using Component = itk::IOComponentEnum;

// Entry p is the component type of pixel type p.
constexpr std::array<Component, 10> c_components = {
    Component::UCHAR, Component::CHAR,  Component::USHORT,    Component::SHORT,
    Component::UINT,  Component::INT,   Component::ULONGLONG, Component::LONGLONG,
    Component::FLOAT, Component::DOUBLE};

} // namespace

itk::ImageIOBase::Pointer MakeItkIo(EnFormat format) {
  itk::Object::GlobalWarningDisplayOff();
  switch (format) {
  case EnFormat::Png:
    return itk::PNGImageIO::New().GetPointer();
  case EnFormat::Tiff: // not by ITK
    break;
  case EnFormat::Nrrd:
    return itk::NrrdImageIO::New().GetPointer();
  case EnFormat::Meta:
    return itk::MetaImageIO::New().GetPointer();
  case EnFormat::Nifti:
    return itk::NiftiImageIO::New().GetPointer();
  case EnFormat::Dicom:
    return itk::GDCMImageIO::New().GetPointer();
  }
  throw CAppError("unknown image format");
}

Component ComponentOf(EnPixel pixel) noexcept {
  return c_components[static_cast<std::size_t>(pixel)];
}

std::optional<EnPixel> PixelOf(Component component) noexcept {
  if (component == Component::ULONG)
    component = sizeof(unsigned long) == 8 ? Component::ULONGLONG : Component::UINT;
  if (component == Component::LONG)
    component = sizeof(long) == 8 ? Component::LONGLONG : Component::INT;
  for (std::size_t pixel = 0; pixel < c_components.size(); ++pixel)
    if (c_components[pixel] == component) return static_cast<EnPixel>(pixel);
  return std::nullopt;
}

itk::ImageIORegion WholeRegion(itk::ImageIOBase const& io) {
  itk::ImageIORegion region(io.GetNumberOfDimensions());
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    region.SetIndex(axis, 0);
    region.SetSize(axis, io.GetDimensions(axis));
  }
  return region;
}

} // namespace selu
