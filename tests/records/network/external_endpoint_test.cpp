#include <twobject/external_endpoint.h>

#include "records/store_fixture.hpp"

namespace {

struct free_endpoint {
  void operator()(cfg_net_external_endpoint *endpoint) const { cfg_net_external_endpoint_free(endpoint); }
};
using endpoint_record = std::unique_ptr<cfg_net_external_endpoint, free_endpoint>;
struct free_list {
  void operator()(cfg_net_external_endpoint_list *list) const { cfg_net_external_endpoint_list_free(list); }
};
using endpoint_list = std::unique_ptr<cfg_net_external_endpoint_list, free_list>;

constexpr char endpoints[] = "system.net.external_endpoints";

class ExternalEndpoint : public records::StoreTest {
 protected:
  endpoint_record load(const std::string &id) {
    return endpoint_record(cfg_net_get_external_endpoint_by_id(store, id.c_str()));
  }
  endpoint_list list() { return endpoint_list(cfg_net_get_external_endpoint_list(store)); }
  std::string add(const char *address, int32_t api_port, int32_t vpn_port) {
    cfg_elem *elem = entry_of(endpoints);
    set(elem, "address", address);
    set(elem, "api_port", api_port);
    set(elem, "vpn_port", vpn_port);
    return id_of(elem);
  }
  std::string entry(int32_t index) {
    return dump(cfg_simple_get_listelem(store, cfg_get_by_path(store, endpoints), index));
  }
};

TEST_F(ExternalEndpoint, WithoutAListInTheStoreThereIsNone) {
  EXPECT_EQ(nullptr, list());
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint_list(nullptr));
  EXPECT_EQ(0, cfg_net_external_endpoint_count(nullptr));
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint(nullptr, 0));
  cfg_net_external_endpoint_list_free(nullptr);
}

TEST_F(ExternalEndpoint, TheListHasTheIdsInListOrder) {
  add("a", 1, 2);
  add("b", 3, 4);
  commit_and_reopen();
  const endpoint_list ids = list();
  EXPECT_EQ(2, cfg_net_external_endpoint_count(ids.get()));
  EXPECT_STREQ("system_net_external_endpoints-1", cfg_net_get_external_endpoint(ids.get(), 0));
  EXPECT_STREQ("system_net_external_endpoints-2", cfg_net_get_external_endpoint(ids.get(), 1));
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint(ids.get(), 2));
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint(ids.get(), -1));
}

TEST_F(ExternalEndpoint, AnEmptyListHasNoEntry) {
  list_at(endpoints);
  const endpoint_list ids = list();
  EXPECT_EQ(0, cfg_net_external_endpoint_count(ids.get()));
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint(ids.get(), 0));
}

TEST_F(ExternalEndpoint, ANewEndpointIsEmpty) {
  const endpoint_record record(cfg_net_external_endpoint_new(store));
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_get_uuid(record.get()));
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_get_address(record.get()));
  EXPECT_EQ(0, cfg_net_external_endpoint_get_api_port(record.get()));
  EXPECT_EQ(0, cfg_net_external_endpoint_get_vpn_port(record.get()));
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_new(nullptr));
}

TEST_F(ExternalEndpoint, ALoadTakesWhatIsThere) {
  const std::string id = add("gate.example", 443, 1194);
  const endpoint_record record = load(id);
  EXPECT_EQ(id, cfg_net_external_endpoint_get_uuid(record.get()));
  EXPECT_STREQ("gate.example", cfg_net_external_endpoint_get_address(record.get()));
  EXPECT_EQ(443, cfg_net_external_endpoint_get_api_port(record.get()));
  EXPECT_EQ(1194, cfg_net_external_endpoint_get_vpn_port(record.get()));
  const endpoint_record bare = load(id_of(entry_of(endpoints)));
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_get_address(bare.get()));
  EXPECT_EQ(0, cfg_net_external_endpoint_get_api_port(bare.get()));
  EXPECT_EQ(nullptr, load("system_net_external_endpoints-77"));
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_net_get_external_endpoint_by_id(nullptr, id.c_str()));
}

