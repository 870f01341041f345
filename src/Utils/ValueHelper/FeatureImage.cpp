#include <SeluUtils/ValueHelper.h>

#include "Utils/ValueHelper/NumericReading.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2core/ValueVector.h>
#include <pxlib2image/HeaderTools.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/ValueHelper";
constexpr char c_function[] = "ORVA::ConvertObjectBasedFeaturesIntoFeatureImage";

// Labels may have gaps. An image of more pixels than this must have at least one object in so many
// columns; a maximum label beyond that is a mistake in the map.
constexpr int64 c_unquestionedPixels = int64{1} << 26;
constexpr int64 c_columnsPerObject = 1024;

using EnType = CValue::EnType;

struct StObject {
  int64 label;
  std::string const* key;
  CValueMap const* map;
};

// One part of a key path, as a key of a map and, where it is a number, as an index into a vector.
struct StPart {
  CValue_Key key;
  std::optional<int64> index;

  friend bool operator==(StPart const&, StPart const&) = default;
};

struct StFeature {
  std::string path;
  std::vector<StPart> parents;
  StPart last;
  bool isBesidePrevious; // same parents as the feature before
  EnType type;
};

StPart MakePart(std::string text) {
  int64 number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  bool const isIndex = error == std::errc() && end == text.data() + text.size() &&
                       std::to_string(number) == text; // no leading zeros
  return {CValue_Key(std::move(text)), isIndex ? std::optional(number) : std::nullopt};
}

std::vector<StPart> Split(std::string const& path) {
  std::vector<StPart> parts;
  for (std::size_t begin = 0; begin < path.size();) {
    std::size_t const slash = std::min(path.find('/', begin), path.size());
    if (slash > begin) parts.push_back(MakePart(path.substr(begin, slash - begin)));
    begin = slash + 1;
  }
  if (parts.empty()) parts.push_back(MakePart(path)); // the empty text is a key like any other
  return parts;
}

CValue const* Descend(CValue const* value, std::span<StPart const> parts) {
  for (auto part = parts.begin(); value != nullptr && part != parts.end(); ++part) {
    if (value->Type() == EnType::Map)
      value = value->Map().Find(part->key);
    else if (value->Type() == EnType::Vector && part->index)
      value = value->Vector().Find(*part->index);
    else
      return nullptr;
  }
  return value;
}

// Finds one feature after the other in an object's map. The features are in the order of the first
// object's maps, which as a rule is that of every other's: each container is looked up once and
// gone along entry by entry.
class CObjectReader {
public:
  explicit CObjectReader(CValueMap const& object) : m_Object(object) {}

  CValue const* Find(StFeature const& feature) {
    if (!feature.isBesidePrevious) Enter(feature.parents);
    if (m_Vector != nullptr)
      return feature.last.index ? m_Vector->Find(*feature.last.index) : nullptr;
    return m_Map != nullptr ? FindInMap(feature.last.key) : nullptr;
  }

private:
  void Enter(std::span<StPart const> parents) {
    m_Map = parents.empty() ? &m_Object : nullptr;
    m_Vector = nullptr;
    if (!parents.empty()) {
      CValue const* const parent = Descend(m_Object.Find(parents.front().key), parents.subspan(1));
      if (parent != nullptr && parent->Type() == EnType::Map) m_Map = &parent->Map();
      if (parent != nullptr && parent->Type() == EnType::Vector) m_Vector = &parent->Vector();
    }
    if (m_Map != nullptr) m_Next = m_Map->begin();
  }

  CValue const* FindInMap(CValue_Key const& key) {
    constexpr int c_lookAhead = 3; // entries that the first object does not have
    for (int step = 0; step < c_lookAhead && m_Next != m_Map->end(); ++step, ++m_Next) {
      auto const order = m_Next.Key() <=> key;
      if (order == 0) return &(m_Next++).Value();
      if (order > 0) break;
    }
    return m_Map->Find(key);
  }

