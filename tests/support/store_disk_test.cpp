#include "support/store_disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <random>

#include "common/other_process.h"
#include "store_thing.h"

namespace orsanta {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;

enum class C_Step { None, Lock, Read, Write, Copy, Rename };

// Lets one step fail.
class C_Failing_Disk : public C_Disk {
 public:
  C_Step failing = C_Step::None;
  int error = 0;

  int Lock_Folder(int& folder) override { return failing == C_Step::Lock ? error : C_Disk::Lock_Folder(folder); }
  int Read(const std::string& name, std::string& bytes) override {
    return failing == C_Step::Read ? error : C_Disk::Read(name, bytes);
  }
  int Write(const std::string& name, const std::string& bytes) override {
    if (failing != C_Step::Write && (failing != C_Step::Copy || !name.ends_with(".bad")))
      return C_Disk::Write(name, bytes);
    C_Disk::Write(name, bytes.substr(0, bytes.size() / 2));
    return error;
  }
  int Rename(const std::string& from, const std::string& to) override {
    return failing == C_Step::Rename ? error : C_Disk::Rename(from, to);
  }
};

class Store_Disk : public C_Store_Test {
 protected:
  Store_Disk() {
    auto owned = std::make_unique<C_Failing_Disk>();
    disk = owned.get();
    Replace_Disk(std::move(owned));
  }
  ~Store_Disk() override { Replace_Disk(nullptr); }

  void Let_Fail(C_Step step, int error = 0) {
    disk->failing = step;
    disk->error = error;
  }

  // A save that must fail with this reason and leave the folder as it is.
  void Expect_Refused(const char* reason) {
    const std::string before = File_Text(File);
    C_Thing changed;
    changed.force = 999.0;
    EXPECT_EQ(changed.Save(), 0);
    EXPECT_THAT(Only_Box(), AllOf(HasSubstr((folder.Path() / File).string()), HasSubstr(reason)));
    EXPECT_EQ(File_Text(File), before);
    EXPECT_FALSE(fs::is_regular_file(std::string(File) + ".new"));
  }

  // Runs what changes the whole process in a child; false when a check in it failed.
  static bool Run_In_Child(const std::function<void()>& function) {
    return Exit_Status_Of([&] {
             EXPECT_NO_THROW(function());
             return ::testing::Test::HasFailure() ? 1 : 0;
           }) == 0;
  }

  C_Failing_Disk* disk;
};

TEST_F(Store_Disk, Keeps_The_Old_Store_Whatever_Step_Fails) {
  ASSERT_EQ(C_Thing().Save(), 1);
  const struct {
    C_Step step;
    int error;
    const char* reason;
  } failures[] = {{C_Step::Write, ENOSPC, "磁盘已满"},
                  {C_Step::Write, EIO, "磁盘读写错误"},
                  {C_Step::Rename, EROFS, "只读"},
                  {C_Step::Lock, EACCES, "没有权限"},
                  {C_Step::Read, EACCES, "没有权限"}};  // what cannot be read is not overwritten
  for (const auto& failure : failures) {
    Let_Fail(failure.step, failure.error);
    Expect_Refused(failure.reason);
  }
  // A store with values that are not in use stays until a copy of it stands.
  for (const char* text : {"broken", "orsanta store 1\nC_Thing count 0 = text \"x\"\nend\n"}) {
    Write(text);
    Let_Fail(C_Step::Copy, ENOSPC);
    C_Thing thing;
    thing.Load();
    EXPECT_THAT(Only_Box(), HasSubstr("无法写入副本 音圈电机3参数.bad: 磁盘已满"));
    EXPECT_EQ(thing.Save(), 0);
    EXPECT_THAT(Only_Box(),
                AllOf(HasSubstr("无法写入副本"), HasSubstr("\n无法保存"), HasSubstr("原有的参数文件保持不变")));
    EXPECT_EQ(File_Text(File), text);
    EXPECT_FALSE(fs::exists("音圈电机3参数.bad")) << "half a copy";
    Let_Fail(C_Step::None);
    EXPECT_EQ(thing.Save(), 1);
    EXPECT_THAT(Only_Box(), HasSubstr("原文件的副本是 音圈电机3参数.bad。"));
    EXPECT_EQ(File_Text("音圈电机3参数.bad"), text);
    fs::remove("音圈电机3参数.bad");
  }
}

TEST_F(Store_Disk, Writes_Nothing_That_Is_Too_Long_To_Be_Read) {
  Write("orsanta store 1\n#" + std::string(Largest_Store - 22, 'x') + "\nend\n");
  ASSERT_EQ(fs::file_size(File), Largest_Store);
  C_Thing thing;
  EXPECT_EQ(thing.Load(), 1);
  EXPECT_EQ(thing.Save(), 0) << "the comment and the members are too much";
  EXPECT_THAT(Only_Box(), HasSubstr("文件过大,超过64 MiB"));
  EXPECT_EQ(fs::file_size(File), Largest_Store);
  fs::resize_file(File, Largest_Store + 1);
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("文件过大,超过64 MiB"));
}

