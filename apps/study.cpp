// orsanta study: measurement-system studies, from the gauge itself or from values measured earlier.
#include <algorithm>
#include <memory>
#include <set>

#include "commands.h"
#include "study/linearity.h"
#include "study/type1.h"
#include "study_run.h"

namespace app {
namespace {

constexpr double Thickest_Mm = 8.5;  // that fits under the probe

// What one study's command was given, and what it cannot do without.
struct C_Form {
  C_Study_Job job;
  std::string language = "zh";
  bool needs_tolerance = false;
  size_t least_references = 0;  // to measure
};

// Adds options to one study's command.
class C_Study_Command {
 public:
  C_Study_Command(CLI::App& group, const std::string& name, const std::string& help, int& exit_status)
      : m_Command(group.add_subcommand(name, help)), m_Form(std::make_shared<C_Form>()) {
    m_Form->job.options.study = name;
    Add_Text("--data", Options().data, "file of values (CSV); without it the gauge measures");
    Add_Text("--out", m_Form->job.out, "folder for what comes out; study-" + name + " if not given");
    m_Command->add_option("--language", m_Form->language, "of report and questions: zh or en")
        ->check(CLI::IsMember({"zh", "en"}))
        ->capture_default_str();
    Add_Number("--confidence", Options().confidence_percent, 50.0, 99.999, "of the intervals, percent");
    m_Command->add_flag("--resume", m_Form->job.resume, "takes up the study that was begun in --out");
    Add_Whole("--station", Options().station, 1, Max_Stations, "station that measures");
    Add_Number("--block", Options().block_mm, 0.05, Thickest_Mm, "reference block, mm");
    m_Command->add_option("--seed", Options().seed, "of the order, and of the simulator")
        ->check(Whole_Number(0, 1000000000))
        ->capture_default_str();
    Add_Text("--folder", m_Form->job.folder, "on a machine: folder of its stores; the present one if not given");
    m_Command->callback([*this, &exit_status] { exit_status = Run(); });
  }

  C_Study_Options& Options() { return m_Form->job.options; }

  void Add_Text(const std::string& name, std::string& value, const std::string& help) {
    m_Command->add_option(name, value, help);
  }
  void Add_Number(const std::string& name, double& value, double min, double max, const std::string& help) {
    m_Command->add_option(name, value, help)->check(Number(min, max))->capture_default_str();
  }
  void Add_Whole(const std::string& name, int& value, int min, int max, const std::string& help) {
    m_Command->add_option(name, value, help)->check(Whole_Number(min, max))->capture_default_str();
  }
  void Add_List(const std::string& name, std::vector<double>& values, double min, double max, const std::string& help) {
    m_Command->add_option(name, values, help)->delimiter(',')->check(Number(min, max))->capture_default_str();
  }

  // What all studies of thickness have.
  void Add_Thickness(bool needs_tolerance) {
    m_Form->needs_tolerance = needs_tolerance;
    Add_Number("--tolerance", Options().tolerance_um, 0.001, 1e6,
               needs_tolerance ? "whole width of the tolerance, um; needed" : "whole width of the tolerance, um");
    Add_Number("--force", Options().force_g, 1.0, 1000.0, "set force, g");
    Add_Number("--placement-error", Options().placement_um, 0.0, 1000.0,
               "on the simulator: standard deviation of each placing, um");
  }
  // repeats: also the least that are taken.
  void Add_References(size_t least, int repeats) {
    m_Form->least_references = least;
    Options().references_mm = {0.5, 2.0, 4.0, 6.0, 8.0};
    Options().repeats = repeats;
    Add_List("--references", Options().references_mm, 0.05, Thickest_Mm, "reference parts, mm");
    Add_Whole("--repeats", Options().repeats, repeats, 100000, "measurements of each reference");
  }
  void Add_Reference() {
    m_Form->least_references = 1;
    Add_List("--reference", Options().references_mm, 0.05, 1000.0, "size of the reference part, mm; needed to measure");
  }
  void Add_Resolution() {
    Add_Number("--resolution", Options().resolution_um, 0.0, 1000.0, "smallest step of the gauge, um");
  }

 private:
  // An interrupted study goes on as it was begun: it takes nothing but its folder.
  void Check_Resume() const {
    const std::set<std::string> allowed = {"--out", "--language", "--resume", "--folder"};
    for (const CLI::Option* option : m_Command->get_options()) {
      if (option->count() == 0 || allowed.count(option->get_name()) > 0) continue;
      throw CLI::ValidationError("--resume", "goes on as the study was begun; leave out " + option->get_name());
    }
  }
  // What would be missed only after the last part was measured.
  void Check_Needed() const {
    const C_Study_Options& options = m_Form->job.options;
    if (m_Form->needs_tolerance && options.tolerance_um == 0.0) {
      throw CLI::ValidationError("--tolerance", "is needed, in um");
    }
    if (options.data.empty() && options.references_mm.size() < m_Form->least_references) {
      throw CLI::ValidationError(options.study == "type1" ? "--reference" : "--references",
                                 "needs at least " + std::to_string(m_Form->least_references) + " to measure");
    }
    if (options.study == "type1" && options.references_mm.size() > 1) {
      throw CLI::ValidationError("--reference", "takes one size");
    }
  }
  static void Check_Distinct(const char* name, std::vector<double> values) {
    std::sort(values.begin(), values.end());
    if (std::adjacent_find(values.begin(), values.end()) == values.end()) return;
    throw CLI::ValidationError(name, "names one value twice");
  }
  int Run() const {
    if (m_Form->job.resume) {
      Check_Resume();
    } else {
      Check_Needed();
    }
    Check_Distinct("--references", m_Form->job.options.references_mm);
    Check_Distinct("--heights", m_Form->job.options.heights_mm);
    Check_Distinct("--forces", m_Form->job.options.forces_g);
    m_Form->job.language = m_Form->language == "en" ? study::C_Language::English : study::C_Language::Chinese;
    return Run_Study(m_Form->job);
  }

