// Enrols a node, and finds it again by its name.
#include <twconfig.h>

#include <iostream>
#include <twobject.hpp>

namespace {

bool enrol(cfg *store, const char *name) {
  const twobject::enrollment_record entry(cfg_enrollment_new(store, "cisco2900"));
  return entry && cfg_enrollment_set_name(entry.get(), name) &&
         cfg_enrollment_set_address(entry.get(), "192.0.2.7") && cfg_enrollment_save(entry.get()) &&
         cfg_commit(store, nullptr);
}

}  // namespace

int main(int count, char **arguments) {
  if (count != 3) return 2;
  cfg_failure failure;
  const twobject::store_handle store(cfg_open(arguments[1], 0, &failure));
  if (!store || !enrol(store.get(), arguments[2])) return 1;
  const twobject::node_record found(cfg_get_node_by_name(store.get(), arguments[2]));
  const auto address = twobject::text_of(cfg_node_get_address(found.get()));
  if (!address) return 1;
  std::cout << cfg_node_get_name(found.get()) << " at " << *address << '\n';
}
