// The live status of connections, from live state of the test's own.
#include <twinfod.h>

#include "network_fixture.hpp"
#include "store_processes/scratch.hpp"

namespace {

using records::conn_record;

class ConnRuntime : public records::NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    setenv("TW_INFOD_DIR", (scratch_.path() + "/live").c_str(), 1);
    elem = add_conn_on("eth0", "uplink", "dhcp");
  }
  void publish(const char *key, const char *text) { ASSERT_EQ(0, infod_push_text(key, text, 0)); }
  void publish_status(const char *text) { publish("conman.network-local-conn-uplink.status", text); }
  void publish_lease() {
    publish("udhcpc.eth0.ip", " 10.0.0.7 \n");
    publish("udhcpc.eth0.subnet", "\t255.0.0.0");
    publish("udhcpc.eth0.router", "10.0.0.1\r\n");
    publish("udhcpc.eth0.dns", "  9.9.9.9 8.8.8.8  ");
  }
  int32_t status() { return cfg_net_conn_runtime_get_status(conn(elem).get()); }

  cfg_elem *elem = nullptr;

 private:
  trial::Scratch scratch_;
};

TEST_F(ConnRuntime, TheFirstWordThatTheValueContainsDecides) {
  const struct {
    const char *value;
    int32_t status;
  } cases[] = {{"starting", 2}, {"test", 2},          {"testing", 2},   {"down", 1},
               {"start", 1},    {"started", 1},       {"stop", 3},      {"stopping", 3},
               {"up", 4},       {"backup", 4},        {"", 0},          {"else", 0},
               {"UP", 0},       {"down up", 1},       {"stop down", 1}, {"start stopped", 1},
               {"up stop", 3},  {"starting down", 2}, {"startin", 1},   {"down test", 2}};
  for (const auto &one : cases) {
    publish_status(one.value);
    EXPECT_EQ(one.status, status()) << one.value;
  }
}

TEST_F(ConnRuntime, TheStatusComesWithTheSecondOfItsChange) {
  publish_status("up");
  char *text = nullptr;
  int64_t time_ms = 0;
  ASSERT_EQ(0, infod_get_extended("conman.network-local-conn-uplink.status", &text, &time_ms));
  std::free(text);
  EXPECT_EQ(time_ms / 1000, cfg_net_conn_runtime_get_last_status_change(conn(elem).get()));
  EXPECT_GT(time_ms, 1600000000000);
}

TEST_F(ConnRuntime, AnUnknownWordHasItsTimeToo) {
  publish_status("else");
  const conn_record record = conn(elem);
  EXPECT_GT(cfg_net_conn_runtime_get_last_status_change(record.get()), 1600000000);
  EXPECT_EQ(CFG_NET_CONN_UNKNOWN, cfg_net_conn_runtime_get_status(record.get()));
}

TEST_F(ConnRuntime, WhileTheNetworkIsReloadedEveryConnectionIsReloadingAndHasItsLease) {
  publish("conman.internal.reloading", "it is true");
  publish_status("up");
  publish_lease();
  const conn_record record = conn(elem);
  EXPECT_EQ(CFG_NET_CONN_RELOADING, cfg_net_conn_runtime_get_status(record.get()));
  EXPECT_GT(cfg_net_conn_runtime_get_last_status_change(record.get()), 1600000000);
  EXPECT_STREQ("10.0.0.7", cfg_net_conn_runtime_get_dhcp_address(record.get()));
}

TEST_F(ConnRuntime, AReloadingValueWithoutTrueDoesNotCount) {
  publish("conman.internal.reloading", "false");
  publish_status("up");
  EXPECT_EQ(CFG_NET_CONN_RUNNING, status());
}

TEST_F(ConnRuntime, TheLeaseOfADhcpConnectionIsReadAndTrimmed) {
  publish_status("up");
  publish_lease();
  const conn_record record = conn(elem);
  EXPECT_STREQ("10.0.0.7", cfg_net_conn_runtime_get_dhcp_address(record.get()));
  EXPECT_STREQ("255.0.0.0", cfg_net_conn_runtime_get_dhcp_netmask(record.get()));
  EXPECT_STREQ("10.0.0.1", cfg_net_conn_runtime_get_dhcp_gateway(record.get()));
  EXPECT_STREQ("9.9.9.9 8.8.8.8", cfg_net_conn_runtime_get_dhcp_dns(record.get()));
}

