#include "study_plan.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <sstream>

#include "study/csv.h"

namespace app {

namespace {

using study::C_Text;
using study::Short;

constexpr double Um = 0.001;              // in mm
constexpr double Parts_Spread_Um = 20.0;  // over all parts of a crossed study without a tolerance

class C_Errors {
 public:
  explicit C_Errors(uint64_t seed) : m_Random(seed) {}
  double Of(double deviation_um) { return deviation_um > 0.0 ? deviation_um * Um * m_Normal(m_Random) : 0.0; }
  template <class T>
  void Shuffle(std::vector<T>& list) {
    std::shuffle(list.begin(), list.end(), m_Random);
  }

 private:
  std::mt19937_64 m_Random;
  std::normal_distribution<double> m_Normal{0.0, 1.0};
};

// The parts of the simulator lie evenly over the tolerance field around the first reference.
double Part_Mm(const C_Study_Options& options, int part) {
  const double spread = (options.tolerance_um > 0.0 ? options.tolerance_um : Parts_Spread_Um) * Um;
  return options.references_mm.front() + spread * (static_cast<double>(part) / std::max(1, options.parts - 1) - 0.5);
}

// A to Z, then AA, AB, ...
std::string Appraiser_Name(int number) {
  constexpr int Letters = 26;
  std::string name(1, static_cast<char>('A' + number % Letters));
  if (number >= Letters) name.insert(name.begin(), static_cast<char>('A' + number / Letters - 1));
  return name;
}

std::vector<C_Step> Crossed_Plan(const C_Study_Options& options) {
  C_Errors errors(options.seed);
  std::vector<double> appraiser_errors(static_cast<size_t>(options.appraisers));
  for (double& error : appraiser_errors) error = errors.Of(options.appraiser_um);
  std::vector<C_Step> steps;
  for (int trial = 1; trial <= options.trials; ++trial) {
    for (int j = 0; j < options.appraisers; ++j) {
      std::vector<int> order(static_cast<size_t>(options.parts));
      std::iota(order.begin(), order.end(), 0);
      errors.Shuffle(order);
      for (const int part : order) {
        C_Step step;
        const std::string name = std::to_string(part + 1), appraiser = Appraiser_Name(j), count = std::to_string(trial);
        step.fields = {name, appraiser, count};
        step.task = {"第 " + count + " 次，评价人 " + appraiser + "：零件 " + name,
                     "trial " + count + ", appraiser " + appraiser + ": part " + name};
        step.part = name;
        step.placed_mm =
            Part_Mm(options, part) + appraiser_errors[static_cast<size_t>(j)] + errors.Of(options.placement_um);
        step.force_g = options.force_g;
        steps.push_back(step);
      }
    }
  }
  return steps;
}

// Each round measures every reference once.
std::vector<C_Step> Reference_Plan(const C_Study_Options& options) {
  C_Errors errors(options.seed);
  std::vector<C_Step> steps;
  for (int repeat = 1; repeat <= options.repeats; ++repeat) {
    std::vector<double> order = options.references_mm;
    errors.Shuffle(order);
    for (const double reference : order) {
      C_Step step;
      const std::string name = Short(reference, 9), count = std::to_string(repeat);
      step.fields = {name, count};
      step.task = {"第 " + count + " 次：参考件 " + name + " mm", "repeat " + count + ": reference of " + name + " mm"};
      step.part = name;
      step.placed_mm = reference + errors.Of(options.placement_um);
      step.force_g = options.force_g;
      steps.push_back(step);
    }
  }
  return steps;
}

std::vector<C_Step> Force_Plan(const C_Study_Options& options) {
  std::vector<C_Step> steps;
  for (const double height : options.heights_mm) {
    for (const double force : options.forces_g) {
      C_Step step;
      const std::string name = Short(height, 9), set = Short(force, 9);
      step.fields = {name, set};
      step.task = {"高度 " + name + " mm，推力 " + set + " g：放好测力计",
                   "height " + name + " mm, " + set + " g: force gauge"};
      step.part = name;
      step.placed_mm = height;
      step.force_g = force;
      steps.push_back(step);
    }
  }
  return steps;
}

}  // namespace

std::string Data_Head(const C_Study_Options& options) {
  if (options.study == "grr") return "part,appraiser,trial,value";
  return options.study == "force" ? "height,set,true" : "reference,repeat,value";
}

std::vector<C_Step> Make_Plan(const C_Study_Options& options) {
  if (options.study == "grr") return Crossed_Plan(options);
  return options.study == "force" ? Force_Plan(options) : Reference_Plan(options);
}

std::vector<C_Step> Steps_Left(std::vector<C_Step> steps, const std::string& data) {
  std::set<std::string> there;
  std::istringstream lines(data);
  for (std::string line; std::getline(lines, line);) there.insert(line.substr(0, line.rfind(',')));
  std::erase_if(steps, [&there](const C_Step& step) { return there.count(study::Csv_Line(step.fields)) > 0; });
  return steps;
}

}  // namespace app
