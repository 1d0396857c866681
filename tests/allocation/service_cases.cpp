#include <cstdlib>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

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

void ntp(cfg_ntp *(*get)(cfg *), const char *server) {
  sweep([=](World &w) { return get(w.store); },
        [=](World &, cfg_ntp *ntp) {
          if (ntp) EXPECT_STREQ(cfg_get_ntp_server_uuid(ntp, 0), server);
          cfg_ntp_free(ntp);
          return ntp != nullptr;
        });
}

void set_ntp_enabled() {
  sweep(
      [](World &w) {
        cfg_set_ntp_enabled(w.ntp, 7);
        return 1;
      },
      [](World &w, int) { return cfg_get_ntp_enabled(w.ntp) == 7; });
}

void server_value() {
  sweep([](World &w) { return cfg_get_ntp_server_value(w.ntp, 0); },
        [](World &, char *server) {
          if (server) EXPECT_STREQ(server, "a server of time, somewhere");
          std::free(server);
          return server != nullptr;
        });
}

// It answers 1 whatever happens. A list that is there is never taken for missing and replaced.
void create_server() {
  sweep([](World &w) { return cfg_create_ntp_server(w.ntp, kNew); },
        [](World &w, int created) {
          int32_t servers = 0;
          EXPECT_TRUE(cfg_list_size(cfg_get_by_path(w.store, "services.ntp.servers"), &servers));
          EXPECT_EQ(servers, 1);
          return created == 1;
        });
}

void save_ntp() {
  sweep([](World &w) { return cfg_ntp_save(w.ntp); }, gives(1),
        [](World &w) { cfg_set_ntp_enabled(w.ntp, 0); });
}

void gateway() {
  sweep([](World &w) { return cfg_get_service_console_gateway(w.store); },
        [](World &, cfg_service_console_gateway *found) {
          if (found) EXPECT_STREQ(cfg_service_console_gateway_get_ssh_delim(found), "the delimiter");
          cfg_service_console_gateway_free(found);
          return found != nullptr;
        });
}

template <class Call>
void flag(Call call) {
  sweep(call, [](World &, cfg_boot_flag *found) {
    if (found) {
      EXPECT_STREQ(cfg_boot_flag_get_name(found), "wipe");
      EXPECT_STREQ(cfg_boot_flag_get_flag_type(found), "the flag's type");
      EXPECT_EQ(cfg_boot_flag_get_isset(found), 1);
    }
    cfg_boot_flag_free(found);
    return found != nullptr;
  });
}

void save_flag() {
  sweep([](World &w) { return cfg_boot_flag_save(w.boot_flag); }, gives(1),
        [](World &w) { EXPECT_EQ(cfg_boot_flag_set_isset(w.boot_flag, 0), 1); });
}

const Case rows[] = {
    {"cfg_boot_flag_free", [] { release(cfg_boot_flag_free, &World::boot_flag); }},
    {"cfg_boot_flag_get_by_id",
     [] { flag([](World &w) { return cfg_boot_flag_get_by_id(w.store, kBootFlag); }); }},
    {"cfg_boot_flag_get_by_name",
     [] { flag([](World &w) { return cfg_boot_flag_get_by_name(w.store, "wipe"); }); }},
    {"cfg_boot_flag_get_flag_type",
     [] { text_getter(cfg_boot_flag_get_flag_type, &World::boot_flag, "the flag's type"); }},
    {"cfg_boot_flag_get_isset", [] { number_getter(cfg_boot_flag_get_isset, &World::boot_flag, 1); }},
    {"cfg_boot_flag_get_name", [] { text_getter(cfg_boot_flag_get_name, &World::boot_flag, "wipe"); }},
    {"cfg_boot_flag_get_uuid",
     [] { text_getter(cfg_boot_flag_get_uuid, &World::boot_flag, "boot_flags-1"); }},
    {"cfg_boot_flag_new",
     [] { flag([](World &w) { return cfg_boot_flag_new(w.store, "wipe", "the flag's type"); }); }},
    {"cfg_boot_flag_save", save_flag},
    {"cfg_boot_flag_set_flag_type",
     [] { text_setter(cfg_boot_flag_set_flag_type, cfg_boot_flag_get_flag_type, &World::boot_flag); }},
    {"cfg_boot_flag_set_isset",
     [] { number_setter(cfg_boot_flag_set_isset, cfg_boot_flag_get_isset, &World::boot_flag); }},
    {"cfg_boot_flag_set_name",
     [] { text_setter(cfg_boot_flag_set_name, cfg_boot_flag_get_name, &World::boot_flag); }},
    {"cfg_create_ntp_server", create_server},
    {"cfg_delete_ntp_server",
     [] { sweep([](World &w) { return cfg_delete_ntp_server(w.ntp, 0); }, gives(1)); }},
    {"cfg_get_ntp", [] { ntp(cfg_get_ntp, kNtpServer); }},
    {"cfg_get_ntp_enabled", [] { number_getter(cfg_get_ntp_enabled, &World::ntp, 1); }},
    {"cfg_get_ntp_id", [] { text_getter(cfg_get_ntp_id, &World::ntp, "services.ntp"); }},
    {"cfg_get_ntp_server_count", [] { number_getter(cfg_get_ntp_server_count, &World::ntp, 1); }},
    {"cfg_get_ntp_server_uuid",
     [] { sweep([](World &w) { return cfg_get_ntp_server_uuid(w.ntp, 0); }, gives_text(kNtpServer)); }},
    {"cfg_get_ntp_server_value", server_value},
    {"cfg_get_service_console_gateway", gateway},
    {"cfg_new_ntp", [] { ntp(cfg_new_ntp, nullptr); }},
    {"cfg_ntp_free", [] { release(cfg_ntp_free, &World::ntp); }},
    {"cfg_ntp_save", save_ntp},
    {"cfg_service_console_gateway_free", [] { release(cfg_service_console_gateway_free, &World::gateway); }},
    {"cfg_service_console_gateway_get_ssh_delim",
     [] { text_getter(cfg_service_console_gateway_get_ssh_delim, &World::gateway, "the delimiter"); }},
    {"cfg_service_console_gateway_set_ssh_delim",
     [] {
       text_setter(cfg_service_console_gateway_set_ssh_delim, cfg_service_console_gateway_get_ssh_delim,
                   &World::gateway);
     }},
    {"cfg_service_console_gateway_update",
     [] { sweep([](World &w) { return cfg_service_console_gateway_update(w.gateway); }, gives(1)); }},
    {"cfg_set_ntp_enabled", set_ntp_enabled},
    {"cfg_set_ntp_server_value",
     [] { sweep([](World &w) { return cfg_set_ntp_server_value(w.ntp, 0, kNew); }, gives(1)); }},
};

}  // namespace

const std::span<const Case> service_cases = rows;

}  // namespace allocation
