// DICOM slices for tests: unsigned 16-bit pixels, with the tags that place a slice in a series.
//
//   Write("a.dcm", test::Dicom({.columns = 6, .rows = 4, .position = 2.5, .series = "1.2.3"}));
#pragma once

#include <cstdint>
#include <string>

namespace test {

struct StDicom {
  std::uint32_t columns = 6, rows = 4, pixels = 24; ///< as many as are stored
  std::uint32_t first = 0, step = 1;                ///< of the values
  double position = 0;                              ///< along z
  std::string series = "1.2.3.4.5.6";
  bool isExplicit = true; ///< whether elements tell their types
};

namespace Impl {

inline void AppendNumber(std::string& bytes, std::uint32_t number, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> (8 * i) & 255);
}

inline std::string DicomShort(std::uint32_t number) {
  std::string bytes;
  AppendNumber(bytes, number, 2);
  return bytes;
}

// An element, little endian.
inline std::string DicomElement(std::uint32_t group, std::uint32_t element, std::string const& type,
                                std::string value, bool isExplicit = true) {
  if (value.size() % 2 != 0) value += type == "UI" ? '\0' : ' ';
  std::string bytes;
  AppendNumber(bytes, group, 2);
  AppendNumber(bytes, element, 2);
  auto const length = static_cast<std::uint32_t>(value.size());
  if (!isExplicit) {
    AppendNumber(bytes, length, 4);
    return bytes + value;
  }
  bytes += type;
  bool const isLong = type == "OB" || type == "OW";
  if (isLong) AppendNumber(bytes, 0, 2);
  AppendNumber(bytes, length, isLong ? 4 : 2);
  return bytes + value;
}

} // namespace Impl

inline std::string Dicom(StDicom const& how) {
  using Impl::DicomElement;
  std::string const kind = "1.2.840.10008.5.1.4.1.1.2";
  std::string const name = "1.2.3." + std::to_string(static_cast<int>(how.position * 10) + 100);
  std::string const syntax = how.isExplicit ? "1.2.840.10008.1.2.1" : "1.2.840.10008.1.2";
  std::string const meta = DicomElement(2, 1, "OB", std::string("\0\1", 2)) +
                           DicomElement(2, 2, "UI", kind) + DicomElement(2, 3, "UI", name) +
                           DicomElement(2, 0x10, "UI", syntax) +
                           DicomElement(2, 0x12, "UI", "1.2.3.4");
  std::string length, values, body;
  Impl::AppendNumber(length, static_cast<std::uint32_t>(meta.size()), 4);
  for (std::uint32_t i = 0; i < how.pixels; ++i)
    Impl::AppendNumber(values, how.first + i * how.step, 2);
  auto const add = [&](std::uint32_t group, std::uint32_t element, char const* type,
                       std::string const& value) {
    body += DicomElement(group, element, type, value, how.isExplicit);
  };
  add(8, 0x16, "UI", kind);
  add(8, 0x18, "UI", name);
  add(8, 0x60, "CS", "CT");
  add(0x20, 0x0d, "UI", "1.2.3.4.5");
  add(0x20, 0x0e, "UI", how.series);
  add(0x20, 0x32, "DS", "0\\0\\" + std::to_string(how.position));
  add(0x20, 0x37, "DS", "1\\0\\0\\0\\1\\0");
  add(0x28, 2, "US", Impl::DicomShort(1));
  add(0x28, 4, "CS", "MONOCHROME2");
  add(0x28, 0x10, "US", Impl::DicomShort(how.rows));
  add(0x28, 0x11, "US", Impl::DicomShort(how.columns));
  add(0x28, 0x30, "DS", "0.75\\0.5"); // between rows, between columns
  add(0x28, 0x100, "US", Impl::DicomShort(16));
  add(0x28, 0x101, "US", Impl::DicomShort(16));
  add(0x28, 0x102, "US", Impl::DicomShort(15));
  add(0x28, 0x103, "US", Impl::DicomShort(0));
  add(0x7fe0, 0x10, "OW", values);
  return std::string(128, '\0') + "DICM" + DicomElement(2, 0, "UL", length) + meta + body;
}

} // namespace test
