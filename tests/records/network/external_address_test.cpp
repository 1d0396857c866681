// The address of the appliance, with a stand-in for the ip tool that notes how it was called.
#include <sys/stat.h>
#include <twobject/external_endpoint.h>
#include <twobject/net_address.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "network_fixture.hpp"
#include "store_processes/scratch.hpp"

namespace {

using records::heap_text;

class ExternalAddress : public records::NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    old_path_ = std::getenv("PATH");
    setenv("PATH", (scratch_.path() + ":" + old_path_).c_str(), 1);
    answer("");
  }
  void TearDown() override {
    setenv("PATH", old_path_.c_str(), 1);
    NetworkTest::TearDown();
  }
  // What the tool does: shell text, with its arguments in "$*".
  void answer(const std::string &body) {
    const std::string file = scratch_.path() + "/ip";
    std::ofstream(file) << "#!/bin/sh\necho \"$*\" >> " << calls_file() << "\n" << body << "\n";
    chmod(file.c_str(), 0755);
    std::filesystem::remove(calls_file());
  }
  std::string calls_file() const { return scratch_.path() + "/calls"; }
  std::string calls() const {
    std::stringstream all;
    all << std::ifstream(calls_file()).rdbuf();
    return all.str();
  }
  std::string from_os() {
    const heap_text address(cfg_net_external_address_from_os(store));
    return address ? address.get() : "NULL";
  }
  std::string from_cfg_or_os() {
    const heap_text address(cfg_net_get_external_address_from_cfg_or_os(store));
    return address ? address.get() : "NULL";
  }
  void add_all_kinds() {
    add_conn_on("eth0", "default-conn-1", "static");
    add_conn_on("eth1", "default-conn-2", "dhcp");
    add_conn_on("eth2", "a", "static");
    add_conn_on("eth3", "b", "dhcp");
    add_conn_on("eth4", "c", "dhcp");
    commit_and_reopen();
  }
  // An answer to "address show label NAME".
  static std::string has(const char *label, const char *address) {
    return std::string("[ \"$*\" = 'address show label ") + label + "' ] && echo '    inet " + address +
           "/24 brd 10.0.0.255 scope global eth0'";
  }

 private:
  trial::Scratch scratch_;
  std::string old_path_;
};

TEST_F(ExternalAddress, LabelsAreAskedForInTheirOrderAndTheDefaultsLast) {
  add_all_kinds();
  EXPECT_EQ("NULL", from_os());
  EXPECT_EQ(0U, calls().find("address show label eth3:dhcp\naddress show label eth4:dhcp\n"
                             "address show label eth2:static3\naddress show label eth1:dhcp\n"
                             "address show label eth0:static1\n"))
      << calls();
}

TEST_F(ExternalAddress, TheFirstLabelWithAnAddressWins) {
  add_all_kinds();
  answer(has("eth0:static1", "10.0.0.1") + "\n" + has("eth1:dhcp", "10.0.0.2"));
  EXPECT_EQ("10.0.0.2", from_os());
  answer(has("eth0:static1", "10.0.0.1") + "\n" + has("eth2:static3", "10.0.0.3"));
  EXPECT_EQ("10.0.0.3", from_os());
  answer(has("eth2:static3", "10.0.0.3") + "\n" + has("eth4:dhcp", "10.0.0.4"));
  EXPECT_EQ("10.0.0.4", from_os());
  answer(has("eth0:static1", "10.0.0.1"));
  EXPECT_EQ("10.0.0.1", from_os());
}

TEST_F(ExternalAddress, ADefaultConnectionInTheOtherModeIsNoDefault) {
  add_conn_on("eth0", "default-conn-1", "dhcp");
  add_conn_on("eth1", "default-conn-2", "static");
  commit_and_reopen();
  EXPECT_EQ("NULL", from_os());
  EXPECT_EQ(0U, calls().find("address show label eth0:dhcp\naddress show label eth1:static2\n"
                             "-4 route list 0/0\n"))
      << calls();
}

TEST_F(ExternalAddress, WithoutAnAddressByLabelTheDefaultRouteDecides) {
  add_all_kinds();
  answer(
      "case \"$*\" in\n"
      "'-4 route list 0/0') echo 'default via 192.0.2.1 dev eth0' ;;\n"
      "'route get 192.0.2.1') echo '192.0.2.1 dev eth0 src 192.0.2.9 uid 0'; echo '    cache' ;;\n"
      "esac");
  EXPECT_EQ("192.0.2.9", from_os());
}

TEST_F(ExternalAddress, WhatIsNoIpv4AddressIsNotTaken) {
  add_all_kinds();
  for (const char *text : {"10.0.0", "fe80::1", "10.0.0.256", "host"}) {
    answer(has("eth3:dhcp", text));
    EXPECT_EQ("NULL", from_os()) << text;
  }
}

TEST_F(ExternalAddress, AStoreWithoutConnectionsGoesToTheDefaultRoute) {
  EXPECT_EQ("NULL", from_os());
  EXPECT_EQ("-4 route list 0/0\nroute get\n", calls());
}

TEST_F(ExternalAddress, MoreLabelsThanACommandHoldsAreNotAskedFor) {
  for (int i = 0; i < 40; ++i) add_conn_on(("eth" + std::to_string(i)).c_str(), "a", "dhcp");
  commit_and_reopen();
  EXPECT_EQ("NULL", from_os());
  EXPECT_EQ("-4 route list 0/0\nroute get\n", calls());
}

TEST_F(ExternalAddress, NothingThatADeviceIsCalledIsExecuted) {
  const std::string mark = calls_file() + ".mark";
  const std::string names[] = {"$(id>" + mark + ")", "`id>" + mark + "`", "a;id>" + mark, "x\nid>" + mark};
  for (const std::string &name : names) {
    cfg_map_delete_key(store, cfg_root(store), "system");
    add_conn_on(name.c_str(), "default-conn-1", "static");
    add_conn_on("$(id)", "a", "dhcp");
    commit_and_reopen();
    answer("");
    EXPECT_EQ("NULL", from_os());
    EXPECT_FALSE(std::filesystem::exists(mark)) << name;
    EXPECT_EQ("-4 route list 0/0\nroute get\n", calls());
  }
}

TEST_F(ExternalAddress, AConfiguredEndpointIsTakenAsItIs) {
  cfg_elem *first = entry_of("system.net.external_endpoints");
  set(first, "address", "gate.example");
  set(entry_of("system.net.external_endpoints"), "address", "second.example");
  commit_and_reopen();
  EXPECT_EQ("gate.example", from_cfg_or_os());
  set(cfg_get_by_id(store, "system_net_external_endpoints-1"), "address", "");
  EXPECT_EQ("", from_cfg_or_os());
  EXPECT_EQ("", calls());
}

TEST_F(ExternalAddress, WithoutAnEndpointTheOperatingSystemIsAsked) {
  add_all_kinds();
  answer(has("eth3:dhcp", "10.0.0.3"));
  EXPECT_EQ("10.0.0.3", from_cfg_or_os());
  list_at("system.net.external_endpoints");
  EXPECT_EQ("10.0.0.3", from_cfg_or_os());
  entry_of("system.net.external_endpoints");
  EXPECT_EQ("10.0.0.3", from_cfg_or_os()) << "an endpoint without address";
}

}  // namespace
