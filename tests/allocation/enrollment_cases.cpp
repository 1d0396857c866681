#include <cstdlib>
#include <cstring>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::enrollment;
constexpr auto kPlain = &World::generic_enrollment;

// Whether an enrolment is there; one that is there must be there whole.
bool whole(const cfg_enrollment *record, const char *id) {
  if (!record) return false;
  EXPECT_NE(cfg_enrollment_get_name(record), nullptr);
  if (std::strcmp(id, kTarnwell) == 0) {
    EXPECT_STREQ(cfg_enrollment_get_package_password(record), "the package's password");
    EXPECT_NE(cfg_enrollment_get_ca(record), nullptr);
    EXPECT_STREQ(cfg_enrollment_get_key(record), "node one's private key");
  } else {
    EXPECT_STREQ(cfg_enrollment_get_password(record), "generic's password");
    EXPECT_STREQ(cfg_enrollment_get_port_label(record, 1), "second port");
  }
  return true;
}

void get_by_id(const char *id) {
  sweep([=](World &w) { return cfg_enrollment_get_by_id(w.store, id); },
        [=](World &, cfg_enrollment *found) {
          const bool there = whole(found, id);
          cfg_enrollment_free(found);
          return there;
        });
}

void make(const char *product) {
  sweep([=](World &w) { return cfg_enrollment_new(w.store, product); },
        [=](World &, cfg_enrollment *made) {
          const bool there = made != nullptr;
          if (there) {
            EXPECT_STREQ(cfg_enrollment_get_product(made), product);
            const char *password = cfg_enrollment_get_package_password(made);
            EXPECT_EQ(password ? std::strlen(password) : 0, std::strcmp(product, "tarnwell") == 0 ? 64U : 0U);
          }
          cfg_enrollment_free(made);
          return there;
        });
}

// Saves a record that has no element yet.
void save_new(const char *product) {
  sweep([](World &w) { return cfg_enrollment_save(w.enrollment); },
        [=](World &w, int saved) {
          if (saved) {
            cfg_enrollment *again = cfg_enrollment_get_by_id(w.store, cfg_enrollment_get_uuid(w.enrollment));
            EXPECT_STREQ(cfg_enrollment_get_product(again), product);
            const bool generic = std::strcmp(product, "generic") == 0;
            EXPECT_STREQ(cfg_enrollment_get_port_label(again, 1), generic ? "Port 2" : nullptr);
            cfg_enrollment_free(again);
          }
          return saved == 1;
        },
        [=](World &w) {
          cfg_enrollment_free(w.enrollment);
          w.enrollment = cfg_enrollment_new(w.store, product);
          ASSERT_EQ(cfg_enrollment_set_connection_method(w.enrollment, "ssh"), 1);
          ASSERT_EQ(cfg_enrollment_set_credentials(w.enrollment, kNew, kNew), 1);
          ASSERT_EQ(cfg_enrollment_set_port_count_field(w.enrollment, 2), 1);
        });
}

void save_changed() {
  sweep([](World &w) { return cfg_enrollment_save(w.generic_enrollment); },
        [](World &w, int saved) {
          if (saved) {
            cfg_enrollment *again = cfg_enrollment_get_by_id(w.store, kGeneric);
            EXPECT_TRUE(whole(again, kGeneric));
            EXPECT_STREQ(cfg_enrollment_get_name(again), kNew);
            cfg_enrollment_free(again);
          }
          return saved == 1;
        },
        [](World &w) { ASSERT_EQ(cfg_enrollment_set_name(w.generic_enrollment, kNew), 1); });
}

void remove() {
  sweep(
      [](World &w) {
        cfg_enrollment_delete(w.enrollment);
        return 0;
      },
      [](World &w, int) { return cfg_get_by_id(w.store, kTarnwell) == nullptr; });
}

