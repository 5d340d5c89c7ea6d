// The report and the dump of real processes that end by a failed check.
#include "support/base/assertion.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>

#include "common/failed_check.h"
#include "simulated_clock/simulated_clock.h"
#include "support/base/array.h"
#include "support/base/crash_report.h"
#include "support/base/symbolizer.h"
#include "support/threads/thread.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

using testing::ContainsRegex;

// Leaves a file behind when its frame is left, and one at an orderly exit.
__attribute__((noinline)) void Fail_Here() {
  const std::shared_ptr<void> mark(nullptr, [](void*) { std::ofstream("unwound"); });
  std::atexit([] { std::ofstream("at exit"); });
  CMyArray<int>()[5] = 1;
}

// What it does runs on the way from a failure to the end of the process.
void End_With(void (*work)()) {
  Claim_Process_End();
  work();
  Write_Dump_And_End();
}

class Assertion_DeathTest : public testing::Test {
 protected:
  void SetUp() override { setenv("TMPDIR", other.Path().c_str(), 1); }
  void TearDown() override { unsetenv("TMPDIR"); }
  const C_Temp_Folder other, folder;
};

TEST_F(Assertion_DeathTest, A_Failure_Leaves_One_Whole_Dump_And_No_Frame) {
  EXPECT_EXIT((cMyAssertAppendDispInfo() = "For all reports", C_Thread().Start("failing", &Fail_Here)),
              Ends_By_A_Failed_Check,
              "please send an image(.|\n)*the program ends after a failed check: [A-Z][^\n]*; func: [^\n]*GetAt[^\n]*"
              "; line: [0-9]+; dump: test_support_[0-9]+_[0-9]{8}_[0-9]{6}[.]dmp\n$");
  EXPECT_THAT(
      Take_Dump(),
      ContainsRegex("^\nFor all reports\n[A-Z][a-z][a-z] [ 1-3][0-9] 20[0-9][0-9] [0-9:]*\n"
                    "path: /[^\n]*/test_support\nmodule: test_support\n"
                    "func: [^\n]*CMyArray<[^\n]*>::GetAt[(]int64_t[)] [[][^\n]*T = int[^\n]*\n"
                    "line: [0-9]+\n\n--------------\n\n"
                    "发生异常[(]Debug[)],请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
                    "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to "
                    "developer.\n\nbuild: [^\n]*\n"
                    // The frames of the failure, though they are hidden from the dynamic linker.
                    "\nstack of thread [0-9]+ [(]failing[)]:\n#0 .*::Fail_Here[(][)].*\nmodules:\n.*/libc[.]so"));
  EXPECT_THAT(File_Text("orsanta_trace.log"), ContainsRegex("GetAt.*please send an image"));
  for (const char* trace_of_an_end : {"unwound", "at exit"}) EXPECT_FALSE(std::filesystem::exists(trace_of_an_end));
}

TEST_F(Assertion_DeathTest, The_First_Failure_Stands_And_A_Second_Of_The_Same_Thread_Ends) {
  const auto fail_elsewhere_too = [] {
    CVCDumpMessage::m_cErrorMsg() = "the first failure";
    for (void (*failure)() : {&Fail_Here, +[] { throw 1; }, +[] { raise(SIGSEGV); }, +[] { std::abort(); }})
      std::thread(failure).detach();
    usleep(200000);  // all of them have failed
  };
  EXPECT_EXIT(End_With(fail_elsewhere_too), Ends_By_A_Failed_Check,
              "^orsanta: the program ends after a failed check: the first failure; dump: [^\n]*\n$");
  EXPECT_THAT(Take_Dump(), ContainsRegex("^the first failure\n.*::TestBody[(][)].*\nmodules:\n"));
  EXPECT_EQ(File_Text("orsanta_trace.log"), "");
  for (void (*failure)() : {&Fail_Here, +[] { std::terminate(); }, +[] { raise(SIGSEGV); }})
    EXPECT_EXIT(End_With(failure), Ends_By_A_Failed_Check, "^$");  // at once, without a word
  EXPECT_EQ(Take_Dump(), "");
  const auto throw_unseen = [] { std::thread([] { throw std::runtime_error("why"); }).join(); };
  EXPECT_EXIT((std::set_terminate(&CVCDumpMessage::DumpFileProcess), throw_unseen()), Ends_By_A_Failed_Check,
              "failed check: uncaught exception St13runtime_error: why; ");
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
  const auto find_the_lock_taken = [] {
    CVCDumpMessage::m_hErrorMsg().Lock();
    std::thread(&Fail_Here).detach();
  };
  EXPECT_EXIT((find_the_lock_taken(), hang_within_the_limit()), Ends_By_A_Failed_Check, "");
  EXPECT_EXIT(End_With(hang_within_the_limit), Ends_By_A_Failed_Check, "");
}

TEST_F(Assertion_DeathTest, What_Can_Be_Written_Is_Written_And_What_Cannot_Holds_Nothing_Up) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const auto fail_with_room_for = [&ends](rlim_t bytes) {
    dup2(ends[1], STDERR_FILENO);  // the files are limited, the error stream is not
    const rlimit room{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &room);
    Fail_Here();
  };
  for (const rlim_t bytes : {100, 0}) {
    EXPECT_EXIT(fail_with_room_for(bytes), Ends_By_A_Failed_Check, "");
    std::string told(65536, '\0');
    told.resize(static_cast<size_t>(read(ends[0], told.data(), told.size())));
    EXPECT_THAT(told,
                ContainsRegex("\nstack of thread [0-9]+ (.*\n)*#[0-9]+ .*Fail_Here(.*\n)*.*"
                              "dump: test_support_[0-9_]*[.]dmp " +
                              std::string(bytes == 0 ? "cannot be written" : "is cut short") + ": File too large\n$"));
    EXPECT_EQ(Take_Dump().size(), bytes);
    EXPECT_TRUE(std::filesystem::is_empty(other.Path()));
  }
  // Nobody reads the error stream, which is full.
  const std::string all(static_cast<size_t>(fcntl(ends[1], F_GETPIPE_SZ)), 'x');
  ASSERT_EQ(write(ends[1], all.data(), all.size()), all.size());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EXIT(fail_with_room_for(RLIM_INFINITY), Ends_By_A_Failed_Check, "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30)) << "cut off";
  Take_Dump();

  const auto find_the_name_taken = [] {
    const C_Simulated_Clock clock(1);
    std::filesystem::create_symlink("not ours", "test_support_" + std::to_string(getpid()) + "_20200101_000000.dmp");
    Fail_Here();
  };
  EXPECT_EXIT(find_the_name_taken(), Ends_By_A_Failed_Check,
              "dump: " + other.Path().string() + "/test_support_[0-9_]*[.]dmp\n$");
  EXPECT_THAT(Take_Dump(other.Path()), ContainsRegex("libc[.]so"));
}

TEST(Stack, Names_Function_Distance_And_Module) {
  const auto text_inside = [](auto function, int distance) {
    char line[400];
    Frame_Text(reinterpret_cast<const char*>(function) + distance, line, sizeof(line));
    return std::string(line);
  };
  EXPECT_THAT(text_inside(&Fail_Here, 1), testing::EndsWith("::Fail_Here() + 0x1 in test_support"));
  EXPECT_THAT(text_inside(dlsym(RTLD_DEFAULT, "insque"), 5), testing::EndsWith(" insque + 0x5 in libc.so.6"));
  EXPECT_EQ(text_inside(reinterpret_cast<const void*>(16), 0), "0x10 in no module");
}

}  // namespace
}  // namespace orsanta
