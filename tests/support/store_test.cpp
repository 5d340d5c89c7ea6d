// The stores: their text, their faults, the disk under them, and their owners.
#include "support/store/store.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <bit>
#include <clocale>
#include <cstring>
#include <random>

#include "common/arrays.h"
#include "common/failed_check.h"
#include "common/other_process.h"
#include "common/scripted_front.h"
#include "simulated_clock/simulated_clock.h"
#include "support/store/store_claim.h"
#include "support/store/store_disk.h"

namespace orsanta {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// A class with persisted members.
class C_Thing : public CAutoSaveClassData2 {
 public:
  int count = 1;
  double force = 200.0;
  CMyStringW word = L"mocha";
  Shared<float> level{2.0F};
  CMyArray<double> first;
  CMyArray<double> second;
  std::function<void()> on_pass = [] {};  // called at the end of each pass

  int Save() { return SaveAllClassParameterToHashOpt(L"音圈电机3参数", 1); }
  int Own() { return Own_Store(L"音圈电机3参数"); }
  int Load() { return LoadAllClassParameterFromHashOpt(L"音圈电机3参数", 1); }

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override {
    {
      const C_Store_Class entered(*this, data);
      Process_Member("count", count, data);
      Process_Member("force", force, data);
      Process_Member("word", word, data);
      Process_Member("level", level, data);
      Process_Member("Val_Pos_Friction[0].MyArrayP", first, data);
      Process_Member("Val_Pos_Friction[1].MyArrayP", second, data);
    }
    on_pass();
    CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
  }
};

// The folder and the front of a test of the store.
class Store : public ::testing::Test {
 protected:
  static constexpr const char* File = "音圈电机3参数";