void release() {
  sweep(
      [](World &w) {
        cfg_enrollment_free(w.enrollment);
        w.enrollment = nullptr;
        return 1;
      },
      gives(1));
}

void delete_package_password() {
  sweep([](World &w) { return cfg_enrollment_delete_package_password(w.enrollment); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_enrollment_get_package_password(w.enrollment), nullptr);
          return done == 1;
        });
}

void status() {
  sweep([](World &w) { return cfg_enrollment_get_status(w.enrollment); },
        [](World &, char *copy) {
          const bool there = copy != nullptr;
          if (there) EXPECT_STREQ(copy, "tarnwell's status");
          std::free(copy);
          return there;
        });
}

void set_status() {
  sweep([](World &w) { return cfg_enrollment_set_status(w.enrollment, kNew); },
        [](World &w, int done) {
          char *now = cfg_enrollment_get_status(w.enrollment);
          if (done) EXPECT_STREQ(now, kNew);
          std::free(now);
          return done == 1;
        });
}

void uuid() {
  sweep([](World &w) { return cfg_enrollment_get_uuid(w.enrollment); }, gives_text(kTarnwell));
}

void ca() {
  sweep([](World &w) { return cfg_enrollment_get_ca(w.enrollment); },
        [](World &, const char *pem) {
          return pem && std::strstr(pem, "-----END CERTIFICATE-----\n") != nullptr;
        });
}

void credentials() {
  sweep([](World &w) { return cfg_enrollment_set_credentials(w.generic_enrollment, kNew, kNew); },
        [](World &w, int done) {
          if (done) {
            EXPECT_STREQ(cfg_enrollment_get_username(w.generic_enrollment), kNew);
            EXPECT_STREQ(cfg_enrollment_get_password(w.generic_enrollment), kNew);
          }
          return done == 1;
        });
}

void port_count() {
  sweep([](World &w) { return cfg_enrollment_set_port_count_field(w.generic_enrollment, 3); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_enrollment_get_port_count_field(w.generic_enrollment), done ? 3 : 2);
          EXPECT_STREQ(cfg_enrollment_get_port_label(w.generic_enrollment, 1),
                       done ? "Port 2" : "second port");
          return done == 1;
        });
}

void port_label() {
  sweep([](World &w) { return cfg_enrollment_set_port_label(w.generic_enrollment, 1, kNew); },
        [](World &w, int done) {
          EXPECT_STREQ(cfg_enrollment_get_port_label(w.generic_enrollment, 0), "first port");
          if (done) EXPECT_STREQ(cfg_enrollment_get_port_label(w.generic_enrollment, 1), kNew);
          return done == 1;
        });
}

// A node that is told as enrolled has all that its bundle gives.
void set_bundle(bool first) {
  sweep([](World &w) { return cfg_enrollment_set_bundle(w.generic_enrollment, w.bundle); },
        [=](World &w, int done) {
          if (!done) return false;
          cfg_elem *node = cfg_get_by_id(w.store, kGeneric);
          int32_t tags = 0;
          EXPECT_TRUE(cfg_list_future_size(cfg_simple_get_mapelem(w.store, node, "tags"), &tags));
          EXPECT_EQ(tags, first ? 1 : 2);
          cfg_node *again = cfg_get_node_by_id(w.store, kGeneric);
          EXPECT_STREQ(cfg_node_get_enrollment_bundle(again), "northern sites");
          EXPECT_STREQ(cfg_node_get_bundle_id(again), kBundle);
          cfg_node_free(again);
          return true;
        },
        [=](World &w) {
          if (!first) return;
          cfg_elem *bundle = cfg_get_by_id(w.store, kBundle);
          EXPECT_TRUE(cfg_map_delete_key(w.store, bundle, "automatic_tags"));
          EXPECT_TRUE(cfg_delete_element(w.store, cfg_get_by_id(w.store, kTag)));
        });
}

