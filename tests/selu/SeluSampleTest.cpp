// Samples from the command line: every format reads back, theory and samples agree, and what does
// not fit its law is told.
#include "support/Random.h"
#include "support/SampleRun.h"

#include <distributions/Distributions.h>
#include <distributions/SpecialFunctions.h>
#include <samples/SampleStatistics.h>

#include <SeluUtils/EulerRotation.h>
#include <pxlib2core/Random.h>

#include <nlohmann/json.hpp>

#include <boost/math/distributions/gamma.hpp>
#include <boost/math/quadrature/gauss_kronrod.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <numbers>
#include <tuple>

namespace {

using std::numbers::pi;
using test::Arguments;

// Each with parameters of its own; the second list has no continuous distribution to test.
std::vector<Arguments> const c_scalars = {{"uniform", "start=-2", "end=3"},
                                          {"normal", "mean=3", "sigma=2"},
                                          {"lognormal", "mu=0.3", "sigma=0.4"},
                                          {"lognormal", "expectation=3", "deviation=2"},
                                          {"exponential", "lambda=2"},
                                          {"gamma", "shape=0.5"},
                                          {"gamma", "shape=2.5", "rate=3"},
                                          {"gamma", "shape=100"},
                                          {"rayleigh", "sigma=2"},
                                          {"chordlength"},
                                          {"circlediameter"},
                                          {"pressed", "factor=0.3"},
                                          {"pressed", "factor=-2"}};
std::vector<Arguments> const c_discrete = {{"poisson", "lambda=7"},
                                           {"discrete", "0.25=0.3", "0.75=0.7"}};
std::vector<Arguments> const c_rotations = {{"isotropic"},
                                            {"girdle", "beta=0.3", "theta=1", "phi=2"},
                                            {"girdle", "beta=5"},
                                            {"girdle", "beta=1.01"},
                                            {"vmf", "kappa=20", "theta=90deg", "phi=45deg"},
                                            {"vmf", "kappa=0.001"},
                                            {"watson", "kappa=20", "theta=1"},
                                            {"watson", "kappa=-20", "theta=1", "phi=1"},
                                            {"watson", "kappa=0.3", "phi=6"},
                                            {"watson", "kappa=0"}};
std::vector<Arguments> const c_exactScalars = {
    {"exact-uniform", "start=-2", "end=3"},
    {"exact-normal", "mean=3", "sigma=2"},
    {"exact-lognormal", "mu=0.3", "sigma=0.4"},
    {"exact-lognormal", "expectation=3", "deviation=2"},
    {"exact-exponential", "lambda=2"},
    {"exact-gamma", "shape=0.5"},
    {"exact-gamma", "shape=1e12"},
    {"exact-rayleigh", "sigma=2"},
    {"exact-poisson", "lambda=0.3"},
    {"exact-poisson", "lambda=1000"},
    {"exact-poisson", "lambda=1e15"},
    {"exact-discrete", "1=1", "2=1", "3=1", "4=1", "5=1", "6=1"},
    {"discrete", "1=1", "2=1", "3=1", "4=1", "5=1", "6=1"},
    {"exact-pressed", "factor=0.3"}};
std::vector<Arguments> const c_exactRotations = {
    {"exact-isotropic"},
    {"exact-girdle", "beta=0.3", "theta=1", "phi=2"},
    {"exact-vmf", "kappa=20", "theta=90deg", "phi=45deg"},
    {"exact-vmf", "kappa=1e9"},
    {"exact-watson", "kappa=20", "theta=1"},
    {"exact-watson", "kappa=-20", "theta=1", "phi=1"},
    {"exact-watson", "kappa=0"}};
std::vector<Arguments> const c_single = {{"fixed", "phi=1", "theta=1", "psi=-2"}, {"constant"}};

class SeluSample : public test::CSampleTest {
protected:
  /// All numbers of a CSV text after its head.
  [[nodiscard]] static std::vector<double> Numbers(std::string const& csv) {
    std::vector<double> numbers;
    auto const lines = test::Lines(csv);
    for (std::size_t i = 1; i < lines.size(); ++i)
      for (auto const& field : test::Fields(lines[i])) numbers.push_back(std::stod(field));
    return numbers;
  }
  /// The same of a NPY file of doubles or 64-bit integers; its head goes to `dictionary`.
  [[nodiscard]] static std::vector<double> NpyNumbers(std::string const& bytes,
                                                      std::string& dictionary) {
    if (bytes.size() < 10 || bytes.substr(0, 8) != std::string("\x93NUMPY\x01\x00", 8)) return {};
    std::size_t const length =
        static_cast<unsigned char>(bytes[8]) + 256u * static_cast<unsigned char>(bytes[9]);
    EXPECT_EQ((10 + length) % 64, 0u);
    dictionary = bytes.substr(10, length);
    std::vector<double> numbers;
    for (std::size_t at = 10 + length; at + 8 <= bytes.size(); at += 8) {
      double real = 0;
      std::int64_t whole = 0;
      std::memcpy(&real, &bytes[at], 8);
      std::memcpy(&whole, &bytes[at], 8);
      numbers.push_back(dictionary.find("<i8") != std::string::npos ? static_cast<double>(whole)
                                                                    : real);
    }
    return numbers;
  }
  [[nodiscard]] static std::vector<double> JsonNumbers(std::string const& text) {
    std::vector<double> numbers;
    auto const json = nlohmann::json::parse(text);
    for (auto const& sample : json["samples"]) {
      if (sample.is_array())
        for (auto const& value : sample) numbers.push_back(value.get<double>());
      else
        numbers.push_back(sample.get<double>());
    }
    return numbers;
  }
  /// The p-value that a report holds, or -1.
  [[nodiscard]] static double Probability(std::string const& report) {
    std::size_t const at = report.find("p-value ");
    return at == std::string::npos ? -1 : std::stod(report.substr(at + 8));
  }
};

TEST_F(SeluSample, EveryFormatHoldsTheSameNumbers) {
  struct StCase {
    Arguments distribution;
    std::string as, dictionary, head;
    std::size_t width;
  };
  for (auto const& [distribution, as, dictionary, head, width] :
       {StCase{
            {"normal", "mean=3"}, "", "'<f8', 'fortran_order': False, 'shape': (50,)", "value", 1},
        StCase{{"poisson", "lambda=7"},
               "",
               "'<i8', 'fortran_order': False, 'shape': (50,)",
               "value",
               1},
        StCase{{"isotropic"}, "direction", "'shape': (50, 3,)", "x,y,z", 3},
        StCase{{"isotropic"}, "angles", "'shape': (50, 3,)", "phi,theta,psi", 3},
        StCase{{"isotropic"},
               "matrix",
               "'shape': (50, 3, 3,)",
               "m00,m01,m02,m10,m11,m12,m20,m21,m22",
               9}}) {
    Arguments common = {"-n", "50", "--seed", "4"};
    if (!as.empty()) common.insert(common.end(), {"--as", as});
    auto const with = [&, &given = distribution](std::string const& file) {
      Arguments all = common;
      all.insert(all.end(), {"-o", file});
      return Command(given, all);
    };
    for (std::string const file : {"a.csv", "a.json", "a.npy"}) EXPECT_EQ(Output(with(file)), "");
    auto const numbers = Numbers(Read("a.csv"));
    EXPECT_EQ(numbers.size(), 50 * width);
    EXPECT_EQ(test::Lines(Read("a.csv"))[0], head);
    EXPECT_EQ(JsonNumbers(Read("a.json")), numbers);
    std::string found;
    EXPECT_EQ(NpyNumbers(Read("a.npy"), found), numbers);
    EXPECT_NE(found.find(dictionary), std::string::npos) << found;
    // Standard output gets the same bytes, and --format counts more than the ending.
    EXPECT_EQ(Output(Command(distribution, common)), Read("a.csv"));
    auto forced = with("b.csv");
    forced.insert(forced.end(), {"--format", "json"});
    EXPECT_EQ(Output(forced), "");
    EXPECT_EQ(Read("b.csv"), Read("a.json"));
  }
}

TEST_F(SeluSample, AnglesAndDirectionBelongToTheMatrix) {
  for (Arguments const& distribution :
       {Arguments{"isotropic"}, Arguments{"fixed", "phi=1"},
        Arguments{"fixed", "theta=180deg", "psi=0.5"}, Arguments{"vmf", "kappa=5", "theta=2"}}) {
    auto const as = [&](std::string const& form) {
      return Numbers(Output(Command(distribution, {"-n", "200", "--seed", "4", "--as", form})));
    };
    auto const matrices = as("matrix"), angles = as("angles"), directions = as("direction");
    ASSERT_EQ(matrices.size(), 1800u);
    ASSERT_EQ(angles.size(), 600u);
    ASSERT_EQ(directions.size(), 600u);
    for (std::size_t i = 0; i < 200; ++i) {
      ORVA::CEulerRotation const rotation(angles[3 * i], angles[3 * i + 1], angles[3 * i + 2]);
      auto const matrix = rotation.getRotationMatrix();
      for (std::size_t k = 0; k < 9; ++k)
        EXPECT_NEAR(matrix.Elements()[k], matrices[9 * i + k], 1e-9) << distribution[0] << i;
      for (std::size_t k = 0; k < 3; ++k)
        EXPECT_EQ(directions[3 * i + k], matrices[9 * i + 3 * k + 2]);
    }
  }
}

TEST_F(SeluSample, TheSeedDecidesTheFile) {
  for (auto const& list : {c_scalars, c_discrete, c_rotations})
    for (auto const& distribution : list) {
      auto const make = [&](std::string const& seed) {
        return Output(Command(distribution, {"-n", "100", "--seed", seed}));
      };
      EXPECT_EQ(make("18446744073709551615"), make("18446744073709551615"));
      EXPECT_NE(make("1"), make("2")) << distribution[0];
    }
}

TEST_F(SeluSample, WithoutASeedRunsDiffer) {
  EXPECT_NE(Output({"sample", "uniform", "-n", "5"}), Output({"sample", "uniform", "-n", "5"}));
}

// 23 tests at 1e-5: a false alarm in one of 4000 choices of the seed.
TEST_F(SeluSample, SamplesPassTheirTestAndTheTestCanFail) {
  for (auto const& list : {c_scalars, c_rotations})
    for (auto const& distribution : list) {
      auto const report =
          Output(Command(distribution, {"-n", "100000", "--seed", "11", "--check"}));
      EXPECT_GT(Probability(report), 1e-5) << distribution[0] << "\n" << report;
    }
  ORVA::CRandom::Obj().Seed(test::Seed());
  // Normal values held against a slightly different theory.
  auto const generator = selu::MakeScalar(selu::CParameters::FromText("normal"));
  auto other = selu::MakeScalar(selu::CParameters::FromText("normal,mean=0.05"));
  selu::CScalarStatistics statistics(other, 100'000);
  for (int i = 0; i < 100'000; ++i) statistics.Add(generator.draw());
  EXPECT_LT(Probability(statistics.Report(100)), 1e-5);
}

// The mean within five standard errors, which the theory itself gives.
TEST_F(SeluSample, MomentsStandBesideThoseOfTheory) {
  test::CRandomNumbers const seed; // notes the seed on a failure
  ORVA::CRandom::Obj().Seed(test::Seed());
  constexpr double n = 100'000;
  for (auto const& list : {c_scalars, c_discrete})
    for (auto const& distribution : list) {
      selu::StScalar const scalar = selu::MakeScalar(selu::CParameters::FromTexts(distribution));
      selu::CScalarStatistics statistics(scalar, static_cast<ORVA::uint64>(n));
      for (int i = 0; i < static_cast<int>(n); ++i) statistics.Add(scalar.draw());
      auto const is = statistics.Moments(), should = scalar.theory.moments;
      EXPECT_NEAR(is.mean, should.mean, 5 * should.deviation / std::sqrt(n)) << distribution[0];
      double const ofVariance = std::sqrt((should.excess + 2) / n);
      EXPECT_NEAR(is.deviation / should.deviation, 1, 5 * ofVariance / 2) << distribution[0];
      EXPECT_NEAR(is.skewness, should.skewness, 0.1 * (1 + std::abs(should.skewness)));
    }
}

TEST_F(SeluSample, MomentsOfAnySizeAreShownAsTheyAre) {
  auto const row = [&](Arguments const& distribution, std::size_t line) {
    auto const report = Output(Command(distribution, {"-n", "1000", "--seed", "3", "--check"}));
    std::istringstream words(test::Lines(report).at(line));
    return std::vector<std::string>{std::istream_iterator<std::string>(words), {}};
  };
  // A mean too large for a number.
  EXPECT_EQ(row({"lognormal", "mu=1000"}, 2),
            (std::vector<std::string>{"mean", "inf", "inf", "none", "none"}));
  // Small is not zero.
  EXPECT_EQ(row({"exponential", "lambda=1e20"}, 2).at(2), "1e-20");
  EXPECT_EQ(row({"normal", "mean=1", "sigma=1e-17"}, 3).at(3), "1e-17");
  EXPECT_EQ(row({"normal", "sigma=1e-300"}, 2).at(2), "0");
}

TEST_F(SeluSample, DirectionMomentsStandBesideThoseOfTheory) {
  Write("mix.json", R"({"components": [{"weight": 0.1, "distribution": "isotropic"},
    {"weight": 0.2, "distribution": "vmf", "kappa": 5, "theta": 1},
    {"weight": 0.7, "distribution": "girdle", "beta": 0.2, "theta": "90deg", "phi": 2}]})");
  auto list = c_rotations;
  list.insert(list.end(), c_single.begin(), c_single.end());
  list.push_back({"mixture", "file=mix.json"});
  for (auto const& distribution : list) {
    auto const report = Output(Command(distribution, {"-n", "100000", "--seed", "3", "--check"}));
    auto const lines = test::Lines(report);
    ASSERT_GE(lines.size(), 12u) << report;
    for (std::size_t i = 2; i < 11; ++i) {
      std::istringstream words(lines[i]);
      std::string mean, name;
      double observed = 0, expected = 0;
      words >> mean >> name >> observed >> expected;
      // Components are at most 1, so a standard error is at most 1 / sqrt(n).
      EXPECT_NEAR(observed, expected, 5 / std::sqrt(100'000.0)) << distribution[0] << report;
    }
  }
}

TEST_F(SeluSample, NoTestIsInventedWhereThereIsNone) {
  Write("mix.json", R"({"components": [{"weight": 1, "distribution": "isotropic"}]})");
  for (auto const& distribution :
       {Arguments{"discrete", "1=1"}, Arguments{"uniform", "start=2", "end=2"},
        Arguments{"pressed", "factor=0"}, Arguments{"fixed"}, Arguments{"constant", "theta=1"},
        Arguments{"mixture", "file=mix.json"}}) {
    auto const report = Output(Command(distribution, {"-n", "100", "--seed", "3", "--check"}));
    EXPECT_NE(report.find("Kolmogorov-Smirnov: skipped, "), std::string::npos) << report;
    EXPECT_EQ(report.find("p-value"), std::string::npos) << report;
  }
}

// 25 verdicts, each wrong once in 10^6 choices of the seed.
TEST_F(SeluSample, SamplesThatFitSayThatTheyDo) {
  for (auto const& list : {c_scalars, c_discrete, c_rotations, c_exactScalars, c_exactRotations})
    for (auto const& distribution : list) {
      auto const report = Output(Command(distribution, {"-n", "20000", "--seed", "12", "--check"}));
      EXPECT_NE(report.find("The samples fit their law."), std::string::npos)
          << distribution[0] << report;
    }
}

TEST_F(SeluSample, SamplesThatDoNotFitEndWithStatusOne) {
  Arguments const poisson = {"sample", "poisson", "lambda=1000", "-n",
                             "100000", "--seed",  "1",           "--check"};
  auto const given = Selu(poisson);
  EXPECT_EQ(given.code, 1);
  EXPECT_NE(given.out.find("The samples do not fit their law"), std::string::npos) << given.out;
  EXPECT_EQ(given.error,
            "selu: the samples of \"poisson\" do not fit their law (exact-poisson is exact)\n");
  Arguments exact = poisson;
  exact.push_back("--exact");
  EXPECT_NE(Output(exact).find("The samples fit their law."), std::string::npos);
  // Too few to be judged.
  Arguments few = poisson;
  few[4] = "99";
  EXPECT_EQ(Selu(few).code, 0);
}

TEST_F(SeluSample, CountsAreTestedByChiSquare) {
  for (auto const& distribution :
       {Arguments{"poisson", "lambda=7"}, Arguments{"exact-poisson", "lambda=1e6"},
        Arguments{"discrete", "0.25=0.3", "0.75=0.7"}}) {
    auto const report = Output(Command(distribution, {"-n", "50000", "--seed", "5", "--check"}));
    EXPECT_NE(report.find("Chi-square: "), std::string::npos) << report;
    EXPECT_GT(Probability(report), 1e-5) << report;
  }
  // A die whose six is heavier, held against an even one.
  auto const heavy = selu::MakeScalar(selu::CParameters::FromText("discrete,1=1,2=1,3=1.1"));
  auto const even = selu::MakeScalar(selu::CParameters::FromText("discrete,1=1,2=1,3=1"));
  selu::CScalarStatistics statistics(even, 100'000);
  ORVA::CRandomSource source(test::Seed());
  for (int i = 0; i < 100'000; ++i) statistics.Add(heavy.drawFrom(source));
  auto const report = statistics.Report(100);
  EXPECT_FALSE(statistics.Fits()) << report;
  EXPECT_NE(report.find(" with 2 degrees of freedom"), std::string::npos) << report;
}

TEST_F(SeluSample, AxialLawsShowTheirPrincipalAxis) {
  for (auto const& distribution :
       {Arguments{"exact-watson", "kappa=50"}, Arguments{"exact-watson", "kappa=-50"},
        Arguments{"exact-girdle", "beta=0.1"}, Arguments{"girdle", "beta=10"},
        Arguments{"watson", "kappa=50"}}) {
    Arguments const more = {"theta=60deg", "phi=45deg", "-n", "100000", "--seed", "5", "--check"};
    auto const report = Output(Command(distribution, more));
    std::size_t const at = report.find("Principal axis: theta ");
    ASSERT_NE(at, std::string::npos) << report;
    double theta = 0, phi = 0, moment = 0, off = 9;
    EXPECT_EQ(std::sscanf(report.c_str() + at,
                          "Principal axis: theta %lf deg, phi %lf deg, second moment %lf; %lf",
                          &theta, &phi, &moment, &off),
              4);
    EXPECT_NEAR(theta, 60, 0.5) << report;
    EXPECT_NEAR(phi, 45, 0.5) << report;
    EXPECT_LT(off, 0.5) << report;
    EXPECT_TRUE(moment < 0.1 || moment > 0.8) << report;
  }
  EXPECT_EQ(Output({"sample", "vmf", "kappa=5", "-n", "100", "--seed", "1", "--check"})
                .find("Principal axis"),
            std::string::npos);
}

TEST_F(SeluSample, StreamsOfOneSeedDiffer) {
  for (auto const& distribution : {Arguments{"normal"}, Arguments{"exact-normal"},
                                   Arguments{"vmf", "kappa=5"}, Arguments{"constant"}}) {
    auto const make = [&](Arguments const& more) {
      Arguments all = {"-n", "100", "--seed", "1"};
      all.insert(all.end(), more.begin(), more.end());
      return Output(Command(distribution, all));
    };
    EXPECT_EQ(make({"--stream", "3"}), make({"--stream", "3"}));
    EXPECT_EQ(make({"--stream", "3"}) == make({"--stream", "4"}), distribution[0] == "constant");
  }
  // Of exact ones stream 0 is what there is without the option.
  EXPECT_EQ(
      Output({"sample", "exact-gamma", "shape=2", "-n", "9", "--seed", "1"}),
      Output({"sample", "exact-gamma", "shape=2", "-n", "9", "--seed", "1", "--stream", "0"}));
  EXPECT_EQ(Output({"sample", "gamma", "shape=2", "-n", "9", "--seed", "1", "--exact"}),
            Output({"sample", "exact-gamma", "shape=2", "-n", "9", "--seed", "1"}));
  EXPECT_NE(
      Output({"sample", "normal", "-n", "1", "--seed", "1", "--stream", "7", "--format", "json"})
          .find("\"stream\":7"),
      std::string::npos);
  ExpectFailure({"sample", "normal", "-n", "1", "--stream", "-1"}, "\"-1\"", 2);
}

TEST_F(SeluSample, TellsTheSeedItDraws) {
  auto const first = Selu({"sample", "exact-normal", "-n", "5"});
  std::string const note = "selu: drawn with --seed ";
  ASSERT_TRUE(first.error.starts_with(note)) << first.error;
  std::string const seed = first.error.substr(note.size(), first.error.size() - note.size() - 1);
  auto const again = Selu({"sample", "exact-normal", "-n", "5", "--seed", seed});
  EXPECT_EQ(again.out, first.out);
  EXPECT_EQ(again.error, "");
}

TEST_F(SeluSample, HistogramsEndWhereTheSupportEnds) {
  for (auto const& [text, low, high] : {std::tuple("uniform,start=-2,end=3", -2.0, 3.0),
                                        {"exact-uniform", 0.0, 1.0},
                                        {"chordlength", 0.0, 1.0},
                                        {"circlediameter", 0.0, 1.0},
                                        {"exact-pressed,factor=2", 0.0, pi}}) {
    selu::CScalarStatistics const statistics(selu::MakeScalar(selu::CParameters::FromText(text)),
                                             1000);
    EXPECT_DOUBLE_EQ(statistics.Borders().front(), low) << text;
    EXPECT_DOUBLE_EQ(statistics.Borders().back(), high) << text;
  }
}

TEST_F(SeluSample, ManySamplesAreTestedInCellsAsWellAsOneByOne) {
  selu::CUniformTest exact(1000), cells(ORVA::uint64{1} << 21);
  for (int i = 0; i < 1000; ++i) {
    double const share = (i + 0.5) * (i + 0.5) / 1e6;
    exact.Add(share);
    cells.Add(share);
  }
  // The squares of an even sequence have the distribution sqrt(x): its distance from x is 1/4.
  EXPECT_NEAR(exact.Distance(), 0.25, 1.1e-3);
  EXPECT_NEAR(cells.Distance(), exact.Distance(), 1.1e-3);
}

TEST(SpecialFunctions, AgreeWithIndependentOnes) {
  for (double const shape : {0.05, 0.5, 1.0, 2.5, 7.0, 100.0, 1e5})
    for (double const share : {1e-6, 0.01, 0.3, 0.5, 0.9, 0.999}) {
      double const x = boost::math::quantile(boost::math::gamma_distribution<>(shape), share);
      EXPECT_NEAR(selu::GammaShare(shape, x), share, 1e-9) << shape << " " << x;
    }
  // Of large shapes by another expansion: Wilson and Hilferty's cube root is right to 1e-6 there.
  for (double const shape : {1e6, 1e9, 1e12, 1e15})
    for (double const z : {-4.0, -1.0, 0.0, 0.5, 3.0}) {
      double const root = std::cbrt(1 + z / std::sqrt(shape));
      double const normal = (root - 1 + 1 / (9 * shape)) * 3 * std::sqrt(shape);
      EXPECT_NEAR(selu::GammaShare(shape, shape + z * std::sqrt(shape)),
                  std::erfc(-normal / std::sqrt(2)) / 2, 1e-6)
          << shape << " " << z;
    }
  auto const square = [](double t) { return std::exp(t * t); };
  for (double const x : {1e-4, 1e-3, 0.01, 0.3, 1.0, 2.5, 5.0, 12.0, 20.0}) {
    double const integral =
        boost::math::quadrature::gauss_kronrod<double, 61>::integrate(square, 0.0, x, 15, 1e-14);
    EXPECT_NEAR(selu::Dawson(x) / (std::exp(-x * x) * integral), 1, 1e-11) << x;
    EXPECT_EQ(selu::Dawson(-x), -selu::Dawson(x));
  }
  EXPECT_NEAR(selu::Dawson(2000) * 4000, 1, 1e-6);
  // Critical values of the limit distribution, as in every table of the test.
  for (auto const& [value, probability] :
       {std::pair{0.82757, 0.5}, {1.22385, 0.1}, {1.35810, 0.05}, {1.62762, 0.01}})
    EXPECT_NEAR(selu::KolmogorovProbability(value / 1e6, 1e12), probability, 1e-5);
}

TEST_F(SeluSample, PicturesAreDrawnForEveryDistribution) {
  for (auto const& list : {c_scalars, c_discrete, c_rotations, c_single})
    for (auto const& distribution : list) {
      auto const make = [&](std::string const& file) {
        return Output(Command(distribution, {"-n", "1000", "--seed", "2", "--picture", file}));
      };
      EXPECT_EQ(make("a.png"), "");
      EXPECT_EQ(Read("a.png").substr(0, 8), "\x89PNG\r\n\x1a\n") << distribution[0];
      EXPECT_EQ(make("a.svg"), "");
      EXPECT_NE(Read("a.svg").find("</svg>"), std::string::npos) << distribution[0];
    }
  // One sample and extreme parameters draw, too.
  for (auto const& distribution :
       {Arguments{"lognormal", "sigma=40"}, Arguments{"normal", "mean=1e300", "sigma=1e-300"},
        Arguments{"poisson", "lambda=1e-300"}, Arguments{"poisson", "lambda=2e9"},
        Arguments{"gamma", "shape=1e-3"}, Arguments{"vmf", "kappa=1e-300"},
        Arguments{"vmf", "kappa=1e300"}, Arguments{"watson", "kappa=1e300"},
        Arguments{"watson", "kappa=-1e300"}, Arguments{"girdle", "beta=1e150"},
        Arguments{"girdle", "beta=1e-300"}, Arguments{"pressed", "factor=1e300"},
        Arguments{"uniform", "start=1e308", "end=1e308"},
        Arguments{"uniform", "start=1", "end=1.0000000000000002"}}) {
    auto const result =
        Selu(Command(distribution, {"-n", "1", "--seed", "2", "--check", "--picture", "a.png"}));
    EXPECT_EQ(result.code, 0) << distribution[0] << distribution[1] << result.error;
  }
}

TEST_F(SeluSample, HelpNamesEveryDistribution) {
  auto const help = Output({"sample", "--help"});
  for (auto const& list : {c_scalars, c_discrete, c_rotations, c_single})
    for (auto const& distribution : list)
      EXPECT_NE(help.find("  " + distribution[0] + " "), std::string::npos) << distribution[0];
  EXPECT_NE(help.find("mixture"), std::string::npos);
}

} // namespace
