#include <sys/stat.h>

#include <filesystem>

#include "harness.hpp"

namespace test {

class TwctlStore : public twctl_test {
 protected:
  void SetUp() override { init(); }
};

TEST_F(TwctlStore, ExportAndImportGiveTheSameStoreBack) {
  ASSERT_EQ(run({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"}).code, 0);
  outcome exported = run({"store", "export", path("backup.json")});
  EXPECT_EQ(exported.code, 0) << exported.err;
  outcome imported = run({"store", "import", path("backup.json"), "--store", path("restored"), "--yes"});
  EXPECT_EQ(imported.code, 0) << imported.err;
  EXPECT_EQ(run({"store", "export", "-", "--store", path("restored")}).out, read_text(path("backup.json")));
  EXPECT_EQ(run({"node", "show", "rack-1", "--store", path("restored")}).code, 0);
}

TEST_F(TwctlStore, AnExportIsPrivateAndReplacesNothing) {
  ASSERT_EQ(run({"store", "export", path("backup.json")}).code, 0);
  struct stat info;
  ASSERT_EQ(stat(path("backup.json").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777u, 0600u);
  std::string before = read_text(path("backup.json"));
  outcome again = run({"store", "export", path("backup.json")});
  EXPECT_EQ(again.code, 4);
  EXPECT_NE(again.err.find("exists already"), std::string::npos);
  EXPECT_EQ(read_text(path("backup.json")), before);
  EXPECT_EQ(run({"store", "export", path("no/such/place.json")}).code, 3);
}

TEST_F(TwctlStore, AnImportNeedsAConfirmationAndADryRunWritesNothing) {
  ASSERT_EQ(run({"store", "export", path("backup.json")}).code, 0);
  ASSERT_EQ(run({"system", "set", "hostname", "hub"}).code, 0);
  std::string before = everything();
  EXPECT_EQ(run({"store", "import", path("backup.json")}).code, 2);
  outcome dry = run({"store", "import", path("backup.json"), "--dry-run"});
  EXPECT_EQ(dry.code, 0) << dry.err;
  EXPECT_NE(dry.out.find("+ services.ca.key: <"), std::string::npos)
      << "all that the store would hold is shown";
  EXPECT_EQ(dry.out.find("hostname"), std::string::npos) << dry.out;
  EXPECT_EQ(everything(), before);
  EXPECT_EQ(run({"store", "import", path("nowhere"), "--store", path("new"), "--dry-run"}).code, 3);
  EXPECT_EQ(run({"store", "import", path("backup.json"), "--store", path("new"), "--dry-run"}).code, 0);
  EXPECT_FALSE(std::filesystem::exists(path("new")));
}

TEST_F(TwctlStore, AFileThatIsNoExportIsInvalidAndChangesNothing) {
  std::string before = everything();
  write_text(path("bad.json"), "{\"hello\": 1");
  outcome result = run({"store", "import", path("bad.json"), "--yes"});
  EXPECT_EQ(result.code, 5) << result.err;
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlStore, VerifyTellsASoundStoreFromADamagedOne) {
  outcome sound = run({"store", "verify"});
  EXPECT_EQ(sound.code, 0) << sound.err;
  EXPECT_EQ(sound.out, "Revision 1 is sound.\n");
  EXPECT_EQ(run({"store", "verify", "-o", "json"}).out, "{\n  \"problems\": []\n}\n");
  for (const auto &file : std::filesystem::directory_iterator(store_path()))
    if (file.is_regular_file() && file.file_size() > 8192) std::filesystem::resize_file(file.path(), 4096);
  outcome damaged = run({"store", "verify"});
  EXPECT_EQ(damaged.code, 1) << damaged.out << damaged.err;
}

TEST_F(TwctlStore, CompactCopiesTheStoreAndADryRunDoesNot) {
  EXPECT_EQ(run({"store", "compact", path("copy"), "--dry-run"}).code, 0);
  EXPECT_FALSE(std::filesystem::exists(path("copy")));
  json result = run_json({"store", "compact", path("copy")});
  EXPECT_EQ(result.keys(), "directory revision dry_run");
  EXPECT_EQ(run({"store", "export", "-", "--store", path("copy")}).out, run({"store", "export", "-"}).out);
  EXPECT_NE(run({"store", "compact", path("copy")}).code, 0) << "an existing store is not replaced";
}

TEST_F(TwctlStore, StatusTellsRevisionNodesAndSizes) {
  ASSERT_EQ(run({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"}).code, 0);
  json status = run_json({"store", "status"});
  EXPECT_EQ(status.keys(),
            "store engine revision nodes records used_bytes file_bytes map_bytes oldest_log reader_count");
  EXPECT_EQ(status["revision"].number(), 2);
  EXPECT_EQ(status["nodes"].number(), 1);
  EXPECT_EQ(status["engine"].text(), "lmdb");
}

TEST_F(TwctlStore, LogListsCommitsNewestFirstAndShowsOne) {
  ASSERT_EQ(run({"system", "set", "hostname", "hub"}).code, 0);
  ASSERT_EQ(run({"system", "set", "ssh_port", "22"}).code, 0);
  json commits = run_json({"store", "log"})["commits"];
  ASSERT_EQ(commits.size(), 3u);
  EXPECT_EQ(commits[0].keys(), "revision time who why");
  EXPECT_EQ(commits[0]["revision"].number(), 3);
  EXPECT_EQ(commits[0]["why"].text(), "set ssh_port");
  EXPECT_EQ(run_json({"store", "log", "--limit", "1"})["commits"].size(), 1u);
  json commit = run_json({"store", "log", "2"});
  EXPECT_EQ(commit.keys(), "revision changes");
  EXPECT_EQ(commit["changes"][0].keys(), "op id");
  EXPECT_EQ(commit["changes"][0]["id"].text(), "system.hostname");
  EXPECT_EQ(run({"store", "log", "99"}).code, 3);
}

TEST_F(TwctlStore, AMissingStoreIsNotFoundAndNotMade) {
  for (const arguments &args : {arguments{"node", "list"}, arguments{"system", "set", "ssh_port", "22"},
                                arguments{"store", "verify"}}) {
    arguments all = args;
    all.insert(all.end(), {"--store", path("missing")});
    outcome result = run(all);
    EXPECT_EQ(result.code, 3);
    EXPECT_NE(result.err.find("twctl init"), std::string::npos) << result.err;
  }
  EXPECT_FALSE(std::filesystem::exists(path("missing")));
}

TEST_F(TwctlStore, AStoreThatOthersCouldWriteIsNoAccess) {
  ASSERT_EQ(chmod(store_path().c_str(), 0777), 0);
  EXPECT_EQ(run({"node", "list"}).code, 6);
}

}  // namespace test
