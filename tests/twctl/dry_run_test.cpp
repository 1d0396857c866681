// --dry-run, on every verb that writes.
#include <algorithm>
#include <filesystem>
#include <set>

#include "harness.hpp"

namespace test {

class TwctlDryRun : public twctl_test {
 protected:
  void SetUp() override {
    own_directory("TW_INFOD_DIR");
    own_directory("TW_ACTION_DIR");
    init();
    const auto add_entry = [](cfg *store, const char *list,
                              const std::vector<std::pair<const char *, const char *>> &texts) {
      cfg_elem *map = cfg_new_map(store);
      cfg_add_listelem(store, cfg_get_by_path(store, list), map);
      for (const auto &[key, text] : texts) cfg_map_set_string(store, map, key, text);
      cfg_map_set_bool(store, map, "enabled", 1);
      return map;
    };
    change_store(store_path(), [&](cfg *store) {
      cfg_elem *physif = add_entry(store, "system.net.physifs",
                                   {{"name", "one"}, {"device", "eth0"}, {"media", "ethernet"}});
      cfg_elem *media = cfg_new_map(store);
      cfg_add_mapelem(store, physif, "ethernet", media);
      cfg_map_set_string(store, media, "link_speed", "auto");
    });
    change_store(store_path(), [&](cfg *store) {
      cfg_elem *conn =
          add_entry(store, "system.net.conns", {{"name", "one"}, {"role", "lan"}, {"mode", "dhcp"}});
      cfg_add_mapelem(store, conn, "physif", cfg_new_reference(store, "system_net_physifs-1"));
    });
    write_text(path("secret"), "pa55-word\n");
    write_text(path("devices.csv"), "name,product,serial\nrack-9,tarnwell,SN9\n");
    ASSERT_EQ(run_program("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=hub",
                                      "-keyout", path("web.key"), "-out", path("web.pem")})
                  .code,
              0);
    const std::vector<arguments> commands = {
        {"net", "endpoint", "add", "hub.example"},
        {"ntp", "server", "add", "ntp.example"},
        {"bootflag", "add", "flag", "once"},
        {"https", "csr", "new", "common_name=hub", "organization=Example", "org_unit=IT", "locality=Berlin",
         "state=Berlin", "country=DE", "email=it@hub.example", "--key", path("web.key")},
        {"node", "enroll", "--product", "tarnwell", "--name", "rack-1"},
        {"node", "enroll", "--product", "tarnwell", "--name", "rack-2"},
        {"port", "add", "rack-1", "1"},
        {"cert", "issue", "--node", "rack-1", "--cn", "rack-1"},
        {"user", "add", "ada"},
        {"group", "add", "operators"},
        {"role", "add", "Role"},
        {"acl", "add", "list"},
        {"auth", "server", "add", "ldap", "ldap.example"},
        {"tag", "add", "Site", "Berlin"},
        {"bundle", "create", "B"},
        {"template", "create", "T", "--kind", "ports"},
        {"template", "create", "Logins", "--kind", "auth", "mode=radius"},
        {"template", "server", "add", "Logins", "ldap", "ldap.example"},
        {"template", "create", "Users", "--kind", "users_groups", "operation=user_add"},
        {"template", "change", "user", "Users", "ada"},
        {"template", "create", "Groups", "--kind", "users_groups", "operation=group_add"},
        {"template", "create", "Joining", "--kind", "users_groups", "operation=membership"},
        {"template", "create", "Script", "--kind", "script", "--script", path("devices.csv")},
        {"push", "create", "--template", "T", "--node", "rack-1"},
        {"smartgroup", "create", "S", "name=rack-1"},
        {"store", "export", path("export.json")},
    };
    for (const arguments &command : commands) run_json(command);
  }

