// Sources of random bits, and the laws that draw from them.

#include "Arrays.h"
#include "Watch.h"

#include <SeluUtils/Random/AliasTable.h>
#include <SeluUtils/Random/BallPoint.h>
#include <SeluUtils/Random/DiscPoint.h>
#include <SeluUtils/Random/ExactExponential.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactGirdleRotation.h>
#include <SeluUtils/Random/ExactIsotropicRotation.h>
#include <SeluUtils/Random/ExactLogNormal.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPoisson.h>
#include <SeluUtils/Random/ExactPressedDirections.h>
#include <SeluUtils/Random/ExactRayleigh.h>
#include <SeluUtils/Random/ExactUniform.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <SeluUtils/Random/ExactWatsonRotation.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/PressedDirections.h>
#include <SeluUtils/Random/RandomChordlength.h>
#include <SeluUtils/Random/RandomCircleDiameter.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/RandomLogNormal.h>
#include <SeluUtils/Random/RandomNormal.h>
#include <SeluUtils/Random/RandomPoisson.h>
#include <SeluUtils/Random/RandomRayleigh.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/SpherePoint.h>
#include <SeluUtils/Random/UniformPoint.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/String.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace selu_python {
namespace {

using ORVA::CPolarCoordinates;
using ORVA::CRandomSource;
using ORVA::CString;
using ORVA::CTriple;
using ORVA::int64;
using ORVA::IRotationGenerator;
using ORVA::uint64;

constexpr char c_module[] = "python/src/Random";
constexpr std::size_t c_block = std::size_t{1} << 14; // draws between two looks at the clock

// A source that refuses two threads at a time: both would draw the same numbers.
class CSource {
public:
  CSource(std::optional<uint64> seed, uint64 stream)
      : m_Source(seed ? CRandomSource(*seed, stream) : CRandomSource()) {}

  template <class Use>
  auto With(Use const& use) {
    if (m_IsBusy.exchange(true))
      ORVA::Impl::Raise(ORVA_LOCATION(c_module, "CSource"),
                        "the source is in use by another thread; give each thread a stream");
    struct StRelease {
      std::atomic<bool>& flag;
      ~StRelease() { flag = false; }
    } const release{m_IsBusy};
    return use(m_Source);
  }

private:
  CRandomSource m_Source;
  std::atomic<bool> m_IsBusy = false;
};

// Fills an array in blocks, from the source or, without one, from the system's entropy.
template <class T, class Fill>
void FillFrom(CSource* given, std::span<T> out, Fill const& fill) {
  CWatch watch;
  auto const draw = [&](CRandomSource& source) {
    CUnlocked const unlocked;
    for (std::size_t k = 0; k < out.size(); k += c_block) {
      fill(out.subspan(k, std::min(c_block, out.size() - k)), source);
      watch.Advance();
    }
  };
  if (given != nullptr) return given->With(draw);
  CRandomSource fresh;
  draw(fresh);
}

py::ssize_t CheckedNumber(int64 n) {
  if (n < 0)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "sample"),
                              CString("n must not be negative, as %1 is").Arg(n));
  return static_cast<py::ssize_t>(n);
}

// Draws of rows of `width` numbers that are one T each.
template <class T, class Fill>
py::array_t<double> Rows(int64 n, py::ssize_t width, CSource* source, Fill const& fill) {
  auto rows = NewArray<double>({CheckedNumber(n), width});
  static_assert(sizeof(T) % sizeof(double) == 0);
  std::span<T> const out(static_cast<T*>(static_cast<void*>(rows.mutable_data())),
                         static_cast<std::size_t>(n));
  FillFrom(source, out, fill);
  return rows;
}

// A law of numbers.
struct StLaw {
  std::function<void(std::span<double>, CRandomSource&)> reals;
  std::function<void(std::span<int64>, CRandomSource&)> integers;

  [[nodiscard]] py::array Sample(int64 n, CSource* source) const {
    if (reals) return Draw<double>(n, source, reals);
    return Draw<int64>(n, source, integers);
  }

private:
  template <class T, class Fill>
  static py::array Draw(int64 n, CSource* source, Fill const& fill) {
    auto values = NewArray<T>({CheckedNumber(n)});
    FillFrom(source, Entries(values), fill);
    return values;
  }
};

// Generators that do not check their parameters themselves are asked.
template <class Generator>
StLaw LawOf(Generator generator) {
  using Value = decltype(generator());
  if constexpr (requires { generator.IsValid(); })
    if (!generator.IsValid())
      ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "law"),
                                "the parameters make no distribution");
  auto const fill = [generator = std::move(generator)](std::span<Value> out,
                                                       CRandomSource& source) {
    generator.Fill(out, source);
  };
  StLaw law;
  if constexpr (std::is_same_v<Value, double>)
    law.reals = fill;
  else
    law.integers = fill;
  return law;
}