TEST_F(Store_Disk, Never_Replaces_A_Store_That_It_Could_Not_Read) {
  C_Thing thing;
  thing.force = 150.0;
  thing.Save();
  const std::string before = File_Text(File);
  Let_Fail(C_Step::Read, EMFILE);
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("无法读取"));
  Let_Fail(C_Step::None);
  for (thing.force = 151.0; thing.force < 153.0; ++thing.force) EXPECT_EQ(thing.Save(), 1);
  EXPECT_THAT(Only_Box(), AllOf(HasSubstr("没有全部使用"), HasSubstr("音圈电机3参数.bad")));
  EXPECT_EQ(File_Text("音圈电机3参数.bad"), before);
  EXPECT_FALSE(fs::exists("音圈电机3参数.1.bad"));
}

TEST_F(Store_Disk, Says_What_Stands_In_The_Way_On_A_Real_Disk) {
  fs::create_directory(File);
  Expect_Refused("文件夹");
  EXPECT_TRUE(fs::is_directory(File));
  fs::remove(File);
  ASSERT_EQ(mkfifo(File, 0600), 0);
  EXPECT_EQ(C_Thing().Save(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("不是普通文件"));
  fs::remove(File);
  ASSERT_EQ(C_Thing().Save(), 1);
  const std::string fresh = std::string(File) + ".new";
  fs::create_directory(fresh);
  Expect_Refused(".new");
  fs::remove(fresh);
  EXPECT_TRUE(Run_In_Child([&] {
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

  // Another program that does not give the folder back holds up no load.
  int held = -1;
  ASSERT_EQ(C_Disk().Lock_Folder(held), 0);
  {
    C_Simulated_Clock clock(1);
    EXPECT_EQ(C_Thing().Load(), 1);
    EXPECT_EQ(Now_Ms(), 0.0);
    Expect_Refused("另一个程序");
    EXPECT_EQ(Now_Ms(), 5000.0);
  }
  C_Disk().Unlock_Folder(held);
}

// The numbers of the saves that a child has begun and ended, in memory that outlives it.
struct C_Progress {
  std::atomic<int> begun, ended;
};

TEST_F(Store_Disk, Holds_One_Of_The_Two_Last_States_After_Every_Kill) {
  constexpr int Kills = 250;
  std::uniform_int_distribution<unsigned> life_us(0, 4000);
  std::mt19937 random(5);
  void* shared = mmap(nullptr, sizeof(C_Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(shared, MAP_FAILED);
  auto& progress = *new (shared) C_Progress{};
  int killed_inside = 0;
  for (int kill_count = 0; kill_count < Kills; ++kill_count) {
    C_Thing thing;
    const pid_t child = fork();
    int i = progress.ended;
    while (child == 0) {  // until it is killed
      thing.count = ++i;
      thing.first.SetArraySize(i % 40);
      for (double& value : thing.first) value = i;
      progress.begun = i;
      thing.Save();
      progress.ended = i;
    }
    usleep(life_us(random));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (progress.begun != progress.ended) ++killed_inside;
    ASSERT_TRUE(thing.Load() == 1 || (progress.ended == 0 && !fs::exists(File)));
    ASSERT_TRUE(front->Shown().empty());
    if (!fs::exists(File)) continue;
    ASSERT_GE(thing.count, progress.ended);
    ASSERT_LE(thing.count, progress.begun);
    ASSERT_EQ(Values(thing.first), std::vector<double>(static_cast<size_t>(thing.count % 40), thing.count));
    progress.ended = thing.count;
  }
  EXPECT_GT(killed_inside, Kills / 10) << "the kills hardly ever hit a save";
  munmap(shared, sizeof(C_Progress));
}

}  // namespace
}  // namespace orsanta
