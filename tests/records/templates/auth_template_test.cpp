// Templates that carry authentication settings.
#include "template_fixture.hpp"

namespace {

using records::template_record;

struct free_server {
  void operator()(cfg_auth_server *server) const { cfg_auth_server_free(server); }
};
using server_record = std::unique_ptr<cfg_auth_server, free_server>;

struct Field {
  const char *map;
  const char *key;
  int (*set)(cfg_auth *, const char *);
  const char *(*get)(const cfg_auth *);
};
// In the order in which they are written.
const Field fields[] = {
    {"tacacs", "password", cfg_auth_set_tacacsPassword, cfg_auth_get_tacacsPassword},
    {"tacacs", "method", cfg_auth_set_tacacsMethod, cfg_auth_get_tacacsMethod},
    {"tacacs", "service", cfg_auth_set_tacacsService, cfg_auth_get_tacacsService},
    {"radius", "password", cfg_auth_set_radiusPassword, cfg_auth_get_radiusPassword},
    {"ldap", "baseDN", cfg_auth_set_ldapBaseDN, cfg_auth_get_ldapBaseDN},
    {"ldap", "bindDN", cfg_auth_set_ldapBindDN, cfg_auth_get_ldapBindDN},
    {"ldap", "usernameAttribute", cfg_auth_set_ldapUsernameAttribute, cfg_auth_get_ldapUsernameAttribute},
    {"ldap", "groupMembershipAttribute", cfg_auth_set_ldapGroupMembershipAttribute,
     cfg_auth_get_ldapGroupMembershipAttribute},
    {"ldap", "bindPassword", cfg_auth_set_ldapBindPassword, cfg_auth_get_ldapBindPassword},
};

std::string value_of(const Field &field) { return std::string(field.map) + "'s " + field.key; }

class AuthTemplate : public records::TemplateTest {
 protected:
  void SetUp() override {
    TemplateTest::SetUp();
    list_at("templates");
  }
  template_record fresh_auth() { return fresh("logins", CFG_TEMPLATE_AUTH); }
  template_record full() {
    template_record record = fresh_auth();
    cfg_auth *auth = cfg_template_get_auth(record.get());
    EXPECT_EQ(1, cfg_auth_set_mode(auth, "the mode"));
    for (const Field &field : fields) EXPECT_EQ(1, field.set(auth, value_of(field).c_str())) << field.key;
    return record;
  }
  cfg_elem *elem_of(const template_record &record) {
    return cfg_get_by_id(store, cfg_template_get_uuid(record.get()));
  }
  // A committed template with a server in each list.
  void add_full_template() {
    cfg_elem *elem = add_template("logins", "auth");
    set(elem, "auth_mode", "the mode");
    for (const char *protocol : {"tacacs", "radius", "ldap"}) {
      cfg_elem *map = child_map(elem, protocol);
      for (const Field &field : fields)
        if (std::string(protocol) == field.map) set(map, field.key, value_of(field).c_str());
      add_server(child_list(map, "authenticationServers"), protocol);
    }
    cfg_elem *accounting = child_list(cfg_get_child_by_path(store, elem, "radius"), "accountingServers");
    add_server(accounting, "first");
    add_server(accounting, "second");
    commit_and_reopen();
  }
  void add_server(cfg_elem *list, const char *hostname) {
    cfg_elem *server = cfg_new_map(store);
    set(server, "hostname", hostname);
    set(server, "port", 49);
    add(list, server);
  }
};

constexpr char all_keys[] =
    R"({auth_mode="the mode")"
    R"( ldap={baseDN="ldap's baseDN" bindDN="ldap's bindDN" bindPassword="ldap's bindPassword")"
    R"( groupMembershipAttribute="ldap's groupMembershipAttribute" usernameAttribute="ldap's usernameAttribute"})"
    R"( name="logins" radius={password="radius's password"})"
    R"( tacacs={method="tacacs's method" password="tacacs's password" service="tacacs's service"})"
    R"( template_type="auth"})";

TEST_F(AuthTemplate, IsNewWithEmptySettings) {
  const template_record record = fresh_auth();
  cfg_auth *auth = cfg_template_get_auth(record.get());
  ASSERT_NE(nullptr, auth);
  EXPECT_EQ(nullptr, cfg_auth_get_mode(auth));
  for (const Field &field : fields) EXPECT_EQ(nullptr, field.get(auth)) << field.key;
  EXPECT_EQ(0, cfg_auth_get_radiusAuthenticationServerCount(auth));
  EXPECT_EQ(auth, cfg_template_get_auth(record.get()));
}

TEST_F(AuthTemplate, OnlyATemplateOfThatTypeHasSettings) {
  for (const int32_t type : {0, 1, 2, 3, 5, 6}) {
    const template_record record = fresh("other", type);
    EXPECT_EQ(nullptr, cfg_template_get_auth(record.get())) << type;
    cfg_template_set_type(record.get(), CFG_TEMPLATE_AUTH);
    EXPECT_EQ(nullptr, cfg_template_get_auth(record.get())) << type;
    EXPECT_EQ(1, cfg_template_save(record.get()));
    EXPECT_EQ(R"({name="other" template_type="auth"})", dump(elem_of(record)));
  }
  cfg_elem *elem = add_template("other", "ports");
  set(elem, "auth_mode", "local");
  EXPECT_EQ(nullptr, cfg_template_get_auth(load(elem).get()));
}

TEST_F(AuthTemplate, IsSavedUnderItsOwnKeyOfTheModeAndThoseOfTheAppliance) {
  const template_record record = full();
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(all_keys, dump(elem_of(record)));
}

TEST_F(AuthTemplate, IsReadWithItsServers) {
  add_full_template();
  const template_record record = load("templates-1");
  cfg_auth *auth = cfg_template_get_auth(record.get());
  ASSERT_NE(nullptr, auth);
  EXPECT_STREQ("the mode", cfg_auth_get_mode(auth));
  for (const Field &field : fields) EXPECT_STREQ(value_of(field).c_str(), field.get(auth));
  EXPECT_EQ(1, cfg_auth_get_radiusAuthenticationServerCount(auth));
  EXPECT_EQ(2, cfg_auth_get_radiusAccountingServerCount(auth));
  EXPECT_EQ(1, cfg_auth_get_tacacsAuthenticationServerCount(auth));
  EXPECT_EQ(1, cfg_auth_get_ldapAuthenticationServerCount(auth));
  const server_record second(cfg_auth_get_radiusAccountingServer(auth, 1));
  EXPECT_STREQ("second", cfg_auth_get_server_hostname(second.get()));
  EXPECT_STREQ("templates-1_radius_accountingServers-2", cfg_auth_get_server_uuid(second.get()));
  const server_record ldap(cfg_auth_get_ldapAuthenticationServer(auth, 0));
  EXPECT_STREQ("ldap", cfg_auth_get_server_hostname(ldap.get()));
  EXPECT_EQ(nullptr, cfg_auth_get_ldapAuthenticationServer(auth, 1));
}

TEST_F(AuthTemplate, TheKeyOfTheAppliancesModeIsNotRead) {
  cfg_elem *elem = add_template("logins", "auth");
  set(elem, "mode", "radius");
  EXPECT_EQ(nullptr, cfg_auth_get_mode(cfg_template_get_auth(load(elem).get())));
}

TEST_F(AuthTemplate, SavedAgainUnchangedChangesNothingServersIncluded) {
  add_full_template();
  const template_record record = load("templates-1");
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(std::vector<std::string>{}, changes());
}

TEST_F(AuthTemplate, WithoutAModeWritesNothingOfTheSettings) {
  const template_record record = full();
  ASSERT_EQ(1, cfg_auth_set_mode(cfg_template_get_auth(record.get()), nullptr));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="logins" template_type="auth"})", dump(elem_of(record)));
}

