// The list of all templates.
#include "template_fixture.hpp"

namespace {

struct free_list {
  void operator()(cfg_template_list *list) const { cfg_template_list_free(list); }
};

class TemplateList : public records::TemplateTest {
 protected:
  using list_record = std::unique_ptr<cfg_template_list, free_list>;
  list_record read() { return list_record(cfg_template_list_new(store)); }
  records::template_record at(const list_record &list, int32_t index) {
    return records::template_record(cfg_template_list_get_template(list.get(), index));
  }
};

TEST_F(TemplateList, HoldsTheCommittedTemplatesInOrder) {
  add_template("first", "dummy");
  add_template("second", "ports");
  commit_and_reopen();
  ASSERT_EQ(1, cfg_template_save(fresh("pending", CFG_TEMPLATE_PORTS).get()));
  const list_record list = read();
  ASSERT_EQ(2, cfg_template_list_count(list.get()));
  EXPECT_STREQ("templates-1", cfg_template_get_uuid(at(list, 0).get()));
  EXPECT_STREQ("first", cfg_template_get_name(at(list, 0).get()));
  EXPECT_STREQ("second", cfg_template_get_name(at(list, 1).get()));
  commit();
  EXPECT_EQ(2, cfg_template_list_count(list.get()));
  EXPECT_EQ(3, cfg_template_list_count(read().get()));
}

TEST_F(TemplateList, GivesNothingOutsideItself) {
  add_template("only", "dummy");
  const list_record list = read();
  for (const int32_t index : {1, 2, -1, INT32_MAX, INT32_MIN}) EXPECT_EQ(nullptr, at(list, index)) << index;
}

TEST_F(TemplateList, DoesNotLoadATemplateThatIsGone) {
  cfg_elem *elem = add_template("only", "dummy");
  const list_record list = read();
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(1, cfg_template_list_count(list.get()));
  EXPECT_EQ(nullptr, at(list, 0));
}

TEST_F(TemplateList, IsEmptyWithoutTemplates) {
  const list_record without = read();
  ASSERT_NE(nullptr, without);
  EXPECT_EQ(0, cfg_template_list_count(without.get()));
  list_at("templates");
  EXPECT_EQ(0, cfg_template_list_count(read().get()));
  EXPECT_EQ(nullptr, at(without, 0));
}

TEST_F(TemplateList, OfNullIsNothing) {
  EXPECT_EQ(0, cfg_template_list_count(nullptr));
  EXPECT_EQ(nullptr, cfg_template_list_get_template(nullptr, 0));
  cfg_template_list_free(nullptr);
  const list_record list(cfg_template_list_new(nullptr));
  EXPECT_EQ(0, cfg_template_list_count(list.get()));
}

}  // namespace
