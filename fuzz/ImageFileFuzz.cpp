// What the application's own parsers make of image files: formats, stores of pixels, gzip streams,
// elements of DICOM, pixels as text, grids in PNG files. They refuse in a sentence, or take time as
// the file is long.
#include "Fuzzing.h"

#include <base/Errors.h>
#include <base/FileBytes.h>
#include <images/DicomElements.h>
#include <images/PixelStore.h>
#include <images/PlainPixels.h>
#include <images/PngGrid.h>
#include <images/TextPixels.h>

#include <cstring>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// A file in memory, with a path.
class CMemoryFile {
public:
  explicit CMemoryFile(std::string const& bytes) : m_File(::memfd_create("fuzz", 0)) {
    fuzz::Require(::write(m_File, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
                  "memory for a file");
  }
  CMemoryFile(CMemoryFile const&) = delete;
  CMemoryFile& operator=(CMemoryFile const&) = delete;
  ~CMemoryFile() { ::close(m_File); }
  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(m_File); }

private:
  int m_File;
};

// Whether the call goes through; its own errors are sentences.
template <class Call>
bool Reads(Call call) {
  try {
    call();
    return true;
  } catch (selu::CAppError const& error) {
    fuzz::Require(error.what()[0] != 0 && std::strchr(error.what(), '\n') == nullptr,
                  "an error is one sentence");
    return false;
  }
}

void Look(std::string const& path, fuzz::CInput& input) {
  auto const format = static_cast<selu::EnFormat>(input.Count(5));
  std::string const beginning = selu::BeginningOf(path, selu::c_headerBytes);
  (void)Reads([&] { (void)selu::FormatOf(path, beginning); });
  if (format == selu::EnFormat::Dicom) {
    Reads([&] {
      fuzz::Require(selu::WalkDicomElements(path) >= 0, "elements have a number of pixels");
    });
    return;
  }
  if (format == selu::EnFormat::Png) {
    selu::StGrid grid;
    selu::ReadPngGrid(path, grid);
  }
  std::vector<ORVA::int64> const extents = {input.Between(1, 300), input.Between(1, 300),
                                            input.Between(1, 20)};
  auto const bytes = std::size_t{1} << input.Count(3);
  Reads([&] {
    auto const store = selu::StoreOf(path, format, beginning);
    selu::CheckClaim(path, store, extents, bytes);
    if (store.isDeflated) selu::CheckDeflated(path, store, extents, bytes);
    auto const pixel = static_cast<selu::EnPixel>(input.Count(9));
    std::vector<std::byte> some(16);
    if (auto const plain = selu::FindPlainPixels(path, format, beginning, store, pixel))
      selu::ReadPlainPixels(*plain, 0, some);
    std::vector<std::byte> pixels(64);
    if (store.isText) selu::ReadTextPixels(store.file, store.offset, pixel, pixels);
  });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size < 16) return 0;
  fuzz::CInput input(data, 16);
  std::string const part(reinterpret_cast<char const*>(data) + 16, size - 16);
  // Now and then a large file, of one part over and over.
  std::size_t const copies = input.Byte() < 250 ? 1 : 1 + input.Count(200);
  std::string bytes;
  for (std::size_t i = 0; i < copies && bytes.size() < (1 << 20); ++i) bytes += part;
  if (bytes.empty()) return 0;
  CMemoryFile const file(bytes);
  Look(file.Path(), input);
  return 0;
}
