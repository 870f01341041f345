// The exact draws beside the usual libraries, singly and of arrays. Each library draws from the
// fast generator of 64 bits that it has or recommends: this one from CRandomSource, std and Boost
// from the 64-bit Mersenne twister, GSL from its 32-bit one. NumPy's Generator runs in
// bench/numpy_draws.py.
#include <SeluUtils/Quaternion.h>
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
#include <SeluUtils/Random/SpherePoint.h>

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>
#include <boost/random.hpp>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace ORVA;

constexpr std::size_t c_array = 4096; // stays in the nearest cache

using State = benchmark::State;

// One value after the other, each taken by the caller.
template <class Draw>
void Single(std::string const& row, std::string const& contestant, Draw draw) {
  benchmark::RegisterBenchmark((row + ", single/" + contestant).c_str(),
                               [draw](State& state) mutable {
                                 for (auto _ : state) benchmark::DoNotOptimize(draw());
                                 state.SetItemsProcessed(state.iterations());
                               });
}

// An array at a time.
template <class T, class Fill>
void Bulk(std::string const& row, std::string const& contestant, Fill fill) {
  benchmark::RegisterBenchmark(
      (row + ", array/" + contestant).c_str(), [fill](State& state) mutable {
        std::vector<T> values(c_array);
        for (auto _ : state) {
          fill(values);
          benchmark::DoNotOptimize(values.data());
          benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(c_array));
      });
}

// Ours, by its own single draws and its own Fill.
template <class T, class Distribution>
void Ours(std::string const& row, Distribution const& distribution) {
  Single(row, "SeluUtils",
         [distribution, source = CRandomSource(1)]() mutable { return distribution(source); });
  Bulk<T>(row, "SeluUtils",
          [distribution, source = CRandomSource(1)](std::vector<T>& values) mutable {
            distribution.Fill(values, source);
          });
}

// A peer, which has no draws of arrays but a loop.
template <class T, class Draw>
void Peer(std::string const& row, std::string const& contestant, Draw draw) {
  Single(row, contestant, draw);
  Bulk<T>(row, contestant, [draw](std::vector<T>& values) mutable {
    for (T& value : values) value = static_cast<T>(draw());
  });
}

template <class T, class Distribution>
void Std(std::string const& row, Distribution distribution) {
  Peer<T>(row, "std",
          [distribution, engine = std::mt19937_64(1)]() mutable { return distribution(engine); });
}

template <class T, class Distribution>
void Boost(std::string const& row, Distribution distribution) {
  Peer<T>(row, "Boost", [distribution, engine = boost::random::mt19937_64(1)]() mutable {
    return distribution(engine);
  });
}

