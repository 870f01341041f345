#include <pxlib2core/Exception.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <utility>
#include <vector>

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

// Trees deeper than this are taken apart without recursion.
constexpr int c_deepest = 100;

// Containers whose destruction is under way on this thread, one inside the other.
constinit thread_local int t_depth = 0;

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

// Copies a tree container by container: each is filled when its turn comes.
class CValue::CCopier {
public:
  void Copy(CValue const& from, CValue& to) {
    Start(from, to);
    while (!m_Open.empty()) {
      StOpen const open = m_Open.back();
      m_Open.pop_back();
      Finish(*open.from, *open.to);
    }
  }

private:
  struct StOpen {
    CValue const* from;
    CValue* to;
  };

  // Copies what has nothing below it and leaves the rest for later.
  void Start(CValue const& from, CValue& to) {
    bool const isContainer = from.GenericType() == EnGenericType::Container;
    if (isContainer || from.m_Meta) m_Open.push_back({&from, &to});
    if (isContainer) return;
    std::visit(
        [&to](auto const& held) {
          using Held = std::remove_cvref_t<decltype(held)>;
          if constexpr (std::is_same_v<Held, std::unique_ptr<Impl::StObject>>)
            to.m_Content = held->Clone();
          else if constexpr (std::is_same_v<Held, std::unique_ptr<CString>>)
            to.m_Content = std::make_unique<CString>(*held);
          else if constexpr (std::is_copy_assignable_v<Held>)
            to.m_Content = held;
        },
        from.m_Content);
  }

  void Finish(CValue const& from, CValue& to) {
    if (from.m_Meta) {
      to.m_Meta = std::make_unique<CValueMap>();
      Fill(*from.m_Meta, *to.m_Meta);
    }
    if (from.Type() == EnType::Map) {
      to.m_Content = std::make_unique<CValueMap>();
      Fill(from.Map(), to.Map());
    } else if (from.Type() == EnType::Vector) {
      to.m_Content = std::make_unique<CValueVector>();
      Fill(from.Vector(), to.Vector());
    }
  }

  void Fill(CValueMap const& from, CValueMap& to) {
    for (auto const& [key, value] : from.m_Entries)
      Start(value, to.m_Entries.try_emplace(to.m_Entries.end(), key)->second);
  }

  void Fill(CValueVector const& from, CValueVector& to) {
    to.m_Values.resize(from.Size()); // at once: the copies keep their places
    for (std::size_t i = 0; i < from.Size(); ++i) Start(from.m_Values[i], to.m_Values[i]);
  }

  std::vector<StOpen> m_Open;
};

// Compares two trees container by container.
class CValue::CComparison {
public:
  [[nodiscard]] bool AreEqual(CValue const& a, CValue const& b) {
    if (!CanBeEqual(a, b)) return false;
    while (!m_Open.empty()) {
      auto const [left, right] = m_Open.back();
      m_Open.pop_back();
      bool const isMap = left->Type() == EnType::Map;
      if (!(isMap ? Compare(left->Map(), right->Map()) : Compare(left->Vector(), right->Vector())))
        return false;
    }
    return true;
  }

private:
  // Decides about what has nothing below it and leaves the rest for later.
  bool CanBeEqual(CValue const& a, CValue const& b) {
    if (a.Type() != b.Type()) return false;
    if (a.GenericType() == EnGenericType::Container) {
      m_Open.emplace_back(&a, &b);
      return true;
    }
    return std::visit(
        [&b](auto const& held) {
          using Held = std::remove_cvref_t<decltype(held)>;
          auto const& otherHeld = std::get<Held>(b.m_Content);
          if constexpr (std::is_same_v<Held, std::unique_ptr<Impl::StObject>>)
            return held->Equal(*otherHeld);
          else if constexpr (std::is_same_v<Held, std::unique_ptr<CString>>)
            return *held == *otherHeld;
          else
            return held == otherHeld;
        },
        a.m_Content);
  }

  bool Compare(CValueMap const& a, CValueMap const& b) {
    return std::ranges::equal(
        a.m_Entries, b.m_Entries, [this](auto const& left, auto const& right) {
          return left.first == right.first && CanBeEqual(left.second, right.second);
        });
  }

  bool Compare(CValueVector const& a, CValueVector const& b) {
    return std::ranges::equal(a.m_Values, b.m_Values, [this](auto const& left, auto const& right) {
      return CanBeEqual(left, right);
    });
  }

  std::vector<std::pair<CValue const*, CValue const*>> m_Open;
};

CValue::CValue(CValue const& other) { CCopier().Copy(other, *this); }

CValue::CValue(CValue&& other) noexcept
    : m_Content(other.TakeContent()), m_Meta(other.m_Meta ? std::move(other.m_Meta) : nullptr) {}

// Both assignments take the new content aside first: the other value may lie inside this one.
CValue& CValue::operator=(CValue const& other) {
  RefuseIfMissing("ORVA::CValue::operator =");
  CValue copy(other);
  return *this = std::move(copy);
}

// NOLINTNEXTLINE(performance-noexcept-move-constructor): the place of a missing entry throws
CValue& CValue::operator=(CValue&& other) {
  RefuseIfMissing("ORVA::CValue::operator =");
  CValue taken(std::move(other));
  m_Content.swap(taken.m_Content);
  m_Meta.swap(taken.m_Meta);
  return *this;
}

