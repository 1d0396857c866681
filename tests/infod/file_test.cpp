// The directory and the file of the live state: made, missing, replaced, damaged, closed to others.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "infod_fixture.hpp"
#include "store_processes/child.hpp"

namespace infod {
namespace {

namespace fs = std::filesystem;

TEST_F(InfodTest, ReadingAndRemovingBeforeAnythingWasPublishedMakesNothing) {
  EXPECT_EQ(text_of("a"), missing);
  EXPECT_EQ(infod_remove("a"), 0);
  EXPECT_EQ(all(), std::vector<std::string>{});
  infod_multiple *multiple = infod_get_multiple_start();
  ASSERT_NE(multiple, nullptr);
  EXPECT_EQ(text_of(multiple, "a"), missing);
  infod_get_multiple_end(multiple);
  EXPECT_FALSE(fs::exists(directory));
}

TEST_F(InfodTest, PublishingMakesTheDirectoryForItsOwnerAlone) {
  ASSERT_EQ(push("a", "1"), 0);
  EXPECT_EQ(trial::mode_of(directory), 0700U);
}

TEST_F(InfodTest, TheDirectoryIsMadeNotTheOnesAboveIt) {
  go_to(directory + "/deep/deeper");
  EXPECT_EQ(push("a", "1"), -ENOENT);
}

TEST_F(InfodTest, ADirectoryThatAnyoneMayWriteToIsRefused) {
  fs::create_directory(directory);
  ASSERT_EQ(chmod(directory.c_str(), 0777), 0);
  EXPECT_EQ(push("a", "1"), -EPERM);
  ASSERT_EQ(chmod(directory.c_str(), 0755), 0);
  EXPECT_EQ(push("a", "1"), 0);
}

TEST_F(InfodTest, AnotherDirectoryIsAnotherState) {
  const std::string first = directory;
  push("a", "1");
  go_to(first + "2");
  EXPECT_EQ(text_of("a"), missing);
  push("a", "2");
  go_to(first);
  EXPECT_EQ(text_of("a"), "1");
}

TEST_F(InfodTest, ADirectoryThatWasRemovedAndMadeAnewIsNoticed) {
  push("a", "1");
  fs::remove_all(directory);
  EXPECT_EQ(text_of("a"), missing);
  push("b", "2");
  EXPECT_EQ(text_of("b"), "2");
  fs::remove_all(directory);
  const std::string complaint =
      trial::in_child([] { return push("c", "3") == 0 ? std::string() : std::string("cannot publish"); });
  ASSERT_EQ(complaint, "");
  EXPECT_EQ(text_of("b"), missing);
  EXPECT_EQ(text_of("c"), "3");
}

TEST_F(InfodTest, AMultipleReadOutlivesItsDirectory) {
  push("a", "1");
  infod_multiple *multiple = infod_get_multiple_start();
  fs::remove_all(directory);
  EXPECT_EQ(text_of("a"), missing);
  EXPECT_EQ(text_of(multiple, "a"), "1");
  infod_get_multiple_end(multiple);
}

TEST_F(InfodTest, AFileThatIsNoStateIsReported) {
  fs::create_directory(directory);
  trial::write_file(data(), std::string(8192, 'x'));
  EXPECT_EQ(text_of("a"), "error " + std::to_string(-EBADMSG));
  EXPECT_EQ(push("a", "1"), -EBADMSG);
  EXPECT_EQ(infod_get_multiple_start(), nullptr);
}

TEST_F(InfodTest, AFileThatIsCutShortWhileItIsOpenIsReported) {
  for (int i = 0; i < 100; ++i) push("key " + std::to_string(i), std::string(1000, 'x'));
  ASSERT_EQ(truncate(data().c_str(), 8192), 0);
  EXPECT_EQ(text_of("key 50"), "error " + std::to_string(-EBADMSG));
  EXPECT_EQ(push("a", "1"), -EBADMSG);
}

TEST_F(InfodTest, AValueOfAnotherFormIsReportedNotRead) {
  push("a", "a text that is easily found");
  std::string bytes = trial::read_file(data());
  // The version of the value stands in front of its time stamp and kind.
  for (size_t at = bytes.find("a text that"); at != std::string::npos; at = bytes.find("a text that", at + 1))
    bytes[at - 13] = 9;
  go_to(directory + "2");
  fs::create_directory(directory);
  trial::write_file(data(), bytes);
  EXPECT_EQ(text_of("a"), "error " + std::to_string(-EBADMSG));
}

TEST_F(InfodTest, AFullDiskIsAFailureThatLosesNothing) {
  push("a", "kept");
  const std::string complaint = trial::in_child([this]() -> std::string {
    std::signal(SIGXFSZ, SIG_IGN);
    struct stat now {};
    stat(data().c_str(), &now);
    const rlimit limit{static_cast<rlim_t>(now.st_size), static_cast<rlim_t>(now.st_size)};
    setrlimit(RLIMIT_FSIZE, &limit);
    int result = 0;
    for (int i = 0; i < 100 && result == 0; ++i)
      result = push("b" + std::to_string(i), std::string(2000, 'x'));
    return result < 0 ? "" : "the file grew";
  });
  EXPECT_EQ(complaint, "");
  EXPECT_EQ(text_of("a"), "kept");
  EXPECT_EQ(push("a", "changed"), 0);
}

TEST_F(InfodTest, ProgramsThatAreStartedInheritNoFile) {
  push("a", "1");
  EXPECT_EQ(text_of("a"), "1");
  int ours = 0;
  for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const std::string target = fs::read_symlink(entry, gone).string();
    if (target.find(directory) == std::string::npos) continue;
    ++ours;
    EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0) << target;
  }
  EXPECT_GE(ours, 2);
}

}  // namespace
}  // namespace infod
