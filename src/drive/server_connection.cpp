#include "drive/server_connection.h"

#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

int C_Server_Connection::Join(int connect_server) {
  ++theDriveCount;
  if (connect_server != 1 || theServerConnected == 1) return 1;
  constexpr int Server_Is_Local = 1;
  InitDevice_PC_Local_Controler(Server_Is_Local, 0);
  Connect_Pass();
  // What an earlier client left in the server goes; it drops the connection, so that a second pass makes the one that
  // counts, whatever became of the first.
  ReBuildSystem();
  if (m_Policy.library_dialogs_off) OpenCloseErrorMsgAutoAssert(0);
  const int connected = Connect_Pass();
  if (m_Policy.library_dialogs_off) OpenCloseErrorMsgAutoAssert(0);
  theServerConnected = 1;  // whatever came of it: the operator has been told
  return connected != 0 ? 1 : 0;
}

// Tries until the server takes the connection. Returns 0 when it does not.
int C_Server_Connection::Connect_Pass() {
  // Empty: the local server, which the client library reaches over the loopback address "127.0.0.1".
  constexpr const wchar_t* Server_Address = L"";
  constexpr int Tries = 100;  // a refusal beyond them opens the box
  constexpr int Sleep_Ms = 100;
  const wchar_t* error_code_str = nullptr;
  const wchar_t** const reason = m_Policy.library_dialogs_off ? &error_code_str : nullptr;
  for (int count = 1;; ++count) {
    if (m_Policy.sleep_first) Sleep(Sleep_Ms);
    const int connected = ConnectControlServer(Server_Address, 0, reason);
    if (!m_Policy.sleep_first) Sleep(Sleep_Ms);
    if (connected != 0) return connected;
    if (count <= Tries) continue;
    if (Message_Box(m_Policy.refused_words, m_Policy.refused_box) != Answer_Yes) return 0;
  }
}

int C_Server_Connection::Leave() {
  --theDriveCount;
  if (theDriveCount == 0) {
    theServerConnected = 0;
    m_Policy.last_object_goes();
  }
  return theDriveCount;
}

}  // namespace orsanta
