// The features of a region, and their ways out: one object after the other, as JSON or as a table.
//
//   CRegionWriter writer(jsonFile, nullptr, regions, 3);
//   writer.Add(region, features);
//   writer.Finish();
#pragma once

#include "base/AtomicFile.h"
#include "objects/FeatureTable.h"
#include "objects/Regions.h"

#include <optional>
#include <string>
#include <vector>

namespace selu {

/// A feature of a region: a whole number, another number, or a text.
struct StRegionFeature {
  std::string path;
  std::variant<ORVA::int64, double, std::string> value;
};

/// Writes the map that selu feature-image reads, in blocks, and a table of the same. Both files may
/// be null.
class CRegionWriter {
public:
  CRegionWriter(CAtomicFile* json, CAtomicFile* csv, ORVA::int64 greatestLabel,
                std::size_t objects);
  /// The features in ascending order of their paths.
  void Add(ORVA::int64 label, std::vector<StRegionFeature> const& features);
  void Finish();

private:
  void AddJson(ORVA::int64 label, std::vector<StRegionFeature> const& features);
  void AddCsv(std::vector<StRegionFeature> const& features);
  void Flush(std::size_t most);

  CAtomicFile *m_Json, *m_Csv;
  std::size_t m_Digits;
  bool m_HasHead = false;
  std::string m_JsonText, m_CsvText;
};

} // namespace selu
