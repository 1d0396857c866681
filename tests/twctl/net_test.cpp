#include <sys/stat.h>
#include <twinfod.h>
#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlNet : public twctl_test {
 protected:
  void SetUp() override {
    own_directory("TW_INFOD_DIR");
    init();
    change_store(store_path(), [](cfg *store) {
      for (const char *device : {"eth0", "wlan0"}) {
        cfg_elem *physif = entry(store, "system.net.physifs");
        cfg_map_set_string(store, physif, "name", (std::string(device) + " port").c_str());
        cfg_map_set_string(store, physif, "device", device);
        cfg_map_set_bool(store, physif, "enabled", 1);
        bool wireless = *device == 'w';
        cfg_map_set_string(store, physif, "media", wireless ? "wireless" : "ethernet");
        cfg_elem *media = cfg_new_map(store);
        cfg_add_mapelem(store, physif, wireless ? "wireless" : "ethernet", media);
        if (!wireless) cfg_map_set_string(store, media, "link_speed", "auto");
        for (const char *key : {"auth", "config", "encryption", "psk", "ssid", "regdomain"})
          if (wireless) cfg_map_set_string(store, media, key, (std::string("old-") + key).c_str());
      }
    });
    change_store(store_path(), [](cfg *store) {
      for (const char *mode : {"static", "dhcp"}) {
        cfg_elem *conn = entry(store, "system.net.conns");
        cfg_map_set_string(store, conn, "name", (std::string("my-") + mode).c_str());
        cfg_map_set_bool(store, conn, "enabled", 1);
        cfg_map_set_string(store, conn, "role", "lan");
        cfg_map_set_string(store, conn, "mode", mode);
        cfg_add_mapelem(store, conn, "physif", cfg_new_reference(store, "system_net_physifs-1"));
      }
    });
  }
  static cfg_elem *entry(cfg *store, const char *list) {
    cfg_elem *map = cfg_new_map(store);
    cfg_add_listelem(store, cfg_get_by_path(store, list), map);
    return map;
  }
};

TEST_F(TwctlNet, InterfacesAreFoundByIdNameAndDevice) {
  json list = run_json({"net", "physif", "list"})["physifs"];
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].keys(), "id name device enabled media mtu");
  EXPECT_EQ(list[1]["device"].text(), "wlan0");
  for (const char *reference : {"system_net_physifs-1", "eth0 port", "eth0"}) {
    json shown = run_json({"net", "physif", "show", reference});
    EXPECT_EQ(shown["id"].text(), "system_net_physifs-1");
    EXPECT_EQ(shown["link_speed"].text(), "auto");
    EXPECT_TRUE(shown["psk_set"].is_false());
  }
  EXPECT_EQ(run({"net", "physif", "show", "eth9"}).code, 3);
}

TEST_F(TwctlNet, EveryFieldOfAnInterfaceIsSetAndReadBack) {
  run_json({"net", "physif", "set", "wlan0", "name=Depot", "enabled=no", "description=Hall 2", "mtu=1400",
            "ssid=depot", "auth=wpa2", "encryption=aes", "regdomain=DE", "config=none"});
  json shown = run_json({"net", "physif", "show", "Depot"});
  EXPECT_EQ(shown.keys(),
            "id name device enabled description media mtu link_speed ssid auth encryption regdomain config "
            "psk_set");
  EXPECT_TRUE(shown["enabled"].is_false());
  EXPECT_EQ(shown["mtu"].number(), 1400);
  const std::pair<const char *, const char *> texts[] = {{"description", "Hall 2"}, {"ssid", "depot"},
                                                         {"auth", "wpa2"},          {"encryption", "aes"},
                                                         {"regdomain", "DE"},       {"config", "none"}};
  for (const auto &[key, text] : texts) EXPECT_EQ(shown[key].text(), text);
}

TEST_F(TwctlNet, APreSharedKeyComesFromAFileAndIsNeverShown) {
  write_text(path("psk"), "very-private\n");
  outcome set = run({"net", "physif", "set", "wlan0", "--psk-file", path("psk")});
  EXPECT_EQ(set.code, 0) << set.err;
  EXPECT_NE(set.err.find("(hidden)"), std::string::npos) << set.err;
  std::string shown = run({"net", "physif", "show", "wlan0"}).out;
  for (const std::string &text : {set.out, set.err, shown})
    EXPECT_EQ(text.find("very-private"), std::string::npos) << text;
  open_store store = open_for_reading(store_path());
  cfg_net_physif *physif = cfg_get_net_physif_by_id(store.get(), "system_net_physifs-2");
  EXPECT_STREQ(cfg_net_physif_get_wireless_psk(physif), "very-private");
  cfg_net_physif_free(physif);
}

