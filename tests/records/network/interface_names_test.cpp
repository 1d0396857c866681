#include <twobject/net_address.h>

#include "network_fixture.hpp"

namespace {

using records::heap_text;

class InterfaceNames : public records::NetworkTest {
 protected:
  std::string of_mode(const char *mode) {
    const heap_text names(cfg_get_interfaces_list_from_mode(store, mode));
    return names ? names.get() : "NULL";
  }
  std::string others(const char *mode, const char *name) {
    const heap_text names(cfg_get_interfaces_list_from_mode_exclude_default(store, mode, name));
    return names ? names.get() : "NULL";
  }
  std::string label(const char *name) {
    const heap_text text(cfg_get_interface_name_from_conn_name(store, name));
    return text ? text.get() : "NULL";
  }
};

TEST_F(InterfaceNames, TheModeOfAConnectionIsFoundByItsName) {
  add_conn_on("eth0", "a", "dhcp");
  add_conn_on("eth1", "b", "STATIC");
  commit_and_reopen();
  EXPECT_STREQ("dhcp", cfg_get_conn_mode_from_conn_name(store, "a"));
  EXPECT_STREQ("static", cfg_get_conn_mode_from_conn_name(store, "b"));
  EXPECT_EQ(nullptr, cfg_get_conn_mode_from_conn_name(store, "A"));
  EXPECT_EQ(nullptr, cfg_get_conn_mode_from_conn_name(store, nullptr));
}

TEST_F(InterfaceNames, AConnectionThatCannotBeLoadedHasNoMode) {
  erase(add_conn_on("eth0", "a", "dhcp"), "role");
  commit_and_reopen();
  EXPECT_EQ(nullptr, cfg_get_conn_mode_from_conn_name(store, "a"));
  EXPECT_EQ("NULL", label("a"));
}

TEST_F(InterfaceNames, AConnectionIsCalledByDeviceAndModeAndAStaticOneByItsNumber) {
  add_conn_on("eth0", "a", "dhcp");
  add_conn_on("eth1", "b", "static");
  add_conn_on("eth0", "c", "static");
  commit_and_reopen();
  EXPECT_EQ("eth0:dhcp", label("a"));
  EXPECT_EQ("eth1:static2", label("b"));
  EXPECT_EQ("eth0:static3", label("c"));
  EXPECT_EQ("NULL", label("d"));
}

TEST_F(InterfaceNames, ALabelThatJustFillsItsRoomLosesItsLastCharacter) {
  add_conn_on("elevenchars", "a", "dhcp");
  add_conn_on("tencharss0", "b", "dhcp");
  add_conn_on("8letters", "c", "static");
  add_conn_on("7letter", "d", "static");
  commit_and_reopen();
  EXPECT_EQ("elevenchars:dhc", label("a"));
  EXPECT_EQ("tencharss0:dhcp", label("b"));
  EXPECT_EQ("8letters:static", label("c"));
  EXPECT_EQ("7letter:static4", label("d"));
}

TEST_F(InterfaceNames, ALabelThatIsLongerThanItsRoomFailsTheName) {
  add_conn_on("twelve-chars", "a", "dhcp");
  add_conn_on("9-letters", "b", "static");
  add_conn_on("sixteencharacter", "c", "dhcp");
  commit_and_reopen();
  for (const char *name : {"a", "b", "c"}) EXPECT_EQ("NULL", label(name)) << name;
  EXPECT_EQ("NULL", of_mode("dhcp"));
}

TEST_F(InterfaceNames, AListHasASpaceBeforeEachNameInListOrder) {
  add_conn_on("eth0", "a", "dhcp");
  add_conn_on("eth1", "b", "static");
  add_conn_on("eth2", "c", "dhcp");
  commit_and_reopen();
  EXPECT_EQ(" eth0:dhcp eth2:dhcp", of_mode("dhcp"));
  EXPECT_EQ(" eth1:static2", of_mode("static"));
  EXPECT_EQ("", of_mode("DHCP"));
  EXPECT_EQ("NULL", of_mode(nullptr));
}

TEST_F(InterfaceNames, ADefaultConnectionCanBeLeftOut) {
  add_conn_on("eth0", "default-conn-2", "dhcp");
  add_conn_on("eth1", "b", "dhcp");
  commit_and_reopen();
  EXPECT_EQ(" eth1:dhcp", others("dhcp", "default-conn-2"));
  EXPECT_EQ(" eth0:dhcp eth1:dhcp", others("dhcp", "default-conn-1"));
  EXPECT_EQ("NULL", others("dhcp", nullptr));
  EXPECT_EQ("NULL", others(nullptr, "b"));
}

TEST_F(InterfaceNames, AListOfACallersConditionLeavesTheConditionToHim) {
  add_conn_on("eth0", "a", "dhcp");
  add_conn_on("eth1", "b", "static");
  commit_and_reopen();
  cfg_condition *condition = cfg_new_string_condition("role", CFG_OP_EQUAL, "lan");
  for (int round = 0; round < 2; ++round) {
    const heap_text names(cfg_get_interfaces_list_from_condition(store, condition));
    EXPECT_STREQ(" eth0:dhcp eth1:static2", names.get());
  }
  cfg_free_conditions(condition);
}

TEST_F(InterfaceNames, WithoutConnectionsInTheStoreACallersConditionIsFreed) {
  cfg_condition *condition = cfg_new_string_condition("role", CFG_OP_EQUAL, "lan");
  EXPECT_EQ(nullptr, cfg_get_interfaces_list_from_condition(store, condition));
  EXPECT_EQ("NULL", of_mode("dhcp"));
  EXPECT_EQ("NULL", others("dhcp", "default-conn-2"));
  EXPECT_EQ("NULL", label("a"));
}

TEST_F(InterfaceNames, OneConnectionThatHasNoNameSpoilsTheList) {
  add_conn_on("eth0", "a", "dhcp");
  add_conn("b", "dhcp", "system_net_physifs-99");
  commit_and_reopen();
  EXPECT_EQ("NULL", of_mode("dhcp"));
}

TEST_F(InterfaceNames, OneConnectionThatCannotBeLoadedSpoilsTheList) {
  add_conn_on("eth0", "a", "dhcp");
  erase(add_conn_on("eth1", "b", "dhcp"), "role");
  commit_and_reopen();
  EXPECT_EQ("NULL", of_mode("dhcp"));
}

TEST_F(InterfaceNames, ADeviceThatIsNotCalledAsDevicesAreHasNoName) {
  for (const char *device : {"$(id)", "a;id", "`id`", "a b", "a'b", "a\"b", "a|b", "a&b", "a>b", "a\nb", "a*",
                             "a\\b", "a/b", "\xc3\xa9th0", ""}) {
    SCOPED_TRACE(device);
    cfg_map_delete_key(store, cfg_root(store), "system");
    add_conn_on(device, "a", "dhcp");
    commit_and_reopen();
    EXPECT_EQ("NULL", label("a"));
    EXPECT_EQ("NULL", of_mode("dhcp"));
  }
}

TEST_F(InterfaceNames, OrdinaryDeviceNamesAreTaken) {
  for (const char *device : {"eth0", "br-lan", "eth0.100", "tun_1", "WLAN"}) {
    SCOPED_TRACE(device);
    cfg_map_delete_key(store, cfg_root(store), "system");
    add_conn_on(device, "a", "dhcp");
    commit_and_reopen();
    EXPECT_EQ(std::string(device) + ":dhcp", label("a"));
  }
}

}  // namespace
