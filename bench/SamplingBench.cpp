// Random draws, and what is done with random rotations, beside the usual libraries. All peers take
// their bits from the 64-bit Mersenne twister, GSL from its 32-bit one.
#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/RandomNormal.h>
#include <SeluUtils/Random/RandomPoisson.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>
#include <boost/random.hpp>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ORVA;

constexpr std::size_t c_few = 4096;       // stays in the nearest cache
constexpr std::size_t c_many = 8'000'000; // 64 MB of doubles

using State = benchmark::State;

// One value after the other, each taken by the caller.
template <class Draw>
void Single(std::string const& row, std::string const& contestant, Draw draw) {
  benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), [draw](State& state) mutable {
    for (auto _ : state) benchmark::DoNotOptimize(draw());
    state.SetItemsProcessed(state.iterations());
  });
}

// A whole array at a time.
template <class T, class Fill>
void Bulk(std::string const& row, std::string const& contestant, std::size_t n, Fill fill) {
  benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), [n, fill](State& state) mutable {
    std::vector<T> values(n);
    for (auto _ : state) {
      fill(values);
      benchmark::DoNotOptimize(values.data());
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
  });
}

template <class Distribution>
auto Std(Distribution distribution) {
  return [distribution, engine = std::mt19937_64(1)]() mutable { return distribution(engine); };
}

template <class Distribution>
auto Boost(Distribution distribution) {
  return [distribution, engine = boost::random::mt19937_64(1)]() mutable {
    return distribution(engine);
  };
}

