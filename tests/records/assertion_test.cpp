// Saving NULL, or a record without store handle, ends the process in every kind of build.
#include <twobject/certificate.h>
#include <twobject/enrollment.h>
#include <twobject/node.h>

#include <gtest/gtest.h>

namespace {

const char *const node_assertion = "src/nodes: cfg_node_save: Assertion `node && node->cfg' failed";
const char *const enrollment_assertion =
    "src/enrollment: cfg_enrollment_save: Assertion `enrollment && enrollment->cfg' failed";
const char *const certificate_assertion =
    "src/certificate: cfg_certificate_save: Assertion `record && record->cfg' failed";

TEST(AssertionDeathTest, SavingANullNodeAborts) { EXPECT_DEATH(cfg_node_save(nullptr), node_assertion); }
TEST(AssertionDeathTest, SavingANodeWithoutHandleAborts) {
  EXPECT_DEATH(cfg_node_save(cfg_new_node(nullptr)), node_assertion);
}
TEST(AssertionDeathTest, SavingANullEnrolmentAborts) {
  EXPECT_DEATH(cfg_enrollment_save(nullptr), enrollment_assertion);
}
TEST(AssertionDeathTest, SavingAnEnrolmentWithoutHandleAborts) {
  EXPECT_DEATH(cfg_enrollment_save(cfg_enrollment_new(nullptr, "generic")), enrollment_assertion);
}
TEST(AssertionDeathTest, SavingANullCertificateAborts) {
  EXPECT_DEATH(cfg_certificate_save(nullptr), certificate_assertion);
}

}  // namespace
