#include "harness.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace test {

namespace {

std::vector<char *> pointers(const arguments &texts) {
  std::vector<char *> result;
  for (const std::string &text : texts) result.push_back(const_cast<char *>(text.c_str()));
  result.push_back(nullptr);
  return result;
}

}  // namespace

json::json(const std::string &text) : value_(json_loadb(text.data(), text.size(), 0, nullptr)) {}

std::string json::keys() const {
  std::string result;
  const char *key = nullptr;
  json_t *value = nullptr;
  json_object_foreach(value_, key, value) result += (result.empty() ? "" : " ") + std::string(key);
  return result;
}

running::running(const std::string &program, const arguments &args, const arguments &environment,
                 const std::string &stem, const std::string &input)
    : stem_(stem) {
  write_text(stem + ".in", input);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, (stem + ".in").c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (stem + ".out").c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (stem + ".err").c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  // A session of its own: there is no terminal that the program could ask on.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  arguments all{program};
  all.insert(all.end(), args.begin(), args.end());
  int error = posix_spawnp(&pid_, program.c_str(), &actions, &attributes, pointers(all).data(),
                           pointers(environment).data());
  EXPECT_EQ(error, 0) << "cannot start " << program;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
}

outcome running::wait() {
  int status = 0;
  outcome result;
  if (waitpid(pid_, &status, 0) == pid_ && WIFEXITED(status)) result.code = WEXITSTATUS(status);
  result.out = read_text(stem_ + ".out");
  result.err = read_text(stem_ + ".err");
  return result;
}

std::string read_text(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void write_text(const std::string &path, const std::string &text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  ASSERT_TRUE(file.flush().good()) << path;
}

twctl_test::twctl_test() {
  std::string pattern = (std::filesystem::temp_directory_path() / "twctl-test.XXXXXX").string();
  EXPECT_NE(mkdtemp(pattern.data()), nullptr);
  directory_ = pattern;
  for (char **variable = environ; *variable; variable++) {
    std::string text = *variable;
    if (!text.starts_with("NO_COLOR=") && !text.starts_with("TWCTL_STORE=") && !text.starts_with("TERM="))
      environment_.push_back(text);
  }
  environment_.push_back("TERM=xterm");
  environment_.push_back("TWCTL_STORE=" + store_path());
}

twctl_test::~twctl_test() { std::filesystem::remove_all(directory_); }

running twctl_test::start(const arguments &args, const std::string &input) {
  return running(TWCTL_BINARY, args, environment_, path("run-" + std::to_string(count_++)), input);
}

outcome twctl_test::run_program(const std::string &program, const arguments &args, const std::string &input) {
  return running(program, args, environment_, path("run-" + std::to_string(count_++)), input).wait();
}

json twctl_test::run_json(arguments args, const std::string &input) {
  args.insert(args.begin(), {"-o", "json"});
  outcome result = run(args, input);
  EXPECT_EQ(result.code, 0) << result.err;
  json value(result.out);
  EXPECT_TRUE(value.valid()) << result.out;
  return value;
}

void twctl_test::init(const std::string &name) { std::filesystem::copy(INITIALISED_STORE, path(name)); }

void twctl_test::own_directory(const std::string &variable) {
  std::erase_if(environment_, [&](const std::string &one) { return one.starts_with(variable + "="); });
  environment_.push_back(variable + "=" + path(variable));
  setenv(variable.c_str(), path(variable).c_str(), 1);
}

std::string twctl_test::everything() {
  outcome result = run({"store", "export", "-"});
  EXPECT_EQ(result.code, 0) << result.err;
  json status = run_json({"store", "status"});
  return result.out + "revision " + std::to_string(status["revision"].number());
}

twctl_test::parts twctl_test::parts_of(arguments command) {
  command.push_back("--help");
  std::istringstream lines(run(command).out);
  parts result;
  arguments *section = nullptr;
  for (std::string line; std::getline(lines, line);) {
    if (line == "Nouns:") section = &result.nouns;
    if (line == "Verbs:") section = &result.verbs;
    if (line.empty()) section = nullptr;
    if (section && line.size() > 2 && line.starts_with("  ") && line[2] != ' ')
      section->push_back(line.substr(2, line.find(' ', 2) - 2));
  }
  return result;
}

std::vector<arguments> twctl_test::all_commands(const arguments &below) {
  std::vector<arguments> result;
  const parts found = parts_of(below);
  for (const arguments *names : {&found.nouns, &found.verbs})
    for (const std::string &name : *names) {
      arguments command = below;
      command.push_back(name);
      std::vector<arguments> deeper = all_commands(command);
      if (deeper.empty()) deeper.push_back(command);
      result.insert(result.end(), deeper.begin(), deeper.end());
    }
  return result;
}

std::string words_of(const arguments &command) {
  std::string words;
  for (const std::string &word : command) words += (words.empty() ? "" : " ") + word;
  return words;
}

open_store open_for_reading(const std::string &path) {
  cfg_failure failure{};
  open_store store(cfg_open(path.c_str(), CFG_OPEN_READ_ONLY, &failure), cfg_close);
  EXPECT_NE(store, nullptr) << failure.text;
  return store;
}

void change_store(const std::string &path, const std::function<void(cfg *)> &change) {
  open_store store(cfg_open(path.c_str(), 0, nullptr), cfg_close);
  ASSERT_NE(store, nullptr);
  change(store.get());
  ASSERT_EQ(cfg_commit(store.get(), nullptr), 1) << cfg_error_text(store.get());
}

}  // namespace test