  CValueMap const& m_Object;
  CValueMap const* m_Map = nullptr; // the container of the current features
  CValueVector const* m_Vector = nullptr;
  CValueMap::const_iterator m_Next;
};

// The column of a text feature: texts numbered as they come, then by their order.
class CTextColumn {
public:
  explicit CTextColumn(int64 columns) : m_Numbers(static_cast<std::size_t>(columns)) {}

  void Set(int64 label, std::string const& text) {
    auto const next = static_cast<std::uint32_t>(m_Texts.size());
    auto const [known, isNew] = m_Known.try_emplace(text, next);
    if (isNew) m_Texts.push_back(text);
    m_Numbers[static_cast<std::size_t>(label)] = known->second;
  }

  // Writes the indices in sorted order and gives the distinct texts in that order.
  CValueVector Write(float* row) const {
    bool const hasEmpty = std::ranges::find(m_Numbers, 0U) != m_Numbers.end();
    std::vector<std::uint32_t> order(m_Texts.size() - (hasEmpty ? 0 : 1));
    std::iota(order.begin(), order.end(), hasEmpty ? 0U : 1U);
    std::ranges::sort(order, {}, [&](std::uint32_t number) { return m_Texts[number]; });
    std::vector<float> indices(m_Texts.size());
    CValueVector texts;
    for (std::size_t k = 0; k < order.size(); ++k) {
      indices[order[k]] = static_cast<float>(k);
      texts.PushBack(CValueString(std::string(m_Texts[order[k]])));
    }
    std::ranges::transform(m_Numbers, row, [&](std::uint32_t n) { return indices[n]; });
    return texts;
  }

private:
  std::vector<std::uint32_t> m_Numbers;         // by label, into m_Texts
  std::vector<std::string_view> m_Texts = {""}; // views into the feature map
  std::unordered_map<std::string_view, std::uint32_t> m_Known = {{"", 0}};
};

// The label that the key of an object ends with; nothing where there is no number. One too large
// for a label is the largest number.
std::optional<int64> Label(std::string_view digits) {
  bool const isNumber =
      !digits.empty() && std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
  if (!isNumber) return std::nullopt;
  int64 label = 0;
  auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), label);
  return error == std::errc() ? label : std::numeric_limits<int64>::max();
}

class CConversion {
public:
  CConversion(CValueMap const& features, std::string const& idKey, CImage& image)
      : m_Features(features), m_IdKey(idKey), m_Image(image) {}

  void FindObjects() {
    std::string const begin = m_IdKey + ' ';
    for (auto const& [key, value] : m_Features)
      if (value.Type() == EnType::Map && key.IsText() && key.Text().starts_with(begin))
        m_Objects.push_back({-1, &key.Text(), &value.Map()});
    if (m_Objects.empty())
      Impl::Raise(ORVA_LOCATION(c_module, c_function),
                  "no objects found in object features value map!");
  }

