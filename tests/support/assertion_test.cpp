// The report and the dump of real processes that end by a failed check.
#include "support/base/assertion.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "common/failed_check.h"
#include "support/base/array.h"
#include "support/base/symbolizer.h"
#include "support/threads/thread.h"
#include "support/time/clock.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

// Leaves a file behind when the frame that holds it is left.
struct C_Mark {
  ~C_Mark() { std::ofstream("unwound"); }
};

__attribute__((noinline)) int Fail_In_The_Middle(const CMyArray<int>& array) {
  const C_Mark mark;
  return array.GetAt(5) + 1;
}

void Fail() {
  std::atexit([] { std::ofstream("at exit"); });
  Fail_In_The_Middle(CMyArray<int>());
}

// Something on the way to the end of the process: what it does runs when the dump asks an uncaught exception for its
// text.
struct C_On_The_Way : std::exception {
  explicit C_On_The_Way(void (*its_work)()) : work(its_work) {}
  const char* what() const noexcept override {
    work();
    return "the first failure";
  }
  void (*work)();
};

void End_With(void (*work)()) {
  std::set_terminate(&CVCDumpMessage::DumpFileProcess);
  std::thread([work] { throw C_On_The_Way(work); }).join();
}

void Fail_Elsewhere_Too() {
  for (void (*failure)() : {&Fail, +[] { throw 1; }, +[] { raise(SIGSEGV); }, +[] { std::abort(); }})
    std::thread(failure).detach();
  usleep(200000);  // all of them have failed
}

class Assertion_DeathTest : public testing::Test {
 protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child keeps the working directory
    setenv("TMPDIR", other.Path().c_str(), 1);
  }
  void TearDown() override { unsetenv("TMPDIR"); }

  const C_Temp_Folder other;  // the folder for temporary files
  const C_Temp_Folder folder;
};

TEST_F(Assertion_DeathTest, A_Failure_Leaves_One_Whole_Dump_And_No_Frame) {
  const auto fail_on_a_thread = [] {
    cMyAssertAppendDispInfo() = "For all reports";
    C_Thread thread;
    thread.Start("failing", &Fail);
    thread.Join();
  };
  EXPECT_EXIT(fail_on_a_thread(), Ends_By_A_Failed_Check,
              "please send an image(.|\n)*the program ends after a failed check: [A-Z][^\n]*; func: [^\n]*GetAt[^\n]*"
              "; line: [0-9]+; dump: test_support_[0-9]+_[0-9]{8}_[0-9]{6}[.]dmp\n$");
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  EXPECT_THAT(
      Take_Dump(),
      AllOf(ContainsRegex("^\nFor all reports\n[A-Z][a-z][a-z] [ 1-3][0-9] 20[0-9][0-9] [0-9:]*\npath: /"),
            HasSubstr("\npath: " + program + "\nmodule: test_support\nfunc: "),
            ContainsRegex("\nfunc: .*CMyArray<.*>::GetAt[(]int64_t[)] const [[].*T = int"),
            HasSubstr("\n\n--------------\n\n发生异常(Debug),请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
                      "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to "
                      "developer.\n\nbuild: "),
            // The frames of the failure, though they are hidden from the dynamic linker.
            ContainsRegex("\nstack of thread [0-9]+ [(]failing[)]:\n#0 .*\n(#.*\n)*#[0-9]+ .*"
                          "Fail_In_The_Middle[(]orsanta::CMyArray<int> const&[)].*\n(#.*\n)*"
                          "\nmodules:\n(.*\n)*.*/libc[.]so")));
  EXPECT_THAT(File_Text("orsanta_trace.log"), AllOf(HasSubstr("GetAt"), HasSubstr("please send an image")));
  for (const char* trace_of_an_end : {"unwound", "at exit"}) EXPECT_FALSE(std::filesystem::exists(trace_of_an_end));
}

TEST_F(Assertion_DeathTest, The_First_Failure_Stands_And_A_Second_Of_The_Same_Thread_Ends) {
  EXPECT_EXIT(End_With(&Fail_Elsewhere_Too), Ends_By_A_Failed_Check, "C_On_The_WayE: the first failure");
  EXPECT_THAT(Take_Dump(), AllOf(HasSubstr("C_On_The_WayE: the first failure\n"), HasSubstr("\nmodules:\n"),
                                 HasSubstr("End_With"), Not(HasSubstr("GetAt"))));
  EXPECT_THAT(File_Text("orsanta_trace.log"), Not(HasSubstr("GetAt")));
  for (void (*failure)() : {&Fail, +[] { std::terminate(); }, +[] { raise(SIGSEGV); }})
    EXPECT_EXIT(End_With(failure), Ends_By_A_Failed_Check, "");
}