template <class T, class Function, class... Parameters>
void Gsl(std::string const& row, Function function, Parameters... parameters) {
  std::shared_ptr<gsl_rng> const engine(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
  Peer<T>(row, "GSL",
          [engine, function, parameters...] { return function(engine.get(), parameters...); });
}

// NumPy's row of this name: nanoseconds per draw as it prints them.
void NumPy(std::string const& row) {
  std::string const command =
      "/usr/bin/python3 " SELU_BENCH_DIR "/support/numpy_draws.py '" + row + "' 0.2 2>/dev/null";
  benchmark::RegisterBenchmark(
      (row + ", array/NumPy").c_str(),
      [command](State& state) {
        for (auto _ : state) {
          double nanoseconds = 0;
          std::FILE* const pipe = popen(command.c_str(), "r");
          if (pipe == nullptr || std::fscanf(pipe, "%lf", &nanoseconds) != 1)
            state.SkipWithError("needs python3-numpy");
          if (pipe != nullptr) pclose(pipe);
          state.SetIterationTime(nanoseconds * 1e-9 * static_cast<double>(c_array));
        }
        state.SetItemsProcessed(static_cast<std::int64_t>(c_array));
      })
      ->UseManualTime()
      ->Iterations(1);
}

std::string Named(char const* name, double parameter) {
  std::string text = std::to_string(parameter);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return std::string(name) + " " + text;
}

void RegisterReals() {
  Ours<double>("uniform", CExactUniform());
  Std<double>("uniform", std::uniform_real_distribution<double>());
  Boost<double>("uniform", boost::random::uniform_real_distribution<double>());
  Gsl<double>("uniform", gsl_rng_uniform);
  Ours<double>("normal", CExactNormal());
  Std<double>("normal", std::normal_distribution<double>());
  Boost<double>("normal", boost::random::normal_distribution<double>());
  Gsl<double>("normal", gsl_ran_gaussian_ziggurat, 1.0);
  Ours<double>("exponential", CExactExponential());
  Std<double>("exponential", std::exponential_distribution<double>());
  Boost<double>("exponential", boost::random::exponential_distribution<double>());
  Gsl<double>("exponential", gsl_ran_exponential, 1.0);
  Ours<double>("log-normal", CExactLogNormal());
  Std<double>("log-normal", std::lognormal_distribution<double>());
  Boost<double>("log-normal", boost::random::lognormal_distribution<double>());
  Gsl<double>("log-normal", gsl_ran_lognormal, 0.0, 1.0);
  Ours<double>("Rayleigh", CExactRayleigh());
  Gsl<double>("Rayleigh", gsl_ran_rayleigh, 1.0);
  for (double const shape : {0.5, 2.5, 100.0}) {
    std::string const row = Named("gamma", shape);
    Ours<double>(row, CExactGamma(shape, 1));
    Std<double>(row, std::gamma_distribution<double>(shape));
    Boost<double>(row, boost::random::gamma_distribution<double>(shape));
    Gsl<double>(row, gsl_ran_gamma, shape, 1.0);
  }
  Ours<double>("pressed direction", CExactPressedDirections(0.5));
}

void RegisterCounts() {
  for (double const mean : {1.0, 9.0, 10.0, 100.0, 1000.0, 1e6}) {
    std::string const row = Named("Poisson", mean);
    Ours<int64>(row, CExactPoisson(mean));
    Std<int64>(row, std::poisson_distribution<int>(mean));
    Boost<int64>(row, boost::random::poisson_distribution<int>(mean));
    Gsl<int64>(row, gsl_ran_poisson, mean);
  }
  for (std::size_t const n : {std::size_t{6}, std::size_t{1000}}) {
    std::vector<double> weights;
    for (std::size_t i = 0; i < n; ++i) weights.push_back(1 + static_cast<double>(i % 7));
    std::string const row = "one of " + std::to_string(n) + " weights";
    Ours<std::size_t>(row, CAliasTable(weights));
    Std<std::size_t>(row, std::discrete_distribution<int>(weights.begin(), weights.end()));
    Boost<std::size_t>(row,
                       boost::random::discrete_distribution<int>(weights.begin(), weights.end()));
    std::shared_ptr<gsl_ran_discrete_t> const table(gsl_ran_discrete_preproc(n, weights.data()),
                                                    gsl_ran_discrete_free);
    std::shared_ptr<gsl_rng> const engine(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
    Peer<std::size_t>(row, "GSL",
                      [table, engine] { return gsl_ran_discrete(engine.get(), table.get()); });
  }
}

void RegisterPoints() {
  using Point = CTriple<double>;
  Ours<Point>("point on a sphere", CSpherePoint());
  // Its points are vectors on the heap; what is drawn and not how it is returned is compared.
  auto const fromRange = [](auto distribution) {
    return [distribution, engine = boost::random::mt19937_64(1)]() mutable {
      auto const point = distribution(engine);
      return Point(point[0], point[1], point[2]);
    };
  };
  Peer<Point>("point on a sphere", "Boost",
              fromRange(boost::random::uniform_on_sphere<double, std::vector<double>>(3)));
  std::shared_ptr<gsl_rng> const engine(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
  Peer<Point>("point on a sphere", "GSL", [engine] {
    Point p;
    gsl_ran_dir_3d(engine.get(), &p.x, &p.y, &p.z);
    return p;
  });
  Ours<Point>("point in a ball", CBallPoint());
  Ours<Point>("point in a disc", CDiscPoint({0, 0, 0}, 1));
}

Eigen::Quaterniond EigenQuaternion(std::mt19937_64& engine) {
  // The formula of Eigen's UnitRandom, on the bits that the other peers use.
  constexpr double twoPi = 2 * std::numbers::pi;
  std::uniform_real_distribution<double> unit;
  double const u1 = unit(engine), u2 = twoPi * unit(engine), u3 = twoPi * unit(engine);
  double const a = std::sqrt(1 - u1), b = std::sqrt(u1);
  return {a * std::sin(u2), a * std::cos(u2), b * std::sin(u3), b * std::cos(u3)};
}

template <class Rotations>
void RegisterForms(std::string const& name, Rotations const& rotations) {
  CRandomSource const source(1);
  Single(name + " direction", "SeluUtils",
         [rotations, s = source]() mutable { return rotations.Direction(s); });
  Single(name + " quaternion", "SeluUtils",
         [rotations, s = source]() mutable { return rotations.Quaternion(s); });
  Single(name + " rotation", "SeluUtils",
         [rotations, s = source]() mutable { return rotations(s); });
  auto const fill = [rotations, s = source](auto& values) mutable { rotations.Fill(values, s); };
  Bulk<CTriple<double>>(name + " direction", "SeluUtils", fill);
  Bulk<CQuaternion>(name + " quaternion", "SeluUtils", fill);
  Bulk<std::array<double, 9>>(name + " matrix", "SeluUtils", fill);
}

void RegisterRotations() {
  CPolarCoordinates const mean(1.0, 2.5);
  RegisterForms("isotropic", CExactIsotropicRotation());
  Peer<Eigen::Quaterniond>(
      "isotropic quaternion", "Eigen's formula",
      [engine = std::mt19937_64(1)]() mutable { return EigenQuaternion(engine); });
  Bulk<Eigen::Matrix3d>("isotropic matrix", "Eigen's formula",
                        [engine = std::mt19937_64(1)](auto& values) mutable {
                          for (auto& value : values)
                            value = EigenQuaternion(engine).toRotationMatrix();
                        });
  RegisterForms("girdle", CExactGirdleRotation(0.5, mean));
  RegisterForms("von Mises-Fisher", CExactVonMisesFisher(20, mean));
  RegisterForms("Watson, clusters,", CExactWatsonRotation(20, mean));
  RegisterForms("Watson, girdle,", CExactWatsonRotation(-20, mean));
}

bool const c_registered = [] {
  RegisterReals();
  RegisterCounts();
  RegisterPoints();
  RegisterRotations();
  for (char const* const row :
       {"uniform", "normal", "exponential", "log-normal", "Rayleigh", "gamma 0.5", "gamma 2.5",
        "gamma 100", "Poisson 1", "Poisson 9", "Poisson 10", "Poisson 100", "Poisson 1000",
        "Poisson 1000000", "one of 6 weights", "one of 1000 weights", "point on a sphere"})
    NumPy(row);
  return true;
}();

} // namespace
