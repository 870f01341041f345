// Base class of the algorithms, and how they report progress.
//
//   #include <iostream>
//   struct CDots : IProgressObserver {
//     void Start(int64, char const* text) override { std::cout << text << ' '; }
//     void Advance() override { std::cout << '.'; }
//   } dots;
//   CAlgorithm algorithm("texture", nullptr);
//   algorithm.SetProgressObserver(&dots);    // its operations tell dots from here on
#pragma once

#include <SeluBase/Export.h>
#include <pxlib2core/Object.h>
#include <pxlib2core/Types.h>
#include <pxlib2core/ValueMap.h>

#include <string>

namespace ORVA {

/// What a caller may watch of a running operation; every call comes from the operation's thread.
class SELUBASE_EXPORT IProgressObserver {
public:
  virtual ~IProgressObserver();
  /// A piece of work of so many steps begins.
  virtual void Start(int64 steps, char const* text);
  /// One step is done.
  virtual void Advance();
  /// Called once after Start, also when an error ends the operation (`complete` is false then).
  virtual void Finish(bool complete) noexcept;
  /// Asked at every step: true stops the operation there with a CException.
  [[nodiscard]] virtual bool IsCancelled();
};

/// An algorithm with a name, a parent object (referred to, may be null) and an observer.
class SELUBASE_EXPORT CAlgorithm : public IPluginObject {
public:
  /// Throws CExBadParam for a null name.
  CAlgorithm(char const* name, IObject const* parent);
  CAlgorithm(CAlgorithm const&) = default;
  CAlgorithm(CAlgorithm&&) noexcept = default;
  CAlgorithm& operator=(CAlgorithm const&) = default;
  CAlgorithm& operator=(CAlgorithm&&) noexcept = default;
  ~CAlgorithm() override;

  /// The name given to the constructor.
  [[nodiscard]] std::string const& Name() const noexcept { return m_Name; }
  /// The name of this instance, as SetInstance gave it.
  [[nodiscard]] std::string const& Instance() const noexcept { return m_Instance; }
  /// The object that this one belongs to, or null.
  [[nodiscard]] IObject const* Parent() const noexcept { return m_Parent; }
  void SetInstance(char const* name) override;
  /// Keeps a copy of the setup.
  void Init(CValueMap const* setup) override;
  /// Adds the entries "name" and "instance" and those given to Init.
  void GetPluginSetup(CValueMap& setup) const override;

  /// The observer must outlive the operations that it watches; null for none. Copies of the
  /// algorithm share it.
  void SetProgressObserver(IProgressObserver* observer) noexcept { m_Observer = observer; }

protected:
  /// Progress of one operation: starts with its life, advances, and finishes with it.
  class SELUBASE_EXPORT CProgress {
  public:
    CProgress(CAlgorithm const& algorithm, int64 steps, char const* text);
    CProgress(CProgress const&) = delete;
    CProgress& operator=(CProgress const&) = delete;
    ~CProgress();
    /// One step done; throws CException "operation cancelled" when the observer asks to stop.
    void Advance();
    /// The whole operation done.
    void Finish() noexcept;

  private:
    IProgressObserver* m_Observer; // null: nobody watches, or finished
  };

private:
  std::string m_Name;
  std::string m_Instance;
  IObject const* m_Parent;
  CValueMap m_Setup;
  IProgressObserver* m_Observer = nullptr;
};

} // namespace ORVA
