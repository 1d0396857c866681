#include <array>
#include <cstdlib>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kList = &World::tags;
constexpr auto kRecord = &World::tag;
constexpr auto kValue = &World::tag_value;

void free_record(cfg_tag *tag) { free_whole(tag); }
void free_record(cfg_tag_value *value) { cfg_tag_value_free(value); }

bool whole(const cfg_tag *tag) {
  if (!tag) return false;
  EXPECT_STREQ(tag_get_uuid(tag), kTag);
  EXPECT_STREQ(tag_get_name(tag), "Bundle");
  EXPECT_EQ(tag_get_num_values(tag), 1);
  EXPECT_STREQ(tag_get_value(tag, 0), kTagValue);
  return true;
}

bool whole(const cfg_tag_value *value) {
  if (!value) return false;
  EXPECT_STREQ(tag_value_get_uuid(value), kTagValue);
  EXPECT_STREQ(tag_value_get_value(value), "northern sites");
  return true;
}

// A call that loads the tag or its value.
template <class Call>
void load(Call call) {
  sweep(call, [](World &, auto *found) {
    const bool there = whole(found);
    free_record(found);
    return there;
  });
}

void list() {
  sweep([](World &w) { return cfg_get_tag_list(w.store, CFG_TAG_NODE); },
        [](World &, cfg_tag_list *tags) {
          if (!tags) return false;
          EXPECT_EQ(tag_list_get_num_tags(tags), 1);
          EXPECT_STREQ(tag_list_get_tag(tags, 0), kTag);
          EXPECT_STREQ(tag_list_get_uuid(tags), "tags.node_tags");
          free_whole(tags);
          return true;
        });
}

template <class Call, class Get>
void make(Call call, Get get) {
  sweep(call, [=](World &, auto *made) {
    const bool there = made != nullptr;
    if (there) EXPECT_STREQ(get(made), kNew);
    free_record(made);
    return there;
  });
}

// The free functions that leave a part of the record: it is taken before.
template <class Record, class Rest>
void release(void (*free_function)(Record *), Record *World::*record, Rest rest) {
  sweep(
      [=](World &w) {
        const auto left = rest(w.*record);
        free_function(w.*record);
        w.*record = nullptr;
        return left;
      },
      [](World &, const auto &left) {
        for (void *block : left) std::free(block);
        return true;
      });
}

void *block(const void *left) { return const_cast<void *>(left); }

void save_tag() {
  sweep([](World &w) { return cfg_tag_save(w.tag, CFG_TAG_NODE); },
        [](World &w, int saved) {
          cfg_tag *again = cfg_get_tag_by_id(w.store, kTag);
          EXPECT_STREQ(tag_get_name(again), saved ? kNew : "Bundle");
          free_whole(again);
          return saved == 1;
        },
        [](World &w) { EXPECT_EQ(tag_set_name(w.tag, kNew), 1); });
}

void save_new_tag() {
  sweep([](World &w) { return cfg_tag_save(w.tag, CFG_TAG_NODE); },
        [](World &w, int saved) {
          if (saved) {
            cfg_tag *again = cfg_get_tag_by_id(w.store, tag_get_uuid(w.tag));
            EXPECT_STREQ(tag_get_name(again), kNew);
            free_whole(again);
          }
          return saved == 1;
        },
        [](World &w) {
          free_whole(w.tag);
          w.tag = cfg_tag_new(w.store, kNew);
        });
}

void save_value() {
  sweep([](World &w) { return cfg_tag_value_save(w.tag, w.tag_value); },
        [](World &w, int saved) {
          cfg_tag_value *again = cfg_get_tag_value_by_id(w.store, kTagValue);
          EXPECT_STREQ(tag_value_get_value(again), saved ? kNew : "northern sites");
          cfg_tag_value_free(again);
          return saved == 1;
        },
        [](World &w) { EXPECT_EQ(tag_value_set_value(w.tag_value, kNew), 1); });
}

// A list of values that is there is never taken for missing and replaced.
void save_new_value(bool first) {
  sweep([](World &w) { return cfg_tag_value_save(w.tag, w.tag_value); },
        [=](World &w, int saved) {
          EXPECT_EQ(cfg_get_by_id(w.store, kTagValue) == nullptr, first);
          if (saved) {
            cfg_tag *parent = cfg_tag_value_get_parent_tag(w.tag_value);
            EXPECT_STREQ(tag_get_uuid(parent), kTag);
            free_whole(parent);
          }
          return saved == 1;
        },
        [=](World &w) {
          cfg_tag_value_free(w.tag_value);
          w.tag_value = cfg_tag_value_new(w.store, kNew);
          if (first) EXPECT_TRUE(cfg_map_delete_key(w.store, cfg_get_by_id(w.store, kTag), "values"));
        });
}

void remove_tag() {
  sweep([](World &w) { return cfg_tag_delete(w.store, w.tag); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_get_by_id(w.store, kTag) == nullptr, done == 1);
          return done == 1;
        });
}

void remove_value() {
  sweep([](World &w) { return cfg_tag_value_delete(w.store, w.tag_value); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_get_by_id(w.store, kTagValue) == nullptr, done == 1);
          return done == 1;
        });
}