  static void Write(const std::string& text) { std::ofstream(File, std::ios::binary | std::ios::trunc) << text; }
  // The one box since the last call.
  std::string Only_Box() {
    const std::vector<std::wstring> boxes = front->Boxes();
    front->Clear_Record();
    return boxes.size() == 1 ? To_Utf8(boxes[0]) : std::to_string(boxes.size()) + " boxes";
  }

  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  const std::string store_name = "参数文件 " + (folder.Path() / File).string();  // as an operator is told it
};

constexpr const char* First = "orsanta store 1\n";

// What was taken, as it stands in a file, and behind it the line and the reason of what was not.
std::string Parsed(const std::string& text) {
  C_Store_Content content;
  std::vector<C_Store_Fault> faults;
  const C_Store_State state = Parse_Store(text, content, faults);
  std::string parsed =
      state == C_Store_State::Broken ? "broken\n" : Format_Store(content).substr(std::string(First).size());
  for (const C_Store_Fault& fault : faults) parsed += std::to_string(fault.line) + " " + To_Utf8(fault.text) + "\n";
  return parsed;
}

TEST_F(Store, Reads_Every_Number_Back_To_The_Same_Bits_In_Every_Locale) {
  C_Thing saved;
  for (const uint64_t bits : {0x0ULL, 0x8000000000000000ULL, 0x1ULL, 0x7FEFFFFFFFFFFFFFULL, 0x7FF0000000000000ULL,
                              0xFFF0000000000000ULL, 0xFFF8000000001234ULL, 0x7FF0000000000001ULL})
    saved.first.Add(std::bit_cast<double>(bits));
  std::mt19937_64 random(11);
  for (int i = 0; i < 2000; ++i) saved.first.Add(std::bit_cast<double>(random()));
  saved.level = std::bit_cast<float>(0x7FC01234U);
  saved.word = std::wstring(L"“摩卡”\t\"\\\r\n\x7F\x01 𝄞 #") + L'\0' + L"end";

  for (const char* locale : {"C", "C.UTF-8", "de_DE", "de_DE.UTF-8", "zh_CN.GB18030"}) {
    std::setlocale(LC_ALL, locale);  // one that is not installed leaves the one before
    ASSERT_EQ(saved.Save(), 1);
    C_Thing read;
    ASSERT_EQ(read.Load(), 1);
    ASSERT_EQ(read.first.GetSize(), 2008);
    EXPECT_EQ(0, std::memcmp(read.first.GetData(), saved.first.GetData(), sizeof(double) * 2008));
    EXPECT_EQ(std::bit_cast<uint32_t>(read.level.Get()), 0x7FC01234U);
    EXPECT_EQ(read.word.Text(), saved.word.Text());
  }
  std::setlocale(LC_ALL, "C");
}

TEST_F(Store, Is_Text_For_Its_Owner_Alone_And_Holds_Arrays_Apart_And_No_Longer_Than_They_Are) {
  C_Thing thing;
  thing.first = Array({1.0, 2.5});
  thing.second = Array({-1.0, -2.5});
  umask(0);
  ASSERT_EQ(thing.Save(), 1);
  EXPECT_EQ(fs::status(File).permissions(), fs::perms(0600));
  chmod(File, 0644);  // as an editor leaves it
  C_Thing read;
  read.Load();
  EXPECT_EQ(fs::status(File).permissions(), fs::perms(0600));
  read.first.SetArraySize(1);
  read.Save();
  EXPECT_EQ(File_Text(File),
            "orsanta store 1\n"
            "C_Thing count 0 = int 1\nC_Thing force 0 = double 200\n"
            "C_Thing word 0 = text \"mocha\"\nC_Thing level 0 = float 2\n"
            "C_Thing Val_Pos_Friction[0].MyArrayP 0 = array CMyArray<double> 1\n"
            "C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 0 = double 1\n"
            "C_Thing Val_Pos_Friction[1].MyArrayP 0 = array CMyArray<double> 2\n"
            "C_Thing/CMyArray Val_Pos_Friction[1].MyArrayP 0 = double -1\n"
            "C_Thing/CMyArray Val_Pos_Friction[1].MyArrayP 1 = double -2.5\n"
            "end\n");
  EXPECT_NE(Area_ID("costarring"), Area_ID("liquid")) << "they have the same 32-bit hash";
}

TEST_F(Store, Leaves_What_Is_Absent_And_Keeps_What_Is_Unknown) {
  C_Thing thing;
  thing.first = Array({3.0});
  thing.second = Array({1.0});
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_EQ(thing.force, 200.0);

  // As an editor of another system may leave it: byte order mark, line ends, blanks, a comment.
  Write(
      "\xEF\xBB\xBForsanta store 1\r\n# Müller 2024\r\n\r\n"
      "   C_Thing\tforce 0  =  double 150.5 \r\nC_Thing word 0 = text \"\\x01\\x7f\"\r\n"
      "\"C_Other Class\" \"a b\" 7 = raw 00FF\r\n\"end\" \"#\" 0 = int 1\r\n"
      "C_Thing Val_Pos_Friction[1].MyArrayP 0 = array CMyArray<double> 0\r\n  end");
  EXPECT_EQ(thing.Load(), 1);
  EXPECT_EQ(thing.force, 150.5);
  EXPECT_THAT(Values(thing.first), ElementsAre(3.0));
  EXPECT_EQ(thing.second.GetSize(), 0) << "an empty array in the store empties the member";

  EXPECT_EQ(thing.Save(), 1);
  EXPECT_THAT(File_Text(File),
              AllOf(HasSubstr("# Müller 2024\n"), HasSubstr("word 0 = text \"\\x01\\x7f\"\n"),
                    HasSubstr("\"C_Other Class\" \"a b\" 7 = raw 00ff\n\"end\" \"#\" 0 = int 1\nend\n")));
  EXPECT_TRUE(front->Shown().empty());
}

TEST_F(Store, Stays_In_Its_Place_With_A_Copy_Of_Each_State_That_Was_Not_Taken_Whole) {
  // The lines, the count that is read, what is told, and the end of the copy's name.
  const std::tuple<std::string, int, std::string, std::string> stores[] = {
      {"C_Thing count 0 = int 5\nC_Thing force 0 = double 15O\nend\n", 5,
       "第3行 不是有效的数值\n有误的各项使用默认值,其余照常。", ".bad"},
      {"C_Thing count 0 = int 7\n", 1, "第2行 文件不完整,缺少最后一行 end\n本次使用默认值。", ".1.bad"},
      {"C_Thing count 0 = int 6\nC_Thing force 0 = float 3\nC_Thing word 0 = int 1\n"
       "C_Thing Val_Pos_Friction[0].MyArrayP 0 = array CMyArray<double> 2\n"
       "C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 0 = double 8\n"
       "C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 1 = int 9\nend\n",
       6,
       "第3行 C_Thing force 0 应为 double\n第4行 C_Thing word 0 应为 text\n"
       "第7行 C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 1 应为 double\n有误的各项使用默认值,其余照常。",
       ".2.bad"}};
  for (const auto& [lines, count, told, copy] : stores) {
    const std::string text = First + lines;
    Write(text);
    for (int start = 0; start < 2; ++start) {  // the first one is killed before it saves; its copy serves the second
      C_Thing thing;
      thing.first = Array({4.0});
      EXPECT_EQ(thing.Load(), count == 1 ? 0 : 1);
      EXPECT_EQ(thing.count, count);
      EXPECT_EQ(thing.force, 200.0);
      EXPECT_EQ(thing.word.Text(), L"mocha");
      EXPECT_THAT(Values(thing.first), ElementsAre(4.0)) << "no array of half its values";
      EXPECT_EQ(Only_Box(), store_name + " 有误:\n" + told + "\n原文件的副本是 " + File + copy +
                                "。要恢复,请先退出程序,把副本修正后改回原名,再启动。");
      EXPECT_EQ(File_Text(File), text);
      EXPECT_EQ(File_Text(File + copy), text);
      EXPECT_EQ(start == 0 ? 1 : thing.Save(), 1);
    }
    EXPECT_THAT(File_Text(File), HasSubstr("count 0 = int " + std::to_string(count) + "\n"));
    EXPECT_TRUE(front->Shown().empty()) << "what the load has told";
  }
  EXPECT_EQ(fs::status("音圈电机3参数.bad").permissions(), fs::perms(0600));

  for (const int faults : {10, 11}) {
    std::string lines;
    for (int i = 0; i < faults; ++i) lines += "C_Thing count 0 = int x\n";
    Write("orsanta store 1\n" + lines + "end\n");
    EXPECT_EQ(C_Thing().Save(), 1);
    EXPECT_THAT(Only_Box(),
                HasSubstr(std::string("\n第11行 不是有效的数值\n") + (faults > 10 ? "…… 共11处\n" : "") + "原"));
  }
}

TEST_F(Store, An_Array_Of_Another_Layout_Is_A_Fault_Of_The_Program) {
  for (const char* value : {"array CMyArray<int> 0", "double 1", "text \"123456789012\""}) {
    Write(std::string("orsanta store 1\nC_Thing Val_Pos_Friction[0].MyArrayP 0 = ") + value + "\nend\n");
    EXPECT_NE(0, Failed_Check_Line([] { C_Thing().Load(); })) << value;
    EXPECT_THAT(
        CVCDumpMessage::m_cErrorMsg(),
        HasSubstr("参数文件 音圈电机3参数 第2行 C_Thing Val_Pos_Friction[0].MyArrayP 0 应为 array CMyArray<double>"));
  }
}

TEST(Store_File, A_Line_That_Cannot_Be_Read_Costs_Its_Own_Entry_Alone) {
  std::istringstream bad_lines(  // each with what is told of it
      "A k 0 = int 2147483648 -> 数值超出范围\nA k 0 = double 1e999 -> 数值超出范围\n"
      "A k 0 = double nan:0 -> nan: 后面的位不是非数\nA k 0 = number 1 -> 未知的类型 number\n"
      "A k 0 int 1 -> 缺少等号\nA k -1 = int 1 -> 序号不能为负\nA k 0 = int 1 2 -> 行尾有多余的内容\nA -> 行不完整\n"
      "A k 0 = text mocha -> 文字必须写在双引号内\nA k 0 = text \"mocha -> 缺少结束的双引号\n"
      "A k 0 = text \"mocha\"2 -> 双引号后面缺少空格\nA k 0 = text \"\\q\" -> 未知的转义字符\n"
      "A k 0 = text \"\\x82\" -> \\x 只用于 00 到 7f\nA k 0 = text \"\xC4\xE3\" -> 不是UTF-8文字,请用UTF-8编码保存\n"
      "# \xC4\xE3 -> 不是UTF-8文字,请用UTF-8编码保存\nA p 0 = array T -1 -> 元素个数不能为负\n"
      "\"A\\x00\" k 0 = int 1 -> 名称中有零字节\nA k 0 = raw 123 -> 十六进制数字的个数是奇数\n"
      "A k 0 = raw 1g -> 不是十六进制数字\n");
  for (std::string bad; std::getline(bad_lines, bad);) {
    const size_t arrow = bad.find(" -> ");
    EXPECT_EQ(Parsed(std::string(First) + "A a 0 = int 1\n" + bad.substr(0, arrow) + "\nA z 0 = int 2\nend\n"),
              "A a 0 = int 1\nA z 0 = int 2\nend\n3 " + bad.substr(arrow + 4) + "\n");
  }
}

TEST(Store_File, Takes_Nothing_In_Halves) {
  const std::pair<const char*, const char*> stores[] = {
      // Which of two entries was meant is not for the program to say.
      {"A k 0 = int 1\nB k 0 = int 1\nA k 0 = int 2\nA k 0 = int 3\nend\nA l 0 = int 1\n",
       "B k 0 = int 1\nend\n4 与第2行重复,两行都没有采用\n5 与第2行重复,两行都没有采用\n7 end 之后还有内容\n"},
      // An array with a bad element goes whole, and an array of arrays with it; its neighbours stay.
      {"A p 0 = array L 2\nA/CMyArray p 0 = array T 1\nA/CMyArray p 1 = array T 1\nA/CMyArray/CMyArray p 0 = int x\n"
       "A q 0 = array T 2\nA/CMyArray q 0 = int 1\nA/CMyArray q 1 = int 2\nend\n",
       "A q 0 = array T 2\nA/CMyArray q 0 = int 1\nA/CMyArray q 1 = int 2\nend\n2 数组应有2个元素,缺少序号0\n"
       "3 数组应有1个元素,缺少序号0\n5 不是有效的数值\n"},
      {"A p 0 = array T 2\nA/CMyArray p 0 = int 1\nend\n", "end\n2 数组应有2个元素,缺少序号1\n"},
      // A file that was cut off may have been cut off inside a number.
      {"A k 0 = int 1\nen", "broken\n3 行不完整\n3 文件不完整,缺少最后一行 end\n"},
  };
  for (const auto& [lines, parsed] : stores) EXPECT_EQ(Parsed(std::string(First) + lines), parsed);
  for (const char* text : {"", "\n\n"}) EXPECT_TRUE(Parsed(text).ends_with("文件是空的\n")) << text;
  for (const char* text : {"\norsanta store 2\nend\n", "\n\x7F\x45LF"})
    EXPECT_EQ(Parsed(text), "broken\n2 第一行应为 orsanta store 1\n");
}

// Writes down each step, and lets one fail.
class C_Failing_Disk : public C_Disk {
 public:
  std::string journal;
  std::string failing;  // a step as the journal names it
  int error = 0;