TEST_F(Assertion_DeathTest, What_Hangs_On_The_Way_Is_Cut_Off) {
  // Each waits for the limit, and makes it shorter.
  const auto hang_within_the_limit = [] {
    itimerval left{}, soon{{}, {0, 10000}};
    while (left.it_value.tv_sec == 0) getitimer(ITIMER_REAL, &left);
    if (left.it_value.tv_sec != 29) _exit(1);
    setitimer(ITIMER_REAL, &soon, nullptr);
    for (;;) pause();
  };
  const auto find_the_lock_taken = [&] {
    CVCDumpMessage::m_hErrorMsg().Lock();
    std::thread(&Fail).detach();
    hang_within_the_limit();
  };
  EXPECT_EXIT(find_the_lock_taken(), Ends_By_A_Failed_Check, "");
  EXPECT_EXIT(End_With(hang_within_the_limit), Ends_By_A_Failed_Check, "");
}

TEST_F(Assertion_DeathTest, A_Dump_That_Does_Not_Go_In_Whole_Goes_To_The_Other_Folder_Or_Is_Told_To_Be_Cut) {
  const auto in_a_lost_folder = [&] {
    std::filesystem::remove_all(folder.Path());
    Fail();
  };
  const auto on_a_full_disk = [&] {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 || mount("none", ".", "tmpfs", 0, "size=4k") != 0 ||
        chdir(folder.Path().c_str()) != 0) {
      in_a_lost_folder();  // where the system gives no disk
    }
    Fail();
  };
  const auto in_place_of_a_link = [] {
    const C_Simulated_Clock clock(1);
    const std::string name = "test_support_" + std::to_string(getpid()) + "_20200101_000000.dmp";
    std::filesystem::create_symlink("somebody else's", name);
    Fail();
  };
  for (const auto& fail : std::vector<std::function<void()>>{on_a_full_disk, in_place_of_a_link, in_a_lost_folder}) {
    EXPECT_EXIT(fail(), Ends_By_A_Failed_Check, "dump: " + other.Path().string() + "/test_support_[0-9_]*[.]dmp\n$");
    EXPECT_THAT(Take_Dump(other.Path()), HasSubstr("libc.so"));
    EXPECT_FALSE(std::filesystem::exists("somebody else's"));
    std::filesystem::create_directories(folder.Path());
    std::filesystem::current_path(folder.Path());
  }

  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  const auto with_room_for = [&ends](rlim_t bytes) {
    dup2(ends[1], STDERR_FILENO);  // the files are limited, the error stream is not
    const rlimit room{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &room);
    Fail();
  };
  for (const rlim_t bytes : {100, 0}) {
    EXPECT_EXIT(with_room_for(bytes), Ends_By_A_Failed_Check, "");
    std::string told(65536, '\0');
    told.resize(static_cast<size_t>(read(ends[0], told.data(), told.size())));
    EXPECT_THAT(
        told, ContainsRegex(std::string("\nstack of thread [0-9]+ (.*\n)*#[0-9]+ .*Fail_In_The_Middle(.*\n)*.*dump: ") +
                            "test_support_[0-9_]*[.]dmp " + (bytes == 0 ? "cannot be written" : "is cut short") +
                            ": File too large\n$"));
    EXPECT_EQ(Take_Dump().size(), bytes);
    EXPECT_TRUE(std::filesystem::is_empty(other.Path()));
  }
}

TEST_F(Assertion_DeathTest, An_Error_Stream_That_Nobody_Reads_Holds_Nothing_Up) {
  const auto fail_at_a_full_pipe = [] {
    int ends[2];
    if (pipe2(ends, O_NONBLOCK) != 0) _exit(1);
    const std::string some(4096, 'x');
    while (write(ends[1], some.data(), some.size()) > 0) continue;
    fcntl(ends[1], F_SETFL, 0);
    dup2(ends[1], STDERR_FILENO);
    Fail();
  };
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EXIT(fail_at_a_full_pipe(), Ends_By_A_Failed_Check, "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30)) << "cut off";
  EXPECT_THAT(Take_Dump(), HasSubstr("libc.so"));
}

TEST(Stack, Names_Function_Distance_And_Module) {
  const auto text_of = [](const void* address) {
    char line[400];
    Frame_Text(address, line, sizeof(line));
    return std::string(line);
  };
  const auto inside = [](auto function, int distance) { return reinterpret_cast<const char*>(function) + distance; };
  C_Stack here;
  here.Capture();
  EXPECT_THAT(text_of(here.address[0]) + text_of(here.address[1]),  // a sanitizer's frame may stand before it
              HasSubstr("Stack_Names_Function_Distance_And_Module_Test::TestBody() + 0x"));
  EXPECT_THAT(text_of(inside(&Fail_In_The_Middle, 1)),
              testing::EndsWith("Fail_In_The_Middle(orsanta::CMyArray<int> const&) + 0x1 in test_support"));
  EXPECT_THAT(text_of(inside(dlsym(RTLD_DEFAULT, "insque"), 5)), testing::EndsWith(" insque + 0x5 in libc.so.6"));
  EXPECT_EQ(text_of(reinterpret_cast<const void*>(16)), "0x10 in no module");
}

}  // namespace
}  // namespace orsanta
