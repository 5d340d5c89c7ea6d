#include "support/dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <map>
#include <sstream>

#include "common/scripted_front.h"
#include "support/console_front.h"
#include "support/dialog_entry.h"

namespace orsanta {
namespace {

using ::testing::ElementsAre;

// Callbacks as functions, by id; displays show a number that rises.
class C_Callbacks : public CParameterInOutDlgInterface {
 public:
  void OnCtrlButton(int id, long /*word1*/, long /*word2*/) override {
    EXPECT_EQ(std::this_thread::get_id(), owner);
    presses.push_back(id);
    if (on_press.count(id) != 0) on_press[id]();
  }
  void OnCtrlDynamicDisp(int /*id*/, std::wstring& text, long /*word*/) override {
    EXPECT_EQ(std::this_thread::get_id(), owner);
    if (++refreshes % 2 == 0) text = std::to_wstring(refreshes);  // every other time it leaves the text alone
  }
  std::thread::id owner = std::this_thread::get_id();
  std::vector<int> presses;
  std::map<int, std::function<void()>> on_press;
  int refreshes = 0;
};

int Show(CParameterInOutDlg& dialog, int confirms) {
  return dialog.DoParameterDlg(1, 0, 1.0F, confirms, nullptr, nullptr, 1);
}

// One of every control that is bound to a variable.
struct C_Every_Edit {
  std::wstring text = L"新密码";
  int plain = 7;
  int ticked = 0;
  Shared<int> shared_ticked{1};
  double number = 1.0 / 3.0;
  Shared<double> shared_number{2.5};
  int limited = 5;
  Shared<int> shared_limited{6};
  int place = 9;  // outside the list

