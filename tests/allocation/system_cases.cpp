#include "allocation/cases.hpp"

#include <cstdlib>

namespace allocation {
namespace {

void text(int (*get)(cfg *, char **), const char *expected) {
  struct Copy {
    int result;
    char *text;
  };
  sweep(
      [=](World &w) {
        Copy copy{0, nullptr};
        copy.result = get(w.store, &copy.text);
        return copy;
      },
      [=](World &, Copy copy) {
        if (copy.result)
          EXPECT_STREQ(copy.text, expected);
        else
          EXPECT_EQ(copy.text, nullptr);
        std::free(copy.text);
        return copy.result == 1;
      });
}

void number(int (*get)(cfg *, int32_t *), int32_t expected) {
  sweep(
      [=](World &w) {
        int32_t out = -1;
        return get(w.store, &out) ? out : -1;
      },
      [=](World &, int32_t got) {
        if (got != expected) EXPECT_EQ(got, -1);
        return got == expected;
      });
}

void text_set(int (*set)(cfg *, const char *), int (*get)(cfg *, char **)) {
  sweep([=](World &w) { return set(w.store, kNew); },
        [=](World &w, int done) {
          char *now = nullptr;
          EXPECT_EQ(get(w.store, &now), 1);
          if (done)
            EXPECT_STREQ(now, kNew);
          else
            EXPECT_STRNE(now, kNew);
          std::free(now);
          return done == 1;
        });
}

void number_set(int (*set)(cfg *, int32_t), int (*get)(cfg *, int32_t *)) {
  sweep([=](World &w) { return set(w.store, 4711); },
        [=](World &w, int done) {
          int32_t now = 0;
          EXPECT_EQ(get(w.store, &now), 1);
          EXPECT_EQ(now == 4711, done == 1);
          return done == 1;
        });
}

const Case rows[] = {
    {"cfg_net_get_ssh_port", [] { number(cfg_net_get_ssh_port, 22); }},
    {"cfg_net_set_ssh_port", [] { number_set(cfg_net_set_ssh_port, cfg_net_get_ssh_port); }},
    {"cfg_system_get_cli_session_timeout", [] { number(cfg_system_get_cli_session_timeout, 30); }},
    {"cfg_system_get_fhvpn_mtu", [] { number(cfg_system_get_fhvpn_mtu, 1400); }},
    {"cfg_system_get_hostname", [] { text(cfg_system_get_hostname, "appliance"); }},
    {"cfg_system_get_ping_interval", [] { number(cfg_system_get_ping_interval, 40); }},
    {"cfg_system_get_sync_interval", [] { number(cfg_system_get_sync_interval, 50); }},
    {"cfg_system_get_timezone", [] { text(cfg_system_get_timezone, "Pacific/Auckland"); }},
    {"cfg_system_get_webui_session_timeout", [] { number(cfg_system_get_webui_session_timeout, 20); }},
    {"cfg_system_set_cli_session_timeout",
     [] { number_set(cfg_system_set_cli_session_timeout, cfg_system_get_cli_session_timeout); }},
    {"cfg_system_set_fhvpn_mtu", [] { number_set(cfg_system_set_fhvpn_mtu, cfg_system_get_fhvpn_mtu); }},
    {"cfg_system_set_hostname", [] { text_set(cfg_system_set_hostname, cfg_system_get_hostname); }},
    {"cfg_system_set_ping_interval",
     [] { number_set(cfg_system_set_ping_interval, cfg_system_get_ping_interval); }},
    {"cfg_system_set_sync_interval",
     [] { number_set(cfg_system_set_sync_interval, cfg_system_get_sync_interval); }},
    {"cfg_system_set_timezone", [] { text_set(cfg_system_set_timezone, cfg_system_get_timezone); }},
    {"cfg_system_set_webui_session_timeout",
     [] { number_set(cfg_system_set_webui_session_timeout, cfg_system_get_webui_session_timeout); }},
};

}  // namespace

const std::span<const Case> system_cases = rows;

}  // namespace allocation