  bool Fails(const std::string& step) {
    journal += step + "\n";
    return step == failing;
  }
  int Lock_Folder(int& folder) override { return Fails("lock") ? error : C_Disk::Lock_Folder(folder); }
  void Unlock_Folder(int folder) override {
    Fails("unlock");
    C_Disk::Unlock_Folder(folder);
  }
  int Read(const std::string& name, std::string& bytes) override {
    return Fails("read " + name) ? error : C_Disk::Read(name, bytes);
  }
  int Write(const std::string& name, const std::string& bytes) override {
    const int done = C_Disk::Write(name, bytes);
    return Fails("write " + name) ? error : done;  // what was written stands
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Fails("rename " + from + " " + to) ? error : C_Disk::Rename(from, to);
  }
  int Remove(const std::string& name) override { return Fails("remove " + name) ? error : C_Disk::Remove(name); }
};

class Store_Disk : public Store {
 protected:
  Store_Disk() { Replace_Disk(std::unique_ptr<C_Disk>(disk)); }
  ~Store_Disk() override { Replace_Disk(nullptr); }

  void Let_Fail(const std::string& step, int error) {
    disk->failing = step;
    disk->error = error;
  }
  // A save that must fail with this reason and leave the folder as it is.
  void Expect_Refused(const std::string& reason) {
    const std::string before = File_Text(File);
    C_Thing changed;
    changed.force = 999.0;
    EXPECT_EQ(changed.Save(), 0);
    EXPECT_THAT(Only_Box(), AllOf(HasSubstr("无法保存" + store_name + ": " + reason),
                                  HasSubstr("\n原有的参数文件保持不变。\n排除原因后请重新保存。")));
    EXPECT_EQ(File_Text(File), before);
    EXPECT_FALSE(fs::is_regular_file(New));
  }

