// `serve`: the data tree over HTTP, or HTTPS with a certificate given, with basic authentication
// and fault injection, until asked to stop (SIGINT or SIGTERM; Ctrl+C on Windows).
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ostream>
#include <thread>

#include <httplib.h>

#include "core/platform/files.h"
#include "demo_service/commands.h"
#include "demo_service/connections.h"
#include "demo_service/data_tree.h"
#include "demo_service/https_server.h"
#include "demo_service/options.h"
#include "demo_service/request_handler.h"
#include "demo_service/stop_request.h"

namespace corvanet::demo {

namespace {

// Enough for a client's keep-alive connection, a few concurrent tests and some delayed requests.
constexpr std::size_t kWorkers = 16;
constexpr time_t kKeepAliveSeconds = 5;
// On a stop signal, answers under way get this long before every connection is closed; idle
// keep-alive connections would otherwise hold the exit up until they time out.
constexpr auto kStopGrace = std::chrono::milliseconds(200);

std::vector<FaultRule> CommandLineFaults(const Options& options) {
  std::vector<FaultRule> rules;
  for (const std::string& text : options.All("fault")) {
    FaultRule rule;
    std::string error;
    if (!ParseFaultRule(text, rule, error)) throw UsageError("option --fault: " + error);
    rules.push_back(std::move(rule));
  }
  return rules;
}

int Bind(httplib::Server& server, const std::string& host, int port) {
  errno = 0;
  const int bound =
      port == 0 ? server.bind_to_any_port(host) : (server.bind_to_port(host, port) ? port : -1);
  if (bound > 0) return bound;
  const int error = errno;
  throw RunError("cannot listen on " + host + ":" + std::to_string(port) + ": " +
                 (error != 0 ? std::strerror(error) : "address in use or not available"));
}

}  // namespace

int Serve(const std::vector<std::string>& args, std::ostream& out, std::ostream& log) {
  const Options options(args, {{"root"},
                               {"host"},
                               {"port"},
                               {"user"},
                               {"password"},
                               {"faults"},
                               {"fault", true},
                               {"port-file"},
                               {"tls-cert"},
                               {"tls-key"}});
  const std::string root = RootFolder(options);
  const std::string host = options.Text("host", "127.0.0.1");
  const int port = static_cast<int>(options.Integer("port", 8080, 0, 65535));
  Credentials credentials{options.Required("user"), options.Required("password")};
  // Basic authentication splits at the first ':', so a user name cannot hold one.
  if (credentials.user.find(':') != std::string::npos) {
    throw UsageError("option --user cannot hold ':'");
  }
  const std::string port_file = options.Text("port-file", "");
  std::vector<FaultRule> command_line_faults = CommandLineFaults(options);
  if (!DirectoryExists(root + std::string(kServedTop))) {
    throw RunError("no data tree under " + root + " (run generate first)");
  }
  FaultBook faults(std::move(command_line_faults), options.Text("faults", ""));
  std::string error;
  if (!faults.Load(error)) throw RunError(error);

  StopRequest stop_request;
  RequestLog request_log(log);
  StopSignal stop;
  RequestHandler handler(root, std::move(credentials), faults, request_log, stop);

  const std::unique_ptr<httplib::Server> served = MakeServer(options);
  httplib::Server& server = *served;
  server.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
  // Only SO_REUSEADDR: the library's default also sets SO_REUSEPORT, with which a second server
  // on a port already in use would start without an error.
  socket_t listening = INVALID_SOCKET;
  server.set_socket_options([&listening](socket_t socket) {
    int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&yes), sizeof yes);
    listening = socket;
  });
  // Headers and body go out in separate writes; without this each answer waits on a delayed ACK.
  server.set_tcp_nodelay(true);
  server.set_keep_alive_max_count(1000);
  server.set_keep_alive_timeout(kKeepAliveSeconds);
  server.set_pre_routing_handler([&](const httplib::Request& request, httplib::Response& response) {
    handler.Handle(request, response);
    return httplib::Server::HandlerResponse::Handled;
  });

  const int bound = Bind(server, host, port);
  // The library listens with a backlog of five: a client opening eight connections at once (a
  // pool of fetches) had some of them dropped and tried again by its system a second later. A
  // second listen() on the bound socket raises the backlog.
  if (listening != INVALID_SOCKET) ::listen(listening, SOMAXCONN);
  if (!port_file.empty() && !WriteWholeFile(port_file, std::to_string(bound) + "\n")) {
    throw RunError("cannot write the port file " + port_file);
  }
  out << "listening on " << (options.Has("tls-cert") ? "https://" : "http://") << host << ":"
      << bound << std::endl;

  std::atomic<bool> listening_done{false};
  std::atomic<bool> stopped{false};
  std::string stopped_by;  // read only once the thread has ended
  std::thread signal_thread([&] {
    std::string request = stop_request.Wait();
    if (listening_done) return;
    stopped_by = std::move(request);
    stopped = true;
    stop.Stop();
    server.stop();
    const auto grace_ends = std::chrono::steady_clock::now() + kStopGrace;
    // Repeated: a signal that lands before the listen loop has started is lost by one stop().
    while (!listening_done) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      server.stop();
      if (std::chrono::steady_clock::now() >= grace_ends) ShutdownAllConnections();
    }
  });
  const bool listened = server.listen_after_bind();
  listening_done = true;
  if (!stopped) stop_request.Release(signal_thread);
  signal_thread.join();

  if (!port_file.empty()) RemoveFile(port_file);
  if (!stopped_by.empty()) {
    request_log.Note("stopped by " + stopped_by);
    return 0;
  }
  if (!listened) throw RunError("the server stopped unexpectedly");
  return 0;
}

}  // namespace corvanet::demo
