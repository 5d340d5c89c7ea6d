// The two password gates of the panel and its auto-lock.
#include "host/motor_base.h"
#include "support/dialog/message_box.h"
#include "support/dialog/small_dialog.h"
#include "ui/init_dialog.h"
#include "ui/panel.h"

namespace orsanta {

namespace {

constexpr wchar_t Enter_Password[] = L"输入密码";
constexpr wchar_t New_Password[] = L"新密码";
constexpr int Refresh_Ms = 100;  // what one refresh of a display counts

}  // namespace

// Stands before the advanced functions until it has been passed once since the start of the system. A cancel leaves the
// first edit at its caption, which then counts as a wrong password.
bool C_ORS_Dlg::Pass_Service_Gate() {
  if (m_pMotorBase->AdvancedUser == 1) return true;
  std::wstring entered = Enter_Password;
  std::wstring new_password = New_Password;
  int asks_settings = 0;
  int changes_password = 0;
  int lock_time_s = auto_lock_password_time_s;
  // What the entries hold counts, whether they were confirmed or not.
  C_Small_Dialog()
      .Entry(Enter_Password, entered)
      .Tick(L"设置电机数量及串口", asks_settings)
      .Tick(L"更改密码", changes_password)
      .Entry(New_Password, new_password)
      .Entry(L"自动上锁时间", lock_time_s)
      .Ask();
  if (entered != password_str) {
    Message_Box(L"密码错误");
    return false;
  }
  if (changes_password != 0) password_str = new_password;
  m_pMotorBase->AdvancedUser = 1;
  if (asks_settings != 0) {
    C_InitDlg settings;
    settings.Settings_Dialog();
    Message_Box(L"设置完成请重启软件");
  }
  auto_lock_password_time_s = lock_time_s;
  return true;
}

// Stands before every command but the four that measure, while the panel is locked.
bool C_ORS_Dlg::Pass_Operator_Gate() {
  if (m_BeUnlocked) return true;
  Message_Box(L"需要操作员密码");
  std::wstring entered = Enter_Password;
  C_Small_Dialog().Entry(Enter_Password, entered).Ask();
  if (entered != password_str) {
    Message_Box(L"用户密码错误");
    return false;
  }
  m_BeUnlocked = true;
  return true;
}

// Required: it runs once for each display, so that with several stations the panel locks that many times sooner; plants
// have set their times by it.
void C_ORS_Dlg::Count_Toward_Lock() {
  if (!m_BeUnlocked) {
    m_LockCounter = 0;
    return;
  }
  m_LockCounter += Refresh_Ms;
  if (m_LockCounter >= int64_t{auto_lock_password_time_s} * 1000) m_BeUnlocked = false;
}

}  // namespace orsanta