  void ReadMaximumLabel() {
    CValue const& entry = m_Features.Entry("maximum label");
    m_Maximum = entry.Type() == EnType::Long ? entry.Long() : 0;
    if (m_Maximum == 0)
      Impl::Raise(ORVA_LOCATION(c_module, c_function),
                  "no entry 'maximum label' found in object features value map!");
    if (m_Maximum < 0)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_function),
                          CString("maximum label %1 is negative").Arg(m_Maximum));
  }

  // An object is read under its label padded to the digits of the maximum, and under no other key.
  void ReadLabels() {
    std::size_t const digits = std::to_string(m_Maximum).size();
    for (StObject& object : m_Objects) {
      auto const number = std::string_view(*object.key).substr(m_IdKey.size() + 1);
      auto const label = Label(number);
      if (!label) continue;
      if (*label > m_Maximum)
        Impl::RaiseBadParam(
            ORVA_LOCATION(c_module, c_function),
            CString("\"%1\" lies beyond the maximum label %2").Arg(*object.key).Arg(m_Maximum));
      if (number.size() == digits) object.label = *label;
    }
  }

  void ListFeatures(std::vector<std::string> excluded) {
    excluded.push_back(m_IdKey);
    std::vector<std::string> keys;
    CValueMap const& sample = *m_Objects.front().map;
    CreateKeyListRecursivly(sample, "", keys, 2, excluded);
    for (std::string const& key : keys) {
      auto parents = Split(key);
      StPart last = std::move(parents.back());
      parents.pop_back();
      bool const isBesidePrevious = !m_List.empty() && m_List.back().parents == parents;
      m_List.push_back(
          {key, std::move(parents), std::move(last), isBesidePrevious, sample.Entry(key).Type()});
    }
  }

  void MakeImage() {
    auto const rows = static_cast<int64>(m_List.size()) + 1;
    auto const objects = static_cast<int64>(m_Objects.size());
    if (Columns() > c_unquestionedPixels / rows && Columns() / c_columnsPerObject > objects)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_function),
                          CString("maximum label %1 is out of proportion to %2 objects")
                              .Arg(m_Maximum)
                              .Arg(objects));
    try {
      m_Image.Resize(CSize(Columns(), rows), CSize(0, 0, 0));
    } catch (std::bad_alloc const&) {
      CString message("no memory for a feature image of %1 labels and %2 features");
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_function),
                          message.Arg(Columns()).Arg(rows - 1));
    }
  }

  void WritePixels() {
    CImageAccess const access = m_Image.CreateAccess(true);
    m_Pixels = reinterpret_cast<float*>(access.WritableBase());
    for (int64 x = 0; x < Columns(); ++x) m_Pixels[x] = static_cast<float>(x);
    m_Largest = static_cast<double>(m_Maximum);
    for (StFeature const& feature : m_List) m_Texts.push_back(MakeColumn(feature));
    for (StObject const& object : m_Objects)
      if (object.label >= 0) WriteObject(object);
    for (std::size_t k = 0; k < m_List.size(); ++k)
      if (m_Texts[k]) WriteTexts(k);
  }

  // Takes the features at the very end, where nothing can fail any more. The name may be a text of
  // the attributes that are replaced, hence the copy.
  // NOLINTNEXTLINE(performance-unnecessary-value-param)
  void WriteAttributes(std::string featureName, CValueMap& features) {
    CValueVector keys, types;
    keys.PushBack(CValueString(m_IdKey));
    types.PushBack(CValueString("numeric"));
    for (StFeature const& feature : m_List) {
      keys.PushBack(CValueString(feature.path));
      types.PushBack(CValueString(feature.type == EnType::String ? "label" : "numeric"));
    }
    CValueMap& attributes = m_Image.Attributes();
    attributes.SetEntry("Image/ContentType", CValueString("FeatureImage"));
    attributes.SetEntry("Image/featurename", CValueString(featureName));
    attributes.SetEntry("Image/unique-id-key", CValueString(m_IdKey));
    attributes.SetEntry("Image/y-keys", std::move(keys));
    attributes.SetEntry("Image/y-types", std::move(types));
    attributes.SetEntry("Image/label-lookup", std::move(m_Lookup));
    CSeluHeaderTools::SetMetaInfo(m_Image, CSeluHeaderTools::c_sMetaMinMax,
                                  CValueVector(CValueDouble(0.0), CValueDouble(m_Largest)));
    attributes.SetEntry("Features/" + featureName, CValueMap()).Map() = std::move(features);
  }

