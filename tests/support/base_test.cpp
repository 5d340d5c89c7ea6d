// Arrays, the hash, smart pointers, and the report and the dump of real processes that end by a failed check.
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <array>
#include <chrono>
#include <set>

#include "common/arrays.h"
#include "common/failed_check.h"
#include "simulated_clock/simulated_clock.h"
#include "support/base/hash.h"
#include "support/base/smart_pointer.h"
#include "support/base/symbolizer.h"
#include "support/threads/thread.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

using testing::ContainsRegex;
using testing::ElementsAre;

TEST(Array, Grows_By_Doubling_And_Fills_Only_The_Places_Beyond_The_Old_Block) {
  CMyArray<double> array;
  for (const int size : {1, 2, 4, 4, 8}) {
    array.Add(7);
    EXPECT_EQ(array.GetAllocatedSize(), size);
  }
  array.SetArraySize(8);
  for (int i = 5; i < 8; ++i) array[i] = 3;
  array.SetArraySize(2);
  array.SetArraySize(10, 1);
  EXPECT_THAT(Values(array), ElementsAre(7, 7, 7, 7, 7, 3, 3, 3, 1, 1));
  array.SetArraySize(0);
  array.SetArraySize(2, 9);
  array.ReallocateMem(16);
  EXPECT_EQ(array.GetSize(), 16);
  EXPECT_EQ(*(array + 1), 7) << "the block was large enough, twice";
  array.ReallocateMem(17);
  EXPECT_EQ(array.GetAllocatedSize(), 17);
  array.Clear();
  EXPECT_TRUE(array.GetSize() == 0 && array.GetAllocatedSize() == 0 && array.GetData() == nullptr);
}

TEST(Array, Removes_Ranges_And_Lists_And_Cuts_Sub_Arrays_In_Place_Too) {
  CMyArray<double> range = Array({0, 1, 2, 3, 4, 5, 6});
  range.RemoveData(1, 2);
  range.DelStartData();
  range.DelEndData();
  EXPECT_THAT(Values(range), ElementsAre(3, 4, 5));
  // Every set of places of an array of six, against a plain filter.
  for (unsigned set = 0; set < 64; ++set) {
    CMyArray<double> array = Array({0, 1, 2, 3, 4, 5});
    std::vector<int> places, left;
    for (int i = 0; i < 6; ++i) (set >> i & 1 ? places : left).push_back(i);
    array.RemoveData(places.data(), static_cast<int>(places.size()));
    EXPECT_THAT(Values(array), testing::ElementsAreArray(left)) << "set " << set;
  }
  range.GetSubArray(1, 2, range);
  EXPECT_THAT(Values(range), ElementsAre(4, 5));
  range.GetSubArray(2, 0, range);
  EXPECT_EQ(range.GetSize(), 0);
}

TEST(Array, Each_Broken_Check_Reports_Its_Own_Line) {
  const C_Temp_Folder folder;
  CMyArray<double> array = Array({0, 1, 2}), empty, out;
  std::set<int> lines{0};  // of no check
  const auto breaks = [&lines](auto action) { EXPECT_TRUE(lines.insert(Failed_Check_Line(action)).second); };
  for (const int outside : {3, -1}) {
    breaks([&] { array[outside] = 0; });
    breaks([&] { static_cast<void>(std::as_const(array)[outside]); });
  }
  breaks([&] { empty.GetEndData(); });
  breaks([&] { empty.DelEndData(); });
  breaks([&] { array.SetArraySize(-1); });
  breaks([&] { array.SetArraySize(-1, 0); });
  // Ranges, by their start and count.
  for (const auto& range : {std::array{-1, 1}, {2, -1}, {2, 2}}) breaks([&] { array.RemoveData(range[0], range[1]); });
  for (const auto& range : {std::array{-1, 1}, {4, -1}, {3, -1}, {2, 2}})
    breaks([&] { array.GetSubArray(range[0], range[1], out); });
  // Places that repeat, fall, or lie outside, and sums that do not fit the 32 bits of a count.
  for (const std::vector<int>& places : {std::vector{1, 1}, {2, 0}, {0, 3}, {-2, 0}, {3}, {0, 1, 2, 3}})
    EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(places.data(), static_cast<int>(places.size())); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(2147483647, 2147483647); }), 0);
  EXPECT_THAT(Values(array), ElementsAre(0, 1, 2));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
  CMyArray<std::array<char, 1 << 20>> large;
  EXPECT_GT(Failed_Check_Line([&] { large.ReallocateMem(2147483647); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { large.ExpandMem(2147483647); }), 0);
  EXPECT_TRUE(CVCDumpMessage::m_cErrorMsg().starts_with(
      "CMyArray<T>::ExpandMem错误: T* pNewData = new T[nNewSize]; nNewSize = 2147483647\n"));
#endif
}

