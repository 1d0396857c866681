#include <twobject/system.h>

#include "store_fixture.hpp"

namespace {

using records::heap_text;
using records::StoreTest;

struct number_setting {
  const char *path;
  int (*get)(cfg *, int32_t *) noexcept;
  int (*set)(cfg *, int32_t) noexcept;
};
const number_setting under_system[] = {
    {"system.webui_session_timeout", cfg_system_get_webui_session_timeout,
     cfg_system_set_webui_session_timeout},
    {"system.cli_session_timeout", cfg_system_get_cli_session_timeout, cfg_system_set_cli_session_timeout},
};
const number_setting third_party[] = {
    {"system.third_party.ping_interval", cfg_system_get_ping_interval, cfg_system_set_ping_interval},
    {"system.third_party.sync_interval", cfg_system_get_sync_interval, cfg_system_set_sync_interval},
};
const number_setting need_their_map[] = {
    {"system.net.ssh_port", cfg_net_get_ssh_port, cfg_net_set_ssh_port},
    {"services.fhvpn.server.mtu", cfg_system_get_fhvpn_mtu, cfg_system_set_fhvpn_mtu},
};

struct text_setting {
  const char *path;
  int (*get)(cfg *, char **) noexcept;
  int (*set)(cfg *, const char *) noexcept;
};
const text_setting texts[] = {
    {"system.hostname", cfg_system_get_hostname, cfg_system_set_hostname},
    {"system.timezone", cfg_system_get_timezone, cfg_system_set_timezone},
};

std::vector<number_setting> numbers() {
  std::vector<number_setting> all(std::begin(under_system), std::end(under_system));
  all.insert(all.end(), std::begin(third_party), std::end(third_party));
  all.insert(all.end(), std::begin(need_their_map), std::end(need_their_map));
  return all;
}

std::string parent_of(const std::string &path) { return path.substr(0, path.rfind('.')); }
std::string key_of(const std::string &path) { return path.substr(path.rfind('.') + 1); }

class System : public StoreTest {
 protected:
  // The getter's failure, and that it left its out value alone.
  void expect_unreadable(const number_setting &setting) {
    int32_t out = 4711;
    EXPECT_EQ(0, setting.get(store, &out)) << setting.path;
    EXPECT_EQ(4711, out) << setting.path;
  }
  void expect_unreadable(const text_setting &setting) {
    char untouched = 'u';
    char *out = &untouched;
    EXPECT_EQ(0, setting.get(store, &out)) << setting.path;
    EXPECT_EQ(&untouched, out) << setting.path;
  }
  void expect_reads(const number_setting &setting, int32_t expected) {
    int32_t out = ~expected;
    EXPECT_NE(0, setting.get(store, &out)) << setting.path;
    EXPECT_EQ(expected, out) << setting.path;
  }
  void expect_reads(const text_setting &setting, const char *expected) {
    char *out = nullptr;
    EXPECT_NE(0, setting.get(store, &out)) << setting.path;
    const heap_text owned(out);
    EXPECT_STREQ(expected, out) << setting.path;
  }
};

TEST_F(System, GettersOfAbsentKeysGiveZeroAndWriteNothing) {
  for (const number_setting &setting : numbers()) expect_unreadable(setting);
  for (const text_setting &setting : texts) expect_unreadable(setting);
  for (const number_setting &setting : numbers()) map_at(parent_of(setting.path));
  for (const number_setting &setting : numbers()) expect_unreadable(setting);
  for (const text_setting &setting : texts) expect_unreadable(setting);
}

TEST_F(System, GettersOfKeysOfAnotherKindGiveZeroAndWriteNothing) {
  for (const number_setting &setting : numbers())
    set(map_at(parent_of(setting.path)), key_of(setting.path).c_str(), "12");
  for (const text_setting &setting : texts)
    set(map_at(parent_of(setting.path)), key_of(setting.path).c_str(), 12);
  for (const number_setting &setting : numbers()) expect_unreadable(setting);
  for (const text_setting &setting : texts) expect_unreadable(setting);
}

TEST_F(System, GettersAndSettersOfANullHandleGiveZeroAndWriteNothing) {
  for (const number_setting &setting : numbers()) {
    int32_t out = 4711;
    EXPECT_EQ(0, setting.get(nullptr, &out)) << setting.path;
    EXPECT_EQ(4711, out) << setting.path;
    EXPECT_EQ(0, setting.set(nullptr, 1)) << setting.path;
  }
  for (const text_setting &setting : texts) {
    char untouched = 'u';
    char *out = &untouched;
    EXPECT_EQ(0, setting.get(nullptr, &out)) << setting.path;
    EXPECT_EQ(&untouched, out) << setting.path;
    EXPECT_EQ(0, setting.set(nullptr, "x")) << setting.path;
  }
}

TEST_F(System, GettersWithNowhereToWriteGiveZero) {
  for (const number_setting &setting : numbers()) {
    set(map_at(parent_of(setting.path)), key_of(setting.path).c_str(), 5);
    EXPECT_EQ(0, setting.get(store, nullptr)) << setting.path;
  }
  for (const text_setting &setting : texts) {
    set(map_at(parent_of(setting.path)), key_of(setting.path).c_str(), "x");
    EXPECT_EQ(0, setting.get(store, nullptr)) << setting.path;
  }
}

TEST_F(System, GettersReadTheirDocumentedPaths) {
  int32_t next = 100;
  for (const number_setting &setting : numbers())
    set(map_at(parent_of(setting.path)), key_of(setting.path).c_str(), next++);
  for (const text_setting &setting : texts)
    set(map_at(parent_of(setting.path)), key_of(setting.path).c_str(), setting.path);
  commit_and_reopen();
  next = 100;
  for (const number_setting &setting : numbers()) expect_reads(setting, next++);
  for (const text_setting &setting : texts) expect_reads(setting, setting.path);
}

TEST_F(System, SettingTheHostNameOfAnEmptyStoreCreatesSystemAndStoresTheName) {
  EXPECT_EQ(1, cfg_system_set_hostname(store, "bellrig"));
  EXPECT_EQ(R"({system={hostname="bellrig"}})", dump(""));
  expect_reads(texts[0], "bellrig");
  commit_and_reopen();
  expect_reads(texts[0], "bellrig");
}

TEST_F(System, EverySettingUnderSystemCreatesSystem) {
  for (const number_setting &setting : under_system) {
    EXPECT_EQ(1, setting.set(store, 30)) << setting.path;
    EXPECT_EQ("{system={" + key_of(setting.path) + "=30}}", dump(""));
    cfg_abandon(store);
  }
  for (const text_setting &setting : texts) {
    EXPECT_EQ(1, setting.set(store, "t")) << setting.path;
    EXPECT_EQ("{system={" + key_of(setting.path) + "=\"t\"}}", dump(""));
    cfg_abandon(store);
  }
}

TEST_F(System, SettersKeepWhatStandsBesideThem) {
  set(map_at("system"), "other", "kept");
  EXPECT_EQ(1, cfg_system_set_hostname(store, "a"));
  EXPECT_EQ(1, cfg_system_set_timezone(store, "Europe/Vienna"));
  EXPECT_EQ(1, cfg_system_set_webui_session_timeout(store, 1));
  EXPECT_EQ(1, cfg_system_set_cli_session_timeout(store, 2));
  EXPECT_EQ(1, cfg_system_set_hostname(store, "b"));
  EXPECT_EQ(
      R"({cli_session_timeout=2 hostname="b" other="kept" timezone="Europe/Vienna" webui_session_timeout=1})",
      dump("system"));
}

TEST_F(System, SettersReplaceAValueOfAnotherKind) {
  set(map_at("system"), "hostname", 7);
  EXPECT_EQ(1, cfg_system_set_hostname(store, "a"));
  expect_reads(texts[0], "a");
}

TEST_F(System, StringSettersRefuseNullAndChangeNothing) {
  for (const text_setting &setting : texts) {
    EXPECT_EQ(0, setting.set(store, nullptr)) << setting.path;
    EXPECT_EQ("{}", dump(""));
  }
  set(map_at("system"), "hostname", "kept");
  EXPECT_EQ(0, cfg_system_set_hostname(store, nullptr));
  expect_reads(texts[0], "kept");
}

TEST_F(System, StringSettersStoreTheEmptyTextAsItIs) {
  for (const text_setting &setting : texts) {
    EXPECT_EQ(1, setting.set(store, "")) << setting.path;
    expect_reads(setting, "");
  }
}

TEST_F(System, IntegerSettersStoreEveryValue) {
  map_at("system.net");
  map_at("services.fhvpn.server");
  for (const int32_t value : {0, -1, 1, INT32_MIN, INT32_MAX})
    for (const number_setting &setting : numbers()) {
      EXPECT_EQ(1, setting.set(store, value)) << setting.path;
      expect_reads(setting, value);
    }
}

TEST_F(System, TheFirstIntervalOfAnEmptyStoreCreatesOneRootKeyWithADotAndTheOtherIsAddedBesideIt) {
  EXPECT_EQ(1, cfg_system_set_ping_interval(store, 60));
  EXPECT_EQ("{system.third_party={ping_interval=60}}", dump(""));
  EXPECT_EQ(1, cfg_system_set_sync_interval(store, 3600));
  EXPECT_EQ("{system.third_party={ping_interval=60 sync_interval=3600}}", dump(""));
  expect_reads(third_party[0], 60);
  expect_reads(third_party[1], 3600);
  commit_and_reopen();
  expect_reads(third_party[0], 60);
  expect_reads(third_party[1], 3600);
  EXPECT_EQ(1, cfg_system_set_ping_interval(store, 61));
  EXPECT_EQ("{system.third_party={ping_interval=61 sync_interval=3600}}", dump(""));
}

TEST_F(System, TheIntervalsGoUnderTheRootKeyAlsoWhenSystemIsThere) {
  EXPECT_EQ(1, cfg_system_set_hostname(store, "h"));
  EXPECT_EQ(1, cfg_system_set_sync_interval(store, 5));
  EXPECT_EQ(R"({system={hostname="h"} system.third_party={sync_interval=5}})", dump(""));
  commit_and_reopen();
  expect_reads(third_party[1], 5);
  expect_reads(texts[0], "h");
  // A map "system" that comes later does not hide them either.
  EXPECT_EQ(1, cfg_system_set_timezone(store, "UTC"));
  expect_reads(third_party[1], 5);
}

TEST_F(System, TheIntervalsUseAMapThirdPartyInsideSystemWhenThereIsOne) {
  map_at("system.third_party");
  EXPECT_EQ(1, cfg_system_set_ping_interval(store, 9));
  EXPECT_EQ("{system={third_party={ping_interval=9}}}", dump(""));
  expect_reads(third_party[0], 9);
}

TEST_F(System, SshPortAndVpnMtuNeedTheirMapsAndCreateNothing) {
  for (const number_setting &setting : need_their_map) {
    EXPECT_EQ(0, setting.set(store, 22)) << setting.path;
    EXPECT_EQ("{}", dump("")) << setting.path;
  }
  map_at("system");
  map_at("services.fhvpn");
  const std::string before = dump("");
  for (const number_setting &setting : need_their_map) {
    EXPECT_EQ(0, setting.set(store, 22)) << setting.path;
    EXPECT_EQ(before, dump("")) << setting.path;
  }
  map_at("system.net");
  map_at("services.fhvpn.server");
  for (const number_setting &setting : need_their_map) {
    EXPECT_EQ(1, setting.set(store, 22)) << setting.path;
    expect_reads(setting, 22);
  }
}

TEST_F(System, SettersFailWhereTheParentIsNoMap) {
  set(map_at(""), "system", "text");
  set(map_at(""), "system.third_party", 1);
  const std::string before = dump("");
  for (const number_setting &setting : numbers()) EXPECT_EQ(0, setting.set(store, 1)) << setting.path;
  for (const text_setting &setting : texts) EXPECT_EQ(0, setting.set(store, "x")) << setting.path;
  EXPECT_EQ(before, dump(""));
}

TEST_F(System, SettersOfAReadOnlyHandleGiveZero) {
  map_at("system.net");
  map_at("services.fhvpn.server");
  commit();
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  for (const number_setting &setting : numbers()) EXPECT_EQ(0, setting.set(reader.get(), 1)) << setting.path;
  for (const text_setting &setting : texts) EXPECT_EQ(0, setting.set(reader.get(), "x")) << setting.path;
}

TEST_F(System, SettersChangeTheEditAndNothingElseUntilItIsCommitted) {
  EXPECT_EQ(1, cfg_system_set_hostname(store, "a"));
  const records::store_handle other = open();
  char *out = nullptr;
  EXPECT_EQ(0, cfg_system_get_hostname(other.get(), &out));
  commit();
  ASSERT_EQ(1, cfg_refresh(other.get()));
  ASSERT_EQ(1, cfg_system_get_hostname(other.get(), &out));
  EXPECT_STREQ("a", heap_text(out).get());
}

TEST_F(System, FailuresAddNoMessageToTheStore) {
  int32_t out = 0;
  cfg_system_set_hostname(store, nullptr);
  cfg_net_set_ssh_port(store, 1);
  cfg_system_set_fhvpn_mtu(store, 1);
  cfg_system_get_fhvpn_mtu(store, &out);
  EXPECT_EQ(0, cfg_get_message_count(store));
}

}  // namespace