  /// Verbs whose changes are shown, with arguments that would change something.
  const std::vector<arguments> shown_ = {
      {"system", "set", "hostname", "hub"},
      {"net", "physif", "set", "one", "description=uplink"},
      {"net", "conn", "set", "one", "description=uplink"},
      {"net", "endpoint", "add", "hub-2.example"},
      {"net", "endpoint", "set", "hub.example", "api_port=443"},
      {"net", "endpoint", "delete", "hub.example"},
      {"ntp", "set", "enabled=yes"},
      {"ntp", "server", "add", "ntp-2.example"},
      {"ntp", "server", "set", "ntp.example", "ntp-2.example"},
      {"ntp", "server", "delete", "ntp.example"},
      {"console-gateway", "set", "ssh_delimiter=%"},
      {"bootflag", "add", "other", "once"},
      {"bootflag", "set", "flag", "is_set=no"},
      {"https", "cert", "install", path("web.pem"), "--key", path("web.key")},
      {"https", "csr", "new", "common_name=hub-2", "--key", path("web.key"), "--replace"},
      {"https", "csr", "delete"},
      {"node", "enroll", "--product", "tarnwell"},
      {"node", "set", "rack-1", "description=moved"},
      {"node", "delete", "rack-1"},
      {"node", "approve", "rack-1", "--bundle", "B"},
      {"node", "tag", "rack-1", "--add", "Site=Berlin"},
      {"port", "set", "rack-1", "1", "label=router"},
      {"port", "add", "rack-1", "2"},
      {"fleet", "import", path("devices.csv")},
      {"user", "add", "ben", "--password-file", path("secret")},
      {"user", "set", "ada", "--group", "operators"},
      {"user", "delete", "ada"},
      {"group", "add", "others", "--member", "ada"},
      {"group", "set", "operators", "mode=global", "role=Role"},
      {"group", "delete", "operators"},
      {"role", "add", "Other"},
      {"role", "rename", "Role", "Other"},
      {"role", "delete", "Role"},
      {"acl", "add", "other"},
      {"acl", "rename", "list", "other"},
      {"acl", "delete", "list"},
      {"auth", "set", "mode=ldap", "--ldap-bind-password-file", path("secret")},
      {"auth", "server", "add", "radius", "radius.example"},
      {"auth", "server", "set", "ldap", "ldap.example", "port=636"},
      {"auth", "server", "delete", "ldap", "ldap.example"},
      {"cert", "issue", "--node", "rack-2"},
      {"cert", "revoke", "rack-1"},
      {"tag", "add", "Floor", "1"},
      {"tag", "rename", "Site", "Place"},
      {"tag", "delete", "Site"},
      {"tag", "value", "add", "Site", "Lima"},
      {"tag", "value", "rename", "Site", "Berlin", "Lima"},
      {"tag", "value", "delete", "Site", "Berlin"},
      {"bundle", "create", "C", "--token-file", path("secret")},
      {"bundle", "set", "B", "--tag", "Site=Berlin"},
      {"bundle", "delete", "B"},
      {"bundle", "token", "B", "--renew"},
      {"template", "create", "Other", "--kind", "network"},
      {"template", "set", "T", "description=other"},
      {"template", "delete", "T"},
      {"template", "server", "add", "Logins", "radius", "radius.example"},
      {"template", "server", "set", "Logins", "ldap", "ldap.example", "port=636"},
      {"template", "server", "delete", "Logins", "ldap", "ldap.example"},
      {"template", "change", "user", "Users", "ben", "--password-file", path("secret")},
      {"template", "change", "group", "Groups", "operators"},
      {"template", "change", "membership", "Joining", "--user", "ada"},
      {"template", "change", "clear", "Users"},
      {"push", "create", "--template", "T", "--node", "rack-2"},
      {"push", "set", "last", "disconnected_nodes=apply"},
      {"smartgroup", "create", "New", "name=rack-2"},
      {"smartgroup", "set", "S", "name=rack-2"},
      {"smartgroup", "delete", "S"},
      {"store", "import", path("export.json")},
      {"init", "--store", path("new")},
  };
  /// Verbs that change no store by themselves, and what they tell in a dry run.
  const std::vector<std::pair<arguments, std::string>> told_ = {
      {{"node", "unenroll", "rack-1"}, "Dry run: would ask to unenroll"},
      {{"node", "status", "rack-1", "--publish", "connected"}, "Dry run: 'connected' would be published."},
      {{"services", "start"}, "would be started"},
      {{"services", "stop"}, "was not running"},
      {{"store", "compact", path("copy")}, "Dry run: "},
      {{"store", "export", path("copy")}, "Dry run: "},
      {{"template", "show", "Script", "--script", path("copy")}, "Dry run: the script would be written"},
      {{"cert", "show", "rack-1", "--private-key", path("copy")},
       "Dry run: the private key would be written"},
      {{"https", "csr", "show", "--private-key", path("copy")}, "Dry run: the private key would be written"},
  };
};

TEST_F(TwctlDryRun, EveryVerbThatWritesShowsItsChangesAndMakesNone) {
  const std::string before = everything();
  for (arguments command : shown_) {
    const std::string name = words_of(command);
    command.push_back("--dry-run");
    const outcome result = run(command);
    EXPECT_EQ(result.code, 0) << name << "\n" << result.err;
    const size_t end = result.out.find("Dry run: ");
    ASSERT_NE(end, std::string::npos) << name << "\n" << result.out;
    EXPECT_NE(result.out.find(", nothing was written.\n", end), std::string::npos) << name;
    EXPECT_GT(end, 0u) << name << " shows no change";
    EXPECT_EQ((result.out + result.err).find("pa55-word"), std::string::npos) << name;
    EXPECT_EQ(result.out.find("0 changes"), std::string::npos) << name;
  }
  EXPECT_EQ(everything(), before);
  EXPECT_FALSE(std::filesystem::exists(path("new")));
}

TEST_F(TwctlDryRun, WhatIsDoneOutsideTheStoreIsToldAndNotDone) {
  const std::string before = everything();
  for (auto [command, told] : told_) {
    command.push_back("--dry-run");
    const outcome result = run(command);
    EXPECT_EQ(result.code, 0) << words_of(command) << "\n" << result.err;
    EXPECT_NE((result.out + result.err).find(told), std::string::npos) << result.out << result.err;
    EXPECT_FALSE(std::filesystem::exists(path("copy"))) << words_of(command);
  }
  EXPECT_EQ(everything(), before);
  EXPECT_EQ(run_json({"node", "status", "rack-1"})["nodes"][0]["connection"].text(), "unknown");
}

TEST_F(TwctlDryRun, EveryVerbIsEitherAmongTheseOrOnlyReads) {
  for (const arguments &command : all_commands()) {
    const auto begins = [&](const arguments &given) {
      return given.size() >= command.size() && std::equal(command.begin(), command.end(), given.begin());
    };
    const bool shown = std::any_of(shown_.begin(), shown_.end(), begins);
    const bool told =
        std::any_of(told_.begin(), told_.end(), [&](const auto &one) { return begins(one.first); });
    const std::string &verb = command.back();
    const bool reads = std::set<std::string>{"get",     "list", "show",   "nodes",  "status",
                                             "message", "ca",   "search", "verify", "log"}
                           .contains(verb);
    EXPECT_TRUE(shown || told || reads) << words_of(command);
    EXPECT_FALSE(shown && reads) << words_of(command);
  }
}

}  // namespace test
