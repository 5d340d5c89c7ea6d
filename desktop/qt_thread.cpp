#include "desktop/qt_thread.h"

#include <unistd.h>

#include <QApplication>
#include <atomic>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include "desktop/chinese_texts.h"
#include "desktop/display.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr auto Halt_Limit = std::chrono::milliseconds(500);

QtMessageHandler the_Previous_Handler = nullptr;
std::atomic<bool> the_Halt{false};

// Qt remarks on a thread and on a locale that are both chosen on purpose here; everything else passes.
bool Is_Expected(const QString& message) {
  return message.contains(QLatin1String("not created in the main() thread")) ||
         message.contains(QLatin1String("Qt depends on a UTF-8 locale")) ||
         message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"));
}

// When the connection to the display breaks, Qt says so and then ends the process, measurements and all. The thread
// stays in the saying instead.
void Filter_Message(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.contains(QLatin1String("X11 connection broke"))) C_Qt_Thread::Get().Stay_Without_Display();
  if (the_Halt || Is_Expected(message)) return;  // at the end of the process Qt cleans up under a thread that rests
  if (the_Previous_Handler != nullptr) {
    the_Previous_Handler(type, context, message);
  } else {
    fprintf(stderr, "%s\n", qPrintable(message));
  }
}

// A write of the calling thread, and of those that it starts, to a display that has just gone away must not end the
// process.
void Take_No_Pipe_Signal() {
  sigset_t pipe_signal;
  sigemptyset(&pipe_signal);
  sigaddset(&pipe_signal, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe_signal, nullptr);
}

[[noreturn]] void Rest_For_Good() {
  for (;;) pause();
}

}  // namespace

C_Qt_Thread& C_Qt_Thread::Get() {
  static C_Qt_Thread& thread = *new C_Qt_Thread;
  return thread;
}

bool C_Qt_Thread::Start(std::string& reason) {
  {
    const C_Lock_Guard hold(m_Lock);
    if (m_Context != nullptr) return true;
  }
  std::promise<std::string> started;
  std::thread([this, &started] {
    Run([&started](const std::string& why_not) { started.set_value(why_not); });
  }).detach();
  reason = started.get_future().get();
  return reason.empty();
}

// Qt takes the first thread that touches any of its objects for its main thread, and wakes that one when the display
// has events. So nothing of Qt may be used before this, or on another thread.
void C_Qt_Thread::Run(const std::function<void(const std::string&)>& started) {
  Take_No_Pipe_Signal();
  C_Display display = Find_Display();
  if (display.platform.empty()) return started(display.reason);
  the_Previous_Handler = qInstallMessageHandler(Filter_Message);
  std::string name = "orsanta";
  std::string option = "-platform";
  char* arguments[] = {name.data(), option.data(), display.platform.data(), nullptr};
  int count = 3;
  // The application sets the locale of the process to that of the user, which would turn decimal points of the whole
  // library into commas; the host's choice is put back.
  const char* locale = setlocale(LC_ALL, nullptr);
  const std::string host_locale = locale != nullptr ? locale : "C";
  QApplication application(count, arguments);
  display.keeps.reset();
  setlocale(LC_ALL, host_locale.c_str());
  QApplication::setQuitOnLastWindowClosed(false);
  Install_Chinese_Texts();
  if (!Set_Up_Look()) {
    fputs(
        "orsanta: no font with Chinese was found, texts will show as boxes; install one, for example the package "
        "fonts-wqy-microhei\n",
        stderr);
  }
  QObject context;
  {
    const C_Lock_Guard hold(m_Lock);
    m_Context = &context;
  }
  started("");
  QApplication::exec();
  Rest_For_Good();  // a session manager may end the loop; the objects above stay
}

bool C_Qt_Thread::Post(std::function<void()> work) {
  const C_Lock_Guard hold(m_Lock);
  if (m_Context == nullptr) return false;
  QMetaObject::invokeMethod(m_Context, std::move(work), Qt::QueuedConnection);
  return true;
}

bool C_Qt_Thread::Run_And_Wait(const std::function<void()>& work) {
  std::promise<void> done;
  if (!Post([&] {
        work();
        done.set_value();
      })) {
    return false;
  }
  done.get_future().wait();
  return true;
}

void C_Qt_Thread::On_Display_Lost(std::function<void()> work) {
  const C_Lock_Guard hold(m_Lock);
  m_Display_Lost = std::move(work);
}

void C_Qt_Thread::Take_No_More_Posts() {
  const C_Lock_Guard hold(m_Lock);
  m_Context = nullptr;
}

void C_Qt_Thread::Stay_Without_Display() {
  fputs("orsanta: the display went away; the system goes on without windows\n", stderr);
  the_Halt = true;
  Take_No_More_Posts();
  std::function<void()> lost;
  {
    const C_Lock_Guard hold(m_Lock);
    lost = m_Display_Lost;
  }
  if (lost) lost();
  Rest_For_Good();
}

void C_Qt_Thread::Halt() {
  auto halted = std::make_shared<std::promise<void>>();
  const bool posted = Post([halted] {
    halted->set_value();
    Rest_For_Good();
  });
  if (!posted) return;
  the_Halt = true;
  Take_No_More_Posts();
  halted->get_future().wait_for(Halt_Limit);
}

}  // namespace orsanta
