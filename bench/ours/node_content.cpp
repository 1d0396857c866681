#include "ours/node_content.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace bench {
namespace {

template <std::size_t N>
constexpr cfg_keyset keyset(const char *const (&keys)[N]) {
  return {keys, N};
}

constexpr const char *kCertificateKeys[] = {"certificate", "private_key", "common_name", "revoke_time"};
constexpr const char *kSshKeys[] = {"port"};
constexpr const char *kEtagKeys[] = {"name", "version", "status"};
constexpr const char *kInterfaceKeys[] = {"name", "ipv4_address", "ipv6_address"};
constexpr const char *kUserKeys[] = {"username", "description", "disabled", "groups"};
constexpr const char *kGroupKeys[] = {"groupname", "description", "system", "roles"};
constexpr const char *kAuthMapKeys[] = {"auth_method", "auth_type", "use_remote_groups",
                                        "radius",      "tacacs",    "ldap"};
constexpr const char *kMoreNodeKeys[] = {"approved", "ssh",    "etags", "interfaces",
                                         "users",    "groups", "auth",  "cert"};
constexpr auto kAllNodeKeys = [] {
  std::array<const char *, kNodeTexts + std::size(kMoreNodeKeys)> keys{};
  std::copy(std::begin(kMoreNodeKeys), std::end(kMoreNodeKeys),
            std::copy(kNodeKeys.begin(), kNodeKeys.end(), keys.begin()));
  return keys;
}();

constexpr cfg_keyset kCertificateSet = keyset(kCertificateKeys);
constexpr cfg_keyset kSshSet = keyset(kSshKeys);
constexpr cfg_keyset kEtagSet = keyset(kEtagKeys);
constexpr cfg_keyset kInterfaceSet = keyset(kInterfaceKeys);
constexpr cfg_keyset kUserSet = keyset(kUserKeys);
constexpr cfg_keyset kGroupSet = keyset(kGroupKeys);
constexpr cfg_keyset kAuthSet = keyset(kAuthMapKeys);
constexpr cfg_keyset kNodeSet = {kAllNodeKeys.data(), kAllNodeKeys.size()};

// The groups of authentication settings, each a part of kAuthKeys.
constexpr cfg_keyset group_set(std::size_t group) {
  return {kAuthKeys.data() + kAuthGroupBegins[group], kAuthGroupBegins[group + 1] - kAuthGroupBegins[group]};
}
constexpr cfg_keyset kAuthGroupSets[] = {group_set(0), group_set(1), group_set(2)};

cfg_content bytes(cfg_kind kind, const char *data, std::size_t length) {
  return {kind, 0, data, length, nullptr, nullptr};
}
cfg_content blob(const std::string &data) { return bytes(CFG_BLOB, data.data(), data.size()); }
cfg_content reference(const char *id) { return bytes(CFG_REFERENCE, id, std::strlen(id)); }
cfg_content number(std::int32_t value) { return {CFG_INT, value, nullptr, 0, nullptr, nullptr}; }
cfg_content truth(bool value) { return {CFG_BOOL, value, nullptr, 0, nullptr, nullptr}; }

}  // namespace

cfg_content text_content(const std::string &text) { return bytes(CFG_STRING, text.data(), text.size()); }
cfg_content empty_list() { return {CFG_LIST, 0, nullptr, 0, nullptr, nullptr}; }

cfg_content *NodeContent::take(std::size_t count) {
  if (taken_ + count > items_.size()) throw std::length_error("a node of the benchmark has too many values");
  taken_ += count;
  return items_.data() + taken_ - count;
}

cfg_content NodeContent::map(const cfg_keyset &keys, std::initializer_list<cfg_content> items) {
  return {CFG_MAP, 0,     nullptr,
          0,       &keys, std::copy(items.begin(), items.end(), take(keys.count)) - keys.count};
}

template <class Items, class Fill>
cfg_content NodeContent::list(const Items &items, Fill &&fill) {
  cfg_content *entries = take(items.size());
  std::transform(items.begin(), items.end(), entries, fill);
  return {CFG_LIST, 0, nullptr, items.size(), nullptr, entries};
}

cfg_content NodeContent::auth_group(const Node &node, std::size_t group) {
  const cfg_keyset &keys = kAuthGroupSets[group];
  cfg_content *items = take(keys.count);
  const std::string *texts = node.auth.data() + kAuthGroupBegins[group];
  std::transform(texts, texts + keys.count, items, text_content);
  return {CFG_MAP, 0, nullptr, 0, &keys, items};
}

cfg_content NodeContent::certificate(const Certificate &certificate) {
  taken_ = 0;
  return map(
      kCertificateSet,
      {blob(certificate.certificate), blob(certificate.private_key), text_content(certificate.common_name),
       certificate.revoke_time != 0 ? number(certificate.revoke_time) : cfg_content{}});
}

cfg_content NodeContent::node(const Node &node, const char *certificate_id) {
  taken_ = 0;
  cfg_content *items = take(kNodeSet.count);
  cfg_content *item = std::transform(node.texts.begin(), node.texts.end(), items, text_content);
  items[kBundle].kind = CFG_REFERENCE;
  *item++ = truth(node.approved);
  *item++ = map(kSshSet, {number(static_cast<std::int32_t>(node.ssh_port))});
  *item++ = list(node.etags, [&](const Etag &etag) {
    return map(kEtagSet, {text_content(etag.name), number(etag.version), text_content(etag.status)});
  });
  *item++ = list(node.interfaces, [&](const Interface &in) {
    return map(kInterfaceSet,
               {text_content(in.name), text_content(in.ipv4_address), text_content(in.ipv6_address)});
  });
  *item++ = list(node.users, [&](const User &user) {
    return map(kUserSet, {text_content(user.username), text_content(user.description), number(user.disabled),
                          list(user.groups, text_content)});
  });
  *item++ = list(node.groups, [&](const Group &group) {
    return map(kGroupSet, {text_content(group.groupname), text_content(group.description),
                           truth(group.system), list(group.roles, text_content)});
  });
  *item++ =
      map(kAuthSet, {text_content(node.auth[0]), text_content(node.auth[1]), truth(node.use_remote_groups),
                     auth_group(node, 0), auth_group(node, 1), auth_group(node, 2)});
  *item++ = reference(certificate_id);
  return {CFG_MAP, 0, nullptr, 0, &kNodeSet, items};
}

}  // namespace bench
