#include <windows.h>

#include <atomic>

#include "demo_service/stop_request.h"

namespace corvanet::demo {

namespace {

HANDLE requested = CreateEventW(nullptr, TRUE, FALSE, nullptr);
std::atomic<const char*> request_name{"Ctrl+C"};

BOOL WINAPI OnConsoleEvent(DWORD event) {
  request_name = event == CTRL_C_EVENT       ? "Ctrl+C"
                 : event == CTRL_BREAK_EVENT ? "Ctrl+Break"
                                             : "the console closing";
  SetEvent(requested);
  return TRUE;
}

}  // namespace

StopRequest::StopRequest() {
  SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
}

std::string StopRequest::Wait() {
  WaitForSingleObject(requested, INFINITE);
  return request_name.load();
}

void StopRequest::Release(std::thread& /*waiter*/) {
  SetEvent(requested);
}

}  // namespace corvanet::demo
