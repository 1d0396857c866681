// Smart groups as records, on a real store.
#include <twobject/smart_groups.h>

#include "records/store_fixture.hpp"

// The list's free function leaves its array behind; nothing else that was made there may stay.
extern "C" __attribute__((visibility("default"), used)) const char *__lsan_default_suppressions() {
  return "leak:cfg_smartgroup_list_new\n";
}

namespace {

struct FreeGroup {
  void operator()(cfg_smartgroup *group) const { cfg_smartgroup_free(group); }
  void operator()(cfg_smartgroup_list *list) const { cfg_smartgroup_list_free(list); }
};
using Group = std::unique_ptr<cfg_smartgroup, FreeGroup>;
using List = std::unique_ptr<cfg_smartgroup_list, FreeGroup>;

constexpr char kQuery[] = R"({"key":"name","op":"equal","string":"n"})";
constexpr char kLists[] = "smart_groups.nodes_groups";

class SmartGroup : public records::StoreTest {
 protected:
  Group made(const char *name = "group", const char *query = kQuery) {
    return Group(cfg_smartgroup_new(store, "nodes", name, query));
  }
  // An entry of the list, without the library.
  std::string stored(const char *name, const char *query) {
    cfg_elem *entry = entry_of(kLists);
    if (name) set(entry, "name", name);
    if (query) set(entry, "query", query);
    return id_of(entry);
  }
  Group by_id(const std::string &id) { return Group(cfg_smartgroup_get_by_id(store, "nodes", id.c_str())); }
  Group by_name(const char *name) { return Group(cfg_smartgroup_get_by_name(store, "nodes", name)); }
  List list(const char *type = "nodes") { return List(cfg_smartgroup_list_new(store, type)); }
};

TEST_F(SmartGroup, ANewGroupHasItsTextsAndNoElement) {
  std::string name = "group", query = kQuery;
  const Group group(cfg_smartgroup_new(store, "nodes", name.c_str(), query.c_str()));
  name[0] = query[0] = '?';
  EXPECT_STREQ(cfg_smartgroup_get_name(group.get()), "group");
  EXPECT_STREQ(cfg_smartgroup_get_query(group.get()), kQuery);
  EXPECT_EQ(cfg_smartgroup_get_uuid(group.get()), nullptr);
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_F(SmartGroup, ANewGroupNeedsAllItsTexts) {
  EXPECT_EQ(cfg_smartgroup_new(store, nullptr, "n", "q"), nullptr);
  EXPECT_EQ(cfg_smartgroup_new(store, "nodes", nullptr, "q"), nullptr);
  EXPECT_EQ(cfg_smartgroup_new(store, "nodes", "n", nullptr), nullptr);
}

TEST_F(SmartGroup, ALoadedGroupHasNameQueryAndId) {
  const std::string id = stored("group", "any text");
  const Group group = by_id(id);
  ASSERT_NE(group, nullptr);
  EXPECT_STREQ(cfg_smartgroup_get_name(group.get()), "group");
  EXPECT_STREQ(cfg_smartgroup_get_query(group.get()), "any text");
  EXPECT_EQ(cfg_smartgroup_get_uuid(group.get()), id_of(cfg_get_by_id(store, id.c_str())));
}

TEST_F(SmartGroup, AGroupWithoutNameOrQueryCannotBeLoaded) {
  EXPECT_EQ(by_id(stored(nullptr, kQuery)), nullptr);
  EXPECT_EQ(by_id(stored("group", nullptr)), nullptr);
  const std::string id = stored("group", kQuery);
  set(cfg_get_by_id(store, id.c_str()), "query", 5);
  EXPECT_EQ(by_id(id), nullptr);
  EXPECT_EQ(by_id("smart_groups_nodes_groups-4711"), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_by_id(store, "nodes", nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_by_id(store, nullptr, id.c_str()), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_by_id(nullptr, "nodes", id.c_str()), nullptr);
}

TEST_F(SmartGroup, IsFoundByItsExactNameInItsTypesList) {
  stored("other", kQuery);
  const std::string first = stored("group", "first");
  stored("group", "second");
  commit();
  EXPECT_STREQ(cfg_smartgroup_get_query(by_name("group").get()), "first");
  EXPECT_EQ(by_name("Group"), nullptr);
  EXPECT_EQ(by_name(nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_by_name(store, "ports", "group"), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_by_name(store, nullptr, "group"), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_by_name(nullptr, "nodes", "group"), nullptr);
}

TEST_F(SmartGroup, TheFirstOfANameThatCannotBeLoadedHidesThoseBehindIt) {
  stored("group", nullptr);
  stored("group", kQuery);
  EXPECT_EQ(by_name("group"), nullptr);
}

TEST_F(SmartGroup, SavingANewGroupAddsAnEntryThatTheListShowsAtOnce) {
  list_at(kLists);
  const Group group = made();
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 1);
  EXPECT_EQ(dump(kLists), R"([{name="group" query="{"key":"name","op":"equal","string":"n"}"}])");
  EXPECT_EQ(cfg_smartgroup_get_uuid(group.get())[0], '{');
  EXPECT_STREQ(cfg_smartgroup_get_query(by_name("group").get()), kQuery);
  commit();
  EXPECT_STREQ(cfg_smartgroup_get_uuid(group.get()), "smart_groups_nodes_groups-1");
}

TEST_F(SmartGroup, SavedTwiceIsOneElement) {
  list_at(kLists);
  const Group group = made();
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 1);
  EXPECT_EQ(cfg_smartgroup_set_name(group.get(), "renamed"), 1);
  EXPECT_EQ(cfg_smartgroup_set_query(group.get(), "q"), 1);
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 1);
  commit();
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 1);
  EXPECT_EQ(dump(kLists), R"([{name="renamed" query="q"}])");
}