template <class Exact, class Given, class... Parameters>
void DefineLaw(py::module_& module, char const* name) {
  module.def(name, [](Parameters... parameters, bool isExact) {
    return isExact ? LawOf(Exact(parameters...)) : LawOf(Given(parameters...));
  });
}

// Numbers of an alias table: from 0 on, by their weights.
StLaw IndexLaw(std::vector<double> const& weights) {
  StLaw law;
  law.integers = [table = ORVA::CAliasTable(weights)](std::span<int64> out, CRandomSource& source) {
    for (int64& index : out) index = static_cast<int64>(table(source));
  };
  return law;
}

// A direction as angles, without the loss of digits of an arc cosine near the poles.
CPolarCoordinates PolarOf(std::array<double, 3> const& v) {
  auto const [x, y, z] = v;
  double const scale = std::max({std::fabs(x), std::fabs(y), std::fabs(z)});
  if (!(scale > 0) || !std::isfinite(scale))
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "direction"),
                              CString("(%1, %2, %3) is no direction").Arg(x).Arg(y).Arg(z));
  double const theta = std::atan2(std::hypot(x / scale, y / scale), z / scale);
  double phi = std::atan2(y / scale, x / scale);
  if (phi < 0) phi += 2 * std::numbers::pi;
  return {theta, phi < 2 * std::numbers::pi ? phi : 0.0};
}

CTriple<double> TripleOf(std::array<double, 3> const& v) { return {v[0], v[1], v[2]}; }

// A law of rotations. A clone draws, so that any number of threads may at a time.
class CRotationLaw {
public:
  explicit CRotationLaw(std::unique_ptr<IRotationGenerator> generator)
      : m_Generator(std::move(generator)) {
    if (!m_Generator->IsValid())
      ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "CRotationLaw"),
                                "the parameters make no distribution");
  }
  [[nodiscard]] std::unique_ptr<IRotationGenerator> Clone() const {
    return std::unique_ptr<IRotationGenerator>(m_Generator->Clone());
  }
  [[nodiscard]] py::array Directions(int64 n, CSource* source) const {
    return Draw<CTriple<double>>(n, 3, source);
  }
  [[nodiscard]] py::array Rotations(int64 n, CSource* source) const {
    return Draw<std::array<double, 9>>(n, 9, source)
        .reshape(std::vector<py::ssize_t>{CheckedNumber(n), 3, 3});
  }
  /// w, x, y, z.
  [[nodiscard]] py::array Quaternions(int64 n, CSource* source) const {
    return Draw<ORVA::CQuaternion>(n, 4, source);
  }

private:
  template <class T>
  [[nodiscard]] py::array_t<double> Draw(int64 n, py::ssize_t width, CSource* source) const {
    auto const generator = Clone();
    return Rows<T>(n, width, source,
                   [&](std::span<T> out, CRandomSource& words) { generator->Fill(out, words); });
  }

  std::unique_ptr<IRotationGenerator> m_Generator;
};

template <class Generator>
CRotationLaw RotationLaw(Generator generator) {
  return CRotationLaw(std::make_unique<Generator>(std::move(generator)));
}

template <class Exact, class Given>
void DefineRotationLaw(py::module_& module, char const* name) {
  module.def(name, [](double parameter, std::array<double, 3> const& axis, bool isExact) {
    CPolarCoordinates const mean = PolarOf(axis);
    return isExact ? RotationLaw(Exact(parameter, mean)) : RotationLaw(Given(parameter, mean));
  });
}

CRotationLaw Mixture(std::vector<CRotationLaw const*> const& laws,
                     std::vector<double> const& weights) {
  ORVA::CMixtureRotation mixture(laws.size());
  for (std::size_t k = 0; k < laws.size(); ++k) mixture.Add(laws[k]->Clone(), weights.at(k));
  return RotationLaw(std::move(mixture));
}

// A law of points in space.
struct StPointLaw {
  std::function<void(std::span<CTriple<double>>, CRandomSource&)> fill;

  [[nodiscard]] py::array Points(int64 n, CSource* source) const {
    return Rows<CTriple<double>>(n, 3, source, fill);
  }
};

template <class Law>
StPointLaw PointLaw(Law law) {
  if constexpr (requires { law.IsValid(); })
    if (!law.IsValid())
      ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "law"), "lower must not be above upper");
  return {[law = std::move(law)](std::span<CTriple<double>> out, CRandomSource& source) {
    law.Fill(out, source);
  }};
}

using CVector = std::array<double, 3>;

void CheckFinite(CVector const& v) {
  for (double const number : v)
    if (!std::isfinite(number))
      ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "point"),
                                CString("%1 is not finite").Arg(number));
}

