// The request token of the whole appliance.
#include "bundle_fixture.hpp"

namespace {

class RequestToken : public records::BundleTest {
 protected:
  records::heap_text token() { return records::heap_text(cfg_bundle_get_global_request_token(store)); }
};

TEST_F(RequestToken, IsWrittenReadAndRemovedInTheMapEnrollment) {
  map_at("enrollment");
  EXPECT_EQ(nullptr, token());
  EXPECT_EQ(1, cfg_bundle_set_global_request_token(store, "let me in"));
  EXPECT_EQ(R"({request_token="let me in"})", dump("enrollment"));
  EXPECT_STREQ("let me in", token().get());
  EXPECT_EQ(1, cfg_bundle_set_global_request_token(store, "another"));
  EXPECT_STREQ("another", token().get());
  EXPECT_EQ(1, cfg_bundle_delete_global_request_token(store));
  EXPECT_EQ("{}", dump("enrollment"));
  EXPECT_EQ(nullptr, token());
}

TEST_F(RequestToken, ThatIsNotThereIsRemovedAllTheSame) {
  map_at("enrollment");
  EXPECT_EQ(1, cfg_bundle_delete_global_request_token(store));
}

TEST_F(RequestToken, StandsBesideTheBundles) {
  add_bundle("north");
  EXPECT_EQ(1, cfg_bundle_set_global_request_token(store, "let me in"));
  EXPECT_EQ(R"({bundles=[{name="north" token="let me in"}] request_token="let me in"})", dump("enrollment"));
}

TEST_F(RequestToken, NeedsTheMapEnrollment) {
  EXPECT_EQ(nullptr, token());
  EXPECT_EQ(0, cfg_bundle_set_global_request_token(store, "let me in"));
  EXPECT_EQ(0, cfg_bundle_delete_global_request_token(store));
  EXPECT_EQ("{}", dump(""));
}

TEST_F(RequestToken, ThatIsNoStringIsNone) {
  set(map_at("enrollment"), "request_token", 7);
  EXPECT_EQ(nullptr, token());
}

TEST_F(RequestToken, NullGivesNothing) {
  map_at("enrollment");
  EXPECT_EQ(nullptr, cfg_bundle_get_global_request_token(nullptr));
  EXPECT_EQ(0, cfg_bundle_set_global_request_token(nullptr, "x"));
  EXPECT_EQ(0, cfg_bundle_set_global_request_token(store, nullptr));
  EXPECT_EQ(0, cfg_bundle_delete_global_request_token(nullptr));
}

}  // namespace
