#include "network_fixture.hpp"

namespace {

using records::conn_record;
using records::physif_record;

class Conn : public records::NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    physif_id = id_of(add_physif("eth0"));
  }
  cfg_elem *add(const char *mode) { return add_conn("uplink", mode, physif_id); }
  std::string sub_map(cfg_elem *elem, const char *key) {
    return dump(cfg_simple_get_mapelem(store, elem, key));
  }
  std::string physif_id;
};

TEST_F(Conn, RolesModesAndStatesHaveTheirTexts) {
  const char *const roles[] = {nullptr, "wan", "lan", "wlan", "oobfo", "cellular", "dialout", nullptr};
  for (int32_t i = 0; i < 8; ++i) EXPECT_STREQ(roles[i], cfg_net_conn_role_to_string(i)) << i;
  const char *const modes[] = {nullptr, "static", "dhcp", nullptr};
  for (int32_t i = 0; i < 4; ++i) EXPECT_STREQ(modes[i], cfg_net_conn_mode_to_string(i)) << i;
  const char *const states[] = {"unknown", "down", "starting", "stopping", "running", "reloading", "unknown"};
  for (int32_t i = 0; i < 7; ++i) EXPECT_STREQ(states[i], cfg_net_conn_runtime_status_to_string(i)) << i;
  EXPECT_STREQ("unknown", cfg_net_conn_runtime_status_to_string(-1));
}

TEST_F(Conn, RolesAndModesAreReadWithoutRegardToCase) {
  const char *const roles[] = {"WAN", "Lan", "wLAN", "OOBFO", "Cellular", "dialOut"};
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(i + 1, cfg_net_conn_role_from_string(roles[i]));
  EXPECT_EQ(0, cfg_net_conn_role_from_string("man"));
  EXPECT_EQ(0, cfg_net_conn_role_from_string(nullptr));
  EXPECT_EQ(1, cfg_net_conn_mode_from_string("STATIC"));
  EXPECT_EQ(2, cfg_net_conn_mode_from_string("Dhcp"));
  EXPECT_EQ(0, cfg_net_conn_mode_from_string("auto"));
  EXPECT_EQ(0, cfg_net_conn_mode_from_string(nullptr));
}

TEST_F(Conn, ConnectionsAreCountedAndLoadedInListOrder) {
  EXPECT_EQ(0, cfg_get_net_conn_count(store));
  add("dhcp");
  add_conn("second", "static", physif_id);
  commit_and_reopen();
  EXPECT_EQ(2, cfg_get_net_conn_count(store));
  const conn_record second(cfg_get_net_conn_by_index(store, 1));
  EXPECT_STREQ("system_net_conns-2", cfg_net_conn_get_id(second.get()));
  const conn_record first(cfg_get_net_conn_by_id(store, "system_net_conns-1"));
  EXPECT_STREQ("uplink", cfg_net_conn_get_name(first.get()));
  EXPECT_EQ(nullptr, cfg_get_net_conn_by_index(store, 2));
  EXPECT_EQ(nullptr, cfg_get_net_conn_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_from_elem(nullptr, cfg_get_by_id(store, "system_net_conns-1")));
}

TEST_F(Conn, TheCountOfSomethingElseIsAllOnes) {
  set(map_at("system.net"), "conns", "no list");
  EXPECT_EQ(-1, cfg_get_net_conn_count(store));
}