TEST(Hash, Builds_Keys_Commits_Values_And_Reads_Them_Back) {
  const C_Temp_Folder folder;
  CHashOpt hash;
  const auto found = [&hash](const char* name) {
    int value = 0;
    (hash << 5).ConnectIndexDataOrOutputData(name) > value;
    return value;
  };
  double number = -1.5;
  char text[] = "mocha";
  CHashObject_String key = "Val";
  std::strcpy(key.GetBuffer(20) + 3, "_Pos");  // a text ends at its first zero
  EXPECT_TRUE(key == "Val_Pos" && key == CHashObject_String("Val_Pos"));
  EXPECT_FALSE(key == "Val" || key == CHashObject_String());
  EXPECT_EQ(found(key.GetBuffer(0)), -1);
  hash.StartAddVarToLogInData(77).ConnectIndexDataOrOutputData(text).ConnectIndexDataOrOutputData(number);
  hash++;
  number = text[0] = 0;
  EXPECT_EQ(found("Val_Pos"), 77);
  hash.ConnectIndexDataOrOutputData(text).ConnectIndexDataOrOutputData(number);
  EXPECT_STREQ(text, "mocha");
  EXPECT_EQ(number, -1.5);
  const auto read_on = [&] { hash.ConnectIndexDataOrOutputData(number); };
  EXPECT_NE(0, Failed_Check_Line(read_on)) << "beyond the end of the entry";
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(text); }));
  EXPECT_EQ(found("Val_Po"), -1) << "a key that another one starts with";
  EXPECT_NE(0, Failed_Check_Line(read_on));
  found("Val_Pos");
  hash--;
  EXPECT_NE(0, Failed_Check_Line(read_on));
  EXPECT_EQ(found("Val_Pos"), -1) << "removed";
}

TEST(Hash, Gather_Hands_Out_Each_Number_Once_And_The_Smallest_First) {
  const C_Temp_Folder folder;
  CHashGather gather;
  for (unsigned id = 0; id < 5; ++id) EXPECT_EQ(gather.GetUniqueID(), id);
  for (const unsigned id : {3U, 1U, 4U}) gather.DeleteUniqueID(id);
  for (const unsigned id : {1U, 3U, 4U, 5U}) EXPECT_EQ(gather.GetUniqueID(), id);
  for (const unsigned id : {2U, 1U}) gather.DeleteUniqueID(id);
  for (const unsigned id : {2U, 6U}) EXPECT_NE(0, Failed_Check_Line([&] { gather.DeleteUniqueID(id); }));
  EXPECT_EQ(gather.GetUniqueID(), 1U);
}

struct C_Alive {
  C_Alive() { ++live; }
  ~C_Alive() { --live; }
  static inline int live = 0;
};

TEST(Smart_Pointer, The_Last_Copy_Frees_Objects_And_Arrays_And_Their_Records) {
  CSmartPointer<C_Alive> last(1);
  {
    CMyArray<CSmartPointer<C_Alive>> array;
    for (int i = 0; i < 3; ++i) array.Add(last);
    CMyArray<CSmartPointer<C_Alive>> copy(array);
    copy[0] = CSmartPointer<C_Alive>(3);
    EXPECT_EQ(C_Alive::live, 4);
    EXPECT_EQ(smart_pointer_table::Live_Records(), 2);
    last = array[0];
    last = *&last;
    copy.Clear();  // with the last pointer to three of them
    array.ReallocateMem(100);
    array[99] = last;
  }
  EXPECT_EQ(C_Alive::live, 1);
  for (int i = 0; i < 2; ++i) last.ReleaseCurSmartPointReference();
  EXPECT_EQ(C_Alive::live, 0);
  EXPECT_EQ(smart_pointer_table::Live_Records(), 0);

  // A place that is used again has a new serial.
  int object = 0;
  smart_pointer_table::C_Place places[2];
  for (smart_pointer_table::C_Place& place : places) {
    place = smart_pointer_table::Enter(&object, 1);
    EXPECT_TRUE(smart_pointer_table::Release(place.heap_id, &object));
  }
  EXPECT_EQ(places[1].heap_id, places[0].heap_id);
  EXPECT_EQ(places[1].serial, places[0].serial + 1);
}

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
