// Remote authentication servers.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

struct server_list {
  const char *map;
  const char *key;
  int32_t (*count)(const cfg_auth *) noexcept;
  cfg_auth_server *(*get)(const cfg_auth *, int32_t) noexcept;
};
const server_list lists[] = {
    {"radius", "authenticationServers", cfg_auth_get_radiusAuthenticationServerCount,
     cfg_auth_get_radiusAuthenticationServer},
    {"radius", "accountingServers", cfg_auth_get_radiusAccountingServerCount,
     cfg_auth_get_radiusAccountingServer},
    {"tacacs", "authenticationServers", cfg_auth_get_tacacsAuthenticationServerCount,
     cfg_auth_get_tacacsAuthenticationServer},
    {"ldap", "authenticationServers", cfg_auth_get_ldapAuthenticationServerCount,
     cfg_auth_get_ldapAuthenticationServer},
};

class AuthServer : public records::AccessTest, public testing::WithParamInterface<server_list> {
 protected:
  void SetUp() override {
    AccessTest::SetUp();
    map_at("auth");
  }
  std::string path() const { return std::string("auth.") + GetParam().map + "." + GetParam().key; }
  cfg_elem *parent() { return map_at(std::string("auth.") + GetParam().map); }
  cfg_elem *add_server(const char *hostname, int32_t port = 0) {
    cfg_elem *elem = entry_of(path());
    if (hostname != nullptr) set(elem, "hostname", hostname);
    if (port != 0) set(elem, "port", port);
    return elem;
  }
  owned<cfg_auth> load() { return owned<cfg_auth>(cfg_get_auth(store)); }
  owned<cfg_auth_server> server(const owned<cfg_auth> &auth, int32_t index = 0) {
    return owned<cfg_auth_server>(GetParam().get(auth.get(), index));
  }
};
INSTANTIATE_TEST_SUITE_P(Of, AuthServer, testing::ValuesIn(lists), [](const auto &tested) {
  return std::string(tested.param.map) + "_" + tested.param.key;
});

TEST_P(AuthServer, AreCountedAndReadInListOrder) {
  add_server("one", 49);
  add_server("two");
  commit_and_reopen();
  const auto auth = load();
  EXPECT_EQ(2, GetParam().count(auth.get()));
  const auto one = server(auth, 0), two = server(auth, 1);
  EXPECT_STREQ("one", cfg_auth_get_server_hostname(one.get()));
  EXPECT_EQ(49, cfg_auth_get_server_port(one.get()));
  EXPECT_STREQ("two", cfg_auth_get_server_hostname(two.get()));
  EXPECT_EQ(0, cfg_auth_get_server_port(two.get()));
  EXPECT_EQ(std::string("auth_") + GetParam().map + "_" + GetParam().key + "-2",
            cfg_auth_get_server_uuid(two.get()));
  for (const int32_t outside : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, server(auth, outside)) << outside;
}

TEST_P(AuthServer, OnesOfOtherListsAreNotAmongThem) {
  for (const server_list &list : lists)
    set(entry_of(std::string("auth.") + list.map + "." + list.key), "hostname",
        (std::string(list.map) + list.key).c_str());
  const auto auth = load();
  EXPECT_EQ(1, GetParam().count(auth.get()));
  EXPECT_EQ(std::string(GetParam().map) + GetParam().key, cfg_auth_get_server_hostname(server(auth).get()));
}

TEST_P(AuthServer, WithoutTheListThereAreNone) {
  EXPECT_EQ(0, GetParam().count(load().get()));
  set(parent(), GetParam().key, "no list");
  EXPECT_EQ(0, GetParam().count(load().get()));
  EXPECT_EQ(nullptr, server(load()));
  EXPECT_EQ(0, GetParam().count(nullptr));
  EXPECT_EQ(nullptr, GetParam().get(nullptr, 0));
}

TEST_P(AuthServer, OneThatIsGoneSinceTheSettingsWereReadCannotBeRead) {
  cfg_elem *elem = add_server("one");
  const auto auth = load();
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(1, GetParam().count(auth.get()));
  EXPECT_EQ(nullptr, server(auth));
}

