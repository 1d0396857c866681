#include <twinfod.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

bool whole(const cfg_net_physif *physif) {
  if (!physif) return false;
  EXPECT_STREQ(cfg_net_physif_get_description(physif), "the interface's description");
  if (cfg_net_physif_get_media_type(physif) == CFG_NET_PHYSIF_ETHERNET)
    EXPECT_STREQ(cfg_net_physif_get_ethernet_link_speed(physif), "the link_speed");
  else
    EXPECT_STREQ(cfg_net_physif_get_wireless_regdomain(physif), "the regdomain");
  return true;
}

bool whole(const cfg_net_conn *conn) {
  if (!conn) return false;
  EXPECT_STREQ(cfg_net_conn_get_description(conn), "the connection's description");
  EXPECT_STREQ(cfg_net_conn_get_static_dns2(conn), "the dns2");
  EXPECT_STREQ(cfg_net_conn_get_dhcp_udhcpc_script(conn), "the udhcpc_script");
  EXPECT_STREQ(cfg_net_conn_get_physif_id(conn), kEthernet);
  return true;
}

bool whole(const cfg_net_external_endpoint *endpoint) {
  if (!endpoint) return false;
  EXPECT_STREQ(cfg_net_external_endpoint_get_address(endpoint), "gate.example");
  EXPECT_EQ(cfg_net_external_endpoint_get_vpn_port(endpoint), 1194);
  return true;
}

void free_record(cfg_net_physif *physif) { cfg_net_physif_free(physif); }
void free_record(cfg_net_conn *conn) { cfg_net_conn_free(conn); }
void free_record(cfg_net_external_endpoint *endpoint) { cfg_net_external_endpoint_free(endpoint); }

template <class Call>
void load(Call call) {
  sweep(call, [](World &, auto *found) {
    const bool there = whole(found);
    free_record(found);
    return there;
  });
}

template <class Record>
void release(void (*free_one)(Record *), Record *World::*record) {
  sweep(
      [=](World &w) {
        free_one(w.*record);
        w.*record = nullptr;
        return 1;
      },
      gives(1));
}

// Never 0: that is a store without any.
void count(int32_t (*get)(cfg *), int32_t expected) {
  sweep([=](World &w) { return get(w.unread); },
        [=](World &, int32_t counted) {
          if (counted != expected) EXPECT_EQ(counted, -1);
          return counted == expected;
        },
        [](World &w) { w.open_unread(); });
}

template <class Call>
void heap(Call call, const char *expected) {
  sweep(call, [=](World &, char *text) {
    if (text) EXPECT_STREQ(text, expected);
    std::free(text);
    return text != nullptr;
  });
}

// A sub-map that is there is never taken for missing and replaced: what else is in it stays.
void store_physif() {
  sweep([](World &w) { return cfg_net_physif_store(w.ethernet); },
        [](World &w, int stored) {
          cfg_elem *elem = cfg_get_by_id(w.store, kEthernet);
          EXPECT_TRUE(cfg_map_has(cfg_simple_get_mapelem(w.store, elem, "ethernet"), "duplex"));
          if (stored) EXPECT_TRUE(cfg_map_has(elem, "wireless"));
          return stored == 1;
        },
        [](World &w) {
          cfg_elem *elem = cfg_get_by_id(w.store, kEthernet);
          EXPECT_TRUE(cfg_map_set_string(w.store, cfg_simple_get_mapelem(w.store, elem, "ethernet"), "duplex",
                                         "full"));
          EXPECT_EQ(cfg_net_physif_set_media_type(w.ethernet, CFG_NET_PHYSIF_WIRELESS), 1);
        });
}

void store_conn() {
  sweep([](World &w) { return cfg_net_conn_store(w.conn); },
        [](World &w, int stored) {
          cfg_elem *elem = cfg_get_by_id(w.store, kConn);
          if (stored) EXPECT_FALSE(cfg_map_has(elem, "dhcp"));
          return stored == 1;
        },
        [](World &w) {
          EXPECT_EQ(cfg_net_conn_set_mode(w.conn, CFG_NET_CONN_STATIC), 1);
          EXPECT_EQ(cfg_net_conn_set_dhcp_vendor_class(w.conn, ""), 1);
          EXPECT_EQ(cfg_net_conn_set_dhcp_udhcpc_script(w.conn, ""), 1);
        });
}