void swap(CValue& a, CValue& b) {
  a.RefuseIfMissing("ORVA::swap");
  b.RefuseIfMissing("ORVA::swap");
  a.m_Content.swap(b.m_Content);
  a.m_Meta.swap(b.m_Meta);
}

CValue::~CValue() {
  bool const isTree = m_Meta || MapEntries() != nullptr || VectorValues() != nullptr;
  if (!isTree) return;
  if (t_depth >= c_deepest) {
    TakeApart();
    return;
  }
  ++t_depth;
  m_Content = Content();
  m_Meta.reset();
  --t_depth;
}

// One place for all threads: it is read and never written.
CValue& CValue::Missing() noexcept {
  static CValue missing;
  return missing;
}

void CValue::RefuseIfMissing(char const* function) const {
  if (this == &Missing()) [[unlikely]]
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        "there is no such entry to write to: SetEntry makes one, and so does Entry "
                        "with create");
}

// An invalid value is left alone: it may be the one that stands for all missing entries.
CValue::Content CValue::TakeContent() noexcept {
  return IsValid() ? std::exchange(m_Content, Content()) : Content();
}

CValueMap::Entries* CValue::MapEntries() noexcept {
  auto* const map = std::get_if<std::unique_ptr<CValueMap>>(&m_Content);
  return map != nullptr && !(*map)->IsEmpty() ? &(*map)->m_Entries : nullptr;
}

std::vector<CValue>* CValue::VectorValues() noexcept {
  auto* const vector = std::get_if<std::unique_ptr<CValueVector>>(&m_Content);
  return vector != nullptr && !(*vector)->IsEmpty() ? &(*vector)->m_Values : nullptr;
}

// Takes the tree below this value apart without recursion and without memory. The containers on the
// way down are linked through the place of their first value, which is taken out before.
void CValue::TakeApart() noexcept {
  CValue open; // the innermost container; in the place of its first value stands the one around it
  CValue next(std::move(*this));
  do {
    if (CValue* const first = next.First()) {
      CValue below(std::move(*first));
      first->m_Content = open.TakeContent();
      first->m_Meta = std::move(next.m_Meta); // waits there
      open.m_Content = next.TakeContent();
      next.TakeOver(below);
    } else if (next.m_Meta) {
      next.m_Content = std::move(next.m_Meta);
    } else {
      next.m_Content = Content();
      open.GiveNext(next);
    }
  } while (next.IsValid() || next.m_Meta || open.IsValid());
}

CValue* CValue::First() noexcept {
  if (auto* const entries = MapEntries()) return &entries->begin()->second;
  if (auto* const values = VectorValues()) return &values->front();
  return nullptr;
}

// What comes next out of an open container: its last value, then the annotations that wait. When
// all are gone, the container around it is open.
void CValue::GiveNext(CValue& next) noexcept {
  CValue* const first = First();
  if (first == nullptr) return; // nothing is open
  auto* const entries = MapEntries();
  auto* const values = VectorValues();
  if (entries != nullptr && entries->size() > 1) {
    auto const last = std::prev(entries->end());
    next.TakeOver(last->second);
    entries->erase(last);
  } else if (values != nullptr && values->size() > 1) {
    next.TakeOver(values->back());
    values->pop_back();
  } else if (first->m_Meta) {
    next.m_Content = std::move(first->m_Meta);
  } else {
    Content around = first->TakeContent();
    m_Content = std::move(around);
  }
}

// For a value that holds nothing yet.
void CValue::TakeOver(CValue& other) noexcept {
  m_Content = other.TakeContent();
  m_Meta = std::move(other.m_Meta);
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
  RefuseIfMissing("ORVA::CValue::Meta");
  if (!m_Meta) m_Meta = std::make_unique<CValueMap>();
  return *m_Meta;
}

CValueMap const& CValue::Meta() const noexcept {
  static CValueMap const none;
  return m_Meta ? *m_Meta : none;
}

bool CValue::Equal(CValue const& other) const { return CComparison().AreEqual(*this, other); }

std::int32_t CValueLong::Narrow(bool isNegative, uint64 bits) {
  using Limits = std::numeric_limits<std::int32_t>;
  auto const number = static_cast<int64>(bits);
  bool const fits = isNegative ? number >= Limits::min() : bits <= uint64{Limits::max()};
  if (!fits) {
    CString message("%1 does not fit into the 32 bits of a CValueLong");
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValueLong::CValueLong"),
                        isNegative ? message.Arg(number) : message.Arg(bits));
  }
  return static_cast<std::int32_t>(number);
}

std::int32_t CValueLong::WholePart(double value) {
  bool const fits = value > -2147483649.0 && value < 2147483648.0; // not so for NaN
  if (!fits)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValueLong::CValueLong"),
                        CString("%1 does not fit into the 32 bits of a CValueLong").Arg(value));
  return static_cast<std::int32_t>(value);
}

CValueString::CValueString(char const* text, std::size_t length) {
  if (text == nullptr && length > 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValueString::CValueString"),
                        CString("a text of %1 bytes is null").Arg(length));
  *this = CValueString(length > 0 ? CString(std::string(text, length)) : CString());
}

} // namespace ORVA
