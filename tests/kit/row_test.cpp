// The engine on a record of its own that uses every kind of row.
#include "kit/fixture.hpp"
#include "record/engine.hpp"
#include "record/view.hpp"

namespace {

constexpr const char *media_texts[] = {"ethernet", "wireless"};
constexpr tw::enumeration media_table{.texts = media_texts, .any_case = true};

struct sample : tw::object_view {
  tw::text name;
  tw::text description;
  tw::text owner;
  tw::text pem;
  tw::secret key;
  int32_t enabled = 0;
  int32_t level = 0;
  uint32_t port = 0;
  int32_t expires = 0;
  int32_t media = 0;
  int32_t hooked = 0;
};

bool load_hooked(void *record, const cfg_value &value) {
  static_cast<sample *>(record)->hooked = value.number * 2;
  return value.number != 13;
}

constexpr auto name = tw::string_row<&sample::name>("name");
constexpr auto description = tw::string_row<&sample::description>("description");
constexpr auto owner = tw::reference_row<&sample::owner>("owner");
constexpr auto pem = tw::blob_row<&sample::pem>("pem");
constexpr auto key = tw::string_row<&sample::key>("key");
constexpr auto enabled = tw::bool_row<&sample::enabled>("enabled");
constexpr auto level = tw::int_row<&sample::level>("level");
constexpr auto port = tw::int_row<&sample::port>("port");
constexpr auto expires = tw::nonzero_row<&sample::expires>("expires");
constexpr auto media = tw::enum_row<&sample::media, media_table>("media");
constexpr auto hooked = tw::hook_row<sample>("hooked", CFG_INT, load_hooked, "load_hooked");

constexpr tw::load_list everything({mandatory(name), description, owner, pem, key, enabled, lenient(level),
                                    port, expires, media, hooked});
constexpr tw::load_list strict_media({tw::known_enum_row<&sample::media, media_table>("media")});
constexpr tw::store_list all({name, description, owner, pem, key, enabled, level, port, expires, media});

class Rows : public kit::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    map = map_at("sample");
    record.cfg = store.get();
  }
  void fill() {
    ASSERT_TRUE(cfg_map_set_string(store.get(), map, "name", "n"));
    ASSERT_TRUE(cfg_map_set_string(store.get(), map, "description", "d"));
    ASSERT_TRUE(cfg_map_set_reference(store.get(), map, "owner", "users-1"));
    ASSERT_TRUE(cfg_map_set_blob(store.get(), map, "pem", "PEM", 3));
    ASSERT_TRUE(cfg_map_set_string(store.get(), map, "key", "k"));
    ASSERT_TRUE(cfg_map_set_bool(store.get(), map, "enabled", 1));
    ASSERT_TRUE(cfg_map_set_int(store.get(), map, "level", -3));
    ASSERT_TRUE(cfg_map_set_int(store.get(), map, "port", -1));
    ASSERT_TRUE(cfg_map_set_int(store.get(), map, "expires", 99));
    ASSERT_TRUE(cfg_map_set_string(store.get(), map, "media", "WireLess"));
    ASSERT_TRUE(cfg_map_set_int(store.get(), map, "hooked", 21));
  }
  cfg_elem *map = nullptr;
  sample record;
};

TEST_F(Rows, EveryKindLoads) {
  fill();
  ASSERT_TRUE(tw::load(everything, record, map));
  EXPECT_STREQ("n", record.name.c_str());
  EXPECT_STREQ("d", record.description.c_str());
  EXPECT_STREQ("users-1", record.owner.c_str());
  EXPECT_STREQ("PEM", record.pem.c_str());
  EXPECT_STREQ("k", record.key.c_str());
  EXPECT_EQ(1, record.enabled);
  EXPECT_EQ(-3, record.level);
  EXPECT_EQ(4294967295U, record.port);
  EXPECT_EQ(99, record.expires);
  EXPECT_EQ(2, record.media);
  EXPECT_EQ(42, record.hooked);
}

TEST_F(Rows, AbsentOptionalKeysReadAsNullOrZero) {
  ASSERT_TRUE(cfg_map_set_string(store.get(), map, "name", "n"));
  ASSERT_TRUE(tw::load(everything, record, map));
  EXPECT_EQ(nullptr, record.description.c_str());
  EXPECT_EQ(nullptr, record.owner.c_str());
  EXPECT_EQ(0, record.enabled);
  EXPECT_EQ(0, record.media);
  EXPECT_EQ(0, record.hooked);
}

TEST_F(Rows, AnAbsentMandatoryKeyFailsTheLoad) {
  fill();
  ASSERT_TRUE(cfg_map_delete_key(store.get(), map, "name"));
  EXPECT_FALSE(tw::load(everything, record, map));
}

TEST_F(Rows, AMandatoryKeyOfAnotherKindFailsTheLoad) {
  fill();
  ASSERT_TRUE(cfg_map_set_int(store.get(), map, "name", 1));
  EXPECT_FALSE(tw::load(everything, record, map));
}

TEST_F(Rows, AnOptionalKeyOfAnotherKindFailsTheLoad) {
  for (const char *wrong :
       {"description", "owner", "pem", "key", "enabled", "port", "expires", "media", "hooked"}) {
    fill();
    cfg_elem *list = cfg_new_list(store.get());
    ASSERT_TRUE(cfg_add_mapelem(store.get(), map, wrong, list));
    sample fresh;
    EXPECT_FALSE(tw::load(everything, fresh, map)) << wrong;
  }
}