// Live state of this process, removed at its end.
class LiveState {
 public:
  LiveState() {
    std::string name = (std::filesystem::temp_directory_path() / "live-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
    path_ = name;
    setenv("TW_INFOD_DIR", (path_ + "/live").c_str(), 1);
    publish("conman.network-local-conn-uplink.status", "up");
    publish("udhcpc.eth0.ip", "10.0.0.7");
    publish("udhcpc.eth0.subnet", "255.0.0.0");
    publish("udhcpc.eth0.router", "10.0.0.1");
    publish("udhcpc.eth0.dns", "9.9.9.9");
  }
  ~LiveState() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  LiveState(const LiveState &) = delete;
  LiveState &operator=(const LiveState &) = delete;

 private:
  static void publish(const char *key, const char *text) {
    if (infod_push_text(key, text, INFOD_KIND_STATUS) != 0) throw std::runtime_error("cannot publish");
  }
  std::string path_;
};

void need_live_state() { static const LiveState only; }

template <class Value>
void runtime(Value (*get)(cfg_net_conn *), Value expected) {
  need_live_state();
  sweep([=](World &w) { return get(w.conn); }, gives(expected));
}

void runtime_text(const char *(*get)(cfg_net_conn *), const char *expected) {
  need_live_state();
  sweep([=](World &w) { return get(w.conn); }, gives_text(expected));
}

void runtime_change() {
  need_live_state();
  sweep([](World &w) { return cfg_net_conn_runtime_get_last_status_change(w.conn); },
        [](World &, int64_t seconds) { return seconds > 0; });
}

void endpoint_list() {
  sweep([](World &w) { return cfg_net_get_external_endpoint_list(w.store); },
        [](World &, cfg_net_external_endpoint_list *list) {
          if (list) EXPECT_STREQ(cfg_net_get_external_endpoint(list, 0), kEndpoint);
          cfg_net_external_endpoint_list_free(list);
          return list != nullptr;
        });
}

void new_endpoint() {
  sweep([](World &w) { return cfg_net_external_endpoint_new(w.store); },
        [](World &, cfg_net_external_endpoint *made) {
          cfg_net_external_endpoint_free(made);
          return made != nullptr;
        });
}

// The writes' results do not count, so that only finding the element can fail.
void save_endpoint() {
  sweep([](World &w) { return cfg_net_external_endpoint_save(w.endpoint); }, gives(1));
}

void list_by_condition() {
  sweep(
      [](World &w) {
        cfg_condition *condition = cfg_new_string_condition("mode", CFG_OP_EQUAL, "dhcp");
        if (!condition) return static_cast<char *>(nullptr);
        char *names = cfg_get_interfaces_list_from_condition(w.store, condition);
        cfg_free_conditions(condition);
        return names;
      },
      [](World &, char *names) {
        if (names) EXPECT_STREQ(names, " eth0:dhcp");
        std::free(names);
        return names != nullptr;
      });
}

// Which address the machine of the test has is its own affair, and without memory another list may decide.
void address_from_os() {
  sweep(
      {Behind::granted, Whose::everybodys, [](long n) { return n + 7; }},
      [](World &w) { return cfg_net_external_address_from_os(w.store); },
      [](World &, char *address) {
        std::free(address);
        return true;
      });
}

const Case rows[] = {
    {"cfg_get_conn_mode_from_conn_name",
     [] {
       sweep([](World &w) { return cfg_get_conn_mode_from_conn_name(w.store, "uplink"); },
             gives_text("dhcp"));
     }},
    {"cfg_get_interface_name_from_conn_name",
     [] {
       heap([](World &w) { return cfg_get_interface_name_from_conn_name(w.store, "uplink"); }, "eth0:dhcp");
     }},
    {"cfg_get_interfaces_list_from_condition", list_by_condition},
    {"cfg_get_interfaces_list_from_mode",
     [] { heap([](World &w) { return cfg_get_interfaces_list_from_mode(w.store, "dhcp"); }, " eth0:dhcp"); }},
    {"cfg_get_interfaces_list_from_mode_exclude_default",
     [] {
       heap([](World &w) { return cfg_get_interfaces_list_from_mode_exclude_default(w.store, "dhcp", "x"); },
            " eth0:dhcp");
     }},
    {"cfg_get_net_conn_by_id", [] { load([](World &w) { return cfg_get_net_conn_by_id(w.store, kConn); }); }},
    {"cfg_get_net_conn_by_index",
     [] { load([](World &w) { return cfg_get_net_conn_by_index(w.store, 0); }); }},
    {"cfg_get_net_conn_count", [] { count(cfg_get_net_conn_count, 1); }},
    {"cfg_get_net_physif_by_id",
     [] { load([](World &w) { return cfg_get_net_physif_by_id(w.store, kEthernet); }); }},
    {"cfg_get_net_physif_by_index",
     [] { load([](World &w) { return cfg_get_net_physif_by_index(w.store, 1); }); }},
    {"cfg_get_net_physif_by_net_conn",
     [] { load([](World &w) { return cfg_get_net_physif_by_net_conn(w.store, w.conn); }); }},
    {"cfg_get_net_physif_count", [] { count(cfg_get_net_physif_count, 2); }},
    {"cfg_net_conn_free", [] { release(cfg_net_conn_free, &World::conn); }},
    {"cfg_net_conn_from_elem",
     [] { load([](World &w) { return cfg_net_conn_from_elem(w.store, cfg_get_by_id(w.store, kConn)); }); }},
    {"cfg_net_conn_get_description",
     [] { text_getter(cfg_net_conn_get_description, &World::conn, "the connection's description"); }},
    {"cfg_net_conn_get_dhcp_udhcpc_script",
     [] { text_getter(cfg_net_conn_get_dhcp_udhcpc_script, &World::conn, "the udhcpc_script"); }},
    {"cfg_net_conn_get_dhcp_vendor_class",
     [] { text_getter(cfg_net_conn_get_dhcp_vendor_class, &World::conn, "the vendor_class"); }},
    {"cfg_net_conn_get_enabled", [] { number_getter(cfg_net_conn_get_enabled, &World::conn, 1); }},
    {"cfg_net_conn_get_id", [] { text_getter(cfg_net_conn_get_id, &World::conn, "system_net_conns-1"); }},
    {"cfg_net_conn_get_mode", [] { number_getter(cfg_net_conn_get_mode, &World::conn, 2); }},
    {"cfg_net_conn_get_name", [] { text_getter(cfg_net_conn_get_name, &World::conn, "uplink"); }},
    {"cfg_net_conn_get_physif_id",
     [] { text_getter(cfg_net_conn_get_physif_id, &World::conn, "system_net_physifs-1"); }},
    {"cfg_net_conn_get_role", [] { number_getter(cfg_net_conn_get_role, &World::conn, 1); }},
    {"cfg_net_conn_get_static_address",
     [] { text_getter(cfg_net_conn_get_static_address, &World::conn, "the address"); }},
    {"cfg_net_conn_get_static_broadcast",
     [] { text_getter(cfg_net_conn_get_static_broadcast, &World::conn, "the broadcast"); }},
    {"cfg_net_conn_get_static_dns1",
     [] { text_getter(cfg_net_conn_get_static_dns1, &World::conn, "the dns1"); }},
    {"cfg_net_conn_get_static_dns2",
     [] { text_getter(cfg_net_conn_get_static_dns2, &World::conn, "the dns2"); }},
    {"cfg_net_conn_get_static_gateway",
     [] { text_getter(cfg_net_conn_get_static_gateway, &World::conn, "the gateway"); }},
    {"cfg_net_conn_get_static_netmask",
     [] { text_getter(cfg_net_conn_get_static_netmask, &World::conn, "the netmask"); }},
    {"cfg_net_conn_mode_from_string",
     [] { sweep([](World &) { return cfg_net_conn_mode_from_string("dhcp"); }, gives(2)); }},
    {"cfg_net_conn_mode_to_string",
     [] { sweep([](World &) { return cfg_net_conn_mode_to_string(2); }, gives_text("dhcp")); }},
    {"cfg_net_conn_role_from_string",
     [] { sweep([](World &) { return cfg_net_conn_role_from_string("lan"); }, gives(2)); }},
    {"cfg_net_conn_role_to_string",
     [] { sweep([](World &) { return cfg_net_conn_role_to_string(1); }, gives_text("wan")); }},
    {"cfg_net_conn_runtime_get_dhcp_address",
     [] { runtime_text(cfg_net_conn_runtime_get_dhcp_address, "10.0.0.7"); }},
    {"cfg_net_conn_runtime_get_dhcp_dns", [] { runtime_text(cfg_net_conn_runtime_get_dhcp_dns, "9.9.9.9"); }},
    {"cfg_net_conn_runtime_get_dhcp_gateway",
     [] { runtime_text(cfg_net_conn_runtime_get_dhcp_gateway, "10.0.0.1"); }},
    {"cfg_net_conn_runtime_get_dhcp_netmask",
     [] { runtime_text(cfg_net_conn_runtime_get_dhcp_netmask, "255.0.0.0"); }},
    {"cfg_net_conn_runtime_get_last_status_change", runtime_change},
    {"cfg_net_conn_runtime_get_status",
     [] { runtime(cfg_net_conn_runtime_get_status, int32_t{CFG_NET_CONN_RUNNING}); }},
    {"cfg_net_conn_runtime_status_to_string",
     [] { sweep([](World &) { return cfg_net_conn_runtime_status_to_string(4); }, gives_text("running")); }},
    {"cfg_net_conn_set_description",
     [] { text_setter(cfg_net_conn_set_description, cfg_net_conn_get_description, &World::conn); }},
    {"cfg_net_conn_set_dhcp_udhcpc_script",
     [] {
       text_setter(cfg_net_conn_set_dhcp_udhcpc_script, cfg_net_conn_get_dhcp_udhcpc_script, &World::conn);
     }},
    {"cfg_net_conn_set_dhcp_vendor_class",
     [] {
       text_setter(cfg_net_conn_set_dhcp_vendor_class, cfg_net_conn_get_dhcp_vendor_class, &World::conn);
     }},
    {"cfg_net_conn_set_enabled",
     [] { sweep([](World &w) { return cfg_net_conn_set_enabled(w.conn, 0); }, gives(1)); }},
    {"cfg_net_conn_set_mode",
     [] { number_setter(cfg_net_conn_set_mode, cfg_net_conn_get_mode, &World::conn); }},
    {"cfg_net_conn_set_name",
     [] { text_setter(cfg_net_conn_set_name, cfg_net_conn_get_name, &World::conn); }},
    {"cfg_net_conn_set_physif_id",
     [] { text_setter(cfg_net_conn_set_physif_id, cfg_net_conn_get_physif_id, &World::conn); }},
    {"cfg_net_conn_set_role",
     [] { number_setter(cfg_net_conn_set_role, cfg_net_conn_get_role, &World::conn); }},
    {"cfg_net_conn_set_static_address",
     [] { text_setter(cfg_net_conn_set_static_address, cfg_net_conn_get_static_address, &World::conn); }},
    {"cfg_net_conn_set_static_broadcast",
     [] { text_setter(cfg_net_conn_set_static_broadcast, cfg_net_conn_get_static_broadcast, &World::conn); }},
    {"cfg_net_conn_set_static_dns1",
     [] { text_setter(cfg_net_conn_set_static_dns1, cfg_net_conn_get_static_dns1, &World::conn); }},
    {"cfg_net_conn_set_static_dns2",
     [] { text_setter(cfg_net_conn_set_static_dns2, cfg_net_conn_get_static_dns2, &World::conn); }},
    {"cfg_net_conn_set_static_gateway",
     [] { text_setter(cfg_net_conn_set_static_gateway, cfg_net_conn_get_static_gateway, &World::conn); }},
    {"cfg_net_conn_set_static_netmask",
     [] { text_setter(cfg_net_conn_set_static_netmask, cfg_net_conn_get_static_netmask, &World::conn); }},
    {"cfg_net_conn_store", store_conn},
    {"cfg_net_external_address_from_os", address_from_os},
    {"cfg_net_external_endpoint_count",
     [] { number_getter(cfg_net_external_endpoint_count, &World::endpoints, 1); }},
    {"cfg_net_external_endpoint_delete",
     [] { sweep([](World &w) { return cfg_net_external_endpoint_delete(w.endpoint); }, gives(1)); }},
    {"cfg_net_external_endpoint_delete_api_port",
     [] { sweep([](World &w) { return cfg_net_external_endpoint_delete_api_port(w.endpoint); }, gives(1)); }},
    {"cfg_net_external_endpoint_delete_vpn_port",
     [] { sweep([](World &w) { return cfg_net_external_endpoint_delete_vpn_port(w.endpoint); }, gives(1)); }},
    {"cfg_net_external_endpoint_free", [] { release(cfg_net_external_endpoint_free, &World::endpoint); }},
    {"cfg_net_external_endpoint_get_address",
     [] { text_getter(cfg_net_external_endpoint_get_address, &World::endpoint, "gate.example"); }},
    {"cfg_net_external_endpoint_get_api_port",
     [] { number_getter(cfg_net_external_endpoint_get_api_port, &World::endpoint, 443); }},
    {"cfg_net_external_endpoint_get_uuid",
     [] {
       text_getter(cfg_net_external_endpoint_get_uuid, &World::endpoint, "system_net_external_endpoints-1");
     }},
    {"cfg_net_external_endpoint_get_vpn_port",
     [] { number_getter(cfg_net_external_endpoint_get_vpn_port, &World::endpoint, 1194); }},
    {"cfg_net_external_endpoint_list_free",
     [] { release(cfg_net_external_endpoint_list_free, &World::endpoints); }},
    {"cfg_net_external_endpoint_new", new_endpoint},
    {"cfg_net_external_endpoint_save", save_endpoint},
    {"cfg_net_external_endpoint_set_address",
     [] {
       text_setter(cfg_net_external_endpoint_set_address, cfg_net_external_endpoint_get_address,
                   &World::endpoint);
     }},
    {"cfg_net_external_endpoint_set_api_port",
     [] {
       number_setter(cfg_net_external_endpoint_set_api_port, cfg_net_external_endpoint_get_api_port,
                     &World::endpoint);
     }},
    {"cfg_net_external_endpoint_set_vpn_port",
     [] {
       number_setter(cfg_net_external_endpoint_set_vpn_port, cfg_net_external_endpoint_get_vpn_port,
                     &World::endpoint);
     }},
    {"cfg_net_get_external_address_from_cfg_or_os",
     [] {
       heap([](World &w) { return cfg_net_get_external_address_from_cfg_or_os(w.store); }, "gate.example");
     }},
    {"cfg_net_get_external_endpoint",
     [] {
       sweep([](World &w) { return cfg_net_get_external_endpoint(w.endpoints, 0); }, gives_text(kEndpoint));
     }},
    {"cfg_net_get_external_endpoint_by_id",
     [] { load([](World &w) { return cfg_net_get_external_endpoint_by_id(w.store, kEndpoint); }); }},
    {"cfg_net_get_external_endpoint_list", endpoint_list},
    {"cfg_net_physif_free", [] { release(cfg_net_physif_free, &World::ethernet); }},
    {"cfg_net_physif_from_elem",
     [] {
       load([](World &w) { return cfg_net_physif_from_elem(w.store, cfg_get_by_id(w.store, kEthernet)); });
     }},
    {"cfg_net_physif_get_description",
     [] { text_getter(cfg_net_physif_get_description, &World::ethernet, "the interface's description"); }},
    {"cfg_net_physif_get_device", [] { text_getter(cfg_net_physif_get_device, &World::ethernet, "eth0"); }},
    {"cfg_net_physif_get_enabled", [] { number_getter(cfg_net_physif_get_enabled, &World::ethernet, 1); }},
    {"cfg_net_physif_get_ethernet_link_speed",
     [] { text_getter(cfg_net_physif_get_ethernet_link_speed, &World::ethernet, "the link_speed"); }},
    {"cfg_net_physif_get_id",
     [] { text_getter(cfg_net_physif_get_id, &World::ethernet, "system_net_physifs-1"); }},
    {"cfg_net_physif_get_media_type",
     [] { number_getter(cfg_net_physif_get_media_type, &World::ethernet, 1); }},
    {"cfg_net_physif_get_mtu", [] { number_getter(cfg_net_physif_get_mtu, &World::ethernet, 1500); }},
    {"cfg_net_physif_get_name",
     [] { text_getter(cfg_net_physif_get_name, &World::ethernet, "the interface's name"); }},
    {"cfg_net_physif_get_wireless_auth",
     [] { text_getter(cfg_net_physif_get_wireless_auth, &World::wireless, "the auth"); }},
    {"cfg_net_physif_get_wireless_config",
     [] { text_getter(cfg_net_physif_get_wireless_config, &World::wireless, "the config"); }},
    {"cfg_net_physif_get_wireless_encryption",
     [] { text_getter(cfg_net_physif_get_wireless_encryption, &World::wireless, "the encryption"); }},
    {"cfg_net_physif_get_wireless_psk",
     [] { text_getter(cfg_net_physif_get_wireless_psk, &World::wireless, "the psk"); }},
    {"cfg_net_physif_get_wireless_regdomain",
     [] { text_getter(cfg_net_physif_get_wireless_regdomain, &World::wireless, "the regdomain"); }},
    {"cfg_net_physif_get_wireless_ssid",
     [] { text_getter(cfg_net_physif_get_wireless_ssid, &World::wireless, "the ssid"); }},
    {"cfg_net_physif_media_type_from_string",
     [] { sweep([](World &) { return cfg_net_physif_media_type_from_string("wireless"); }, gives(2)); }},
    {"cfg_net_physif_media_type_to_string",
     [] { sweep([](World &) { return cfg_net_physif_media_type_to_string(2); }, gives_text("wireless")); }},
    {"cfg_net_physif_set_description",
     [] { text_setter(cfg_net_physif_set_description, cfg_net_physif_get_description, &World::ethernet); }},
    {"cfg_net_physif_set_enabled",
     [] { sweep([](World &w) { return cfg_net_physif_set_enabled(w.ethernet, 0); }, gives(1)); }},
    {"cfg_net_physif_set_ethernet_link_speed",
     [] {
       text_setter(cfg_net_physif_set_ethernet_link_speed, cfg_net_physif_get_ethernet_link_speed,
                   &World::ethernet);
     }},
    {"cfg_net_physif_set_media_type",
     [] { number_setter(cfg_net_physif_set_media_type, cfg_net_physif_get_media_type, &World::ethernet); }},
    {"cfg_net_physif_set_mtu",
     [] { number_setter(cfg_net_physif_set_mtu, cfg_net_physif_get_mtu, &World::ethernet); }},
    {"cfg_net_physif_set_name",
     [] { text_setter(cfg_net_physif_set_name, cfg_net_physif_get_name, &World::ethernet); }},
    {"cfg_net_physif_set_wireless_auth",
     [] {
       text_setter(cfg_net_physif_set_wireless_auth, cfg_net_physif_get_wireless_auth, &World::wireless);
     }},
    {"cfg_net_physif_set_wireless_config",
     [] {
       text_setter(cfg_net_physif_set_wireless_config, cfg_net_physif_get_wireless_config, &World::wireless);
     }},
    {"cfg_net_physif_set_wireless_encryption",
     [] {
       text_setter(cfg_net_physif_set_wireless_encryption, cfg_net_physif_get_wireless_encryption,
                   &World::wireless);
     }},
    {"cfg_net_physif_set_wireless_psk",
     [] { text_setter(cfg_net_physif_set_wireless_psk, cfg_net_physif_get_wireless_psk, &World::wireless); }},
    {"cfg_net_physif_set_wireless_regdomain",
     [] {
       text_setter(cfg_net_physif_set_wireless_regdomain, cfg_net_physif_get_wireless_regdomain,
                   &World::wireless);
     }},
    {"cfg_net_physif_set_wireless_ssid",
     [] {
       text_setter(cfg_net_physif_set_wireless_ssid, cfg_net_physif_get_wireless_ssid, &World::wireless);
     }},
    {"cfg_net_physif_store", store_physif},
    {"cfg_net_update_external_endpoint",
     [] { sweep([](World &w) { return cfg_net_update_external_endpoint(w.endpoint, 0, 1); }, gives(1)); }},
};

}  // namespace

const std::span<const Case> network_cases = rows;

}  // namespace allocation
