// Every allocation of the library fails in turn: a call either fails as a whole or does not need the memory.
//
// The linker sends the allocations of the library's objects here (--wrap); those of the store and of OpenSSL
// are not touched. Under the address sanitizer this also shows that nothing leaks on the way out.
#include <twobject.h>

#include <functional>
#include <new>

#include "kit/fixture.hpp"

namespace {

int allocations_left = -1;  // negative: none fails
bool failed = false;

bool fails() {
  if (allocations_left < 0 || allocations_left-- > 0) return false;
  allocations_left = -1;
  return failed = true;
}

}  // namespace

// Visible, because the sanitizers' runtime may refer to them.
#pragma GCC visibility push(default)
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
char *__real_strdup(const char *chars);
void *__real__Znwm(size_t size);
void *__real__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t &);

void *__wrap_malloc(size_t size) { return fails() ? nullptr : __real_malloc(size); }
void *__wrap_calloc(size_t count, size_t size) { return fails() ? nullptr : __real_calloc(count, size); }
char *__wrap_strdup(const char *chars) { return fails() ? nullptr : __real_strdup(chars); }
void *__wrap__Znwm(size_t size) {
  if (fails()) throw std::bad_alloc();
  return __real__Znwm(size);
}
void *__wrap__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t &tag) {
  return fails() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
}
#pragma GCC visibility pop

namespace {

// Runs `call`, which answers whether it succeeded, until no allocation is left to fail. Returns how many
// were.
int fail_each(const std::function<bool()> &call) {
  for (int n = 0; n < 1000; ++n) {
    allocations_left = n;
    failed = false;
    const bool succeeded = call();
    allocations_left = -1;
    if (!failed) {
      EXPECT_TRUE(succeeded) << "without a failing allocation";
      return n;
    }
    EXPECT_FALSE(succeeded) << "although allocation " << n << " failed";
  }
  ADD_FAILURE() << "never runs through";
  return 0;
}

class NoMemory : public kit::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *nodes = list_at("nodes");
    tarnwell = add_node(nodes, "tarnwell");
    cfg_elem *etags = cfg_new_list(store.get());
    ASSERT_TRUE(cfg_add_mapelem(store.get(), tarnwell, "etags", etags));
    for (const char *name : {"ports", "users"}) {
      cfg_elem *etag = cfg_new_map(store.get());
      ASSERT_TRUE(cfg_map_set_string(store.get(), etag, "name", name));
      ASSERT_TRUE(cfg_map_set_string(store.get(), etag, "status", "ok"));
      ASSERT_TRUE(cfg_add_listelem(store.get(), etags, etag));
    }
    generic = add_node(nodes, "generic");
    ASSERT_TRUE(cfg_map_set_int(store.get(), generic, "port_count", 2));
    cfg_elem *labels = cfg_new_list(store.get());
    ASSERT_TRUE(cfg_add_mapelem(store.get(), generic, "port_labels", labels));
    for (const char *label : {"first", "second"})
      ASSERT_TRUE(cfg_add_listelem(store.get(), labels, cfg_new_string(store.get(), label)));
    cfg_elem *services = map_at("services");
    cfg_elem *ca = cfg_new_map(store.get());
    ASSERT_TRUE(cfg_add_mapelem(store.get(), services, "ca", ca));
    ASSERT_TRUE(cfg_map_set_blob(store.get(), ca, "certificate", "PEM", 3));
    certificate = cfg_new_map(store.get());
    ASSERT_TRUE(cfg_add_listelem(store.get(), list_at("certificates"), certificate));
    ASSERT_TRUE(cfg_map_set_string(store.get(), certificate, "common_name", "cn"));
    ASSERT_TRUE(cfg_map_set_blob(store.get(), certificate, "private_key", "KEY", 3));
    commit();
  }

  cfg_elem *add_node(cfg_elem *nodes, const char *product) {
    cfg_elem *node = cfg_new_map(store.get());
    for (const char *key :
         {"name", "status", "description", "mac_address", "address", "username", "password"})
      EXPECT_TRUE(cfg_map_set_string(store.get(), node, key, "some text"));
    EXPECT_TRUE(cfg_map_set_string(store.get(), node, "product", product));
    EXPECT_TRUE(cfg_add_listelem(store.get(), nodes, node));
    return node;
  }

  cfg_elem *tarnwell = nullptr;
  cfg_elem *generic = nullptr;
  cfg_elem *certificate = nullptr;
};

