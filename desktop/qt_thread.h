// The thread on which the desktop front draws. It owns the one Qt application of the process.
//
// Post may be called from any thread; what is posted runs on the Qt thread in the order of the posts.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

class QObject;

namespace orsanta {

class C_Qt_Thread {
 public:
  // Starts the thread with an application on that platform (see Find_Display) and returns when it takes posts.
  // display_lost: called on the Qt thread when the display went away; windows are then of no use any more.
  C_Qt_Thread(const std::string& platform, std::function<void()> display_lost);
  ~C_Qt_Thread() { Stop(); }
  C_Qt_Thread(const C_Qt_Thread&) = delete;
  C_Qt_Thread& operator=(const C_Qt_Thread&) = delete;

  // Returns false when the thread has been stopped; the work is then dropped.
  bool Post(std::function<void()> work);
  // Runs `last` on the Qt thread, then ends the application and the thread. The first call alone has an effect.
  void Stop(std::function<void()> last = {});
  // The Qt thread will never come back: takes no more posts, and nobody waits for its end.
  void Abandon();
  // Halts the Qt thread for good, and returns when it has halted or a moment has passed.
  void Rest();

 private:
  void Run(std::string platform, const std::function<void()>& started);

  std::thread m_Thread;
  std::mutex m_Lock;
  QObject* m_Context = nullptr;  // lives on the Qt thread; null before its start and after Stop
};

}  // namespace orsanta
