// The connection to the motion server, as the objects of one drive class share it: the first that may opens it, all of
// them count, and the last one that goes ends it. Each drive class has a connection of its own.
//
// Threads: any. The owner holds theDriveLock over the whole of a construction or destruction; message boxes stand under
// it too, so that no object comes or goes while an operator decides about the server.
#pragma once

#include "support/time/critical_section.h"

namespace orsanta {

// Where the drive classes differ.
struct C_Connection_Policy {
  const wchar_t* refused_words;  // of the box that a refusal opens once a pass has used up its tries
  unsigned refused_box;       // its flags: Box_Yes_No lets the operator go on to the next refusal; else the pass ends
  bool sleep_first;           // a try sleeps before it connects; else after it, also when it was the one that works
  bool library_dialogs_off;   // the client library shows no dialogs of its own, and hands over why it was refused
  int (*last_object_goes)();  // what becomes of the server's side at the end
};

class C_Server_Connection {
 public:
  explicit C_Server_Connection(const C_Connection_Policy& policy) : m_Policy(policy) {}

  // Counts an object in, and connects when it may (connect_server 1) and none has done so before: connects, rebuilds
  // the server's side and connects again, each with up to 101 tries 100 ms apart and a box after that. Returns 0 when
  // this left no connection, else 1.
  int Join(int connect_server) REQUIRES(theDriveLock);
  // Counts an object out. The last one ends the connection. Returns the number of those that remain.
  int Leave() REQUIRES(theDriveLock);

  CMyCriticalSection theDriveLock;

 private:
  int Connect_Pass();

  const C_Connection_Policy m_Policy;
  int theDriveCount GUARDED_BY(theDriveLock) = 0;       // live objects
  int theServerConnected GUARDED_BY(theDriveLock) = 0;  // 1 once an object has gone through the connect
};

}  // namespace orsanta
