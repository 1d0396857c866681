#include <cstdlib>
#include <memory>

#include "allocation/cases.hpp"
#include "search_service/jansson_blocks.hpp"
#include "search_service/search_service.hpp"

// The free function of the list of groups leaves the bare array of IDs.
extern "C" __attribute__((visibility("default"), used)) const char *__lsan_default_suppressions() {
  return "leak:cfg_smartgroup_list_new\n";
}

namespace allocation {
namespace {

constexpr char kQuery[] = R"({"key":"name","op":"equal","string":"n"})";

bool whole(cfg_smartgroup *group) {
  if (!group) return false;
  EXPECT_STREQ(cfg_smartgroup_get_uuid(group), kSmartGroup);
  EXPECT_STREQ(cfg_smartgroup_get_name(group), "all that is called n");
  EXPECT_STREQ(cfg_smartgroup_get_query(group), kQuery);
  return true;
}

template <class Call>
void load(Call call) {
  sweep(call, [](World &, cfg_smartgroup *group) {
    const bool there = whole(group);
    cfg_smartgroup_free(group);
    return there;
  });
}

void make() {
  sweep([](World &w) { return cfg_smartgroup_new(w.store, "nodes", kNew, kQuery); },
        [](World &, cfg_smartgroup *group) {
          const bool there = group != nullptr;
          if (there) EXPECT_STREQ(cfg_smartgroup_get_name(group), kNew);
          if (there) EXPECT_STREQ(cfg_smartgroup_get_query(group), kQuery);
          cfg_smartgroup_free(group);
          return there;
        });
}

void save() {
  sweep([](World &w) { return cfg_smartgroup_save(w.group); },
        [](World &w, int saved) {
          if (saved) {
            cfg_smartgroup *again = cfg_smartgroup_get_by_id(w.store, "nodes", kSmartGroup);
            EXPECT_STREQ(cfg_smartgroup_get_name(again), kNew);
            cfg_smartgroup_free(again);
          }
          return saved == 1;
        },
        [](World &w) { ASSERT_EQ(cfg_smartgroup_set_name(w.group, kNew), 1); });
  sweep([](World &w) { return cfg_smartgroup_save(w.group); },
        [](World &w, int saved) {
          if (saved) {
            cfg_smartgroup *again =
                cfg_smartgroup_get_by_id(w.store, "nodes", cfg_smartgroup_get_uuid(w.group));
            EXPECT_STREQ(cfg_smartgroup_get_name(again), kNew);
            EXPECT_STREQ(cfg_smartgroup_get_query(again), kQuery);
            cfg_smartgroup_free(again);
          }
          return saved == 1;
        },
        [](World &w) {
          cfg_smartgroup_free(w.group);
          w.group = cfg_smartgroup_new(w.store, "nodes", kNew, kQuery);
        });
}

void erase() {
  sweep([](World &w) { return cfg_smartgroup_delete(w.group); },
        [](World &w, int deleted) {
          if (deleted) EXPECT_EQ(cfg_smartgroup_get_by_id(w.store, "nodes", kSmartGroup), nullptr);
          return deleted == 1;
        });
}

void release() {
  sweep(
      [](World &w) {
        cfg_smartgroup_free(w.group);
        w.group = nullptr;
        return true;
      },
      [](World &, bool) { return true; });
}

cfg_smartgroup_list *list_of(World &w) { return cfg_smartgroup_list_new(w.store, "nodes"); }

void make_list() {
  sweep(list_of, [](World &, cfg_smartgroup_list *list) {
    const bool there = list != nullptr;
    if (there) EXPECT_EQ(cfg_smartgroup_list_count(list), 1);
    cfg_smartgroup_list_free(list);
    return there;
  });
}

// Calls that are given a list which was made with memory enough.
template <class Call, class Verdict>
void with_list(Call call, Verdict verdict) {
  cfg_smartgroup_list *list = nullptr;
  sweep([&](World &) { return call(list); },
        [&](World &, auto result) {
          const bool success = verdict(result);
          cfg_smartgroup_list_free(list);
          return success;
        },
        [&](World &w) { list = list_of(w); });
}

// What the service is asked needs the service, and Jansson's memory is looked after.
struct Served {
  search_service::Scripted service{
      std::string(R"({"result":true,"data":{"id":"r","count":2,"items":["nodes-1","nodes-2"]}})")};
  search_service::JanssonBlocks blocks;
};

void create_search() {
  const Served served;
  sweep([](World &w) { return cfg_smartgroup_create_search(w.group); },
        [](World &, char *id) {
          if (id) EXPECT_STREQ(id, "r");
          std::free(id);
          return id != nullptr;
        });
}

void evaluate() {
  const Served served;
  struct Result {
    int32_t count;
    char **members;
  };
  sweep(
      [](World &w) {
        Result result{0, nullptr};
        result.count = cfg_smartgroup_evaluate(w.group, &result.members);
        return result;
      },
      [](World &, Result result) {
        if (result.count == 0) {
          EXPECT_EQ(result.members, nullptr);
          return false;
        }
        EXPECT_EQ(result.count, 2);
        EXPECT_STREQ(result.members[1], "nodes-2");
        for (char **member = result.members; *member; ++member) std::free(*member);
        std::free(static_cast<void *>(result.members));
        return true;
      });
}

const Case rows[] = {
    {"cfg_smartgroup_create_search", create_search},
    {"cfg_smartgroup_delete", erase},
    {"cfg_smartgroup_evaluate", evaluate},
    {"cfg_smartgroup_free", release},
    {"cfg_smartgroup_get_by_id",
     [] { load([](World &w) { return cfg_smartgroup_get_by_id(w.store, "nodes", kSmartGroup); }); }},
    {"cfg_smartgroup_get_by_name",
     [] {
       load([](World &w) { return cfg_smartgroup_get_by_name(w.store, "nodes", "all that is called n"); });
     }},
    {"cfg_smartgroup_get_name",
     [] { text_getter(cfg_smartgroup_get_name, &World::group, "all that is called n"); }},
    {"cfg_smartgroup_get_query", [] { text_getter(cfg_smartgroup_get_query, &World::group, kQuery); }},
    {"cfg_smartgroup_get_uuid",
     [] { sweep([](World &w) { return cfg_smartgroup_get_uuid(w.group); }, gives_text(kSmartGroup)); }},
    {"cfg_smartgroup_list_count",
     [] { with_list(cfg_smartgroup_list_count, [](int32_t count) { return count == 1; }); }},
    {"cfg_smartgroup_list_dispose",
     [] {
       sweep(
           [](World &w) {
             cfg_smartgroup_list_dispose(list_of(w));
             return true;
           },
           [](World &, bool) { return true; });
     }},
    {"cfg_smartgroup_list_free",
     [] {
       sweep(
           [](World &w) {
             cfg_smartgroup_list_free(list_of(w));
             return true;
           },
           [](World &, bool) { return true; });
     }},
    {"cfg_smartgroup_list_get_smartgroup",
     [] {
       with_list([](cfg_smartgroup_list *list) { return cfg_smartgroup_list_get_smartgroup(list, 0); },
                 [](cfg_smartgroup *group) {
                   const bool there = whole(group);
                   cfg_smartgroup_free(group);
                   return there;
                 });
     }},
    {"cfg_smartgroup_list_new", make_list},
    {"cfg_smartgroup_new", make},
    {"cfg_smartgroup_save", save},
    {"cfg_smartgroup_set_name",
     [] { text_setter(cfg_smartgroup_set_name, cfg_smartgroup_get_name, &World::group); }},
    {"cfg_smartgroup_set_query",
     [] { text_setter(cfg_smartgroup_set_query, cfg_smartgroup_get_query, &World::group); }},
};

}  // namespace

const std::span<const Case> smart_group_cases = rows;

}  // namespace allocation
