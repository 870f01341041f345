#include "images/SlabWriter.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Quiet.h"
#include "base/Texts.h"
#include "images/ImageReader.h"
#include "images/ItkWriter.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <zlib.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

using ORVA::int64;

bool IsGathered(fs::path const& path, StHeader const& header) {
  EnFormat const format = FormatForOutput(path);
  return format == EnFormat::Png || EndingOf(path) == ".nii.gz" ||
         ImageBytes(header) <= SlabBytes();
}

unsigned long Checked(unsigned long checksum, std::span<std::byte const> bytes) {
  return ::crc32_z(checksum, reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
}

// Of all pixels of a file, read slice by slice.
unsigned long ChecksumOf(StOpened& opened) {
  auto const size = opened.header.size;
  int64 const slices = SlicesOf(size);
  double const perSlice = ImageBytes(opened.header) / static_cast<double>(slices);
  int64 const step = std::max(int64{1}, static_cast<int64>(SlabBytes() / 4 / perSlice));
  std::vector<std::byte> pixels;
  unsigned long checksum = ::crc32_z(0, nullptr, 0);
  for (int64 first = 0; first < slices; first += step) {
    int64 const count = std::min(step, slices - first);
    pixels.resize(static_cast<std::size_t>(perSlice) * static_cast<std::size_t>(count));
    opened.reader->ReadSlab(first, pixels);
    checksum = Checked(checksum, pixels);
  }
  return checksum;
}

// A volume of one slice is read as the flat image that it is.
bool HasSameExtents(ORVA::CSize const& a, ORVA::CSize const& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

// In a process of its own, as readers of what a full disk has cut off may crash.
bool Holds(fs::path const& path, StHeader const& header, unsigned long checksum) {
  CIsolated reader([&](std::string const&, std::span<std::byte>) {
    StOpened opened = OpenReader(path);
    bool const same = opened.reader->ReadsSlabs() && opened.header.pixel == header.pixel &&
                      HasSameExtents(opened.header.size, header.size) &&
                      ChecksumOf(opened) == checksum;
    return std::string(same ? "same" : "other");
  });
  double const bytes = ImageBytes(header);
  return reader.Ask("compare", {30 + bytes / 2e6, 1e9 + 4 * SlabBytes()}) == "same";
}

} // namespace

CSlabWriter::CSlabWriter(CAtomicFile& file, StHeader const& header, StGrid const& grid,
                         ImageNotes notes)
    : m_File(&file), m_Header(header), m_Grid(grid), m_Notes(std::move(notes)),
      m_Checksum(::crc32_z(0, nullptr, 0)) {
  CheckImageOutput(file.Target(), header.pixel, header.size.Dim());
  CheckNotes(file.Target(), m_Notes);
  if (!IsGathered(file.Target(), header)) {
    Open();
    return;
  }
  RefuseBeyondMemory(ImageBytes(header),
                     "the image " + Quoted(file.Target()) + ", which is written in one piece,");
  auto const bytes = static_cast<std::size_t>(ImageBytes(header));
  m_Gathered.emplace(header, grid, std::make_shared<CSharedBuffer>(CSharedBuffer::Unshared(bytes)));
}

std::string CSlabWriter::Sentence() const {
  return "cannot write " + Quoted(m_File->Target()) + ": the disk may be full";
}

void CSlabWriter::Open() {
  EnFormat const format = FormatForOutput(m_File->Target());
  fs::path const& path = m_File->Temporary();
  std::error_code unknown;
  auto const disk = fs::space(path.parent_path(), unknown);
  if (!unknown && ImageBytes(m_Header) > static_cast<double>(disk.available))
    throw CAppError("cannot write " + Quoted(m_File->Target()) + ": it takes " +
                    BytesText(ImageBytes(m_Header)) + ", more than the " +
                    BytesText(static_cast<double>(disk.available)) + " left on its disk");
  try {
    CQuiet quiet;
    if (format == EnFormat::Tiff)
      m_Tiff = std::make_unique<CTiffWriter>(path, m_Header, m_Grid, m_Notes);
    else
      m_File->Write(HeaderByItk(path, format, m_Header, m_Grid, m_Notes));
  } catch (CAppError const& error) {
    throw CAppError("cannot write " + Quoted(m_File->Target()) + ": " + error.what());
  } catch (std::exception const&) {
    throw CAppError(Sentence());
  }
}

void CSlabWriter::Write(std::span<std::byte const> bytes) {
  if (m_Gathered) {
    std::ranges::copy(bytes, m_Gathered->Bytes().subspan(m_Written).begin());
  } else if (m_Tiff) {
    try {
      CQuiet quiet;
      m_Tiff->Write(bytes);
    } catch (std::runtime_error const&) {
      throw CAppError(Sentence());
    }
  } else {
    m_File->Append({reinterpret_cast<char const*>(bytes.data()), bytes.size()});
  }
  if (!m_Gathered) m_Checksum = Checked(m_Checksum, bytes);
  m_Written += bytes.size();
}

void CSlabWriter::Finish() {
  if (m_Gathered) return WriteImage(*m_File, *m_Gathered, m_Notes);
  bool same = false;
  try {
    CQuiet quiet;
    if (m_Tiff) m_Tiff->Finish();
    same = Holds(m_File->Temporary(), m_Header, m_Checksum);
  } catch (std::runtime_error const&) { // a sentence about reading would name the temporary
  }
  if (!same) throw CAppError(Sentence());
}

} // namespace selu
