#include <pxlib2core/Exception.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/HeaderTools.h>

namespace ORVA {

namespace {

constexpr char c_header[] = "Header";

} // namespace

CValue const* CSeluHeaderTools::FindMetaInfo(IImage const& image, char const* key) {
  CValue_Key const name(key); // refuses null, with or without a header
  CValue const* const header = image.Attributes().Find(c_header);
  if (header == nullptr || header->Type() != CValue::EnType::Map) return nullptr;
  return header->Map().Find(name);
}

bool CSeluHeaderTools::GetMetaInfo(IImage const& image, char const* key, CValue& value) {
  CValue const* const found = FindMetaInfo(image, key);
  if (found != nullptr) value.Copy(*found);
  return found != nullptr;
}

void CSeluHeaderTools::SetMetaInfo(IImage& image, char const* key, CValue const& value) {
  CValue_Key const name(key);
  CValueMap& attributes = image.Attributes();
  CValue* const header = attributes.Find(c_header);
  if (header == nullptr || !header->IsValid()) {
    CValueMap information;
    information.SetEntry(name, value);
    attributes.SetEntry(c_header, std::move(information));
  } else if (header->Type() == CValue::EnType::Map) {
    header->Map().SetEntry(name, value);
  } else {
    CString message("the image attribute \"Header\" is a %1, not a CValueMap");
    Impl::RaiseBadParam(
        ORVA_LOCATION("framework/pxlib2image/HeaderTools", "ORVA::CSeluHeaderTools::SetMetaInfo"),
        message.Arg(header->TypeName()));
  }
}

} // namespace ORVA