TEST_F(AuthTemplate, AModeThatIsClearedStaysStoredWithAllElse) {
  const template_record record = full();
  ASSERT_EQ(1, cfg_template_save(record.get()));
  cfg_auth *auth = cfg_template_get_auth(record.get());
  cfg_auth_set_mode(auth, "");
  cfg_auth_set_radiusPassword(auth, "new");
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(all_keys, dump(elem_of(record)));
}

TEST_F(AuthTemplate, AModeThatTheStoreDoesNotTakeLeavesTheMapsUntouched) {
  const template_record record = full();
  cfg_auth_set_mode(cfg_template_get_auth(record.get()), records::unwritable().c_str());
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="logins" template_type="auth"})", dump(elem_of(record)));
}

TEST_F(AuthTemplate, EndsAtTheFirstValueThatTheStoreDoesNotTake) {
  for (const Field &failing : fields) {
    const template_record record = full();
    cfg_auth *auth = cfg_template_get_auth(record.get());
    ASSERT_EQ(1, failing.set(auth, records::unwritable().c_str()));
    EXPECT_EQ(1, cfg_template_save(record.get()));
    bool before = true;
    for (const Field &field : fields) {
      before = before && &field != &failing;
      const std::string path = std::string(field.map) + "." + field.key;
      EXPECT_EQ(before, cfg_get_child_by_path(store, elem_of(record), path.c_str()) != nullptr)
          << path << " behind " << failing.key;
    }
  }
}

