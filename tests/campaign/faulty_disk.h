// A disk that fails when it is told to, and that loses at a power cut what was not flushed.
#pragma once

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/store/store_disk.h"
#include "support/time/clock.h"

namespace orsanta::campaign {

enum class Disk_Fault { None, Full, Read_Only, Write_Fails, Flush_Fails, Rename_Fails, Slow, Count };

class C_Faulty_Disk : public C_Disk {
 public:
  // The name of a file that was renamed reaches the disk within this time.
  static constexpr double Longest_Unflushed_Ms = 5000.0;

  void Set_Fault(Disk_Fault fault) { m_Fault = fault; }
  // end: called in the middle of the step with that number from now, when part of its work is done. It does not return.
  void End_In_Step(int step, std::function<void()> end) {
    m_Steps_Left = step;
    m_End = std::move(end);
  }
  // Takes back the renames since a time: what stood under the names before stands there again.
  void Cut_Power(double since_ms) {
    for (auto done = m_Renames.rbegin(); done != m_Renames.rend() && done->at_ms >= since_ms; ++done) {
      C_Disk::Remove(done->name);
      if (done->before) C_Disk::Write(done->name, *done->before);
    }
  }

  int Write(const std::string& name, const std::string& bytes) override {
    if (m_Fault == Disk_Fault::Slow) Sleep(300);
    if (m_Fault == Disk_Fault::Read_Only) return EROFS;
    const bool is_last = Is_Last_Step();
    const bool is_torn =
        m_Fault == Disk_Fault::Full || m_Fault == Disk_Fault::Write_Fails || m_Fault == Disk_Fault::Flush_Fails;
    const int error = C_Disk::Write(name, is_last || is_torn ? bytes.substr(0, bytes.size() / 2) : bytes);
    if (is_last) m_End();
    if (error != 0 || !is_torn) return error;
    return m_Fault == Disk_Fault::Full ? ENOSPC : EIO;
  }
  int Rename(const std::string& from, const std::string& to) override {
    if (m_Fault == Disk_Fault::Read_Only) return EROFS;
    if (m_Fault == Disk_Fault::Rename_Fails) return EIO;
    if (Is_Last_Step()) m_End();
    std::string before;
    const bool stood = C_Disk::Read(to, before) == 0;
    std::erase_if(m_Renames, [](const C_Done& done) { return done.at_ms < Now_Ms() - Longest_Unflushed_Ms; });
    m_Renames.push_back({Now_Ms(), to, stood ? std::optional(before) : std::nullopt});
    return C_Disk::Rename(from, to);
  }
  int Remove(const std::string& name) override {
    if (m_Fault == Disk_Fault::Read_Only) return EROFS;
    if (Is_Last_Step()) m_End();
    return C_Disk::Remove(name);
  }

 private:
  struct C_Done {
    double at_ms;
    std::string name;
    std::optional<std::string> before;
  };
  bool Is_Last_Step() { return m_Steps_Left > 0 && --m_Steps_Left == 0; }

  Disk_Fault m_Fault = Disk_Fault::None;
  int m_Steps_Left = 0;  // 0: no end is planned
  std::function<void()> m_End;
  std::vector<C_Done> m_Renames;
};

}  // namespace orsanta::campaign
