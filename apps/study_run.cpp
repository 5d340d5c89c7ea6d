#include "study_run.h"

#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "commands.h"
#include "simulator_loaded.h"
#include "software.h"
#include "study/csv.h"
#include "study/refused.h"
#include "study/reports.h"
#include "study_folder.h"
#include "study_gauge.h"
#include "study_person.h"
#include "study_plan.h"

namespace app {
namespace {

using study::C_Text;
using study::Same;
using study::Short;

// A fault of the command line that shows only when the study begins.
class C_Wrong_Use : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[40];
  std::tm local = {};
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", localtime_r(&now, &local));
  return text;
}

std::string Read_File(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw C_Wrong_Use("cannot read the file \"" + path + "\"");
  return text.str();
}

// --- Measuring ---

// Numbers of a value are kept to the nanometre; those of a force as the gauge shows them.
std::string Value_Text(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.6f", value);
  return text;
}

void Show_Progress(size_t done, size_t all) {
  if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "\r%zu / %zu%s", done, all, done == all ? "\n" : "");
}

// Measures what is left. False when it was ended early.
bool Measure_Steps(const C_Study_Job& job, C_Study_Options& options, const std::vector<C_Step>& left, size_t all,
                   const C_Study_Folder& folder) {
  C_Study_Gauge gauge(options, job.language);
  if (Interrupted() || !gauge.Correct_Reference()) return false;
  options.speed_mm_s = gauge.Speed();
  folder.Write("plan.json", nlohmann::json(options).dump(2) + "\n");
  size_t done = all - left.size();
  for (const C_Step& step : left) {
    const std::string progress = "[" + std::to_string(done + 1) + "/" + std::to_string(all) + "]";
    const std::optional<double> value = gauge.Take(step, progress);
    if (!value) return false;
    folder.Add_Line(study::Csv_Line(step.fields) + "," + Value_Text(*value));
    ++done;
    if (options.on_simulator) Show_Progress(done, all);
  }
  return true;
}

// The values of a study that measures: begins it, or takes it up again. Nothing when it was ended early.
std::optional<std::string> Measured_Data(const C_Study_Job& job, C_Study_Options& options,
                                         const C_Study_Folder& folder) {
  if (!job.resume) {
    if (folder.Holds("data.csv")) {
      throw C_Wrong_Use(
          "\"" + job.out +
          "\" holds measured values already; take that study up again with --resume, or give another --out");
    }
    options.on_simulator = On_Simulator();
    options.started = Now();
    folder.Write("plan.json", nlohmann::json(options).dump(2) + "\n");
  } else if (options.on_simulator != On_Simulator()) {
    throw C_Wrong_Use("\"" + job.out + "\" was begun " + (options.on_simulator ? "on the simulator" : "on a machine") +
                      "; take it up with the same client library");
  }
  const std::string before = folder.Take_Up_Data();
  if (before.empty()) folder.Add_Line(Data_Head(options));
  const std::vector<C_Step> steps = Make_Plan(options), left = Steps_Left(steps, before);
  if (!options.on_simulator && !job.folder.empty()) std::filesystem::current_path(job.folder);
  Catch_Interrupts();
  if (!left.empty() && !Measure_Steps(job, options, left, steps.size(), folder)) {
    const size_t kept = steps.size() - Steps_Left(steps, folder.Read("data.csv")).size();
    std::fprintf(
        stderr,
        "orsanta: the study was ended early; %zu of %zu values are kept. Take it up again with: orsanta study %s "
        "--out \"%s\" --resume\n",
        kept, steps.size(), options.study.c_str(), job.out.c_str());
    return std::nullopt;
  }
  return folder.Read("data.csv");
}

// The values of a file, kept beside what comes out.
std::string File_Data(const C_Study_Job& job, const C_Study_Folder& folder) {
  std::string text = Read_File(job.options.data);
  if (folder.Holds("data.csv") && folder.Read("data.csv") != text) {
    throw C_Wrong_Use("\"" + job.out + "\" holds other values already; give another --out");
  }
  return text;
}

// --- Working out ---

study::C_Report Type1(const C_Study_Options& options, const std::string& data) {
  std::optional<double> reference;
  if (!options.references_mm.empty()) reference = options.references_mm.front();
  const std::vector<study::C_Reference_Values> references = study::Read_References(data, reference);
  if (references.size() > 1) {
    throw study::C_Refused("a type 1 study has one reference, there are " + std::to_string(references.size()) +
                           "; give the values of one, or make a linearity study");
  }
  const study::C_Type1_Settings settings = {references.front().reference_mm, options.Tolerance_Mm(),
                                            options.Resolution_Mm(), options.Confidence()};
  const std::vector<double>& values = references.front().values_mm;
  return study::Report_Type1(values, settings, study::Work_Out_Type1(values, settings));
}

study::C_Report Grr(const C_Study_Options& options, const std::string& data) {
  const study::C_Crossed crossed = study::Cross(study::Read_Crossed(data));
  const study::C_Anova_Settings settings = {options.alpha, options.Confidence()};
  const study::C_Anova anova = study::Work_Out_Anova(crossed, settings);
  return study::Report_Crossed(crossed, settings, options.Tolerance_Mm(), anova,
                               study::Work_Out_Average_Range(crossed));
}

