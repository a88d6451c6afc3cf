/// The simulated Mobile AP server, for development without a modem.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <cstdio>

#include "mox/vendor/qcom/qcmap/version.h"
#include "protocol/socket_path.h"
#include "server/console.h"
#include "server/hub.h"
#include "server/listening_socket.h"

namespace {

constexpr int kUsageError = 2;
constexpr int64_t kMaxMs = int64_t{3600} * 1000;
constexpr int64_t kMaxTraffic = int64_t{1} << 40;

struct Options {
  std::string socket = sim::DefaultSocketPath();
  int64_t call_time_ms = 200, latency_ms = 0, profiles = 3, traffic = 10000;
  std::string network = "on";
  std::vector<std::string> failures;
  bool console = false;
};

void Declare(CLI::App& app, Options& options) {
  app.set_version_flag("-V,--version", "QCMAP_ConnectionManager " MVQ_QCMAP_VERSION,
                       "Show the version");
  const CLI::Range any_time(int64_t{0}, kMaxMs);
  app.add_option("--socket", options.socket, "Path of the socket that clients connect to")
      ->capture_default_str();
  app.add_option("--profiles", options.profiles, "Number of profiles at the start")
      ->check(CLI::Range(0, int{QCMAP_MSGR_MAX_WWAN_POLICY_V01}))
      ->capture_default_str();
  app.add_option("--call-time", options.call_time_ms,
                 "Milliseconds that connecting and disconnecting take")
      ->check(any_time)
      ->capture_default_str();
  app.add_option("--network", options.network, "Whether there is a network at the start")
      ->check(CLI::IsMember({"on", "off"}))
      ->capture_default_str();
  app.add_option("--traffic", options.traffic,
                 "Bytes that each connected family receives in a second")
      ->check(CLI::Range(int64_t{0}, kMaxTraffic))
      ->capture_default_str();
  app.add_option("--latency", options.latency_ms, "Milliseconds before each request is carried out")
      ->check(any_time)
      ->capture_default_str();
  app.add_option("--fail", options.failures,
                 "Refuse a request: REQUEST[:ERROR[:COUNT]], for example ConnectBackHaul:13:1. "
                 "ERROR is 3 by default. Without COUNT the request is always refused. May be "
                 "repeated")
      ->allow_extra_args(false);
  app.add_flag("--console", options.console,
               "Read commands from standard input; the command help lists them");
}

sim::Modem::Settings Settings(const Options& options) {
  return {static_cast<size_t>(options.profiles), sim::Milliseconds(options.call_time_ms),
          options.network == "on", static_cast<uint64_t>(options.traffic)};
}

/// The parts that write to the standard streams.
struct Streams {
  explicit Streams(asio::io_context& io)
      : output(io, STDOUT_FILENO),
        errors(io, STDERR_FILENO),
        about_clients(io, errors, "QCMAP_ConnectionManager"),
        about_lines(io, errors, "console") {}
  ~Streams() {
    about_clients.ReportTheRest();
    about_lines.ReportTheRest();
    output.Finish();
    errors.Finish();
  }

  sim::Output output, errors;
  sim::Complaints about_clients, about_lines;
};

/// Serves until a signal or the console ends it.
void Serve(const Options& options, asio::io_context& io, Streams& streams, sim::Requests& requests,
           sim::Hub& hub, sim::Model& model) {
  asio::signal_set signals(io, SIGINT, SIGTERM, SIGHUP);
  signals.async_wait([&io](const asio::error_code& error, int) {
    if (!error) io.stop();
  });
  sim::ListeningSocket listening(options.socket);
  hub.Accept(listening.fd(), requests);
  sim::ConsoleCommands commands(model, requests, hub);
  sim::Console console(io, commands, streams.output, streams.about_lines);
  std::vector<sim::Activity*> activities = {
      &streams.output, &streams.errors,        &hub,
      &model.modem,    &streams.about_clients, &streams.about_lines};
  if (options.console) activities.push_back(&console);
  streams.output.Print("listening on " + options.socket + "\n");
  sim::RunEventLoop(io, activities);
}

int Run(int argc, char** argv) {
  Options options;
  CLI::App app("Simulated Mobile AP server", "QCMAP_ConnectionManager");
  Declare(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageError;
  }

  asio::io_context io(1);
  Streams streams(io);
  sim::Hub hub(io, sim::Milliseconds(options.latency_ms), streams.about_clients);
  sim::Model model{sim::Modem(io, Settings(options),
                              [&hub](uint32_t receiver, const sim::Indication& indication) {
                                hub.Indicate(receiver, indication);
                              }),
                   {}};
  sim::Requests requests(model);
  for (const std::string& failure : options.failures) {
    const std::string wrong = requests.Fail(failure);
    if (wrong.empty()) continue;
    std::fprintf(stderr, "--fail: %s\n", wrong.c_str());
    return kUsageError;
  }
  Serve(options, io, streams, requests, hub, model);
  return 0;
}

/// The server's own descriptors must not take the places of standard streams that are closed.
void OpenStandardStreams() {
  int fd;
  do {
    fd = ::open("/dev/null", O_RDWR);
  } while (fd >= 0 && fd <= STDERR_FILENO);
  if (fd >= 0) ::close(fd);
}

}  // namespace

int main(int argc, char** argv) {
  OpenStandardStreams();
  ::signal(SIGPIPE, SIG_IGN);  // the server must survive when the reader of its output exits
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "QCMAP_ConnectionManager: %s\n", error.what());
    return 1;
  }
}
