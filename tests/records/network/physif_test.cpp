#include "network_fixture.hpp"

namespace {

using records::physif_record;

class Physif : public records::NetworkTest {
 protected:
  cfg_elem *add_wireless() {
    cfg_elem *elem = add_physif("wlan0");
    set(elem, "media", "wireless");
    erase(elem, "ethernet");
    cfg_elem *wireless = child_map(elem, "wireless");
    for (const char *key : wireless_keys) set(wireless, key, (std::string("the ") + key).c_str());
    return elem;
  }
  static constexpr const char *wireless_keys[] = {"auth", "config", "encryption", "psk", "ssid", "regdomain"};
};

TEST_F(Physif, MediaTypesHaveTheirTextsAndNothingElse) {
  EXPECT_STREQ("ethernet", cfg_net_physif_media_type_to_string(1));
  EXPECT_STREQ("wireless", cfg_net_physif_media_type_to_string(2));
  for (int32_t value : {-1, 0, 3}) EXPECT_EQ(nullptr, cfg_net_physif_media_type_to_string(value));
}

TEST_F(Physif, MediaTypesAreReadWithoutRegardToCase) {
  EXPECT_EQ(1, cfg_net_physif_media_type_from_string("EtherNet"));
  EXPECT_EQ(2, cfg_net_physif_media_type_from_string("WIRELESS"));
  EXPECT_EQ(0, cfg_net_physif_media_type_from_string("ethernet "));
  EXPECT_EQ(0, cfg_net_physif_media_type_from_string(""));
  EXPECT_EQ(0, cfg_net_physif_media_type_from_string(nullptr));
}

TEST_F(Physif, TheCountIsZeroWithoutListAndAllOnesWhenItIsNoList) {
  EXPECT_EQ(0, cfg_get_net_physif_count(store));
  set(map_at("system.net"), "physifs", "no list");
  EXPECT_EQ(-1, cfg_get_net_physif_count(store));
}

TEST_F(Physif, InterfacesAreCountedAndLoadedInListOrder) {
  add_physif("eth0");
  add_physif("eth1");
  commit_and_reopen();
  EXPECT_EQ(2, cfg_get_net_physif_count(store));
  const physif_record first(cfg_get_net_physif_by_index(store, 0));
  EXPECT_STREQ("system_net_physifs-1", cfg_net_physif_get_id(first.get()));
  const physif_record second(cfg_get_net_physif_by_id(store, "system_net_physifs-2"));
  EXPECT_STREQ("eth1", cfg_net_physif_get_device(second.get()));
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_index(store, 2));
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_index(store, -1));
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_id(store, "system_net_physifs-3"));
  EXPECT_EQ(nullptr, cfg_get_net_physif_by_id(store, nullptr));
}

TEST_F(Physif, AnEthernetInterfaceReadsAllItsKeys) {
  cfg_elem *elem = add_physif("eth0");
  set(elem, "description", "uplink");
  set(elem, "mtu", 9000);
  const physif_record record = physif(elem);
  ASSERT_NE(nullptr, record);
  EXPECT_STREQ("eth0", cfg_net_physif_get_name(record.get()));
  EXPECT_STREQ("eth0", cfg_net_physif_get_device(record.get()));
  EXPECT_EQ(1, cfg_net_physif_get_enabled(record.get()));
  EXPECT_STREQ("uplink", cfg_net_physif_get_description(record.get()));
  EXPECT_EQ(CFG_NET_PHYSIF_ETHERNET, cfg_net_physif_get_media_type(record.get()));
  EXPECT_EQ(9000, cfg_net_physif_get_mtu(record.get()));
  EXPECT_STREQ("auto", cfg_net_physif_get_ethernet_link_speed(record.get()));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_ssid(record.get()));
}

TEST_F(Physif, AWirelessInterfaceReadsItsOwnMapOnly) {
  cfg_elem *elem = add_wireless();
  set(child_map(elem, "ethernet"), "link_speed", "not looked at");
  const physif_record record = physif(elem);
  ASSERT_NE(nullptr, record);
  EXPECT_EQ(CFG_NET_PHYSIF_WIRELESS, cfg_net_physif_get_media_type(record.get()));
  EXPECT_STREQ("the auth", cfg_net_physif_get_wireless_auth(record.get()));
  EXPECT_STREQ("the config", cfg_net_physif_get_wireless_config(record.get()));
  EXPECT_STREQ("the encryption", cfg_net_physif_get_wireless_encryption(record.get()));
  EXPECT_STREQ("the psk", cfg_net_physif_get_wireless_psk(record.get()));
  EXPECT_STREQ("the ssid", cfg_net_physif_get_wireless_ssid(record.get()));
  EXPECT_STREQ("the regdomain", cfg_net_physif_get_wireless_regdomain(record.get()));
  EXPECT_EQ(nullptr, cfg_net_physif_get_ethernet_link_speed(record.get()));
}

