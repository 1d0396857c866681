// Authentication settings.
#include <algorithm>

#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

struct field {
  const char *map;  // below "auth"; "" is "auth" itself
  const char *key;
  const char *(*get)(const cfg_auth *) noexcept;
  int (*set)(cfg_auth *, const char *) noexcept;
};
const field fields[] = {
    {"", "mode", cfg_auth_get_mode, cfg_auth_set_mode},
    {"radius", "password", cfg_auth_get_radiusPassword, cfg_auth_set_radiusPassword},
    {"tacacs", "password", cfg_auth_get_tacacsPassword, cfg_auth_set_tacacsPassword},
    {"tacacs", "method", cfg_auth_get_tacacsMethod, cfg_auth_set_tacacsMethod},
    {"tacacs", "service", cfg_auth_get_tacacsService, cfg_auth_set_tacacsService},
    {"ldap", "baseDN", cfg_auth_get_ldapBaseDN, cfg_auth_set_ldapBaseDN},
    {"ldap", "bindDN", cfg_auth_get_ldapBindDN, cfg_auth_set_ldapBindDN},
    {"ldap", "usernameAttribute", cfg_auth_get_ldapUsernameAttribute, cfg_auth_set_ldapUsernameAttribute},
    {"ldap", "groupMembershipAttribute", cfg_auth_get_ldapGroupMembershipAttribute,
     cfg_auth_set_ldapGroupMembershipAttribute},
    {"ldap", "bindPassword", cfg_auth_get_ldapBindPassword, cfg_auth_set_ldapBindPassword},
};

class Auth : public records::AccessTest {
 protected:
  owned<cfg_auth> load() { return owned<cfg_auth>(cfg_get_auth(store)); }
  cfg_elem *map_of(const field &f) { return map_at(*f.map ? std::string("auth.") + f.map : "auth"); }
  static std::string value_of(const field &f) { return std::string(f.map) + " " + f.key; }
  // The settings with a value in every field.
  void seed() {
    for (const field &f : fields) set(map_of(f), f.key, value_of(f).c_str());
  }
};

constexpr char whole[] =
    "{ldap={baseDN=\"ldap baseDN\" bindDN=\"ldap bindDN\" bindPassword=\"ldap bindPassword\" "
    "groupMembershipAttribute=\"ldap groupMembershipAttribute\" usernameAttribute=\"ldap "
    "usernameAttribute\"} "
    "mode=\" mode\" radius={password=\"radius password\"} "
    "tacacs={method=\"tacacs method\" password=\"tacacs password\" service=\"tacacs service\"}}";

TEST_F(Auth, WithoutTheMapThereAreNoSettings) {
  EXPECT_EQ(nullptr, load());
  EXPECT_EQ(nullptr, cfg_get_auth(nullptr));
  set(cfg_root(store), "auth", "no map");
  EXPECT_EQ(nullptr, load());
}

TEST_F(Auth, AnEmptyMapReadsAsNothing) {
  map_at("auth");
  const auto auth = load();
  ASSERT_NE(nullptr, auth);
  for (const field &f : fields) EXPECT_EQ(nullptr, f.get(auth.get())) << value_of(f);
}

TEST_F(Auth, ReadsEveryKey) {
  seed();
  commit_and_reopen();
  const auto auth = load();
  for (const field &f : fields) EXPECT_STREQ(value_of(f).c_str(), f.get(auth.get()));
}

TEST_F(Auth, AKeyOfAnotherKindReadsAsNullAndDisturbsNoOther) {
  for (const field &wrong : fields) {
    seed();
    set(map_of(wrong), wrong.key, 5);
    const auto auth = load();
    ASSERT_NE(nullptr, auth);
    for (const field &f : fields)
      EXPECT_STREQ(&f == &wrong ? nullptr : value_of(f).c_str(), f.get(auth.get())) << value_of(wrong);
  }
  set(map_at("auth"), "radius", "no map");
  EXPECT_NE(nullptr, load());
}

TEST_F(Auth, SettersKeepACopyAndNullOrAnEmptyTextClears) {
  map_at("auth");
  const auto auth = load();
  for (const field &f : fields) {
    EXPECT_EQ(1, f.set(auth.get(), "x"));
    EXPECT_STREQ("x", f.get(auth.get())) << value_of(f);
    EXPECT_EQ(1, f.set(auth.get(), f.get(auth.get())));
    EXPECT_STREQ("x", f.get(auth.get()));
    EXPECT_EQ(1, f.set(auth.get(), nullptr));
    EXPECT_EQ(nullptr, f.get(auth.get()));
    EXPECT_EQ(1, f.set(auth.get(), "y"));
    EXPECT_EQ(1, f.set(auth.get(), ""));
    EXPECT_EQ(nullptr, f.get(auth.get()));
    EXPECT_EQ(0, f.set(nullptr, "x"));
    EXPECT_EQ(nullptr, f.get(nullptr));
  }
}

