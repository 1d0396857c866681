#include <twobject/ntp.h>

#include "records/store_fixture.hpp"

namespace {

using records::heap_text;

struct free_ntp {
  void operator()(cfg_ntp *ntp) const { cfg_ntp_free(ntp); }
};
using ntp_record = std::unique_ptr<cfg_ntp, free_ntp>;

class Ntp : public records::StoreTest {
 protected:
  // Settings with servers, committed.
  void add_settings(std::initializer_list<const char *> servers) {
    set_bool(map_at("services.ntp"), "enabled", true);
    cfg_elem *list = list_at("services.ntp.servers");
    for (const char *server : servers) add(list, server);
    commit_and_reopen();
  }
  ntp_record load() { return ntp_record(cfg_get_ntp(store)); }
  std::string server(cfg_ntp *ntp, int32_t index) {
    const heap_text text(cfg_get_ntp_server_value(ntp, index));
    return text ? text.get() : "NULL";
  }
};

void expect_empty(const cfg_ntp *ntp) {
  ASSERT_NE(nullptr, ntp);
  EXPECT_EQ(nullptr, cfg_get_ntp_id(ntp));
  EXPECT_EQ(0, cfg_get_ntp_enabled(ntp));
  EXPECT_EQ(0, cfg_get_ntp_server_count(ntp));
}

TEST_F(Ntp, ANewRecordAndOneOfAStoreWithoutSettingsAreEmpty) {
  expect_empty(ntp_record(cfg_new_ntp(store)).get());
  expect_empty(load().get());
  EXPECT_EQ("{}", dump(""));
}

TEST_F(Ntp, ALoadReadsTheSwitchAndTheServersIds) {
  add_settings({"a.example", "10.0.0.1"});
  const ntp_record ntp = load();
  EXPECT_STREQ("services.ntp", cfg_get_ntp_id(ntp.get()));
  EXPECT_EQ(1, cfg_get_ntp_enabled(ntp.get()));
  EXPECT_EQ(2, cfg_get_ntp_server_count(ntp.get()));
  EXPECT_STREQ("services_ntp_servers-1", cfg_get_ntp_server_uuid(ntp.get(), 0));
  EXPECT_STREQ("services_ntp_servers-2", cfg_get_ntp_server_uuid(ntp.get(), 1));
  EXPECT_EQ("a.example", server(ntp.get(), 0));
  EXPECT_EQ("10.0.0.1", server(ntp.get(), 1));
}

TEST_F(Ntp, SettingsWithoutSwitchOrServersLoad) {
  map_at("services.ntp");
  commit_and_reopen();
  const ntp_record ntp = load();
  EXPECT_STREQ("services.ntp", cfg_get_ntp_id(ntp.get()));
  EXPECT_EQ(0, cfg_get_ntp_enabled(ntp.get()));
  EXPECT_EQ(0, cfg_get_ntp_server_count(ntp.get()));
}

TEST_F(Ntp, EverythingTakesNull) {
  EXPECT_EQ(nullptr, cfg_get_ntp_id(nullptr));
  EXPECT_EQ(0, cfg_get_ntp_enabled(nullptr));
  cfg_set_ntp_enabled(nullptr, 1);
  EXPECT_EQ(0, cfg_get_ntp_server_count(nullptr));
  EXPECT_EQ(nullptr, cfg_get_ntp_server_uuid(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_get_ntp_server_value(nullptr, 0));
  EXPECT_EQ(0, cfg_set_ntp_server_value(nullptr, 0, "a"));
  EXPECT_EQ(0, cfg_delete_ntp_server(nullptr, 0));
  EXPECT_EQ(0, cfg_create_ntp_server(nullptr, "a"));
  EXPECT_EQ(0, cfg_ntp_save(nullptr));
  cfg_ntp_free(nullptr);
}

TEST_F(Ntp, TheSwitchIsKeptAsItIsSetAndSavedAsATruthValue) {
  add_settings({});
  const ntp_record ntp = load();
  cfg_set_ntp_enabled(ntp.get(), 0);
  EXPECT_EQ(1, cfg_ntp_save(ntp.get()));
  EXPECT_EQ("false", dump("services.ntp.enabled"));
  cfg_set_ntp_enabled(ntp.get(), -7);
  EXPECT_EQ(-7, cfg_get_ntp_enabled(ntp.get()));
  EXPECT_EQ(1, cfg_ntp_save(ntp.get()));
  EXPECT_EQ("true", dump("services.ntp.enabled"));
}

TEST_F(Ntp, TheFirstSaveMakesTheMapWithoutServersAndTheRecordStaysWithoutId) {
  map_at("services");
  const ntp_record ntp = load();
  cfg_set_ntp_enabled(ntp.get(), 1);
  EXPECT_EQ(1, cfg_ntp_save(ntp.get()));
  EXPECT_EQ("{ntp={enabled=true}}", dump("services"));
  EXPECT_EQ(nullptr, cfg_get_ntp_id(ntp.get()));
}

TEST_F(Ntp, ARecordWithoutIdMakesTheMapAnewWithEachSave) {
  map_at("services");
  const ntp_record ntp = load();
  EXPECT_EQ(1, cfg_ntp_save(ntp.get()));
  list_at("services.ntp.servers");
  cfg_set_ntp_enabled(ntp.get(), 1);
  EXPECT_EQ(1, cfg_ntp_save(ntp.get()));
  EXPECT_EQ("{ntp={enabled=true}}", dump("services"));
}

TEST_F(Ntp, WithoutServicesASaveFails) {
  const ntp_record ntp = load();
  EXPECT_EQ(0, cfg_ntp_save(ntp.get()));
  EXPECT_EQ("{}", dump(""));
}

TEST_F(Ntp, SavingSettingsThatAreGoneFails) {
  add_settings({});
  const ntp_record ntp = load();
  erase(map_at("services"), "ntp");
  EXPECT_EQ(0, cfg_ntp_save(ntp.get()));
}

TEST_F(Ntp, AServersTextIsReplacedInTheStoreAtOnce) {
  add_settings({"a", "b"});
  const ntp_record ntp = load();
  EXPECT_EQ(1, cfg_set_ntp_server_value(ntp.get(), 1, "new"));
  EXPECT_EQ("[\"a\" \"new\"]", dump("services.ntp.servers"));
  EXPECT_EQ("new", server(ntp.get(), 1));
}

TEST_F(Ntp, ADeletedServerIsGoneFromTheStoreAndItsIdStaysInTheRecord) {
  add_settings({"a", "b"});
  const ntp_record ntp = load();
  EXPECT_EQ(1, cfg_delete_ntp_server(ntp.get(), 0));
  EXPECT_EQ("[\"b\"]", dump("services.ntp.servers"));
  EXPECT_EQ("NULL", server(ntp.get(), 0));
  EXPECT_EQ(0, cfg_delete_ntp_server(ntp.get(), 0));
  EXPECT_EQ(0, cfg_set_ntp_server_value(ntp.get(), 0, "new"));
  EXPECT_EQ(2, cfg_get_ntp_server_count(ntp.get()));
  EXPECT_STREQ("services_ntp_servers-1", cfg_get_ntp_server_uuid(ntp.get(), 0));
}

TEST_F(Ntp, ANewServerIsPendingAndCountsAfterTheCommit) {
  add_settings({"a"});
  const ntp_record ntp = load();
  EXPECT_EQ(1, cfg_create_ntp_server(ntp.get(), "b"));
  EXPECT_EQ("[\"a\" +\"b\"]", dump("services.ntp.servers"));
  EXPECT_EQ(1, cfg_get_ntp_server_count(load().get()));
  commit();
  EXPECT_EQ(2, cfg_get_ntp_server_count(load().get()));
  EXPECT_EQ(1, cfg_get_ntp_server_count(ntp.get()));
}

TEST_F(Ntp, TheFirstServerMakesTheList) {
  map_at("services.ntp");
  const ntp_record ntp = load();
  EXPECT_EQ(1, cfg_create_ntp_server(ntp.get(), "a"));
  EXPECT_EQ("{servers=[+\"a\"]}", dump("services.ntp"));
}

TEST_F(Ntp, AServerThatCannotBeAppendedChangesNothing) {
  const ntp_record ntp = load();
  EXPECT_EQ(1, cfg_create_ntp_server(ntp.get(), "a"));
  EXPECT_EQ("{}", dump(""));
  map_at("services.ntp");
  EXPECT_EQ(1, cfg_create_ntp_server(ntp.get(), nullptr));
  EXPECT_EQ("{servers=[]}", dump("services.ntp"));
}

}  // namespace
