#include "support/store_disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <random>

#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "store_thing.h"

namespace orsanta {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr const wchar_t* Name = L"全局电机参数";
constexpr const char* File = "全局电机参数";

// Counts the flushes and lets one step fail.
class C_Failing_Disk : public C_Disk {
 public:
  enum class C_Step { None, Lock, Read, Write, Rename, Flush_Folder };
  C_Step failing = C_Step::None;
  int error = 0;
  int writes = 0;

  int Lock_Folder(int& folder) override { return Fails(C_Step::Lock) ? error : C_Disk::Lock_Folder(folder); }
  int Flush_Folder(int folder) override { return Fails(C_Step::Flush_Folder) ? error : C_Disk::Flush_Folder(folder); }
  int Read(const std::string& name, std::string& bytes) override {
    return Fails(C_Step::Read) ? error : C_Disk::Read(name, bytes);
  }
  int Write(const std::string& name, const std::string& bytes) override {
    ++writes;
    if (!Fails(C_Step::Write)) return C_Disk::Write(name, bytes);
    C_Disk::Write(name, bytes.substr(0, bytes.size() / 2));
    return error;
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Fails(C_Step::Rename) ? error : C_Disk::Rename(from, to);
  }

 private:
  bool Fails(C_Step step) const { return failing == step; }
};

class Store_Disk : public ::testing::Test {
 protected:
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;

  // A save that must fail with this reason and leave the folder as it is.
  void Expect_Refused(const char* reason) {
    const std::string before = Text_Of_File(File);
    front->Clear_Record();
    C_Thing changed;
    changed.force = 999.0;
    EXPECT_EQ(changed.SaveAllClassParameterToHashOpt(Name, 1), 0);
    ASSERT_EQ(front->Boxes().size(), 1U);
    const std::string box = To_Utf8(front->Boxes()[0]);
    EXPECT_THAT(box, HasSubstr((folder.Path() / File).string()));
    EXPECT_THAT(box, HasSubstr(reason));
    EXPECT_EQ(Text_Of_File(File), before);
    EXPECT_FALSE(fs::exists(std::string(File) + ".new"));
  }

  // Runs what changes the whole process in a child; false when a check in it failed.
  static bool Run_In_Child(const std::function<void()>& function) {
    const pid_t child = fork();
    if (child == 0) {
      EXPECT_NO_THROW(function());
      _exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
};

TEST_F(Store_Disk, Keeps_The_Old_Store_Whatever_Step_Fails) {
  C_Thing old;
  ASSERT_EQ(old.SaveAllClassParameterToHashOpt(Name, 1), 1);
  auto owned = std::make_unique<C_Failing_Disk>();
  C_Failing_Disk& disk = *owned;
  const auto before = Replace_Disk(std::move(owned));
  using C_Step = C_Failing_Disk::C_Step;
  const auto refused = [&](C_Step step, int error, const char* reason) {
    disk.failing = step;
    disk.error = error;
    Expect_Refused(reason);
  };
  refused(C_Step::Write, ENOSPC, "磁盘已满");
  refused(C_Step::Write, EIO, "磁盘读写错误");
  refused(C_Step::Rename, EROFS, "只读");
  refused(C_Step::Lock, EACCES, "没有权限");
  refused(C_Step::Read, EACCES, "没有权限");  // what cannot be read is not overwritten

  // A store that can neither be parsed nor moved aside stays.
  Write_File(File, "broken");
  refused(C_Step::Rename, EROFS, "第1行");
  C_Thing thing;
  EXPECT_EQ(thing.LoadAllClassParameterFromHashOpt(Name, 1), 0);
  EXPECT_EQ(Text_Of_File(File), "broken");
  fs::remove(File);

  // The new store stands, but may not outlive a power cut.
  front->Clear_Record();
  disk.failing = C_Step::Flush_Folder;
  disk.error = EIO;
  EXPECT_EQ(thing.SaveAllClassParameterToHashOpt(Name, 1), 0);
  EXPECT_EQ(front->Count_Boxes(L"断电时可能丢失"), 1);

  disk.failing = C_Step::None;
  disk.writes = 0;
  EXPECT_EQ(thing.SaveAllClassParameterToHashOpt(Name, 1), 1);
  EXPECT_EQ(disk.writes, 1) << "one flush a save";
  Replace_Disk(nullptr);
}

TEST_F(Store_Disk, Says_What_Stands_In_The_Way_On_A_Real_Disk) {
  C_Thing thing;
  fs::create_directory(File);
  EXPECT_EQ(thing.LoadAllClassParameterFromHashOpt(Name, 1), 0);
  EXPECT_EQ(front->Count_Boxes(L"文件夹"), 1);
  Expect_Refused("文件夹");
  EXPECT_TRUE(fs::is_directory(File));
  fs::remove(File);

  ASSERT_EQ(thing.SaveAllClassParameterToHashOpt(Name, 1), 1);
  EXPECT_TRUE(Run_In_Child([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit no_more{64, 64};
    setrlimit(RLIMIT_FSIZE, &no_more);
    Expect_Refused("文件过大");
  }));
  fs::permissions(folder.Path(), static_cast<fs::perms>(0555));
  fs::permissions(File, static_cast<fs::perms>(0444));
  EXPECT_TRUE(Run_In_Child([&] {
    constexpr uid_t Nobody = 65534;
    // Rights do not bind the superuser.
    ASSERT_TRUE(geteuid() != 0 || setuid(Nobody) == 0);
    Expect_Refused("没有权限");
  }));
  fs::permissions(folder.Path(), fs::perms::owner_all);
}

// The numbers of the saves that a child has begun and ended, in memory that outlives it.
struct C_Progress {
  std::atomic<int> begun;
  std::atomic<int> ended;
};

void Save_Until_Killed(C_Progress& progress) {
  C_Thing thing;
  for (int i = progress.ended + 1;; ++i) {
    thing.count = i;
    thing.first.SetArraySize(i % 40);
    for (double& value : thing.first) value = i;
    progress.begun = i;
    thing.SaveAllClassParameterToHashOpt(Name, 1);
    progress.ended = i;
  }
}

TEST_F(Store_Disk, Holds_One_Of_The_Two_Last_States_After_Every_Kill) {
  constexpr int Kills = 500;
  std::uniform_int_distribution<unsigned> life_us(0, 4000);
  void* shared = mmap(nullptr, sizeof(C_Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(shared, MAP_FAILED);
  auto& progress = *new (shared) C_Progress{};
  std::mt19937 random(5);
  int killed_inside = 0;
  for (int kill_count = 0; kill_count < Kills; ++kill_count) {
    const pid_t child = fork();
    if (child == 0) Save_Until_Killed(progress);
    usleep(life_us(random));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (progress.begun != progress.ended) ++killed_inside;
    if (!fs::exists(File)) {
      ASSERT_EQ(progress.ended, 0);
      continue;
    }
    C_Thing read;
    ASSERT_EQ(read.LoadAllClassParameterFromHashOpt(Name, 1), 1);
    ASSERT_TRUE(front->Shown().empty());
    ASSERT_GE(read.count, progress.ended);
    ASSERT_LE(read.count, progress.begun);
    ASSERT_EQ(read.first.GetSize(), read.count % 40);
    for (const double value : read.first) ASSERT_EQ(value, read.count);
    progress.ended = read.count;
  }
  EXPECT_GT(killed_inside, Kills / 10) << "the kills hardly ever hit a save";
  munmap(shared, sizeof(C_Progress));
}

}  // namespace
}  // namespace orsanta