  static constexpr const char* New = "音圈电机3参数.new";
  static constexpr const char* Bad = "音圈电机3参数.bad";
  C_Failing_Disk* const disk = new C_Failing_Disk;
};

// At every instant one whole store stands under the name; and no save looks at the members before another one's end.
TEST_F(Store_Disk, Writes_A_New_File_And_Puts_It_In_The_Place_Of_The_Old_While_It_Holds_The_Folder) {
  ASSERT_EQ(C_Thing().Save(), 1);
  disk->journal.clear();
  C_Thing thing;
  thing.on_pass = [&] { disk->journal += "pass\n"; };
  thing.Load();
  thing.Save();
  EXPECT_EQ(disk->journal,
            "read 音圈电机3参数\npass\n"
            "lock\nread 音圈电机3参数\npass\nremove 音圈电机3参数.new\nwrite 音圈电机3参数.new\n"
            "rename 音圈电机3参数.new 音圈电机3参数\nunlock\n");
}

TEST_F(Store_Disk, Keeps_The_Old_Store_Whatever_Step_Fails) {
  ASSERT_EQ(C_Thing().Save(), 1);
  for (const char* step : {"lock", "read 音圈电机3参数", "write 音圈电机3参数.new",
                           "rename 音圈电机3参数.new 音圈电机3参数"}) {  // what cannot be read is not overwritten
    Let_Fail(step, EROFS);
    Expect_Refused("磁盘或文件夹是只读的 (Read-only file system)");
  }
  const std::pair<int, const char*> reasons[] = {
      {ENOSPC, "磁盘已满"},         {EDQUOT, "磁盘已满"},     {EACCES, "没有权限"},
      {EPERM, "没有权限"},          {ENOENT, "文件夹不存在"}, {EIO, "磁盘读写错误 (Input/output error)"},
      {9999, "磁盘读写错误 (9999)"}};
  for (const auto& [error, reason] : reasons) {
    disk->error = error;
    Expect_Refused(reason);
  }
  // A store with values that are not in use stays until a copy of it stands.
  for (const char* text : {"broken", "orsanta store 1\nC_Thing count 0 = text \"x\"\nend\n"}) {
    Write(text);
    Let_Fail("write 音圈电机3参数.bad", ENOSPC);
    C_Thing thing;
    thing.Load();
    EXPECT_THAT(Only_Box(), HasSubstr("无法写入副本 音圈电机3参数.bad: 磁盘已满"));
    EXPECT_EQ(thing.Save(), 0);
    EXPECT_THAT(Only_Box(), AllOf(HasSubstr("无法写入副本"), HasSubstr("\n无法保存")));
    EXPECT_EQ(File_Text(File), text);
    EXPECT_FALSE(fs::exists(Bad)) << "half a copy";
    Let_Fail("", 0);
    EXPECT_EQ(thing.Save(), 1);
    EXPECT_THAT(Only_Box(), HasSubstr("原文件的副本是 音圈电机3参数.bad。"));
    EXPECT_EQ(File_Text(Bad), text);
    fs::remove(Bad);
  }
  // So does one that could not be read.
  const std::string before = File_Text(File);
  C_Thing thing;
  Let_Fail("read 音圈电机3参数", EMFILE);
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_THAT(Only_Box(), AllOf(HasSubstr("无法读取"), HasSubstr("\n本次使用默认值。")));
  Let_Fail("", 0);
  for (thing.force = 151.0; thing.force < 153.0; ++thing.force) EXPECT_EQ(thing.Save(), 1);
  EXPECT_THAT(Only_Box(), AllOf(HasSubstr("没有全部使用"), HasSubstr("音圈电机3参数.bad")));
  EXPECT_EQ(File_Text(Bad), before);
}

TEST_F(Store_Disk, Writes_Nothing_That_Is_Too_Long_To_Be_Read) {
  Write("orsanta store 1\n#" + std::string(Largest_Store - 22, 'x') + "\nend\n");
  C_Thing thing;
  EXPECT_EQ(thing.Load(), 1);
  EXPECT_EQ(thing.Save(), 0) << "the comment alone leaves no room for the members";
  EXPECT_THAT(Only_Box(), HasSubstr("文件过大,超过64 MiB"));
  EXPECT_EQ(fs::file_size(File), Largest_Store);
  fs::resize_file(File, Largest_Store + 1);
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("文件过大,超过64 MiB"));
}

