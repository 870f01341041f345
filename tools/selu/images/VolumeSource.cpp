#include "images/VolumeSource.h"

#include "base/Memory.h"

#include <algorithm>
#include <cmath>

namespace selu {

using ORVA::int64;

std::vector<StSlab> SlabsOf(ORVA::CSize const& size, double bytesPerSlice, StHalo const& halo) {
  int64 const slices = SlicesOf(size);
  double const room = std::floor(SlabBytes() / std::max(bytesPerSlice, 1.0));
  double const neighbors = static_cast<double>(halo.below) + static_cast<double>(halo.above);
  // At least as thick as its halo: else most of what is read would be read again and again.
  double const thickness = std::max({1.0, room - neighbors, std::min(neighbors, room)});
  auto const step = static_cast<int64>(std::min(thickness, static_cast<double>(slices)));
  std::vector<StSlab> slabs;
  for (int64 first = 0; first < slices; first += step) {
    int64 const last = std::min(first + step, slices);
    slabs.push_back({first, last, std::max(int64{0}, first - std::min(first, halo.below)),
                     last + std::min(slices - last, halo.above)});
  }
  return slabs;
}

double CVolumeSource::BytesPerSlice() const noexcept {
  return Bytes() / static_cast<double>(SlicesOf(Size()));
}

CRawImage const& CVolumeSource::Whole() {
  if (!m_Whole) m_Whole.emplace(m_Image.Read());
  return *m_Whole;
}

CRawImage CVolumeSource::Slab(int64 first, int64 last) {
  if (m_Whole || IsHeld()) return Whole().Slab(first, last);
  StHeader const header{WithSlices(Size(), last - first), Pixel()};
  auto const bytes = static_cast<std::size_t>(ImageBytes(header));
  if (!m_Buffer || m_Buffer->Bytes().size() < bytes) {
    m_Buffer.reset(); // before the next one is there
    RefuseBeyondMemory(static_cast<double>(bytes), "a slab of the image " + Quoted(Path()));
    m_Buffer = std::make_shared<CSharedBuffer>(bytes);
  }
  m_Image.ReadSlab(first, last, *m_Buffer);
  return CRawImage(header, m_Image.Grid(), m_Buffer);
}

} // namespace selu
