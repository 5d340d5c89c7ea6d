// A fit of the force surface beside the same fit with Eigen called directly on a design matrix of the same terms.
#include "numeric/force_surface.h"

#include <benchmark/benchmark.h>

#include <Eigen/QR>
#include <random>

namespace {

struct Samples {
  explicit Samples(int count) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> amperes(0.1, 1.2), millimetres(0.2, 6.0), noise(-0.1, 0.1);
    for (int i = 0; i < count; ++i) {
      const double I = amperes(random), P = millimetres(random);
      current.Add(I);
      position.Add(P);
      force.Add(2 + 310 * I + 1.5 * P - 12 * I * P + 0.8 * I * P * P + noise(random));
    }
  }
  orsanta::CMyArray<double> current, position, force;
};

void Fit(benchmark::State& run) {
  const Samples samples(static_cast<int>(run.range(0)));
  orsanta::CMyArray<double> coefficients;
  for (auto _ : run) {
    orsanta::C_My3DPolyfit().my3dfit(samples.current, samples.position, samples.force, coefficients);
    benchmark::DoNotOptimize(coefficients.GetData());
  }
}

void Fit_With_Eigen(benchmark::State& run) {
  const Samples samples(static_cast<int>(run.range(0)));
  const auto column = [](const orsanta::CMyArray<double>& values) {
    return Eigen::Map<const Eigen::ArrayXd>(values.GetData(), values.GetSize());
  };
  for (auto _ : run) {
    const auto I = column(samples.current), P = column(samples.position), F = column(samples.force);
    Eigen::MatrixXd terms(I.size(), 5);
    terms << Eigen::ArrayXd::Ones(I.size()), I, P, I * P, I * (P * P);
    const Eigen::VectorXd p = terms.colPivHouseholderQr().solve(F.matrix());
    double max_err = (terms * p - F.matrix()).maxCoeff();
    benchmark::DoNotOptimize(p.data());
    benchmark::DoNotOptimize(max_err);
  }
}

BENCHMARK(Fit)->Name("my3dfit")->ArgName("triples")->Arg(20)->Arg(60);
BENCHMARK(Fit_With_Eigen)->Name("Eigen called directly")->ArgName("triples")->Arg(20)->Arg(60);

}  // namespace

BENCHMARK_MAIN();
