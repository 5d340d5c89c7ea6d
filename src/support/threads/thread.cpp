#include "support/threads/thread.h"

#include <pthread.h>

#include <system_error>

#include "support/base/assertion.h"
#include "support/base/type_name.h"
#include "support/system/wide_string.h"
#include "support/time/lock.h"
#include "support/time/replacement_clock.h"

namespace orsanta {

void C_Thread::Start(const std::string& name, std::function<void()> body, int level) {
  MY_ASSERT(!m_Is_Running);
  {
    const C_Lock_Guard hold(m_Lock);
    m_Ended = false;
  }
  auto run = [this, body = std::move(body)] {
    body();
    const C_Lock_Guard hold(m_Lock);
    m_Ended = true;
    m_End.Notify_All();
  };
  try {
    if (C_Replacement_Clock* const clock = C_Replacement_Clock::Current()) {
      clock->Start_Thread(name, run);
    } else {
      m_Thread = std::thread([name, level, run = std::move(run)] {
        SetThreadPriority(level);
        pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
        run();
      });
    }
    m_Is_Running = true;
  } catch (const std::system_error& error) {
    MY_ASSERT_REPORT(Format_Utf8("thread %s cannot be started: %s", name.c_str(), error.what()));
  }
}

bool C_Thread::Join(double timeout_ms) {
  if (!m_Is_Running) return true;
  {
    const C_Lock_Guard hold(m_Lock);
    const double until_ms = Now_Ms() + timeout_ms;
    while (!m_Ended) {
      if (timeout_ms < 0.0) {
        m_End.Wait(m_Lock);
      } else if (!m_End.Wait_Until(m_Lock, until_ms) && !m_Ended) {
        return false;
      }
    }
  }
  if (m_Thread.joinable()) m_Thread.join();
  m_Is_Running = false;
  return true;
}

CBaseBindThread::~CBaseBindThread() {
  ReleaseSubClass_CBaseBindThread();
}

void CBaseBindThread::SetUseCWndThread(int) {}

int CBaseBindThread::BeginThread(void* param, int priority, int, int timeout_ms, const wchar_t* name) {
  if (m_Thread.Is_Running()) return 0;
  m_Be_End = false;
  m_Timeout_Ms = timeout_ms;
  m_Name = name != nullptr ? To_Utf8(name) : Type_Name(typeid(*this));
  const int level = priority >= Priority_Time_Critical ? priority : Priority_Normal;
  m_Thread.Start(
      m_Name,
      [this, param] {
        OnThreadBegin(param);
        while (!Is_Ending()) OnThreadLoop(param);
      },
      level);
  return 1;
}

int CBaseBindThread::EndThread(int, int) {
  if (!m_Thread.Is_Running()) return 1;
  m_Be_End = true;
  if (!m_Thread.Join(m_Timeout_Ms)) {
    MY_ASSERT_REPORT(Format_Utf8("thread %s did not end within %d ms", m_Name.c_str(), m_Timeout_Ms));
  }
  return 1;
}

void CBaseBindThread::OnThreadBegin(void*) {}
void CBaseBindThread::OnThreadLoop(void*) {}
void CBaseBindThread::OnThreadHook3(void*) {}
void CBaseBindThread::OnThreadHook4(void*) {}

}  // namespace orsanta