TEST_F(Auth, UpdatingWritesEveryKeyAndMakesTheMaps) {
  map_at("auth");
  const auto auth = load();
  for (const field &f : fields) ASSERT_EQ(1, f.set(auth.get(), value_of(f).c_str()));
  EXPECT_EQ(1, cfg_auth_update(auth.get()));
  EXPECT_EQ(whole, dump("auth"));
}

TEST_F(Auth, UpdatingMakesTheMapAuthWhenItIsGone) {
  seed();
  const auto auth = load();
  erase(cfg_root(store), "auth");
  EXPECT_EQ(1, cfg_auth_update(auth.get()));
  EXPECT_EQ(whole, dump("auth"));
}

TEST_F(Auth, UpdatingEmptySettingsMakesEmptyMaps) {
  map_at("auth");
  EXPECT_EQ(1, cfg_auth_update(load().get()));
  EXPECT_EQ("{ldap={} radius={} tacacs={}}", dump("auth"));
}

TEST_F(Auth, ANullFieldIsDeletedByTheUpdateAndNoOther) {
  for (const field &gone : fields) {
    seed();
    const auto auth = load();
    ASSERT_EQ(1, gone.set(auth.get(), nullptr));
    EXPECT_EQ(1, cfg_auth_update(auth.get()));
    for (const field &f : fields)
      EXPECT_EQ(&f != &gone, cfg_get_mapelem(map_of(f), f.key) != nullptr) << value_of(gone);
  }
}

TEST_F(Auth, UpdatingUnchangedSettingsChangesNothing) {
  seed();
  commit_and_reopen();
  EXPECT_EQ(1, cfg_auth_update(load().get()));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(Auth, UpdatingTouchesNothingElse) {
  seed();
  set(map_at("auth"), "other", "kept");
  set(map_at("auth.radius"), "other", 5);
  add(list_at("auth.radius.authenticationServers"), cfg_new_map(store));
  commit_and_reopen();
  const auto auth = load();
  for (const field &f : fields) ASSERT_EQ(1, f.set(auth.get(), "new"));
  EXPECT_EQ(1, cfg_auth_update(auth.get()));
  for (const std::string &line : changes()) EXPECT_EQ('=', line[0]) << line;
  EXPECT_EQ(10U, changes().size());
}

TEST_F(Auth, AFailedWriteEndsTheUpdateInItsOrder) {
  // The order of writing: what stands behind the one that fails is not written.
  const char *order[] = {" mode",
                         "tacacs password",
                         "tacacs method",
                         "tacacs service",
                         "radius password",
                         "ldap baseDN",
                         "ldap bindDN",
                         "ldap usernameAttribute",
                         "ldap groupMembershipAttribute",
                         "ldap bindPassword"};
  const auto find = [](const std::string &name) {
    return std::find_if(std::begin(fields), std::end(fields),
                        [&](const field &f) { return value_of(f) == name; });
  };
  map_at("auth");
  commit();
  for (std::size_t failing = 0; failing < std::size(order); ++failing) {
    cfg_abandon(store);
    const auto auth = load();
    for (const field &f : fields) ASSERT_EQ(1, f.set(auth.get(), "x"));
    ASSERT_EQ(1, find(order[failing])->set(auth.get(), records::unwritable().c_str()));
    EXPECT_EQ(0, cfg_auth_update(auth.get())) << order[failing];
    const auto now = load();
    for (std::size_t i = 0; i < std::size(order); ++i)
      EXPECT_STREQ(i < failing ? "x" : nullptr, find(order[i])->get(now.get()))
          << order[failing] << ", " << order[i];
  }
}

TEST_F(Auth, AProtocolThatIsNoMapFailsTheUpdate) {
  seed();
  const auto auth = load();
  set(map_at("auth"), "radius", "no map");
  EXPECT_EQ(0, cfg_auth_update(auth.get()));
  EXPECT_EQ("\"no map\"", dump("auth.radius"));
}

TEST_F(Auth, SettingsThatCannotBeWrittenFailTheUpdate) {
  seed();
  commit();
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  const owned<cfg_auth> auth(cfg_get_auth(reader.get()));
  ASSERT_EQ(1, cfg_auth_set_mode(auth.get(), "new"));
  EXPECT_EQ(0, cfg_auth_update(auth.get()));
  EXPECT_EQ(0, cfg_auth_update(nullptr));
  cfg_auth_free(nullptr);
}

}  // namespace
