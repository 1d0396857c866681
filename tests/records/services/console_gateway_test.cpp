#include <twobject/console_gateway.h>

#include "records/store_fixture.hpp"

namespace {

struct free_gateway {
  void operator()(cfg_service_console_gateway *gateway) const { cfg_service_console_gateway_free(gateway); }
};
using gateway_record = std::unique_ptr<cfg_service_console_gateway, free_gateway>;

class ConsoleGateway : public records::StoreTest {
 protected:
  gateway_record load() { return gateway_record(cfg_get_service_console_gateway(store)); }
};

TEST_F(ConsoleGateway, WithoutADelimiterThereAreNoSettings) {
  EXPECT_EQ(nullptr, load());
  EXPECT_EQ(nullptr, cfg_get_service_console_gateway(nullptr));
  set(map_at("services.consoleGateway"), "ssh_delimiter", 7);
  EXPECT_EQ(nullptr, load());
}

TEST_F(ConsoleGateway, TheDelimiterIsReadAndWrittenBack) {
  set(map_at("services.consoleGateway"), "ssh_delimiter", ":");
  const gateway_record gateway = load();
  EXPECT_STREQ(":", cfg_service_console_gateway_get_ssh_delim(gateway.get()));
  EXPECT_EQ(1, cfg_service_console_gateway_set_ssh_delim(gateway.get(), "+"));
  EXPECT_STREQ("+", cfg_service_console_gateway_get_ssh_delim(gateway.get()));
  EXPECT_EQ("\":\"", dump("services.consoleGateway.ssh_delimiter"));
  EXPECT_EQ(1, cfg_service_console_gateway_update(gateway.get()));
  EXPECT_EQ("{services={consoleGateway={ssh_delimiter=\"+\"}}}", dump(""));
}

TEST_F(ConsoleGateway, NullIsRefusedAndAnEmptyDelimiterIsOne) {
  set(map_at("services.consoleGateway"), "ssh_delimiter", ":");
  const gateway_record gateway = load();
  EXPECT_EQ(0, cfg_service_console_gateway_set_ssh_delim(gateway.get(), nullptr));
  EXPECT_STREQ(":", cfg_service_console_gateway_get_ssh_delim(gateway.get()));
  EXPECT_EQ(1, cfg_service_console_gateway_set_ssh_delim(gateway.get(), ""));
  EXPECT_STREQ("", cfg_service_console_gateway_get_ssh_delim(gateway.get()));
  EXPECT_EQ(1, cfg_service_console_gateway_update(gateway.get()));
  EXPECT_EQ("\"\"", dump("services.consoleGateway.ssh_delimiter"));
}

TEST_F(ConsoleGateway, WithoutItsMapOneIsMadeUnderALiteralKeyAndFoundByItsPath) {
  set(map_at("services.consoleGateway"), "ssh_delimiter", ":");
  const gateway_record gateway = load();
  erase(cfg_root(store), "services");
  EXPECT_EQ(1, cfg_service_console_gateway_update(gateway.get()));
  EXPECT_EQ("{services.consoleGateway={ssh_delimiter=\":\"}}", dump(""));
  commit_and_reopen();
  EXPECT_STREQ(":", cfg_service_console_gateway_get_ssh_delim(load().get()));
}

TEST_F(ConsoleGateway, AWriteThatFailsIsTold) {
  set(map_at("services.consoleGateway"), "ssh_delimiter", ":");
  const gateway_record gateway = load();
  cfg_service_console_gateway_set_ssh_delim(gateway.get(), records::unwritable().c_str());
  EXPECT_EQ(0, cfg_service_console_gateway_update(gateway.get()));
}

TEST_F(ConsoleGateway, EverythingTakesNull) {
  EXPECT_EQ(nullptr, cfg_service_console_gateway_get_ssh_delim(nullptr));
  EXPECT_EQ(0, cfg_service_console_gateway_set_ssh_delim(nullptr, ":"));
  EXPECT_EQ(0, cfg_service_console_gateway_update(nullptr));
  cfg_service_console_gateway_free(nullptr);
}

}  // namespace