TEST_F(Conn, ALoadReadsEveryKeyOfBothSubMaps) {
  cfg_elem *elem = add("STATIC");
  set(elem, "role", "Wan");
  set(elem, "description", "to the world");
  cfg_elem *fixed = child_map(elem, "static");
  for (const char *key : {"address", "netmask", "broadcast", "gateway", "dns1", "dns2"})
    set(fixed, key, (std::string("the ") + key).c_str());
  cfg_elem *dhcp = child_map(elem, "dhcp");
  set(dhcp, "vendor_class", "the class");
  set(dhcp, "udhcpc_script", "the script");
  const conn_record record = conn(elem);
  const cfg_net_conn *nc = record.get();
  ASSERT_NE(nullptr, nc);
  EXPECT_EQ(1, cfg_net_conn_get_enabled(nc));
  EXPECT_STREQ("to the world", cfg_net_conn_get_description(nc));
  EXPECT_EQ(CFG_NET_CONN_WAN, cfg_net_conn_get_role(nc));
  EXPECT_EQ(CFG_NET_CONN_STATIC, cfg_net_conn_get_mode(nc));
  EXPECT_EQ(physif_id, cfg_net_conn_get_physif_id(nc));
  EXPECT_STREQ("the address", cfg_net_conn_get_static_address(nc));
  EXPECT_STREQ("the netmask", cfg_net_conn_get_static_netmask(nc));
  EXPECT_STREQ("the broadcast", cfg_net_conn_get_static_broadcast(nc));
  EXPECT_STREQ("the gateway", cfg_net_conn_get_static_gateway(nc));
  EXPECT_STREQ("the dns1", cfg_net_conn_get_static_dns1(nc));
  EXPECT_STREQ("the dns2", cfg_net_conn_get_static_dns2(nc));
  EXPECT_STREQ("the class", cfg_net_conn_get_dhcp_vendor_class(nc));
  EXPECT_STREQ("the script", cfg_net_conn_get_dhcp_udhcpc_script(nc));
}

TEST_F(Conn, AMissingOrForeignMandatoryKeyFailsTheLoad) {
  for (const char *key : {"name", "enabled", "role", "mode", "physif"}) {
    SCOPED_TRACE(key);
    cfg_elem *elem = add("dhcp");
    EXPECT_NE(nullptr, conn(elem));
    set(elem, key, 7);
    EXPECT_EQ(nullptr, conn(elem));
    erase(elem, key);
    EXPECT_EQ(nullptr, conn(elem));
  }
}

TEST_F(Conn, AnUnknownRoleOrModeFailsTheLoad) {
  for (const char *key : {"role", "mode"}) {
    cfg_elem *elem = add("dhcp");
    set(elem, key, "other");
    EXPECT_EQ(nullptr, conn(elem)) << key;
  }
}

TEST_F(Conn, AnOptionalKeyOfAnotherKindFailsTheLoad) {
  cfg_elem *elem = add("dhcp");
  set(elem, "description", 1);
  EXPECT_EQ(nullptr, conn(elem));
  erase(elem, "description");
  set(child_map(elem, "static"), "dns2", 1);
  EXPECT_EQ(nullptr, conn(elem));
  erase(elem, "static");
  set(child_map(elem, "dhcp"), "vendor_class", 1);
  EXPECT_EQ(nullptr, conn(elem));
}