TEST_F(NoMemory, ANodeLoadsWholeOrNotAtAll) {
  for (const char *id : {"nodes-1", "nodes-2"}) {
    const int allocations = fail_each([&] {
      cfg_node *node = cfg_get_node_by_id(store.get(), id);
      cfg_node_free(node);
      return node != nullptr;
    });
    EXPECT_GE(allocations, 8) << id;
  }
}

TEST_F(NoMemory, SeveralNodesLoadAllOrNone) {
  const char *ids[] = {"nodes-1", "nodes-2"};
  fail_each([&] {
    cfg_node **nodes = cfg_get_nodes_by_id(store.get(), ids, 2);
    if (!nodes) return false;
    cfg_node_free(nodes[0]);
    cfg_node_free(nodes[1]);
    std::free(nodes);
    return true;
  });
}

TEST_F(NoMemory, ACertificateLoadsWholeOrNotAtAll) {
  const int allocations = fail_each([&] {
    cfg_certificate *record = cfg_get_certificate_by_id(store.get(), "certificates-1");
    cfg_certificate_free(record);
    std::free(record);
    return record != nullptr;
  });
  EXPECT_GE(allocations, 3);
}

TEST_F(NoMemory, AnEnrolmentIsMadeWholeOrNotAtAll) {
  const int allocations = fail_each([&] {
    cfg_enrollment *record = cfg_enrollment_new(store.get(), "tarnwell");
    cfg_enrollment_free(record);
    return record != nullptr;
  });
  EXPECT_EQ(4, allocations);  // record, status, product, password
}

TEST_F(NoMemory, AnEnrolmentLoadsWholeOrNotAtAll) {
  for (const char *id : {"nodes-1", "nodes-2"}) {
    fail_each([&] {
      cfg_enrollment *record = cfg_enrollment_get_by_id(store.get(), id);
      cfg_enrollment_free(record);
      return record != nullptr;
    });
  }
}

TEST_F(NoMemory, ASetterThatFailsLeavesTheFieldNull) {
  cfg_node *node = cfg_new_node(store.get());
  ASSERT_EQ(1, cfg_node_set_name(node, "old"));
  allocations_left = 0;
  EXPECT_EQ(0, cfg_node_set_name(node, "new"));
  EXPECT_EQ(nullptr, cfg_node_get_name(node));
  cfg_node_free(node);
}

TEST_F(NoMemory, PortLabelsStayWhenNewOnesCannotBeMade) {
  cfg_node *node = cfg_get_node_by_id(store.get(), "nodes-2");
  ASSERT_NE(nullptr, node);
  for (int n = 0; n < 4; ++n) {
    allocations_left = n;
    EXPECT_EQ(0, cfg_node_set_port_count_field(node, 3)) << n;
    EXPECT_EQ(2, cfg_node_get_port_count_field(node));
    EXPECT_STREQ("second", cfg_node_get_port_label(node, 1));
  }
  allocations_left = -1;
  cfg_node_free(node);
}

TEST_F(NoMemory, TheBundleNameIsNullNotWrong) {
  cfg_node *node = cfg_get_node_by_id(store.get(), "nodes-1");
  ASSERT_NE(nullptr, node);
  allocations_left = 0;
  EXPECT_EQ(nullptr, cfg_node_get_enrollment_bundle(node));
  EXPECT_STREQ("Global", cfg_node_get_enrollment_bundle(node));
  cfg_node_free(node);
}

TEST_F(NoMemory, AStatusCopyIsNull) {
  cfg_enrollment *record = cfg_enrollment_new(store.get(), "generic");
  allocations_left = 0;
  EXPECT_EQ(nullptr, cfg_enrollment_get_status(record));
  cfg_enrollment_free(record);
}

}  // namespace