TEST_F(Rows, ALenientKeyOfAnotherKindReadsAsAbsent) {
  fill();
  ASSERT_TRUE(cfg_map_set_string(store.get(), map, "level", "high"));
  ASSERT_TRUE(tw::load(everything, record, map));
  EXPECT_EQ(0, record.level);
}

TEST_F(Rows, AHookThatRefusesItsValueFailsTheLoad) {
  fill();
  ASSERT_TRUE(cfg_map_set_int(store.get(), map, "hooked", 13));
  EXPECT_FALSE(tw::load(everything, record, map));
}

TEST_F(Rows, NothingLoadsFromWhatIsNoMap) {
  EXPECT_FALSE(tw::load(everything, record, nullptr));
  EXPECT_FALSE(tw::load(everything, record, list_at("list")));
}

TEST_F(Rows, UnknownTextReadsAsTheTablesUnknownValueAndFailsWhereItMustBeKnown) {
  ASSERT_TRUE(cfg_map_set_string(store.get(), map, "name", "n"));
  ASSERT_TRUE(cfg_map_set_string(store.get(), map, "media", "token ring"));
  EXPECT_TRUE(tw::load(everything, record, map));
  EXPECT_EQ(0, record.media);
  EXPECT_FALSE(tw::load(strict_media, record, map));
  ASSERT_TRUE(cfg_map_delete_key(store.get(), map, "media"));
  EXPECT_FALSE(tw::load(strict_media, record, map));
  ASSERT_TRUE(cfg_map_set_string(store.get(), map, "media", "ETHERNET"));
  EXPECT_TRUE(tw::load(strict_media, record, map));
  EXPECT_EQ(1, record.media);
}

TEST_F(Rows, WhatIsStoredLoadsAgain) {
  fill();
  ASSERT_TRUE(tw::load(everything, record, map));
  cfg_elem *other = map_at("other");
  ASSERT_TRUE(tw::store(all, record, store.get(), other));
  sample again;
  ASSERT_TRUE(tw::load(everything, again, other));
  EXPECT_STREQ("n", again.name.c_str());
  EXPECT_STREQ("users-1", again.owner.c_str());
  EXPECT_STREQ("PEM", again.pem.c_str());
  EXPECT_EQ(1, again.enabled);
  EXPECT_EQ(-3, again.level);
  EXPECT_EQ(4294967295U, again.port);
  EXPECT_EQ(99, again.expires);
  EXPECT_EQ("wireless", string_in(other, "media"));
}

TEST_F(Rows, StoringAnEmptyRecordDeletesWhatHasNoValueAndWritesNumbers) {
  fill();
  ASSERT_TRUE(tw::store(all, record, store.get(), map));
  for (const char *gone : {"name", "description", "owner", "pem", "key", "expires", "media"})
    EXPECT_EQ(nullptr, cfg_get_mapelem(map, gone)) << gone;
  for (const char *zero : {"level", "port"}) {
    int32_t number = -1;
    EXPECT_TRUE(cfg_map_get_int(store.get(), map, zero, &number)) << zero;
    EXPECT_EQ(0, number) << zero;
  }
  int32_t flag = -1;
  EXPECT_TRUE(cfg_map_get_bool(store.get(), map, "enabled", &flag));
  EXPECT_EQ(0, flag);
}

TEST_F(Rows, AnyTruthButZeroIsStoredAsTrue) {
  record.enabled = -8;
  ASSERT_TRUE(tw::store(all, record, store.get(), map));
  int32_t flag = -1;
  ASSERT_TRUE(cfg_map_get_bool(store.get(), map, "enabled", &flag));
  EXPECT_EQ(1, flag);
}

// Rows that note in which order the engine comes to them; the second one fails on demand.
std::string visited;
bool fail_at_b = false;
template <char Letter>
constexpr tw::row<sample> noted_row(const char *k) {
  auto r = tw::int_row<&sample::level>(k);
  r.load = [](void *, const cfg_value &) {
    visited += Letter;
    return !(fail_at_b && Letter == 'b');
  };
  r.store = [](cfg *, cfg_elem *, const char *, const void *) {
    visited += Letter;
    return !(fail_at_b && Letter == 'b');
  };
  return r;
}
constexpr tw::load_list ordered_load({noted_row<'a'>("z"), noted_row<'b'>("y"), noted_row<'c'>("x")});
constexpr tw::store_list ordered_store({noted_row<'a'>("z"), noted_row<'b'>("y"), noted_row<'c'>("x")});

TEST_F(Rows, AreTakenInListOrderUpToTheFirstThatFails) {
  for (const char *k : {"x", "y", "z"}) ASSERT_TRUE(cfg_map_set_int(store.get(), map, k, 1));
  visited.clear();
  fail_at_b = false;
  EXPECT_TRUE(tw::load(ordered_load, record, map));
  EXPECT_TRUE(tw::store(ordered_store, record, store.get(), map));
  EXPECT_EQ("abcabc", visited);
  visited.clear();
  fail_at_b = true;
  EXPECT_FALSE(tw::load(ordered_load, record, map));
  EXPECT_FALSE(tw::store(ordered_store, record, store.get(), map));
  EXPECT_EQ("abab", visited);
}

TEST_F(Rows, StoringEachGoesOnBehindTheFirstThatFails) {
  visited.clear();
  fail_at_b = true;
  tw::store_each(ordered_store, record, store.get(), map);
  EXPECT_EQ("abc", visited);
}

TEST_F(Rows, StoringIntoNoMapFails) {
  ASSERT_TRUE(record.name.set("n"));
  EXPECT_FALSE(tw::store(all, record, store.get(), nullptr));
}

}  // namespace
