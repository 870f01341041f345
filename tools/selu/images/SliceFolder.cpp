#include "images/SliceFolder.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace selu {
namespace fs = std::filesystem;
namespace {

using ORVA::int64;

struct StSlice {
  fs::path path;
  EnFormat format = EnFormat::Png;
  StHeader header;
  StGrid grid;
  std::string series;  // of DICOM
  double position = 0; // along the normal of the slices
};

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// A file that is named like a slice is one, though damage may have left nothing to know it by.
bool IsSlice(fs::path const& path, std::string_view beginning) {
  if (auto const format = KnownFormat(beginning))
    return format == EnFormat::Png || format == EnFormat::Tiff || format == EnFormat::Dicom;
  constexpr std::array<std::string_view, 6> endings = {".png", ".tif",   ".tiff",
                                                       ".dcm", ".dicom", ".ima"};
  return std::ranges::find(endings, EndingOf(path)) != endings.end();
}

// The last number in a file's name, its ending left out.
std::optional<std::uint64_t> LastNumber(fs::path const& path) {
  std::string const name = path.stem().string();
  auto const last = name.find_last_of("0123456789");
  if (last == std::string::npos) return std::nullopt;
  auto first = last;
  while (first > 0 && IsDigit(name[first - 1])) --first;
  return ParseUnsigned(std::string_view(name).substr(first, last - first + 1));
}

class CFolderReader : public IImageReader {
public:
  CFolderReader(fs::path folder, std::string const& series) : m_Folder(std::move(folder)) {
    for (auto const& path : Files()) Look(path);
    if (m_Slices.empty()) Refuse("it has no slices: no PNG, TIFF or DICOM files");
    m_IsDicom = m_Slices.front().format == EnFormat::Dicom;
    if (m_IsDicom) Choose(series);
    for (auto const& slice : m_Slices) CheckAlike(slice);
    if (m_IsDicom)
      SortByPosition();
    else
      CheckNumbers();
  }

  StClaim Claim() override {
    StClaim claim;
    auto const& first = m_Slices.front();
    claim.extents = {first.header.size.x, first.header.size.y, static_cast<int64>(m_Slices.size())};
    claim.pixel = first.header.pixel;
    claim.grid = first.grid;
    if (m_IsDicom && m_Slices.size() > 1) claim.grid.spacing[2] = m_Distance;
    return claim;
  }

  void Read(std::span<std::byte> pixels) override {
    std::size_t const plane = pixels.size() / m_Slices.size();
    for (auto const& slice : m_Slices) {
      StOpened const opened = OpenReader(slice.path);
      if (opened.header.size != slice.header.size || opened.header.pixel != slice.header.pixel)
        Refuse(QuotedPart(Name(slice)) + " has become another image");
      opened.reader->Read(pixels.first(plane));
      pixels = pixels.subspan(plane);
    }
  }

  std::vector<fs::path> Files() const {
    std::vector<fs::path> files;
    std::error_code error;
    for (auto const& entry : fs::directory_iterator(m_Folder, error))
      if (entry.is_regular_file() && !entry.path().filename().string().starts_with('.'))
        files.push_back(entry.path());
    if (error) Refuse(SystemText(error.value()));
    std::ranges::sort(files, [](fs::path const& a, fs::path const& b) {
      return ComesBeforeByNumbers(a.filename().string(), b.filename().string());
    });
    return files;
  }

private:
  [[noreturn]] void Refuse(std::string const& why) const {
    throw CAppError("cannot read the folder " + Quoted(m_Folder) + ": " + why);
  }
  [[nodiscard]] static std::string Name(StSlice const& slice) {
    return slice.path.filename().string();
  }

  // Takes the file for a slice, or leaves it out.
  void Look(fs::path const& path) {
    if (!IsSlice(path, BeginningOf(path, 512))) return;
    StOpened const opened = OpenReader(path);
    if (opened.header.size.Dim() != 2)
      Refuse(QuotedPart(path.filename().string()) + " is a volume, not a slice");
    m_Slices.push_back({path, opened.format, opened.header, opened.grid, opened.series});
  }

