// Template records: what templates of every type share, and the dummy type.
#include "template_fixture.hpp"

namespace {

using records::heap_text;
using records::template_record;

class Template : public records::TemplateTest {};

const char *const texts[] = {"dummy", "users_groups", "ports", "network", "auth", "script"};

TEST(TemplateType, HasATextFromZeroToFive) {
  for (int32_t type = 0; type < 6; ++type) {
    EXPECT_STREQ(texts[type], cfg_template_type_enum_to_string(type));
    EXPECT_EQ(type, cfg_template_type_string_to_enum(texts[type]));
  }
}

TEST(TemplateType, HasNoTextOutside) {
  for (const int32_t type : {6, 7, -1, INT32_MAX, INT32_MIN})
    EXPECT_EQ(nullptr, cfg_template_type_enum_to_string(type)) << type;
}

TEST(TemplateType, IsInvalidForAnyTextThatIsNotExactlyOne) {
  for (const char *text : {"", "Users_groups", "DUMMY", "dumm", "dummys", " script", "none"})
    EXPECT_EQ(6, cfg_template_type_string_to_enum(text)) << text;
  EXPECT_EQ(6, cfg_template_type_string_to_enum(nullptr));
}

TEST_F(Template, IsReadFromItsElement) {
  cfg_elem *elem = add_template("trial", "dummy");
  set(elem, "description", "a trial");
  set(elem, "dummy_field", "some text");
  commit_and_reopen();
  const template_record record = load("templates-1");
  ASSERT_NE(nullptr, record);
  EXPECT_STREQ("templates-1", cfg_template_get_uuid(record.get()));
  EXPECT_STREQ("trial", cfg_template_get_name(record.get()));
  EXPECT_STREQ("a trial", cfg_template_get_description(record.get()));
  EXPECT_EQ(CFG_TEMPLATE_DUMMY, cfg_template_get_type(record.get()));
  EXPECT_STREQ("some text", cfg_dummy_template_get_dummy_field(record.get()));
}

TEST_F(Template, OnlyADummyReadsTheDummyField) {
  for (int32_t type = 1; type < 6; ++type) {
    cfg_elem *elem = add_template("other", texts[type]);
    set(elem, "dummy_field", "some text");
    const template_record record = load(elem);
    EXPECT_EQ(type, cfg_template_get_type(record.get()));
    EXPECT_EQ(nullptr, cfg_dummy_template_get_dummy_field(record.get())) << type;
  }
}

TEST_F(Template, IsReadWhateverItsKeysHold) {
  cfg_elem *elem = entry_of("templates");
  const template_record bare = load(elem);
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_template_get_name(bare.get()));
  EXPECT_EQ(nullptr, cfg_template_get_description(bare.get()));
  EXPECT_EQ(CFG_TEMPLATE_INVALID, cfg_template_get_type(bare.get()));
  for (const char *key : {"name", "description", "template_type", "dummy_field"}) set(elem, key, 7);
  const template_record odd = load(elem);
  ASSERT_NE(nullptr, odd);
  EXPECT_EQ(nullptr, cfg_template_get_name(odd.get()));
  EXPECT_EQ(nullptr, cfg_template_get_description(odd.get()));
  EXPECT_EQ(CFG_TEMPLATE_INVALID, cfg_template_get_type(odd.get()));
  set(elem, "template_type", "dummy");
  EXPECT_EQ(nullptr, cfg_dummy_template_get_dummy_field(load(elem).get()));
}

TEST_F(Template, IsNotReadFromNowhere) {
  add_template("trial", "dummy");
  EXPECT_EQ(nullptr, load("templates-9"));
  EXPECT_EQ(nullptr, cfg_template_get_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_template_get_by_id(nullptr, "templates-1"));
}

TEST_F(Template, IsNewWithNameAndTypeAndNothingElse) {
  for (const int32_t type : {0, 1, 2, 3, 4, 5, 6, 99, -1}) {
    const template_record record = fresh("fresh", type);
    ASSERT_NE(nullptr, record) << type;
    EXPECT_EQ(nullptr, cfg_template_get_uuid(record.get()));
    EXPECT_STREQ("fresh", cfg_template_get_name(record.get()));
    EXPECT_EQ(nullptr, cfg_template_get_description(record.get()));
    EXPECT_EQ(type, cfg_template_get_type(record.get()));
    EXPECT_EQ(nullptr, cfg_dummy_template_get_dummy_field(record.get()));
  }
}

TEST_F(Template, IsNotMadeWithoutAName) { EXPECT_EQ(nullptr, fresh(nullptr, CFG_TEMPLATE_DUMMY)); }

