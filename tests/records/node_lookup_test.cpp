// Finding nodes by text, by certificate and by many IDs.
#include "node_fixture.hpp"

namespace {

using records::node_record;

struct text_lookup {
  const char *key;
  cfg_node *(*find)(cfg *, const char *) noexcept;
};
const text_lookup lookups[] = {{"name", cfg_get_node_by_name},
                               {"serial_number", cfg_get_node_by_serial_number},
                               {"fhvpn_address", cfg_get_node_by_fhvpn_address}};

class NodeLookup : public records::NodeTest, public testing::WithParamInterface<text_lookup> {
 protected:
  // A node with a text under the key that is looked up; nodes without one are told apart by their model.
  cfg_elem *add_with(const char *text, const char *model = "m") {
    cfg_elem *node = add_node("unnamed");
    if (text != nullptr) set(node, GetParam().key, text);
    set(node, "model", model);
    return node;
  }
  node_record find(const char *text) { return node_record(GetParam().find(store, text)); }
  std::string model_of(const char *text) {
    const node_record node = find(text);
    return node == nullptr ? "none" : cfg_node_get_model(node.get());
  }
};
INSTANTIATE_TEST_SUITE_P(By, NodeLookup, testing::ValuesIn(lookups),
                         [](const auto &tested) { return std::string(tested.param.key); });

TEST_P(NodeLookup, FindsTheFirstInListOrder) {
  add_with("x", "first");
  add_with("y", "second");
  add_with("y", "third");
  commit_and_reopen();
  EXPECT_EQ("second", model_of("y"));
  EXPECT_EQ("first", model_of("x"));
}

TEST_P(NodeLookup, GivesALoadedRecord) {
  cfg_elem *elem = add_with("x", "m");
  set(elem, "product", "acs6000");
  set(elem, "username", "u");
  commit_and_reopen();
  const node_record node = find("x");
  ASSERT_NE(nullptr, node);
  EXPECT_STREQ("nodes-1", cfg_node_get_uuid(node.get()));
  EXPECT_STREQ("u", cfg_node_get_username(node.get()));
}

TEST_P(NodeLookup, ComparesTheWholeTextExactly) {
  add_with("Abc");
  commit_and_reopen();
  for (const char *other : {"abc", "ABC", "Ab", "Abcd", " Abc", "", "Abc "})
    EXPECT_EQ(nullptr, find(other)) << other;
  EXPECT_NE(nullptr, find("Abc"));
}

TEST_P(NodeLookup, FindsNothingWithoutNodes) {
  EXPECT_EQ(nullptr, find("x"));
  list_at("nodes");
  EXPECT_EQ(nullptr, find("x"));
}

TEST_P(NodeLookup, NullFindsNothing) {
  add_with("x");
  add_with(nullptr);
  EXPECT_EQ(nullptr, find(nullptr));
  EXPECT_EQ(nullptr, GetParam().find(nullptr, "x"));
}

// A node without name ends the search; these two texts a node may lack.
class NodeLookupByOptionalText : public NodeLookup {};
INSTANTIATE_TEST_SUITE_P(By, NodeLookupByOptionalText, testing::Values(lookups[1], lookups[2]),
                         [](const auto &tested) { return std::string(tested.param.key); });

TEST_P(NodeLookupByOptionalText, ANodeWithoutTheTextIsPassedOver) {
  add_with(nullptr, "first");
  set(add_with(nullptr, "second"), GetParam().key, 5);
  add_with("x", "third");
  commit_and_reopen();
  EXPECT_EQ("third", model_of("x"));
  EXPECT_EQ(nullptr, find(""));
}

TEST_P(NodeLookup, PendingNodesAreNotFoundUntilTheCommit) {
  cfg_elem *list = list_at("nodes");
  cfg_elem *pending = cfg_new_map(store);
  set(pending, "name", "x");
  set(pending, "status", "Pending");
  set(pending, GetParam().key, "x");
  ASSERT_TRUE(cfg_append_future_listelem(store, list, pending));
  EXPECT_EQ(nullptr, find("x"));
  commit();
  EXPECT_NE(nullptr, find("x"));
}

TEST_P(NodeLookup, SeesTheEditInProgress) {
  cfg_elem *elem = add_with("old");
  commit();
  elem = cfg_simple_get_listelem(store, cfg_get_by_path(store, "nodes"), 0);
  EXPECT_NE(nullptr, find("old"));
  set(elem, GetParam().key, "new");
  EXPECT_EQ(nullptr, find("old"));
  EXPECT_NE(nullptr, find("new"));
  cfg_abandon(store);
  EXPECT_NE(nullptr, find("old"));
  elem = cfg_simple_get_listelem(store, cfg_get_by_path(store, "nodes"), 0);
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(nullptr, find("old"));
}

// The ways in which a node cannot be loaded.
const struct {
  const char *what;
  const char *key;
  int kind;  // 0: absent, 1: an integer, 2: a map
} broken[] = {{"no name", "name", 0},
              {"no status", "status", 0},
              {"name is an integer", "name", 1},
              {"status is an integer", "status", 1},
              {"name is a map", "name", 2},
              {"status is a map", "status", 2}};

TEST_P(NodeLookup, ANodeThatCannotBeLoadedHidesTheMatchBehindIt) {
  for (const auto &defect : broken) {
    SCOPED_TRACE(defect.what);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    add_with("before");
    cfg_elem *bad = add_with("bad");
    erase(bad, defect.key);
    if (defect.kind == 1) set(bad, defect.key, 5);
    if (defect.kind == 2) child_map(bad, defect.key);
    add_with("after");
    commit_and_reopen();
    EXPECT_NE(nullptr, find("before"));
    EXPECT_EQ(nullptr, find("after"));
    EXPECT_EQ(nullptr, find("bad"));
    EXPECT_EQ(nullptr, find("nowhere"));
  }
}

TEST_P(NodeLookup, AnEntryThatIsNoMapHidesTheMatchBehindIt) {
  add_with("before");
  add(cfg_get_by_path(store, "nodes"), "just text");
  add_with("after");
  commit_and_reopen();
  EXPECT_NE(nullptr, find("before"));
  EXPECT_EQ(nullptr, find("after"));
}

TEST_P(NodeLookup, ALongListIsSearchedToItsEnd) {
  for (int i = 0; i < 300; ++i) add_with(("n" + std::to_string(i)).c_str(), std::to_string(i).c_str());
  commit_and_reopen();
  EXPECT_EQ("0", model_of("n0"));
  EXPECT_EQ("299", model_of("n299"));
  EXPECT_EQ("none", model_of("n300"));
}

class NodeByCertCn : public records::NodeTest {
 protected:
  void give(cfg_elem *node, cfg_elem *certificate) { set_reference(node, "cert", id_of(certificate)); }
  std::string found(const char *common_name) {
    const node_record node(cfg_get_node_by_cert_cn(store, common_name));
    return node == nullptr ? "none" : cfg_node_get_name(node.get());
  }
};

TEST_F(NodeByCertCn, FindsTheNodeThatHoldsTheOneCertificateOfThatName) {
  give(add_node("a", "tarnwell"), add_certificate("cn-a"));
  give(add_node("b", "tarnwell"), add_certificate("cn-b"));
  commit_and_reopen();
  EXPECT_EQ("a", found("cn-a"));
  EXPECT_EQ("b", found("cn-b"));
  const node_record node(cfg_get_node_by_cert_cn(store, "cn-b"));
  EXPECT_STREQ("cn-b", cfg_node_get_cert_cn(node.get()));
  for (const char *other : {"cn-c", "cn", "CN-A", ""}) EXPECT_EQ("none", found(other)) << other;
}

TEST_F(NodeByCertCn, FindsNothingWithoutCertificatesOrNodes) {
  EXPECT_EQ("none", found("cn"));
  add_certificate("cn");
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
  list_at("nodes");
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
}

TEST_F(NodeByCertCn, TwoUnrevokedCertificatesOfTheNameFindNothing) {
  give(add_node("a", "tarnwell"), add_certificate("cn"));
  add_certificate("cn");
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
}

TEST_F(NodeByCertCn, RevokedCertificatesDoNotCount) {
  give(add_node("old", "tarnwell"), [&] {
    cfg_elem *revoked = add_certificate("cn");
    set(revoked, "revoke_time", 1700000000);
    return revoked;
  }());
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
  give(add_node("new", "tarnwell"), add_certificate("cn"));
  commit_and_reopen();
  EXPECT_EQ("new", found("cn"));
}

TEST_F(NodeByCertCn, TwoNodesWithTheCertificateFindNothing) {
  cfg_elem *certificate = add_certificate("cn");
  give(add_node("a", "tarnwell"), certificate);
  give(add_node("b", "tarnwell"), certificate);
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
}

TEST_F(NodeByCertCn, ACertificateThatNoNodeHoldsFindsNothing) {
  add_certificate("cn");
  add_node("a", "tarnwell");
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
}

TEST_F(NodeByCertCn, ANodeThatCannotBeLoadedElsewhereDoesNotDisturb) {
  erase(add_node("bad"), "status");
  give(add_node("a", "tarnwell"), add_certificate("cn"));
  commit_and_reopen();
  EXPECT_EQ("a", found("cn"));
}

TEST_F(NodeByCertCn, TheNodeItselfMustBeLoadable) {
  cfg_elem *node = add_node("a", "tarnwell");
  give(node, add_certificate("cn"));
  erase(node, "status");
  commit_and_reopen();
  EXPECT_EQ("none", found("cn"));
}

TEST_F(NodeByCertCn, TheNodesProductDoesNotMatter) {
  give(add_node("a", "generic"), add_certificate("cn"));
  commit_and_reopen();
  EXPECT_EQ("a", found("cn"));
}

TEST_F(NodeByCertCn, NullFindsNothing) {
  EXPECT_EQ(nullptr, cfg_get_node_by_cert_cn(store, nullptr));
  EXPECT_EQ(nullptr, cfg_get_node_by_cert_cn(nullptr, "cn"));
}

class NodesById : public records::NodeTest {
 protected:
  void SetUp() override {
    NodeTest::SetUp();
    for (const char *name : {"a", "b", "c"}) add_node(name, "tarnwell");
    commit_and_reopen();
  }
  // The names that come back, "none" for no array; all count + 1 slots are looked at.
  std::string loaded(const std::vector<const char *> &ids) {
    const auto count = static_cast<int32_t>(ids.size());
    const std::unique_ptr<cfg_node *, records::free_heap> nodes(
        cfg_get_nodes_by_id(store, ids.data(), count));
    if (nodes == nullptr) return "none";
    std::string names;
    bool ended = false;
    for (int32_t i = 0; i <= count; ++i) {
      const node_record node(nodes.get()[i]);
      if (node == nullptr)
        ended = true;
      else
        names += (ended ? "!" : "") + std::string(cfg_node_get_name(node.get())) + " ";
    }
    EXPECT_EQ(nullptr, nodes.get()[count]);
    return names;
  }
};

TEST_F(NodesById, ComeInTheOrderOfTheirIdsAndEndWithNull) {
  EXPECT_EQ("a b c ", loaded({"nodes-1", "nodes-2", "nodes-3"}));
  EXPECT_EQ("c a ", loaded({"nodes-3", "nodes-1"}));
}

TEST_F(NodesById, AnIdThatIsGivenTwiceGivesTwoRecords) { EXPECT_EQ("b b ", loaded({"nodes-2", "nodes-2"})); }

TEST_F(NodesById, IdsThatNameNothingAreLeftOut) {
  EXPECT_EQ("a c ", loaded({"nodes-1", "nodes-99", "nodes-3"}));
}

TEST_F(NodesById, NoIdsAndUnknownIdsGiveAnArrayOfNulls) {
  EXPECT_EQ("", loaded({"nodes-99", "rubbish"}));
  const char *unused = nullptr;
  const std::unique_ptr<cfg_node *, records::free_heap> nodes(cfg_get_nodes_by_id(store, &unused, 0));
  ASSERT_NE(nullptr, nodes);
  EXPECT_EQ(nullptr, nodes.get()[0]);
}

TEST_F(NodesById, OneNodeThatCannotBeLoadedFailsTheWhole) {
  cfg_elem *middle = cfg_get_by_id(store, "nodes-2");
  erase(middle, "status");
  EXPECT_EQ("none", loaded({"nodes-1", "nodes-2", "nodes-3"}));
  EXPECT_EQ("none", loaded({"nodes-2"}));
  EXPECT_EQ("a c ", loaded({"nodes-1", "nodes-3"}));
}

TEST_F(NodesById, NullAndNegativeCountsGiveNothing) {
  const char *id = "nodes-1";
  EXPECT_EQ(nullptr, cfg_get_nodes_by_id(store, nullptr, 1));
  EXPECT_EQ(nullptr, cfg_get_nodes_by_id(store, &id, -1));
  EXPECT_EQ(nullptr, cfg_get_nodes_by_id(store, &id, INT32_MIN));
  EXPECT_EQ(nullptr, cfg_get_nodes_by_id(nullptr, &id, 1));
}

}  // namespace