TEST_F(ExternalEndpoint, AnAddressIsKeptAsItIsGivenAndNullIsRefused) {
  const endpoint_record record(cfg_net_external_endpoint_new(store));
  EXPECT_EQ(1, cfg_net_external_endpoint_set_address(record.get(), "a"));
  EXPECT_EQ(0, cfg_net_external_endpoint_set_address(record.get(), nullptr));
  EXPECT_STREQ("a", cfg_net_external_endpoint_get_address(record.get()));
  EXPECT_EQ(1, cfg_net_external_endpoint_set_address(record.get(), ""));
  EXPECT_STREQ("", cfg_net_external_endpoint_get_address(record.get()));
  EXPECT_EQ(1, cfg_net_external_endpoint_set_address(record.get(),
                                                     cfg_net_external_endpoint_get_address(record.get())));
}

TEST_F(ExternalEndpoint, EverythingTakesNull) {
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_get_address(nullptr));
  EXPECT_EQ(0, cfg_net_external_endpoint_get_api_port(nullptr));
  EXPECT_EQ(0, cfg_net_external_endpoint_get_vpn_port(nullptr));
  EXPECT_EQ(0, cfg_net_external_endpoint_set_address(nullptr, "a"));
  EXPECT_EQ(0, cfg_net_external_endpoint_set_api_port(nullptr, 1));
  EXPECT_EQ(0, cfg_net_external_endpoint_set_vpn_port(nullptr, 1));
  EXPECT_EQ(0, cfg_net_external_endpoint_delete_api_port(nullptr));
  EXPECT_EQ(0, cfg_net_external_endpoint_delete_vpn_port(nullptr));
  EXPECT_EQ(0, cfg_net_external_endpoint_save(nullptr));
  EXPECT_EQ(0, cfg_net_update_external_endpoint(nullptr, 0, 0));
  EXPECT_EQ(0, cfg_net_external_endpoint_delete(nullptr));
  cfg_net_external_endpoint_free(nullptr);
}

TEST_F(ExternalEndpoint, ASavedNewEndpointIsPendingUntilTheCommit) {
  list_at(endpoints);
  const endpoint_record record(cfg_net_external_endpoint_new(store));
  cfg_net_external_endpoint_set_address(record.get(), "a");
  EXPECT_EQ(1, cfg_net_external_endpoint_set_api_port(record.get(), 443));
  EXPECT_EQ(1, cfg_net_external_endpoint_set_vpn_port(record.get(), 1194));
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ('{', *cfg_net_external_endpoint_get_uuid(record.get()));
  EXPECT_EQ(0, cfg_net_external_endpoint_count(list().get()));
  EXPECT_EQ("[+{address=\"a\" api_port=443 vpn_port=1194}]", dump(endpoints));
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  commit();
  EXPECT_EQ(1, cfg_net_external_endpoint_count(list().get()));
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ("[{address=\"a\" api_port=443 vpn_port=1194}]", dump(endpoints));
}

