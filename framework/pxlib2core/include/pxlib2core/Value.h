// One value of a value tree: nothing, a Boolean, a number, a text, a map, a vector or an object.
//
//   #include <iostream>
//   CValue value = CValueDouble(0.25);
//   value.Double() *= 2;
//   CValue copy = value;                        // deep: shares nothing with value
//   if (copy.Type() == CValue::EnType::Double) std::cout << copy.Double();   // prints 0.5
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/String.h>
#include <pxlib2core/Types.h>

#include <concepts>
#include <cstddef>
#include <map>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>
#include <vector>

namespace ORVA {

class CValue;
class CValue_Key;
class CValueMap;
class CValueVector;

namespace Impl {

/// An object in a value, owned or only referred to; knows how to copy and compare what it owns.
struct PXLIB2CORE_EXPORT StObject {
  virtual ~StObject();
  [[nodiscard]] virtual std::unique_ptr<StObject> Clone() const = 0;
  [[nodiscard]] virtual bool Equal(StObject const& other) const = 0;
  [[nodiscard]] virtual std::type_info const& Type() const noexcept = 0;
  [[nodiscard]] virtual void* Address() noexcept = 0;
  [[nodiscard]] virtual bool Owns() const noexcept = 0;
};

template <class T>
struct StOwnedObject final : StObject {
  explicit StOwnedObject(T value) : object(std::move(value)) {}
  std::unique_ptr<StObject> Clone() const override {
    return std::make_unique<StOwnedObject>(object);
  }
  bool Equal(StObject const& other) const override {
    if constexpr (std::equality_comparable<T>) {
      return other.Owns() && other.Type() == typeid(T) &&
             static_cast<StOwnedObject const&>(other).object == object;
    } else {
      return &other == this;
    }
  }
  std::type_info const& Type() const noexcept override { return typeid(T); }
  void* Address() noexcept override { return &object; }
  bool Owns() const noexcept override { return true; }
  T object;
};

template <class T>
struct StReferredObject final : StObject {
  explicit StReferredObject(T* pointer) : object(pointer) {}
  std::unique_ptr<StObject> Clone() const override {
    return std::make_unique<StReferredObject>(object);
  }
  bool Equal(StObject const& other) const override {
    return !other.Owns() && other.Type() == typeid(T) &&
           static_cast<StReferredObject const&>(other).object == object;
  }
  std::type_info const& Type() const noexcept override { return typeid(T); }
  void* Address() noexcept override { return object; }
  bool Owns() const noexcept override { return false; }
  T* object;
};

} // namespace Impl

/// A value with deep copies and a kind that only assignment, Copy and Move change. The typed
/// accessors throw CException when the value is of another kind; nothing is converted.
///
/// A tree of maps and vectors may be as deep as memory allows: it is copied, compared and destroyed
/// without recursion. (What an owned object does when it is copied is its own business.)
///
/// The invalid value that a map gives for a missing entry belongs to no map: writing to it by
/// assignment, Copy, Move, swap or Meta throws CExBadParam.
class PXLIB2CORE_EXPORT CValue {
public:
  /// The kinds of values.
  enum class EnType { Invalid, Bool, Long, Double, String, Map, Vector, Pointer };
  /// The kinds of values, numbers and containers taken together.
  enum class EnGenericType { None, Number, Text, Container, Object };

  CValue() noexcept; ///< an invalid value
  CValue(CValueMap map);
  CValue(CValueVector vector);
  CValue(CValue const& other);
  CValue(CValue&& other) noexcept; ///< leaves the other invalid
  CValue& operator=(CValue const& other);
  /// Throws for the place of a missing entry alone.
  CValue& operator=(CValue&& other); // NOLINT(performance-noexcept-move-constructor)
  ~CValue();

  /// The kind of the value.
  [[nodiscard]] EnType Type() const noexcept;
  /// The kind of the value, numbers and containers taken together.
  [[nodiscard]] EnGenericType GenericType() const noexcept;
  /// Name of the value's class, such as "CValueDouble"; "CValue" for an invalid value.
  [[nodiscard]] char const* TypeName() const noexcept;
  /// Whether there is a value.
  [[nodiscard]] bool IsValid() const noexcept { return Type() != EnType::Invalid; }

  /// The truth value; CException for a value of another kind.
  bool& Bool();
  [[nodiscard]] bool Bool() const;
  /// The 32-bit integer; CException for a value of another kind.
  std::int32_t& Long();
  [[nodiscard]] std::int32_t Long() const;
  /// The floating-point number; CException for a value of another kind.
  double& Double();
  [[nodiscard]] double Double() const;
  /// The text; CException for a value of another kind.
  CString& String();
  [[nodiscard]] CString const& String() const;
  /// The map; CException for a value of another kind.
  CValueMap& Map();
  [[nodiscard]] CValueMap const& Map() const;
  /// The vector; CException for a value of another kind.
  CValueVector& Vector();
  [[nodiscard]] CValueVector const& Vector() const;
  /// The object held, or null when the value holds none or one of another type.
  template <class T>
  [[nodiscard]] T* Pointer() noexcept {
    return static_cast<T*>(ObjectAddress(typeid(T)));
  }
  template <class T>
  [[nodiscard]] T const* Pointer() const noexcept {
    return static_cast<T const*>(const_cast<CValue*>(this)->ObjectAddress(typeid(T)));
  }

