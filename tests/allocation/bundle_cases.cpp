#include <cstdlib>

#include "allocation/cases.hpp"
#include "allocation/search_memory.hpp"
#include "search_service/search_service.hpp"

namespace allocation {
namespace {

constexpr auto kList = &World::bundles;
constexpr auto kRecord = &World::bundle;

bool whole(const cfg_bundle *bundle) {
  if (!bundle) return false;
  EXPECT_STREQ(cfg_bundle_get_name(bundle), "northern sites");
  EXPECT_STREQ(cfg_bundle_get_token(bundle), "the bundle's token");
  EXPECT_EQ(cfg_bundle_get_auto_approve(bundle), 1);
  return true;
}

template <class Call>
void load(Call call) {
  sweep(call, [](World &, cfg_bundle *found) {
    const bool there = whole(found);
    cfg_bundle_free(found);
    return there;
  });
}

void make() {
  sweep([](World &w) { return cfg_bundle_new(w.store, kNew, kNew, 1); },
        [](World &, cfg_bundle *made) {
          if (!made) return false;
          EXPECT_STREQ(cfg_bundle_get_name(made), kNew);
          EXPECT_STREQ(cfg_bundle_get_token(made), kNew);
          cfg_bundle_free(made);
          return true;
        });
}

void save(bool anew) {
  sweep([](World &w) { return cfg_bundle_save(w.bundle); },
        [](World &w, int saved) {
          if (saved) {
            cfg_bundle *again = cfg_bundle_get_by_id(w.store, cfg_bundle_get_uuid(w.bundle));
            EXPECT_STREQ(cfg_bundle_get_name(again), kNew);
            EXPECT_EQ(cfg_bundle_get_template_count(again), 1);
            EXPECT_STREQ(cfg_bundle_get_template_uuid(again, 0), kTemplate);
            cfg_bundle_free(again);
            EXPECT_TRUE(cfg_map_has(cfg_get_by_id(w.store, cfg_bundle_get_uuid(w.bundle)), "automatic_tags"));
          }
          return saved == 1;
        },
        [=](World &w) {
          if (anew) {
            cfg_bundle_free(w.bundle);
            w.bundle = cfg_bundle_new(w.store, "x", "y", 1);
          }
          EXPECT_EQ(cfg_bundle_set_name(w.bundle, kNew), 1);
          EXPECT_EQ(cfg_bundle_add_template(w.bundle, kTemplate), 1);
        });
}

void remove() {
  sweep(
      [](World &w) {
        cfg_bundle_delete(w.bundle);
        return 0;
      },
      [](World &w, int) { return cfg_get_by_id(w.store, kBundle) == nullptr; });
}

template <class Record>
void release(void (*free_function)(Record *), Record *World::*record) {
  sweep(
      [=](World &w) {
        free_function(w.*record);
        w.*record = nullptr;
        return 1;
      },
      gives(1));
}

template <class Call>
void tag_value(Call call) {
  sweep(call, [](World &, cfg_tag_value *value) {
    const bool there = value != nullptr;
    if (there) EXPECT_STREQ(tag_value_get_uuid(value), kTagValue);
    cfg_tag_value_free(value);
    return there;
  });
}

void append_tag() {
  sweep([](World &w) { return cfg_bundle_save_automatic_tag(w.bundle, w.tag_value); },
        [](World &w, int done) {
          int32_t pending = 0;
          cfg_elem *list = cfg_simple_get_mapelem(w.store, cfg_get_by_id(w.store, kBundle), "automatic_tags");
          EXPECT_TRUE(cfg_list_future_size(list, &pending));
          EXPECT_EQ(pending, done);
          return done == 1;
        });
}

void update_tag() {
  sweep([](World &w) { return cfg_bundle_update_automatic_tag(w.store, kTagRef, w.tag_value); }, gives(1),
        [](World &w) {
          EXPECT_TRUE(cfg_set_reference(w.store, cfg_get_by_id(w.store, kTagRef), "somewhere else"));
        });
}

void remove_tag() {
  sweep([](World &w) { return cfg_bundle_delete_automatic_tag(w.store, kTagRef); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_get_by_id(w.store, kTagRef) == nullptr, done == 1);
          return done == 1;
        });
}

void get_template() {
  sweep([](World &w) { return cfg_bundle_get_template(w.bundle, 0); },
        [](World &, cfg_template *found) {
          if (!found) return false;
          EXPECT_STREQ(cfg_template_get_name(found), "the template's name");
          free_whole(found);
          return true;
        });
}

void add_template() {
  sweep([](World &w) { return cfg_bundle_add_template(w.bundle, kNew); },
        [](World &w, int done) {
          EXPECT_STREQ(cfg_bundle_get_template_uuid(w.bundle, 0), done ? kNew : kTemplate);
          return done == 1;
        });
}

void clear_templates() {
  sweep([](World &w) { return cfg_bundle_clear_templates(w.bundle); }, gives(1));
}

// Texts of up to 15 bytes, as for the client of the service.
constexpr char kReply[] =
    R"({"result":true,"data":{"id":"result-7","count":2,"items":["nodes-1","nodes-2"]}})";

template <class Call, class Verdict>
void ask(Call call, Verdict succeeded) {
  search_service::Scripted service(kReply);
  SearchMemory memory;
  sweep(call, [&](World &w, auto result) {
    memory.judge();
    return succeeded(w, result);
  });
}

void token() {
  sweep([](World &w) { return cfg_bundle_get_global_request_token(w.store); },
        [](World &, char *copy) {
          const bool there = copy != nullptr;
          if (there) EXPECT_STREQ(copy, "the request token");
          std::free(copy);
          return there;
        });
}

// A call that leaves this token, or the old one.
template <class Call>
void change_token(Call call, const char *expected) {
  sweep(call, [=](World &w, int done) {
    char *now = cfg_bundle_get_global_request_token(w.store);
    EXPECT_STREQ(now, done ? expected : "the request token");
    std::free(now);
    return done == 1;
  });
}

void list() {
  sweep([](World &w) { return cfg_bundle_list_new(w.store); },
        [](World &, cfg_bundle_list *bundles) {
          if (!bundles) return false;
          EXPECT_EQ(cfg_bundle_list_count(bundles), 1);
          cfg_bundle_list_free(bundles);
          return true;
        });
}

const Case rows[] = {
    {"cfg_bundle_add_template", add_template},
    {"cfg_bundle_clear_templates", clear_templates},
    {"cfg_bundle_delete", remove},
    {"cfg_bundle_delete_automatic_tag", remove_tag},
    {"cfg_bundle_delete_global_request_token",
     [] { change_token([](World &w) { return cfg_bundle_delete_global_request_token(w.store); }, nullptr); }},
    {"cfg_bundle_free", [] { release(cfg_bundle_free, kRecord); }},
    {"cfg_bundle_get_auto_approve", [] { number_getter(cfg_bundle_get_auto_approve, kRecord, 1); }},
    {"cfg_bundle_get_automatic_tag",
     [] { tag_value([](World &w) { return cfg_bundle_get_automatic_tag(w.bundle, 0); }); }},
    {"cfg_bundle_get_automatic_tag_by_ref_uuid",
     [] { tag_value([](World &w) { return cfg_bundle_get_automatic_tag_by_ref_uuid(w.bundle, kTagRef); }); }},
    {"cfg_bundle_get_automatic_tag_count",
     [] { sweep([](World &w) { return cfg_bundle_get_automatic_tag_count(w.bundle); }, gives(int32_t{1})); }},
    {"cfg_bundle_get_automatic_tag_ref_uuid",
     [] {
       sweep([](World &w) { return cfg_bundle_get_automatic_tag_ref_uuid(w.bundle, 0); },
             gives_text(kTagRef));
     }},
    {"cfg_bundle_get_by_id", [] { load([](World &w) { return cfg_bundle_get_by_id(w.store, kBundle); }); }},
    {"cfg_bundle_get_by_name",
     [] { load([](World &w) { return cfg_bundle_get_by_name(w.store, "northern sites"); }); }},
    {"cfg_bundle_get_global_request_token", token},
    {"cfg_bundle_get_name", [] { text_getter(cfg_bundle_get_name, kRecord, "northern sites"); }},
    {"cfg_bundle_get_node_count",
     [] { ask([](World &w) { return cfg_bundle_get_node_count(w.bundle, "alice"); }, gives(int32_t{2})); }},
    {"cfg_bundle_get_node_id",
     [] {
       ask([](World &w) { return cfg_bundle_get_node_id(w.bundle, 1, "alice"); }, gives_text("nodes-2"));
     }},
    {"cfg_bundle_get_tag_ref_uuid_by_value",
     [] {
       sweep([](World &w) { return cfg_bundle_get_tag_ref_uuid_by_value(w.bundle, w.tag_value); },
             gives_text(kTagRef));
     }},
    {"cfg_bundle_get_template", get_template},
    {"cfg_bundle_get_template_count",
     [] { sweep([](World &w) { return cfg_bundle_get_template_count(w.bundle); }, gives(int32_t{1})); }},
    {"cfg_bundle_get_template_uuid",
     [] {
       sweep([](World &w) { return cfg_bundle_get_template_uuid(w.bundle, 0); }, gives_text(kTemplate));
     }},
    {"cfg_bundle_get_token", [] { text_getter(cfg_bundle_get_token, kRecord, "the bundle's token"); }},
    {"cfg_bundle_get_uuid",
     [] { sweep([](World &w) { return cfg_bundle_get_uuid(w.bundle); }, gives_text(kBundle)); }},
    {"cfg_bundle_init_nodes",
     [] { ask([](World &w) { return cfg_bundle_init_nodes(w.bundle, "alice"); }, gives(1)); }},
    {"cfg_bundle_list_count", [] { number_getter(cfg_bundle_list_count, kList, 1); }},
    {"cfg_bundle_list_free", [] { release(cfg_bundle_list_free, kList); }},
    {"cfg_bundle_list_get_bundle",
     [] { load([](World &w) { return cfg_bundle_list_get_bundle(w.bundles, 0); }); }},
    {"cfg_bundle_list_new", list},
    {"cfg_bundle_new", make},
    {"cfg_bundle_save",
     [] {
       save(false);
       save(true);
     }},
    {"cfg_bundle_save_automatic_tag", append_tag},
    {"cfg_bundle_set_auto_approve",
     [] { sweep([](World &w) { return cfg_bundle_set_auto_approve(w.*kRecord, 0); }, gives(1)); }},
    {"cfg_bundle_set_global_request_token",
     [] { change_token([](World &w) { return cfg_bundle_set_global_request_token(w.store, kNew); }, kNew); }},
    {"cfg_bundle_set_name", [] { text_setter(cfg_bundle_set_name, cfg_bundle_get_name, kRecord); }},
    {"cfg_bundle_set_token", [] { text_setter(cfg_bundle_set_token, cfg_bundle_get_token, kRecord); }},
    {"cfg_bundle_update_automatic_tag", update_tag},
};

}  // namespace

const std::span<const Case> bundle_cases = rows;

}  // namespace allocation
