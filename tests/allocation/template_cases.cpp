#include <array>
#include <cstdlib>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kList = &World::templates;
constexpr auto kRecord = &World::dummy;

bool whole(const cfg_template *record) {
  if (!record) return false;
  EXPECT_STREQ(cfg_template_get_name(record), "the template's name");
  EXPECT_STREQ(cfg_template_get_description(record), "the template's description");
  EXPECT_EQ(cfg_template_get_type(record), CFG_TEMPLATE_DUMMY);
  EXPECT_STREQ(cfg_dummy_template_get_dummy_field(record), "the template's text");
  return true;
}

template <class Call>
void load(Call call) {
  sweep(call, [](World &, cfg_template *found) {
    const bool there = whole(found);
    if (there) free_whole(found);
    return there;
  });
}

void list() {
  sweep([](World &w) { return cfg_template_list_new(w.store); },
        [](World &, cfg_template_list *templates) {
          if (!templates) return false;
          EXPECT_EQ(cfg_template_list_count(templates), 6);
          cfg_template_list_free(templates);
          return true;
        });
}

void make() {
  sweep([](World &w) { return cfg_template_new(w.store, kNew, CFG_TEMPLATE_DUMMY); },
        [](World &, cfg_template *made) {
          if (!made) return false;
          EXPECT_STREQ(cfg_template_get_name(made), kNew);
          free_whole(made);
          return true;
        });
}

void save(bool anew) {
  sweep([](World &w) { return cfg_template_save(w.dummy); },
        [](World &w, int saved) {
          if (saved) {
            cfg_template *again = cfg_template_get_by_id(w.store, cfg_template_get_uuid(w.dummy));
            EXPECT_STREQ(cfg_template_get_name(again), kNew);
            EXPECT_STREQ(cfg_template_get_description(again), nullptr);
            EXPECT_STREQ(cfg_dummy_template_get_dummy_field(again), kNew);
            EXPECT_EQ(cfg_template_get_type(again), CFG_TEMPLATE_DUMMY);
            free_whole(again);
          }
          return saved == 1;
        },
        [=](World &w) {
          if (anew) {
            free_whole(w.dummy);
            w.dummy = cfg_template_new(w.store, kNew, CFG_TEMPLATE_DUMMY);
          }
          EXPECT_EQ(cfg_template_set_name(w.dummy, kNew), 1);
          EXPECT_EQ(cfg_template_set_description(w.dummy, ""), 1);
          EXPECT_EQ(cfg_dummy_template_set_dummy_field(w.dummy, kNew), 1);
        });
}

void remove() {
  sweep([](World &w) { return cfg_template_delete(w.dummy); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_get_by_id(w.store, kTemplate) == nullptr, done == 1);
          return done == 1;
        });
}

void release() {
  sweep(
      [](World &w) {
        const std::array left{cfg_template_get_uuid(w.dummy), cfg_template_get_description(w.dummy),
                              cfg_dummy_template_get_dummy_field(w.dummy)};
        cfg_template_free(w.dummy);
        w.dummy = nullptr;
        return left;
      },
      [](World &, const auto &left) {
        for (const char *text : left) std::free(const_cast<char *>(text));
        return true;
      });
}

void dispose() {
  sweep(
      [](World &w) {
        cfg_template_dispose(w.dummy);
        w.dummy = nullptr;
        return 1;
      },
      gives(1));
}

void release_list() {
  sweep(
      [](World &w) {
        cfg_template_list_free(w.templates);
        w.templates = nullptr;
        return 1;
      },
      gives(1));
}

const Case rows[] = {
    {"cfg_dummy_template_get_dummy_field",
     [] { text_getter(cfg_dummy_template_get_dummy_field, kRecord, "the template's text"); }},
    {"cfg_dummy_template_set_dummy_field",
     [] { text_setter(cfg_dummy_template_set_dummy_field, cfg_dummy_template_get_dummy_field, kRecord); }},
    {"cfg_template_delete", remove},
    {"cfg_template_dispose", dispose},
    {"cfg_template_free", release},
    {"cfg_template_get_by_id",
     [] { load([](World &w) { return cfg_template_get_by_id(w.store, kTemplate); }); }},
    {"cfg_template_get_description",
     [] { text_getter(cfg_template_get_description, kRecord, "the template's description"); }},
    {"cfg_template_get_name", [] { text_getter(cfg_template_get_name, kRecord, "the template's name"); }},
    {"cfg_template_get_type",
     [] { number_getter(cfg_template_get_type, kRecord, int32_t{CFG_TEMPLATE_DUMMY}); }},
    {"cfg_template_get_uuid",
     [] { sweep([](World &w) { return cfg_template_get_uuid(w.dummy); }, gives_text(kTemplate)); }},
    {"cfg_template_list_count", [] { number_getter(cfg_template_list_count, kList, 6); }},
    {"cfg_template_list_free", release_list},
    {"cfg_template_list_get_template",
     [] { load([](World &w) { return cfg_template_list_get_template(w.templates, 0); }); }},
    {"cfg_template_list_new", list},
    {"cfg_template_new", make},
    {"cfg_template_save",
     [] {
       save(false);
       save(true);
     }},
    {"cfg_template_set_description",
     [] { text_setter(cfg_template_set_description, cfg_template_get_description, kRecord); }},
    {"cfg_template_set_name", [] { text_setter(cfg_template_set_name, cfg_template_get_name, kRecord); }},
    {"cfg_template_set_type", [] { number_setter(cfg_template_set_type, cfg_template_get_type, kRecord); }},
    {"cfg_template_type_enum_to_string",
     [] { sweep([](World &) { return cfg_template_type_enum_to_string(5); }, gives_text("script")); }},
    {"cfg_template_type_string_to_enum",
     [] { sweep([](World &) { return cfg_template_type_string_to_enum("script"); }, gives(int32_t{5})); }},
};

}  // namespace

const std::span<const Case> template_cases = rows;

}  // namespace allocation
