// The settings that the system needs before anything else exists.
#include "ui/init_dialog.h"

#include <array>

#include "ui/operator.h"

namespace orsanta {
namespace {

using ::testing::ElementsAre;

constexpr const char* Store = "全局电机参数";

using C_Settings = std::array<int, 6>;
constexpr C_Settings As_Delivered{1, 0, 115200, 0, 0, 1};

C_Settings Settings_Of(const C_InitDlg& settings) {
  C_Settings v;
  v.fill(-1);
  settings.Read_Out(v[0], v[1], v[2], v[3], v[4], v[5]);
  return v;
}

using Init_Dialog = Operator;

TEST_F(Init_Dialog, Asks_At_The_First_Start_Only_And_Stores_Even_A_Cancel) {
  EXPECT_EQ(Settings_Of(C_InitDlg()), As_Delivered);
  ASSERT_EQ(front->Shown().size(), 2U);  // opened and closed
  const C_Dialog_Model model = front->Shown()[0].dialog;
  EXPECT_TRUE(model.confirms);
  ASSERT_EQ(model.controls.size(), 5U);
  EXPECT_EQ(model.controls[0].items.size(), 14U);
  EXPECT_THAT(model.controls[2].items, ElementsAre(L"无串口", L"COM1", L"COM2", L"COM3", L"COM4", L"COM5", L"COM6"));
  EXPECT_EQ(model.controls[3].selected, 6);

  EXPECT_EQ(File_Text(Store),
            "orsanta store 1\nC_InitDlg Num 0 = int 1\nC_InitDlg Com 0 = int 0\nC_InitDlg Baud 0 = int 115200\n"
            "C_InitDlg IoInit 0 = int 0\nC_InitDlg BegineMotor 0 = int 1\nend\n");
  const C_InitDlg second;
  EXPECT_EQ(front->Shown().size(), 2U);

  std::filesystem::remove(Store);
  std::filesystem::create_directory(Store);
  for (size_t start = 1; start <= 2; ++start) {  // a folder stays, and so it is asked and told again
    EXPECT_EQ(Settings_Of(C_InitDlg()), As_Delivered);
    EXPECT_EQ(front->Boxes().size(), start);
    EXPECT_EQ(Count_Dialogs(L"起始测微仪id"), start + 1);
  }
}

// What no list offers stands until another is chosen; the rate alone falls back to the first.
TEST_F(Init_Dialog, Takes_The_Choices_And_Gives_Them_Back_At_Later_Starts) {
  std::ofstream(Store) << "orsanta store 1\nC_InitDlg Com 0 = int 9\nC_InitDlg Baud 0 = int 4800\n"
                          "C_InitDlg Num 0 = int 20\nend\n";
  C_InitDlg settings;
  EXPECT_EQ(Settings_Of(settings), (C_Settings{20, 9, 4800, 0, 0, 1}));
  EXPECT_THAT(front->Shown(), testing::IsEmpty());
  const std::pair<C_Script, C_Settings> dialogs[] = {
      {C_Script().Select(L"起始测微仪id", 4).Select(L"电机数量", 13).Confirm(), {14, 9, 9600, 0, 0, 5}},
      {C_Script().Select(L"串口号", 6).Select(L"波特率", 1).Select(L"IO控制", 1).Confirm(), {14, 6, 14400, 0, 1, 5}},
      {C_Script().Confirm(), {14, 6, 14400, 0, 1, 5}},
      {C_Script().Select(L"电机数量", 0).Select(L"IO控制", 0).Cancel(), {14, 6, 14400, 0, 1, 5}}};
  for (const auto& [script, after] : dialogs) {
    front->Next_Dialog(script);
    settings.Settings_Dialog();
    EXPECT_EQ(Settings_Of(settings), after);
    EXPECT_EQ(Settings_Of(C_InitDlg()), after);
  }
  EXPECT_EQ(front->Shown().front().dialog.controls[2].items.back(), L"COM9");
}

}  // namespace
}  // namespace orsanta
