#include "nodes/port_labels.hpp"

#include "kit/fixture.hpp"

namespace {

using tw::port_labels;

class PortLabels : public kit::StoreTest {
 protected:
  // A list that holds these strings; "#" stands for an entry that is no string.
  cfg_elem *list_of(std::initializer_list<const char *> labels) {
    cfg_elem *list = list_at("labels");
    for (const char *label : labels) {
      cfg_elem *entry =
          std::string(label) == "#" ? cfg_new_map(store.get()) : cfg_new_string(store.get(), label);
      EXPECT_TRUE(cfg_add_listelem(store.get(), list, entry));
    }
    return list;
  }
};

TEST_F(PortLabels, AreNumberedFromOne) {
  port_labels labels;
  ASSERT_TRUE(labels.number(3));
  EXPECT_STREQ("Port 1", labels.get(3, 0));
  EXPECT_STREQ("Port 3", labels.get(3, 2));
  EXPECT_EQ(nullptr, labels.get(3, 3));
  EXPECT_EQ(nullptr, labels.get(3, -1));
}

TEST_F(PortLabels, OfNoPortsAreNone) {
  port_labels labels;
  ASSERT_TRUE(labels.number(2));
  EXPECT_TRUE(labels.number(-4));
  EXPECT_EQ(nullptr, labels.get(-4, 0));
  EXPECT_EQ(nullptr, labels.get(2, 0));
}

TEST_F(PortLabels, AboveTheLimitAreRefusedAndTheOldOnesStay) {
  port_labels labels;
  ASSERT_TRUE(labels.number(1));
  EXPECT_FALSE(labels.number(port_labels::max_ports + 1));
  EXPECT_STREQ("Port 1", labels.get(1, 0));
  EXPECT_TRUE(labels.number(port_labels::max_ports));
  EXPECT_STREQ("Port 65536", labels.get(65536, 65535));
}

TEST_F(PortLabels, OutsideTheCountAndNullAreIgnored) {
  port_labels labels;
  ASSERT_TRUE(labels.number(2));
  EXPECT_FALSE(labels.set(2, 2, "x"));
  EXPECT_FALSE(labels.set(2, -1, "x"));
  EXPECT_FALSE(labels.set(2, 0, nullptr));
  EXPECT_STREQ("Port 1", labels.get(2, 0));
  EXPECT_TRUE(labels.set(2, 0, "console"));
  EXPECT_STREQ("console", labels.get(2, 0));
}

TEST_F(PortLabels, AStoredCountAllocatesNothing) {
  port_labels labels;
  ASSERT_TRUE(labels.load(INT32_MAX, store.get(), list_of({"a"})));
  EXPECT_STREQ("a", labels.get(INT32_MAX, 0));
  EXPECT_EQ(nullptr, labels.get(INT32_MAX, 1));
  EXPECT_FALSE(labels.set(INT32_MAX, INT32_MAX - 1, "x"));
}

TEST_F(PortLabels, BeyondTheCountAreNotLoaded) {
  port_labels labels;
  ASSERT_TRUE(labels.load(1, store.get(), list_of({"a", "b"})));
  EXPECT_EQ(nullptr, labels.get(2, 1));
}

TEST_F(PortLabels, AGapIsSavedAsAnEmptyStringSoThatTheOthersKeepTheirPlaces) {
  port_labels labels;
  ASSERT_TRUE(labels.load(3, store.get(), list_of({"a", "#", "c"})));
  EXPECT_EQ(nullptr, labels.get(3, 1));
  ASSERT_TRUE(labels.save(store.get(), root, "saved"));
  port_labels again;
  ASSERT_TRUE(again.load(3, store.get(), cfg_get_by_path(store.get(), "saved")));
  EXPECT_STREQ("a", again.get(3, 0));
  EXPECT_STREQ("", again.get(3, 1));
  EXPECT_STREQ("c", again.get(3, 2));
}

TEST_F(PortLabels, GivenBeyondTheStoredOnesLeaveGaps) {
  port_labels labels;
  ASSERT_TRUE(labels.load(4, store.get(), list_of({"a"})));
  ASSERT_TRUE(labels.set(4, 3, "d"));
  EXPECT_EQ(nullptr, labels.get(4, 2));
  EXPECT_STREQ("d", labels.get(4, 3));
}

}  // namespace
