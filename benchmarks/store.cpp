// Saving and loading of a whole station's parameters. The flush to the disk is left out by a disk that only writes;
// with it a save takes what the disk takes.
#include "support/store/store.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/store/store_disk.h"

namespace {

using namespace orsanta;

constexpr const wchar_t* Name = L"音圈电机1参数";

class C_Unflushed_Disk : public C_Disk {
 public:
  int Write(const std::string& name, const std::string& bytes) override {
    std::ofstream(name, std::ios::binary | std::ios::trunc) << bytes;
    return 0;
  }
};

// As many members as a station keeps: 37 numbers and five arrays, one of them a fitted force surface.
class C_Station_Parameters : public CAutoSaveClassData2 {
 public:
  C_Station_Parameters() {
    for (double& number : m_Numbers) number = 1.0 / (1.0 + static_cast<double>(&number - m_Numbers));
    for (int i = 0; i < 5; ++i) m_Surface.Add(m_Numbers[i]);
    for (int i = 0; i < 20; ++i) {
      for (CMyArray<double>& fit : m_Fits) fit.Add(m_Numbers[i]);
    }
  }

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override {
    {
      const C_Store_Class entered(*this, data);
      for (int i = 0; i < 37; ++i)
        Process_Member(("Val_Number[" + std::to_string(i) + "]").c_str(), m_Numbers[i], data);
      Process_Member("m_P", m_Surface, data);
      for (int i = 0; i < 4; ++i) Process_Member(("Val_Fit[" + std::to_string(i) + "]").c_str(), m_Fits[i], data);
    }
    CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
  }

 private:
  double m_Numbers[37];
  CMyArray<double> m_Surface;
  CMyArray<double> m_Fits[4];
};

void Enter_Folder() {
  const auto folder = std::filesystem::temp_directory_path() / "orsanta_benchmark_store";
  std::filesystem::create_directory(folder);
  std::filesystem::current_path(folder);
}

void Save(benchmark::State& state, bool flush) {
  Enter_Folder();
  Replace_Disk(flush ? std::make_unique<C_Disk>() : std::make_unique<C_Unflushed_Disk>());
  C_Station_Parameters station;
  for (auto _ : state) station.SaveAllClassParameterToHashOpt(Name, 1);
  Replace_Disk(nullptr);
}

void Save_Station_Without_Flush(benchmark::State& state) {
  Save(state, false);
}
BENCHMARK(Save_Station_Without_Flush)->Unit(benchmark::kMicrosecond);

void Save_Station_With_Flush(benchmark::State& state) {
  Save(state, true);
}
BENCHMARK(Save_Station_With_Flush)->Unit(benchmark::kMicrosecond);

void Load_Station(benchmark::State& state) {
  Enter_Folder();
  C_Station_Parameters station;
  station.SaveAllClassParameterToHashOpt(Name, 1);
  for (auto _ : state) station.LoadAllClassParameterFromHashOpt(Name, 1);
}
BENCHMARK(Load_Station)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
