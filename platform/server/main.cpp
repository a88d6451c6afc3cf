/// The simulated Mobile AP server, for development without a modem.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "mox/vendor/qcom/qcmap/version.h"
#include "protocol/control.h"
#include "protocol/standard_streams.h"
#include "server/console.h"
#include "server/control.h"
#include "server/hub.h"
#include "server/listening_socket.h"

namespace {

constexpr int kUsageError = 2;
constexpr int64_t kMaxMs = int64_t{3600} * 1000;
constexpr int64_t kMaxTraffic = int64_t{1} << 40;

struct Options {
  std::string socket = sim::DefaultSocketPath();
  int64_t call_time_ms = 200, latency_ms = 0, profiles = 3, traffic = 10000, jitter_ms = 0;
  uint64_t seed = 1;
  std::string network = "on", clock = "real", scenario, log;
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
  app.add_option("--clock", options.clock,
                 "Whether calls, traffic and autoconnect take real time, or none but that of the "
                 "command advance")
      ->check(CLI::IsMember({"real", "manual"}))
      ->capture_default_str();
  app.add_option(
         "--jitter", options.jitter_ms,
         "Random milliseconds, up to this number, by which each step of a call takes longer")
      ->check(any_time)
      ->capture_default_str();
  app.add_option("--seed", options.seed, "The same number gives the same random times")
      ->capture_default_str();
  app.add_option("--latency", options.latency_ms,
                 "Milliseconds between carrying out a request and its reply: short for the command "
                 "late-reply all MS")
      ->check(any_time)
      ->capture_default_str();
  app.add_option("--fail", options.failures,
                 "Refuse a request: REQUEST[:ERROR[:COUNT]], for example ConnectBackHaul:13:1. "
                 "ERROR is 3 by default. Without COUNT the request is always refused. May be "
                 "repeated")
      ->allow_extra_args(false);
  app.add_option(
      "--log", options.log,
      "Record everything that happens in this file: a JSON object on each line, with the "
      "names of the command show --json");
  app.add_flag("--console", options.console,
               "Read commands from standard input; the command help lists them");
  app.add_option(
      "--scenario", options.scenario,
      "Read commands from a file. Those before the first sleep or advance are carried out "
      "before clients can connect");
}

sim::Modem::Settings Settings(const Options& options) {
  return {static_cast<size_t>(options.profiles),
          sim::Milliseconds(options.call_time_ms),
          options.network == "on",
          static_cast<uint64_t>(options.traffic),
          options.clock == "manual",
          sim::Milliseconds(options.jitter_ms),
          options.seed};
}

/// The parts that write to the standard streams.
struct Streams {
  explicit Streams(asio::io_context& io)
      : output(io, STDOUT_FILENO),
        errors(io, STDERR_FILENO),
        about_clients(io, errors, "QCMAP_ConnectionManager"),
        about_lines(io, errors, "console"),
        about_scenario(io, errors, "scenario") {}
  ~Streams() {
    about_clients.ReportTheRest();
    about_lines.ReportTheRest();
    about_scenario.ReportTheRest();
    output.Finish();
    errors.Finish();
  }

  sim::Output output, errors;
  sim::Complaints about_clients, about_lines, about_scenario;
};

/// Opens the file of a scenario. Without one it is empty.
sim::Descriptor OpenScenario(const std::string& path) {
  // Opening a pipe must not wait for its writer.
  constexpr int kMode = O_RDONLY | O_NONBLOCK | O_CLOEXEC;
  sim::Descriptor file(::open(path.empty() ? "/dev/null" : path.c_str(), kMode));
  if (!file.IsOpen()) throw std::system_error(errno, std::generic_category(), path);
  return file;
}

/// Carries out what options ask as commands. Throws WrongCommand.
void RunCommandsOf(const Options& options, sim::Commands& commands) {
  std::vector<std::string> lines;
  for (const std::string& failure : options.failures) lines.push_back("fail " + failure);
  if (options.latency_ms > 0)
    lines.push_back("late-reply all " + std::to_string(options.latency_ms));
  for (const std::string& line : lines) {
    const std::string error = commands.Run(line).error;
    if (!error.empty()) throw sim::WrongCommand("--fail: " + error);
  }
}

/// Whether the server ends with its terminal. Not if it was started by nohup.
bool EndsWithTerminal() {
  struct sigaction hangup {};
  ::sigaction(SIGHUP, nullptr, &hangup);
  return hangup.sa_handler != SIG_IGN;
}

/// The sockets of clients and of the programs that control the server.
struct Sockets {
  explicit Sockets(const std::string& path) : clients(path), programs(sim::ControlPath(path)) {}

  sim::ListeningSocket clients, programs;
};

/// Serves until a signal or a command ends it.
void Serve(const Options& options, asio::io_context& io, Streams& streams, Sockets& sockets,
           sim::Model& model, sim::Hub& hub, sim::Commands& commands) {
  const sim::Descriptor file = OpenScenario(options.scenario);
  sim::Console scenario(io, file.Get(), commands, streams.output, streams.about_scenario);
  try {
    scenario.RunFirstLines();
  } catch (const sim::WrongCommand& wrong) {
    throw sim::WrongCommand(options.scenario + ": " + wrong.what());
  }
  sim::Control control(io, commands, streams.about_clients);
  control.Accept(sockets.programs.Listen());
  hub.Accept(sockets.clients.Listen(), model);
  sim::Console console(io, STDIN_FILENO, commands, streams.output, streams.about_lines);
  std::vector<sim::Activity*> activities = {
      &streams.output, &streams.errors, &hub, &model.modem, &control, &streams.about_clients};
  if (!options.scenario.empty())
    activities.insert(activities.end(), {&scenario, &streams.about_scenario});
  if (options.console) activities.insert(activities.end(), {&console, &streams.about_lines});
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
  sim::Faults faults;
  sim::Record record(streams.errors);
  sim::Hub hub(io, faults, record, streams.about_clients);
  sim::Model model{sim::Modem(
                       io, Settings(options),
                       [&hub](uint32_t receiver, const sim::Indication& indication) {
                         hub.Indicate(receiver, indication);
                       },
                       [&hub] { return hub.AwaitsReaders(); }),
                   {}};
  asio::signal_set signals(io, SIGINT, SIGTERM);
  if (EndsWithTerminal()) signals.add(SIGHUP);
  signals.async_wait([&io](auto, int) { io.stop(); });
  Sockets sockets(options.socket);
  // Opened only now, because a second server on these sockets would empty the first one's record.
  if (!options.log.empty()) record.Open(options.log, model.modem.timeline());
  sim::Commands commands(model, faults, hub, record);
  try {
    RunCommandsOf(options, commands);
    Serve(options, io, streams, sockets, model, hub, commands);
  } catch (const sim::WrongCommand& wrong) {
    std::fprintf(stderr, "%s\n", wrong.what());
    return kUsageError;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  sim::OpenStandardStreams();
  // The server must survive when the reader of its output exits, and when its log is too large.
  for (const int signal : {SIGPIPE, SIGXFSZ}) ::signal(signal, SIG_IGN);
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "QCMAP_ConnectionManager: %s\n", error.what());
    return 1;
  }
}