TEST_F(TwctlNet, APreSharedKeyOnTheCommandLineIsRefused) {
  outcome result = run({"net", "physif", "set", "wlan0", "psk=x"});
  EXPECT_EQ(result.code, 2);
  EXPECT_NE(result.err.find("every user of the machine"), std::string::npos) << result.err;
  EXPECT_EQ(run({"net", "physif", "set", "wlan0", "--psk", "--psk-file", path("psk")}).code, 2);
}

TEST_F(TwctlNet, AnInterfaceThatNobodyCouldReadIsNotSaved) {
  std::string before = everything();
  EXPECT_EQ(run({"net", "physif", "set", "eth0", "media=wireless"}).code, 5);
  EXPECT_EQ(run({"net", "physif", "set", "wlan0", "ssid="}).code, 5);
  EXPECT_EQ(run({"net", "physif", "set", "eth0", "media=paper"}).code, 5);
  EXPECT_EQ(run({"net", "physif", "set", "eth0", "mtu=-1"}).code, 5);
  EXPECT_EQ(run({"net", "physif", "set", "eth0", "device=eth9"}).code, 2);
  EXPECT_EQ(run({"net", "physif", "set", "eth0"}).code, 2);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlNet, EveryFieldOfAConnectionIsSetAndReadBack) {
  const std::pair<const char *, const char *> fields[] = {{"description", "Uplink"},
                                                          {"role", "wan"},
                                                          {"mode", "dhcp"},
                                                          {"address", "10.0.0.2"},
                                                          {"netmask", "255.255.255.0"},
                                                          {"broadcast", "10.0.0.255"},
                                                          {"gateway", "10.0.0.1"},
                                                          {"dns1", "10.0.0.3"},
                                                          {"dns2", "10.0.0.4"},
                                                          {"vendor_class", "hub"},
                                                          {"udhcpc_script", "/etc/udhcpc.script"}};
  arguments set{"net", "conn", "set", "my-static", "name=renamed", "enabled=no", "interface=wlan0"};
  for (const auto &[name, value] : fields) set.push_back(std::string(name) + "=" + value);
  run_json(set);
  json shown = run_json({"net", "conn", "show", "renamed"});
  EXPECT_EQ(shown.keys(),
            "id name enabled description role mode physif_id address netmask broadcast gateway dns1 dns2 "
            "vendor_class udhcpc_script status since dhcp_address dhcp_netmask dhcp_gateway dhcp_dns device");
  EXPECT_TRUE(shown["enabled"].is_false());
  EXPECT_EQ(shown["device"].text(), "wlan0");
  EXPECT_EQ(shown["physif_id"].text(), "system_net_physifs-2");
  for (const auto &[name, value] : fields) EXPECT_EQ(shown[name].text(), value) << name;
}

TEST_F(TwctlNet, WhatAConnectionCannotHaveIsRefused) {
  std::string before = everything();
  EXPECT_EQ(run({"net", "conn", "set", "my-static", "address=10.0.0"}).code, 5);
  EXPECT_EQ(run({"net", "conn", "set", "my-static", "mode=auto"}).code, 5);
  EXPECT_EQ(run({"net", "conn", "set", "my-static", "role=none"}).code, 5);
  EXPECT_EQ(run({"net", "conn", "set", "my-static", "interface=eth9"}).code, 3);
  EXPECT_EQ(run({"net", "conn", "set", "nobody", "mode=dhcp"}).code, 3);
  EXPECT_EQ(run({"net", "conn", "set", "my-static", "status=up"}).code, 2);
  outcome dry = run({"net", "conn", "set", "my-static", "mode=dhcp", "--dry-run"});
  EXPECT_NE(dry.out.find("= system_net_conns-1.mode: \"static\" -> \"dhcp\""), std::string::npos) << dry.out;
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlNet, AConnectionsLiveStateIsShown) {
  infod_push_text("conman.network-local-conn-my-dhcp.status", "up", INFOD_KIND_STATUS);
  for (const char *key : {"ip", "subnet", "router", "dns"})
    infod_push_text((std::string("udhcpc.eth0.") + key).c_str(), (std::string("its-") + key).c_str(),
                    INFOD_KIND_STATUS);
  json list = run_json({"net", "conn", "list"})["conns"];
  EXPECT_EQ(list[0].keys(), "id name enabled role mode device address status");
  EXPECT_EQ(list[0]["status"].text(), "unknown");
  EXPECT_TRUE(list[0]["address"].is_null());
  EXPECT_EQ(list[1]["status"].text(), "running");
  EXPECT_EQ(list[1]["address"].text(), "its-ip");
  json shown = run_json({"net", "conn", "show", "my-dhcp"});
  EXPECT_EQ(shown["dhcp_dns"].text(), "its-dns");
  EXPECT_EQ(shown["since"].text().size(), std::string("2026-01-31T10:20:30Z").size());
}