TEST_P(AuthServer, OutlivesTheSettings) {
  add_server("one");
  auto auth = load();
  const auto one = server(auth);
  const std::string id = cfg_auth_get_server_uuid(one.get());
  auth.reset();
  EXPECT_EQ(id, cfg_auth_get_server_uuid(one.get()));
  EXPECT_EQ(1, cfg_auth_update_server(one.get(), 1));
}

TEST_P(AuthServer, ValuesOfAnotherKindReadAsNothing) {
  cfg_elem *elem = add_server("one", 1);
  set(elem, "hostname", 5);
  set(elem, "port", "no number");
  const auto one = server(load());
  ASSERT_NE(nullptr, one);
  EXPECT_EQ(nullptr, cfg_auth_get_server_hostname(one.get()));
  EXPECT_EQ(0, cfg_auth_get_server_port(one.get()));
}

TEST_P(AuthServer, IsCreatedAsAPendingEntryThatTheListsShowAfterTheCommit) {
  const auto auth = load();
  ASSERT_EQ(1, cfg_auth_create_server(auth.get(), parent(), GetParam().key, "new", 1812, 0));
  ASSERT_EQ(1, cfg_auth_create_server(auth.get(), parent(), GetParam().key, "other", 1812, 1));
  EXPECT_EQ("[+{hostname=\"new\" port=1812} +{hostname=\"other\"}]", dump(path()));
  EXPECT_EQ(0, GetParam().count(auth.get()));
  EXPECT_EQ(0, GetParam().count(load().get()));
  commit();
  EXPECT_EQ(2, GetParam().count(load().get()));
  EXPECT_STREQ("new", cfg_auth_get_server_hostname(server(load()).get()));
}

TEST_P(AuthServer, IsCreatedInTheListThatIsThere) {
  add_server("one");
  commit();
  ASSERT_EQ(1, cfg_auth_create_server(load().get(), parent(), GetParam().key, "new", 0, 0));
  EXPECT_EQ("[{hostname=\"one\"} +{hostname=\"new\" port=0}]", dump(path()));
}

TEST_P(AuthServer, TheListCanBeNamedByItsPathBelowTheParent) {
  add_server("one");
  commit();
  const std::string key = std::string(GetParam().map) + "." + GetParam().key;
  ASSERT_EQ(1, cfg_auth_create_server(load().get(), map_at("auth"), key.c_str(), "new", 0, 1));
  EXPECT_EQ("[{hostname=\"one\"} +{hostname=\"new\"}]", dump(path()));
}

TEST_P(AuthServer, AListThatIsMadeUnderItsPathIsReadByIt) {
  const std::string key = std::string(GetParam().map) + "." + GetParam().key;
  ASSERT_EQ(1, cfg_auth_create_server(load().get(), map_at("auth"), key.c_str(), "new", 0, 1));
  commit_and_reopen();
  EXPECT_STREQ("new", cfg_auth_get_server_hostname(server(load()).get()));
}

TEST_P(AuthServer, AListThatIsMadeUnderItsPathIsStillReadWhenTheProtocolGetsItsMap) {
  const std::string key = std::string(GetParam().map) + "." + GetParam().key;
  ASSERT_EQ(1, cfg_auth_create_server(load().get(), map_at("auth"), key.c_str(), "new", 0, 1));
  ASSERT_EQ(1, cfg_auth_update(load().get()));
  ASSERT_NE(nullptr, cfg_simple_get_mapelem(store, map_at("auth"), GetParam().map));
  commit_and_reopen();
  EXPECT_EQ(1, GetParam().count(load().get()));
}

