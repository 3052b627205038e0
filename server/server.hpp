// qrn-optserver: jobs (a task file to optimize), a pool of workers that run
// them with the library, and the HTTP interface of docs/remote.md.
#pragma once

#include "quarn.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
}

namespace qrnserver {

using Clock = std::chrono::steady_clock;

struct Options {
  std::string host = "127.0.0.1";
  int port = 8470;                        // 0: any free port
  int workers = 0;                        // 0: one per processor
  uint64_t max_body = 256ull << 20;       // bytes of one request
  std::string token_file;                 // "" : no access token
  std::string server_id;                  // "" : 8 random hex digits
  double max_time = 3600.0;               // seconds one job may run at most
  double keep = 600.0;                    // seconds a result is kept
  size_t max_jobs = 10000;                // jobs held at once (queued, running, ended)
  uint64_t max_log = 4ull << 20;          // bytes of log kept per job
};

struct Job {
  std::string token;
  qrn_task_t task = nullptr;
  enum class State { queued, running, done } state = State::queued;
  bool stop = false;                      // under the server's lock
  Clock::time_point arrived, started, ended, deadline;
  uint64_t request_bytes = 0;
  std::string log;
  bool log_full = false;
  std::shared_ptr<const std::string> result;
  qrn_rescode resp = QRN_RES_OK;
  qrn_int32 trm = QRN_RES_OK;
  class Server *server = nullptr;
};

class Server {
 public:
  explicit Server(Options opt);
  ~Server();
  // Requests to /v1/jobs must then carry "Authorization: Bearer TOKEN".
  void set_access_token(std::string token);
  // Binds; returns the port, or -1 (with a message on stderr).
  int bind();
  // Serves until shutdown(); then stops the running jobs and the workers.
  void run();
  // From any thread (the signal thread): ends run().
  void shutdown();
  const Options &options() const { return opt_; }

  // Called by the library while a job runs.
  void append_log(Job &job, const char *text);
  bool should_stop(Job &job);

 private:
  void routes();
  void worker();
  void reaper();
  void run_job(const std::shared_ptr<Job> &job);
  std::shared_ptr<Job> find(const std::string &token);  // under lock
  std::string new_token();

  Options opt_;
  std::string access_;  // the access token, "" for none
  qrn_env_t env_ = nullptr;
  std::unique_ptr<httplib::Server> http_;
  std::mutex mutex_;
  std::condition_variable changed_;  // a job's state or log changed, or shutdown
  std::condition_variable work_;     // a job was queued, or shutdown
  std::map<std::string, std::shared_ptr<Job>> jobs_;
  std::deque<std::shared_ptr<Job>> queue_;
  bool stopping_ = false;
  size_t served_ = 0;
  std::vector<std::thread> threads_;
};

}  // namespace qrnserver