TEST_F(Store_Disk, Says_What_Stands_In_The_Way_On_A_Real_Disk) {
  fs::create_directory(File);
  Expect_Refused("该名称下是一个文件夹");
  fs::remove(File);
  ASSERT_EQ(mkfifo(File, 0600), 0);
  EXPECT_EQ(C_Thing().Save(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("不是普通文件"));
  fs::remove(File);
  ASSERT_EQ(C_Thing().Save(), 1);
  fs::create_directory(New);
  Expect_Refused("同名的 .new 文件夹占用了名称");
  fs::remove(New);
  std::ofstream(New) << "what a killed program has left";
  ASSERT_EQ(C_Thing().Save(), 1);
  const auto with_fewer_rights = [this] {
    const rlimit no_more{64, 64};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &no_more), 0);
    Expect_Refused("文件过大");
    fs::permissions(folder.Path(), static_cast<fs::perms>(0555));
    fs::permissions(File, static_cast<fs::perms>(0444));
    EXPECT_TRUE(geteuid() != 0 || setuid(65534) == 0);  // as nobody: rights do not bind the superuser
    Expect_Refused("没有权限");
    return HasFailure() ? 1 : 0;
  };
  EXPECT_EQ(Exit_Status_Of(with_fewer_rights), 0);
  fs::permissions(folder.Path(), fs::perms::owner_all);

  // Another program that does not give the folder back holds up no load.
  const C_Simulated_Clock clock(1);
  int held = -1;
  ASSERT_EQ(C_Disk().Lock_Folder(held), 0);
  EXPECT_EQ(C_Thing().Load(), 1);
  EXPECT_EQ(Now_Ms(), 0.0);
  Expect_Refused("文件夹被另一个程序占用");
  EXPECT_EQ(Now_Ms(), 5000.0);
  C_Disk().Unlock_Folder(held);
  EXPECT_EQ(C_Thing().Save(), 1);
}

