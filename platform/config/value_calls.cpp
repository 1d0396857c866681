// The C functions that make elements, change values and read them.
#include "calls.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

template <class Make>
cfg_elem *made(cfg *store, Make &&make) {
  if (store == nullptr) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    if (!store->writing()) return nullptr;
    return new_head(*store, make(store->editing().nodes))->elem();
  });
}

int set_value(cfg *store, cfg_elem *elem, cfg_kind kind, std::string_view data) {
  return guarded(store, 0, [&] {
    Head *head = checked(store, elem);
    if (head == nullptr) return 0;
    if (head->kind != kind) return store->fail(CFG_E_ARGUMENT, "\"%s\" is of another kind", head->id());
    if (data.size() > (kind == CFG_REFERENCE ? kMaxId : kMaxValue)) {
      return store->fail(CFG_E_LIMIT, "the value for \"%s\" is too long", head->id());
    }
    return replace_scalar(head, data) ? 1 : 0;
  });
}

// The value of a scalar element of one kind; borrowed bytes.
bool value_as(cfg_elem *elem, cfg_kind kind, cfg_value &value) {
  Head *head = bound(elem);
  if (head == nullptr) return false;
  if (head->kind != kind) {
    return head->store->fail(CFG_E_ARGUMENT, "\"%s\" is of another kind", head->id()) != 0;
  }
  value = Found{head->node, head->stored}.value();
  return value.kind == kind;
}

int bytes_as(cfg_elem *elem, cfg_kind kind, char **out, std::size_t *length) {
  if (!given(store_of(elem), out)) return 0;
  Store *store = Head::of(elem)->store;
  return guarded(store, 0, [&] {
    cfg_value value;
    if (!value_as(elem, kind, value) || copy_out(store, value, out) == 0) return 0;
    if (length != nullptr) *length = value.length;
    return 1;
  });
}

int number_as(cfg_elem *elem, cfg_kind kind, std::int32_t *out) {
  if (!given(store_of(elem), out)) return 0;
  return guarded(Head::of(elem)->store, 0, [&] {
    cfg_value value;
    if (!value_as(elem, kind, value)) return 0;
    *out = value.number;
    return 1;
  });
}

}  // namespace

cfg_elem *cfg_new_map(cfg *store) noexcept {
  return made(store, [](Nodes &nodes) { return nodes.map(); });
}

cfg_elem *cfg_new_list(cfg *store) noexcept {
  return made(store, [](Nodes &nodes) { return nodes.list(); });
}

cfg_elem *cfg_new_string(cfg *store, const char *value) noexcept {
  if (!given(store, value) || ::strnlen(value, kMaxValue + 1) > kMaxValue) return nullptr;
  return made(store, [&](Nodes &nodes) { return nodes.scalar(CFG_STRING, value, 0); });
}

cfg_elem *cfg_new_reference(cfg *store, const char *id) noexcept {
  if (!given(store, id) || ::strnlen(id, kMaxId + 1) > kMaxId) return nullptr;
  return made(store, [&](Nodes &nodes) { return nodes.scalar(CFG_REFERENCE, id, 0); });
}

int cfg_set_string(cfg *store, cfg_elem *elem, const char *value) noexcept {
  return given(store, elem, value) ? set_value(store, elem, CFG_STRING, value) : 0;
}

int cfg_set_blob(cfg *store, cfg_elem *elem, const void *data, size_t length) noexcept {
  if (!given(store, data)) return 0;
  return set_value(store, elem, CFG_BLOB, {static_cast<const char *>(data), length});
}

int cfg_set_reference(cfg *store, cfg_elem *elem, const char *id) noexcept {
  return given(store, elem, id) ? set_value(store, elem, CFG_REFERENCE, id) : 0;
}

int cfg_delete_element(cfg *store, cfg_elem *elem) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, elem);
    return head != nullptr && remove_element(head) ? 1 : 0;
  });
}

int cfg_string_value(cfg_elem *elem, char **out) noexcept { return bytes_as(elem, CFG_STRING, out, nullptr); }

int cfg_int_value(cfg_elem *elem, int32_t *out) noexcept { return number_as(elem, CFG_INT, out); }

int cfg_bool_value(cfg_elem *elem, int32_t *out) noexcept { return number_as(elem, CFG_BOOL, out); }

int cfg_blob_value(cfg_elem *elem, void **data, size_t *length) noexcept {
  if (data == nullptr || length == nullptr) return 0;
  char *copy = nullptr;
  if (bytes_as(elem, CFG_BLOB, &copy, length) == 0) return 0;
  *data = copy;
  return 1;
}

int cfg_reference_value(cfg_elem *elem, char **id) noexcept {
  return bytes_as(elem, CFG_REFERENCE, id, nullptr);
}