const Case rows[] = {
    {"cfg_enrollment_delete", remove},
    {"cfg_enrollment_delete_package_password", delete_package_password},
    {"cfg_enrollment_free", release},
    {"cfg_enrollment_get_address",
     [] { text_getter(cfg_enrollment_get_address, kPlain, "generic's address"); }},
    {"cfg_enrollment_get_auto_approve", [] { number_getter(cfg_enrollment_get_auto_approve, kRecord, 0); }},
    {"cfg_enrollment_get_base_port", [] { number_getter(cfg_enrollment_get_base_port, kPlain, 3000U); }},
    {"cfg_enrollment_get_by_id",
     [] {
       get_by_id(kTarnwell);
       get_by_id(kGeneric);
     }},
    {"cfg_enrollment_get_ca", ca},
    {"cfg_enrollment_get_cert",
     [] { text_getter(cfg_enrollment_get_cert, kRecord, "node one's certificate"); }},
    {"cfg_enrollment_get_connection_method",
     [] { text_getter(cfg_enrollment_get_connection_method, kPlain, "ssh"); }},
    {"cfg_enrollment_get_key",
     [] { text_getter(cfg_enrollment_get_key, kRecord, "node one's private key"); }},
    {"cfg_enrollment_get_name",
     [] { text_getter(cfg_enrollment_get_name, kRecord, "the name of a node: tarnwell"); }},
    {"cfg_enrollment_get_package_password",
     [] { text_getter(cfg_enrollment_get_package_password, kRecord, "the package's password"); }},
    {"cfg_enrollment_get_password",
     [] { text_getter(cfg_enrollment_get_password, kPlain, "generic's password"); }},
    {"cfg_enrollment_get_port_count_field",
     [] { number_getter(cfg_enrollment_get_port_count_field, kPlain, 2); }},
    {"cfg_enrollment_get_port_label",
     [] {
       sweep([](World &w) { return cfg_enrollment_get_port_label(w.generic_enrollment, 0); },
             gives_text("first port"));
     }},
    {"cfg_enrollment_get_product", [] { text_getter(cfg_enrollment_get_product, kRecord, "tarnwell"); }},
    {"cfg_enrollment_get_status", status},
    {"cfg_enrollment_get_username",
     [] { text_getter(cfg_enrollment_get_username, kPlain, "generic's username"); }},
    {"cfg_enrollment_get_uuid", uuid},
    {"cfg_enrollment_new",
     [] {
       make("tarnwell");
       make("generic");
     }},
    {"cfg_enrollment_save",
     [] {
       save_changed();
       save_new("tarnwell");
       save_new("generic");
       save_new("acs8000");
     }},
    {"cfg_enrollment_set_address",
     [] { text_setter(cfg_enrollment_set_address, cfg_enrollment_get_address, kPlain); }},
    {"cfg_enrollment_set_auto_approve",
     [] { sweep([](World &w) { return cfg_enrollment_set_auto_approve(w.*kRecord, 0); }, gives(1)); }},
    {"cfg_enrollment_set_base_port",
     [] { number_setter(cfg_enrollment_set_base_port, cfg_enrollment_get_base_port, kPlain); }},
    {"cfg_enrollment_set_bundle",
     [] {
       set_bundle(false);
       set_bundle(true);
     }},
    {"cfg_enrollment_set_connection_method",
     [] { text_setter(cfg_enrollment_set_connection_method, cfg_enrollment_get_connection_method, kPlain); }},
    {"cfg_enrollment_set_credentials", credentials},
    {"cfg_enrollment_set_name",
     [] { text_setter(cfg_enrollment_set_name, cfg_enrollment_get_name, kRecord); }},
    {"cfg_enrollment_set_port_count_field", port_count},
    {"cfg_enrollment_set_port_label", port_label},
    {"cfg_enrollment_set_status", set_status},
};

}  // namespace

const std::span<const Case> enrollment_cases = rows;

}  // namespace allocation