study::C_Report Linearity(const C_Study_Options& options, const std::string& data) {
  const std::vector<study::C_Reference_Values> references = study::Read_References(data);
  return study::Report_Linearity(references, options.Confidence(), options.Tolerance_Mm(),
                                 study::Work_Out_Linearity(references, options.Confidence()));
}

study::C_Report Uncertainty(const C_Study_Options& options, const std::string& data) {
  study::C_Uncertainty_Settings settings;
  settings.tolerance_mm = options.Tolerance_Mm();
  settings.resolution_mm = options.Resolution_Mm();
  settings.reference_uncertainty_mm = options.reference_uncertainty_um / 1000.0;
  settings.temperature_range_k = options.temperature_range_k;
  settings.expansion_per_k = options.expansion_ppm * 1e-6;
  std::optional<study::C_Anova> grr;
  if (!options.grr.empty()) {
    const study::C_Anova_Settings anova = {options.alpha, options.Confidence()};
    grr = study::Work_Out_Anova(study::Cross(study::Read_Crossed(Read_File(options.grr))), anova);
  }
  return study::Report_Uncertainty(settings, study::Work_Out_Uncertainty(study::Read_References(data), grr, settings));
}

study::C_Report Force(const C_Study_Options& /*options*/, const std::string& data) {
  const std::vector<study::C_Force_Reading> readings = study::Read_Forces(data);
  return study::Report_Force(readings, study::Work_Out_Force(readings));
}

study::C_Report Work_Out(const C_Study_Options& options, const std::string& data) {
  if (options.study == "type1") return Type1(options, data);
  if (options.study == "grr") return Grr(options, data);
  if (options.study == "linearity") return Linearity(options, data);
  return options.study == "uncertainty" ? Uncertainty(options, data) : Force(options, data);
}

// --- Writing ---

std::vector<std::pair<C_Text, C_Text>> Header(const C_Study_Options& options) {
  std::vector<std::pair<C_Text, C_Text>> rows;
  const auto add = [&rows](const C_Text& name, const std::string& text) { rows.emplace_back(name, Same(text)); };
  if (!options.data.empty()) {
    add({"数据文件", "Data file"}, options.data);
    add({"计算日期", "Worked out on"}, Now());
  } else {
    add({"工位", "Station"}, std::to_string(options.station));
    rows.emplace_back(C_Text{"测量对象", "Measured on"},
                      options.on_simulator ? C_Text{"模拟台架，随机种子 " + std::to_string(options.seed),
                                                    "the simulator, seed " + std::to_string(options.seed)}
                                           : C_Text{"设备", "a machine"});
    add({"开始时间", "Begun on"}, options.started);
    if (options.study != "force") add({"设定推力", "Set force"}, Short(options.force_g) + " g");
    add({"下压速度", "Landing speed"}, options.speed_mm_s > 0.0 ? Short(options.speed_mm_s) + " mm/s" : "–");
    add({"基准量块", "Reference block"}, Short(options.block_mm) + " mm");
    if (options.on_simulator && options.study != "force") {
      add({"放置误差（标准差）", "Placement error (standard deviation)"}, Short(options.placement_um) + " µm");
      add({"评价人误差（标准差）", "Appraiser error (standard deviation)"}, Short(options.appraiser_um) + " µm");
    }
  }
  add({"软件", "Software"}, Software());
  if (options.study != "force") {
    add({"公差（全宽）", "Tolerance (whole width)"},
        options.tolerance_um > 0.0 ? Short(options.tolerance_um) + " µm" : "–");
  }
  return rows;
}

void Write_Out(const C_Study_Job& job, const C_Study_Options& options, const std::string& data, study::C_Report& report,
               const C_Study_Folder& folder) {
  report.header = Header(options);
  if (!folder.Holds("data.csv")) folder.Write("data.csv", data);
  folder.Write("result.json", study::Result(report, nlohmann::json(options)).dump(2) + "\n");
  folder.Write("report.html", study::Html(report, job.language));
  std::printf("%s%s\n", study::Summary(report, job.language).c_str(), folder.Path_Of("report.html").c_str());
}

int Run(const C_Study_Job& job) {
  const C_Study_Folder folder(job.out);
  C_Study_Options options = job.options;
  if (job.resume) {
    options = folder.Read_Plan();
    if (options.study != job.options.study) {
      throw C_Wrong_Use("\"" + job.out + "\" holds a " + options.study + " study; give its name to take it up");
    }
  }
  std::optional<std::string> data;
  if (options.data.empty()) {
    data = Measured_Data(job, options, folder);
    if (!data) return Failed;
  } else {
    data = File_Data(job, folder);
  }
  study::C_Report report = Work_Out(options, *data);
  Write_Out(job, options, *data, report, folder);
  return Done;
}

}  // namespace

int Run_Study(C_Study_Job job) {
  try {
    if (job.out.empty()) job.out = "study-" + job.options.study;
    return Run(job);
  } catch (const C_Wrong_Use& wrong) {
    std::fprintf(stderr, "orsanta: %s\n", wrong.what());
    return Wrong_Argument;
  } catch (const study::C_Refused& refused) {
    const std::string source = job.options.data.empty() ? job.out : job.options.data;
    std::istringstream lines(refused.what());
    for (std::string line; std::getline(lines, line);) {
      std::fprintf(stderr, "orsanta: %s: %s\n", source.c_str(), line.c_str());
    }
    return Failed;
  }
}

}  // namespace app
