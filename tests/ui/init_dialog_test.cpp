// The settings that the system needs before anything else exists.
#include "ui/init_dialog.h"

#include <array>

#include "ui/operator.h"

namespace orsanta {
namespace {

using ::testing::ElementsAre;

constexpr const char* Store = "全局电机参数";

std::array<int, 6> Settings_Of(const C_InitDlg& settings) {
  std::array<int, 6> v;
  v.fill(-1);
  settings.Read_Out(v[0], v[1], v[2], v[3], v[4], v[5]);
  return v;
}

using Init_Dialog = Operator;

TEST_F(Init_Dialog, Asks_At_The_First_Start_Only_And_Stores_Even_A_Cancel) {
  EXPECT_THAT(Settings_Of(C_InitDlg()), ElementsAre(1, 0, 115200, 0, 0, 1));
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
}

TEST_F(Init_Dialog, Takes_The_Choices_And_Gives_Them_Back_At_Later_Starts) {
  C_Script choices;
  choices.Select(L"起始测微仪id", 4).Select(L"电机数量", 13).Select(L"串口号", 6);
  front->On_Dialog(L"起始测微仪id", choices.Select(L"波特率", 1).Select(L"IO控制", 1).Confirm());
  EXPECT_THAT(Settings_Of(C_InitDlg()), ElementsAre(14, 6, 14400, 0, 1, 5));
  C_InitDlg later;
  EXPECT_THAT(Settings_Of(later), ElementsAre(14, 6, 14400, 0, 1, 5));

  // From the panel: an untouched confirmation keeps them all, and a cancel leaves the object and the store as they are.
  front->On_Dialog(L"电机数量", C_Script().Confirm());
  front->On_Dialog(L"电机数量", C_Script().Select(L"电机数量", 0).Select(L"IO控制", 0).Cancel());
  for (int i = 0; i < 2; ++i) later.Settings_Dialog();
  EXPECT_THAT(Settings_Of(later), ElementsAre(14, 6, 14400, 0, 1, 5));
  EXPECT_THAT(File_Text(Store), testing::HasSubstr("C_InitDlg Num 0 = int 14\n"));
}

TEST_F(Init_Dialog, Keeps_A_Port_Beyond_The_List_Until_Another_Is_Chosen) {
  std::ofstream(Store) << "orsanta store 1\nC_InitDlg Com 0 = int 9\nC_InitDlg Baud 0 = int 4800\nend\n";
  C_InitDlg settings;
  front->Next_Dialog(C_Script().Confirm());
  front->Next_Dialog(C_Script().Select(L"串口号", 6).Confirm());
  for (const int port : {9, 6}) {
    settings.Settings_Dialog();
    EXPECT_THAT(Settings_Of(settings), ElementsAre(1, port, 9600, 0, 0, 1))
        << "a rate outside the list gives the first";
  }
  EXPECT_EQ(front->Shown().front().dialog.controls[2].items.back(), L"COM9");
}

TEST_F(Init_Dialog, Starts_Whatever_Stands_In_Its_Place) {
  std::ofstream(Store) << "orsanta store 1\nC_InitDlg Baud 0 = int 4800\nC_InitDlg Num 0 = int 20\nend\n";
  EXPECT_THAT(Settings_Of(C_InitDlg()), ElementsAre(20, 0, 4800, 0, 0, 1)) << "what no list offers, too";
  EXPECT_THAT(front->Shown(), testing::IsEmpty());
  std::filesystem::remove(Store);
  std::filesystem::create_directory(Store);
  for (size_t start = 1; start <= 2; ++start) {  // a folder stays, and so it is asked and told again
    EXPECT_THAT(Settings_Of(C_InitDlg()), ElementsAre(1, 0, 115200, 0, 0, 1));
    EXPECT_EQ(front->Boxes().size(), start);
    EXPECT_EQ(Shown(C_Shown::Kind::Dialog, L"起始测微仪id").size(), start);
  }
}

}  // namespace
}  // namespace orsanta