  /// Annotations that travel with the value (copied and moved, not compared); made at the first
  /// call on a mutable value.
  CValueMap& Meta();
  [[nodiscard]] CValueMap const& Meta() const noexcept;

  /// A deep copy.
  [[nodiscard]] CValue Clone() const { return *this; }
  /// Takes over a deep copy of the other value; on failure this one is unchanged.
  void Copy(CValue const& other) { *this = other; }
  /// Takes over the other value's content and leaves it invalid.
  void Move(CValue& other) { *this = std::move(other); }
  /// Both keep what they hold where one is the place of a missing entry.
  friend PXLIB2CORE_EXPORT void swap(CValue& a, CValue& b);
  /// Same kind and same content, compared in depth; two NaN are not equal, objects compare by ==
  /// where they are owned and have it, else by address.
  [[nodiscard]] bool Equal(CValue const& other) const;
  friend bool operator==(CValue const& a, CValue const& b) { return a.Equal(b); }

protected:
  explicit CValue(bool value);
  explicit CValue(std::int32_t value);
  explicit CValue(double value);
  explicit CValue(CString value);
  explicit CValue(std::unique_ptr<Impl::StObject> object);

private:
  // What is larger than a number lies outside: most values of a large tree are numbers.
  using Content = std::variant<std::monostate, bool, std::int32_t, double, std::unique_ptr<CString>,
                               std::unique_ptr<CValueMap>, std::unique_ptr<CValueVector>,
                               std::unique_ptr<Impl::StObject>>;
  friend CValueMap;
  class CCopier;
  class CComparison;
  // What stands for an entry that is missing; never written.
  [[nodiscard]] static CValue& Missing() noexcept;
  void RefuseIfMissing(char const* function) const;
  [[nodiscard]] Content TakeContent() noexcept;
  // For the end of deep trees; the values of a container that has any, else null.
  [[nodiscard]] std::map<CValue_Key, CValue>* MapEntries() noexcept;
  [[nodiscard]] std::vector<CValue>* VectorValues() noexcept;
  [[nodiscard]] CValue* First() noexcept;
  void TakeApart() noexcept;
  void GiveNext(CValue& next) noexcept;
  void TakeOver(CValue& other) noexcept;

  [[nodiscard]] void* ObjectAddress(std::type_info const& type) noexcept;
  template <EnType kind>
  auto& Get();
  template <EnType kind>
  auto const& Get() const;

  Content m_Content;
  std::unique_ptr<CValueMap> m_Meta;
};

// The typed leaves add a constructor and no state: a CValue made from one is the same value.

/// A truth value.
struct CValueBool : CValue {
  explicit CValueBool(bool value = false) : CValue(value) {}
};

/// An integer of 32 bits.
struct PXLIB2CORE_EXPORT CValueLong : CValue {
  explicit CValueLong(std::int32_t value = 0) : CValue(value) {}
  /// From a wider number; throws CExBadParam for one that 32 bits cannot hold.
  template <std::integral T>
  requires(sizeof(T) > 4 || (sizeof(T) == 4 && std::is_unsigned_v<T>)) explicit CValueLong(T value)
      : CValueLong(Narrow(std::is_signed_v<T> && value < T{0}, static_cast<uint64>(value))) {}
  /// The whole part of a real number; throws CExBadParam where 32 bits cannot hold that.
  template <std::floating_point T>
  explicit CValueLong(T value) : CValueLong(WholePart(static_cast<double>(value))) {}

private:
  // A number of up to 64 bits, whose bits alone do not say whether it is negative.
  [[nodiscard]] static std::int32_t Narrow(bool isNegative, uint64 bits);
  [[nodiscard]] static std::int32_t WholePart(double value);
};

/// A floating-point number of 64 bits.
struct CValueDouble : CValue {
  explicit CValueDouble(double value = 0) : CValue(value) {}
};

/// A text.
struct PXLIB2CORE_EXPORT CValueString : CValue {
  explicit CValueString(CString text = {}) : CValue(std::move(text)) {}
  /// Throws CExBadParam for a null pointer, unless the length is 0.
  CValueString(char const* text, std::size_t length);
};

/// An object in a value: owned (moved in, copied with the value) or referred to by address.
struct CValuePointer : CValue {
  /// A pointer that owns the object, which is destroyed with the last value.
  template <std::copy_constructible T>
  [[nodiscard]] static CValuePointer Own(T object) {
    return CValuePointer(std::make_unique<Impl::StOwnedObject<T>>(std::move(object)));
  }
  /// The object must outlive the value and its copies; it is not const, as Pointer hands it out for
  /// writing.
  template <class T>
  requires(!std::is_const_v<T>) [[nodiscard]] static CValuePointer Refer(T* object) {
    return CValuePointer(std::make_unique<Impl::StReferredObject<T>>(object));
  }

private:
  explicit CValuePointer(std::unique_ptr<Impl::StObject> object) : CValue(std::move(object)) {}
};

} // namespace ORVA
