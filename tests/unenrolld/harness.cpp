#include "unenrolld/harness.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ostream>
#include <stdexcept>
#include <thread>

namespace unenrolling {
namespace {

std::vector<char *> pointers(const texts &all) {
  std::vector<char *> found;
  for (const std::string &one : all) found.push_back(const_cast<char *>(one.c_str()));
  found.push_back(nullptr);
  return found;
}

std::string id_of(cfg_elem *elem) {
  char *id = nullptr;
  if (!cfg_elem_uuid(elem, &id)) throw std::runtime_error("no ID");
  const std::unique_ptr<char, decltype(&std::free)> owned(id, std::free);
  return id;
}

cfg_elem *list_at_root(cfg *store, const char *name) {
  if (cfg_elem *there = cfg_get_by_path(store, name)) return there;
  cfg_elem *made = cfg_new_list(store);
  cfg_add_mapelem(store, cfg_root(store), name, made);
  return made;
}

}  // namespace

Process::Process(const texts &arguments, const texts &environment, std::string output)
    : output_(std::move(output)) {
  texts all = environment;
  for (char **own = environ; *own; ++own) all.emplace_back(*own);
  auto argv = pointers(arguments), envp = pointers(all);
  const int file = open(output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  pid_ = fork();
  if (pid_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  close(file);
  if (pid_ < 0) throw std::runtime_error("no process");
}

Process::~Process() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  wait();
}

void Process::signal(int number) { kill(pid_, number); }

std::string Process::wait() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return "exit " + std::to_string(WEXITSTATUS(status));
}

std::string Process::printed() const { return trial::read_file(output_); }

void PrintTo(const Jobs &jobs, std::ostream *out) {
  *out << jobs.ready << " ready, " << jobs.reserved << " reserved, " << jobs.delayed << " delayed, "
       << jobs.buried << " buried";
}

UnenrolldTest::UnenrolldTest() {
  setenv("TW_ACTION_DIR", (scratch_.path() + "/actions").c_str(), 1);
  setenv("TW_INFOD_DIR", (scratch_.path() + "/live").c_str(), 1);
  cfg_close(cfg_open(store_path().c_str(), CFG_OPEN_CREATE, nullptr));
}

store_handle UnenrolldTest::open() {
  cfg_failure failure{};
  store_handle handle(cfg_open(store_path().c_str(), 0, &failure));
  if (!handle) throw std::runtime_error(failure.text);
  return handle;
}

std::string UnenrolldTest::add_node(const char *name, bool with_certificate) {
  const store_handle handle = open();
  cfg *store = handle.get();
  cfg_elem *node = cfg_new_map(store);
  cfg_add_listelem(store, list_at_root(store, "nodes"), node);
  cfg_map_set_string(store, node, "name", name);
  cfg_map_set_string(store, node, "status", "Enrolled");
  cfg_map_set_string(store, node, "product", "tarnwell");
  cfg_elem *made = nullptr;
  if (with_certificate) {
    made = cfg_new_map(store);
    cfg_add_listelem(store, list_at_root(store, "certificates"), made);
    cfg_map_set_string(store, made, "common_name", name);
    cfg_map_set_blob(store, made, "private_key", "a private key", 13);
    cfg_map_set_reference(store, node, "cert", id_of(made).c_str());
  }
  if (!cfg_commit(store, nullptr)) throw std::runtime_error(cfg_error_text(store));
  if (made) certificate = id_of(made);
  return id_of(node);
}

bool UnenrolldTest::has_node(const std::string &id) {
  return cfg_get_by_id(open().get(), id.c_str()) != nullptr;
}

int32_t UnenrolldTest::revoked_at(const std::string &id) {
  const store_handle store = open();
  int32_t seconds = 0;
  cfg_map_get_int(store.get(), cfg_get_by_id(store.get(), id.c_str()), "revoke_time", &seconds);
  return seconds;
}

uint64_t UnenrolldTest::revision() { return cfg_revision(open().get()); }

texts UnenrolldTest::commits() {
  texts found;
  cfg_visit_log(
      open().get(), 0,
      [](void *context, const cfg_commit_info *commit) {
        if (commit->token && *commit->token)
          static_cast<texts *>(context)->push_back(std::string(commit->who) + ": " + commit->why);
        return 1;
      },
      &found);
  return found;
}

uint64_t UnenrolldTest::add_action(const std::string &node, int32_t state) {
  twaction *action = twaction_new();
  twaction_set_state(action, state);
  twaction_set_queue_name(action, "unenroll_node");
  EXPECT_EQ(twaction_store(action), 0);
  const uint64_t id = twaction_get_id(action);
  twaction_free(action);
  EXPECT_EQ(twaction_associate_node(id, node.c_str()), 0);
  return id;
}

std::string UnenrolldTest::action_of(const std::string &node) {
  twaction *action = nullptr;
  if (twaction_get_for_node(node.c_str(), "unenroll_node", &action) != 0) return "none";
  int32_t state = -1;
  const char *error = nullptr;
  twaction_get_state(action, &state);
  twaction_get_last_error(action, &error);
  std::string found = std::to_string(state) + (error ? std::string(" ") + error : "");
  twaction_free(action);
  return found;
}

void UnenrolldTest::put_body(const std::string &body) {
  const queue::connection producer = queue::connect_to(server->port());
  ASSERT_EQ(bs_use(producer.get(), "unenroll_node"), 0);
  ASSERT_GE(queue::put(producer, body, 0, 0, 600), 0);
}

Jobs UnenrolldTest::jobs() {
  // Someone must look at the tube, else it is not there.
  const std::string answer =
      queue::send_raw(server->port(), "watch unenroll_node\r\nstats-tube unenroll_node\r\n");
  const auto number = [&](const char *name) {
    const size_t at = answer.find(name);
    if (at == std::string::npos) throw std::runtime_error(answer);
    return std::atoi(answer.c_str() + at + std::string_view(name).size());
  };
  return {number("\ncurrent-jobs-ready: "), number("\ncurrent-jobs-reserved: "),
          number("\ncurrent-jobs-delayed: "), number("\ncurrent-jobs-buried: ")};
}

void UnenrolldTest::wait_until_nothing_is_reserved() {
  for (int i = 0; i < 3000 && jobs().reserved > 0; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  ASSERT_EQ(jobs().reserved, 0);
}

// The server kicks delayed jobs only when none is buried.
void UnenrolldTest::kick() { queue::send_raw(server->port(), "use unenroll_node\r\nkick 1000\r\n"); }

Process UnenrolldTest::start(const texts &more, const texts &environment) {
  texts arguments = {UNENROLLD_PROGRAM, "--store", store_path()};
  if (std::find(more.begin(), more.end(), "--port") == more.end()) {
    arguments.push_back("--port");
    arguments.push_back(std::to_string(server->port()));
  }
  arguments.insert(arguments.end(), more.begin(), more.end());
  return {arguments, environment, scratch_.path() + "/output-" + std::to_string(++started_)};
}

std::string UnenrolldTest::run_once(const texts &environment, const texts &more) {
  texts arguments = {"--once"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  Process worker = start(arguments, environment);
  const std::string end = worker.wait();
  output = worker.printed();
  return end;
}

}  // namespace unenrolling