TEST_F(ExternalEndpoint, ANewEndpointNeedsTheListAndAnOldOneItsElement) {
  const endpoint_record record(cfg_net_external_endpoint_new(store));
  EXPECT_EQ(0, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ(nullptr, cfg_net_external_endpoint_get_uuid(record.get()));
  const endpoint_record old = load(add("a", 1, 2));
  EXPECT_EQ(1, cfg_net_external_endpoint_delete(old.get()));
  EXPECT_EQ(0, cfg_net_external_endpoint_delete(old.get()));
  EXPECT_EQ(0, cfg_net_external_endpoint_save(old.get()));
  EXPECT_EQ(0, cfg_net_update_external_endpoint(old.get(), 0, 0));
}

TEST_F(ExternalEndpoint, ASaveSucceedsWhateverBecomesOfItsWrites) {
  list_at(endpoints);
  const endpoint_record record(cfg_net_external_endpoint_new(store));
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ("[+{api_port=0 vpn_port=0}]", dump(endpoints));
  cfg_net_external_endpoint_set_address(record.get(), records::unwritable().c_str());
  cfg_net_external_endpoint_set_api_port(record.get(), 9);
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ("[+{api_port=9 vpn_port=0}]", dump(endpoints));
}

TEST_F(ExternalEndpoint, ADeletedPortStaysDeletedWhateverIsSetAfterwards) {
  const endpoint_record record = load(add("a", 1, 2));
  EXPECT_EQ(1, cfg_net_external_endpoint_delete_api_port(record.get()));
  EXPECT_EQ(1, cfg_net_external_endpoint_set_api_port(record.get(), 443));
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ("{address=\"a\" vpn_port=2}", entry(0));
  EXPECT_EQ(443, cfg_net_external_endpoint_get_api_port(record.get()));
  EXPECT_EQ(1, cfg_net_external_endpoint_delete_vpn_port(record.get()));
  EXPECT_EQ(1, cfg_net_external_endpoint_set_vpn_port(record.get(), 7));
  EXPECT_EQ(1, cfg_net_external_endpoint_save(record.get()));
  EXPECT_EQ("{address=\"a\"}", entry(0));
}

TEST_F(ExternalEndpoint, AnUpdateLooksAtItsOwnFlagsOnly) {
  const endpoint_record record = load(add("a", 1, 2));
  cfg_net_external_endpoint_delete_api_port(record.get());
  cfg_net_external_endpoint_delete_vpn_port(record.get());
  EXPECT_EQ(1, cfg_net_update_external_endpoint(record.get(), 0, 5));
  EXPECT_EQ("{address=\"a\" api_port=1}", entry(0));
  EXPECT_EQ(1, cfg_net_update_external_endpoint(record.get(), -1, 0));
  EXPECT_EQ("{address=\"a\" vpn_port=2}", entry(0));
}

TEST_F(ExternalEndpoint, AnUpdateSucceedsWithOneWriteAndDeletionsAreNone) {
  const endpoint_record record = load(id_of(entry_of(endpoints)));
  EXPECT_EQ(1, cfg_net_update_external_endpoint(record.get(), 0, 1));
  EXPECT_EQ("{api_port=0}", entry(0));
  EXPECT_EQ(1, cfg_net_update_external_endpoint(record.get(), 1, 0));
  EXPECT_EQ("{vpn_port=0}", entry(0));
  EXPECT_EQ(0, cfg_net_update_external_endpoint(record.get(), 1, 1));
  EXPECT_EQ("{}", entry(0));
}

TEST_F(ExternalEndpoint, AnUpdateSucceedsWhenOneOfItsWritesDoes) {
  const endpoint_record record = load(add("a", 1, 2));
  cfg_net_external_endpoint_set_address(record.get(), records::unwritable().c_str());
  cfg_net_external_endpoint_set_api_port(record.get(), 3);
  EXPECT_EQ(1, cfg_net_update_external_endpoint(record.get(), 0, 1));
  EXPECT_EQ("{address=\"a\" api_port=3}", entry(0));
  EXPECT_EQ(0, cfg_net_update_external_endpoint(record.get(), 1, 1));
  EXPECT_EQ("{address=\"a\"}", entry(0));
  cfg_net_external_endpoint_set_address(record.get(), "");
  EXPECT_EQ(1, cfg_net_update_external_endpoint(record.get(), 1, 1));
  EXPECT_EQ("{address=\"\"}", entry(0));
}

TEST_F(ExternalEndpoint, AnEndpointWithoutElementCannotBeUpdatedOrDeleted) {
  list_at(endpoints);
  const endpoint_record record(cfg_net_external_endpoint_new(store));
  EXPECT_EQ(0, cfg_net_update_external_endpoint(record.get(), 0, 0));
  EXPECT_EQ(0, cfg_net_external_endpoint_delete(record.get()));
}

}  // namespace