// The first of an array of IDs.
template <class Record>
void ids(char **(*get)(const Record *), Record *World::*record, const char *id) {
  sweep([=](World &w) { return get(w.*record); },
        [=](World &, char **all) {
          EXPECT_STREQ(all[0], id);
          return true;
        });
}

template <class Record>
void handle(cfg *(*get)(const Record *), Record *World::*record) {
  sweep([=](World &w) { return get(w.*record); },
        [](World &w, const cfg *store) {
          EXPECT_EQ(store, w.store);
          return true;
        });
}

const Case rows[] = {
    {"cfg_get_tag_by_id", [] { load([](World &w) { return cfg_get_tag_by_id(w.store, kTag); }); }},
    {"cfg_get_tag_by_name",
     [] { load([](World &w) { return cfg_get_tag_by_name(w.store, "Bundle", CFG_TAG_NODE); }); }},
    {"cfg_get_tag_list", list},
    {"cfg_get_tag_value_by_id",
     [] { load([](World &w) { return cfg_get_tag_value_by_id(w.store, kTagValue); }); }},
    {"cfg_get_tag_value_by_name",
     [] { load([](World &w) { return cfg_get_tag_value_by_name(w.store, w.tag, "northern sites"); }); }},
    {"cfg_path_to_tag_type",
     [] {
       sweep([](World &) { return cfg_path_to_tag_type("tags.unknown"); }, gives(int32_t{CFG_TAG_UNKNOWN}));
     }},
    {"cfg_tag_delete", remove_tag},
    {"cfg_tag_free",
     [] {
       release(cfg_tag_free, kRecord,
               [](cfg_tag *tag) { return std::array{block(tag_get_all_values(tag))}; });
     }},
    {"cfg_tag_get_value", [] { load([](World &w) { return cfg_tag_get_value(w.tag, 0); }); }},
    {"cfg_tag_list_free",
     [] {
       release(cfg_tag_list_free, kList, [](cfg_tag_list *tags) {
         return std::array{block(tag_list_get_all_tags(tags)), block(tag_list_get_uuid(tags))};
       });
     }},
    {"cfg_tag_list_get_tag", [] { load([](World &w) { return cfg_tag_list_get_tag(w.tags, 0); }); }},
    {"cfg_tag_new", [] { make([](World &w) { return cfg_tag_new(w.store, kNew); }, tag_get_name); }},
    {"cfg_tag_save",
     [] {
       save_tag();
       save_new_tag();
     }},
    {"cfg_tag_type_to_path",
     [] { sweep([](World &) { return cfg_tag_type_to_path(CFG_TAG_NODE); }, gives_text("tags.node_tags")); }},
    {"cfg_tag_value_delete", remove_value},
    {"cfg_tag_value_free",
     [] { release(cfg_tag_value_free, kValue, [](cfg_tag_value *) { return std::array<void *, 0>{}; }); }},
    {"cfg_tag_value_get_parent_tag",
     [] { load([](World &w) { return cfg_tag_value_get_parent_tag(w.tag_value); }); }},
    {"cfg_tag_value_new",
     [] { make([](World &w) { return cfg_tag_value_new(w.store, kNew); }, tag_value_get_value); }},
    {"cfg_tag_value_save",
     [] {
       save_value();
       save_new_value(false);
       save_new_value(true);
     }},
    {"tag_get_all_values", [] { ids(tag_get_all_values, kRecord, kTagValue); }},
    {"tag_get_config", [] { handle(tag_get_config, kRecord); }},
    {"tag_get_name", [] { text_getter(tag_get_name, kRecord, "Bundle"); }},
    {"tag_get_num_values", [] { number_getter(tag_get_num_values, kRecord, 1); }},
    {"tag_get_uuid", [] { text_getter(tag_get_uuid, kRecord, kTag); }},
    {"tag_get_value", [] { sweep([](World &w) { return tag_get_value(w.tag, 0); }, gives_text(kTagValue)); }},
    {"tag_list_get_all_tags", [] { ids(tag_list_get_all_tags, kList, kTag); }},
    {"tag_list_get_config", [] { handle(tag_list_get_config, kList); }},
    {"tag_list_get_num_tags", [] { number_getter(tag_list_get_num_tags, kList, 1); }},
    {"tag_list_get_tag",
     [] { sweep([](World &w) { return tag_list_get_tag(w.tags, 0); }, gives_text(kTag)); }},
    {"tag_list_get_uuid", [] { text_getter(tag_list_get_uuid, kList, "tags.node_tags"); }},
    {"tag_set_name", [] { text_setter(tag_set_name, tag_get_name, kRecord); }},
    {"tag_value_get_config", [] { handle(tag_value_get_config, kValue); }},
    {"tag_value_get_uuid", [] { text_getter(tag_value_get_uuid, kValue, kTagValue); }},
    {"tag_value_get_value", [] { text_getter(tag_value_get_value, kValue, "northern sites"); }},
    {"tag_value_set_value", [] { text_setter(tag_value_set_value, tag_value_get_value, kValue); }},
};

}  // namespace

const std::span<const Case> tag_cases = rows;

}  // namespace allocation