TEST_F(AuthTemplate, AFieldThatIsClearedLosesItsKeyAndNoMapGoes) {
  const template_record record = full();
  ASSERT_EQ(1, cfg_template_save(record.get()));
  for (const Field &field : fields) field.set(cfg_template_get_auth(record.get()), nullptr);
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({auth_mode="the mode" ldap={} name="logins" radius={} tacacs={} template_type="auth"})",
            dump(elem_of(record)));
}

TEST_F(AuthTemplate, SomethingElseInThePlaceOfAMapEndsTheSave) {
  const template_record record = full();
  ASSERT_EQ(1, cfg_template_save(record.get()));
  cfg_elem *elem = elem_of(record);
  for (const char *key : {"radius", "ldap"}) erase(elem, key);
  set(elem, "radius", "no map");
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ("none", dump(cfg_get_child_by_path(store, elem, "ldap")));
  EXPECT_EQ("\"no map\"", dump(cfg_get_child_by_path(store, elem, "radius")));
}

TEST_F(AuthTemplate, IsReadWhateverItsKeysHold) {
  cfg_elem *elem = add_template("logins", "auth");
  set(elem, "auth_mode", 7);
  set(elem, "tacacs", "no map");
  set(child_map(elem, "radius"), "password", 8);
  set(child_map(elem, "ldap"), "authenticationServers", "no list");
  const template_record record = load(elem);
  const cfg_auth *auth = cfg_template_get_auth(record.get());
  ASSERT_NE(nullptr, auth);
  EXPECT_EQ(nullptr, cfg_auth_get_mode(auth));
  for (const Field &field : fields) EXPECT_EQ(nullptr, field.get(auth)) << field.key;
  EXPECT_EQ(0, cfg_auth_get_ldapAuthenticationServerCount(auth));
}

TEST_F(AuthTemplate, ServersAreAddedBelowItsMapAndReadAfterTheCommit) {
  const template_record record = full();
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  cfg_auth *auth = cfg_template_get_auth(record.get());
  cfg_elem *elem = elem_of(record);
  cfg_elem *radius = cfg_get_child_by_path(store, elem, "radius");
  EXPECT_EQ(1, cfg_auth_create_server(auth, radius, "accountingServers", "a.example", 1813, 0));
  EXPECT_EQ(1, cfg_auth_create_server(auth, elem, "radius.accountingServers", "b.example", 0, 1));
  EXPECT_EQ(0, cfg_auth_get_radiusAccountingServerCount(cfg_template_get_auth(load(elem).get())));
  commit();
  const template_record again = load("templates-1");
  cfg_auth *read = cfg_template_get_auth(again.get());
  ASSERT_EQ(2, cfg_auth_get_radiusAccountingServerCount(read));
  server_record first(cfg_auth_get_radiusAccountingServer(read, 0));
  EXPECT_STREQ("a.example", cfg_auth_get_server_hostname(first.get()));
  EXPECT_EQ(1813, cfg_auth_get_server_port(first.get()));
  EXPECT_EQ(1, cfg_auth_delete_server(first.get()));
  EXPECT_EQ(1, cfg_auth_get_radiusAccountingServerCount(cfg_template_get_auth(load("templates-1").get())));
}