TEST_F(Conn, GettersOfNullGiveNullOrZero) {
  EXPECT_EQ(nullptr, cfg_net_conn_get_id(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_name(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_description(nullptr));
  EXPECT_EQ(0, cfg_net_conn_get_enabled(nullptr));
  EXPECT_EQ(0, cfg_net_conn_get_role(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_physif_id(nullptr));
  EXPECT_EQ(0, cfg_net_conn_get_mode(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_static_address(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_static_netmask(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_static_broadcast(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_static_gateway(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_static_dns1(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_static_dns2(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_dhcp_vendor_class(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_get_dhcp_udhcpc_script(nullptr));
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_net_conn(store, nullptr));
  cfg_net_conn_free(nullptr);
}

TEST_F(Conn, AConnectionLeadsToItsInterface) {
  const conn_record record = conn(add("dhcp"));
  const physif_record found(cfg_get_net_physif_by_net_conn(store, record.get()));
  EXPECT_STREQ("eth0", cfg_net_physif_get_device(found.get()));
  cfg_net_conn_set_physif_id(record.get(), "system_net_physifs-99");
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_net_conn(store, record.get()));
  cfg_net_conn_set_physif_id(record.get(), "");
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_net_conn(store, record.get()));
}

TEST_F(Conn, StoringWritesEveryKey) {
  cfg_elem *elem = add("dhcp");
  const std::string other = id_of(add_physif("eth1"));
  const conn_record record = conn(elem);
  cfg_net_conn *nc = record.get();
  EXPECT_EQ(1, cfg_net_conn_set_name(nc, "n"));
  EXPECT_EQ(1, cfg_net_conn_set_enabled(nc, 0));
  EXPECT_EQ(1, cfg_net_conn_set_description(nc, "d"));
  EXPECT_EQ(1, cfg_net_conn_set_role(nc, CFG_NET_CONN_DIALOUT));
  EXPECT_EQ(1, cfg_net_conn_set_mode(nc, CFG_NET_CONN_STATIC));
  EXPECT_EQ(1, cfg_net_conn_set_physif_id(nc, other.c_str()));
  EXPECT_EQ(1, cfg_net_conn_set_static_address(nc, "1"));
  EXPECT_EQ(1, cfg_net_conn_set_static_netmask(nc, "2"));
  EXPECT_EQ(1, cfg_net_conn_set_static_broadcast(nc, "3"));
  EXPECT_EQ(1, cfg_net_conn_set_static_gateway(nc, "4"));
  EXPECT_EQ(1, cfg_net_conn_set_static_dns1(nc, "5"));
  EXPECT_EQ(1, cfg_net_conn_set_static_dns2(nc, "6"));
  EXPECT_EQ(1, cfg_net_conn_set_dhcp_vendor_class(nc, "7"));
  EXPECT_EQ(1, cfg_net_conn_set_dhcp_udhcpc_script(nc, "8"));
  EXPECT_EQ(1, cfg_net_conn_store(nc));
  EXPECT_EQ(
      "{description=\"d\" dhcp={udhcpc_script=\"8\" vendor_class=\"7\"} enabled=false mode=\"static\" "
      "name=\"n\" physif=&" +
          other +
          " role=\"dialout\" static={address=\"1\" broadcast=\"3\" "
          "dns1=\"5\" dns2=\"6\" gateway=\"4\" netmask=\"2\"}}",
      dump(elem));
}

TEST_F(Conn, TheMapOfTheModeIsMadeEvenWhenItIsEmpty) {
  cfg_elem *elem = add("dhcp");
  EXPECT_EQ(1, cfg_net_conn_store(conn(elem).get()));
  EXPECT_EQ("{}", sub_map(elem, "dhcp"));
  EXPECT_EQ("none", sub_map(elem, "static"));
  cfg_elem *fixed = add("static");
  EXPECT_EQ(1, cfg_net_conn_store(conn(fixed).get()));
  EXPECT_EQ("{}", sub_map(fixed, "static"));
  EXPECT_EQ("none", sub_map(fixed, "dhcp"));
}

TEST_F(Conn, AMapThatIsNotNeededGoesWithItsKeys) {
  cfg_elem *elem = add("dhcp");
  cfg_elem *fixed = child_map(elem, "static");
  for (const char *key : {"address", "netmask", "broadcast", "gateway", "dns1", "dns2"}) set(fixed, key, "1");
  const conn_record record = conn(elem);
  cfg_net_conn *nc = record.get();
  cfg_net_conn_set_static_address(nc, "");
  cfg_net_conn_set_static_netmask(nc, nullptr);
  cfg_net_conn_set_static_broadcast(nc, "");
  cfg_net_conn_set_static_gateway(nc, "");
  cfg_net_conn_set_static_dns1(nc, "");
  cfg_net_conn_set_static_dns2(nc, "");
  EXPECT_EQ(1, cfg_net_conn_store(nc));
  EXPECT_EQ("none", sub_map(elem, "static"));
}

TEST_F(Conn, AnEmptyDhcpMapOfAStaticConnectionGoes) {
  cfg_elem *elem = add("static");
  child_map(elem, "dhcp");
  EXPECT_EQ(1, cfg_net_conn_store(conn(elem).get()));
  EXPECT_EQ("none", sub_map(elem, "dhcp"));
}

TEST_F(Conn, AMapThatIsNotNeededStaysWhileSomethingElseIsInIt) {
  cfg_elem *elem = add("static");
  set(child_map(elem, "dhcp"), "lease_file", "of another program");
  EXPECT_EQ(1, cfg_net_conn_store(conn(elem).get()));
  EXPECT_EQ("{lease_file=\"of another program\"}", sub_map(elem, "dhcp"));
}

TEST_F(Conn, EachFieldIsEnoughToNeedItsMap) {
  using setter = int (*)(cfg_net_conn *, const char *) noexcept;
  const struct {
    const char *mode, *map, *key;
    setter set;
  } cases[] = {
      {"dhcp", "static", "address", cfg_net_conn_set_static_address},
      {"dhcp", "static", "netmask", cfg_net_conn_set_static_netmask},
      {"dhcp", "static", "broadcast", cfg_net_conn_set_static_broadcast},
      {"dhcp", "static", "gateway", cfg_net_conn_set_static_gateway},
      {"dhcp", "static", "dns1", cfg_net_conn_set_static_dns1},
      {"dhcp", "static", "dns2", cfg_net_conn_set_static_dns2},
      {"static", "dhcp", "vendor_class", cfg_net_conn_set_dhcp_vendor_class},
      {"static", "dhcp", "udhcpc_script", cfg_net_conn_set_dhcp_udhcpc_script},
  };
  for (const auto &one : cases) {
    SCOPED_TRACE(one.key);
    cfg_elem *elem = add(one.mode);
    const conn_record record = conn(elem);
    EXPECT_EQ(1, one.set(record.get(), "a text"));
    EXPECT_EQ(1, cfg_net_conn_store(record.get()));
    EXPECT_EQ(std::string("{") + one.key + "=\"a text\"}", sub_map(elem, one.map));
    EXPECT_EQ(1, one.set(record.get(), ""));
    EXPECT_EQ(1, cfg_net_conn_store(record.get()));
    EXPECT_EQ("none", sub_map(elem, one.map));
  }
}

TEST_F(Conn, TheDhcpMapIsWrittenBeforeTheStaticOne) {
  for (const char *occupied : {"dhcp", "static"}) {
    SCOPED_TRACE(occupied);
    cfg_elem *elem = add("static");
    set(elem, occupied, "no map");
    const conn_record record = conn(elem);
    cfg_net_conn_set_static_address(record.get(), "1");
    cfg_net_conn_set_dhcp_vendor_class(record.get(), "2");
    EXPECT_EQ(0, cfg_net_conn_store(record.get()));
    const bool dhcp_failed = occupied == std::string("dhcp");
    EXPECT_EQ(dhcp_failed ? "\"no map\"" : "{vendor_class=\"2\"}", sub_map(elem, "dhcp"));
    EXPECT_EQ(dhcp_failed ? "none" : "\"no map\"", sub_map(elem, "static"));
  }
}

TEST_F(Conn, SomethingElseInTheMapsPlaceFailsOnlyWhenTheMapIsNeeded) {
  cfg_elem *elem = add("dhcp");
  set(elem, "static", "no map");
  const conn_record record = conn(elem);
  EXPECT_EQ(1, cfg_net_conn_store(record.get()));
  EXPECT_EQ("\"no map\"", sub_map(elem, "static"));
  cfg_net_conn_set_mode(record.get(), CFG_NET_CONN_STATIC);
  EXPECT_EQ(0, cfg_net_conn_store(record.get()));
}

TEST_F(Conn, AnUnknownRoleOrModeAndNoInterfaceDeleteTheirKeys) {
  cfg_elem *elem = add("dhcp");
  const conn_record record = conn(elem);
  cfg_net_conn_set_role(record.get(), 7);
  cfg_net_conn_set_mode(record.get(), 0);
  cfg_net_conn_set_physif_id(record.get(), "");
  EXPECT_EQ(1, cfg_net_conn_store(record.get()));
  EXPECT_EQ("{enabled=true name=\"uplink\"}", dump(elem));
}

TEST_F(Conn, StoringStopsAtTheFirstWriteThatFails) {
  cfg_elem *elem = add("static");
  const conn_record record = conn(elem);
  cfg_net_conn_set_enabled(record.get(), 0);
  cfg_net_conn_set_description(record.get(), records::unwritable().c_str());
  cfg_net_conn_set_role(record.get(), CFG_NET_CONN_WAN);
  EXPECT_EQ(0, cfg_net_conn_store(record.get()));
  EXPECT_EQ("false", dump(cfg_simple_get_mapelem(store, elem, "enabled")));
  EXPECT_EQ("\"lan\"", dump(cfg_simple_get_mapelem(store, elem, "role")));
}

TEST_F(Conn, StoringAConnectionThatIsGoneFails) {
  cfg_elem *elem = add("static");
  const conn_record record = conn(elem);
  ASSERT_EQ(1, cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_net_conn_store(record.get()));
}

TEST(ConnDeathTest, StoringNullAborts) {
  EXPECT_DEATH(cfg_net_conn_store(nullptr),
               "src/network: cfg_net_conn_store: Assertion `nc && nc->cfg' failed");
}

}  // namespace