private:
  [[nodiscard]] int64 Columns() const { return m_Maximum + 1; }
  [[nodiscard]] float* Row(std::size_t feature) const {
    return m_Pixels + static_cast<int64>(feature + 1) * Columns();
  }

  // What collects the texts of a feature; nothing for a number.
  std::optional<CTextColumn> MakeColumn(StFeature const& feature) const {
    switch (feature.type) {
    case EnType::String:
      return CTextColumn(Columns());
    case EnType::Bool:
    case EnType::Double:
    case EnType::Long:
      return std::nullopt;
    default:
      CString message("Value type %1 not supported.");
      throw CException("ConvertObjectBasedFeaturesIntoFeatureImage",
                       message.Arg(m_Objects.front().map->Entry(feature.path).TypeName()).c_str());
    }
  }

  void WriteObject(StObject const& object) {
    CObjectReader reader(*object.map);
    for (std::size_t k = 0; k < m_List.size(); ++k) {
      CValue const* const value = reader.Find(m_List[k]);
      if (value == nullptr || !value->IsValid()) continue;
      if (m_Texts[k]) {
        if (value->Type() != EnType::String) RaiseMixture(object, m_List[k], *value);
        m_Texts[k]->Set(object.label, value->String().Std());
      } else {
        if (value->GenericType() != CValue::EnGenericType::Number)
          RaiseMixture(object, m_List[k], *value);
        WriteNumber(Row(k)[object.label], Impl::NumericReading(*value));
      }
    }
  }

  void WriteNumber(float& pixel, double number) {
    static_assert(std::numeric_limits<float>::is_iec559); // out of range becomes infinity
    pixel = static_cast<float>(number);
    if (pixel > m_Largest) m_Largest = pixel;
  }

  void WriteTexts(std::size_t feature) {
    CValueVector texts = m_Texts[feature]->Write(Row(feature));
    m_Lookup.SetEntry(m_List[feature].path, std::move(texts));
  }

  [[noreturn]] static void RaiseMixture(StObject const& object, StFeature const& feature,
                                        CValue const& value) {
    CString message("\"%1/%2\" is a %3, unlike the same feature of the first object");
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_function),
                        message.Arg(*object.key).Arg(feature.path).Arg(value.TypeName()));
  }

  CValueMap const& m_Features;
  std::string const& m_IdKey;
  CImage& m_Image;
  std::vector<StObject> m_Objects; // in the order of the map; label -1: not read
  int64 m_Maximum = 0;
  std::vector<StFeature> m_List;
  float* m_Pixels = nullptr;
  std::vector<std::optional<CTextColumn>> m_Texts; // by feature
  CValueMap m_Lookup;
  double m_Largest = 0; // indices of texts stay below the number of objects, and so of labels
};

// The image keeps a copy of the features or, where they are given away, the map itself.
template <class TMap>
void Convert(std::string const& featureName, TMap&& features, std::string const& idKey,
             CImage& image, std::vector<std::string> const& excluded) {
  if (image.Type() != IMAGE_GREY_F)
    Impl::Raise(ORVA_LOCATION(c_module, c_function),
                "Feature image type must be ORVA::IMAGE_GREY_F.");
  CConversion conversion(features, idKey, image);
  conversion.FindObjects();
  conversion.ReadMaximumLabel();
  conversion.ReadLabels();
  conversion.ListFeatures(excluded);
  conversion.MakeImage();
  conversion.WritePixels();
  CValueMap kept(std::forward<TMap>(features)); // they may lie in the attributes to be written
  try {
    conversion.WriteAttributes(featureName, kept);
  } catch (...) {
    if constexpr (!std::is_const_v<std::remove_reference_t<TMap>>) features = std::move(kept);
    throw;
  }
}

} // namespace

void ConvertObjectBasedFeaturesIntoFeatureImage(std::string const& featureName,
                                                CValueMap const& features, std::string const& idKey,
                                                CImage& image,
                                                std::vector<std::string> const& excluded) {
  Convert(featureName, features, idKey, image, excluded);
}

void ConvertObjectBasedFeaturesIntoFeatureImage(std::string const& featureName,
                                                CValueMap&& features, std::string const& idKey,
                                                CImage& image,
                                                std::vector<std::string> const& excluded) {
  Convert(featureName, std::move(features), idKey, image, excluded);
}

} // namespace ORVA
