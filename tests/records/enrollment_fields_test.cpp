// New enrolments and their fields, in memory.
#include <algorithm>
#include <cstring>
#include <ctime>

#include "enrollment_fixture.hpp"

namespace {

using records::enrollment_record;

class EnrollmentFields : public records::EnrollmentTest {
 protected:
  void SetUp() override {
    EnrollmentTest::SetUp();
    record = make("generic");
    ASSERT_NE(nullptr, record);
  }
  static std::string password_of(const enrollment_record &enrollment) {
    const char *password = cfg_enrollment_get_package_password(enrollment.get());
    return password == nullptr ? "none" : password;
  }
  enrollment_record record;
};

// What the C library draws after it is seeded, as package passwords have always been drawn.
std::string drawn(time_t second) {
  static const char alphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::srand(static_cast<unsigned>(second));
  std::string password;
  for (int i = 0; i < 64; ++i) password += alphabet[std::rand() % 62];
  return password;
}

TEST_F(EnrollmentFields, ANewRecordIsPendingNotApprovedAndHasNoElement) {
  for (const char *product : {"generic", "acs6000", "acs8000", "cisco2900", "acs_classic", "unknown"}) {
    SCOPED_TRACE(product);
    const enrollment_record fresh = make(product);
    ASSERT_NE(nullptr, fresh);
    EXPECT_STREQ(product, cfg_enrollment_get_product(fresh.get()));
    EXPECT_EQ("Pending", status_of(fresh));
    EXPECT_EQ(0, cfg_enrollment_get_auto_approve(fresh.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_uuid(fresh.get()));
    for (auto *get :
         {cfg_enrollment_get_name, cfg_enrollment_get_cert, cfg_enrollment_get_key, cfg_enrollment_get_ca,
          cfg_enrollment_get_package_password, cfg_enrollment_get_address,
          cfg_enrollment_get_connection_method, cfg_enrollment_get_username, cfg_enrollment_get_password})
      EXPECT_EQ(nullptr, get(fresh.get()));
    EXPECT_EQ(0U, cfg_enrollment_get_base_port(fresh.get()));
    EXPECT_EQ(0, cfg_enrollment_get_port_count_field(fresh.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(fresh.get(), 0));
  }
  EXPECT_EQ("{}", dump(""));
  EXPECT_EQ(0, cfg_has_changes(store));
}

TEST_F(EnrollmentFields, NoProductIsNoKind) {
  for (const char *product : {static_cast<const char *>(nullptr), ""}) {
    const enrollment_record fresh = make(product);
    ASSERT_NE(nullptr, fresh);
    EXPECT_EQ(nullptr, cfg_enrollment_get_product(fresh.get()));
    EXPECT_EQ("Pending", status_of(fresh));
    EXPECT_EQ("none", password_of(fresh));
  }
}

TEST_F(EnrollmentFields, TheProductIsCopied) {
  std::string product = "acs6000";
  const enrollment_record fresh = make(product.c_str());
  product = "changed";
  EXPECT_STREQ("acs6000", cfg_enrollment_get_product(fresh.get()));
}

TEST_F(EnrollmentFields, OnlyTarnwellGetsAPackagePassword) {
  for (const char *product :
       {"generic", "acs6000", "acs8000", "cisco2900", "acs_classic", "Tarnwell", "tarnwell2", "tarnwel", ""})
    EXPECT_EQ("none", password_of(make(product))) << product;
  EXPECT_NE("none", password_of(make("tarnwell")));
}

TEST_F(EnrollmentFields, ThePackagePasswordIs64LettersAndDigits) {
  const std::string password = password_of(make("tarnwell"));
  EXPECT_EQ(64U, password.size());
  EXPECT_EQ(std::string::npos,
            password.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"));
}

TEST_F(EnrollmentFields, ThePackagePasswordIsDrawnFromThePresentSecond) {
  const time_t before = time(nullptr);
  const std::string password = password_of(make("tarnwell"));
  const time_t after = time(nullptr);
  std::vector<std::string> possible;
  for (time_t second = before; second <= after; ++second) possible.push_back(drawn(second));
  EXPECT_NE(possible.end(), std::find(possible.begin(), possible.end(), password)) << password;
}

TEST_F(EnrollmentFields, RecordsOfOneSecondShareTheirPassword) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    const time_t before = time(nullptr);
    const std::string first = password_of(make("tarnwell"));
    const std::string second = password_of(make("tarnwell"));
    if (time(nullptr) != before) continue;  // the second ended in between
    EXPECT_EQ(first, second);
    return;
  }
  FAIL() << "no two records within a second";
}

TEST_F(EnrollmentFields, TheProcesssOwnRandomNumbersAreNotDisturbed) {
  std::srand(7);
  const int expected[] = {std::rand(), std::rand(), std::rand()};
  std::srand(7);
  EXPECT_EQ(expected[0], std::rand());
  make("tarnwell");
  EXPECT_EQ(expected[1], std::rand());
  make("tarnwell");
  EXPECT_EQ(expected[2], std::rand());
}

TEST_F(EnrollmentFields, DeletingThePackagePasswordClearsIt) {
  const enrollment_record fresh = make("tarnwell");
  EXPECT_EQ(1, cfg_enrollment_delete_package_password(fresh.get()));
  EXPECT_EQ("none", password_of(fresh));
  EXPECT_EQ(1, cfg_enrollment_delete_package_password(fresh.get()));
}

TEST_F(EnrollmentFields, TheStatusGetterGivesACopyOfTheCallers) {
  char *first = cfg_enrollment_get_status(record.get());
  char *second = cfg_enrollment_get_status(record.get());
  EXPECT_NE(first, second);
  std::strcpy(first, "changed");
  EXPECT_STREQ("Pending", second);
  EXPECT_EQ("Pending", status_of(record));
  std::free(first);
  std::free(second);
}

TEST_F(EnrollmentFields, AClearedStatusReadsAsNull) {
  EXPECT_EQ(1, cfg_enrollment_set_status(record.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_enrollment_get_status(record.get()));
}

TEST_F(EnrollmentFields, TextsAreCopiedReplacedAndCleared) {
  const struct {
    const char *(*get)(const cfg_enrollment *) noexcept;
    int (*set)(cfg_enrollment *, const char *) noexcept;
  } fields[] = {{cfg_enrollment_get_name, cfg_enrollment_set_name},
                {cfg_enrollment_get_address, cfg_enrollment_set_address},
                {cfg_enrollment_get_connection_method, cfg_enrollment_set_connection_method}};
  for (const auto &field : fields) {
    std::string text = "one";
    EXPECT_EQ(1, field.set(record.get(), text.c_str()));
    text = "two";
    EXPECT_STREQ("one", field.get(record.get()));
    EXPECT_EQ(1, field.set(record.get(), "three"));
    EXPECT_STREQ("three", field.get(record.get()));
    EXPECT_EQ(1, field.set(record.get(), field.get(record.get())));
    EXPECT_STREQ("three", field.get(record.get()));
    EXPECT_EQ(1, field.set(record.get(), nullptr));
    EXPECT_EQ(nullptr, field.get(record.get()));
  }
  EXPECT_EQ(1, cfg_enrollment_set_status(record.get(), "Approved"));
  EXPECT_EQ("Approved", status_of(record));
}

TEST_F(EnrollmentFields, CredentialsAreReplacedTogether) {
  EXPECT_EQ(1, cfg_enrollment_set_credentials(record.get(), "u", "p"));
  EXPECT_STREQ("u", cfg_enrollment_get_username(record.get()));
  EXPECT_STREQ("p", cfg_enrollment_get_password(record.get()));
  EXPECT_EQ(1, cfg_enrollment_set_credentials(record.get(), nullptr, "q"));
  EXPECT_EQ(nullptr, cfg_enrollment_get_username(record.get()));
  EXPECT_STREQ("q", cfg_enrollment_get_password(record.get()));
}

TEST_F(EnrollmentFields, UserNameAndPasswordMayBeExchanged) {
  cfg_enrollment_set_credentials(record.get(), "u", "p");
  EXPECT_EQ(1, cfg_enrollment_set_credentials(record.get(), cfg_enrollment_get_password(record.get()),
                                              cfg_enrollment_get_username(record.get())));
  EXPECT_STREQ("p", cfg_enrollment_get_username(record.get()));
  EXPECT_STREQ("u", cfg_enrollment_get_password(record.get()));
}

TEST_F(EnrollmentFields, NumbersAreKeptAsTheyAreSet) {
  for (const uint32_t port : {0U, 7001U, 4294967295U}) {
    EXPECT_EQ(1, cfg_enrollment_set_base_port(record.get(), port));
    EXPECT_EQ(port, cfg_enrollment_get_base_port(record.get()));
  }
}

TEST_F(EnrollmentFields, ApprovalIsKeptAsZeroOrOne) {
  for (const int32_t approve : {1, 0, 2, -1, INT32_MIN}) {
    EXPECT_EQ(1, cfg_enrollment_set_auto_approve(record.get(), approve));
    EXPECT_EQ(approve != 0 ? 1 : 0, cfg_enrollment_get_auto_approve(record.get()));
  }
}

TEST_F(EnrollmentFields, PortLabelsFollowTheRulesOfTheNode) {
  EXPECT_EQ(1, cfg_enrollment_set_port_count_field(record.get(), 3));
  EXPECT_EQ(3, cfg_enrollment_get_port_count_field(record.get()));
  EXPECT_STREQ("Port 1", cfg_enrollment_get_port_label(record.get(), 0));
  EXPECT_STREQ("Port 3", cfg_enrollment_get_port_label(record.get(), 2));
  EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(record.get(), 3));
  EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(record.get(), -1));
  EXPECT_EQ(1, cfg_enrollment_set_port_label(record.get(), 1, "switch"));
  EXPECT_STREQ("switch", cfg_enrollment_get_port_label(record.get(), 1));
  for (const int32_t index : {-1, 3, INT32_MIN, INT32_MAX})
    EXPECT_EQ(0, cfg_enrollment_set_port_label(record.get(), index, "x")) << index;
  EXPECT_EQ(0, cfg_enrollment_set_port_label(record.get(), 1, nullptr));
  EXPECT_STREQ("switch", cfg_enrollment_get_port_label(record.get(), 1));
  EXPECT_EQ(1, cfg_enrollment_set_port_count_field(record.get(), 3));
  EXPECT_STREQ("Port 2", cfg_enrollment_get_port_label(record.get(), 1));
  EXPECT_EQ(0, cfg_enrollment_set_port_count_field(record.get(), 65537));
  EXPECT_EQ(3, cfg_enrollment_get_port_count_field(record.get()));
  EXPECT_EQ(1, cfg_enrollment_set_port_count_field(record.get(), -5));
  EXPECT_EQ(-5, cfg_enrollment_get_port_count_field(record.get()));
  EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(record.get(), 0));
}