  bool operator==(const C_Every_Edit&) const = default;
  int Run() {
    CParameterInOutDlg dialog;
    CSmartPointer<CMyArray<std::wstring>, 0> items(1);
    items->Add(L"无串口");
    items->Add(L"COM1");
    dialog.AddDataEdit(L"新密码", 0, 10.0F, text, 1, 0, nullptr);
    dialog.AddDataEdit(L"整数", 0, 10.0F, plain, 1, 0, nullptr);
    dialog.AddDataEditBool(L"勾选", 0, 10.0F, ticked, 1, 0, nullptr);
    dialog.AddDataEditBool(L"勾选2", 0, 10.0F, shared_ticked, 1, 0, nullptr);
    dialog.AddDataEditRange(L"数值", 0, 10.0F, number, 0.0, 10.0, 3, 1, 0, nullptr);
    dialog.AddDataEditRange(L"数值2", 0, 10.0F, shared_number, -1.0, 1000.0, 3, 1, 0, nullptr);
    dialog.AddDataEditRange(L"范围", 0, 10.0F, limited, 4.0, 10.0, 1, 0, nullptr);
    dialog.AddDataEditRange(L"范围2", 0, 10.0F, shared_limited, 4.0, 10.0, 1, 0, nullptr);
    dialog.AddDropdownList(L"串口号", 0, 10.0F, items, place, 1, 0, nullptr);
    return Show(dialog, 1);
  }
};

TEST(Dialog, Writes_At_Confirmation_And_Only_Then_And_Keeps_What_Nobody_Touched) {
  C_Simulated_Clock clock(1);
  C_Scripted_Front_Holder front;
  const auto changes = [] {
    return C_Script()
        .Fill(L"新密码", L"摩卡")
        .Fill(L"整数", L" -12 ")
        .Select(L"勾选", 1)
        .Select(L"勾选2", 0)
        .Fill(L"数值", L"0.1")
        .Fill(L"数值2", L"１０．５")
        .Fill(L"范围", L"10")
        .Fill(L"范围2", L"+4")
        .Select(L"串口号", 1);
  };
  C_Every_Edit edits;
  front->Next_Dialog(changes().Cancel());
  EXPECT_EQ(edits.Run(), 0);
  EXPECT_EQ(edits, C_Every_Edit());
  EXPECT_EQ(front->Shown()[0].dialog.controls[4].text, L"0.333");

  const auto host_writes = [&edits] {
    edits.shared_number = 100.0;
    edits.shared_limited = 9;
  };
  front->Next_Dialog(C_Script().Run(host_writes).Confirm());
  EXPECT_EQ(edits.Run(), 1);
  C_Every_Edit untouched;  // as shown, numbers to the bit
  untouched.place = 0;     // a place outside the list shows as the first
  EXPECT_EQ(edits, untouched);

  front->Next_Dialog(changes().Confirm());
  EXPECT_EQ(edits.Run(), 1);
  EXPECT_EQ(edits, (C_Every_Edit{L"摩卡", -12, 1, 0, 0.1, 10.5, 10, 4, 1}));
}

TEST(Dialog, Refuses_Bad_Entries_And_Then_Changes_Nothing) {
  C_Simulated_Clock clock(1);
  C_Scripted_Front_Holder front;
  C_Every_Edit edits;
  const std::array<const wchar_t*, 3> bad_entries[] = {
      {L"数值", L"10.001", L"0 到 10"},        {L"数值2", L"-1.5", L"-1 到 1000"}, {L"数值", L"nan", L"0 到 10"},
      {L"数值", L"1,5", L"请输入数字"},        {L"范围", L"11", L"4 到 10"},       {L"范围2", L"5.5", L"请输入整数"},
      {L"整数", L"99999999999", L"请输入整数"}};
  for (const auto& [caption, text, reason] : bad_entries) {
    front->Clear_Record();
    front->Next_Dialog(C_Script().Fill(L"新密码", L"不应写入").Fill(caption, text).Confirm());
    EXPECT_EQ(edits.Run(), 0);
    EXPECT_EQ(edits, C_Every_Edit()) << "an entry was written beside a refused one";
    EXPECT_THAT(front->Refusals(), ElementsAre(testing::HasSubstr(reason)));
  }

  for (const int nowhere : {-1, 2}) {
    front->Next_Dialog(C_Script().Select(L"串口号", nowhere).Confirm());
    EXPECT_EQ(edits.Run(), 0);
    EXPECT_EQ(front->Refusals().back(), L"串口号: 请选择一项");
  }

  // Several are told at once, a value that was out of range before among them; the dialog stays open until all are
  // mended.
  front->Clear_Record();
  edits.number = 11.0;
  front->Next_Dialog(
      C_Script().Fill(L"整数", L"").Confirm().Fill(L"整数", L"8").Confirm().Fill(L"数值", L"10").Confirm());
  EXPECT_EQ(edits.Run(), 1);
  const wchar_t* number = L"数值: 请输入 0 到 10 之间的数值";
  EXPECT_THAT(front->Refusals(), ElementsAre(number, L"整数: 请输入整数", number));
  EXPECT_EQ(edits.number, 10.0);
  EXPECT_EQ(edits.plain, 8);
}

TEST(Dialog, Shows_And_Reads_Numbers_In_One_Way_Everywhere) {
  EXPECT_EQ(Number_Text(-0.0005, 3), L"-0.001");
  EXPECT_EQ(Number_Text(std::numeric_limits<double>::max(), 16).size(), 309U + 1U + 16U);
  double value = 3.0;
  EXPECT_TRUE(Read_Typed(L"　－１．５ ", value));
  EXPECT_EQ(value, -1.5);
  EXPECT_TRUE(Read_Typed(L"\t−２e1\t", value));
  EXPECT_EQ(value, -20.0);
  for (const wchar_t* bad : {L"", L" ", L"inf", L"1e999", L"1 2", L"0x10", L"+-1", L"++1", L"1.5g", L"千"})
    EXPECT_FALSE(Read_Typed(bad, value)) << To_Utf8(bad);
}

// The panel of a station: a display and three buttons.
struct C_Panel : CParameterInOutDlg {
  explicit C_Panel(C_Callbacks& callbacks) {
    SetCaptionName(L"面板");
    AddDataDynamicDisp(L"状态", 0, 10.0F, 2, &callbacks, 100, 50, 1, 1.5F);
    AddButton(L"高级", 0, 10.0F, 1, 1, &callbacks, 1, 1.0F);
    AddButton(L"测量", 0, 10.0F, 1, 2, &callbacks, 1, 0.75F);
    AddBlank(1, 10.0F, 1, 1, 0, nullptr);
    AddButton(L"测量", 1, 10.0F, 1, 3, &callbacks, 1, 1.0F);
    AddButton(L"无", 1, 10.0F, 1, 0, &callbacks, 1, 1.0F);
  }
};

// One line for each control of the model.
std::string Model_Text(const C_Dialog_Model& model) {
  std::ostringstream text;
  text << To_Utf8(model.title) << (model.confirms ? " confirms" : "") << "\n";
  for (const C_Control_Model& c : model.controls) {
    text << static_cast<int>(c.kind) << " " << To_Utf8(c.caption) << " " << c.column << " " << c.width << "x" << c.rows
         << "*" << c.text_scale << " '" << To_Utf8(c.text) << "'";
    if (c.has_range) text << " " << c.min << ".." << c.max << "/" << c.digits;
    if (!c.items.empty() || c.selected != 0) text << " [" << c.items.size() << "]" << c.selected;
    text << "\n";
  }
  return text.str();
}

TEST(Dialog, Tells_The_Front_All_About_Its_Controls) {
  C_Simulated_Clock clock(1);
  C_Scripted_Front_Holder front;
  C_Every_Edit().Run();
  C_Callbacks callbacks;
  C_Panel panel(callbacks);
  std::wstring text = L"请放标准块";
  panel.AddDataDisp(L"提示", 2, 12.0F, text, 1, 3, 0, nullptr);
  Show(panel, 0);
  EXPECT_EQ(Model_Text(front->Shown()[0].dialog),
            " confirms\n"
            "3 新密码 0 10x1*1 '新密码'\n"
            "4 整数 0 10x1*1 '7'\n"
            "6 勾选 0 10x1*1 ''\n"
            "6 勾选2 0 10x1*1 '' [0]1\n"
            "5 数值 0 10x1*1 '0.333' 0..10/3\n"
            "5 数值2 0 10x1*1 '2.500' -1..1000/3\n"
            "4 范围 0 10x1*1 '5' 4..10/0\n"
            "4 范围2 0 10x1*1 '6' 4..10/0\n"
            "7 串口号 0 10x1*1 '' [2]0\n");
  EXPECT_EQ(Model_Text(front->Shown()[2].dialog),
            "面板\n"
            "1 状态 0 10x2*1.5 ''\n"
            "0 高级 0 10x1*1 ''\n"
            "0 测量 0 10x1*0.75 ''\n"
            "8  1 10x1*1 ''\n"
            "0 测量 1 10x1*1 ''\n"
            "0 无 1 10x1*1 ''\n"
            "2 提示 2 12x3*1 '请放标准块'\n");
}

// A front that sends what no control can send, and then closes the dialog.
class C_Unruly_Front : public C_Console_Front {
 public:
  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Sink& sink) override {
    using C_Kind = C_Dialog_Event::Kind;
    for (const int control : {-1, 0, 99}) sink.On_Dialog_Event({C_Kind::Press, control, {}});
    sink.On_Dialog_Event(
        {C_Kind::Confirm, -1, std::vector<C_Control_Entry>(model.confirms ? 1 : model.controls.size())});
    sink.On_Dialog_Event({C_Kind::Cancel, -1, {}});
    return 1;
  }
};

TEST(Dialog, Takes_No_Event_That_Fits_No_Control) {
  auto before = Replace_Front(std::make_unique<C_Unruly_Front>());
  C_Callbacks callbacks;
  C_Panel panel(callbacks);
  EXPECT_EQ(Show(panel, 0), 0);
  EXPECT_TRUE(callbacks.presses.empty());
  EXPECT_EQ(C_Every_Edit().Run(), 0);
  Replace_Front(std::move(before));
}

TEST(Dialog, Serves_Displays_By_Their_Period_And_Presses_In_Between) {
  C_Simulated_Clock clock(1);
  C_Scripted_Front_Holder front;
  C_Callbacks callbacks;
  C_Panel panel(callbacks);
  callbacks.on_press[3] = [&] {
    EXPECT_EQ(panel.SetCtrlWindowText(3, L"停止"), 1);
    EXPECT_EQ(front->Text_Of(L"面板", L"停止"), L"停止") << "the new caption must show from inside the press";
    std::wstring text;
    EXPECT_EQ(panel.GetCtrlWindowText(3, text), 1);
    EXPECT_EQ(text, L"停止");
    for (const int none : {77, 0}) EXPECT_EQ(panel.SetCtrlWindowText(none, L"x"), 0);
    Sleep(1000);  // ten periods go by, and are not made up for
  };
  front->Next_Dialog(C_Script()
                         .Wait(1050)
                         .Run([&] {
                           EXPECT_EQ(callbacks.refreshes, 10);
                           EXPECT_EQ(front->Text_Of(L"面板", L"状态"), L"10");
                         })
                         .Press(L"测量", 1)
                         .Press(L"无")
                         .Wait(460)
                         .Run([&] { EXPECT_LE(callbacks.refreshes, 16); }));
  EXPECT_EQ(Show(panel, 0), 0);
  EXPECT_THAT(callbacks.presses, ElementsAre(3, 0)) << "0 is an id like any other";
}

// The panel's first button runs an inner dialog of one button, with or without a confirmation. The outer one stays
// alive and usable unless the inner one confirms, and takes the inner one along when it closes.
TEST(Dialog, Nests_With_The_Outer_Dialog_Alive_And_Usable_Unless_The_Inner_One_Confirms) {
  C_Simulated_Clock clock(1);
  const struct {
    int confirms;
    bool outer_closes;
    std::vector<int> presses;  // in their order; the inner dialog's end as the negative of its result, less 1
  } cases[] = {{0, false, {1, 12, 2, 12, -1, 3}}, {1, false, {1, 12, 12, -2, 3}}, {0, true, {1, 12, -1}}};
  for (const auto& item : cases) {
    C_Scripted_Front_Holder front;
    C_Callbacks callbacks;
    C_Panel panel(callbacks);
    callbacks.on_press[1] = [&] {
      CParameterInOutDlg advanced;
      advanced.SetCaptionName(L"高级功能");
      advanced.AddButton(L"标定", 0, 20.0F, 1, 12, &callbacks, 1, 1.0F);
      callbacks.presses.push_back(-1 - Show(advanced, item.confirms));
    };
    C_Script inner = C_Script().Press(L"标定").Run([&] {
      if (!item.outer_closes) front->Press(L"面板", L"测量", 0);
      if (item.outer_closes || item.confirms == 1) front->Cancel(L"面板");
    });
    inner.Wait(550).Run([&] { EXPECT_GE(callbacks.refreshes, item.outer_closes ? 0 : 5); }).Press(L"标定");
    if (item.confirms == 1) inner.Confirm();
    front->On_Dialog(L"高级功能", inner);
    front->On_Dialog(L"面板", C_Script().Press(L"高级").Press(L"测量", 1));
    EXPECT_EQ(Show(panel, 0), 0);
    EXPECT_EQ(callbacks.presses, item.presses);
  }
}

// On the real clock the person, the displays and the presses truly run side by side.
TEST(Dialog, Takes_Events_From_Any_Thread_On_The_Real_Clock) {
  C_Scripted_Front_Holder front;
  C_Callbacks callbacks;
  C_Panel panel(callbacks);
  front->Next_Dialog(C_Script().Run([&] {
    for (int i = 0; i < 200; ++i) {
      EXPECT_TRUE(front->Press(L"面板", L"测量"));
      front->Text_Of(L"面板", L"状态");
    }
    Sleep(20);
  }));
  EXPECT_EQ(Show(panel, 0), 0);
  EXPECT_FALSE(callbacks.presses.empty());
}

}  // namespace
}  // namespace orsanta
