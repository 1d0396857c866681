#include <twobject.h>

#include "harness.hpp"

namespace test {

using TwctlSystem = twctl_test;

TEST_F(TwctlSystem, EverySettingThatIsSetIsReadBack) {
  init();
  const std::pair<const char *, const char *> values[] = {
      {"hostname", "hub-1.lab"},    {"timezone", "Europe/Berlin"}, {"webui_session_timeout", "20"},
      {"cli_session_timeout", "0"}, {"ping_interval", "30"},       {"sync_interval", "600"},
      {"ssh_port", "2222"},         {"fhvpn_mtu", "1400"},
  };
  for (const auto &[name, value] : values) {
    outcome set = run({"system", "set", name, value});
    EXPECT_EQ(set.code, 0) << name << ": " << set.err;
    EXPECT_EQ(run({"system", "get", name}).out, std::string(value) + "\n");
  }
  open_store store = open_for_reading(store_path());
  int32_t mtu = 0;
  EXPECT_EQ(cfg_system_get_fhvpn_mtu(store.get(), &mtu), 1);
  EXPECT_EQ(mtu, 1400);
}

TEST_F(TwctlSystem, JsonListsAllEightSettingsWithTheirUnits) {
  init();
  ASSERT_EQ(run({"system", "set", "ssh_port", "22"}).code, 0);
  json settings = run_json({"system", "get"})["settings"];
  ASSERT_EQ(settings.size(), 8u);
  EXPECT_EQ(settings[0].keys(), "name value unit meaning");
  EXPECT_TRUE(settings[0]["value"].is_null());
  EXPECT_EQ(settings[2]["unit"].text(), "minutes");
  EXPECT_EQ(settings[6]["name"].text(), "ssh_port");
  EXPECT_EQ(settings[6]["value"].number(), 22);
}

TEST_F(TwctlSystem, ValuesOutsideTheirRangeAreRefusedAndNothingIsWritten) {
  init();
  std::string before = everything();
  const std::pair<const char *, const char *> values[] = {
      {"ssh_port", "0"},
      {"ssh_port", "65536"},
      {"ssh_port", "22x"},
      {"ssh_port", ""},
      {"fhvpn_mtu", "100"},
      {"ping_interval", "0"},
      {"hostname", "a b"},
      {"hostname", "a-"},
      {"timezone", "a b"},
      {"hostname", "10.1.2"},
      {"webui_session_timeout", "99999999999"},
  };
  for (const auto &[name, value] : values)
    EXPECT_EQ(run({"system", "set", name, value}).code, 5) << name << value;
  EXPECT_EQ(run({"system", "set", "webui_session_timeout", "--", "-5"}).code, 5);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlSystem, ASettingThatIsNotSetOrDoesNotExistIsNotFound) {
  init();
  EXPECT_EQ(run({"system", "get", "hostname"}).code, 3);
  outcome unknown = run({"system", "get", "colour"});
  EXPECT_EQ(unknown.code, 3);
  EXPECT_NE(unknown.err.find("ssh_port"), std::string::npos) << "the error names the settings there are";
}

TEST_F(TwctlSystem, ADryRunShowsTheChangeAndWritesNothing) {
  init();
  std::string before = everything();
  outcome text = run({"system", "set", "hostname", "hub", "--dry-run"});
  EXPECT_EQ(text.code, 0);
  EXPECT_EQ(text.out, "+ system.hostname: \"hub\"\nDry run: 1 change, nothing was written.\n");
  json result = run_json({"system", "set", "hostname", "hub", "--dry-run"});
  EXPECT_EQ(result.keys(), "name value dry_run revision change_count changes");
  EXPECT_TRUE(result["dry_run"].is_true());
  EXPECT_TRUE(result["revision"].is_null());
  EXPECT_EQ(result["changes"][0].keys(), "op id kind before after");
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlSystem, TheCommitLogTellsWhoAndWhy) {
  init();
  ASSERT_EQ(run({"system", "set", "hostname", "hub", "--who", "ann", "--reason", "new name"}).code, 0);
  json commit = run_json({"store", "log", "--limit", "1"})["commits"][0];
  EXPECT_EQ(commit["who"].text(), "ann");
  EXPECT_EQ(commit["why"].text(), "new name");
}

}  // namespace test