template <class Function, class... Parameters>
auto Gsl(Function function, Parameters... parameters) {
  std::shared_ptr<gsl_rng> const engine(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
  return [engine, function, parameters...] { return function(engine.get(), parameters...); };
}

void RegisterScalars() {
  Single("uniform", "SeluUtils", CRandomUniform());
  Single("uniform", "std", Std(std::uniform_real_distribution<double>()));
  Single("uniform", "Boost", Boost(boost::random::uniform_real_distribution<double>()));
  Single("uniform", "GSL", Gsl(gsl_rng_uniform));
  Single("normal", "SeluUtils", CRandomNormal());
  Single("normal", "std", Std(std::normal_distribution<double>()));
  Single("normal", "Boost", Boost(boost::random::normal_distribution<double>()));
  Single("normal", "GSL", Gsl(gsl_ran_gaussian_ziggurat, 1.0));
  Single("exponential", "SeluUtils", CRandomExponential());
  Single("exponential", "std", Std(std::exponential_distribution<double>()));
  Single("exponential", "Boost", Boost(boost::random::exponential_distribution<double>()));
  Single("exponential", "GSL", Gsl(gsl_ran_exponential, 1.0));
  for (auto const& [shape, name] : {std::pair(0.5, "0.5"), {2.5, "2.5"}, {100.0, "100"}}) {
    std::string const row = std::string("gamma ") + name;
    Single(row, "SeluUtils", CRandomGamma(shape, 1));
    Single(row, "std", Std(std::gamma_distribution<double>(shape)));
    Single(row, "Boost", Boost(boost::random::gamma_distribution<double>(shape)));
    Single(row, "GSL", Gsl(gsl_ran_gamma, shape, 1.0));
  }
  for (int const mean : {10, 300, 1000}) {
    std::string const row = "Poisson " + std::to_string(mean);
    Single(row, "SeluUtils", CRandomPoisson(mean));
    Single(row, "std", Std(std::poisson_distribution<int>(mean)));
    Single(row, "Boost", Boost(boost::random::poisson_distribution<int>(mean)));
    Single(row, "GSL", Gsl(gsl_ran_poisson, static_cast<double>(mean)));
  }
}

template <class T>
void RegisterBulk(std::string const& row, std::size_t n) {
  auto const fillWith = [](auto draw) {
    return [draw](std::vector<T>& values) mutable {
      for (T& value : values) value = static_cast<T>(draw());
    };
  };
  Bulk<T>(row, "SeluUtils", n, [](std::vector<T>& values) { CRandomUniform()(values); });
  Bulk<T>(row, "std", n, fillWith(Std(std::uniform_real_distribution<T>())));
  Bulk<T>(row, "Boost", n, fillWith(Boost(boost::random::uniform_real_distribution<T>())));
  Bulk<T>(row, "GSL", n, fillWith(Gsl(gsl_rng_uniform)));
  Bulk<T>(row, "raw bits", n, [](std::vector<T>& values) {
    CRandom::Obj().Rand(values.data(), values.size() * sizeof(T));
  });
}

Eigen::Matrix3d EigenRotation(std::mt19937_64& engine) {
  // The formula of Eigen's UnitRandom, on the bits that the other peers use.
  constexpr double twoPi = 2 * std::numbers::pi;
  std::uniform_real_distribution<double> unit;
  double const u1 = unit(engine), u2 = twoPi * unit(engine), u3 = twoPi * unit(engine);
  double const a = std::sqrt(1 - u1), b = std::sqrt(u1);
  return Eigen::Quaterniond(a * std::sin(u2), a * std::cos(u2), b * std::sin(u3), b * std::cos(u3))
      .toRotationMatrix();
}

void RegisterRotations() {
  std::string const row = "isotropic rotation";
  Single(row, "SeluUtils", CIsotropicRotation());
  Single(row, "Eigen, twister",
         [engine = std::mt19937_64(1)]() mutable { return EigenRotation(engine); });
  Single(row, "Eigen UnitRandom",
         [] { return Eigen::Matrix3d(Eigen::Quaterniond::UnitRandom().toRotationMatrix()); });
  CPolarCoordinates const mean(1.0, 2.5);
  Single("girdle rotation", "SeluUtils", CGirdleRotation(0.5, mean));
  Single("von Mises-Fisher rotation", "SeluUtils", CVonMisesFisher(20, mean));
  Single("Watson rotation", "SeluUtils", CWatsonRotation(20, mean));

  Bulk<CTriple<double>>("matrix times vector", "SeluUtils", c_few,
                        [r = CEulerRotation(0.1, 0.2, 0.3)](auto& vectors) {
                          for (auto& v : vectors) v = r.rotateVector(v);
                        });
  Bulk<Eigen::Vector3d>(
      "matrix times vector", "Eigen", c_few,
      [r = Eigen::AngleAxisd(0.1, Eigen::Vector3d::UnitX()).toRotationMatrix()](auto& vectors) {
        for (auto& v : vectors) v = r * v;
      });
  Bulk<CTriple<double>>("matrix times vector", "plain loop", c_few,
                        [m = std::vector<double>{0, 1, 0, -1, 0, 0, 0, 0, 1}](auto& vectors) {
                          for (auto& v : vectors)
                            v = {m[0] * v.x + m[1] * v.y + m[2] * v.z,
                                 m[3] * v.x + m[4] * v.y + m[5] * v.z,
                                 m[6] * v.x + m[7] * v.y + m[8] * v.z};
                        });
}

void RegisterMatrix() {
  constexpr std::size_t rows = 64, cols = 64;
  benchmark::RegisterBenchmark("element access 64 x 64/SeluUtils", [](State& state) {
    CMatrix<double> m(rows, cols);
    for (auto _ : state) {
      for (std::size_t r = 0; r < rows; ++r)
        for (std::size_t c = 0; c < cols; ++c) m(r, c) = m(r, c) * 0.5 + 1;
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rows * cols));
  });
  benchmark::RegisterBenchmark("element access 64 x 64/plain loop", [](State& state) {
    std::vector<double> m(rows * cols);
    for (auto _ : state) {
      for (std::size_t r = 0; r < rows; ++r)
        for (std::size_t c = 0; c < cols; ++c)
          m.at(r * cols + c) = m.at(r * cols + c) * 0.5 + 1; // checked, as the matrix is
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rows * cols));
  });
}

bool const c_registered = [] {
  RegisterScalars();
  RegisterBulk<double>("4096 uniform doubles", c_few);
  RegisterBulk<double>("8 million uniform doubles", c_many);
  RegisterBulk<float>("4096 uniform floats", c_few);
  RegisterRotations();
  RegisterMatrix();
  return true;
}();

} // namespace
