#include <pxlib2core/Exception.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include <array>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2core/Value";

struct StKind {
  char const* name;
  CValue::EnGenericType generic;
  char const* accessor;
};

// By EnType.
constexpr std::array<StKind, 8> c_kinds = {{
    {"CValue", CValue::EnGenericType::None, ""},
    {"CValueBool", CValue::EnGenericType::Number, "ORVA::CValue::Bool"},
    {"CValueLong", CValue::EnGenericType::Number, "ORVA::CValue::Long"},
    {"CValueDouble", CValue::EnGenericType::Number, "ORVA::CValue::Double"},
    {"CValueString", CValue::EnGenericType::Text, "ORVA::CValue::String"},
    {"CValueMap", CValue::EnGenericType::Container, "ORVA::CValue::Map"},
    {"CValueVector", CValue::EnGenericType::Container, "ORVA::CValue::Vector"},
    {"CValuePointer", CValue::EnGenericType::Object, "ORVA::CValue::Pointer"},
}};

StKind const& KindOf(CValue::EnType type) { return c_kinds[static_cast<std::size_t>(type)]; }

template <class T>
struct IsOwner : std::false_type {};
template <class T>
struct IsOwner<std::unique_ptr<T>> : std::true_type {};

[[noreturn]] void RaiseWrongKind(CValue::EnType found, CValue::EnType wanted) {
  CString message("the value is a %1, not a %2");
  Impl::Raise(ORVA_LOCATION(c_module, KindOf(wanted).accessor),
              message.Arg(KindOf(found).name).Arg(KindOf(wanted).name));
}

} // namespace

Impl::StObject::~StObject() = default;

static_assert(sizeof(CValueDouble) == sizeof(CValue) && sizeof(CValuePointer) == sizeof(CValue),
              "the leaves may carry no state of their own: values are copied as CValue");

CValue::CValue() noexcept = default;
CValue::CValue(CValueMap map) : m_Content(std::make_unique<CValueMap>(std::move(map))) {}
CValue::CValue(CValueVector vector)
    : m_Content(std::make_unique<CValueVector>(std::move(vector))) {}
CValue::CValue(bool value) : m_Content(value) {}
CValue::CValue(std::int32_t value) : m_Content(value) {}
CValue::CValue(double value) : m_Content(value) {}
CValue::CValue(CString value) : m_Content(std::make_unique<CString>(std::move(value))) {}
CValue::CValue(std::unique_ptr<Impl::StObject> object) : m_Content(std::move(object)) {}

CValue::CValue(CValue const& other)
    : m_Content(CloneContent(other.m_Content)),
      m_Meta(other.m_Meta ? std::make_unique<CValueMap>(*other.m_Meta) : nullptr) {}

CValue::CValue(CValue&& other) noexcept
    : m_Content(std::exchange(other.m_Content, Content{})), m_Meta(std::move(other.m_Meta)) {}

// Both assignments take the new content aside first: the other value may lie inside this one.
CValue& CValue::operator=(CValue const& other) {
  CValue copy(other);
  return *this = std::move(copy);
}

CValue& CValue::operator=(CValue&& other) noexcept {
  CValue taken(std::move(other));
  m_Content.swap(taken.m_Content);
  m_Meta.swap(taken.m_Meta);
  return *this;
}

CValue::~CValue() = default;

CValue::Content CValue::CloneContent(Content const& content) {
  return std::visit(
      [](auto const& held) -> Content {
        using Held = std::remove_cvref_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::unique_ptr<Impl::StObject>>) {
          return held->Clone();
        } else if constexpr (IsOwner<Held>::value) {
          return std::make_unique<typename Held::element_type>(*held);
        } else {
          return held;
        }
      },
      content);
}

CValue::EnType CValue::Type() const noexcept { return static_cast<EnType>(m_Content.index()); }
CValue::EnGenericType CValue::GenericType() const noexcept { return KindOf(Type()).generic; }
char const* CValue::TypeName() const noexcept { return KindOf(Type()).name; }

template <CValue::EnType kind>
auto& CValue::Get() {
  if (Type() != kind) [[unlikely]]
    RaiseWrongKind(Type(), kind);
  return *std::get_if<static_cast<std::size_t>(kind)>(&m_Content);
}

template <CValue::EnType kind>
auto const& CValue::Get() const {
  return const_cast<CValue*>(this)->Get<kind>();
}

bool& CValue::Bool() { return Get<EnType::Bool>(); }
bool CValue::Bool() const { return Get<EnType::Bool>(); }
std::int32_t& CValue::Long() { return Get<EnType::Long>(); }
std::int32_t CValue::Long() const { return Get<EnType::Long>(); }
double& CValue::Double() { return Get<EnType::Double>(); }
double CValue::Double() const { return Get<EnType::Double>(); }
CString& CValue::String() { return *Get<EnType::String>(); }
CString const& CValue::String() const { return *Get<EnType::String>(); }
CValueMap& CValue::Map() { return *Get<EnType::Map>(); }
CValueMap const& CValue::Map() const { return *Get<EnType::Map>(); }
CValueVector& CValue::Vector() { return *Get<EnType::Vector>(); }
CValueVector const& CValue::Vector() const { return *Get<EnType::Vector>(); }

void* CValue::ObjectAddress(std::type_info const& type) noexcept {
  auto* object = std::get_if<std::unique_ptr<Impl::StObject>>(&m_Content);
  return object != nullptr && (*object)->Type() == type ? (*object)->Address() : nullptr;
}

CValueMap& CValue::Meta() {
  if (!m_Meta) m_Meta = std::make_unique<CValueMap>();
  return *m_Meta;
}

CValueMap const& CValue::Meta() const noexcept {
  static CValueMap const none;
  return m_Meta ? *m_Meta : none;
}

bool CValue::Equal(CValue const& other) const {
  if (Type() != other.Type()) return false;
  return std::visit(
      [&other](auto const& held) {
        using Held = std::remove_cvref_t<decltype(held)>;
        auto const& otherHeld = std::get<Held>(other.m_Content);
        if constexpr (std::is_same_v<Held, std::unique_ptr<Impl::StObject>>) {
          return held->Equal(*otherHeld);
        } else if constexpr (IsOwner<Held>::value) {
          return *held == *otherHeld;
        } else {
          return held == otherHeld;
        }
      },
      m_Content);
}

} // namespace ORVA