TEST_F(TwctlNet, AnEndpointIsAddedChangedAndDeleted) {
  json added = run_json({"net", "endpoint", "add", "hub.example", "api_port=8443"});
  EXPECT_EQ(added.keys(), "id name dry_run revision change_count");
  std::string id = added["id"].text();
  json shown = run_json({"net", "endpoint", "show", id});
  EXPECT_EQ(shown.keys(), "id address api_port vpn_port");
  EXPECT_EQ(shown["api_port"].number(), 8443);
  EXPECT_TRUE(shown["vpn_port"].is_null());
  run_json({"net", "endpoint", "set", "hub.example", "address=hub2.example", "api_port=", "vpn_port=1194"});
  json changed = run_json({"net", "endpoint", "show", "hub2.example"});
  EXPECT_TRUE(changed["api_port"].is_null());
  EXPECT_EQ(changed["vpn_port"].number(), 1194);
  EXPECT_EQ(run({"net", "endpoint", "delete", "hub2.example"}).code, 2);
  run_json({"net", "endpoint", "delete", id, "--yes"});
  EXPECT_EQ(run_json({"net", "endpoint", "list"})["endpoints"].size(), 0u);
}

TEST_F(TwctlNet, PortsThatAnEndpointDoesNotHaveAreNotStored) {
  run_json({"net", "endpoint", "add", "hub.example"});
  run_json({"net", "endpoint", "set", "hub.example", "address=hub2.example"});
  open_store store = open_for_reading(store_path());
  cfg_elem *endpoint = cfg_get_by_id(store.get(), "system_net_external_endpoints-1");
  EXPECT_EQ(cfg_simple_get_mapelem(store.get(), endpoint, "api_port"), nullptr);
  EXPECT_EQ(cfg_simple_get_mapelem(store.get(), endpoint, "vpn_port"), nullptr);
}

TEST_F(TwctlNet, WhatAnEndpointCannotBeIsRefused) {
  run_json({"net", "endpoint", "add", "hub.example"});
  run_json({"net", "endpoint", "add", "203.0.113.9"});
  std::string before = everything();
  EXPECT_EQ(run({"net", "endpoint", "add", "hub.example"}).code, 4);
  EXPECT_EQ(run({"net", "endpoint", "set", "203.0.113.9", "address=hub.example"}).code, 4);
  EXPECT_EQ(run({"net", "endpoint", "add", "not a host"}).code, 5);
  EXPECT_EQ(run({"net", "endpoint", "set", "hub.example", "address="}).code, 5);
  EXPECT_EQ(run({"net", "endpoint", "set", "hub.example", "api_port=65536"}).code, 5);
  EXPECT_EQ(run({"net", "endpoint", "delete", "other.example", "--yes"}).code, 3);
  EXPECT_EQ(run({"net", "endpoint", "add", "third.example", "--dry-run"}).code, 0);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlNet, AddressesAreNamedAsTheOperatingSystemDoes) {
  json labels = run_json({"net", "address", "list"})["labels"];
  EXPECT_EQ(labels[0].keys(), "conn_id name mode label");
  EXPECT_EQ(labels[0]["label"].text(), "eth0:static1");
  EXPECT_EQ(labels[1]["label"].text(), "eth0:dhcp");
}

TEST_F(TwctlNet, TheExternalAddressIsThatOfTheFirstEndpointOrTheSystems) {
  // Stands in for the ip tool: an address for one label.
  write_text(path("ip"), "#!/bin/sh\n[ \"$4\" = eth0:dhcp ] && echo '    inet 10.1.2.3/24'\n");
  ASSERT_EQ(chmod(path("ip").c_str(), 0755), 0);
  for (std::string &one : environment_)
    if (one.starts_with("PATH=")) one.insert(5, path("") + ":");
  json shown = run_json({"net", "address", "show"});
  EXPECT_EQ(shown.keys(), "address source");
  EXPECT_EQ(shown["address"].text(), "10.1.2.3");
  EXPECT_EQ(shown["source"].text(), "system");
  run_json({"net", "endpoint", "add", "hub.example"});
  EXPECT_EQ(run_json({"net", "address", "show"})["address"].text(), "hub.example");
  EXPECT_EQ(run_json({"net", "address", "show"})["source"].text(), "endpoint");
  EXPECT_EQ(run_json({"net", "address", "show", "--system"})["address"].text(), "10.1.2.3");
  write_text(path("ip"), "#!/bin/sh\n");
  EXPECT_EQ(run({"net", "address", "show", "--system"}).code, 3);
}

}  // namespace test
