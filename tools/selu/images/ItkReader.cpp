#include "base/Errors.h"
#include "images/ImageReader.h"
#include "images/ItkImageIo.h"

#include <algorithm>
#include <string>

#include <itkMetaDataObject.h>

namespace selu {
namespace {

class CItkReader : public IImageReader {
public:
  CItkReader(std::filesystem::path const& path, EnFormat format) : m_Io(MakeItkIo(format)) {
    m_Io->SetFileName(path.string());
    m_Io->ReadImageInformation();
  }

  StClaim Claim() override {
    StClaim claim;
    for (unsigned axis = 0; axis < m_Io->GetNumberOfDimensions(); ++axis)
      claim.extents.push_back(static_cast<ORVA::int64>(m_Io->GetDimensions(axis)));
    claim.components = static_cast<ORVA::int64>(m_Io->GetNumberOfComponents());
    claim.pixel = PixelOf(m_Io->GetComponentType());
    claim.grid = Grid();
    (void)itk::ExposeMetaData<std::string>(m_Io->GetMetaDataDictionary(), "0020|000e",
                                           claim.series);
    while (!claim.series.empty() && (claim.series.back() == ' ' || claim.series.back() == 0))
      claim.series.pop_back();
    return claim;
  }

  void Read(std::span<std::byte> pixels) override {
    if (static_cast<std::size_t>(m_Io->GetImageSizeInBytes()) != pixels.size())
      throw CAppError("the reader counts other pixels than the header");
    m_Io->SetIORegion(WholeRegion(*m_Io));
    m_Io->Read(pixels.data());
  }

private:
  [[nodiscard]] StGrid Grid() const {
    StGrid grid;
    auto const axes = std::min(m_Io->GetNumberOfDimensions(), 3u);
    for (unsigned axis = 0; axis < axes; ++axis) {
      grid.spacing[axis] = m_Io->GetSpacing(axis);
      grid.origin[axis] = m_Io->GetOrigin(axis);
      auto const direction = m_Io->GetDirection(axis);
      for (std::size_t i = 0; i < std::min<std::size_t>(direction.size(), 3); ++i)
        grid.direction[axis][i] = direction[i];
    }
    return grid;
  }

  itk::ImageIOBase::Pointer m_Io;
};

} // namespace

std::unique_ptr<IImageReader> MakeItkReader(std::filesystem::path const& path, EnFormat format) {
  return std::make_unique<CItkReader>(path, format);
}

} // namespace selu
