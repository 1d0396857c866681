#include "data/node_copy.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

namespace bench {
namespace {

template <class Pointer>
Pointer checked(Pointer memory) {
  if (memory == nullptr) {
    std::fputs("bench: no memory\n", stderr);
    std::exit(1);
  }
  return memory;
}

void free_texts(TextArray &array) {
  for (std::size_t i = 0; i < array.count; ++i) std::free(array.items[i]);
  std::free(array.items);
}

// Compares what was loaded with what was described and remembers the first difference.
class Comparison {
 public:
  void text(const char *what, const char *loaded, const std::string &expected) {
    if (loaded == nullptr || expected != loaded) fail(what);
  }
  template <class Number, class Expected>
  void number(const char *what, Number loaded, Expected expected) {
    if (static_cast<long long>(loaded) != static_cast<long long>(expected)) fail(what);
  }
  void texts(const char *what, const TextArray &loaded, const std::vector<std::string> &expected) {
    number(what, loaded.count, expected.size());
    if (loaded.count != expected.size()) return;
    for (std::size_t i = 0; i < loaded.count; ++i) text(what, loaded.items[i], expected[i]);
  }
  const char *difference() const { return difference_; }

 private:
  void fail(const char *what) {
    if (difference_ == nullptr) difference_ = what;
  }
  const char *difference_ = nullptr;
};

void compare_common(Comparison &compare, const NodeCopy &copy, const Node &node) {
  compare.text("id", copy.id, node.id);
  for (std::size_t i = 0; i < kNodeTexts; ++i) compare.text(kNodeKeys[i], copy.texts[i], node.texts[i]);
  compare.number("approved", copy.approved, node.approved);
  compare.number("ssh_port", copy.ssh_port, node.ssh_port);
  compare.number("etag count", copy.etags.count, node.etags.size());
  for (std::size_t i = 0; i < copy.etags.count && i < node.etags.size(); ++i) {
    compare.text("etag id", copy.etags.items[i].id, node.etags[i].id);
    compare.text("etag name", copy.etags.items[i].name, node.etags[i].name);
    compare.text("etag status", copy.etags.items[i].status, node.etags[i].status);
    compare.number("etag version", copy.etags.items[i].version, node.etags[i].version);
  }
  if (copy.certificate == nullptr) return compare.number("certificate", 0, 1);
  compare.text("certificate id", copy.certificate->id, node.certificate.id);
  compare.text("common name", copy.certificate->common_name, node.certificate.common_name);
  compare.text("certificate", copy.certificate->certificate, node.certificate.certificate);
  compare.text("private key", copy.certificate->private_key, node.certificate.private_key);
  compare.number("revoke time", copy.certificate->revoke_time, node.certificate.revoke_time);
}

void compare_rest(Comparison &compare, const NodeCopy &copy, const Node &node) {
  compare.number("interface count", copy.interfaces.count, node.interfaces.size());
  for (std::size_t i = 0; i < copy.interfaces.count && i < node.interfaces.size(); ++i) {
    compare.text("interface node", copy.interfaces.items[i].node_id, node.id);
    compare.text("interface id", copy.interfaces.items[i].id, node.interfaces[i].id);
    compare.text("interface name", copy.interfaces.items[i].name, node.interfaces[i].name);
    compare.text("ipv4_address", copy.interfaces.items[i].ipv4_address, node.interfaces[i].ipv4_address);
    compare.text("ipv6_address", copy.interfaces.items[i].ipv6_address, node.interfaces[i].ipv6_address);
  }
  compare.number("user count", copy.users.count, node.users.size());
  for (std::size_t i = 0; i < copy.users.count && i < node.users.size(); ++i) {
    compare.text("username", copy.users.items[i].username, node.users[i].username);
    compare.text("user description", copy.users.items[i].description, node.users[i].description);
    compare.number("disabled", copy.users.items[i].disabled, node.users[i].disabled);
    compare.texts("user groups", copy.users.items[i].groups, node.users[i].groups);
  }
  compare.number("group count", copy.groups.count, node.groups.size());
  for (std::size_t i = 0; i < copy.groups.count && i < node.groups.size(); ++i) {
    compare.text("groupname", copy.groups.items[i].groupname, node.groups[i].groupname);
    compare.text("group description", copy.groups.items[i].description, node.groups[i].description);
    compare.number("system", copy.groups.items[i].system, node.groups[i].system);
    compare.texts("roles", copy.groups.items[i].roles, node.groups[i].roles);
  }
  compare.number("use_remote_groups", copy.use_remote_groups, node.use_remote_groups);
  for (std::size_t i = 0; i < kAuthTexts; ++i) compare.text(kAuthKeys[i], copy.auth[i], node.auth[i]);
}

}  // namespace

void *allocate(std::size_t size) { return checked(std::calloc(1, size)); }

NodeCopy *new_node_copy() {
  static_assert(std::is_trivially_destructible_v<NodeCopy>);
  return new (allocate(sizeof(NodeCopy))) NodeCopy;
}

char *copy_text(const char *text) { return checked(::strdup(text)); }

char *copy_blob(const void *data, std::size_t length) {
  char *copy = checked(static_cast<char *>(std::malloc(length + 1)));
  std::memcpy(copy, data, length);
  copy[length] = '\0';
  return copy;
}

void resize(TextArray &array, std::size_t count) {
  array.items = static_cast<char **>(allocate(count * sizeof(char *)));
  array.count = count;
}

void free_node_copy(NodeCopy *node) {
  std::free(node->id);
  for (char *text : node->texts) std::free(text);
  for (std::size_t i = 0; i < node->etags.count; ++i) {
    const EtagCopy &etag = node->etags.items[i];
    for (char *text : {etag.id, etag.name, etag.status}) std::free(text);
  }
  std::free(node->etags.items);
  if (const CertificateCopy *c = node->certificate) {
    for (char *text : {c->id, c->common_name, c->certificate, c->private_key}) std::free(text);
    std::free(node->certificate);
  }
  for (std::size_t i = 0; i < node->interfaces.count; ++i) {
    const InterfaceCopy &in = node->interfaces.items[i];
    for (char *text : {in.node_id, in.id, in.name, in.ipv4_address, in.ipv6_address}) std::free(text);
  }
  std::free(node->interfaces.items);
  for (std::size_t i = 0; i < node->users.count; ++i) {
    UserCopy &user = node->users.items[i];
    for (char *text : {user.username, user.description}) std::free(text);
    free_texts(user.groups);
  }
  std::free(node->users.items);
  for (std::size_t i = 0; i < node->groups.count; ++i) {
    GroupCopy &group = node->groups.items[i];
    for (char *text : {group.groupname, group.description}) std::free(text);
    free_texts(group.roles);
  }
  std::free(node->groups.items);
  for (char *text : node->auth) std::free(text);
  std::free(node);
}

void require_equal(const char *who, const NodeCopy &copy, const Node &node, FieldSet set) {
  Comparison compare;
  compare_common(compare, copy, node);
  if (set == FieldSet::whole)
    compare_rest(compare, copy, node);
  else
    compare.number("fields that were not asked for",
                   copy.interfaces.count + copy.users.count + copy.groups.count, 0);
  if (compare.difference() == nullptr) return;
  std::fprintf(stderr, "bench: %s does not load what was stored: %s of %s\n", who, compare.difference(),
               node.id.c_str());
  std::exit(1);
}

}  // namespace bench