  CLI::App* m_Command;
  std::shared_ptr<C_Form> m_Form;
};

void Add_Type1(CLI::App& group, int& exit_status) {
  C_Study_Command type1(group, "type1",
                        "One reference part, measured again and again: bias, repeatability, Cg and Cgk.\n"
                        "Data: columns reference, value, or value with --reference.\n"
                        "Example: orsanta study type1 --reference 3 --tolerance 20 --out type1",
                        exit_status);
  type1.Add_Thickness(true);
  type1.Add_Resolution();
  type1.Add_Reference();
  type1.Options().repeats = study::Type1_Least_Repeats;
  type1.Add_Whole("--repeats", type1.Options().repeats, study::Type1_Least_Repeats, 100000, "measurements");
}

void Add_Grr(CLI::App& group, int& exit_status) {
  C_Study_Command grr(group, "grr",
                      "Parts x appraisers x trials: repeatability and reproducibility.\n"
                      "Data: columns part, appraiser, trial, value.\n"
                      "Example: orsanta study grr --data values.csv --tolerance 20 --out grr",
                      exit_status);
  grr.Add_Thickness(false);
  grr.Add_Number("--alpha", grr.Options().alpha, 0.0, 1.0, "an interaction with p above it counts as repeatability");
  grr.Add_Whole("--parts", grr.Options().parts, 2, 1000, "parts");
  grr.Add_Whole("--appraisers", grr.Options().appraisers, 1, 100, "appraisers");
  grr.Add_Whole("--trials", grr.Options().trials, 2, 100, "trials of each appraiser on each part");
  grr.Options().references_mm = {3.0};
  grr.Add_List("--nominal", grr.Options().references_mm, 0.1, Thickest_Mm,
               "on the simulator: middle of the parts' sizes, mm");
  grr.Add_Number("--appraiser-error", grr.Options().appraiser_um, 0.0, 1000.0,
                 "on the simulator: standard deviation between appraisers, um");
}

void Add_Linearity(CLI::App& group, int& exit_status) {
  C_Study_Command linearity(group, "linearity",
                            "References over the range: bias by size, regression, %linearity.\n"
                            "Data: columns reference, value.\n"
                            "Example: orsanta study linearity --references 0.5,2,4,6,8 --tolerance 20",
                            exit_status);
  linearity.Add_Thickness(false);
  linearity.Add_References(study::Linearity_Least_References, study::Linearity_Least_Repeats);
}

void Add_Uncertainty(CLI::App& group, int& exit_status) {
  C_Study_Command uncertainty(group, "uncertainty",
                              "Uncertainty budget and capability after ISO 22514-7 and GUM.\n"
                              "Data: columns reference, value; --grr: part, appraiser, trial, value.\n"
                              "Example: orsanta study uncertainty --data references.csv --grr grr.csv --tolerance 20",
                              exit_status);
  C_Study_Options& options = uncertainty.Options();
  uncertainty.Add_Thickness(true);
  uncertainty.Add_Resolution();
  uncertainty.Add_References(1, study::Linearity_Least_Repeats);
  uncertainty.Add_Text("--grr", options.grr, "file of a crossed study's values, for the appraisers' share");
  uncertainty.Add_Number("--alpha", options.alpha, 0.0, 1.0, "of the crossed study, as there");
  uncertainty.Add_Number("--reference-uncertainty", options.reference_uncertainty_um, 0.0, 1000.0,
                         "expanded uncertainty (k = 2) of the references, um");
  uncertainty.Add_Number("--temperature-range", options.temperature_range_k, 0.0, 100.0,
                         "the part stays within +- this of the reference block, K");
  uncertainty.Add_Number("--expansion", options.expansion_ppm, 0.0, 1000.0, "of the part, 1e-6/K");
}

void Add_Force(CLI::App& group, int& exit_status) {
  C_Study_Command force(group, "force",
                        "The true force, from a force gauge, against the set force over heights.\n"
                        "Data: columns height, set, true.\n"
                        "Example: orsanta study force --heights 1,3,6 --forces 50,100,200,400",
                        exit_status);
  force.Options().heights_mm = {1.0, 3.0, 6.0};
  force.Options().forces_g = {50.0, 100.0, 200.0, 300.0, 400.0};
  force.Add_List("--heights", force.Options().heights_mm, 0.05, Thickest_Mm, "heights of the part, mm");
  force.Add_List("--forces", force.Options().forces_g, 1.0, 1000.0, "set forces, g");
}

}  // namespace

void Add_Study(CLI::App& program, int& exit_status) {
  CLI::App* group = program.add_subcommand(
      "study",
      "Measurement-system studies, from the gauge itself or from values measured earlier (--data), with a report that\n"
      "can be signed. docs/studies.md tells which study when.\n"
      "Example: orsanta study grr --parts 10 --appraisers 3 --trials 3 --tolerance 20 --out grr");
  group->require_subcommand(1);
  Add_Type1(*group, exit_status);
  Add_Grr(*group, exit_status);
  Add_Linearity(*group, exit_status);
  Add_Uncertainty(*group, exit_status);
  Add_Force(*group, exit_status);
}

}  // namespace app
