#include "certificate_fixture.hpp"

#include <sstream>
#include <utility>

namespace records {

void CertificateTest::SetUp() {
  StoreTest::SetUp();
  ASSERT_EQ(1, twlog_set_sink(take_line, this));
}

void CertificateTest::TearDown() {
  twlog_set_sink(nullptr, nullptr);
  EXPECT_EQ(std::string::npos, everything_.find("PRIVATE KEY"));
  for (const std::string &secret : secrets_) {
    std::istringstream body(secret);
    for (std::string line; std::getline(body, line);)
      EXPECT_EQ(std::string::npos, everything_.find(line)) << "a line of a private key was logged";
  }
  StoreTest::TearDown();
}

void CertificateTest::take_line(void *context, const char *file, const char *function, int, int priority,
                                const char *message) {
  auto *self = static_cast<CertificateTest *>(context);
  EXPECT_STREQ("src/certificate", file);
  self->lines_.push_back(std::to_string(priority) + " " + function + ": " + message);
  self->everything_ += std::string(file) + function + message + "\n";
}

std::vector<std::string> CertificateTest::log_lines() { return std::exchange(lines_, {}); }

void CertificateTest::add_authority(const authority &ca, std::string_view serial) {
  cfg_elem *map = map_at("services.ca");
  set_blob(map, "key", ca.key);
  set_blob(map, "certificate", ca.certificate);
  set_blob(map, "serial", serial);
  commit();
  secrets_.push_back(ca.key);
}

}  // namespace records