using Store_Claim = Store;

TEST_F(Store_Claim, Is_Refused_Until_The_Owner_Has_Ended) {
  C_Other_Process other([] { (new C_Thing)->Own(); });
  auto first = std::make_unique<C_Thing>();
  EXPECT_EQ(first->Own(), 0);
  EXPECT_EQ(Only_Box(), store_name + " 正由进程 " + std::to_string(other.Id()) +
                            " (test_support)使用。本程序照常测量,但在它退出之前不保存这个文件。请只运行一个程序,"
                            "或让各程序使用不同的工位或不同的文件夹。");
  other.Kill();
  EXPECT_EQ(first->Own(), 1);

  // Within a process the store belongs to all, until the last of them is gone; a child that ends what it has inherited
  // gives nothing back.
  auto second = std::make_unique<C_Thing>();
  EXPECT_EQ(second->Own(), 1);
  const auto owner_told_to_another = [] { return C_Store_Claim().Take(File) == getppid() ? 1 : 0; };
  EXPECT_EQ(Exit_Status_Of(owner_told_to_another), 1);
  second.reset();
  EXPECT_EQ(Exit_Status_Of(owner_told_to_another), 1);
  EXPECT_EQ(Exit_Status_Of([&] { return (first.reset(), owner_told_to_another()); }), 1);
  first.reset();
  EXPECT_TRUE(fs::create_directory("音圈电机3参数.lock")) << "a file is left";
  EXPECT_EQ(C_Store_Claim().Take(File), 0) << "nobody can tell";
}

// The file goes with every claim: one that another process has just opened must not count then.
TEST_F(Store_Claim, Has_One_Owner_Among_Many_That_Come_And_Go) {
  const auto come_and_go = [] {
    for (int split = 0; split < 2; ++split) fork();  // four processes from here on
    for (int taken = 0; taken < 300;) {
      C_Store_Claim claim;
      if (claim.Take(File) != 0) continue;
      ++taken;
      const int mark = open("owned", O_CREAT | O_EXCL, 0600);
      usleep(20);
      if (close(mark) != 0 || unlink("owned") != 0) return 1;  // by another owner
    }
    for (int status = 0; wait(&status) > 0;)
      if (status != 0) return 1;
    return 0;
  };
  EXPECT_EQ(Exit_Status_Of(come_and_go), 0) << "two owners at once";
  EXPECT_FALSE(fs::exists("音圈电机3参数.lock"));
}

}  // namespace
}  // namespace orsanta