TEST_F(Template, ThatIsNewIsSavedAsAPendingEntry) {
  list_at("templates");
  const template_record record = fresh("trial", CFG_TEMPLATE_DUMMY);
  ASSERT_EQ(1, cfg_template_set_description(record.get(), "a trial"));
  ASSERT_EQ(1, cfg_dummy_template_set_dummy_field(record.get(), "some text"));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  const std::string whole =
      R"({description="a trial" dummy_field="some text" name="trial" template_type="dummy"})";
  EXPECT_EQ("[+" + whole + "]", dump("templates"));
  ASSERT_NE(nullptr, cfg_template_get_uuid(record.get()));
  EXPECT_EQ('{', cfg_template_get_uuid(record.get())[0]);
  commit();
  EXPECT_STREQ("templates-1", cfg_template_get_uuid(record.get()));
  EXPECT_EQ("[" + whole + "]", dump("templates"));
}

TEST_F(Template, IsSavedTwiceIntoOneElement) {
  list_at("templates");
  const template_record record = fresh("trial", CFG_TEMPLATE_PORTS);
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  commit();
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"([{name="trial" template_type="ports"}])", dump("templates"));
  EXPECT_FALSE(cfg_has_changes(store));
}

TEST_F(Template, OfPortsOrNetworkSavesNameDescriptionAndTypeOnly) {
  list_at("templates");
  for (const int32_t type : {CFG_TEMPLATE_PORTS, CFG_TEMPLATE_NETWORK}) {
    const template_record record = fresh("plain", type);
    ASSERT_EQ(1, cfg_template_set_description(record.get(), "d"));
    ASSERT_EQ(1, cfg_dummy_template_set_dummy_field(record.get(), "not saved"));
    EXPECT_EQ(1, cfg_template_save(record.get()));
    EXPECT_EQ(std::string(R"({description="d" name="plain" template_type=")") + texts[type] + "\"}",
              dump(cfg_get_by_id(store, cfg_template_get_uuid(record.get()))));
    const template_record again = load(cfg_template_get_uuid(record.get()));
    EXPECT_STREQ("plain", cfg_template_get_name(again.get()));
    EXPECT_STREQ("d", cfg_template_get_description(again.get()));
    EXPECT_EQ(type, cfg_template_get_type(again.get()));
  }
}

TEST_F(Template, SavedWithATypeThatHasNoTextLosesTheKey) {
  cfg_elem *elem = add_template("trial", "ports");
  const template_record record = load(elem);
  for (const int32_t type : {6, -1, 99}) {
    set(elem, "template_type", "ports");
    ASSERT_EQ(1, cfg_template_set_type(record.get(), type));
    EXPECT_EQ(1, cfg_template_save(record.get()));
    EXPECT_EQ(R"({name="trial"})", dump(elem)) << type;
  }
}

TEST_F(Template, WithAMisspeltTypeLosesItWhenItIsSaved) {
  cfg_elem *elem = add_template("trial", "Users_groups");
  EXPECT_EQ(CFG_TEMPLATE_INVALID, cfg_template_get_type(load(elem).get()));
  EXPECT_EQ(1, cfg_template_save(load(elem).get()));
  EXPECT_EQ(R"({name="trial"})", dump(elem));
}

