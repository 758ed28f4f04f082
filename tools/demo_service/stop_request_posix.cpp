#include <pthread.h>
#include <signal.h>

#include "demo_service/stop_request.h"

namespace corvanet::demo {

namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

// SIGINT and SIGTERM are blocked in every thread and taken by sigwait.
StopRequest::StopRequest() {
  const sigset_t signals = StopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  // A client that hangs up mid-answer must not end the server.
  ::signal(SIGPIPE, SIG_IGN);
}

std::string StopRequest::Wait() {
  const sigset_t signals = StopSignals();
  int signal_number = 0;
  sigwait(&signals, &signal_number);
  return signal_number == SIGINT ? "SIGINT" : "SIGTERM";
}

void StopRequest::Release(std::thread& waiter) {
  pthread_kill(waiter.native_handle(), SIGTERM);
}

}  // namespace corvanet::demo