TEST_F(EnrollmentFields, NullRecordsGiveZeroAndNull) {
  for (auto *get :
       {cfg_enrollment_get_name, cfg_enrollment_get_product, cfg_enrollment_get_cert, cfg_enrollment_get_key,
        cfg_enrollment_get_ca, cfg_enrollment_get_package_password, cfg_enrollment_get_address,
        cfg_enrollment_get_connection_method, cfg_enrollment_get_username, cfg_enrollment_get_password})
    EXPECT_EQ(nullptr, get(nullptr));
  EXPECT_EQ(nullptr, cfg_enrollment_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_enrollment_get_status(nullptr));
  for (auto *set : {cfg_enrollment_set_status, cfg_enrollment_set_name, cfg_enrollment_set_address,
                    cfg_enrollment_set_connection_method})
    EXPECT_EQ(0, set(nullptr, "x"));
  EXPECT_EQ(0, cfg_enrollment_set_credentials(nullptr, "u", "p"));
  EXPECT_EQ(0, cfg_enrollment_get_auto_approve(nullptr));
  EXPECT_EQ(0, cfg_enrollment_set_auto_approve(nullptr, 1));
  EXPECT_EQ(0U, cfg_enrollment_get_base_port(nullptr));
  EXPECT_EQ(0, cfg_enrollment_set_base_port(nullptr, 1));
  EXPECT_EQ(0, cfg_enrollment_get_port_count_field(nullptr));
  EXPECT_EQ(0, cfg_enrollment_set_port_count_field(nullptr, 1));
  EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(nullptr, 0));
  EXPECT_EQ(0, cfg_enrollment_set_port_label(nullptr, 0, "x"));
  EXPECT_EQ(0, cfg_enrollment_delete_package_password(nullptr));
  cfg_enrollment_delete(nullptr);
  cfg_enrollment_free(nullptr);
}

TEST_F(EnrollmentFields, ARecordWithoutHandleCanBeFilledAndRead) {
  const enrollment_record homeless(cfg_enrollment_new(nullptr, "tarnwell"));
  ASSERT_NE(nullptr, homeless);
  EXPECT_EQ(1, cfg_enrollment_set_name(homeless.get(), "n"));
  EXPECT_STREQ("n", cfg_enrollment_get_name(homeless.get()));
  EXPECT_EQ(64U, password_of(homeless).size());
  EXPECT_EQ(nullptr, cfg_enrollment_get_uuid(homeless.get()));
  cfg_enrollment_delete(homeless.get());
}

}  // namespace