TEST_F(AuthTemplate, AListThatIsMadeUnderItsPathIsReadBesideTheProtocolsMap) {
  template_record record = full();
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  cfg_elem *elem = elem_of(record);
  ASSERT_EQ("{password=\"radius's password\"}", dump(cfg_get_child_by_path(store, elem, "radius")));
  EXPECT_EQ(1, cfg_auth_create_server(cfg_template_get_auth(record.get()), elem, "radius.accountingServers",
                                      "a.example", 1813, 0));
  record.reset();
  commit_and_reopen();
  const template_record again = load("templates-1");
  const cfg_auth *read = cfg_template_get_auth(again.get());
  ASSERT_EQ(1, cfg_auth_get_radiusAccountingServerCount(read));
  const server_record server(cfg_auth_get_radiusAccountingServer(read, 0));
  EXPECT_STREQ("a.example", cfg_auth_get_server_hostname(server.get()));
  EXPECT_STREQ("radius's password", cfg_auth_get_radiusPassword(read));
}

TEST_F(AuthTemplate, TheAppliancesOwnSettingsAreAnotherThing) {
  const template_record record = full();
  ASSERT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ("none", dump("auth"));
}

TEST_F(AuthTemplate, CanBeWrittenToAnyMapAndReadFromIt) {
  cfg_elem *map = map_at("elsewhere");
  EXPECT_EQ(1, cfg_auth_save_to_config(full().get(), map));
  const template_record other = fresh("other", CFG_TEMPLATE_DUMMY);
  EXPECT_EQ(1, cfg_auth_load_from_config(other.get(), map));
  EXPECT_STREQ("the mode", cfg_auth_get_mode(cfg_template_get_auth(other.get())));
  EXPECT_EQ(1, cfg_auth_new_setup(other.get()));
  EXPECT_EQ(nullptr, cfg_auth_get_mode(cfg_template_get_auth(other.get())));
  EXPECT_EQ(0, cfg_auth_load_from_config(other.get(), list_at("list")));
  EXPECT_NE(nullptr, cfg_template_get_auth(other.get()));
}

TEST_F(AuthTemplate, FreeingTheTemplateLeavesTheSettings) {
  cfg_template *record = cfg_template_new(store, "logins", CFG_TEMPLATE_AUTH);
  cfg_auth *auth = cfg_template_get_auth(record);
  ASSERT_EQ(1, cfg_auth_set_ldapBindPassword(auth, "a secret"));
  cfg_template_free(record);
  EXPECT_STREQ("a secret", cfg_auth_get_ldapBindPassword(auth));
  cfg_auth_free(auth);
}

TEST_F(AuthTemplate, NullDoesNothing) {
  cfg_elem *map = map_at("elsewhere");
  const template_record record = full();
  cfg_auth *auth = cfg_template_get_auth(record.get());
  EXPECT_EQ(nullptr, cfg_template_get_auth(nullptr));
  EXPECT_EQ(0, cfg_auth_new_setup(nullptr));
  EXPECT_EQ(0, cfg_auth_load_from_config(nullptr, map));
  EXPECT_EQ(0, cfg_auth_load_from_config(record.get(), nullptr));
  EXPECT_EQ(auth, cfg_template_get_auth(record.get()));
  EXPECT_STREQ("the mode", cfg_auth_get_mode(auth));
  EXPECT_EQ(0, cfg_auth_save_to_config(nullptr, map));
  EXPECT_EQ(0, cfg_auth_save_to_config(record.get(), nullptr));
  EXPECT_EQ("{}", dump(map));
}

}  // namespace