  void Choose(std::string const& series) {
    std::map<std::string, std::size_t> counts;
    for (auto const& slice : m_Slices)
      if (slice.format == EnFormat::Dicom) ++counts[slice.series];
    std::string list;
    for (auto const& [name, count] : counts)
      list += (list.empty() ? "" : ", ") + QuotedPart(name) + " of " + std::to_string(count) +
              (count == 1 ? " slice" : " slices");
    if (series.empty() && counts.size() > 1)
      Refuse("it has " + std::to_string(counts.size()) +
             " series; choose one by --series: " + list);
    if (!series.empty() && !counts.contains(series))
      Refuse("it has no series " + Quoted(series) + ", but " + list);
    if (!series.empty())
      std::erase_if(m_Slices, [&](StSlice const& slice) { return slice.series != series; });
  }

  void CheckAlike(StSlice const& slice) const {
    auto const& first = m_Slices.front();
    std::string const names =
        QuotedPart(Name(first)) + " and " + QuotedPart(Name(slice)) + " differ in ";
    if (slice.format != first.format) Refuse(names + "format");
    if (slice.header.size != first.header.size) Refuse(names + "size");
    if (slice.header.pixel != first.header.pixel) Refuse(names + "pixel type");
    if (slice.grid.spacing != first.grid.spacing) Refuse(names + "spacing");
  }

  // The numbers follow one another; names without any are ordered by their bytes.
  void CheckNumbers() const {
    std::optional<std::uint64_t> before;
    for (auto const& slice : m_Slices) {
      auto const number = LastNumber(slice.path);
      if (before && number && *number > *before + 1) {
        std::string const first = std::to_string(*before + 1), last = std::to_string(*number - 1);
        Refuse(first == last ? "the slice " + first + " is missing"
                             : "the slices " + first + " to " + last + " are missing");
      }
      if (before && number && *number == *before)
        Refuse("the slice " + std::to_string(*number) + " is there twice");
      before = number;
    }
  }

  void SortByPosition() {
    auto const& normal = m_Slices.front().grid.direction[2];
    for (auto& slice : m_Slices)
      for (std::size_t axis = 0; axis < 3; ++axis)
        slice.position += slice.grid.origin[axis] * normal[axis];
    std::ranges::stable_sort(m_Slices, {}, &StSlice::position);
    if (m_Slices.size() < 2) return;
    m_Distance = (m_Slices.back().position - m_Slices.front().position) /
                 static_cast<double>(m_Slices.size() - 1);
    if (!(m_Distance > 0)) Refuse("its slices do not say where they lie, or lie all in one place");
    for (std::size_t i = 1; i < m_Slices.size(); ++i) {
      double const distance = m_Slices[i].position - m_Slices[i - 1].position;
      constexpr double uneven = 0.05;
      if (std::abs(distance - m_Distance) <= uneven * m_Distance) continue;
      Refuse("the slices " + QuotedPart(Name(m_Slices[i - 1])) + " and " +
             QuotedPart(Name(m_Slices[i])) + " are " + Rounded(distance, 6) +
             " apart, but the slices " + Rounded(m_Distance, 6) + " on average");
    }
  }

  fs::path m_Folder;
  std::vector<StSlice> m_Slices;
  bool m_IsDicom = false;
  double m_Distance = 1;
};

} // namespace

bool ComesBeforeByNumbers(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      auto const take = [](std::string_view& text) {
        auto const end = std::min(text.find_first_not_of("0123456789"), text.size());
        std::string_view digits = text.substr(0, end);
        text.remove_prefix(end);
        digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
        return digits;
      };
      auto const first = take(a), second = take(b);
      if (first.size() != second.size()) return first.size() < second.size();
      if (first != second) return first < second;
      continue;
    }
    if (a.front() != b.front()) return a.front() < b.front();
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return a.empty() && !b.empty();
}

std::unique_ptr<IImageReader> MakeFolderReader(fs::path const& folder, std::string const& series) {
  return std::make_unique<CFolderReader>(folder, series);
}

} // namespace selu
