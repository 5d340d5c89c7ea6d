#include "desktop/qt_thread.h"

#include <unistd.h>

#include <QApplication>
#include <chrono>
#include <clocale>
#include <future>
#include <memory>
#include <utility>

#include "desktop/look.h"

namespace orsanta {

namespace {

QtMessageHandler the_Previous_Handler = nullptr;
std::function<void()> the_Display_Lost;

// When the connection to the display breaks, Qt says so and then ends the process, measurements and all. This thread
// stays in the saying: windows are gone, the process lives.
[[noreturn]] void Stay_Without_Display() {
  fputs("orsanta: the display went away; the system goes on without windows\n", stderr);
  the_Display_Lost();
  for (;;) pause();
}

// Qt remarks on a thread and on a locale that are both chosen on purpose here; everything else passes.
void Filter_Message(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.contains(QLatin1String("not created in the main() thread"))) return;
  if (message.contains(QLatin1String("Qt depends on a UTF-8 locale"))) return;
  if (message.contains(QLatin1String("X11 connection broke"))) Stay_Without_Display();
  if (message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))) return;
  if (the_Previous_Handler != nullptr) {
    the_Previous_Handler(type, context, message);
  } else {
    fprintf(stderr, "%s\n", qPrintable(message));
  }
}

}  // namespace

C_Qt_Thread::C_Qt_Thread(const std::string& platform, std::function<void()> display_lost) {
  the_Display_Lost = std::move(display_lost);
  std::promise<void> started;
  m_Thread = std::thread([this, platform, &started] { Run(platform, [&started] { started.set_value(); }); });
  started.get_future().wait();
}

void C_Qt_Thread::Run(std::string platform, const std::function<void()>& started) {
  the_Previous_Handler = qInstallMessageHandler(Filter_Message);
  std::string name = "orsanta";
  std::string option = "-platform";
  char* arguments[] = {name.data(), option.data(), platform.data(), nullptr};
  int count = 3;
  // The application sets the locale of the process to that of the user, which would turn decimal points of the whole
  // library into commas; the host's choice is put back.
  const char* locale = setlocale(LC_ALL, nullptr);
  const std::string host_locale = locale != nullptr ? locale : "C";
  {
    QApplication application(count, arguments);
    setlocale(LC_ALL, host_locale.c_str());
    QApplication::setQuitOnLastWindowClosed(false);
    Set_Up_Look();
    QObject context;
    {
      std::lock_guard<std::mutex> guard(m_Lock);
      m_Context = &context;
    }
    started();
    QApplication::exec();
  }
  qInstallMessageHandler(the_Previous_Handler);
}

bool C_Qt_Thread::Post(std::function<void()> work) {
  std::lock_guard<std::mutex> guard(m_Lock);
  if (m_Context == nullptr) return false;
  QMetaObject::invokeMethod(m_Context, std::move(work), Qt::QueuedConnection);
  return true;
}

void C_Qt_Thread::Stop(std::function<void()> last) {
  {
    std::lock_guard<std::mutex> guard(m_Lock);
    if (m_Context == nullptr) return;
    const auto end = [work = std::move(last)] {
      if (work) work();
      QApplication::quit();
    };
    QMetaObject::invokeMethod(std::exchange(m_Context, nullptr), end, Qt::QueuedConnection);
  }
  m_Thread.join();
}

void C_Qt_Thread::Abandon() {
  std::lock_guard<std::mutex> guard(m_Lock);
  m_Context = nullptr;
  m_Thread.detach();
}

void C_Qt_Thread::Rest() {
  auto halted = std::make_shared<std::promise<void>>();
  if (!Post([halted] {
        halted->set_value();
        for (;;) pause();
      })) {
    return;
  }
  halted->get_future().wait_for(std::chrono::milliseconds(500));
  Abandon();
}

}  // namespace orsanta