TEST_P(AuthServer, CannotBeCreatedWithoutItsParts) {
  const auto auth = load();
  const char *key = GetParam().key;
  EXPECT_EQ(0, cfg_auth_create_server(nullptr, parent(), key, "new", 1, 0));
  EXPECT_EQ(0, cfg_auth_create_server(auth.get(), nullptr, key, "new", 1, 0));
  EXPECT_EQ(0, cfg_auth_create_server(auth.get(), parent(), nullptr, "new", 1, 0));
  EXPECT_EQ(0, cfg_auth_create_server(auth.get(), parent(), key, nullptr, 1, 0));
  EXPECT_EQ(0, cfg_auth_create_server(auth.get(), parent(), key, "", 1, 0));
  EXPECT_EQ("none", dump(path()));
  EXPECT_EQ(0, cfg_auth_create_server(auth.get(), parent(), key, records::unwritable().c_str(), 1, 0));
  EXPECT_EQ("[]", dump(path())) << "nothing half written is appended";
}

TEST_P(AuthServer, UpdatingWritesHostNameAndPort) {
  add_server("one", 1);
  commit_and_reopen();
  const auto one = server(load());
  EXPECT_EQ(1, cfg_auth_set_server_hostname(one.get(), "other"));
  EXPECT_EQ(1, cfg_auth_set_server_port(one.get(), -5));
  EXPECT_EQ(-5, cfg_auth_get_server_port(one.get()));
  EXPECT_EQ(1, cfg_auth_update_server(one.get(), 0));
  EXPECT_EQ("[{hostname=\"other\" port=-5}]", dump(path()));
}

TEST_P(AuthServer, UpdatingWithoutThePortDeletesIt) {
  add_server("one", 1);
  add_server("two");
  commit_and_reopen();
  const auto auth = load();
  EXPECT_EQ(1, cfg_auth_update_server(server(auth, 0).get(), 1));
  EXPECT_EQ(1, cfg_auth_update_server(server(auth, 1).get(), 1)) << "it has none";
  EXPECT_EQ("[{hostname=\"one\"} {hostname=\"two\"}]", dump(path()));
}

TEST_P(AuthServer, AnUpdateCountsWhenEitherOfTheTwoWasWritten) {
  add_server("one", 1);
  commit_and_reopen();
  const auto one = server(load());
  ASSERT_EQ(1, cfg_auth_set_server_hostname(one.get(), records::unwritable().c_str()));
  ASSERT_EQ(1, cfg_auth_set_server_port(one.get(), 2));
  EXPECT_EQ(1, cfg_auth_update_server(one.get(), 0));
  EXPECT_EQ("[{hostname=\"one\" port=2}]", dump(path()));
  EXPECT_EQ(0, cfg_auth_update_server(one.get(), 1));
  EXPECT_EQ("[{hostname=\"one\"}]", dump(path())) << "the port is deleted all the same";
}

TEST_P(AuthServer, AHostNameThatIsClearedIsDeleted) {
  add_server("one", 1);
  const auto one = server(load());
  EXPECT_EQ(1, cfg_auth_set_server_hostname(one.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_auth_get_server_hostname(one.get()));
  EXPECT_EQ(1, cfg_auth_update_server(one.get(), 0));
  EXPECT_EQ("[{port=1}]", dump(path()));
}

TEST_P(AuthServer, DeletingRemovesTheElement) {
  add_server("one");
  add_server("two");
  commit_and_reopen();
  const auto one = server(load());
  EXPECT_EQ(1, cfg_auth_delete_server(one.get()));
  EXPECT_EQ("[{hostname=\"two\"}]", dump(path()));
  EXPECT_EQ(0, cfg_auth_delete_server(one.get()));
  EXPECT_EQ(0, cfg_auth_update_server(one.get(), 0));
  EXPECT_STREQ("one", cfg_auth_get_server_hostname(one.get()));
}

TEST(AuthServerNull, GivesNothing) {
  EXPECT_EQ(nullptr, cfg_auth_get_server_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_auth_get_server_hostname(nullptr));
  EXPECT_EQ(0, cfg_auth_get_server_port(nullptr));
  EXPECT_EQ(0, cfg_auth_set_server_hostname(nullptr, "x"));
  EXPECT_EQ(0, cfg_auth_set_server_port(nullptr, 1));
  EXPECT_EQ(0, cfg_auth_update_server(nullptr, 0));
  EXPECT_EQ(0, cfg_auth_delete_server(nullptr));
  cfg_auth_server_free(nullptr);
}

}  // namespace
