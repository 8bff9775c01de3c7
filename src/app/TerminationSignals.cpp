#include "app/TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int g_pipe[2] = {-1, -1};

void OnSignal(int signalNumber) {
  const unsigned char byte = static_cast<unsigned char>(signalNumber);
  [[maybe_unused]] const ssize_t n = ::write(g_pipe[1], &byte, 1);
}
} // namespace

bool TerminationSignals::Install() {
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pipe) != 0)
    return false;
  ::fcntl(g_pipe[1], F_SETFL, O_NONBLOCK);
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (int sig : {SIGTERM, SIGINT, SIGHUP})
    ::sigaction(sig, &action, nullptr);
  return true;
}

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent) {
  if (g_pipe[0] < 0)
    return;
  auto *notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [this] {
    unsigned char byte = 0;
    if (::read(g_pipe[0], &byte, 1) == 1)
      emit terminationRequested(byte);
  });
}