void BindSource(py::module_& module) {
  py::class_<CSource>(module, "Source")
      .def(py::init<std::optional<uint64>, uint64>(), py::arg("seed") = py::none(),
           py::arg("stream") = 0)
      .def(
          "jump", [](CSource& self) { self.With([](auto& source) { source.Jump(); }); },
          "Goes on by 2**128 words.")
      .def(
          "save", [](CSource& self) { return self.With([](auto& s) { return s.Save(); }); },
          "The state as a line of text.")
      .def(
          "restore",
          [](CSource& self, std::string const& state) {
            self.With([&](auto& source) { source.Restore(state); });
          },
          py::arg("state"))
      .def(
          "words",
          [](CSource& self, int64 n) {
            auto words = NewArray<uint64>({CheckedNumber(n)});
            FillFrom(&self, Entries(words), [](std::span<uint64> out, CRandomSource& source) {
              for (uint64& word : out) word = source.Rand64();
            });
            return words;
          },
          py::arg("n"));
}

void BindLaws(py::module_& module) {
  py::class_<StLaw>(module, "Law").def("sample", &StLaw::Sample);
  DefineLaw<ORVA::CExactUniform, ORVA::CRandomUniform, double, double>(module, "uniform_law");
  DefineLaw<ORVA::CExactNormal, ORVA::CRandomNormal, double, double>(module, "normal_law");
  DefineLaw<ORVA::CExactLogNormal, ORVA::CRandomLogNormal, double, double>(module,
                                                                           "log_normal_law");
  DefineLaw<ORVA::CExactExponential, ORVA::CRandomExponential, double>(module, "exponential_law");
  DefineLaw<ORVA::CExactGamma, ORVA::CRandomGamma, double, double>(module, "gamma_law");
  DefineLaw<ORVA::CExactPoisson, ORVA::CRandomPoisson, double>(module, "poisson_law");
  DefineLaw<ORVA::CExactRayleigh, ORVA::CRandomRayleigh, double>(module, "rayleigh_law");
  module.def("pressed_directions_law", [](double factor, bool isExact) {
    return isExact ? LawOf(ORVA::CExactPressedDirections(factor))
                   : LawOf(ORVA::CPressedDirections(factor, 1));
  });
  module.def("chord_length_law", [] { return LawOf(ORVA::CRandomChordlength()); });
  module.def("circle_diameter_law", [] { return LawOf(ORVA::CRandomCircleDiameter()); });
  module.def("indices_law", &IndexLaw);
}

void BindRotationLaws(py::module_& module) {
  py::class_<CRotationLaw>(module, "RotationLaw")
      .def("directions_xyz", &CRotationLaw::Directions)
      .def("rotations", &CRotationLaw::Rotations)
      .def("quaternions", &CRotationLaw::Quaternions);
  module.def("isotropic_rotations", [](bool isExact) {
    return isExact ? RotationLaw(ORVA::CExactIsotropicRotation())
                   : RotationLaw(ORVA::CIsotropicRotation());
  });
  DefineRotationLaw<ORVA::CExactWatsonRotation, ORVA::CWatsonRotation>(module, "watson_rotations");
  DefineRotationLaw<ORVA::CExactVonMisesFisher, ORVA::CVonMisesFisher>(
      module, "von_mises_fisher_rotations");
  DefineRotationLaw<ORVA::CExactGirdleRotation, ORVA::CGirdleRotation>(module, "girdle_rotations");
  module.def("fixed_rotations", [](double phi, double theta, double psi) {
    return RotationLaw(ORVA::CFixRotation(ORVA::CEulerRotation(phi, theta, psi)));
  });
  module.def("mixture_rotations", &Mixture);
}

void BindPointLaws(py::module_& module) {
  py::class_<StPointLaw>(module, "PointLaw").def("points_xyz", &StPointLaw::Points);
  module.def("box_points", [](CVector const& lower, CVector const& upper) {
    CheckFinite(lower);
    CheckFinite(upper);
    return PointLaw(ORVA::CUniformPoint(TripleOf(lower), TripleOf(upper)));
  });
  module.def("ball_points", [](CVector const& center, double radius) {
    return PointLaw(ORVA::CBallPoint(TripleOf(center), radius));
  });
  module.def("sphere_points", [](CVector const& center, double radius) {
    return PointLaw(ORVA::CSpherePoint(TripleOf(center), radius));
  });
  module.def("disc_points", [](CVector const& center, double radius, CVector const& axis) {
    return PointLaw(ORVA::CDiscPoint(TripleOf(center), radius, PolarOf(axis)));
  });
}

} // namespace

void BindRandom(py::module_& module) {
  BindSource(module);
  BindLaws(module);
  BindRotationLaws(module);
  BindPointLaws(module);
}

} // namespace selu_python