TEST_F(Template, ChangingTheTypeChangesNothingElse) {
  cfg_elem *elem = add_template("trial", "dummy");
  set(elem, "dummy_field", "some text");
  const template_record record = load(elem);
  EXPECT_EQ(1, cfg_template_set_type(record.get(), CFG_TEMPLATE_NETWORK));
  EXPECT_EQ(CFG_TEMPLATE_NETWORK, cfg_template_get_type(record.get()));
  EXPECT_STREQ("some text", cfg_dummy_template_get_dummy_field(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({dummy_field="some text" name="trial" template_type="network"})", dump(elem));
}

TEST_F(Template, SavingWritesWhatHasChanged) {
  add_template("trial", "ports");
  commit();
  const template_record record = load("templates-1");
  ASSERT_EQ(1, cfg_template_set_name(record.get(), "renamed"));
  ASSERT_EQ(1, cfg_template_set_description(record.get(), "new"));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ((std::vector<std::string>{"= templates-1.name", "+ templates-1.description"}), changes());
}

TEST_F(Template, ThatIsNewNeedsTheList) {
  const template_record record = fresh("trial", CFG_TEMPLATE_DUMMY);
  EXPECT_EQ(0, cfg_template_save(record.get()));
  EXPECT_EQ(nullptr, cfg_template_get_uuid(record.get()));
  EXPECT_EQ("none", dump("templates"));
  EXPECT_EQ(0, cfg_template_save(template_record(cfg_template_new(nullptr, "x", 0)).get()));
  EXPECT_EQ(0, cfg_template_save(nullptr));
}

TEST_F(Template, WhoseElementIsGoneIsSavedWithoutANotice) {
  const template_record record = load(add_template("trial", "dummy"));
  ASSERT_EQ(1, cfg_template_delete(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ("[]", dump("templates"));
}

TEST_F(Template, AValueThatTheStoreDoesNotTakeDoesNotStopTheOthers) {
  cfg_elem *elem = add_template("trial", "ports");
  const template_record record = load(elem);
  ASSERT_EQ(1, cfg_template_set_name(record.get(), records::unwritable().c_str()));
  ASSERT_EQ(1, cfg_template_set_description(record.get(), "taken"));
  ASSERT_EQ(1, cfg_template_set_type(record.get(), CFG_TEMPLATE_NETWORK));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({description="taken" name="trial" template_type="network"})", dump(elem));
}

TEST_F(Template, TextsAreReplacedAndNullIsIgnored) {
  const template_record record = fresh("trial", CFG_TEMPLATE_DUMMY);
  const struct {
    int (*set)(cfg_template *, const char *);
    const char *(*get)(const cfg_template *);
  } fields[] = {
      {cfg_template_set_name, cfg_template_get_name},
      {cfg_template_set_description, cfg_template_get_description},
      {cfg_dummy_template_set_dummy_field, cfg_dummy_template_get_dummy_field},
  };
  for (const auto &field : fields) {
    EXPECT_EQ(1, field.set(record.get(), "first"));
    EXPECT_EQ(1, field.set(record.get(), "second"));
    EXPECT_STREQ("second", field.get(record.get()));
    EXPECT_EQ(1, field.set(record.get(), field.get(record.get())));
    EXPECT_EQ(0, field.set(record.get(), nullptr));
    EXPECT_STREQ("second", field.get(record.get()));
    EXPECT_EQ(1, field.set(record.get(), ""));
    EXPECT_EQ(nullptr, field.get(record.get()));
    EXPECT_EQ(0, field.set(nullptr, "x"));
    EXPECT_EQ(nullptr, field.get(nullptr));
  }
}

TEST_F(Template, ADescriptionThatWasClearedLosesItsKey) {
  cfg_elem *elem = add_template("trial", "ports");
  set(elem, "description", "a trial");
  const template_record record = load(elem);
  ASSERT_EQ(1, cfg_template_set_description(record.get(), ""));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="trial" template_type="ports"})", dump(elem));
}

TEST_F(Template, IsDeletedOnce) {
  const template_record record = load(add_template("trial", "dummy"));
  EXPECT_EQ(1, cfg_template_delete(record.get()));
  EXPECT_EQ("[]", dump("templates"));
  EXPECT_EQ(0, cfg_template_delete(record.get()));
  EXPECT_STREQ("trial", cfg_template_get_name(record.get()));
}

TEST_F(Template, IsNotDeletedWithoutAnElement) {
  EXPECT_EQ(0, cfg_template_delete(fresh("trial", CFG_TEMPLATE_DUMMY).get()));
  EXPECT_EQ(0, cfg_template_delete(nullptr));
}

TEST_F(Template, FreeingItLeavesAllButItsNameToTheCaller) {
  cfg_elem *elem = add_template("trial", "dummy");
  set(elem, "description", "a trial");
  set(elem, "dummy_field", "some text");
  commit();
  cfg_template *record = cfg_template_get_by_id(store, "templates-1");
  const heap_text uuid(const_cast<char *>(cfg_template_get_uuid(record)));
  const heap_text description(const_cast<char *>(cfg_template_get_description(record)));
  const heap_text dummy_field(const_cast<char *>(cfg_dummy_template_get_dummy_field(record)));
  cfg_template_free(record);
  EXPECT_STREQ("templates-1", uuid.get());
  EXPECT_STREQ("a trial", description.get());
  EXPECT_STREQ("some text", dummy_field.get());
}

TEST_F(Template, NullGivesNothing) {
  EXPECT_EQ(nullptr, cfg_template_get_uuid(nullptr));
  EXPECT_EQ(CFG_TEMPLATE_INVALID, cfg_template_get_type(nullptr));
  EXPECT_EQ(0, cfg_template_set_type(nullptr, 1));
  cfg_template_free(nullptr);
}

}  // namespace