TEST_F(Physif, AMediumInCapitalsIsKnown) {
  cfg_elem *elem = add_physif("eth0");
  set(elem, "media", "Ethernet");
  const physif_record record = physif(elem);
  EXPECT_EQ(CFG_NET_PHYSIF_ETHERNET, cfg_net_physif_get_media_type(record.get()));
}

TEST_F(Physif, NothingLoadsWithoutHandleOrElement) {
  EXPECT_EQ(nullptr, cfg_net_physif_from_elem(nullptr, add_physif("eth0")));
  EXPECT_EQ(nullptr, cfg_net_physif_from_elem(store, nullptr));
}

TEST_F(Physif, AMissingOrForeignMandatoryKeyFailsTheLoad) {
  for (const char *key : {"name", "device", "enabled", "media"}) {
    SCOPED_TRACE(key);
    cfg_elem *elem = add_physif("eth0");
    set(elem, key, 7);
    EXPECT_EQ(nullptr, physif(elem));
    erase(elem, key);
    EXPECT_EQ(nullptr, physif(elem));
  }
}

TEST_F(Physif, AnOptionalKeyMayBeAbsentButNotOfAnotherKind) {
  for (const char *key : {"description", "mtu"}) {
    SCOPED_TRACE(key);
    cfg_elem *elem = add_physif("eth0");
    EXPECT_NE(nullptr, physif(elem));
    set_bool(elem, key, true);
    EXPECT_EQ(nullptr, physif(elem));
  }
}

TEST_F(Physif, AnUnknownMediumFailsTheLoad) {
  cfg_elem *elem = add_physif("eth0");
  set(elem, "media", "token ring");
  EXPECT_EQ(nullptr, physif(elem));
}

TEST_F(Physif, AnEthernetInterfaceNeedsItsMapAndLinkSpeed) {
  cfg_elem *elem = add_physif("eth0");
  erase(cfg_simple_get_mapelem(store, elem, "ethernet"), "link_speed");
  EXPECT_EQ(nullptr, physif(elem));
  erase(elem, "ethernet");
  EXPECT_EQ(nullptr, physif(elem));
}

TEST_F(Physif, AWirelessInterfaceNeedsAllKeysOfItsMap) {
  for (const char *key : wireless_keys) {
    SCOPED_TRACE(key);
    cfg_elem *elem = add_wireless();
    EXPECT_NE(nullptr, physif(elem));
    erase(cfg_simple_get_mapelem(store, elem, "wireless"), key);
    EXPECT_EQ(nullptr, physif(elem));
  }
  cfg_elem *elem = add_wireless();
  erase(elem, "wireless");
  EXPECT_EQ(nullptr, physif(elem));
}

TEST_F(Physif, SettersChangeTheRecordOnly) {
  cfg_elem *elem = add_physif("eth0");
  const std::string before = dump(elem);
  const physif_record record = physif(elem);
  cfg_net_physif *np = record.get();
  EXPECT_EQ(1, cfg_net_physif_set_name(np, "new"));
  EXPECT_STREQ("new", cfg_net_physif_get_name(np));
  EXPECT_EQ(1, cfg_net_physif_set_enabled(np, 4711));
  EXPECT_EQ(1, cfg_net_physif_get_enabled(np));
  EXPECT_EQ(1, cfg_net_physif_set_enabled(np, 0));
  EXPECT_EQ(0, cfg_net_physif_get_enabled(np));
  EXPECT_EQ(1, cfg_net_physif_set_description(np, "new"));
  EXPECT_STREQ("new", cfg_net_physif_get_description(np));
  EXPECT_EQ(1, cfg_net_physif_set_media_type(np, 17));
  EXPECT_EQ(17, cfg_net_physif_get_media_type(np));
  EXPECT_EQ(1, cfg_net_physif_set_mtu(np, -5));
  EXPECT_EQ(-5, cfg_net_physif_get_mtu(np));
  EXPECT_EQ(1, cfg_net_physif_set_ethernet_link_speed(np, "new"));
  EXPECT_STREQ("new", cfg_net_physif_get_ethernet_link_speed(np));
  EXPECT_EQ(before, dump(elem));
}

