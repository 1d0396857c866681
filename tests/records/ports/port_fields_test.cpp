// Port records in memory: constructor, getters, setters.
#include "port_fixture.hpp"
#include "port_rows.hpp"

namespace {

using records::port_record;

struct text_field {
  const char *key;
  int (*set)(cfg_port *, const char *);
  const char *(*get)(const cfg_port *);
};
constexpr text_field settable[] = {
    {"label", cfg_port_set_label, cfg_port_get_label},
    {"id", cfg_port_set_csid, cfg_port_get_csid},
    {"mode", cfg_port_set_mode, cfg_port_get_mode},
    {"connection_method", cfg_port_set_connection_method, cfg_port_get_connection_method},
    {"line_id", cfg_port_set_line_id, cfg_port_get_line_id},
    {"baud", cfg_port_set_hardware_uart_baud, cfg_port_get_hardware_uart_baud},
    {"dataBits", cfg_port_set_hardware_uart_dataBits, cfg_port_get_hardware_uart_dataBits},
    {"stopBits", cfg_port_set_hardware_uart_stopBits, cfg_port_get_hardware_uart_stopBits},
    {"parity", cfg_port_set_hardware_uart_parity, cfg_port_get_hardware_uart_parity},
    {"flowControl", cfg_port_set_hardware_uart_flowControl, cfg_port_get_hardware_uart_flowControl},
};

class PortFields : public records::PortTest {
 protected:
  port_record port{cfg_new_port(nullptr)};
};

TEST_F(PortFields, OfANewPortAreAllEmpty) {
  ASSERT_NE(nullptr, port);
  EXPECT_EQ(nullptr, cfg_port_get_uuid(port.get()));
  EXPECT_EQ(nullptr, cfg_port_get_node_id(port.get()));
  for (const auto &field : records::port_texts) EXPECT_EQ(nullptr, field.get(port.get())) << field.path;
  for (const auto &field : records::port_truths) EXPECT_EQ(0, field.get(port.get())) << field.path;
  for (const auto &field : records::port_integers) EXPECT_EQ(0, field.get(port.get())) << field.path;
}

TEST_F(PortFields, OfNoPortAreNullOrZeroAndCannotBeSet) {
  EXPECT_EQ(nullptr, cfg_port_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_port_get_node_id(nullptr));
  for (const auto &field : records::port_texts) EXPECT_EQ(nullptr, field.get(nullptr)) << field.path;
  for (const auto &field : records::port_truths) EXPECT_EQ(0, field.get(nullptr)) << field.path;
  for (const auto &field : records::port_integers) EXPECT_EQ(0, field.get(nullptr)) << field.path;
  for (const text_field &field : settable) EXPECT_EQ(0, field.set(nullptr, "text")) << field.key;
  EXPECT_EQ(0, cfg_port_set_remote_port(nullptr, 1));
  EXPECT_EQ(0, cfg_port_delete_remote_port(nullptr));
  EXPECT_EQ(0, cfg_port_delete_line_id(nullptr));
  cfg_port_free(nullptr);
}

TEST_F(PortFields, SettersKeepACopy) {
  for (const text_field &field : settable) {
    SCOPED_TRACE(field.key);
    std::string text = "first";
    EXPECT_EQ(1, field.set(port.get(), text.c_str()));
    text = "changed";
    EXPECT_STREQ("first", field.get(port.get()));
    EXPECT_EQ(1, field.set(port.get(), "second"));
    EXPECT_STREQ("second", field.get(port.get()));
  }
  for (const text_field &field : settable) EXPECT_STREQ("second", field.get(port.get())) << field.key;
}

TEST_F(PortFields, AnEmptyTextAndNullClear) {
  for (const text_field &field : settable) {
    SCOPED_TRACE(field.key);
    for (const char *nothing : {"", static_cast<const char *>(nullptr)}) {
      EXPECT_EQ(1, field.set(port.get(), "text"));
      EXPECT_EQ(1, field.set(port.get(), nothing));
      EXPECT_EQ(nullptr, field.get(port.get()));
    }
  }
}

TEST_F(PortFields, SettingThePointerThatAFieldHoldsAnswersZeroAndKeepsIt) {
  for (const text_field &field : settable) {
    SCOPED_TRACE(field.key);
    EXPECT_EQ(0, field.set(port.get(), nullptr));
    EXPECT_EQ(1, field.set(port.get(), "text"));
    EXPECT_EQ(0, field.set(port.get(), field.get(port.get())));
    EXPECT_STREQ("text", field.get(port.get()));
  }
}

TEST_F(PortFields, LineAndRemotePortCanBeDeleted) {
  EXPECT_EQ(1, cfg_port_set_line_id(port.get(), "line"));
  EXPECT_EQ(1, cfg_port_delete_line_id(port.get()));
  EXPECT_EQ(nullptr, cfg_port_get_line_id(port.get()));
  EXPECT_EQ(1, cfg_port_delete_line_id(port.get()));
  for (const int32_t number : {7001, -1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(1, cfg_port_set_remote_port(port.get(), number));
    EXPECT_EQ(number, cfg_port_get_remote_port(port.get()));
  }
  EXPECT_EQ(1, cfg_port_delete_remote_port(port.get()));
  EXPECT_EQ(0, cfg_port_get_remote_port(port.get()));
}

}  // namespace
