// The nodes of a bundle, which the search service finds.
#include "bundle_fixture.hpp"
#include "search_service/search_service.hpp"

namespace {

using records::bundle_record;
using search_service::Scripted;

class BundleNodes : public records::BundleTest {};

// A service with these nodes, which notes the requests behind the greetings.
class Service {
 public:
  explicit Service(std::string items)
      : scripted_(R"({"result":true,"data":{"id":"result-7","count":99,"items":)" + std::move(items) + "}}") {
  }

  std::vector<std::string> requests() {
    std::vector<std::string> left;
    for (const std::string &message : scripted_.messages())
      if (!search_service::is_hello(message)) left.push_back(message);
    return left;
  }

 private:
  Scripted scripted_;
};

TEST_F(BundleNodes, AreAskedForByTheTagBundleInTheNameOfTheContext) {
  Service service(R"(["nodes-3","nodes-1"])");
  const bundle_record bundle = fresh("north");
  EXPECT_EQ(2, cfg_bundle_get_node_count(bundle.get(), "session-4"));
  EXPECT_EQ(
      (std::vector<std::string>{
          R"({"method":"search","data":{"conditions":{"key":"tag:Bundle","op":"equal","string":"north"},)"
          R"("object":"nodes"},"secctxt":"session-4","verb":0})",
          R"({"method":"get","data":{"id":"result-7","offset":0,"limit":0},"secctxt":"session-4","verb":0})"}),
      service.requests());
  EXPECT_STREQ("nodes-3", cfg_bundle_get_node_id(bundle.get(), 0, "session-4"));
  EXPECT_STREQ("nodes-1", cfg_bundle_get_node_id(bundle.get(), 1, "session-4"));
}

TEST_F(BundleNodes, AreAskedForWithoutContextAndVerbWhenThereIsNone) {
  Service service(R"(["nodes-3"])");
  EXPECT_STREQ("nodes-3", cfg_bundle_get_node_id(fresh("north").get(), 0, nullptr));
  EXPECT_EQ(
      (std::vector<std::string>{
          R"({"method":"search","data":{"conditions":{"key":"tag:Bundle","op":"equal","string":"north"},)"
          R"("object":"nodes"}})",
          R"({"method":"get","data":{"id":"result-7","offset":0,"limit":0}})"}),
      service.requests());
}

TEST_F(BundleNodes, AreAskedForOnceWhenThereAreSome) {
  Service service(R"(["nodes-3"])");
  const bundle_record bundle = fresh();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(1, cfg_bundle_get_node_count(bundle.get(), "s"));
  EXPECT_EQ(2U, service.requests().size());
  EXPECT_EQ(1, cfg_bundle_init_nodes(bundle.get(), "s"));
  EXPECT_EQ(4U, service.requests().size());
  EXPECT_EQ(1, cfg_bundle_get_node_count(bundle.get(), "s"));
  EXPECT_EQ(4U, service.requests().size());
}

TEST_F(BundleNodes, AreAskedForEachTimeWhenThereAreNone) {
  Service service("[]");
  const bundle_record bundle = fresh();
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
  EXPECT_EQ(nullptr, cfg_bundle_get_node_id(bundle.get(), 0, "s"));
  EXPECT_EQ(6U, service.requests().size());
  EXPECT_EQ(1, cfg_bundle_init_nodes(bundle.get(), "s"));
}

TEST_F(BundleNodes, GiveNothingOutside) {
  Service service(R"(["nodes-3"])");
  const bundle_record bundle = fresh();
  for (const int32_t index : {1, -1, INT32_MAX, INT32_MIN})
    EXPECT_EQ(nullptr, cfg_bundle_get_node_id(bundle.get(), index, "s")) << index;
}

TEST_F(BundleNodes, AreNoneWithoutTheService) {
  const search_service::PathClaim nobody;
  const bundle_record bundle = fresh();
  EXPECT_EQ(0, cfg_bundle_init_nodes(bundle.get(), "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
  EXPECT_EQ(nullptr, cfg_bundle_get_node_id(bundle.get(), 0, "s"));
}

TEST_F(BundleNodes, AreNoneWhenTheServiceRefuses) {
  const bundle_record bundle = fresh();
  Scripted service(R"({"result":false})");
  EXPECT_EQ(0, cfg_bundle_init_nodes(bundle.get(), "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
}

TEST_F(BundleNodes, AreNoneWhenTheResultCannotBeFetched) {
  const bundle_record bundle = fresh();
  Scripted service([](const std::string &message) -> std::optional<std::string> {
    if (message.find(R"("method":"get")") != std::string::npos) return R"({"result":false})";
    return R"({"result":true,"data":{"id":"result-7"}})";
  });
  EXPECT_EQ(0, cfg_bundle_init_nodes(bundle.get(), "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
}

TEST_F(BundleNodes, OfBeforeAreGoneWhenTheServiceFails) {
  const bundle_record bundle = fresh();
  {
    Service service(R"(["nodes-3"])");
    ASSERT_EQ(1, cfg_bundle_get_node_count(bundle.get(), "s"));
  }
  const search_service::PathClaim nobody;
  EXPECT_EQ(0, cfg_bundle_init_nodes(bundle.get(), "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
}

TEST_F(BundleNodes, OfABundleWithoutNameAreNotAskedFor) {
  Service service(R"(["nodes-3"])");
  const bundle_record bundle = fresh();
  ASSERT_EQ(1, cfg_bundle_set_name(bundle.get(), ""));
  EXPECT_EQ(0, cfg_bundle_init_nodes(bundle.get(), "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(bundle.get(), "s"));
  EXPECT_EQ(0U, service.requests().size());
}

TEST_F(BundleNodes, OfNullAreNone) {
  EXPECT_EQ(0, cfg_bundle_init_nodes(nullptr, "s"));
  EXPECT_EQ(0, cfg_bundle_get_node_count(nullptr, "s"));
  EXPECT_EQ(nullptr, cfg_bundle_get_node_id(nullptr, 0, "s"));
}

}  // namespace
