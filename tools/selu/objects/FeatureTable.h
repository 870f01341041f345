// The features of objects as a table: a row for each object, a column for each feature.
//
//   CFeatureTable table("object");
//   table.Add(7, "object 7", {{"volume [px]", 12.0}, {"status", std::string("measured")}});
//   table.Finish();                              // rows by label, columns by name
//   table.WriteCsv(file);                        // file: CAtomicFile
//   ORVA::CImage image = table.ToImage(9);       // columns for the labels 0 to 9
#pragma once

#include "base/AtomicFile.h"
#include "images/ImageFile.h"

#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace selu {

/// A feature's key path and what an object has there.
struct StFeature {
  std::string path;
  std::variant<double, std::string> value;
};

/// Some 8 bytes per feature that an object has, 16 where others before it have none: a table of
/// which most is empty takes no more than what is in it. All errors are CAppErrors.
class CFeatureTable {
public:
  /// Column 0, the labels, is called so.
  explicit CFeatureTable(std::string idKey) : m_IdKey(std::move(idKey)) {}

  /// The features of another object, called so in errors: no feature twice, and none a number where
  /// others have a text.
  void Add(ORVA::int64 label, std::string const& name, std::vector<StFeature> const& features);
  /// Sorts rows and columns, and refuses a label that is there twice.
  void Finish();

  [[nodiscard]] std::size_t Objects() const noexcept { return m_Labels.size(); }
  /// The last in order, of one object at least.
  [[nodiscard]] ORVA::int64 GreatestLabel() const noexcept { return m_Labels.back(); }
  [[nodiscard]] bool HasFeature(std::string_view path) const;

  /// A line for each object; what an object does not have is empty. Numbers read back as the same.
  void WriteCsv(CAtomicFile& file) const;
  /// 32-bit floating-point: the pixel (x, y) is feature y of the object with label x; row 0 holds
  /// the labels 0 to `greatest`. What is not there is 0, a text its place among the sorted texts of
  /// its feature. Refuses an image that does not fit into memory.
  [[nodiscard]] ORVA::CImage ToImage(ORVA::int64 greatest) const;
  /// What the rows of the image mean: "y-keys", "y-types" and "label-lookup" as JSON.
  [[nodiscard]] ImageNotes Notes(std::string const& name) const;

private:
  struct StColumn {
    std::string path;
    bool isText = false;
    std::vector<double> values;                          // numbers, or places in `texts`
    std::vector<std::size_t> rows;                       // of the values; none: 0, 1, 2 ...
    std::vector<std::string> texts;                      // sorted at last, the empty one included
    std::unordered_map<std::string, std::size_t> places; // of the texts

    [[nodiscard]] std::size_t Row(std::size_t k) const { return rows.empty() ? k : rows[k]; }
    void Append(std::size_t row, double value);
    /// Gives each value the row that its own one becomes, and puts all in order again.
    void MoveTo(std::vector<std::size_t> const& newRows);
    void SortTexts(std::size_t objects);
  };

  StColumn& ColumnOf(StFeature const& feature, std::string const& name);
  [[nodiscard]] static std::string Field(StColumn const& column, std::size_t k);
  void SortRows();

  std::string m_IdKey;
  std::vector<ORVA::int64> m_Labels;
  std::vector<StColumn> m_Columns;
  std::unordered_map<std::string, std::size_t> m_Places; // of the columns
};

/// A number as text, whole ones without an exponent as far as a double counts in ones.
[[nodiscard]] std::string FullDigits(double value);

} // namespace selu
