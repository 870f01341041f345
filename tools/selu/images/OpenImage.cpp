#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "images/ImageReader.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace selu {
namespace fs = std::filesystem;
namespace {

// Bytes per second that any reader manages; some never end on damaged headers.
constexpr double c_slowest = 4e6;
// Address space that readers take for whatever file, for their tables and libraries.
constexpr double c_readerBytes = 256 << 20;

// Of the file, or of all files of a folder.
double BytesOf(fs::path const& path) {
  if (!fs::is_directory(path)) return static_cast<double>(SizeOfReadable(path));
  double bytes = 0;
  std::error_code error;
  for (std::string const& name : NamesIn(path)) {
    auto const size = fs::file_size(path / name, error);
    if (!error) bytes += static_cast<double>(size) + 1e5; // each is opened by a reader of its own
  }
  return bytes;
}

StLimits HeaderLimits(double fileBytes) {
  return {5 + fileBytes / c_slowest, c_readerBytes + 4 * fileBytes};
}
// Readers hold the packed and the unpacked pixels, and may convert them, beside the result.
StLimits PixelLimits(double fileBytes, double pixelBytes) {
  return {5 + (fileBytes + pixelBytes) / c_slowest, c_readerBytes + 4 * fileBytes + 4 * pixelBytes};
}

// What goes from process to process; the names of the files follow, each with a 0 at its end.
struct StMessage {
  EnFormat format;
  EnPixel pixel;
  std::array<ORVA::int64, 3> size;
  int dimension;
  bool readsSlabs;
  StGrid grid;
};

// What stands in place of "pixels" for some slices.
struct StSlabRequest {
  ORVA::int64 first = 0;
  std::size_t bytes = 0;
};
static_assert(sizeof(StSlabRequest) > sizeof "pixels");

std::string ToMessage(StOpened const& opened) {
  auto const size = opened.header.size;
  StMessage const message = {opened.format, opened.header.pixel,         {size.x, size.y, size.z},
                             size.Dim(),    opened.reader->ReadsSlabs(), opened.grid};
  std::string text(sizeof message, '\0');
  std::memcpy(text.data(), &message, sizeof message);
  for (auto const& file : opened.files) text += file.native() + '\0';
  return text;
}

// Keeps the opened file from one request to the next.
CIsolated::Work MakeWork(fs::path const& path, std::string const& series) {
  auto const opened = std::make_shared<std::optional<StOpened>>();
  return [path, series, opened](std::string const& request, std::span<std::byte> pixels) {
    if (request == "header") {
      opened->emplace(fs::is_directory(path) ? OpenFolder(path, series) : OpenReader(path));
      return ToMessage(**opened);
    }
    StSlabRequest slab;
    if (request.size() == sizeof slab) {
      std::memcpy(&slab, request.data(), sizeof slab);
      (*opened)->reader->ReadSlab(slab.first, pixels.first(std::min(slab.bytes, pixels.size())));
    } else {
      (*opened)->reader->Read(pixels);
    }
    return std::string();
  };
}

[[noreturn]] void Refuse(fs::path const& path, CIsolationError const& error,
                         std::string const& ifBroken) {
  throw CAppError("cannot read " + Quoted(path) + ": " +
                  (error.Why() == EnFailure::Broken ? ifBroken : error.what()));
}

} // namespace

COpenImage::COpenImage(fs::path path, std::string const& series)
    : m_Path(std::move(path)), m_Bytes(BytesOf(m_Path)), m_Reader(MakeWork(m_Path, series)) {
  std::string answer;
  try {
    answer = m_Reader.Ask("header", HeaderLimits(m_Bytes));
  } catch (CIsolationError const& error) {
    Refuse(m_Path, error, "it is damaged, no image, or of a kind that selu does not read");
  }
  StMessage message;
  std::memcpy(&message, answer.data(), sizeof message);
  auto const& size = message.size;
  m_Format = message.format;
  m_Header = {message.dimension == 2 ? ORVA::CSize(size[0], size[1])
                                     : ORVA::CSize(size[0], size[1], size[2]),
              message.pixel};
  m_Grid = message.grid;
  m_ReadsSlabs = message.readsSlabs;
  for (std::size_t at = sizeof message; at < answer.size();) {
    std::size_t const end = answer.find('\0', at);
    m_Files.emplace_back(answer.substr(at, end - at));
    at = end + 1;
  }
}

CRawImage COpenImage::Read() {
  RefuseBeyondMemory(ImageBytes(m_Header), "the image " + Quoted(m_Path));
  CRawImage image(m_Header, m_Grid);
  try {
    (void)m_Reader.Ask("pixels", PixelLimits(m_Bytes, static_cast<double>(image.Bytes().size())),
                       &image.Buffer());
  } catch (CIsolationError const& error) {
    Refuse(m_Path, error, "the file is damaged or cut off");
  }
  return image;
}

void COpenImage::ReadSlab(ORVA::int64 first, ORVA::int64 last, CSharedBuffer const& buffer) {
  double const bytes = ImageBytes({WithSlices(m_Header.size, last - first), m_Header.pixel});
  StSlabRequest const slab = {first, static_cast<std::size_t>(bytes)};
  std::string request(sizeof slab, '\0');
  std::memcpy(request.data(), &slab, sizeof slab);
  try {
    (void)m_Reader.Ask(request, PixelLimits(0, bytes), &buffer);
  } catch (CIsolationError const& error) {
    Refuse(m_Path, error, "the file is damaged or cut off");
  }
}

COpenImage OpenImage(fs::path const& path, std::string const& series) { return {path, series}; }

CRawImage ReadImage(fs::path const& path) { return OpenImage(path).Read(); }

void RefuseOverwriting(fs::path const& output, COpenImage const& image) {
  for (auto const& file : image.Files()) RefuseSameFile(output, file);
}

} // namespace selu
