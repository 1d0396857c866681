// Enrollment settings: making, freeing, getters and setters. enrollment_store.cpp loads and saves them.
#include "nodes/enrollment.hpp"

#include "nodes/package_password.hpp"
#include "record/boundary.hpp"

using tw::guarded;

cfg_enrollment *cfg_enrollment_new(cfg *store, const char *product) noexcept {
  auto record = tw::new_view<cfg_enrollment>(store);
  if (!record || !record->status.set("Pending") || !record->product.set(product)) return nullptr;
  if (tw::kind_of(record->product) == tw::product_kind::tarnwell &&
      !tw::make_package_password(record->package_password, std::time(nullptr)))
    return nullptr;
  return record.release();
}

void cfg_enrollment_free(cfg_enrollment *enrollment) noexcept { delete enrollment; }

const char *cfg_enrollment_get_uuid(cfg_enrollment *enrollment) noexcept {
  return enrollment ? tw::refreshed_uuid(*enrollment) : nullptr;
}

const char *cfg_enrollment_get_product(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::product>(enrollment);
}

// The one getter that hands out a copy: its callers change the status while they still compare with the old.
char *cfg_enrollment_get_status(const cfg_enrollment *enrollment) noexcept {
  const char *status = tw::get<&cfg_enrollment::status>(enrollment);
  return status ? strdup(status) : nullptr;
}
int cfg_enrollment_set_status(cfg_enrollment *enrollment, const char *status) noexcept {
  return tw::replace<&cfg_enrollment::status>(enrollment, status);
}

int32_t cfg_enrollment_get_auto_approve(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::auto_approve>(enrollment);
}
int cfg_enrollment_set_auto_approve(cfg_enrollment *enrollment, int32_t auto_approve) noexcept {
  return tw::set<&cfg_enrollment::auto_approve>(enrollment, auto_approve != 0);
}

const char *cfg_enrollment_get_name(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::name>(enrollment);
}
int cfg_enrollment_set_name(cfg_enrollment *enrollment, const char *name) noexcept {
  return tw::replace<&cfg_enrollment::name>(enrollment, name);
}

const char *cfg_enrollment_get_cert(const cfg_enrollment *enrollment) noexcept {
  return enrollment ? cfg_certificate_get_cert(enrollment->certificate.get()) : nullptr;
}
const char *cfg_enrollment_get_key(const cfg_enrollment *enrollment) noexcept {
  return enrollment ? cfg_certificate_get_private_key(enrollment->certificate.get()) : nullptr;
}

const char *cfg_enrollment_get_ca(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::ca>(enrollment);
}

const char *cfg_enrollment_get_package_password(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::package_password>(enrollment);
}
int cfg_enrollment_delete_package_password(cfg_enrollment *enrollment) noexcept {
  return tw::replace<&cfg_enrollment::package_password>(enrollment, nullptr);
}

const char *cfg_enrollment_get_address(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::address>(enrollment);
}
int cfg_enrollment_set_address(cfg_enrollment *enrollment, const char *address) noexcept {
  return tw::replace<&cfg_enrollment::address>(enrollment, address);
}

const char *cfg_enrollment_get_connection_method(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::connection_method>(enrollment);
}
int cfg_enrollment_set_connection_method(cfg_enrollment *enrollment, const char *method) noexcept {
  return tw::replace<&cfg_enrollment::connection_method>(enrollment, method);
}

const char *cfg_enrollment_get_username(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::username>(enrollment);
}
const char *cfg_enrollment_get_password(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::password>(enrollment);
}
int cfg_enrollment_set_credentials(cfg_enrollment *enrollment, const char *username,
                                   const char *password) noexcept {
  return tw::replace_both<&cfg_enrollment::username, &cfg_enrollment::password>(enrollment, username,
                                                                                password);
}

uint32_t cfg_enrollment_get_base_port(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::base_port>(enrollment);
}
int cfg_enrollment_set_base_port(cfg_enrollment *enrollment, uint32_t base_port) noexcept {
  return tw::set<&cfg_enrollment::base_port>(enrollment, base_port);
}

int32_t cfg_enrollment_get_port_count_field(const cfg_enrollment *enrollment) noexcept {
  return tw::get<&cfg_enrollment::port_label_count>(enrollment);
}
int cfg_enrollment_set_port_count_field(cfg_enrollment *enrollment, int32_t count) noexcept {
  return guarded([&] {
    return enrollment && enrollment->port_labels.number(count) &&
           tw::set<&cfg_enrollment::port_label_count>(enrollment, count);
  });
}

const char *cfg_enrollment_get_port_label(const cfg_enrollment *enrollment, int32_t index) noexcept {
  return enrollment ? enrollment->port_labels.get(enrollment->port_label_count, index) : nullptr;
}
int cfg_enrollment_set_port_label(cfg_enrollment *enrollment, int32_t index, const char *label) noexcept {
  return guarded(
      [&] { return enrollment && enrollment->port_labels.set(enrollment->port_label_count, index, label); });
}
