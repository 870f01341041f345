// Samples on their way into a file or to standard output: CSV, JSON or NPY, a block at a time.
//
//   CSampleWriter writer(EnSampleFormat::Csv, shape, &file);    // null: standard output
//   writer.Add(values);                                         // whole samples
//   writer.Finish();
#pragma once

#include "base/AtomicFile.h"

#include <pxlib2core/Types.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace selu {

enum class EnSampleFormat { Csv, Json, Npy };

struct StSampleShape {
  std::vector<std::string> columns; ///< names of a sample's components
  std::vector<int> extents;         ///< of one sample: {} a number, {3} a vector, {3, 3} a matrix
  bool isWhole = false;             ///< integers
  ORVA::uint64 count = 0;           ///< of all samples
  std::string distribution;         ///< as given
  ORVA::uint64 seed = 0;
  std::optional<ORVA::uint64> stream = {}; ///< of the seed, where one was asked for
};

/// Numbers are written so that they read back as the same; JSON, which has no infinity, gets null.
/// Needs about 1 MiB whatever the number of samples.
class CSampleWriter {
public:
  CSampleWriter(EnSampleFormat format, StSampleShape shape, CAtomicFile* file);
  void Add(std::span<double const> values);
  void Finish();

private:
  void AddNpy(std::span<double const> values);
  void AddJson(std::span<double const> sample);
  void AddCsv(std::span<double const> sample);
  void AddNumber(double value);
  void Flush();

  EnSampleFormat m_Format;
  StSampleShape m_Shape;
  CAtomicFile* m_File;
  std::string m_Buffer;
  bool m_First = true;
};

} // namespace selu
