#include "engine_fixture.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace twcfg::testing {

TemporaryDirectory::TemporaryDirectory() {
  path_ = (std::filesystem::temp_directory_path() / "engine-test-XXXXXX").string();
  if (!mkdtemp(path_.data())) std::abort();
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

int run_child(const std::function<int()> &body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return status;
}

void expect_child_succeeds(const std::function<int()> &body) {
  const int status = run_child(body);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

std::string contents_of(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace twcfg::testing
