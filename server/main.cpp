// qrn-optserver: command line, signals and start-up of the optimization server.
#include "server.hpp"

#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <cerrno>
#include <unistd.h>
#include <string>
#include <thread>

namespace {

const char *const usage =
    "usage: qrn-optserver [options]\n"
    "Runs optimization jobs sent over HTTP by the QUARN library (docs/remote.md).\n"
    "\n"
    "  --host HOST        address to listen on (default 127.0.0.1)\n"
    "  --port PORT        port to listen on; 0 picks a free one (default 8470)\n"
    "  --workers N        jobs optimized at once (default: one per processor)\n"
    "  --max-body BYTES   largest request accepted (default 268435456)\n"
    "  --token-file FILE  file whose first line is the access token clients must send\n"
    "  --server-id ID     1-16 letters and digits that start every job token, for a load\n"
    "                     balancer to route by (default: 8 random hex digits)\n"
    "  --max-time SEC     longest run of one job; its time limit is lowered to this (default 3600)\n"
    "  --keep SEC         how long an ended job's result is kept for pick-up (default 600)\n"
    "  --max-jobs N       jobs held at once, queued, running or ended (default 10000)\n"
    "  --help             this text\n"
    "\n"
    "Prints \"listening on HOST:PORT\" when ready; SIGTERM or SIGINT stops it cleanly.\n";

[[noreturn]] void bad(const std::string &msg) {
  std::fprintf(stderr, "qrn-optserver: %s\n%s", msg.c_str(), usage);
  std::exit(2);
}

double number(const std::string &name, const std::string &v, double lo, double hi) {
  char *end = nullptr;
  const double x = std::strtod(v.c_str(), &end);
  if (v.empty() || end != v.c_str() + v.size() || !(x >= lo && x <= hi))
    bad(name + " must be a number in [" + std::to_string(lo) + ", " + std::to_string(hi) + "], not \"" + v + "\"");
  return x;
}

int signal_pipe[2] = {-1, -1};

extern "C" void on_signal(int) {
  const int saved = errno;
  const char byte = 1;
  if (write(signal_pipe[1], &byte, 1) < 0) {
  }
  errno = saved;
}

bool valid_id(const std::string &id) {
  if (id.empty() || id.size() > 16) return false;
  for (char c : id)
    if (!std::isalnum(static_cast<unsigned char>(c))) return false;
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  qrnserver::Options opt;
  for (int k = 1; k < argc; ++k) {
    std::string a = argv[k], v;
    if (a == "--help" || a == "-h") {
      std::fputs(usage, stdout);
      return 0;
    }
    const size_t eq = a.find('=');
    if (eq != std::string::npos) {
      v = a.substr(eq + 1);
      a = a.substr(0, eq);
    } else if (k + 1 < argc) {
      v = argv[++k];
    } else {
      bad(a + " needs a value");
    }
    if (a == "--host") opt.host = v;
    else if (a == "--port") opt.port = static_cast<int>(number(a, v, 0, 65535));
    else if (a == "--workers") opt.workers = static_cast<int>(number(a, v, 1, 1024));
    else if (a == "--max-body") opt.max_body = static_cast<uint64_t>(number(a, v, 1024, 1e12));
    else if (a == "--token-file") opt.token_file = v;
    else if (a == "--server-id") {
      if (!valid_id(v)) bad("--server-id must be 1 to 16 letters and digits");
      opt.server_id = v;
    } else if (a == "--max-time") opt.max_time = number(a, v, 0.001, 1e9);
    else if (a == "--keep") opt.keep = number(a, v, 0, 1e9);
    else if (a == "--max-jobs") opt.max_jobs = static_cast<size_t>(number(a, v, 1, 1e9));
    else bad("unknown option " + a);
  }
  std::string token;
  if (!opt.token_file.empty()) {
    std::ifstream f(opt.token_file);
    if (!f || !std::getline(f, token)) bad("cannot read a token from " + opt.token_file);
    while (!token.empty() && std::isspace(static_cast<unsigned char>(token.back()))) token.pop_back();
    while (!token.empty() && std::isspace(static_cast<unsigned char>(token.front()))) token.erase(0, 1);
    if (token.empty()) bad("the token file " + opt.token_file + " starts with an empty line");
  }

  // SIGTERM and SIGINT write a byte to a pipe that one thread waits on and
  // then stops the server (a handler, not a blocked mask: threads that
  // libraries start before main would otherwise take the signal).
  if (pipe(signal_pipe) != 0) {
    std::perror("qrn-optserver: pipe");
    return 1;
  }
  struct sigaction sa {};
  sa.sa_handler = on_signal;
  sigemptyset(&sa.sa_mask);
  sa.sa_flags = SA_RESTART;
  sigaction(SIGTERM, &sa, nullptr);
  sigaction(SIGINT, &sa, nullptr);
  std::signal(SIGPIPE, SIG_IGN);

  try {
    qrnserver::Server server(opt);
    server.set_access_token(token);
    const int port = server.bind();
    if (port < 0) return 1;
    std::thread waiter([&] {
      char byte = 0;
      while (read(signal_pipe[0], &byte, 1) < 0 && errno == EINTR) {
      }
      if (byte == 1) server.shutdown();
    });
    std::printf("listening on %s:%d\n", opt.host.c_str(), port);
    std::fflush(stdout);
    server.run();
    const char wake = 0;  // ends the waiter when no signal came
    if (write(signal_pipe[1], &wake, 1) < 0) std::perror("qrn-optserver: write");
    waiter.join();
    std::fprintf(stderr, "qrn-optserver: stopped\n");
  } catch (const std::exception &e) {
    std::fprintf(stderr, "qrn-optserver: %s\n", e.what());
    return 1;
  }
  return 0;
}
