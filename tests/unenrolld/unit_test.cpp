// The unit for the service manager.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace unenrolling {
namespace {

std::string output_of(const std::string &command) {
  const std::unique_ptr<FILE, decltype(&pclose)> pipe(popen(command.c_str(), "r"), pclose);
  std::string all;
  std::array<char, 4096> part;
  while (const size_t got = std::fread(part.data(), 1, part.size(), pipe.get())) all.append(part.data(), got);
  return all;
}

TEST(UnenrolldUnit, IsSandboxed) {
  if (std::system("systemd-analyze --version >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "systemd-analyze is not installed";
  const std::string said = output_of(std::string("systemd-analyze security --no-pager --offline=true ") +
                                     UNENROLLD_UNIT + " 2>&1");
  const std::string label = "Overall exposure level for unenrolld.service: ";
  const size_t at = said.find(label);
  ASSERT_NE(at, std::string::npos) << said;
  EXPECT_LT(std::stod(said.substr(at + label.size())), 3.0) << said;
}

TEST(UnenrolldUnit, StartsTheInstalledProgram) {
  std::ifstream unit(UNENROLLD_UNIT);
  std::stringstream text;
  text << unit.rdbuf();
  EXPECT_NE(text.str().find("\nExecStart=/"), std::string::npos) << text.str();
  EXPECT_NE(text.str().find("/unenrolld\n"), std::string::npos) << text.str();
  EXPECT_EQ(text.str().find('@'), text.str().find("@system-service")) << "a place that was not filled in";
}

}  // namespace
}  // namespace unenrolling
