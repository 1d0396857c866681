// Enrols a node, and finds it again by its name.
#include <twconfig.h>
#include <twlog.h>
#include <twobject.h>

#include <iostream>
#include <memory>
#include <string_view>

namespace {

template <auto release>
struct with {
  template <typename Record>
  void operator()(Record *record) const {
    release(record);
  }
};
using store_handle = std::unique_ptr<cfg, with<cfg_close>>;
using enrollment = std::unique_ptr<cfg_enrollment, with<cfg_enrollment_free>>;
using node = std::unique_ptr<cfg_node, with<cfg_node_free>>;

bool enrol(cfg *store, const char *name) {
  const enrollment entry(cfg_enrollment_new(store, "cisco2900"));
  return entry && cfg_enrollment_set_name(entry.get(), name) &&
         cfg_enrollment_set_address(entry.get(), "192.0.2.7") && cfg_enrollment_save(entry.get()) &&
         cfg_commit(store, nullptr);
}

}  // namespace

int main(int count, char **arguments) {
  if (count != 3) return 2;
  cfg_failure failure;
  const store_handle store(cfg_open(arguments[1], 0, &failure));
  if (!store || !enrol(store.get(), arguments[2])) return 1;
  const node found(cfg_get_node_by_name(store.get(), arguments[2]));
  if (!found) return 1;
  std::cout << cfg_node_get_name(found.get()) << " at " << cfg_node_get_address(found.get()) << '\n';
}