TEST_F(SmartGroup, CannotBeSavedWithoutListTextsOrElement) {
  EXPECT_EQ(cfg_smartgroup_save(nullptr), 0);
  const Group group = made();
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 0) << "no list";
  EXPECT_EQ(cfg_smartgroup_get_uuid(group.get()), nullptr);
  list_at(kLists);
  EXPECT_EQ(cfg_smartgroup_set_query(group.get(), nullptr), 1);
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 0) << "no query";
  EXPECT_EQ(cfg_smartgroup_set_query(group.get(), "q"), 1);
  EXPECT_EQ(cfg_smartgroup_set_name(group.get(), ""), 1);
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 0) << "no name";
  EXPECT_EQ(dump(kLists), "[]");
  EXPECT_EQ(cfg_smartgroup_set_name(group.get(), "n"), 1);
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 1);
  EXPECT_EQ(cfg_smartgroup_delete(group.get()), 1);
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 0) << "no element any more";
}

TEST_F(SmartGroup, AWriteThatFailsEndsTheSaveBehindTheName) {
  const Group group = by_id(stored("group", "q"));
  EXPECT_EQ(cfg_smartgroup_set_name(group.get(), "renamed"), 1);
  EXPECT_EQ(cfg_smartgroup_set_query(group.get(), records::unwritable().c_str()), 1);
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 0);
  EXPECT_EQ(dump(kLists), R"([{name="renamed" query="q"}])");
}

TEST_F(SmartGroup, ATypeWhosePathIsTooLongIsCutAlikeWhenStoringAndSearching) {
  const std::string type(200, 't');
  const std::string cut = "smart_groups." + std::string(114, 't');
  ASSERT_EQ(cut.size(), 127U);
  list_at(cut);
  const Group group(cfg_smartgroup_new(store, type.c_str(), "long", "q"));
  EXPECT_EQ(cfg_smartgroup_save(group.get()), 1);
  EXPECT_EQ(dump(cut), R"([{name="long" query="q"}])");
  EXPECT_NE(Group(cfg_smartgroup_get_by_name(store, type.c_str(), "long")), nullptr);
  EXPECT_EQ(cfg_smartgroup_list_count(list(type.c_str()).get()), 1);
}

TEST_F(SmartGroup, DeletingRemovesTheElementOnce) {
  const Group group = by_id(stored("group", "q"));
  EXPECT_EQ(cfg_smartgroup_delete(group.get()), 1);
  EXPECT_EQ(dump(kLists), "[]");
  EXPECT_EQ(cfg_smartgroup_delete(group.get()), 0);
  EXPECT_EQ(cfg_smartgroup_delete(made().get()), 0);
  EXPECT_EQ(cfg_smartgroup_delete(nullptr), 0);
}

TEST_F(SmartGroup, NoGroupReadsAsNothing) {
  EXPECT_EQ(cfg_smartgroup_get_name(nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_query(nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_get_uuid(nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_set_name(nullptr, "n"), 0);
  EXPECT_EQ(cfg_smartgroup_set_query(nullptr, "q"), 0);
  cfg_smartgroup_free(nullptr);
  cfg_smartgroup_list_free(nullptr);
}

TEST_F(SmartGroup, TheListGivesTheGroupsOfItsTypeInOrder) {
  stored("a", "q1");
  stored("b", "q2");
  const List groups = list();
  EXPECT_EQ(cfg_smartgroup_list_count(groups.get()), 2);
  EXPECT_STREQ(cfg_smartgroup_get_name(Group(cfg_smartgroup_list_get_smartgroup(groups.get(), 0)).get()),
               "a");
  EXPECT_STREQ(cfg_smartgroup_get_name(Group(cfg_smartgroup_list_get_smartgroup(groups.get(), 1)).get()),
               "b");
  EXPECT_EQ(cfg_smartgroup_list_get_smartgroup(groups.get(), 2), nullptr);
  EXPECT_EQ(cfg_smartgroup_list_get_smartgroup(groups.get(), -1), nullptr);
  stored("c", "q3");
  EXPECT_EQ(cfg_smartgroup_list_count(groups.get()), 2) << "a list does not notice later changes";
}

TEST_F(SmartGroup, AnEmptyOrMissingListHasNoGroups) {
  EXPECT_EQ(cfg_smartgroup_list_count(list().get()), 0);
  list_at(kLists);
  const List empty = list();
  EXPECT_EQ(cfg_smartgroup_list_count(empty.get()), 0);
  EXPECT_EQ(cfg_smartgroup_list_get_smartgroup(empty.get(), 0), nullptr);
  EXPECT_EQ(cfg_smartgroup_list_new(store, nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_list_count(nullptr), 0);
  EXPECT_EQ(cfg_smartgroup_list_get_smartgroup(nullptr, 0), nullptr);
}

}  // namespace