TEST_F(Physif, AStringSetToEmptyOrNullBecomesNull) {
  const physif_record record = physif(add_wireless());
  cfg_net_physif *np = record.get();
  EXPECT_EQ(1, cfg_net_physif_set_wireless_ssid(np, ""));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_ssid(np));
  EXPECT_EQ(1, cfg_net_physif_set_wireless_psk(np, nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_psk(np));
}

TEST_F(Physif, SettingAFieldToItsOwnPointerSucceedsAndKeepsIt) {
  const physif_record record = physif(add_physif("eth0"));
  const char *name = cfg_net_physif_get_name(record.get());
  EXPECT_EQ(1, cfg_net_physif_set_name(record.get(), name));
  EXPECT_EQ(name, cfg_net_physif_get_name(record.get()));
  EXPECT_STREQ("eth0", name);
}

TEST_F(Physif, GettersOfNullGiveNullOrZero) {
  EXPECT_EQ(nullptr, cfg_net_physif_get_id(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_name(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_device(nullptr));
  EXPECT_EQ(0, cfg_net_physif_get_enabled(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_description(nullptr));
  EXPECT_EQ(0, cfg_net_physif_get_mtu(nullptr));
  EXPECT_EQ(0, cfg_net_physif_get_media_type(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_ethernet_link_speed(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_auth(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_config(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_encryption(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_psk(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_ssid(nullptr));
  EXPECT_EQ(nullptr, cfg_net_physif_get_wireless_regdomain(nullptr));
  cfg_net_physif_free(nullptr);
}

TEST_F(Physif, StoringWritesEveryKeyAndDeletesThoseOfEmptyFields) {
  cfg_elem *elem = add_physif("eth0");
  set(elem, "description", "uplink");
  set(elem, "mtu", 9000);
  const physif_record record = physif(elem);
  cfg_net_physif_set_name(record.get(), "port");
  cfg_net_physif_set_enabled(record.get(), 0);
  cfg_net_physif_set_description(record.get(), "");
  cfg_net_physif_set_mtu(record.get(), 0);
  cfg_net_physif_set_ethernet_link_speed(record.get(), "1000-full");
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ(
      "{device=\"eth0\" enabled=false ethernet={link_speed=\"1000-full\"} media=\"ethernet\" mtu=0 "
      "name=\"port\"}",
      dump(elem));
}

TEST_F(Physif, AChangeToWirelessMakesItsMapAndKeepsTheOther) {
  cfg_elem *elem = add_physif("eth0");
  const physif_record record = physif(elem);
  cfg_net_physif_set_media_type(record.get(), CFG_NET_PHYSIF_WIRELESS);
  cfg_net_physif_set_wireless_auth(record.get(), "a");
  cfg_net_physif_set_wireless_config(record.get(), "c");
  cfg_net_physif_set_wireless_encryption(record.get(), "e");
  cfg_net_physif_set_wireless_psk(record.get(), "p");
  cfg_net_physif_set_wireless_ssid(record.get(), "s");
  cfg_net_physif_set_wireless_regdomain(record.get(), "r");
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ("{link_speed=\"auto\"}", dump(cfg_simple_get_mapelem(store, elem, "ethernet")));
  EXPECT_EQ("{auth=\"a\" config=\"c\" encryption=\"e\" psk=\"p\" regdomain=\"r\" ssid=\"s\"}",
            dump(cfg_simple_get_mapelem(store, elem, "wireless")));
}

TEST_F(Physif, AChangeToEthernetMakesItsMapAndKeepsTheKeysOfTheOther) {
  cfg_elem *elem = add_wireless();
  const physif_record record = physif(elem);
  cfg_net_physif_set_media_type(record.get(), CFG_NET_PHYSIF_ETHERNET);
  cfg_net_physif_set_ethernet_link_speed(record.get(), "auto");
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ("{link_speed=\"auto\"}", dump(cfg_simple_get_mapelem(store, elem, "ethernet")));
  EXPECT_EQ("\"the ssid\"", dump(cfg_get_child_by_path(store, elem, "wireless.ssid")));
}

TEST_F(Physif, AnUnneededMapLosesItsKeysAndStays) {
  cfg_elem *elem = add_physif("eth0");
  set(child_map(elem, "wireless"), "ssid", "old");
  const physif_record record = physif(elem);
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ("{}", dump(cfg_simple_get_mapelem(store, elem, "wireless")));
}

TEST_F(Physif, AMapThatIsNeitherThereNorNeededIsNotMade) {
  cfg_elem *elem = add_wireless();
  const physif_record record = physif(elem);
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ(nullptr, cfg_get_mapelem(elem, "ethernet"));
}

TEST_F(Physif, AnUnknownMediumDeletesTheKeyAndTouchesMapsThatExist) {
  cfg_elem *elem = add_physif("eth0");
  const physif_record record = physif(elem);
  cfg_net_physif_set_media_type(record.get(), 9);
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ(nullptr, cfg_get_mapelem(elem, "media"));
  EXPECT_EQ("{link_speed=\"auto\"}", dump(cfg_simple_get_mapelem(store, elem, "ethernet")));
  EXPECT_EQ(nullptr, cfg_get_mapelem(elem, "wireless"));
}

TEST_F(Physif, SomethingElseInTheMapsPlaceFailsOnlyForItsOwnMedium) {
  cfg_elem *elem = add_physif("eth0");
  set(elem, "wireless", "no map");
  const physif_record record = physif(elem);
  EXPECT_EQ(1, cfg_net_physif_store(record.get()));
  EXPECT_EQ("\"no map\"", dump(cfg_simple_get_mapelem(store, elem, "wireless")));
  set(elem, "ethernet", "no map either");
  EXPECT_EQ(0, cfg_net_physif_store(record.get()));
  cfg_net_physif_set_media_type(record.get(), CFG_NET_PHYSIF_WIRELESS);
  EXPECT_EQ(0, cfg_net_physif_store(record.get()));
}

TEST_F(Physif, TheEthernetMapIsWrittenBeforeTheWirelessOne) {
  cfg_elem *elem = add_wireless();
  set(elem, "ethernet", "no map");
  const physif_record record = physif(elem);
  cfg_net_physif_set_wireless_ssid(record.get(), "new");
  cfg_net_physif_set_media_type(record.get(), CFG_NET_PHYSIF_ETHERNET);
  EXPECT_EQ(0, cfg_net_physif_store(record.get()));
  EXPECT_EQ("\"the ssid\"", dump(cfg_get_child_by_path(store, elem, "wireless.ssid")));
}

TEST_F(Physif, TheWirelessKeysAreWrittenInTheirOrderUpToTheOneThatFails) {
  cfg_elem *elem = add_wireless();
  const physif_record record = physif(elem);
  cfg_net_physif_set_wireless_auth(record.get(), "new");
  cfg_net_physif_set_wireless_encryption(record.get(), records::unwritable().c_str());
  cfg_net_physif_set_wireless_regdomain(record.get(), "new");
  EXPECT_EQ(0, cfg_net_physif_store(record.get()));
  EXPECT_EQ("\"new\"", dump(cfg_get_child_by_path(store, elem, "wireless.auth")));
  EXPECT_EQ("\"the regdomain\"", dump(cfg_get_child_by_path(store, elem, "wireless.regdomain")));
}

TEST_F(Physif, StoringStopsAtTheFirstWriteThatFails) {
  cfg_elem *elem = add_physif("eth0");
  const physif_record record = physif(elem);
  cfg_net_physif_set_enabled(record.get(), 0);
  cfg_net_physif_set_name(record.get(), records::unwritable().c_str());
  cfg_net_physif_set_mtu(record.get(), 1400);
  EXPECT_EQ(0, cfg_net_physif_store(record.get()));
  EXPECT_EQ("false", dump(cfg_simple_get_mapelem(store, elem, "enabled")));
  EXPECT_EQ(nullptr, cfg_get_mapelem(elem, "mtu"));
}

TEST_F(Physif, StoringAnInterfaceThatIsGoneFails) {
  cfg_elem *elem = add_physif("eth0");
  const physif_record record = physif(elem);
  ASSERT_EQ(1, cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_net_physif_store(record.get()));
}

TEST(PhysifDeathTest, StoringNullAborts) {
  EXPECT_DEATH(cfg_net_physif_store(nullptr),
               "src/network: cfg_net_physif_store: Assertion `np && np->cfg' failed");
}

}  // namespace