TEST_F(ConnRuntime, AStaticConnectionHasNoLease) {
  set(elem, "mode", "static");
  publish_status("up");
  publish_lease();
  const conn_record record = conn(elem);
  EXPECT_EQ(CFG_NET_CONN_RUNNING, cfg_net_conn_runtime_get_status(record.get()));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_address(record.get()));
}

TEST_F(ConnRuntime, TheFirstMissingItemEndsTheLeaseAndWhatWasReadStays) {
  publish_status("up");
  publish("udhcpc.eth0.ip", "10.0.0.7");
  publish("udhcpc.eth0.router", "10.0.0.1");
  const conn_record record = conn(elem);
  EXPECT_STREQ("10.0.0.7", cfg_net_conn_runtime_get_dhcp_address(record.get()));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_netmask(record.get()));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_gateway(record.get()));
  EXPECT_EQ(CFG_NET_CONN_RUNNING, cfg_net_conn_runtime_get_status(record.get()));
}

TEST_F(ConnRuntime, WithoutAStatusThereIsNoLeaseEither) {
  publish_lease();
  const conn_record record = conn(elem);
  EXPECT_EQ(CFG_NET_CONN_UNKNOWN, cfg_net_conn_runtime_get_status(record.get()));
  EXPECT_EQ(0, cfg_net_conn_runtime_get_last_status_change(record.get()));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_address(record.get()));
}

TEST_F(ConnRuntime, WithoutItsInterfaceADhcpConnectionHasAStatusOnly) {
  publish_status("up");
  publish_lease();
  set_reference(elem, "physif", "system_net_physifs-99");
  const conn_record record = conn(elem);
  EXPECT_EQ(CFG_NET_CONN_RUNNING, cfg_net_conn_runtime_get_status(record.get()));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_address(record.get()));
}

TEST_F(ConnRuntime, TheRecordKeepsWhatItHasRead) {
  publish_status("up");
  const conn_record record = conn(elem);
  EXPECT_EQ(CFG_NET_CONN_RUNNING, cfg_net_conn_runtime_get_status(record.get()));
  publish_status("down");
  EXPECT_EQ(CFG_NET_CONN_RUNNING, cfg_net_conn_runtime_get_status(record.get()));
  EXPECT_EQ(CFG_NET_CONN_DOWN, status());
}

TEST_F(ConnRuntime, TheInterfaceAndTheNameAreThoseOfTheRecordAndNotOfItsElement) {
  publish("conman.network-local-conn-other.status", "down");
  publish("udhcpc.eth1.ip", "10.1.1.1");
  const conn_record record = conn(elem);
  cfg_net_conn_set_name(record.get(), "other");
  cfg_net_conn_set_physif_id(record.get(), id_of(add_physif("eth1")).c_str());
  EXPECT_EQ(CFG_NET_CONN_DOWN, cfg_net_conn_runtime_get_status(record.get()));
  EXPECT_STREQ("10.1.1.1", cfg_net_conn_runtime_get_dhcp_address(record.get()));
}

TEST_F(ConnRuntime, AFailedReadIsNotTriedAgain) {
  const conn_record record = conn(elem);
  EXPECT_EQ(CFG_NET_CONN_UNKNOWN, cfg_net_conn_runtime_get_status(record.get()));
  publish_status("up");
  EXPECT_EQ(CFG_NET_CONN_UNKNOWN, cfg_net_conn_runtime_get_status(record.get()));
}

TEST_F(ConnRuntime, GettersOfNullGiveNullOrZero) {
  EXPECT_EQ(0, cfg_net_conn_runtime_get_status(nullptr));
  EXPECT_EQ(0, cfg_net_conn_runtime_get_last_status_change(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_address(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_netmask(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_gateway(nullptr));
  EXPECT_EQ(nullptr, cfg_net_conn_runtime_get_dhcp_dns(nullptr));
}

}  // namespace
